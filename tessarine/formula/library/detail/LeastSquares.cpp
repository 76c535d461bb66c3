#include <tessarine/formula/library/detail/LeastSquares.h>

#include <cmath>
#include <numeric>

namespace tessarine::detail {

namespace {

using TColumn = std::vector<double>;

double Dot(const TColumn& ALeft, const TColumn& ARight) {
  return std::inner_product(ALeft.begin(), ALeft.end(), ARight.begin(), 0.0);
}

double MeanOf(const TColumn& AColumn) {
  return std::accumulate(AColumn.begin(), AColumn.end(), 0.0) / static_cast<double>(AColumn.size());
}

/// Takes the mean off a column and returns it.
double Center(TColumn& AColumn) {
  const double mean = MeanOf(AColumn);
  for (double& number : AColumn) number -= mean;
  return mean;
}

/// Takes the part along a unit column off another one and returns its length.
double TakeOff(const TColumn& AUnit, TColumn& AColumn) {
  const double along = Dot(AUnit, AColumn);
  for (size_t i = 0; i < AColumn.size(); ++i) AColumn[i] -= along * AUnit[i];
  return along;
}

/// Turns the columns into orthogonal units (modified Gram-Schmidt, each column cleaned twice: L. Giraud et al., "The
/// loss of orthogonality in the Gram-Schmidt orthogonalization process", 2005). Upper[j][i] is how much of unit i is in
/// column j; of a dependent column the last one is 0.
std::vector<TColumn> Orthogonalize(std::vector<TColumn>& AColumns) {
  constexpr double kDependent = 1e-11;  // what is left of a dependent column, by its length
  std::vector<TColumn> upper(AColumns.size());
  for (size_t j = 0; j < AColumns.size(); ++j) {
    TColumn& column = AColumns[j];
    upper[j].assign(j + 1, 0);
    const double length = std::sqrt(Dot(column, column));
    for (int pass = 0; pass < 2; ++pass) {
      for (size_t i = 0; i < j; ++i) {
        if (upper[i][i] != 0) upper[j][i] += TakeOff(AColumns[i], column);
      }
    }
    const double left = std::sqrt(Dot(column, column));
    if (left <= kDependent * length) continue;
    upper[j][j] = left;
    for (double& number : column) number /= left;
  }
  return upper;
}

}  // namespace

double TLinearModel::At(const std::vector<double>& AVariables) const {
  return std::inner_product(Factors.begin(), Factors.end(), AVariables.begin(), Constant);
}

bool FitsLeastSquares(int64_t ACount, int64_t AVariables) {
  constexpr double kMostNumbers = 8e6;
  constexpr double kMostSteps = 2e8;
  const double numbers = static_cast<double>(ACount) * static_cast<double>(AVariables + 1);
  return numbers <= kMostNumbers && numbers * static_cast<double>(AVariables) <= kMostSteps;
}

TLinearModel FitLinearModel(TObservations&& AObservations, bool AWithConstant) {
  std::vector<TColumn>& columns = AObservations.Variables;
  TColumn& results = AObservations.Results;
  const size_t count = columns.size();
  TLinearModel model;
  model.Factors.assign(count, 0);
  TColumn means(count, 0);
  if (AWithConstant) {
    for (size_t j = 0; j < count; ++j) means[j] = Center(columns[j]);
    model.Constant = Center(results);
  }
  const std::vector<TColumn> upper = Orthogonalize(columns);
  TColumn along(count, 0);
  for (size_t j = 0; j < count; ++j) {
    if (upper[j][j] != 0) along[j] = TakeOff(columns[j], results);
  }
  for (size_t j = count; j-- > 0;) {
    if (upper[j][j] == 0) continue;
    double rest = along[j];
    for (size_t k = j + 1; k < count; ++k) rest -= upper[k][j] * model.Factors[k];
    model.Factors[j] = rest / upper[j][j];
    model.Constant -= model.Factors[j] * means[j];
  }
  return model;
}

}  // namespace tessarine::detail
