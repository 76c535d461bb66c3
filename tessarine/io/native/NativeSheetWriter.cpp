#include <tessarine/io/native/detail/NativeSheetWriter.h>

#include <algorithm>
#include <span>
#include <utility>

#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/native/detail/NativeCellWriter.h>
#include <tessarine/io/native/detail/NativeChartFields.h>
#include <tessarine/io/native/detail/NativeListFields.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Links over more cells than this are written under the text of their range instead of one by one.
constexpr int64_t kMostLinkedCells = 1024;

constexpr std::u16string_view VisibilityWord(TSheetVisibility AVisibility) {
  switch (AVisibility) {
    case svHidden: return u"hidden";
    case svVeryHidden: return u"veryHidden";
    case svVisible: break;
  }
  return u"visible";
}

/// One map of a sizing: whether a line has an entry, and how that is written.
struct TWrittenSizingMap {
  std::string_view Name;
  bool IsOfRows;
  bool (*Has)(const TRowColSizing& ASizing, int32_t ALine);
  void (*Write)(const TRowColSizing& ASizing, int32_t ALine, TJsonWriter& AJson);
};

void WriteTrue(const TRowColSizing&, int32_t, TJsonWriter& AJson) { AJson.Boolean(true); }

constexpr TWrittenSizingMap kWrittenSizingMaps[] = {
    {"colWidths", false, [](const TRowColSizing& ASizing, int32_t ACol) { return ASizing.HasCustomColWidth(ACol); },
     [](const TRowColSizing& ASizing, int32_t ACol, TJsonWriter& AJson) {
       AJson.Number(ASizing.GetColWidthChars(ACol));
     }},
    {"rowHeights", true, [](const TRowColSizing& ASizing, int32_t ARow) { return ASizing.HasCustomRowHeight(ARow); },
     [](const TRowColSizing& ASizing, int32_t ARow, TJsonWriter& AJson) {
       AJson.Number(ASizing.GetRowHeightPt(ARow));
     }},
    {"hiddenCols", false, [](const TRowColSizing& ASizing, int32_t ACol) { return ASizing.IsColHidden(ACol); },
     WriteTrue},
    {"hiddenRows", true, [](const TRowColSizing& ASizing, int32_t ARow) { return ASizing.IsRowHidden(ARow); },
     WriteTrue},
    {"rowOutlineLevels", true,
     [](const TRowColSizing& ASizing, int32_t ARow) { return ASizing.GetRowOutlineLevel(ARow) > 0; },
     [](const TRowColSizing& ASizing, int32_t ARow, TJsonWriter& AJson) {
       AJson.Integer(ASizing.GetRowOutlineLevel(ARow));
     }},
    {"rowCollapsed", true, [](const TRowColSizing& ASizing, int32_t ARow) { return ASizing.IsRowCollapsed(ARow); },
     WriteTrue},
    {"colOutlineLevels", false,
     [](const TRowColSizing& ASizing, int32_t ACol) { return ASizing.GetColOutlineLevel(ACol) > 0; },
     [](const TRowColSizing& ASizing, int32_t ACol, TJsonWriter& AJson) {
       AJson.Integer(ASizing.GetColOutlineLevel(ACol));
     }},
    {"colCollapsed", false, [](const TRowColSizing& ASizing, int32_t ACol) { return ASizing.IsColCollapsed(ACol); },
     WriteTrue},
};

/// What a link is written under: a cell, or a range of many.
struct TLinkKey {
  TCellRange Range;
  TText Target;

  std::pair<int32_t, int32_t> Place() const { return {Range.StartRow, Range.StartCol}; }
};

std::vector<TLinkKey> LinkKeysOf(const THyperlinkList& ALinks) {
  std::vector<TLinkKey> keys;
  ALinks.ForEach([&](const TCellRange& ARange, const TText& ATarget) {
    if (int64_t{ARange.Width()} * ARange.Height() > kMostLinkedCells) {
      keys.push_back({ARange, ATarget});
      return;
    }
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) {
      for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) keys.push_back({{col, row, col, row}, ATarget});
    }
  });
  std::sort(keys.begin(), keys.end(),
            [](const TLinkKey& ALeft, const TLinkKey& ARight) { return ALeft.Place() < ARight.Place(); });
  return keys;
}

