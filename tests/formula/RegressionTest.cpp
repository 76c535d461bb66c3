#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <tessarine/formula/library/detail/LeastSquares.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(Regression, PairsAreWhereBothHaveANumber) {
  ExpectCalls({
      {"CORREL", "[3 2 4 5 6] [9 7 12 15 17]", "0.997054485501581"},
      {"PEARSON", "[3 2 4 5 6] [9;7;12;15;17]", "0.997054485501581"},
      {"CORREL", "[3 2 4 5 6 'x' 8] [9 7 12 15 17 1 _]", "0.997054485501581"},
      {"CORREL", "[1e200 2e200 3e200] [1 2 3]", "#NUM!"},
      {"CORREL", "[1e120 2e120 3e120] [1e120 2e120 3e120]", "1"},
      {"COVARIANCE.P", "[3 2 4 5 6] [9 7 12 15 17]", "5.2"},
      {"COVAR", "2 3", "0"},
      {"COVARIANCE.S", "[2 4 8] [5 11 12]", "9.66666666666667"},
      {"COVARIANCE.S", "[2] [5]", "#DIV/0!"},
      {"SLOPE", "[2 3 9 1 8 7 5] [6 5 11 7 5 4 4]", "0.305555555555556"},
      {"INTERCEPT", "[2 3 9 1 8 7 5] [6 5 11 7 5 4 4]", "3.16666666666667"},
      {"RSQ", "[2 3 9 1 8 7 5] [6 5 11 7 5 4 4]", "0.0579501915708812"},
      {"STEYX", "[2 3 9 1 8 7 5] [6 5 11 7 5 4 4]", "3.30571895021004"},
      {"STEYX", "[1 2] [1 2]", "#DIV/0!"},
      {"FORECAST", "30 [6 7 9 15 21] [20 28 31 38 40]", "10.6072530864198"},
      {"FORECAST.LINEAR", "'x' [1 2] [1 2]", "#VALUE!"},
  });
  for (const char* name : {"CORREL", "COVAR", "SLOPE", "INTERCEPT", "RSQ", "STEYX"}) {
    EXPECT_EQ(testing::Called(name, "[1 2 3] [1 2]"), "#N/A") << name;
    EXPECT_EQ(testing::Called(name, "['x' _] [1 2]"), "#DIV/0!") << name;
    EXPECT_EQ(testing::Called(name, "[1 2]"), "#VALUE!") << name;
  }
  for (const char* name : {"CORREL", "SLOPE", "INTERCEPT", "RSQ", "STEYX"}) {
    EXPECT_EQ(testing::Called(name, "[1 2 3] [4 4 4]"), "#DIV/0!") << name;
  }
}

TEST(Regression, ModelsAnswerTheirFirstValue) {
  ExpectCalls({
      {"LINEST", "[1 9 5 7] [0 4 2 3]", "2"},
      {"LINEST", "[1;9;5;7]", "1.4"},
      {"LINEST", "[3;5;8;9] [1 1;2 1;3 2;4 2]", "1.5"},
      {"LINEST", "[2 4 7] [1 2 3] FALSE", "2.21428571428571"},
      {"LINEST", "[2 4 7] [1 2 3] TRUE TRUE", "2.5"},
      {"LINEST", "[1 2 3] [1 2 3;2 4 6]", "0"},
      {"LINEST", "[5] [1]", "0"},
      {"LINEST", "[1 2] [1 2 3]", "#VALUE!"},
      {"LINEST", "[1 'x'] [1 2]", "#VALUE!"},
      {"LINEST", "[1 2] [1 _]", "#VALUE!"},
      {"LINEST", "[1 2] [1 2] 'x'", "#VALUE!"},
      {"LINEST", "[]", "#VALUE!"},
      {"LOGEST", "[2 4 8] [1 2 3]", "2"},
      {"LOGEST", "[2 4 0] [1 2 3]", "#NUM!"},
      {"TREND", "[1 9 5 7] [0 4 2 3] [10 20]", "21"},
      {"TREND", "[1 9 5 7]", "3.4"},
      {"TREND", "[3;5;8;9] [1 1;2 1;3 2;4 2] [5 2]", "10.75"},
      {"TREND", "[3 5 8 9] [1 2 3 4;1 1 2 2] [5 6;2 2]", "10.75"},
      {"TREND", "[3 5 8 9] [1 2 3 4;1 1 2 2] [5 6]", "#VALUE!"},
      {"TREND", "[2 4 7] [1 2 3] [10] FALSE", "22.1428571428571"},
      {"GROWTH", "[2 4 8] [1 2 3] [5]", "32"},
      {"GROWTH", "[2 4 8] [1 2 3] ['x']", "#VALUE!"},
      {"GROWTH", "[2 -4]", "#NUM!"},
  });
}

TEST(Regression, FactorsOfManyVariablesComeBack) {
  std::mt19937 random(3);
  std::normal_distribution<double> normal;
  for (int round = 0; round < 20; ++round) {
    const size_t variables = 1 + random() % 8;
    detail::TObservations observations{40, {}, std::vector<double>(40, 1e3)};
    std::vector<double> factors;
    for (size_t j = 0; j < variables; ++j) {
      factors.push_back(normal(random));
      auto& column = observations.Variables.emplace_back();
      for (size_t i = 0; i < 40; ++i) {
        column.push_back(1e4 + normal(random));  // far from 0, so that only centred columns keep the digits
        observations.Results[i] += factors[j] * column[i];
      }
    }
    observations.Variables.push_back(observations.Variables[0]);  // tells nothing new
    const auto model = detail::FitLinearModel(std::move(observations), true);
    for (size_t j = 0; j < variables; ++j) EXPECT_NEAR(model.Factors[j], factors[j], 1e-9) << round;
    EXPECT_EQ(model.Factors.back(), 0);
    EXPECT_NEAR(model.Constant, 1e3, 1e-4);
  }
  EXPECT_TRUE(detail::FitsLeastSquares(1048576, 3));
  EXPECT_FALSE(detail::FitsLeastSquares(1048576, 100));
  EXPECT_FALSE(detail::FitsLeastSquares(1, 1 << 20));
}

}  // namespace

}  // namespace tessarine
