#include <tessarine/formula/library/detail/ArrayBodies.h>

#include <functional>
#include <string>
#include <string_view>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/core/values/Text.h>

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

  std::optional<size_t> Find(std::u16string_view AText) const {
    const auto found = FNumbers.find(AText);
    if (found == FNumbers.end()) return std::nullopt;
    return found->second;
  }

  const std::vector<TText>& Texts() const { return FTexts; }

 private:
  std::vector<TText> FTexts;
  boost::unordered_flat_map<TText, size_t, TKeyHash, TKeyEqual> FNumbers;
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

  std::u16string_view TextAt(int32_t ARow, std::u16string& ABuffer) const { return DisplayView(At(ARow), ABuffer); }

  /// What the row adds to a sum: nothing when it is no number.
  double NumberAt(int32_t ARow) const {
    double number = 0;
    AsNumber(At(ARow), number);
    return number;
  }

 private:
  const TFormulaArg& FArg;
};

}  // namespace

TFormulaArg CallGroupBy(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 3) return ErrorArg(ceValue);
  const TAsRectangle fields(AArgs[0]);
  if (fields->RowCount < 1) return ErrorArg(ceValue);
  const TFirstColumn keys(*fields);
  const TFirstColumn values(AArgs[1]);
  TKeyList groups;
  std::vector<double> sums;
  std::u16string buffer;
  for (int32_t row = 0; row < fields->RowCount; ++row) {
    const size_t group = groups.NumberOf(keys.TextAt(row, buffer));
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
  const TFirstColumn values(AArgs[2]);
  TKeyList rowKeys;
  TKeyList colKeys;
  TKeyList pairs;  // a pair is its two texts joined: texts that hold the separator themselves may share one
  std::vector<double> sums;
  std::u16string buffer;
  std::u16string joined;
  const auto join = [&](std::u16string_view ARow, std::u16string_view ACol) -> std::u16string_view {
    return joined.assign(ARow).append(1, u'\u0001').append(ACol);
  };
  for (int32_t row = 0; row < fields->RowCount; ++row) {
    const size_t rowNumber = rowKeys.NumberOf(rowFields.TextAt(row, buffer));
    const size_t colNumber = colKeys.NumberOf(colFields.TextAt(row, buffer));
    const size_t pair = pairs.NumberOf(join(rowKeys.Texts()[rowNumber], colKeys.Texts()[colNumber]));
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
  for (const TText& row : rowKeys.Texts()) {
    cells.push_back(TextOf(row));
    for (const TText& col : colKeys.Texts()) {
      const std::optional<size_t> pair = pairs.Find(join(row, col));
      cells.push_back(NumberOrError(pair ? sums[*pair] : 0));
    }
  }
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(rows), static_cast<int32_t>(cols));
}

}  // namespace tessarine::detail
