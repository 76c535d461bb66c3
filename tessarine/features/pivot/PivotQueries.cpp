#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Coercion.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/features/pivot/detail/PivotCube.h>
#include <tessarine/features/pivot/detail/PivotLayout.h>
#include <tessarine/features/pivot/detail/PivotValues.h>
#include <tessarine/features/pivot/detail/PivotWriting.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

TPivotTable* TableAt(const TWorksheet& ASheet, TCellAddress AAddress) {
  if (TPivotTable* table = ASheet.Pivots().FindContaining(AAddress.Col, AAddress.Row)) return table;
  for (const auto& table : ASheet.Pivots())
    if (table->Dest == AAddress) return table.get();
  return nullptr;
}

bool IsPrefixed(std::u16string_view AName, std::u16string_view APrefix, std::u16string_view AField) {
  return AName.size() == APrefix.size() + AField.size() && EqualAsciiNoCase(AName.substr(0, APrefix.size()), APrefix) &&
         EqualAsciiNoCase(AName.substr(APrefix.size()), AField);
}

/// The value field that a name means: by its own caption, else by its field's name, else by that behind the prefix of
/// any aggregate that is usual.
const TPivotFieldRef* FindValueField(const TPivotCache& ACache, const std::vector<TPivotFieldRef>& AFields,
                                     std::u16string_view AName) {
  const auto nameOf = [&](const TPivotFieldRef& ARef) {
    return detail::PivotFieldName(ACache, ARef.CacheFieldIndex, u"Value");
  };
  for (const TPivotFieldRef& ref : AFields)
    if (!ref.CustomName.IsEmpty() && EqualAsciiNoCase(ref.CustomName, AName)) return &ref;
  for (const TPivotFieldRef& ref : AFields)
    if (EqualAsciiNoCase(nameOf(ref), AName)) return &ref;
  constexpr std::array kPrefixed = {paSum, paCount, paAverage, paMax, paMin};
  for (const TPivotFieldRef& ref : AFields)
    if (std::find(kPrefixed.begin(), kPrefixed.end(), ref.Agg) != kPrefixed.end() &&
        IsPrefixed(AName, detail::PivotAggPrefix(ref.Agg), nameOf(ref)))
      return &ref;
  for (const TPivotFieldRef& ref : AFields)
    for (const TPivotAgg agg : kPrefixed)
      if (IsPrefixed(AName, detail::PivotAggPrefix(agg), nameOf(ref))) return &ref;
  return nullptr;
}

}  // namespace

std::vector<TPivotFieldItem> TPivotEngine::CollectFieldItems(TWorkbook& AWorkbook, const TPivotTable& ATable,
                                                             int32_t AFieldIndex) {
  std::vector<TPivotFieldItem> items;
  TPivotCache* cache = AWorkbook.PivotCaches().FindById(ATable.CacheId);
  if (!cache) return items;
  RebuildCache(AWorkbook, *cache);
  const auto found = ATable.FilterSelections.find(AFieldIndex);
  std::vector<std::u16string> chosen;
  if (found != ATable.FilterSelections.end())
    for (const TText& item : found->second) chosen.push_back(ToAsciiUpper(item));
  std::sort(chosen.begin(), chosen.end());
  std::vector<std::pair<std::u16string, size_t>> seen;
  const std::vector<TText> labels = detail::PivotItemLabels(*cache, ATable, AFieldIndex);
  for (size_t i = 0; i < labels.size(); ++i) seen.emplace_back(ToAsciiUpper(labels[i]), i);
  std::sort(seen.begin(), seen.end());
  const auto isRepeated = [](const auto& ALeft, const auto& ARight) { return ALeft.first == ARight.first; };
  seen.erase(std::unique(seen.begin(), seen.end(), isRepeated), seen.end());
  std::sort(seen.begin(), seen.end(),
            [](const auto& ALeft, const auto& ARight) { return ALeft.second < ARight.second; });
  for (const auto& [folded, index] : seen)
    items.push_back({labels[index], chosen.empty() || std::binary_search(chosen.begin(), chosen.end(), folded)});
  return items;
}

std::optional<TPivotFilterTarget> TPivotEngine::ResolveFilterTarget(const TWorksheet& ASheet, int32_t ACol,
                                                                    int32_t ARow) {
  for (const auto& table : ASheet.Pivots()) {
    if (table->IsBodyEmpty()) continue;
    const auto filters = table->FieldsFor(pfrFilter);
    const int64_t col = table->Dest.Col;
    const int64_t row = table->Dest.Row;
    const int64_t top = detail::PivotFilterTop(*table, filters.size());
    if (top > 0 && ACol == col + 1 && ARow >= top && ARow < top + static_cast<int64_t>(filters.size()))
      return TPivotFilterTarget{table.get(), filters[static_cast<size_t>(ARow - top)].CacheFieldIndex};
    const auto rows = table->FieldsFor(pfrRow);
    if (!rows.empty() && ACol == col && ARow == row + std::max(1, table->HeaderRowCount) - 1)
      return TPivotFilterTarget{table.get(), rows.front().CacheFieldIndex};
    const auto columns = table->FieldsFor(pfrColumn);
    if (!columns.empty() && ACol == col + 1 && ARow == row)
      return TPivotFilterTarget{table.get(), columns.front().CacheFieldIndex};
  }
  return std::nullopt;
}

bool TPivotEngine::IsFilterHeaderCell(const TWorksheet& ASheet, int32_t ACol, int32_t ARow) {
  return ResolveFilterTarget(ASheet, ACol, ARow).has_value();
}

TCellValue TPivotEngine::GetPivotData(TWorkbook& AWorkbook, TWorksheet& ASheet, std::u16string_view AValueName,
                                      TCellAddress AAddress, std::span<const TPivotItemPair> APairs) {
  TCellValue unknown = TCellValue::FromError(ceRef);
  const TPivotTable* table = TableAt(ASheet, AAddress);
  TPivotCache* cache = table ? AWorkbook.PivotCaches().FindById(table->CacheId) : nullptr;
  if (!cache) return unknown;
  RebuildCache(AWorkbook, *cache);
  const auto values = table->FieldsFor(pfrValue);
  const TPivotFieldRef* value = FindValueField(*cache, values, AValueName);
  if (!value) return unknown;
  std::vector<int32_t> fields;
  std::vector<TText> items;
  for (const TPivotItemPair& pair : APairs) {
    fields.push_back(cache->FieldIndex(pair.Field));
    if (fields.back() < 0) return unknown;
    items.push_back(detail::PivotLabel(pair.Item));
  }
  return NumberOrError(detail::AggregatePivotRecords(*cache, *table, *value, fields, items));
}

}  // namespace tessarine
