#pragma once

#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

// HTML as clipboards hold it: bytes in UTF-8, of which a header tells by offsets where the document and in it the
// copied fragment lie. Comments around the fragment say the same.

/// AFragment as a whole document behind such a header, without a terminator. Zero units, which would end it, are left
/// out.
TESSARINE_API std::string ToClipboardHtml(std::u16string_view AFragment);

/// The text of ABytes up to the first zero byte, header included; what is no UTF-8 becomes U+FFFD.
TESSARINE_API std::u16string FromClipboardHtml(std::string_view ABytes);

/// The fragment in a clipboard's HTML, as a part of AClipboardHtml: what stands between the comments "StartFragment"
/// and "EndFragment"; without them what the header's offsets of that name, in bytes of UTF-8, enclose, as far as there
/// is text; without these, or when they enclose nothing, the whole text.
TESSARINE_API std::u16string_view ExtractHtmlFragment(std::u16string_view AClipboardHtml);

}  // namespace tessarine
