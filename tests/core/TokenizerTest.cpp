#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "../support/LocaleGuard.h"

namespace tessarine {
namespace {

using test::ExpectCases;
using test::TCase;

constexpr const char* kKindNames[] = {"End",  "Num",  "Str",   "Bool",  "Err",   "Cell",  "Range",  "Func",   "Op",
                                      "LPar", "RPar", "Comma", "Colon", "Sheet", "Table", "LBrace", "RBrace", "Semi"};

std::string DumpToken(const TFormulaToken& AToken) {
  std::string text = std::string(kKindNames[static_cast<size_t>(AToken.Kind)]) + "<" + Utf16ToUtf8(AToken.Text) + ">";
  if (AToken.Kind == ftNumber || AToken.Kind == ftBoolean) text += "=" + Utf16ToUtf8(GeneralNumberText(AToken.Number));
  if (!AToken.SheetName.empty()) text += " sheet=" + Utf16ToUtf8(AToken.SheetName);
  if (AToken.Kind == ftTableRef) text += " column=" + Utf16ToUtf8(AToken.ColumnName);
  for (const int32_t place : {AToken.Col, AToken.Row, AToken.Col2, AToken.Row2})
    if (AToken.Col > 0) text += " " + std::to_string(place);
  return text;
}

std::string DumpTokens(std::u16string_view AFormula) {
  std::string text;
  for (const TFormulaToken& token : TokenizeFormula(AFormula)) text += (text.empty() ? "" : "; ") + DumpToken(token);
  return text;
}

/// A tokenizer in the plainest words: every look ahead starts afresh, texts are copied, nothing is remembered but the
/// position. It is the definition of what the quick one must give.
class TPlainTokenizer {
 public:
  explicit TPlainTokenizer(std::u16string AText) : FInput(std::move(AText)) {
    if (!FInput.empty() && FInput[0] == u'=') {
      FInput.erase(0, 1);
      FEquals = 1;
    }
  }

  TFormulaToken Next() {
    TFormulaToken token;
    SkipSpaces();
    if (FPos < FInput.size()) {
      FStart = FPos;
      Read(token);
    }
    token.StartIndex = static_cast<int32_t>(FStart + FEquals);
    token.Length = static_cast<int32_t>(FPos - FStart);
    return token;
  }

 private:
  static bool Letter(char16_t AUnit) { return IsAsciiLetter(AUnit); }
  static bool Digit(char16_t AUnit) { return IsAsciiDigit(AUnit); }
  static bool NameStart(char16_t AUnit) { return Letter(AUnit) || AUnit == u'_'; }

  char16_t At(size_t AOffset = 0) const { return FPos + AOffset < FInput.size() ? FInput[FPos + AOffset] : u'\0'; }
  void SkipSpaces() {
    while (At() == u' ') ++FPos;
  }
  std::u16string Run(bool ADollar, bool AUnderscore) {
    std::u16string run;
    while (Letter(At()) || Digit(At()) || (ADollar && At() == u'$') || (AUnderscore && At() == u'_'))
      run += FInput[FPos++];
    return run;
  }
  static std::u16string NoDollars(std::u16string AText) {
    std::erase(AText, u'$');
    return AText;
  }
  static bool LooksCell(const std::u16string& AText) {
    const std::u16string text = NoDollars(AText);
    size_t letters = 0;
    while (letters < text.size() && Letter(text[letters])) ++letters;
    return letters >= 1 && letters <= 3 && letters < text.size() &&
           std::all_of(text.begin() + static_cast<ptrdiff_t>(letters), text.end(), Digit);
  }
  static bool ParseCell(const std::u16string& AText, int32_t& ACol, int32_t& ARow) {
    const TCellAddress address = LooksCell(AText) ? TCellAddress::FromA1(NoDollars(AText)) : TCellAddress{};
    ACol = address.Col;
    ARow = address.Row;
    return ACol >= 1 && ARow >= 1;
  }
  static int32_t ColumnOnly(const std::u16string& AText) { return LettersToCol(NoDollars(AText)); }
  static int32_t RowOnly(const std::u16string& AText) {
    const std::u16string text = NoDollars(AText);
    if (text.empty() || !std::all_of(text.begin(), text.end(), Digit)) return 0;
    return TCellAddress::FromA1(u"A" + text).Row;
  }
  static bool Whole(const std::u16string& AFirst, const std::u16string& ASecond, TFormulaToken& AToken) {
    if (ColumnOnly(AFirst) > 0 && ColumnOnly(ASecond) > 0) {
      AToken.Col = ColumnOnly(AFirst), AToken.Col2 = ColumnOnly(ASecond), AToken.Row = 1, AToken.Row2 = 1048576;
    } else if (RowOnly(AFirst) > 0 && RowOnly(ASecond) > 0) {
      AToken.Row = RowOnly(AFirst), AToken.Row2 = RowOnly(ASecond), AToken.Col = 1, AToken.Col2 = 16384;
    } else {
      return false;
    }
    AToken.Kind = ftRangeRef;
    return true;
  }
  static void Set(TFormulaToken& AToken, TFormulaTokenKind AKind, std::u16string AText) {
    AToken.Kind = AKind;
    AToken.Text = std::move(AText);
  }

