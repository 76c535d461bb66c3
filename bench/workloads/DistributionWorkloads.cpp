#include <algorithm>
#include <cmath>
#include <iterator>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

std::u16string RowText(int32_t ARow) {
  const std::string text = std::to_string(ARow);
  return {text.begin(), text.end()};
}

double ProbabilityOf(int32_t ARow) { return (Hash(static_cast<uint32_t>(ARow), 171) % 9998 + 1) / 10000.0; }

/// The formulas in turn, with # for the row. The six flows of XIRR stand in D1:D6 on the dates in E1:E6.
constexpr std::u16string_view kCalls[] = {
    u"=NORM.INV(A#,0,1)",
    u"=T.DIST(A#*4,10,TRUE)",
    u"=GAMMA.DIST(A#*4,2,1,TRUE)",
    u"=PMT(A#/12,360,-100000)",
    u"=PRICE(45000,48000,A#/10,A#/8,100,2)",
    u"=XIRR(D$1:D$6,E$1:E$6)",
};

std::u16string CallOf(int32_t ARow) {
  std::u16string text(kCalls[static_cast<size_t>(ARow - 1) % std::size(kCalls)]);
  for (size_t at = text.find(u'#'); at != text.npos; at = text.find(u'#')) text.replace(at, 1, RowText(ARow));
  return text;
}

/// The inverse functions must lead back to where they started, and no call may fail.
bool IsRight(const TWorksheet& ASheet, TFormulaEvaluator& AEvaluator, int32_t ARows) {
  for (int32_t row = 1; row <= ARows; ++row) {
    if (ASheet.GetEffectiveValue({2, row}).Kind != cvkNumber) return false;
  }
  for (int32_t row = 1; row <= std::min(ARows, 600); row += 6) {
    const TCellValue back = AEvaluator.Evaluate("=NORM.S.DIST(B" + std::to_string(row) + ",TRUE)");
    if (std::abs(back.Number - ProbabilityOf(row)) > 1e-12) return false;
  }
  const TCellValue net = AEvaluator.Evaluate("=XNPV(B6,D1:D6,E1:E6)");
  return net.Kind == cvkNumber && std::abs(net.Number) < 1e-3;
}

}  // namespace

void MeasureDistributions(TRun& ARun) {
  const int32_t rows = ARun.Rows(100000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const double flows[] = {-10000, 2750, 4250, 3250, 2750, 1200};
  for (int32_t i = 0; i < 6; ++i) {
    sheet.SetValue({4, i + 1}, TCellValue::FromNumber(flows[i]));
    sheet.SetValue({5, i + 1}, TCellValue::FromNumber(45000 + 181 * i));
  }
  for (int32_t row = 1; row <= rows; ++row) {
    sheet.SetValue({1, row}, TCellValue::FromNumber(ProbabilityOf(row)));
    sheet.SetValue({2, row}, TCellValue::FromFormula(CallOf(row)));
  }
  TFormulaEvaluator evaluator(book);
  const double full = MedianMilliseconds([&] { evaluator.RecalculateAll(); });
  ARun.Results.push_back({"full", rows, full, {}, PeakMegabytes(), IsRight(sheet, evaluator, rows)});
}

}  // namespace tessarine::bench
