#include <tessarine/io/ods/detail/OdsSheetWriter.h>

#include <algorithm>
#include <cmath>

#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/io/ods/detail/OdsFormula.h>
#include <tessarine/io/ods/detail/OdsStyleWriter.h>
#include <tessarine/io/ods/detail/OdsTextWriter.h>
#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

constexpr size_t kCellsPerCheck = 4096;
/// Layers over whole columns can ask for any number of cells; no reader takes a part beyond this.
constexpr size_t kMaxContentBytes = size_t{1} << 31;
/// A link over more cells than this is written where cells have content only.
constexpr int64_t kMaxEmptyLinkCells = 65536;

int64_t AreaOf(const TCellRange& ARange) { return int64_t{ARange.Width()} * ARange.Height(); }

void AppendCount(const char* AName, int64_t ACount, std::string& AOut) {
  AOut.append(" ").append(AName).append("=\"").append(std::to_string(ACount)).append("\"");
}

}  // namespace

TOdsSheetWriter::TOdsSheetWriter(const TOdsSheetContext& AContext, const TWorksheet& ASheet, int32_t AIndex,
                                 const std::vector<std::string>& ARuleNames, std::string_view AShapes)
    : FContext(AContext),
      FSheet(ASheet),
      FIndex(AIndex),
      FRuleNames(ARuleNames),
      FShapes(AShapes),
      FOut(AContext.Out),
      FSheetName(ASheet.Name().ToUtf8()),
      FLines(ASheet, AIndex, AContext.Styles) {
  BuildMerges();
  BuildRules();
  BuildLinks();
}

// ---- layers

void TOdsSheetWriter::BuildMerges() {
  for (const TMergedRange& merge : FSheet.Merges()) {
    TCellRange range = merge.AsRange();
    if (ClipToSheet(range) && AreaOf(range) > 1) FMerges.push_back(range);
  }
  const std::vector<uint32_t> taken = RectsWithoutOverlap(FMerges);
  if (taken.size() < FMerges.size() && FContext.Options.Report)
    FContext.Options.Report->Add("merged area", ffDropped, FSheetName, FMerges.size() - taken.size(),
                                 "it meets another one");
  std::vector<TOdsLayer::TRect> rects;
  rects.reserve(taken.size());
  for (const uint32_t id : taken) rects.emplace_back(id, FMerges[id]);
  FLayers[lnMerges] = TOdsLayer(std::move(rects), true);
}

void TOdsSheetWriter::BuildRules() {
  std::vector<TOdsLayer::TRect> rects;
  for (uint32_t id = 0; id < FRuleNames.size(); ++id) {
    if (FRuleNames[id].empty()) continue;
    for (TCellRange range : FSheet.Validations().GetRule(id).Ranges)
      if (ClipToSheet(range)) rects.emplace_back(id, range);
  }
  FLayers[lnRules] = TOdsLayer(std::move(rects), false);
}

void TOdsSheetWriter::BuildLinks() {
  std::vector<TOdsLayer::TRect> rects;
  FSheet.Hyperlinks().ForEach([&](const TCellRange& ARange, const TText& ATarget) {
    TCellRange range = ARange;
    if (!ClipToSheet(range)) return;
    const bool onEmptyCells = AreaOf(range) <= kMaxEmptyLinkCells;
    if (!onEmptyCells && FContext.Options.Report)
      FContext.Options.Report->Add("link over empty cells", ffDropped, FSheetName, 1, "its range is too large");
    rects.emplace_back(static_cast<uint32_t>(FLinks.size()), range);
    FLinks.push_back({ATarget, onEmptyCells});
  });
  FLayers[lnLinks] = TOdsLayer(std::move(rects), false);
}

