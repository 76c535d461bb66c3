#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#include <bit>
#endif

namespace tessarine {

// The inner loops of the XML reader. Each fast form stands beside a plain one that defines its result.

enum TXmlCharClass : uint8_t { xcNameStart = 1, xcName = 2, xcBlank = 4, xcValueStop = 8 };

/// Classes of a byte of UTF-8. Any non-ASCII character may stand in a name; a value in double quotes is plain up to the
/// first byte of xcValueStop.
inline constexpr auto kXmlCharClasses = [] {
  std::array<uint8_t, 256> classes{};
  for (size_t i = 0; i < 256; ++i) {
    const bool isLetter = (i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z') || i == '_' || i == ':' || i >= 0x80;
    const bool isOther = (i >= '0' && i <= '9') || i == '-' || i == '.';
    const bool isBlank = i == ' ' || i == '\t' || i == '\n' || i == '\r';
    const bool isStop = i == '"' || i == '<' || i == '&' || i < 0x20;
    classes[i] = static_cast<uint8_t>((isLetter ? xcNameStart | xcName : 0) | (isOther ? xcName : 0) |
                                      (isBlank ? xcBlank : 0) | (isStop ? xcValueStop : 0));
  }
  return classes;
}();

inline bool IsXml(char AChar, TXmlCharClass AClass) {
  return (kXmlCharClasses[static_cast<unsigned char>(AChar)] & AClass) != 0;
}

/// The length in bytes of the UTF-8 character at AAt (which is before AEnd) if it is one that XML allows: a tab, a line
/// feed, a carriage return, or U+0020 and above without surrogates, U+FFFE and U+FFFF. Else 0.
size_t XmlCharLength(const char* AAt, const char* AEnd);

/// The first place from AFrom on where no character that XML allows stands, or the first end of a character at or
/// behind AStop when all before are good. Characters may reach beyond AStop up to AEnd.
const char* CheckXmlChars(const char* AFrom, const char* AStop, const char* AEnd);
const char* CheckXmlCharsPlain(const char* AFrom, const char* AStop, const char* AEnd);

inline bool StopsXmlText(char AChar) { return AChar == '<' || AChar == '&' || AChar == '\r' || AChar == ']'; }

/// The first "<", "&", carriage return or "]", else AEnd.
inline const char* FindXmlTextStopPlain(const char* AFrom, const char* AEnd) {
  while (AFrom != AEnd && !StopsXmlText(*AFrom)) ++AFrom;
  return AFrom;
}

inline bool StopsXmlValue(char AChar, char AQuote) {
  return AChar == AQuote || AChar == '<' || AChar == '&' || static_cast<unsigned char>(AChar) < 0x20;
}

/// The first AQuote, "<", "&" or control character, else AEnd.
inline const char* FindXmlValueStopPlain(const char* AFrom, const char* AEnd, char AQuote) {
  while (AFrom != AEnd && !StopsXmlValue(*AFrom, AQuote)) ++AFrom;
  return AFrom;
}

#if defined(__SSE2__)

inline const char* FindXmlTextStop(const char* AFrom, const char* AEnd) {
  while (AEnd - AFrom >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AFrom));
    const __m128i markup =
        _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('<')), _mm_cmpeq_epi8(block, _mm_set1_epi8('&')));
    const __m128i other =
        _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('\r')), _mm_cmpeq_epi8(block, _mm_set1_epi8(']')));
    const auto hits = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(markup, other)));
    if (hits != 0) return AFrom + std::countr_zero(hits);
    AFrom += 16;
  }
  return FindXmlTextStopPlain(AFrom, AEnd);
}

inline const char* FindXmlValueStop(const char* AFrom, const char* AEnd, char AQuote) {
  while (AEnd - AFrom >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AFrom));
    const __m128i markup =
        _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('<')), _mm_cmpeq_epi8(block, _mm_set1_epi8('&')));
    const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(block, _mm_set1_epi8(0x1f)), block);
    const __m128i other = _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8(AQuote)), control);
    const auto hits = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(markup, other)));
    if (hits != 0) return AFrom + std::countr_zero(hits);
    AFrom += 16;
  }
  return FindXmlValueStopPlain(AFrom, AEnd, AQuote);
}

#else

inline const char* FindXmlTextStop(const char* AFrom, const char* AEnd) { return FindXmlTextStopPlain(AFrom, AEnd); }
inline const char* FindXmlValueStop(const char* AFrom, const char* AEnd, char AQuote) {
  return FindXmlValueStopPlain(AFrom, AEnd, AQuote);
}

#endif

}  // namespace tessarine
