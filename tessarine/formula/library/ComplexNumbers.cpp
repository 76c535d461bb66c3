#include <tessarine/formula/FunctionTable.h>

#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/ComplexText.h>

namespace tessarine {

namespace {

using namespace detail;

using TComplex = std::complex<double>;

constexpr double kNoPart = std::numeric_limits<double>::quiet_NaN();
constexpr TComplex kPole{kNoPart, 0};  // what a division by 0 leaves

TCellErrorCode ReadComplexArg(TFormulaArgs AArgs, size_t AIndex, TComplexNumber& ANumber) {
  return AIndex < AArgs.size() ? ReadComplex(AArgs[AIndex].FirstView(), ANumber) : ceValue;
}

/// Numbers that are worked on together must not differ in their suffixes; those without one go with any.
bool TryJoinSuffix(TComplexNumber& ATarget, const TComplexNumber& AOther) {
  if (ATarget.Suffix == 0) ATarget.Suffix = AOther.Suffix;
  return AOther.Suffix == 0 || AOther.Suffix == ATarget.Suffix;
}

// One number ---------------------------------------------------------------------------------------------------------

double RealPart(const TComplex& A) { return A.real(); }
double ImaginaryPart(const TComplex& A) { return A.imag(); }
double AbsoluteValue(const TComplex& A) { return std::abs(A); }

template <double (*Part)(const TComplex&)>
TCellValue CallPart(TFormulaArgs AArgs, const TFormulaContext&) {
  TComplexNumber number;
  const TCellErrorCode error = ReadComplexArg(AArgs, 0, number);
  return error == ceNone ? NumberOrError(Part(number.Value)) : TCellValue::FromError(error);
}

TCellValue CallArgument(TFormulaArgs AArgs, const TFormulaContext&) {
  TComplexNumber number;
  const TCellErrorCode error = ReadComplexArg(AArgs, 0, number);
  if (error != ceNone) return TCellValue::FromError(error);
  return number.Value == TComplex() ? Div0Error() : NumberOrError(std::arg(number.Value));
}

TComplex Conjugate(const TComplex& A) { return std::conj(A); }
TComplex ComplexSine(const TComplex& A) { return std::sin(A); }
TComplex ComplexCosine(const TComplex& A) { return std::cos(A); }
TComplex ComplexTangent(const TComplex& A) { return std::tan(A); }
TComplex ComplexHyperbolicSine(const TComplex& A) { return std::sinh(A); }
TComplex ComplexHyperbolicCosine(const TComplex& A) { return std::cosh(A); }
TComplex ComplexExponential(const TComplex& A) { return std::exp(A); }
TComplex ComplexLogarithm(const TComplex& A) { return std::log(A); }
TComplex ComplexLogarithm10(const TComplex& A) { return std::log(A) / std::numbers::ln10; }
TComplex ComplexLogarithm2(const TComplex& A) { return std::log(A) / std::numbers::ln2; }
TComplex ComplexRoot(const TComplex& A) { return std::sqrt(A); }

/// A / B; a divisor of 0 gives a pole.
TComplex QuotientOfComplex(const TComplex& A, const TComplex& B) { return B == TComplex() ? kPole : A / B; }

bool IsPole(const TComplex& A) { return std::isnan(A.real()) && A.imag() == 0; }

TCellValue ResultOfComplex(const TComplexNumber& ANumber) {
  return IsPole(ANumber.Value) ? Div0Error() : ComplexOrError(ANumber);
}

template <TComplex (*Function)(const TComplex&)>
TComplex Inverse(const TComplex& A) {
  return QuotientOfComplex(1, Function(A));
}

template <TComplex (*Function)(const TComplex&)>
TCellValue CallComplexFunction(TFormulaArgs AArgs, const TFormulaContext&) {
  TComplexNumber number;
  const TCellErrorCode error = ReadComplexArg(AArgs, 0, number);
  if (error != ceNone) return TCellValue::FromError(error);
  return ResultOfComplex({Function(number.Value), number.Suffix});
}

TCellValue CallComplex(TFormulaArgs AArgs, const TFormulaContext&) {
  double real = 0;
  double imaginary = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[0], real) || !ArgAsNumber(AArgs[1], imaginary)) return ValueError();
  const TText suffix = AArgs.size() > 2 ? ArgText(AArgs[2]) : TText(u"i");
  if (suffix != u"i" && suffix != u"j") return ValueError();
  return ComplexOrError({{real, imaginary}, suffix.View()[0]});
}

