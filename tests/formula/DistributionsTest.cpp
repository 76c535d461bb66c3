#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include <tessarine/formula/library/detail/Probability.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

double NumberOf(std::string_view AName, const std::string& AArgs) {
  TCellValue value;
  EXPECT_TRUE(TryEvaluateExtra(TText::FromUtf8(AName).View(), testing::ArgsOf(AArgs), {}, value)) << AName;
  return value.Kind == cvkNumber ? value.Number : std::nan("");
}

/// Values computed with 40 digits by another program.
TEST(Distributions, ValuesToTwelveDigits) {
  const struct {
    const char* Name;
    const char* Args;
    double Value;
  } cases[] = {
      {"NORMSDIST", "-4.1448010190921352", 1.7005445578204569e-05},
      {"NORMSDIST", "-8.1718990101705025", 1.5178630402909625e-16},
      {"NORM.S.INV", "1.0511833528266904e-05", -4.2537322464873375},
      {"GAMMA.DIST", "65.183334097416889 50.76407726530234 1 1", 0.97158016882705178},
      {"GAMMA.DIST", "0.76954036125326353 1.5410449696611459 1 1", 0.31224275908123827},
      {"CHISQ.DIST.RT", "3274.7358149149527 2636", 1.4008005572887118e-16},
      {"CHISQ.DIST", "2173.4879018258398 2174 0", 0.0060509172970211302},
      {"BETADIST", "0.29085647842936901 58.713867750728475 50.446452047016855", 3.7888983367020085e-08},
      {"BETADIST", "0.85622863637214885 160.88455969692768 0.21625696561229762", 2.8015980292176952e-13},
      {"BETA.DIST", "0.10628134502709141 7.9257898702807443 547.73609234190531 0", 4.640363691181818e-16},
      {"T.DIST", "7.1293964303178843 1878 0", 5.0646566699681509e-12},
      {"T.DIST", "6.8223817581821837 1925 0", 4.0628107156736346e-11},
      {"F.DIST.RT", "0.70574011976962669 117 342", 0.98629927629894876},
      {"F.DIST.RT", "7.2523209303338207 38 201", 1.0604206260881163e-21},
      {"F.DIST", "1.7903810462615233 493 66 0", 0.01695699466338392},
      {"BINOM.DIST", "155 421 0.31236188669009179 0", 0.0020784256519040686},
      {"BINOM.DIST", "2141 2529 0.82200798246216955 0", 9.7309331729189514e-05},
      {"NEGBINOM.DIST", "514 234 0.14357229511560043 1", 5.0058337922100245e-32},
      {"POISSON.DIST", "943 935.04003985883503 1", 0.61091003609920846},
      {"HYPGEOM.DIST", "33 80 476 1072 1", 0.31923924169637358},
      {"HYPGEOM.DIST", "128 186 696 938 0", 0.013046669021350051},
      {"GAMMALN", "0.0028375690564631214", 5.8631762832829777},
      {"GAMMA", "55.065379908322427", 2.9982019895154374e+71},
      {"GAMMA.INV", "0.7880738275989535 376.40043120691422 1", 391.78914518927292},
      {"CHISQ.INV.RT", "0.18566347491968849 232", 251.09487053395787},
      {"T.INV", "0.0076217617516675645 253", -2.4431645435214353},
  };
  for (const auto& row : cases) {
    EXPECT_NEAR(NumberOf(row.Name, row.Args) / row.Value, 1, 1e-12) << row.Name << " " << row.Args;
  }
}

