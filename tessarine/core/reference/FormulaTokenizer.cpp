#include <tessarine/core/reference/FormulaTokenizer.h>

#include <algorithm>
#include <array>
#include <limits>

#include <tessarine/core/values/Address.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

// Classes of ASCII characters; every other character has none.
constexpr uint8_t kDigit = 1;
constexpr uint8_t kLetter = 2;
constexpr uint8_t kUnderscore = 4;
constexpr uint8_t kDollar = 8;
constexpr uint8_t kQuote = 16;

constexpr uint8_t kNameStart = kLetter | kUnderscore;
constexpr uint8_t kIdentifier = kDigit | kLetter | kUnderscore;
constexpr uint8_t kRefRun = kDollar | kDigit | kLetter;
constexpr uint8_t kWordRun = kRefRun | kUnderscore;
constexpr uint8_t kWordStart = kDollar | kQuote | kNameStart;

constexpr std::array<uint8_t, 128> MakeClassTable() {
  std::array<uint8_t, 128> table{};
  for (char16_t unit = 0; unit < 128; ++unit) {
    if (IsAsciiDigit(unit)) table[unit] = kDigit;
    if (IsAsciiLetter(unit)) table[unit] = kLetter;
  }
  table[u'_'] = kUnderscore;
  table[u'$'] = kDollar;
  table[u'\''] = kQuote;
  return table;
}

constexpr std::array<uint8_t, 128> kClassTable = MakeClassTable();

bool IsOneOf(char16_t AUnit, uint8_t AClasses) { return AUnit < 128 && (kClassTable[AUnit] & AClasses) != 0; }

/// What a word of letters, digits and "$" could refer to, found in one pass.
struct TWordShape {
  int32_t Col = 0;  // 0 when the letters are no column of a sheet
  int32_t Row = 0;  // 0 when the digits are no row of a sheet
  bool HasLetters = false;
  bool HasDigits = false;
  bool IsOrdered = false;  // at most three letters, then digits, nothing else but "$"

  bool LooksLikeCell() const { return IsOrdered && HasLetters && HasDigits; }
  bool IsCell() const { return LooksLikeCell() && Col > 0 && Row > 0; }
  bool IsColumn() const { return IsOrdered && HasLetters && !HasDigits && Col > 0; }
  bool IsRow() const { return IsOrdered && !HasLetters && HasDigits && Row > 0; }
};

TWordShape ShapeOf(std::u16string_view AWord) {
  TWordShape shape;
  size_t at = 0;
  int32_t letters = 0;
  for (; at < AWord.size() && !IsAsciiDigit(AWord[at]); ++at) {
    if (AWord[at] == u'$') continue;
    if (!IsOneOf(AWord[at], kLetter) || ++letters > 3) return shape;
    shape.Col = shape.Col * 26 + (AsciiUpper(AWord[at]) - u'A' + 1);
  }
  shape.HasLetters = letters > 0;
  shape.HasDigits = at < AWord.size();
  for (; at < AWord.size(); ++at) {
    if (AWord[at] == u'$') continue;
    if (!IsAsciiDigit(AWord[at])) return shape;
    shape.Row = shape.Row * 10 + (AWord[at] - u'0');
    if (shape.Row > kMaxRow) shape.Row = kMaxRow + 1;
  }
  shape.IsOrdered = true;
  if (shape.Col > kMaxCol) shape.Col = 0;
  if (shape.Row > kMaxRow) shape.Row = 0;
  return shape;
}

/// TRUE or FALSE in any case, else an empty text.
std::u16string_view BooleanWord(std::u16string_view AWord) {
  if (AWord.size() == 4 && EqualAsciiNoCase(AWord, u"TRUE")) return u"TRUE";
  if (AWord.size() == 5 && EqualAsciiNoCase(AWord, u"FALSE")) return u"FALSE";
  return {};
}

