#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

/// One field of all records, eight bytes a value: a number as it is, anything else as the place of a distinct value
/// among the column's items.
///
/// Invariants:
/// 1. A word from kFirstItem on is an item's (its low half is the index), any other a number's bits. Numbers that are
///    not a number are stored as one positive NaN, so that they never look like an item.
/// 2. Item 0 is the empty value. Texts (by code unit), Booleans, errors and the empty value are items once.
/// 3. Values behind the last word are empty.
class TESSARINE_API TPivotColumn {
 public:
  static constexpr uint64_t kFirstItem = 0xFFF8000000000000u;

  TPivotColumn();
  ~TPivotColumn();
  TPivotColumn(TPivotColumn&&) noexcept;
  TPivotColumn& operator=(TPivotColumn&&) noexcept;

  static bool IsItem(uint64_t AWord) { return AWord >= kFirstItem; }
  static size_t ItemOf(uint64_t AWord) { return static_cast<uint32_t>(AWord); }
  static double NumberOf(uint64_t AWord);
  static uint64_t WordOf(double ANumber);

  /// The word of a value, which becomes an item when it is none yet.
  uint64_t Intern(const TValueView& AValue);

  void Clear();
  /// ACount words, new ones empty.
  void Resize(size_t ACount) { FWords.resize(ACount, kFirstItem); }
  void SetWord(size_t ARecord, uint64_t AWord) { FWords[ARecord] = AWord; }
  std::span<uint64_t> Words() { return FWords; }
  std::span<const uint64_t> Words() const { return FWords; }

  TValueView ValueOf(uint64_t AWord) const {
    return IsItem(AWord) ? FItems[ItemOf(AWord)].View() : TValueView::FromNumber(NumberOf(AWord));
  }
  TValueView View(size_t ARecord) const { return ARecord < FWords.size() ? ValueOf(FWords[ARecord]) : TValueView(); }
  const std::vector<TCellValue>& Items() const { return FItems; }

 private:
  struct TIndex;  // texts and small values to items

  uint64_t AddItem(TCellValue AValue);

  std::vector<uint64_t> FWords;
  std::vector<TCellValue> FItems;
  std::unique_ptr<TIndex> FIndex;
};

/// Records of values, kept by field. All records have one value a field.
class TESSARINE_API TPivotRecords {
 public:
  size_t Count() const { return FCount; }
  size_t FieldCount() const { return FColumns.size(); }

  void Clear();
  /// Drops fields from the end or adds empty ones.
  void SetFieldCount(size_t ACount) { FColumns.resize(ACount); }
  /// Appends records of empty values, or drops records from the end.
  void SetCount(size_t ACount);
  /// Appends a record; fields behind the end of AValues are empty, values behind the last field are dropped.
  void Add(std::span<const TCellValue> AValues);

  /// Empty for a field or a record that is not there. Valid until the records change.
  TValueView View(size_t ARecord, size_t AField) const {
    return AField < FColumns.size() ? FColumns[AField].View(ARecord) : TValueView();
  }
  TPivotColumn& Column(size_t AField) { return FColumns[AField]; }
  const TPivotColumn& Column(size_t AField) const { return FColumns[AField]; }

 private:
  size_t FCount = 0;
  std::vector<TPivotColumn> FColumns;
};

}  // namespace tessarine
