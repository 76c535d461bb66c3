#include <tessarine/io/ods/detail/OdsFormulaScan.h>

#include <string>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

namespace {

/// The position behind the bracket that closes the one at AAt, npos when none does.
size_t FindBehindBrackets(std::u16string_view AText, size_t AAt) {
  size_t depth = 0;
  for (size_t at = AAt; at < AText.size(); ++at) {
    if (AText[at] == u'\'' || AText[at] == u'"') at = OdsBehindQuoted(AText, at) - 1;
    if (AText[at] == u'[') ++depth;
    if (AText[at] == u']' && --depth == 0) return at + 1;
  }
  return AText.npos;
}

}  // namespace

size_t OdsBehindQuoted(std::u16string_view AText, size_t AAt) {
  const char16_t quote = AText[AAt];
  for (size_t at = AAt + 1; at < AText.size(); ++at) {
    if (AText[at] != quote) continue;
    if (OdsUnitAt(AText, at + 1) != quote) return at + 1;
    ++at;
  }
  return AText.size();
}

size_t OdsBehindWord(std::u16string_view AText, size_t AAt) {
  while (AAt < AText.size() && OdsIsWordUnit(AText[AAt])) ++AAt;
  return AAt;
}

size_t TOdsBracketGroups::BehindGroup(std::u16string_view AText, size_t AAt) {
  if (FIsBroken) return AAt + 1;
  const size_t end = FindBehindBrackets(AText, AAt);
  FIsBroken = end == AText.npos;
  return FIsBroken ? AAt + 1 : end;
}

TOdsCorner OdsReadCorner(std::u16string_view AText, size_t AAt) {
  size_t at = AAt;
  const auto skip = [&](auto&& AIsPart) {
    const size_t start = at;
    while (at < AText.size() && AIsPart(AText[at])) ++at;
    return at - start;
  };
  if (OdsUnitAt(AText, at) == u'$') ++at;
  TOdsCorner corner;
  corner.Letters = skip(IsAsciiLetter);
  const size_t behindLetters = at;
  if (corner.Letters > 0 && OdsUnitAt(AText, at) == u'$') ++at;
  const size_t digits = skip(IsAsciiDigit);
  if (corner.Letters > 0 && digits > 0) {
    corner.Kind = ckCell;
  } else if (corner.Letters > 0) {
    corner.Kind = ckColumn;
    at = behindLetters;
  } else if (digits > 0) {
    corner.Kind = ckRow;
  }
  corner.Text = AText.substr(AAt, at - AAt);
  return corner;
}

bool OdsIsOnSheet(const TOdsCorner& ACorner) {
  std::u16string_view text = ACorner.Text;
  if (text.size() > 14) return false;
  int32_t row = 0;
  std::u16string letters;
  for (const char16_t unit : text) {
    if (IsAsciiLetter(unit)) letters += unit;
    if (!IsAsciiDigit(unit)) continue;
    row = row * 10 + (unit - u'0');
    if (row > kMaxRow) return false;
  }
  const bool needsCol = ACorner.Kind != ckRow;
  const bool needsRow = ACorner.Kind != ckColumn;
  return (!needsCol || LettersToCol(letters) >= 1) && (!needsRow || row >= 1);
}

}  // namespace tessarine::detail
