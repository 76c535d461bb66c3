#pragma once

/// Densities, distribution functions and quantiles. Nothing here throws, and every call is bounded in time, however
/// large its arguments; outside its domain a function is NaN. "Below" is the probability of a value not above x,
/// "Above" its complement, which keeps its digits where it is small. The incomplete gamma and beta functions behind
/// them are those of Boost.Math; the beta function and what stands on it (beta, F, counts of trials) is NaN when its
/// two parameters together exceed 1E+12, where it would take too long.
namespace tessarine::detail {

// Standard normal.
double NormalDensity(double AZ);
double NormalBelow(double AZ);
double NormalQuantile(double AProbability);

// Gamma with scale 1; AShape > 0. Chi-squared with n degrees of freedom is gamma with shape n/2 at x/2, and Poisson
// of at most k events is GammaAbove(k + 1, mean).
double GammaDensity(double AShape, double AX);
double GammaBelow(double AShape, double AX);
double GammaAbove(double AShape, double AX);
double GammaQuantile(double AShape, double AProbability);
double GammaQuantileAbove(double AShape, double AProbability);

// Beta on 0 to 1; AAlpha, ABeta > 0.
double BetaDensity(double AAlpha, double ABeta, double AX);
double BetaBelow(double AAlpha, double ABeta, double AX);
double BetaAbove(double AAlpha, double ABeta, double AX);

// Student's t with AFreedom > 0 degrees, not necessarily whole.
double StudentDensity(double AFreedom, double AT);
double StudentBelow(double AFreedom, double AT);
double StudentQuantile(double AFreedom, double AProbability);

// Fisher's F; both degrees of freedom > 0, AX >= 0.
double FisherDensity(double AFreedom1, double AFreedom2, double AX);
double FisherBelow(double AFreedom1, double AFreedom2, double AX);
double FisherAbove(double AFreedom1, double AFreedom2, double AX);

// Discrete ones; the counts are whole numbers given as doubles.

/// ACount events at a mean of AMean >= 0.
double PoissonMass(double ACount, double AMean);

/// ACount successes in ATrials, 0 <= ACount <= ATrials, 0 <= AChance <= 1.
double BinomialMass(double ACount, double ATrials, double AChance);
double BinomialBelow(double ACount, double ATrials, double AChance);
double BinomialAbove(double ACount, double ATrials, double AChance);
/// The fewest successes whose BinomialBelow is at least AProbability.
double BinomialQuantile(double ATrials, double AChance, double AProbability);

/// AFailures before success number ASuccesses > 0.
double NegativeBinomialMass(double AFailures, double ASuccesses, double AChance);
double NegativeBinomialBelow(double AFailures, double ASuccesses, double AChance);

/// ACount marked ones in a sample of ASample out of APopulation of which AMarked are marked; the count is possible.
/// NaN above a population of 1E+12, which would be summed for too long.
double HypergeometricMass(double ACount, double ASample, double AMarked, double APopulation);
double HypergeometricBelow(double ACount, double ASample, double AMarked, double APopulation);

}  // namespace tessarine::detail
