#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

struct TFormatSettings;

namespace detail {
struct TDecimalDigits;
}

/// A pattern for numbers, read once and applied many times. It knows no locale: separators are given when it is
/// applied.
///
/// - "0" stands for a digit or zero, "#" for a digit or nothing; a "#" between a "0" and the decimal point counts as
/// "0".
///   The digits of the integer part are dealt out from the right; those that are left over come at the first
///   placeholder.
/// - The first "." is the decimal point. It is written only where a decimal digit follows.
/// - Any "," switches grouping by three on and is not written itself.
/// - "E+", "E-", "e+", "e-" with one or more "0" write the exponent form: as many integer digits as there are integer
///   placeholders, and at least as many digits of exponent as there are "0". "+" writes the sign always.
/// - Text in single or double quotes is copied without the quotes; two single quotes within single quotes give one.
/// Every
///   other unit is copied as it stands, in its place.
///
/// The digits are those of the value rounded to 15 significant ones, as General shows it, and are rounded to the places
/// of the pattern half away from zero: 1.005 under "0.00" is 1.01. A value below 0 gets "-" in front, also where all of
/// its digits round to zero (-0.001 under "0.00" is "-0.00"); -0.0 has no sign. What is not finite is written as by
/// WriteGeneralNumber.
class TESSARINE_API TFloatPattern {
 public:
  static TFloatPattern Compile(std::u16string_view APattern);

  void Append(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const;

  /// Append without its short cut: the definition of the text.
  void AppendPlain(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const;

  /// True when the pattern holds a placeholder.
  bool HasPlaceholders() const { return FIntegerPlaces + FDecimalPlaces > 0; }

 private:
  enum class TItemKind : uint8_t { ikLiteral, ikInteger, ikPoint, ikDecimal, ikExponent };
  struct TItem {
    TItemKind Kind = TItemKind::ikLiteral;
    char16_t Unit = 0;  // ikLiteral: the unit; ikExponent: "E" or "e"
  };

  // 1. FItems are in the order of the pattern; a point comes at most once, and decimal places after it only.
  // 2. FLeastIntegers counts the integer places from the leftmost "0" on, FLeastDecimals the decimal places up to the
  //    rightmost "0".
  // 3. FIsSimple: the items are FPrefixCount literals, integer places with at most one "0", perhaps a point and decimal
  //    places that are all "0", and from FSuffixStart on literals.
  std::vector<TItem> FItems;
  uint32_t FIntegerPlaces = 0;
  uint32_t FDecimalPlaces = 0;
  uint32_t FLeastIntegers = 0;
  uint32_t FLeastDecimals = 0;
  uint32_t FExponentDigits = 0;
  bool FHasExponent = false;
  bool FExponentPlus = false;
  bool FGrouped = false;
  bool FIsSimple = false;
  size_t FPrefixCount = 0;
  size_t FSuffixStart = 0;

  friend class TFloatPatternReader;
  bool TryAppendSimple(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const;
  void AppendItems(const detail::TDecimalDigits& ADigits, int AExponent, const TFormatSettings& ASettings,
                   std::u16string& AOut) const;
};

/// AValue under APattern: TFloatPattern for one use.
TESSARINE_API std::u16string FormatFloat(std::u16string_view APattern, double AValue, const TFormatSettings& ASettings);

}  // namespace tessarine
