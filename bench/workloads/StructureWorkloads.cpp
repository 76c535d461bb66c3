#include <chrono>
#include <memory>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/undo/StructureCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/formula/Evaluator.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

constexpr int kSteps = 100;

std::u16string LineNumber(int32_t ANumber) {
  const std::string text = std::to_string(ANumber);
  return {text.begin(), text.end()};
}

/// Fills the chain of formulas and answers the value at its end.
double FillChain(TWorksheet& ASheet, int32_t ARows) {
  double expected = ColumnA(1);
  for (int32_t i = 1; i <= ARows; ++i) {
    ASheet.SetValue({1, i}, TCellValue::FromNumber(ColumnA(i)));
    const std::u16string formula = i == 1 ? u"=A1" : u"=B" + LineNumber(i - 1) + u"+A" + LineNumber(i) + u"*2";
    ASheet.SetValue({2, i}, TCellValue::FromFormula(formula));
    if (i > 1) expected += 2 * ColumnA(i);
  }
  return expected;
}

bool EndsWith(const TWorksheet& ASheet, int32_t ARow, double AExpected) {
  const TCellValue value = ASheet.GetEffectiveValue({2, ARow});
  return value.Kind == cvkNumber && value.Number > AExpected * (1 - 1e-9) && value.Number < AExpected * (1 + 1e-9);
}

}  // namespace

void MeasureRowInsert(TRun& ARun) {
  const int32_t rows = ARun.Rows(500000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const double expected = FillChain(sheet, rows);
  TFormulaEvaluator evaluator(book);
  int32_t inserted = 0;
  const auto insert = [&] {
    book.InsertRows(0, 2, 1);
    ++inserted;
  };
  const auto recalculate = [&] { evaluator.RecalculateAll(); };
  const double insertTime = MedianMilliseconds(insert, recalculate);
  const bool keepsFormulas =
      sheet.GetCellAt(2, 2 + inserted).Value.Text.View() == u"=B1+A" + LineNumber(2 + inserted) + u"*2";
  ARun.Results.push_back({"insert", rows, insertTime, {}, PeakMegabytes(), keepsFormulas});
  const double recalculation = MedianMilliseconds(recalculate, insert);
  ARun.Results.push_back(
      {"recalc", rows, recalculation, {}, PeakMegabytes(), EndsWith(sheet, rows + inserted, expected)});
}

void MeasureRowInsertUndo(TRun& ARun) {
  const int32_t rows = ARun.Rows(500000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const double expected = FillChain(sheet, rows);
  TUndoManager& undo = book.UndoManager();
  const double before = PeakMegabytes();
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kSteps; ++i)
    undo.ExecuteCommand(std::make_shared<TRowColShiftCommand>(book, 0, true, false, 2, 1));
  for (int i = 0; i < kSteps; ++i) undo.Undo();
  const bool isRestored =
      sheet.GetCellAt(2, rows).Value.Text.View() == u"=B" + LineNumber(rows - 1) + u"+A" + LineNumber(rows) + u"*2";
  for (int i = 0; i < kSteps; ++i) undo.Redo();
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  const double beyond = PeakMegabytes() - before;
  TFormulaEvaluator evaluator(book);
  evaluator.RecalculateAll();
  ARun.Results.push_back(
      {"undo", rows, elapsed.count(), {}, beyond, isRestored && EndsWith(sheet, rows + kSteps, expected)});
}

}  // namespace tessarine::bench
