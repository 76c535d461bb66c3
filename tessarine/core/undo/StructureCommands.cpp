#include <tessarine/core/undo/StructureCommands.h>

#include <utility>
#include <vector>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/StoreHistory.h>

namespace tessarine {

namespace {

using detail::TCellSlot;
using detail::TCellStore;
using detail::TStoreSnapshot;

/// Runs AVisit while the store of a captured state stands at it. Results of formulas may get lost on the way.
template <class TVisit>
void VisitCaptured(const TStoreSnapshot& ASnapshot, TVisit&& AVisit) {
  TCellStore& store = *ASnapshot.Keeper->Store;
  const TStoreSnapshot latest = store.Capture();
  store.ReturnTo(ASnapshot);
  AVisit(std::as_const(store));
  store.ReturnTo(latest);
}

/// Tells the change of all cells, or of all formulas, to whoever listens.
void TellCells(TWorksheet& ASheet, bool AFormulasOnly) {
  std::vector<TCellAddress> places;
  const TCellStore& store = ASheet.Store();
  if (ASheet.ChangesAreUnobserved()) {
    if ((AFormulasOnly ? store.FormulaCount() : store.CellCount()) != 0) ASheet.NoteBulkChange();
    return;
  }
  store.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    if (!AFormulasOnly || ASlot.Kind == cvkFormula) places.push_back({ACol, ARow});
  });
  for (const TCellAddress& place : places) ASheet.TellChange(place, !AFormulasOnly);
}

struct TCapturedFormula {
  TCellAddress Address;
  TText Text;
};

/// Gives formula cells the texts that they had, and takes their results away.
void RestoreTexts(TWorksheet& ASheet, const TStoreSnapshot& ASnapshot) {
  std::vector<TCapturedFormula> changed;
  std::vector<TCellAddress> same;
  std::vector<std::pair<TCellAddress, detail::TFormulaTemplate*>> captured;
  detail::TFormulaPool& pool = ASheet.Store().Pool();
  VisitCaptured(ASnapshot, [&](const TCellStore& AStore) {
    AStore.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
      if (ASlot.Kind != cvkFormula) return;
      detail::TFormulaTemplate* const formula = AStore.Record(ASlot.Record).Template;
      pool.Retain(formula);
      captured.emplace_back(TCellAddress{ACol, ARow}, formula);
    });
  });
  for (const auto& [place, formula] : captured) {
    const detail::TFormulaRecord* const record = ASheet.Store().FindRecord(place.Col, place.Row);
    if (record && record->Template == formula) {
      same.push_back(place);
    } else if (record) {
      changed.push_back({place, formula->TextAt(place.Col, place.Row)});
    }
    pool.Release(formula);
  }
  for (const TCellAddress& place : same) {
    ASheet.Store().ClearResult(place.Col, place.Row);
    ASheet.TellChange(place, false);
  }
  for (const TCapturedFormula& formula : changed) {
    TCell cell = ASheet.GetCell(formula.Address);
    if (cell.Value.Kind != cvkFormula) continue;
    cell.Value.Text = formula.Text;
    cell.ClearCachedResult();
    ASheet.SetCell(formula.Address, cell);
  }
}

}  // namespace

struct TStructureCommand::TSnapshot {
  std::vector<TStoreSnapshot> Stores;  // of the edited sheet and those with formulas, by the sheets' indexes
  std::vector<TMergedRange> Merges;
  TRowColSizing Sizing;
  int32_t FrozenRows = 0;
  int32_t FrozenCols = 0;
  std::vector<std::pair<TText, TText>> Names;
  std::vector<TSheetTable> Tables;
  std::vector<TDataValidationRule> Rules;
  TAutoFilterState Filter;
};

TStructureCommand::TStructureCommand(TWorkbook& AWorkbook, int32_t ASheetIndex)
    : TSheetCommand(AWorkbook, ASheetIndex) {}

TStructureCommand::~TStructureCommand() = default;

void TStructureCommand::Execute() {
  const TWorksheet* const sheet = Sheet();
  if (!sheet) return;
  if (!FSnapshot) Capture(*sheet);
  if (FIsHalfUndone) Undo();
  NoteChange();
  Edit();
}

void TStructureCommand::Undo() {
  TWorksheet* const sheet = Sheet();
  if (!FSnapshot || !sheet) return;
  FIsHalfUndone = true;
  NoteChange();
  RestoreCells(*sheet);
  RestoreLists(*sheet);
  RestoreFormulas();
  const TSnapshot& snapshot = *FSnapshot;
  sheet->Tables().Clear();
  for (const TSheetTable& table : snapshot.Tables) sheet->Tables().Add(std::make_unique<TSheetTable>(table));
  sheet->Validations().Clear();
  for (const TDataValidationRule& rule : snapshot.Rules) sheet->Validations().AddRule(rule);
  sheet->AutoFilter().RestoreState(snapshot.Filter);
  sheet->AutoFilter().SyncToTables(sheet->Tables());
  FIsHalfUndone = false;
}