  void Read(TFormulaToken& AToken) {
    const char16_t c = At();
    if (Digit(c) || (c == u'.' && Digit(At(1)))) {
      std::u16string run;
      while (Digit(At()) || At() == u'.') run += FInput[FPos++];
      Set(AToken, ftNumber, run);
      if (!TryStrToFloatPlain(run, u'.', AToken.Number)) AToken.Number = 0;
    } else if (NameStart(c) || c == u'$' || c == u'\'') {
      ReadWord(AToken);
    } else if (c == u'[') {
      if (Bracket(AToken)) return Set(AToken, ftTableRef, u"");
      Set(AToken, ftError, u"[");
    } else {
      ReadSymbol(AToken);
    }
  }

  void ReadSymbol(TFormulaToken& AToken) {
    const char16_t c = FInput[FPos++];
    if (c == u'"') return Set(AToken, ftString, Quoted(u'"'));
    std::u16string text(1, c);
    if ((c == u'<' || c == u'>') && At() == u'=')
      text += FInput[FPos++];
    else if (c == u'<' && At() == u'>')
      text += FInput[FPos++];
    static const std::u16string kSingles = u"(),:{};";
    static const TFormulaTokenKind kKinds[] = {ftLParen, ftRParen, ftComma, ftColon, ftLBrace, ftRBrace, ftSemicolon};
    const size_t single = kSingles.find(c);
    if (single != kSingles.npos) return Set(AToken, kKinds[single], text);
    Set(AToken, std::u16string(u"+-*/^&=@<>").find(c) != std::u16string::npos ? ftOperator : ftError, text);
  }

  std::u16string Quoted(char16_t AQuote) {
    std::u16string text;
    while (FPos < FInput.size()) {
      const char16_t c = FInput[FPos++];
      if (c != AQuote) {
        text += c;
      } else if (FPos < FInput.size() && FInput[FPos] == AQuote) {
        text += c;
        ++FPos;
      } else {
        break;
      }
    }
    return text;
  }

  bool Bracket(TFormulaToken& AToken) {
    std::u16string name;
    ++FPos;
    SkipSpaces();
    if (At() == u'[') {
      ++FPos;
      SkipSpaces();
    }
    if (At() == u'\'') {
      ++FPos;
      while (FPos < FInput.size() && At() != u'\'') name += FInput[FPos++];
      if (At() == u'\'') ++FPos;
    } else {
      while (FPos < FInput.size() && At() != u',' && At() != u'[' && At() != u']') name += FInput[FPos++];
      while (!name.empty() && name.back() == u' ') name.pop_back();
    }
    while (At() == u']') ++FPos;
    AToken.ColumnName = name;
    return !name.empty();
  }

  bool Dotted(const std::u16string& AWord, TFormulaToken& AToken) {
    std::u16string joined = AWord;
    while (At() == u'.') {
      if (!NameStart(At(1))) return false;
      ++FPos;
      joined += u"." + Run(false, true);
    }
    SkipSpaces();
    if (At() != u'(') return false;
    Set(AToken, ftFunction, ToAsciiUpper(joined));
    return true;
  }

