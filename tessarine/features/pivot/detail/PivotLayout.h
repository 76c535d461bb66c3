#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/features/pivot/detail/PivotCube.h>

namespace tessarine::detail {

/// The name of a field of the cache; AOther for an index that is none.
TText PivotFieldName(const TPivotCache& ACache, int32_t AField, const TText& AOther);

/// The prefix of an aggregate ("Sum of ").
std::u16string_view PivotAggPrefix(TPivotAgg AAgg);

/// What stands above the values of a field: its custom name, else the prefix of the aggregate and the field's name.
TText PivotValueCaption(const TPivotCache& ACache, const TPivotFieldRef& AValue);

/// The number format of a value field's cells; empty for none.
TText PivotNumberFormat(const TPivotFieldRef& AValue);

/// A row of the body.
struct TPivotEntry {
  TText Label;
  int32_t Indent = 0;
  std::vector<uint32_t> Keys;  // the row keys that it sums up, in key order
};

/// A value as it is shown, from the value itself and the totals of its row, column and table; APosition is 1-based.
double PivotShownValue(TPivotShowAs AShowAs, double AValue, double ARowTotal, double AColumnTotal, double AGrandTotal,
                       double APosition);

/// Everything that a table writes, in numbers: what goes where, and the totals.
class TPivotLayout {
 public:
  TPivotLayout(const TPivotCache& ACache, const TPivotTable& ATable, TPivotCube ACube);

  const std::vector<TPivotFieldRef> RowFields;
  const std::vector<TPivotFieldRef> ColumnFields;
  const std::vector<TPivotFieldRef> ValueFields;
  const TPivotCube Cube;  // with one empty column key where the records give none

  int64_t LabelColumns = 1;
  int64_t HeaderRows = 1;
  bool HasTotalColumn = false;
  std::vector<TText> Captions;  // of the value fields
  std::vector<TPivotEntry> Entries;
  std::vector<double> ColumnTotals;  // by column key and value field
  std::vector<double> GrandTotals;   // by value field

  int64_t ValueColumns() const {
    return static_cast<int64_t>(Cube.Columns.Count) * static_cast<int64_t>(ValueFields.size());
  }
  int64_t ColumnCount() const {
    return LabelColumns + ValueColumns() + (HasTotalColumn ? static_cast<int64_t>(ValueFields.size()) : 0);
  }
  int64_t RowCount() const { return HeaderRows + static_cast<int64_t>(Entries.size()) + (HasTotalRow ? 1 : 0); }
  bool HasTotalRow = true;

  /// The label of a column key in a column field; empty where the key was made up.
  TText ColumnLabel(size_t AKey, size_t AField) const;

  /// The values of an entry by column key and value field, before they are shown as something else.
  std::vector<double> ValuesOf(const TPivotEntry& AEntry) const;

 private:
  void AddTotals();
  void SortRows(const TPivotTable& ATable);
  void AddEntries(TPivotLayoutForm AForm);
  void AddOutline();

  std::vector<size_t> FFirstPlaces;  // by row key, and one more: where its places begin
  std::vector<double> FRowTotals;    // by row key and value field
  std::vector<uint32_t> FRowOrder;   // row keys as they are listed
};

}  // namespace tessarine::detail
