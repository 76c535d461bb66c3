#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/platform/Locale.h>

namespace tessarine {
namespace {

constexpr int kThreads = 6;

std::u16string Digits(int ANumber) {
  const std::string text = std::to_string(ANumber);
  return {text.begin(), text.end()};
}

/// Fills, calculates, edits and shows a workbook of its own; answers what its last cells show.
std::string WorkOnABook(int ASeed) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  TCellFormat format;
  format.NumberFormat = u"#,##0.00";
  const int32_t style = book.StyleSheet().AddCellXf(format);
  for (int row = 1; row <= 400; ++row) {
    const std::u16string r = Digits(row);
    sheet.SetValue({1, row}, TCellValue::FromNumber(row % 17 + ASeed));
    sheet.SetValue({2, row}, TCellValue::FromFormula(u"=A" + r + u"*2+1"));
    sheet.SetValue({3, row}, TCellValue::FromFormula(u"=SUM(A$1:A" + r + u")"));
    sheet.SetValue({4, row}, TCellValue::FromFormula(u"=VLOOKUP(A" + r + u",A$1:C$400,2,FALSE)"));
    sheet.SetValue({5, row}, TCellValue::FromFormula(u"=TEXT(C" + r + u",\"#,##0.00\")&UPPER(\"x\")"));
    TCell cell = sheet.GetCellAt(3, row);
    cell.StyleIndex = style;
    sheet.SetCell({3, row}, cell);
  }
  TFormulaEvaluator evaluator(book);
  evaluator.RecalculateAll();
  for (int edit = 1; edit <= 20; ++edit) {
    sheet.SetValue({1, edit}, TCellValue::FromNumber(edit));
    evaluator.NotifyCellChanged(0, 1, edit);
  }
  return sheet.GetDisplayText({3, 400}, &book.StyleSheet()).ToUtf8() + " " +
         sheet.GetDisplayText({4, 400}, &book.StyleSheet()).ToUtf8() + " " +
         sheet.GetDisplayText({5, 400}, &book.StyleSheet()).ToUtf8();
}

TEST(Threads, EachWorksOnAWorkbookOfItsOwn) {
  std::vector<std::string> shown(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&shown, i] { shown[static_cast<size_t>(i)] = WorkOnABook(i); });
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < kThreads; ++i) EXPECT_EQ(shown[static_cast<size_t>(i)], WorkOnABook(i)) << i;
}

TEST(Threads, AWorkbookMayMoveFromOneToAnother) {
  TWorkbook book;
  TFormulaEvaluator evaluator(book);
  book.GetSheet(0)->SetValue({1, 1}, TCellValue::FromFormula(u"=1+1"));
  std::thread([&] { evaluator.RecalculateAll(); }).join();
  std::thread([&] { book.GetSheet(0)->SetValue({2, 1}, TCellValue::FromFormula(u"=A1*3")); }).join();
  std::thread([&] { evaluator.NotifyCellChanged(0, 2, 1); }).join();
  EXPECT_EQ(book.GetSheet(0)->GetEffectiveValue({2, 1}), TCellValue::FromNumber(6));
}

TEST(Threads, TheDefaultLocaleMayChangeWhileOthersRead) {
  TFormatSettings comma;
  comma.DecimalSeparator = u',';
  comma.GroupSeparator = u'.';
  std::thread changing([&] {
    for (int i = 0; i < 200; ++i) SetDefaultFormatSettings(i % 2 ? TFormatSettings() : comma);
    SetDefaultFormatSettings({});
  });
  for (int i = 0; i < 20; ++i) {
    TWorkbook book;
    TFormulaEvaluator evaluator(book);
    const std::string text = evaluator.Evaluate(u"=TEXT(1234.5,\"#,##0.0\")").ToDisplayString().ToUtf8();
    EXPECT_EQ(text.size(), 7u) << text;
  }
  changing.join();
}

}  // namespace
}  // namespace tessarine
