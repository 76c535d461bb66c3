#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// UTF-8 to UTF-16. Never fails: each maximal piece of an ill-formed sequence becomes one U+FFFD, as the Unicode
/// standard recommends (section 3.9, "Substitution of Maximal Subparts"). A byte-order mark is text like any other
/// here.
TESSARINE_API std::u16string Utf8ToUtf16(std::string_view AText);
TESSARINE_API void AppendUtf8AsUtf16(std::string_view AText, std::u16string& AOut);

/// UTF-16 to UTF-8. Never fails: a lone surrogate becomes U+FFFD.
TESSARINE_API std::string Utf16ToUtf8(std::u16string_view AText);
TESSARINE_API void AppendUtf16AsUtf8(std::u16string_view AText, std::string& AOut);

/// True when AText is well-formed UTF-8 (no overlong forms, no surrogates, nothing above U+10FFFF).
TESSARINE_API bool IsValidUtf8(std::string_view AText);

/// Decodes the bytes of a text file by their byte-order mark: UTF-8, UTF-16 little or big endian; without a mark UTF-8.
/// The mark is dropped. A single byte left at the end of UTF-16 becomes U+FFFD.
TESSARINE_API std::u16string DecodeTextBytes(std::string_view ABytes);
TESSARINE_API std::u16string DecodeTextBytes(std::span<const std::byte> ABytes);

/// Case folding touches ASCII letters only; every other unit stays as it is.
constexpr char16_t AsciiUpper(char16_t AUnit) {
  return AUnit >= u'a' && AUnit <= u'z' ? static_cast<char16_t>(AUnit - 32) : AUnit;
}
constexpr char16_t AsciiLower(char16_t AUnit) {
  return AUnit >= u'A' && AUnit <= u'Z' ? static_cast<char16_t>(AUnit + 32) : AUnit;
}
constexpr bool IsAsciiDigit(char16_t AUnit) { return AUnit >= u'0' && AUnit <= u'9'; }
constexpr bool IsAsciiLetter(char16_t AUnit) { return AsciiUpper(AUnit) >= u'A' && AsciiUpper(AUnit) <= u'Z'; }

/// Ordinal comparison by code unit after folding ASCII letters to UPPER case (so "_" stands after "a"): -1, 0 or 1.
TESSARINE_API int CompareAsciiNoCase(std::u16string_view ALeft, std::u16string_view ARight);

/// True when CompareAsciiNoCase gives 0.
TESSARINE_API bool EqualAsciiNoCase(std::u16string_view ALeft, std::u16string_view ARight);

TESSARINE_API std::u16string ToAsciiUpper(std::u16string_view AText);
TESSARINE_API std::u16string ToAsciiLower(std::u16string_view AText);

/// AText without the units up to U+0020 at both ends.
constexpr std::u16string_view TrimSpaces(std::u16string_view AText) {
  size_t first = 0;
  size_t last = AText.size();
  while (first < last && AText[first] <= u' ') ++first;
  while (last > first && AText[last - 1] <= u' ') --last;
  return AText.substr(first, last - first);
}

}  // namespace tessarine
