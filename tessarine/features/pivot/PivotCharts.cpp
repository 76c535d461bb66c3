#include <tessarine/features/pivot/PivotCharts.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/ChartData.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

/// A table with more groups than this is plotted with its subtotals, for the sake of formulas that can be read.
constexpr size_t kMaxLeafRuns = 500;

using TRowRun = std::pair<int32_t, int32_t>;  // first and last row

/// The parts of the last output.
struct TShownPivot {
  int32_t LabelCol = 0;
  int32_t FirstCol = 0;  // of the values
  int32_t LastCol = 0;
  int32_t FirstRow = 0;
  int32_t LastRow = 0;
  size_t LeafIndent = 0;  // of the rows that are no subtotals
};

TShownPivot ShownPartsOf(const TPivotTable& ATable) {
  const TCellRange body = ATable.LastBody;
  const size_t rowFields = ATable.FieldsFor(pfrRow).size();
  const auto valueCount = static_cast<int32_t>(ATable.LastValueFields.size());
  const bool isTabular = ATable.LayoutForm == plfTabular;
  TShownPivot shown;
  shown.LabelCol = body.StartCol;
  shown.FirstCol = body.StartCol + (isTabular ? std::max(1, static_cast<int32_t>(rowFields)) : 1);
  shown.LastCol = body.EndCol - (ATable.ColGrandTotals && !ATable.FieldsFor(pfrColumn).empty() ? valueCount : 0);
  shown.FirstRow = body.StartRow + std::max(1, ATable.HeaderRowCount);
  shown.LastRow = body.EndRow - (ATable.RowGrandTotals ? 1 : 0);
  shown.LeafIndent = isTabular || rowFields == 0 ? 0 : rowFields - 1;
  return shown;
}

/// The rows that stand for items of the innermost row field.
std::vector<TRowRun> LeafRuns(const TWorksheet& ASheet, const TShownPivot& AShown) {
  if (AShown.LeafIndent == 0) return {{AShown.FirstRow, AShown.LastRow}};
  std::vector<TRowRun> runs;
  for (int32_t row = AShown.FirstRow; row <= AShown.LastRow; ++row) {
    const TCell cell = ASheet.GetCell({AShown.LabelCol, row});
    if (!cell.HasFormatOverride || cell.FormatOverride.Alignment.Indent != static_cast<int32_t>(AShown.LeafIndent))
      continue;
    if (!runs.empty() && runs.back().second == row - 1) {
      runs.back().second = row;
    } else {
      runs.emplace_back(row, row);
    }
    if (runs.size() > kMaxLeafRuns) return {{AShown.FirstRow, AShown.LastRow}};
  }
  return runs;
}

void AppendAbsolute(int32_t ACol, int32_t ARow, std::u16string& AText) {
  AText += u'$';
  AppendColLetters(ACol, AText);
  AText += u'$' + TCellAddress{0, ARow}.ToA1();
}

/// "Sheet!$A$3:$A$9", in parentheses with commas for several runs.
TText ReferenceText(const TWorksheet& ASheet, int32_t AFirstCol, int32_t ALastCol, const std::vector<TRowRun>& ARuns) {
  const std::u16string sheet = QuoteSheetName(ASheet.Name()) + u'!';
  std::u16string text = ARuns.size() > 1 ? u"(" : u"";
  for (const auto& [first, last] : ARuns) {
    if (first != ARuns.front().first) text += u',';
    text += sheet;
    AppendAbsolute(AFirstCol, first, text);
    if (first == last && AFirstCol == ALastCol) continue;
    text += u':';
    AppendAbsolute(ALastCol, last, text);
  }
  if (ARuns.size() > 1) text += u')';
  return TText(text);
}