TEST(Distributions, OldNamesAndFixedForms) {
  const struct {
    const char* Old;
    const char* OldArgs;
    const char* New;
    const char* NewArgs;
  } cases[] = {
      {"NORMDIST", "2 1 3 1", "NORM.DIST", "2 1 3 TRUE"},
      {"NORMSDIST", "0.7", "NORM.S.DIST", "0.7 TRUE"},
      {"PHI", "0.7", "NORM.S.DIST", "0.7 FALSE"},
      {"LOGNORMDIST", "4 3.5 1.2", "LOGNORM.DIST", "4 3.5 1.2 TRUE"},
      {"NEGBINOMDIST", "10.9 5.5 0.25", "NEGBINOM.DIST", "10 5 0.25 0"},
      {"HYPGEOMDIST", "1 4 8 20", "HYPGEOM.DIST", "1.9 4.9 8.9 20.9 0"},
      {"BETADIST", "2 8 10 1 3", "BETA.DIST", "2 8 10 TRUE 1 3"},
      {"BETADIST", "0.3 8 10", "BETA.DIST", "1.6 8 10 TRUE 1 3"},
      {"TDIST", "1.5 7.9 2.9", "T.DIST.2T", "1.5 7"},
      {"TDIST", "1.5 7 1", "T.DIST.RT", "1.5 7"},
      {"TINV", "0.05 9", "T.INV.2T", "0.05 9.9"},
      {"FDIST", "3 2 5", "F.DIST.RT", "3 2.9 5.9"},
      {"CHIINV", "0.3 4", "CHISQ.INV", "0.7 4"},
      {"BINOM.DIST.RANGE", "60 0.75 48", "BINOM.DIST", "48 60 0.75 0"},
      {"CONFIDENCE", "0.05 2.5 50.9", "CONFIDENCE.NORM", "0.05 2.5 50"},
  };
  for (const auto& row : cases) {
    const double wanted = NumberOf(row.New, row.NewArgs);
    EXPECT_NEAR(NumberOf(row.Old, row.OldArgs), wanted, 1e-13 * std::fabs(wanted)) << row.Old << " " << row.OldArgs;
  }
}

