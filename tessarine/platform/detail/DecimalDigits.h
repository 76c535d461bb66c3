#pragma once

#include <cstdint>

namespace tessarine::detail {

inline constexpr int kGeneralDigits = 15;  // every decimal of 15 digits survives the way through a double and back

/// A magnitude as decimal digits: 0.DDD... times 10 to the power Point, so Point digits stand before the decimal point.
/// The first and the last digit are not 0; zero has no digits and Point 0.
struct TDecimalDigits {
  char Digits[24] = {};  // '0' to '9'
  int Count = 0;
  int Point = 0;
};

/// The magnitude of AValue, which is finite, correctly rounded to 15 significant digits (ties of the exact binary value
/// to even).
TDecimalDigits GeneralDigits(double AValue);

/// The fewest digits that read back to the magnitude of AValue, which is finite.
TDecimalDigits ShortestDigits(double AValue);

/// Cuts ADigits to ACount digits from the first, rounding half away from zero. ACount may be negative or beyond the
/// end. A carry out of the first digit raises Point.
void RoundDigits(TDecimalDigits& ADigits, int64_t ACount);

/// 10 to the power AExponent, which is 0 to 22: the powers that a double holds exactly.
double ExactPowerOfTen(int AExponent);

}  // namespace tessarine::detail
