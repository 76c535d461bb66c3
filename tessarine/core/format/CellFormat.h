#pragma once

#include <cstddef>
#include <cstdint>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class THorizontalAlignment : uint8_t { haGeneral, haLeft, haCenter, haRight, haFill, haJustify };
using enum THorizontalAlignment;

enum class TVerticalAlignment : uint8_t { vaTop, vaCenter, vaBottom };
using enum TVerticalAlignment;

enum class TReadingOrder : uint8_t { roContext, roLTR, roRTL };
using enum TReadingOrder;

enum class TUnderlineStyle : uint8_t { usNone, usSingle, usDouble };
using enum TUnderlineStyle;

enum class TScriptPosition : uint8_t { spNormal, spSuperscript, spSubscript };
using enum TScriptPosition;

enum class TBorderLineStyle : uint8_t {
  blsNone,
  blsThin,
  blsMedium,
  blsThick,
  blsDashed,
  blsDotted,
  blsDouble,
  blsHair,
};
using enum TBorderLineStyle;

/// A plain colour or a slot of the document's theme with a tint. ResolveColor (Theme.h) turns it into a colour.
struct TColorRef {
  uint32_t ARGB = 0;        ///< Alpha in the top byte; 0 for a theme colour.
  int32_t ThemeIndex = -1;  ///< -1 for a plain colour, else the theme slot in file order.
  double Tint = 0;          ///< From -1 (black) to 1 (white), 0 for none.

  static constexpr TColorRef FromARGB(uint32_t AValue) { return {AValue, -1, 0}; }
  static constexpr TColorRef FromTheme(int32_t AIndex, double ATint) { return {0, AIndex, ATint}; }

  constexpr bool IsThemeColor() const { return ThemeIndex >= 0; }

  friend constexpr bool operator==(const TColorRef&, const TColorRef&) = default;
};

inline constexpr uint32_t kOpaqueBlack = 0xFF000000u;
inline constexpr uint32_t kOpaqueWhite = 0xFFFFFFFFu;

namespace detail {
TESSARINE_API const TText& DefaultFontName();    // "Calibri", never counted
TESSARINE_API const TText& GeneralFormatCode();  // "General", never counted
}  // namespace detail

struct TCellFontInfo {
  TText Name = detail::DefaultFontName();
  float Size = 11;  ///< Points.
  bool Bold = false;
  bool Italic = false;
  TUnderlineStyle Underline = usNone;
  bool Strikethrough = false;
  TScriptPosition Script = spNormal;
  TColorRef Color = TColorRef::FromARGB(kOpaqueBlack);

  static TCellFontInfo Default() { return {}; }

  friend bool operator==(const TCellFontInfo&, const TCellFontInfo&) = default;
};

struct TCellFillInfo {
  int32_t PatternType = 0;                                        ///< 0 none, 1 solid, negative: gradient.
  TColorRef ForegroundColor = TColorRef::FromARGB(0);             ///< The solid colour; the gradient's start.
  TColorRef BackgroundColor = TColorRef::FromARGB(kOpaqueWhite);  ///< The gradient's end.
  int32_t GradientAngle = 90;                                     ///< Degrees.

  static constexpr TCellFillInfo None() { return {}; }
  static constexpr TCellFillInfo Solid(const TColorRef& AColor) {
    TCellFillInfo fill;
    fill.PatternType = 1;
    fill.ForegroundColor = AColor;
    return fill;
  }
  static constexpr TCellFillInfo Gradient(const TColorRef& AStart, const TColorRef& AEnd, int32_t AAngle) {
    return {-1, AStart, AEnd, AAngle};
  }

  constexpr bool IsGradient() const { return PatternType < 0; }

  friend constexpr bool operator==(const TCellFillInfo&, const TCellFillInfo&) = default;
};

struct TBorderSide {
  TBorderLineStyle Style = blsNone;
  TColorRef Color = TColorRef::FromARGB(kOpaqueBlack);

  static constexpr TBorderSide None() { return {}; }

  friend constexpr bool operator==(const TBorderSide&, const TBorderSide&) = default;
};

struct TCellBorderInfo {
  TBorderSide Left;
  TBorderSide Top;
  TBorderSide Right;
  TBorderSide Bottom;
  TBorderSide Diagonal;
  bool DiagonalUp = false;
  bool DiagonalDown = false;

  static constexpr TCellBorderInfo None() { return {}; }

  friend constexpr bool operator==(const TCellBorderInfo&, const TCellBorderInfo&) = default;
};

struct TCellAlignmentInfo {
  THorizontalAlignment Horizontal = haGeneral;
  TVerticalAlignment Vertical = vaBottom;
  bool WrapText = false;
  bool ShrinkToFit = false;
  int32_t Indent = 0;
  int32_t TextRotation = 0;
  TReadingOrder ReadingOrder = roContext;
  double MarginLeftCm = 0;
  double MarginRightCm = 0;
  double PaddingLeftCm = 0;
  double PaddingRightCm = 0;

  static constexpr TCellAlignmentInfo Default() { return {}; }

  friend constexpr bool operator==(const TCellAlignmentInfo&, const TCellAlignmentInfo&) = default;
};

/// The complete look of a cell. A fresh record is the default look; `==` compares every field.
struct TESSARINE_API TCellFormat {
  TCellFontInfo Font;
  TCellFillInfo Fill;
  TCellBorderInfo Border;
  TCellAlignmentInfo Alignment;
  TText NumberFormat = detail::GeneralFormatCode();
  bool Locked = true;
  bool Hidden = false;

  /// The one default format; lives as long as the process.
  static const TCellFormat& Default();

  /// A quick test that looks at the font's name, size, bold and italic and at the number format only. Formats that
  /// differ in fill, border, alignment or colours count as equal here; `==` is the full comparison.
  bool Equals(const TCellFormat& AOther) const;

  friend bool operator==(const TCellFormat&, const TCellFormat&) = default;
};

/// A hash over every field, in agreement with `==` (0.0 and -0.0 hash alike). For interning.
TESSARINE_API size_t HashOf(const TCellFormat& AFormat);

}  // namespace tessarine
