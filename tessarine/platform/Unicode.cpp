#include <tessarine/platform/Unicode.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <tessarine/platform/detail/Surrogates.h>

namespace tessarine {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// True when the eight bytes at AText are all ASCII.
bool AreEightAscii(const char* AText) {
  uint64_t block = 0;
  std::memcpy(&block, AText, sizeof block);
  return (block & 0x8080808080808080u) == 0;
}

/// True when the four units at AText are all ASCII.
bool AreFourAscii(const char16_t* AText) {
  uint64_t block = 0;
  std::memcpy(&block, AText, sizeof block);
  return (block & 0xFF80FF80FF80FF80u) == 0;
}

struct TUtf8Step {
  char32_t CodePoint = kReplacement;
  uint32_t Length = 1;
  bool IsValid = false;
};

/// The bytes that may follow lead byte ALead first, by table 3-7 of the Unicode standard; an empty interval for bytes
/// that lead nothing.
struct TLeadByte {
  uint32_t Length = 0;  // of the whole sequence; 0 when it leads nothing
  uint8_t Low = 0x80;
  uint8_t High = 0xBF;
};

constexpr TLeadByte LeadByte(uint8_t ALead) {
  if (ALead >= 0xC2 && ALead <= 0xDF) return {2};
  if (ALead == 0xE0) return {3, 0xA0, 0xBF};
  if (ALead == 0xED) return {3, 0x80, 0x9F};
  if (ALead >= 0xE1 && ALead <= 0xEF) return {3};
  if (ALead == 0xF0) return {4, 0x90, 0xBF};
  if (ALead >= 0xF1 && ALead <= 0xF3) return {4};
  if (ALead == 0xF4) return {4, 0x80, 0x8F};
  return {};
}

/// Decodes the sequence at AText[AAt], whose first byte is no ASCII. An ill-formed one has the length of its maximal
/// well-begun piece.
TUtf8Step DecodeUtf8(std::string_view AText, size_t AAt) {
  const auto byteAt = [&](size_t AIndex) { return static_cast<uint8_t>(AText[AIndex]); };
  const uint8_t first = byteAt(AAt);
  const TLeadByte lead = LeadByte(first);
  if (lead.Length == 0) return {};
  char32_t codePoint = first & (0x7Fu >> lead.Length);
  for (uint32_t i = 1; i < lead.Length; ++i) {
    if (AAt + i >= AText.size()) return {kReplacement, i, false};
    const uint8_t next = byteAt(AAt + i);
    const uint8_t low = i == 1 ? lead.Low : 0x80;
    const uint8_t high = i == 1 ? lead.High : 0xBF;
    if (next < low || next > high) return {kReplacement, i, false};
    codePoint = (codePoint << 6) | (next & 0x3Fu);
  }
  return {codePoint, lead.Length, true};
}

char16_t* WriteUtf16(char32_t ACodePoint, char16_t* AOut) {
  if (ACodePoint < 0x10000) {
    *AOut++ = static_cast<char16_t>(ACodePoint);
    return AOut;
  }
  const char32_t offset = ACodePoint - 0x10000;
  *AOut++ = static_cast<char16_t>(0xD800 + (offset >> 10));
  *AOut++ = static_cast<char16_t>(0xDC00 + (offset & 0x3FF));
  return AOut;
}

char* WriteUtf8(char32_t ACodePoint, char* AOut) {
  const auto tail = [&](int AShift) { return static_cast<char>(0x80 | ((ACodePoint >> AShift) & 0x3F)); };
  if (ACodePoint < 0x80) {
    *AOut++ = static_cast<char>(ACodePoint);
  } else if (ACodePoint < 0x800) {
    *AOut++ = static_cast<char>(0xC0 | (ACodePoint >> 6));
    *AOut++ = tail(0);
  } else if (ACodePoint < 0x10000) {
    *AOut++ = static_cast<char>(0xE0 | (ACodePoint >> 12));
    *AOut++ = tail(6);
    *AOut++ = tail(0);
  } else {
    *AOut++ = static_cast<char>(0xF0 | (ACodePoint >> 18));
    *AOut++ = tail(12);
    *AOut++ = tail(6);
    *AOut++ = tail(0);
  }
  return AOut;
}

/// Encodes AText from AAt on until its end or until AOut, which holds ALimit bytes, has no room for another block.
size_t EncodeUtf8Block(std::u16string_view AText, size_t& AAt, char* AOut, size_t ALimit) {
  constexpr size_t kRoom = 4;
  char* out = AOut;
  const char* const stop = AOut + (ALimit - kRoom);
  while (AAt < AText.size() && out <= stop) {
    if (AText.size() - AAt >= 4 && AreFourAscii(AText.data() + AAt)) {
      for (size_t i = 0; i < 4; ++i) *out++ = static_cast<char>(AText[AAt + i]);
      AAt += 4;
      continue;
    }
    const char16_t unit = AText[AAt++];
    char32_t codePoint = unit;
    if (IsHighSurrogate(unit) && AAt < AText.size() && IsLowSurrogate(AText[AAt])) {
      codePoint = 0x10000 + ((unit & 0x3FFu) << 10) + (AText[AAt++] & 0x3FFu);
    } else if ((unit & 0xF800) == 0xD800) {
      codePoint = kReplacement;
    }
    out = WriteUtf8(codePoint, out);
  }
  return static_cast<size_t>(out - AOut);
}

std::u16string DecodeUtf16Bytes(std::string_view ABytes, bool ABigEndian) {
  std::u16string text(ABytes.size() / 2, u'\0');
  for (size_t i = 0; i < text.size(); ++i) {
    const auto first = static_cast<uint8_t>(ABytes[2 * i]);
    const auto second = static_cast<uint8_t>(ABytes[2 * i + 1]);
    text[i] = static_cast<char16_t>(ABigEndian ? first << 8 | second : second << 8 | first);
  }
  if (ABytes.size() % 2 != 0) text.push_back(static_cast<char16_t>(kReplacement));
  return text;
}

}  // namespace

