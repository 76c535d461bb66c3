#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <tessarine/formula/library/detail/ArgReading.h>

/// What statistical functions take from their arguments.
namespace tessarine::detail {

/// The numbers of all arguments in order; texts, Booleans, errors and blanks are left out.
std::vector<double> NumbersOf(TFormulaArgs AArgs);
std::vector<double> NumbersOf(const TFormulaArg& AArg);

/// Every value but errors as a number: Booleans 1 or 0, texts their number or else 0, blanks 0. Blanks are only
/// counted: AVisit(double) for the others, the result is how many blanks there are.
template <class F>
int64_t ForEachStandIn(TFormulaArgs AArgs, F&& AVisit) {
  int64_t others = 0;
  for (const TFormulaArg& arg : AArgs) {
    ForEachNonBlank(arg, [&](int64_t, const TValueView& AValue) {
      ++others;
      double number = 0;
      if (!AsNumber(AValue, number) && AValue.Kind != cvkText) return;
      AVisit(number);
    });
  }
  return CountValues(AArgs) - others;
}

/// Count, mean and sum of the squared deviations from it, in two passes.
struct TMoments {
  double Count = 0;
  double Mean = 0;
  double Squares = 0;

  /// By n - 1, or by n for a population; NaN when there are too few values and only then.
  double Variance(bool AOfPopulation) const;
};
TMoments MomentsOf(TFormulaArgs AArgs);
TMoments MomentsOf(const std::vector<double>& ANumbers);
/// Of all values as ForEachStandIn tells them.
TMoments MomentsOfStandIns(TFormulaArgs AArgs);

/// Numbers that stand at the same place in two arguments.
struct TPairs {
  std::vector<double> First;
  std::vector<double> Second;
};

/// The places where both arguments have a number, or nothing when they have not the same number of cells; a scalar is
/// one cell.
std::optional<TPairs> PairsOf(const TFormulaArg& AFirst, const TFormulaArg& ASecond);

/// The element that would stand at AIndex, 0-based, were the numbers sorted. Reorders them: those behind it are not
/// smaller.
double SelectNumber(std::vector<double>& ANumbers, size_t AIndex);

/// The number at a place between the sorted ones, 0 to count - 1, by linear interpolation. Reorders them.
double InterpolateSorted(std::vector<double>& ANumbers, double APlace);

}  // namespace tessarine::detail
