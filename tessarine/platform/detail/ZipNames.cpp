#include <tessarine/platform/detail/ZipNames.h>

#include <algorithm>

#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

/// Code page 437, bytes 0x80 to 0xFF: unicode.org/Public/MAPPINGS/VENDORS/MICSFT/PC/CP437.TXT.
constexpr std::u16string_view kCodePage437 =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
    u"áíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
    u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
    u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00a0";
static_assert(kCodePage437.size() == 128);

unsigned char FoldedByte(char AChar) {
  const auto byte = static_cast<unsigned char>(AChar);
  return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + 32) : byte;
}

}  // namespace

void AppendZipName(std::span<const std::byte> AName, std::string& ANames) {
  const std::string_view name(reinterpret_cast<const char*>(AName.data()), AName.size());
  const size_t start = ANames.size();
  if (IsValidUtf8(name)) {
    ANames += name;
  } else {
    for (const char unit : name) {
      const auto byte = static_cast<unsigned char>(unit);
      if (byte < 0x80) {
        ANames += unit;
      } else {
        AppendUtf16AsUtf8(kCodePage437.substr(byte - 0x80u, 1), ANames);
      }
    }
  }
  std::replace(ANames.begin() + static_cast<std::ptrdiff_t>(start), ANames.end(), '\\', '/');
}

int CompareZipNames(std::string_view ALeft, std::string_view ARight) {
  const size_t common = std::min(ALeft.size(), ARight.size());
  for (size_t i = 0; i < common; ++i) {
    const int difference = FoldedByte(ALeft[i]) - FoldedByte(ARight[i]);
    if (difference != 0) return difference;
  }
  return ALeft.size() == ARight.size() ? 0 : ALeft.size() < ARight.size() ? -1 : 1;
}

}  // namespace tessarine
