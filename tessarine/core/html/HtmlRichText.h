#pragma once

#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/sheet/Cell.h>

namespace tessarine {

// Between HTML and runs of text in one font each. No HTML is an error: a tag without an end ends the reading with what
// stands, unknown tags only carry their style, and all of it takes time in proportion to the text.

/// The runs of a piece of HTML, read on top of ABaseFont. Scripts, styles, heads, titles and comments are left out;
/// "br", and each paragraph or other block behind some text, begin a new line; blanks and line ends between tags fold
/// to one blank. Closing tags end the font of the tag that was opened last, whatever its name is.
TESSARINE_API TRichTextRuns HtmlToRichText(std::u16string_view AHtml, const TCellFontInfo& ABaseFont = {});

/// The text of HtmlToRichText.
TESSARINE_API std::u16string HtmlToPlain(std::u16string_view AHtml);

/// The HTML of runs; a font that is not the base font stands in a "span" with what differs and in tags for bold,
/// italic, underlined, struck-out, raised and lowered text.
TESSARINE_API std::u16string RichTextToHtml(const TRichTextRuns& ARuns, const TCellFontInfo& ABaseFont = {});

/// Whether a run has another font than ABase.
TESSARINE_API bool RichTextHasFormatting(const TRichTextRuns& ARuns, const TCellFontInfo& ABase);

/// The texts of the runs, one behind the other.
TESSARINE_API std::u16string RichTextToPlain(const TRichTextRuns& ARuns);

}  // namespace tessarine
