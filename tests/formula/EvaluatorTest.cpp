#include <tessarine/formula/Evaluator.h>

#include <string>

#include <gtest/gtest.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

TEST(Evaluator, WholeColumnsGoToTheEdgeWhenTheSheetDoes) {
  TSheetFixture sheet({{"A1", "1"}, {"A2", "2"}, {"B4", "4"}});
  sheet.Sheet().SetValue({kMaxCol, kMaxRow}, {});
  EXPECT_EQ(sheet.EvalAt("H1", "=ROWS(A:A)"), "1048576") << "bounds grow on removal, too";
  EXPECT_EQ(sheet.EvalAt("H1", "=SUM(A:XFD)"), "7") << "an area that no array could hold";
  EXPECT_EQ(sheet.EvalAt("H1", "=JOIN(\"\",\"x\",I:XFD)&IFERROR(TEXTSPLIT(\"a\",I:XFD),\"v\")"), "'xv'")
      << "nor a loop go through";
}

TEST(Evaluator, ArgumentsHeldTogetherHaveALimit) {
  const auto times = [](const char* AText, int ACount, const char* ABetween) {
    std::string text = AText;
    for (int i = 1; i < ACount; ++i) text.append(ABetween).append(AText);
    return text;
  };
  TSheetFixture sheet({{"A1", "1"}, {"A4", "x"}, {"B2", "8"}});
  const std::string million = "SEQUENCE(1000,1000,1,0)";
  EXPECT_EQ(sheet.Eval("=SUM(" + times(million.c_str(), 20, ",") + ",5)"), "16000005") << "the others are #NUM!";
  EXPECT_EQ(sheet.Eval("=SUM(" + times((million + ",").c_str(), 20, "SUM(") + "1" + std::string(20, ')')), "16000001");
  EXPECT_EQ(sheet.Eval("=SUM(SEQUENCE(1000000,1,1,0),1)"), "1000001") << "nothing is left over";
  const std::string text = "REPT(\"x\",1000000)";
  EXPECT_EQ(sheet.Eval("=COUNTA(" + times(text.c_str(), 250, ",") + ")"), "250");
  EXPECT_EQ(sheet.EvalAt("H1", "={" + times(text.c_str(), 250, ",") + "}"), "#NUM!");
  EXPECT_EQ(sheet.Eval("=NPV(1,A1:XFC1048575)"), "0.5") << "costs what is stored";
  EXPECT_EQ(sheet.Eval("=NPV(1,A1:B2,A3:A5,16)"), "1.125");
}

TEST(Evaluator, ASheetIsGivenByItsIndex) {
  TSheetFixture sheet({{"A1", "1"}, {"Other!A1", "5"}});
  EXPECT_EQ(sheet.Eval("=A1", 1), "5");
  EXPECT_EQ(sheet.Eval("=A1", -1), "1") << "the active sheet";
  EXPECT_EQ(sheet.Eval("=A1", 9), "#REF!");
  EXPECT_EQ(NotationOf(sheet.Evaluator.EvaluateCell(9, 1, 1)), "#REF!");
}

TEST(Evaluator, ACellThatIsBeingEvaluatedReadsAsCircularEvenWithAResult) {
  const std::pair<const char*, const char*> cases[] = {
      {"=B2", "#CIRC!"},       {"=IFERROR(B2,3)", "3"},        {"=SUM(B1:B3)", "4"},
      {"=COUNTA(B1:B3)", "3"}, {"=IF(FALSE,B2,1)", "1"},       {"=ROW(B2)", "2"},
      {"=ROWS(B1:B2)", "2"},   {"=SUM({1,2,3})+B2", "#CIRC!"}, {"=COUNTA({1,2,3}=B2)", "3"},
      {"=SUM({B2,1})", "1"},   {"=COUNTA({B2})", "1"},
  };
  for (const auto& [formula, shown] : cases) {
    TSheetFixture sheet({{"B1", "1"}, {"B3", "3"}, {"B2", formula}});
    for (int again = 0; again < 2; ++again) EXPECT_EQ(sheet.Run("B2"), shown) << formula;
  }
}

TEST(Evaluator, LongChainsOfOneOperatorEndInAValue) {
  TSheetFixture sheet({{"A1", "1"}, {"A2", "x"}});
  const auto repeated = [](const char* AStart, const char* APart, int ATimes) {
    std::string text = AStart;
    for (int i = 0; i < ATimes; ++i) text += APart;
    return text;
  };
  constexpr int kTimes = 100'000;
  EXPECT_EQ(sheet.Eval(repeated("=1", "+A1", kTimes)), "100001");
  EXPECT_EQ(sheet.Eval(repeated("=1", "+A2", kTimes)), "#VALUE!");
  EXPECT_EQ(sheet.Eval(repeated("=", "-", kTimes) + "A1"), "1");
  EXPECT_EQ(sheet.Eval(repeated("=", "-@+", kTimes) + "A2"), "#VALUE!");
  EXPECT_EQ(sheet.Eval(repeated("=1", "=1", kTimes)), "TRUE");
  EXPECT_EQ(sheet.Eval(repeated("=SUM(1", "=1", kTimes) + ")"), "0");
  EXPECT_EQ(sheet.Eval(repeated("=(A2", "&A2", kTimes) + ")=1"), "FALSE");
  EXPECT_EQ(sheet.Eval(repeated("=", "(", kTimes) + "A1"), "#VALUE!");
}

TEST(Evaluator, RangesIntersectWithTheRowOrColumnOfTheFormula) {
  TSheetFixture sheet;
  for (int i = 0; i < 9; ++i) sheet.Sheet().SetValue({2 + i % 3, 2 + i / 3}, TCellValue::FromNumber(i + 1));
  sheet.Set("Other!B3", "30");
  test::ExpectCases("formula/intersections.tsv", [&](const test::TCase& ACase) {
    const std::string range = ACase[1];
    const std::string shown = sheet.EvalAt(ACase[0], "=@" + range);
    for (const std::string& formula : {"=" + range + "+0", "=IF(1,@" + range + ")"})
      EXPECT_EQ(sheet.EvalAt(ACase[0], formula), shown) << ACase.Place() << formula;
    return shown;
  });
}

}  // namespace
}  // namespace tessarine::testing
