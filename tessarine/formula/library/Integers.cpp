#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <optional>

#include <tessarine/formula/library/detail/Combinations.h>
#include <tessarine/formula/library/detail/Numerals.h>
#include <tessarine/formula/library/detail/NumericBody.h>
#include <tessarine/formula/library/detail/Samples.h>

namespace tessarine {

namespace {

using namespace detail;

constexpr double kNoCount = std::numeric_limits<double>::quiet_NaN();
constexpr double kMaxWhole = 0x1p53;  // below, every integer is a double

// Combinations -------------------------------------------------------------------------------------------------------

double FactorialOf(double A) { return A >= 0 && A <= 170 && A == std::trunc(A) ? FallingProduct(A, 1) : kNoCount; }

double DoubleFactorialOf(double A) { return std::trunc(A) < 0 ? kNoCount : FallingProduct(std::trunc(A), 2); }

double Combinations(double ANumber, double AChosen) {
  return CombinationCount(std::trunc(ANumber), std::trunc(AChosen));
}

double CombinationsWithRepeats(double ANumber, double AChosen) {
  const double number = std::trunc(ANumber);
  const double chosen = std::trunc(AChosen);
  if (number == 0 && chosen == 0) return 1;
  return number < 0 ? kNoCount : CombinationCount(number + chosen - 1, chosen);
}

double Permutations(double ANumber, double AChosen) {
  return PermutationCount(std::trunc(ANumber), std::trunc(AChosen));
}

double PermutationsWithRepeats(double ANumber, double AChosen) {
  const double number = std::trunc(ANumber);
  const double chosen = std::trunc(AChosen);
  return number < 0 || chosen < 0 ? kNoCount : std::pow(number, chosen);
}

/// The numbers of all values, cut to integers; an error when a value is no number or one is negative or 2^53 and above.
/// AVisit(double) sees those that are not blank; blanks stand for 0.
template <class F>
TCellErrorCode ForEachWhole(TFormulaArgs AArgs, F&& AVisit) {
  if (AArgs.empty()) return ceValue;
  bool isOutOfRange = false;
  for (const TFormulaArg& arg : AArgs) {
    const bool isNumeric = ForEachNonBlank(arg, [&](int64_t, const TValueView& AValue) {
      double number = 0;
      if (!AsNumber(AValue, number)) return false;
      number = std::trunc(number);
      isOutOfRange = isOutOfRange || number < 0 || number >= kMaxWhole;
      if (!isOutOfRange) AVisit(number);
      return true;
    });
    if (!isNumeric) return ceValue;
  }
  return isOutOfRange ? ceNum : ceNone;
}

TCellValue WholeOrError(TCellErrorCode AError, double AResult) {
  if (AError != ceNone) return TCellValue::FromError(AError);
  return AResult < kMaxWhole ? TCellValue::FromNumber(AResult) : NumError();
}

TCellValue CallMultinomial(TFormulaArgs AArgs, const TFormulaContext&) {
  double sum = 0;
  double count = 1;
  const TCellErrorCode error = ForEachWhole(AArgs, [&](double ANumber) {
    sum += ANumber;
    count *= CombinationCount(sum, ANumber);
  });
  return error == ceNone ? NumberOrError(count) : TCellValue::FromError(error);
}

TCellValue CallGcd(TFormulaArgs AArgs, const TFormulaContext&) {
  uint64_t divisor = 0;
  const TCellErrorCode error =
      ForEachWhole(AArgs, [&](double ANumber) { divisor = std::gcd(divisor, static_cast<uint64_t>(ANumber)); });
  return WholeOrError(error, static_cast<double>(divisor));
}

/// 2^53 or more stays as it is.
double LeastCommonMultiple(double A, double B) {
  if (A == 0 || B == 0) return 0;
  if (A >= kMaxWhole) return A;
  return A * (B / static_cast<double>(std::gcd(static_cast<uint64_t>(A), static_cast<uint64_t>(B))));
}

TCellValue CallLcm(TFormulaArgs AArgs, const TFormulaContext&) {
  double multiple = 1;
  int64_t nonBlanks = 0;
  const TCellErrorCode error = ForEachWhole(AArgs, [&](double ANumber) {
    ++nonBlanks;
    multiple = LeastCommonMultiple(multiple, ANumber);
  });
  if (error == ceNone && nonBlanks < CountValues(AArgs)) return TCellValue::FromNumber(0);
  return WholeOrError(error, multiple);
}

// Multiples ----------------------------------------------------------------------------------------------------------

/// A / AStep, or the integer that only the roundings of both and of the division keep it from: 0.7 / 0.1 is 7.
double QuotientOf(double A, double AStep) {
  const double quotient = A / AStep;
  const double nearest = std::round(quotient);
  return std::fabs(quotient - nearest) <= 4 * std::numeric_limits<double>::epsilon() * std::fabs(nearest) ? nearest
                                                                                                          : quotient;
}

/// The number as the first argument, its step, 1 when left out, without its sign, and a third argument or 0.
bool ReadMultiple(TFormulaArgs AArgs, std::array<double, 3>& ANumbers) {
  ANumbers = {0, 1, 0};
  if (!ReadNumbers(AArgs, ANumbers, 1)) return false;
  ANumbers[1] = std::fabs(ANumbers[1]);
  return true;
}

using TWhole = double (*)(double);
double RoundUp(double A) { return std::ceil(A); }
double RoundDown(double A) { return std::floor(A); }

template <TWhole Round>
TCellValue CallToMultiple(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 3> numbers{};
  if (!ReadMultiple(AArgs.first(std::min<size_t>(AArgs.size(), 2)), numbers)) return ValueError();
  const auto [number, step, mode] = numbers;
  return step == 0 ? TCellValue::FromNumber(0) : NumberOrError(Round(QuotientOf(number, step)) * step);
}

/// Rounds by Round; negative numbers, when a mode is given, by RoundNegative.
template <TWhole Round, TWhole RoundNegative>
TCellValue CallByMode(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 3> numbers{};
  if (!ReadMultiple(AArgs, numbers)) return ValueError();
  const auto [number, step, mode] = numbers;
  if (step == 0) return TCellValue::FromNumber(0);
  const double quotient = QuotientOf(number, step);
  return NumberOrError((number < 0 && mode != 0 ? RoundNegative(quotient) : Round(quotient)) * step);
}
constexpr TFunctionBody CallCeilingMath = CallByMode<RoundUp, RoundDown>;
constexpr TFunctionBody CallFloorMath = CallByMode<RoundDown, RoundUp>;

TCellValue CallMRound(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  const auto [number, step] = numbers;
  if (step == 0) return TCellValue::FromNumber(0);
  if ((number < 0 && step > 0) || (number > 0 && step < 0)) return NumError();
  return NumberOrError(std::round(number / step) * step);
}

TCellValue CallQuotient(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  return numbers[1] == 0 ? Div0Error() : NumberOrError(std::trunc(numbers[0] / numbers[1]));
}

double EvenOf(double A) { return std::copysign(2 * std::ceil(std::fabs(A) / 2), A); }

double OddOf(double A) {
  const double size = std::fabs(A);
  return std::copysign(size <= 1 ? 1 : 2 * std::ceil((size - 1) / 2) + 1, A == 0 ? 1 : A);
}

// Numerals -----------------------------------------------------------------------------------------------------------

constexpr double kMaxNumeralLength = 255;

bool IsRadix(double ARadix) { return ARadix >= 2 && ARadix <= 36; }

TCellValue CallBase(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 3> numbers{};
  if (!ReadNumbers(AArgs, numbers, 2)) return ValueError();
  for (double& number : numbers) number = std::trunc(number);
  const auto [number, radix, length] = numbers;
  if (!IsRadix(radix) || number < 0 || number >= kMaxWhole) return NumError();
  if (length < 0 || length > kMaxNumeralLength) return NumError();
  return TextOf(
      TText(DigitsOf(static_cast<uint64_t>(number), static_cast<unsigned>(radix), static_cast<size_t>(length))));
}

TCellValue CallDecimal(TFormulaArgs AArgs, const TFormulaContext&) {
  double radix = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[1], radix)) return ValueError();
  if (!IsRadix(std::trunc(radix))) return NumError();
  const TText text = ArgText(AArgs[0]);
  if (text.Length() > kMaxNumeralLength) return ValueError();
  return NumberOrError(NumberOfDigits(text, static_cast<unsigned>(radix)));
}

