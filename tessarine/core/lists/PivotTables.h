#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TPivotAgg : uint8_t {
  paSum,
  paCount,      // records, whatever they hold
  paCountNums,  // numbers
  paAverage,
  paMin,
  paMax,
  paProduct,
  paStdDev,   // of a sample
  paStdDevp,  // of a population
  paVar,
  paVarp,
};
using enum TPivotAgg;

enum class TPivotShowAs : uint8_t {
  psaNormal,
  psaPercentOfGrand,
  psaPercentOfRow,
  psaPercentOfCol,
  psaPercentOf,       // shown as psaNormal
  psaDifferenceFrom,  // shown as psaNormal
  psaRunningTotal,    // shown as psaNormal
  psaIndex,
  psaRank,  // the row's place in the table
};
using enum TPivotShowAs;

enum class TPivotFieldRole : uint8_t { pfrUnused, pfrFilter, pfrRow, pfrColumn, pfrValue };
using enum TPivotFieldRole;

enum class TPivotDateGroup : uint8_t { pdgNone, pdgYears, pdgQuarters, pdgMonths, pdgDays, pdgHours, pdgMinutes };
using enum TPivotDateGroup;

enum class TPivotLayoutForm : uint8_t { plfCompact, plfOutline, plfTabular };
using enum TPivotLayoutForm;

/// A field of the cache in its role in a table.
struct TPivotFieldRef {
  int32_t CacheFieldIndex = 0;  // 0-based; from the cache's field count on it means the table's calculated fields
  TPivotFieldRole Role = pfrUnused;
  TPivotAgg Agg = paSum;
  TPivotShowAs ShowAs = psaNormal;
  TText CustomName;
  TText NumberFormat;

  static TPivotFieldRef Create(int32_t AField, TPivotFieldRole ARole, TPivotAgg AAgg) {
    TPivotFieldRef ref;
    ref.CacheFieldIndex = AField;
    ref.Role = ARole;
    ref.Agg = AAgg;
    return ref;
  }

  friend bool operator==(const TPivotFieldRef&, const TPivotFieldRef&) = default;
};

/// A field that is computed for each record: a field's name, or two operands and one of * + - / between them.
struct TPivotCalcField {
  TText Name;
  TText Formula;

  friend bool operator==(const TPivotCalcField&, const TPivotCalcField&) = default;
};

/// Kept for the file formats; tables are computed without it.
struct TPivotCalcItem {
  int32_t FieldIndex = 0;
  TText Name;
  TText Formula;

  friend bool operator==(const TPivotCalcItem&, const TPivotCalcItem&) = default;
};

/// How the values of a field are put together: by date, else by number, else by hand.
struct TPivotGroupDef {
  int32_t FieldIndex = 0;
  TPivotDateGroup DateGroup = pdgNone;
  double NumStart = 0;                            // where the first bin begins
  double NumEnd = 0;                              // kept for the file formats
  double NumBy = 0;                               // width of a bin; above 0 groups by number
  std::vector<std::vector<TText>> ManualItems{};  // per group, the items in it
  std::vector<TText> GroupNames{};                // per group, its caption

  friend bool operator==(const TPivotGroupDef&, const TPivotGroupDef&) = default;
};

/// The definition of a pivot table and what its last refresh left on the sheet.
class TESSARINE_API TPivotTable {
 public:
  TPivotTable(TText AName, int32_t ACacheId, TCellAddress ADest);

  TText Name;                          // within the sheet
  int32_t CacheId;                     // the cache that it reads
  TCellAddress Dest;                   // top left cell of the output; edits may move it off the sheet
  std::vector<TPivotFieldRef> Fields;  // in order of addition
  std::vector<TPivotCalcField> CalcFields;
  std::vector<TPivotCalcItem> CalcItems;
  std::vector<TPivotGroupDef> Groups;
  std::map<int32_t, std::vector<TText>> FilterSelections;  // by field, the items left in; none leaves in all
  bool RowGrandTotals = true;                              // a row of totals at the bottom
  bool ColGrandTotals = true;                              // a column of totals at the right
  TPivotLayoutForm LayoutForm = plfCompact;
  TText StyleName{u"PivotStyleMedium2"};
  int32_t HeaderRowCount = 1;     // of the last refresh
  int32_t SortFieldIndex = -1;    // the row field by whose labels rows are sorted; -1: none
  int32_t SortValueOrdinal = -1;  // 0-based, the value field by which rows are sorted; -1: none
  bool SortAscending = true;
  TCellRange LastBody;                 // what the last refresh wrote, at first the cell Dest
  std::vector<TText> LastValueFields;  // captions of the values of the last refresh

  void ClearLayout() { Fields.clear(); }
  void AddField(TPivotFieldRef ARef) { Fields.push_back(std::move(ARef)); }
  void SetFilterSelection(int32_t AField, std::vector<TText> AItems) { FilterSelections[AField] = std::move(AItems); }
  void ClearFilterSelection(int32_t AField) { FilterSelections.erase(AField); }

  /// The fields of a role in order of addition.
  std::vector<TPivotFieldRef> FieldsFor(TPivotFieldRole ARole) const;

  /// Whether the cell lies in what the last refresh wrote.
  bool ContainsDest(int32_t ACol, int32_t ARow) const { return LastBody.Contains(ACol, ARow); }

  /// True when LastBody has an end before its start, as deleted lines may leave it.
  bool IsBodyEmpty() const { return LastBody.EndCol < LastBody.StartCol || LastBody.EndRow < LastBody.StartRow; }
};

/// The pivot tables of a sheet in order of addition; owns them.
class TESSARINE_API TSheetPivotTableList {
 public:
  TSheetPivotTableList() = default;
  TSheetPivotTableList(const TSheetPivotTableList&) = delete;
  TSheetPivotTableList& operator=(const TSheetPivotTableList&) = delete;

  void Clear() { FItems.clear(); }
  TPivotTable& Add(std::unique_ptr<TPivotTable> ATable);
  TPivotTable& Add(TText AName, int32_t ACacheId, TCellAddress ADest);

  bool IsEmpty() const { return FItems.empty(); }
  size_t Count() const { return FItems.size(); }
  TPivotTable& GetItem(size_t AIndex) { return *FItems[AIndex]; }
  const TPivotTable& GetItem(size_t AIndex) const { return *FItems[AIndex]; }
  void RemoveAt(size_t AIndex) { FItems.erase(FItems.begin() + static_cast<std::ptrdiff_t>(AIndex)); }
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

  /// The first of that name without regard to ASCII case, or null.
  TPivotTable* FindByName(std::u16string_view AName) const;
  /// The first whose last output holds the cell, or null.
  TPivotTable* FindContaining(int32_t ACol, int32_t ARow) const;

  /// The top left cell and each end of the last output move by ADelta when they lie at or behind AStart. Nothing is
  /// deleted, clipped or held on the sheet.
  void ShiftRows(int64_t AStart, int64_t ADelta);
  void ShiftColumns(int64_t AStart, int64_t ADelta);
  /// A coarse shift of all that follows, not a move of the block: down, an insert of ACount lines at ADest and a delete
  /// at AStart; up, a shift of everything from AStart on to ADest.
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest);
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest);

 private:
  std::vector<std::unique_ptr<TPivotTable>> FItems;
};

}  // namespace tessarine
