#include <tessarine/formula/library/detail/Coupons.h>

namespace tessarine::detail {

int32_t FrequencyOf(double ANumber) {
  const double frequency = std::trunc(ANumber);
  return frequency == 1 || frequency == 2 || frequency == 4 ? static_cast<int32_t>(frequency) : 0;
}

std::optional<TCouponTerms> CouponTermsOf(double ASettlement, double AMaturity, double AFrequency, double ABasis) {
  const auto settlement = DayAt(ASettlement);
  const auto maturity = DayAt(AMaturity);
  const int32_t frequency = FrequencyOf(AFrequency);
  const auto basis = BasisOf(ABasis);
  if (!settlement || !maturity || *settlement >= *maturity || frequency == 0 || !basis) return {};
  return TCouponTerms{*settlement, *maturity, frequency, *basis};
}

double CouponDays(const TDay& AStart, const TDay& AEnd, int32_t AFrequency, TDayBasis ABasis) {
  switch (ABasis) {
    case dbActual: return AEnd.Serial - AStart.Serial;
    case dbActual365: return 365.0 / AFrequency;
    case dbUs30:
    case dbActual360:
    case dbEurope30: break;
  }
  return 360.0 / AFrequency;
}

int64_t TCouponDates::LastNotAfter(const TDay& ADay) const {
  const int64_t months = int64_t{ADay.Year - FAnchor.Year} * 12 + ADay.Month - FAnchor.Month;
  int64_t period = months / FMonths + 1;  // cut toward zero: not too early, and at most two periods too late
  for (auto day = At(period); !day || *day > ADay; day = At(period)) {
    if (!day && period <= months / FMonths - 2) break;
    --period;
  }
  return period;
}

std::optional<TCouponPeriod> CouponPeriodOf(const TCouponTerms& ATerms) {
  const TCouponDates dates(ATerms.Maturity, ATerms.Frequency);
  const int64_t last = dates.LastNotAfter(ATerms.Settlement);
  const auto previous = dates.At(last);
  const auto next = dates.At(last + 1);
  if (!previous || !next) return {};
  TCouponPeriod period{*previous, *next, -last};
  period.Days = CouponDays(*previous, *next, ATerms.Frequency, ATerms.Basis);
  period.Accrued = DaysBetween(*previous, ATerms.Settlement, ATerms.Basis);
  return period;
}

double AnnuityValue(double ARate, double ACount) {
  return ARate == 0 ? ACount : -std::expm1(-ACount * std::log1p(ARate)) / ARate;
}

}  // namespace tessarine::detail
