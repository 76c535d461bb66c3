#include <tessarine/formula/FunctionTable.h>

#include <cmath>
#include <optional>

#include <tessarine/formula/library/detail/Numerals.h>
#include <tessarine/formula/library/detail/NumericBody.h>
#include <tessarine/formula/library/detail/SpecialFunctions.h>
#include <tessarine/formula/library/detail/UnitTable.h>

namespace tessarine {

namespace {

using namespace detail;

// Number bases -------------------------------------------------------------------------------------------------------
// Texts of up to ten digits; a full text whose first bit is set is negative, in two's complement.

constexpr size_t kMostDigits = 10;

struct TRadix {
  unsigned Radix;
  int64_t Modulus;  // Radix to the power of ten; numbers run from minus half of it to below half of it
};
constexpr TRadix kBinary{2, int64_t{1} << 10};
constexpr TRadix kOctal{8, int64_t{1} << 30};
constexpr TRadix kHex{16, int64_t{1} << 40};

/// Reads digits: ceValue for a Boolean or error, ceNum for more than ten or what is no digit.
TCellErrorCode ReadDigits(TFormulaArgs AArgs, const TRadix& ARadix, int64_t& ANumber) {
  if (AArgs.empty()) return ceValue;
  const TCellValueKind kind = AArgs[0].FirstView().Kind;
  if (kind == cvkBoolean || kind == cvkError) return ceValue;
  const TText digits = ArgText(AArgs[0]);
  const double number = NumberOfDigits(digits, ARadix.Radix);
  if (digits.Length() > kMostDigits || std::isnan(number)) return ceNum;
  ANumber = static_cast<int64_t>(number);
  if (ANumber >= ARadix.Modulus / 2) ANumber -= ARadix.Modulus;
  return ceNone;
}

/// The digits of a number in the places that the second argument asks for; a negative one takes all ten.
TCellValue DigitsInPlaces(TFormulaArgs AArgs, int64_t ANumber, const TRadix& ARadix) {
  double places = 0;
  if (AArgs.size() > 1) {
    if (!ArgAsNumber(AArgs[1], places)) return ValueError();
    places = std::trunc(places);
    if (places < 1 || places > kMostDigits) return NumError();
  }
  if (ANumber < -ARadix.Modulus / 2 || ANumber >= ARadix.Modulus / 2) return NumError();
  const auto number = static_cast<uint64_t>(ANumber < 0 ? ANumber + ARadix.Modulus : ANumber);
  const std::u16string digits = DigitsOf(number, ARadix.Radix, ANumber < 0 ? 0 : static_cast<size_t>(places));
  return ANumber >= 0 && places > 0 && static_cast<double>(digits.size()) > places ? NumError() : TextOf(TText(digits));
}

template <const TRadix& From>
TCellValue CallToDecimal(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t number = 0;
  const TCellErrorCode error = ReadDigits(AArgs, From, number);
  return error == ceNone ? TCellValue::FromNumber(static_cast<double>(number)) : TCellValue::FromError(error);
}

template <const TRadix& From, const TRadix& To>
TCellValue CallRebase(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t number = 0;
  const TCellErrorCode error = ReadDigits(AArgs, From, number);
  return error == ceNone ? DigitsInPlaces(AArgs, number, To) : TCellValue::FromError(error);
}

template <const TRadix& To>
TCellValue CallFromDecimal(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t number = 0;
  return !AArgs.empty() && ArgAsInt64(AArgs[0], number) ? DigitsInPlaces(AArgs, number, To) : ValueError();
}

// Bits ---------------------------------------------------------------------------------------------------------------

constexpr double kBitsEnd = 0x1p48;
constexpr double kMaxShift = 53;

bool IsBitNumber(double A) { return A >= 0 && A < kBitsEnd; }

uint64_t BitsOfBoth(uint64_t A, uint64_t B) { return A & B; }
uint64_t BitsOfEither(uint64_t A, uint64_t B) { return A | B; }
uint64_t BitsOfOne(uint64_t A, uint64_t B) { return A ^ B; }

template <uint64_t (*Op)(uint64_t, uint64_t)>
TCellValue CallBits(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  for (double& number : numbers) number = std::trunc(number);
  if (!IsBitNumber(numbers[0]) || !IsBitNumber(numbers[1])) return NumError();
  return TCellValue::FromNumber(
      static_cast<double>(Op(static_cast<uint64_t>(numbers[0]), static_cast<uint64_t>(numbers[1]))));
}

/// Direction 1 shifts to the left, -1 to the right; negative counts the other way.
template <int Direction>
TCellValue CallShift(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  const double number = std::trunc(numbers[0]);
  const double shift = std::trunc(numbers[1]) * Direction;
  if (!IsBitNumber(number) || std::fabs(shift) > kMaxShift) return NumError();
  const double shifted = std::floor(std::ldexp(number, static_cast<int>(shift)));
  return IsBitNumber(shifted) ? NumberOrError(shifted) : NumError();
}

// Steps and special functions ----------------------------------------------------------------------------------------

TCellValue CallDelta(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> numbers{};
  if (!ReadNumbers(AArgs, numbers, 1)) return ValueError();
  return TCellValue::FromNumber(numbers[0] == numbers[1] ? 1 : 0);
}

TCellValue CallGeStep(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> numbers{};
  if (!ReadNumbers(AArgs, numbers, 1)) return ValueError();
  return TCellValue::FromNumber(numbers[0] >= numbers[1] ? 1 : 0);
}

/// The integral of the error function between two numbers; on one side of 0 by the complements, which keep their
/// digits.
double ErrorFunctionBetween(double ALower, double AUpper) {
  if (ALower > 0 && AUpper > 0) return ErrorFunctionComplement(ALower) - ErrorFunctionComplement(AUpper);
  if (ALower < 0 && AUpper < 0) return ErrorFunctionComplement(-AUpper) - ErrorFunctionComplement(-ALower);
  return ErrorFunction(AUpper) - ErrorFunction(ALower);
}

TCellValue CallErf(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> bounds{};
  if (!ReadNumbers(AArgs, bounds, 1)) return ValueError();
  return NumberOrError(AArgs.size() == 1 ? ErrorFunction(bounds[0]) : ErrorFunctionBetween(bounds[0], bounds[1]));
}

template <double (*Function)(double, double)>
TCellValue CallBessel(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> numbers{};
  if (!ReadNumbers(AArgs, numbers)) return ValueError();
  return NumberOrError(Function(std::trunc(numbers[1]), numbers[0]));
}

TCellValue CallConvert(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  if (AArgs.size() < 3 || !ArgAsNumber(AArgs[0], number)) return ValueError();
  const std::optional<double> converted = ConvertUnit(number, ArgText(AArgs[1]), ArgText(AArgs[2]));
  return converted ? NumberOrError(*converted) : NotAvailable();
}

// clang-format off
constexpr TFunctionDef kEngineeringFunctions[] = {
    {.Name = u"BESSELI", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallBessel<BesselI>,
     .Arguments = u"x, order", .Description = u"Modified Bessel function of the first kind."},
    {.Name = u"BESSELJ", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallBessel<BesselJ>,
     .Arguments = u"x, order", .Description = u"Bessel function of the first kind."},
    {.Name = u"BESSELK", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallBessel<BesselK>,
     .Arguments = u"x, order", .Description = u"Modified Bessel function of the second kind."},
    {.Name = u"BESSELY", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallBessel<BesselY>,
     .Arguments = u"x, order", .Description = u"Bessel function of the second kind."},
    {.Name = u"BIN2DEC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallToDecimal<kBinary>,
     .Arguments = u"digits", .Description = u"Converts a binary number to decimal."},
    {.Name = u"BIN2HEX", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallRebase<kBinary, kHex>,
     .Arguments = u"digits, [places]", .Description = u"Converts a binary number to hexadecimal."},
    {.Name = u"BIN2OCT", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallRebase<kBinary, kOctal>,
     .Arguments = u"digits, [places]", .Description = u"Converts a binary number to octal."},
    {.Name = u"BITAND", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallBits<BitsOfBoth>,
     .Arguments = u"number1, number2", .Description = u"Bits that two numbers have in common."},
    {.Name = u"BITLSHIFT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallShift<1>,
     .Arguments = u"number, bits", .Description = u"Shifts a number by bits to the left."},
    {.Name = u"BITOR", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallBits<BitsOfEither>,
     .Arguments = u"number1, number2", .Description = u"Bits that at least one of two numbers has."},
    {.Name = u"BITRSHIFT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallShift<-1>,
     .Arguments = u"number, bits", .Description = u"Shifts a number by bits to the right."},
    {.Name = u"BITXOR", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallBits<BitsOfOne>,
     .Arguments = u"number1, number2", .Description = u"Bits that exactly one of two numbers has."},
    {.Name = u"CONVERT", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallConvert,
     .Arguments = u"number, from_unit, to_unit",
     .Description = u"Converts a number from one unit of measurement to another."},
    {.Name = u"DEC2BIN", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallFromDecimal<kBinary>,
     .Arguments = u"number, [places]", .Description = u"Converts a decimal number to binary."},
    {.Name = u"DEC2HEX", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallFromDecimal<kHex>,
     .Arguments = u"number, [places]", .Description = u"Converts a decimal number to hexadecimal."},
    {.Name = u"DEC2OCT", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallFromDecimal<kOctal>,
     .Arguments = u"number, [places]", .Description = u"Converts a decimal number to octal."},
    {.Name = u"DELTA", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallDelta,
     .Arguments = u"number1, [number2]", .Description = u"1 when two numbers are equal, else 0."},
    {.Name = u"ERF", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallErf,
     .Arguments = u"lower, [upper]", .Description = u"Error function from 0 to a number or between two numbers."},
    {.Name = u"ERF.PRECISE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<ErrorFunction>::Call,
     .Arguments = u"number", .Description = u"Error function from 0 to a number."},
    {.Name = u"ERFC", .Spellings = u"ERFC.PRECISE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = NumericBody<ErrorFunctionComplement>::Call, .Arguments = u"number",
     .Description = u"Complement of the error function."},
    {.Name = u"GESTEP", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallGeStep,
     .Arguments = u"number, [step]", .Description = u"1 for a number from the step on, else 0."},
    {.Name = u"HEX2BIN", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallRebase<kHex, kBinary>,
     .Arguments = u"digits, [places]", .Description = u"Converts a hexadecimal number to binary."},
    {.Name = u"HEX2DEC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallToDecimal<kHex>,
     .Arguments = u"digits", .Description = u"Converts a hexadecimal number to decimal."},
    {.Name = u"HEX2OCT", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallRebase<kHex, kOctal>,
     .Arguments = u"digits, [places]", .Description = u"Converts a hexadecimal number to octal."},
    {.Name = u"OCT2BIN", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallRebase<kOctal, kBinary>,
     .Arguments = u"digits, [places]", .Description = u"Converts an octal number to binary."},
    {.Name = u"OCT2DEC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallToDecimal<kOctal>,
     .Arguments = u"digits", .Description = u"Converts an octal number to decimal."},
    {.Name = u"OCT2HEX", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallRebase<kOctal, kHex>,
     .Arguments = u"digits, [places]", .Description = u"Converts an octal number to hexadecimal."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> EngineeringFunctions() { return kEngineeringFunctions; }

}  // namespace tessarine
