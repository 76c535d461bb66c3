#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/Ast.h>
#include <tessarine/formula/LambdaClosure.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/detail/ProgramTree.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/Unicode.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

struct TCase {
  const char* Formula;
  const char* Shown;
};

/// A1:B3 numbers, C1:C3 a number, a text and a blank, D1 an error.
TSheetFixture Sample() {
  return TSheetFixture({{"A1", "1"},
                        {"A2", "2"},
                        {"A3", "3"},
                        {"B1", "10"},
                        {"B2", "20"},
                        {"B3", "30"},
                        {"C1", "5"},
                        {"C2", "x"},
                        {"D1", "#N/A"}});
}

/// The value of a formula in a cell; rectangles without their braces.
std::string ShownAt(TSheetFixture& ASheet, const char* AAddress, const std::string& AFormula) {
  std::string shown = ASheet.EvalAt(AAddress, AFormula);
  std::erase_if(shown, [](char AUnit) { return AUnit == '{' || AUnit == '}'; });
  return shown;
}

template <size_t TCount>
void ExpectAt(const TCase (&ACases)[TCount], const char* AAddress = "F2") {
  for (const TCase& row : ACases) {
    TSheetFixture sheet = Sample();
    EXPECT_EQ(ShownAt(sheet, AAddress, row.Formula), row.Shown) << row.Formula;
    EXPECT_EQ(sheet.EvalAt(AAddress, "=x"), "#NAME?") << "left bound by " << row.Formula;
  }
}

TEST(Let, BindsNamesForOneExpression) {
  const TCase cases[] = {
      {"=LET(x,2,x*x)", "4"},
      {"=LET(x,2,y,x+1,x*y)", "6"},
      {"=LET( X ,2,x)", "2"},
      {"=_xlfn.LET($x,2,x+1)", "3"},
      {"=LET(x,2)", "#NAME?"},
      {"=LET(x,2,y,3)", "#VALUE!"},
      {"=LET(1,2,3)", "#VALUE!"},
      {"=LET(A1,2,3)", "#VALUE!"},
      {"=LET(x,2,\"y\",3,x)", "#VALUE!"},
      {"=LET(x,NA(),1)", "#N/A"},
      {"=LET(x,D1:D3,1)", "#N/A"},
      {"=LET(x,1,y,1/0,x)", "#DIV/0!"},
      {"=LET(r,A1:A3,SUM(r))", "6"},
      {"=LET(r,A1:A3,r)", "1"},
      {"=LET(r,A1:A3,SORT(r,1,-1))", "3;2;1"},
      {"=LET(r,{1,2},SUM(r))", "3"},
      {"=LET(x,1,{1,2})", "1,2"},
      {"=LET(x,1,A1:B2)", "1,10;2,20"},
      {"=LET(x,1,A1:A3+x)", "3"},
      {"=LET(x,1,A9)", "_"},
      {"=LET(r,A1,OFFSET(r,1,0))", "#VALUE!"},
      {"=LET(r,A1:A1,OFFSET(r,1,0))", "2"},
      {"=LET(pi,3,PI())", "3"},
      {"=SUM(LET(x,1,x),LET(x,2,x))", "3"},
      {"=1+LET(x,1,x)", "#NAME?"},
      {"=IF(TRUE,LET(x,1,x))", "#NAME?"},
      {"=-LET(x,A1:A3,SORT(x))", "-1;-2;-3"},
      {"=+LET(x,1,x)", "1"},
      {"=1+@LET(x,1,x)", "2"},
      {"=LET(f,LAMBDA(x,x+1),f(2))", "#NAME?"},
      {"=LET(f,LAMBDA(x,x+1),f)", "_"},
      {"=LAMBDA(x,x)(2)", "#VALUE!"},
  };
  ExpectAt(cases);
}

