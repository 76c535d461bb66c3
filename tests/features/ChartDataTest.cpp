#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/features/ChartCommand.h>
#include <tessarine/features/ChartData.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine {
namespace {

using testing::TSheetFixture;

std::string Dump(const TSheetChartSeries& ASeries) {
  std::string text;
  for (const double value : ASeries.Values) text += TCellValue::FromNumber(value).ToDisplayString().ToUtf8() + " ";
  text += "/";
  for (const TText& category : ASeries.Categories) text += " " + category.ToUtf8();
  return text;
}

TEST(ChartData, SeriesAreReadByTheirFormulas) {
  TSheetFixture book;
  book.SetCells("A1='x A2='y A3='z B1=1 B2==B1+1 B3='none C1==1+1 D1='North D2='South Other!A1=7 Other!A2=8");
  book.Run("B2");
  auto& table = book.Sheet().Tables().Add(std::make_unique<TSheetTable>(u"Tab", TCellRange{1, 1, 2, 3}));
  table.SetColumnNames({u"Name", u"Count"});
  book.Workbook.SetNamedFormula("Amounts", "=Sheet1!$B$1:$B$2");
  book.Workbook.SetNamedFormula("Again", "=Amounts");
  book.Workbook.SetNamedFormula("Circle", "=Circle");
  book.Sheet().Sizing().SetRowHidden(9, true);
  test::ExpectCases("features/chart_series.tsv", [&](const test::TCase& ACase) {
    TSheetDrawing chart;
    chart.Kind = sdkChart;
    TSheetChartSeries series;
    series.Values = {42};
    series.Categories = {u"old"};
    series.ValuesFormula = ACase.Text(0);
    series.CategoriesFormula = ACase.Text(1);
    chart.SetSubplots({{sctLine, false, false, {series}}});
    RefreshDrawingCharts(book.Workbook, book.Sheet(), chart);
    return Dump(chart.Subplots[0].Series[0]);
  });
}

TEST(ChartData, AnEditOfAChartReadsItsSeriesBothWays) {
  TSheetFixture book({{"A1", "1"}, {"A2", "2"}});
  book.Sheet().Drawings().Add(std::make_unique<TSheetDrawing>());
  TSheetDrawing& chart = *book.Sheet().Drawings().GetItem(0);
  chart.Kind = sdkChart;
  TChartEdit before;
  TChartEdit after{sctLine, true, true, {TSheetChartSeries()}};
  before.Series = after.Series;
  before.Series[0].ValuesFormula = u"A1";
  after.Series[0].ValuesFormula = u"A2";
  TDrawingChartCommand command(book.Workbook, 0, 0, before, after);
  command.Execute();
  EXPECT_EQ(Dump(chart.Series[0]), "2 /");
  EXPECT_TRUE(chart.ChartType == sctLine && chart.ChartIs3D && chart.Stacked);
  book.Set("A1", "5");
  command.Undo();
  EXPECT_EQ(Dump(chart.Series[0]), "5 /");
  EXPECT_FALSE(chart.ChartType == sctLine || chart.ChartIs3D || chart.Stacked);
}

}  // namespace
}  // namespace tessarine
