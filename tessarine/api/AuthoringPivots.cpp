#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <tessarine/api/AuthoringSheet.h>
#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/pivot/PivotCharts.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/features/pivot/detail/PivotWriting.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

struct TSourceRange {
  TText Sheet;
  TCellRange Range;
};

/// "A1:F500", or "Data!A1:F500".
TSourceRange SourceOfText(const TWorkbook& AWorkbook, const TWorksheet& ASheet, std::u16string_view AText) {
  const std::optional<TSheetRefParts> parts = SplitSheetRefText(AText);
  if (!parts) return {ASheet.Name(), detail::RangeOfText(AText)};
  const TWorksheet* sheet = AWorkbook.FindSheet(parts->Sheet);
  if (!sheet) throw EArgument("Sheet not found: " + Utf16ToUtf8(parts->Sheet));
  const TCellRange range =
      TCellRange::FromA1(parts->Second.empty() ? parts->First : parts->First + u':' + parts->Second);
  if (range.StartCol < 1 || range.StartRow < 1) throw EArgument("Invalid range: " + Utf16ToUtf8(AText));
  return {sheet->Name(), range};
}

/// Whether a pivot table or a slicer of the workbook reads a cache.
bool IsCacheUsed(const TWorkbook& AWorkbook, int32_t ACacheId) {
  const auto reads = [ACacheId](const auto& AItem) { return AItem->CacheId == ACacheId; };
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    const TWorksheet& sheet = *AWorkbook.GetSheet(index);
    if (std::any_of(sheet.Pivots().begin(), sheet.Pivots().end(), reads)) return true;
    if (std::any_of(sheet.Slicers().begin(), sheet.Slicers().end(), reads)) return true;
  }
  return false;
}

void RemoveCache(TPivotCacheList& ACaches, int32_t ACacheId) {
  for (size_t index = 0; index < ACaches.Count(); ++index) {
    if (ACaches.GetItem(index).Id() == ACacheId) return ACaches.RemoveAt(index);
  }
}

}  // namespace

// ---- look-ups

/// The name for a new pivot table, which none of the sheet has yet.
TText TAuthoringSheet::FreePivotName(std::u16string_view AName) const {
  const std::u16string_view given = TrimSpaces(AName);
  TText name = given.empty()
                   ? TText(u"PivotTable" + GeneralNumberText(static_cast<double>(FSheet->Pivots().Count() + 1)))
                   : TText(given);
  if (FSheet->Pivots().FindByName(name)) throw EArgument("PivotTable name already exists: " + name.ToUtf8());
  return name;
}

TPivotTable& TAuthoringSheet::PivotOf(std::u16string_view AName) const {
  TPivotTable* table = FSheet->Pivots().FindByName(AName);
  if (!table) throw EArgument("PivotTable not found: " + Utf16ToUtf8(AName));
  return *table;
}

TPivotCache& TAuthoringSheet::CacheOf(const TPivotTable& ATable) const {
  TPivotCache* cache = FWorkbook->PivotCaches().FindById(ATable.CacheId);
  if (!cache) throw EState("Pivot cache missing");
  return *cache;
}

int32_t TAuthoringSheet::FieldOf(const TPivotTable& ATable, std::u16string_view AFieldName) const {
  const int32_t field = CacheOf(ATable).FieldIndex(AFieldName);
  if (field < 0) throw EArgument("Field not found: " + Utf16ToUtf8(AFieldName));
  return field;
}

TSheetSlicer& TAuthoringSheet::SlicerOf(std::u16string_view AName) const {
  TSheetSlicer* slicer = FSheet->Slicers().FindByName(AName);
  if (!slicer) throw EArgument("Slicer not found: " + Utf16ToUtf8(AName));
  return *slicer;
}

// ---- pivot tables

/// Reads the source of a new cache and puts a table on it; a source that cannot be read takes the cache along.
TPivotTable& TAuthoringSheet::AddPivot(TText AName, TPivotCache& ACache, TCellAddress ADest) const {
  try {
    TPivotEngine::RebuildCache(*FWorkbook, ACache);
  } catch (const ETessarineError&) {
    RemoveCache(FWorkbook->PivotCaches(), ACache.Id());
    throw;
  }
  TPivotTable& table = FSheet->Pivots().Add(std::move(AName), ACache.Id(), ADest);
  Changed();
  return table;
}