TEST(Distributions, EdgesOfTheDomain) {
  ExpectCalls({
      {"NORM.DIST", "0 0 0 1", "#NUM!"},
      {"NORM.DIST", "0 0 1", "#VALUE!"},
      {"NORM.DIST", "0 0 1 'x'", "#VALUE!"},
      {"NORM.DIST", "#N/A 0 1 1", "#VALUE!"},
      {"NORM.S.DIST", "1", "#VALUE!"},
      {"NORM.INV", "0 0 1", "#NUM!"},
      {"NORM.INV", "1 0 1", "#NUM!"},
      {"NORM.INV", "0.5 7 1", "7"},
      {"NORMSINV", "0.5", "0"},
      {"LOGNORM.DIST", "0 0 1 1", "#NUM!"},
      {"LOGINV", "0.5 0 0", "#NUM!"},
      {"LOGINV", "0.5 1e4 1", "#NUM!"},
      {"EXPONDIST", "-1 1 1", "#NUM!"},
      {"EXPONDIST", "0 2 0", "2"},
      {"EXPONDIST", "1e-20 1 1", "1E-20"},
      {"POISSON", "-0.5 3 0", "0.0497870683678639"},
      {"POISSON", "-1 3 0", "#NUM!"},
      {"POISSON", "0 0 0", "1"},
      {"POISSON", "2 0 1", "1"},
      {"POISSON", "2 0 0", "0"},
      {"POISSON", "2 -1 0", "#NUM!"},
      {"BINOMDIST", "0 0 0.5 0", "1"},
      {"BINOMDIST", "3 3 1 0", "1"},
      {"BINOMDIST", "2 3 1 1", "0"},
      {"BINOMDIST", "2 3 0 1", "1"},
      {"BINOMDIST", "4 3 0.5 1", "#NUM!"},
      {"BINOMDIST", "1 3 1.1 1", "#NUM!"},
      {"BINOM.INV", "6 0.5 0", "0"},
      {"BINOM.INV", "6 0.5 1", "6"},
      {"BINOM.INV", "6 0 0.9", "0"},
      {"BINOM.INV", "6 1 0.1", "6"},
      {"BINOM.INV", "-1 0.5 0.5", "#NUM!"},
      {"CRITBINOM", "6 0.5 0.75", "4"},
      {"BINOM.DIST.RANGE", "10 0.5 3 2", "#NUM!"},
      {"BINOM.DIST.RANGE", "10 0.5 0 10", "1"},
      {"BINOM.DIST.RANGE", "10 0.5 'x'", "#VALUE!"},
      {"NEGBINOM.DIST", "0 0 0.5 1", "#NUM!"},
      {"NEGBINOM.DIST", "3 2 0 0", "0"},
      {"NEGBINOM.DIST", "0 2 1 0", "1"},
      {"NEGBINOM.DIST", "3 2 1 1", "1"},
      {"HYPGEOM.DIST", "0 5 5 9 0", "#NUM!"},
      {"HYPGEOM.DIST", "1 5 5 9 0", "0.0396825396825397"},
      {"HYPGEOM.DIST", "5 5 5 9 1", "1"},
      {"HYPGEOM.DIST", "1 2 3 1e15 0", "#NUM!"},
      {"HYPGEOMDIST", "2 5 2 5", "1"},
      {"WEIBULL", "0 0.5 1 0", "#NUM!"},
      {"WEIBULL", "0 1 4 0", "0.25"},
      {"WEIBULL", "0 2 4 0", "0"},
      {"WEIBULL", "105 20 100 1", "0.929581390069277"},
      {"WEIBULL", "1 0 1 1", "#NUM!"},
      {"GAMMADIST", "0 1 4 0", "0.25"},
      {"GAMMADIST", "0 0.5 1 0", "#NUM!"},
      {"GAMMADIST", "0 2 1 1", "0"},
      {"GAMMA.INV", "0 3 1", "0"},
      {"GAMMA.INV", "1 3 1", "#NUM!"},
      {"GAMMALN", "0", "#NUM!"},
      {"GAMMA", "-2", "#NUM!"},
      {"GAMMA", "-1.5", "2.36327180120735"},
      {"GAMMA", "171.7", "#NUM!"},
      {"GAMMA", "0", "#NUM!"},
      {"CHISQ.DIST", "0 2 0", "0.5"},
      {"CHISQ.DIST", "0 1 0", "#NUM!"},
      {"CHISQ.DIST", "1 0.9 1", "#NUM!"},
      {"CHISQ.DIST", "1 2e10 1", "#NUM!"},
      {"CHISQ.DIST.RT", "0 3", "1"},
      {"CHISQ.INV", "0 3", "0"},
      {"CHISQ.INV.RT", "1 3", "0"},
      {"CHISQ.INV.RT", "0 3", "#NUM!"},
      {"F.DIST", "0 2 5 0", "1"},
      {"F.DIST.RT", "-1 2 5", "#NUM!"},
      {"F.DIST.RT", "1 2 1e10", "#NUM!"},
      {"F.DIST", "0 1 5 1", "0"},
      {"T.DIST", "0 3 1", "0.5"},
      {"T.DIST", "1 0.9 1", "#NUM!"},
      {"T.DIST.2T", "-1 3", "#NUM!"},
      {"T.DIST.RT", "-1 1", "0.75"},
      {"TDIST", "1 3 3", "#NUM!"},
      {"TDIST", "-1 3 1", "#NUM!"},
      {"T.INV", "0.5 3", "0"},
      {"T.INV", "0.75 1", "1"},
      {"T.INV", "1 3", "#NUM!"},
      {"T.INV.2T", "1 3", "0"},
      {"T.INV.2T", "0 3", "#NUM!"},
      {"T.INV.2T", "1.1 3", "#NUM!"},
      {"BETADIST", "0 2 3", "0"},
      {"BETADIST", "1.1 2 3", "#NUM!"},
      {"BETADIST", "2 2 3 2 2", "#NUM!"},
      {"BETADIST", "0.5 0 3", "#NUM!"},
      {"BETA.DIST", "0 0.5 1 0", "#NUM!"},
      {"BETA.DIST", "3 1 1 0 2 6", "0.25"},
      {"BETA.DIST", "0.5 2 3", "#VALUE!"},
      {"GAUSS", "1e-9", "3.98942280401433E-10"},
      {"F.INV", "0.5 1 1", "#N/A"},
  });
}

