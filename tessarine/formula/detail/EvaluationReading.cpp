#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/lists/SpillMap.h>

namespace tessarine::detail {

namespace {

bool LacksResult(const TCellStore& AStore, const TCellSlot& ASlot) {
  if (ASlot.Kind != cvkFormula) return false;
  const TFormulaRecord& record = AStore.Record(ASlot.Record);
  return !record.HasCached() && !record.IsVisiting();
}

/// The part of a range that a store can hold.
TCellRange ClipToStore(const TCellStore& AStore, const TCellRange& ARange) {
  return {std::max(ARange.StartCol, 1), std::max(ARange.StartRow, 1), std::min(ARange.EndCol, AStore.ColumnLimit()),
          std::min(ARange.EndRow, kMaxRow)};
}

/// The 0-based rows of tile AIndex that lie inside a range, as bits of word AWord.
uint64_t RowsInside(const TCellRange& ARange, int32_t AIndex, int32_t AWord) {
  const int32_t first = AIndex * kTileRows + AWord * 64 + 1;
  const int32_t from = std::max(ARange.StartRow - first, 0);
  const int32_t to = std::min(ARange.EndRow - first, 63);
  if (from > 63 || to < from) return 0;
  return (~uint64_t{0} << from) & (~uint64_t{0} >> (63 - to));
}

/// Whether AMatches(slot) for a formula cell of the range; the order in which cells are asked is free.
template <class TMatches>
bool AnyFormula(const TCellStore& AStore, const TCellRange& ARange, TMatches AMatches) {
  const TCellRange range = ClipToStore(AStore, ARange);
  for (int32_t col = range.StartCol; col <= range.EndCol; ++col) {
    const int32_t last = std::min((range.EndRow - 1) / kTileRows, AStore.TileLimit(col) - 1);
    for (int32_t index = (range.StartRow - 1) / kTileRows; index <= last; ++index) {
      const TTile* tile = AStore.FindTile(col, index);
      if (!tile || tile->FormulaCount == 0) continue;
      for (int32_t word = 0; word < 4; ++word) {
        const uint64_t occupied = tile->Occupied[word] & RowsInside(range, index, word);
        if (occupied == 0) continue;
        const TCellSlot* slot =
            tile->Slots() + tile->Rank(static_cast<uint32_t>(word * 64 + __builtin_ctzll(occupied)));
        for (uint64_t bits = occupied; bits != 0; bits &= bits - 1, ++slot) {
          if (slot->Kind == cvkFormula && AMatches(*slot)) return true;
        }
      }
    }
  }
  return false;
}

bool HasUncached(const TCellStore& AStore, const TCellRange& ARange) {
  return AStore.UncachedCount() > 0 &&
         AnyFormula(AStore, ARange, [&AStore](const TCellSlot& ASlot) { return LacksResult(AStore, ASlot); });
}

/// The first formula cell of one strip of tiles, row by row from AFrom on, that lacks a result.
std::optional<TCellAddress> UncachedInStrip(const TCellStore& AStore, const TCellRange& ARange, int32_t AIndex,
                                            TCellAddress AFrom) {
  std::vector<int32_t> cols;
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
    const TTile* tile = AStore.FindTile(col, AIndex);
    if (tile && tile->FormulaCount > 0) cols.push_back(col);
  }
  if (cols.empty()) return std::nullopt;
  const int32_t last = std::min(ARange.EndRow, (AIndex + 1) * kTileRows);
  for (int32_t row = std::max(AFrom.Row, AIndex * kTileRows + 1); row <= last; ++row) {
    for (const int32_t col : cols) {
      if (row == AFrom.Row && col < AFrom.Col) continue;
      const TCellSlot* slot = AStore.Find(col, row);
      if (slot && LacksResult(AStore, *slot)) return TCellAddress{col, row};
    }
  }
  return std::nullopt;
}

std::optional<TCellAddress> NextUncached(const TCellStore& AStore, const TCellRange& ARange, TCellAddress AFrom) {
  const TCellRange range = ClipToStore(AStore, ARange);
  for (int32_t index = (AFrom.Row - 1) / kTileRows; index * kTileRows < range.EndRow; ++index) {
    if (const auto found = UncachedInStrip(AStore, range, index, AFrom)) return found;
  }
  return std::nullopt;
}

/// A range over all rows or columns ends with the sheet's used bounds.
TCellRange CutToUsed(const TWorksheet& ASheet, TCellRange ARange) {
  if (ARange.StartRow <= 1 && ARange.EndRow >= kMaxRow) ARange.EndRow = std::max(1, ASheet.UsedMaxRow());
  if (ARange.StartCol <= 1 && ARange.EndCol >= kMaxCol) ARange.EndCol = std::max(1, ASheet.UsedMaxCol());
  return ARange;
}

}  // namespace

