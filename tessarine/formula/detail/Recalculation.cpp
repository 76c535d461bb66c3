#include <tessarine/formula/detail/Recalculation.h>

#include <algorithm>
#include <optional>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/detail/FastOrder.h>
#include <tessarine/formula/detail/GraphAccess.h>
#include <tessarine/formula/detail/Precedents.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/formula/detail/ResultSnapshot.h>
#include <tessarine/platform/Errors.h>

namespace tessarine::detail {

namespace {

constexpr size_t kCellsBetweenPolls = 2048;
constexpr int64_t kQuicklyOrdered = 4096;

/// An order that is being worked through. Orders nest when a spilled block dirties its readers in the middle of one.
class TActiveOrder {
 public:
  TActiveOrder(const std::vector<TCellId>& AOrder, TActiveOrder*& AInnermost)
      : FOrder(AOrder), FInnermost(AInnermost), FOuter(AInnermost) {
    FInnermost = this;
  }
  ~TActiveOrder() { FInnermost = FOuter; }
  TActiveOrder(const TActiveOrder&) = delete;
  TActiveOrder& operator=(const TActiveOrder&) = delete;

  void MoveTo(size_t APosition) { FPosition = APosition; }

  /// Whether this order or one around it will come to the cell later.
  bool WillRun(TCellId ACell) {
    for (TActiveOrder* order = this; order; order = order->FOuter) {
      const auto& positions = order->Positions();
      const auto found = positions.find(ACell.Packed);
      if (found != positions.end() && found->second > order->FPosition) return true;
    }
    return false;
  }

 private:
  const boost::unordered_flat_map<uint64_t, size_t>& Positions() {
    if (FPositions.empty()) {
      FPositions.reserve(FOrder.size());
      for (size_t i = 0; i < FOrder.size(); ++i) FPositions.emplace(FOrder[i].Packed, i);
    }
    return FPositions;
  }

  const std::vector<TCellId>& FOrder;
  boost::unordered_flat_map<uint64_t, size_t> FPositions;  // built when a block asks for the first time
  size_t FPosition = 0;
  TActiveOrder*& FInnermost;
  TActiveOrder* FOuter;
};

}  // namespace

struct TRecalculation::TState {
  TWorkbook& Workbook;
  TInterpreter& Interpreter;
  TFormulaDependencyGraph& Graph;
  TDependencyRuns& Runs;
  TFastOrder Fast;
  TActiveOrder* Innermost = nullptr;

  TState(TWorkbook& AWorkbook, TInterpreter& AInterpreter, TFormulaDependencyGraph& AGraph)
      : Workbook(AWorkbook),
        Interpreter(AInterpreter),
        Graph(AGraph),
        Runs(RunsOf(AGraph)),
        Fast(AWorkbook, AInterpreter, Runs) {}

  TFormulaRecord* RecordOf(TCellId AId) const {
    const TWorksheet* sheet = Workbook.GetSheet(AId.Sheet());
    if (!sheet || AId.Col() < 1 || AId.Col() > kMaxCol || AId.Row() < 1 || AId.Row() > kMaxRow) return nullptr;
    return const_cast<TWorksheet*>(sheet)->Store().FindRecord(AId.Col(), AId.Row());
  }

  /// What the edges of the last rebuild follow from. A rebuild that would find the same is left out.
  struct TRebuilt {
    uint64_t Runs = 0;  // their version; 0 before the first rebuild
    uint64_t SheetList = 0;
    std::vector<uint64_t> Sheets;  // versions of each sheet's formulas, used bounds and tables
  };
  TRebuilt Rebuilt;
  bool DependsOnPosition = false;  // edges then follow from the evaluation position, too

