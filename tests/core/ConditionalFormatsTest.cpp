#include <gtest/gtest.h>

#include <random>

#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine {
namespace {

TConditionalFormatRule RuleOf(TCfOperator AOperator, TText AFirst, TText ASecond = TText(),
                              TCellRange ARange = {1, 1, 10, 10}) {
  TConditionalFormatRule rule;
  rule.Ranges = {ARange};
  rule.Operator = AOperator;
  rule.Formula1 = std::move(AFirst);
  rule.Formula2 = std::move(ASecond);
  rule.HasBold = rule.Bold = true;
  return rule;
}

TEST(ConditionalFormats, OperatorsCompareNumbersElseTexts) {
  test::ExpectCases("core/conditions.tsv", [](const test::TCase& ACase) {
    EXPECT_EQ(CfOperatorName(ParseCfOperator(ACase.Text(0))), ACase.Text(0)) << ACase.Place();
    const TCellValue value = testing::ContentOf(ACase[3]);
    TConditionalFormatList list;
    list.AddRule(RuleOf(ParseCfOperator(ACase.Text(0)), ACase.Text(1), ACase.Text(2)));
    TCellFormat format;
    const bool matches = list.Evaluate(2, 2, value.View(), format);
    EXPECT_EQ(format.Font.Bold, matches) << ACase.Place();
    EXPECT_FALSE(list.Evaluate(11, 2, value.View(), format)) << ACase.Place();
    return matches;
  });
}

TEST(ConditionalFormats, OperatorsHaveManySpellings) {
  EXPECT_EQ(ParseCfOperator(u" GTE "), cfoGreaterEqual);
  EXPECT_EQ(ParseCfOperator(u"foo"), cfoCellValue);
  for (int i = 0; i <= static_cast<int>(cfoEndsWith); ++i)
    EXPECT_EQ(ParseCfOperator(CfOperatorName(static_cast<TCfOperator>(i))), static_cast<TCfOperator>(i));
}

TEST(ConditionalFormats, EndsOfRangesSlideEachOnItsOwn) {
  const struct {
    int64_t Start, Delta;
    TCellRange Range;
  } cases[] = {
      {3, -2, {2, 1, 4, 3}}, {4, 1, {2, 3, 4, 6}}, {3, 1, {2, 4, 4, 6}}, {6, 9, {2, 3, 4, 5}}, {5, -9, {2, 3, 4, -4}},
  };
  for (const auto& row : cases) {
    TConditionalFormatList list;
    list.AddRule(RuleOf(cfoEqual, u"1", TText(), {2, 3, 4, 5}));
    list.ShiftRows(row.Start, row.Delta);
    EXPECT_EQ(list.GetRule(0).Ranges[0], row.Range) << row.Start << " " << row.Delta;
  }
  TConditionalFormatList list;
  TConditionalFormatRule rule = RuleOf(cfoEqual, u"1");
  rule.Ranges = {{1, 1, 2, 2}, {5, 5, 9, 9}};
  list.AddRule(rule);
  list.AddRule(RuleOf(cfoEqual, u"1", TText(), {9, 9, 9, 9}));
  list.ClearOverlapping({9, 9, 20, 20});
  ASSERT_EQ(list.Count(), 1u);
  EXPECT_EQ(list.GetRule(0).Ranges.size(), 1u);
}

TEST(ConditionalFormats, IndexedRulesAgreeWithTheWalkOverAll) {
  std::mt19937 random(7);
  const auto pick = [&](int ALimit) { return static_cast<int32_t>(random() % static_cast<unsigned>(ALimit)); };
  const char16_t* const operands[] = {u"1", u"2", u"", u"b", u" 1 ", u"x"};
  for (int round = 0; round < 60; ++round) {
    TConditionalFormatList list;
    for (int i = 0; i < 12; ++i) {
      TConditionalFormatRule rule = RuleOf(static_cast<TCfOperator>(pick(13)), operands[pick(6)], operands[pick(6)]);
      rule.Ranges.clear();
      for (int k = 0; k < 2; ++k) rule.Ranges.push_back({pick(8) - 1, pick(8), pick(8), pick(8)});
      rule.StopIfTrue = pick(4) == 0;
      rule.HasFill = pick(2) == 0;
      rule.Fill = TCellFillInfo::Solid(TColorRef::FromARGB(random()));
      rule.HasBold = pick(2) == 0;
      rule.Bold = pick(2) == 0;
      list.AddRule(rule);
      if (i == 6) list.ShiftColumns(pick(6), pick(5) - 2);
    }
    for (int i = 0; i < 200; ++i) {
      const int32_t col = pick(9), row = pick(9);
      const TCellValue value = pick(2) ? TCellValue::FromNumber(pick(3)) : TCellValue::FromText(operands[pick(6)]);
      TCellFormat fast, plain;
      const bool isFast = list.Evaluate(col, row, value.View(), fast);
      const bool isPlain = list.EvaluatePlain(col, row, value.ToDisplayString(), value.Kind == cvkNumber,
                                              value.Kind == cvkNumber ? value.Number : 0, plain);
      ASSERT_EQ(isFast, isPlain) << round;
      ASSERT_EQ(fast, plain) << round;
    }
  }
}

}  // namespace
}  // namespace tessarine