/// Tells what of a sheet's objects a document has no place for.
void ReportLosses(const TWorksheet& ASheet, uint64_t ASparklines, TFileReport& AReport) {
  const std::string name = ASheet.Name().ToUtf8();
  const auto drop = [&](std::string_view AFeature, uint64_t ACount, std::string_view ANote = {}) {
    if (ACount > 0) AReport.Add(AFeature, ffDropped, name, ACount, ANote);
  };
  drop("sparkline", ASparklines, "returns with the next recalculation");
  for (const auto& pivot : ASheet.Pivots()) {
    drop("calculated field", pivot->CalcFields.size(), pivot->Name.ToUtf8());
    drop("calculated item", pivot->CalcItems.size(), pivot->Name.ToUtf8());
    drop("pivot group", pivot->Groups.size(), pivot->Name.ToUtf8());
    drop("pivot filter selection", pivot->FilterSelections.size(), pivot->Name.ToUtf8());
    drop("pivot sort order", pivot->SortFieldIndex >= 0 || pivot->SortValueOrdinal >= 0 ? 1 : 0, pivot->Name.ToUtf8());
  }
  for (int32_t index = 0; index < ASheet.Drawings().Count(); ++index) {
    const TSheetDrawing& drawing = *ASheet.Drawings().GetItem(index);
    drop("link of a chart to a pivot table", drawing.LinkedPivotName.IsEmpty() ? 0 : 1, drawing.Name.ToUtf8());
    drop("data table of a chart", drawing.ShowDataTable ? 1 : 0, drawing.Name.ToUtf8());
  }
}

}  // namespace

void TNativeOutput::Flush() {
  FStream.Write(std::as_bytes(std::span(FText)));
  FText.clear();
}

void TNativeOutput::WriteBehind(std::string_view AText) {
  if (!FText.empty()) Flush();
  FStream.Write(std::as_bytes(std::span(AText)));
}

TNativeSheetWriter::TNativeSheetWriter(TNativeOutput& AOutput, const TTsrWriteOptions& AOptions)
    : FOutput(AOutput), FJson(AOutput.Json()), FFields(AOutput.Json()), FOptions(AOptions) {}

template <class TList, class TMakeRecord>
void TNativeSheetWriter::WriteList(std::string_view AName, const TList& AList, TMakeRecord&& AMakeRecord) {
  if (AList.IsEmpty()) return;
  FJson.Name(AName);
  FJson.BeginArray();
  for (const auto& item : AList) {
    FFields.Write(AMakeRecord(item));
    FOutput.Pass();
  }
  FJson.EndArray();
}

void TNativeSheetWriter::Write(const TWorksheet& ASheet, double ADone, double AShare) {
  FOptions.Control.CheckStop();
  FOptions.Control.Report(ppSaving, ADone, ASheet.Name().ToUtf8());
  FJson.BeginObject();
  FFields("name", ASheet.Name());
  WriteHead(ASheet);
  WriteSizing(ASheet.Sizing());
  WriteView(ASheet);
  FJson.Name("cells");
  FJson.BeginObject();
  TNativeCellWriter cells(FOutput, ASheet, FOptions);
  cells.Write(ADone, AShare);
  FJson.EndObject();
  WriteMerges(ASheet);
  WriteDrawings(ASheet.Drawings());
  WriteHyperlinks(ASheet);
  WriteComments(ASheet);
  WriteAutoFilter(ASheet);
  WriteTables(ASheet);
  WritePivotTables(ASheet);
  WriteSlicers(ASheet);
  WriteRules(ASheet);
  WritePageSetup(ASheet.PageSetup());
  FJson.EndObject();
  FOutput.Pass();
  if (FOptions.Report) ReportLosses(ASheet, cells.SparklineCount(), *FOptions.Report);
}

void TNativeSheetWriter::WriteHead(const TWorksheet& ASheet) {
  const TSheetViewOptions& view = ASheet.View();
  const TNativeSheetHead head{.ShowGridLines = view.ShowGridLines,
                              .ShowHeaders = view.ShowHeaders,
                              .ShowFormulas = view.ShowFormulas,
                              .ShowZeros = view.ShowZeros,
                              .R1C1 = view.R1C1,
                              .Protected = ASheet.IsProtected(),
                              .FrozenRows = ASheet.FrozenRows(),
                              .FrozenCols = ASheet.FrozenCols(),
                              .Zoom = view.Zoom,
                              .RightToLeft = view.RightToLeft,
                              .Visibility = VisibilityWord(ASheet.Visibility())};
  VisitNativeFields(FFields, head);
}

