#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

std::string Parts(std::u16string_view AText) {
  const auto parts = SplitSheetRefText(AText);
  if (!parts) return "none";
  return Utf16ToUtf8(parts->Sheet + u"|" + parts->First + u"|" + parts->Second);
}

TEST(ReferenceRewrite, SplitsSheetFromReference) {
  const struct {
    const char16_t* Text;
    const char* Parts;
  } cases[] = {
      {u"Sheet1!A1", "Sheet1|A1|"},
      {u"'It''s'!A1:B2", "It's|A1|B2"},
      {u"A1:B2", "none"},
      {u"S!", "none"},
      {u"!A1", "|A1|"},
      {u"'a!b'!A1", "'a|b'!A1|"},
      {u"S!A:B:C", "S|A|B:C"},
      {u"'!A1", "'|A1|"},
      {u"''!A1", "|A1|"},
      {u"S!:B2", "none"},
  };
  for (const auto& row : cases) EXPECT_EQ(Parts(row.Text), row.Parts) << Utf16ToUtf8(row.Text);
}

TEST(ReferenceRewrite, QuotesSheetNamesWhereNeeded) {
  const struct {
    const char16_t* Name;
    const char* Quoted;
  } cases[] = {
      {u"Sheet1", "Sheet1"}, {u"_x", "_x"}, {u"1st", "'1st'"}, {u"My Sheet", "'My Sheet'"}, {u"It's", "'It''s'"},
      {u"a.b", "'a.b'"},     {u"", "''"},   {u"A$", "'A$'"},   {u"\u00c4", "'\xC3\x84'"},
  };
  for (const auto& row : cases) EXPECT_EQ(Utf16ToUtf8(QuoteSheetName(row.Name)), row.Quoted);
}

/// An insert (above 0) or a delete at a row of Sheet1, for a formula on Sheet1.
std::string Rows(std::u16string_view AFormula, int64_t AStart, int64_t ADelta) {
  return Utf16ToUtf8(AdjustFormula(AFormula, u"Sheet1", true, saRows, AStart, ADelta));
}