/// Whole powers by repeated squaring, so that those of whole numbers have no residue.
TComplex WholePower(TComplex ABase, int AExponent) {
  TComplex power = 1;
  for (int rest = AExponent; rest > 0; rest /= 2, ABase *= ABase) {
    if (rest % 2 == 1) power *= ABase;
  }
  return power;
}

constexpr double kMostSquared = 1024;  // whole exponents beyond it gain nothing from squaring

TComplex ComplexPower(const TComplex& A, double AExponent) {
  if (A == TComplex()) return AExponent > 0 ? TComplex() : TComplex(kNoPart, kNoPart);
  if (std::fabs(AExponent) > kMostSquared || AExponent != std::trunc(AExponent)) {
    return std::polar(std::pow(std::abs(A), AExponent), AExponent * std::arg(A));
  }
  const TComplex power = WholePower(A, static_cast<int>(std::fabs(AExponent)));
  return AExponent < 0 ? QuotientOfComplex(1, power) : power;
}

TCellValue CallComplexPower(TFormulaArgs AArgs, const TFormulaContext&) {
  TComplexNumber number;
  double exponent = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[1], exponent)) return ValueError();
  const TCellErrorCode error = ReadComplexArg(AArgs, 0, number);
  if (error != ceNone) return TCellValue::FromError(error);
  return ComplexOrError({ComplexPower(number.Value, exponent), number.Suffix});
}

// Several numbers ----------------------------------------------------------------------------------------------------

TComplex DifferenceOfComplex(const TComplex& A, const TComplex& B) { return A - B; }
TComplex SumOfComplex(const TComplex& A, const TComplex& B) { return A + B; }
TComplex ProductOfComplex(const TComplex& A, const TComplex& B) { return A * B; }

template <TComplex (*Op)(const TComplex&, const TComplex&)>
TCellValue CallComplexPair(TFormulaArgs AArgs, const TFormulaContext&) {
  TComplexNumber left;
  TComplexNumber right;
  for (const TCellErrorCode error : {ReadComplexArg(AArgs, 0, left), ReadComplexArg(AArgs, 1, right)}) {
    if (error != ceNone) return TCellValue::FromError(error);
  }
  return TryJoinSuffix(left, right) ? ResultOfComplex({Op(left.Value, right.Value), left.Suffix}) : ValueError();
}
constexpr TFunctionBody CallDifference = CallComplexPair<DifferenceOfComplex>;
constexpr TFunctionBody CallQuotientOfComplex = CallComplexPair<QuotientOfComplex>;

/// Joins all values that are not blank; 0 when there are none.
template <TComplex (*Op)(const TComplex&, const TComplex&)>
TCellValue CallComplexFold(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  TComplexNumber result;
  bool isFirst = true;
  TCellErrorCode error = ceNone;
  const auto join = [&](int64_t, const TValueView& AValue) {
    TComplexNumber number;
    error = ReadComplex(AValue, number);
    if (error == ceNone && !TryJoinSuffix(result, number)) error = ceValue;
    result.Value = isFirst ? number.Value : Op(result.Value, number.Value);
    isFirst = false;
    return error == ceNone;
  };
  for (const TFormulaArg& arg : AArgs) {
    if (!ForEachNonBlank(arg, join)) return TCellValue::FromError(error);
  }
  return ComplexOrError(result);
}
constexpr TFunctionBody CallComplexSum = CallComplexFold<SumOfComplex>;
constexpr TFunctionBody CallComplexProduct = CallComplexFold<ProductOfComplex>;

