#include <tessarine/io/ods/detail/OdsSheetReader.h>

#include <algorithm>
#include <iterator>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/ods/detail/OdsDrawingReader.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

constexpr size_t kStepsPerPoll = 8192;  // rows and cells

/// ALine moved on by ACount, at most to the first line beyond ALast.
int32_t Advanced(int32_t ALine, int32_t ACount, int32_t ALast) {
  return static_cast<int32_t>(std::min<int64_t>(int64_t{ALine} + ACount, int64_t{ALast} + 1));
}

bool IsHiddenWord(std::string_view AText) { return AText == "collapse" || AText == "filter"; }

/// Elements that only hold lines.
bool IsWrapper(const TXmlReader& AReader) {
  static constexpr std::string_view kNames[] = {"table-columns", "table-header-columns", "table-column-group",
                                                "table-rows",    "table-header-rows",    "table-row-group"};
  return std::any_of(std::begin(kNames), std::end(kNames),
                     [&](std::string_view AName) { return AReader.LocalNameIs(AName); });
}

std::string_view AttributeOf(const TXmlReader& AReader, std::string_view AName) {
  return AReader.FindAttribute(AName).value_or(std::string_view());
}

}  // namespace

TOdsSheetReader::TOdsSheetReader(TXmlReader& AReader, TWorksheet& ASheet, const TOdsReadContext& AContext,
                                 TOdsValidationReader& AValidations, TOdsDrawingReader& ADrawings)
    : FReader(AReader),
      FSheet(ASheet),
      FContext(AContext),
      FDrawings(ADrawings),
      FCells(AReader, ASheet, AContext, AValidations, ADrawings) {}

void TOdsSheetReader::Read() {
  ReadTableStyle();
  const size_t depth = FReader.Depth();
  for (TXmlEvent event = FReader.Next(); event != xeEnd; event = FReader.Next()) {
    if (event == xeEndElement && FReader.Depth() == depth) break;
    if (event == xeStartElement && !IsWrapper(FReader)) ReadElement();
  }
  FCells.Finish();
  FContext.ReportDropped("comment", FSheet.Name().ToUtf8(), FCells.CommentCount());
}

void TOdsSheetReader::ReadTableStyle() {
  const std::string_view style = AttributeOf(FReader, "style-name");
  if (FContext.Styles.Property(ofTable, style, ogTable, "display") == "false") FSheet.SetVisibility(svHidden);
  if (AttributeOf(FReader, "protected") == "true") FSheet.SetProtected(true);
  double size = 0;
  if (TryParseFileNumber(FContext.Styles.Property(ofTable, style, ogTable, "exact-column-width"), size) && size >= 0)
    FSheet.Sizing().SetDefaultColWidth(size);
  if (TryParseFileNumber(FContext.Styles.Property(ofTable, style, ogTable, "exact-row-height"), size) && size >= 0)
    FSheet.Sizing().SetDefaultRowHeight(size);
  if (FContext.Styles.Property(ofTable, style, ogTable, "writing-mode") != "rl-tb") return;
  TSheetViewOptions view = FSheet.View();
  view.RightToLeft = true;
  FSheet.SetView(view);
}

void TOdsSheetReader::ReadElement() {
  if (FReader.LocalNameIs("table-row")) return ReadRow();
  if (FReader.LocalNameIs("table-column")) return ReadColumn();
  if (FReader.LocalNameIs("shapes")) return ReadShapes();
  if (FReader.LocalNameIs("named-expressions") && OnNames) return OnNames();
  FReader.SkipElement();
}

void TOdsSheetReader::ReadShapes() {
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement) continue;
    if (FDrawings.IsDrawing(FReader.LocalName())) {
      FDrawings.Read(FReader, FSheet, {});
    } else {
      FReader.SkipElement();
    }
  }
}

// ---- columns