void AssignUpper(std::u16string_view AWord, std::u16string& AText) {
  AText.resize(AWord.size());
  std::transform(AWord.begin(), AWord.end(), AText.begin(), AsciiUpper);
}

void AssignJoined(std::u16string_view AFirst, char16_t AJoint, std::u16string_view ASecond, std::u16string& AText) {
  AText.reserve(AFirst.size() + 1 + ASecond.size());
  AText.assign(AFirst).append(1, AJoint).append(ASecond);
}

std::u16string_view WithoutLeadingDollar(std::u16string_view AWord) {
  return AWord.starts_with(u'$') ? AWord.substr(1) : AWord;
}

/// Makes AToken the range of two whole columns or two whole rows, if the shapes are that.
bool SetWholeRange(const TWordShape& AFirst, const TWordShape& ASecond, TFormulaToken& AToken) {
  if (AFirst.IsColumn() && ASecond.IsColumn()) {
    AToken.Col = AFirst.Col;
    AToken.Col2 = ASecond.Col;
    AToken.Row = 1;
    AToken.Row2 = kMaxRow;
  } else if (AFirst.IsRow() && ASecond.IsRow()) {
    AToken.Col = 1;
    AToken.Col2 = kMaxCol;
    AToken.Row = AFirst.Row;
    AToken.Row2 = ASecond.Row;
  } else {
    return false;
  }
  AToken.Kind = ftRangeRef;
  return true;
}

TFormulaTokenKind SymbolKind(char16_t AUnit) {
  switch (AUnit) {
    case u'+':
    case u'-':
    case u'*':
    case u'/':
    case u'^':
    case u'&':
    case u'=':
    case u'@':
    case u'<':
    case u'>': return ftOperator;
    case u'(': return ftLParen;
    case u')': return ftRParen;
    case u',': return ftComma;
    case u':': return ftColon;
    case u';': return ftSemicolon;
    case u'{': return ftLBrace;
    case u'}': return ftRBrace;
    default: return ftError;
  }
}

/// The value of a run of digits and dots; 0 for one that is no number.
double RunValue(std::u16string_view ARun) {
  const TFormatSettings& settings = CurrentFormatSettings();
  double value = 0;
  bool isNumber = false;
  if (settings.DecimalSeparator == u'.') {
    isNumber = TryStrToFloat(ARun, settings, value);
  } else {
    std::u16string text(ARun);
    std::replace(text.begin(), text.end(), u'.', settings.DecimalSeparator);
    isNumber = TryStrToFloat(text, settings, value);
  }
  return isNumber ? value : 0;
}

int32_t SpanNumber(size_t AValue) {
  return static_cast<int32_t>(std::min<size_t>(AValue, std::numeric_limits<int32_t>::max()));
}

void Reset(TFormulaToken& AToken) {
  AToken.Kind = ftEnd;
  AToken.Text.clear();
  AToken.Number = 0;
  AToken.Col = AToken.Row = AToken.Col2 = AToken.Row2 = 0;
  AToken.SheetName.clear();
  AToken.ColumnName.clear();
}

}  // namespace

void TFormulaTokenizer::SetFormula(std::u16string_view AText) {
  FEqualsOffset = AText.starts_with(u'=') ? 1 : 0;
  FInput = AText.substr(static_cast<size_t>(FEqualsOffset));
  FPos = 0;
  FTokenStart = 0;
  FDottedDeadEnd = 0;
}

TFormulaToken TFormulaTokenizer::NextToken() {
  TFormulaToken token;
  NextToken(token);
  return token;
}

void TFormulaTokenizer::NextToken(TFormulaToken& AToken) {
  Reset(AToken);
  if (SkipSpaces()) {
    FTokenStart = FPos;
    ReadToken(AToken);
  }
  AToken.StartIndex = SpanNumber(FTokenStart + static_cast<size_t>(FEqualsOffset));
  AToken.Length = SpanNumber(FPos - FTokenStart);
}

