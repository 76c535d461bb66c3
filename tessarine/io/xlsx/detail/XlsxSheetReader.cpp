#include <tessarine/io/xlsx/detail/XlsxSheetReader.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>
#include <tessarine/io/xlsx/detail/XlsxValidations.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr double kFileColWidth = 8.43;  // characters, where a file gives none
constexpr double kFileRowHeight = 15;   // points
constexpr size_t kStepsPerPoll = 8192;  // rows and cells

// Links that lie over one another are cut into pieces. Small ones have few; of wide ones a sheet may have so many.
constexpr int64_t kWideLinkCells = 4096;
constexpr size_t kMaxWideLinks = 1000;

/// A count of frozen lines; files may write it with a fraction.
int32_t FrozenCount(TXmlAttributes AAttributes, std::string_view AName) {
  return static_cast<int32_t>(std::clamp(XlsxAttrFloat(AAttributes, AName, 0), 0.0, 2e9));
}

bool IsFrozenState(std::string_view AState) {
  return EqualXmlNames(AState, "frozen") || EqualXmlNames(AState, "frozenSplit");
}

/// Outline flags are on unless a file says no.
bool IsSummaryFlagOn(TXmlAttributes AAttributes, std::string_view AName) {
  const std::string_view value = XlsxAttr(AAttributes, AName, "true");
  return value != "0" && !EqualXmlNames(value, "false") && !EqualXmlNames(value, "off");
}

/// Visits columns once each, whatever ranges they are asked for in: those that were visited are jumped over.
class TColumnsOnce {
 public:
  TColumnsOnce() : FNext(kMaxCol + 2) { std::iota(FNext.begin(), FNext.end(), 0); }
  template <class TVisit>
  void Visit(int32_t AFirst, int32_t ALast, TVisit&& AVisit) {
    for (int32_t col = Find(AFirst); col <= ALast; col = Find(col)) {
      AVisit(col);
      FNext[static_cast<size_t>(col)] = col + 1;
    }
  }

 private:
  int32_t& Next(int32_t ACol) { return FNext[static_cast<size_t>(ACol)]; }

  /// The first column from ACol on that was not visited; on the way, jumps get longer.
  int32_t Find(int32_t ACol) {
    while (Next(ACol) != ACol) {
      Next(ACol) = Next(Next(ACol));
      ACol = Next(ACol);
    }
    return ACol;
  }

  std::vector<int32_t> FNext;  // itself while not visited; kMaxCol + 1 never is
};

}  // namespace

TXlsxSheetReader::TXlsxSheetReader(TXmlReader& AReader, TWorksheet& ASheet, const TXlsxCellContext& AContext,
                                   const TReadLimits& ALimits, const TXlsxReport& AReport)
    : FReader(AReader),
      FSheet(ASheet),
      FCells(AReader, ASheet, AContext),
      FReport(AReport),
      FMaxRecords(ALimits.MaxXmlTreeNodes),
      FPageSettings(ASheet.PageSetup(), ALimits.MaxXmlTreeNodes) {}

// ---- the walk

void TXlsxSheetReader::Read() {
  static constexpr std::string_view kNames[stCount] = {"sheetViews", "sheetPr",    "sheetFormatPr",   "cols",
                                                       "sheetData",  "mergeCells", "dataValidations", "hyperlinks",
                                                       "autoFilter"};
  for (TXmlEvent event = FReader.Next(); event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement || FReader.Depth() == 1) continue;
    const auto found = std::find_if(std::begin(kNames), std::end(kNames),
                                    [this](std::string_view AName) { return FReader.LocalNameIs(AName); });
    const auto section = static_cast<size_t>(found - std::begin(kNames));
    if (section == stCount) {
      if (!FPageSettings.TryReadSection(FReader, FReport)) PassOverXlsxSection(FReader, FReport);
    } else if (std::exchange(FIsRead[section], true)) {
      FReader.SkipElement();
    } else {
      ReadSection(static_cast<TSection>(section));
    }
  }
  ApplyRecords();
}

