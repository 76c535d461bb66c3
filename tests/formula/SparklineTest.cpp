#include <gtest/gtest.h>

#include <string>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "CallNotation.h"

namespace tessarine {

namespace {

std::string Number(double AValue) { return Utf16ToUtf8(GeneralNumberText(AValue)); }

/// "line max 3: 1 2 3", "bar 5 of 10", "none".
std::string Dump(const TSparklineData& AChart) {
  const char* const names[] = {"none", "bar", "column", "line", "winloss"};
  std::string text = names[static_cast<size_t>(AChart.Kind)];
  if (AChart.Kind == spkNone) return text;
  if (AChart.Kind == spkBar) return text + " " + Number(AChart.Value) + " of " + Number(AChart.MaxVal);
  text += " max " + Number(AChart.MaxVal) + ":";
  for (const double value : AChart.Values) text += " " + Number(value);
  return text;
}

class Sparkline : public ::testing::Test {
 protected:
  Sparkline() {
    // A1:B4: 1 10; blank 'x'; -4 30; 2 40
    const char* const cells[] = {"1", "10", "_", "'x'", "-4", "30", "2", "40"};
    for (int i = 0; i < 8; ++i) Sheet.SetValue({i % 2 + 1, i / 2 + 1}, testing::ArgsOf(cells[i])[0].First());
  }
  TCell Entered(const std::string& AFormula) {
    Sheet.SetValue({5, 5}, TCellValue::FromFormula(TText::FromUtf8(AFormula)));
    Evaluator.NotifyCellChanged(0, 5, 5);
    return Sheet.GetCellAt(5, 5);
  }

  TWorkbook Book;
  TWorksheet& Sheet = *Book.GetSheet(0);
  TFormulaEvaluator Evaluator{Book};
};

TEST_F(Sparkline, KindsAndOptionsMakeTheChart) {
  test::ExpectCases("formula/sparklines.tsv", [this](const test::TCase& ACase) {
    const TCell cell = Entered("=SPARKLINE(" + ACase[0] + ")");
    return Dump(cell.Sparkline) + " / " + testing::Shown(cell.CachedValue);
  });
}

TEST_F(Sparkline, ColoursAreRead) {
  EXPECT_EQ(Entered("=SPARKLINE(A1:A4,{\"color\",\"#12aBcD\"})").Sparkline.Color, 0xFF12ABCDu);
  EXPECT_EQ(Entered("=SPARKLINE(1,{\"charttype\",\"bar\";\"color1\",\"red\"})").Sparkline.Color, 0xFFFF0000u);
}

TEST_F(Sparkline, TheChartFollowsItsCellsAndGoesWithItsFormula) {
  Entered("=SPARKLINE(A1:A4)");
  Sheet.SetValue({1, 2}, TCellValue::FromNumber(9));
  Evaluator.NotifyCellChanged(0, 1, 2);
  EXPECT_EQ(Dump(Sheet.GetCellAt(5, 5).Sparkline), "line max 9: 1 9 -4 2");
  Evaluator.RecalculateAll();
  EXPECT_EQ(Dump(Sheet.GetCellAt(5, 5).Sparkline), "line max 9: 1 9 -4 2");
  EXPECT_EQ(Dump(Entered("=IF(A2>5,SPARKLINE(NA()),0)").Sparkline), "none");
  EXPECT_EQ(Dump(Entered("=LEN(SPARKLINE(A1:A4))+COUNT(A1:A4)").Sparkline), "line max 9: 1 9 -4 2");
  EXPECT_EQ(testing::Shown(Sheet.GetCellAt(5, 5).CachedValue), "4");
  EXPECT_EQ(testing::Shown(Entered("=SPARKLINE(E5)").CachedValue), "#CIRC!");
}

}  // namespace

}  // namespace tessarine
