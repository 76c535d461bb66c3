#include <tessarine/io/csv/detail/CsvValues.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/detail/DecimalDigits.h>

namespace tessarine::detail {

namespace {

/// Whether a text in ASCII bytes and one in UTF-16 are the same; false for bytes beyond ASCII.
bool IsSameAsciiPlain(const char* ABytes, const char16_t* AUnits, size_t ACount) {
  unsigned difference = 0;
  for (size_t i = 0; i < ACount; ++i) {
    const auto byte = static_cast<unsigned char>(ABytes[i]);
    difference |= (byte & 0x80u) | (byte ^ static_cast<unsigned>(AUnits[i]));
  }
  return difference == 0;
}

#if defined(__SSE2__)

/// The same for eight bytes and units.
bool AreSameEight(const char* ABytes, const char16_t* AUnits) {
  const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(ABytes));
  const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(AUnits));
  const __m128i widened = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
  return (_mm_movemask_epi8(bytes) & 0xFF) == 0 && _mm_movemask_epi8(_mm_cmpeq_epi16(widened, units)) == 0xFFFF;
}

/// Eight at a time; the last eight overlap what was compared before them.
bool IsSameAscii(std::string_view ABytes, std::u16string_view AUnits) {
  const size_t count = ABytes.size();
  if (count != AUnits.size()) return false;
  if (count < 8) return IsSameAsciiPlain(ABytes.data(), AUnits.data(), count);
  if (!AreSameEight(ABytes.data(), AUnits.data())) return false;
  for (size_t at = 8; at + 8 < count; at += 8) {
    if (!AreSameEight(ABytes.data() + at, AUnits.data() + at)) return false;
  }
  return AreSameEight(ABytes.data() + count - 8, AUnits.data() + count - 8);
}

#else

bool IsSameAscii(std::string_view ABytes, std::u16string_view AUnits) {
  return ABytes.size() == AUnits.size() && IsSameAsciiPlain(ABytes.data(), AUnits.data(), ABytes.size());
}

#endif

/// The last bytes of a text, fewer than eight of them, as one number.
uint64_t TailWord(const char* AAt, size_t ACount) {
  if (ACount >= 4) {
    uint32_t first = 0;
    uint32_t last = 0;
    std::memcpy(&first, AAt, 4);
    std::memcpy(&last, AAt + ACount - 4, 4);
    return uint64_t{last} << 32 | first;
  }
  uint64_t word = 0;
  for (size_t i = 0; i < ACount; ++i) word = word << 8 | static_cast<unsigned char>(AAt[i]);
  return word;
}

uint64_t WordAt(const char* AAt) {
  uint64_t word = 0;
  std::memcpy(&word, AAt, sizeof word);
  return word;
}

/// Asks the processor for the line of its cache at a place; only a hint.
void Fetch([[maybe_unused]] const void* APlace) {
#if defined(__GNUC__)
  __builtin_prefetch(APlace);
#endif
}

/// A hash for short texts, mixed by multiplication (the constant is 2^64 divided by the golden ratio).
uint64_t HashOfBytes(std::string_view AText) {
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15u;
  const auto mix = [](uint64_t AHash, uint64_t AWord) {
    const uint64_t product = (AHash ^ AWord) * kFactor;
    return product ^ product >> 32;
  };
  const size_t count = AText.size();
  uint64_t hash = count * kFactor;
  if (count == 0) return hash;
  if (count < 8) return mix(hash, TailWord(AText.data(), count));
  hash = mix(hash, WordAt(AText.data()));
  for (size_t at = 8; at + 8 < count; at += 8) hash = mix(hash, WordAt(AText.data() + at));
  return mix(hash, WordAt(AText.data() + count - 8));
}

}  // namespace

TShortDecimal ReadShortDecimal(std::string_view AText, char ASeparator, double& ANumber) {
  const char* at = AText.data();
  const char* const end = at + AText.size();
  if (at == end) return sdText;
  const bool isNegative = *at == '-';
  if (isNegative || *at == '+') ++at;
  uint64_t whole = 0;
  const char* const first = at;
  while (at != end && static_cast<unsigned char>(*at - '0') < 10) {
    whole = whole * 10 + static_cast<unsigned char>(*at - '0');  // wraps when too long, which is refused below
    ++at;
  }
  auto digits = static_cast<size_t>(at - first);
  size_t decimals = 0;
  if (at != end && *at == ASeparator) {
    const char* const firstDecimal = ++at;
    while (at != end && static_cast<unsigned char>(*at - '0') < 10) {
      whole = whole * 10 + static_cast<unsigned char>(*at - '0');
      ++at;
    }
    decimals = static_cast<size_t>(at - firstDecimal);
    digits += decimals;
  }
  if (at != end) {
    const auto byte = static_cast<unsigned char>(*at);
    const bool mayGoOn = byte <= ' ' || (digits > 0 && (byte == 'e' || byte == 'E'));
    return mayGoOn ? sdUnknown : sdText;
  }
  if (digits == 0) return sdText;
  if (digits > static_cast<size_t>(kGeneralDigits)) return sdUnknown;
  const double value = static_cast<double>(static_cast<int64_t>(whole)) / ExactPowerOfTen(static_cast<int>(decimals));
  ANumber = isNegative ? -value : value;
  return sdNumber;
}

