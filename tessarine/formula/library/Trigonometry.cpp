#include <tessarine/formula/FunctionTable.h>

#include <cmath>
#include <limits>
#include <numbers>

#include <tessarine/formula/library/detail/NumericBody.h>

namespace tessarine {

namespace {

using namespace detail;

constexpr double kNoAngle = std::numeric_limits<double>::quiet_NaN();

double Sine(double A) { return std::sin(A); }
double Cosine(double A) { return std::cos(A); }
double Tangent(double A) { return std::tan(A); }
double ArcSine(double A) { return std::asin(A); }
double ArcCosine(double A) { return std::acos(A); }
double ArcTangent(double A) { return std::atan(A); }
double ArcCotangent(double A) { return std::atan2(1, A); }

double HyperbolicSine(double A) { return std::sinh(A); }
double HyperbolicCosine(double A) { return std::cosh(A); }
double HyperbolicTangent(double A) { return std::tanh(A); }
double AreaTangent(double A) { return std::atanh(A); }
double AreaCotangent(double A) { return std::fabs(A) > 1 ? std::log((1 + A) / (A - 1)) / 2 : kNoAngle; }

// The plain formulas, whose squares overflow and whose sum cancels out for large numbers, are documented behaviour.
double AreaSine(double A) { return std::log(A + std::sqrt(1 + A * A)); }
double AreaCosine(double A) { return A < 1 ? kNoAngle : std::log(A + std::sqrt(A * A - 1)); }

double Degrees(double A) { return A * (180 / std::numbers::pi); }
double Radians(double A) { return A * (std::numbers::pi / 180); }
double RootOfPiTimes(double A) { return std::sqrt(A * std::numbers::pi); }

template <double (*Divisor)(double)>
TCellValue CallReciprocal(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 1> number{};
  if (!ReadNumbers(AArgs, number)) return ValueError();
  const double divisor = Divisor(number[0]);
  return divisor == 0 ? Div0Error() : NumberOrError(1 / divisor);
}

TCellValue CallAtan2(TFormulaArgs AArgs, const TFormulaContext&) {
  std::array<double, 2> point{};
  if (!ReadNumbers(AArgs, point)) return ValueError();
  return point[0] == 0 && point[1] == 0 ? Div0Error() : NumberOrError(std::atan2(point[1], point[0]));
}

// clang-format off
constexpr TFunctionDef kTrigonometryFunctions[] = {
    {.Name = u"ACOS", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<ArcCosine>::Call,
     .InCompletion = true, .Arguments = u"number", .Description = u"Arc cosine in radians of a number from -1 to 1."},
    {.Name = u"ACOSH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<AreaCosine>::Call,
     .Arguments = u"number", .Description = u"Inverse hyperbolic cosine of a number from 1."},
    {.Name = u"ACOT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<ArcCotangent>::Call,
     .Arguments = u"number", .Description = u"Arc cotangent in radians, from 0 to pi."},
    {.Name = u"ACOTH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<AreaCotangent>::Call,
     .Arguments = u"number", .Description = u"Inverse hyperbolic cotangent of a number below -1 or above 1."},
    {.Name = u"ASIN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<ArcSine>::Call,
     .InCompletion = true, .Arguments = u"number", .Description = u"Arc sine in radians of a number from -1 to 1."},
    {.Name = u"ASINH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<AreaSine>::Call,
     .Arguments = u"number", .Description = u"Inverse hyperbolic sine."},
    {.Name = u"ATAN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<ArcTangent>::Call,
     .InCompletion = true, .Arguments = u"number", .Description = u"Arc tangent in radians, from -pi/2 to pi/2."},
    {.Name = u"ATAN2", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallAtan2, .InCompletion = true,
     .Arguments = u"x, y", .Description = u"Angle in radians of the point with these coordinates, from -pi to pi."},
    {.Name = u"ATANH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<AreaTangent>::Call,
     .Arguments = u"number", .Description = u"Inverse hyperbolic tangent of a number between -1 and 1."},
    {.Name = u"COS", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<Cosine>::Call,
     .InCompletion = true, .Arguments = u"angle", .Description = u"Cosine of an angle in radians."},
    {.Name = u"COSH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<HyperbolicCosine>::Call,
     .Arguments = u"number", .Description = u"Hyperbolic cosine."},
    {.Name = u"COT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallReciprocal<Tangent>,
     .Arguments = u"angle", .Description = u"Cotangent of an angle in radians."},
    {.Name = u"COTH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallReciprocal<HyperbolicTangent>,
     .Arguments = u"number", .Description = u"Hyperbolic cotangent."},
    {.Name = u"CSC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallReciprocal<Sine>,
     .Arguments = u"angle", .Description = u"Cosecant of an angle in radians."},
    {.Name = u"CSCH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallReciprocal<HyperbolicSine>,
     .Arguments = u"number", .Description = u"Hyperbolic cosecant."},
    {.Name = u"DEGREES", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<Degrees>::Call,
     .Arguments = u"angle", .Description = u"Converts radians to degrees."},
    {.Name = u"RADIANS", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<Radians>::Call,
     .Arguments = u"angle", .Description = u"Converts degrees to radians."},
    {.Name = u"SEC", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallReciprocal<Cosine>,
     .Arguments = u"angle", .Description = u"Secant of an angle in radians."},
    {.Name = u"SECH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallReciprocal<HyperbolicCosine>,
     .Arguments = u"number", .Description = u"Hyperbolic secant."},
    {.Name = u"SIN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<Sine>::Call,
     .InCompletion = true, .Arguments = u"angle", .Description = u"Sine of an angle in radians."},
    {.Name = u"SINH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<HyperbolicSine>::Call,
     .Arguments = u"number", .Description = u"Hyperbolic sine."},
    {.Name = u"SQRTPI", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<RootOfPiTimes>::Call,
     .Arguments = u"number", .Description = u"Square root of a number times pi."},
    {.Name = u"TAN", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<Tangent>::Call,
     .InCompletion = true, .Arguments = u"angle", .Description = u"Tangent of an angle in radians."},
    {.Name = u"TANH", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<HyperbolicTangent>::Call,
     .Arguments = u"number", .Description = u"Hyperbolic tangent."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> TrigonometryFunctions() { return kTrigonometryFunctions; }

}  // namespace tessarine