void TXlsxSheetReader::ReadSection(TSection ASection) {
  switch (ASection) {
    case stViews: return ForEachChild("sheetView", [this] { ReadView(); });
    case stProperties: return ReadProperties();
    case stFormat: return ReadFormat();
    case stColumns: return ForEachChild("col", [this] { ReadColumns(); });
    case stData: return ForEachChild("row", [this] { ReadRow(); });
    case stMerges: return ForEachChild("mergeCell", [this] { ReadMerge(); });
    case stValidations: FValidations = ReadXlsxValidations(FReader, FMaxRecords, FReport); return;
    case stHyperlinks: return ForEachChild("hyperlink", [this] { ReadHyperlink(); });
    case stFilter: FFilter = ReadXlsxAutoFilter(FReader, FMaxRecords, FReport); return;
    case stCount: return;
  }
}

/// What had to wait for the end of the part, in an order of its own.
void TXlsxSheetReader::ApplyRecords() {
  ApplyColumns();
  FCells.Finish();
  ReportCells();
  for (TDataValidationRule& rule : FValidations) FSheet.Validations().AddRule(std::move(rule));
  FPageSettings.ApplyBreaks();
}

void TXlsxSheetReader::ReportCells() const {
  const TXlsxCellLosses& losses = FCells.Losses();
  FReport.Drop("constant", losses.Constants, "errors, dates and texts without a table entry read as 0");
  FReport.Drop("shared text", losses.Texts, "the string table has no such entry");
  FReport.Drop("formula", losses.Formulas, "the cell refers to the string table as well");
  FReport.Drop("data table", losses.DataTables, "its values stay");
  FReport.Drop("format of a whole row or column", FLineFormats, "cells have their own");
}

/// Records wait in memory for the end of the part, so they count like the nodes of a tree.
void TXlsxSheetReader::CountRecord(size_t ACount) {
  if (ACount >= FMaxRecords) {
    throw ELimit(FReader.PartName() + ": the part has more columns or links than the limit of " +
                 std::to_string(FMaxRecords));
  }
}

// ---- views

void TXlsxSheetReader::ReadView() {
  const TXmlAttributes attributes = FReader.Attributes();
  TSheetViewOptions options = FSheet.View();
  if (XlsxAttrIsOff(attributes, "showGridLines")) options.ShowGridLines = false;
  if (XlsxAttrIsOff(attributes, "showRowColHeaders")) options.ShowHeaders = false;
  if (const int32_t zoom = XlsxAttrInt(attributes, "zoomScale", 0); zoom > 0) options.Zoom = zoom;
  if (XlsxAttrIsOn(attributes, "rightToLeft")) options.RightToLeft = true;
  FSheet.SetView(options);
  const bool isSelected = XlsxAttrIsOn(attributes, "tabSelected");
  TCellAddress topLeft = XlsxAddress(XlsxAttr(attributes, "topLeftCell"));
  std::vector<TCellRange> ranges;
  TCellAddress active;
  bool hasPane = false;
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement) continue;
    if (!hasPane && FReader.LocalNameIs("pane")) {
      hasPane = true;
      ReadPane(topLeft.Col, topLeft.Row);
    } else if (FReader.LocalNameIs("selection")) {
      // With panes each has a selection; the last one is that of the pane with the free cells.
      auto selected = TSheetSavedView::ParseSqref(Utf8ToUtf16(XlsxAttr(FReader.Attributes(), "sqref")));
      if (!selected.empty()) ranges = std::move(selected);
      const TCellAddress cell = XlsxAddress(XlsxAttr(FReader.Attributes(), "activeCell"));
      if (cell.IsValid()) active = cell;
    }
    FReader.SkipElement();
  }
  if (ranges.empty() && !topLeft.IsValid() && !isSelected) return;
  if (!active.IsValid())
    active = ranges.empty() ? TCellAddress{1, 1} : TCellAddress{ranges[0].StartCol, ranges[0].StartRow};
  FSheet.SavedView().AssignFrom(std::move(ranges), active.Col, active.Row, topLeft.Col, topLeft.Row, isSelected);
}