  bool StandsAsRebuilt() const;
  std::vector<uint64_t> SheetVersions() const;
  void RegisterSheet(int32_t ASheet);
  void RunOrder(const std::vector<TCellId>& AOrder, const std::vector<TCellId>& ACycles, const TWorkControl& AControl);
  std::vector<TCellId> AllFormulas() const;
  std::vector<TCellId> AllRegistered() const;
  void RecalculateAllPlain(const TWorkControl& AControl);
  void NotifyPlain(TCellId ACell);
  void LeaveEvalCellOpen(std::optional<TCellId> ANotified);
  void CollectBlockReaders(int32_t ASheet, const TCellRange& ABlock, std::vector<TCellId>& AList);
};

namespace {

/// Formulas of one column that follow each other and differ only by their rows, as they are met.
struct TOpenRun {
  const TFormulaTemplate* Template = nullptr;
  TRowSpan Rows;
  std::shared_ptr<const TPrecedentPatterns> Patterns;
};

}  // namespace

void TRecalculation::TState::RegisterSheet(int32_t ASheet) {
  TCellStore& store = Workbook.GetSheet(ASheet)->Store();
  TOpenRun open;
  int32_t openCol = 0;
  const auto close = [&] {
    if (open.Patterns) Runs.Add(ASheet, openCol, open.Rows, std::move(open.Patterns));
    open = {};
  };
  store.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    if (ASlot.Kind != cvkFormula) return;
    TFormulaRecord& record = store.Record(ASlot.Record);
    record.Flags |= kRegistered;
    if (record.Template == open.Template && ACol == openCol && ARow == open.Rows.Last + 1 &&
        HoldsInRow(*open.Patterns, ARow)) {
      open.Rows.Last = ARow;
      return;
    }
    close();
    std::unique_ptr<TProgram> owned;
    const TProgram& program = ProgramOf(*record.Template, ACol, ARow, owned);
    if (program.HasTableRefs) {
      Interpreter.SettleEvalCell();
      DependsOnPosition = true;
    }
    open.Patterns = std::make_shared<const TPrecedentPatterns>(
        CollectPrecedents(program, Workbook, Interpreter, ASheet, ACol, ARow));
    open.Template = owned || !HoldsInRow(*open.Patterns, ARow) ? nullptr : record.Template;
    open.Rows = {ARow, ARow};
    openCol = ACol;
  });
  close();
}

std::vector<uint64_t> TRecalculation::TState::SheetVersions() const {
  std::vector<uint64_t> versions;
  for (int32_t i = 0; i < Workbook.SheetCount(); ++i) {
    const TWorksheet& sheet = *Workbook.GetSheet(i);
    versions.insert(versions.end(), {sheet.Store().FormulaVersion(), sheet.BoundsVersion(), sheet.Tables().Version()});
  }
  return versions;
}

bool TRecalculation::TState::StandsAsRebuilt() const {
  return !DependsOnPosition && Rebuilt.Runs == Runs.Version() && Rebuilt.SheetList == Workbook.SheetListVersion() &&
         Rebuilt.Sheets == SheetVersions();
}

/// Writes the cycle verdicts, then evaluates the formulas of the order.
void TRecalculation::TState::RunOrder(const std::vector<TCellId>& AOrder, const std::vector<TCellId>& ACycles,
                                      const TWorkControl& AControl) {
  for (const TCellId id : ACycles) Interpreter.WriteCircular(id.Sheet(), id.Col(), id.Row());
  TActiveOrder active(AOrder, Innermost);
  for (size_t i = 0; i < AOrder.size(); ++i) {
    if (i % kCellsBetweenPolls == 0) {
      AControl.CheckStop();
      AControl.Report(ppCalculating, static_cast<double>(i) / static_cast<double>(AOrder.size()));
    }
    active.MoveTo(i);
    const TCellId id = AOrder[i];
    if (RecordOf(id)) Interpreter.EvaluateFormulaCell(id.Sheet(), id.Col(), id.Row());
  }
}

std::vector<TCellId> TRecalculation::TState::AllFormulas() const {
  std::vector<TCellId> keys;
  for (int32_t sheet = 0; sheet < Workbook.SheetCount(); ++sheet) {
    Workbook.GetSheet(sheet)->Store().ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
      if (ASlot.Kind == cvkFormula) keys.push_back(TCellId::Of(sheet, ACol, ARow));
    });
  }
  return keys;
}

/// All cells with edges in the order of their registration.
std::vector<TCellId> TRecalculation::TState::AllRegistered() const {
  std::vector<const TDependencyRun*> runs;
  for (uint32_t i = 0; i < Runs.RunLimit(); ++i) {
    if (!Runs.Run(i).Rows.IsEmpty()) runs.push_back(&Runs.Run(i));
  }
  std::sort(runs.begin(), runs.end(),
            [](const TDependencyRun* ALeft, const TDependencyRun* ARight) { return ALeft->Stamp < ARight->Stamp; });
  std::vector<TCellId> cells;
  for (const TDependencyRun* run : runs) {
    for (int32_t row = run->Rows.First; row <= run->Rows.Last; ++row)
      cells.push_back(TCellId::Of(run->Sheet, run->Col, row));
  }
  return cells;
}

void TRecalculation::TState::RecalculateAllPlain(const TWorkControl& AControl) {
  std::vector<TCellId> cycles;
  std::vector<TCellId> order;
  Graph.TopologicalOrder(AllFormulas(), &cycles, order);
  RunOrder(order, cycles, AControl);
}

