#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <string>
#include <utility>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/formula/detail/EvaluationStack.h>

namespace tessarine::detail {

namespace {

/// A cell that a spilled block must not cover: anything but formatting, also an empty text.
bool Blocks(const TCellStore& AStore, int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
  if (ASlot.Kind != cvkEmpty) return true;
  if (!ASlot.HasExtras()) return false;
  const TCellExtras* extras = AStore.FindExtras(ACol, ARow);
  return extras && extras->Runs && !extras->Runs->empty();
}

/// Whether ATest(col, row, slot) for a stored cell of the block other than its anchor.
template <class TTest>
bool AnyStored(const TCellStore& AStore, TCellId AAnchor, const TCellRange& ABlock, TTest ATest) {
  bool found = false;
  const TCellRange range = {ABlock.StartCol, ABlock.StartRow, std::min(ABlock.EndCol, kMaxCol),
                            std::min(ABlock.EndRow, kMaxRow)};
  AStore.ForEachByRow(range, [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    if (found || (ACol == AAnchor.Col() && ARow == AAnchor.Row())) return;
    found = ATest(ACol, ARow, ASlot);
  });
  return found;
}

bool SpillDestinationBlocked(const TWorksheet& ASheet, TCellId AAnchor, const TCellRange& ABlock) {
  if (!ASheet.Spills().IsEmpty() && ASheet.Spills().IntersectsOther(ABlock, AAnchor.Col(), AAnchor.Row())) return true;
  const TCellStore& store = ASheet.Store();
  return AnyStored(store, AAnchor, ABlock, [&store](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    return Blocks(store, ACol, ARow, ASlot);
  });
}

/// What a sheet table must not cover; it writes over other cells.
bool TableDestinationBlocked(const TWorksheet& ASheet, TCellId AAnchor, const TCellRange& ABlock) {
  if (!ASheet.Spills().IsEmpty() && ASheet.Spills().IntersectsOther(ABlock, AAnchor.Col(), AAnchor.Row())) return true;
  return AnyStored(ASheet.Store(), AAnchor, ABlock,
                   [](int32_t, int32_t, const TCellSlot& ASlot) { return ASlot.Kind == cvkFormula; });
}

TCellRange BlockOf(TCellId AAnchor, int32_t ARows, int32_t ACols) {
  return {AAnchor.Col(), AAnchor.Row(), AAnchor.Col() + ACols - 1, AAnchor.Row() + ARows - 1};
}

void Tell(ISpillListener& AListener, int32_t ASheetIndex, const TCellRange& ABlock) {
  AListener.DirtySpillDependents(ASheetIndex, ABlock.StartCol, ABlock.StartRow, ABlock.EndCol, ABlock.EndRow);
}

/// Sets a variable for the time of a block.
template <class T>
class TScopedValue {
 public:
  TScopedValue(T& AVariable, T AValue) : FVariable(AVariable), FBefore(std::exchange(AVariable, AValue)) {}
  ~TScopedValue() { FVariable = FBefore; }
  TScopedValue(const TScopedValue&) = delete;
  TScopedValue& operator=(const TScopedValue&) = delete;