/// A pane that is only split says nothing here.
void TXlsxSheetReader::ReadPane(int32_t& ATopLeftCol, int32_t& ATopLeftRow) {
  const TXmlAttributes attributes = FReader.Attributes();
  if (!IsFrozenState(XlsxAttr(attributes, "state"))) return FReport.Drop("split of a view");
  FSheet.SetFrozenCols(FrozenCount(attributes, "xSplit"));
  FSheet.SetFrozenRows(FrozenCount(attributes, "ySplit"));
  const TCellAddress topLeft = XlsxAddress(XlsxAttr(attributes, "topLeftCell"));
  if (!topLeft.IsValid()) return;
  ATopLeftCol = topLeft.Col;
  ATopLeftRow = topLeft.Row;
}

// ---- sizes and outline

void TXlsxSheetReader::ReadProperties() {
  bool isRead = false;
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement) continue;
    if (FReader.LocalNameIs("tabColor")) FReport.Drop("tab colour");
    if (FReader.LocalNameIs("outlinePr") && !std::exchange(isRead, true)) {
      FSheet.Sizing().SetOutlineSummaryBelow(IsSummaryFlagOn(FReader.Attributes(), "summaryBelow"));
      FSheet.Sizing().SetOutlineSummaryRight(IsSummaryFlagOn(FReader.Attributes(), "summaryRight"));
    }
    FReader.SkipElement();
  }
}

void TXlsxSheetReader::ReadFormat() {
  const TXmlAttributes attributes = FReader.Attributes();
  if (FindXmlAttribute(attributes, "defaultColWidth"))
    FSheet.Sizing().SetDefaultColWidth(XlsxAttrFloat(attributes, "defaultColWidth", kFileColWidth));
  if (FindXmlAttribute(attributes, "defaultRowHeight"))
    FSheet.Sizing().SetDefaultRowHeight(XlsxAttrFloat(attributes, "defaultRowHeight", kFileRowHeight));
  FReader.SkipElement();
}

void TXlsxSheetReader::ReadColumns() {
  CountRecord(FColumns.size());
  const TXmlAttributes attributes = FReader.Attributes();
  TColumns columns;
  const int32_t first = XlsxAttrInt(attributes, "min", 1);
  columns.First = std::max(first, 1);
  columns.Last = std::min(XlsxAttrInt(attributes, "max", first), kMaxCol);
  columns.Width = XlsxAttrFloat(attributes, "width", kFileColWidth);
  columns.Level = XlsxAttrInt(attributes, "outlineLevel", 0);
  columns.IsHidden = XlsxAttrIsOn(attributes, "hidden");
  columns.IsCollapsed = XlsxAttrIsOn(attributes, "collapsed");
  if (FReport.IsWanted() && XlsxAttrInt(attributes, "style", 0) != 0) ++FLineFormats;
  if (columns.First <= columns.Last) FColumns.push_back(columns);
  FReader.SkipElement();
}

/// Has the effect of setting everything for every column of every record in turn, at a cost that does not grow with
/// records that overlap: from the last record back, a column takes each property once.
void TXlsxSheetReader::ApplyColumns() {
  if (FColumns.empty()) return;
  TRowColSizing& sizing = FSheet.Sizing();
  TColumnsOnce widths, levels, hidden, collapsed;
  for (auto columns = FColumns.rbegin(); columns != FColumns.rend(); ++columns) {
    const auto visit = [&](TColumnsOnce& AOnce, auto&& ASet) { AOnce.Visit(columns->First, columns->Last, ASet); };
    visit(widths, [&](int32_t ACol) { sizing.SetColWidthChars(ACol, columns->Width); });
    if (columns->Level > 0) visit(levels, [&](int32_t ACol) { sizing.SetColOutlineLevel(ACol, columns->Level); });
    if (columns->IsHidden) visit(hidden, [&](int32_t ACol) { sizing.SetColHidden(ACol, true); });
    if (columns->IsCollapsed) visit(collapsed, [&](int32_t ACol) { sizing.SetColCollapsed(ACol, true); });
  }
}