/// The places of spilled values as row and column in one number, sorted.
std::vector<uint64_t> TOdsSheetWriter::SpillPlaces() const {
  std::vector<uint64_t> places;
  FSheet.Spills().ForEachSpill([&](const TSpillRange& ABlock) {
    const int32_t lastRow = std::min(ABlock.EndRow, kMaxRow);
    const int32_t lastCol = std::min(ABlock.EndCol, kMaxCol);
    for (int32_t row = ABlock.AnchorRow; row <= lastRow; ++row) {
      for (int32_t col = ABlock.AnchorCol; col <= lastCol; ++col)
        places.push_back(static_cast<uint64_t>(row) << 32 | static_cast<uint32_t>(col));
    }
  });
  std::sort(places.begin(), places.end());
  places.erase(std::unique(places.begin(), places.end()), places.end());
  return places;
}

// ---- the table

void TOdsSheetWriter::Run() {
  AppendStart();
  const std::vector<uint64_t> spilled = SpillPlaces();
  auto nextSpilled = spilled.begin();
  FSheet.Store().ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    const uint64_t place = static_cast<uint64_t>(ARow) << 32 | static_cast<uint32_t>(ACol);
    for (; nextSpilled != spilled.end() && *nextSpilled < place; ++nextSpilled) PutSpilled(*nextSpilled);
    if (nextSpilled != spilled.end() && *nextSpilled == place) ++nextSpilled;
    PutCell(ACol, ARow, ASlot);
  });
  for (; nextSpilled != spilled.end(); ++nextSpilled) PutSpilled(*nextSpilled);
  EndRow();
  int32_t last = FLines.LastSpecialRow();
  for (const TOdsLayer& layer : FLayers) last = std::max(last, layer.LastRow());
  PutEmptyRowsBefore(std::max(last, 1) + 1);
  FOut += "</table:table>";
  if (FLeftOut > 0 && FContext.Options.Report)
    FContext.Options.Report->Add("character", ffDropped, FSheetName, FLeftOut, "the file format cannot carry it");
}

void TOdsSheetWriter::AppendStart() {
  const std::string style = "ta" + std::to_string(FIndex + 1);
  FContext.Styles.AddTableStyle(style, {FSheet.IsVisible(), FSheet.View().RightToLeft,
                                        FSheet.Sizing().DefaultColWidth(), FSheet.Sizing().DefaultRowHeight()});
  FOut += "<table:table table:name=\"";
  AppendXmlAttribute(FSheet.Name().View(), FOut);
  FOut.append("\" table:style-name=\"").append(style).append("\"");
  if (FSheet.IsProtected()) FOut += " table:protected=\"true\"";
  FOut += '>';
  if (!FShapes.empty()) FOut.append("<table:shapes>").append(FShapes).append("</table:shapes>");
  int32_t lastCol = FSheet.UsedMaxCol();
  for (const TOdsLayer& layer : FLayers) lastCol = std::max(lastCol, layer.LastCol());
  FLines.AppendColumns(lastCol, FOut);
}

// ---- rows

/// Brings the layers to a row; returns the last row for which they stay the same.
int32_t TOdsSheetWriter::EnterRow(int32_t ARow) {
  int32_t last = kMaxRow;
  FHasOver = false;
  for (int i = 0; i < lnCount; ++i) {
    FSpans[i] = &FLayers[i].MoveTo(ARow);
    FSpanAt[i] = 0;
    FHasOver = FHasOver || !FSpans[i]->empty();
    last = std::min(last, FLayers[i].NextChange() - 1);
  }
  return last;
}

/// The row must have been entered.
void TOdsSheetWriter::BeginRow(int32_t ARow, int32_t ACount) {
  FLines.AppendRowStart(FLines.LookOf(ARow), ACount, FOut);
  FRow = ARow;
  FRowIsOpen = true;
  FRowHasCell = false;
  FCol = 1;
}

void TOdsSheetWriter::EndRow() {
  if (!FRowIsOpen) return;
  if (FHasOver) {
    int32_t last = 0;
    for (const auto* spans : FSpans) last = spans->empty() ? last : std::max(last, spans->back().To);
    MoveTo(last + 1);
  }
  if (FBlank.IsPlain()) FBlankCount = 0;  // nothing is lost at the end of a row
  FlushBlanks();
  if (!FRowHasCell) FOut += "<table:table-cell/>";
  FOut += "</table:table-row>";
  FRowIsOpen = false;
}

