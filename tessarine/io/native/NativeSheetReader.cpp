#include <tessarine/io/native/detail/NativeSheetReader.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include <boost/unordered/unordered_flat_set.hpp>

#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/native/detail/NativeCellReader.h>
#include <tessarine/io/native/detail/NativeChartFields.h>
#include <tessarine/io/native/detail/NativeListFields.h>
#include <tessarine/platform/Base64.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// What a sheet without content takes in memory, its lists included.
constexpr size_t kSheetBytes = 4096;

/// The number of a spelling; nothing when it is none.
std::optional<double> NumberOf(std::string_view ASpelling) {
  double number = 0;
  return TryParseFileNumber(ASpelling, number) ? std::optional(number) : std::nullopt;
}

/// The whole number of a spelling, 0 when it is none of 32 bits.
int32_t LineOf(std::string_view ASpelling) {
  int32_t line = 0;
  return TryParseInt32(ASpelling, line) ? line : 0;
}

bool IsTrueSpelling(const std::string& ASpelling) { return EqualAsciiNoCase(Utf8ToUtf16(ASpelling), u"true"); }

/// One map of a sizing: its name and what an entry does.
struct TSizingMap {
  std::string_view Name;
  void (*Set)(TRowColSizing& ASizing, int32_t ALine, const std::string& ASpelling);
};

constexpr TSizingMap kSizingMaps[] = {
    {"colWidths",
     [](TRowColSizing& ASizing, int32_t ALine, const std::string& ASpelling) {
       ASizing.SetColWidthChars(ALine, NumberOf(ASpelling).value_or(ASizing.DefaultColWidth()));
     }},
    {"rowHeights",
     [](TRowColSizing& ASizing, int32_t ALine, const std::string& ASpelling) {
       ASizing.SetRowHeightPt(ALine, NumberOf(ASpelling).value_or(ASizing.DefaultRowHeight()));
     }},
    {"hiddenCols", [](TRowColSizing& ASizing, int32_t ALine,
                      const std::string& ASpelling) { ASizing.SetColHidden(ALine, IsTrueSpelling(ASpelling)); }},
    {"hiddenRows", [](TRowColSizing& ASizing, int32_t ALine,
                      const std::string& ASpelling) { ASizing.SetRowHidden(ALine, IsTrueSpelling(ASpelling)); }},
    {"rowOutlineLevels", [](TRowColSizing& ASizing, int32_t ALine,
                            const std::string& ASpelling) { ASizing.SetRowOutlineLevel(ALine, LineOf(ASpelling)); }},
    {"rowCollapsed", [](TRowColSizing& ASizing, int32_t ALine,
                        const std::string& ASpelling) { ASizing.SetRowCollapsed(ALine, IsTrueSpelling(ASpelling)); }},
    {"colOutlineLevels", [](TRowColSizing& ASizing, int32_t ALine,
                            const std::string& ASpelling) { ASizing.SetColOutlineLevel(ALine, LineOf(ASpelling)); }},
    {"colCollapsed", [](TRowColSizing& ASizing, int32_t ALine,
                        const std::string& ASpelling) { ASizing.SetColCollapsed(ALine, IsTrueSpelling(ASpelling)); }},
};

TSheetVisibility VisibilityOf(const TText& AWord) {
  if (EqualAsciiNoCase(AWord, u"hidden")) return svHidden;
  return EqualAsciiNoCase(AWord, u"veryHidden") ? svVeryHidden : svVisible;
}

void ApplyHead(const TNativeSheetHead& AHead, TWorksheet& ASheet) {
  ASheet.SetView({.ShowGridLines = AHead.ShowGridLines,
                  .ShowHeaders = AHead.ShowHeaders,
                  .ShowFormulas = AHead.ShowFormulas,
                  .ShowZeros = AHead.ShowZeros,
                  .R1C1 = AHead.R1C1,
                  .Zoom = AHead.Zoom,
                  .RightToLeft = AHead.RightToLeft});
  ASheet.SetProtected(AHead.Protected);
  ASheet.SetFrozenRows(AHead.FrozenRows);
  ASheet.SetFrozenCols(AHead.FrozenCols);
  ASheet.SetVisibility(VisibilityOf(AHead.Visibility));
}

