#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include <tessarine/formula/library/detail/DayCount.h>
#include <tessarine/formula/library/detail/LoanBodies.h>
#include <tessarine/formula/library/detail/RootSearch.h>

// Amounts that are paid at dates or at regular times, and the rates that are hidden in them.

namespace tessarine::detail {

namespace {

/// An amount and when it is paid, in years of 365 days after the first one.
struct TDatedAmount {
  double Years = 0;
  double Amount = 0;
};

/// The numbers of an argument, blanks left out; false when a value is none.
bool ReadSeries(const TFormulaArg& AArg, std::vector<double>& ANumbers) {
  ANumbers.reserve(static_cast<size_t>(std::min<int64_t>(AArg.CellCount(), 1024)));
  return ForEachNonBlank(AArg, [&](int64_t, const TValueView& AValue) {
    double number = 0;
    if (!AsNumber(AValue, number)) return false;
    ANumbers.push_back(number);
    return true;
  });
}

/// The amounts and dates of two arguments, in pairs; ceNone when they can be used. No date is before the first one.
TCellErrorCode ReadDatedAmounts(const TFormulaArg& AAmounts, const TFormulaArg& ADates,
                                std::vector<TDatedAmount>& AFlows) {
  std::vector<double> amounts;
  std::vector<double> dates;
  if (!ReadSeries(AAmounts, amounts) || !ReadSeries(ADates, dates)) return ceValue;
  if (amounts.size() < 2 || amounts.size() != dates.size()) return ceNum;
  const auto first = DayAt(dates[0]);
  AFlows.reserve(amounts.size());
  for (size_t i = 0; i < amounts.size(); ++i) {
    const auto day = DayAt(dates[i]);
    if (!first || !day || *day < *first) return ceNum;
    AFlows.push_back({(day->Serial - first->Serial) / 365.0, amounts[i]});
  }
  return ceNone;
}

/// The present value at exp(AGrowth) - 1 a year, and how it changes with AGrowth.
struct TPresentValue {
  double Value = 0;
  double Slope = 0;
};

TPresentValue PresentValueAt(const std::vector<TDatedAmount>& AFlows, double AGrowth) {
  TPresentValue present;
  for (const TDatedAmount& flow : AFlows) {
    const double worth = flow.Amount * std::exp(-AGrowth * flow.Years);
    present.Value += worth;
    present.Slope -= flow.Years * worth;
  }
  return present;
}

// Rates from -0.999999999 to some 1e304 are looked for, by their logarithmic growth.
constexpr double kLeastGrowth = -20.72;
constexpr double kMostGrowth = 700;

/// Newton's method in steps of 1 at most; nothing when it leaves the range or does not settle.
std::optional<double> NewtonGrowth(const std::vector<TDatedAmount>& AFlows, double AGuess) {
  double growth = AGuess;
  for (int step = 0; step < 50; ++step) {
    const TPresentValue present = PresentValueAt(AFlows, growth);
    const double change = std::clamp(present.Value / present.Slope, -1.0, 1.0);
    if (!std::isfinite(change)) return {};
    growth -= change;
    if (growth < kLeastGrowth || growth > kMostGrowth) return {};
    if (std::fabs(change) <= 1e-14 * std::max(1.0, std::fabs(growth))) return growth;
  }
  return {};
}

/// Looks for a change of sign in ever wider rings around AGuess, and for the root in it.
std::optional<double> BracketedGrowth(const std::vector<TDatedAmount>& AFlows, double AGuess) {
  const auto valueAt = [&](double AGrowth) { return PresentValueAt(AFlows, AGrowth).Value; };
  TSample low{AGuess, valueAt(AGuess)};
  TSample high = low;
  for (double step = 0.01; low.At > kLeastGrowth || high.At < kMostGrowth; step *= 1.5) {
    const double above = std::min(high.At + step, kMostGrowth);
    const TSample higher{above, valueAt(above)};
    if ((higher.Value < 0) != (high.Value < 0)) return RootBetween(high, higher, valueAt);
    const double below = std::max(low.At - step, kLeastGrowth);
    const TSample lower{below, valueAt(below)};
    if ((lower.Value < 0) != (low.Value < 0)) return RootBetween(lower, low, valueAt);
    high = higher;
    low = lower;
  }
  return {};
}

bool HasBothSigns(const std::vector<TDatedAmount>& AFlows) {
  const auto isIn = [](const TDatedAmount& AFlow) { return AFlow.Amount > 0; };
  const auto isOut = [](const TDatedAmount& AFlow) { return AFlow.Amount < 0; };
  return std::any_of(AFlows.begin(), AFlows.end(), isIn) && std::any_of(AFlows.begin(), AFlows.end(), isOut);
}

}  // namespace

/// rate, amounts, dates
TCellValue CallXNpv(TFormulaArgs AArgs, const TFormulaContext&) {
  double rate = 0;
  if (AArgs.size() < 3 || !ArgAsNumber(AArgs[0], rate)) return ValueError();
  std::vector<TDatedAmount> flows;
  const TCellErrorCode failure = ReadDatedAmounts(AArgs[1], AArgs[2], flows);
  if (failure != ceNone) return TCellValue::FromError(failure);
  return rate > -1 ? NumberOrError(PresentValueAt(flows, std::log1p(rate)).Value) : NumError();
}

/// amounts, dates, [guess]
TCellValue CallXIrr(TFormulaArgs AArgs, const TFormulaContext&) {
  double guess = 0.1;
  if (AArgs.size() < 2 || (AArgs.size() > 2 && !ArgAsNumber(AArgs[2], guess))) return ValueError();
  std::vector<TDatedAmount> flows;
  const TCellErrorCode failure = ReadDatedAmounts(AArgs[0], AArgs[1], flows);
  if (failure != ceNone) return TCellValue::FromError(failure);
  if (guess <= -1 || !HasBothSigns(flows)) return NumError();
  const double start = std::clamp(std::log1p(guess), kLeastGrowth, kMostGrowth);
  auto growth = NewtonGrowth(flows, start);
  if (!growth) growth = BracketedGrowth(flows, start);
  return growth ? NumberOrError(std::expm1(*growth)) : NumError();
}

/// amounts, finance rate, rate of reinvestment; what is no number among the amounts is left out
TCellValue CallMirr(TFormulaArgs AArgs, const TFormulaContext&) {
  double finance = 0;
  double reinvest = 0;
  if (AArgs.size() < 3 || !ArgAsNumber(AArgs[1], finance) || !ArgAsNumber(AArgs[2], reinvest)) return ValueError();
  double count = 0;
  double income = 0;   // at the time of the last amount
  double outlays = 0;  // at the time of the first
  double discount = 1;
  ForEachNumber(AArgs[0], [&](double AAmount) {
    income = income * (1 + reinvest) + std::max(AAmount, 0.0);
    if (AAmount < 0) outlays += AAmount / discount;
    discount *= 1 + finance;
    ++count;
  });
  if (count < 2 || income == 0 || outlays == 0) return Div0Error();
  if (!std::isfinite(income) || !std::isfinite(outlays)) return NumError();
  return NumberOrError(std::pow(-income / outlays, 1 / (count - 1)) - 1);
}

/// principal, rates; blanks are rates of 0
TCellValue CallFvSchedule(TFormulaArgs AArgs, const TFormulaContext&) {
  double worth = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[0], worth)) return ValueError();
  const bool allNumbers = ForEachNonBlank(AArgs[1], [&](int64_t, const TValueView& AValue) {
    double rate = 0;
    const bool isNumber = AsNumber(AValue, rate);
    worth *= 1 + rate;
    return isNumber;
  });
  return allNumbers ? NumberOrError(worth) : ValueError();
}

}  // namespace tessarine::detail