TEST(Distributions, TestsAndIntervals) {
  ExpectCalls({
      {"PROB", "[0 1 2 3] [0.2 0.3 0.1 0.4] 2", "0.1"},
      {"PROB", "[0 1 2 3] [0.2 0.3 0.1 0.4] 1 3", "0.8"},
      {"PROB", "[0 1] [0.5 0.6] 1", "#NUM!"},
      {"PROB", "[0 1] [0 1] 1", "#NUM!"},
      {"PROB", "[0 1] [1] 1", "#N/A"},
      {"PROB", "['x' 1] [0.5 1] 1", "1"},
      {"PROB", "[0 1] [0.5 0.5] 'x'", "#VALUE!"},
      {"Z.TEST", "[3 6 7 8 6 5 4 2 1 9] 4", "0.0905741968513638"},
      {"Z.TEST", "[3 6 7] 4 0", "#NUM!"},
      {"ZTEST", "[3 6 7 8 6 5 4 2 1 9] 6 2", "0.922635538257311"},
      {"Z.TEST", "['x'] 4", "#N/A"},
      {"Z.TEST", "[5] 4", "#DIV/0!"},
      {"Z.TEST", "[5 5] 4", "#DIV/0!"},
      {"Z.TEST", "[5] 4 1", "0.158655253931457"},
      {"CHISQ.TEST", "[58 35;11 25;10 23] [45.35 47.65;17.56 18.44;16.09 16.91]", "0.000308192017008309"},
      {"CHITEST", "[1 2] [1;2]", "#N/A"},
      {"CHITEST", "[1] [1]", "#N/A"},
      {"CHITEST", "[1 2] [0 2]", "#DIV/0!"},
      {"CHITEST", "[1 2] [-1 2]", "#NUM!"},
      {"CHITEST", "[1 2] [1 2]", "1"},
      {"F.TEST", "[6 7 9 15 21] [20 28 31 38 40]", "0.648317846786175"},
      {"FTEST", "[1 2] [3 3]", "#DIV/0!"},
      {"T.TEST", "[3 4 5 8 9 1 2 4 5] [6 19 3 2 14 4 5 17 1] 2 1", "0.196015784925282"},
      {"TTEST", "[3 4 5 8 9 1 2 4 5] [6 19 3 2 14 4 5 17 1] 1.9 1", "0.098007892462641"},
      {"TTEST", "[3 4 5 8] [6 19 3] 2 2", "0.360075435505213"},
      {"TTEST", "[3 4 5 8] [6 19 3] 2 3", "0.472542529528951"},
      {"TTEST", "[3 4 5] [6 19] 2 1", "#N/A"},
      {"TTEST", "[1 2] [2 3] 2 1", "#DIV/0!"},
      {"TTEST", "[1 1] [2 2] 2 2", "#DIV/0!"},
      {"TTEST", "[1 2] [2 3] 3 1", "#NUM!"},
      {"TTEST", "[1 2] [2 3] 2 0", "#NUM!"},
      {"TTEST", "[1 2] [2 3] 2", "#VALUE!"},
      {"CONFIDENCE.T", "0.05 1 50", "0.28419685549573"},
      {"CONFIDENCE.T", "0.05 1 1.9", "#DIV/0!"},
      {"CONFIDENCE", "0.05 2.5 50", "0.692951912174839"},
      {"CONFIDENCE", "1 1 9", "#NUM!"},
      {"CONFIDENCE", "0.5 0 9", "#NUM!"},
      {"CONFIDENCE", "0.5 1 0.9", "#NUM!"},
  });
}

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
      const double result = NumberOf(row.Name, args + "1");
      EXPECT_TRUE(std::isnan(result) || (result >= 0 && result <= 1 + 1e-12)) << row.Name << " " << args << result;
    }
  }
}

}  // namespace

}  // namespace tessarine
