#include <algorithm>
#include <cmath>

#include <tessarine/formula/library/detail/DayCount.h>
#include <tessarine/formula/library/detail/LoanBodies.h>
#include <tessarine/formula/library/detail/SecurityBodies.h>

namespace tessarine::detail {

namespace {

/// An asset that loses a fixed part of what is left of it each period, but never falls below its salvage value.
struct TDeclining {
  double Cost = 0;
  double Salvage = 0;
  double Life = 0;    // in periods
  double Factor = 2;  // of the linear rate

  bool IsValid() const { return Cost >= 0 && Salvage >= 0 && Life > 0 && Factor > 0; }
  double Rate() const { return std::min(Factor / Life, 1.0); }

  /// What is left after APeriods whole periods.
  double ValueAfter(double APeriods) const {
    constexpr double kLongLife = 1e4;  // from here on 1 - Rate() has lost too many digits to be multiplied so often
    const double kept =
        Life < kLongLife || Rate() == 1 ? std::pow(1 - Rate(), APeriods) : std::exp(APeriods * std::log1p(-Rate()));
    return std::max(Cost * kept, std::min(Salvage, Cost));
  }
  double LossOf(double APeriod) const {
    const double left = ValueAfter(APeriod - 1);
    return std::min(left * Rate(), left - std::min(Salvage, Cost));
  }
  /// The loss of each period when what is left at the beginning of APeriod is spread evenly over the rest of the life.
  double EvenLossFrom(double APeriod) const {
    return (ValueAfter(APeriod - 1) - std::min(Salvage, Cost)) / (Life - APeriod + 1);
  }
};

/// The first period in which an even loss over the rest of the life is the larger one. It stays the larger one from
/// there on, as the even loss falls the slower, so halving finds it.
double FirstEvenPeriod(const TDeclining& AAsset) {
  double low = 1;
  double high = std::ceil(AAsset.Life) + 1;  // beyond the life: never
  while (low < high) {
    const double middle = std::floor((low + high) / 2);
    if (middle <= AAsset.Life && AAsset.EvenLossFrom(middle) <= AAsset.LossOf(middle)) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

/// The loss from the beginning to ATime. Within a period it grows evenly. From the period AFirstEven on it is even.
double LossUntil(const TDeclining& AAsset, double ATime, double AFirstEven) {
  const double whole = std::min(std::floor(ATime), AFirstEven - 1);
  const double declined = AAsset.Cost - AAsset.ValueAfter(whole);
  const double rest = ATime - whole;
  if (rest <= 0) return declined;
  const double loss = whole + 1 < AFirstEven ? AAsset.LossOf(whole + 1) : AAsset.EvenLossFrom(AFirstEven);
  return declined + rest * loss;
}

/// The arguments of AMORDEGRC and AMORLINC.
struct TProrated {
  double Cost = 0;
  double Salvage = 0;
  double Period = 0;      // 0 is the first, broken one
  double Rate = 0;        // of a year
  double FirstYears = 1;  // length of the first period; a full year when it is empty
};

/// cost, purchase, end of the first period, salvage, period, rate, basis
std::optional<TProrated> ProratedOf(const TNumbers<7>& ANumbers) {
  const auto& [cost, purchase, first, salvage, period, rate, basis] = ANumbers;
  const auto purchaseDay = DayAt(purchase);
  const auto firstDay = DayAt(first);
  const auto counted = BasisOf(basis);
  if (!purchaseDay || !firstDay || *purchaseDay > *firstDay || !counted || *counted == dbActual360) return {};
  if (!(cost > 0 && salvage >= 0 && salvage <= cost && std::trunc(period) >= 0 && rate > 0)) return {};
  const double years = YearFraction(*purchaseDay, *firstDay, *counted);
  return TProrated{cost, salvage, std::trunc(period), rate, years > 0 ? years : 1};
}

/// Coefficient of the degressive rate, by the life of the asset in years.
double DegressiveCoefficient(double ALife) {
  if (ALife < 3) return 1;
  if (ALife < 5) return 1.5;
  return ALife <= 6 ? 2 : 2.5;
}

}  // namespace

double FixedDeclining(const TNumbers<5>& ANumbers) {
  const auto& [cost, salvage, life, givenPeriod, givenMonths] = ANumbers;
  const double period = std::trunc(givenPeriod);
  const double months = std::trunc(givenMonths);
  if (cost < 0 || salvage < 0 || !(life > 0) || period < 1 || months < 1 || months > 12) return kOutsideDomain;
  if (period > std::floor(life) + (months < 12 ? 1 : 0)) return kOutsideDomain;
  if (cost == 0) return 0;
  const double rate = std::round((1 - std::pow(salvage / cost, 1 / life)) * 1000) / 1000;
  const double first = cost * rate * months / 12;
  if (period == 1) return first;
  const double loss = (cost - first) * std::pow(1 - rate, period - 2) * rate;
  return period > life ? loss * (12 - months) / 12 : loss;
}

double DoubleDeclining(const TNumbers<5>& ANumbers) {
  const auto& [cost, salvage, life, period, factor] = ANumbers;
  const TDeclining asset{cost, salvage, life, factor};
  if (!asset.IsValid() || period < 1 || period > life) return kOutsideDomain;
  return asset.LossOf(period);
}

double SumOfYearsDigits(double ACost, double ASalvage, double ALife, double APeriod) {
  if (ASalvage < 0 || ALife <= 0 || APeriod < 1 || APeriod > ALife) return kOutsideDomain;
  return (ACost - ASalvage) * (ALife - APeriod + 1) * 2 / (ALife * (ALife + 1));
}

/// cost, salvage, life, start, end, [factor], [no switch]
TCellValue CallVdb(TFormulaArgs AArgs, const TFormulaContext&) {
  TNumbers<7> numbers{0, 0, 0, 0, 0, 2, 0};
  if (!ReadNumbers(AArgs, numbers, 5)) return ValueError();
  const auto& [cost, salvage, life, start, end, factor, staysDeclining] = numbers;
  const TDeclining asset{cost, salvage, life, factor};
  if (!asset.IsValid() || start < 0 || start > end || end > life || life > 1e15) return NumError();
  const double firstEven = staysDeclining != 0 ? std::ceil(life) + 1 : FirstEvenPeriod(asset);
  return NumberOrError(LossUntil(asset, end, firstEven) - LossUntil(asset, start, firstEven));
}

double DegressiveDepreciation(const TNumbers<7>& ANumbers) {
  constexpr int32_t kMostPeriods = 1'000'000;
  const auto asset = ProratedOf(ANumbers);
  if (!asset) return kOutsideDomain;
  const double rate = asset->Rate * DegressiveCoefficient(1 / asset->Rate);
  double loss = std::round(asset->FirstYears * rate * asset->Cost);
  double left = asset->Cost - loss;
  double rest = left - asset->Salvage;  // may still be lost
  if (rest < 0) return asset->Period == 0 ? asset->Cost - asset->Salvage : 0;
  for (int32_t period = 0; period < asset->Period; ++period) {
    if (period >= kMostPeriods) return kOutsideDomain;
    loss = std::round(rate * left);
    if (loss == 0) return 0;
    rest -= loss;
    if (rest < 0) return asset->Period - period <= 1 ? std::round(left * 0.5) : 0;
    left -= loss;
  }
  return loss;
}

double ProratedDepreciation(const TNumbers<7>& ANumbers) {
  const auto asset = ProratedOf(ANumbers);
  if (!asset) return kOutsideDomain;
  const double full = asset->Cost * asset->Rate;
  const double available = asset->Cost - asset->Salvage;
  const double first = std::min(asset->FirstYears * full, available);
  if (asset->Period == 0) return first;
  return std::clamp(available - first - (asset->Period - 1) * full, 0.0, full);
}

}  // namespace tessarine::detail