  void ReadWord(TFormulaToken& AToken) {
    if (At() == u'$' && At(1) == u'\'') ++FPos;
    std::u16string sheet;
    if (At() == u'\'') {
      ++FPos;
      sheet = Quoted(u'\'');
      if (At() != u'!' && At() != u'.') return Set(AToken, ftError, sheet);
      ++FPos;
    }
    std::u16string word = Run(true, true);
    const auto takeSheet = [&] {
      sheet = word[0] == u'$' ? word.substr(1) : word;
      ++FPos;
      word = Run(true, false);
    };
    if (sheet.empty() && !word.empty()) {
      if (At() == u'!') {
        takeSheet();
      } else if (At() == u'.') {
        const size_t remembered = FPos;
        if (NameStart(At(1)) && Dotted(word, AToken)) return;
        FPos = remembered;
        if ((At(1) == u'$' || Letter(At(1))) && !LooksCell(word)) takeSheet();
      }
    }
    if (sheet.empty()) return ReadPlain(word, AToken);
    ReadQualified(sheet, word, AToken);
  }

  void ReadQualified(const std::u16string& ASheet, const std::u16string& AWord, TFormulaToken& AToken) {
    AToken.SheetName = ASheet;
    Set(AToken, ftError, ASheet + u"!" + AWord);
    if (ParseCell(AWord, AToken.Col, AToken.Row)) {
      AToken.Kind = ftSheetRef;
      if (At() != u':') return;
      ++FPos;
      const std::u16string second = Run(true, false);
      const bool parses = ParseCell(second, AToken.Col2, AToken.Row2);
      Set(AToken, parses ? ftRangeRef : ftError, AToken.Text + (parses ? u":" + second : u""));
    } else if (At() == u':') {
      ++FPos;
      const std::u16string second = Run(true, false);
      if (Whole(AWord, second, AToken)) AToken.Text += u":" + second;
    }
  }

  void ReadPlain(const std::u16string& AWord, TFormulaToken& AToken) {
    const size_t behindWord = FPos;
    const std::u16string upper = ToAsciiUpper(AWord);
    SkipSpaces();
    const char16_t next = At();
    FPos = behindWord;
    if (next == u'(') return Set(AToken, ftFunction, NoDollars(upper));
    if (upper == u"TRUE" || upper == u"FALSE") {
      AToken.Number = upper == u"TRUE" ? 1 : 0;
      return Set(AToken, ftBoolean, upper);
    }
    const bool isCell = ParseCell(AWord, AToken.Col, AToken.Row);
    SkipSpaces();
    if (At() == u':') {
      ++FPos;
      SkipSpaces();
      const std::u16string second = Run(true, false);
      if (isCell && ParseCell(second, AToken.Col2, AToken.Row2)) return Set(AToken, ftRangeRef, AWord + u":" + second);
      if (!isCell && Whole(AWord, second, AToken)) return Set(AToken, ftRangeRef, AWord + u":" + second);
    }
    FPos = behindWord;
    if (isCell) return Set(AToken, ftCellRef, AWord);
    SkipSpaces();
    if (!AWord.empty() && At() == u'[') {
      if (Bracket(AToken)) return Set(AToken, ftTableRef, AWord);
      FPos = behindWord;
    }
    Set(AToken, ftFunction, upper);
  }