TPivotTable& TAuthoringSheet::AddPivotTable(TTextArg AName, TTextArg ASourceRangeA1, TTextArg ADestA1) const {
  TSourceRange source = SourceOfText(*FWorkbook, *FSheet, ASourceRangeA1);
  const TCellAddress dest = detail::CellOfText(ADestA1);
  TText name = FreePivotName(AName);
  TPivotCache& cache = FWorkbook->PivotCaches().AddNew();
  cache.SourceSheet = std::move(source.Sheet);
  cache.SourceRange = source.Range;
  return AddPivot(std::move(name), cache, dest);
}

TPivotTable& TAuthoringSheet::AddPivotTableMulti(TTextArg AName, const std::vector<TText>& ARanges,
                                                 TTextArg ADestA1) const {
  if (ARanges.empty()) throw EArgument("Invalid range: ");
  for (const TText& range : ARanges) SourceOfText(*FWorkbook, *FSheet, range);
  const TCellAddress dest = detail::CellOfText(ADestA1);
  TText name = FreePivotName(AName);
  TPivotCache& cache = FWorkbook->PivotCaches().AddNew();
  cache.SourceKind = pcsMultiConsolidation;
  cache.SourceSheet = FSheet->Name();
  cache.MultiRanges = ARanges;
  return AddPivot(std::move(name), cache, dest);
}

TPivotTable& TAuthoringSheet::AddPivotTableOlap(TTextArg AName, TTextArg AConnectionId, TTextArg ADestA1) const {
  const TCellAddress dest = detail::CellOfText(ADestA1);
  const TOlapConnection* connection = FWorkbook->OlapConnections().FindById(AConnectionId);
  if (!connection) throw EArgument("OLAP connection not found: " + Utf16ToUtf8(AConnectionId));
  TText name = FreePivotName(AName);
  TPivotCache& cache = FWorkbook->PivotCaches().AddNew();
  cache.SourceKind = pcsOlap;
  cache.ConnectionId = connection->Id;
  return AddPivot(std::move(name), cache, dest);
}

void TAuthoringSheet::AddPivotField(TTextArg APivotName, TTextArg AFieldName, TPivotFieldRole ARole,
                                    TPivotAgg AAgg) const {
  TPivotTable& table = PivotOf(APivotName);
  table.AddField(TPivotFieldRef::Create(FieldOf(table, AFieldName), ARole, AAgg));
  Changed();
}

void TAuthoringSheet::RefreshPivotTable(TTextArg AName) const {
  TPivotEngine::Refresh(*FWorkbook, *FSheet, PivotOf(AName));
  Changed();
}

void TAuthoringSheet::DeletePivotTable(TTextArg AName) const {
  TPivotTable& table = PivotOf(AName);
  const int32_t cacheId = table.CacheId;
  detail::ClearPivotOutput(*FSheet, table, table.FieldsFor(pfrFilter).size());
  for (const auto& slicer : FSheet->Slicers())
    std::erase_if(slicer->PivotNames, [&](const TText& AOne) { return EqualAsciiNoCase(AOne, table.Name); });
  TSheetPivotTableList& tables = FSheet->Pivots();
  for (size_t index = 0; index < tables.Count(); ++index) {
    if (&tables.GetItem(index) != &table) continue;
    tables.RemoveAt(index);
    break;
  }
  if (!IsCacheUsed(*FWorkbook, cacheId)) RemoveCache(FWorkbook->PivotCaches(), cacheId);
  Changed();
}

TSheetDrawing& TAuthoringSheet::AddPivotChart(TTextArg APivotName, TTextArg AAnchorA1, int32_t AWidthCols,
                                              int32_t AHeightRows) const {
  const TPivotTable& table = PivotOf(APivotName);
  std::vector<TSheetChartSeries> series = PivotChartSeries(*FSheet, table);
  if (series.empty()) throw EState("Refresh the PivotTable before adding a PivotChart");
  TSheetDrawing& chart = TessarineAddChart(FWorkbook, FSheet, table.Name, sctColumn, std::move(series),
                                           AAnchorA1.View(), AWidthCols, AHeightRows);
  chart.LinkedPivotName = table.Name;
  return chart;
}