TText Numbered(std::string_view AStem, size_t APosition) {
  return TText::FromUtf8(std::string(AStem) + std::to_string(APosition));
}

/// Corners that an element of "merges" must have.
int32_t ReadCorner(const TNativeDocument& ADocument, TNativeObject& AMerge, std::string_view AName) {
  if (const TJsonPlace place = AMerge.Find(AName)) return ADocument.ReadInt32(place);
  throw EFileFormat(ADocument.Json().Describe(AMerge.Place()) + ": a merged area needs \"" + std::string(AName) + "\"");
}

/// Links over more than this many cells are written under the text of their range.
constexpr int64_t kLeastRangeLink = 1025;

}  // namespace

void ForEachFirstMember(const TNativeDocument& ADocument, TJsonPlace AObject,
                        const std::function<void(std::string_view, TJsonPlace)>& AVisit) {
  if (!AObject) return;
  boost::unordered_flat_set<std::string_view> seen;
  ADocument.Json().ForEachMember(AObject, [&](std::string_view AName, TJsonPlace AValue) -> TJsonPlace {
    if (seen.insert(AName).second && *AValue != 'n') AVisit(AName, AValue);
    return nullptr;
  });
}

TNativeSheetReader::TNativeSheetReader(TNativeDocument& ADocument, const TTsrReadOptions& AOptions,
                                       TWorkbook& AWorkbook)
    : FDocument(ADocument), FOptions(AOptions), FWorkbook(AWorkbook) {}

template <class TReadOne>
void TNativeSheetReader::ForEachObject(TJsonPlace AArray, size_t ABytes, TReadOne&& AReadOne) {
  if (!AArray) return;
  size_t position = 0;
  FDocument.Json().ForEachElement(AArray, [&](TJsonPlace AElement) {
    ++position;
    if (TJsonText::KindOf(AElement) != jkObject) return;
    FDocument.Take(ABytes, AElement);
    AReadOne(AElement, position);
  });
}

template <class TRecord>
TRecord TNativeSheetReader::ReadRecord(TJsonPlace AObject) {
  TRecord record = NewNativeRecord<TRecord>();
  TNativeObject object(FDocument, AObject);
  TNativeFieldReader reader(FDocument, object);
  VisitNativeFields(reader, record);
  return record;
}

/// Notes something whose key is no place of the sheet.
void TNativeSheetReader::Drop(std::string_view AFeature, std::string_view AKey) {
  if (!FOptions.Report) return;
  FOptions.Report->Add(AFeature, ffDropped, FSheet->Name().ToUtf8(), 1,
                       "\"" + std::string(AKey.substr(0, 40)) + "\" is no place of a sheet");
}

void TNativeSheetReader::Read(TJsonPlace ASheet, size_t APosition) {
  FDocument.Take(kSheetBytes, ASheet);
  TNativeObject object(FDocument, ASheet);
  TNativeFieldReader reader(FDocument, object);
  TText name = Numbered("Sheet", APosition);
  reader("name", name);
  FSheet = &FWorkbook.AddSheet(name);
  ReadHead(reader);
  ReadSizing(object.FindObject("sizing"));
  if (const TJsonPlace view = object.FindObject("view")) ReadView(view);
  if (const TJsonPlace cells = object.FindObject("cells"))
    TNativeCellReader(FDocument, *FSheet, FOptions.Control).Read(cells);
  ReadMerges(object.FindArray("merges"));
  ReadDrawings(object);
  ReadHyperlinks(object.FindObject("hyperlinks"));
  ReadComments(object.FindObject("comments"));
  if (const TJsonPlace filter = object.FindObject("autoFilter")) ReadAutoFilter(filter);
  ForEachObject(object.FindArray("tables"), sizeof(TSheetTable),
                [this](TJsonPlace ATable, size_t AIndex) { ReadTable(ATable, AIndex); });
  ForEachObject(object.FindArray("pivotTables"), sizeof(TPivotTable),
                [this](TJsonPlace APivot, size_t AIndex) { ReadPivotTable(APivot, AIndex); });
  ForEachObject(object.FindArray("slicers"), sizeof(TSheetSlicer),
                [this](TJsonPlace ASlicer, size_t) { ReadSlicer(ASlicer); });
  ForEachObject(object.FindArray("validations"), sizeof(TDataValidationRule), [this](TJsonPlace ARule, size_t) {
    FSheet->Validations().AddRule(ReadRecord<TDataValidationRule>(ARule));
  });
  ForEachObject(object.FindArray("conditionalFormats"), sizeof(TConditionalFormatRule),
                [this](TJsonPlace ARule, size_t) {
                  FSheet->ConditionalFormats().AddRule(ReadRecord<TConditionalFormatRule>(ARule));
                });
  if (const TJsonPlace setup = object.FindObject("pageSetup")) ReadPageSetup(setup);
}

