#include <tessarine/io/csv/detail/CsvNames.h>

#include <algorithm>
#include <cstddef>

#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

struct TUnitRange {
  char16_t First;
  char16_t Last;
};

/// What beyond ASCII is punctuation, a symbol, a mark, a blank or half of a surrogate pair (Unicode 15 general
/// categories, by block where a block is all of such a kind). All else counts as a letter or digit.
constexpr TUnitRange kNoLetters[] = {
    {0x0080, 0x00A9}, {0x00AB, 0x00B4}, {0x00B6, 0x00B9}, {0x00BB, 0x00BF}, {0x00D7, 0x00D7}, {0x00F7, 0x00F7},
    {0x02C2, 0x02C5}, {0x02D2, 0x02DF}, {0x0300, 0x036F}, {0x037E, 0x037E}, {0x0387, 0x0387}, {0x055A, 0x055F},
    {0x0589, 0x058F}, {0x0591, 0x05CF}, {0x0600, 0x061F}, {0x064B, 0x065F}, {0x066A, 0x066D}, {0x06D4, 0x06D4},
    {0x0964, 0x0965}, {0x0E3F, 0x0E3F}, {0x2000, 0x2070}, {0x2074, 0x207E}, {0x2080, 0x208F}, {0x20A0, 0x2101},
    {0x2103, 0x2106}, {0x2108, 0x2109}, {0x2114, 0x2114}, {0x2116, 0x2118}, {0x211E, 0x2123}, {0x2190, 0x2BFF},
    {0x2E00, 0x2E2E}, {0x2E30, 0x2E5D}, {0x2E80, 0x3004}, {0x3008, 0x3030}, {0x303D, 0x303F}, {0x30A0, 0x30A0},
    {0x30FB, 0x30FB}, {0xD800, 0xF8FF}, {0xFD3E, 0xFD4F}, {0xFDFC, 0xFE6F}, {0xFEFF, 0xFF0F}, {0xFF1A, 0xFF20},
    {0xFF3B, 0xFF40}, {0xFF5B, 0xFF65}, {0xFFE0, 0xFFFF},
};

bool StaysInFileName(char16_t AUnit) {
  if (AUnit < 0x80)
    return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u' ' || AUnit == u'-' || AUnit == u'_';
  const auto* const range =
      std::lower_bound(std::begin(kNoLetters), std::end(kNoLetters), AUnit,
                       [](const TUnitRange& ARange, char16_t AValue) { return ARange.Last < AValue; });
  return range == std::end(kNoLetters) || AUnit < range->First;
}

}  // namespace

std::string WithoutExtension(const std::string& AFileName) {
#if defined(_WIN32)
  const size_t separator = AFileName.find_last_of("/\\:");
#else
  const size_t separator = AFileName.rfind('/');
#endif
  const size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
  const size_t dot = AFileName.rfind('.');
  return dot == std::string::npos || dot <= nameStart ? AFileName : AFileName.substr(0, dot);
}

std::u16string FileNamePart(std::u16string_view AText) {
  std::u16string part(AText);
  for (char16_t& unit : part) {
    if (!StaysInFileName(unit)) unit = u'_';
  }
  part = TrimSpaces(part);
  return part.empty() ? u"Sheet" : part;
}

std::string TFileNameParts::Add(std::u16string_view AText) {
  const std::u16string base = FileNamePart(AText);
  std::u16string part = base;
  for (int number = 2; std::find(FTaken.begin(), FTaken.end(), ToAsciiUpper(part)) != FTaken.end(); ++number)
    part = base + u"_" + Utf8ToUtf16(std::to_string(number));
  FTaken.push_back(ToAsciiUpper(part));
  return Utf16ToUtf8(part);
}

}  // namespace tessarine::detail
