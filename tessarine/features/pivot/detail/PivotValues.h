#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine::detail {

/// The number of a value in an aggregate: a number, a text that reads as one, a Boolean. Blanks and errors have none.
bool TryPivotNumber(const TValueView& AValue, double& ANumber);

/// Appends what tells one item of a field from another: the kind and the text, numbers by 15 digits.
void AppendKeyPart(const TValueView& AValue, std::u16string& AKey);

/// What an item is called: the plain text of the grouped value, "(blank)" for the empty one.
TText PivotLabel(const TCellValue& AValue);

/// The value under the groups of its field; the value itself when no group takes it.
TCellValue GroupedPivotValue(const TPivotTable& ATable, int32_t AField, const TCellValue& AValue);

/// A calculated field, read once.
class TPivotFormula {
 public:
  TPivotFormula(const TPivotCache& ACache, std::u16string_view AText);

  /// The value for one record of the cache.
  TCellValue Evaluate(const TPivotRecords& ARecords, size_t ARecord) const;

 private:
  TCellValue Combine(double ALeft, double ARight) const;

  char16_t FOperator = 0;  // 0: the left field's value itself
  int32_t FLeft = -1;      // field, -1: none
  int32_t FRight = -1;     // field, -1: the literal
  bool FHasLiteral = false;
  double FLiteral = 0;
};

/// The records of a cache with the table's calculated fields behind the cache's own, each computed when first asked
/// for. Neither may change meanwhile.
class TPivotFields {
 public:
  TPivotFields(const TPivotCache& ACache, const TPivotTable& ATable) : FCache(ACache), FTable(ATable) {}

  size_t RecordCount() const { return FCache.RecordCount(); }
  size_t FieldCount() const { return FCache.FieldCount() + FTable.CalcFields.size(); }
  /// Null for a field that is not there.
  const TPivotColumn* Column(int32_t AField);

 private:
  const TPivotCache& FCache;
  const TPivotTable& FTable;
  std::map<size_t, TPivotColumn> FCalculated;  // by place among the table's calculated fields
};

}  // namespace tessarine::detail
