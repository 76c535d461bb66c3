#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// A named rectangle of a sheet with a header row, an optional totals row and column names for formulas.
class TESSARINE_API TSheetTable {
 public:
  /// The range is normalized; the display name starts as the name.
  TSheetTable(TText AName, const TCellRange& ARef);

  const TText& Name() const { return FName; }
  void SetName(TText AName);
  const TText& DisplayName() const { return FDisplayName; }
  void SetDisplayName(TText AName);

  /// The whole table with header and totals; normalized.
  const TCellRange& Ref() const { return FRef; }
  void SetRef(const TCellRange& ARef);

  bool HasHeaderRow() const { return FHasHeaderRow; }
  void SetHasHeaderRow(bool AValue);
  bool HasTotalsRow() const { return FHasTotalsRow; }
  void SetHasTotalsRow(bool AValue);
  bool ShowAutoFilter() const { return FShowAutoFilter; }
  void SetShowAutoFilter(bool AValue) { FShowAutoFilter = AValue; }
  bool ShowRowStripes() const { return FShowRowStripes; }
  void SetShowRowStripes(bool AValue) { FShowRowStripes = AValue; }
  bool ShowColumnStripes() const { return FShowColumnStripes; }
  void SetShowColumnStripes(bool AValue) { FShowColumnStripes = AValue; }
  const TText& StyleName() const { return FStyleName; }
  void SetStyleName(TText AName) { FStyleName = std::move(AName); }

  const std::vector<TText>& ColumnNames() const { return FColumnNames; }
  void SetColumnNames(std::vector<TText> ANames);

  /// The width of the table, however many column names are known.
  int32_t ColumnCount() const { return FRef.Width(); }

  /// 0-based place among the column names, without regard to ASCII case; -1 when there is none.
  int32_t ColumnIndex(std::u16string_view AName) const;

  /// The rows between header and totals, at least one: a table of a header alone has the row below it.
  TCellRange DataRange() const;

  /// One column of the data range. An unknown name gives an empty range: EndRow below StartRow, in the first column.
  TCellRange ColumnDataRange(std::u16string_view AName) const;

  bool Contains(int32_t ACol, int32_t ARow) const { return FRef.Contains(ACol, ARow); }

  /// The header's row, 0 without one.
  int32_t HeaderRow() const { return FHasHeaderRow ? FRef.StartRow : 0; }
  bool IsHeaderRow(int32_t ARow) const { return FHasHeaderRow && ARow == FRef.StartRow; }
  bool IsTotalsRow(int32_t ARow) const { return FHasTotalsRow && ARow == FRef.EndRow; }

  /// 0-based place of a row in the data range, -1 outside it; for stripes.
  int32_t DataBandIndex(int32_t ARow) const;

 private:
  friend class TSheetTableList;

  void Touch() {
    if (FListVersion) ++*FListVersion;
  }

  TText FName;
  TText FDisplayName;
  TCellRange FRef;
  bool FHasHeaderRow = true;
  bool FHasTotalsRow = false;
  bool FShowAutoFilter = true;
  bool FShowRowStripes = true;
  bool FShowColumnStripes = false;
  TText FStyleName;
  std::vector<TText> FColumnNames;
  uint64_t* FListVersion = nullptr;  // the owning list's version; null while no list owns the table
};

/// The tables of a sheet in order of addition; owns them.
class TESSARINE_API TSheetTableList {
 public:
  TSheetTableList() = default;
  TSheetTableList(const TSheetTableList&) = delete;
  TSheetTableList& operator=(const TSheetTableList&) = delete;

  void Clear();
  TSheetTable& Add(std::unique_ptr<TSheetTable> ATable);
  TSheetTable& Add(TText AName, const TCellRange& ARef);
  void RemoveAt(size_t AIndex);

  bool IsEmpty() const { return FItems.empty(); }
  size_t Count() const { return FItems.size(); }
  TSheetTable& GetItem(size_t AIndex) { return *FItems[AIndex]; }
  const TSheetTable& GetItem(size_t AIndex) const { return *FItems[AIndex]; }
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

  /// The first table whose name or display name it is, without regard to ASCII case; null when there is none.
  TSheetTable* FindByName(std::u16string_view AName) const;

  /// The first table that holds the cell, null when there is none.
  TSheetTable* FindContaining(int32_t ACol, int32_t ARow) const;

  /// Inserts (ADelta above 0) or deletes lines at AStart; a table of which nothing is left goes. Column names stay.
  void ShiftRows(int64_t AStart, int64_t ADelta);
  void ShiftColumns(int64_t AStart, int64_t ADelta);
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest);
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest);

  /// Raised when a table comes or goes, and when a name, range, row flag or column name of one changes: all that a
  /// structured reference depends on.
  uint64_t Version() const { return FVersion; }

 private:
  void Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta);
  void Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest);

  std::vector<std::unique_ptr<TSheetTable>> FItems;
  uint64_t FVersion = 0;
};

}  // namespace tessarine
