#include <cmath>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

/// Evaluates the formula in C1, result stored and spilled, and tells its time.
double MeasureFormula(TWorkbook& ABook, std::u16string_view AText) {
  ABook.GetSheet(0)->SetValue({3, 1}, TCellValue::FromFormula(AText));
  TFormulaEvaluator evaluator(ABook);
  return MedianMilliseconds([&] { evaluator.NotifyCellChanged(0, 3, 1); });
}

bool Near(const TCellValue& AValue, double AExpected) {
  return AValue.Kind == cvkNumber &&
         std::fabs(AValue.Number - AExpected) <= 1e-9 * std::fmax(1.0, std::fabs(AExpected));
}

}  // namespace

void MeasureLambdas(TRun& ARun) {
  const int32_t rows = ARun.Rows(1000000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  double expected = 0;
  for (int32_t i = 1; i <= rows; ++i) {
    sheet.SetValue({1, i}, TCellValue::FromNumber(ColumnA(i)));
    expected += ColumnA(i) * 2 - 1;
  }
  const std::string end = std::to_string(rows);
  const std::u16string range = u"A1:A" + std::u16string(end.begin(), end.end());

  const double map = MeasureFormula(book, u"=MAP(" + range + u",LAMBDA(v,v*2+1-v/4))");
  bool isRight = true;
  for (int32_t i = 1; i <= rows && isRight; ++i) {
    const double value = ColumnA(i);
    isRight = Near(sheet.GetEffectiveValue({3, i}), value * 2 + 1 - value / 4);
  }
  ARun.Results.push_back({"map", rows, map, {}, PeakMegabytes(), isRight});

  const double reduce = MeasureFormula(book, u"=REDUCE(" + range + u",LAMBDA(a,v,a+v*2-1),0)");
  ARun.Results.push_back(
      {"reduce", rows, reduce, {}, PeakMegabytes(), Near(sheet.GetEffectiveValue({3, 1}), expected)});
}

}  // namespace tessarine::bench
