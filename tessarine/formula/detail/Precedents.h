#pragma once

#include <cstdint>

#include <tessarine/formula/detail/DependencyRuns.h>
#include <tessarine/formula/detail/Program.h>

namespace tessarine {

class TWorkbook;

namespace detail {

class TInterpreter;

/// What the formula in (ACol, ARow) reads according to its text: references, ranges (whole columns and rows cut to the
/// used bounds of the moment) and tables, array literals left out. Nothing is known here of what an evaluation would
/// really read. Patterns keep rows relative where the formula does.
TPrecedentPatterns CollectPrecedents(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                     const TInterpreter& AInterpreter, int32_t ASheet, int32_t ACol, int32_t ARow);

/// Whether the patterns hold unchanged for a copy of the formula in row ARow of the same column: a range with a moving
/// end must not come to span all rows there, since that one would be cut.
bool HoldsInRow(const TPrecedentPatterns& APatterns, int32_t ARow);

}  // namespace detail
}  // namespace tessarine
