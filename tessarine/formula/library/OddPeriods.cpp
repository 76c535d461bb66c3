#include <algorithm>
#include <cmath>

#include <tessarine/formula/library/detail/Coupons.h>
#include <tessarine/formula/library/detail/SecurityBodies.h>

// Securities whose first or last coupon period is shorter or longer than the others. An odd period is measured in the
// quasi-coupon periods that would have led up to (or on from) its regular end. Amounts are per 100 of face value.

namespace tessarine::detail {

namespace {

/// A security with an odd first period. Places in time are in regular periods after the settlement.
struct TOddFirst {
  double Coupon = 0;  // regular
  double Redemption = 100;
  double Frequency = 1;
  double FirstAt = 0;      // when the first coupon is paid
  double FirstPart = 0;    // of a regular coupon
  double AccruedPart = 0;  // of a regular coupon
  double Later = 0;        // regular coupons after the first, that at maturity included
};

/// What odd periods have accrued, in regular coupons.
struct TQuasiParts {
  double All = 0;
  double Accrued = 0;  // up to the settlement
  double Ahead = 0;    // from it on
};

/// The quasi-coupon periods from AFirst on until ALast: each part is that of [AFrom, ATo).
TQuasiParts MeasureQuasi(const TCouponDates& ADates, int64_t AFirst, int64_t ALast, const TDay& AFrom, const TDay& ATo,
                         const TCouponTerms& ATerms) {
  TQuasiParts parts;
  for (int64_t period = AFirst; period < ALast; ++period) {
    const auto start = ADates.At(period);
    const auto end = ADates.At(period + 1);
    if (!start || !end) return {kOutsideDomain, kOutsideDomain, kOutsideDomain};
    const double length = CouponDays(*start, *end, ATerms.Frequency, ATerms.Basis);
    const TDay from = std::max(*start, AFrom);
    const TDay to = std::min(*end, ATo);
    const TDay between = std::clamp(ATerms.Settlement, from, to);
    const bool isWhole = from == *start && to == *end;
    parts.All += isWhole ? 1 : DaysBetween(from, to, ATerms.Basis) / length;
    parts.Accrued += DaysBetween(from, between, ATerms.Basis) / length;
    parts.Ahead += DaysBetween(between, to, ATerms.Basis) / length;
  }
  return parts;
}

/// Regular periods from the settlement to the first coupon: whole ones and the rest of the one of the settlement.
double PeriodsUntilFirst(const TCouponTerms& ATerms, const TCouponPeriod& APeriod) {
  const bool isByDays = ATerms.Basis == dbActual360 || ATerms.Basis == dbActual365;
  const double left = isByDays ? APeriod.Next.Serial - ATerms.Settlement.Serial : APeriod.Days - APeriod.Accrued;
  return static_cast<double>(APeriod.Count - 1) + left / APeriod.Days;
}

/// settlement, maturity, issue, first coupon, rate, yield or price, redemption, frequency, basis
std::optional<TOddFirst> OddFirstOf(const TNumbers<9>& ANumbers) {
  const auto& [settlement, maturity, issue, first, rate, valued, redemption, frequency, basis] = ANumbers;
  const auto terms = CouponTermsOf(settlement, first, frequency, basis);  // up to the first coupon
  const auto issueDay = DayAt(issue);
  const auto maturityDay = DayAt(maturity);
  if (!terms || !issueDay || !maturityDay || rate < 0 || redemption <= 0) return {};
  if (*issueDay >= terms->Settlement || terms->Maturity >= *maturityDay) return {};
  const TCouponDates regular(*maturityDay, terms->Frequency);
  const int64_t later = -regular.LastNotAfter(terms->Maturity);
  if (regular.At(-later) != terms->Maturity) return {};  // the first coupon is no coupon date

  const TCouponDates quasi(terms->Maturity, terms->Frequency);
  const auto period = CouponPeriodOf(*terms);
  const auto before = quasi.At(-1);
  if (!period || !before) return {};
  TOddFirst bond{100 * rate / terms->Frequency, redemption, static_cast<double>(terms->Frequency)};
  bond.Later = static_cast<double>(later);
  const double days = CouponDays(*before, terms->Maturity, terms->Frequency, terms->Basis);
  const double firstDays = DaysBetween(*issueDay, terms->Maturity, terms->Basis);
  if (firstDays < days) {
    bond.FirstPart = firstDays / days;
    bond.FirstAt = DaysBetween(terms->Settlement, terms->Maturity, terms->Basis) / days;
    bond.AccruedPart = DaysBetween(*issueDay, terms->Settlement, terms->Basis) / days;
    return bond;
  }
  const TQuasiParts parts = MeasureQuasi(quasi, quasi.LastNotAfter(*issueDay), 0, *issueDay, terms->Maturity, *terms);
  bond.FirstPart = parts.All;
  bond.AccruedPart = parts.Accrued;
  bond.FirstAt = PeriodsUntilFirst(*terms, *period);
  return bond;
}

/// The price at ARate per regular period, without the accrued interest.
double OddFirstPriceAt(const TOddFirst& ABond, double ARate) {
  const double growth = std::log1p(ARate);
  const double atFirst = ABond.Coupon * (ABond.FirstPart + AnnuityValue(ARate, ABond.Later)) +
                         ABond.Redemption * std::exp(-ABond.Later * growth);
  return atFirst * std::exp(-ABond.FirstAt * growth) - ABond.Coupon * ABond.AccruedPart;
}

/// A security with an odd last period, in which interest is simple.
struct TOddLast {
  double Coupon = 0;
  double Redemption = 100;
  double Frequency = 1;
  TQuasiParts Parts;
};

/// settlement, maturity, last interest, rate, yield or price, redemption, frequency, basis
std::optional<TOddLast> OddLastOf(const TNumbers<8>& ANumbers) {
  const auto& [settlement, maturity, last, rate, valued, redemption, frequency, basis] = ANumbers;
  const auto terms = CouponTermsOf(settlement, maturity, frequency, basis);
  const auto lastDay = DayAt(last);
  if (!terms || !lastDay || *lastDay >= terms->Settlement || rate < 0 || redemption <= 0) return {};
  const TCouponDates quasi(*lastDay, terms->Frequency);
  int64_t count = quasi.LastNotAfter(terms->Maturity);
  if (quasi.At(count) != terms->Maturity) ++count;
  const TQuasiParts parts = MeasureQuasi(quasi, 0, count, *lastDay, terms->Maturity, *terms);
  return TOddLast{100 * rate / terms->Frequency, redemption, static_cast<double>(terms->Frequency), parts};
}

}  // namespace

double OddFirstPrice(const TNumbers<9>& ANumbers) {
  const auto bond = OddFirstOf(ANumbers);
  const double yield = ANumbers[5];
  return bond && yield >= 0 ? OddFirstPriceAt(*bond, yield / bond->Frequency) : kOutsideDomain;
}

double OddFirstYield(const TNumbers<9>& ANumbers) {
  const auto bond = OddFirstOf(ANumbers);
  const double price = ANumbers[5];
  if (!bond || price <= 0) return kOutsideDomain;
  const auto rate = RateOfPrice(price, [&](double ARate) { return OddFirstPriceAt(*bond, ARate); });
  return rate ? *rate * bond->Frequency : kOutsideDomain;
}

double OddLastPrice(const TNumbers<8>& ANumbers) {
  const auto bond = OddLastOf(ANumbers);
  const double yield = ANumbers[4];
  if (!bond || yield < 0) return kOutsideDomain;
  const double paid = bond->Redemption + bond->Coupon * bond->Parts.All;
  return paid / (1 + bond->Parts.Ahead * yield / bond->Frequency) - bond->Coupon * bond->Parts.Accrued;
}

double OddLastYield(const TNumbers<8>& ANumbers) {
  const auto bond = OddLastOf(ANumbers);
  const double price = ANumbers[4];
  if (!bond || price <= 0) return kOutsideDomain;
  const double cost = price + bond->Coupon * bond->Parts.Accrued;
  const double gain = bond->Redemption + bond->Coupon * bond->Parts.All - cost;
  return gain / cost * bond->Frequency / bond->Parts.Ahead;
}

}  // namespace tessarine::detail
