#pragma once

#include <complex>

#include <tessarine/core/values/CellValue.h>

/// Complex numbers as texts: "3+4i", "-j", "2.5".
namespace tessarine::detail {

struct TComplexNumber {
  std::complex<double> Value;
  char16_t Suffix = 0;  // "i" or "j"; 0 where no imaginary part tells
};

/// Reads a complex number: a text, a number as its real part, a blank as 0. ceValue for a Boolean or an error, ceNum
/// for any other text.
TCellErrorCode ReadComplex(const TValueView& AValue, TComplexNumber& ANumber);

/// The text of a complex number, its parts as numbers are shown; a part of 0 and a coefficient of 1 are left out. The
/// suffix is "i" where there is none. #NUM! when a part is not finite.
TCellValue ComplexOrError(const TComplexNumber& ANumber);

}  // namespace tessarine::detail
