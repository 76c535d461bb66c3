#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

// The pieces that formulas and addresses of files and of this system have in common.

/// What names of sheets and functions may be made of without quotes, "." apart.
constexpr bool OdsIsWordUnit(char16_t AUnit) {
  return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_' || AUnit == u'$' || AUnit >= 0x80;
}

/// U+0000 behind the end.
constexpr char16_t OdsUnitAt(std::u16string_view AText, size_t AAt) { return AAt < AText.size() ? AText[AAt] : u'\0'; }

/// The position behind the literal or name that begins with a quote at AAt; the end of the text when it has no end.
size_t OdsBehindQuoted(std::u16string_view AText, size_t AAt);

/// The position behind the units of a word that begin at AAt.
size_t OdsBehindWord(std::u16string_view AText, size_t AAt);

/// Finds the ends of groups in brackets from left to right. Once a bracket is not closed, later ones are not looked at
/// any more, so that a text of nothing but brackets costs no more than another.
class TOdsBracketGroups {
 public:
  /// The position behind the group that begins at AAt; AAt + 1 for a bracket that begins none.
  size_t BehindGroup(std::u16string_view AText, size_t AAt);

 private:
  bool FIsBroken = false;
};

enum class TOdsCornerKind : uint8_t { ckNone, ckCell, ckColumn, ckRow };
using enum TOdsCornerKind;

/// "$A$1", "A", "7": one corner of a reference as it is written.
struct TOdsCorner {
  TOdsCornerKind Kind = ckNone;
  std::u16string_view Text;
  size_t Letters = 0;
};

/// The corner that stands at AAt; it may be longer than any address of a sheet.
TOdsCorner OdsReadCorner(std::u16string_view AText, size_t AAt);

/// Whether a corner lies on a sheet.
bool OdsIsOnSheet(const TOdsCorner& ACorner);

}  // namespace tessarine::detail