/// After a field of a wrong type the settings ahead of it stand.
void TNativeSheetReader::ReadHead(TNativeFieldReader& AReader) {
  TNativeSheetHead head;
  try {
    VisitNativeFields(AReader, head);
  } catch (...) {
    ApplyHead(head, *FSheet);
    throw;
  }
  ApplyHead(head, *FSheet);
}

void TNativeSheetReader::ReadSizing(TJsonPlace ASizing) {
  TRowColSizing& sizing = FSheet->Sizing();
  sizing.Clear();
  TNativeObject object(FDocument, ASizing);
  TNativeFieldReader reader(FDocument, object);
  // One after another: after a field of a wrong type those ahead of it stand.
  const auto read = [&](std::string_view AName, auto AValue, auto ASet) {
    reader(AName, AValue);
    (sizing.*ASet)(AValue);
  };
  read("defaultColWidth", sizing.DefaultColWidth(), &TRowColSizing::SetDefaultColWidth);
  read("defaultRowHeight", sizing.DefaultRowHeight(), &TRowColSizing::SetDefaultRowHeight);
  read("outlineSummaryBelow", true, &TRowColSizing::SetOutlineSummaryBelow);
  read("outlineSummaryRight", true, &TRowColSizing::SetOutlineSummaryRight);
  for (const TSizingMap& map : kSizingMaps) {
    ForEachFirstMember(FDocument, object.FindObject(map.Name), [&](std::string_view AKey, TJsonPlace AValue) {
      map.Set(sizing, LineOf(AKey), FDocument.Json().SpellingOf(AValue));
    });
  }
}

void TNativeSheetReader::ReadView(TJsonPlace AView) {
  const auto view = ReadRecord<TNativeSavedView>(AView);
  std::vector<TCellRange> ranges;
  for (const TText& text : view.Selection) {
    const TCellRange range = TCellRange::FromA1(text).Normalize();
    if (range.StartCol >= 1 && range.StartRow >= 1) ranges.push_back(range);
  }
  FSheet->SavedView().AssignFrom(std::move(ranges), view.ActiveCol, view.ActiveRow, view.TopLeftCol, view.TopLeftRow,
                                 view.TabSelected);
}

void TNativeSheetReader::ReadMerges(TJsonPlace AMerges) {
  ForEachObject(AMerges, sizeof(TMergedRange), [this](TJsonPlace AMerge, size_t) {
    TNativeObject merge(FDocument, AMerge);
    TCellRange range;
    range.StartCol = ReadCorner(FDocument, merge, "sc");
    range.StartRow = ReadCorner(FDocument, merge, "sr");
    range.EndCol = ReadCorner(FDocument, merge, "ec");
    range.EndRow = ReadCorner(FDocument, merge, "er");
    FSheet->MergeRange(range);
  });
}

// ---- drawings

void TNativeSheetReader::ReadDrawings(TNativeObject& ASheet) {
  TSheetDrawingList& drawings = FSheet->Drawings();
  drawings.Clear();
  ForEachObject(ASheet.FindArray("drawings"), sizeof(TSheetDrawing), [&](TJsonPlace ADrawing, size_t) {
    FOptions.Control.CheckStop();
    auto drawing = std::make_unique<TSheetDrawing>(ReadRecord<TSheetDrawing>(ADrawing));
    if (drawing->ImageBytes.empty()) drawing->ContentType = {};
    drawings.Add(std::move(drawing));
  });
  if (const TJsonPlace bag = ASheet.FindObject("drawingBag")) ReadDrawingBag(bag);
}