TCellValue CallRoman(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], number)) return ValueError();
  const std::u16string numeral = RomanNumeral(std::trunc(number));
  return numeral.empty() ? ValueError() : TextOf(TText(numeral));
}

TCellValue CallArabic(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TText text = ArgText(AArgs[0]);
  double number = 0;
  if (text.Length() > kMaxNumeralLength || !TryParseRoman(text, number)) return ValueError();
  return NumberOrError(number);
}

// Sums ---------------------------------------------------------------------------------------------------------------

TCellValue CallSumSq(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  double sum = 0;
  ForEachNumber(AArgs, [&](double ANumber) { sum += ANumber * ANumber; });
  return NumberOrError(sum);
}

double SquareDifference(double A, double B) { return A * A - B * B; }
double SquareSum(double A, double B) { return A * A + B * B; }
double DifferenceSquare(double A, double B) { return (A - B) * (A - B); }

/// Adds Term over the places at which both arguments have a number.
template <double (*Term)(double, double)>
TCellValue CallPairSum(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  const std::optional<TPairs> pairs = PairsOf(AArgs[0], AArgs[1]);
  if (!pairs) return NotAvailable();
  return NumberOrError(
      std::inner_product(pairs->First.begin(), pairs->First.end(), pairs->Second.begin(), 0.0, std::plus<>(), Term));
}