TCsvNumberReader::TCsvNumberReader(const TFormatSettings& ASettings) : FSettings(ASettings) {
  const char16_t separator = ASettings.DecimalSeparator;
  const bool isPlain = separator > u' ' && separator < 0x7F && separator != u'-' && separator != u'+' &&
                       !IsAsciiDigit(separator) && AsciiUpper(separator) != u'E';
  if (isPlain) FShortSeparator = static_cast<char>(separator);
}

bool TCsvNumberReader::ReadPlain(std::string_view AText, double& ANumber) {
  FUnits.clear();
  AppendUtf8AsUtf16(AText, FUnits);
  return TryStrToFloat(FUnits, FSettings, ANumber);
}

TCsvTextCache::TCsvTextCache(size_t ATextBytes)
    : FBuckets(std::bit_ceil(std::clamp<size_t>(ATextBytes / 64, 1, kMostBuckets))) {}

TCsvTextCache::~TCsvTextCache() {
  for (TBucket& bucket : FBuckets) {
    for (size_t way = 0; way < kWays; ++way) Drop(bucket, way);
  }
}

/// Gives back the references that were not handed out. One more than the credit was counted, so the text is still
/// there when its last one goes.
void TCsvTextCache::Drop(TBucket& ABucket, size_t AWay) {
  const TTextBlock* const block = ABucket.Blocks[AWay];
  if (!block) return;
  block->RefCount.fetch_sub(ABucket.Credits[AWay], std::memory_order_relaxed);
  ReleaseText(block);
  ABucket.Blocks[AWay] = nullptr;
}

TText TCsvTextCache::HandOut(TBucket& ABucket, size_t AWay) {
  uint32_t& credit = ABucket.Credits[AWay];
  const TTextBlock* const block = ABucket.Blocks[AWay];
  if (credit == 0) {
    block->RefCount.fetch_add(kLot, std::memory_order_relaxed);
    credit = kLot;
  }
  --credit;
  return TText::Adopt(block);
}

/// The ways with this tag, a bit each.
uint32_t TCsvTextCache::WaysWithTag(const TBucket& ABucket, uint32_t ATag) {
  uint32_t ways = 0;
  for (size_t way = 0; way < kWays; ++way) ways |= uint32_t{ABucket.Tags[way] == ATag} << way;
  return ways;
}

uint64_t TCsvTextCache::HashOf(std::string_view AText) { return HashOfBytes(AText); }

void TCsvTextCache::FetchBucket(uint64_t AHash) const { Fetch(&FBuckets[AHash & (FBuckets.size() - 1)]); }

void TCsvTextCache::FetchTexts(uint64_t AHash) const {
  const TBucket& bucket = FBuckets[AHash & (FBuckets.size() - 1)];
  for (uint32_t ways = WaysWithTag(bucket, static_cast<uint32_t>(AHash >> 32)); ways != 0; ways &= ways - 1)
    Fetch(bucket.Blocks[std::countr_zero(ways)]);
}

TText TCsvTextCache::TextOf(std::string_view AText, size_t ACol, uint64_t AHash) {
  if (ACol >= FColumns.size()) FColumns.resize(ACol + 1);
  TColumn& column = FColumns[ACol];
  if (!IsLookedUp(AText, ACol)) return TText::FromUtf8(AText);
  const auto tag = static_cast<uint32_t>(AHash >> 32);
  TBucket& bucket = FBuckets[AHash & (FBuckets.size() - 1)];
  for (uint32_t ways = WaysWithTag(bucket, tag); ways != 0; ways &= ways - 1) {
    const auto way = static_cast<size_t>(std::countr_zero(ways));
    if (!bucket.Blocks[way] || !IsSameAscii(AText, bucket.Blocks[way]->View())) continue;
    ++column.Hits;
    return HandOut(bucket, way);
  }
  return AddText(AText, bucket, tag, column);
}

/// A text that was not found by its bytes: one beyond ASCII may be there all the same, any other is new.
TText TCsvTextCache::AddText(std::string_view AText, TBucket& ABucket, uint32_t ATag, TColumn& AColumn) {
  TText text = TText::FromUtf8(AText);
  if (text.Length() != AText.size()) {
    for (uint32_t ways = WaysWithTag(ABucket, ATag); ways != 0; ways &= ways - 1) {
      const auto way = static_cast<size_t>(std::countr_zero(ways));
      if (!ABucket.Blocks[way] || ABucket.Blocks[way]->View() != text.View()) continue;
      ++AColumn.Hits;
      return HandOut(ABucket, way);
    }
  }
  // The trial begins anew at its end as long as it pays, so a column may be given up later as well.
  if (++AColumn.Misses == kTrial) {
    AColumn.IsShared = AColumn.Hits * 4 >= AColumn.Misses;
    AColumn.Misses = 0;
    AColumn.Hits = 0;
  }
  size_t way = 0;
  while (way < kWays && ABucket.Blocks[way]) ++way;
  if (way == kWays) way = ATag % kWays;
  Drop(ABucket, way);
  ABucket.Tags[way] = ATag;
  ABucket.Credits[way] = 0;
  ABucket.Blocks[way] = TText(text).Detach();
  return text;
}

}  // namespace tessarine::detail
