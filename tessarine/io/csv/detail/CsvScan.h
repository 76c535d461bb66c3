#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tessarine::detail {

/// Bytes that one block of the scan covers.
constexpr size_t kCsvBlock = 64;

/// Bit i is set when ABlock[i] is the delimiter, a double quote, CR or LF. Reads kCsvBlock bytes. The plain form, which
/// defines the result.
inline uint64_t CsvSpecialsPlain(const char* ABlock, char ADelimiter) {
  uint64_t mask = 0;
  for (size_t i = 0; i < kCsvBlock; ++i) {
    const char byte = ABlock[i];
    const bool isSpecial = byte == ADelimiter || byte == '"' || byte == '\r' || byte == '\n';
    mask |= uint64_t{isSpecial} << i;
  }
  return mask;
}

#if defined(__SSE2__)

/// The same, 16 bytes at a time.
inline uint64_t CsvSpecials(const char* ABlock, char ADelimiter) {
  const __m128i delimiter = _mm_set1_epi8(ADelimiter);
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i carriageReturn = _mm_set1_epi8('\r');
  const __m128i lineFeed = _mm_set1_epi8('\n');
  uint64_t mask = 0;
  for (size_t part = 0; part < kCsvBlock; part += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ABlock + part));
    const __m128i found =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, delimiter), _mm_cmpeq_epi8(bytes, quote)),
                     _mm_or_si128(_mm_cmpeq_epi8(bytes, carriageReturn), _mm_cmpeq_epi8(bytes, lineFeed)));
    mask |= uint64_t{static_cast<uint32_t>(_mm_movemask_epi8(found))} << part;
  }
  return mask;
}

#else

inline uint64_t CsvSpecials(const char* ABlock, char ADelimiter) { return CsvSpecialsPlain(ABlock, ADelimiter); }

#endif

}  // namespace tessarine::detail