/// Coefficients that are blank or 0 add nothing.
TCellValue CallSeriesSum(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 3> numbers{};
  if (AArgs.size() < 4 || !ReadNumbers(AArgs, numbers)) return ValueError();
  const auto [base, exponent, step] = numbers;
  double sum = 0;
  const bool isNumeric =
      ForEachNonBlank(AArgs[3], [&, first = exponent, by = step, x = base](int64_t AIndex, const TValueView& AValue) {
        double coefficient = 0;
        if (!AsNumber(AValue, coefficient)) return false;
        if (coefficient != 0) sum += coefficient * std::pow(x, first + static_cast<double>(AIndex) * by);
        return true;
      });
  return isNumeric ? NumberOrError(sum) : ValueError();
}

// clang-format off
constexpr TFunctionDef kIntegerFunctions[] = {
    {.Name = u"ARABIC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallArabic,
     .Arguments = u"text", .Description = u"The number that a Roman numeral stands for."},
    {.Name = u"BASE", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallBase,
     .Arguments = u"number, radix, [length]",
     .Description = u"Digits of a number in a number system of radix 2 to 36."},
    {.Name = u"CEILING.MATH", .MinArgs = 1, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallCeilingMath,
     .Arguments = u"number, [step], [mode]",
     .Description = u"Rounds a number up to a multiple; negative ones away from 0 with a mode."},
    {.Name = u"CEILING.PRECISE", .Spellings = u"ISO.CEILING", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = CallToMultiple<RoundUp>, .Arguments = u"number, [step]",
     .Description = u"Rounds a number up to a multiple of the step, whatever the signs."},
    {.Name = u"COMBIN", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<Combinations>::Call,
     .Arguments = u"number, chosen", .Description = u"Ways to choose some of a number of things."},
    {.Name = u"COMBINA", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = NumericBody<CombinationsWithRepeats>::Call, .Arguments = u"number, chosen",
     .Description = u"Ways to choose some of a number of things, each any number of times."},
    {.Name = u"DECIMAL", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallDecimal,
     .Arguments = u"text, radix",
     .Description = u"The number that digits of a number system of radix 2 to 36 stand for."},
    {.Name = u"EVEN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<EvenOf>::Call,
     .InCompletion = true, .Arguments = u"number", .Description = u"Rounds a number away from 0 to an even integer."},
    {.Name = u"FACT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<FactorialOf>::Call,
     .InCompletion = true, .Arguments = u"number", .Description = u"Product of the integers from 1 to a whole number."},
    {.Name = u"FACTDOUBLE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<DoubleFactorialOf>::Call,
     .Arguments = u"number", .Description = u"Product of every second integer down from a number."},
    {.Name = u"FLOOR.MATH", .MinArgs = 1, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallFloorMath,
     .Arguments = u"number, [step], [mode]",
     .Description = u"Rounds a number down to a multiple; negative ones toward 0 with a mode."},
    {.Name = u"FLOOR.PRECISE", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallToMultiple<RoundDown>,
     .Arguments = u"number, [step]",
     .Description = u"Rounds a number down to a multiple of the step, whatever the signs."},
    {.Name = u"GCD", .MinArgs = 1, .Tier = ftrExtra, .Body = CallGcd,
     .Arguments = u"number1, [number2], ...", .Description = u"Greatest common divisor."},
    {.Name = u"LCM", .MinArgs = 1, .Tier = ftrExtra, .Body = CallLcm,
     .Arguments = u"number1, [number2], ...", .Description = u"Least common multiple."},
    {.Name = u"MROUND", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallMRound,
     .Arguments = u"number, step", .Description = u"Rounds a number to the nearest multiple of a step of its sign."},
    {.Name = u"MULTINOMIAL", .MinArgs = 1, .Tier = ftrExtra, .Body = CallMultinomial,
     .Arguments = u"number1, [number2], ...",
     .Description = u"Factorial of the sum divided by the product of the factorials."},
    {.Name = u"ODD", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<OddOf>::Call,
     .InCompletion = true, .Arguments = u"number", .Description = u"Rounds a number away from 0 to an odd integer."},
    {.Name = u"PERMUT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<Permutations>::Call,
     .Arguments = u"number, chosen", .Description = u"Ways to choose some of a number of things in order."},
    {.Name = u"PERMUTATIONA", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = NumericBody<PermutationsWithRepeats>::Call, .Arguments = u"number, chosen",
     .Description = u"Ways to choose in order, each thing any number of times."},
    {.Name = u"QUOTIENT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallQuotient,
     .Arguments = u"number, divisor", .Description = u"Integer part of a division."},
    {.Name = u"ROMAN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallRoman,
     .Arguments = u"number", .Description = u"Roman numeral of a number from 1 to 3999."},
    {.Name = u"SERIESSUM", .MinArgs = 4, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallSeriesSum,
     .Arguments = u"x, exponent, step, coefficients", .Description = u"Sum of a power series."},
    {.Name = u"SUMSQ", .MinArgs = 1, .Tier = ftrExtra, .Body = CallSumSq,
     .Arguments = u"number1, [number2], ...", .Description = u"Sum of the squares of numbers."},
    {.Name = u"SUMX2MY2", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPairSum<SquareDifference>,
     .Arguments = u"x_values, y_values", .Description = u"Sum of the differences of the squares of paired numbers."},
    {.Name = u"SUMX2PY2", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPairSum<SquareSum>,
     .Arguments = u"x_values, y_values", .Description = u"Sum of the squares of paired numbers."},
    {.Name = u"SUMXMY2", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallPairSum<DifferenceSquare>,
     .Arguments = u"x_values, y_values", .Description = u"Sum of the squared differences of paired numbers."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> IntegerFunctions() { return kIntegerFunctions; }

}  // namespace tessarine