TFormulaRecord* TEvaluation::RecordOf(TCellId AId) {
  TWorksheet* sheet = SheetAt(AId.Sheet());
  if (!sheet || !TCellAddress{AId.Col(), AId.Row()}.IsValid()) return nullptr;
  return sheet->Store().FindRecord(AId.Col(), AId.Row());
}

/// The cell of a rectangle in the row or column, or both, of the cell entered last. Whole columns and rows stay whole.
TCellValue TEvaluation::IntersectCells(int32_t ASheetIndex, const TCellRange& ARange) {
  const int32_t col = ARange.StartCol == ARange.EndCol ? ARange.StartCol : EvalCol;
  const int32_t row = ARange.StartRow == ARange.EndRow ? ARange.StartRow : EvalRow;
  if (!ARange.Contains(col, row)) return TCellValue::FromError(ceValue);
  return TCellValue::FromView(ReadCell(ASheetIndex, col, row));
}

TFormulaArg TEvaluation::EvalCellArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  const int32_t sheet = SheetOf(AFrame, ANode.SheetName);
  if (sheet < 0) return TFormulaArg::FromError(ceRef);
  const TRelativeRect at = AFrame.RectOf(ANode);
  TFormulaArg result = TFormulaArg::FromScalar(TCellValue::FromView(ReadCell(sheet, at.Col, at.Row)));
  result.HasOrigin = true;
  result.OriginCol = at.Col;
  result.OriginRow = at.Row;
  result.OriginSheetIndex = sheet;
  return result;
}

TFormulaArg TEvaluation::EvalRangeArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  const int32_t index = SheetOf(AFrame, ANode.SheetName);
  const TWorksheet* sheet = index < 0 ? nullptr : SheetAt(index);
  if (!sheet) return TFormulaArg::FromError(ceRef);
  const TRelativeRect rect = AFrame.RectOf(ANode);
  return ReadRectangle(index, CutToUsed(*sheet, TCellRange{rect.Col, rect.Row, rect.Col2, rect.Row2}.Normalize()));
}

/// EvalRangeArg outside all evaluations under way but that of the frame's own cell, when it is a view for certain.
bool TEvaluation::TryViewRange(const TProgramFrame& AFrame, const TProgramNode& ANode, TFormulaArg& AArg) {
  const int32_t index = SheetOf(AFrame, ANode.SheetName);
  const TWorksheet* sheet = index < 0 ? nullptr : SheetAt(index);
  if (!sheet || !Options.RangeViews) return false;
  const TRelativeRect rect = AFrame.RectOf(ANode);
  const TCellRange range = CutToUsed(*sheet, TCellRange{rect.Col, rect.Row, rect.Col2, rect.Row2}.Normalize());
  if (int64_t{range.Width()} * range.Height() > kMaxArrayCells) return false;
  if (index == AFrame.SheetIndex && range.Contains(AFrame.Col, AFrame.Row)) return false;
  if (!FDeferredCells.empty() || HasUncached(sheet->Store(), range)) return false;
  AArg = TFormulaArg::FromView(*sheet, index, range.StartCol, range.StartRow, range.Height(), range.Width());
  return true;
}

