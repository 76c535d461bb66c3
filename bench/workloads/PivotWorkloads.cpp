#include <array>
#include <map>
#include <string>
#include <vector>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/features/pivot/PivotEngine.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

constexpr int32_t kPivotRows = 1000000;

/// "region 07", each text shared by all cells that hold it.
std::vector<TText> NumberedTexts(const std::u16string& AName, int32_t ACount) {
  std::vector<TText> texts;
  for (int32_t i = 0; i < ACount; ++i) {
    std::u16string text = AName + u" 00";
    text[text.size() - 2] = static_cast<char16_t>(u'0' + i / 10);
    text[text.size() - 1] = static_cast<char16_t>(u'0' + i % 10);
    texts.emplace_back(text);
  }
  return texts;
}

/// Sum, count and average by region, product and month, and where a region and product was seen first.
struct TExpected {
  struct TRow {
    std::array<double, 12> Sums{};
    std::array<double, 12> Counts{};
  };
  std::map<std::pair<uint32_t, uint32_t>, TRow> Rows;
  std::vector<std::pair<uint32_t, uint32_t>> Order;
  std::vector<uint32_t> Months;
};

void FillRecords(TWorksheet& ASheet, int32_t ARows, TExpected& AExpected) {
  const std::vector<TText> regions = NumberedTexts(u"region", 50);
  const std::vector<TText> products = NumberedTexts(u"product", 20);
  const char16_t* names[] = {u"region", u"product", u"month", u"amount", u"quantity"};
  for (int32_t i = 0; i < 5; ++i) ASheet.SetValue({i + 1, 1}, TCellValue::FromText(names[i]));
  std::array<bool, 12> months{};
  for (int32_t i = 1; i <= ARows; ++i) {
    const auto index = static_cast<uint32_t>(i);
    const uint32_t region = Hash(index, 91) % 50;
    const uint32_t product = Hash(index, 92) % 20;
    const uint32_t month = Hash(index, 93) % 12;
    const double amount = (Hash(index, 94) % 100000) / 4.0;
    ASheet.SetValue({1, i + 1}, TCellValue::FromText(regions[region]));
    ASheet.SetValue({2, i + 1}, TCellValue::FromText(products[product]));
    ASheet.SetValue({3, i + 1}, TCellValue::FromNumber(month + 1));
    ASheet.SetValue({4, i + 1}, TCellValue::FromNumber(amount));
    ASheet.SetValue({5, i + 1}, TCellValue::FromNumber(1 + Hash(index, 95) % 9));
    const auto [found, isNew] = AExpected.Rows.try_emplace({region, product});
    if (isNew) AExpected.Order.push_back(found->first);
    if (!months[month]) AExpected.Months.push_back(month);
    months[month] = true;
    found->second.Sums[month] += amount;
    ++found->second.Counts[month];
  }
}

/// The value cells of the tabular table at A1.
bool IsExpected(const TWorksheet& ASheet, const TExpected& AExpected) {
  for (size_t row = 0; row < AExpected.Order.size(); ++row) {
    const TExpected::TRow& wanted = AExpected.Rows.at(AExpected.Order[row]);
    for (size_t i = 0; i < AExpected.Months.size(); ++i) {
      const uint32_t month = AExpected.Months[i];
      const double count = wanted.Counts[month];
      const double values[] = {wanted.Sums[month], count, count > 0 ? wanted.Sums[month] / count : 0};
      for (size_t v = 0; v < 3; ++v) {
        const TCellAddress address{static_cast<int32_t>(3 + i * 3 + v), static_cast<int32_t>(row + 4)};
        if (ASheet.GetEffectiveValue(address).Number != values[v]) return false;
      }
    }
  }
  return true;
}

}  // namespace

void MeasurePivot(TRun& ARun) {
  const int32_t rows = ARun.Rows(kPivotRows);
  TWorkbook book;
  TWorksheet& records = *book.GetSheet(0);
  TWorksheet& target = book.AddSheet(u"Pivot");
  TExpected expected;
  FillRecords(records, rows, expected);
  TPivotCache& cache = book.PivotCaches().AddNew();
  cache.SourceSheet = u"Sheet1";
  cache.SourceRange = {1, 1, 5, rows + 1};
  TPivotTable& table = target.Pivots().Add(u"Pivot", cache.Id(), {1, 1});
  table.LayoutForm = plfTabular;
  for (const int32_t field : {0, 1}) table.AddField(TPivotFieldRef::Create(field, pfrRow, paSum));
  table.AddField(TPivotFieldRef::Create(2, pfrColumn, paSum));
  for (const TPivotAgg agg : {paSum, paCount, paAverage}) table.AddField(TPivotFieldRef::Create(3, pfrValue, agg));
  const auto refresh = [&] { TPivotEngine::Refresh(book, target, table); };
  // A write into the source has it read anew each time.
  const auto touch = [&] { records.SetValue({5, 2}, TCellValue::FromNumber(1)); };
  const double time = MedianMilliseconds(refresh, touch);
  ARun.Results.push_back({"refresh", rows, time, {}, PeakMegabytes(), IsExpected(target, expected)});
}

}  // namespace tessarine::bench
