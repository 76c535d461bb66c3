#include <tessarine/core/html/Html.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/TextEncoding.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr uint32_t kMaxCodePoint = 0x10FFFF;
constexpr size_t kMaxEntityLength = 10;

struct TNamedEntity {
  std::u16string_view Name;
  char16_t Unit;
};

constexpr TNamedEntity kEntities[] = {
    {u"amp", u'&'}, {u"lt", u'<'}, {u"gt", u'>'}, {u"quot", u'"'}, {u"apos", u'\''}, {u"nbsp", u' '},
};

struct TNamedColor {
  std::u16string_view Name;
  uint32_t Rgb;
};

// CSS Color Module Level 4, section 6.1, and one system colour that spreadsheets write.
constexpr TNamedColor kColors[] = {
    {u"aqua", 0x00FFFF},    {u"black", 0x000000},   {u"blue", 0x0000FF},   {u"cyan", 0x00FFFF},
    {u"fuchsia", 0xFF00FF}, {u"gray", 0x808080},    {u"green", 0x008000},  {u"grey", 0x808080},
    {u"lime", 0x00FF00},    {u"magenta", 0xFF00FF}, {u"maroon", 0x800000}, {u"navy", 0x000080},
    {u"olive", 0x808000},   {u"orange", 0xFFA500},  {u"purple", 0x800080}, {u"red", 0xFF0000},
    {u"silver", 0xC0C0C0},  {u"teal", 0x008080},    {u"white", 0xFFFFFF},  {u"windowtext", 0x000000},
    {u"yellow", 0xFFFF00},
};

std::optional<uint32_t> HexDigit(char16_t AUnit) {
  if (IsAsciiDigit(AUnit)) return AUnit - u'0';
  const char16_t upper = AsciiUpper(AUnit);
  if (upper >= u'A' && upper <= u'F') return upper - u'A' + 10u;
  return std::nullopt;
}

/// The number that digits of a base stand for; nothing for other units, for no digits and beyond the code points.
std::optional<uint32_t> CodePointOf(std::u16string_view ADigits, uint32_t ABase) {
  if (ADigits.empty()) return std::nullopt;
  uint32_t value = 0;
  for (const char16_t unit : ADigits) {
    const auto digit = HexDigit(unit);
    if (!digit || *digit >= ABase) return std::nullopt;
    value = value * ABase + *digit;
    if (value > kMaxCodePoint) return std::nullopt;
  }
  return value;
}

/// Appends the character of an entity's name ("amp", "#65", "#x41"); false when there is none.
bool AppendEntity(std::u16string_view AName, std::u16string& AOut) {
  for (const TNamedEntity& entity : kEntities) {
    if (entity.Name != AName) continue;
    AOut += entity.Unit;
    return true;
  }
  if (AName.size() < 2 || AName[0] != u'#') return false;
  const bool isHex = AsciiLower(AName[1]) == u'x';
  auto code = CodePointOf(AName.substr(isHex ? 2 : 1), isHex ? 16 : 10);
  if (!code || *code == 0 || (*code >= 0xD800 && *code <= 0xDFFF)) return false;
  if (*code >= 0x80 && *code <= 0x9F) code = Windows1252Unit(static_cast<uint8_t>(*code));
  if (*code == 0xA0) code = u' ';
  if (*code > 0xFFFF) {
    AOut += static_cast<char16_t>(0xD7C0 + (*code >> 10));
    AOut += static_cast<char16_t>(0xDC00 + (*code & 0x3FF));
  } else {
    AOut += static_cast<char16_t>(*code);
  }
  return true;
}

/// The colour of a "#" text; each channel stands in AWidth digits.
std::optional<uint32_t> HexColor(std::u16string_view ADigits, size_t AWidth) {
  uint32_t rgb = 0;
  for (size_t i = 0; i < 6; ++i) {
    const auto digit = HexDigit(ADigits[AWidth == 1 ? i / 2 : i]);
    if (!digit) return std::nullopt;
    rgb = rgb << 4 | *digit;
  }
  return rgb;
}

