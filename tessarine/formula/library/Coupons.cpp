#include <tessarine/formula/library/detail/Coupons.h>

#include <algorithm>
#include <cmath>

#include <tessarine/formula/library/detail/SecurityBodies.h>

namespace tessarine::detail {

namespace {

/// The coupon period of settlement, maturity, frequency and basis, and what a formula makes of it.
template <class F>
double WithPeriod(const TNumbers<4>& ANumbers, F&& AFormula) {
  const auto terms = CouponTermsOf(ANumbers[0], ANumbers[1], ANumbers[2], ANumbers[3]);
  const auto period = terms ? CouponPeriodOf(*terms) : std::nullopt;
  return period ? AFormula(*terms, *period) : kOutsideDomain;
}

/// A bond as prices see it. Amounts are per 100 of face value.
struct TBond {
  double Coupon = 0;  // each
  double Redemption = 100;
  double Frequency = 1;
  TCouponPeriod Period;

  double AccruedInterest() const { return Coupon * Period.Accrued / Period.Days; }
};

/// The price at ARate per coupon period, without the accrued interest. In the last period interest is simple.
double PriceAt(const TBond& ABond, double ARate) {
  const double left = ABond.Period.Left();
  const auto count = static_cast<double>(ABond.Period.Count);
  if (count <= 1) return (ABond.Coupon + ABond.Redemption) / (1 + ARate * left) - ABond.AccruedInterest();
  const double growth = std::log1p(ARate);
  const double redemption = ABond.Redemption * std::exp(-(count - 1 + left) * growth);
  const double coupons = ABond.Coupon * AnnuityValue(ARate, count) * std::exp((1 - left) * growth);
  return redemption + coupons - ABond.AccruedInterest();
}

/// Arguments of PRICE and YIELD; nothing outside their common domain.
std::optional<TBond> BondOf(const TNumbers<7>& ANumbers) {
  const auto& [settlement, maturity, rate, valued, redemption, frequency, basis] = ANumbers;
  const auto terms = CouponTermsOf(settlement, maturity, frequency, basis);
  const auto period = terms ? CouponPeriodOf(*terms) : std::nullopt;
  if (!period || rate < 0 || redemption <= 0) return {};
  return TBond{100 * rate / terms->Frequency, redemption, static_cast<double>(terms->Frequency), *period};
}

/// Macaulay's duration in years at ARate per coupon period.
double DurationAt(const TBond& ABond, double ARate) {
  const double left = ABond.Period.Left();
  const double discount = 1 / (1 + ARate);
  double worth = std::pow(discount, left);
  double value = 0;
  double weighted = 0;
  for (int64_t i = 0; i < ABond.Period.Count; ++i, worth *= discount) {
    const double amount = i + 1 < ABond.Period.Count ? ABond.Coupon : ABond.Coupon + ABond.Redemption;
    value += amount * worth;
    weighted += amount * worth * (static_cast<double>(i) + left);
  }
  return weighted / value / ABond.Frequency;
}

/// Interest accrues over whole and broken quasi-coupon periods counted from the first interest date.
struct TAccrual {
  TDay Issue;
  TDay FirstInterest;
  TDay Settlement;
  int32_t Frequency = 1;
  TDayBasis Basis = dbUs30;
  bool FromIssue = true;  // whole periods between issue and the last one count
};

/// The part of the period from APrevious to ANext, which the issue date lies in.
double IssuePeriodPart(const TAccrual& AAccrual, const TDay& APrevious, const TDay& ANext) {
  if (AAccrual.Basis == dbUs30) {
    const int32_t days = DaysUs30(AAccrual.Issue, ANext, AAccrual.Issue > APrevious ? meStart : meBoth);
    return static_cast<double>(days) / DaysUs30(APrevious, ANext, meBoth);
  }
  return DaysBetween(AAccrual.Issue, ANext, AAccrual.Basis) /
         CouponDays(APrevious, ANext, AAccrual.Frequency, AAccrual.Basis);
}

/// How many coupons have accrued at the settlement.
double AccruedCoupons(const TAccrual& AAccrual) {
  const TCouponDates dates(AAccrual.FirstInterest, AAccrual.Frequency);
  const bool isLate = AAccrual.Settlement > AAccrual.FirstInterest && AAccrual.FromIssue;
  int64_t period = isLate ? dates.LastNotAfter(AAccrual.Settlement) : -1;
  auto previous = dates.At(period);
  auto next = dates.At(period + 1);
  if (!previous || !next) return kOutsideDomain;
  double coupons = DaysBetween(std::max(AAccrual.Issue, *previous), AAccrual.Settlement, AAccrual.Basis) /
                   CouponDays(*previous, *next, AAccrual.Frequency, AAccrual.Basis);
  while (*previous > AAccrual.Issue) {
    next = previous;
    previous = dates.At(--period);
    if (!previous) return kOutsideDomain;
    if (*previous > AAccrual.Issue) {
      coupons += AAccrual.FromIssue ? 1 : 0;
    } else {
      coupons += IssuePeriodPart(AAccrual, *previous, *next);
    }
  }
  return coupons;
}

}  // namespace

double CouponAccruedDays(const TNumbers<4>& ANumbers) {
  return WithPeriod(ANumbers, [](const TCouponTerms&, const TCouponPeriod& APeriod) { return APeriod.Accrued; });
}

double CouponPeriodDays(const TNumbers<4>& ANumbers) {
  return WithPeriod(ANumbers, [](const TCouponTerms&, const TCouponPeriod& APeriod) { return APeriod.Days; });
}

double CouponDaysLeft(const TNumbers<4>& ANumbers) {
  return WithPeriod(ANumbers, [](const TCouponTerms& ATerms, const TCouponPeriod& APeriod) -> double {
    if (ATerms.Basis != dbUs30) return DaysBetween(ATerms.Settlement, APeriod.Next, ATerms.Basis);
    return DaysUs30(APeriod.Previous, APeriod.Next, meBoth) - APeriod.Accrued;
  });
}

double CouponNextDate(const TNumbers<4>& ANumbers) {
  return WithPeriod(ANumbers, [](const TCouponTerms&, const TCouponPeriod& APeriod) { return APeriod.Next.Serial; });
}

double CouponCount(const TNumbers<4>& ANumbers) {
  return WithPeriod(ANumbers, [](const TCouponTerms&, const TCouponPeriod& APeriod) { return APeriod.Count; });
}

double CouponPreviousDate(const TNumbers<4>& ANumbers) {
  return WithPeriod(ANumbers,
                    [](const TCouponTerms&, const TCouponPeriod& APeriod) { return APeriod.Previous.Serial; });
}

double BondPrice(const TNumbers<7>& ANumbers) {
  const auto bond = BondOf(ANumbers);
  const double yield = ANumbers[3];
  return bond && yield >= 0 ? PriceAt(*bond, yield / bond->Frequency) : kOutsideDomain;
}

double BondYield(const TNumbers<7>& ANumbers) {
  const auto bond = BondOf(ANumbers);
  const double price = ANumbers[3];
  if (!bond || price <= 0) return kOutsideDomain;
  if (bond->Period.Count <= 1) {
    const double paid = price + bond->AccruedInterest();
    return (bond->Redemption + bond->Coupon - paid) / paid * bond->Frequency / bond->Period.Left();
  }
  const auto rate = RateOfPrice(price, [&](double ARate) { return PriceAt(*bond, ARate); });
  return rate ? *rate * bond->Frequency : kOutsideDomain;
}

double BondDuration(const TNumbers<6>& ANumbers) {
  const auto& [settlement, maturity, rate, yield, frequency, basis] = ANumbers;
  const auto bond = BondOf({settlement, maturity, rate, yield, 100, frequency, basis});
  return bond && yield >= 0 ? DurationAt(*bond, yield / bond->Frequency) : kOutsideDomain;
}

double BondModifiedDuration(const TNumbers<6>& ANumbers) {
  return BondDuration(ANumbers) / (1 + ANumbers[3] / FrequencyOf(ANumbers[4]));
}

double AccruedInterest(const TNumbers<8>& ANumbers) {
  const auto& [issue, firstInterest, settlement, rate, par, frequency, basis, fromIssue] = ANumbers;
  const auto issueDay = DayAt(issue);
  const auto firstDay = DayAt(firstInterest);
  const auto settlementDay = DayAt(settlement);
  const auto counted = BasisOf(basis);
  const int32_t times = FrequencyOf(frequency);
  if (!issueDay || !firstDay || !settlementDay || !counted || times == 0) return kOutsideDomain;
  if (rate <= 0 || par <= 0 || *issueDay >= *settlementDay || *issueDay >= *firstDay) return kOutsideDomain;
  return par * rate / times * AccruedCoupons({*issueDay, *firstDay, *settlementDay, times, *counted, fromIssue != 0});
}

}  // namespace tessarine::detail
