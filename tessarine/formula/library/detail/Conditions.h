#pragma once

#include <cstdint>
#include <span>

#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/Criteria.h>

/// Rectangles held against criteria, cell by cell at the same row-by-row index: what SUMIF, COUNTIFS and their kin do
/// before they aggregate. The plain forms are the definition of the result.
namespace tessarine::detail {

struct TCondition {
  const TFormulaArg* Range;  // a rectangle with at least as many cells as are looked at
  TCriterion Criterion;
};

/// The numbers among the first ACount cells of AValues at whose index all conditions hold, in order, one or more at a
/// time. AValues is a rectangle of at least ACount cells; blanks and everything else that is no number are left out.
void WalkMatchingNumbers(const TFormulaArg& AValues, std::span<const TCondition> AConditions, int64_t ACount,
                         TRangeIndexCache* ACache, TBatchSink<double> ASink);
void WalkMatchingNumbersPlain(const TFormulaArg& AValues, std::span<const TCondition> AConditions, int64_t ACount,
                              TBatchSink<double> ASink);

/// How many of the first ACount indexes satisfy all conditions. There is at least one condition.
int64_t CountMatches(std::span<const TCondition> AConditions, int64_t ACount, TRangeIndexCache* ACache);
int64_t CountMatchesPlain(std::span<const TCondition> AConditions, int64_t ACount);

}  // namespace tessarine::detail