/// After a recalculation by runs: the cell entered last is the last formula in the order of single cells, which is
/// only worked out when somebody asks. When the edges have changed by then, the last cell of the runs stands for it.
void TRecalculation::TState::LeaveEvalCellOpen(std::optional<TCellId> ANotified) {
  const TCellId last = Fast.LastCell();
  if (last == TCellId{}) return;  // nothing was evaluated
  const bool isFormula = ANotified && RecordOf(*ANotified);
  Interpreter.SetPendingEvalCell([this, ANotified, isFormula, last, version = Runs.Version()] {
    if (version != Runs.Version()) return last;
    std::vector<TCellId> keys;
    if (ANotified) {
      keys.push_back(*ANotified);
      Graph.CollectTransitiveDependents(*ANotified, keys);
    } else {
      keys = AllRegistered();
    }
    // The sheet may have been edited since, so registered cells count as the formulas that they were.
    std::vector<TCellId> order;
    Graph.TopologicalOrder(keys, nullptr, order);
    if (!isFormula) std::erase(order, ANotified.value_or(TCellId{}));
    return order.empty() ? last : order.back();
  });
}

void TRecalculation::TState::NotifyPlain(TCellId ACell) {
  std::vector<TCellId> keys{ACell};
  Graph.CollectTransitiveDependents(ACell, keys);
  std::vector<TCellId> cycles;
  std::vector<TCellId> order;
  Graph.TopologicalOrder(keys, &cycles, order);
  RunOrder(order, cycles, {});
}

/// The formula cells inside a block and all that reads the block, each once: positions row by row, behind each what
/// depends on it, breadth first. Cells that an order under way will come to anyway are left to it, and with them all
/// that depends on them: the orders are closed under dependence.
void TRecalculation::TState::CollectBlockReaders(int32_t ASheet, const TCellRange& ABlock,
                                                 std::vector<TCellId>& AList) {
  std::vector<TCellId> positions;
  TWorksheet& sheet = *Workbook.GetSheet(ASheet);
  const TCellRange inside{ABlock.StartCol, ABlock.StartRow, std::min(ABlock.EndCol, kMaxCol),
                          std::min(ABlock.EndRow, kMaxRow)};
  sheet.Store().ForEachByRow(inside, [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    if (ASlot.Kind == cvkFormula) positions.push_back(TCellId::Of(ASheet, ACol, ARow));
  });
  Runs.ForEachReader(ASheet, inside, [&](uint32_t, const TPrecedentPattern& APattern, TRowSpan ARows) {
    for (int32_t row = ARows.First; row <= ARows.Last; ++row) {
      const int32_t bottom = std::min(APattern.Bottom(row), inside.EndRow);
      const int32_t right = std::min(APattern.Col2, inside.EndCol);
      for (int32_t r = std::max(APattern.Top(row), inside.StartRow); r <= bottom; ++r) {
        for (int32_t c = std::max(APattern.Col, inside.StartCol); c <= right; ++c)
          positions.push_back(TCellId::Of(ASheet, c, r));
      }
    }
  });
  std::sort(positions.begin(), positions.end(), [](TCellId ALeft, TCellId ARight) {
    return ALeft.Row() != ARight.Row() ? ALeft.Row() < ARight.Row() : ALeft.Col() < ARight.Col();
  });
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());

  boost::unordered_flat_map<uint64_t, bool> listed;
  std::vector<TCellId> dependents;
  for (const TCellId position : positions) {
    if (Innermost && RecordOf(position) && Innermost->WillRun(position)) continue;
    if (!listed.emplace(position.Packed, true).second) continue;
    size_t at = AList.size();
    AList.push_back(position);
    for (; at < AList.size(); ++at) {
      dependents.clear();
      Graph.GetDependents(AList[at], dependents);
      for (const TCellId id : dependents) {
        if (Innermost && Innermost->WillRun(id)) continue;
        if (listed.emplace(id.Packed, true).second) AList.push_back(id);
      }
    }
  }
}

TRecalculation::TRecalculation(TWorkbook& AWorkbook, TInterpreter& AInterpreter, TFormulaDependencyGraph& AGraph)
    : FState(std::make_unique<TState>(AWorkbook, AInterpreter, AGraph)) {}

TRecalculation::~TRecalculation() = default;

