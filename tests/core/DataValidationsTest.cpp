#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

TDataValidationRule RuleOf(TDataValidationType AType, TDataValidationOperator AOperator, const char16_t* AFirst,
                           const char16_t* ASecond = u"") {
  TDataValidationRule rule;
  rule.Ranges = {{1, 1, 2, 5}};
  rule.ValidationType = AType;
  rule.Operator = AOperator;
  rule.Formula1 = AFirst;
  rule.Formula2 = ASecond;
  return rule;
}

TEST(DataValidations, EntriesAreJudgedByTypeAndOperator) {
  const struct {
    TDataValidationRule Rule;
    const char16_t* Accepted;  // separated by "|"
    const char16_t* Rejected;
  } cases[] = {
      {RuleOf(dvtWhole, dvoBetween, u"10", u"1"), u" 7 |1|1E1", u"2.5|abc|11|"},
      {RuleOf(dvtDecimal, dvoNotBetween, u"1", u"2"), u"0.5|2.1", u"1|1.5|x"},
      {RuleOf(dvtDecimal, dvoEqual, u"0.3"), u"0.3000000000000001", u"0.31"},
      {RuleOf(dvtDecimal, dvoNotEqual, u"0.3"), u"0.31", u"0.3"},
      {RuleOf(dvtDecimal, dvoGreaterThan, u"=A1"), u"1", u"0|-1"},  // a bound that is no number is 0
      {RuleOf(dvtDecimal, dvoLessEqual, u"5"), u"5|-1", u"5.1"},
      {RuleOf(dvtDate, dvoGreaterEqual, u"45322"), u"2024-01-31|45322.5", u"2024-01-30|2024-01-31 10:00|x"},
      {RuleOf(dvtTextLength, dvoBetween, u"0", u"3"), u"abc||  x  ", u"abcd"},
      {RuleOf(dvtList, dvoBetween, u"\"Red, green,,Blue\""), u"RED|blue| green ", u"x|Red, green|"},
      {RuleOf(dvtList, dvoBetween, u"=$A$1:$A$3"), u"", u"x|"},
      {RuleOf(dvtCustom, dvoBetween, u"=FALSE"), u"x|", u""},
      {RuleOf(dvtNone, dvoBetween, u""), u"x|", u""},
  };
  for (const auto& row : cases) {
    TDataValidationList list;
    list.AddRule(row.Rule);
    const auto judge = [&](std::u16string_view ATexts, bool AWanted) {
      if (ATexts.empty()) return;
      for (size_t at = 0; at <= ATexts.size();) {
        const size_t end = std::min(ATexts.find(u'|', at), ATexts.size());
        const std::u16string_view text = ATexts.substr(at, end - at);
        EXPECT_EQ(list.ValidateValue(2, 5, text).IsAccepted, AWanted)
            << Utf16ToUtf8(row.Rule.Formula1) << ": \"" << Utf16ToUtf8(text) << '"';
        at = end + 1;
      }
    };
    judge(row.Accepted, true);
    judge(row.Rejected, false);
    EXPECT_TRUE(list.ValidateValue(3, 1, u"no rule here").IsAccepted);
  }
}

TEST(DataValidations, RejectionsCarryTheRulesTextsOrTheDefaults) {
  TDataValidationList list;
  TDataValidationRule rule = RuleOf(dvtWhole, dvoBetween, u"1", u"2");
  rule.Error = u"mine";
  rule.ErrorStyle = dvesWarning;
  list.AddRule(rule);
  EXPECT_EQ(list.ValidateValue(1, 1, u"x").Message,
            u"This value doesn't match the data validation restrictions for this cell.");
  rule.ShowErrorMessage = true;
  rule.AllowBlank = true;
  list.ReplaceRule(0, rule);
  const TValidationVerdict verdict = list.ValidateValue(1, 1, u"x");
  EXPECT_EQ(verdict.Message, u"mine");
  EXPECT_EQ(verdict.Title, u"Data Validation");
  EXPECT_EQ(verdict.Style, dvesWarning);
  EXPECT_TRUE(list.ValidateValue(1, 1, u"  ").IsAccepted);
  const TText items[] = {u"A", u"B"};
  list.ReplaceRule(0, RuleOf(dvtList, dvoBetween, u"=A1:A2"));
  EXPECT_TRUE(list.ValidateValue(1, 1, u"b", items).IsAccepted);
}