 private:
  T& FVariable;
  T FBefore;
};

TCellAddress AddressOf(TCellId AId) { return {AId.Col(), AId.Row()}; }

}  // namespace

/// Turns a formula's result into the anchor's cached value and, if it is a rectangle of several cells, into a block.
/// The anchor's old block goes first, so that a formula never blocks itself.
void TEvaluation::ApplySpill(TCellId AAnchor, TFormulaArg AResult) {
  const TActivity activity(*this);
  AResult.Materialize();
  if (AResult.AsTable) {
    MaterializeAsTable(AAnchor, AResult);
    return;
  }
  TWorksheet* sheet = SheetAt(AAnchor.Sheet());
  if (!sheet) return;
  std::optional<TCellRange> old;
  if (!sheet->Spills().IsEmpty()) {
    if (const TSpillRange* spill = sheet->Spills().TryGetSpill(AAnchor.Col(), AAnchor.Row())) old = spill->AsRange();
    sheet->Spills().ClearAnchor(AAnchor.Col(), AAnchor.Row());
  }
  const TCellValue first = AResult.IsLambda ? TCellValue::FromError(ceValue) : AResult.First();
  if (AResult.CellCount() <= 1) {
    sheet->StoreCachedResult(AddressOf(AAnchor), first);
    if (old) TellDependents(AAnchor, *old);
    return;
  }
  const TCellRange block = BlockOf(AAnchor, AResult.RowCount, AResult.ColCount);
  if (SpillDestinationBlocked(*sheet, AAnchor, block)) {
    sheet->StoreCachedResult(AddressOf(AAnchor), TCellValue::FromError(ceSpill));
    if (old) TellDependents(AAnchor, *old);
    return;
  }
  sheet->StoreCachedResult(AddressOf(AAnchor), first);
  sheet = SheetAt(AAnchor.Sheet());  // a host's handler may have removed it
  if (!sheet) return;
  sheet->Spills().SetSpill(AAnchor.Col(), AAnchor.Row(), AResult.RowCount, AResult.ColCount, AResult.TakeCells());
  sheet->ExpandUsedBounds(block.EndCol, block.EndRow);
  TellDependents(AAnchor, block);
  if (old && !(*old == block)) TellDependents(AAnchor, *old);
}

/// Writes a result as plain cells under a sheet table; the anchor's formula is replaced by its result.
void TEvaluation::MaterializeAsTable(TCellId AAnchor, const TFormulaArg& AResult) {
  TWorksheet* sheet = SheetAt(AAnchor.Sheet());
  if (!sheet) return;
  ++Stamp;
  sheet->Spills().ClearAnchor(AAnchor.Col(), AAnchor.Row());
  const bool hasShape = AResult.CellCount() > 0;
  const TCellRange block = BlockOf(AAnchor, hasShape ? AResult.RowCount : 1, hasShape ? AResult.ColCount : 1);
  if (TableDestinationBlocked(*sheet, AAnchor, block)) {
    sheet->StoreCachedResult(AddressOf(AAnchor), TCellValue::FromError(ceSpill));
    return;
  }
  for (int32_t row = block.StartRow; row <= block.EndRow; ++row) {
    for (int32_t col = block.StartCol; col <= block.EndCol; ++col) {
      TCell cell;
      cell.Value = hasShape ? AResult.CellAt(row - block.StartRow, col - block.StartCol) : AResult.First();
      sheet->SetCell({col, row}, cell);
      sheet = SheetAt(AAnchor.Sheet());
      if (!sheet) return;
    }
  }
  sheet->ExpandUsedBounds(block.EndCol, block.EndRow);
  const std::u16string name = u"Import_" + AddressOf(AAnchor).ToA1();
  TSheetTable* table = sheet->Tables().FindByName(name);
  if (table) {
    table->SetRef(block);
  } else {
    table = &sheet->Tables().Add(TText(name), block);
  }
  table->SetHasHeaderRow(AResult.AsTableHasHeader);
  table->SetShowAutoFilter(true);
  sheet->RefreshTableColumnNames();
  TCellRange filtered = block;
  if (table->HasTotalsRow() && filtered.EndRow > filtered.StartRow) --filtered.EndRow;
  sheet->AutoFilter().Enable(filtered);
  FWorkbook.MarkModified();
  TellDependents(AAnchor, block);
}

/// Has the readers of a block evaluated. That may spill other blocks, and nests; where the native stack does not stand
/// one more level, the block waits for the innermost telling under way to come back, and its anchor stays visiting.
void TEvaluation::TellDependents(TCellId AAnchor, const TCellRange& ABlock) {
  if (!Listener) return;
  if (FSpillDepth > 0 && StackUsed() > kSpillStack) {
    FDeferredBlocks.push_back({AAnchor.Sheet(), ABlock});
    if (!FReaders.empty() && FReaders.back().Cell == AAnchor) FReaders.back().StaysVisiting = true;
    return;
  }
  const TScopedValue depth(FSpillDepth, FSpillDepth + 1);
  Tell(*Listener, AAnchor.Sheet(), ABlock);
  if (FDeferredBlocks.empty() || FRunsDeferred) return;
  const TScopedValue isRunning(FRunsDeferred, true);
  for (size_t i = 0; i < FDeferredBlocks.size(); ++i) {
    const TDeferredBlock next = FDeferredBlocks[i];
    Tell(*Listener, next.SheetIndex, next.Block);
  }
  ReleaseDeferred();
}

/// No block waits any more: their anchors may be evaluated again.
void TEvaluation::ReleaseDeferred() {
  FDeferredBlocks.clear();
  for (const TCellId cell : std::exchange(FDeferredCells, {})) {
    if (TFormulaRecord* record = RecordOf(cell)) record->Flags &= static_cast<uint8_t>(~TFormulaRecord::frVisiting);
  }
}

}  // namespace tessarine::detail
