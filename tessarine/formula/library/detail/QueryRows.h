#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/library/detail/QuerySyntax.h>

/// The steps between the text of a query and its result: rows that are kept, groups of them, their order.
namespace tessarine::detail {

struct TQuerySource {
  const TFormulaArg& Data;  // a rectangle
  int32_t FirstRow = 0;     // 0-based, behind the headers
  const TQuery& Query;

  bool HasCol(int32_t ACol) const { return ACol < Data.ColCount; }
};

/// The values of one column in one group. Blanks are numbers here: 0.
struct TQueryStats {
  double Sum = 0;
  double Min = 0;
  double Max = 0;
  int64_t Numbers = 0;
  int64_t Values = 0;

  void Add(const TValueView& AValue) {
    double number = 0;
    ++Values;
    if (AsNumber(AValue, number)) AddNumber(number);
  }

  /// What Add does beyond counting a value that is a number.
  void AddNumber(double ANumber) {
    Min = Numbers == 0 || ANumber < Min ? ANumber : Min;
    Max = Numbers == 0 || ANumber > Max ? ANumber : Max;
    ++Numbers;
    Sum += ANumber;
  }

  TCellValue Result(TQueryAggregate AAggregate) const;
};

/// The rows of the result before their order: a row of the data each, or a group of rows that the first one stands for.
struct TQueryLines {
  std::vector<uint32_t> Rows;      // 0-based rows of the data
  std::vector<int32_t> StatsCols;  // the columns with an aggregate, ascending
  std::vector<TQueryStats> Stats;  // line by line, one for each of StatsCols

  /// Selecting stopped because the sums or the keys of the groups would take too much memory or time.
  bool IsTooMuch = false;

  /// Makes room for the sums of all Rows, up to some 670 MB of them.
  void AddStats();
};

/// The columns of the data that have an aggregate, ascending.
std::vector<int32_t> StatsColsOf(const TQuerySource& ASource);

/// The keys that can decide: of a column that exists, each column once, and in a grouped query selected as it is.
std::vector<TQueryOrderKey> OrderKeysOf(const TQuerySource& ASource);

/// The kept rows, or their groups in the order of first appearance. Two rows are of one group when the display texts of
/// their group columns, joined by U+0001, are equal.
TQueryLines SelectLinesPlain(const TQuerySource& ASource);

/// The same in less time: columns are read in runs, and groups found by numbering the texts of each group column
/// instead of joining them. Nothing where a text with U+0001 could make different rows look alike.
std::optional<TQueryLines> TrySelectLines(const TQuerySource& ASource);

/// Positions in ALines by the keys, equal ones in the order of an exchange sort.
std::vector<uint32_t> OrderLinesPlain(const TQuerySource& ASource, const TQueryLines& ALines);

/// The same in O(n log n) for keys of which each has numbers only or none. Mixed keys have no total order; up to
/// kMaxMixedKeys lines of them go through the exchange sort itself, more through a stable merge sort.
std::vector<uint32_t> OrderLines(const TQuerySource& ASource, const TQueryLines& ALines);

/// As numbers where both are numbers, else by display text, ordinal, case counting: below, 0 or above.
int QueryCompare(const TValueView& ALeft, const TValueView& ARight);

/// Whether a comparison holds, given the order of its sides.
inline bool QueryHolds(TQueryOperator AOperator, int AOrder) {
  switch (AOperator) {
    case qoEqual: return AOrder == 0;
    case qoNotEqual: return AOrder != 0;
    case qoLess: return AOrder < 0;
    case qoGreater: return AOrder > 0;
    case qoLessEqual: return AOrder <= 0;
    case qoGreaterEqual: return AOrder >= 0;
  }
  return false;
}

}  // namespace tessarine::detail