bool TFormulaTokenizer::SkipSpaces() {
  while (FPos < FInput.size() && FInput[FPos] == u' ') ++FPos;
  return !AtEnd();
}

bool TFormulaTokenizer::TakeIf(char16_t AUnit) {
  if (AtEnd() || FInput[FPos] != AUnit) return false;
  ++FPos;
  return true;
}

bool TFormulaTokenizer::IsNextBehindSpaces(char16_t AUnit) const {
  size_t at = FPos;
  while (at < FInput.size() && FInput[at] == u' ') ++at;
  return at < FInput.size() && FInput[at] == AUnit;
}

std::u16string_view TFormulaTokenizer::TakeRun(uint8_t AClasses) {
  const size_t start = FPos;
  while (FPos < FInput.size() && IsOneOf(FInput[FPos], AClasses)) ++FPos;
  return FInput.substr(start, FPos - start);
}

std::u16string_view TFormulaTokenizer::TakeRefRun() { return TakeRun(kRefRun); }

void TFormulaTokenizer::ReadToken(TFormulaToken& AToken) {
  const char16_t unit = FInput[FPos];
  if (IsOneOf(unit, kDigit) || (unit == u'.' && IsOneOf(PeekAt(1), kDigit))) return ReadNumber(AToken);
  if (IsOneOf(unit, kWordStart)) return ReadCellOrIdentOrFunc(AToken);
  if (unit == u'"') return ReadString(AToken);
  if (unit != u'[') return ReadSymbol(AToken);
  if (ReadBracketPart(AToken.ColumnName)) {
    AToken.Kind = ftTableRef;
  } else {
    AToken.Kind = ftError;
    AToken.Text = u'[';
  }
}

void TFormulaTokenizer::ReadNumber(TFormulaToken& AToken) {
  constexpr size_t kExactDigits = 15;
  const size_t start = FPos;
  int64_t whole = 0;
  bool hasDot = false;
  for (; FPos < FInput.size(); ++FPos) {
    const char16_t unit = FInput[FPos];
    if (unit == u'.') {
      hasDot = true;
    } else if (!IsOneOf(unit, kDigit)) {
      break;
    } else if (FPos - start < kExactDigits) {
      whole = whole * 10 + (unit - u'0');
    }
  }
  const std::u16string_view run = FInput.substr(start, FPos - start);
  AToken.Kind = ftNumber;
  AToken.Text = run;
  AToken.Number = !hasDot && run.size() <= kExactDigits ? static_cast<double>(whole) : RunValue(run);
}

void TFormulaTokenizer::ReadString(TFormulaToken& AToken) {
  AToken.Kind = ftString;
  ReadQuoted(u'"', AToken.Text);
}

void TFormulaTokenizer::ReadSymbol(TFormulaToken& AToken) {
  const char16_t unit = FInput[FPos++];
  AToken.Kind = SymbolKind(unit);
  AToken.Text = unit;
  if (unit != u'<' && unit != u'>') return;
  if (TakeIf(u'=')) {
    AToken.Text += u'=';
  } else if (unit == u'<' && TakeIf(u'>')) {
    AToken.Text += u'>';
  }
}

/// Reads from the opening quote to the closing one, or to the end of the text; a doubled quote stands for one.
void TFormulaTokenizer::ReadQuoted(char16_t AQuote, std::u16string& AText) {
  ++FPos;
  while (!AtEnd()) {
    const size_t quote = std::min(FInput.find(AQuote, FPos), FInput.size());
    AText.append(FInput, FPos, quote - FPos);
    FPos = quote;
    if (!TakeIf(AQuote) || !TakeIf(AQuote)) return;
    AText += AQuote;
  }
}

