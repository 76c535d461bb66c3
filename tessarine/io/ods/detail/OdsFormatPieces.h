#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine::detail {

enum class TOdsPieceKind : uint8_t {
  opkLiteral,
  opkFill,      // Text: the character that fills
  opkCurrency,  // Text: the symbol
  opkUnits,     // Text: units that mean something: placeholders, letters of dates
  opkGeneral,   // the word "General" of codes for numbers
  opkElapsed,   // Text: the letters of "[hh]"
};
using enum TOdsPieceKind;

/// A stretch of one section of a number format code, its quotes, escapes and brackets undone.
struct TOdsFormatPiece {
  TOdsPieceKind Kind = opkLiteral;
  std::u16string Text;
};

struct TOdsFormatSection {
  std::vector<TOdsFormatPiece> Pieces;
  bool HasColor = false;
  uint32_t ARGB = 0;
  bool IsExact = true;  // false when a condition fell or a space got a plain blank's width
};

/// Cuts a section into pieces. What AMeaning (lower case) holds becomes opkUnits, what else stands for itself is
/// literal. "AM/PM" and "A/P" come as one piece of units where AMeaning holds "a".
TOdsFormatSection CutOdsFormatSection(std::u16string_view ASection, std::u16string_view AMeaning);

}  // namespace tessarine::detail