TEST(Let, NamesAreFlat) {
  const TCase cases[] = {
      {"=LET(x,1,y,LET(x,2,x),x)", "#NAME?"},
      {"=LET(x,1,y,LET(x,2,x),y)", "2"},
      {"=LET(x,1,x,x+1,x)", "2"},
      {"=LET(x,1,SUM(x,LET(x,2,x)))", "2"},
      {"=LET(x,1,SUM(x,LET(y,2,x+y)))", "4"},
      {"=SUM(MAP(SEQUENCE(5000),LAMBDA(v,LET(x,1,SUM(x,LET(x,2,x))))))", "10000"},
      {"=LET(x,1,HSTACK(x,LET(x,2,x)))", "1,2"},
      {"=LET(x,1,SUM(MAP(A1:A3,LAMBDA(x,x))))", "6"},
      {"=LET(x,1,y,SUM(MAP(A1:A3,LAMBDA(x,x*2))),IFERROR(x,y))", "12"},
      {"=LET(x,7,MAP(A1:A2,LAMBDA(v,v+x)))", "8;9"},
      {"=MAP(A1:A2,LAMBDA(v,SUM(MAP(B1:B2,LAMBDA(v,v)))+v))", "#NAME?"},
      {"=MAP(A1:A2,LAMBDA(v,SUM(MAP(B1:B2,LAMBDA(w,w*v)))))", "30;60"},
      {"=MAP(A1:A2,LET(k,2,LAMBDA(v,v*2)))", "2;4"},
      {"=MAP(A1:A2,LET(k,2,LAMBDA(v,v*k)))", "#NAME?"},
  };
  ExpectAt(cases);
}

TEST(Let, NamesReachPulledCellsAndDefinedNames) {
  TSheetFixture sheet({{"B1", "=x"}, {"B2", "=LET(x,2,x)"}});
  sheet.Workbook.SetNamedFormula("Twice", "=x*2");
  sheet.Workbook.SetNamedFormula("Bound", "=LET(x,1,x)");
  EXPECT_EQ(sheet.EvalAt("A1", "=LET(x,5,B1+x)"), "10");
  EXPECT_EQ(sheet.Show("B1"), "5");
  EXPECT_EQ(sheet.EvalAt("A1", "=LET(x,5,Twice)"), "10");
  EXPECT_EQ(sheet.EvalAt("A1", "=Bound"), "#NAME?");
  EXPECT_EQ(sheet.EvalAt("A1", "=LET(x,5,B2+x)"), "#NAME?") << "B2 was evaluated and took x away";
  EXPECT_EQ(sheet.EvalAt("A1", "=LET(x,5,B2+x)"), "7") << "B2 has its result now";
}