TEST(ReferenceRewrite, ReferencesFollowInsertedAndDeletedRows) {
  const struct {
    const char16_t* Formula;
    int64_t Start, Delta;
    const char* Result;
  } cases[] = {
      {u"=A1", 1, -1, "=#REF!"},
      {u"=$A$5", 2, 1, "=$A$6"},
      {u"=SUM(A1:A10)", 10, -1, "=SUM(#REF!)"},
      {u"=SUM(A1:A10)", 5, -1, "=SUM(A1:A9)"},
      {u"=SUM(Sheet1!A1:$B$10)", 10, -1, "=SUM(#REF!)"},
      {u"=B9:A$2", 3, 2, "=B11:A$2"},
      {u"=Sheet2!A1+a5", 1, 1, "=Sheet2!A1+A6"},
      {u"=sheet1!a5+SHEET1.B5", 5, 1, "=Sheet1!A6+Sheet1!B6"},
      {u"='Sheet1'!A5:b$6", 1, 1, "=Sheet1!A6:B$7"},
      {u"='My Sheet'!$a$1 + 'It''s'!b2:c3", 1, 1, "='My Sheet'!$a$1+'It''s'!b2:c3"},
      {u"= sum( a1 , 2 ) & \"a\"\"b\"", 1, 1, "=SUM(A2,2)&\"a\"\"b\""},
      {u"=1 2", 1, 1, "=12"},
      {u"==1", 1, 1, "=1"},
      {u"A5", 1, 1, "A6"},
      {u"", 1, 1, ""},
      {u"= A1", 1, 0, "= A1"},
      {u"=A1048576", 1, 1, "=A1048577"},
      {u"=Table1[Price]+Table1[[My Col]]+[@x]", 1, 1, "=Table1[Price]+Table1['My Col']+[@x]"},
      {u"=T['it''s']", 1, 1, "=T[it]'s']"},
      {u"=T[it's]", 1, 1, "=T['it''s']"},
      {u"='Other sheet'!Rate+T[ ]+#REF!+5%", 1, 1, "='Other sheet'!Rate+T[ ]+#REF!+5%"},
      {u"=true+Name", 1, 1, "=TRUE+NAME"},
      {u"=A5", 1, 2147483647, "=A2147483652"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Rows(row.Formula, row.Start, row.Delta), row.Result) << Utf16ToUtf8(row.Formula);
}

TEST(ReferenceRewrite, OnlyTheEditedSheetIsMeant) {
  const auto adjust = [](std::u16string_view AFormula, std::u16string_view ASheet, bool AOnSheet) {
    return Utf16ToUtf8(AdjustFormula(AFormula, ASheet, AOnSheet, saRows, 1, 1));
  };
  EXPECT_EQ(adjust(u"=A1+Sheet2!A1", u"Sheet2", false), "=A1+Sheet2!A2");
  EXPECT_EQ(adjust(u"=A1+Sheet2!A1", u"Sheet1", true), "=A2+Sheet2!A1");
  EXPECT_EQ(adjust(u"=a1 : b2", u"Sheet2", false), "=a1 : b2");
  EXPECT_EQ(adjust(u"='MY SHEET'!A1", u"My Sheet", false), "='My Sheet'!A2");
  EXPECT_EQ(adjust(u"='a!b'!$A$1:B2", u"a!b", false), "='a!b'!$A$2:B3");
  EXPECT_EQ(adjust(u"='It''s'!A1", u"It's", true), "='It''s'!A2");
}

TEST(ReferenceRewrite, WholeColumnsAndRowsStayWhole) {
  const auto columns = [](std::u16string_view AFormula, int64_t AStart, int64_t ADelta) {
    return Utf16ToUtf8(AdjustFormula(AFormula, u"Sheet1", true, saColumns, AStart, ADelta));
  };
  EXPECT_EQ(Rows(u"=SUM(A:C)+SUM($A:b)", 1, 1), "=SUM(A:C)+SUM($A:b)");
  EXPECT_EQ(Rows(u"=SUM('sheet1'!A:C)", 1, -5), "=SUM('sheet1'!A:C)");
  EXPECT_EQ(Rows(u"=$2:$5", 1, 1), "=$3:$6");
  EXPECT_EQ(Rows(u"=Sheet1!2:$5", 3, 1), "=Sheet1!2:$6");
  EXPECT_EQ(Rows(u"=$2:$5", 5, -1), "=#REF!");
  EXPECT_EQ(columns(u"=SUM(a:$C)", 2, 1), "=SUM(A:$D)");
  EXPECT_EQ(columns(u"=SUM(A:$C)", 1, -1), "=SUM(#REF!)");
  EXPECT_EQ(columns(u"=$2:$5", 1, 1), "=$2:$5");
  EXPECT_EQ(columns(u"='sheet1'!B:C", 1, 1), "=Sheet1!C:D");
  EXPECT_EQ(Utf16ToUtf8(AdjustFormulaForMove(u"=A:C+$1:$2", u"S", true, saColumns, 1, 1, 5)), "=E:B+$1:$2");
  EXPECT_EQ(Utf16ToUtf8(OffsetSharedFormula(u"=A:$C+$1:$2+S!3:$4", 1, 2)), "=B:$C+$1:$2+S!5:$4");
  EXPECT_EQ(Utf16ToUtf8(OffsetSharedFormula(u"=A:C", -1, 0)), "=#REF!");
  EXPECT_EQ(Utf16ToUtf8(OffsetSharedFormula(u"=$A:$C+'x'!a:b", 0, 9)), "=$A:$C+'x'!a:b");
}

TEST(ReferenceRewrite, ReferencesFollowMovedLines) {
  const auto move = [](std::u16string_view AFormula, int64_t AStart, int64_t ACount, int64_t ADest) {
    return Utf16ToUtf8(AdjustFormulaForMove(AFormula, u"Sheet1", true, saRows, AStart, ACount, ADest));
  };
  EXPECT_EQ(move(u"=A3+A4+A1+$A$2+A5", 3, 2, 1), "=A1+A2+A3+$A$4+A5");
  EXPECT_EQ(move(u"=SUM(A3:A5)", 3, 1, 9), "=SUM(A9:A4)");
  EXPECT_EQ(move(u"=A3+B9", 3, 1, 1048577), "=#REF!+B8");
  EXPECT_EQ(move(u"= A3", 3, 0, 9), "= A3");
  EXPECT_EQ(move(u"= A3", 3, 1, 3), "= A3");
}

TEST(ReferenceRewrite, CopiedFormulasMoveWhatIsNotAbsolute) {
  const struct {
    const char16_t* Formula;
    int64_t Cols, Rows;
    const char* Result;
  } cases[] = {
      {u"=A1+$B$1", 2, 1, "=C2+$B$1"},
      {u"=A$1+$A1", 1, 1, "=B$1+$A2"},
      {u"=A1", -1, 0, "=#REF!"},
      {u"=A1+XFD1", 1, 0, "=B1+#REF!"},
      {u"=A1048576", 0, 1, "=#REF!"},
      {u"=$A$1", -5, -5, "=$A$1"},
      {u"='other sheet'!a1:$B2+x.c3", 1, 1, "='other sheet'!B2:$B3+x!D4"},
      {u"=LOG10+log10(A1)", 0, 1, "=LOG11+LOG10(A2)"},
      {u"= a1", 0, 0, "= a1"},
      {u"=A1", 9223372036854775807, -9223372036854775807, "=#REF!"},
      {u"=1E5*\"A1\"", 1, 1, "=1F6*\"A1\""},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Utf16ToUtf8(OffsetSharedFormula(row.Formula, row.Cols, row.Rows)), row.Result)
        << Utf16ToUtf8(row.Formula);
}

/// A formula in canonical spelling, made of references, names, numbers and operators.
std::u16string RandomFormula(std::mt19937& ARandom) {
  static const char16_t* const kOperands[] = {
      u"B3",    u"$C$4", u"D$5:$E6", u"Data!F7",    u"'My Data'!G8:H9", u"B:C",
      u"$3:$4", u"12",   u"\"A1\"",  u"SUM(B3,C4)", u"Table1[Price]",   u"TRUE"};
  std::u16string formula = u"=";
  for (auto count = ARandom() % 5 + 1; count > 0; --count) {
    formula += kOperands[ARandom() % std::size(kOperands)];
    if (count > 1) formula += u"+-*&"[ARandom() % 4];
  }
  return formula;
}

TEST(ReferenceRewrite, AnEditAndItsReverseGiveTheFormulaBack) {
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    const std::u16string formula = RandomFormula(random);
    const TShiftAxis axis = random() % 2 ? saRows : saColumns;
    const auto start = static_cast<int64_t>(random() % 12) + 1;
    const auto count = static_cast<int64_t>(random() % 4) + 1;
    const auto dest = static_cast<int64_t>(random() % 12) + 1;
    for (const char16_t* sheet : {u"Data", u"My Data", u"Elsewhere"}) {
      const std::u16string inserted = AdjustFormula(formula, sheet, true, axis, start, count);
      EXPECT_EQ(AdjustFormula(inserted, sheet, true, axis, start, -count), formula);
      const std::u16string moved = AdjustFormulaForMove(formula, sheet, true, axis, start, count, dest);
      EXPECT_EQ(AdjustFormulaForMove(moved, sheet, true, axis, dest, count, start), formula);
    }
    EXPECT_EQ(OffsetSharedFormula(OffsetSharedFormula(formula, count, dest), -count, -dest), formula);
  }
}

}  // namespace
}  // namespace tessarine
