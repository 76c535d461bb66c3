#include <tessarine/formula/Evaluator.h>

#include <string>

#include <gtest/gtest.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

struct TCase {
  const char* Formula;
  const char* Shown;
};

/// A1 blank, A2 text, A3 a number as text, A4 TRUE, A5 #N/A, A6 5, A7 "", A8 #DIV/0!, A9 FALSE.
TSheetFixture Mixed() {
  return TSheetFixture({{"A2", "abc"},
                        {"A3", "'2"},
                        {"A4", "TRUE"},
                        {"A5", "#N/A"},
                        {"A6", "5"},
                        {"A7", "'"},
                        {"A8", "#DIV/0!"},
                        {"A9", "FALSE"}});
}

TEST(Evaluator, ArithmeticCoercesItsOperands) {
  TSheetFixture sheet = Mixed();
  const TCase cases[] = {
      {"=A1", "_"},           {"=A1+1", "1"},        {"=A2+1", "#VALUE!"},
      {"=A3+1", "3"},         {"=A4+1", "2"},        {"=\"3\"+1", "4"},
      {"=\"\"+1", "#VALUE!"}, {"=A7+1", "#VALUE!"},  {"=+A2", "'abc'"},
      {"=+A1", "_"},          {"=-A1", "0"},         {"=-A2", "#VALUE!"},
      {"=-A3", "-2"},         {"=--A4", "1"},        {"=-A5", "#N/A"},
      {"=---A6", "-5"},       {"=-+-A3", "2"},       {"=+-+A9", "0"},
      {"=0-0*-1", "0"},       {"=-0", "0"},          {"=-2^2", "4"},
      {"=2^3^2", "64"},       {"=2^-1", "0.5"},      {"=7/2*2-1", "6"},
      {"=1-2-3", "-4"},       {"=1/0", "#DIV/0!"},   {"=1/A1", "#DIV/0!"},
      {"=0/0", "#DIV/0!"},    {"=A6/A9", "#DIV/0!"}, {"=(-8)^(1/3)", "#NUM!"},
      {"=10^400", "#NUM!"},   {"=0^-1", "#NUM!"},    {"=10^300*10^300", "#NUM!"},
      {"=0^0", "1"},          {"=A3*A3", "4"},       {"=A4*A4+A9", "1"},
      {"=5%", "#VALUE!"},
  };
  for (const TCase& row : cases) EXPECT_EQ(sheet.Eval(row.Formula), row.Shown) << row.Formula;
}

TEST(Evaluator, ErrorsTravelLeftFirstThroughOperators) {
  TSheetFixture sheet = Mixed();
  const TCase cases[] = {
      {"=A5+A8", "#N/A"},
      {"=A8+A5", "#DIV/0!"},
      {"=A5&A8", "#N/A"},
      {"=A2&A8", "#DIV/0!"},
      {"=A5=A5", "#N/A"},
      {"=1<A8", "#DIV/0!"},
      {"=A2+A5", "#N/A"},
      {"=A5^A2", "#N/A"},
      {"=NA()&1/0", "#N/A"},
      {"=1+)", "#VALUE!"},
      {"=\"a\"&A5&\"b\"&A8", "#N/A"},
      {"=1&2+A8&A5", "#DIV/0!"},
  };
  for (const TCase& row : cases) EXPECT_EQ(sheet.Eval(row.Formula), row.Shown) << row.Formula;
}

TEST(Evaluator, ComparisonKnowsNoOrderOfTypes) {
  TSheetFixture sheet = Mixed();
  const TCase cases[] = {
      {"=A1=0", "TRUE"},          {"=\"\"=A1", "TRUE"},       {"=0=A1", "TRUE"},         {"=TRUE=1", "TRUE"},
      {"=TRUE=\"true\"", "TRUE"}, {"=\"10\"=10", "TRUE"},     {"=\"a\"=\"A\"", "TRUE"},  {"=\"abc\">5", "TRUE"},
      {"=\"_\">\"a\"", "TRUE"},   {"=\"b\"<>\"B\"", "FALSE"}, {"=1<2<3", "TRUE"},        {"=3>2>1", "FALSE"},
      {"=A4>A9", "TRUE"},         {"=\"\"<0", "TRUE"},        {"=\"9\"<\"10\"", "TRUE"}, {"=\"9x\"<\"10x\"", "FALSE"},
      {"=A6>=5", "TRUE"},         {"=A6<=4.999", "FALSE"},
  };
  for (const TCase& row : cases) EXPECT_EQ(sheet.Eval(row.Formula), row.Shown) << row.Formula;
}

