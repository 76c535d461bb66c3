// Sums records up in a pivot table, with a chart that follows it and a slicer that narrows it down.

#include <cstdio>

#include <tessarine/tessarine.h>

namespace {

void Print(const tessarine::TAuthoringSheet& ASheet, const tessarine::TCellRange& ARange) {
  for (int row = ARange.StartRow; row <= ARange.EndRow; ++row) {
    for (int col = ARange.StartCol; col <= ARange.EndCol; ++col) {
      const tessarine::TSheetCellRef cell(ASheet.Sheet(), tessarine::TCellAddress{col, row});
      std::printf("%-16s", cell.DisplayText().ToUtf8().c_str());
    }
    std::printf("\n");
  }
  std::printf("\n");
}

}  // namespace

int main() {
  try {
    tessarine::TWorkbook workbook;
    const tessarine::TAuthoringWorkbook book(workbook);
    book.UseSheet("Sheet1").Range("A1:C7").SetValues({{"Region", "Product", "Sales"},
                                                      {"North", "Tea", 120},
                                                      {"South", "Tea", 80},
                                                      {"North", "Coffee", 200},
                                                      {"South", "Coffee", 150},
                                                      {"North", "Tea", 30},
                                                      {"West", "Coffee", 90}});

    const tessarine::TAuthoringSheet report = book.AddWorksheet("Report");
    tessarine::TPivotTable& pivot = report.AddPivotTable("Sales", "Sheet1!A1:C7", "A3");
    report.AddPivotField("Sales", "Region", tessarine::pfrRow);
    report.AddPivotField("Sales", "Product", tessarine::pfrColumn);
    report.AddPivotField("Sales", "Sales", tessarine::pfrValue, tessarine::paSum);
    report.RefreshPivotTable("Sales");
    Print(report, pivot.LastBody);

    const tessarine::TSheetDrawing& chart = report.AddPivotChart("Sales", "G3");
    report.AddSlicer("By region", "Sales", "Region", "G20");
    report.SetSlicerSelection("By region", {u"North", u"West"});
    Print(report, pivot.LastBody);

    std::printf("The chart shows %zu series of %zu points\n", chart.Series.size(), chart.Series.front().Values.size());
    return chart.Series.size() == 2 && chart.Series.front().Values.size() == 2 ? 0 : 1;
  } catch (const tessarine::ETessarineError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
