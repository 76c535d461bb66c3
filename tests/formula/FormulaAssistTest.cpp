#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/formula/FormulaAssist.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

/// "=|d A1|r0 +|o": each span with the letter of its kind.
std::string DumpSpans(std::u16string_view AFormula) {
  std::string text;
  for (const TFormulaColorSpan& span : TFormulaAssist::ColorSpans(AFormula)) {
    if (!text.empty()) text += ' ';
    text += Utf16ToUtf8(AFormula.substr(static_cast<size_t>(span.StartIndex), static_cast<size_t>(span.Length)));
    text += '|';
    text += "dfrsnobep"[static_cast<size_t>(span.Kind)];
    if (span.RefColorIndex >= 0) text += std::to_string(span.RefColorIndex);
  }
  return text;
}

std::string DumpHighlights(std::u16string_view AFormula) {
  std::string text;
  for (const TFormulaRefHighlight& item : TFormulaAssist::RefHighlights(AFormula)) {
    if (!text.empty()) text += ' ';
    if (!item.SheetName.empty()) text += Utf16ToUtf8(item.SheetName) + "!";
    text += Utf16ToUtf8(item.Range.ToA1()) + "|" + std::to_string(item.ColorIndex);
  }
  return text;
}

std::string Joined(const std::vector<TText>& ATexts) {
  std::string text;
  for (const TText& item : ATexts) text += (text.empty() ? "" : " ") + item.ToUtf8();
  return text;
}

TEST(FormulaAssist, TokensAreColouredAndReferencesCounted) {
  const struct {
    const char16_t* Formula;
    const char* Spans;
    const char* Highlights;
  } cases[] = {
      {u"=A1+B1", "=|d A1|r0 +|o B1|r1", "A1|0 B1|1"},
      {u"=SUM(A1:B2,\"x\")", "=|d SUM|f (|p A1:B2|r0 ,|p \"x\"|s )|p", "A1:B2|0"},
      {u"=Sheet2!A1&'My S'!C3:B1", "=|d Sheet2!A1|r0 &|o 'My S'!C3:B1|r1", "Sheet2!A1|0 My S!B1:C3|1"},
      {u"=T[x]+A1", "=|d T[x]|r0 +|o A1|r1", "A1|1"},
      {u"={1;TRUE}%", "=|d {|d 1|n ;|d TRUE|b }|d %|e", ""},
      {u"=  1 :2 ", "=  |d 1|n  |d :|p 2|n  |d", ""},
      {u"=A1+A2+A3+A4+A5+A6+A7", "=|d A1|r0 +|o A2|r1 +|o A3|r2 +|o A4|r3 +|o A5|r4 +|o A6|r5 +|o A7|r0",
       "A1|0 A2|1 A3|2 A4|3 A5|4 A6|5 A7|0"},
      {u"=", "=|d", ""},
      {u"A1+B1", "", ""},
      {u"", "", ""},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(DumpSpans(row.Formula), row.Spans);
    EXPECT_EQ(DumpHighlights(row.Formula), row.Highlights);
  }
}

TEST(FormulaAssist, SpansCoverAnyTextOnceAndInOrder) {
  std::mt19937 random(5);
  constexpr std::u16string_view alphabet = u"A1$B2 \"'!.:;,(){}[]+-<>@#%x\u00E9";
  for (int round = 0; round < 20'000; ++round) {
    std::u16string text = u"=";
    for (size_t i = random() % 16; i-- > 0;) text += alphabet[random() % alphabet.size()];
    int32_t at = 0;
    for (const TFormulaColorSpan& span : TFormulaAssist::ColorSpans(text)) {
      ASSERT_EQ(span.StartIndex, at) << Utf16ToUtf8(text);
      ASSERT_GT(span.Length, 0) << Utf16ToUtf8(text);
      at += span.Length;
    }
    ASSERT_EQ(at, static_cast<int32_t>(text.size())) << Utf16ToUtf8(text);
  }
}

TEST(FormulaAssist, ColoursAreThoseOfTheKindAndTheCycle) {
  EXPECT_EQ(TFormulaAssist::ColorForKind(fckRef, 0), 0xFF0070C0u);
  EXPECT_EQ(TFormulaAssist::ColorForKind(fckRef, 5), 0xFF00B0F0u);
  for (const int32_t index : {-1, 6, 1'000'000}) EXPECT_EQ(TFormulaAssist::ColorForKind(fckRef, index), 0xFF0070C0u);
  EXPECT_EQ(TFormulaAssist::ColorForKind(fckFunction, 3), 0xFF0000FFu);
  EXPECT_EQ(TFormulaAssist::ColorForKind(fckOperator), 0xFF000000u);
}

TEST(FormulaAssist, PrefixIsTheWordBeforeTheCaret) {
  const struct {
    const char16_t* Formula;
    int32_t Caret, Start;
    const char16_t* Prefix;
  } cases[] = {
      {u"=SU", 3, 1, u"SU"},
      {u"=SU", 2, 1, u"S"},
      {u"=SU", 99, 1, u"SU"},
      {u"=SU", -5, 1, u""},
      {u"=1+Sheet1!a", 11, 3, u"Sheet1!a"},
      {u"=A1+", 4, 4, u""},
      {u"=f(_x.y2", 8, 3, u"_x.y2"},
      {u"SU", 2, 0, u""},
      {u"", 0, 0, u""},
      {u"=\u00E9a", 3, 2, u"a"},
  };
  for (const auto& row : cases) {
    const TAutocompletePrefix prefix = TFormulaAssist::AutocompletePrefix(row.Formula, row.Caret);
    EXPECT_EQ(prefix, (TAutocompletePrefix{row.Start, row.Prefix})) << Utf16ToUtf8(row.Formula) << " " << row.Caret;
  }
}