/// The text before the first ASeparator, which is cut off from AText together with it.
std::u16string_view TakeUntil(std::u16string_view& AText, char16_t ASeparator) {
  const std::u16string_view part = AText.substr(0, AText.find(ASeparator));
  AText.remove_prefix(std::min(part.size() + 1, AText.size()));
  return part;
}

std::optional<uint32_t> RgbColor(std::u16string_view AChannels) {
  std::u16string_view rest = AChannels.substr(0, AChannels.find(u')'));
  uint32_t rgb = 0;
  for (int i = 0; i < 3; ++i) {
    double channel = 0;
    if (!TryParseFileNumber(TakeUntil(rest, u','), channel)) return std::nullopt;
    rgb = rgb << 8 | static_cast<uint32_t>(RoundToEven(std::clamp(channel, 0.0, 255.0)));
  }
  return rgb;
}

std::optional<uint32_t> ParseColor(std::u16string_view AText) {
  for (const TNamedColor& color : kColors) {
    if (EqualAsciiNoCase(color.Name, AText)) return color.Rgb;
  }
  if (AText.starts_with(u'#')) {
    if (AText.size() == 4) return HexColor(AText.substr(1), 1);
    if (AText.size() >= 7) return HexColor(AText.substr(1), 2);
    return std::nullopt;
  }
  if (EqualAsciiNoCase(AText.substr(0, 4), u"rgb(")) return RgbColor(AText.substr(4));
  return std::nullopt;
}

std::u16string WithoutAll(std::u16string AText, std::u16string_view AWord) {
  size_t out = 0;
  for (size_t at = 0; at < AText.size();) {
    if (std::u16string_view(AText).substr(at).starts_with(AWord)) {
      at += AWord.size();
    } else {
      AText[out++] = AText[at++];
    }
  }
  AText.resize(out);
  return AText;
}

// What the keys of a style text do; the value is trimmed.

void ApplyWeight(std::u16string_view AValue, TCellFontInfo& AFont) {
  if (EqualAsciiNoCase(AValue, u"bold")) AFont.Bold = true;
}

void ApplyStyle(std::u16string_view AValue, TCellFontInfo& AFont) {
  if (EqualAsciiNoCase(AValue, u"italic") || EqualAsciiNoCase(AValue, u"oblique")) AFont.Italic = true;
}

void ApplyFamily(std::u16string_view AValue, TCellFontInfo& AFont) {
  std::u16string name(TakeUntil(AValue, u','));
  std::erase_if(name, [](char16_t AUnit) { return AUnit == u'"' || AUnit == u'\''; });
  const std::u16string_view trimmed = TrimSpaces(name);
  if (!trimmed.empty()) AFont.Name = TText(trimmed);
}

void ApplySize(std::u16string_view AValue, TCellFontInfo& AFont) {
  std::u16string text = ToAsciiLower(AValue);
  for (const std::u16string_view unit : {u"pt", u"px", u"em"}) text = WithoutAll(std::move(text), unit);
  double size = 0;
  if (!TryParseFileNumber(std::u16string_view(text), size)) return;
  if (std::abs(size) <= std::numeric_limits<float>::max()) AFont.Size = static_cast<float>(size);
}

void ApplyColor(std::u16string_view AValue, TCellFontInfo& AFont) {
  AFont.Color = TColorRef::FromARGB(CssColorToARGB(AValue));
}

void ApplyDecoration(std::u16string_view AValue, TCellFontInfo& AFont) {
  while (!AValue.empty()) {
    const std::u16string_view word = TakeUntil(AValue, u' ');
    if (EqualAsciiNoCase(word, u"underline")) {
      AFont.Underline = usSingle;
    } else if (EqualAsciiNoCase(word, u"line-through")) {
      AFont.Strikethrough = true;
    } else if (EqualAsciiNoCase(word, u"none")) {
      AFont.Underline = usNone;
      AFont.Strikethrough = false;
    }
  }
}

