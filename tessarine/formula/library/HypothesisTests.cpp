#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include <tessarine/formula/library/detail/ArrayBodies.h>
#include <tessarine/formula/library/detail/NumericBody.h>
#include <tessarine/formula/library/detail/Probability.h>
#include <tessarine/formula/library/detail/Samples.h>
#include <tessarine/formula/library/detail/StatisticsBodies.h>

namespace tessarine::detail {

namespace {

TMoments MomentsOfArg(const TFormulaArg& AArg) { return MomentsOf(TFormulaArgs(&AArg, 1)); }

/// Degrees of freedom of a table of counts: of a single row or column one less than its cells.
double TableFreedom(const TFormulaArg& ATable) {
  const double rows = ATable.RowCount;
  const double cols = ATable.ColCount;
  if (rows == 1 || cols == 1) return rows * cols - 1;
  return (rows - 1) * (cols - 1);
}

/// A t statistic and its degrees of freedom.
struct TStatistic {
  double T = 0;
  double Freedom = 0;
};

/// By the differences of pairs.
TStatistic PairedStatistic(const TPairs& APairs) {
  std::vector<double> differences(APairs.First.size());
  std::transform(APairs.First.begin(), APairs.First.end(), APairs.Second.begin(), differences.begin(), std::minus<>());
  const TMoments moments = MomentsOf(differences);
  return {moments.Mean / std::sqrt(moments.Variance(false) / moments.Count), moments.Count - 1};
}

/// Of samples with one variance.
TStatistic PooledStatistic(const TMoments& AFirst, const TMoments& ASecond) {
  const double freedom = AFirst.Count + ASecond.Count - 2;
  const double pooled = (AFirst.Squares + ASecond.Squares) / freedom;
  return {(AFirst.Mean - ASecond.Mean) / std::sqrt(pooled * (1 / AFirst.Count + 1 / ASecond.Count)), freedom};
}

/// Of samples whose variances differ (B. L. Welch, 1947).
TStatistic WelchStatistic(const TMoments& AFirst, const TMoments& ASecond) {
  const double first = AFirst.Variance(false) / AFirst.Count;
  const double second = ASecond.Variance(false) / ASecond.Count;
  const double sum = first + second;
  const double freedom = sum * sum / (first * first / (AFirst.Count - 1) + second * second / (ASecond.Count - 1));
  return {(AFirst.Mean - ASecond.Mean) / std::sqrt(sum), freedom};
}

/// alpha, deviation, size: the half width of a confidence interval. AQuantile(probability, size).
template <class TQuantile>
TCellValue CallConfidence(TFormulaArgs AArgs, double ALeastSize, TQuantile AQuantile) {
  std::array<double, 3> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  const auto& [alpha, deviation, givenSize] = numbers;
  const double size = std::trunc(givenSize);
  if (!(alpha > 0 && alpha < 1) || !(deviation > 0) || size < 1) return NumError();
  if (size < ALeastSize) return Div0Error();
  return NumberOrError(-AQuantile(alpha / 2, size) * deviation / std::sqrt(size));
}

}  // namespace

TCellValue CallConfidenceNormal(TFormulaArgs AArgs, const TFormulaContext&) {
  return CallConfidence(AArgs, 1, [](double AProbability, double) { return NormalQuantile(AProbability); });
}

TCellValue CallConfidenceStudent(TFormulaArgs AArgs, const TFormulaContext&) {
  return CallConfidence(AArgs, 2,
                        [](double AProbability, double ASize) { return StudentQuantile(ASize - 1, AProbability); });
}

/// counted, expected
TCellValue CallChiSquaredTest(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  const TAsRectangle counted(AArgs[0]);
  const TAsRectangle expected(AArgs[1]);
  if (counted->RowCount != expected->RowCount || counted->ColCount != expected->ColCount) return NotAvailable();
  const double freedom = TableFreedom(*counted);
  if (freedom < 1) return NotAvailable();
  const auto pairs = PairsOf(*counted, *expected);
  if (!pairs || pairs->First.empty()) return Div0Error();
  double distance = 0;
  for (size_t i = 0; i < pairs->First.size(); ++i) {
    const double wanted = pairs->Second[i];
    if (wanted == 0) return Div0Error();
    if (wanted < 0) return NumError();
    distance += (pairs->First[i] - wanted) * (pairs->First[i] - wanted) / wanted;
  }
  return NumberOrError(GammaAbove(freedom / 2, distance / 2));
}

/// Twice the smaller tail of the ratio of two variances.
TCellValue CallFisherTest(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  const TMoments first = MomentsOfArg(AArgs[0]);
  const TMoments second = MomentsOfArg(AArgs[1]);
  if (first.Count < 2 || second.Count < 2 || first.Squares == 0 || second.Squares == 0) return Div0Error();
  const double ratio = first.Variance(false) / second.Variance(false);
  const double below = FisherBelow(first.Count - 1, second.Count - 1, ratio);
  const double above = FisherAbove(first.Count - 1, second.Count - 1, ratio);
  return NumberOrError(2 * std::min(below, above));
}

/// values, mean, [deviation]: the probability of a larger mean than that of the values.
TCellValue CallNormalTest(TFormulaArgs AArgs, const TFormulaContext&) {
  double mean = 0;
  double deviation = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[1], mean)) return ValueError();
  if (AArgs.size() > 2 && !ArgAsNumber(AArgs[2], deviation)) return ValueError();
  const TMoments moments = MomentsOfArg(AArgs[0]);
  if (moments.Count == 0) return NotAvailable();
  if (AArgs.size() > 2 && deviation <= 0) return NumError();
  if (AArgs.size() == 2) deviation = std::sqrt(moments.Variance(false));
  if (std::isnan(deviation) || deviation == 0) return Div0Error();
  return NumberOrError(NormalBelow((mean - moments.Mean) / (deviation / std::sqrt(moments.Count))));
}

/// values1, values2, tails (1 or 2), kind (1 pairs, 2 one variance, 3 two variances)
TCellValue CallStudentTest(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t tails = 0;
  int64_t kind = 0;
  if (AArgs.size() < 4 || !ArgAsInt64(AArgs[2], tails) || !ArgAsInt64(AArgs[3], kind)) return ValueError();
  if (tails < 1 || tails > 2 || kind < 1 || kind > 3) return NumError();
  TStatistic statistic;
  if (kind == 1) {
    const auto pairs = PairsOf(AArgs[0], AArgs[1]);
    if (!pairs) return NotAvailable();
    if (pairs->First.size() < 2) return Div0Error();
    statistic = PairedStatistic(*pairs);
  } else {
    const TMoments first = MomentsOfArg(AArgs[0]);
    const TMoments second = MomentsOfArg(AArgs[1]);
    if (first.Count < 2 || second.Count < 2) return Div0Error();
    statistic = kind == 2 ? PooledStatistic(first, second) : WelchStatistic(first, second);
  }
  if (!std::isfinite(statistic.T) || !std::isfinite(statistic.Freedom)) return Div0Error();
  return NumberOrError(static_cast<double>(tails) * StudentBelow(statistic.Freedom, -std::fabs(statistic.T)));
}

}  // namespace tessarine::detail
