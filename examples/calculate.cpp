// Opens a workbook whose formulas have no results yet, calculates it, changes one number and lets what depends on it
// follow.
//   example_calculate [PATH OF subtotals.xlsx]

#include <cstdio>

#include <tessarine/tessarine.h>

int main(int ACount, char** AArguments) {
  try {
    tessarine::TWorkbook book;
    tessarine::TXlsxReader::LoadFromFile(book, ACount > 1 ? AArguments[1] : "examples/data/subtotals.xlsx");
    tessarine::TFormulaEvaluator evaluator(book);
    evaluator.RecalculateAll();

    const tessarine::TAuthoringSheet sheet = tessarine::TAuthoringWorkbook(book).UseSheet(0);
    const auto print = [&] {
      for (const char* cell : {"G3", "I3", "I7"})  // units, their price, the subtotal of the first person
        std::printf("%s: %-8s", cell, sheet.GetCellRef(cell).DisplayText().ToUtf8().c_str());
      std::printf("\n");
    };
    print();

    // A write calculates nothing; the evaluator computes what reads the cell as soon as it is told of the change.
    const tessarine::TSheetCellRef units = sheet.GetCellRef("G3");
    units.SetValue(100);
    evaluator.NotifyCellChanged(0, units.Address().Col, units.Address().Row);
    print();
    return sheet.GetCellRef("I7").Text() == u"488.12" ? 0 : 1;
  } catch (const tessarine::ETessarineError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