void ApplyAlignment(std::u16string_view AValue, TCellFontInfo& AFont) {
  if (EqualAsciiNoCase(AValue, u"super") || EqualAsciiNoCase(AValue, u"superscript")) AFont.Script = spSuperscript;
  if (EqualAsciiNoCase(AValue, u"sub") || EqualAsciiNoCase(AValue, u"subscript")) AFont.Script = spSubscript;
}

void ApplyBackground(std::u16string_view AValue, TCellFormat& AFormat) {
  auto color = ParseColor(AValue);
  if (!color) color = ParseColor(AValue.substr(0, AValue.find(u' ')));  // "#fff none"
  if (color) AFormat.Fill = TCellFillInfo::Solid(TColorRef::FromARGB(kOpaqueBlack | *color));
}

/// Calls AVisit(key, value) for the items of a style text, both trimmed.
template <class TVisit>
void ForEachCssItem(std::u16string_view ACss, TVisit&& AVisit) {
  while (!ACss.empty()) {
    std::u16string_view value = TakeUntil(ACss, u';');
    const std::u16string_view key = TrimSpaces(TakeUntil(value, u':'));
    AVisit(key, TrimSpaces(value));
  }
}

struct TFontProperty {
  std::u16string_view Key;
  void (*Apply)(std::u16string_view AValue, TCellFontInfo& AFont);
};

constexpr TFontProperty kFontProperties[] = {
    {u"font-weight", ApplyWeight},       {u"font-style", ApplyStyle}, {u"font-family", ApplyFamily},
    {u"font-size", ApplySize},           {u"color", ApplyColor},      {u"text-decoration", ApplyDecoration},
    {u"vertical-align", ApplyAlignment},
};

}  // namespace

std::u16string HtmlEscape(std::u16string_view AText) {
  std::u16string out;
  out.reserve(AText.size());
  for (const char16_t unit : AText) {
    switch (unit) {
      case u'&': out += u"&amp;"; break;
      case u'<': out += u"&lt;"; break;
      case u'>': out += u"&gt;"; break;
      case u'"': out += u"&quot;"; break;
      case u'\n': out += u"<br>"; break;
      case u'\r': break;
      default: out += unit;
    }
  }
  return out;
}

std::u16string HtmlUnescape(std::u16string_view AText) {
  std::u16string out;
  out.reserve(AText.size());
  for (size_t at = 0; at < AText.size();) {
    const char16_t unit = AText[at++];
    if (unit == u'\r' || unit == u'\n') continue;
    if (unit == u'&') {
      const size_t length = AText.substr(at, kMaxEntityLength).find(u';');
      if (length != std::u16string_view::npos && AppendEntity(AText.substr(at, length), out)) {
        at += length + 1;
        continue;
      }
    }
    out += unit;
  }
  return out;
}

uint32_t CssColorToARGB(std::u16string_view AText) { return kOpaqueBlack | ParseColor(TrimSpaces(AText)).value_or(0); }

std::u16string ColorRefToCssHex(const TColorRef& AColor) {
  constexpr std::u16string_view kDigits = u"0123456789abcdef";
  std::u16string text = u"#";
  for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[AColor.ARGB >> shift & 0xF];
  return text;
}

void ApplyCssToFont(std::u16string_view ACss, TCellFontInfo& AFont) {
  ForEachCssItem(ACss, [&](std::u16string_view AKey, std::u16string_view AValue) {
    for (const TFontProperty& property : kFontProperties) {
      if (EqualAsciiNoCase(property.Key, AKey)) property.Apply(AValue, AFont);
    }
  });
}

void ApplyCssToFormat(std::u16string_view ACss, TCellFormat& AFormat) {
  ApplyCssToFont(ACss, AFormat.Font);
  ForEachCssItem(ACss, [&](std::u16string_view AKey, std::u16string_view AValue) {
    if (EqualAsciiNoCase(AKey, u"background-color") || EqualAsciiNoCase(AKey, u"background"))
      ApplyBackground(AValue, AFormat);
  });
}

}  // namespace tessarine