/// Reads "[Name]", "[[Name]]" and "['Name']" from the "[" on; false when no name came out.
bool TFormulaTokenizer::ReadBracketPart(std::u16string& AColumnName) {
  ++FPos;
  SkipSpaces();
  if (TakeIf(u'[')) SkipSpaces();
  const bool quoted = TakeIf(u'\'');
  size_t end = quoted ? FInput.find(u'\'', FPos) : FInput.find_first_of(u",[]", FPos);
  end = std::min(end, FInput.size());
  std::u16string_view name = FInput.substr(FPos, end - FPos);
  FPos = end;
  if (quoted) {
    TakeIf(u'\'');
  } else {
    const size_t last = name.find_last_not_of(u' ');
    name = name.substr(0, last == name.npos ? 0 : last + 1);
  }
  while (TakeIf(u']')) {}
  AColumnName = name;
  return !name.empty();
}

void TFormulaTokenizer::ReadCellOrIdentOrFunc(TFormulaToken& AToken) {
  if (Peek() == u'$' && PeekAt(1) == u'\'') ++FPos;
  if (Peek() == u'\'') {
    ReadQuoted(u'\'', AToken.SheetName);
    if (Peek() != u'!' && Peek() != u'.') {
      AToken.Kind = ftError;
      AToken.Text.swap(AToken.SheetName);
      return;
    }
    ++FPos;
  }
  std::u16string_view word = TakeRun(kWordRun);
  if (AToken.SheetName.empty() && !word.empty()) {
    if (Peek() == u'.' && TryReadDottedFunction(word, AToken)) return;
    if (TryTakeSheetPrefix(word, AToken)) word = TakeRefRun();
  }
  if (AToken.SheetName.empty()) {
    ReadPlainWord(word, AToken);
  } else {
    ReadSheetReference(word, AToken);
  }
}

/// With the position on the dot behind AFirst: reads "NAME.NAME (" up to the parenthesis. A chain of names that is
/// followed by no parenthesis is remembered as a whole, so that its later dots need no look again.
bool TFormulaTokenizer::TryReadDottedFunction(std::u16string_view AFirst, TFormulaToken& AToken) {
  const size_t start = FPos;
  if (start < FDottedDeadEnd || !IsOneOf(PeekAt(1), kNameStart)) return false;
  bool complete = true;
  while (complete && Peek() == u'.') {
    complete = IsOneOf(PeekAt(1), kNameStart);
    if (!complete) break;
    ++FPos;
    TakeRun(kIdentifier);
  }
  const size_t end = FPos;
  SkipSpaces();
  if (!complete || Peek() != u'(') {
    FDottedDeadEnd = end;
    FPos = start;
    return false;
  }
  AToken.Kind = ftFunction;
  AssignUpper(AFirst, AToken.Text);
  for (const char16_t unit : FInput.substr(start, end - start)) AToken.Text += AsciiUpper(unit);
  return true;
}

/// Takes the "!" or "." behind a word that is a sheet's name.
bool TFormulaTokenizer::TryTakeSheetPrefix(std::u16string_view AWord, TFormulaToken& AToken) {
  const bool isSheet =
      Peek() == u'!' || (Peek() == u'.' && IsOneOf(PeekAt(1), kDollar | kLetter) && !ShapeOf(AWord).LooksLikeCell());
  if (!isSheet) return false;
  ++FPos;
  AToken.SheetName = WithoutLeadingDollar(AWord);
  return true;
}

/// What follows a sheet's name: a cell, a rectangle, whole columns or rows. No blanks are allowed inside.
void TFormulaTokenizer::ReadSheetReference(std::u16string_view AFirst, TFormulaToken& AToken) {
  const TWordShape first = ShapeOf(AFirst);
  AssignJoined(AToken.SheetName, u'!', AFirst, AToken.Text);
  AToken.Kind = first.IsCell() ? ftSheetRef : ftError;
  if (first.IsCell()) {
    AToken.Col = first.Col;
    AToken.Row = first.Row;
  }
  if (!TakeIf(u':')) return;
  const std::u16string_view secondWord = TakeRefRun();
  const TWordShape second = ShapeOf(secondWord);
  AToken.Kind = ftError;
  if (first.IsCell() && second.IsCell()) {
    AToken.Kind = ftRangeRef;
    AToken.Col2 = second.Col;
    AToken.Row2 = second.Row;
  } else if (first.IsCell() || !SetWholeRange(first, second, AToken)) {
    return;
  }
  AToken.Text.append(1, u':').append(secondWord);
}

