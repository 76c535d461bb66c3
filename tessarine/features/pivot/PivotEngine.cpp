#include <tessarine/features/pivot/PivotEngine.h>

#include <string>
#include <utility>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/pivot/PivotCharts.h>
#include <tessarine/features/pivot/PivotFunctions.h>
#include <tessarine/features/pivot/detail/PivotCube.h>
#include <tessarine/features/pivot/detail/PivotLayout.h>
#include <tessarine/features/pivot/detail/PivotWriting.h>
#include <tessarine/platform/Errors.h>

namespace tessarine {

namespace {

TPivotChartSync chartSync = &RebuildPivotCharts;

/// Whatever links the engine gets the functions that ask it, before any thread of the program evaluates.
[[maybe_unused]] const bool functionsAreRegistered = (RegisterPivotFunctions(), true);

void CheckOutput(const TPivotTable& ATable, const detail::TPivotLayout& ALayout) {
  if (ALayout.ColumnCount() <= TPivotEngine::kMaxCells / ALayout.RowCount()) return;
  throw ELimit("The pivot table " + ATable.Name.ToUtf8() + " would have " + std::to_string(ALayout.RowCount()) +
               " rows and " + std::to_string(ALayout.ColumnCount()) + " columns, more than " +
               std::to_string(TPivotEngine::kMaxCells) + " cells");
}

}  // namespace

void TPivotEngine::Refresh(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable,
                           const TWorkControl& AControl) {
  AControl.Report(ppRefreshing, 0);
  ApplySlicerFilters(AWorkbook, ASheet);
  TPivotCache* cache = AWorkbook.PivotCaches().FindById(ATable.CacheId);
  if (!cache) return;
  RebuildCache(AWorkbook, *cache);
  AControl.CheckStop();
  AControl.Report(ppRefreshing, 0.4);
  const size_t filterCount = ATable.FieldsFor(pfrFilter).size();
  if (ATable.FieldsFor(pfrValue).empty()) {
    detail::ClearPivotOutput(ASheet, ATable, filterCount);
    ATable.LastBody = detail::PivotBodyRange(ATable.Dest, 1, 1);
    SyncPivotCharts(AWorkbook, ASheet, ATable);
    return;
  }
  detail::TPivotLayout layout(*cache, ATable, detail::BuildPivotCube(*cache, ATable));
  CheckOutput(ATable, layout);
  AControl.CheckStop();
  AControl.Report(ppRefreshing, 0.8);
  detail::ClearPivotOutput(ASheet, ATable, filterCount);
  detail::WritePivotBody(ASheet, *cache, ATable, layout);
  ATable.HeaderRowCount = static_cast<int32_t>(layout.HeaderRows);
  ATable.LastBody = detail::PivotBodyRange(ATable.Dest, layout.ColumnCount(), layout.RowCount());
  ATable.LastValueFields = std::move(layout.Captions);
  detail::WritePivotFilters(ASheet, *cache, ATable);
  ApplyVisualStyle(AWorkbook, ASheet, ATable);
  SyncPivotCharts(AWorkbook, ASheet, ATable);
  AWorkbook.MarkModified();
  AControl.Report(ppRefreshing, 1);
}

void TPivotEngine::SyncPivotCharts(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable) {
  if (chartSync) chartSync(AWorkbook, ASheet, ATable);
}

void TPivotEngine::SetChartSync(TPivotChartSync ASync) { chartSync = ASync; }

}  // namespace tessarine