/// Rows without cells of their own, alike ones together.
void TOdsSheetWriter::PutEmptyRowsBefore(int32_t ARow) {
  while (FRow + 1 < ARow) {
    const int32_t first = FRow + 1;
    int32_t last = std::min(EnterRow(first), ARow - 1);
    last = FLines.LastAlike(first, last);
    if (!FSpans[lnLinks]->empty()) last = std::min(last, first + kOdsMaxRepeat - 1);
    BeginRow(first, last - first + 1);
    EndRow();
    FRow = last;
    Check();
  }
}

/// Goes to a cell that has content, closing and opening rows on the way.
void TOdsSheetWriter::StepTo(int32_t ACol, int32_t ARow) {
  if (!FRowIsOpen || ARow != FRow) {
    EndRow();
    PutEmptyRowsBefore(ARow);
    EnterRow(ARow);
    BeginRow(ARow, 1);
  }
  MoveTo(ACol);
}

// ---- cells

/// Writes what lies between the last cell and this column.
void TOdsSheetWriter::MoveTo(int32_t ACol) {
  while (FCol < ACol) {
    TBlank blank;
    int32_t last = ACol - 1;
    if (FHasOver) {
      int32_t overLast = last;
      blank.Over = OverAt(FCol, overLast);
      last = std::min(last, overLast);
      if (blank.Over.Link != kNone && !FLinks[blank.Over.Link].OnEmptyCells) blank.Over.Link = kNone;
    }
    PutBlanks(blank, last - FCol + 1);
    FCol = last + 1;
  }
}

/// What is over a column of the open row, and in ALast the last column for which that is so. Columns only go up within
/// a row.
TOdsSheetWriter::TOver TOdsSheetWriter::OverAt(int32_t ACol, int32_t& ALast) {
  TOver over;
  ALast = kMaxCol;
  for (int i = 0; i < lnCount; ++i) {
    const std::vector<TOdsSpan>& spans = *FSpans[i];
    size_t& at = FSpanAt[i];
    while (at < spans.size() && spans[at].To < ACol) ++at;
    if (at == spans.size()) continue;
    const TOdsSpan& span = spans[at];
    if (span.From > ACol) {
      ALast = std::min(ALast, span.From - 1);
      continue;
    }
    ALast = std::min(ALast, span.To);
    if (i == lnRules) over.Rule = span.Id;
    if (i == lnLinks) over.Link = span.Id;
    if (i != lnMerges) continue;
    if (FMerges[span.Id].StartRow == FRow && span.From == ACol) {
      over.Merge = span.Id;
      ALast = ACol;
    } else {
      over.IsCovered = true;
    }
  }
  return over;
}

void TOdsSheetWriter::PutBlanks(const TBlank& ABlank, int32_t ACount) {
  if (FBlankCount > 0 && !(ABlank == FBlank)) FlushBlanks();
  FBlank = ABlank;
  FBlankCount += ACount;
}

void TOdsSheetWriter::FlushBlanks() {
  const int32_t limit = FBlank.IsSmall() ? kMaxCol : kOdsMaxRepeat;
  for (; FBlankCount > 0; FBlankCount -= std::min(FBlankCount, limit)) AppendBlankCell(std::min(FBlankCount, limit));
}

void TOdsSheetWriter::AppendBlankCell(int32_t ACount) {
  OpenCell(FBlank.Style, FBlank.Over);
  if (ACount > 1) AppendCount("table:number-columns-repeated", ACount, FOut);
  if (FBlank.Over.Link == kNone) {
    FOut += "/>";
    return;
  }
  FOut += " office:value-type=\"string\">";
  AppendOdsParagraphs(std::u16string_view(), HrefOf(FBlank.Over), FOut);
  CloseCell(FBlank.Over);
}

