#include <tessarine/formula/FunctionTable.h>

#include <cmath>

#include <tessarine/formula/library/detail/LoanBodies.h>

namespace tessarine {

namespace {

using namespace detail;

/// A loan with constant payments. Payments at the beginning of periods are those at their end, a period's interest
/// less; the first of them holds no interest.
struct TLoan {
  double Rate = 0;  // per period, above -1
  double Periods = 0;
  double Present = 0;
  double Future = 0;
  bool AtBeginning = false;

  bool IsValid() const { return Rate > -1 && Periods > 0; }

  /// 1 - (1 + Rate)^-APeriods, exact for small rates.
  double Discount(double APeriods) const { return -std::expm1(-APeriods * std::log1p(Rate)); }
  double Growth(double APeriods) const { return std::exp(APeriods * std::log1p(Rate)); }
  double Due() const { return AtBeginning ? 1 + Rate : 1; }

  double Payment() const {
    if (Rate == 0) return -(Present + Future) / Periods;
    return -Rate * (Present + Future * Growth(-Periods)) / Discount(Periods) / Due();
  }

  double InterestOf(double APeriod) const {
    if (Rate == 0 || (AtBeginning && APeriod == 1)) return 0;
    const double left = Discount(Periods - APeriod + 1);  // of what is still to be paid, for a loan of 1
    const double saved = Growth(APeriod - 1 - Periods) * Discount(APeriod - 1);
    return -Rate * (Present * left - Future * saved) / Discount(Periods) / Due();
  }

  double PrincipalOf(double APeriod) const {
    if (Rate == 0 || (AtBeginning && APeriod == 1)) return Payment();
    return -Rate * (Present + Future) * Growth(APeriod - 1 - Periods) / Discount(Periods) / Due();
  }

  /// Principal of the periods AFirst to ALast, whole numbers: a geometric series but for a first payment in advance.
  double PrincipalBetween(double AFirst, double ALast) const {
    if (AtBeginning && AFirst == 1) return Payment() + (ALast > 1 ? PrincipalBetween(2, ALast) : 0);
    if (Rate == 0) return Payment() * (ALast - AFirst + 1);
    return PrincipalOf(ALast) * Discount(ALast - AFirst + 1) * (1 + Rate) / Rate;
  }