void TNativeSheetWriter::WriteSizing(const TRowColSizing& ASizing) {
  FJson.Name("sizing");
  FJson.BeginObject();
  FFields("defaultColWidth", ASizing.DefaultColWidth());
  FFields("defaultRowHeight", ASizing.DefaultRowHeight());
  FFields("outlineSummaryBelow", ASizing.OutlineSummaryBelow());
  FFields("outlineSummaryRight", ASizing.OutlineSummaryRight());
  const std::vector<int32_t> rows = ASizing.MarkedRows(true);
  const std::vector<int32_t> cols = ASizing.MarkedCols(true);
  for (const TWrittenSizingMap& map : kWrittenSizingMaps) {
    FJson.Name(map.Name);
    FJson.BeginObject();
    for (const int32_t line : map.IsOfRows ? rows : cols) {
      if (!map.Has(ASizing, line)) continue;
      FJson.Name(std::to_string(line));
      map.Write(ASizing, line, FJson);
      FOutput.Pass();
    }
    FJson.EndObject();
  }
  FJson.EndObject();
}

void TNativeSheetWriter::WriteView(const TWorksheet& ASheet) {
  const TSheetSavedView& saved = ASheet.SavedView();
  if (!saved.HasView) return;
  TNativeSavedView view{saved.ActiveCol, saved.ActiveRow, saved.TopLeftCol, saved.TopLeftRow, saved.TabSelected, {}};
  for (const TCellRange& range : saved.SelectionRanges) view.Selection.emplace_back(range.Normalize().ToA1());
  FFields("view", view);
}

void TNativeSheetWriter::WriteMerges(const TWorksheet& ASheet) {
  FJson.Name("merges");
  FJson.BeginArray();
  for (const TMergedRange& merge : ASheet.Merges()) {
    FFields.Write(merge.AsRange());
    FOutput.Pass();
  }
  FJson.EndArray();
}

// ---- drawings

void TNativeSheetWriter::WriteDrawings(const TSheetDrawingList& ADrawings) {
  if (ADrawings.Count() > 0) {
    FJson.Name("drawings");
    FJson.BeginArray();
    for (int32_t index = 0; index < ADrawings.Count(); ++index) {
      FOptions.Control.CheckStop();
      FFields.Write(*ADrawings.GetItem(index));
      FOutput.Pass();
    }
    FJson.EndArray();
  }
  WriteDrawingBag(ADrawings);
}

void TNativeSheetWriter::WriteDrawingBag(const TSheetDrawingList& ADrawings) {
  const TSheetDrawingBag& bag = ADrawings.Bag();
  if (!bag.HasDrawing() && bag.Parts().empty()) return;
  FJson.Name("drawingBag");
  FJson.BeginObject();
  const TNativeDrawingBag fields{bag.SheetRelId(), bag.DrawingPartPath(), bag.DrawingXml(), bag.DrawingRelsPath(),
                                 bag.DrawingRelsXml()};
  VisitNativeFields(FFields, fields);
  FJson.Name("parts");
  FJson.BeginObject();
  for (const auto& [path, bytes] : bag.Parts()) {
    FFields.AllBytes(path.ToUtf8(), bytes);
    FOutput.Pass();
  }
  FJson.EndObject();
  FJson.EndObject();
}

// ---- lists

void TNativeSheetWriter::WriteHyperlinks(const TWorksheet& ASheet) {
  if (ASheet.Hyperlinks().IsEmpty()) return;
  FJson.Name("hyperlinks");
  FJson.BeginObject();
  for (const TLinkKey& key : LinkKeysOf(ASheet.Hyperlinks())) {
    FFields(Utf16ToUtf8(key.Range.ToA1()), key.Target);
    FOutput.Pass();
  }
  FJson.EndObject();
}

