// Opens a workbook, calculates it, changes a cell and reads what its readers show now.
//   example_calculate [FILE.xlsx]

#include <cstdio>

#include <tessarine/tessarine.h>

int main(int ACount, char** AArguments) {
  try {
    tessarine::TWorkbook book;
    tessarine::TXlsxReader::LoadFromFile(book, ACount > 1 ? AArguments[1] : "examples/data/subtotals.xlsx");
    tessarine::TFormulaEvaluator evaluator(book);
    evaluator.RecalculateAll();

    tessarine::TWorksheet& sheet = *book.GetSheet(0);
    const auto show = [&](const char* ACell) {
      const auto address = tessarine::TCellAddress::FromA1(tessarine::TText::FromUtf8(ACell));
      std::printf("%s: %s\n", ACell, sheet.GetDisplayText(address, &book.StyleSheet()).ToUtf8().c_str());
    };
    const int32_t free = sheet.UsedMaxRow() + 1;
    sheet.SetValue({1, free}, tessarine::TCellValue::FromNumber(20));
    sheet.SetValue({2, free}, tessarine::TCellValue::FromFormula(
                                  u"=SUM(A1:A" + tessarine::TCellAddress{1, free}.ToA1().substr(1) + u")"));
    evaluator.NotifyCellChanged(0, 1, free);
    evaluator.NotifyCellChanged(0, 2, free);
    show("A1");
    show(tessarine::TText(tessarine::TCellAddress{2, free}.ToA1()).ToUtf8().c_str());
    return 0;
  } catch (const tessarine::ETessarineError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