TEST(Lambda, HelpersCallItForEachElement) {
  const TCase cases[] = {
      {"=MAP(A1:B2,LAMBDA(v,v*2))", "2,20;4,40"},
      {"=MAP(7,LAMBDA(v,v*2))", "14"},
      {"=MAP(C1:C3,LAMBDA(v,v))", "5;'x';_"},
      {"=MAP(C1:C3,LAMBDA(v,v&\"!\"))", "'5!';'x!';'!'"},
      {"=MAP(A1:A3,LAMBDA(v,B1:B3))", "10;10;10"},
      {"=MAP(A1:A3,LAMBDA(v,SORT(B1:B3)))", "10;10;10"},
      {"=MAP(A1:A2,LAMBDA(a,b,ISOMITTED(b)))", "TRUE;TRUE"},
      {"=MAP(A1:A2,LAMBDA(a,b,ISOMITTED(a)))", "FALSE;FALSE"},
      {"=MAP(A1:A2,LAMBDA(a,a,ISOMITTED(a)))", "TRUE;TRUE"},
      {"=MAP(A1:A2,LAMBDA(a,b,a+b))", "1;2"},
      {"=MAP(A1:A2,LAMBDA(a,a,a+1))", "1;1"},
      {"=MAP(A1:A2,LAMBDA(v,NA()))", "#N/A"},
      {"=MAP({2,1,0,5},LAMBDA(v,4/v))", "#DIV/0!"},
      {"=MAP(C1:C2,LAMBDA(v,v+1))", "#VALUE!"},
      {"=MAP(D1:D2,LAMBDA(v,IFERROR(v,9)))", "9;_"},
      {"=MAP({\"2\",TRUE},LAMBDA(v,v*2))", "4,2"},
      {"=MAP(A1:A2,LAMBDA(v,v*2),1/0)", "2;4"},
      {"=MAP(A1:A2,+LAMBDA(v,v*2))", "2;4"},
      {"=MAP(A1:A2,5)", "#VALUE!"},
      {"=MAP(NA(),LAMBDA(v,1))", "1"},
      {"=MAP(A1:A3)", "#NAME?"},
      {"=LET(f,LAMBDA(x,x+1),MAP(A1:A3,f))", "#VALUE!"},
      {"=MAP(A1:A3,LAMBDA(x))", "#VALUE!"},
      {"=MAP(A1:A3,LAMBDA(1,x))", "#VALUE!"},
      {"=MAP(LAMBDA(x,x),LAMBDA(x,ISBLANK(x)))", "TRUE"},
      {"=1+MAP(7,LAMBDA(v,v*2))", "#NAME?"},
      {"=SUM(MAP(A1:A3,LAMBDA(v,v*2)))", "12"},
      {"=BYROW(A1:B2,LAMBDA(r,SUM(r)))", "11;22"},
      {"=BYROW(A1:B2,LAMBDA(r,COLUMNS(r)&ROWS(r)))", "'21';'21'"},
      {"=BYROW({1,2;3,4},LAMBDA(r,r))", "1;3"},
      {"=BYROW(5,LAMBDA(r,SUM(r,1)))", "6"},
      {"=BYCOL(A1:B3,LAMBDA(c,SUM(c)))", "6,60"},
      {"=BYCOL(A1:B3,LAMBDA(c,MAX(c)/0))", "#DIV/0!"},
      {"=BYCOL(A1:B3,LAMBDA(c,ROWS(c)))", "3,3"},
      {"=BYROW(A1:B2,LAMBDA(r,OFFSET(r,0,0)))", "#VALUE!"},
      {"=REDUCE({1,2,3},LAMBDA(a,v,a+v))", "7"},
      {"=REDUCE({1,2,3},LAMBDA(a,v,a+v),0)", "6"},
      {"=REDUCE({1,2,3},LAMBDA(a,v,a&v),\"\")", "'123'"},
      {"=REDUCE(A1:A3,LAMBDA(a,v,a+v),C9)", "6"},
      {"=REDUCE(A1:A3,LAMBDA(a,v,a+v),NA())", "#N/A"},
      {"=REDUCE(A1:A3,LAMBDA(a,v,IFERROR(a,0)+v),NA())", "6"},
      {"=REDUCE(A1:A3,LAMBDA(a,v,VSTACK(a,v)))", "1"},
      {"=REDUCE({3,0,2},LAMBDA(a,v,a/v),1)", "#DIV/0!"},
      {"=REDUCE(0,1)", "#VALUE!"},
      {"=SCAN({1,2,3},LAMBDA(a,v,a+v))", "2,4,7"},
      {"=SCAN(A1:B2,LAMBDA(a,v,a+v),0)", "1,11;13,33"},
      {"=SCAN({\"a\",\"b\"},LAMBDA(a,v,a&v),\"\")", "'a','ab'"},
      {"=SCAN({1,2,0},LAMBDA(a,v,6/v))", "#DIV/0!"},
      {"=MAKEARRAY(2,2,LAMBDA(r,c,r*10+c))", "11,12;21,22"},
      {"=MAKEARRAY(1.9,\"2\",LAMBDA(r,c,r&c))", "'11','12'"},
      {"=MAKEARRAY(2,2,LAMBDA(r,c,1/(r-c)))", "#DIV/0!"},
      {"=MAKEARRAY(0.5,2,LAMBDA(r,c,1))", "#VALUE!"},
      {"=MAKEARRAY(2,-1,LAMBDA(r,c,1))", "#VALUE!"},
      {"=MAKEARRAY(\"x\",1,LAMBDA(r,c,1))", "#VALUE!"},
      {"=MAKEARRAY(D1,1,LAMBDA(r,c,1))", "#VALUE!"},
      {"=MAKEARRAY(1001,1000,LAMBDA(r,c,1))", "#NUM!"},
      {"=MAKEARRAY(1E9,1E300,LAMBDA(r,c,1))", "#VALUE!"},
      {"=MAKEARRAY(2,2)", "#NAME?"},
      {"=MAKEARRAY(2,LAMBDA(r,c,1),2)", "#VALUE!"},
  };
  ExpectAt(cases);
}

