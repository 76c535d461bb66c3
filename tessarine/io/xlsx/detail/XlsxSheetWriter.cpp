#include <tessarine/io/xlsx/detail/XlsxSheetWriter.h>

#include <algorithm>
#include <cmath>

#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPageWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPlanWriter.h>
#include <tessarine/io/xlsx/detail/XlsxRelationshipsWriter.h>
#include <tessarine/io/xlsx/detail/XlsxRowsWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr double kStandardColWidth = 8.43;  // characters

void AppendAddress(std::string_view AName, TCellAddress AAddress, std::string& AOut) {
  AppendXlsxWord(AName, Utf16ToUtf8(AAddress.ToA1()), AOut);
}

}  // namespace

std::string TXlsxSheetWriter::Part(const std::function<void(double AFraction)>& AProgress) {
  ((FOut += kXmlHead) += "<worksheet xmlns=\"") += kXlsxMainNamespace;
  ((FOut += "\" xmlns:r=\"") += kXlsxDocumentRelationships) += "\">";
  AppendProperties();
  AppendViews();
  AppendFormat();
  AppendColumns();
  AppendRows(AProgress);
  AppendXlsxAutoFilter(FSheet, FOptions.IsLiteral, FLosses, FOut);
  AppendXlsxMerges(FSheet.Merges(), FOptions.IsLiteral, FLosses, FOut);
  AppendXlsxValidations(FWorkbook, FSheet.Validations(), FOptions.IsLiteral, FLosses, FOut);
  AppendXlsxLinks(FOptions.Links, FOptions.Relationships, FOut);
  AppendXlsxPageSetup(FSheet.PageSetup(), FOut);
  if (!FOptions.Relationships.DrawingId().empty()) {
    FOut += "<drawing";
    AppendXlsxWord("r:id", FOptions.Relationships.DrawingId(), FOut);
    FOut += "/>";
  }
  AppendTableParts();
  FOut += "</worksheet>";
  return std::move(FOut);
}

void TXlsxSheetWriter::AppendProperties() {
  const TRowColSizing& sizing = FSheet.Sizing();
  const bool hasLevels = sizing.MaxRowOutlineLevel() > 0 || sizing.MaxColOutlineLevel() > 0;
  const bool fits = FSheet.PageSetup().FitToPage;
  if (!hasLevels && !fits) return;
  FOut += "<sheetPr>";
  if (hasLevels) {
    FOut += "<outlinePr";
    AppendXlsxBool("summaryBelow", sizing.OutlineSummaryBelow(), FOut);
    AppendXlsxBool("summaryRight", sizing.OutlineSummaryRight(), FOut);
    FOut += "/>";
  }
  if (fits) FOut += "<pageSetUpPr fitToPage=\"1\"/>";
  FOut += "</sheetPr>";
}

// ---- the view

void TXlsxSheetWriter::AppendViews() {
  const TSheetViewOptions& view = FSheet.View();
  const bool isFrozen = FSheet.FrozenRows() > 0 || FSheet.FrozenCols() > 0;
  const TSheetSavedView& saved = FSheet.SavedView();
  const TCellAddress topLeft{saved.TopLeftCol, saved.TopLeftRow};
  FOut += "<sheetViews><sheetView";
  if (!view.ShowGridLines) AppendXlsxWord("showGridLines", "0", FOut);
  if (!view.ShowHeaders) AppendXlsxWord("showRowColHeaders", "0", FOut);
  AppendXlsxFlag("rightToLeft", view.RightToLeft, FOut);
  AppendXlsxFlag("tabSelected", FOptions.IsActive, FOut);
  if (!isFrozen && saved.HasView && topLeft.IsValid()) AppendAddress("topLeftCell", topLeft, FOut);
  if (view.Zoom > 0 && view.Zoom != 100) AppendXlsxInt("zoomScale", view.Zoom, FOut);
  FOut += " workbookViewId=\"0\">";
  if (isFrozen) AppendPane();
  AppendSelection();
  FOut += "</sheetView></sheetViews>";
}

/// The first free cell in view is the saved one where that lies behind the frozen lines.
void TXlsxSheetWriter::AppendPane() {
  const TSheetSavedView& saved = FSheet.SavedView();
  TCellAddress topLeft{FSheet.FrozenCols() + 1, FSheet.FrozenRows() + 1};
  if (saved.HasView && TCellAddress{saved.TopLeftCol, saved.TopLeftRow}.IsValid())
    topLeft = {std::max(topLeft.Col, saved.TopLeftCol), std::max(topLeft.Row, saved.TopLeftRow)};
  FOut += "<pane";
  AppendXlsxInt("xSplit", FSheet.FrozenCols(), FOut);
  AppendXlsxInt("ySplit", FSheet.FrozenRows(), FOut);
  AppendAddress("topLeftCell", topLeft, FOut);
  FOut += " activePane=\"bottomRight\" state=\"frozen\"/>";
}

