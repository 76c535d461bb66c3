#include <tessarine/core/lists/SheetTables.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

int32_t SaturatedSum(int32_t ALine, int64_t ADelta) {
  return static_cast<int32_t>(
      std::clamp<int64_t>(ALine + ADelta, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

}  // namespace

TSheetTable::TSheetTable(TText AName, const TCellRange& ARef)
    : FName(std::move(AName)), FDisplayName(FName), FRef(ARef.Normalize()) {}

void TSheetTable::SetName(TText AName) {
  FName = std::move(AName);
  Touch();
}

void TSheetTable::SetDisplayName(TText AName) {
  FDisplayName = std::move(AName);
  Touch();
}

void TSheetTable::SetRef(const TCellRange& ARef) {
  FRef = ARef.Normalize();
  Touch();
}

void TSheetTable::SetHasHeaderRow(bool AValue) {
  FHasHeaderRow = AValue;
  Touch();
}

void TSheetTable::SetHasTotalsRow(bool AValue) {
  FHasTotalsRow = AValue;
  Touch();
}

void TSheetTable::SetColumnNames(std::vector<TText> ANames) {
  if (ANames == FColumnNames) return;
  FColumnNames = std::move(ANames);
  Touch();
}

int32_t TSheetTable::ColumnIndex(std::u16string_view AName) const {
  for (size_t i = 0; i < FColumnNames.size(); ++i)
    if (EqualAsciiNoCase(FColumnNames[i], AName)) return static_cast<int32_t>(i);
  return -1;
}

TCellRange TSheetTable::DataRange() const {
  TCellRange range = FRef;
  if (FHasHeaderRow) range.StartRow = SaturatedSum(range.StartRow, 1);
  if (FHasTotalsRow && range.StartRow < range.EndRow) --range.EndRow;
  range.EndRow = std::max(range.EndRow, range.StartRow);
  return range;
}

TCellRange TSheetTable::ColumnDataRange(std::u16string_view AName) const {
  TCellRange range = DataRange();
  const int32_t index = ColumnIndex(AName);
  if (index < 0) return {range.StartCol, range.StartRow, range.StartCol, SaturatedSum(range.StartRow, -1)};
  range.StartCol = SaturatedSum(range.StartCol, index);
  range.EndCol = range.StartCol;
  return range;
}

int32_t TSheetTable::DataBandIndex(int32_t ARow) const {
  const TCellRange range = DataRange();
  return ARow >= range.StartRow && ARow <= range.EndRow ? SaturatedSum(ARow, -int64_t{range.StartRow}) : -1;
}

void TSheetTableList::Clear() {
  if (FItems.empty()) return;
  FItems.clear();
  ++FVersion;
}

TSheetTable& TSheetTableList::Add(std::unique_ptr<TSheetTable> ATable) {
  ATable->FListVersion = &FVersion;
  FItems.push_back(std::move(ATable));
  ++FVersion;
  return *FItems.back();
}

TSheetTable& TSheetTableList::Add(TText AName, const TCellRange& ARef) {
  return Add(std::make_unique<TSheetTable>(std::move(AName), ARef));
}

void TSheetTableList::RemoveAt(size_t AIndex) {
  if (AIndex >= FItems.size()) return;
  FItems.erase(FItems.begin() + static_cast<ptrdiff_t>(AIndex));
  ++FVersion;
}

TSheetTable* TSheetTableList::FindByName(std::u16string_view AName) const {
  for (const auto& table : FItems)
    if (EqualAsciiNoCase(table->Name(), AName) || EqualAsciiNoCase(table->DisplayName(), AName)) return table.get();
  return nullptr;
}

TSheetTable* TSheetTableList::FindContaining(int32_t ACol, int32_t ARow) const {
  for (const auto& table : FItems)
    if (table->Contains(ACol, ARow)) return table.get();
  return nullptr;
}

void TSheetTableList::Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  std::erase_if(FItems, [&](const std::unique_ptr<TSheetTable>& ATable) {
    const TAdjustedRange adjusted = AdjustRange(ATable->Ref(), AAxis, AStart, ADelta);
    if (!adjusted.Deleted) ATable->SetRef(adjusted.Range);
    return adjusted.Deleted;
  });
  ++FVersion;
}

void TSheetTableList::Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  for (const auto& table : FItems) table->SetRef(AdjustRangeForMove(table->Ref(), AAxis, AStart, ACount, ADest));
}

void TSheetTableList::ShiftRows(int64_t AStart, int64_t ADelta) { Shift(saRows, AStart, ADelta); }

void TSheetTableList::ShiftColumns(int64_t AStart, int64_t ADelta) { Shift(saColumns, AStart, ADelta); }

void TSheetTableList::MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saRows, AStart, ACount, ADest); }

void TSheetTableList::MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) {
  Move(saColumns, AStart, ACount, ADest);
}

}  // namespace tessarine