/// Whether a cell of the range is being evaluated. Asks the cells or those under evaluation, whichever are fewer.
bool TEvaluation::HasVisiting(const TWorksheet& ASheet, int32_t ASheetIndex, const TCellRange& ARange) const {
  const auto isInside = [&](TCellId AId) {
    return AId.Sheet() == ASheetIndex && ARange.Contains(AId.Col(), AId.Row());
  };
  const auto visiting = static_cast<int64_t>(FReaders.size() + FDeferredCells.size());
  if (int64_t{ARange.Width()} * ARange.Height() < visiting) {
    const TCellStore& store = ASheet.Store();
    return AnyFormula(store, ARange, [&](const TCellSlot& ASlot) { return store.Record(ASlot.Record).IsVisiting(); });
  }
  return std::any_of(FReaders.begin(), FReaders.end(),
                     [&](const TReader& AReader) { return isInside(AReader.Cell); }) ||
         std::any_of(FDeferredCells.begin(), FDeferredCells.end(), isInside);
}

/// A rectangle of cells that were read row by row, with its origin: a view where all results stand already and nothing
/// in it is being evaluated, else an array. Areas that are too large for an array have their cells pulled in the same
/// order and are shown as they are afterwards.
TFormulaArg TEvaluation::ReadRectangle(int32_t ASheetIndex, const TCellRange& ARange) {
  const TWorksheet* sheet = SheetAt(ASheetIndex);
  if (!sheet) return TFormulaArg::FromError(ceRef);
  while (IsReplaying() && FPulls[FReplayNext].Cell.Sheet() == ASheetIndex &&
         ARange.Contains(FPulls[FReplayNext].Cell.Col(), FPulls[FReplayNext].Cell.Row()))
    ReplayPull(FPulls[FReplayNext].Cell);
  const bool isLarge = int64_t{ARange.Width()} * ARange.Height() > kMaxArrayCells;
  if (!isLarge &&
      (!Options.RangeViews || HasVisiting(*sheet, ASheetIndex, ARange) || HasUncached(sheet->Store(), ARange)))
    return ReadCells(ASheetIndex, ARange);
  if (isLarge) {
    PullInside(ASheetIndex, ARange);
    sheet = SheetAt(ASheetIndex);
    if (!sheet || HasVisiting(*sheet, ASheetIndex, ARange)) return TFormulaArg::FromError(ceNum);
  }
  return TFormulaArg::FromView(*sheet, ASheetIndex, ARange.StartCol, ARange.StartRow, ARange.Height(), ARange.Width());
}

TFormulaArg TEvaluation::ReadCells(int32_t ASheetIndex, const TCellRange& ARange) {
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(int64_t{ARange.Width()} * ARange.Height()));
  for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) {
    for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col)
      cells.push_back(TCellValue::FromView(ReadCell(ASheetIndex, col, row)));
  }
  TFormulaArg result = TFormulaArg::FromRange(std::move(cells), ARange.Height(), ARange.Width());
  result.HasOrigin = true;
  result.OriginCol = ARange.StartCol;
  result.OriginRow = ARange.StartRow;
  result.OriginSheetIndex = ASheetIndex;
  return result;
}

void TEvaluation::PullInside(int32_t ASheetIndex, const TCellRange& ARange) {
  TCellAddress from{ARange.StartCol, ARange.StartRow};
  while (const TWorksheet* sheet = SheetAt(ASheetIndex)) {
    if (sheet->Store().UncachedCount() == 0) return;
    const auto next = NextUncached(sheet->Store(), ARange, from);
    if (!next) return;
    ReadCell(ASheetIndex, next->Col, next->Row);
    from = {next->Col + 1, next->Row};
  }
}

}  // namespace tessarine::detail
