#include <tessarine/io/csv/detail/CsvWriter.h>

#include <algorithm>
#include <cstring>
#include <span>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kPiece = size_t{256} * 1024;

#if defined(_WIN32)
constexpr std::string_view kLineEnd = "\r\n";
#else
constexpr std::string_view kLineEnd = "\n";
#endif

}  // namespace

std::u16string EscapedCsvField(std::u16string_view AValue, char16_t ADelimiter) {
  const char16_t reasons[] = {ADelimiter, u'"', u'\n', u'\r'};
  if (AValue.find_first_of(std::u16string_view(reasons, 4)) == std::u16string_view::npos) return std::u16string(AValue);
  std::u16string field;
  field.reserve(AValue.size() + 2);
  field.push_back(u'"');
  for (const char16_t unit : AValue) {
    if (unit == u'"') field.push_back(u'"');
    field.push_back(unit);
  }
  field.push_back(u'"');
  return field;
}

TCsvWriter::TCsvWriter(IWriteStream& AStream, char16_t ADelimiter)
    : FStream(AStream), FDelimiter(ADelimiter), FDelimiterBytes(Utf16ToUtf8({&ADelimiter, 1})) {
  FBuffer.resize(kPiece + kSlack);
}

void TCsvWriter::MakeRoom(size_t ACount) {
  Flush();
  if (ACount + kSlack > FBuffer.size()) FBuffer.resize(ACount + kSlack);
}

void TCsvWriter::Flush() {
  if (FUsed > 0) FStream.Write(std::as_bytes(std::span<const char>(FBuffer.data(), FUsed)));
  FUsed = 0;
}

void TCsvWriter::PutAscii(std::string_view AText) {
  Reserve(AText.size());
  std::memcpy(FBuffer.data() + FUsed, AText.data(), AText.size());
  FUsed += AText.size();
}

void TCsvWriter::PutByteOrderMark() { PutAscii("\xEF\xBB\xBF"); }

void TCsvWriter::PutLineEnd() { PutAscii(kLineEnd); }

void TCsvWriter::PutManyDelimiters(int64_t ACount) {
  if (FDelimiterBytes.size() > 1) {
    for (; ACount > 0; --ACount) PutAscii(FDelimiterBytes);
    return;
  }
  while (ACount > 0) {
    const auto count = static_cast<size_t>(std::min<int64_t>(ACount, kPiece / 2));
    Reserve(count);
    std::memset(FBuffer.data() + FUsed, FDelimiterBytes[0], count);
    FUsed += count;
    ACount -= static_cast<int64_t>(count);
  }
}

#if defined(__SSE2__)

/// Writes eight units as bytes to ATarget; false when one of them is not plain. A delimiter beyond ASCII is compared by
/// its low byte: that only turns more texts away.
bool TCsvWriter::PutPlainEight(const char16_t* AUnits, char* ATarget) const {
  const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AUnits));
  const __m128i bytes = _mm_packus_epi16(units, units);
  const __m128i special = _mm_or_si128(
      _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(static_cast<char>(FDelimiter))),
                   _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'))),
      _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r'))));
  const __m128i beyondAscii = _mm_and_si128(units, _mm_set1_epi16(static_cast<int16_t>(0xFF80)));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(ATarget), bytes);
  const bool isAscii = _mm_movemask_epi8(_mm_cmpeq_epi16(beyondAscii, _mm_setzero_si128())) == 0xFFFF;
  return isAscii && _mm_movemask_epi8(special) == 0;
}

#else

bool TCsvWriter::PutPlainEight(const char16_t* AUnits, char* ATarget) const {
  bool isPlain = true;
  for (size_t i = 0; i < 8; ++i) {
    isPlain = isPlain && IsPlainUnit(AUnits[i]);
    ATarget[i] = static_cast<char>(AUnits[i]);
  }
  return isPlain;
}

#endif

/// Eight units at a time; the last eight overlap what was written before them.
bool TCsvWriter::TryPutPlainField(std::u16string_view AText) {
  Reserve(AText.size());
  char* const target = FBuffer.data() + FUsed;
  const char16_t* const units = AText.data();
  const size_t count = AText.size();
  if (count >= 8) {
    for (size_t at = 0; at + 8 < count; at += 8) {
      if (!PutPlainEight(units + at, target + at)) return false;
    }
    if (!PutPlainEight(units + count - 8, target + count - 8)) return false;
  } else {
    for (size_t at = 0; at < count; ++at) {
      if (!IsPlainUnit(units[at])) return false;
      target[at] = static_cast<char>(units[at]);
    }
  }
  FUsed += count;
  return true;
}

bool TCsvWriter::TryPutQuotedField(std::u16string_view AText) {
  if (FDelimiter >= 0x80) return false;
  Reserve(AText.size() * 2 + 2);
  char* const target = FBuffer.data() + FUsed;
  size_t used = 0;
  target[used++] = '"';
  for (const char16_t unit : AText) {
    if (unit >= 0x80) return false;
    target[used++] = static_cast<char>(unit);
    if (unit == u'"') target[used++] = '"';
  }
  target[used++] = '"';
  FUsed += used;
  return true;
}

void TCsvWriter::PutEscapedField(std::u16string_view AText) {
  std::string bytes;
  AppendUtf16AsUtf8(EscapedCsvField(AText, FDelimiter), bytes);
  PutAscii(bytes);
}

}  // namespace tessarine::detail
