#include <tessarine/formula/library/detail/Probability.h>

#include <algorithm>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <limits>

namespace tessarine::detail {

namespace {

namespace bm = boost::math;
namespace bp = boost::math::policies;

/// Errors are answered by a NaN, an infinity or the best value found. Doubles stay doubles: their algorithms are good
/// to some 14 digits and three times as fast.
using TMathPolicy =
    bp::policy<bp::domain_error<bp::ignore_error>, bp::pole_error<bp::ignore_error>,
               bp::overflow_error<bp::ignore_error>, bp::underflow_error<bp::ignore_error>,
               bp::denorm_error<bp::ignore_error>, bp::rounding_error<bp::ignore_error>,
               bp::evaluation_error<bp::ignore_error>, bp::indeterminate_result_error<bp::ignore_error>,
               bp::promote_double<false>, bp::max_series_iterations<200000>, bp::max_root_iterations<100>>;
constexpr TMathPolicy kPolicy;

using TStudent = bm::students_t_distribution<double, TMathPolicy>;
using TFisher = bm::fisher_f_distribution<double, TMathPolicy>;

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
constexpr double kSqrtHalf = 0.70710678118654752440;
constexpr double kInverseSqrtTwoPi = 0.39894228040143267794;
constexpr double kLargestSize = 1e12;

/// The part of a hypergeometric distribution from ACount away from its middle, divided by the mass at ACount. Each
/// term is the one before times AMoves(count); they fall, and what is below the last digit is left out.
template <class TRatio>
double TailSum(double ACount, double AEnd, double AStep, TRatio ARatio) {
  double sum = 1;
  double term = 1;
  for (double count = ACount; count != AEnd && term > 1e-17 * sum; count += AStep) {
    term *= ARatio(count);
    sum += term;
  }
  return sum;
}

}  // namespace

double NormalDensity(double AZ) { return kInverseSqrtTwoPi * std::exp(-AZ * AZ / 2); }
double NormalBelow(double AZ) { return std::erfc(-AZ * kSqrtHalf) / 2; }
double NormalQuantile(double AProbability) { return -bm::erfc_inv(2 * AProbability, kPolicy) / kSqrtHalf; }

double GammaDensity(double AShape, double AX) { return bm::gamma_p_derivative(AShape, AX, kPolicy); }
double GammaBelow(double AShape, double AX) { return bm::gamma_p(AShape, AX, kPolicy); }
double GammaAbove(double AShape, double AX) { return bm::gamma_q(AShape, AX, kPolicy); }
double GammaQuantile(double AShape, double AProbability) { return bm::gamma_p_inv(AShape, AProbability, kPolicy); }
double GammaQuantileAbove(double AShape, double AProbability) { return bm::gamma_q_inv(AShape, AProbability, kPolicy); }

double BetaDensity(double AAlpha, double ABeta, double AX) {
  return AAlpha + ABeta > kLargestSize ? kNoValue : bm::ibeta_derivative(AAlpha, ABeta, AX, kPolicy);
}
double BetaBelow(double AAlpha, double ABeta, double AX) {
  return AAlpha + ABeta > kLargestSize ? kNoValue : bm::ibeta(AAlpha, ABeta, AX, kPolicy);
}
double BetaAbove(double AAlpha, double ABeta, double AX) {
  return AAlpha + ABeta > kLargestSize ? kNoValue : bm::ibetac(AAlpha, ABeta, AX, kPolicy);
}

double StudentDensity(double AFreedom, double AT) { return bm::pdf(TStudent(AFreedom), AT); }
double StudentBelow(double AFreedom, double AT) { return bm::cdf(TStudent(AFreedom), AT); }
double StudentQuantile(double AFreedom, double AProbability) { return bm::quantile(TStudent(AFreedom), AProbability); }

double FisherDensity(double AFreedom1, double AFreedom2, double AX) {
  return bm::pdf(TFisher(AFreedom1, AFreedom2), AX);
}
double FisherBelow(double AFreedom1, double AFreedom2, double AX) { return bm::cdf(TFisher(AFreedom1, AFreedom2), AX); }
double FisherAbove(double AFreedom1, double AFreedom2, double AX) {
  return bm::cdf(bm::complement(TFisher(AFreedom1, AFreedom2), AX));
}

double PoissonMass(double ACount, double AMean) {
  if (AMean == 0) return ACount == 0 ? 1 : 0;
  return GammaDensity(ACount + 1, AMean);
}

double BinomialMass(double ACount, double ATrials, double AChance) {
  if (ATrials > kLargestSize) return kNoValue;
  if (AChance == 0) return ACount == 0 ? 1 : 0;
  if (AChance == 1) return ACount == ATrials ? 1 : 0;
  if (ACount == 0) return std::exp(ATrials * std::log1p(-AChance));
  if (ACount == ATrials) return std::pow(AChance, ATrials);
  return BetaDensity(ACount + 1, ATrials - ACount + 1, AChance) / (ATrials + 1);
}

double BinomialBelow(double ACount, double ATrials, double AChance) {
  return ACount >= ATrials ? 1 : BetaAbove(ACount + 1, ATrials - ACount, AChance);
}

double BinomialAbove(double ACount, double ATrials, double AChance) {
  return ACount >= ATrials ? 0 : BetaBelow(ACount + 1, ATrials - ACount, AChance);
}

double BinomialQuantile(double ATrials, double AChance, double AProbability) {
  if (ATrials > kLargestSize) return kNoValue;
  double below = -1;  // too few
  double enough = ATrials;
  while (enough - below > 1) {
    const double middle = std::floor((below + enough) / 2);
    (BinomialBelow(middle, ATrials, AChance) >= AProbability ? enough : below) = middle;
  }
  return enough;
}

double NegativeBinomialMass(double AFailures, double ASuccesses, double AChance) {
  if (AChance == 0) return 0;
  if (AChance == 1) return AFailures == 0 ? 1 : 0;
  return BetaDensity(ASuccesses, AFailures + 1, AChance) * AChance / (ASuccesses + AFailures);
}

double NegativeBinomialBelow(double AFailures, double ASuccesses, double AChance) {
  return BetaBelow(ASuccesses, AFailures + 1, AChance);
}

/// By three binomial masses at the same chance, each of which keeps its digits (C. Loader, "Fast and Accurate
/// Computation of Binomial Probabilities", 2000).
double HypergeometricMass(double ACount, double ASample, double AMarked, double APopulation) {
  if (APopulation > kLargestSize) return kNoValue;
  if (ASample == APopulation) return ACount == AMarked ? 1 : 0;
  const double chance = ASample / APopulation;
  return BinomialMass(ACount, AMarked, chance) * BinomialMass(ASample - ACount, APopulation - AMarked, chance) /
         BinomialMass(ASample, APopulation, chance);
}

double HypergeometricBelow(double ACount, double ASample, double AMarked, double APopulation) {
  if (APopulation > kLargestSize) return kNoValue;
  const double least = std::max(0.0, ASample + AMarked - APopulation);
  const double most = std::min(ASample, AMarked);
  const double others = APopulation - AMarked - ASample;  // count + others are unmarked and not in the sample
  if (ACount >= most) return 1;
  if (ACount * APopulation <= ASample * AMarked) {
    const auto down = [&](double AFrom) {
      return AFrom * (others + AFrom) / ((ASample - AFrom + 1) * (AMarked - AFrom + 1));
    };
    return HypergeometricMass(ACount, ASample, AMarked, APopulation) * TailSum(ACount, least, -1, down);
  }
  const auto up = [&](double AFrom) {
    return (ASample - AFrom) * (AMarked - AFrom) / ((AFrom + 1) * (others + AFrom + 1));
  };
  return 1 - HypergeometricMass(ACount + 1, ASample, AMarked, APopulation) * TailSum(ACount + 1, most, 1, up);
}

}  // namespace tessarine::detail
