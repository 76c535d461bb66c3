#include <tessarine/core/lists/AutoFilter.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include <tessarine/core/lists/SheetTables.h>

namespace tessarine {

namespace {

bool OverlapInColumns(const TCellRange& ALeft, const TCellRange& ARight) {
  return ALeft.StartCol <= ARight.EndCol && ARight.StartCol <= ALeft.EndCol;
}

/// The first table, of those that ATest accepts, whose header is in the first row of the range and overlaps it.
template <class TTest>
const TSheetTable* TableAtHeader(const TSheetTableList& ATables, const TCellRange& ARange, TTest&& ATest) {
  for (const auto& table : ATables) {
    if (table->HasHeaderRow() && table->HeaderRow() == ARange.StartRow && OverlapInColumns(table->Ref(), ARange) &&
        ATest(*table)) {
      return table.get();
    }
  }
  return nullptr;
}

}  // namespace

void TSheetAutoFilter::Clear() {
  FState.Columns.clear();
  FState.Active = false;
}

void TSheetAutoFilter::Enable(const TCellRange& ARange) {
  FState.Range = ARange.Normalize();
  FState.Columns.clear();
  FState.Active = FState.Range.StartCol >= 1 && FState.Range.StartRow >= 1;
}

bool TSheetAutoFilter::IsFilterHeaderCell(int32_t ACol, int32_t ARow) const {
  return FState.Active && ARow == FState.Range.StartRow && ACol >= FState.Range.StartCol && ACol <= FState.Range.EndCol;
}

TAutoFilterColumn TSheetAutoFilter::GetColumn(int32_t ACol) const {
  const auto found = FState.Columns.find(ACol);
  if (found != FState.Columns.end()) return found->second;
  TAutoFilterColumn none;
  none.Col = ACol;
  return none;
}

bool TSheetAutoFilter::ColumnHasFilter(int32_t ACol) const {
  const auto found = FState.Columns.find(ACol);
  return found != FState.Columns.end() && found->second.Active;
}

TAutoFilterColumn& TSheetAutoFilter::OpenColumn(int32_t ACol, bool AMatchCase) {
  TAutoFilterColumn& column = FState.Columns[ACol];
  column.Col = ACol;
  column.Active = true;
  column.MatchCase = AMatchCase;
  column.ExcludeBlanks = false;
  return column;
}

void TSheetAutoFilter::SetColumnValues(int32_t ACol, std::vector<TText> AValues, bool AMatchCase) {
  OpenColumn(ACol, AMatchCase).Values = std::move(AValues);
}

void TSheetAutoFilter::SetColumnContains(int32_t ACol, TText AText, bool AMatchCase) {
  OpenColumn(ACol, AMatchCase).Contains = std::move(AText);
}

TCellRange TSheetAutoFilter::DataSortRange(const TSheetTableList& ATables) const {
  TCellRange range = FState.Range.Normalize();
  const TSheetTable* table = TableAtHeader(ATables, range, [&](const TSheetTable& ATable) {
    return ATable.HasTotalsRow() && ATable.Ref().EndRow > range.StartRow && ATable.Ref().EndRow <= range.EndRow;
  });
  if (table) range.EndRow = table->Ref().EndRow - 1;
  return range;
}

/// Gives every criterion the column that ANewIndex(column) names, or drops it.
template <class TNewIndex>
void TSheetAutoFilter::RenumberColumns(TNewIndex&& ANewIndex) {
  for (auto& [col, column] : std::exchange(FState.Columns, {})) {
    const std::optional<int64_t> index = ANewIndex(int64_t{col});
    if (!index || *index < std::numeric_limits<int32_t>::min() || *index > std::numeric_limits<int32_t>::max())
      continue;
    column.Col = static_cast<int32_t>(*index);
    FState.Columns.insert_or_assign(column.Col, std::move(column));
  }
}

void TSheetAutoFilter::Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (!FState.Active || ADelta == 0) return;
  const TAdjustedRange adjusted = AdjustRange(FState.Range, AAxis, AStart, ADelta);
  if (adjusted.Deleted) {
    Clear();
    return;
  }
  FState.Range = adjusted.Range;
  if (AAxis == saColumns) RenumberColumns([&](int64_t ACol) { return ShiftIndex(ACol, AStart, ADelta); });
}

void TSheetAutoFilter::Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (!FState.Active || ACount < 1 || AStart == ADest) return;
  FState.Range = AdjustRangeForMove(FState.Range, AAxis, AStart, ACount, ADest);
  if (AAxis == saColumns)
    RenumberColumns([&](int64_t ACol) { return std::optional(MoveIndex(ACol, AStart, ACount, ADest)); });
}

void TSheetAutoFilter::SyncToTables(const TSheetTableList& ATables) {
  if (!FState.Active) return;
  const TSheetTable* table =
      TableAtHeader(ATables, FState.Range, [](const TSheetTable& ATable) { return ATable.ShowAutoFilter(); });
  if (!table) return;
  FState.Range = table->Ref();
  if (table->HasTotalsRow() && FState.Range.EndRow > FState.Range.StartRow) --FState.Range.EndRow;
}

}  // namespace tessarine
