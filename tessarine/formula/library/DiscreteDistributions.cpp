#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <tessarine/formula/library/detail/NumericBody.h>
#include <tessarine/formula/library/detail/Probability.h>
#include <tessarine/formula/library/detail/Samples.h>
#include <tessarine/formula/library/detail/StatisticsBodies.h>

// Counts are cut toward zero. NaN stands for arguments outside the domain.

namespace tessarine::detail {

namespace {

constexpr double kNoMass = std::numeric_limits<double>::quiet_NaN();

bool IsChance(double ANumber) { return ANumber >= 0 && ANumber <= 1; }

double Poisson(double ACount, double AMean, double ACumulative) {
  const double count = std::trunc(ACount);
  if (count < 0 || AMean < 0) return kNoMass;
  if (ACumulative == 0) return PoissonMass(count, AMean);
  return AMean == 0 ? 1 : GammaAbove(count + 1, AMean);
}

double Binomial(double ACount, double ATrials, double AChance, double ACumulative) {
  const double count = std::trunc(ACount);
  const double trials = std::trunc(ATrials);
  if (count < 0 || count > trials || !IsChance(AChance)) return kNoMass;
  return ACumulative != 0 ? BinomialBelow(count, trials, AChance) : BinomialMass(count, trials, AChance);
}

double BinomialInverse(double ATrials, double AChance, double AProbability) {
  const double trials = std::trunc(ATrials);
  if (trials < 0 || !IsChance(AChance) || !IsChance(AProbability)) return kNoMass;
  if (AProbability == 0 || AChance == 0) return 0;
  return AProbability == 1 ? trials : BinomialQuantile(trials, AChance, AProbability);
}

/// The probability of ALeast to AMost successes, as a difference on the side where it keeps more digits.
double BinomialRange(double ATrials, double AChance, double ALeast, double AMost) {
  if (ALeast == AMost) return BinomialMass(ALeast, ATrials, AChance);
  if (ALeast == 0) return BinomialBelow(AMost, ATrials, AChance);
  if (ALeast > ATrials * AChance) {
    return BinomialAbove(ALeast - 1, ATrials, AChance) - BinomialAbove(AMost, ATrials, AChance);
  }
  return BinomialBelow(AMost, ATrials, AChance) - BinomialBelow(ALeast - 1, ATrials, AChance);
}

double NegativeBinomial(double AFailures, double ASuccesses, double AChance, double ACumulative) {
  const double failures = std::trunc(AFailures);
  const double successes = std::trunc(ASuccesses);
  if (failures < 0 || successes < 1 || !IsChance(AChance)) return kNoMass;
  return ACumulative != 0 ? NegativeBinomialBelow(failures, successes, AChance)
                          : NegativeBinomialMass(failures, successes, AChance);
}

double NegativeBinomialMassOf(double AFailures, double ASuccesses, double AChance) {
  return NegativeBinomial(AFailures, ASuccesses, AChance, 0);
}

double Hypergeometric(double ACount, double ASample, double AMarked, double APopulation, double ACumulative) {
  const double count = std::trunc(ACount);
  const double sample = std::trunc(ASample);
  const double marked = std::trunc(AMarked);
  const double population = std::trunc(APopulation);
  if (sample <= 0 || sample > population || marked <= 0 || marked > population) return kNoMass;
  if (count < 0 || count > std::min(sample, marked) || count < sample + marked - population) return kNoMass;
  return ACumulative != 0 ? HypergeometricBelow(count, sample, marked, population)
                          : HypergeometricMass(count, sample, marked, population);
}

double HypergeometricMassOf(double ACount, double ASample, double AMarked, double APopulation) {
  return Hypergeometric(ACount, ASample, AMarked, APopulation, 0);
}

}  // namespace

TCellValue CallPoisson(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return NumericBody<Poisson>::Call(AArgs, AContext);
}
TCellValue CallBinomial(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return NumericBody<Binomial>::Call(AArgs, AContext);
}
TCellValue CallBinomialInverse(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return NumericBody<BinomialInverse>::Call(AArgs, AContext);
}
TCellValue CallNegativeBinomial(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return NumericBody<NegativeBinomial>::Call(AArgs, AContext);
}
TCellValue CallNegativeBinomialMass(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return NumericBody<NegativeBinomialMassOf>::Call(AArgs, AContext);
}
TCellValue CallHypergeometric(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return NumericBody<Hypergeometric>::Call(AArgs, AContext);
}
TCellValue CallHypergeometricMass(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  return NumericBody<HypergeometricMassOf>::Call(AArgs, AContext);
}

/// trials, chance, least, [most]
TCellValue CallBinomialRange(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 4> numbers{};
  if (!ReadNumbers(AArgs, numbers, 3)) return ValueError();
  const double trials = std::trunc(numbers[0]);
  const double chance = numbers[1];
  const double least = std::trunc(numbers[2]);
  const double most = AArgs.size() > 3 ? std::trunc(numbers[3]) : least;
  if (trials < 0 || !IsChance(chance) || least < 0 || most < least || most > trials) return NumError();
  return NumberOrError(BinomialRange(trials, chance, least, most));
}

/// values, their probabilities, least, [most]
TCellValue CallProb(TFormulaArgs AArgs, const TFormulaContext&) {
  double least = 0;
  double most = 0;
  if (AArgs.size() < 3 || !ArgAsNumber(AArgs[2], least)) return ValueError();
  if (AArgs.size() > 3 && !ArgAsNumber(AArgs[3], most)) return ValueError();
  if (AArgs.size() == 3) most = least;
  const auto pairs = PairsOf(AArgs[0], AArgs[1]);
  if (!pairs) return NotAvailable();
  double total = 0;
  double inside = 0;
  for (size_t i = 0; i < pairs->First.size(); ++i) {
    const double chance = pairs->Second[i];
    if (chance <= 0 || chance > 1) return NumError();
    total += chance;
    if (pairs->First[i] >= least && pairs->First[i] <= most) inside += chance;
  }
  return std::fabs(total - 1) > 1e-7 ? NumError() : NumberOrError(inside);
}

}  // namespace tessarine::detail