/// Up to where the attributes of the value begin.
void TOdsSheetWriter::OpenCell(int32_t AStyle, const TOver& AOver) {
  FRowHasCell = true;
  FOut += AOver.IsCovered ? "<table:covered-table-cell" : "<table:table-cell";
  FOut += FContext.Styles.CellStyleAttribute(AStyle);
  if (AOver.Rule != kNone) {
    FOut += " table:content-validation-name=\"";
    AppendXmlAttribute(FRuleNames[AOver.Rule], FOut);
    FOut += '"';
  }
  if (AOver.Merge != kNone) {
    const TCellRange& merge = FMerges[AOver.Merge];
    AppendCount("table:number-columns-spanned", merge.Width(), FOut);
    AppendCount("table:number-rows-spanned", merge.Height(), FOut);
  }
}

void TOdsSheetWriter::CloseCell(const TOver& AOver) {
  FOut += AOver.IsCovered ? "</table:covered-table-cell>" : "</table:table-cell>";
}

std::u16string_view TOdsSheetWriter::HrefOf(const TOver& AOver) const {
  return AOver.Link == kNone ? std::u16string_view() : FLinks[AOver.Link].Target.View();
}

void TOdsSheetWriter::PutCell(int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
  StepTo(ACol, ARow);
  const TCellExtras* extras = ASlot.HasExtras() ? FSheet.Store().FindExtras(ACol, ARow) : nullptr;
  TBlank cell;
  cell.Style = extras && extras->Override ? FContext.Styles.CellStyleOf(*extras->Override)
                                          : FContext.Styles.CellStyleOf(ASlot.StyleIndex);
  int32_t last = 0;
  if (FHasOver) cell.Over = OverAt(ACol, last);
  const TCellValue* spilled =
      ASlot.Kind == cvkEmpty && !FSheet.Spills().IsEmpty() ? FSheet.Spills().FindChildValue(ACol, ARow) : nullptr;
  if (ASlot.Kind == cvkEmpty && !spilled) {
    PutBlanks(cell, 1);
    ++FCol;
    return CountCell();
  }
  FlushBlanks();
  OpenCell(cell.Style, cell.Over);
  if (ASlot.Kind == cvkFormula) {
    const TFormulaRecord& record = FSheet.Store().Record(ASlot.Record);
    AppendFormula(ACol, ARow, record);
    AppendValue(record.CachedView(), cell.Over, true);
  } else if (spilled) {
    AppendValue(spilled->View(), cell.Over, true);
  } else if (extras && extras->Runs && ASlot.Kind == cvkText) {
    AppendRuns(*extras->Runs, cell.Over);
  } else {
    AppendValue(ASlot.ConstantView(), cell.Over, false);
  }
  ++FCol;
  CountCell();
}

/// A value that a formula lays over a free cell.
void TOdsSheetWriter::PutSpilled(uint64_t APlace) {
  const auto row = static_cast<int32_t>(APlace >> 32);
  const auto col = static_cast<int32_t>(APlace & 0xFFFFFFFFu);
  const TCellValue* value = FSheet.Spills().FindChildValue(col, row);
  if (!value || value->IsEmpty()) return;
  StepTo(col, row);
  FlushBlanks();
  TOver over;
  int32_t last = 0;
  if (FHasOver) over = OverAt(col, last);
  OpenCell(FContext.Styles.CellStyleOf(int32_t{0}), over);
  AppendValue(value->View(), over, true);
  ++FCol;
  CountCell();
}

/// The attributes of a value and its text, to the end of the cell.
void TOdsSheetWriter::AppendValue(const TValueView& AValue, const TOver& AOver, bool AIsResult) {
  TValueView value = AValue;
  if (value.Kind == cvkNumber && !std::isfinite(value.Number)) value = TValueView::FromError(ceNum);
  switch (value.Kind) {
    case cvkNumber: AppendNumberValue(value.Number); break;
    case cvkBoolean:
      FOut += FContext.Options.Literal ? " office:value-type=\"boolean\" office:value="
                                       : " office:value-type=\"boolean\" office:boolean-value=";
      FOut += value.BooleanValue ? "\"true\"" : "\"false\"";
      break;
    case cvkText:
    case cvkFormula: return AppendText(value.Text(), AOver, AIsResult);
    case cvkError: {
      FOut += " office:value-type=\"string\" calcext:value-type=\"error\">";
      FLeftOut += AppendOdsParagraphs(ErrorCodeToString(value.ErrorCode), HrefOf(AOver), FOut);
      if (!AIsResult && FContext.Options.Report)
        FContext.Options.Report->Add("error value", ffRewritten, FSheetName, 1, "as a text that is marked as error");
      return CloseCell(AOver);
    }
    case cvkEmpty: break;
  }
  if (AOver.Link == kNone) {
    FOut += "/>";
    return;
  }
  FOut += '>';
  FText.clear();
  FSheet.AppendDisplayText({FCol, FRow}, &FContext.Workbook.StyleSheet(), FText);
  FLeftOut += AppendOdsParagraphs(FText, HrefOf(AOver), FOut);
  CloseCell(AOver);
}

