#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

/// Fills A2 to A(ALength) with a formula in which "{-1}", "{0}" and the like stand for rows relative to its own.
void FillChain(TSheetFixture& AFixture, int ALength, const std::string& AFormula) {
  std::string text;
  for (int row = 2; row <= ALength; ++row) {
    text.clear();
    for (size_t i = 0; i < AFormula.size(); ++i) {
      if (AFormula[i] != '{') {
        text += AFormula[i];
        continue;
      }
      const size_t end = AFormula.find('}', i);
      text += std::to_string(row + std::stoi(AFormula.substr(i + 1, end - i - 1)));
      i = end;
    }
    AFixture.Sheet().Store().SetFormula(1, row, Utf8ToUtf16(text), 0);
  }
}

std::string RunLast(TSheetFixture& AFixture, int ALength) { return AFixture.Run("A" + std::to_string(ALength)); }

TEST(DeepChain, AMillionUncachedCellsReadFromTheEnd) {
  constexpr int kLength = 1'000'000;
  TSheetFixture sheet({{"A1", "1"}});
  FillChain(sheet, kLength, "=A{-1}+1");
  EXPECT_EQ(RunLast(sheet, kLength), "1000000");
  EXPECT_EQ(sheet.Sheet().Store().UncachedCount(), 0u);
}

TEST(DeepChain, EveryShapeOfALinkGivesItsValue) {
  test::ExpectCases("formula/deep_chains.tsv", [](const test::TCase& ACase) {
    const int length = ACase.Int(0);
    TSheetFixture sheet({{"A1", "1"}, {"C1", "1"}, {"C2", "2"}, {"C3", "3"}});
    sheet.Workbook.SetNamedFormula("Step", "=1");
    FillChain(sheet, length, ACase[1]);
    const std::string shown = sheet.EvalAt("F2", ACase[2]);
    EXPECT_EQ(sheet.EvalAt("F2", "=x"), "#NAME?") << ACase.Place();
    EXPECT_EQ(sheet.Sheet().Store().UncachedCount(), 0u) << ACase.Place();
    return shown;
  });
}

TEST(DeepChain, LinksThatNestAlmostAsDeepAsAFormulaMay) {
  constexpr int kLength = 40;
  const struct {
    const char* Open;
    const char* Close;
    int Times;
  } cases[] = {{"SUM(0,", ")", 480}, {"IF(1,0+", ")", 240}, {"(0+", "+0)", 240}, {"ABS(@", ")", 240}};
  for (const auto& row : cases) {
    std::string formula = "=1+";
    for (int i = 0; i < row.Times; ++i) formula += row.Open;
    formula += "A{-1}";
    for (int i = 0; i < row.Times; ++i) formula += row.Close;
    TSheetFixture sheet({{"A1", "1"}});
    FillChain(sheet, kLength, formula);
    EXPECT_EQ(RunLast(sheet, kLength), "40") << row.Open;
    EXPECT_EQ(sheet.Eval(formula.replace(formula.find("A{-1}"), 5, "A1")), "2") << row.Open;
  }
}

TEST(DeepChain, NamesOnTheWayStayUnderEvaluation) {
  constexpr int kLength = 3000;
  TSheetFixture sheet({{"A1", "1"}});
  for (int row = 2; row <= kLength; ++row)
    sheet.Workbook.SetNamedFormula("Row" + std::to_string(row) + "_", "=$A$" + std::to_string(row - 1) + "+1");
  FillChain(sheet, kLength, "=IFERROR(Row{0}_,-1)");
  EXPECT_EQ(RunLast(sheet, kLength), "3000");
  sheet.Set("A1", "=IFERROR(Row2900_,500)");
  FillChain(sheet, kLength, "=IFERROR(Row{0}_,-1)");
  EXPECT_EQ(RunLast(sheet, kLength), "3499") << "the name that leads back to itself is circular at the far end";
}

TEST(DeepChain, ManyDeepPullsOfOneReader) {
  // A sum over the ends of a hundred columns of formulas, each of which reads the cell above it.
  constexpr int kRows = 3000;
  constexpr int kCols = 100;
  TSheetFixture sheet;
  for (int32_t col = 1; col <= kCols; ++col) {
    sheet.Sheet().Store().SetNumber(col, 1, 1, 0);
    const std::u16string letters = ColToLetters(col);
    for (int32_t row = 2; row <= kRows; ++row)
      sheet.Sheet().Store().SetFormula(col, row, u"=IF(1," + letters + Utf8ToUtf16(std::to_string(row - 1)) + u"+1)",
                                       0);
  }
  sheet.Set("A3001", "=SUM(A3000:CV3000)+@A1:A3000");
  EXPECT_EQ(sheet.Run("A3001"), "300002") << "the cell entered last is the far end of the last column, in row 2";
  EXPECT_EQ(sheet.Eval("=SUM(A3000:CV3000)"), "300000");
  EXPECT_EQ(sheet.Sheet().Store().UncachedCount(), 0u);
}

