#include <algorithm>
#include <string>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

constexpr uint32_t kArrayKeys = 200'000;
constexpr double kFilterAbove = 100'000;

double ArrayKey(int32_t ARow) { return Hash(static_cast<uint32_t>(ARow), 151) % kArrayKeys; }

/// What the formula in D1 laid onto the sheet; null when nothing.
const TSpillRange* BlockOf(const TWorksheet& ASheet) { return ASheet.Spills().TryGetSpill(4, 1); }

bool IsSorted(const TWorksheet& ASheet, int32_t ARows) {
  const TSpillRange* block = BlockOf(ASheet);
  if (!block || block->RowCount() != ARows || block->ColCount() != 2) return false;
  double rowSum = 0;
  for (size_t i = 0; i < block->Values.size(); i += 2) {
    const auto row = static_cast<int32_t>(block->Values[i + 1].Number);
    if (block->Values[i].Number != ArrayKey(row)) return false;
    if (i > 0 && block->Values[i].Number < block->Values[i - 2].Number) return false;
    rowSum += row;
  }
  return rowSum == 0.5 * ARows * (ARows + 1.0);
}

bool IsUnique(const TWorksheet& ASheet, int32_t ARows) {
  const TSpillRange* block = BlockOf(ASheet);
  std::vector<bool> seen(kArrayKeys);
  std::vector<double> expected;
  for (int32_t row = 1; row <= ARows; ++row) {
    const auto key = static_cast<size_t>(ArrayKey(row));
    if (!seen[key]) expected.push_back(static_cast<double>(key));
    seen[key] = true;
  }
  return block && block->ColCount() == 1 &&
         std::equal(expected.begin(), expected.end(), block->Values.begin(), block->Values.end(),
                    [](double AKey, const TCellValue& AValue) { return AKey == AValue.Number; });
}

bool IsFiltered(const TWorksheet& ASheet, int32_t ARows) {
  const TSpillRange* block = BlockOf(ASheet);
  if (!block || block->ColCount() != 2) return false;
  size_t next = 0;
  for (int32_t row = 1; row <= ARows; ++row) {
    if (ArrayKey(row) <= kFilterAbove) continue;
    if (next >= block->Values.size() || block->Values[next + 1].Number != row) return false;
    next += 2;
  }
  return next == block->Values.size();
}

}  // namespace

void MeasureArrays(TRun& ARun) {
  const int32_t rows = ARun.Rows(1000000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t row = 1; row <= rows; ++row) {
    sheet.SetValue({1, row}, TCellValue::FromNumber(ArrayKey(row)));
    sheet.SetValue({2, row}, TCellValue::FromNumber(row));
  }
  TFormulaEvaluator evaluator(book);
  const std::string end = std::to_string(rows);
  const struct {
    const char* Operation;
    std::string Formula;
    bool (*Check)(const TWorksheet& ASheet, int32_t ARows);
  } cases[] = {
      {"sort", "=SORT(A1:B" + end + ")", IsSorted},
      {"unique", "=UNIQUE(A1:A" + end + ")", IsUnique},
      {"filter", "=FILTER(A1:B" + end + ",A1:A" + end + ">100000)", IsFiltered},
  };
  for (const auto& row : cases) {
    sheet.SetValue({4, 1}, TCellValue::FromFormula(TText::FromUtf8(row.Formula)));
    const double time = MedianMilliseconds([&] { evaluator.NotifyCellChanged(0, 4, 1); });
    ARun.Results.push_back({row.Operation, rows, time, {}, PeakMegabytes(), row.Check(sheet, rows)});
  }
}

}  // namespace tessarine::bench