TEST(Lambda, IsNoValueOfACell) {
  TSheetFixture sheet({{"A1", "=LAMBDA(x,x)"}, {"A2", "=LET(f,LAMBDA(x,x),LAMBDA(y,y))"}, {"A3", "=LAMBDA()"}});
  EXPECT_EQ(sheet.Run("A1 A2 A3"), "#VALUE! #VALUE! #VALUE!");
  EXPECT_EQ(sheet.Eval("=LAMBDA(x,x)"), "#NAME?");
  EXPECT_EQ(sheet.Eval("=SUM(LAMBDA(x,x))"), "0");
}

TEST(Lambda, ResultsSpillAndFollowTheirCells) {
  TSheetFixture sheet = Sample();
  sheet.Set({{"F1", "=MAP(A1:A3,LAMBDA(v,v*v))"}, {"G1", "=SUM(F1:F3)"}});
  sheet.Evaluator.RecalculateAll();
  EXPECT_EQ(sheet.Show("F1 F2 F3 G1"), "1 4 9 14");
  sheet.Set("A3", "10");
  sheet.Evaluator.NotifyCellChanged(0, 1, 3);
  EXPECT_EQ(sheet.Show("F3 G1"), "100 105");
}

TEST(Lambda, AClosureTellsItsParametersAndBody) {
  const struct {
    const char* Formula;
    const char* Tree;
  } cases[] = {
      {"=a+2*B1", "(+ (A) (* 2 B1))"},
      {"=SUM(-A1:B2,Sheet1!A1,{1,2;TRUE,\"x\"})", "(SUM (- A1:B2) Sheet1!A1 {1 2; TRUE \"x\"})"},
      {"=Sales[c]<>@x", "(<> Sales[c] (@ (X)))"},
  };
  for (const auto& row : cases) {
    const auto program = detail::CompileText(Utf8ToUtf16(row.Formula));
    const TLambdaClosure closure({u"A", u"B"}, detail::MakeTree(*program, program->Root(), 0, 0));
    EXPECT_EQ(Utf16ToUtf8(DumpAst(closure.GetBody())), row.Tree);
    EXPECT_EQ(closure.GetParamCount(), 2);
    EXPECT_EQ(closure.GetParamName(1), u"B");
    EXPECT_EQ(closure.GetParamName(2), u"");
  }
}

/// Bodies of arithmetic over values of every kind, with numbers near the limits: calls by numbers against calls that
/// bind names.
TEST(Lambda, ArithmeticBodiesGiveTheSameWithAndWithoutNames) {
  std::mt19937 random(7);
  const auto pick = [&](std::initializer_list<const char*> AItems) {
    return std::string(AItems.begin()[random() % AItems.size()]);
  };
  const std::function<std::string(int)> body = [&](int ADepth) -> std::string {
    if (ADepth == 0) return pick({"v", "a", "v", "a", "2", "0.1", "0", "w", "$V", "(-v)"});
    return "(" + pick({"", "", "-", "+"}) + body(ADepth - 1) + pick({"+", "-", "*", "/", "^", "-"}) +
           body(ADepth - 1 - static_cast<int>(random() % 2) * (ADepth > 1)) + ")";
  };
  for (int round = 0; round < 400; ++round) {
    TSheetFixture sheet;
    const int rows = 1 + static_cast<int>(random() % 700);
    const bool isClean = round % 3 != 0;
    for (int row = 1; row <= rows; ++row) {
      const std::string odd = pick({"_", "_", "TRUE", "'3", "x", "#N/A", "1E+308", "=A1", "0"});
      const std::string content = isClean || random() % 200 != 0 ? std::to_string(1 + random() % 50) : odd;
      sheet.Set("A" + std::to_string(row), content);
    }
    const std::string range = "A1:A" + std::to_string(rows) + (round % 5 ? "" : "+0");
    const std::string source = round % 4 ? range : "SORT(A1:A" + std::to_string(rows) + ")";
    const std::string text = body(1 + round % 3);
    const std::string formulas[] = {
        "=MAP(" + source + ",LAMBDA(v," + text + "))",
        "=MAP(" + source + ",LAMBDA(a,v,a," + text + "))",
        "=REDUCE(" + source + ",LAMBDA(a,v," + text + "),1)",
        "=SCAN(" + source + ",LAMBDA(a,v," + text + "))",
        "=MAKEARRAY(7," + std::to_string(rows % 40) + ",LAMBDA(v,a," + text + "))",
        "=LET(v,3,w,1,SUM(IFERROR(SUM(MAP(" + source + ",LAMBDA(a," + text + "))),5),v))",
    };
    for (const std::string& formula : formulas) {
      sheet.Evaluator.Options().NumericLambdas = true;
      const std::string fast = sheet.EvalAt("F2", formula);
      sheet.Evaluator.Options().NumericLambdas = false;
      EXPECT_EQ(fast, sheet.EvalAt("F2", formula)) << formula << " over " << rows << ", round " << round;
    }
  }
}

