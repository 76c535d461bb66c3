#include <gtest/gtest.h>

#include <random>

#include <tessarine/formula/library/detail/Matrix.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(MatrixFunctions, AnswerTheFirstCell) {
  // clang-format off
  ExpectCalls({
      {"MDETERM", "[6 4 2;3 5 3;2 3 4]", "40"}, {"MDETERM", "[1 2 3;4 5 6;7 8 9]", "0"},
      {"MDETERM", "[0 1;1 0]", "-1"}, {"MDETERM", "7", "7"}, {"MDETERM", "[0.5 1;1 3]", "0.5"},
      {"MDETERM", "[1 2 3;4 5 6]", "#VALUE!"}, {"MDETERM", "[1 _;2 3]", "#VALUE!"},
      {"MDETERM", "[1 '2';2 3]", "#VALUE!"}, {"MDETERM", "[]", "#VALUE!"}, {"MDETERM", "", "#VALUE!"},
      {"MDETERM", "fn", "#VALUE!"}, {"MDETERM", "[1e200 0;0 1e200]", "#NUM!"}, {"MINVERSE", "[4 7;2 6]", "0.6"},
      {"MINVERSE", "[0 2;4 0]", "0"}, {"MINVERSE", "-4", "-0.25"}, {"MINVERSE", "[1 2 3;4 5 6;7 8 9]", "#NUM!"},
      {"MINVERSE", "0", "#NUM!"}, {"MINVERSE", "[1e-200 0;0 1e-200]", "1E+200"}, {"MINVERSE", "[1 2]", "#VALUE!"}, {"MINVERSE", "[0 0;0 1.5]", "#NUM!"},
      {"MMULT", "[1 2;3 4] [5 6;7 8]", "19"}, {"MMULT", "[1 2 3] [4;5;6]", "32"}, {"MMULT", "2 4", "8"},
      {"MMULT", "[1 2] [3 4]", "#VALUE!"}, {"MMULT", "[1 2;3 'x'] [5;6]", "#VALUE!"},
      {"MMULT", "[1 2;_ 4] [5;6]", "#VALUE!"}, {"MMULT", "[1 2]", "#VALUE!"}, {"MUNIT", "3.9", "1"},
      {"MUNIT", "0", "#VALUE!"}, {"MUNIT", "1001", "#NUM!"}, {"MUNIT", "1e300", "#NUM!"}, {"MUNIT", "'x'", "#VALUE!"},
  });
  // clang-format on
}

TEST(MatrixFunctions, SolutionsFitTheirMatrix) {
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