void TStructureCommand::Capture(const TWorksheet& ASheet) {
  auto snapshot = std::make_unique<TSnapshot>();
  snapshot->Stores.resize(static_cast<size_t>(Workbook().SheetCount()));
  for (int32_t i = 0; i < Workbook().SheetCount(); ++i) {
    TCellStore& store = Workbook().GetSheet(i)->Store();
    if (i == SheetIndex() || store.FormulaCount() != 0) snapshot->Stores[static_cast<size_t>(i)] = store.Capture();
  }
  snapshot->Merges.assign(ASheet.Merges().begin(), ASheet.Merges().end());
  snapshot->Sizing = ASheet.Sizing();
  snapshot->Sizing.ClearAutoRowHeights();
  snapshot->FrozenRows = ASheet.FrozenRows();
  snapshot->FrozenCols = ASheet.FrozenCols();
  snapshot->Names = Workbook().CopyNamedFormulas();
  for (const auto& table : ASheet.Tables()) snapshot->Tables.push_back(*table);
  snapshot->Rules.assign(ASheet.Validations().begin(), ASheet.Validations().end());
  snapshot->Filter = ASheet.AutoFilter().CopyState();
  FSnapshot = std::move(snapshot);
}

void TStructureCommand::RestoreCells(TWorksheet& ASheet) const {
  const TStoreSnapshot& captured = FSnapshot->Stores[static_cast<size_t>(SheetIndex())];
  TCellStore& store = ASheet.Store();
  if (captured.Keeper->Store == &store) {
    store.ReturnTo(captured);
  } else {  // another sheet stands in the place of the one that was edited
    store.Clear();
    VisitCaptured(captured, [&](const TCellStore& AStore) {
      AStore.ForEachByColumn(
          [&](int32_t ACol, int32_t ARow, const TCellSlot&) { store.Set(ACol, ARow, AStore.Get(ACol, ARow)); });
    });
  }
  store.ClearResults();
  TellCells(ASheet, false);
}

void TStructureCommand::RestoreLists(TWorksheet& ASheet) const {
  ASheet.Merges().Clear();
  for (const TMergedRange& merge : FSnapshot->Merges) ASheet.Merges().Add(merge.AsRange());
  ASheet.Spills().ClearAll();
  TRowColSizing& sizing = ASheet.Sizing();
  const double width = sizing.DefaultColWidth();
  const double height = sizing.DefaultRowHeight();
  const double digit = sizing.MaxDigitWidth();
  sizing = FSnapshot->Sizing;
  sizing.SetDefaultColWidth(width);
  sizing.SetDefaultRowHeight(height);
  sizing.SetMaxDigitWidth(digit);
  sizing.SetOutlineSummaryBelow(true);
  sizing.SetOutlineSummaryRight(true);
  ASheet.SetFrozenRows(FSnapshot->FrozenRows);
  ASheet.SetFrozenCols(FSnapshot->FrozenCols);
  ASheet.RecalcUsedBounds();
  Workbook().RestoreNamedFormulas(FSnapshot->Names);
}

/// Sheets are known by their index: what stands there now gets the texts.
void TStructureCommand::RestoreFormulas() const {
  for (size_t i = 0; i < FSnapshot->Stores.size(); ++i) {
    const TStoreSnapshot& captured = FSnapshot->Stores[i];
    TWorksheet* const sheet = Workbook().GetSheet(static_cast<int32_t>(i));
    if (!sheet || !captured.Keeper) continue;
    if (sheet->Store().DiffersInTextsOnly(captured)) {
      sheet->Store().ReturnTo(captured);
      sheet->Store().ClearResults();
      TellCells(*sheet, true);
    } else {
      RestoreTexts(*sheet, captured);
    }
  }
}

TRowColShiftCommand::TRowColShiftCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, bool AIsRows, bool AIsDelete,
                                         int32_t AStart, int32_t ACount)
    : TStructureCommand(AWorkbook, ASheetIndex),
      FIsRows(AIsRows),
      FIsDelete(AIsDelete),
      FStart(AStart),
      FCount(ACount) {}

void TRowColShiftCommand::Edit() {
  if (FIsDelete) {
    FIsRows ? Workbook().DeleteRows(SheetIndex(), FStart, FCount)
            : Workbook().DeleteColumns(SheetIndex(), FStart, FCount);
  } else {
    FIsRows ? Workbook().InsertRows(SheetIndex(), FStart, FCount)
            : Workbook().InsertColumns(SheetIndex(), FStart, FCount);
  }
}

TText TRowColShiftCommand::Description() const {
  if (FIsDelete) return FIsRows ? u"Delete rows" : u"Delete columns";
  return FIsRows ? u"Insert rows" : u"Insert columns";
}

TRowColMoveCommand::TRowColMoveCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, bool AIsRows, int32_t AStart,
                                       int32_t ACount, int32_t ADestBefore)
    : TStructureCommand(AWorkbook, ASheetIndex),
      FIsRows(AIsRows),
      FStart(AStart),
      FCount(ACount),
      FDestBefore(ADestBefore) {}

void TRowColMoveCommand::Edit() {
  FIsRows ? Workbook().MoveRows(SheetIndex(), FStart, FCount, FDestBefore)
          : Workbook().MoveColumns(SheetIndex(), FStart, FCount, FDestBefore);
}

TText TRowColMoveCommand::Description() const { return FIsRows ? u"Move rows" : u"Move columns"; }

}  // namespace tessarine
