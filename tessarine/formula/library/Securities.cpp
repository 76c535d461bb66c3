#include <tessarine/formula/FunctionTable.h>

#include <cmath>

#include <tessarine/formula/library/detail/DayCount.h>
#include <tessarine/formula/library/detail/SecurityBodies.h>

namespace tessarine {

namespace {

using namespace detail;

/// Two days in this order and how the time between them is counted.
struct TTerm {
  TDay Start;
  TDay End;
  TDayBasis Basis = dbUs30;

  double Years() const { return DaysBetween(Start, End, Basis) / DaysInYear(Start, End, Basis); }
};

std::optional<TTerm> TermOf(double AStart, double AEnd, double ABasis) {
  const auto start = DayAt(AStart);
  const auto end = DayAt(AEnd);
  const auto basis = BasisOf(ABasis);
  if (!start || !end || *start >= *end || !basis) return {};
  return TTerm{*start, *end, *basis};
}

// Discounted securities: settlement, maturity, two amounts, basis. Both amounts are above 0.

template <double (*Formula)(double AFirst, double ASecond, double AYears)>
double DiscountedBody(const TNumbers<5>& ANumbers) {
  const auto& [settlement, maturity, first, second, basis] = ANumbers;
  const auto term = TermOf(settlement, maturity, basis);
  return term && first > 0 && second > 0 ? Formula(first, second, term->Years()) : kOutsideDomain;
}

double DiscountOf(double APrice, double ARedemption, double AYears) {
  return (ARedemption - APrice) / ARedemption / AYears;
}

/// INTRATE (investment, redemption) and YIELDDISC (price, redemption).
double SimpleRate(double APrice, double ARedemption, double AYears) { return (ARedemption - APrice) / APrice / AYears; }

double DiscountedPrice(double ADiscount, double ARedemption, double AYears) {
  return ARedemption - ADiscount * ARedemption * AYears;
}

double ReceivedAtMaturity(double AInvestment, double ADiscount, double AYears) {
  const double part = 1 - ADiscount * AYears;
  return part > 0 ? AInvestment / part : kOutsideDomain;
}

/// issue, settlement, rate, par, basis
double InterestAtMaturity(double ARate, double APar, double AYears) { return APar * ARate * AYears; }

// Securities that pay interest at maturity: settlement, maturity, issue, rate, price or yield, basis.

/// Times in years.
struct TSingleTerm {
  double Whole = 0;    // issue to maturity
  double Accrued = 0;  // issue to settlement
  double Ahead = 0;    // settlement to maturity
};

std::optional<TSingleTerm> SingleTermOf(const TNumbers<6>& ANumbers) {
  const auto& [settlement, maturity, issue, rate, valued, basis] = ANumbers;
  const auto ahead = TermOf(settlement, maturity, basis);
  const auto issueDay = DayAt(issue);
  if (!ahead || !issueDay || *issueDay >= ahead->Start || rate < 0) return {};
  const double year = DaysInYear(*issueDay, ahead->Start, ahead->Basis);
  const int32_t whole = DaysBetween(*issueDay, ahead->End, ahead->Basis);
  const int32_t accrued = DaysBetween(*issueDay, ahead->Start, ahead->Basis);
  return TSingleTerm{whole / year, accrued / year, (whole - accrued) / year};
}

double PriceWithInterestAtMaturity(const TNumbers<6>& ANumbers) {
  const auto term = SingleTermOf(ANumbers);
  const double rate = ANumbers[3];
  const double yield = ANumbers[4];
  if (!term || yield < 0) return kOutsideDomain;
  return 100 * ((1 + term->Whole * rate) / (1 + term->Ahead * yield) - term->Accrued * rate);
}

double YieldWithInterestAtMaturity(const TNumbers<6>& ANumbers) {
  const auto term = SingleTermOf(ANumbers);
  const double rate = ANumbers[3];
  const double price = ANumbers[4];
  if (!term || price <= 0) return kOutsideDomain;
  const double paid = price / 100 + term->Accrued * rate;
  return (1 + term->Whole * rate - paid) / paid / term->Ahead;
}

// Treasury bills: settlement, maturity at most a year later, and a discount or price above 0. Years have 360 days.

template <double (*Formula)(double AValue, double ADays)>
double BillBody(const TNumbers<3>& ANumbers) {
  const auto term = TermOf(ANumbers[0], ANumbers[1], static_cast<double>(dbActual));
  const auto limit = term ? MonthsAfter(term->Start, 12) : std::nullopt;
  if (!limit || term->End > *limit || ANumbers[2] <= 0) return kOutsideDomain;
  return Formula(ANumbers[2], DaysBetween(term->Start, term->End, dbActual));
}

double BillPrice(double ADiscount, double ADays) {
  const double price = 100 * (1 - ADiscount * ADays / 360);
  return price > 0 ? price : kOutsideDomain;
}

double BillYield(double APrice, double ADays) { return (100 - APrice) / APrice * 360 / ADays; }

/// The yield of a bond with the same gain; over more than half a year the bond pays a coupon in between.
double BillBondYield(double ADiscount, double ADays) {
  if (ADays <= 182) {
    const double rest = 360 - ADiscount * ADays;
    return rest > 0 ? 365 * ADiscount / rest : kOutsideDomain;
  }
  const double price = 1 - ADiscount * ADays / 360;
  if (price <= 0) return kOutsideDomain;
  const double years = ADays / (ADays > 365 ? 366 : 365);
  const double root = std::sqrt(years * years - (2 * years - 1) * (1 - 1 / price));
  return 2 * (root - years) / (2 * years - 1);
}

// clang-format off
constexpr std::u16string_view kCouponArguments = u"settlement, maturity, frequency, [basis]";

constexpr TFunctionDef kSecurityFunctions[] = {
    {.Name = u"ACCRINT", .MinArgs = 6, .MaxArgs = 8, .Tier = ftrExtra, .Body = NumbersBody<AccruedInterest>::Call<6, 1>,
     .Arguments = u"issue, first_interest, settlement, rate, par, frequency, [basis], [from_issue]",
     .Description = u"Interest that a security with coupons has accrued."},
    {.Name = u"ACCRINTM", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra,
     .Body = NumbersBody<DiscountedBody<InterestAtMaturity>>::Call<4>,
     .Arguments = u"issue, settlement, rate, par, [basis]",
     .Description = u"Interest that a security which pays at maturity has accrued."},
    {.Name = u"AMORDEGRC", .MinArgs = 6, .MaxArgs = 7, .Tier = ftrExtra,
     .Body = NumbersBody<DegressiveDepreciation>::Call<6>,
     .Arguments = u"cost, purchased, first_period, salvage, period, rate, [basis]",
     .Description = u"Degressive depreciation of a period, the coefficient taken from the asset's life."},
    {.Name = u"AMORLINC", .MinArgs = 6, .MaxArgs = 7, .Tier = ftrExtra,
     .Body = NumbersBody<ProratedDepreciation>::Call<6>,
     .Arguments = u"cost, purchased, first_period, salvage, period, rate, [basis]",
     .Description = u"Linear depreciation of a period, the first one in proportion."},
    {.Name = u"COUPDAYBS", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra,
     .Body = NumbersBody<CouponAccruedDays>::Call<3>,
     .Arguments = kCouponArguments, .Description = u"Days from the last coupon date to the settlement."},
    {.Name = u"COUPDAYS", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumbersBody<CouponPeriodDays>::Call<3>,
     .Arguments = kCouponArguments, .Description = u"Days of the coupon period of the settlement."},
    {.Name = u"COUPDAYSNC", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumbersBody<CouponDaysLeft>::Call<3>,
     .Arguments = kCouponArguments, .Description = u"Days from the settlement to the next coupon date."},
    {.Name = u"COUPNCD", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumbersBody<CouponNextDate>::Call<3>,
     .Arguments = kCouponArguments, .Description = u"The next coupon date after the settlement."},
    {.Name = u"COUPNUM", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumbersBody<CouponCount>::Call<3>,
     .Arguments = kCouponArguments, .Description = u"How many coupons are paid after the settlement."},
    {.Name = u"COUPPCD", .MinArgs = 3, .MaxArgs = 4, .Tier = ftrExtra, .Body = NumbersBody<CouponPreviousDate>::Call<3>,
     .Arguments = kCouponArguments, .Description = u"The last coupon date up to the settlement."},
    {.Name = u"DISC", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra,
     .Body = NumbersBody<DiscountedBody<DiscountOf>>::Call<4>,
     .Arguments = u"settlement, maturity, price, redemption, [basis]", .Description = u"Discount rate of a security."},
    {.Name = u"DURATION", .MinArgs = 5, .MaxArgs = 6, .Tier = ftrExtra, .Body = NumbersBody<BondDuration>::Call<5>,
     .Arguments = u"settlement, maturity, rate, yield, frequency, [basis]",
     .Description = u"Macaulay duration of a bond, in years."},
    {.Name = u"INTRATE", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra,
     .Body = NumbersBody<DiscountedBody<SimpleRate>>::Call<4>,
     .Arguments = u"settlement, maturity, investment, redemption, [basis]",
     .Description = u"Interest rate of a security that is fully invested."},
    {.Name = u"MDURATION", .MinArgs = 5, .MaxArgs = 6, .Tier = ftrExtra,
     .Body = NumbersBody<BondModifiedDuration>::Call<5>,
     .Arguments = u"settlement, maturity, rate, yield, frequency, [basis]",
     .Description = u"Modified duration of a bond: how its price answers to its yield."},
    {.Name = u"ODDFPRICE", .MinArgs = 8, .MaxArgs = 9, .Tier = ftrExtra, .Body = NumbersBody<OddFirstPrice>::Call<8>,
     .Arguments = u"settlement, maturity, issue, first_coupon, rate, yield, redemption, frequency, [basis]",
     .Description = u"Price of a bond with an odd first period."},
    {.Name = u"ODDFYIELD", .MinArgs = 8, .MaxArgs = 9, .Tier = ftrExtra, .Body = NumbersBody<OddFirstYield>::Call<8>,
     .Arguments = u"settlement, maturity, issue, first_coupon, rate, price, redemption, frequency, [basis]",
     .Description = u"Yield of a bond with an odd first period."},
    {.Name = u"ODDLPRICE", .MinArgs = 7, .MaxArgs = 8, .Tier = ftrExtra, .Body = NumbersBody<OddLastPrice>::Call<7>,
     .Arguments = u"settlement, maturity, last_interest, rate, yield, redemption, frequency, [basis]",
     .Description = u"Price of a bond with an odd last period."},
    {.Name = u"ODDLYIELD", .MinArgs = 7, .MaxArgs = 8, .Tier = ftrExtra, .Body = NumbersBody<OddLastYield>::Call<7>,
     .Arguments = u"settlement, maturity, last_interest, rate, price, redemption, frequency, [basis]",
     .Description = u"Yield of a bond with an odd last period."},
    {.Name = u"PRICE", .MinArgs = 6, .MaxArgs = 7, .Tier = ftrExtra, .Body = NumbersBody<BondPrice>::Call<6>,
     .Arguments = u"settlement, maturity, rate, yield, redemption, frequency, [basis]",
     .Description = u"Price per 100 of face value of a bond."},
    {.Name = u"PRICEDISC", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra,
     .Body = NumbersBody<DiscountedBody<DiscountedPrice>>::Call<4>,
     .Arguments = u"settlement, maturity, discount, redemption, [basis]",
     .Description = u"Price per 100 of face value of a discounted security."},
    {.Name = u"PRICEMAT", .MinArgs = 5, .MaxArgs = 6, .Tier = ftrExtra,
     .Body = NumbersBody<PriceWithInterestAtMaturity>::Call<5>,
     .Arguments = u"settlement, maturity, issue, rate, yield, [basis]",
     .Description = u"Price per 100 of face value of a security that pays interest at maturity."},
    {.Name = u"RECEIVED", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra,
     .Body = NumbersBody<DiscountedBody<ReceivedAtMaturity>>::Call<4>,
     .Arguments = u"settlement, maturity, investment, discount, [basis]",
     .Description = u"Amount received at maturity for a security that is fully invested."},
    {.Name = u"TBILLEQ", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumbersBody<BillBody<BillBondYield>>::Call<3>,
     .Arguments = u"settlement, maturity, discount", .Description = u"Bond-equivalent yield of a treasury bill."},
    {.Name = u"TBILLPRICE", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumbersBody<BillBody<BillPrice>>::Call<3>,
     .Arguments = u"settlement, maturity, discount", .Description = u"Price per 100 of face value of a treasury bill."},
    {.Name = u"TBILLYIELD", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = NumbersBody<BillBody<BillYield>>::Call<3>,
     .Arguments = u"settlement, maturity, price", .Description = u"Yield of a treasury bill."},
    {.Name = u"YIELD", .MinArgs = 6, .MaxArgs = 7, .Tier = ftrExtra, .Body = NumbersBody<BondYield>::Call<6>,
     .Arguments = u"settlement, maturity, rate, price, redemption, frequency, [basis]",
     .Description = u"Yield of a bond."},
    {.Name = u"YIELDDISC", .MinArgs = 4, .MaxArgs = 5, .Tier = ftrExtra,
     .Body = NumbersBody<DiscountedBody<SimpleRate>>::Call<4>,
     .Arguments = u"settlement, maturity, price, redemption, [basis]",
     .Description = u"Yearly yield of a discounted security."},
    {.Name = u"YIELDMAT", .MinArgs = 5, .MaxArgs = 6, .Tier = ftrExtra,
     .Body = NumbersBody<YieldWithInterestAtMaturity>::Call<5>,
     .Arguments = u"settlement, maturity, issue, rate, price, [basis]",
     .Description = u"Yearly yield of a security that pays interest at maturity."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> SecurityFunctions() { return kSecurityFunctions; }

}  // namespace tessarine
