#include <tessarine/platform/XmlEscapes.h>

#include <optional>

#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

constexpr size_t kEscapeLength = 7;  // _xHHHH_

int HexDigit(char16_t AUnit) {
  if (IsAsciiDigit(AUnit)) return AUnit - u'0';
  const char16_t lower = AsciiLower(AUnit);
  return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

/// The unit that the escape at the head of AText stands for.
std::optional<char16_t> EscapeAt(std::u16string_view AText) {
  if (AText.size() < kEscapeLength || AText[0] != u'_' || AsciiLower(AText[1]) != u'x' || AText[6] != u'_') {
    return std::nullopt;
  }
  int unit = 0;
  for (size_t i = 2; i < 6; ++i) {
    const int digit = HexDigit(AText[i]);
    if (digit < 0) return std::nullopt;
    unit = unit * 16 + digit;
  }
  return static_cast<char16_t>(unit);
}

}  // namespace

std::u16string_view UnescapeXlsxText(std::u16string_view AText, std::u16string& ABuffer) {
  size_t done = 0;
  size_t at = AText.find(u'_');
  bool hasEscape = false;
  while (at != std::u16string_view::npos) {
    const auto unit = EscapeAt(AText.substr(at));
    if (unit) {
      if (!hasEscape) ABuffer.clear();
      hasEscape = true;
      ABuffer.append(AText, done, at - done);
      ABuffer += *unit;
      done = at + kEscapeLength;
    }
    at = AText.find(u'_', unit ? done : at + 1);
  }
  if (!hasEscape) return AText;
  ABuffer.append(AText, done);
  return ABuffer;
}

std::u16string UnescapeXlsxText(std::u16string_view AText) {
  std::u16string buffer;
  return std::u16string(UnescapeXlsxText(AText, buffer));
}

std::string UnescapeXlsxText(std::string_view AText) {
  if (AText.find("_x") == std::string_view::npos && AText.find("_X") == std::string_view::npos) {
    return std::string(AText);
  }
  std::u16string buffer;
  return Utf16ToUtf8(UnescapeXlsxText(Utf8ToUtf16(AText), buffer));
}

}  // namespace tessarine
