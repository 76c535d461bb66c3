#include <tessarine/core/lists/PivotCache.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

void TPivotCache::ClearData() {
  FMark = {};
  FRecords.Clear();
  FRecords.SetFieldCount(FFieldNames.size());
}

void TPivotCache::SetFieldNames(std::vector<TText> ANames) {
  FMark = {};
  FFieldNames = std::move(ANames);
  FRecords.SetFieldCount(FFieldNames.size());
}

int32_t TPivotCache::FieldIndex(std::u16string_view AName) const {
  const auto found = std::find_if(FFieldNames.begin(), FFieldNames.end(),
                                  [&](const TText& AField) { return EqualAsciiNoCase(AField, AName); });
  return found == FFieldNames.end() ? -1 : static_cast<int32_t>(found - FFieldNames.begin());
}

TText TPivotCache::FieldNumberFormat(int32_t AIndex) const {
  const bool isThere = AIndex >= 0 && static_cast<size_t>(AIndex) < FieldNumberFormats.size();
  return isThere ? FieldNumberFormats[static_cast<size_t>(AIndex)] : TText();
}

void TPivotCache::AddRecord(std::span<const TCellValue> AValues) {
  FMark = {};
  FRecords.Add(AValues);
}

TPivotRecords& TPivotCache::EditRecords() {
  FMark = {};
  return FRecords;
}

bool TPivotCache::RowPassesSlicers(std::span<const TCellValue> ARecord) const {
  return std::all_of(FSlicerFilters.begin(), FSlicerFilters.end(), [&](const auto& AFilter) {
    const auto& [field, items] = AFilter;
    if (items.empty() || field < 0 || static_cast<size_t>(field) >= ARecord.size()) return true;
    const TText text = ARecord[static_cast<size_t>(field)].ToDisplayString();
    return std::any_of(items.begin(), items.end(), [&](const TText& AItem) { return EqualAsciiNoCase(AItem, text); });
  });
}

TPivotCache& TPivotCacheList::AddNew() {
  if (FNextId > std::numeric_limits<int32_t>::max())
    throw ELimit("The workbook has no number left for another pivot cache");
  return Add(std::make_unique<TPivotCache>(static_cast<int32_t>(FNextId)));
}

TPivotCache& TPivotCacheList::Add(std::unique_ptr<TPivotCache> ACache) {
  FNextId = std::max<int64_t>(FNextId, int64_t{ACache->Id()} + 1);
  FItems.push_back(std::move(ACache));
  return *FItems.back();
}

TPivotCache* TPivotCacheList::FindById(int32_t AId) const {
  for (const auto& cache : FItems)
    if (cache->Id() == AId) return cache.get();
  return nullptr;
}

}  // namespace tessarine
