#include <functional>
#include <random>
#include <stop_token>
#include <string>

#include <gtest/gtest.h>

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
      {"MAP(1,LAMBDA(v,", "))", 240, "{5}"},
      {"REDUCE(1,LAMBDA(a,v,", "),1)", 240, "5"},
      {"MAKEARRAY(1000,1000,LAMBDA(r,c,", "))", 240, "#NUM!"},
  };
  for (const auto& row : cases) {
    std::string formula = "=";
    for (int i = 0; i < row.Times; ++i) formula += row.Open;
    formula += "5";
    for (int i = 0; i < row.Times; ++i) formula += row.Close;
    TSheetFixture sheet;
    EXPECT_EQ(sheet.EvalAt("F2", formula), row.Shown) << row.Open;
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

  for (int32_t row = 1; row <= 20000; ++row) {  // a chain that is longer than the stack, and no results
    const std::string above = row == 1 ? "0" : "C" + std::to_string(row - 1);
    sheet.Set("C" + std::to_string(row), "=1+" + above);
  }
  for (const char16_t* formula : {u"=MAP(C20000,LAMBDA(v,v))", u"=SUM(C1:C20000)", u"=C20000&C19999"}) {
    EXPECT_THROW(sheet.Evaluator.EvaluateAt(formula, 0, 5, 1, control), ECancelled);
    EXPECT_EQ(sheet.Show("C20000"), "_");
  }
  EXPECT_EQ(sheet.Eval("=C20000"), "20000");
  EXPECT_THROW(sheet.Evaluator.EvaluateAt(u"=SUM(1)", 0, 5, 1, control), ECancelled);
  EXPECT_EQ(sheet.EvalAt("E1", "=SUM(1)"), "1");
}

}  // namespace
}  // namespace tessarine::testing
