// Builds a small sales report, calculates it, prints it as CSV and saves it where a name is given.
//   example_report [NAME]      writes NAME.tsr and NAME.csv

#include <cstdio>
#include <string>

#include <tessarine/tessarine.h>

int main(int ACount, char** AArguments) {
  try {
    tessarine::TWorkbook workbook;
    const tessarine::TAuthoringWorkbook book(workbook);
    book.Names().Define("TaxRate", "0.19");

    const tessarine::TAuthoringSheet sheet = book.UseSheet(0);
    sheet.Range("A1:D1").Merge();
    sheet.GetCellRef("A1").SetValue("Sales, first quarter").SetFontSize(16).SetFontBold(true);
    sheet.Range("A3:D3")
        .SetValues({{"Month", "Net", "Tax", "Gross"}})
        .SetFontBold(true)
        .SetFillColor(0xFFDDEBF7)
        .BorderAround(tessarine::blsThin);
    sheet.Range("A4:B6").SetValues({{"January", 1250.5}, {"February", 980}, {"March", 1432.25}});
    for (int row = 4; row <= 6; ++row) {
      const std::string number = std::to_string(row);
      sheet.GetCellRef("C" + number).SetFormula("=B" + number + "*TaxRate");
      sheet.GetCellRef("D" + number).SetFormula("=B" + number + "+C" + number);
    }
    sheet.GetCellRef("A7").SetValue("Total").SetFontBold(true);
    sheet.Range("B7:D7").SetFormulas({{"SUM(B4:B6)", "SUM(C4:C6)", "SUM(D4:D6)"}}).SetFontBold(true);
    sheet.Range("B4:D7").SetNumberFormat("#,##0.00");
    sheet.SetComment("C3", "At the rate named TaxRate", "Accounting");
    sheet.Freeze(3, 1);

    tessarine::TFormulaEvaluator(workbook).RecalculateAll();
    sheet.AutoFitColumns();

    tessarine::TMemoryWriteStream csv;
    tessarine::TCsvExportOptions options;
    options.Utf8Bom = false;
    tessarine::TCsvIO::ExportRange(workbook, &sheet.Sheet(), csv, sheet.Range("A1:D7").Range(), options);
    std::printf("%s", std::string(reinterpret_cast<const char*>(csv.Bytes().data()), csv.Bytes().size()).c_str());
    if (ACount > 1) tessarine::TTsrIO::SaveToFile(workbook, std::string(AArguments[1]) + ".tsr");
    if (ACount > 1) tessarine::TCsvIO::SaveToFile(workbook, std::string(AArguments[1]) + ".csv", 0);

    const tessarine::TText gross = sheet.GetCellRef("D7").DisplayText();
    std::printf("Gross of the quarter: %s\n", gross.ToUtf8().c_str());
    return gross == u"4,358.67" ? 0 : 1;
  } catch (const tessarine::ETessarineError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
