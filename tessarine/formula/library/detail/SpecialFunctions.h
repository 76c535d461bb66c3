#pragma once

/// Functions of mathematics beyond <cmath>. None of them throws: outside its domain a function is NaN, beyond the range
/// of doubles an infinity or 0.
namespace tessarine::detail {

/// The error function 2/sqrt(pi) * integral of exp(-t*t) from 0 to A.
double ErrorFunction(double A);

/// 1 - ErrorFunction(A), without loss of digits for large A.
double ErrorFunctionComplement(double A);

/// The gamma function; NaN at its poles, which are 0 and the negative integers.
double GammaFunction(double A);

/// The natural logarithm of the absolute gamma function; NaN at the poles.
double LogGamma(double A);

/// Bessel functions of whole orders from 0. J and I take any number; Y and K a number above 0.
double BesselJ(double AOrder, double A);
double BesselY(double AOrder, double A);
double BesselI(double AOrder, double A);
double BesselK(double AOrder, double A);

}  // namespace tessarine::detail
