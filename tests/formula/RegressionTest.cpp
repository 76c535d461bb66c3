#include <gtest/gtest.h>

#include <random>

#include <tessarine/formula/library/detail/LeastSquares.h>
#include <tessarine/formula/library/detail/Matrix.h>

namespace tessarine {

namespace {

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

TEST(Matrices, SolutionsFitTheirMatrix) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> element(-5, 5);
  for (const int32_t order : {1, 2, 3, 8, 30}) {
    detail::TSquareMatrix matrix{order, std::vector<double>(static_cast<size_t>(order) * order)};
    std::vector<double> right(static_cast<size_t>(order));
    for (double& cell : matrix.Cells) cell = element(random);
    for (double& cell : right) cell = element(random);
    const auto solution = detail::SolveLinear(matrix, right);
    ASSERT_TRUE(solution);
    for (int32_t row = 0; row < order; ++row) {
      double sum = 0;
      for (int32_t i = 0; i < order; ++i) sum += matrix.At(row, i) * solution->at(static_cast<size_t>(i));
      EXPECT_NEAR(sum, right[static_cast<size_t>(row)], 1e-11) << order;
    }
  }
}

}  // namespace

}  // namespace tessarine
