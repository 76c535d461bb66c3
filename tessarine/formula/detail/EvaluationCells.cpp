#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/formula/detail/EvaluationStack.h>
#include <tessarine/platform/Progress.h>

// How chains of pulls of any length end in a value: a pull that finds too much of the native stack in use is run by a
// loop (RunDeep) instead. Above that loop pulls nest natively for a while again; the one that goes too far throws a
// TSuspension to the loop. All readers on the way stay on FReaders, visiting, and wait; the loop evaluates the target,
// then runs the reader that waits for it again from its start, and so on down to where the loop began.
// A reader that is run again meets the cells that it had pulled before with their results; at each of them the
// evaluation position becomes what the pull had made it (FPulls), so that the run goes as if it had never stopped.
// Names that are bound when the evaluation is suspended stay bound for the cells that are evaluated meanwhile; the run
// from the start begins with those that were bound at its beginning (FSavedNames), binds the others again, and loses at
// each pull the ones that the pull has unbound (FLostNames).

namespace tessarine::detail {

namespace {

/// Keeps a template alive while its program runs, whatever a host's handler does to the cell.
class TTemplatePin {
 public:
  TTemplatePin(TFormulaPool& APool, TFormulaTemplate* ATemplate) : FPool(APool), FTemplate(ATemplate) {
    FPool.Retain(FTemplate);
  }
  ~TTemplatePin() { FPool.Release(FTemplate); }
  TTemplatePin(const TTemplatePin&) = delete;
  TTemplatePin& operator=(const TTemplatePin&) = delete;

 private:
  TFormulaPool& FPool;
  TFormulaTemplate* FTemplate;
};

/// Roots that EvalNodeArg hands to the scalar mode.
bool IsScalarRoot(const TProgramNode& ARoot) {
  switch (ARoot.Kind) {
    case ankRange:
    case ankUnary:
    case ankArrayLit:
    case ankFunc: return false;
    default: return true;
  }
}

}  // namespace

/// Takes the innermost reader off, unless it is to wait.
class TEvaluation::TReaderGuard {
 public:
  explicit TReaderGuard(TEvaluation& AOwner) : FOwner(AOwner) {}
  ~TReaderGuard() {
    if (!FOwner.FSuspending) FOwner.Leave();
  }
  TReaderGuard(const TReaderGuard&) = delete;
  TReaderGuard& operator=(const TReaderGuard&) = delete;

 private:
  TEvaluation& FOwner;
};

/// The state of a loop over waiting readers. Takes off all that it has left when an exception ends it.
class TEvaluation::TDeepRun {
 public:
  explicit TDeepRun(TEvaluation& AOwner)
      : Base(AOwner.FReaders.size() - 1),
        FOwner(AOwner),
        FStackLimit(std::exchange(AOwner.FStackLimit, kDeepStack)),
        FCanSuspend(std::exchange(AOwner.FCanSuspend, true)) {}
  ~TDeepRun() {
    while (FOwner.FReaders.size() > Base) FOwner.Leave();
    FOwner.FStackLimit = FStackLimit;
    FOwner.FCanSuspend = FCanSuspend;
  }
  TDeepRun(const TDeepRun&) = delete;
  TDeepRun& operator=(const TDeepRun&) = delete;

  const size_t Base;

