#pragma once

#include <string>
#include <string_view>

namespace tessarine {

/// Undoes the escapes that spreadsheet files use for units that XML cannot carry: an underscore, "x" in either case,
/// four hexadecimal digits and an underscore stand for that UTF-16 unit (ECMA-376-1 §22.9.2.19). One pass from left to
/// right:
/// "_x005F_x0041_" gives "_x0041_". Returns AText itself where there is no escape, else a view of ABuffer.
std::u16string_view UnescapeXlsxText(std::u16string_view AText, std::u16string& ABuffer);

std::u16string UnescapeXlsxText(std::u16string_view AText);

/// The same for UTF-8 text. A surrogate that is left without its partner becomes U+FFFD.
std::string UnescapeXlsxText(std::string_view AText);

}  // namespace tessarine
