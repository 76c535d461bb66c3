#include <tessarine/platform/Base64.h>

#include <array>
#include <cstdint>

namespace tessarine {

namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kBlank = 64;
constexpr uint8_t kPadding = 65;
constexpr uint8_t kOther = 66;

/// The six bits of every character, or what else it is.
constexpr std::array<uint8_t, 256> MakeDigitTable() {
  std::array<uint8_t, 256> table{};
  table.fill(kOther);
  for (uint8_t digit = 0; digit < 64; ++digit) table[static_cast<uint8_t>(kDigits[digit])] = digit;
  for (const char blank : {' ', '\t', '\r', '\n'}) table[static_cast<uint8_t>(blank)] = kBlank;
  table[static_cast<uint8_t>('=')] = kPadding;
  return table;
}
constexpr std::array<uint8_t, 256> kDigitOf = MakeDigitTable();

char Digit(uint32_t ABits, int AShift) { return kDigits[ABits >> AShift & 63]; }

/// The bytes of what is left behind the last full group of four; false for a single digit.
bool AppendTail(uint32_t ABits, int ACount, std::vector<std::byte>& AOut) {
  if (ACount == 1) return false;
  ABits <<= 6 * (4 - ACount);
  for (int byte = 0; byte + 1 < ACount; ++byte) AOut.push_back(static_cast<std::byte>(ABits >> (16 - 8 * byte) & 0xFF));
  return true;
}

}  // namespace

void AppendBase64(std::span<const std::byte> ABytes, std::string& AOut) {
  size_t out = AOut.size();
  AOut.resize(out + (ABytes.size() + 2) / 3 * 4);
  size_t at = 0;
  for (; at + 3 <= ABytes.size(); at += 3) {
    const uint32_t bits = std::to_integer<uint32_t>(ABytes[at]) << 16 | std::to_integer<uint32_t>(ABytes[at + 1]) << 8 |
                          std::to_integer<uint32_t>(ABytes[at + 2]);
    for (int shift = 18; shift >= 0; shift -= 6) AOut[out++] = Digit(bits, shift);
  }
  if (at == ABytes.size()) return;
  const bool two = ABytes.size() - at == 2;
  const uint32_t bits =
      std::to_integer<uint32_t>(ABytes[at]) << 16 | (two ? std::to_integer<uint32_t>(ABytes[at + 1]) << 8 : 0);
  AOut[out++] = Digit(bits, 18);
  AOut[out++] = Digit(bits, 12);
  AOut[out++] = two ? Digit(bits, 6) : '=';
  AOut[out++] = '=';
}

std::vector<std::byte> DecodeBase64(std::string_view AText) {
  std::vector<std::byte> bytes;
  bytes.reserve(AText.size() / 4 * 3 + 3);
  uint32_t bits = 0;
  int count = 0;
  bool isPadded = false;
  for (const char character : AText) {
    const uint8_t digit = kDigitOf[static_cast<uint8_t>(character)];
    if (digit == kBlank) continue;
    if (digit == kPadding && count >= 2) {
      isPadded = true;
      continue;
    }
    if (digit >= kBlank || isPadded) return {};
    bits = bits << 6 | digit;
    if (++count < 4) continue;
    for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<std::byte>(bits >> shift & 0xFF));
    bits = 0;
    count = 0;
  }
  if (count != 0 && !AppendTail(bits, count, bytes)) return {};
  return bytes;
}

}  // namespace tessarine