void TAuthoringSheet::SetPivotFieldShowAs(TTextArg APivotName, int32_t AValueFieldIndex, TPivotShowAs AShowAs) const {
  int32_t left = AValueFieldIndex;
  for (TPivotFieldRef& field : PivotOf(APivotName).Fields) {
    if (field.Role != pfrValue || left-- != 0) continue;
    field.ShowAs = AShowAs;
    return Changed();
  }
  throw EArgument("Value field index out of range");
}

void TAuthoringSheet::AddPivotCalculatedField(TTextArg APivotName, TTextArg AFieldName, TTextArg AFormula) const {
  TPivotTable& table = PivotOf(APivotName);
  const size_t field = CacheOf(table).FieldCount() + table.CalcFields.size();
  table.CalcFields.push_back({TText(AFieldName.View()), TText(AFormula.View())});
  TPivotFieldRef ref = TPivotFieldRef::Create(static_cast<int32_t>(field), pfrValue, paSum);
  ref.CustomName = TText(u"Sum of " + std::u16string(AFieldName.View()));
  table.AddField(std::move(ref));
  Changed();
}

TOlapConnection& TAuthoringSheet::AddOlapConnection(TTextArg AId) const {
  TOlapConnectionList& connections = FWorkbook->OlapConnections();
  if (TOlapConnection* known = connections.FindById(AId)) return *known;
  TOlapConnection& added = connections.Add(std::make_unique<TOlapConnection>(TText(AId.View())));
  Changed();
  return added;
}

// ---- slicers

TSheetSlicer& TAuthoringSheet::AddSlicerOfKind(TSlicerKind AKind, std::u16string_view AName,
                                               std::u16string_view APivotName, std::u16string_view AFieldName,
                                               std::u16string_view AAnchorA1) const {
  const TCellAddress anchor = detail::CellOfText(AAnchorA1);
  const TPivotTable& table = PivotOf(APivotName);
  const int32_t field = FieldOf(table, AFieldName);
  TText name(TrimSpaces(AName));
  if (name.IsEmpty()) name = CacheOf(table).FieldNames()[static_cast<size_t>(field)];
  auto slicer = std::make_unique<TSheetSlicer>(std::move(name), AKind, table.CacheId, field, anchor);
  slicer->PivotNames = {table.Name};
  TSheetSlicer& added = FSheet->Slicers().Add(std::move(slicer));
  Changed();
  return added;
}

TSheetSlicer& TAuthoringSheet::AddSlicer(TTextArg AName, TTextArg APivotName, TTextArg AFieldName,
                                         TTextArg AAnchorA1) const {
  return AddSlicerOfKind(skSlicer, AName, APivotName, AFieldName, AAnchorA1);
}

TSheetSlicer& TAuthoringSheet::AddTimeline(TTextArg AName, TTextArg APivotName, TTextArg AFieldName, TTextArg AAnchorA1,
                                           TSlicerTimelineLevel ALevel) const {
  TSheetSlicer& timeline = AddSlicerOfKind(skTimeline, AName, APivotName, AFieldName, AAnchorA1);
  timeline.TimelineLevel = ALevel;
  return timeline;
}

/// Refreshes what a slicer drives, and marks the change.
void TAuthoringSheet::RefreshSliced(const TSheetSlicer& ASlicer) const {
  for (const TText& name : std::vector<TText>(ASlicer.PivotNames)) {
    if (TPivotTable* table = FSheet->Pivots().FindByName(name)) TPivotEngine::Refresh(*FWorkbook, *FSheet, *table);
  }
  Changed();
}

void TAuthoringSheet::SetSlicerSelection(TTextArg ASlicerName, std::vector<TText> AItems) const {
  TSheetSlicer& slicer = SlicerOf(ASlicerName);
  slicer.SetSelected(std::move(AItems));
  RefreshSliced(slicer);
}

void TAuthoringSheet::ToggleSlicerItem(TTextArg ASlicerName, TTextArg AItem) const {
  TSheetSlicer& slicer = SlicerOf(ASlicerName);
  slicer.ToggleItem(AItem);
  RefreshSliced(slicer);
}

void TAuthoringSheet::ClearSlicerSelection(TTextArg ASlicerName) const {
  TSheetSlicer& slicer = SlicerOf(ASlicerName);
  slicer.ClearSelection();
  RefreshSliced(slicer);
}

}  // namespace tessarine
