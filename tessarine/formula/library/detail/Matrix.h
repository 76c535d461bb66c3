#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <tessarine/formula/FormulaArg.h>

/// Square matrices of numbers.
namespace tessarine::detail {

/// The largest order that is worked on: a million cells, and below a second.
constexpr int32_t kMaxMatrixOrder = 1000;

/// A square matrix, row by row.
struct TSquareMatrix {
  int32_t Order = 0;
  std::vector<double> Cells;

  double& At(int32_t ARow, int32_t ACol) { return Cells[Place(ARow, ACol)]; }
  double At(int32_t ARow, int32_t ACol) const { return Cells[Place(ARow, ACol)]; }

 private:
  size_t Place(int32_t ARow, int32_t ACol) const { return static_cast<size_t>(ARow) * Order + ACol; }
};

/// The determinant. That of integers is an integer as long as rounding errors cannot reach one half.
double Determinant(const TSquareMatrix& AMatrix);

/// The column X for which AMatrix * X is ARight, which has an element for each row; nothing when there is no such
/// column or more than one. For the first unit column as ARight it is the first column of the inverse.
std::optional<std::vector<double>> SolveLinear(const TSquareMatrix& AMatrix, std::vector<double> ARight);

}  // namespace tessarine::detail
