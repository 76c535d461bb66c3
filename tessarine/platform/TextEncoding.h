#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// The character of a windows-1252 byte; the five bytes without one are the control characters of their numbers.
/// Source: the Encoding Standard, index windows-1252.
TESSARINE_API char16_t Windows1252Unit(uint8_t AByte);

/// Decodes the bytes of a text whose encoding has a name ("utf-8", "UTF-16BE", "ISO-8859-1"; case does not count).
/// A byte-order mark wins over the name and is dropped. Known are UTF-8, UTF-16 (little-endian without more), and
/// windows-1252, which ISO-8859-1 and ASCII are taken for as browsers take them; other names are UTF-8. Never fails:
/// what is ill-formed becomes U+FFFD.
TESSARINE_API std::u16string DecodeNamedText(std::string_view ABytes, std::string_view AEncoding);

/// The charset of a Content-Type ("text/html; charset=utf-8"), without quotes; empty when it has none.
TESSARINE_API std::string_view CharsetOfContentType(std::string_view AContentType);

}  // namespace tessarine