TEST(DeepChain, ACycleAtTheFarEndIsFound) {
  constexpr int kLength = 100'000;
  TSheetFixture sheet({{"A1", "=IFERROR(A100000,7)"}});
  FillChain(sheet, kLength, "=IF(1,A{-1})+1");
  EXPECT_EQ(RunLast(sheet, kLength), "100006");
  EXPECT_EQ(sheet.Show("A1 A2"), "7 8");
  sheet.Set("A1", "=A100000");
  sheet.Sheet().Store().SetFormula(1, kLength, u"=A99999", 0);
  FillChain(sheet, kLength - 1, "=IF(1,A{-1})+1");
  EXPECT_EQ(RunLast(sheet, kLength), "#CIRC!");
  EXPECT_EQ(sheet.Show("A1 A2 A50000"), "#CIRC! #CIRC! #CIRC!");
}

/// The formulas of which each exercises what a waiting reader must not lose: the position after each of its pulls,
/// names under evaluation, views that it holds.
TEST(DeepChain, WaitingReadersGoOnAsIfTheyHadNeverStopped) {
  const char* const formulas[] = {
      "=C9+@A1:A5",
      "=@A1:A5+C9+@A1:A9",
      "=SUM(A1:A5,C9,ROW(),C3,COLUMN())",
      "=0+SUM(@A1:A9,C9,@A1:A9,C3,@A1:A9)",
      "=SUM(C1:C9)&\"/\"&ROW()&\"/\"&COLUMN()",
      "=SUM(C9,IF(ROW()=9,C3,C5),ROW())",
      "=Far&\"-\"&Near",
      "=IFERROR(Loop,Far)",
      "=COUNTA(C1:C9=C3,A1:A9)&@A1:A9",
      "=SUM(C9:D9,@A1:A9)+SUM(D3,@A1:A9)",
      "=INDIRECT(\"A1:A9\")+C9+INDIRECT(\"A1:A9\")",
      "=OFFSET(A1,C3-3,0)+ROW()",
  };
  for (const char* formula : formulas) {
    std::string shown[2];
    for (const bool nest : {true, false}) {
      TSheetFixture sheet({{"C1", "=A1+D1"},
                           {"C3", "=D9*0+3"},
                           {"C5", "=C3+ROW()"},
                           {"C9", "=@A1:A9+D3"},
                           {"D1", "=C5"},
                           {"D3", "=ROW()"},
                           {"D9", "=IF(ROW()=9,D3,B2)"},
                           {"B2", formula}});
      for (int row = 1; row <= 9; ++row) sheet.Set("A" + std::to_string(row), std::to_string(row * row));
      sheet.Workbook.SetNamedFormula("Far", "=C9+ROW()");
      sheet.Workbook.SetNamedFormula("Near", "=@Sheet1!A1:A9&C5");
      sheet.Workbook.SetNamedFormula("Loop", "=C5+Loop");
      sheet.Evaluator.Options().NestPulls = nest;
      shown[nest] = sheet.Run("B2");
      shown[nest] += " | " + sheet.Show("C1 C3 C5 C9 D1 D3 D9");
      shown[nest] += " | " + sheet.Eval("=ROW()&COLUMN()");
    }
    EXPECT_EQ(shown[0], shown[1]) << formula;
  }
}

TEST(DeepChain, AHandlerThatThrowsLeavesNothingVisiting) {
  for (const bool nest : {true, false}) {
    constexpr int kLength = 5000;
    TSheetFixture sheet({{"A1", "=1"}});
    FillChain(sheet, kLength, "=IF(1,A{-1})+1");
    sheet.Evaluator.Options().NestPulls = nest;
    sheet.Sheet().SetOnChange([](TWorksheet&, TCellAddress AAddress, const TCell&, const TCell&) {
      if (AAddress.Row == 40) throw std::string("enough");
    });
    EXPECT_THROW(RunLast(sheet, kLength), std::string);
    sheet.Sheet().SetOnChange({});
    EXPECT_EQ(sheet.Run("A41"), "41");
    EXPECT_EQ(RunLast(sheet, kLength), "5000");
  }
}

}  // namespace
}  // namespace tessarine::testing
