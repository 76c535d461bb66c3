#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TWorkbook;

enum class TFormulaColorKind : uint8_t {
  fckDefault,
  fckFunction,
  fckRef,
  fckString,
  fckNumber,
  fckOperator,
  fckBoolean,
  fckError,
  fckPunct,
};
using enum TFormulaColorKind;

/// A piece of a formula's text in one colour.
struct TFormulaColorSpan {
  int32_t StartIndex = 0;  // 0-based offset in the text
  int32_t Length = 0;
  TFormulaColorKind Kind = fckDefault;
  int32_t RefColorIndex = -1;  // fckRef: its place in the colour cycle

  friend bool operator==(const TFormulaColorSpan&, const TFormulaColorSpan&) = default;
};

/// A reference of a formula to be marked on the grid in the colour that its text has.
struct TFormulaRefHighlight {
  TCellRange Range;  // corners as written
  int32_t ColorIndex = 0;
  std::u16string SheetName;  // unquoted; empty for the formula's own sheet

  friend bool operator==(const TFormulaRefHighlight&, const TFormulaRefHighlight&) = default;
};

/// The word that is being typed.
struct TAutocompletePrefix {
  int32_t Start = 0;  // 0-based offset of its first character
  std::u16string Prefix;

  friend bool operator==(const TAutocompletePrefix&, const TAutocompletePrefix&) = default;
};

/// Help for editing a formula in a cell or a formula bar. Works on the text alone: a caret is the number of characters
/// before it, and a text that does not begin with "=" is no formula and has neither colours nor references.
class TESSARINE_API TFormulaAssist {
 public:
  /// How many colours references go round in.
  static constexpr int32_t kRefColorCount = 6;

  /// One span for each token and default spans for what lies between; together they cover the text.
  static std::vector<TFormulaColorSpan> ColorSpans(TTextArg AFormula);

  /// The references that name cells. Structured references count in the colours but are not in the list.
  static std::vector<TFormulaRefHighlight> RefHighlights(TTextArg AFormula);

  /// The ARGB colour of a span. An index outside the cycle means its first colour.
  static uint32_t ColorForKind(TFormulaColorKind AKind, int32_t AColorIndex = -1);

  /// The letters, digits, "_", "." and "!" before the caret; a caret outside the text means its nearest end.
  static TAutocompletePrefix AutocompletePrefix(TTextArg AFormula, int32_t ACaret);

  /// The functions, defined names and sheets ("Sheet1!") that begin with a prefix in any case, sorted without regard
  /// to ASCII case, each once. Without a workbook (null) functions only; nothing for a blank prefix.
  static std::vector<TText> AutocompleteCandidates(TTextArg APrefix, const TWorkbook* AWorkbook);

  /// Where Tab (or Shift+Tab) puts the caret: behind the next (previous) comma of the arguments, or before the
  /// parenthesis that ends the call. ACaret as it is when there is no such place. Of two tokens that touch the caret it
  /// is at the left one.
  static int32_t NextArgumentCaret(TTextArg AFormula, int32_t ACaret, bool ABackward);

  /// Whether a click on the grid may insert a reference: what stands before the caret asks for an operand.
  static bool CaretAllowsPointing(TTextArg AFormula, int32_t ACaret);

  /// The names offered while a formula is typed: a choice in a fixed order, not all that the library knows.
  static std::span<const std::u16string_view> RegisteredFunctionNames();
};

}  // namespace tessarine
