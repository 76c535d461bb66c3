#include <cmath>
#include <functional>
#include <limits>
#include <optional>

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/NumericBody.h>
#include <tessarine/formula/library/detail/Samples.h>
#include <tessarine/formula/library/detail/StatisticsBodies.h>

namespace tessarine {

namespace {

using namespace detail;

constexpr double kOutside = std::numeric_limits<double>::quiet_NaN();

TCellValue NumberOrDiv0(double ANumber) { return std::isnan(ANumber) ? Div0Error() : NumberOrError(ANumber); }

TMoments MomentsFor(TFormulaArgs AArgs, bool AAllValues) {
  return AAllValues ? MomentsOfStandIns(AArgs) : MomentsOf(AArgs);
}

template <bool OfPopulation, bool AllValues>
TCellValue CallVariance(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return NumberOrDiv0(MomentsFor(AArgs, AllValues).Variance(OfPopulation));
}

template <bool OfPopulation, bool AllValues>
TCellValue CallDeviation(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return NumberOrDiv0(std::sqrt(MomentsFor(AArgs, AllValues).Variance(OfPopulation)));
}

TCellValue CallDevSq(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TMoments moments = MomentsOf(AArgs);
  return moments.Count == 0 ? NumError() : NumberOrError(moments.Squares);
}

TCellValue CallAveDev(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TMoments moments = MomentsOf(AArgs);
  if (moments.Count == 0) return NumError();
  double sum = 0;
  ForEachNumber(AArgs, [&](double ANumber) { sum += std::fabs(ANumber - moments.Mean); });
  return NumberOrError(sum / moments.Count);
}

/// The sum of the deviations from the mean, each divided by the standard deviation and raised to a whole power.
double PowerSum(TFormulaArgs AArgs, const TMoments& AMoments, bool AOfPopulation, int APower) {
  const double deviation = std::sqrt(AMoments.Variance(AOfPopulation));
  double sum = 0;
  ForEachNumber(AArgs, [&](double ANumber) {
    const double part = (ANumber - AMoments.Mean) / deviation;
    sum += APower == 4 ? part * part * part * part : part * part * part;
  });
  return sum;
}

TCellValue CallKurt(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TMoments moments = MomentsOf(AArgs);
  const double n = moments.Count;
  if (n < 4 || moments.Squares == 0) return Div0Error();
  const double scale = n * (n + 1) / ((n - 1) * (n - 2) * (n - 3));
  return NumberOrError(scale * PowerSum(AArgs, moments, false, 4) - 3 * (n - 1) * (n - 1) / ((n - 2) * (n - 3)));
}

template <bool OfPopulation>
TCellValue CallSkew(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TMoments moments = MomentsOf(AArgs);
  const double n = moments.Count;
  if (n < 3 || moments.Squares == 0) return Div0Error();
  const double scale = OfPopulation ? 1 / n : n / ((n - 1) * (n - 2));
  return NumberOrError(scale * PowerSum(AArgs, moments, OfPopulation, 3));
}

/// The mean of AInto(number), taken back by AOutOf; all numbers must be above 0.
template <class TInto, class TOutOf>
TCellValue MeanOfPositives(TFormulaArgs AArgs, TInto AInto, TOutOf AOutOf) {
  if (AArgs.empty()) return ValueError();
  double sum = 0;
  double count = 0;
  const bool allPositive = ForEachNumber(AArgs, [&](double ANumber) {
    if (ANumber <= 0) return false;
    sum += AInto(ANumber);
    ++count;
    return true;
  });
  return allPositive && count > 0 ? NumberOrError(AOutOf(sum / count)) : NumError();
}

TCellValue CallGeoMean(TFormulaArgs AArgs, const TFormulaContext&) {
  return MeanOfPositives(
      AArgs, [](double ANumber) { return std::log(ANumber); }, [](double AMean) { return std::exp(AMean); });
}

TCellValue CallHarMean(TFormulaArgs AArgs, const TFormulaContext&) {
  const auto inverse = [](double ANumber) { return 1 / ANumber; };
  return MeanOfPositives(AArgs, inverse, inverse);
}

TCellValue CallAverageA(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TMoments moments = MomentsOfStandIns(AArgs);
  return moments.Count == 0 ? Div0Error() : NumberOrError(moments.Mean);
}

template <class TBetter>
TCellValue ExtremeOfAll(TFormulaArgs AArgs, TBetter ABetter) {
  if (AArgs.empty()) return ValueError();
  std::optional<double> best;
  const auto offer = [&](double ANumber) {
    if (!best || ABetter(ANumber, *best)) best = ANumber;
  };
  if (ForEachStandIn(AArgs, offer) > 0) offer(0);
  return NumberOrError(best.value_or(0));
}

TCellValue CallMaxA(TFormulaArgs AArgs, const TFormulaContext&) { return ExtremeOfAll(AArgs, std::greater<double>()); }
TCellValue CallMinA(TFormulaArgs AArgs, const TFormulaContext&) { return ExtremeOfAll(AArgs, std::less<double>()); }

double Fisher(double ANumber) { return std::fabs(ANumber) < 1 ? std::atanh(ANumber) : kOutside; }
double FisherInverse(double ANumber) { return std::tanh(ANumber); }
double Standardize(double ANumber, double AMean, double ADeviation) {
  return ADeviation > 0 ? (ANumber - AMean) / ADeviation : kOutside;
}

// clang-format off
constexpr TFunctionDef kStatisticsFunctions[] = {
    {.Name = u"AVEDEV", .MinArgs = 1, .Tier = ftrExtra, .Body = CallAveDev,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Mean of the absolute deviations of the numbers from their mean."},
    {.Name = u"AVERAGEA", .MinArgs = 1, .Tier = ftrExtra, .Body = CallAverageA,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Mean of all values but errors: TRUE is 1, blanks and texts that are no number are 0."},
    {.Name = u"DEVSQ", .MinArgs = 1, .Tier = ftrExtra, .Body = CallDevSq,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Sum of the squared deviations of the numbers from their mean."},
    {.Name = u"FISHER", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<Fisher>::Call,
     .Arguments = u"number", .Description = u"Fisher transformation of a number between -1 and 1."},
    {.Name = u"FISHERINV", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<FisherInverse>::Call,
     .Arguments = u"number", .Description = u"Inverse of the Fisher transformation."},
    {.Name = u"FREQUENCY", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallFrequency,
     .Arguments = u"values, limits",
     .Description = u"How many numbers lie in the first of the intervals that end at the limits."},
    {.Name = u"GEOMEAN", .MinArgs = 1, .Tier = ftrExtra, .Body = CallGeoMean,
     .Arguments = u"value1, [value2], ...", .Description = u"Geometric mean of positive numbers."},
    {.Name = u"HARMEAN", .MinArgs = 1, .Tier = ftrExtra, .Body = CallHarMean,
     .Arguments = u"value1, [value2], ...", .Description = u"Harmonic mean of positive numbers."},
    {.Name = u"KURT", .MinArgs = 1, .Tier = ftrExtra, .Body = CallKurt,
     .Arguments = u"value1, [value2], ...", .Description = u"Excess kurtosis of a sample of at least four numbers."},
    {.Name = u"LARGE", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallLarge, .InCompletion = true,
     .Arguments = u"values, place", .Description = u"The number at a place, from 1, when the largest comes first."},
    {.Name = u"MAXA", .MinArgs = 1, .Tier = ftrExtra, .Body = CallMaxA,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Largest of all values but errors: TRUE is 1, blanks and texts that are no number are 0."},
    {.Name = u"MEDIAN", .MinArgs = 1, .Tier = ftrExtra, .Body = CallMedian, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"The number in the middle of the sorted numbers."},
    {.Name = u"MINA", .MinArgs = 1, .Tier = ftrExtra, .Body = CallMinA,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Smallest of all values but errors: TRUE is 1, blanks and texts that are no number are 0."},
    {.Name = u"MODE.MULT", .MinArgs = 1, .Tier = ftrExtra, .Body = CallMode,
     .Arguments = u"value1, [value2], ...", .Description = u"The first of the numbers that occur most often."},
    {.Name = u"MODE.SNGL", .Spellings = u"MODE", .MinArgs = 1, .Tier = ftrExtra, .Body = CallMode,
     .Arguments = u"value1, [value2], ...",
     .Description = u"The number that occurs most often, of several the one that comes first."},
    {.Name = u"PERCENTILE.EXC", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPercentileExc,
     .Arguments = u"values, share",
     .Description = u"The number below which a share of the numbers lies; the ends of 0 and 1 are left out."},
    {.Name = u"PERCENTILE.INC", .Spellings = u"PERCENTILE", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = CallPercentileInc, .Arguments = u"values, share",
     .Description = u"The number below which a share of the numbers lies, from the smallest at 0 to the largest at 1."},
    {.Name = u"PERCENTRANK.EXC", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallPercentRankExc,
     .Arguments = u"values, number, [digits]",
     .Description = u"The share of the numbers that lies below one, with a place beyond either end."},
    {.Name = u"PERCENTRANK.INC", .Spellings = u"PERCENTRANK", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra,
     .Body = CallPercentRankInc, .Arguments = u"values, number, [digits]",
     .Description = u"The share of the other numbers that lies below one, 0 for the smallest and 1 for the largest."},
    {.Name = u"QUARTILE.EXC", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallQuartileExc,
     .Arguments = u"values, quarters", .Description = u"PERCENTILE.EXC of one, two or three quarters."},
    {.Name = u"QUARTILE.INC", .Spellings = u"QUARTILE", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = CallQuartileInc, .Arguments = u"values, quarters",
     .Description = u"PERCENTILE.INC of none to four quarters."},
    {.Name = u"RANK.AVG", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallRankAvg,
     .Arguments = u"number, values, [ascending]",
     .Description = u"Place of a number among the numbers of a range; equal numbers share their mean place."},
    {.Name = u"SKEW", .MinArgs = 1, .Tier = ftrExtra, .Body = CallSkew<false>,
     .Arguments = u"value1, [value2], ...", .Description = u"Skewness of a sample of at least three numbers."},
    {.Name = u"SKEW.P", .MinArgs = 1, .Tier = ftrExtra, .Body = CallSkew<true>,
     .Arguments = u"value1, [value2], ...", .Description = u"Skewness of a population of at least three numbers."},
    {.Name = u"SMALL", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallSmall, .InCompletion = true,
     .Arguments = u"values, place", .Description = u"The number at a place, from 1, when the smallest comes first."},
    {.Name = u"STANDARDIZE", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumericBody<Standardize>::Call,
     .Arguments = u"number, mean, deviation",
     .Description = u"How many standard deviations a number lies above the mean."},
    {.Name = u"STDEV", .MinArgs = 1, .Tier = ftrExtra, .Body = CallDeviation<false, false>, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Standard deviation of the numbers as a sample."},
    {.Name = u"STDEV.P", .Spellings = u"STDEVP", .MinArgs = 1, .Tier = ftrExtra, .Body = CallDeviation<true, false>,
     .Arguments = u"value1, [value2], ...", .Description = u"Standard deviation of the numbers as a population."},
    {.Name = u"STDEV.S", .MinArgs = 1, .Tier = ftrExtra, .Body = CallDeviation<false, false>,
     .Arguments = u"value1, [value2], ...", .Description = u"Standard deviation of the numbers as a sample."},
    {.Name = u"STDEVA", .MinArgs = 1, .Tier = ftrExtra, .Body = CallDeviation<false, true>,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Standard deviation of all values but errors as a sample, counted as in AVERAGEA."},
    {.Name = u"STDEVPA", .MinArgs = 1, .Tier = ftrExtra, .Body = CallDeviation<true, true>,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Standard deviation of all values but errors as a population, counted as in AVERAGEA."},
    {.Name = u"TRIMMEAN", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallTrimMean,
     .Arguments = u"values, share",
     .Description = u"Mean without a share of the numbers, half of it the smallest and half the largest."},
    {.Name = u"VAR", .MinArgs = 1, .Tier = ftrExtra, .Body = CallVariance<false, false>, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Variance of the numbers as a sample."},
    {.Name = u"VAR.P", .Spellings = u"VARP", .MinArgs = 1, .Tier = ftrExtra, .Body = CallVariance<true, false>,
     .Arguments = u"value1, [value2], ...", .Description = u"Variance of the numbers as a population."},
    {.Name = u"VAR.S", .MinArgs = 1, .Tier = ftrExtra, .Body = CallVariance<false, false>,
     .Arguments = u"value1, [value2], ...", .Description = u"Variance of the numbers as a sample."},
    {.Name = u"VARA", .MinArgs = 1, .Tier = ftrExtra, .Body = CallVariance<false, true>,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Variance of all values but errors as a sample, counted as in AVERAGEA."},
    {.Name = u"VARPA", .MinArgs = 1, .Tier = ftrExtra, .Body = CallVariance<true, true>,
     .Arguments = u"value1, [value2], ...",
     .Description = u"Variance of all values but errors as a population, counted as in AVERAGEA."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> StatisticsFunctions() { return kStatisticsFunctions; }

}  // namespace tessarine
