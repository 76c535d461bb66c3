#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// Linear models fitted by least squares.
namespace tessarine::detail {

/// Observations of several variables, column by column.
struct TObservations {
  size_t Count = 0;                            // rows, the same in all columns
  std::vector<std::vector<double>> Variables;  // may be none
  std::vector<double> Results;
};

/// Results = Constant + the sum of Factors[i] * Variables[i].
struct TLinearModel {
  double Constant = 0;
  std::vector<double> Factors;

  double At(const std::vector<double>& AVariables) const;
};

/// Whether a fit of ACount observations of AVariables variables takes memory and time that a call may take.
bool FitsLeastSquares(int64_t ACount, int64_t AVariables);

/// The model with the least sum of squared errors, with the constant 0 unless AWithConstant. A variable that is a
/// combination of those before it gets the factor 0. The observations are used up.
TLinearModel FitLinearModel(TObservations&& AObservations, bool AWithConstant);

}  // namespace tessarine::detail