TEST(Evaluator, ConcatenationJoinsDisplayTexts) {
  TSheetFixture sheet = Mixed();
  const TCase cases[] = {
      {"=A2&A6", "'abc5'"},  {"=A1&A1", "''"},    {"=A4&1.50&A3", "'TRUE1.52'"},   {"=1/3&\"\"", "'0.333333333333333'"},
      {"=1&2+3&4", "'154'"}, {"=1&2=12", "TRUE"}, {"=1&2&3=\"123\"&\"\"", "TRUE"}, {"=\"a\"&\"b\"+1", "#VALUE!"},
  };
  for (const TCase& row : cases) EXPECT_EQ(sheet.Eval(row.Formula), row.Shown) << row.Formula;
}

TEST(Evaluator, TextsThatOperatorsGenerateAreLimited) {
  TSheetFixture sheet;
  sheet.Sheet().SetValue({1, 1}, TCellValue::FromText(TText(std::u16string(600'000, u'x'))));
  EXPECT_EQ(sheet.Eval("=A1&A1"), "#VALUE!");
  EXPECT_EQ(sheet.Eval("=A1&1&A1&2"), "#VALUE!");
  EXPECT_EQ(sheet.Eval("=(A1&\"\")=A1"), "TRUE");
}

TEST(Evaluator, OnlyTheBranchTakenIsEvaluated) {
  // C1 to C3 lack results: whichever is read gets one.
  const struct {
    const char* Formula;
    const char* Shown;
    const char* Read;
  } cases[] = {
      {"=IF(1,C1,C2)", "1", "1 _ _"},
      {"=IF(0,C1,C2)", "2", "_ 2 _"},
      {"=IF(0,C1)", "FALSE", "_ _ _"},
      {"=IF(\"FALSE\",C1,C2)", "1", "1 _ _"},
      {"=IF(A5,C1,C2)", "#N/A", "_ _ _"},
      {"=IF(A1,C1,C2)", "2", "_ 2 _"},
      {"=IFERROR(C3,C1)", "3", "_ _ 3"},
      {"=IFERROR(1/0,C1)", "1", "1 _ _"},
      {"=IFNA(A5,C2)", "2", "_ 2 _"},
      {"=IFNA(A8,C2)", "#DIV/0!", "_ _ _"},
      {"=CHOOSE(2.9,C1,C2,C3)", "2", "_ 2 _"},
      {"=CHOOSE(0.9,C1,C2)", "#VALUE!", "_ _ _"},
      {"=CHOOSE(3,C1,C2)", "#VALUE!", "_ _ _"},
      {"=CHOOSE(A5,C1,C2)", "#VALUE!", "_ _ _"},
      {"=ROW(C1)", "1", "_ _ _"},
      {"=COLUMN(C1:D2)", "3", "_ _ _"},
      {"=IF(1,2,1/0)", "2", "_ _ _"},
      {"=-IF(0,C1,+C3)", "-3", "_ _ 3"},
      {"=SUM(IF(1,C1,C2),IF(0,C1,0))", "1", "1 _ _"},
      {"=C1=C2", "FALSE", "1 2 _"},
      {"=IF(1/0,C1,C2)&C3", "#DIV/0!", "_ _ 3"},
  };
  for (const auto& row : cases) {
    TSheetFixture sheet = Mixed();
    sheet.Set({{"C1", "=1"}, {"C2", "=2"}, {"C3", "=3"}});
    EXPECT_EQ(sheet.EvalAt("E9", row.Formula), row.Shown) << row.Formula;
    EXPECT_EQ(sheet.Show("C1 C2 C3"), row.Read) << row.Formula;
  }
}

TEST(Evaluator, ScalarAndArgumentModeReadTheSameTextDifferently) {
  TSheetFixture sheet({{"A1", "1"}, {"A2", "2"}, {"A3", "3"}, {"B1", "#N/A"}, {"C1", "'x"}});
  const struct {
    const char* At;
    const char* Formula;
    const char* Shown;
  } cases[] = {
      {"D2", "=A1:A3", "{1;2;3}"},
      {"D2", "=A1:A3+1", "3"},
      {"D5", "=A1:A3+1", "#VALUE!"},
      {"D2", "=@A1:A3", "2"},
      {"D5", "=@A1:A3", "#VALUE!"},
      {"D2", "=-A1:A3", "{-1;-2;-3}"},
      {"D2", "=+A1:A3", "{1;2;3}"},
      {"D2", "=--A1:A3", "{1;2;3}"},
      {"D2", "=-@-A1:A3", "2"},
      {"D2", "=@@A1:A3", "2"},
      {"D2", "=A1:A3=2", "TRUE"},
      {"D2", "=SUM(A1:A3*2)", "4"},
      {"D5", "=SUM(A1:A3*2)", "0"},
      {"D2", "=--(A1:A3>1)", "1"},
      {"D5", "=--(A1:A3>1)", "#VALUE!"},
      {"D5", "=SUM(--(A1:A3>1))", "2"},
      {"D5", "=SUMPRODUCT(--(A1:A3>1),A1:A3)", "5"},
      {"D5", "=SUM(-A1:A3)", "-6"},
      {"D5", "=SUM(---A1:A3)", "-6"},
      {"D2", "=SUM(@A1:A3)", "2"},
      {"D2", "=SUM(-@-A1:A3)", "2"},
      {"D5", "=COUNTA(A1:A3=1)", "3"},
      {"D5", "=COUNTA(A1:A3=A1:B1)", "1"},
      {"D5", "=AND(A1:A3=A1:A3)", "TRUE"},
      {"D5", "=SUM(--(A1:A3=A1))", "1"},
      {"D5", "=AND(B1=1)", "FALSE"},
      {"D5", "=AND(B1=\"#n/a\")", "TRUE"},
      {"D5", "=IF(B1=1,1,2)", "#N/A"},
      {"D5", "=SUM(1<2<3,-(1<2))", "-1"},
      {"D5", "={1,2;3,4}", "{1,2;3,4}"},
      {"D5", "=-{1,2;3,\"x\"}", "{-1,-2;-3,#VALUE!}"},
      {"D5", "={1,2}+1", "1"},
      {"D5", "=SUM({1,2;3,4})", "10"},
      {"D5", "=IF(1,{1,2},3)", "{1,2}"},
      {"D5", "=IFERROR(1/0,IF(0,1,{1;2}))", "{1;2}"},
      {"D5", "=SUM(CHOOSE(2,0,{1,2,3}))", "6"},
      {"D5", "=0+IF(1,{5,2},3)", "0"},
      {"D5", "=@{5,6}", "5"},
      {"D2", "=IF(1,A1:A3)", "2"},
      {"D2", "=SUM(IF(1,A1:A3))", "2"},
      {"D5", "=NOSUCH(1)", "#NAME?"},
      {"D5", "=NOSUCH", "#NAME?"},
      {"D5", "=1+LET(x,1,x)", "#NAME?"},
      {"D5", "=ISOMITTED(x)", "FALSE"},
      {"D5", "=ISOMITTED(1)", "#VALUE!"},
      {"D5", "=", "#VALUE!"},
  };
  for (const auto& row : cases) EXPECT_EQ(sheet.EvalAt(row.At, row.Formula), row.Shown) << row.At << row.Formula;
}

TEST(Evaluator, RowAndColumnGoByTheKindOfTheirArgument) {
  TSheetFixture sheet({{"C7", "=ROW()"}, {"D8", "=COLUMN()+ROW()"}});
  EXPECT_EQ(sheet.Eval("=ROW()"), "1") << "no cell was entered yet";
  const TCase cases[] = {
      {"=ROW(A2:A9)", "2"},    {"=ROW(B9:A2)", "2"},   {"=ROW(1+1)", "1"},
      {"=ROW(+A2)", "1"},      {"=ROW((A2))", "2"},    {"=COLUMN(Sheet1!C3)", "3"},
      {"=COLUMN(D1:B1)", "2"}, {"=ROW(Nope!C3)", "3"}, {"=ROW(T[x])", "1"},
  };
  for (const TCase& row : cases) EXPECT_EQ(sheet.Eval(row.Formula), row.Shown) << row.Formula;
  EXPECT_EQ(sheet.Run("C7"), "7");
  EXPECT_EQ(sheet.Run("D8"), "12");
  EXPECT_EQ(sheet.Eval("=ROW()*10+COLUMN()"), "84") << "the cell entered last stays";
}

TEST(Evaluator, IndirectReadsOneCell) {
  TSheetFixture sheet(
      {{"A1", "1"}, {"A2", "2"}, {"A3", "3"}, {"B1", "10"}, {"C1", "'A2"}, {"Other!A2", "20"}, {"It's!A1", "7"}});
  const struct {
    const char* At;
    const char* Formula;
    const char* Shown;
  } cases[] = {
      {"D2", "=INDIRECT(\"A1\")", "1"},          {"D2", "=INDIRECT(C1)", "2"},
      {"D2", "=INDIRECT(\" $A$3 \")", "3"},      {"D2", "=INDIRECT(\"A1:A3\")", "2"},
      {"D9", "=INDIRECT(\"A1:A3\")", "1"},       {"B5", "=INDIRECT(\"A1:C1\")", "10"},
      {"H5", "=INDIRECT(\"A1:C1\")", "1"},       {"B2", "=INDIRECT(\"A1:B3\")", "1"},
      {"D2", "=SUM(INDIRECT(\"A1:A3\"))", "2"},  {"D2", "=INDIRECT(\"Other!A1:A3\")", "20"},
      {"D2", "=INDIRECT(\"'Other'!A2\")", "20"}, {"D2", "=INDIRECT(\"Nope!A2\")", "#REF!"},
      {"D2", "=INDIRECT(\"It's!A1\")", "7"},     {"D2", "=INDIRECT(\"\")", "#REF!"},
      {"D2", "=INDIRECT(\"A:A\")", "#REF!"},     {"D2", "=INDIRECT(\"A0\")", "#REF!"},
      {"D2", "=INDIRECT(1/0)", "#DIV/0!"},       {"D2", "=INDIRECT(\"zz\")", "#REF!"},
      {"D2", "=INDIRECT(\"XFE1\")", "#REF!"},    {"D2", "=INDIRECT(\"[12]Other!A2\")", "20"},
      {"D2", "=INDIRECT(\"[12]!A2\")", "#REF!"}, {"D2", "=INDIRECT(\"[x]Other!A2\")", "#REF!"},
      {"D2", "=INDIRECT(\"!A2\")", "2"},
  };
  for (const auto& row : cases) EXPECT_EQ(sheet.EvalAt(row.At, row.Formula), row.Shown) << row.At << row.Formula;
}

TEST(Evaluator, OffsetMovesTheOriginOfItsArgument) {
  TSheetFixture sheet(
      {{"A1", "1"}, {"A2", "2"}, {"A3", "3"}, {"B1", "10"}, {"B2", "20"}, {"B3", "30"}, {"Other!B2", "99"}});
  const TCase cases[] = {
      {"=OFFSET(A1,1,1)", "{20}"},
      {"=OFFSET(A1:A2,1,0)", "{2;3}"},
      {"=OFFSET(A1,0,0,2,2)", "{1,10;2,20}"},
      {"=OFFSET(A1,-1,0)", "#REF!"},
      {"=OFFSET(A1,0,-0.9)", "{1}"},
      {"=OFFSET(1,0,0)", "#VALUE!"},
      {"=OFFSET(+A1,1,0)", "{2}"},
      {"=OFFSET(-A1,1,0)", "#VALUE!"},
      {"=OFFSET(-A1:A2,1,0)", "{2;3}"},
      {"=OFFSET(A1,\"x\",0)", "#VALUE!"},
      {"=OFFSET(A1,0,0,0)", "#REF!"},
      {"=OFFSET(A1,0,0,C9)", "#REF!"},
      {"=OFFSET(A1:A2,0,0,\"x\")", "{1;2}"},
      {"=OFFSET(A1,0,16384)", "#REF!"},
      {"=OFFSET(A1,1048575,16383)", "{_}"},
      {"=OFFSET(A1,1,1,99999999999)", "#REF!"},
      {"=OFFSET(Other!A1,1,1)", "{20}"},
      {"=SUM(OFFSET(A1,0,0,3,1))", "6"},
      {"=OFFSET(OFFSET(A1,1,0),1,1)", "{30}"},
      {"=0+OFFSET(A1,0,0,2,2)", "1"},
      {"=OFFSET(A1,1)", "#NAME?"},
      {"=OFFSET(IF(1,A1),1,0)", "#VALUE!"},
      {"=OFFSET({1,2},0,0)", "#VALUE!"},
  };
  for (const TCase& row : cases) EXPECT_EQ(sheet.EvalAt("F9", row.Formula), row.Shown) << row.Formula;
}

TEST(Evaluator, WholeColumnsAreCutExceptWhereTheyIntersect) {
  TSheetFixture sheet({{"A1", "1"}, {"A2", "2"}, {"B4", "4"}});
  EXPECT_EQ(sheet.EvalAt("H1", "=SUM(A:A)"), "3");
  EXPECT_EQ(sheet.EvalAt("H1", "=ROWS(A:B)"), "4");
  EXPECT_EQ(sheet.EvalAt("H1", "=COLUMNS($1:$2)"), "2");
  EXPECT_EQ(sheet.EvalAt("H1", "=ROWS(A1:A1048576)"), "4");
  EXPECT_EQ(sheet.EvalAt("H1", "=ROWS(A1:A1048575)"), "1048575");
  EXPECT_EQ(sheet.EvalAt("H500", "=A:A+1"), "1");
  EXPECT_EQ(sheet.EvalAt("H500", "=@A:A"), "#VALUE!");
  EXPECT_EQ(sheet.EvalAt("H2", "=@A:A"), "2");
  EXPECT_EQ(sheet.EvalAt("H2", "=A:A"), "{1;2;_;_}");
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

TEST(Evaluator, UnknownSheetsAreReferenceErrors) {
  TSheetFixture sheet({{"A1", "1"}, {"Other!A1", "5"}, {"Other!A2", "=Sheet1!A1+A1"}, {"It's!A1", "8"}});
  const TCase cases[] = {
      {"=Nope!A1", "#REF!"}, {"=Nope!A1:A2", "#REF!"},    {"=SUM(1,Nope!A1:A2)", "1"},
      {"=other!A1", "5"},    {"='Other'!A1", "5"},        {"=$Other!A1", "5"},
      {"='It''s'!A1", "8"},  {"=SUM(OTHER!A1:A2)", "11"}, {"=Other!A2", "6"},
  };
  for (const TCase& row : cases) EXPECT_EQ(sheet.Eval(row.Formula), row.Shown) << row.Formula;
  EXPECT_EQ(sheet.Eval("=A1", 1), "5");
  EXPECT_EQ(sheet.Eval("=A1", -1), "1") << "the active sheet";
  EXPECT_EQ(sheet.Eval("=A1", 9), "#REF!");
  EXPECT_EQ(NotationOf(sheet.Evaluator.EvaluateCell(9, 1, 1)), "#REF!");
}

TEST(Evaluator, PullsHappenAtThePointOfReadingAndMoveThePosition) {
  const struct {
    const char* Formula;
    const char* Shown;
  } cases[] = {
      {"=C9+@A1:A3", "#VALUE!"},   // the pull has moved to row 9
      {"=@A1:A3+C9", "7"},         // read before it
      {"=SUM(@A1:A3,C9)", "5"},    // evaluated twice: the second time from row 9, where it is an error
      {"=0+SUM(@A1:A3,C9)", "7"},  // once only as an operand
      {"=SUM(C9,ROW())", "14"},
  };
  for (const auto& row : cases) {
    TSheetFixture sheet({{"A1", "1"}, {"A2", "2"}, {"A3", "3"}, {"C9", "=5"}, {"B2", row.Formula}});
    EXPECT_EQ(sheet.Run("B2"), row.Shown) << row.Formula;
  }
}

TEST(Evaluator, CyclesOfPullsDependOnWhereTheyBegin) {
  const TSheetFixture::TCells cells = {{"A1", "=B1"}, {"B1", "=IFERROR(A1,7)"}};
  TSheetFixture fromA(cells);
  EXPECT_EQ(fromA.Run("A1"), "7");
  EXPECT_EQ(fromA.Show("A1 B1"), "7 7");
  TSheetFixture fromB(cells);
  EXPECT_EQ(fromB.Run("B1"), "7");
  EXPECT_EQ(fromB.Show("A1 B1"), "#CIRC! 7");
}

TEST(Evaluator, ACellThatIsBeingEvaluatedReadsAsCircularEvenWithAResult) {
  const struct {
    const char* Formula;
    const char* Shown;
  } cases[] = {
      {"=B2", "#CIRC!"},       {"=IFERROR(B2,3)", "3"},        {"=SUM(B1:B3)", "4"},
      {"=COUNTA(B1:B3)", "3"}, {"=IF(FALSE,B2,1)", "1"},       {"=ROW(B2)", "2"},
      {"=ROWS(B1:B2)", "2"},   {"=SUM({1,2,3})+B2", "#CIRC!"}, {"=COUNTA({1,2,3}=B2)", "3"},
      {"=SUM({B2,1})", "1"},   {"=COUNTA({B2})", "1"},
  };
  for (const auto& row : cases) {
    TSheetFixture sheet({{"B1", "1"}, {"B3", "3"}, {"B2", row.Formula}});
    EXPECT_EQ(sheet.Run("B2"), row.Shown) << row.Formula;
    EXPECT_EQ(sheet.Run("B2"), row.Shown) << row.Formula << " again";
  }
}

TEST(Evaluator, EvaluateCellIsAlwaysAnew) {
  TSheetFixture sheet({{"A1", "1"}, {"B1", "=A1+1"}, {"C1", "=B1"}, {"D1", "'text"}});
  EXPECT_EQ(sheet.Run("C1"), "2");
  sheet.Set("A1", "5");
  EXPECT_EQ(sheet.Run("C1"), "2") << "results are read, not checked";
  EXPECT_EQ(sheet.Run("B1"), "6");
  EXPECT_EQ(sheet.Run("C1"), "6");
  EXPECT_EQ(sheet.Run("D1"), "'text'");
  EXPECT_EQ(sheet.Run("E1"), "_");
}

TEST(Evaluator, EvaluateStoresNothingOfItsOwn) {
  TSheetFixture sheet({{"A1", "=2"}, {"B1", "3"}});
  sheet.Workbook.ClearModified();
  EXPECT_EQ(sheet.Eval("=B1*2"), "6");
  EXPECT_FALSE(sheet.Workbook.IsModified());
  EXPECT_EQ(sheet.EvalAt("B1", "=A1*B1"), "6");
  EXPECT_EQ(sheet.Show("A1 B1"), "2 3") << "the cell read has its result now";
  EXPECT_TRUE(sheet.Workbook.IsModified());
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

}  // namespace
}  // namespace tessarine::testing
