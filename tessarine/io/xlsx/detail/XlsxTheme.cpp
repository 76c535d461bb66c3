#include <tessarine/io/xlsx/detail/XlsxTheme.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <vector>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr size_t kFewestColors = 4;

/// The last six digits of a colour's text; opaque black for what is no colour.
uint32_t ThemeColorFromText(std::string_view AText) {
  if (AText.size() > 6) AText.remove_prefix(AText.size() - 6);
  uint32_t value = 0;
  const char* const end = AText.data() + AText.size();
  const auto [stop, error] = std::from_chars(AText.data(), end, value, 16);
  return AText.size() == 6 && error == std::errc() && stop == end ? kOpaqueBlack | value : kOpaqueBlack;
}

uint32_t ReadSlotColor(const TXmlNode* ASlot) {
  if (const TXmlNode* plain = XmlFindChild(ASlot, "srgbClr")) return ThemeColorFromText(XmlAttr(plain, "val"));
  return ThemeColorFromText(XmlAttr(XmlFindChild(ASlot, "sysClr"), "lastClr"));
}

void ReadColors(const TXmlNode* AScheme, TTessarineTheme& ATheme) {
  std::vector<uint32_t> colors;
  for (const TXmlNode* slot : TXmlElements(AScheme)) {
    const bool isSlot = std::any_of(std::begin(kXlsxThemeSlots), std::end(kXlsxThemeSlots),
                                    [slot](std::string_view AName) { return XmlLocalNameIs(slot, AName); });
    if (isSlot) colors.push_back(ReadSlotColor(slot));
  }
  if (colors.size() < kFewestColors) return;
  ATheme.ClearColors();
  for (const uint32_t color : colors) ATheme.AddColor(color);
}

std::string_view LatinTypeface(const TXmlNode* AScheme, std::string_view AFontName) {
  return XmlAttr(XmlFindChild(XmlFindChild(AScheme, AFontName), "latin"), "typeface");
}

}  // namespace

void ReadXlsxTheme(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits,
                   TTessarineTheme& ATheme) {
  const TXmlTree tree(ABytes, APartName, ALimits);
  const TXmlNode* const nested = XmlFindChild(tree.Root(), "themeElements");
  const auto findScheme = [&](std::string_view AName) {
    const TXmlNode* const scheme = XmlFindChild(nested, AName);
    return scheme ? scheme : XmlFindChild(tree.Root(), AName);
  };
  ReadColors(findScheme("clrScheme"), ATheme);
  const TXmlNode* const fonts = findScheme("fontScheme");
  if (const auto name = LatinTypeface(fonts, "majorFont"); !name.empty()) ATheme.SetMajorFont(TText::FromUtf8(name));
  if (const auto name = LatinTypeface(fonts, "minorFont"); !name.empty()) ATheme.SetMinorFont(TText::FromUtf8(name));
}

}  // namespace tessarine::detail