/// Fills a column with a chain of formulas without results; "{}" stands for the cell above.
void FillChain(TSheetFixture& ASheet, int32_t ALength, const std::string& AFormula) {
  for (int32_t row = 2; row <= ALength; ++row) {
    std::string text = AFormula;
    for (size_t at = text.find("{}"); at != text.npos; at = text.find("{}"))
      text.replace(at, 2, "A" + std::to_string(row - 1));
    ASheet.Sheet().Store().SetFormula(1, row, Utf8ToUtf16(text), 0);
  }
}

TEST(Lambda, ChainsOfPullsOfAnyLengthPassThroughBoundNames) {
  constexpr int32_t kLong = 200'000;
  constexpr int32_t kShort = 20'000;
  const struct {
    int32_t Length;
    const char* Link;
    const char* Formula;
    const char* Shown;
  } cases[] = {
      {kLong, "={}+1", "=LET(k,5,A200000+k)", "200005"},
      {kLong, "={}+1", "=MAP(C1:C3,LAMBDA(v,v+A200000))", "200001;200002;200003"},
      {kShort, "=LET(x,1,x+{})", "=LET(y,5,A20000+y)", "20005"},
      {kShort, "={}+1", "=REDUCE(C1:C3,LAMBDA(a,v,a+v+SUM(A20000,A10000)),0)", "90006"},
      {kShort, "={}+1", "=BYROW(C1:C3,LAMBDA(r,SUM(r,INDIRECT(\"A20000\"))))", "20001;20002;20003"},
      {kShort, "=LET(x,{},x+1)", "=LET(k,5,A20000+k)", "20005"},
      {kShort, "=LET(x,1,x+{})", "=LET(x,5,A20000+x)", "#NAME?"},
      {kShort, "=IFERROR(@LET(x,1,{}+x),{}+2)", "=A20000", "39998"},
      {kShort, "=SUM(MAP(1,LAMBDA(v,v+{})))", "=SUM(MAP({1,2},LAMBDA(w,w+A20000)))", "40003"},
      {kShort, "={}+k", "=LET(k,2,A20000)", "39999"},
  };
  for (const auto& row : cases) {
    TSheetFixture sheet({{"A1", "1"}, {"C1", "1"}, {"C2", "2"}, {"C3", "3"}});
    FillChain(sheet, row.Length, row.Link);
    EXPECT_EQ(ShownAt(sheet, "F2", row.Formula), row.Shown) << row.Link << " " << row.Formula;
    EXPECT_EQ(sheet.EvalAt("F2", "=x"), "#NAME?") << row.Formula;
    EXPECT_EQ(sheet.Sheet().Store().UncachedCount(), 0u) << row.Formula;
  }
}

