#include <tessarine/formula/library/detail/ArrayBodies.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/formula/library/detail/SortTexts.h>

namespace tessarine::detail {

namespace {

struct TKeyHash {
  using is_transparent = void;
  size_t operator()(std::u16string_view AText) const { return std::hash<std::u16string_view>()(AText); }
  size_t operator()(const TText& AText) const { return (*this)(AText.View()); }
};

struct TKeyEqual {
  using is_transparent = void;
  bool operator()(std::u16string_view ALeft, std::u16string_view ARight) const { return ALeft == ARight; }
};

/// Texts numbered from 0 in order of first appearance.
class TKeyList {
 public:
  size_t NumberOf(std::u16string_view AText) {
    const auto found = FNumbers.find(AText);
    if (found != FNumbers.end()) return found->second;
    FTexts.emplace_back(AText);
    FNumbers.emplace(FTexts.back(), FTexts.size() - 1);
    return FTexts.size() - 1;
  }

  /// The number of a value's display text.
  size_t NumberOf(const TValueView& AValue, std::u16string& ABuffer) {
    if (!IsLongText(AValue)) return NumberOf(DisplayView(AValue, ABuffer));
    return FLong.Of(AValue, [&] { return NumberOf(AValue.Text()); });
  }

  const std::vector<TText>& Texts() const { return FTexts; }

 private:
  std::vector<TText> FTexts;
  boost::unordered_flat_map<TText, size_t, TKeyHash, TKeyEqual> FNumbers;
  TLongTextMemo<size_t> FLong;
};

/// What stands in the first column of an argument, row by row: a scalar in each, #REF! below a rectangle's end.
class TFirstColumn {
 public:
  explicit TFirstColumn(const TFormulaArg& AArg) : FArg(AArg) {}

  TValueView At(int32_t ARow) const {
    if (!FArg.IsRange) return FArg.Scalar.View();
    if (ARow >= FArg.RowCount || FArg.ColCount < 1) return TValueView::FromError(ceRef);
    return FArg.ViewAt(ARow, 0);
  }

  /// What the row adds to a sum: nothing when it is no number.
  double NumberAt(int32_t ARow) { return FNumbers.NumberOf(At(ARow)).value_or(0); }

 private:
  const TFormulaArg& FArg;
  TKeyNumbers FNumbers;
};

/// Pairs of keys numbered from 0 in order of first appearance. A pair is its two texts joined by a separator: texts
/// that hold the separator themselves may share one, unless they are too long to be joined.
class TPairList {
 public:
  TPairList(const TKeyList& ARows, const TKeyList& ACols) : FRows(ARows), FCols(ACols) {}

  size_t NumberOf(size_t ARow, size_t ACol) {
    const auto [place, isNew] = FNumbers.try_emplace({ARow, ACol}, FCount);
    if (!isNew) return place->second;
    if (const auto joined = Joined(ARow, ACol)) place->second = FJoined.try_emplace(*joined, FCount).first->second;
    if (place->second == FCount) ++FCount;
    return place->second;
  }

  std::optional<size_t> Find(size_t ARow, size_t ACol) const {
    if (const auto found = FNumbers.find({ARow, ACol}); found != FNumbers.end()) return found->second;
    const auto joined = FJoined.empty() ? std::nullopt : Joined(ARow, ACol);
    const auto found = joined ? FJoined.find(*joined) : FJoined.end();
    return found == FJoined.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  static constexpr char16_t kSeparator = u'\u0001';

  /// The joined texts, where they hold a separator.
  std::optional<std::u16string> Joined(size_t ARow, size_t ACol) const {
    constexpr size_t kMostJoined = 512;
    const std::u16string_view row = FRows.Texts()[ARow].View();
    const std::u16string_view col = FCols.Texts()[ACol].View();
    if (row.size() > kMostJoined || col.size() > kMostJoined) return std::nullopt;
    if (row.find(kSeparator) == row.npos && col.find(kSeparator) == col.npos) return std::nullopt;
    return std::u16string(row).append(1, kSeparator).append(col);
  }

  const TKeyList& FRows;
  const TKeyList& FCols;
  boost::unordered_flat_map<std::pair<size_t, size_t>, size_t> FNumbers;
  boost::unordered_flat_map<std::u16string, size_t> FJoined;  // of pairs with separators in their texts
  size_t FCount = 0;
};

}  // namespace

TFormulaArg CallGroupBy(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 3) return ErrorArg(ceValue);
  const TAsRectangle fields(AArgs[0]);
  if (fields->RowCount < 1) return ErrorArg(ceValue);
  const TFirstColumn keys(*fields);
  TFirstColumn values(AArgs[1]);
  TKeyList groups;
  std::vector<double> sums;
  std::u16string buffer;
  for (int32_t row = 0; row < fields->RowCount; ++row) {
    const size_t group = groups.NumberOf(keys.At(row), buffer);
    if (group == sums.size()) sums.push_back(0);
    sums[group] += values.NumberAt(row);
  }
  std::vector<TCellValue> cells;
  cells.reserve(sums.size() * 2);
  for (size_t group = 0; group < sums.size(); ++group) {
    cells.push_back(TextOf(groups.Texts()[group]));
    cells.push_back(NumberOrError(sums[group]));
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(sums.size()), 2);
}

TFormulaArg CallPivotBy(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 4) return ErrorArg(ceValue);
  const TAsRectangle fields(AArgs[0]);
  if (fields->RowCount < 1) return ErrorArg(ceValue);
  const TFirstColumn rowFields(*fields);
  const TFirstColumn colFields(AArgs[1]);
  TFirstColumn values(AArgs[2]);
  TKeyList rowKeys;
  TKeyList colKeys;
  TPairList pairs(rowKeys, colKeys);
  std::vector<double> sums;
  std::u16string buffer;
  for (int32_t row = 0; row < fields->RowCount; ++row) {
    const size_t rowNumber = rowKeys.NumberOf(rowFields.At(row), buffer);
    const size_t colNumber = colKeys.NumberOf(colFields.At(row), buffer);
    const size_t pair = pairs.NumberOf(rowNumber, colNumber);
    if (pair == sums.size()) sums.push_back(0);
    sums[pair] += values.NumberAt(row);
  }
  const auto rows = static_cast<int64_t>(rowKeys.Texts().size()) + 1;
  const auto cols = static_cast<int64_t>(colKeys.Texts().size()) + 1;
  if (!MayGenerate(rows, cols, fields->RowCount)) return ErrorArg(ceNum);
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(rows * cols));
  cells.emplace_back();
  for (const TText& col : colKeys.Texts()) cells.push_back(TextOf(col));
  for (size_t row = 0; row < rowKeys.Texts().size(); ++row) {
    cells.push_back(TextOf(rowKeys.Texts()[row]));
    for (size_t col = 0; col < colKeys.Texts().size(); ++col) {
      const std::optional<size_t> pair = pairs.Find(row, col);
      cells.push_back(NumberOrError(pair ? sums[*pair] : 0));
    }
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(rows), static_cast<int32_t>(cols));
}

}  // namespace tessarine::detail