void TNativeSheetReader::ReadDrawingBag(TJsonPlace ABag) {
  const auto fields = ReadRecord<TNativeDrawingBag>(ABag);
  TSheetDrawingBag& bag = FSheet->Drawings().Bag();
  bag.SetSheetRelId(fields.SheetRelId);
  if (!fields.DrawingPartPath.IsEmpty() && !fields.DrawingXml.empty())
    bag.SetDrawingPart(fields.DrawingPartPath, fields.DrawingXml);
  if (!fields.DrawingRelsPath.IsEmpty() && !fields.DrawingRelsXml.empty())
    bag.SetDrawingRels(fields.DrawingRelsPath, fields.DrawingRelsXml);
  TNativeObject object(FDocument, ABag);
  ForEachFirstMember(FDocument, object.FindObject("parts"), [&](std::string_view APath, TJsonPlace ABytes) {
    if (TJsonText::KindOf(ABytes) != jkText) return;
    bag.AddPart(TNativeDocument::DecodeText(APath), DecodeBase64(FDocument.ReadText(ABytes).ToUtf8()));
  });
}

// ---- lists

void TNativeSheetReader::ReadHyperlinks(TJsonPlace ALinks) {
  ForEachFirstMember(FDocument, ALinks, [this](std::string_view ARawKey, TJsonPlace ATarget) {
    const TText key = TNativeDocument::DecodeText(ARawKey);
    const TText target = FDocument.ReadText(ATarget);
    const TCellAddress address = TCellAddress::FromKey(key);
    if (address.IsValid()) return FSheet->SetHyperlink(address.Col, address.Row, target);
    const TCellRange range = TCellRange::FromA1(key);
    const bool isRange = range.StartCol >= 1 && range.StartRow >= 1;
    if (isRange && int64_t{range.Width()} * range.Height() >= kLeastRangeLink) {
      FSheet->Hyperlinks().SetHyperlinkRange(range, target);
    } else {
      Drop("hyperlink", ARawKey);
    }
  });
}

void TNativeSheetReader::ReadComments(TJsonPlace AComments) {
  ForEachFirstMember(FDocument, AComments, [this](std::string_view ARawKey, TJsonPlace AComment) {
    if (TJsonText::KindOf(AComment) != jkObject) return;
    auto comment = ReadRecord<TNativeComment>(AComment);
    const TCellAddress address = TCellAddress::FromKey(TNativeDocument::DecodeText(ARawKey));
    if (!address.IsValid()) return Drop("comment", ARawKey);
    FSheet->Comments().SetComment(address.Col, address.Row, std::move(comment.Author), std::move(comment.Text));
  });
}

void TNativeSheetReader::ReadAutoFilter(TJsonPlace AFilter) {
  auto filter = ReadRecord<TNativeAutoFilter>(AFilter);
  TAutoFilterState state;
  state.Active = filter.Active;
  state.Range = filter.Range;
  for (TAutoFilterColumn& column : filter.Columns) state.Columns.insert_or_assign(column.Col, std::move(column));
  FSheet->AutoFilter().RestoreState(std::move(state));
}

void TNativeSheetReader::ReadTable(TJsonPlace ATable, size_t APosition) {
  TNativeObject object(FDocument, ATable);
  TNativeFieldReader reader(FDocument, object);
  TNativeTable fields;
  fields.Name = Numbered("Table", APosition);
  VisitTableNames(reader, fields);
  fields.DisplayName = fields.Name;
  VisitTableFields(reader, fields);
  TSheetTable& table = FSheet->Tables().Add(fields.Name, fields.Ref);
  table.SetDisplayName(fields.DisplayName);
  table.SetHasHeaderRow(fields.HasHeaderRow);
  table.SetHasTotalsRow(fields.HasTotalsRow);
  table.SetShowAutoFilter(fields.ShowAutoFilter);
  table.SetShowRowStripes(fields.ShowRowStripes);
  table.SetShowColumnStripes(fields.ShowColumnStripes);
  table.SetStyleName(fields.StyleName);
  table.SetColumnNames(std::move(fields.ColumnNames));
}

