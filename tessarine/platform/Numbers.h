#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/platform/FloatPattern.h>

namespace tessarine {

struct TFormatSettings;

// Text of a number -------------------------------------------------------------------------------------------------

/// Units that the Write functions below may need.
inline constexpr size_t kNumberTextSize = 40;

/// Writes the general text of AValue to ABuffer (kNumberTextSize units) and returns its length. At most 15 significant
/// digits without trailing zeros; fixed notation for magnitudes from 1e-5 up to below 1e15, else the exponent form with
/// "E", a sign and no padding ("1.2E+20", "1E-7"). The decimal point is ".". -0.0 gives "0"; what is not finite gives
/// "INF", "-INF", "NAN".
TESSARINE_API size_t WriteGeneralNumber(double AValue, char16_t* ABuffer);
TESSARINE_API size_t WriteGeneralNumber(double AValue, char* ABuffer);

/// The plain form of WriteGeneralNumber, without its short cuts: the definition of the text.
TESSARINE_API size_t WriteGeneralNumberPlain(double AValue, char16_t* ABuffer);

/// The text of WriteGeneralNumber.
TESSARINE_API std::u16string GeneralNumberText(double AValue);
TESSARINE_API void AppendGeneralNumber(double AValue, std::u16string& AOut);

/// The general text with the decimal separator of ASettings.
TESSARINE_API std::u16string FloatToStr(double AValue, const TFormatSettings& ASettings);

/// The general text with the decimal separator of ASettings and at least four digits of exponent where there is one:
/// "1E+0020". This is what the number format General shows.
TESSARINE_API std::u16string GeneralNumberTextExponent4(double AValue, const TFormatSettings& ASettings);
TESSARINE_API void AppendGeneralNumberExponent4(double AValue, const TFormatSettings& ASettings, std::u16string& AOut);

/// Writes AValue for a file to ABuffer (kNumberTextSize bytes) and returns its length. The text has the fewest digits
/// that read back to the same double, which are 15 or fewer wherever 15 suffice. Integers are plain up to 17 digits,
/// and so is the rest from 1e-5; else the exponent form as above. -0.0 gives "0". Formats cannot express what is not
/// finite
/// ("INF", "-INF", "NAN" here): callers keep it out.
TESSARINE_API size_t WriteFileNumber(double AValue, char* ABuffer);
TESSARINE_API void AppendFileNumber(double AValue, std::string& AOut);

// Numbers from text --------------------------------------------------------------------------------------------------

/// Reads the whole of AText as a number under ASettings: blanks (units up to U+0020) at both ends, a sign, digits with
/// at most one decimal separator and at least one digit, "E" or "e" with an optional sign and digits. No group
/// separators, no hexadecimal, no words. The result is correctly rounded; a number too large for a double fails, one
/// too small is 0. AResult is written on success only.
[[nodiscard]] TESSARINE_API bool TryStrToFloat(std::u16string_view AText, const TFormatSettings& ASettings,
                                               double& AResult);

/// The same with "." as decimal separator, for files.
[[nodiscard]] TESSARINE_API bool TryParseFileNumber(std::u16string_view AText, double& AResult);
[[nodiscard]] TESSARINE_API bool TryParseFileNumber(std::string_view AText, double& AResult);

/// The plain form of TryStrToFloat, without its short cut: the definition of the result.
[[nodiscard]] TESSARINE_API bool TryStrToFloatPlain(std::u16string_view AText, char16_t ADecimalSeparator,
                                                    double& AResult);

/// Reads the whole of AText as a decimal 32-bit integer: an optional sign and digits, nothing else.
[[nodiscard]] TESSARINE_API bool TryParseInt32(std::u16string_view AText, int32_t& AResult);
[[nodiscard]] TESSARINE_API bool TryParseInt32(std::string_view AText, int32_t& AResult);

// Rounding -----------------------------------------------------------------------------------------------------------

/// AValue rounded to an integer, ties to the even neighbour.
TESSARINE_API double RoundToEven(double AValue);

/// The low 32 bits of AWhole taken as a 64-bit integer (its fraction is cut); 0 when it does not fit 64 bits or is no
/// number.
TESSARINE_API int32_t WrapInt32(double AWhole);
/// Floor and ceiling as such a wrapped integer: FloorInt32(3e9) is -1294967296.
TESSARINE_API int32_t FloorInt32(double AValue);
TESSARINE_API int32_t CeilInt32(double AValue);

}  // namespace tessarine