/// Reads AFirst as a cell, a rectangle, or as whole columns or rows, with blanks around the colon allowed.
bool TFormulaTokenizer::TryReadRange(std::u16string_view AFirst, TFormulaToken& AToken) {
  const TWordShape first = ShapeOf(AFirst);
  if (!first.IsCell() && !first.IsColumn() && !first.IsRow()) return false;
  const size_t behindFirst = FPos;
  SkipSpaces();
  if (TakeIf(u':')) {
    SkipSpaces();
    const std::u16string_view secondWord = TakeRefRun();
    const TWordShape second = ShapeOf(secondWord);
    if (first.IsCell() && second.IsCell()) {
      AToken.Kind = ftRangeRef;
      AToken.Col = first.Col;
      AToken.Row = first.Row;
      AToken.Col2 = second.Col;
      AToken.Row2 = second.Row;
    } else {
      SetWholeRange(first, second, AToken);
    }
    if (AToken.Kind == ftRangeRef) {
      AssignJoined(AFirst, u':', secondWord, AToken.Text);
      return true;
    }
  }
  FPos = behindFirst;
  if (!first.IsCell()) return false;
  AToken.Kind = ftCellRef;
  AToken.Text = AFirst;
  AToken.Col = first.Col;
  AToken.Row = first.Row;
  return true;
}

void TFormulaTokenizer::ReadPlainWord(std::u16string_view AWord, TFormulaToken& AToken) {
  if (IsNextBehindSpaces(u'(')) {
    AToken.Kind = ftFunction;
    AssignUpper(AWord, AToken.Text);
    std::erase(AToken.Text, u'$');
    return;
  }
  if (const std::u16string_view boolean = BooleanWord(AWord); !boolean.empty()) {
    AToken.Kind = ftBoolean;
    AToken.Text = boolean;
    AToken.Number = boolean == u"TRUE" ? 1 : 0;
    return;
  }
  if (TryReadRange(AWord, AToken)) return;
  const size_t behindWord = FPos;
  SkipSpaces();
  if (!AWord.empty() && Peek() == u'[') {
    if (ReadBracketPart(AToken.ColumnName)) {
      AToken.Kind = ftTableRef;
      AToken.Text = AWord;
      return;
    }
    FPos = behindWord;
  }
  AToken.Kind = ftFunction;
  AssignUpper(AWord, AToken.Text);
}

std::vector<TFormulaToken> TokenizeFormula(std::u16string_view AText) {
  std::vector<TFormulaToken> tokens;
  TFormulaTokenizer tokenizer(AText);
  for (TFormulaToken token = tokenizer.NextToken(); token.Kind != ftEnd; token = tokenizer.NextToken())
    tokens.push_back(std::move(token));
  return tokens;
}

bool LooksLikeCellRef(std::u16string_view AText) { return ShapeOf(AText).LooksLikeCell(); }

bool ParseCellRefText(std::u16string_view AText, int32_t& ACol, int32_t& ARow) {
  const TWordShape shape = ShapeOf(AText);
  ACol = shape.IsCell() ? shape.Col : 0;
  ARow = shape.IsCell() ? shape.Row : 0;
  return shape.IsCell();
}

bool IsColumnOnlyRef(std::u16string_view AText) { return ShapeOf(AText).IsColumn(); }

bool IsRowOnlyRef(std::u16string_view AText) { return ShapeOf(AText).IsRow(); }

}  // namespace tessarine