 private:
  TEvaluation& FOwner;
  size_t FStackLimit;
  bool FCanSuspend;
};

size_t TEvaluation::StackUsed() const {
  const uintptr_t here = StackAddress();
  return here < FStackBase ? FStackBase - here : here - FStackBase;
}

/// Evaluates a formula cell because its value is being read. False when there is no room for it.
bool TEvaluation::PullCell(TCellId AId) {
  constexpr int64_t kMaxSavedCells = int64_t{1} << 25;
  if (FSavedWeight > kMaxSavedCells) return false;
  FArgs.MaterializeViews();
  const TLocalNames::TSaved names = FLocals.Save();
  if (Options.NestPulls && StackUsed() <= FStackLimit) {
    RunNative(AId);
  } else if (FCanSuspend) {
    FSuspending = true;
    throw TSuspension{AId};
  } else {
    RunDeep(AId);
  }
  if (!FReaders.empty()) NotePull(AId, names);
  return true;
}

/// A pull that has been made, what it has left of the evaluation position and what it has unbound. All that a cell
/// binds it unbinds again, so that names can only have gone.
void TEvaluation::NotePull(TCellId AId, const TLocalNames::TSaved& ANamesBefore) {
  if (ANamesBefore) {
    for (std::u16string& name : FLocals.LostSince(ANamesBefore)) FLostNames.push_back({FPulls.size(), std::move(name)});
  }
  FPulls.push_back({AId, EvalCol, EvalRow});
}

void TEvaluation::CutPulls(size_t ACount) {
  if (FPulls.size() <= ACount) return;
  FPulls.resize(ACount);
  while (!FLostNames.empty() && FLostNames.back().Pull >= ACount) FLostNames.pop_back();
}

/// Keeps what is bound for the reader that is being entered.
void TEvaluation::SaveNames() {
  TSavedNames saved{FReaders.size() - 1, FLocals.Save(), 0};
  const bool isShared = !FSavedNames.empty() && FSavedNames.back().Names == saved.Names;
  if (!isShared) saved.Weight = TLocalNames::WeightOf(saved.Names);
  FSavedWeight += saved.Weight;
  FSavedNames.push_back(std::move(saved));
}

/// What was bound when the innermost reader was entered.
TLocalNames::TSaved TEvaluation::NamesOfReader() const {
  const bool hasNames = !FSavedNames.empty() && FSavedNames.back().Reader + 1 == FReaders.size();
  return hasNames ? FSavedNames.back().Names : nullptr;
}

/// Begins the evaluation of a cell. False when that is already its end: there is no formula, or it is being evaluated.
bool TEvaluation::Enter(TCellId AId) {
  ++Stamp;
  TWorksheet* sheet = SheetAt(AId.Sheet());
  if (!sheet) return false;
  TFormulaRecord* record = RecordOf(AId);
  if (!record) {
    if (!sheet->Spills().IsEmpty()) sheet->Spills().ClearAnchor(AId.Col(), AId.Row());
    return false;
  }
  if (record->IsVisiting()) {
    WriteCircular(AId);
    return false;
  }
  FReaders.push_back({AId, FPulls.size(), FVisitingNames.size(), FReplayNext, FReplayEnd, false, record,
                      FWorkbook.SheetListVersion(), sheet->Store().FormulaVersion()});
  if (!FLocals.IsEmpty()) SaveNames();
  FReplayNext = FReplayEnd = 0;
  record->Flags |= TFormulaRecord::frVisiting;
  if (PendingEvalCell) PendingEvalCell = nullptr;
  EvalCol = AId.Col();
  EvalRow = AId.Row();
  if ((record->Flags & TFormulaRecord::frSparkline) != 0) ResetSparkline(AId);
  return true;
}

void TEvaluation::Leave() {
  if (FReaders.empty()) return;
  const TReader reader = FReaders.back();
  FReaders.pop_back();
  if (!FSavedNames.empty() && FSavedNames.back().Reader == FReaders.size()) {
    FSavedWeight -= FSavedNames.back().Weight;
    FSavedNames.pop_back();
  }
  CutPulls(reader.PullBase);
  if (FVisitingNames.size() > reader.NameBase) FVisitingNames.resize(reader.NameBase);
  FReplayNext = reader.OuterReplayNext;
  FReplayEnd = reader.OuterReplayEnd;
  if (reader.StaysVisiting) {
    FDeferredCells.push_back(reader.Cell);
  } else if (TFormulaRecord* record = RecordOf(reader)) {
    record->Flags &= static_cast<uint8_t>(~TFormulaRecord::frVisiting);
  }
}

TFormulaRecord* TEvaluation::RecordOf(const TReader& AReader) {
  const TWorksheet* sheet = SheetAt(AReader.Cell.Sheet());
  const bool isCurrent = sheet && AReader.SheetVersion == FWorkbook.SheetListVersion() &&
                         AReader.FormulaVersion == sheet->Store().FormulaVersion();
  return isCurrent ? AReader.Record : RecordOf(AReader.Cell);
}

/// A sparkline's series is filled by its formula each time.
void TEvaluation::ResetSparkline(TCellId AId) {
  TWorksheet* sheet = SheetAt(AId.Sheet());
  TCell cell = sheet->GetCellAt(AId.Col(), AId.Row());
  if (cell.Sparkline.Kind == spkNone) return;
  cell.Sparkline.Values.clear();
  sheet->SetCell({AId.Col(), AId.Row()}, cell);
  if (TFormulaRecord* record = RecordOf(AId)) record->Flags |= TFormulaRecord::frVisiting;
}

void TEvaluation::RunNative(TCellId AId) {
  if (!Enter(AId)) return;
  const TReaderGuard guard(*this);
  RunReader(AId);
}

void TEvaluation::RunDeep(TCellId AId) {
  if (!Enter(AId)) return;
  const TDeepRun run(*this);
  while (FReaders.size() > run.Base) {
    const TReader& top = FReaders.back();
    const TCellId cell = top.Cell;
    if (FVisitingNames.size() > top.NameBase) FVisitingNames.resize(top.NameBase);
    FReplayNext = FReplayEnd = 0;
    FLocals.Restore(NamesOfReader());
    const auto first = FindFirstPull(cell);
    const bool isMade = FPulls.size() > top.PullBase && first && FPulls.back().Cell == *first;
    if (first && !isMade && Enter(*first)) continue;
    EvalCol = cell.Col();
    EvalRow = cell.Row();
    FReplayNext = FReaders.back().PullBase;
    FReplayEnd = FPulls.size();
    try {
      RunReader(cell);
    } catch (const TSuspension& suspension) {
      FSuspending = false;
      Enter(suspension.Target);
      continue;
    }
    const TLocalNames::TSaved names = NamesOfReader();
    Leave();
    if (FReaders.size() > run.Base) NotePull(cell, names);
  }
}

/// A cell that the reader under way is about to read. True when the pull that comes next in its replay was of this
/// cell; it then counts as made.
bool TEvaluation::ReplayPull(TCellId AId) {
  const TPull& pull = FPulls[FReplayNext];
  if (pull.Cell != AId) return false;
  auto lost = std::lower_bound(FLostNames.begin(), FLostNames.end(), FReplayNext,
                               [](const TLostName& AItem, size_t APull) { return AItem.Pull < APull; });
  for (; lost != FLostNames.end() && lost->Pull == FReplayNext; ++lost) FLocals.Unbind(lost->Name);
  ++FReplayNext;
  ++Stamp;
  EvalCol = pull.Col;
  EvalRow = pull.Row;
  return true;
}

/// Runs the formula of the innermost reader and stores what it yields.
void TEvaluation::RunReader(TCellId AId) {
  if (Control) Control->CheckStop();
  TFormulaRecord* record = RecordOf(FReaders.back());
  if (!record) return;
  const TFormulaTemplate& formula = *record->Template;
  const TTemplatePin pin(FWorkbook.FormulaPool(), record->Template);
  std::unique_ptr<TProgram> owned;
  if (!Options.ReusePrograms) owned = CompileText(formula.TextAt(AId.Col(), AId.Row()));
  const TProgram& program = owned ? *owned : ProgramOf(formula, AId.Col(), AId.Row(), owned);
  const TProgramFrame frame{program, AId.Col(), AId.Row(), AId.Sheet()};
  const TProgramNode& root = program.Root();
  double number = 0;
  if (root.Kind == ankBinary && TryNumber(frame, root, number) && TryStoreNumber(AId, *record, number)) return;
  if (IsScalarRoot(root)) {
    StoreScalar(AId, EvalNode(frame, root));
    return;
  }
  TFormulaArg result = EvalNodeArg(frame, root);
  if (result.IsRange || result.IsLambda || result.AsTable) {
    ApplySpill(AId, std::move(result));
  } else {
    StoreScalar(AId, result.Scalar);
  }
}

/// StoreScalar for a number where no event is to be told and no block is to go. ARecord is that of the cell.
bool TEvaluation::TryStoreNumber(TCellId AId, TFormulaRecord& ARecord, double ANumber) {
  TWorksheet* sheet = SheetAt(AId.Sheet());
  if (!sheet || !sheet->Spills().IsEmpty() || !sheet->ChangesAreUnobserved()) return false;
  sheet->Store().SetCachedNumber(AId.Col(), ARecord, ANumber);
  if (AId.Col() > sheet->UsedMaxCol() || AId.Row() > sheet->UsedMaxRow()) sheet->ExpandUsedBounds(AId.Col(), AId.Row());
  sheet->NoteBulkChange();
  return true;
}

void TEvaluation::StoreScalar(TCellId AId, const TCellValue& AValue) {
  TWorksheet* sheet = SheetAt(AId.Sheet());
  if (!sheet) return;
  if (!sheet->Spills().IsEmpty() && sheet->Spills().TryGetSpill(AId.Col(), AId.Row())) {
    ApplySpill(AId, TFormulaArg::FromScalar(AValue));
  } else {
    sheet->StoreCachedResult({AId.Col(), AId.Row()}, AValue);
  }
}

}  // namespace tessarine::detail
