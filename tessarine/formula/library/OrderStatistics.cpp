#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <vector>

#include <tessarine/formula/library/detail/Samples.h>
#include <tessarine/formula/library/detail/StatisticsBodies.h>

namespace tessarine::detail {

namespace {

/// Number APlace, from 1, in the order of ABefore. A few leading places are kept in a heap while the values go by;
/// further ones take a copy of all numbers.
template <class TBefore>
std::optional<double> NumberAtPlace(const TFormulaArg& AValues, int64_t APlace, TBefore ABefore) {
  constexpr size_t kMostKept = 64;
  const auto place = static_cast<size_t>(APlace);
  std::vector<double> kept;
  ForEachNumber(AValues, [&](double ANumber) {
    if (place > kMostKept || kept.size() < place) {
      kept.push_back(ANumber);
      if (place <= kMostKept) std::push_heap(kept.begin(), kept.end(), ABefore);
    } else if (ABefore(ANumber, kept.front())) {
      std::pop_heap(kept.begin(), kept.end(), ABefore);
      kept.back() = ANumber;
      std::push_heap(kept.begin(), kept.end(), ABefore);
    }
  });
  if (kept.size() < place) return std::nullopt;
  if (place <= kMostKept) return kept.front();
  const auto found = kept.begin() + static_cast<ptrdiff_t>(place) - 1;
  std::nth_element(kept.begin(), found, kept.end(), ABefore);
  return *found;
}

template <class TBefore>
TCellValue CallPlace(TFormulaArgs AArgs, TBefore ABefore) {
  int64_t place = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[1], place)) return ValueError();
  if (place < 1) return NumError();
  const auto number = NumberAtPlace(AArgs[0], place, ABefore);
  return number ? NumberOrError(*number) : NumError();
}

TCellValue PercentileInc(const TFormulaArg& AValues, double AShare) {
  std::vector<double> numbers = NumbersOf(AValues);
  if (numbers.empty() || !(AShare >= 0 && AShare <= 1)) return NumError();
  return NumberOrError(InterpolateSorted(numbers, static_cast<double>(numbers.size() - 1) * AShare));
}

TCellValue PercentileExc(const TFormulaArg& AValues, double AShare) {
  std::vector<double> numbers = NumbersOf(AValues);
  if (numbers.empty() || !(AShare > 0 && AShare < 1)) return NumError();
  const auto count = static_cast<double>(numbers.size());
  const double place = (count + 1) * AShare - 1;
  if (place < 0 || place > count - 1) return NumError();
  return NumberOrError(InterpolateSorted(numbers, place));
}

using TPercentile = TCellValue (*)(const TFormulaArg& AValues, double AShare);

/// values and a share of 0 to 1, or a number of quarters.
TCellValue CallPercentile(TFormulaArgs AArgs, TPercentile APercentile, bool AQuarters) {
  double share = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[1], share)) return ValueError();
  return APercentile(AArgs[0], AQuarters ? std::trunc(share) / 4 : share);
}

/// Where a number stands among others.
struct TStanding {
  int64_t Count = 0;
  int64_t Below = 0;
  int64_t Equal = 0;
  double NextBelow = -HUGE_VAL;
  double NextAbove = HUGE_VAL;

  int64_t Above() const { return Count - Below - Equal; }
};

TStanding StandingOf(const TFormulaArg& AValues, double ANumber) {
  TStanding standing;
  ForEachNumber(AValues, [&](double AOther) {
    ++standing.Count;
    if (AOther == ANumber) {
      ++standing.Equal;
    } else if (AOther < ANumber) {
      ++standing.Below;
      standing.NextBelow = std::max(standing.NextBelow, AOther);
    } else {
      standing.NextAbove = std::min(standing.NextAbove, AOther);
    }
  });
  return standing;
}

/// ANumber cut after ADigits decimals; what only rounding keeps below a digit counts as that digit.
double CutDecimals(double ANumber, double ADigits) {
  if (ADigits > 15) return ANumber;
  const double scale = std::pow(10.0, ADigits);
  const double nearest = std::round(ANumber * scale);
  const double digits = std::fabs(ANumber * scale - nearest) < 1e-9 ? nearest : std::floor(ANumber * scale);
  return digits / scale;
}

/// values, number, [digits]: the share of the values below the number, without or with a place beyond either end.
TCellValue CallPercentRank(TFormulaArgs AArgs, bool AExclusive) {
  double number = 0;
  double digits = 3;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[1], number)) return ValueError();
  if (AArgs.size() > 2 && !ArgAsNumber(AArgs[2], digits)) return ValueError();
  digits = std::trunc(digits);
  const TStanding standing = StandingOf(AArgs[0], number);
  if (digits < 1 || standing.Count == 0) return NumError();
  if (standing.Equal == 0 && (standing.Below == 0 || standing.Above() == 0)) return NotAvailable();
  auto place = static_cast<double>(standing.Below);
  if (standing.Equal == 0) {
    place += (number - standing.NextBelow) / (standing.NextAbove - standing.NextBelow) - 1;
  }
  const auto count = static_cast<double>(standing.Count);
  const double share = AExclusive ? (place + 1) / (count + 1) : count == 1 ? 1 : place / (count - 1);
  return NumberOrError(CutDecimals(share, digits));
}

}  // namespace