void TOdsSheetReader::ReadColumn() {
  const int32_t repeat = OdsRepeatCount(FReader.FindAttribute("number-columns-repeated").value_or("1"));
  const int32_t first = FNextCol;
  FNextCol = Advanced(FNextCol, repeat, kMaxCol);
  const bool isHidden = IsHiddenWord(AttributeOf(FReader, "visibility"));
  const std::string_view defaultStyle = AttributeOf(FReader, "default-cell-style-name");
  if (FNextCol > first)
    FColumns.push_back({FNextCol - 1, defaultStyle.empty() ? nullptr : &FContext.Formats.Find(defaultStyle)});
  auto width = FContext.Styles.GetColWidth(AttributeOf(FReader, "style-name"));
  // A width may also stand in properties of the column itself.
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement) continue;
    if (FReader.LocalNameIs("table-column-properties")) {
      std::string_view own = AttributeOf(FReader, "column-width");
      if (own.empty()) own = AttributeOf(FReader, "width");
      if (!own.empty()) width = {OdsCmToColChars(OdsParseLengthCm(own)), false};
    }
    FReader.SkipElement();
  }
  const int32_t last = std::min(Advanced(first, std::min(repeat, kOdsMaxRepeat), kMaxCol) - 1, kMaxCol);
  for (int32_t col = first; col <= last; ++col) {
    if (width && !width->IsDefault) FSheet.Sizing().SetColWidthChars(col, width->Size);
    if (isHidden) FSheet.Sizing().SetColHidden(col, true);
  }
}

/// The style of cells without one; to be asked for ascending columns.
TOdsCellStyle* TOdsSheetReader::ColumnStyle(int32_t ACol) {
  while (FColumnRun < FColumns.size() && FColumns[FColumnRun].Last < ACol) ++FColumnRun;
  return FColumnRun < FColumns.size() ? FColumns[FColumnRun].Style : nullptr;
}

// ---- rows

void TOdsSheetReader::ReadRow() {
  Poll();
  const int32_t repeat = OdsRepeatCount(FReader.FindAttribute("number-rows-repeated").value_or("1"));
  const std::string_view rowStyle = AttributeOf(FReader, "default-cell-style-name");
  TOdsCellStyle* const style = rowStyle.empty() ? nullptr : &FContext.Formats.Find(rowStyle);
  ReadRowGeometry(repeat);
  FCells.BeginRow(FNextRow, repeat);
  FColumnRun = 0;
  int32_t col = 1;
  for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
    if (event != xeStartElement) continue;
    if (FReader.Name() != "table:table-cell" && !FReader.LocalNameIs("table-cell") &&
        !FReader.LocalNameIs("covered-table-cell")) {
      FReader.SkipElement();
      continue;
    }
    col = Advanced(col, FCells.ReadCell(col, style ? style : ColumnStyle(col)), kMaxCol);
    Poll();
  }
  FNextRow = Advanced(FNextRow, repeat, kMaxRow);
}

void TOdsSheetReader::ReadRowGeometry(int32_t ARepeat) {
  const bool isHidden = IsHiddenWord(AttributeOf(FReader, "visibility"));
  const auto height = FContext.Styles.GetRowHeight(AttributeOf(FReader, "style-name"));
  const bool hasHeight = height && !height->IsDefault;
  if (!isHidden && !hasHeight) return;
  const int32_t last = Advanced(FNextRow, std::min(ARepeat, kOdsMaxRepeat), kMaxRow) - 1;
  for (int32_t row = FNextRow; row <= last; ++row) {
    if (hasHeight) FSheet.Sizing().SetRowHeightPt(row, height->Size);
    if (isHidden) FSheet.Sizing().SetRowHidden(row, true);
  }
}

void TOdsSheetReader::Poll() {
  if (++FSteps % kStepsPerPoll != 0 || !OnProgress) return;
  OnProgress(static_cast<double>(FReader.BytesRead()) / static_cast<double>(FReader.BytesTotal()));
}

}  // namespace tessarine::detail
