// Parts of the formula floor: reading texts, compiling, searching ranges.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Ast.h>
#include <tessarine/formula/Parser.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/formula/library/detail/RangeIndex.h>
#include <tessarine/formula/library/detail/Search.h>

namespace tessarine::bench {
namespace {

using namespace detail;

constexpr std::u16string_view kFormula =
    u"=IF(AND(A1>$B$1,LEFT(C1,2)=\"ab\"),VLOOKUP(D1,Data!A$1:F$90,3,FALSE)*1.25,-E1)";

void Tokenize(benchmark::State& AState) {
  for (auto _ : AState) benchmark::DoNotOptimize(TokenizeFormula(kFormula));
  AState.SetItemsProcessed(AState.iterations());
}
BENCHMARK(Tokenize);

void Parse(benchmark::State& AState) {
  for (auto _ : AState) benchmark::DoNotOptimize(TFormulaParser::Parse(kFormula));
  AState.SetItemsProcessed(AState.iterations());
}
BENCHMARK(Parse);

void Compile(benchmark::State& AState) {
  for (auto _ : AState) benchmark::DoNotOptimize(CompileText(kFormula));
  AState.SetItemsProcessed(AState.iterations());
}
BENCHMARK(Compile);

/// Searches a column of as many numbers as the argument says, by an index or (0) by scanning.
void SearchColumn(benchmark::State& AState) {
  const auto rows = static_cast<int32_t>(AState.range(0));
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t row = 1; row <= rows; ++row) sheet.SetValue({1, row}, TCellValue::FromNumber(row * 3.0));
  const TFormulaArg column = TFormulaArg::FromView(sheet, 0, 1, 1, rows, 1);
  const TSearchLine line = TSearchLine::All(column);
  TRangeIndexCache cache;
  TRangeIndexCache* const indexes = AState.range(1) != 0 ? &cache : nullptr;
  int32_t next = 0;
  for (auto _ : AState) {
    next = static_cast<int32_t>((int64_t{next} + 7919) % rows);
    const TMatchKey key(TValueView::FromNumber((next + 1) * 3.0));
    if (FindEqual(line, key, indexes) != next) return AState.SkipWithError("a wrong place");
  }
  AState.SetItemsProcessed(AState.iterations());
}
BENCHMARK(SearchColumn)->Args({1000, 1})->Args({1000, 0})->Args({50'000, 1})->Args({50'000, 0});

void BuildIndex(benchmark::State& AState) {
  constexpr int32_t kRows = 50'000;
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t row = 1; row <= kRows; ++row) sheet.SetValue({1, row}, TCellValue::FromNumber(row));
  const TFormulaArg column = TFormulaArg::FromView(sheet, 0, 1, 1, kRows, 1);
  for (auto _ : AState) {
    const TEqualityIndex index(column);
    if (index.FirstMatch(kRows) != kRows - 1) return AState.SkipWithError("a wrong place");
  }
  AState.SetItemsProcessed(AState.iterations() * kRows);
}
BENCHMARK(BuildIndex);

}  // namespace
}  // namespace tessarine::bench
