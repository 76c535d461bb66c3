#include <cstdio>

#include <tessarine/tessarine.h>

int main() {
  tessarine::TWorkbook book;
  tessarine::TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({1, 1}, tessarine::TCellValue::FromNumber(19.5));
  sheet.SetValue({2, 1}, tessarine::TCellValue::FromFormula(u"=ROUND(A1*1.2,1)&\" in all\""));
  tessarine::TFormulaEvaluator evaluator(book);
  evaluator.RecalculateAll();
  const std::string shown = sheet.GetDisplayText({2, 1}, &book.StyleSheet()).ToUtf8();
  tessarine::TMemoryWriteStream document;
  tessarine::TOdsWriter::SaveToStream(book, document);
  std::printf("tessarine %s: %s\n", std::string(tessarine::Version()).c_str(), shown.c_str());
  return shown == "23.4 in all" && !document.Bytes().empty() ? 0 : 1;
}
