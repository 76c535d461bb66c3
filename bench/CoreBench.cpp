// Parts of the model: number formats, the cell store, templates of formulas, sizes of rows.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::bench {
namespace {

using namespace detail;

constexpr int32_t kRows = 100'000;

void FormatNumbers(benchmark::State& AState, std::u16string_view ACode, std::u16string_view AExpected) {
  std::u16string text;
  AppendFormattedNumber(45000.25, ACode, text);
  if (text != AExpected) return AState.SkipWithError(Utf16ToUtf8(text).c_str());
  for (auto _ : AState) {
    for (int32_t i = 0; i < 1000; ++i) {
      text.clear();
      AppendFormattedNumber(45000 + i * 0.25, ACode, text);
      benchmark::DoNotOptimize(text.data());
    }
  }
  AState.SetItemsProcessed(AState.iterations() * 1000);
}
BENCHMARK_CAPTURE(FormatNumbers, general, u"General", u"45000.25");
BENCHMARK_CAPTURE(FormatNumbers, thousands, u"#,##0.00", u"45,000.25");
BENCHMARK_CAPTURE(FormatNumbers, date, u"yyyy-mm-dd", u"2023-03-15");

void FillDown(TCellStore& AStore) {
  for (int32_t row = 1; row <= kRows; ++row) AStore.SetNumber(1, row, row, 0);
}

/// Appended, and in the order that never appends.
template <bool Downward>
void WriteStore(benchmark::State& AState) {
  TFormulaPool pool;
  for (auto _ : AState) {
    TCellStore store(pool);
    for (int32_t i = 1; i <= kRows; ++i) store.SetNumber(1, Downward ? i : kRows + 1 - i, i, 0);
    if (store.CellCount() != kRows) return AState.SkipWithError("cells are missing");
  }
  AState.SetItemsProcessed(AState.iterations() * kRows);
}
BENCHMARK(WriteStore<true>);
BENCHMARK(WriteStore<false>);

void ReadStore(benchmark::State& AState) {
  TFormulaPool pool;
  TCellStore store(pool);
  FillDown(store);
  for (auto _ : AState) {
    double sum = 0;
    for (int32_t row = 1; row <= kRows; ++row) sum += store.Find(1, row)->Number;
    if (sum != 0.5 * kRows * (kRows + 1)) return AState.SkipWithError("a wrong sum");
  }
  AState.SetItemsProcessed(AState.iterations() * kRows);
}
BENCHMARK(ReadStore);

void ScanStore(benchmark::State& AState) {
  TFormulaPool pool;
  TCellStore store(pool);
  FillDown(store);
  for (auto _ : AState) {
    double sum = 0;
    store.ForEachByColumn([&](int32_t, int32_t, const TCellSlot& ASlot) { sum += ASlot.Number; });
    if (sum != 0.5 * kRows * (kRows + 1)) return AState.SkipWithError("a wrong sum");
  }
  AState.SetItemsProcessed(AState.iterations() * kRows);
}
BENCHMARK(ScanStore);

/// Texts of one filled-down formula into their template, by the last one of the column and by the key alone.
template <TFormulaTemplate* (TFormulaPool::*Intern)(std::u16string_view, int32_t, int32_t)>
void InternTemplates(benchmark::State& AState) {
  std::vector<std::u16string> texts;
  for (int32_t row = 1; row <= 1000; ++row) {
    const std::u16string at = Utf8ToUtf16(std::to_string(row));
    texts.push_back(u"=IF(A" + at + u">$B$1,C" + at + u"*2,SUM(D$1:D" + at + u"))");
  }
  TFormulaPool pool;
  for (auto _ : AState) {
    std::vector<TFormulaTemplate*> templates;
    for (size_t i = 0; i < texts.size(); ++i)
      templates.push_back((pool.*Intern)(texts[i], 5, static_cast<int32_t>(i) + 1));
    if (pool.Count() != 1) AState.SkipWithError("more than one template");
    for (TFormulaTemplate* one : templates) pool.Release(one);
  }
  AState.SetItemsProcessed(AState.iterations() * static_cast<int64_t>(texts.size()));
}
BENCHMARK(InternTemplates<&TFormulaPool::Intern>);
BENCHMARK(InternTemplates<&TFormulaPool::InternPlain>);

void RewriteFormulas(benchmark::State& AState) {
  const std::u16string formula = u"=IF(A10>$B$1,C10*2,SUM(D$1:D10))";
  const auto rewritten = [&] { return AdjustFormula(formula, u"Data", true, TShiftAxis::saRows, 5, 1); };
  if (rewritten() != u"=IF(A11>$B$1,C11*2,SUM(D$1:D11))") return AState.SkipWithError(Utf16ToUtf8(rewritten()).c_str());
  for (auto _ : AState) benchmark::DoNotOptimize(rewritten());
  AState.SetItemsProcessed(AState.iterations());
}
BENCHMARK(RewriteFormulas);

/// A sheet of 100,000 heights of its own, 100,000 automatic ones and 50,000 hidden rows, in pixels at 96 dpi.
TRowColSizing MixedHeights() {
  TRowColSizing sizing;
  for (int32_t row = 1; row <= 100'000; ++row) sizing.SetRowHeightPt(row * 3, 10 + row % 30);
  for (int32_t row = 1; row <= 100'000; ++row) sizing.SetAutoRowHeightPt(row * 3 + 1, 10 + row % 20);
  for (int32_t row = 1; row <= 50'000; ++row) sizing.SetRowHidden(row * 7, true);
  return sizing;
}

void FindRows(benchmark::State& AState) {
  const TRowColSizing sizing = MixedHeights();
  constexpr int32_t kLast = 300'000;
  const int64_t height = sizing.GetCumulativeRowHeightBefore(kLast, 96);
  if (height != sizing.GetCumulativeRowHeightBeforePlain(kLast, 96))
    return AState.SkipWithError("not the plain height");
  int64_t offset = 0;
  for (auto _ : AState) {
    benchmark::DoNotOptimize(sizing.FindRowAtOffset(offset, 96));
    offset = (offset + 999'983) % height;
  }
}
BENCHMARK(FindRows);

void SumHeights(benchmark::State& AState) {
  const TRowColSizing sizing = MixedHeights();
  int32_t row = 0;
  for (auto _ : AState) {
    benchmark::DoNotOptimize(sizing.GetCumulativeRowHeightBefore(row + 1, 96));
    row = (row + 99'991) % 300'000;
  }
}
BENCHMARK(SumHeights);

}  // namespace
}  // namespace tessarine::bench
