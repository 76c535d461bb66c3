#pragma once

#include <cstdint>
#include <optional>

#include <tessarine/formula/library/detail/DayCount.h>
#include <tessarine/formula/library/detail/RootSearch.h>

/// Coupon dates of securities and what prices are made of.
namespace tessarine::detail {

/// When a security pays. Settlement lies before maturity; 1, 2 or 4 coupons a year.
struct TCouponTerms {
  TDay Settlement;
  TDay Maturity;
  int32_t Frequency = 1;
  TDayBasis Basis = dbUs30;

  int32_t MonthsApart() const { return 12 / Frequency; }
};

/// Nothing when the numbers are no such terms.
std::optional<TCouponTerms> CouponTermsOf(double ASettlement, double AMaturity, double AFrequency, double ABasis);

/// 1, 2 or 4; 0 for other numbers.
int32_t FrequencyOf(double ANumber);

/// Days that periods which a year has AFrequency of count, from AStart to AEnd.
double CouponDays(const TDay& AStart, const TDay& AEnd, int32_t AFrequency, TDayBasis ABasis);

/// The coupon dates that follow from one of them: whole periods before and after, all at the end of their months when
/// that one is.
class TCouponDates {
 public:
  TCouponDates(const TDay& AAnchor, int32_t AFrequency)
      : FAnchor(AAnchor), FMonths(12 / AFrequency), FAtMonthEnd(AAnchor.IsMonthEnd()) {}

  /// APeriods periods after the anchor; nothing outside the calendar.
  std::optional<TDay> At(int64_t APeriods) const { return MonthsAfter(FAnchor, APeriods * FMonths, FAtMonthEnd); }

  /// The number of the last date that is not after ADay, in periods after the anchor.
  int64_t LastNotAfter(const TDay& ADay) const;

 private:
  TDay FAnchor;
  int64_t FMonths;
  bool FAtMonthEnd;
};

/// The coupon period in which a security settles.
struct TCouponPeriod {
  TDay Previous;       // not after the settlement
  TDay Next;           // after it
  int64_t Count = 0;   // coupons after the settlement, that at maturity included
  double Days = 0;     // of the whole period
  double Accrued = 0;  // days of it up to the settlement

  double Left() const { return (Days - Accrued) / Days; }  // as a part of the period
};

/// Nothing when the period begins outside the calendar.
std::optional<TCouponPeriod> CouponPeriodOf(const TCouponTerms& ATerms);

/// The present value of ACount payments of 1, the first after one period, at ARate per period (above -1).
double AnnuityValue(double ARate, double ACount);

/// The rate per period, above -1, at which the price that APriceAt(rate) falls to is APrice; nothing when there is
/// none. APriceAt falls as the rate rises. The search goes over the logarithm of the growth of one period.
template <class F>
std::optional<double> RateOfPrice(double APrice, F&& APriceAt) {
  constexpr double kWidest = 600;
  const auto excessAt = [&](double AGrowth) { return APriceAt(std::expm1(AGrowth)) - APrice; };
  TSample low{0, excessAt(0)};
  TSample high = low;
  for (double step = 0.05; low.Value < 0 && low.At > -kWidest; step *= 2) {
    high = low;
    low = {low.At - step, excessAt(low.At - step)};
  }
  for (double step = 0.05; high.Value > 0 && high.At < kWidest; step *= 2) {
    low = high;
    high = {high.At + step, excessAt(high.At + step)};
  }
  if (!(low.Value >= 0 && high.Value <= 0)) return {};
  if (low.Value == 0) return std::expm1(low.At);
  if (high.Value == 0) return std::expm1(high.At);
  return std::expm1(RootBetween(low, high, excessAt));
}

}  // namespace tessarine::detail