TCellValue CallLarge(TFormulaArgs AArgs, const TFormulaContext&) { return CallPlace(AArgs, std::greater<double>()); }
TCellValue CallSmall(TFormulaArgs AArgs, const TFormulaContext&) { return CallPlace(AArgs, std::less<double>()); }

TCellValue CallMedian(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  std::vector<double> numbers = NumbersOf(AArgs);
  if (numbers.empty()) return NumError();
  const size_t half = numbers.size() / 2;
  const double upper = SelectNumber(numbers, half);
  if (numbers.size() % 2 == 1) return NumberOrError(upper);
  const double lower = *std::max_element(numbers.begin(), numbers.begin() + static_cast<ptrdiff_t>(half));
  return NumberOrError(lower / 2 + upper / 2);
}

/// The number that occurs most often, of several the one that comes first.
TCellValue CallMode(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  struct TSeen {
    double Number;
    size_t Index;
  };
  std::vector<TSeen> seen;
  ForEachNumber(AArgs, [&](double ANumber) { seen.push_back({ANumber, seen.size()}); });
  std::sort(seen.begin(), seen.end(), [](const TSeen& ALeft, const TSeen& ARight) {
    return ALeft.Number != ARight.Number ? ALeft.Number < ARight.Number : ALeft.Index < ARight.Index;
  });
  size_t most = 1;
  const TSeen* mode = nullptr;
  for (size_t first = 0, next = 0; first < seen.size(); first = next) {
    while (next < seen.size() && seen[next].Number == seen[first].Number) ++next;
    const size_t count = next - first;
    if (count < 2 || count < most || (count == most && mode && mode->Index < seen[first].Index)) continue;
    most = count;
    mode = &seen[first];
  }
  return mode ? NumberOrError(mode->Number) : NotAvailable();
}

TCellValue CallPercentileInc(TFormulaArgs AArgs, const TFormulaContext&) {
  return CallPercentile(AArgs, PercentileInc, false);
}
TCellValue CallPercentileExc(TFormulaArgs AArgs, const TFormulaContext&) {
  return CallPercentile(AArgs, PercentileExc, false);
}
TCellValue CallQuartileInc(TFormulaArgs AArgs, const TFormulaContext&) {
  return CallPercentile(AArgs, PercentileInc, true);
}
TCellValue CallQuartileExc(TFormulaArgs AArgs, const TFormulaContext&) {
  return CallPercentile(AArgs, PercentileExc, true);
}

TCellValue CallPercentRankInc(TFormulaArgs AArgs, const TFormulaContext&) { return CallPercentRank(AArgs, false); }
TCellValue CallPercentRankExc(TFormulaArgs AArgs, const TFormulaContext&) { return CallPercentRank(AArgs, true); }

/// number, values, [ascending]: equal numbers share the middle of their places.
TCellValue CallRankAvg(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  double order = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[0], number)) return ValueError();
  if (AArgs.size() > 2 && !ArgAsNumber(AArgs[2], order)) return ValueError();
  const TStanding standing = StandingOf(AArgs[1], number);
  if (standing.Equal == 0) return NotAvailable();
  const auto before = static_cast<double>(order != 0 ? standing.Below : standing.Above());
  return NumberOrError(before + (static_cast<double>(standing.Equal) + 1) / 2);
}

/// The mean without a share of the values, half of them the smallest and half the largest.
TCellValue CallTrimMean(TFormulaArgs AArgs, const TFormulaContext&) {
  double share = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[1], share)) return ValueError();
  std::vector<double> numbers = NumbersOf(AArgs[0]);
  if (numbers.empty() || !(share >= 0 && share < 1)) return NumError();
  std::sort(numbers.begin(), numbers.end());
  const auto cut = static_cast<size_t>(CutDecimals(static_cast<double>(numbers.size()) * share / 2, 0));
  double sum = 0;
  for (size_t i = cut; i < numbers.size() - cut; ++i) sum += numbers[i];
  return NumberOrError(sum / static_cast<double>(numbers.size() - 2 * cut));
}

/// How many values lie in the first of the intervals: not above the first limit, above the next smaller one.
TCellValue CallFrequency(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  const std::vector<double> limits = NumbersOf(AArgs[1]);
  const double upper = limits.empty() ? HUGE_VAL : limits[0];
  double lower = -HUGE_VAL;
  for (const double limit : limits) {
    if (limit < upper) lower = std::max(lower, limit);
  }
  int64_t count = 0;
  ForEachNumber(AArgs[0], [&](double ANumber) { count += ANumber > lower && ANumber <= upper ? 1 : 0; });
  return TCellValue::FromNumber(static_cast<double>(count));
}

}  // namespace tessarine::detail