void TNativeSheetReader::ReadPivotTable(TJsonPlace APivot, size_t APosition) {
  TNativeObject object(FDocument, APivot);
  TNativeFieldReader reader(FDocument, object);
  TNativePivotTable fields;
  fields.Name = Numbered("Pivot", APosition);
  VisitNativeFields(reader, fields);
  TPivotTable& pivot = FSheet->Pivots().Add(fields.Name, fields.CacheId, TCellAddress::FromA1(fields.Dest));
  pivot.RowGrandTotals = fields.RowGrandTotals;
  pivot.ColGrandTotals = fields.ColGrandTotals;
  pivot.LayoutForm = fields.LayoutForm;
  pivot.StyleName = fields.StyleName;
  pivot.HeaderRowCount = fields.HeaderRowCount;
  pivot.Fields = std::move(fields.Fields);
}

void TNativeSheetReader::ReadSlicer(TJsonPlace ASlicer) {
  auto fields = ReadRecord<TNativeSlicer>(ASlicer);
  auto slicer = std::make_unique<TSheetSlicer>(fields.Name, fields.Kind, fields.CacheId, fields.FieldIndex,
                                               TCellAddress::FromA1(fields.Anchor));
  slicer->WidthCols = fields.WidthCols;
  slicer->HeightRows = fields.HeightRows;
  slicer->TimelineLevel = fields.TimelineLevel;
  slicer->SetSelected(std::move(fields.Selected));
  slicer->PivotNames = std::move(fields.PivotNames);
  FSheet->Slicers().Add(std::move(slicer));
}

// ---- page setup

void TNativeSheetReader::ReadPageSetup(TJsonPlace ASetup) {
  TPageSetup& setup = FSheet->PageSetup();
  TNativeObject object(FDocument, ASetup);
  TNativeFieldReader reader(FDocument, object);
  reader("orientation", setup.Orientation);
  TPaperSize paper = psLetter;
  reader("paperSize", paper);
  setup.SetPaperSize(paper);
  TPaperDimensions custom{setup.PaperWidthInches(), setup.PaperHeightInches()};
  reader("paperWidthInches", custom.Width);
  reader("paperHeightInches", custom.Height);
  setup.SetCustomPaperInches(custom.Width, custom.Height);
  VisitPageScaleFields(reader, setup);
  const auto ifSet = [&](std::string_view AFlag, std::string_view AName, auto&& AApply) {
    bool isSet = false;
    reader(AFlag, isSet);
    TCellRange range;
    if (!isSet) return;
    reader(AName, range);
    AApply(range);
  };
  ifSet("hasPrintArea", "printArea", [&](const TCellRange& ARange) { setup.SetPrintArea(ARange); });
  ifSet("hasTitleRows", "titleRows",
        [&](const TCellRange& ARange) { setup.SetTitleRows(ARange.StartRow, ARange.EndRow); });
  ifSet("hasTitleCols", "titleCols",
        [&](const TCellRange& ARange) { setup.SetTitleCols(ARange.StartCol, ARange.EndCol); });
  VisitPagePrintFields(reader, setup);
  ReadBreaks(object);
}

/// Sorted first: the setup keeps breaks in order, and one behind the last costs least.
void TNativeSheetReader::ReadBreaks(TNativeObject& ASetup) {
  TNativeFieldReader reader(FDocument, ASetup);
  std::vector<int32_t> rows;
  std::vector<int32_t> cols;
  reader("rowBreaks", rows);
  std::sort(rows.begin(), rows.end());
  for (const int32_t row : rows) FSheet->PageSetup().AddRowBreak(row);
  reader("colBreaks", cols);
  std::sort(cols.begin(), cols.end());
  for (const int32_t col : cols) FSheet->PageSetup().AddColBreak(col);
}

}  // namespace tessarine::detail
