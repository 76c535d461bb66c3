#pragma once

#include <tessarine/formula/library/detail/NumbersBody.h>

/// What securities answer, by source file. Numbers stand in the order of the function's arguments; NaN outside the
/// domain.
namespace tessarine::detail {

double CouponAccruedDays(const TNumbers<4>& ANumbers);  // Coupons.cpp: settlement, maturity, frequency, basis
double CouponPeriodDays(const TNumbers<4>& ANumbers);
double CouponDaysLeft(const TNumbers<4>& ANumbers);
double CouponNextDate(const TNumbers<4>& ANumbers);
double CouponCount(const TNumbers<4>& ANumbers);
double CouponPreviousDate(const TNumbers<4>& ANumbers);
double BondPrice(const TNumbers<7>& ANumbers);     // settlement, maturity, rate, yield, redemption, frequency, basis
double BondYield(const TNumbers<7>& ANumbers);     // settlement, maturity, rate, price, redemption, frequency, basis
double BondDuration(const TNumbers<6>& ANumbers);  // settlement, maturity, rate, yield, frequency, basis
double BondModifiedDuration(const TNumbers<6>& ANumbers);
double AccruedInterest(const TNumbers<8>& ANumbers);  // issue, first interest, settlement, rate, par, frequency, ...

double OddFirstPrice(const TNumbers<9>& ANumbers);  // OddPeriods.cpp: settlement, maturity, issue, first coupon, ...
double OddFirstYield(const TNumbers<9>& ANumbers);
double OddLastPrice(const TNumbers<8>& ANumbers);  // settlement, maturity, last interest, ...
double OddLastYield(const TNumbers<8>& ANumbers);

double DegressiveDepreciation(
    const TNumbers<7>& ANumbers);  // Depreciation.cpp: cost, purchase, first period's end, ...
double ProratedDepreciation(const TNumbers<7>& ANumbers);

}  // namespace tessarine::detail
