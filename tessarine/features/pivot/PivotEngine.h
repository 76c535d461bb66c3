#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/formula/PivotData.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {

class TOlapConnection;
class TPivotCache;
class TPivotTable;
class TWorkbook;
class TWorksheet;

/// An item in the dropdown of a pivot field.
struct TPivotFieldItem {
  TText Label;
  bool Checked = true;  // the table's selection leaves it in

  friend bool operator==(const TPivotFieldItem&, const TPivotFieldItem&) = default;
};

/// The field behind a dropdown button on the sheet.
struct TPivotFilterTarget {
  TPivotTable* Table = nullptr;
  int32_t FieldIndex = -1;  // of the cache, 0-based
};

/// Brings the charts that show a pivot table up to date after its output changed.
using TPivotChartSync = void (*)(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable);

/// Turns the definition of a pivot table and its records into plain cells on a sheet, and answers questions about it.
/// Used on the thread that owns the workbook.
class TESSARINE_API TPivotEngine {
 public:
  /// The most cells on the sheet that a table may write, and the most records that ranges may give.
  static constexpr int64_t kMaxCells = 10'000'000;

  /// Reads the records of a cache anew, and but for pcsExternal the field names. Without its sheet the active one is
  /// read; without its connection nothing changes. What cannot have changed since the last reading is not read again.
  /// Throws ELimit for a source of too many values.
  static void RebuildCache(TWorkbook& AWorkbook, TPivotCache& ACache);

  /// The first set of a connection as records of a member and its value.
  static void MaterializeCache(const TOlapConnection& AConnection, TPivotCache& ACache);

  /// Sets the selections of a sheet's slicers, in their order, as filters of their caches; all other filters of these
  /// caches go.
  static void ApplySlicerFilters(TWorkbook& AWorkbook, TWorksheet& ASheet);

  /// Reads the source, clears the last output and writes the new one, over whatever stands there. Without its cache
  /// nothing happens; a table without values writes nothing. Throws ELimit, with the sheet as it was, for a table of
  /// more than kMaxCells cells, and ECancelled when AControl stops it before it writes.
  static void Refresh(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable, const TWorkControl& AControl = {});

  /// Gives the cells of the last output the look of a pivot table.
  static void ApplyVisualStyle(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable);
  /// The same for all tables of a workbook, after loading. Tables beyond kMaxCells cells in all keep their looks.
  static void ApplyLoadedPivotStyles(TWorkbook& AWorkbook);

  /// Brings the charts of a table up to date: RebuildPivotCharts, unless a host has registered another operation.
  static void SyncPivotCharts(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable);
  /// For the process; set before use. Null: charts stay as they are.
  static void SetChartSync(TPivotChartSync ASync);

  /// The items of a field in order of first sight, each once without regard to ASCII case. Reads the source.
  static std::vector<TPivotFieldItem> CollectFieldItems(TWorkbook& AWorkbook, const TPivotTable& ATable,
                                                        int32_t AFieldIndex);

  /// The field whose dropdown button stands in a cell: a filter above a table, its row header, its column header.
  static std::optional<TPivotFilterTarget> ResolveFilterTarget(const TWorksheet& ASheet, int32_t ACol, int32_t ARow);
  static bool IsFilterHeaderCell(const TWorksheet& ASheet, int32_t ACol, int32_t ARow);

  /// A value field, aggregated over the records of the table at AAddress that have the items of APairs. Slicers and
  /// selections do not count; no record aggregates to 0. AValueName is the field's caption, its name, or its name
  /// behind the prefix of an aggregate ("Sum of "). #REF! without a table, a cache or one of the fields.
  static TCellValue GetPivotData(TWorkbook& AWorkbook, TWorksheet& ASheet, std::u16string_view AValueName,
                                 TCellAddress AAddress, std::span<const TPivotItemPair> APairs);
};

}  // namespace tessarine
