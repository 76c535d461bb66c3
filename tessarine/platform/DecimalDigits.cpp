#include <tessarine/platform/detail/DecimalDigits.h>

#include <charconv>
#include <cmath>
#include <cstddef>

namespace tessarine::detail {

namespace {

void DropTrailingZeros(TDecimalDigits& ADigits) {
  while (ADigits.Count > 0 && ADigits.Digits[ADigits.Count - 1] == '0') --ADigits.Count;
  if (ADigits.Count == 0) ADigits.Point = 0;
}

/// Takes digits and exponent from a text in scientific notation ("1.25e+20").
TDecimalDigits FromScientific(const char* AFirst, const char* ALast) {
  TDecimalDigits digits;
  const char* at = AFirst;
  for (; at != ALast && *at != 'e'; ++at)
    if (*at != '.') digits.Digits[digits.Count++] = *at;
  int exponent = 0;
  if (at != ALast) {
    ++at;
    if (at != ALast && *at == '+') ++at;  // from_chars takes no plus
    std::from_chars(at, ALast, exponent);
  }
  digits.Point = exponent + 1;
  DropTrailingZeros(digits);
  return digits;
}

}  // namespace

TDecimalDigits ShortestDigits(double AValue) {
  char text[40];
  const auto result = std::to_chars(text, text + sizeof text, std::fabs(AValue), std::chars_format::scientific);
  return FromScientific(text, result.ptr);
}

TDecimalDigits GeneralDigits(double AValue) {
  char text[40];
  const auto result =
      std::to_chars(text, text + sizeof text, std::fabs(AValue), std::chars_format::scientific, kGeneralDigits - 1);
  return FromScientific(text, result.ptr);
}

void RoundDigits(TDecimalDigits& ADigits, int64_t ACount) {
  if (ACount >= ADigits.Count) return;
  const bool up = ACount >= 0 && ADigits.Digits[ACount] >= '5';
  ADigits.Count = ACount < 0 ? 0 : static_cast<int>(ACount);
  if (up) {
    while (ADigits.Count > 0 && ADigits.Digits[ADigits.Count - 1] == '9') --ADigits.Count;
    if (ADigits.Count > 0) {
      ++ADigits.Digits[ADigits.Count - 1];
    } else {
      ADigits.Digits[ADigits.Count++] = '1';
      ++ADigits.Point;
    }
  }
  DropTrailingZeros(ADigits);
}

double ExactPowerOfTen(int AExponent) {
  static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  return kPowers[static_cast<size_t>(AExponent)];
}

}  // namespace tessarine::detail
