#include <tessarine/features/AutoFiltering.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include <boost/unordered/unordered_flat_set.hpp>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/detail/NoCase.h>
#include <tessarine/features/detail/ShownColumn.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using TTextSet = boost::unordered_flat_set<TText, detail::TTextNoCaseHash, detail::TTextNoCaseEqual>;

/// Whether ANeedle, which is not empty, stands in AText, without regard to ASCII case.
bool ContainsNoCase(std::u16string_view AText, std::u16string_view ANeedle) {
  if (AText.size() < ANeedle.size()) return false;
  const char16_t first = AsciiUpper(ANeedle.front());
  for (size_t i = 0; i <= AText.size() - ANeedle.size(); ++i) {
    if (AsciiUpper(AText[i]) == first && EqualAsciiNoCase(AText.substr(i, ANeedle.size()), ANeedle)) return true;
  }
  return false;
}

bool AcceptsText(const TAutoFilterColumn& AColumn, std::u16string_view AText) {
  if (!AColumn.Contains.IsEmpty()) {
    return AColumn.MatchCase ? AText.find(AColumn.Contains.View()) != std::u16string_view::npos
                             : ContainsNoCase(AText, AColumn.Contains);
  }
  return std::any_of(AColumn.Values.begin(), AColumn.Values.end(),
                     [&](const TText& AValue) { return EqualAsciiNoCase(AValue, AText); });
}

bool IsInForce(const TSheetAutoFilter& AFilter, const TAutoFilterColumn& AColumn) {
  return AColumn.Active && AColumn.Col >= AFilter.Range().StartCol && AColumn.Col <= AFilter.Range().EndCol;
}

/// A criterion ready for many texts.
struct TCriterion {
  explicit TCriterion(const TAutoFilterColumn& AColumn) : Column(AColumn) {
    if (AColumn.Contains.IsEmpty()) Values.insert(AColumn.Values.begin(), AColumn.Values.end());
  }
  bool operator()(std::u16string_view AText) const {
    return Column.Contains.IsEmpty() ? Values.contains(AText) : AcceptsText(Column, AText);
  }

  const TAutoFilterColumn& Column;
  TTextSet Values;
};

struct TRowSpan {
  int32_t First;
  int32_t Last;
};

/// The filter's rows below its header that are on the sheet; nothing when there are none.
std::optional<TRowSpan> DataRowsOf(const TSheetAutoFilter& AFilter) {
  const TCellRange& range = AFilter.Range();
  const TRowSpan rows{std::max(range.StartRow, 0) + 1, std::min(range.EndRow, kMaxRow)};
  if (!AFilter.IsEnabled() || range.StartRow >= kMaxRow || rows.First > rows.Last) return std::nullopt;
  return rows;
}

bool IsColumnOfSheet(int32_t ACol) { return ACol >= 1 && ACol <= kMaxCol; }

std::vector<TText> Sorted(std::vector<TText> ATexts) {
  std::sort(ATexts.begin(), ATexts.end(),
            [](const TText& ALeft, const TText& ARight) { return CompareAsciiNoCase(ALeft, ARight) < 0; });
  return ATexts;
}

}  // namespace

bool AutoFilterRowPasses(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t ARow) {
  const TSheetAutoFilter& filter = ASheet.AutoFilter();
  if (!filter.IsEnabled() || ARow <= filter.Range().StartRow || ARow > filter.Range().EndRow) return true;
  return std::all_of(filter.Columns().begin(), filter.Columns().end(), [&](const auto& AEntry) {
    return !IsInForce(filter, AEntry.second) ||
           AcceptsText(AEntry.second, ASheet.GetDisplayText({AEntry.first, ARow}, AStyleSheet));
  });
}

void ApplyAutoFilterPlain(TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet) {
  const std::optional<TRowSpan> rows = DataRowsOf(ASheet.AutoFilter());
  if (!rows) return;
  for (int32_t row = rows->First; row <= rows->Last; ++row)
    ASheet.Sizing().SetRowHidden(row, !AutoFilterRowPasses(ASheet, AStyleSheet, row));
}

void ApplyAutoFilter(TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet) {
  const TSheetAutoFilter& filter = ASheet.AutoFilter();
  const std::optional<TRowSpan> rows = DataRowsOf(filter);
  if (!rows) return;
  detail::TRowMarks kept(rows->First, rows->Last);
  for (const auto& [col, column] : filter.Columns()) {
    if (!IsInForce(filter, column)) continue;
    const TCriterion criterion(column);
    if (!IsColumnOfSheet(col)) {  // shows nothing in any row
      if (!criterion({})) kept.DropAll();
      continue;
    }
    detail::TShownColumn<const TCriterion>(ASheet, AStyleSheet, col, criterion).Judge(kept);
  }
  for (int32_t row = rows->First; row <= rows->Last; ++row) ASheet.Sizing().SetRowHidden(row, !kept.Has(row));
}

void DisableAutoFilter(TWorksheet& ASheet) {
  if (!ASheet.AutoFilter().IsEnabled()) return;
  if (const std::optional<TRowSpan> rows = DataRowsOf(ASheet.AutoFilter())) {
    for (int32_t row = rows->First; row <= rows->Last; ++row) ASheet.Sizing().SetRowHidden(row, false);
  }
  ASheet.AutoFilter().Clear();
}

std::vector<TText> CollectAutoFilterValuesPlain(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet,
                                                int32_t ACol) {
  std::vector<TText> values;
  TTextSet seen;
  if (const std::optional<TRowSpan> rows = DataRowsOf(ASheet.AutoFilter())) {
    for (int32_t row = rows->First; row <= rows->Last; ++row) {
      TText text = ASheet.GetDisplayText({ACol, row}, AStyleSheet);
      if (seen.insert(text).second) values.push_back(std::move(text));
    }
  }
  return Sorted(std::move(values));
}

std::vector<TText> CollectAutoFilterValues(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet,
                                           int32_t ACol) {
  const std::optional<TRowSpan> rows = DataRowsOf(ASheet.AutoFilter());
  if (!rows || !IsColumnOfSheet(ACol)) return CollectAutoFilterValuesPlain(ASheet, AStyleSheet, ACol);
  TTextSet seen;
  auto collect = [&](std::u16string_view AText) {
    if (!seen.contains(AText)) seen.insert(TText(AText));
    return true;
  };
  detail::TRowMarks marks(rows->First, rows->Last);
  detail::TShownColumn(ASheet, AStyleSheet, ACol, collect).Judge(marks);
  return Sorted({seen.begin(), seen.end()});
}

}  // namespace tessarine