  /// Interest of the same periods: what their payments hold beside the principal.
  double InterestBetween(double AFirst, double ALast) const {
    if (AtBeginning && AFirst == 1) return ALast > 1 ? InterestBetween(2, ALast) : 0;
    return Payment() * (ALast - AFirst + 1) - PrincipalBetween(AFirst, ALast);
  }
};

/// rate, period, periods, present value, [future value], [type]
template <double (TLoan::*Part)(double) const>
double LoanPart(const TNumbers<6>& ANumbers) {
  const auto& [rate, period, periods, present, future, type] = ANumbers;
  const TLoan loan{rate, periods, present, future, type != 0};
  if (!loan.IsValid() || !(period >= 1 && period <= periods)) return kOutsideDomain;
  return (loan.*Part)(period);
}

/// rate, periods, present value, first period, last period, type
template <double (TLoan::*Sum)(double, double) const>
double LoanSum(const TNumbers<6>& ANumbers) {
  const auto& [rate, givenPeriods, present, givenFirst, givenLast, givenType] = ANumbers;
  const double periods = std::trunc(givenPeriods);
  const double first = std::trunc(givenFirst);
  const double last = std::trunc(givenLast);
  const double type = std::trunc(givenType);
  if (!(rate > 0) || periods < 1 || present <= 0 || first < 1 || first > last || last > periods) return kOutsideDomain;
  if (type != 0 && type != 1) return kOutsideDomain;
  const TLoan loan{rate, periods, present, 0, type == 1};
  return (loan.*Sum)(first, last);
}

/// Interest of a loan whose principal is paid back in equal parts; periods count from 0.
TCellValue CallIspmt(TFormulaArgs AArgs, const TFormulaContext&) {
  TNumbers<4> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  const auto& [rate, period, periods, present] = numbers;
  return periods == 0 ? Div0Error() : NumberOrError(present * rate * (period / periods - 1));
}

TCellValue CallSln(TFormulaArgs AArgs, const TFormulaContext&) {
  TNumbers<3> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  const auto& [cost, salvage, life] = numbers;
  return life == 0 ? Div0Error() : NumberOrError((cost - salvage) / life);
}

double EffectiveRate(double ANominal, double AGivenPeriods) {
  const double periods = std::trunc(AGivenPeriods);
  if (ANominal <= 0 || periods < 1) return kOutsideDomain;
  return std::expm1(periods * std::log1p(ANominal / periods));
}

double NominalRate(double AEffective, double AGivenPeriods) {
  const double periods = std::trunc(AGivenPeriods);
  if (AEffective <= 0 || periods < 1) return kOutsideDomain;
  return periods * std::expm1(std::log1p(AEffective) / periods);
}

double PeriodsToGrow(double ARate, double APresent, double AFuture) {
  if (ARate <= 0 || APresent <= 0 || AFuture <= 0) return kOutsideDomain;
  return std::log(AFuture / APresent) / std::log1p(ARate);
}

double RateToGrow(double APeriods, double APresent, double AFuture) {
  if (APeriods <= 0 || APresent == 0) return kOutsideDomain;
  return std::pow(AFuture / APresent, 1 / APeriods) - 1;
}

/// DOLLARDE and DOLLARFR: the digits behind the point count parts of a dollar, as many digits as AFraction needs.
template <bool ToDecimal>
TCellValue CallDollar(TFormulaArgs AArgs, const TFormulaContext&) {
  TNumbers<2> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  const auto& [price, givenFraction] = numbers;
  if (givenFraction < 0) return NumError();
  const double fraction = std::trunc(givenFraction);
  if (fraction == 0) return Div0Error();
  double scale = 1;
  while (scale < fraction) scale *= 10;
  double dollars = 0;
  const double parts = std::modf(price, &dollars);
  return NumberOrError(dollars + (ToDecimal ? parts * scale / fraction : parts * fraction / scale));
}

// clang-format off
constexpr TFunctionDef kLoanFunctions[] = {
    {.Name = u"CUMIPMT", .MinArgs = 6, .MaxArgs = 6, .Tier = ftrExtra,
     .Body = NumbersBody<LoanSum<&TLoan::InterestBetween>>::Call<6>,
     .Arguments = u"rate, periods, present_value, first, last, type",
     .Description = u"Interest that is paid on a loan in several periods."},
    {.Name = u"CUMPRINC", .MinArgs = 6, .MaxArgs = 6, .Tier = ftrExtra,
     .Body = NumbersBody<LoanSum<&TLoan::PrincipalBetween>>::Call<6>,
     .Arguments = u"rate, periods, present_value, first, last, type",
     .Description = u"Principal that is paid back on a loan in several periods."},
    {.Name = u"DB", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra, .Body = NumbersBody<FixedDeclining>::Call<4, 12>,
     .Arguments = u"cost, salvage, life, period, [months]",
     .Description = u"Depreciation of a period by a fixed part of what is left."},
    {.Name = u"DDB", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra, .Body = NumbersBody<DoubleDeclining>::Call<4, 2>,
     .Arguments = u"cost, salvage, life, period, [factor]",
     .Description = u"Depreciation of a period by twice the linear rate, or another factor."},
    {.Name = u"DOLLARDE", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallDollar<true>,
     .Arguments = u"price, fraction", .Description = u"A price in parts of a dollar as a decimal number."},
    {.Name = u"DOLLARFR", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallDollar<false>,
     .Arguments = u"price, fraction", .Description = u"A decimal price in parts of a dollar."},
    {.Name = u"EFFECT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<EffectiveRate>::Call,
     .Arguments = u"nominal_rate, periods", .Description = u"The effective yearly rate of interest."},
    {.Name = u"FVSCHEDULE", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallFvSchedule,
     .Arguments = u"principal, rates", .Description = u"What a principal grows to at a series of rates."},
    {.Name = u"IPMT", .MinArgs = 4, .MaxArgs = 6, .Tier = ftrExtra,
     .Body = NumbersBody<LoanPart<&TLoan::InterestOf>>::Call<4>,
     .Arguments = u"rate, period, periods, present_value, [future_value], [type]",
     .Description = u"The interest in the payment of a period."},
    {.Name = u"ISPMT", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallIspmt,
     .Arguments = u"rate, period, periods, present_value",
     .Description = u"Interest of a loan whose principal is paid back in equal parts."},
    {.Name = u"MIRR", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallMirr,
     .Arguments = u"amounts, finance_rate, reinvest_rate",
     .Description = u"Rate of return with one rate for outlays and one for income."},
    {.Name = u"NOMINAL", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<NominalRate>::Call,
     .Arguments = u"effective_rate, periods", .Description = u"The nominal yearly rate of interest."},
    {.Name = u"PDURATION", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumericBody<PeriodsToGrow>::Call,
     .Arguments = u"rate, present_value, future_value",
     .Description = u"How many periods an investment takes to grow to a value."},
    {.Name = u"PPMT", .MinArgs = 4, .MaxArgs = 6, .Tier = ftrExtra,
     .Body = NumbersBody<LoanPart<&TLoan::PrincipalOf>>::Call<4>,
     .Arguments = u"rate, period, periods, present_value, [future_value], [type]",
     .Description = u"The principal in the payment of a period."},
    {.Name = u"RRI", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumericBody<RateToGrow>::Call,
     .Arguments = u"periods, present_value, future_value",
     .Description = u"The rate at which an investment grows to a value."},
    {.Name = u"SLN", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallSln,
     .Arguments = u"cost, salvage, life", .Description = u"Linear depreciation of each period."},
    {.Name = u"SYD", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumericBody<SumOfYearsDigits>::Call,
     .Arguments = u"cost, salvage, life, period",
     .Description = u"Depreciation of a period by the sum of the years' digits."},
    {.Name = u"VDB", .MinArgs = 5, .MaxArgs = 7, .Tier = ftrExtra, .Body = CallVdb,
     .Arguments = u"cost, salvage, life, start, end, [factor], [no_switch]",
     .Description = u"Declining depreciation between two times, linear from where that is more."},
    {.Name = u"XIRR", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallXIrr,
     .Arguments = u"amounts, dates, [guess]",
     .Description = u"The yearly rate at which the net present value of dated amounts is 0."},
    {.Name = u"XNPV", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallXNpv,
     .Arguments = u"rate, amounts, dates", .Description = u"The net present value of dated amounts."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> LoanFunctions() { return kLoanFunctions; }

}  // namespace tessarine
