#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/lists/PivotRecords.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TPivotCacheSourceKind : uint8_t { pcsWorksheet, pcsMultiConsolidation, pcsOlap, pcsExternal };
using enum TPivotCacheSourceKind;

/// What the records of a cache were read from; equal marks of one source mean equal records.
struct TPivotSourceMark {
  const void* Sheet = nullptr;  // compared only, never followed; null: nothing known
  uint64_t SheetListVersion = 0;
  uint64_t CellsVersion = 0;
  uint64_t SpillsVersion = 0;
  TCellRange Range;

  friend bool operator==(const TPivotSourceMark&, const TPivotSourceMark&) = default;
};

/// The source of pivot tables: where the records come from, and the records as they were read last.
class TESSARINE_API TPivotCache {
 public:
  explicit TPivotCache(int32_t AId) : FId(AId) {}
  TPivotCache(const TPivotCache&) = delete;
  TPivotCache& operator=(const TPivotCache&) = delete;

  /// Identity within the workbook.
  int32_t Id() const { return FId; }

  TPivotCacheSourceKind SourceKind = pcsWorksheet;
  TText SourceSheet;                      // by name
  TCellRange SourceRange{1, 1, 1, 1};     // with its header row; edits of the sheet leave it alone
  std::vector<TText> MultiRanges;         // pcsMultiConsolidation: references as texts
  TText ConnectionId;                     // pcsOlap, pcsExternal
  std::vector<TText> FieldNumberFormats;  // by field, where a file gave one

  /// Drops the records; field names stay.
  void ClearData();

  const std::vector<TText>& FieldNames() const { return FFieldNames; }
  /// Also gives the records that many fields.
  void SetFieldNames(std::vector<TText> ANames);
  size_t FieldCount() const { return FFieldNames.size(); }
  /// 0-based, without regard to ASCII case; -1 when there is none.
  int32_t FieldIndex(std::u16string_view AName) const;
  /// Empty for an index out of range.
  TText FieldNumberFormat(int32_t AIndex) const;

  const TPivotRecords& Records() const { return FRecords; }
  size_t RecordCount() const { return FRecords.Count(); }
  /// The value of a record (0-based) in a field (0-based); empty out of range.
  TCellValue Value(size_t ARecord, size_t AField) const { return TCellValue::FromView(FRecords.View(ARecord, AField)); }
  /// Appends a record with one value a field; see TPivotRecords::Add.
  void AddRecord(std::span<const TCellValue> AValues);
  /// For readers of sources, which fill columns as a whole.
  TPivotRecords& EditRecords();

  /// By field (0-based), the items that slicers leave in; an empty list leaves in all.
  const std::map<int32_t, std::vector<TText>>& SlicerFilters() const { return FSlicerFilters; }
  void SetSlicerFilter(int32_t AField, std::vector<TText> AItems) { FSlicerFilters[AField] = std::move(AItems); }
  void ClearSlicerFilter(int32_t AField) { FSlicerFilters.erase(AField); }
  void ClearAllSlicerFilters() { FSlicerFilters.clear(); }

  /// Whether a record has, in every filtered field that it has, one of the items: its plain text without regard to
  /// ASCII case. An empty value has the empty text.
  bool RowPassesSlicers(std::span<const TCellValue> ARecord) const;

  const TPivotSourceMark& SourceMark() const { return FMark; }
  void SetSourceMark(const TPivotSourceMark& AMark) { FMark = AMark; }

 private:
  int32_t FId;
  std::vector<TText> FFieldNames;
  TPivotRecords FRecords;
  std::map<int32_t, std::vector<TText>> FSlicerFilters;
  TPivotSourceMark FMark;  // reset by every change of names and records from outside
};

/// The caches of a workbook in order of addition; owns them.
class TESSARINE_API TPivotCacheList {
 public:
  TPivotCacheList() = default;
  TPivotCacheList(const TPivotCacheList&) = delete;
  TPivotCacheList& operator=(const TPivotCacheList&) = delete;

  /// Ids that were given stay given.
  void Clear() { FItems.clear(); }
  /// A cache under an id that the list never had. Throws ELimit when there is none left.
  TPivotCache& AddNew();
  TPivotCache& Add(std::unique_ptr<TPivotCache> ACache);

  bool IsEmpty() const { return FItems.empty(); }
  size_t Count() const { return FItems.size(); }
  TPivotCache& GetItem(size_t AIndex) { return *FItems[AIndex]; }
  const TPivotCache& GetItem(size_t AIndex) const { return *FItems[AIndex]; }
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

  void RemoveAt(size_t AIndex) { FItems.erase(FItems.begin() + static_cast<std::ptrdiff_t>(AIndex)); }

  /// The first of that id, or null.
  TPivotCache* FindById(int32_t AId) const;

 private:
  std::vector<std::unique_ptr<TPivotCache>> FItems;
  int64_t FNextId = 1;  // above every id that the list had
};

}  // namespace tessarine
