#include <tessarine/features/Sorting.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/undo/CellCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/core/undo/detail/CellBatch.h>
#include <tessarine/features/detail/SortOrder.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

int32_t KeyColumn(const TCellRange& ARange, int32_t ACol) {
  if (ACol >= ARange.StartCol && ACol <= ARange.EndCol) return ACol;
  return ACol >= 1 && ACol <= ARange.Width() ? ARange.StartCol + ACol - 1 : ARange.StartCol;
}

/// Adds the cell at ASource as it reads in ATarget of the same column.
void AddMoved(detail::TCellBatch& ABatch, const TWorksheet& ASheet, TCellAddress ATarget, TCellAddress ASource) {
  const detail::TCellSlot* slot = ASheet.Store().Find(ASource.Col, ASource.Row);
  if (!slot || slot->Kind != cvkFormula) return ABatch.AddCopy(ATarget, ASheet, ASource);
  TCell cell = ASheet.GetCell(ASource);
  cell.Value.Text = OffsetSharedFormula(cell.Value.Text, 0, int64_t{ATarget.Row} - ASource.Row);
  cell.ClearCachedResult();
  ABatch.Add(ATarget, cell);
}

/// The last column to write: right of the last one with cells there is nothing to move. Only a sort that is too large
/// otherwise leaves these columns out.
int32_t LastMovedCol(const TWorksheet& ASheet, const TCellRange& ARange, int64_t AMovedRows) {
  int32_t last = ARange.EndCol;
  if (AMovedRows * ARange.Width() > kMaxSortedCells)
    last = std::min(last, std::max(ASheet.Store().ColumnLimit(), ARange.StartCol));
  if (AMovedRows * (last - ARange.StartCol + 1) > kMaxSortedCells)
    throw ELimit("SortRange: " + std::to_string(AMovedRows) + " rows of " + Utf16ToUtf8(ARange.ToA1()) +
                 " would move; at most " + std::to_string(kMaxSortedCells) + " cells can be sorted");
  return last;
}

}  // namespace

void TessarineSortRange(TWorkbook* AWorkbook, TWorksheet* ASheet, TTextArg ARangeA1, bool AHasHeader,
                        std::span<const TSheetSortKey> AKeys) {
  const int32_t sheetIndex = AWorkbook && ASheet ? AWorkbook->IndexOfSheet(ASheet) : -1;
  if (sheetIndex < 0) throw EArgument("SortRange: missing workbook/sheet");
  if (AKeys.empty()) throw EArgument("SortRange: no sort keys");
  const TCellRange range = TCellRange::FromA1(ARangeA1);
  if (range.StartCol < 1 || range.StartRow < 1) throw EArgument("Invalid range: " + Utf16ToUtf8(ARangeA1));
  const int32_t firstRow = range.StartRow + (AHasHeader ? 1 : 0);
  if (firstRow >= range.EndRow) return;

  std::vector<TSheetSortKey> keys(AKeys.begin(), AKeys.end());
  for (TSheetSortKey& key : keys) key.Col = KeyColumn(range, key.Col);
  const std::vector<int32_t> sources =
      detail::SortedRows(*ASheet, &AWorkbook->StyleSheet(), firstRow, range.EndRow, keys);
  int64_t movedRows = 0;
  for (size_t i = 0; i < sources.size(); ++i) movedRows += sources[i] != firstRow + static_cast<int32_t>(i) ? 1 : 0;
  if (movedRows == 0) return;

  const int32_t lastCol = LastMovedCol(*ASheet, range, movedRows);
  detail::TCellBatch before;
  detail::TCellBatch after;
  const auto count = static_cast<size_t>(movedRows * (lastCol - range.StartCol + 1));
  before.Reserve(count);
  after.Reserve(count);
  for (size_t i = 0; i < sources.size(); ++i) {
    const int32_t row = firstRow + static_cast<int32_t>(i);
    if (sources[i] == row) continue;
    for (int32_t col = range.StartCol; col <= lastCol; ++col) {
      before.AddCopy({col, row}, *ASheet, {col, row});
      AddMoved(after, *ASheet, {col, row}, {col, sources[i]});
    }
  }
  AWorkbook->UndoManager().ExecuteCommand(
      std::make_shared<TMultiCellEditCommand>(*AWorkbook, sheetIndex, std::move(before), std::move(after), u"Sort"));
  AWorkbook->MarkModified();
}

}  // namespace tessarine
