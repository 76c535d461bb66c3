#pragma once

#include <tessarine/formula/library/detail/NumbersBody.h>

/// What depreciation and series of amounts answer, by source file. Numbers stand in the order of the function's
/// arguments; NaN outside the domain.
namespace tessarine::detail {

double FixedDeclining(const TNumbers<5>& ANumbers);   // Depreciation.cpp: cost, salvage, life, period, months
double DoubleDeclining(const TNumbers<5>& ANumbers);  // cost, salvage, life, period, factor
double SumOfYearsDigits(double ACost, double ASalvage, double ALife, double APeriod);
TCellValue CallVdb(TFormulaArgs AArgs, const TFormulaContext& AContext);

TCellValue CallXNpv(TFormulaArgs AArgs, const TFormulaContext& AContext);  // CashFlows.cpp
TCellValue CallXIrr(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallMirr(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallFvSchedule(TFormulaArgs AArgs, const TFormulaContext& AContext);

}  // namespace tessarine::detail
