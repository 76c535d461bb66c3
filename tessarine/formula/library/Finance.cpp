#include <tessarine/formula/FunctionTable.h>

#include <cmath>
#include <vector>

#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine {

namespace {

using namespace detail;

constexpr double kTinyRate = 1e-12;  // below, interest counts as none
constexpr int kMostSteps = 40;       // of an iteration for a rate
constexpr double kFlatSlope = 1e-14;
constexpr double kSmallStep = 1e-8;

/// Three numbers that must be there and two or three that may be; what is no number among the latter keeps its value.
struct TLoanArgs {
  double A = 0;
  double B = 0;
  double C = 0;
  double D = 0;
  double Type = 0;  // 0: payments at the end of a period, 1: at its beginning; used as it is
};

bool ReadLoanArgs(TFormulaArgs AArgs, TLoanArgs& ALoan) {
  if (AArgs.size() < 3 || !ArgAsNumber(AArgs[0], ALoan.A) || !ArgAsNumber(AArgs[1], ALoan.B) ||
      !ArgAsNumber(AArgs[2], ALoan.C)) {
    return false;
  }
  if (AArgs.size() > 3) ArgAsNumber(AArgs[3], ALoan.D);
  if (AArgs.size() > 4) ArgAsNumber(AArgs[4], ALoan.Type);
  return true;
}

/// The guess of an iteration, 0.1 when it is left out or no number.
double GuessArg(TFormulaArgs AArgs, size_t AIndex) {
  double guess = 0;
  return AIndex < AArgs.size() && ArgAsNumber(AArgs[AIndex], guess) ? guess : 0.1;
}

using TLoanFormula = double (*)(const TLoanArgs&);

template <TLoanFormula Formula>
TCellValue CallLoan(TFormulaArgs AArgs, const TFormulaContext&) {
  TLoanArgs loan;
  return ReadLoanArgs(AArgs, loan) ? NumberOrError(Formula(loan)) : ValueError();
}

/// rate, periods, present value, [future value], [type]
double PaymentOf(const TLoanArgs& ALoan) {
  const auto& [rate, periods, present, future, type] = ALoan;
  if (std::fabs(rate) < kTinyRate) return -(present + future) / periods;
  const double growth = std::pow(1 + rate, periods);
  return -(present * growth + future) / ((1 + rate * type) * (growth - 1) / rate);
}

/// rate, periods, payment, [present value], [type]
double FutureValueOf(const TLoanArgs& ALoan) {
  const auto& [rate, periods, payment, present, type] = ALoan;
  if (std::fabs(rate) < kTinyRate) return -(payment * periods + present);
  const double growth = std::pow(1 + rate, periods);
  return -present * growth - (1 + rate * type) * payment * (growth - 1) / rate;
}

/// rate, periods, payment, [future value], [type]
double PresentValueOf(const TLoanArgs& ALoan) {
  const auto& [rate, periods, payment, future, type] = ALoan;
  if (std::fabs(rate) < kTinyRate) return -(payment * periods + future);
  const double growth = std::pow(1 + rate, periods);
  return -(future + (1 + rate * type) * payment * (growth - 1) / rate) / growth;
}

/// rate, payment, present value, [future value], [type]
TCellValue CallNper(TFormulaArgs AArgs, const TFormulaContext&) {
  TLoanArgs loan;
  if (!ReadLoanArgs(AArgs, loan)) return ValueError();
  const auto& [rate, payment, present, future, type] = loan;
  if (std::fabs(rate) < kTinyRate) {
    return std::fabs(payment) < kTinyRate ? ValueError() : NumberOrError(-(present + future) / payment);
  }
  const double due = (1 + rate * type) * payment;
  const double growth = std::log(1 + rate);
  if (!std::isfinite(growth)) return NumError();  // dividing by it would hide that nothing is left after a period
  return NumberOrError(std::log((due - future * rate) / (present * rate + due)) / growth);
}

/// Values that are no numbers take no period.
TCellValue CallNpv(TFormulaArgs AArgs, const TFormulaContext&) {
  double rate = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[0], rate)) return ValueError();
  double sum = 0;
  double period = 1;
  for (size_t i = 1; i < AArgs.size(); ++i) {
    int64_t skipped = 0;  // values that are no numbers take no period; blanks are 0 and do
    ForEachNonBlank(AArgs[i], [&](int64_t AIndex, const TValueView& AValue) {
      double number = 0;
      if (!AsNumber(AValue, number)) {
        ++skipped;
      } else if (number != 0) {
        sum += number / std::pow(1 + rate, period + static_cast<double>(AIndex - skipped));
      }
    });
    period += static_cast<double>(CountValues(AArgs.subspan(i, 1)) - skipped);
  }
  return NumberOrError(sum);
}

/// A function and its derivative at one place.
struct TSlope {
  double Value = 0;
  double Derivative = 0;
};

