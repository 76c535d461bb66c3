// Puts a table over some cells, calculates with its columns, sorts it and draws a chart of it.

#include <cstdio>

#include <tessarine/tessarine.h>

int main() {
  try {
    tessarine::TWorkbook workbook;
    const tessarine::TAuthoringSheet sheet = tessarine::TAuthoringWorkbook(workbook).UseSheet("Sheet1");

    sheet.Range("A1:C5").SetValues({{"City", "Visitors", "Revenue"},
                                    {"Lisbon", 820, 16400},
                                    {"Oslo", 310, 9300},
                                    {"Rome", 1240, 21080},
                                    {"Vienna", 905, 19910}});
    sheet.AddTable("Visits", "A1:C5");
    sheet.Sort("A1:C5", /*AKeyCol=*/3, /*AAscending=*/false, /*AHasHeader=*/true);
    sheet.GetCellRef("E1").SetValue("Revenue per visitor");
    sheet.GetCellRef("E2").SetFormula("SUM(Visits[Revenue])/SUM(Visits[Visitors])").SetNumberFormat("0.00");
    tessarine::TFormulaEvaluator(workbook).RecalculateAll();

    tessarine::TSheetDrawing& chart =
        sheet.AddChart("Revenue by city", tessarine::sctColumn, "C2:C5", "A2:A5", "G2", 8, 14);
    chart.ShowLegend = false;

    std::printf("%s\n", chart.Title.ToUtf8().c_str());
    const tessarine::TSheetChartSeries& series = chart.Series.front();
    for (size_t point = 0; point < series.Values.size(); ++point)
      std::printf("  %-8s %8.0f\n", series.Categories[point].ToUtf8().c_str(), series.Values[point]);
    std::printf("%s: %s\n", sheet.GetCellRef("E1").Text().ToUtf8().c_str(),
                sheet.GetCellRef("E2").DisplayText().ToUtf8().c_str());
    return series.Categories.front() == u"Rome" ? 0 : 1;
  } catch (const tessarine::ETessarineError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