void TXlsxSheetWriter::AppendSelection() {
  const TSheetSavedView& saved = FSheet.SavedView();
  if (!saved.HasView) return;
  TCellAddress active{saved.ActiveCol, saved.ActiveRow};
  std::vector<TCellRange> ranges;
  for (const TCellRange& range : saved.SelectionRanges) {
    const TCellRange inside = XlsxInsideSheet(range);
    if (inside.StartCol > 0) ranges.push_back(inside);
  }
  if (!active.IsValid())
    active = ranges.empty() ? TCellAddress{1, 1} : TCellAddress{ranges[0].StartCol, ranges[0].StartRow};
  if (ranges.empty()) {
    if (active == TCellAddress{1, 1}) return;
    ranges.push_back({active.Col, active.Row, active.Col, active.Row});
  }
  const auto holder = std::find_if(ranges.begin(), ranges.end(),
                                   [&](const TCellRange& ARange) { return ARange.ContainsAddress(active); });
  FOut += "<selection";
  AppendAddress("activeCell", active, FOut);
  if (holder != ranges.begin() && holder != ranges.end()) AppendXlsxInt("activeCellId", holder - ranges.begin(), FOut);
  AppendXlsxAttr("sqref", TSheetSavedView::FormatSqref(ranges), FOut);
  FOut += "/>";
}

// ---- sizes

void TXlsxSheetWriter::AppendFormat() {
  const TRowColSizing& sizing = FSheet.Sizing();
  FOut += "<sheetFormatPr";
  AppendXlsxNumber("defaultColWidth", sizing.DefaultColWidth(), FOut);
  AppendXlsxNumber("defaultRowHeight", sizing.DefaultRowHeight(), FOut);
  if (const int32_t level = sizing.MaxRowOutlineLevel(); level > 0) AppendXlsxInt("outlineLevelRow", level, FOut);
  if (const int32_t level = sizing.MaxColOutlineLevel(); level > 0) AppendXlsxInt("outlineLevelCol", level, FOut);
  FOut += "/>";
}

/// A column that is only hidden or in a group gets the width that it has: a reader would take its own for it.
void TXlsxSheetWriter::AppendColumns() {
  const TRowColSizing& sizing = FSheet.Sizing();
  const std::vector<int32_t> columns = sizing.MarkedCols();
  if (columns.empty()) return;
  FOut += "<cols>";
  for (const int32_t col : columns) {
    const double width = sizing.GetColWidthChars(col);
    FOut += "<col";
    AppendXlsxInt("min", col, FOut);
    AppendXlsxInt("max", col, FOut);
    AppendXlsxNumber("width", std::isfinite(width) ? width : kStandardColWidth, FOut);
    AppendXlsxFlag("hidden", sizing.IsColHidden(col), FOut);
    AppendXlsxWord("customWidth", "1", FOut);
    if (const int32_t level = sizing.GetColOutlineLevel(col); level > 0) AppendXlsxInt("outlineLevel", level, FOut);
    AppendXlsxFlag("collapsed", sizing.IsColCollapsed(col), FOut);
    FOut += "/>";
  }
  FOut += "</cols>";
}

void TXlsxSheetWriter::AppendRows(const std::function<void(double AFraction)>& AProgress) {
  const std::vector<int32_t> marked = FSheet.Sizing().MarkedRows();
  const TXlsxCellOptions options{.Strings = FOptions.Cells.Strings,
                                 .MarkedRows = marked,
                                 .StyleCount = FOptions.StyleCount,
                                 .IsLiteral = FOptions.IsLiteral};
  AppendXlsxRows(FSheet, options, FOptions.Cells.Cuts, AProgress, FOut);
}

void TXlsxSheetWriter::AppendTableParts() {
  const std::vector<std::string>& ids = FOptions.Relationships.TableIds();
  if (ids.empty()) return;
  FOut += "<tableParts";
  AppendXlsxInt("count", static_cast<int64_t>(ids.size()), FOut);
  FOut += '>';
  for (const std::string& id : ids) {
    FOut += "<tablePart";
    AppendXlsxWord("r:id", id, FOut);
    FOut += "/>";
  }
  FOut += "</tableParts>";
}

}  // namespace tessarine::detail