void TRecalculation::RegisterCellFormula(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  const TCellId id = TCellId::Of(ASheetIndex, ACol, ARow);
  TFormulaRecord* record = ASheetIndex < 0 ? nullptr : FState->RecordOf(id);
  if (!record && FState->Runs.FindRun(ASheetIndex, ACol, ARow) == TDependencyRuns::kNone) return;
  // With the edges as they were, the cell entered last can still be found exactly; worth it while that is quick.
  if (FState->Fast.RowsEvaluated() <= kQuicklyOrdered) FState->Interpreter.SettleEvalCell();
  if (!record) {
    FState->Runs.Remove(id);
    return;
  }
  std::unique_ptr<TProgram> owned;
  const TProgram& program = ProgramOf(*record->Template, ACol, ARow, owned);
  if (program.HasTableRefs) FState->Interpreter.SettleEvalCell();
  FState->Runs.Add(ASheetIndex, ACol, {ARow, ARow},
                   std::make_shared<const TPrecedentPatterns>(
                       CollectPrecedents(program, FState->Workbook, FState->Interpreter, ASheetIndex, ACol, ARow)));
  record->Flags |= kRegistered;
}

void TRecalculation::NotifyCellChanged(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  const TCellId id = TCellId::Of(ASheetIndex, ACol, ARow);
  TWorksheet* sheet = FState->Workbook.GetSheet(ASheetIndex);
  TCellRange formerBlock;
  if (sheet && !sheet->Spills().IsEmpty() && !FState->RecordOf(id)) {
    if (const TSpillRange* block = sheet->Spills().TryGetSpill(ACol, ARow)) formerBlock = block->AsRange();
    sheet->Spills().ClearAnchor(ACol, ARow);
  }
  RegisterCellFormula(ASheetIndex, ACol, ARow);
  if (FState->Fast.TryNotify(id)) {
    FState->LeaveEvalCellOpen(id);
  } else {
    FState->NotifyPlain(id);
  }
  if (formerBlock.StartCol > 0) DirtySpillDependents(ASheetIndex, ACol, ARow, formerBlock.EndCol, formerBlock.EndRow);
}

void TRecalculation::RebuildAllDependencies() {
  TState& state = *FState;
  if (state.StandsAsRebuilt()) return;
  state.Runs.Clear();
  state.DependsOnPosition = false;
  for (int32_t sheet = 0; sheet < state.Workbook.SheetCount(); ++sheet) state.RegisterSheet(sheet);
  state.Fast.NoteRebuilt();
  state.Rebuilt = {state.Runs.Version(), state.Workbook.SheetListVersion(), state.SheetVersions()};
}

void TRecalculation::RecalculateAll(const TWorkControl& AControl) {
  RebuildAllDependencies();
  std::optional<TResultSnapshot> before;
  if (AControl.Stop.stop_possible()) before.emplace(FState->Workbook);
  const TControlScope scope(FState->Interpreter, AControl);
  try {
    if (FState->Fast.TryRecalculateAll(AControl)) {
      FState->LeaveEvalCellOpen(std::nullopt);
    } else {
      FState->RecalculateAllPlain(AControl);
    }
  } catch (const ECancelled&) {
    if (before) before->Restore();
    FState->Interpreter.Reset();
    throw;
  }
  AControl.Report(ppCalculating, 1);
}

void TRecalculation::Reset() {
  FState->Interpreter.Reset();
  FState->Runs.Clear();
}

void TRecalculation::DirtySpillDependents(int32_t ASheetIndex, int32_t ACol, int32_t ARow, int32_t AEndCol,
                                          int32_t AEndRow) {
  if (!FState->Workbook.GetSheet(ASheetIndex)) return;
  std::vector<TCellId> keys;
  FState->CollectBlockReaders(ASheetIndex, {ACol, ARow, AEndCol, AEndRow}, keys);
  if (keys.empty()) return;
  std::vector<TCellId> cycles;
  std::vector<TCellId> order;
  FState->Graph.TopologicalOrder(keys, &cycles, order);
  const auto isVisiting = [this](TCellId AId) { return FState->Interpreter.IsVisiting(AId); };
  std::erase_if(cycles, isVisiting);
  for (const TCellId id : cycles) FState->Interpreter.WriteCircular(id.Sheet(), id.Col(), id.Row());
  TActiveOrder active(order, FState->Innermost);
  for (size_t i = 0; i < order.size(); ++i) {
    active.MoveTo(i);
    const TCellId id = order[i];
    if (!isVisiting(id) && FState->RecordOf(id))
      FState->Interpreter.EvaluateFormulaCell(id.Sheet(), id.Col(), id.Row());
  }
}

}  // namespace tessarine::detail
