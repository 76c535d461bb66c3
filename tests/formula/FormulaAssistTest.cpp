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

#include "../support/CaseTable.h"

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

TEST(FormulaAssist, ExamplesOfWhatAnEditorShows) {
  TWorkbook workbook;
  workbook.AddSheet(u"Sheet10");
  workbook.AddSheet(u"sums");
  workbook.SetNamedFormula(u"sumTotal", u"=1");
  workbook.SetNamedFormula(u"SUM", u"=1");
  const auto caret = [](const test::TCase& ACase) { return static_cast<int32_t>(ACase.Integer(2)); };
  test::ExpectCases(
      "formula/assist.tsv",
      {{"spans", [](const test::TCase& ACase) { return DumpSpans(ACase.Text(1)); }},
       {"highlights", [](const test::TCase& ACase) { return DumpHighlights(ACase.Text(1)); }},
       {"prefix",
        [&](const test::TCase& ACase) {
          const TAutocompletePrefix prefix = TFormulaAssist::AutocompletePrefix(ACase.Text(1), caret(ACase));
          return std::to_string(prefix.Start) + " '" + test::Shown(prefix.Prefix) + "'";
        }},
       {"candidates",
        [&](const test::TCase& ACase) { return TFormulaAssist::AutocompleteCandidates(ACase.Text(1), &workbook); }},
       {"tab",
        [&](const test::TCase& ACase) {
          return TFormulaAssist::NextArgumentCaret(ACase.Text(1), caret(ACase), false);
        }},
       {"back",
        [&](const test::TCase& ACase) { return TFormulaAssist::NextArgumentCaret(ACase.Text(1), caret(ACase), true); }},
       {"pointing", [](const test::TCase& ACase) {
          std::string allowed;
          for (int32_t at = 0; at <= static_cast<int32_t>(ACase.Text(1).size()); ++at)
            allowed += TFormulaAssist::CaretAllowsPointing(ACase.Text(1), at) ? '+' : '-';
          return allowed;
        }}});
  EXPECT_EQ(test::Shown(TFormulaAssist::AutocompleteCandidates(u"cube", nullptr)), "CUBEMEMBER CUBEVALUE");
  EXPECT_TRUE(TFormulaAssist::CaretAllowsPointing(u"=1+", 99));
  EXPECT_FALSE(TFormulaAssist::CaretAllowsPointing(u"=1+", -1));
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

}  // namespace
}  // namespace tessarine