TEST(FormulaAssist, CandidatesAreFunctionsNamesAndSheets) {
  TWorkbook workbook;
  workbook.AddSheet(u"Sheet10");
  workbook.AddSheet(u"sums");
  workbook.SetNamedFormula(u"sumTotal", u"=1");
  workbook.SetNamedFormula(u"SUM", u"=1");
  const struct {
    const char16_t* Prefix;
    const char* Candidates;
  } cases[] = {
      {u" sum ", "SUM SUMIF SUMIFS SUMPRODUCT sums! SUMTOTAL"},
      {u"Sheet1", "Sheet1! Sheet10!"},
      {u"sheet1!", "Sheet1!"},
      {u"sheet1!a", ""},
      {u"xl", "XLOOKUP"},
      {u"nonesuch", ""},
      {u"  ", ""},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Joined(TFormulaAssist::AutocompleteCandidates(row.Prefix, &workbook)), row.Candidates);
  EXPECT_EQ(Joined(TFormulaAssist::AutocompleteCandidates(u"cube", nullptr)), "CUBEMEMBER CUBEVALUE");
}

TEST(FormulaAssist, OfferedNamesAreTheRowsThatAreMarkedAndAllCanBeCalled) {
  std::vector<std::u16string> marked;
  for (const TFunctionDef* row : AllFunctions()) {
    if (row->InCompletion) marked.emplace_back(row->Name);
  }
  std::vector<std::u16string> offered;
  for (const std::u16string_view name : TFormulaAssist::RegisteredFunctionNames()) {
    const TFunctionDef* row = FindFunction(name);
    EXPECT_TRUE(row && row->Name == name && row->Tier != ftrUnsupported) << Utf16ToUtf8(name);
    offered.emplace_back(name);
  }
  std::sort(offered.begin(), offered.end());
  EXPECT_EQ(offered.size(), 160u);
  EXPECT_EQ(std::adjacent_find(offered.begin(), offered.end()), offered.end());
  std::vector<std::u16string> differing;
  std::set_symmetric_difference(offered.begin(), offered.end(), marked.begin(), marked.end(),
                                std::back_inserter(differing));
  for (const std::u16string& name : differing) ADD_FAILURE() << Utf16ToUtf8(name) << " is offered or marked, not both";
}

TEST(FormulaAssist, TabGoesFromArgumentToArgument) {
  const struct {
    const char16_t* Formula;
    int32_t Caret;
    bool Backward;
    int32_t Result;
  } cases[] = {
      {u"=SUM(A1,B1)", 5, false, 8},   // in front of A1
      {u"=SUM(A1,B1)", 7, false, 8},   // behind A1
      {u"=SUM(A1,B1)", 8, false, 10},  // the last argument: before the parenthesis
      {u"=SUM(A1,B1)", 11, false, 11},
      {u"=SUM(A1,B1)", 10, true, 8},
      {u"=SUM(A1,B1)", 6, true, 6},
      {u"=SUM(A1,MAX(B1,C1),D1)", 12, false, 15},
      {u"=SUM(A1,MAX(B1,C1),D1)", 16, false, 19},  // the inner parenthesis does not end the outer call
      {u"=SUM(A1,MAX(B1,C1),D1)", 20, true, 19},
      {u"=(A1)+SUM(B1)", 2, false, 12},
      {u"=(A1)+1", 2, false, 4},  // no call: the next parenthesis
      {u"=A1,B1", 2, false, 2},   // a comma outside a call
      {u"=SUM(A1,", 5, false, 8},
      {u"=SUM(A1", 5, false, 5},
      {u"=", 1, false, 1},
      {u"SUM(A1,B1)", 5, false, 5},
      {u"=SUM(A1,B1)", -7, false, -7},
      {u"=SUM(A1,B1)", 500, true, 8},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(TFormulaAssist::NextArgumentCaret(row.Formula, row.Caret, row.Backward), row.Result)
        << Utf16ToUtf8(row.Formula) << " " << row.Caret << (row.Backward ? " back" : "");
  }
}

TEST(FormulaAssist, PointingNeedsAPlaceForAnOperand) {
  // One mark for each caret: "+" where a click may insert a reference.
  const struct {
    const char16_t* Formula;
    const char* Allowed;
  } cases[] = {
      {u"=SUM(A1,", "-+---+--+"}, {u"= 1 ", "-++--"}, {u"=1<>2&A1:3^-4/5*6", "-+-++-+--+-++-+-+-"},
      {u"=\"a\")}", "-+-----"},   {u"1+", "---"},     {u"", "-"},
  };
  for (const auto& row : cases) {
    std::string allowed;
    for (int32_t caret = 0; caret <= static_cast<int32_t>(std::u16string_view(row.Formula).size()); ++caret)
      allowed += TFormulaAssist::CaretAllowsPointing(row.Formula, caret) ? '+' : '-';
    EXPECT_EQ(allowed, row.Allowed) << Utf16ToUtf8(row.Formula);
  }
  EXPECT_TRUE(TFormulaAssist::CaretAllowsPointing(u"=1+", 99));
  EXPECT_FALSE(TFormulaAssist::CaretAllowsPointing(u"=1+", -1));
}

}  // namespace
}  // namespace tessarine
