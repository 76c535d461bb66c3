#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TSheetTableList;

/// What a filter keeps of one column, by the texts that are shown.
struct TAutoFilterColumn {
  int32_t Col = 0;  // of the sheet
  bool Active = false;
  std::vector<TText> Values;   // texts kept, without regard to ASCII case; none keeps nothing
  TText Contains;              // a piece of text; when set it counts instead of Values
  bool MatchCase = false;      // for Contains
  bool ExcludeBlanks = false;  // kept for the file formats

  friend bool operator==(const TAutoFilterColumn&, const TAutoFilterColumn&) = default;
};

/// Everything that a filter consists of.
struct TAutoFilterState {
  bool Active = false;
  TCellRange Range;
  std::map<int32_t, TAutoFilterColumn> Columns;  // by column of the sheet

  friend bool operator==(const TAutoFilterState&, const TAutoFilterState&) = default;
};

/// The filter of a sheet: a range with a header row and a criterion for some of its columns. Hiding the rows that the
/// criteria reject is the business of features/AutoFiltering.
class TESSARINE_API TSheetAutoFilter {
 public:
  /// Drops the criteria and switches the filter off; hidden rows stay hidden.
  void Clear();
  /// Starts anew over a range. Off at once when the range has no valid corner.
  void Enable(const TCellRange& ARange);

  bool IsEnabled() const { return FState.Active; }
  const TCellRange& Range() const { return FState.Range; }
  int32_t HeaderRow() const { return FState.Range.StartRow; }
  bool IsFilterHeaderCell(int32_t ACol, int32_t ARow) const;

  /// The criterion of a column, one that is not in force where there is none.
  TAutoFilterColumn GetColumn(int32_t ACol) const;
  bool ColumnHasFilter(int32_t ACol) const;
  const std::map<int32_t, TAutoFilterColumn>& Columns() const { return FState.Columns; }

  /// Puts a criterion in force; what the other of the two has set stays.
  void SetColumnValues(int32_t ACol, std::vector<TText> AValues, bool AMatchCase);
  void SetColumnContains(int32_t ACol, TText AText, bool AMatchCase);
  void ClearColumn(int32_t ACol) { FState.Columns.erase(ACol); }

  /// The range to sort: without the totals row of the first table whose header lies in the filter's first row.
  TCellRange DataSortRange(const TSheetTableList& ATables) const;

  /// Inserts or deletes lines; a filter of which nothing is left is cleared. Criteria go along with their columns.
  void ShiftRows(int64_t AStart, int64_t ADelta) { Shift(saRows, AStart, ADelta); }
  void ShiftColumns(int64_t AStart, int64_t ADelta) { Shift(saColumns, AStart, ADelta); }
  /// ADest is the block's new first line.
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saRows, AStart, ACount, ADest); }
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saColumns, AStart, ACount, ADest); }

  /// Takes over the range, less the totals row, of the first table with a filter whose header is the filter's.
  void SyncToTables(const TSheetTableList& ATables);

  TAutoFilterState CopyState() const { return FState; }
  void RestoreState(TAutoFilterState AState) { FState = std::move(AState); }

 private:
  TAutoFilterColumn& OpenColumn(int32_t ACol, bool AMatchCase);
  template <class TNewIndex>
  void RenumberColumns(TNewIndex&& ANewIndex);
  void Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta);
  void Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest);

  TAutoFilterState FState;
};

}  // namespace tessarine