void TNativeSheetWriter::WriteComments(const TWorksheet& ASheet) {
  if (ASheet.Comments().IsEmpty()) return;
  FJson.Name("comments");
  FJson.BeginObject();
  ASheet.Comments().ForEach([&](TCellAddress AAddress, const TCellComment& AComment) {
    FFields(Utf16ToUtf8(AAddress.ToKey()), TNativeComment{AComment.Author, AComment.Text});
    FOutput.Pass();
  });
  FJson.EndObject();
}

void TNativeSheetWriter::WriteAutoFilter(const TWorksheet& ASheet) {
  if (!ASheet.AutoFilter().IsEnabled()) return;
  const TAutoFilterState state = ASheet.AutoFilter().CopyState();
  TNativeAutoFilter filter{true, state.Range, {}};
  for (const auto& [col, column] : state.Columns) filter.Columns.push_back(column);
  FFields("autoFilter", filter);
}

void TNativeSheetWriter::WriteTables(const TWorksheet& ASheet) {
  if (ASheet.Tables().IsEmpty()) return;
  FJson.Name("tables");
  FJson.BeginArray();
  for (const auto& table : ASheet.Tables()) {
    const TNativeTable fields{table->Name(),           table->DisplayName(),       table->Ref(),
                              table->HasHeaderRow(),   table->HasTotalsRow(),      table->ShowAutoFilter(),
                              table->ShowRowStripes(), table->ShowColumnStripes(), table->StyleName(),
                              table->ColumnNames()};
    FJson.BeginObject();
    VisitTableNames(FFields, fields);
    VisitTableFields(FFields, fields);
    FJson.EndObject();
    FOutput.Pass();
  }
  FJson.EndArray();
}

void TNativeSheetWriter::WritePivotTables(const TWorksheet& ASheet) {
  WriteList("pivotTables", ASheet.Pivots(), [](const std::unique_ptr<TPivotTable>& APivot) {
    return TNativePivotTable{APivot->Name,           APivot->CacheId,        APivot->Dest.ToA1(),
                             APivot->RowGrandTotals, APivot->ColGrandTotals, APivot->LayoutForm,
                             APivot->StyleName,      APivot->HeaderRowCount, APivot->Fields};
  });
}

void TNativeSheetWriter::WriteSlicers(const TWorksheet& ASheet) {
  WriteList("slicers", ASheet.Slicers(), [](const std::unique_ptr<TSheetSlicer>& ASlicer) {
    return TNativeSlicer{ASlicer->Name,          ASlicer->Kind,      ASlicer->CacheId,    ASlicer->FieldIndex,
                         ASlicer->Anchor.ToA1(), ASlicer->WidthCols, ASlicer->HeightRows, ASlicer->TimelineLevel,
                         ASlicer->Selected(),    ASlicer->PivotNames};
  });
}

void TNativeSheetWriter::WriteRules(const TWorksheet& ASheet) {
  const auto same = [](const auto& ARule) -> const auto& { return ARule; };
  WriteList("validations", ASheet.Validations(), same);
  WriteList("conditionalFormats", ASheet.ConditionalFormats(), same);
}

// ---- page setup

void TNativeSheetWriter::WritePageSetup(const TPageSetup& ASetup) {
  FJson.Name("pageSetup");
  FJson.BeginObject();
  FFields("orientation", ASetup.Orientation);
  FFields("paperSize", ASetup.PaperSize());
  FFields("paperWidthInches", ASetup.PaperWidthInches());
  FFields("paperHeightInches", ASetup.PaperHeightInches());
  VisitPageScaleFields(FFields, ASetup);
  FFields("hasPrintArea", ASetup.HasPrintArea());
  FFields.When(ASetup.HasPrintArea(), "printArea", ASetup.PrintArea());
  FFields("hasTitleRows", ASetup.HasTitleRows());
  FFields.When(ASetup.HasTitleRows(), "titleRows", ASetup.TitleRows());
  FFields("hasTitleCols", ASetup.HasTitleCols());
  FFields.When(ASetup.HasTitleCols(), "titleCols", ASetup.TitleCols());
  VisitPagePrintFields(FFields, ASetup);
  FFields("rowBreaks", ASetup.RowBreaks());
  FFields("colBreaks", ASetup.ColBreaks());
  FJson.EndObject();
}

}  // namespace tessarine::detail
