#include <array>
#include <cmath>
#include <limits>

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/NumericBody.h>
#include <tessarine/formula/library/detail/Probability.h>
#include <tessarine/formula/library/detail/SpecialFunctions.h>
#include <tessarine/formula/library/detail/StatisticsBodies.h>

namespace tessarine {

namespace {

using namespace detail;

// NaN stands for arguments outside the domain. Degrees of freedom are cut toward zero; a flag is true when it is a
// number other than 0.

constexpr double kNoDomain = std::numeric_limits<double>::quiet_NaN();
constexpr double kMostFreedom = 1e10;

bool IsInside(double AProbability) { return AProbability > 0 && AProbability < 1; }
bool IsProbability(double AProbability) { return AProbability >= 0 && AProbability <= 1; }
bool IsFreedom(double AFreedom) { return AFreedom >= 1 && AFreedom <= kMostFreedom; }

double Normal(double AX, double AMean, double ADeviation, double ACumulative) {
  if (!(ADeviation > 0)) return kNoDomain;
  const double z = (AX - AMean) / ADeviation;
  return ACumulative != 0 ? NormalBelow(z) : NormalDensity(z) / ADeviation;
}

double NormalInverse(double AProbability, double AMean, double ADeviation) {
  if (!IsInside(AProbability) || !(ADeviation > 0)) return kNoDomain;
  return AMean + NormalQuantile(AProbability) * ADeviation;
}

double StandardNormal(double AZ, double ACumulative) { return ACumulative != 0 ? NormalBelow(AZ) : NormalDensity(AZ); }
double StandardNormalInverse(double AProbability) { return NormalInverse(AProbability, 0, 1); }
double Gauss(double AZ) { return ErrorFunction(AZ / std::sqrt(2.0)) / 2; }

double LogNormal(double AX, double AMean, double ADeviation, double ACumulative) {
  if (!(AX > 0)) return kNoDomain;
  return Normal(std::log(AX), AMean, ADeviation, ACumulative) / (ACumulative != 0 ? 1 : AX);
}
double LogNormalBelow(double AX, double AMean, double ADeviation) { return LogNormal(AX, AMean, ADeviation, 1); }
double LogNormalInverse(double AProbability, double AMean, double ADeviation) {
  return std::exp(NormalInverse(AProbability, AMean, ADeviation));
}

double Exponential(double AX, double ARate, double ACumulative) {
  if (AX < 0 || !(ARate > 0)) return kNoDomain;
  return ACumulative != 0 ? -std::expm1(-ARate * AX) : ARate * std::exp(-ARate * AX);
}

double Weibull(double AX, double AShape, double AScale, double ACumulative) {
  if (AX < 0 || !(AShape > 0) || !(AScale > 0)) return kNoDomain;
  const double power = std::pow(AX / AScale, AShape);
  return ACumulative != 0 ? -std::expm1(-power)
                          : AShape / AScale * std::pow(AX / AScale, AShape - 1) * std::exp(-power);
}

double Gamma(double AX, double AShape, double AScale, double ACumulative) {
  if (AX < 0 || !(AShape > 0) || !(AScale > 0)) return kNoDomain;
  return ACumulative != 0 ? GammaBelow(AShape, AX / AScale) : GammaDensity(AShape, AX / AScale) / AScale;
}

double GammaInverse(double AProbability, double AShape, double AScale) {
  if (!IsProbability(AProbability) || !(AShape > 0) || !(AScale > 0)) return kNoDomain;
  return GammaQuantile(AShape, AProbability) * AScale;
}

double GammaLn(double AX) { return AX > 0 ? LogGamma(AX) : kNoDomain; }

double ChiSquared(double AX, double AFreedom, double ACumulative) {
  const double freedom = std::trunc(AFreedom);
  return IsFreedom(freedom) ? Gamma(AX, freedom / 2, 2, ACumulative) : kNoDomain;
}

double ChiSquaredAbove(double AX, double AFreedom) {
  const double freedom = std::trunc(AFreedom);
  return AX >= 0 && IsFreedom(freedom) ? GammaAbove(freedom / 2, AX / 2) : kNoDomain;
}

double ChiSquaredInverse(double AProbability, double AFreedom) {
  const double freedom = std::trunc(AFreedom);
  if (!IsProbability(AProbability) || !IsFreedom(freedom)) return kNoDomain;
  return GammaQuantile(freedom / 2, AProbability) * 2;
}

double ChiSquaredInverseAbove(double AProbability, double AFreedom) {
  const double freedom = std::trunc(AFreedom);
  if (!IsProbability(AProbability) || !IsFreedom(freedom)) return kNoDomain;
  return GammaQuantileAbove(freedom / 2, AProbability) * 2;
}

/// Calls AFormula(freedom1, freedom2, x) inside the domain.
double FisherF(double AX, double AFreedom1, double AFreedom2, double (*AFormula)(double, double, double)) {
  const double freedom1 = std::trunc(AFreedom1);
  const double freedom2 = std::trunc(AFreedom2);
  if (AX < 0 || freedom1 < 1 || freedom2 < 1 || freedom1 >= kMostFreedom || freedom2 >= kMostFreedom) return kNoDomain;
  return AFormula(freedom1, freedom2, AX);
}

double FisherDistribution(double AX, double AFreedom1, double AFreedom2, double ACumulative) {
  return FisherF(AX, AFreedom1, AFreedom2, ACumulative != 0 ? FisherBelow : FisherDensity);
}
double FisherDistributionAbove(double AX, double AFreedom1, double AFreedom2) {
  return FisherF(AX, AFreedom1, AFreedom2, FisherAbove);
}

double Student(double AT, double AFreedom, double ACumulative) {
  const double freedom = std::trunc(AFreedom);
  if (!IsFreedom(freedom)) return kNoDomain;
  return ACumulative != 0 ? StudentBelow(freedom, AT) : StudentDensity(freedom, AT);
}

double StudentAbove(double AT, double AFreedom) { return Student(-AT, AFreedom, 1); }

double StudentTails(double AT, double AFreedom, double ATails) {
  const double tails = std::trunc(ATails);
  if (AT < 0 || (tails != 1 && tails != 2)) return kNoDomain;
  return tails * StudentAbove(AT, AFreedom);
}
double StudentTwoTails(double AT, double AFreedom) { return StudentTails(AT, AFreedom, 2); }

double StudentInverse(double AProbability, double AFreedom) {
  const double freedom = std::trunc(AFreedom);
  return IsInside(AProbability) && IsFreedom(freedom) ? StudentQuantile(freedom, AProbability) : kNoDomain;
}

double StudentInverseTwoTails(double AProbability, double AFreedom) {
  return AProbability <= 1 ? -StudentInverse(AProbability / 2, AFreedom) : kNoDomain;
}

/// Beta stretched from 0 to 1 to AFirst to ALast.
double Beta(double AX, double AAlpha, double ABeta, bool ACumulative, double AFirst, double ALast) {
  if (!(AAlpha > 0) || !(ABeta > 0) || AX < AFirst || AX > ALast || AFirst == ALast) return kNoDomain;
  const double share = (AX - AFirst) / (ALast - AFirst);
  return ACumulative ? BetaBelow(AAlpha, ABeta, share) : BetaDensity(AAlpha, ABeta, share) / (ALast - AFirst);
}

TCellValue CallBeta(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 6> numbers{0, 0, 0, 0, 0, 1};
  if (!ReadNumbers(AArgs, numbers, 4)) return ValueError();
  const auto& [x, alpha, beta, cumulative, first, last] = numbers;
  return NumberOrError(Beta(x, alpha, beta, cumulative != 0, first, last));
}

TCellValue CallBetaBelow(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 5> numbers{0, 0, 0, 0, 1};
  if (!ReadNumbers(AArgs, numbers, 3)) return ValueError();
  const auto& [x, alpha, beta, first, last] = numbers;
  return NumberOrError(Beta(x, alpha, beta, true, first, last));
}

// clang-format off
constexpr TFunctionDef kDistributionFunctions[] = {
    {.Name = u"BETA.DIST", .MinArgs = 4, .MaxArgs = 6, .Tier = ftrExtra, .Body = CallBeta,
     .Arguments = u"x, alpha, beta, cumulative, [first], [last]",
     .Description = u"Beta distribution or its density, from 0 to 1 or between two given ends."},
    {.Name = u"BETADIST", .MinArgs = 3, .MaxArgs = 5, .Tier = ftrExtra, .Body = CallBetaBelow,
     .Arguments = u"x, alpha, beta, [first], [last]",
     .Description = u"Beta distribution from 0 to 1 or between two given ends."},
    {.Name = u"BINOM.DIST", .Spellings = u"BINOMDIST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra,
     .Body = CallBinomial, .Arguments = u"successes, trials, chance, cumulative",
     .Description = u"Probability of a number of successes, or of at most as many, in independent trials."},
    {.Name = u"BINOM.DIST.RANGE", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallBinomialRange,
     .Arguments = u"trials, chance, least, [most]",
     .Description = u"Probability that the number of successes in independent trials lies between two."},
    {.Name = u"BINOM.INV", .Spellings = u"CRITBINOM", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = CallBinomialInverse, .Arguments = u"trials, chance, probability",
     .Description = u"The fewest successes whose binomial distribution reaches a probability."},
    {.Name = u"CHISQ.DIST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumericBody<ChiSquared>::Call,
     .Arguments = u"x, freedom, cumulative", .Description = u"Chi-squared distribution or its density."},
    {.Name = u"CHISQ.DIST.RT", .Spellings = u"CHIDIST", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = NumericBody<ChiSquaredAbove>::Call, .Arguments = u"x, freedom",
     .Description = u"Right tail of the chi-squared distribution."},
    {.Name = u"CHISQ.INV", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<ChiSquaredInverse>::Call,
     .Arguments = u"probability, freedom", .Description = u"Inverse of the chi-squared distribution."},
    {.Name = u"CHISQ.INV.RT", .Spellings = u"CHIINV", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = NumericBody<ChiSquaredInverseAbove>::Call, .Arguments = u"probability, freedom",
     .Description = u"Inverse of the right tail of the chi-squared distribution."},
    {.Name = u"CHISQ.TEST", .Spellings = u"CHITEST", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = CallChiSquaredTest, .Arguments = u"counted, expected",
     .Description = u"Probability that counts lie at least as far from the expected ones by chance."},
    {.Name = u"CONFIDENCE.NORM", .Spellings = u"CONFIDENCE", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = CallConfidenceNormal, .Arguments = u"alpha, deviation, size",
     .Description = u"Half width of the confidence interval of a mean, by the normal distribution."},
    {.Name = u"CONFIDENCE.T", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallConfidenceStudent,
     .Arguments = u"alpha, deviation, size",
     .Description = u"Half width of the confidence interval of a mean, by Student's t distribution."},
    {.Name = u"EXPON.DIST", .Spellings = u"EXPONDIST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumericBody<Exponential>::Call, .Arguments = u"x, rate, cumulative",
     .Description = u"Exponential distribution or its density."},
    {.Name = u"F.DIST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumericBody<FisherDistribution>::Call,
     .Arguments = u"x, freedom1, freedom2, cumulative", .Description = u"F distribution or its density."},
    {.Name = u"F.DIST.RT", .Spellings = u"FDIST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumericBody<FisherDistributionAbove>::Call, .Arguments = u"x, freedom1, freedom2",
     .Description = u"Right tail of the F distribution."},
    {.Name = u"F.TEST", .Spellings = u"FTEST", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallFisherTest,
     .Arguments = u"values1, values2",
     .Description = u"Probability that the variances of two samples differ at least as much by chance."},
    {.Name = u"GAMMA", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<GammaFunction>::Call,
     .Arguments = u"x", .Description = u"Gamma function."},
    {.Name = u"GAMMA.DIST", .Spellings = u"GAMMADIST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra,
     .Body = NumericBody<Gamma>::Call, .Arguments = u"x, shape, scale, cumulative",
     .Description = u"Gamma distribution or its density."},
    {.Name = u"GAMMA.INV", .Spellings = u"GAMMAINV", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumericBody<GammaInverse>::Call, .Arguments = u"probability, shape, scale",
     .Description = u"Inverse of the gamma distribution."},
    {.Name = u"GAMMALN", .Spellings = u"GAMMALN.PRECISE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = NumericBody<GammaLn>::Call, .Arguments = u"x",
     .Description = u"Natural logarithm of the gamma function of a positive number."},
    {.Name = u"GAUSS", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<Gauss>::Call,
     .Arguments = u"z", .Description = u"Standard normal distribution less one half."},
    {.Name = u"HYPGEOM.DIST", .MinArgs = 5, .MaxArgs = 5, .Tier = ftrExtra, .Body = CallHypergeometric,
     .Arguments = u"count, sample, marked, population, cumulative",
     .Description = u"Probability of a number of marked ones, or of at most as many, in a sample."},
    {.Name = u"HYPGEOMDIST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallHypergeometricMass,
     .Arguments = u"count, sample, marked, population",
     .Description = u"Probability of a number of marked ones in a sample."},
    {.Name = u"LOGNORM.DIST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumericBody<LogNormal>::Call,
     .Arguments = u"x, mean, deviation, cumulative",
     .Description = u"Distribution, or its density, of a number whose logarithm is normal."},
    {.Name = u"LOGNORM.INV", .Spellings = u"LOGINV", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumericBody<LogNormalInverse>::Call, .Arguments = u"probability, mean, deviation",
     .Description = u"Inverse of the lognormal distribution."},
    {.Name = u"LOGNORMDIST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumericBody<LogNormalBelow>::Call,
     .Arguments = u"x, mean, deviation", .Description = u"Distribution of a number whose logarithm is normal."},
    {.Name = u"NEGBINOM.DIST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallNegativeBinomial,
     .Arguments = u"failures, successes, chance, cumulative",
     .Description = u"Probability of a number of failures, or of at most as many, before the successes are reached."},
    {.Name = u"NEGBINOMDIST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallNegativeBinomialMass,
     .Arguments = u"failures, successes, chance",
     .Description = u"Probability of a number of failures before the successes are reached."},
    {.Name = u"NORM.DIST", .Spellings = u"NORMDIST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra,
     .Body = NumericBody<Normal>::Call, .Arguments = u"x, mean, deviation, cumulative",
     .Description = u"Normal distribution or its density."},
    {.Name = u"NORM.INV", .Spellings = u"NORMINV", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumericBody<NormalInverse>::Call, .Arguments = u"probability, mean, deviation",
     .Description = u"Inverse of the normal distribution."},
    {.Name = u"NORM.S.DIST", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<StandardNormal>::Call,
     .Arguments = u"z, cumulative", .Description = u"Standard normal distribution or its density."},
    {.Name = u"NORM.S.INV", .Spellings = u"NORMSINV", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = NumericBody<StandardNormalInverse>::Call, .Arguments = u"probability",
     .Description = u"Inverse of the standard normal distribution."},
    {.Name = u"NORMSDIST", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<NormalBelow>::Call,
     .Arguments = u"z", .Description = u"Standard normal distribution."},
    {.Name = u"PHI", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<NormalDensity>::Call,
     .Arguments = u"z", .Description = u"Density of the standard normal distribution."},
    {.Name = u"POISSON.DIST", .Spellings = u"POISSON", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = CallPoisson, .Arguments = u"count, mean, cumulative",
     .Description = u"Probability of a number of rare events, or of at most as many."},
    {.Name = u"PROB", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallProb,
     .Arguments = u"values, probabilities, least, [most]",
     .Description = u"Probability that one of the values is met that lie between two numbers."},
    {.Name = u"T.DIST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumericBody<Student>::Call,
     .Arguments = u"t, freedom, cumulative", .Description = u"Student's t distribution or its density."},
    {.Name = u"T.DIST.2T", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<StudentTwoTails>::Call,
     .Arguments = u"t, freedom", .Description = u"Both tails of Student's t distribution."},
    {.Name = u"T.DIST.RT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<StudentAbove>::Call,
     .Arguments = u"t, freedom", .Description = u"Right tail of Student's t distribution."},
    {.Name = u"T.INV", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<StudentInverse>::Call,
     .Arguments = u"probability, freedom", .Description = u"Inverse of Student's t distribution."},
    {.Name = u"T.INV.2T", .Spellings = u"TINV", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = NumericBody<StudentInverseTwoTails>::Call, .Arguments = u"probability, freedom",
     .Description = u"Inverse of both tails of Student's t distribution."},
    {.Name = u"T.TEST", .Spellings = u"TTEST", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallStudentTest,
     .Arguments = u"values1, values2, tails, kind",
     .Description = u"Probability that two means differ at least as much by chance: pairs (1), one variance (2) or two (3)."},
    {.Name = u"TDIST", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumericBody<StudentTails>::Call,
     .Arguments = u"t, freedom, tails", .Description = u"One or both tails of Student's t distribution."},
    {.Name = u"WEIBULL.DIST", .Spellings = u"WEIBULL", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra,
     .Body = NumericBody<Weibull>::Call, .Arguments = u"x, shape, scale, cumulative",
     .Description = u"Weibull distribution or its density."},
    {.Name = u"Z.TEST", .Spellings = u"ZTEST", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallNormalTest,
     .Arguments = u"values, mean, [deviation]",
     .Description = u"Probability of a larger mean than that of the values, by the normal distribution."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> DistributionFunctions() { return kDistributionFunctions; }

}  // namespace tessarine