// ---- rows

/// Rows are counted for those that give no number; cells say themselves where they stand.
void TXlsxSheetReader::ReadRow() {
  Poll();
  if (FRowPosition <= kMaxRow) ++FRowPosition;
  if (FReader.AttributeCount() != 0) {
    const int32_t row = XlsxAttrInt(FReader.Attributes(), "r", FRowPosition);
    if (row >= 1 && row <= kMaxRow) ReadRowGeometry(row);
  }
  ForEachChild("c", [this] {
    FCells.ReadCell();
    Poll();
  });
}

void TXlsxSheetReader::Poll() {
  if (++FSteps % kStepsPerPoll != 0 || !OnProgress) return;
  OnProgress(static_cast<double>(FReader.BytesRead()) / static_cast<double>(FReader.BytesTotal()));
}

void TXlsxSheetReader::ReadRowGeometry(int32_t ARow) {
  const TXmlAttributes attributes = FReader.Attributes();
  TRowColSizing& sizing = FSheet.Sizing();
  if (FindXmlAttribute(attributes, "ht")) sizing.SetRowHeightPt(ARow, XlsxAttrFloat(attributes, "ht", kFileRowHeight));
  if (XlsxAttrIsOn(attributes, "hidden")) sizing.SetRowHidden(ARow, true);
  if (const int32_t level = XlsxAttrInt(attributes, "outlineLevel", 0); level > 0)
    sizing.SetRowOutlineLevel(ARow, level);
  if (XlsxAttrIsOn(attributes, "collapsed")) sizing.SetRowCollapsed(ARow, true);
  if (FReport.IsWanted() && XlsxAttrIsOn(attributes, "customFormat")) ++FLineFormats;
}

// ---- merges and links

void TXlsxSheetReader::ReadMerge() {
  const TCellRange range = XlsxRange(XlsxAttr(FReader.Attributes(), "ref"));
  if (XlsxIsRange(range)) FSheet.MergeRange(range);
  FReader.SkipElement();
}

void TXlsxSheetReader::ReadHyperlink() {
  CountRecord(FLinks.size());
  const TXmlAttributes attributes = FReader.Attributes();
  TLink link{XlsxRange(XlsxAttr(attributes, "ref")), std::string(XlsxTrim(XlsxAttr(attributes, "location"))),
             std::string(XlsxAttr(attributes, "id"))};
  const bool isWide = int64_t{link.Range.Width()} * link.Range.Height() > kWideLinkCells;
  if (isWide && ++FWideLinks > kMaxWideLinks) {
    throw ELimit(FReader.PartName() + ": more than " + std::to_string(kMaxWideLinks) + " links cover more than " +
                 std::to_string(kWideLinkCells) + " cells each");
  }
  if (!XlsxAttr(attributes, "tooltip").empty()) FReport.Drop("tip of a link");
  if (XlsxIsRange(link.Range)) FLinks.push_back(std::move(link));
  FReader.SkipElement();
}

void TXlsxSheetReader::ApplyLinksAndFilter(const TXlsxRelationships& ARelationships) {
  for (const TLink& link : FLinks) {
    TText target = XlsxText(link.Location);
    if (const TXlsxRelationship* const relationship = ARelationships.Find(link.RelationshipId)) {
      if (target.IsEmpty())
        target = TText::FromUtf8(XlsxTrim(relationship->Target));
      else
        FReport.Drop("address of a link", 1, "it names a place as well, which is kept");
    }
    if (!target.IsEmpty()) FSheet.Hyperlinks().SetHyperlinkRange(link.Range, target);
  }
  FFilter.ApplyTo(FFilter.Range, FSheet.AutoFilter());
}

}  // namespace tessarine::detail