  std::u16string FInput;
  size_t FPos = 0;
  size_t FStart = 0;
  size_t FEquals = 0;
};

std::string Spans(const TCase& ACase) {
  std::string text;
  for (const TFormulaToken& token : TokenizeFormula(ACase.Text(1)))
    text += (text.empty() ? "" : " ") + std::to_string(token.StartIndex) + "+" + std::to_string(token.Length);
  return text;
}

std::string WordKinds(const TCase& ACase) {
  const std::u16string word = ACase.Text(1);
  int32_t col = 7;
  int32_t row = 7;
  const bool isCell = ParseCellRefText(word, col, row);
  EXPECT_EQ(col >= 1 && row >= 1, isCell) << ACase.Place();
  const bool are[] = {LooksLikeCellRef(word), isCell, IsColumnOnlyRef(word), IsRowOnlyRef(word)};
  const char* const names[] = {"looks", "cell", "column", "row"};
  std::string text;
  for (size_t i = 0; i < std::size(are); ++i)
    if (are[i]) text += (text.empty() ? "" : " ") + std::string(names[i]);
  return text.empty() ? "-" : text;
}

TEST(Tokenizer, ExamplesHold) {
  ExpectCases("core/formula_tokens.tsv", {{"tokens", [](const TCase& ACase) { return DumpTokens(ACase.Text(1)); }},
                                          {"spans", Spans},
                                          {"word", WordKinds}});
}

TEST(Tokenizer, EndStaysTheEnd) {
  TFormulaTokenizer tokenizer(u"=A1");
  EXPECT_EQ(tokenizer.NextToken().Kind, ftCellRef);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(DumpToken(tokenizer.NextToken()), "End<>");
  tokenizer.SetFormula(u"2");
  EXPECT_EQ(DumpToken(tokenizer.NextToken()), "Num<2>=2");
}

TEST(Tokenizer, NumbersDoNotDependOnTheLocale) {
  const test::TLocaleGuard guard;
  TFormatSettings german = CurrentFormatSettings();
  german.DecimalSeparator = u',';
  german.GroupSeparator = u'.';
  SetDefaultFormatSettings(german);
  EXPECT_EQ(DumpTokens(u"=1.5+0.1+1.234.567"), "Num<1.5>=1.5; Op<+>; Num<0.1>=0.1; Op<+>; Num<1.234.567>=0");
}

TEST(Tokenizer, AgreesWithThePlainOneOnRandomText) {
  static const char16_t* const kPieces[] = {
      u"A1",     u"$B$2",  u"XFD1048576", u"A0",   u"A",     u"$C",  u"1",    u"12",     u".5",  u"1.2.3", u"Sheet1",
      u"'My S'", u"''",    u"'it''s'",    u"'",    u"!",     u".",   u".",    u":",      u" ",   u"  ",    u"(",
      u")",      u"[",     u"]",          u"[[",   u"]]",    u",",   u"_x",   u"$",      u"foo", u"TRUE",  u"false",
      u"\"",     u"\"a\"", u"<",          u">",    u"=",     u"#",   u"%",    u"\u00e9", u"\t",  u"{",     u";",
      u"}",      u"@",     u"+",          u"R1C1", u"LOG10", u"\0x", u"Tab[",
  };
  std::mt19937 random(20240501);
  for (int round = 0; round < 60000; ++round) {
    std::u16string formula = random() % 2 ? u"=" : u"";
    for (auto count = random() % 10; count > 0; --count) formula += kPieces[random() % std::size(kPieces)];
    TFormulaTokenizer quick(formula);
    TPlainTokenizer plain(formula);
    TFormulaToken token;
    do {
      quick.NextToken(token);
      const TFormulaToken expected = plain.Next();
      ASSERT_EQ(DumpToken(token), DumpToken(expected)) << Utf16ToUtf8(formula);
      ASSERT_EQ(token.StartIndex, expected.StartIndex) << Utf16ToUtf8(formula);
      ASSERT_EQ(token.Length, expected.Length) << Utf16ToUtf8(formula);
      ASSERT_EQ(token.ColumnName, expected.ColumnName) << Utf16ToUtf8(formula);
    } while (token.Kind != ftEnd);
  }
}

// A look ahead that is repeated at every piece would take minutes here.
TEST(Tokenizer, LongTextsOfAnyShapeAreReadInOneGo) {
  const std::u16string_view pieces[] = {u"a.",  u"a.b ", u"a [",  u"a[ ]", u"a[[", u"A1:", u"A1 : ", u"A:",
                                        u"$1:", u"'",    u"'a'.", u"x!",   u"$",   u"(",   u"[",     u"[ ",
                                        u"[]",  u"1.",   u"9",    u"A",    u"\"",  u" "};
  for (const std::u16string_view piece : pieces) {
    std::u16string formula = u"=";
    while (formula.size() < 1'000'000) formula += piece;
    TFormulaTokenizer tokenizer(formula);
    TFormulaToken token;
    size_t covered = 1;  // the equals sign
    for (tokenizer.NextToken(token); token.Kind != ftEnd; tokenizer.NextToken(token)) {
      ASSERT_GT(token.Length, 0);
      covered = static_cast<size_t>(token.StartIndex) + static_cast<size_t>(token.Length);
    }
    EXPECT_LE(covered, formula.size());
    const size_t tail = formula.size() - formula.find_last_not_of(u' ') - 1;
    EXPECT_GE(covered + tail, formula.size()) << Utf16ToUtf8(piece);
  }
}

}  // namespace
}  // namespace tessarine
