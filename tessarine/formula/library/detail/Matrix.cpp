#include <tessarine/formula/library/detail/Matrix.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessarine::detail {

namespace {

/// Adds AFactor times row ASource of AMatrix to row ATarget, from column AFirst on.
void AddRow(TSquareMatrix& AMatrix, int32_t ATarget, int32_t ASource, double AFactor, int32_t AFirst) {
  for (int32_t col = AFirst; col < AMatrix.Order; ++col) AMatrix.At(ATarget, col) += AFactor * AMatrix.At(ASource, col);
}

void SwapRows(TSquareMatrix& AMatrix, int32_t A, int32_t B) {
  const auto first = AMatrix.Cells.begin() + static_cast<std::ptrdiff_t>(A) * AMatrix.Order;
  std::swap_ranges(first, first + AMatrix.Order,
                   AMatrix.Cells.begin() + static_cast<std::ptrdiff_t>(B) * AMatrix.Order);
}

/// The row at or below the diagonal whose element of the column is largest.
int32_t PivotRow(const TSquareMatrix& AMatrix, int32_t ACol) {
  int32_t pivot = ACol;
  for (int32_t row = ACol + 1; row < AMatrix.Order; ++row) {
    if (std::fabs(AMatrix.At(row, ACol)) > std::fabs(AMatrix.At(pivot, ACol))) pivot = row;
  }
  return pivot;
}

/// Gauss's elimination with pivots, done to the column ARight too. AMatrix becomes an upper triangle; the determinant.
double Eliminate(TSquareMatrix& AMatrix, std::vector<double>& ARight) {
  double determinant = 1;
  for (int32_t col = 0; col < AMatrix.Order; ++col) {
    const int32_t pivot = PivotRow(AMatrix, col);
    if (pivot != col) {
      SwapRows(AMatrix, pivot, col);
      std::swap(ARight[static_cast<size_t>(pivot)], ARight[static_cast<size_t>(col)]);
      determinant = -determinant;
    }
    const double diagonal = AMatrix.At(col, col);
    determinant *= diagonal;
    if (diagonal == 0) return 0;
    for (int32_t row = col + 1; row < AMatrix.Order; ++row) {
      const double factor = -AMatrix.At(row, col) / diagonal;
      if (factor == 0) continue;
      AddRow(AMatrix, row, col, factor, col + 1);
      ARight[static_cast<size_t>(row)] += factor * ARight[static_cast<size_t>(col)];
    }
  }
  return determinant;
}

/// Whether the elements are integers so small that elimination cannot be off by a half: rounding grows with the order
/// and with Hadamard's bound on determinants, the product of the lengths of the rows.
bool HasWholeDeterminant(const TSquareMatrix& AMatrix) {
  double bound = static_cast<double>(AMatrix.Order) * AMatrix.Order;
  for (int32_t row = 0; row < AMatrix.Order; ++row) {
    double squares = 0;
    for (int32_t col = 0; col < AMatrix.Order; ++col) {
      const double element = AMatrix.At(row, col);
      if (element != std::trunc(element)) return false;
      squares += element * element;
    }
    bound *= std::max(1.0, std::sqrt(squares));
  }
  return bound * std::numeric_limits<double>::epsilon() < 0.1;
}

}  // namespace

double Determinant(const TSquareMatrix& AMatrix) {
  TSquareMatrix triangle = AMatrix;
  std::vector<double> none(static_cast<size_t>(AMatrix.Order));
  const double determinant = Eliminate(triangle, none);
  return HasWholeDeterminant(AMatrix) ? std::round(determinant) : determinant;
}

std::optional<std::vector<double>> SolveLinear(const TSquareMatrix& AMatrix, std::vector<double> ARight) {
  TSquareMatrix triangle = AMatrix;
  const double determinant = Eliminate(triangle, ARight);
  // A determinant may fall to 0 by its size alone, so the diagonal decides.
  for (int32_t i = 0; i < triangle.Order; ++i) {
    if (triangle.At(i, i) == 0) return std::nullopt;
  }
  if (HasWholeDeterminant(AMatrix) && std::round(determinant) == 0) return std::nullopt;
  for (int32_t row = triangle.Order - 1; row >= 0; --row) {
    double& value = ARight[static_cast<size_t>(row)];
    for (int32_t col = row + 1; col < triangle.Order; ++col) {
      value -= triangle.At(row, col) * ARight[static_cast<size_t>(col)];
    }
    value /= triangle.At(row, row);
  }
  return ARight;
}

}  // namespace tessarine::detail
