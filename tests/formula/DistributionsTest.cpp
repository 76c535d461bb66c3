#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include <tessarine/formula/library/detail/Probability.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

TEST(Distributions, InversesLeadBack) {
  std::mt19937 random(17);
  std::uniform_real_distribution<double> chance(1e-6, 1 - 1e-6);
  for (int round = 0; round < 300; ++round) {
    const double p = chance(random);
    const double shape = std::exp(8 * chance(random) - 2);
    const double freedom = 1 + std::floor(200 * chance(random));
    EXPECT_NEAR(detail::NormalBelow(detail::NormalQuantile(p)), p, 1e-13);
    EXPECT_NEAR(detail::GammaBelow(shape, detail::GammaQuantile(shape, p)), p, 1e-11) << shape;
    EXPECT_NEAR(detail::GammaAbove(shape, detail::GammaQuantileAbove(shape, p)), p, 1e-11) << shape;
    EXPECT_NEAR(detail::StudentBelow(freedom, detail::StudentQuantile(freedom, p)), p, 1e-11) << freedom;
    const double successes = detail::BinomialQuantile(freedom, chance(random), 0.5);
    EXPECT_TRUE(successes >= 0 && successes <= freedom);
  }
}

/// Distribution functions of counts are incomplete integrals or sums from the nearer end; the masses added up one by
/// one are the plain form.
TEST(Distributions, CountsAreSumsOfTheirMasses) {
  std::mt19937 random(19);
  for (int round = 0; round < 60; ++round) {
    const double population = 2 + random() % 200;
    const double marked = 1 + random() % static_cast<int>(population);
    const double sample = 1 + random() % static_cast<int>(population);
    const double chance = (1 + random() % 98) / 100.0;
    const double least = std::max(0.0, sample + marked - population);
    double binomial = 0;
    double failures = 0;
    double poisson = 0;
    double drawn = 0;
    for (double count = 0; count <= sample; ++count) {
      binomial += detail::BinomialMass(count, sample, chance);
      failures += detail::NegativeBinomialMass(count, marked, chance);
      poisson += detail::PoissonMass(count, marked);
      EXPECT_NEAR(detail::BinomialBelow(count, sample, chance), binomial, 1e-12);
      EXPECT_NEAR(detail::NegativeBinomialBelow(count, marked, chance), failures, 1e-12);
      EXPECT_NEAR(detail::GammaAbove(count + 1, marked), poisson, 1e-12);
      if (count < least || count > std::min(sample, marked)) continue;
      drawn += detail::HypergeometricMass(count, sample, marked, population);
      EXPECT_NEAR(detail::HypergeometricBelow(count, sample, marked, population), drawn, 1e-12);
    }
    EXPECT_NEAR(binomial, 1, 1e-12);
    EXPECT_NEAR(drawn, 1, 1e-12);
    const double median = detail::BinomialQuantile(sample, chance, 0.5);
    EXPECT_GE(detail::BinomialBelow(median, sample, chance), 0.5);
    EXPECT_TRUE(median == 0 || detail::BinomialBelow(median - 1, sample, chance) < 0.5);
  }
}

/// Arguments of any size end in a probability or an error.
TEST(Distributions, HugeArgumentsEnd) {
  const char* values[] = {"0", "1e-300", "0.3", "1", "7", "1e5", "9.9e9", "1e13", "1e18", "1e300", "-2"};
  const struct {
    const char* Name;
    int Numbers;
  } cases[] = {{"BINOM.DIST", 3},    {"NEGBINOM.DIST", 3}, {"POISSON.DIST", 2}, {"HYPGEOM.DIST", 4}, {"T.DIST", 2},
               {"CHISQ.DIST.RT", 2}, {"GAMMA.DIST", 3},    {"BETA.DIST", 3},    {"F.DIST.RT", 3}};
  for (const auto& row : cases) {
    size_t total = 1;
    for (int i = 0; i < row.Numbers; ++i) total *= std::size(values);
    for (size_t code = 0; code < total; code += 3) {
      std::string args;
      for (size_t i = 0, rest = code; i < static_cast<size_t>(row.Numbers); ++i, rest /= std::size(values)) {
        args += std::string(values[rest % std::size(values)]) + " ";
      }
      const double result = testing::NumberCalled(row.Name, args + "1");
      EXPECT_TRUE(std::isnan(result) || (result >= 0 && result <= 1 + 1e-12)) << row.Name << " " << args << result;
    }
  }
}

}  // namespace

}  // namespace tessarine
