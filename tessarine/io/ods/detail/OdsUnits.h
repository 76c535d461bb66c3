#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <tessarine/core/values/Text.h>

namespace tessarine::detail {

/// Centimetres of one point and of one inch, as lengths in files are converted.
inline constexpr double kOdsCmPerPoint = 0.0352778;
inline constexpr double kOdsCmPerInch = 2.54;

/// The limit on repeated columns and rows that have content or a width of their own.
inline constexpr int32_t kOdsMaxRepeat = 256;

/// A length in centimetres: "2.5cm", "25mm", "1in", "12pt", blanks and case aside; a comma counts as a point, no unit
/// means centimetres. 0 for all that cannot be read.
double OdsParseLengthCm(std::string_view AText);

/// Centimetres as a file has them, with three digits: "2.258cm". What is not finite is 0.
std::string OdsLengthText(double ACm);

/// A column's width in characters: its pixels at 96 to the inch less 5, over 7, at least 0.1. 8.43 for 0 and below.
double OdsCmToColChars(double ACm);

/// The other way, as OdsLengthText.
std::string OdsColCharsToCm(double AWidthChars);

/// The height of a row both ways; the second as OdsLengthText.
double OdsCmToPoints(double ACm);
std::string OdsPointsToCm(double AHeightPt);

/// The ARGB of "#RRGGBB", then opaque, or "#AARRGGBB", with or without the "#". Nothing for "transparent", "none",
/// an empty text and anything else.
std::optional<uint32_t> OdsColorFromHex(std::string_view AText);

/// An ARGB colour as drawings have it, 0x00BBGGRR.
constexpr uint32_t OdsBgrColor(uint32_t AArgb) {
  return (AArgb & 0xFF) << 16 | (AArgb & 0xFF00) | (AArgb >> 16 & 0xFF);
}

/// The serial number of a date "2024-02-29", a date with time "2024-02-29T13:45:10.5", a time of day "13:45:10" or a
/// duration "PT13H45M10.5S" (also with days, and a leading "-"). A time zone at the end is passed over. Nothing for
/// what is none of these.
std::optional<double> OdsParseDateValue(std::string_view AText);

/// Whether the host has a font of that name; an empty function when that is not known.
using TOdsFontInstalled = std::function<bool(std::u16string_view AName)>;

/// The name of a font that the host has: the name itself, else the first of the comma-separated family list, else the
/// first of some candidates for the generic family ("roman", "swiss", "modern", "script", "decorative", "system").
/// The trimmed name when none is installed or AIsInstalled is empty.
TText OdsResolveFontName(std::u16string_view AName, std::u16string_view AFamily, std::string_view AGeneric,
                         const TOdsFontInstalled& AIsInstalled);

}  // namespace tessarine::detail