void TOdsSheetWriter::AppendNumberValue(double ANumber) {
  char buffer[kNumberTextSize];
  FOut += " office:value-type=\"float\" office:value=\"";
  FOut.append(buffer, WriteFileNumber(ANumber, buffer));
  FOut += '"';
}

void TOdsSheetWriter::AppendText(std::u16string_view AText, const TOver& AOver, bool AIsResult) {
  AppendStringType(AText, AIsResult);
  FLeftOut += AppendOdsParagraphs(AText, HrefOf(AOver), FOut);
  CloseCell(AOver);
}

/// Line ends that paragraphs do not bring back stand in an attribute as well, and so does an empty text that is
/// no result.
void TOdsSheetWriter::AppendStringType(std::u16string_view AText, bool AIsResult) {
  FOut += " office:value-type=\"string\"";
  if ((AText.empty() && !AIsResult) || !OdsLineEndsComeBack(AText)) {
    FOut += " office:string-value=\"";
    AppendXmlAttribute(AText, FOut);
    FOut += '"';
  }
  FOut += '>';
}

void TOdsSheetWriter::AppendRuns(const TRichTextRuns& ARuns, const TOver& AOver) {
  std::vector<TOdsTextPiece> pieces;
  FText.clear();
  for (const TRichTextRun& run : ARuns) {
    pieces.push_back({run.Text, FContext.Styles.TextStyleOf(run.Font)});
    FText += run.Text.View();
  }
  AppendStringType(FText, false);
  FLeftOut += AppendOdsParagraphs(pieces, HrefOf(AOver), FOut);
  CloseCell(AOver);
}

/// A formula whose result is a block of cells names the block's size.
void TOdsSheetWriter::AppendFormula(int32_t ACol, int32_t ARow, const TFormulaRecord& ARecord) {
  FText.clear();
  ARecord.Template->AppendTextAt(ACol, ARow, FText);
  if (const TSpillRange* block = FSheet.Spills().IsEmpty() ? nullptr : FSheet.Spills().TryGetSpill(ACol, ARow)) {
    AppendCount("table:number-matrix-columns-spanned", std::min<int64_t>(block->ColCount(), kMaxCol - ACol + 1), FOut);
    AppendCount("table:number-matrix-rows-spanned", std::min<int64_t>(block->RowCount(), kMaxRow - ARow + 1), FOut);
  }
  FOut += " table:formula=\"";
  AppendXmlAttribute(OdsFormulaFromExcel(FText, FContext.Options.Literal), FOut);
  FOut += '"';
}

void TOdsSheetWriter::CountCell() {
  if (++FCellsDone % kCellsPerCheck != 0) return;
  Check();
  const auto all = static_cast<double>(FSheet.Store().CellCount() + 1);
  const double ofSheet = std::min(static_cast<double>(FCellsDone) / all, 1.0);
  FContext.Options.Control.Report(ppSaving, (FIndex + ofSheet) / FContext.Workbook.SheetCount() * 0.9, FSheetName);
}

void TOdsSheetWriter::Check() {
  FContext.Options.Control.CheckStop();
  if (FOut.size() > kMaxContentBytes)
    throw ELimit("content.xml, sheet " + FSheetName + ": the content takes more than " +
                 std::to_string(kMaxContentBytes) + " bytes");
}

}  // namespace tessarine::detail