/// Newton's method from AGuess. The last rate is the answer, whether it is a root or not. AAt(rate) gives the slope;
/// AStops(rate), asked first, ends the search.
template <class TAt, class TStops>
double SearchRate(double AGuess, TAt&& AAt, TStops&& AStops) {
  double rate = AGuess;
  for (int step = 0; step < kMostSteps && !AStops(rate); ++step) {
    const TSlope slope = AAt(rate);
    if (std::fabs(slope.Derivative) < kFlatSlope) break;
    const double change = slope.Value / slope.Derivative;
    rate -= change;
    if (std::fabs(change) < kSmallStep || !std::isfinite(rate)) break;
  }
  return rate;
}

/// An amount that is not 0 and its period, counted from 0.
struct TCashFlow {
  double Period = 0;
  double Amount = 0;
};

TSlope NetValueSlope(const std::vector<TCashFlow>& AFlows, double ARate) {
  TSlope slope;
  for (const TCashFlow& flow : AFlows) {
    const double growth = std::pow(1 + ARate, flow.Period);
    slope.Value += flow.Amount / growth;
    slope.Derivative -= flow.Period * flow.Amount / (growth * (1 + ARate));
  }
  return slope;
}

/// Values that are no numbers are left out, but take a period.
TCellValue CallIrr(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  std::vector<TCashFlow> flows;
  ForEachNonBlank(AArgs[0], [&](int64_t AIndex, const TValueView& AValue) {
    double amount = 0;
    if (AsNumber(AValue, amount) && amount != 0) flows.push_back({static_cast<double>(AIndex), amount});
  });
  const auto slopeAt = [&](double ARate) { return NetValueSlope(flows, ARate); };
  return NumberOrError(SearchRate(GuessArg(AArgs, 1), slopeAt, [](double) { return false; }));
}

/// Balance of a loan after its last period, and how it changes with the rate; ARate is not 0.
/// ALoan: periods, payment, present value, [future value], [type].
TSlope BalanceSlope(const TLoanArgs& ALoan, double ARate) {
  const auto& [periods, payment, present, future, type] = ALoan;
  const double growth = std::pow(1 + ARate, periods);
  const double growthSlope = periods * growth / (1 + ARate);
  const double due = (1 + ARate * type) * payment;
  const double interest = growth - 1;
  return {present * growth + interest * due / ARate + future,
          present * growthSlope + (growthSlope * due + interest * type * payment) / ARate -
              interest * due / (ARate * ARate)};
}

TCellValue CallRate(TFormulaArgs AArgs, const TFormulaContext&) {
  TLoanArgs loan;
  if (!ReadLoanArgs(AArgs, loan)) return ValueError();
  const auto slopeAt = [&](double ARate) { return BalanceSlope(loan, ARate); };
  const auto isTiny = [](double ARate) { return std::fabs(ARate) < kTinyRate; };
  return NumberOrError(SearchRate(GuessArg(AArgs, 5), slopeAt, isTiny));
}

// clang-format off
constexpr TFunctionDef kFinanceFunctions[] = {
    {.Name = u"FV", .MinArgs = 3, .MaxArgs = 5, .Body = CallLoan<FutureValueOf>, .InCompletion = true,
     .Arguments = u"rate, periods, payment, [present_value], [type]",
     .Description = u"What an investment with constant payments is worth at its end."},
    {.Name = u"IRR", .MinArgs = 1, .MaxArgs = 2, .Body = CallIrr, .InCompletion = true,
     .Arguments = u"amounts, [guess]", .Description = u"The rate at which the net present value of amounts is 0."},
    {.Name = u"NPER", .MinArgs = 3, .MaxArgs = 5, .Body = CallNper, .InCompletion = true,
     .Arguments = u"rate, payment, present_value, [future_value], [type]",
     .Description = u"How many periods of constant payments an investment takes."},
    {.Name = u"NPV", .MinArgs = 2, .Body = CallNpv, .InCompletion = true,
     .Arguments = u"rate, amount1, [amount2], ...",
     .Description = u"The present value of amounts, the first due after one period."},
    {.Name = u"PMT", .MinArgs = 3, .MaxArgs = 5, .Body = CallLoan<PaymentOf>, .InCompletion = true,
     .Arguments = u"rate, periods, present_value, [future_value], [type]",
     .Description = u"The constant payment of a loan."},
    {.Name = u"PV", .MinArgs = 3, .MaxArgs = 5, .Body = CallLoan<PresentValueOf>, .InCompletion = true,
     .Arguments = u"rate, periods, payment, [future_value], [type]",
     .Description = u"What constant payments are worth at their beginning."},
    {.Name = u"RATE", .MinArgs = 3, .MaxArgs = 6, .Body = CallRate, .InCompletion = true,
     .Arguments = u"periods, payment, present_value, [future_value], [type], [guess]",
     .Description = u"The interest rate per period of a loan with constant payments."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> FinanceFunctions() { return kFinanceFunctions; }

}  // namespace tessarine
