#include <tessarine/formula/FunctionTable.h>

#include <cmath>
#include <numbers>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/Random.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine {

namespace {

using namespace detail;

using TUnaryNumber = TCellValue (*)(double);
using TBinaryNumber = TCellValue (*)(double, double);

template <TUnaryNumber Op>
TCellValue CallUnary(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], number)) return ValueError();
  return Op(number);
}

template <TBinaryNumber Op>
TCellValue CallBinary(TFormulaArgs AArgs, const TFormulaContext&) {
  double left = 0;
  double right = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[0], left) || !ArgAsNumber(AArgs[1], right)) return ValueError();
  return Op(left, right);
}

/// A number and the power of ten of a count of digits, 0 when it is left out.
template <TBinaryNumber Op>
TCellValue CallWithDigits(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  double digits = 0;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], number)) return ValueError();
  if (AArgs.size() > 1 && !ArgAsNumber(AArgs[1], digits)) return ValueError();
  return Op(number, std::pow(10.0, std::trunc(digits)));
}

/// The integer part of a number that a 64-bit integer holds, 0 of any other.
double WholePart64(double ANumber) {
  return std::fabs(ANumber) < 0x1p63 || ANumber == -0x1p63 ? std::trunc(ANumber) : 0;
}

TCellValue AbsOf(double A) { return NumberOrError(std::fabs(A)); }
TCellValue SignOf(double A) { return TCellValue::FromNumber(A > 0 ? 1 : A < 0 ? -1 : 0); }
TCellValue ExpOf(double A) { return NumberOrError(std::exp(A)); }
TCellValue PowerOf(double ABase, double AExponent) { return NumberOrError(std::pow(ABase, AExponent)); }
TCellValue SqrtOf(double A) { return A < 0 ? NumError() : NumberOrError(std::sqrt(A)); }
TCellValue LnOf(double A) { return A <= 0 ? NumError() : NumberOrError(std::log(A)); }
TCellValue Log10Of(double A) { return A <= 0 ? NumError() : NumberOrError(std::log10(A)); }

// These work on 32-bit integers that wrap around, which is documented behaviour: INT(3000000000) is -1294967296.
TCellValue IntOf(double A) { return TCellValue::FromNumber(FloorInt32(A)); }
TCellValue CeilingOf(double A, double AStep) {
  return AStep == 0 ? TCellValue::FromNumber(0) : NumberOrError(CeilInt32(A / AStep) * AStep);
}
TCellValue FloorOf(double A, double AStep) {
  return AStep == 0 ? Div0Error() : NumberOrError(FloorInt32(A / AStep) * AStep);
}
TCellValue ModOf(double A, double ADivisor) {
  return ADivisor == 0 ? Div0Error() : NumberOrError(A - ADivisor * FloorInt32(A / ADivisor));
}
TCellValue RoundUpOf(double A, double APower) {
  return NumberOrError(std::copysign(1.0, A) * (CeilInt32(std::fabs(A) * APower) / APower));
}
TCellValue RoundDownOf(double A, double APower) {
  return NumberOrError(std::copysign(1.0, A) * (FloorInt32(std::fabs(A) * APower) / APower));
}

// And these on 64-bit ones.
TCellValue TruncOf(double A, double APower) {
  return NumberOrError(std::copysign(1.0, A) * (WholePart64(std::fabs(A) * APower) / APower));
}
TCellValue RoundOf(double A, double APower) {
  return NumberOrError(WholePart64(A * APower + (A < 0 ? -0.5 : 0.5)) / APower);
}

TCellValue CallLog(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  double base = 10;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], number)) return ValueError();
  if (AArgs.size() > 1 && !ArgAsNumber(AArgs[1], base)) return ValueError();
  if (number <= 0 || base <= 0 || base == 1) return NumError();
  return NumberOrError(base == 10 ? std::log10(number) : std::log2(number) / std::log2(base));
}

TCellValue CallPi(TFormulaArgs, const TFormulaContext&) { return TCellValue::FromNumber(std::numbers::pi); }

TCellValue CallRand(TFormulaArgs, const TFormulaContext&) { return TCellValue::FromNumber(RandomUnit()); }

TCellValue CallRandBetween(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t low = 0;
  int64_t high = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[0], low) || !ArgAsInt64(AArgs[1], high)) return ValueError();
  if (high < low) return NumError();
  const uint64_t drawn = RandomUpTo(static_cast<uint64_t>(high) - static_cast<uint64_t>(low));
  return TCellValue::FromNumber(static_cast<double>(static_cast<int64_t>(static_cast<uint64_t>(low) + drawn)));
}