/// The labels above a column of values; those of a column item stand once for all its values.
TText SeriesTitle(const TWorksheet& ASheet, const TPivotTable& ATable, const TShownPivot& AShown, int32_t AIndex) {
  const auto valueCount = static_cast<int32_t>(ATable.LastValueFields.size());
  const TText& caption = ATable.LastValueFields[static_cast<size_t>(AIndex % valueCount)];
  const auto columnFields = static_cast<int32_t>(ATable.FieldsFor(pfrColumn).size());
  if (columnFields == 0) return caption;
  std::u16string title;
  const int32_t labelledCol = AShown.FirstCol + AIndex - AIndex % valueCount;
  for (int32_t row = ATable.LastBody.StartRow + 1; row <= ATable.LastBody.StartRow + columnFields; ++row) {
    const TText label = ASheet.GetCell({labelledCol, row}).Value.ToDisplayString();
    if (label.IsEmpty()) continue;
    if (!title.empty()) title += u" - ";
    title += label.View();
  }
  if (valueCount > 1) title += (title.empty() ? u"" : u" - ") + caption.ToString();
  return TText(title);
}

/// The sheet whose table a chart on AChartSheet shows.
const TPivotTable* LinkedTable(const TWorkbook& AWorkbook, const TWorksheet& AChartSheet, std::u16string_view AName) {
  if (const TPivotTable* own = AChartSheet.Pivots().FindByName(AName)) return own;
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    if (const TPivotTable* table = AWorkbook.GetSheet(index)->Pivots().FindByName(AName)) return table;
  }
  return nullptr;
}

void ReplaceSeries(TSheetDrawing& AChart, std::vector<TSheetChartSeries> ASeries) {
  for (size_t index = 0; index < std::min(ASeries.size(), AChart.Series.size()); ++index) {
    const TSheetChartSeries& old = AChart.Series[index];
    ASeries[index].Style = old.Style;
    ASeries[index].Labels = old.Labels;
    ASeries[index].ShowDataLabels = old.ShowDataLabels;
    ASeries[index].PointColors = old.PointColors;
    ASeries[index].PlotKind = old.PlotKind;
    ASeries[index].AxisGroup = old.AxisGroup;
  }
  AChart.SetSeries(std::move(ASeries));
}

}  // namespace

std::vector<TSheetChartSeries> PivotChartSeries(const TWorksheet& ASheet, const TPivotTable& ATable) {
  if (ATable.IsBodyEmpty() || ATable.LastValueFields.empty()) return {};
  const TShownPivot shown = ShownPartsOf(ATable);
  if (shown.LastRow < shown.FirstRow || shown.LastCol < shown.FirstCol) return {};
  const std::vector<TRowRun> runs = LeafRuns(ASheet, shown);
  if (runs.empty()) return {};
  const TText categories = ReferenceText(ASheet, shown.LabelCol, shown.FirstCol - 1, runs);
  std::vector<TSheetChartSeries> all;
  const int32_t count = std::min(shown.LastCol - shown.FirstCol + 1, kMaxPivotChartSeries);
  for (int32_t index = 0; index < count; ++index) {
    TSheetChartSeries series;
    series.Title = SeriesTitle(ASheet, ATable, shown, index);
    series.ValuesFormula = ReferenceText(ASheet, shown.FirstCol + index, shown.FirstCol + index, runs);
    series.CategoriesFormula = categories;
    series.Idx = index;
    series.Order = index;
    all.push_back(std::move(series));
  }
  return all;
}

void RebuildPivotCharts(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable) {
  for (int32_t sheetIndex = 0; sheetIndex < AWorkbook.SheetCount(); ++sheetIndex) {
    const TWorksheet& sheet = *AWorkbook.GetSheet(sheetIndex);
    for (int32_t index = 0; index < sheet.Drawings().Count(); ++index) {
      TSheetDrawing& chart = *sheet.Drawings().GetItem(index);
      if (chart.Kind != sdkChart || !EqualAsciiNoCase(chart.LinkedPivotName, ATable.Name)) continue;
      if (LinkedTable(AWorkbook, sheet, ATable.Name) != &ATable) continue;
      ReplaceSeries(chart, PivotChartSeries(ASheet, ATable));
      RefreshDrawingCharts(AWorkbook, sheet, chart);
    }
  }
}

}  // namespace tessarine