TEST(DataValidations, SourcesOfListsAreRangesOrItems) {
  for (const char16_t* text : {u"=$A$1:$A$3", u"a1", u"Tax1", u"Lists!B2:B9", u"='My list'!$B$2", u"A,B2"})
    EXPECT_TRUE(TDataValidationList::IsListRangeFormula(text)) << Utf16ToUtf8(text);
  for (const char16_t* text : {u"", u" ", u"\"A1\"", u"A1,B2", u"Yes1", u"Yes,No", u"=Names"})
    EXPECT_FALSE(TDataValidationList::IsListRangeFormula(text)) << Utf16ToUtf8(text);
  EXPECT_EQ(TDataValidationList::ParseListItems(u"\"a, b,,c\""), (std::vector<TText>{u"a", u"b", u"c"}));
}

TEST(DataValidations, TheFirstRuleAtACellCountsAndNamesTakeTheLast) {
  TDataValidationList list;
  list.AddNamedPrompt(u"Tip", u"text", u"title", true);
  list.BindNameToRange(u"TIP", {3, 3, 1, 1});
  list.BindNameToRange(u"other", {2, 2, 2, 2});
  EXPECT_EQ(list.Count(), 2u);
  ASSERT_TRUE(list.FindPromptAt(2, 2));
  EXPECT_EQ(list.FindPromptAt(2, 2)->Title, u"title");
  EXPECT_FALSE(list.FindPromptAt(4, 4));
  list.AddNamedPrompt(u"tip", u"", u"", true);
  EXPECT_FALSE(list.FindPromptAt(2, 2));
  EXPECT_EQ(list.FindByName(u"OTHER")->Ranges.size(), 1u);
  EXPECT_EQ(list.FindByName(u""), nullptr);
}

TEST(DataValidations, EditsMoveRangesAndRewriteFormulasButNoItems) {
  TDataValidationList list;
  list.AddRule(RuleOf(dvtList, dvoBetween, u"=A9:$A$12", u"q1,Q2"));
  list.AddRule(RuleOf(dvtList, dvoBetween, u"Yes, no", u"A9"));
  list.AddNamedPrompt(u"tip", u"x", u"", true);
  list.BindNameToRange(u"tip", {1, 1, 1, 5});
  list.AdjustFormulas(u"Sheet1", true, true, 2, 3);
  EXPECT_EQ(list.GetRule(0).Formula1, u"=A12:$A$15");
  EXPECT_EQ(list.GetRule(0).Formula2, u"q1,Q2");
  EXPECT_EQ(list.GetRule(1).Formula1, u"Yes, no");
  EXPECT_EQ(list.GetRule(1).Formula2, u"A12");
  list.AdjustFormulasForMove(u"sheet1", true, true, 12, 1, 1);
  EXPECT_EQ(list.GetRule(1).Formula2, u"A1");
  list.ShiftRows(5, -1);
  EXPECT_EQ(list.FindRuleAt(2, 5), nullptr);
  EXPECT_NE(list.FindRuleAt(2, 4), nullptr);
  list.ShiftRows(1, -9);
  ASSERT_EQ(list.Count(), 1u);
  EXPECT_TRUE(list.FindByName(u"TIP")->Ranges.empty());
}

TEST(DataValidations, ItemsOfARangeAreItsStoredTexts) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({1, 1}, TCellValue::FromText(u"x"));
  sheet.SetValue({2, 1}, TCellValue::FromNumber(2.5));
  sheet.SetValue({2, 2}, TCellValue::FromFormula(u"=1+1"));
  const std::vector<TText> all = {u"x", u"2.5", u"=1+1"};
  EXPECT_EQ(sheet.ResolveValidationListItems(u"=$A$1:$B$9"), all);
  EXPECT_EQ(sheet.ResolveValidationListItems(u"'sheet1'!A1:B9"), all);
  EXPECT_TRUE(sheet.ResolveValidationListItems(u"=Other!A1:B9").empty());
  EXPECT_EQ(sheet.ResolveValidationListItems(u"a, b"), (std::vector<TText>{u"a", u"b"}));
}

}  // namespace
}  // namespace tessarine
