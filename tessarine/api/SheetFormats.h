#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TTessarineTheme;

/// A colour as 0xAARRGGBB; 0xFF000000 is opaque black, and 0 is no colour where none is possible.
using TSheetColor = uint32_t;

/// A plain colour reference.
constexpr TColorRef SheetColorToRef(TSheetColor AColor) { return TColorRef::FromARGB(AColor); }
/// The colour that a reference stands for; a theme colour needs the theme of the workbook, and is 0 without one.
TESSARINE_API TSheetColor SheetRefToColor(const TColorRef& AColor, const TTessarineTheme* ATheme = nullptr);
/// 0x00BBGGRR, the form of charts and shapes; the alpha goes.
constexpr uint32_t SheetColorToBGR(TSheetColor AColor) {
  return (AColor & 0xFFu) << 16 | (AColor & 0xFF00u) | (AColor >> 16 & 0xFFu);
}

enum class TBorderSideKind : uint8_t { bsLeft, bsTop, bsRight, bsBottom };
using enum TBorderSideKind;

/// The side of a cell's borders.
TESSARINE_API TBorderSide& BorderSideOf(TCellBorderInfo& ABorder, TBorderSideKind ASide);

enum class TRichFlag : uint8_t { rfBold, rfItalic, rfUnderline, rfStrikeout };
using enum TRichFlag;

/// A set of them: `rfBold`, `rfBold | rfItalic`, `{rfBold, rfItalic}`, `{}`.
class TRichFlags {
 public:
  constexpr TRichFlags() = default;
  constexpr TRichFlags(TRichFlag AFlag) : FBits(BitOf(AFlag)) {}  // NOLINT(google-explicit-constructor)
  constexpr TRichFlags(std::initializer_list<TRichFlag> AFlags) {
    for (const TRichFlag flag : AFlags) FBits |= BitOf(flag);
  }

  constexpr bool Has(TRichFlag AFlag) const { return (FBits & BitOf(AFlag)) != 0; }

  friend constexpr TRichFlags operator|(TRichFlags ALeft, TRichFlags ARight) {
    ALeft.FBits |= ARight.FBits;
    return ALeft;
  }
  friend constexpr bool operator==(TRichFlags, TRichFlags) = default;

 private:
  static constexpr uint32_t BitOf(TRichFlag AFlag) { return 1u << static_cast<uint32_t>(AFlag); }

  uint32_t FBits = 0;
};
constexpr TRichFlags operator|(TRichFlag ALeft, TRichFlag ARight) { return TRichFlags(ALeft) | TRichFlags(ARight); }

/// A font with the given flags and, where given, a name, a size in points and a colour; the rest is ABase.
TESSARINE_API TCellFontInfo RichFont(TRichFlags AFlags, TTextArg AName = u"", float ASizePt = 0, TSheetColor AColor = 0,
                                     const TCellFontInfo& ABase = {});

/// A stretch of text in one font.
TESSARINE_API TRichTextRun RichRun(TTextArg AText, const TCellFontInfo& AFont);
TESSARINE_API TRichTextRun RichRun(TTextArg AText, TRichFlags AFlags = {});

/// HtmlToRichText for UTF-8.
inline TRichTextRuns HtmlToRichText(std::string_view AHtml, const TCellFontInfo& ABaseFont = {}) {
  return HtmlToRichText(TText::FromUtf8(AHtml).View(), ABaseFont);
}

// The format of a cell that is going to be stored. A cell without a format of its own gets the default format first:
// what its style says is lost.

/// An empty code is "General".
TESSARINE_API void ApplyNumberFormat(TCell& ACell, TTextArg ACode);
TESSARINE_API void ApplyCellAlignment(TCell& ACell, THorizontalAlignment AHorizontal, TVerticalAlignment AVertical);
TESSARINE_API void SetCellWrapText(TCell& ACell, bool AWrap);

}  // namespace tessarine
