#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

enum class TFormulaTokenKind : uint8_t {
  ftEnd,
  ftNumber,    // Text: the digits as written, Number: the value
  ftString,    // Text: the content, doubled quotes undone
  ftBoolean,   // Text: TRUE or FALSE, Number: 1 or 0
  ftError,     // what could not be read; Text tells what stood there
  ftCellRef,   // one cell without sheet
  ftRangeRef,  // a rectangle, whole columns or whole rows, with or without sheet
  ftFunction,  // a bare identifier in upper case: function, defined name, local name
  ftOperator,
  ftLParen,
  ftRParen,
  ftComma,
  ftColon,     // a ":" that no reference took in
  ftSheetRef,  // one cell with sheet
  ftTableRef,  // Text: the table (empty inside the table itself), ColumnName: the column
  ftLBrace,
  ftRBrace,
  ftSemicolon,
};
using enum TFormulaTokenKind;

/// One token of a formula. "$" marks stand only in Text; Col to Row2 are plain 1-based numbers.
struct TFormulaToken {
  TFormulaTokenKind Kind = ftEnd;
  /// For references the text as written, the sheet joined with "!" and without the quotes around its name.
  std::u16string Text;
  double Number = 0;  // ftNumber, ftBoolean
  int32_t Col = 0;
  int32_t Row = 0;
  int32_t Col2 = 0;  // ftRangeRef
  int32_t Row2 = 0;
  std::u16string SheetName;   // unquoted; empty without a prefix
  std::u16string ColumnName;  // ftTableRef
  /// Where the token stands in the text that SetFormula was given, 0-based, a leading "=" counted. A bare identifier
  /// spans the blanks behind it.
  int32_t StartIndex = 0;
  int32_t Length = 0;
};

/// Cuts the text of one formula into tokens. Never fails: what cannot be read becomes a token of kind ftError.
/// ASCII-minded: names are made of ASCII letters, digits, "_" and "$", white space is U+0020 alone. There is no percent
/// operator, no exponent, no error literal and no R1C1 notation. Time is linear in the text, whatever it holds.
class TESSARINE_API TFormulaTokenizer {
 public:
  TFormulaTokenizer() = default;
  explicit TFormulaTokenizer(std::u16string_view AText) { SetFormula(AText); }

  /// Starts on AText, dropping one leading "=". The text is borrowed: it must stay until the last NextToken.
  void SetFormula(std::u16string_view AText);

  /// Reads the next token into AToken, whose strings keep their memory; ftEnd at the end and from then on.
  void NextToken(TFormulaToken& AToken);
  TFormulaToken NextToken();

 private:
  char16_t Peek() const { return FPos < FInput.size() ? FInput[FPos] : u'\0'; }
  char16_t PeekAt(size_t AOffset) const { return AOffset < FInput.size() - FPos ? FInput[FPos + AOffset] : u'\0'; }
  bool AtEnd() const { return FPos >= FInput.size(); }
  bool SkipSpaces();
  bool TakeIf(char16_t AUnit);
  bool IsNextBehindSpaces(char16_t AUnit) const;
  std::u16string_view TakeRun(uint8_t AClasses);
  std::u16string_view TakeRefRun();
  void ReadToken(TFormulaToken& AToken);
  void ReadNumber(TFormulaToken& AToken);
  void ReadString(TFormulaToken& AToken);
  void ReadSymbol(TFormulaToken& AToken);
  void ReadQuoted(char16_t AQuote, std::u16string& AText);
  bool ReadBracketPart(std::u16string& AColumnName);
  void ReadCellOrIdentOrFunc(TFormulaToken& AToken);
  bool TryReadDottedFunction(std::u16string_view AFirst, TFormulaToken& AToken);
  bool TryTakeSheetPrefix(std::u16string_view AWord, TFormulaToken& AToken);
  void ReadSheetReference(std::u16string_view AFirst, TFormulaToken& AToken);
  bool TryReadRange(std::u16string_view AFirst, TFormulaToken& AToken);
  void ReadPlainWord(std::u16string_view AWord, TFormulaToken& AToken);

  std::u16string_view FInput;  // without the leading "="
  size_t FPos = 0;             // 0-based in FInput, never behind its end
  size_t FTokenStart = 0;
  size_t FDottedDeadEnd = 0;  // a dot before this position is known to begin no dotted function name
  int32_t FEqualsOffset = 0;  // 1 when a leading "=" was dropped
};

/// All tokens before ftEnd.
TESSARINE_API std::vector<TFormulaToken> TokenizeFormula(std::u16string_view AText);

/// One to three letters, then digits, "$" marks ignored wherever they stand; the place itself is not checked.
TESSARINE_API bool LooksLikeCellRef(std::u16string_view AText);

/// The cell that AText names, "$" marks ignored; false, with both outputs 0, when it is none of a sheet.
TESSARINE_API bool ParseCellRefText(std::u16string_view AText, int32_t& ACol, int32_t& ARow);

/// "A", "$XFD": letters of a column of the sheet and nothing else but "$" marks.
TESSARINE_API bool IsColumnOnlyRef(std::u16string_view AText);

/// "7", "$1048576": digits of a row of the sheet and nothing else but "$" marks.
TESSARINE_API bool IsRowOnlyRef(std::u16string_view AText);

}  // namespace tessarine