// clang-format off
constexpr TFunctionDef kComplexFunctions[] = {
    {.Name = u"COMPLEX", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallComplex,
     .Arguments = u"real, imaginary, [suffix]", .Description = u"The text of a complex number."},
    {.Name = u"IMABS", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallPart<AbsoluteValue>,
     .Arguments = u"number", .Description = u"Absolute value of a complex number."},
    {.Name = u"IMAGINARY", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallPart<ImaginaryPart>,
     .Arguments = u"number", .Description = u"Imaginary part of a complex number."},
    {.Name = u"IMARGUMENT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallArgument,
     .Arguments = u"number", .Description = u"Angle of a complex number in radians."},
    {.Name = u"IMCONJUGATE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<Conjugate>,
     .Arguments = u"number", .Description = u"Conjugate of a complex number."},
    {.Name = u"IMCOS", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexCosine>,
     .Arguments = u"number", .Description = u"Cosine of a complex number."},
    {.Name = u"IMCOSH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = CallComplexFunction<ComplexHyperbolicCosine>, .Arguments = u"number",
     .Description = u"Hyperbolic cosine of a complex number."},
    {.Name = u"IMCOT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = CallComplexFunction<Inverse<ComplexTangent>>, .Arguments = u"number",
     .Description = u"Cotangent of a complex number."},
    {.Name = u"IMCSC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<Inverse<ComplexSine>>,
     .Arguments = u"number", .Description = u"Cosecant of a complex number."},
    {.Name = u"IMCSCH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = CallComplexFunction<Inverse<ComplexHyperbolicSine>>, .Arguments = u"number",
     .Description = u"Hyperbolic cosecant of a complex number."},
    {.Name = u"IMDIV", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallQuotientOfComplex,
     .Arguments = u"number1, number2", .Description = u"Quotient of two complex numbers."},
    {.Name = u"IMEXP", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexExponential>,
     .Arguments = u"number", .Description = u"The number e raised to a complex number."},
    {.Name = u"IMLN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexLogarithm>,
     .Arguments = u"number", .Description = u"Natural logarithm of a complex number."},
    {.Name = u"IMLOG10", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexLogarithm10>,
     .Arguments = u"number", .Description = u"Logarithm to base 10 of a complex number."},
    {.Name = u"IMLOG2", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexLogarithm2>,
     .Arguments = u"number", .Description = u"Logarithm to base 2 of a complex number."},
    {.Name = u"IMPOWER", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallComplexPower,
     .Arguments = u"number, exponent", .Description = u"A complex number raised to a real power."},
    {.Name = u"IMPRODUCT", .MinArgs = 1, .Tier = ftrExtra, .Body = CallComplexProduct,
     .Arguments = u"number1, [number2], ...", .Description = u"Product of complex numbers."},
    {.Name = u"IMREAL", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallPart<RealPart>,
     .Arguments = u"number", .Description = u"Real part of a complex number."},
    {.Name = u"IMSEC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = CallComplexFunction<Inverse<ComplexCosine>>, .Arguments = u"number",
     .Description = u"Secant of a complex number."},
    {.Name = u"IMSECH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = CallComplexFunction<Inverse<ComplexHyperbolicCosine>>, .Arguments = u"number",
     .Description = u"Hyperbolic secant of a complex number."},
    {.Name = u"IMSIN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexSine>,
     .Arguments = u"number", .Description = u"Sine of a complex number."},
    {.Name = u"IMSINH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra,
     .Body = CallComplexFunction<ComplexHyperbolicSine>, .Arguments = u"number",
     .Description = u"Hyperbolic sine of a complex number."},
    {.Name = u"IMSQRT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexRoot>,
     .Arguments = u"number", .Description = u"Square root of a complex number."},
    {.Name = u"IMSUB", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallDifference,
     .Arguments = u"number1, number2", .Description = u"Difference of two complex numbers."},
    {.Name = u"IMSUM", .MinArgs = 1, .Tier = ftrExtra, .Body = CallComplexSum,
     .Arguments = u"number1, [number2], ...", .Description = u"Sum of complex numbers."},
    {.Name = u"IMTAN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallComplexFunction<ComplexTangent>,
     .Arguments = u"number", .Description = u"Tangent of a complex number."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> ComplexFunctions() { return kComplexFunctions; }

}  // namespace tessarine
