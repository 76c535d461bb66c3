#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

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

TEST(DataValidations, ExamplesHold) {
  const std::map<std::string, TDataValidationType> types = {
      {"none", dvtNone},       {"list", dvtList}, {"whole", dvtWhole},
      {"decimal", dvtDecimal}, {"date", dvtDate}, {"textLength", dvtTextLength},
      {"custom", dvtCustom},
  };
  const std::vector<std::string> operators = {"between",     "notBetween", "equal",        "notEqual",
                                              "greaterThan", "lessThan",   "greaterEqual", "lessEqual"};
  const auto entry = [&](const test::TCase& ACase) {
    const auto found = std::find(operators.begin(), operators.end(), ACase[2]);
    const auto compare = static_cast<TDataValidationOperator>(found - operators.begin());
    TDataValidationList list;
    list.AddRule(RuleOf(types.at(ACase[1]), compare, ACase.Text(3).c_str(), ACase.Text(4).c_str()));
    EXPECT_TRUE(list.ValidateValue(3, 1, u"no rule here").IsAccepted);
    return list.ValidateValue(2, 5, ACase.Text(5)).IsAccepted;
  };
  using TList = TDataValidationList;
  test::ExpectCases("core/validations.tsv",
                    {{"entry", entry},
                     {"is-range", [](const test::TCase& ACase) { return TList::IsListRangeFormula(ACase.Text(1)); }},
                     {"items", [](const test::TCase& ACase) { return TList::ParseListItems(ACase.Text(1)); }}});
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
