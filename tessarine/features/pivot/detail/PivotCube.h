#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/values/Text.h>

namespace tessarine::detail {

/// The row or column keys of a table in order of first sight. A key is one item, here called part, of each field.
struct TPivotKeys {
  size_t FieldCount = 0;
  size_t Count = 0;                        // without fields the one empty key, once there is a record
  std::vector<uint32_t> Parts;             // Count x FieldCount; numbers of parts within their field
  std::vector<std::vector<TText>> Labels;  // by field and part

  uint32_t PartOf(size_t AKey, size_t AField) const { return Parts[AKey * FieldCount + AField]; }
  const TText& LabelOf(size_t AKey, size_t AField) const { return Labels[AField][PartOf(AKey, AField)]; }
};

/// The records of a table put together: its keys and, where a row meets a column, the aggregates.
struct TPivotCube {
  struct TPlace {
    uint32_t Row = 0;  // keys, 0-based
    uint32_t Column = 0;
    friend bool operator==(const TPlace&, const TPlace&) = default;
  };

  TPivotKeys Rows;
  TPivotKeys Columns;
  size_t ValueCount = 0;
  std::vector<TPlace> Places;      // those that have records, by row, then column
  std::vector<double> Aggregates;  // Places x ValueCount

  std::span<const double> AggregatesOf(size_t APlace) const {
    return std::span(Aggregates).subspan(APlace * ValueCount, ValueCount);
  }
};

/// The aggregate from what its numbers come to; ASquares is the sum of squared distances from the mean.
struct TPivotSums {
  size_t Records = 0;
  size_t Numbers = 0;
  double Sum = 0;
  double Least = 0;
  double Greatest = 0;
  double Product = 1;
  double Squares = 0;
};
double PivotAggregate(TPivotAgg AAgg, const TPivotSums& ASums);

/// Reads the records once, field by field: items become numbers, keys numbers made of these, buckets arrays. Sums run
/// in the order of the records. Throws ELimit for more than kMaxPivotSteps fields of records, parts of keys, or
/// aggregates.
TPivotCube BuildPivotCube(const TPivotCache& ACache, const TPivotTable& ATable);

/// The same record by record with keys of text: the definition of the result. (Texts with a U+0001 are not told apart
/// from the joint of two parts.)
TPivotCube BuildPivotCubePlain(const TPivotCache& ACache, const TPivotTable& ATable);

/// The aggregate of a value field over the records that have, in each of AFields, an item called as AItems says
/// without regard to ASCII case.
double AggregatePivotRecords(const TPivotCache& ACache, const TPivotTable& ATable, const TPivotFieldRef& AValue,
                             std::span<const int32_t> AFields, std::span<const TText> AItems);

/// The distinct labels of a field in order of first sight.
std::vector<TText> PivotItemLabels(const TPivotCache& ACache, const TPivotTable& ATable, int32_t AField);

constexpr uint64_t kMaxPivotSteps = 4'000'000'000;
constexpr uint64_t kMaxPivotParts = 100'000'000;

}  // namespace tessarine::detail
