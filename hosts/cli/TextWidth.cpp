#include <hosts/cli/TextWidth.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace tessarine::cli {

namespace {

struct TCodeRange {
  char32_t First;
  char32_t Last;
};

/// Blocks whose characters are wide (Unicode Standard Annex 11, East_Asian_Width W and F).
constexpr TCodeRange kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},   {0x25FD, 0x25FE},
    {0x2614, 0x2615},   {0x2648, 0x2653},   {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x2705, 0x2705},
    {0x270A, 0x270B},   {0x2728, 0x2728},   {0x274C, 0x274C},   {0x2753, 0x2755},   {0x2757, 0x2757},
    {0x2795, 0x2797},   {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},   {0x2E80, 0x303E},
    {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xA960, 0xA97C},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x17000, 0x18CFF}, {0x1B000, 0x1B2FF}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F200, 0x1F320},
    {0x1F32D, 0x1F335}, {0x1F337, 0x1F37C}, {0x1F37E, 0x1F393}, {0x1F3A0, 0x1F3CA}, {0x1F3CF, 0x1F3D3},
    {0x1F3E0, 0x1F3F0}, {0x1F3F8, 0x1F43E}, {0x1F440, 0x1F4FC}, {0x1F4FF, 0x1F53D}, {0x1F550, 0x1F567},
    {0x1F5FB, 0x1F64F}, {0x1F680, 0x1F6C5}, {0x1F6D0, 0x1F6DF}, {0x1F6EB, 0x1F6FC}, {0x1F7E0, 0x1F7F0},
    {0x1F90C, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD},
};

/// Marks that stand over the character before them, joiners and variation selectors.
constexpr TCodeRange kZero[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},   {0x064B, 0x065F},
    {0x06D6, 0x06DC}, {0x0900, 0x0902}, {0x0E31, 0x0E31}, {0x0E34, 0x0E3A},   {0x0E47, 0x0E4E},
    {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF},   {0x3099, 0x309A},
    {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0x1F3FB, 0x1F3FF}, {0xE0100, 0xE01EF},
};

bool IsIn(char32_t ACode, const TCodeRange* ABegin, const TCodeRange* AEnd) {
  const TCodeRange* const range = std::lower_bound(
      ABegin, AEnd, ACode, [](const TCodeRange& ARange, char32_t AValue) { return ARange.Last < AValue; });
  return range != AEnd && ACode >= range->First;
}

int WidthOf(char32_t ACode) {
  if (ACode < 0x300) return 1;
  if (IsIn(ACode, std::begin(kZero), std::end(kZero))) return 0;
  return IsIn(ACode, std::begin(kWide), std::end(kWide)) ? 2 : 1;
}

/// The character at AAt; moves AAt behind it.
char32_t TakeCode(std::u16string_view AText, size_t& AAt) {
  const char32_t unit = AText[AAt++];
  if ((unit & 0xFC00) != 0xD800 || AAt == AText.size() || (AText[AAt] & 0xFC00) != 0xDC00) return unit;
  return 0x10000 + ((unit & 0x3FF) << 10) + (AText[AAt++] & 0x3FFu);
}

bool SteersDirection(char16_t AUnit) {
  return AUnit == 0x200E || AUnit == 0x200F || (AUnit >= 0x202A && AUnit <= 0x202E) ||
         (AUnit >= 0x2066 && AUnit <= 0x2069);
}

}  // namespace

int DisplayWidth(std::u16string_view AText) {
  int width = 0;
  for (size_t at = 0; at < AText.size();) width += WidthOf(TakeCode(AText, at));
  return width;
}

std::u16string CutToWidth(std::u16string_view AText, int AWidth) {
  int width = 0;
  size_t fitting = 0;  // units that leave a column for the ellipsis
  for (size_t at = 0; at < AText.size();) {
    width += WidthOf(TakeCode(AText, at));
    if (width <= AWidth - 1) fitting = at;
    if (width > AWidth) return std::u16string(AText.substr(0, fitting)) + (AWidth > 0 ? u"\u2026" : u"");
  }
  return std::u16string(AText);
}

std::u16string WithoutControls(std::u16string_view AText) {
  std::u16string text(AText);
  for (char16_t& unit : text) {
    if (unit == u'\n' || unit == u'\r' || unit == u'\t') {
      unit = u' ';
    } else if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || SteersDirection(unit)) {
      unit = u'\uFFFD';
    }
  }
  return text;
}

}  // namespace tessarine::cli