// clang-format off
constexpr TFunctionDef kNumberFunctions[] = {
    {.Name = u"ABS", .MinArgs = 1, .MaxArgs = 1, .Body = CallUnary<AbsOf>, .InCompletion = true,
     .Arguments = u"number", .Description = u"A number without its sign."},
    {.Name = u"CEILING", .MinArgs = 2, .MaxArgs = 2, .Body = CallBinary<CeilingOf>, .InCompletion = true,
     .Arguments = u"number, step", .Description = u"Rounds a number up to a multiple of the step."},
    {.Name = u"EXP", .MinArgs = 1, .MaxArgs = 1, .Body = CallUnary<ExpOf>, .InCompletion = true,
     .Arguments = u"number", .Description = u"The number e raised to a power."},
    {.Name = u"FLOOR", .MinArgs = 2, .MaxArgs = 2, .Body = CallBinary<FloorOf>, .InCompletion = true,
     .Arguments = u"number, step", .Description = u"Rounds a number down to a multiple of the step."},
    {.Name = u"INT", .MinArgs = 1, .MaxArgs = 1, .Body = CallUnary<IntOf>, .InCompletion = true,
     .Arguments = u"number", .Description = u"Rounds a number down to an integer."},
    {.Name = u"LN", .MinArgs = 1, .MaxArgs = 1, .Body = CallUnary<LnOf>, .InCompletion = true,
     .Arguments = u"number", .Description = u"Natural logarithm of a number."},
    {.Name = u"LOG", .MinArgs = 1, .MaxArgs = 2, .Body = CallLog, .InCompletion = true,
     .Arguments = u"number, [base]", .Description = u"Logarithm of a number to a base, 10 when left out."},
    {.Name = u"LOG10", .MinArgs = 1, .MaxArgs = 1, .Body = CallUnary<Log10Of>, .InCompletion = true,
     .Arguments = u"number", .Description = u"Logarithm of a number to base 10."},
    {.Name = u"MOD", .MinArgs = 2, .MaxArgs = 2, .Body = CallBinary<ModOf>, .InCompletion = true,
     .Arguments = u"number, divisor", .Description = u"Remainder of a division, with the sign of the divisor."},
    {.Name = u"PI", .MinArgs = 0, .MaxArgs = 0, .Body = CallPi, .InCompletion = true,
     .Arguments = u"", .Description = u"The ratio of a circle's circumference to its diameter."},
    {.Name = u"POWER", .MinArgs = 2, .MaxArgs = 2, .Body = CallBinary<PowerOf>, .InCompletion = true,
     .Arguments = u"base, exponent", .Description = u"A number raised to a power."},
    {.Name = u"RAND", .MinArgs = 0, .MaxArgs = 0, .Body = CallRand, .InCompletion = true,
     .Arguments = u"", .Description = u"A random number from 0 to below 1."},
    {.Name = u"RANDBETWEEN", .MinArgs = 2, .MaxArgs = 2, .Body = CallRandBetween, .InCompletion = true,
     .Arguments = u"lowest, highest", .Description = u"A random integer between two integers, both included."},
    {.Name = u"ROUND", .MinArgs = 1, .MaxArgs = 2, .Body = CallWithDigits<RoundOf>, .InCompletion = true,
     .Arguments = u"number, [digits]", .Description = u"Rounds a number to digits behind the point, half away from 0."},
    {.Name = u"ROUNDDOWN", .MinArgs = 1, .MaxArgs = 2, .Body = CallWithDigits<RoundDownOf>, .InCompletion = true,
     .Arguments = u"number, [digits]", .Description = u"Rounds a number to digits behind the point, toward 0."},
    {.Name = u"ROUNDUP", .MinArgs = 1, .MaxArgs = 2, .Body = CallWithDigits<RoundUpOf>, .InCompletion = true,
     .Arguments = u"number, [digits]", .Description = u"Rounds a number to digits behind the point, away from 0."},
    {.Name = u"SIGN", .MinArgs = 1, .MaxArgs = 1, .Body = CallUnary<SignOf>, .InCompletion = true,
     .Arguments = u"number", .Description = u"1 for a number above 0, -1 for one below, else 0."},
    {.Name = u"SQRT", .MinArgs = 1, .MaxArgs = 1, .Body = CallUnary<SqrtOf>, .InCompletion = true,
     .Arguments = u"number", .Description = u"Square root of a number."},
    {.Name = u"TRUNC", .MinArgs = 1, .MaxArgs = 2, .Body = CallWithDigits<TruncOf>, .InCompletion = true,
     .Arguments = u"number, [digits]", .Description = u"Cuts a number behind its digits after the point."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> NumberFunctions() { return kNumberFunctions; }

}  // namespace tessarine