void AppendUtf8AsUtf16(std::string_view AText, std::u16string& AOut) {
  // A sequence never has more units than bytes, and an ill-formed piece of at least one byte gives one unit.
  const size_t start = AOut.size();
  AOut.resize(start + AText.size());
  char16_t* out = AOut.data() + start;
  size_t at = 0;
  while (at < AText.size()) {
    if (AText.size() - at >= 8 && AreEightAscii(AText.data() + at)) {
      for (size_t i = 0; i < 8; ++i) out[i] = static_cast<char16_t>(AText[at + i]);
      out += 8;
      at += 8;
    } else if (static_cast<uint8_t>(AText[at]) < 0x80) {
      *out++ = static_cast<char16_t>(AText[at++]);
    } else {
      const TUtf8Step step = DecodeUtf8(AText, at);
      out = WriteUtf16(step.CodePoint, out);
      at += step.Length;
    }
  }
  AOut.resize(static_cast<size_t>(out - AOut.data()));
}

std::u16string Utf8ToUtf16(std::string_view AText) {
  std::u16string text;
  AppendUtf8AsUtf16(AText, text);
  return text;
}

void AppendUtf16AsUtf8(std::u16string_view AText, std::string& AOut) {
  char block[1024];
  for (size_t at = 0; at < AText.size();) {
    const size_t count = EncodeUtf8Block(AText, at, block, sizeof block);
    AOut.append(block, count);
  }
}

std::string Utf16ToUtf8(std::u16string_view AText) {
  std::string text;
  text.reserve(AText.size());
  AppendUtf16AsUtf8(AText, text);
  return text;
}

bool IsValidUtf8(std::string_view AText) {
  size_t at = 0;
  while (at < AText.size()) {
    if (AText.size() - at >= 8 && AreEightAscii(AText.data() + at)) {
      at += 8;
    } else if (static_cast<uint8_t>(AText[at]) < 0x80) {
      ++at;
    } else {
      const TUtf8Step step = DecodeUtf8(AText, at);
      if (!step.IsValid) return false;
      at += step.Length;
    }
  }
  return true;
}

std::u16string DecodeTextBytes(std::string_view ABytes) {
  if (ABytes.starts_with("\xEF\xBB\xBF")) return Utf8ToUtf16(ABytes.substr(3));
  if (ABytes.starts_with("\xFF\xFE")) return DecodeUtf16Bytes(ABytes.substr(2), false);
  if (ABytes.starts_with("\xFE\xFF")) return DecodeUtf16Bytes(ABytes.substr(2), true);
  return Utf8ToUtf16(ABytes);
}

std::u16string DecodeTextBytes(std::span<const std::byte> ABytes) {
  return DecodeTextBytes(std::string_view(reinterpret_cast<const char*>(ABytes.data()), ABytes.size()));
}

int CompareAsciiNoCase(std::u16string_view ALeft, std::u16string_view ARight) {
  const size_t count = std::min(ALeft.size(), ARight.size());
  for (size_t i = 0; i < count; ++i) {
    if (ALeft[i] == ARight[i]) continue;
    const char16_t left = AsciiUpper(ALeft[i]);
    const char16_t right = AsciiUpper(ARight[i]);
    if (left != right) return left < right ? -1 : 1;
  }
  if (ALeft.size() == ARight.size()) return 0;
  return ALeft.size() < ARight.size() ? -1 : 1;
}

bool EqualAsciiNoCase(std::u16string_view ALeft, std::u16string_view ARight) {
  if (ALeft.size() != ARight.size()) return false;
  for (size_t i = 0; i < ALeft.size(); ++i)
    if (ALeft[i] != ARight[i] && AsciiUpper(ALeft[i]) != AsciiUpper(ARight[i])) return false;
  return true;
}

std::u16string ToAsciiUpper(std::u16string_view AText) {
  std::u16string text(AText);
  for (char16_t& unit : text) unit = AsciiUpper(unit);
  return text;
}

std::u16string ToAsciiLower(std::u16string_view AText) {
  std::u16string text(AText);
  for (char16_t& unit : text) unit = AsciiLower(unit);
  return text;
}

}  // namespace tessarine
