#pragma once

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/ArgReading.h>

/// Bodies of the statistical families that stand outside the source files with their tables.
namespace tessarine::detail {

// OrderStatistics.cpp: places, percentiles and counts.
TCellValue CallFrequency(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallLarge(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallMedian(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallMode(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallPercentileExc(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallPercentileInc(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallPercentRankExc(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallPercentRankInc(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallQuartileExc(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallQuartileInc(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallRankAvg(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallSmall(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallTrimMean(TFormulaArgs AArgs, const TFormulaContext& AContext);

// DiscreteDistributions.cpp: distributions of counts.
TCellValue CallBinomial(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallBinomialInverse(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallBinomialRange(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallHypergeometric(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallHypergeometricMass(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallNegativeBinomial(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallNegativeBinomialMass(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallPoisson(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallProb(TFormulaArgs AArgs, const TFormulaContext& AContext);

// HypothesisTests.cpp: tests and confidence intervals.
TCellValue CallChiSquaredTest(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallConfidenceNormal(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallConfidenceStudent(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallFisherTest(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallNormalTest(TFormulaArgs AArgs, const TFormulaContext& AContext);
TCellValue CallStudentTest(TFormulaArgs AArgs, const TFormulaContext& AContext);

}  // namespace tessarine::detail
