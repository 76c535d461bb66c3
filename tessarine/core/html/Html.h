#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>

namespace tessarine {

// Texts, colours and styles of HTML. Nothing here fails: what is not understood is left as it is. All of it takes time
// in proportion to the text.

/// AText for HTML: "&", "<", ">" and double quotes as entities, a line feed as "<br>", carriage returns left out.
TESSARINE_API std::u16string HtmlEscape(std::u16string_view AText);

/// The text behind "&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&nbsp;" (a blank) and numeric entities ("&#8364;",
/// "&#x20AC;"; 160 is a blank, and 128 to 159 are read as the HTML standard reads them, section 13.2.5.80). An entity
/// ends at most ten units behind its "&"; an "&" of none is text. Line ends are dropped.
TESSARINE_API std::u16string HtmlUnescape(std::u16string_view AText);

/// The colour, always opaque, that a CSS text names: a colour's name in any case, "#rgb", "#rrggbb" with anything
/// behind, or "rgb(r, g, b)". Opaque black for everything else.
TESSARINE_API uint32_t CssColorToARGB(std::u16string_view AText);

/// "#rrggbb" of the plain colour; that of a theme colour, which needs a theme, is black.
TESSARINE_API std::u16string ColorRefToCssHex(const TColorRef& AColor);

/// Lays the items of a style text ("font-weight: bold; color: red") over AFont: font-weight, font-style, font-family,
/// font-size, color, text-decoration and vertical-align. A size is taken in points whatever its unit is, so that
/// "12px" is 12 and "1.5em" is 1.5; one that is no number leaves the font's own.
TESSARINE_API void ApplyCssToFont(std::u16string_view ACss, TCellFontInfo& AFont);

/// The same over a cell's format: the font, and from "background-color" and "background" a solid fill. "transparent",
/// "none" and what begins with no colour leave the fill.
TESSARINE_API void ApplyCssToFormat(std::u16string_view ACss, TCellFormat& AFormat);

}  // namespace tessarine
