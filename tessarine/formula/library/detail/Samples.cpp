#include <tessarine/formula/library/detail/Samples.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <tessarine/formula/library/detail/ArrayBodies.h>
#include <tessarine/formula/library/detail/CellRuns.h>

namespace tessarine::detail {

namespace {

/// The two passes over whatever AWalk(visitor) offers.
template <class TWalk>
TMoments MomentsOfWalk(TWalk&& AWalk) {
  TMoments moments;
  double sum = 0;
  AWalk([&](double ANumber) {
    sum += ANumber;
    ++moments.Count;
  });
  if (moments.Count == 0) return moments;
  moments.Mean = sum / moments.Count;
  AWalk([&](double ANumber) { moments.Squares += (ANumber - moments.Mean) * (ANumber - moments.Mean); });
  return moments;
}

}  // namespace

std::vector<double> NumbersOf(TFormulaArgs AArgs) {
  std::vector<double> numbers;
  ForEachNumber(AArgs, [&](double ANumber) { numbers.push_back(ANumber); });
  return numbers;
}

std::vector<double> NumbersOf(const TFormulaArg& AArg) { return NumbersOf(TFormulaArgs(&AArg, 1)); }

double TMoments::Variance(bool AOfPopulation) const {
  if (Count < (AOfPopulation ? 1 : 2)) return std::numeric_limits<double>::quiet_NaN();
  const double variance = Squares / (AOfPopulation ? Count : Count - 1);
  return std::isnan(variance) ? HUGE_VAL : variance;  // the sums have left the range of doubles
}

TMoments MomentsOf(TFormulaArgs AArgs) {
  return MomentsOfWalk([&](auto AVisit) { ForEachNumber(AArgs, AVisit); });
}

TMoments MomentsOf(const std::vector<double>& ANumbers) {
  return MomentsOfWalk([&](auto AVisit) { std::for_each(ANumbers.begin(), ANumbers.end(), AVisit); });
}

TMoments MomentsOfStandIns(TFormulaArgs AArgs) {
  TMoments moments;
  double sum = 0;
  double others = 0;
  const auto blanks = static_cast<double>(ForEachStandIn(AArgs, [&](double ANumber) {
    sum += ANumber;
    ++others;
  }));
  moments.Count = others + blanks;
  if (moments.Count == 0) return moments;
  moments.Mean = sum / moments.Count;
  moments.Squares = blanks * moments.Mean * moments.Mean;
  ForEachStandIn(AArgs,
                 [&](double ANumber) { moments.Squares += (ANumber - moments.Mean) * (ANumber - moments.Mean); });
  return moments;
}

std::optional<TPairs> PairsOf(const TFormulaArg& AFirst, const TFormulaArg& ASecond) {
  const TAsRectangle first(AFirst);
  const TAsRectangle second(ASecond);
  if (first->CellCount() != second->CellCount()) return std::nullopt;
  TPairs pairs;
  ForEachNonBlank(*first, [&](int64_t AIndex, const TValueView& AValue) {
    if (AValue.Kind != cvkNumber) return;
    const TValueView other = CellOf(*second, AIndex);
    if (other.Kind != cvkNumber) return;
    pairs.First.push_back(AValue.Number);
    pairs.Second.push_back(other.Number);
  });
  return pairs;
}

double SelectNumber(std::vector<double>& ANumbers, size_t AIndex) {
  const auto place = ANumbers.begin() + static_cast<ptrdiff_t>(AIndex);
  std::nth_element(ANumbers.begin(), place, ANumbers.end());
  return *place;
}

double InterpolateSorted(std::vector<double>& ANumbers, double APlace) {
  const double whole = std::floor(APlace);
  const auto index = static_cast<size_t>(whole);
  const double below = SelectNumber(ANumbers, index);
  if (index + 1 >= ANumbers.size()) return below;
  const double above = *std::min_element(ANumbers.begin() + static_cast<ptrdiff_t>(index) + 1, ANumbers.end());
  return below + (APlace - whole) * (above - below);
}

}  // namespace tessarine::detail