/// What a formula that waits for a cell must not lose: which names are bound, and which ones the cells it has read have
/// unbound.
TEST(Lambda, WaitingFormulasKeepTheirNames) {
  const char* const formulas[] = {
      "=LET(x,1,y,2,C1&x&y)",
      "=LET(x,1,y,2,IFERROR(C2&x,C3&y)&IFERROR(x,\"gone\")&C4)",
      "=LET(x,C4,y,x&C1,SUM(MAP(A1:A3,LAMBDA(v,v*LEN(y&C3)))))",
      "=MAP(A1:A3,LAMBDA(v,v&C1&IFERROR(C2,\"-\")&IFERROR(v,\"gone\")))",
      "=REDUCE(A1:A3,LAMBDA(a,v,a&v&IFERROR(C3,0)&IFERROR(C5,0)),C4)",
      "=LET(x,1,SUM(x,C2,x,LET(y,C5,y)))",
      "=LET(x,1,z,9,HSTACK(SUM(x,C6,z),IFERROR(z,\"gone\"),C5))",
      "=SUM(LET(x,2,x),LET(y,3,C1+y))+@A1:A3",
      "=BYROW(A1:B3,LAMBDA(r,SUM(r,C6)&IFERROR(SUM(r),\"gone\")))",
      "=LET(x,Far,y,4,Far&y&x)",
  };
  for (const char* formula : formulas) {
    std::string shown[2];
    for (const bool nest : {true, false}) {
      TSheetFixture sheet({{"A1", "1"},
                           {"A2", "2"},
                           {"A3", "3"},
                           {"C1", "=IFERROR(x,7)+C4"},
                           {"C2", "=LET(x,5,v,6,x+v+C3)"},
                           {"C3", "=IFERROR(y,8)+C5"},
                           {"C4", "=LET(w,C5,w+1)"},
                           {"C5", "=IFERROR(v,ROW())"},
                           {"C6", "=SUM(LET(z,C4,z),LET(r,C5,r))"}});
      sheet.Workbook.SetNamedFormula("Far", "=IFERROR(y,0)&C3&SUM(LET(y,C1,y))");
      sheet.Evaluator.Options().NestPulls = nest;
      sheet.Set("F2", formula);
      shown[nest] = sheet.Run("F2") + " | " + sheet.Show("F2 F3 F4 G2 H2 C1 C2 C3 C4 C5 C6");
    }
    EXPECT_EQ(shown[0], shown[1]) << formula;
  }
}

TEST(Lambda, NestsAsDeepAsAFormulaMay) {
  const struct {
    const char* Open;
    const char* Close;
    int Times;
    const char* Shown;
  } cases[] = {
      {"LET(x,1,", ")", 480, "5"},
      {"LET(x,", ",x)", 480, "5"},
      {"LET(x,1,SUM(", ",LET(x,2,0)))", 100, "5"},
      {"LET(x,1,SUM(LET(x,2,0),", "))", 200, "5"},
      {"MAP(1,LAMBDA(v,", "))", 240, "5"},
      {"REDUCE(1,LAMBDA(a,v,", "),1)", 240, "5"},
      {"MAKEARRAY(1000,1000,LAMBDA(r,c,", "))", 240, "#NUM!"},
  };
  for (const auto& row : cases) {
    std::string formula = "=";
    for (int i = 0; i < row.Times; ++i) formula += row.Open;
    formula += "5";
    for (int i = 0; i < row.Times; ++i) formula += row.Close;
    TSheetFixture sheet;
    EXPECT_EQ(ShownAt(sheet, "F2", formula), row.Shown) << row.Open;
  }
  std::string lets = "=LET(";
  for (int i = 0; i < 400; ++i) lets += "n_" + std::to_string(i) + ",SEQUENCE(1000000),";
  TSheetFixture sheet;
  EXPECT_EQ(sheet.EvalAt("F2", lets + "SUM(n_0))"), "#NUM!") << "more than the arrays held at one time may own";
}

TEST(Lambda, StopsWhenAskedTo) {
  TSheetFixture sheet({{"A1", "=B1"}, {"A2", "=SUM(MAKEARRAY(20,10,LAMBDA(r,c,SUM(r,c,A1))))"}, {"B1", "1"}});
  sheet.Evaluator.RecalculateAll();
  const std::string before = sheet.Show("A1 A2");
  sheet.Set("B1", "2");
  std::stop_source source;
  TWorkControl control;
  control.Stop = source.get_token();
  sheet.Sheet().SetOnChange([&](TWorksheet&, TCellAddress, const TCell&, const TCell&) { source.request_stop(); });
  EXPECT_THROW(sheet.Evaluator.RecalculateAll(control), ECancelled);
  EXPECT_EQ(sheet.Show("A1 A2"), before);
  EXPECT_EQ(sheet.Eval("=SUM(MAP({1,2},LAMBDA(v,v)))"), "3");
}

}  // namespace
}  // namespace tessarine::testing
