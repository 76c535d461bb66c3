#include <tessarine/formula/detail/FastOrder.h>

#include <algorithm>
#include <span>
#include <vector>

#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/detail/AffectedRuns.h>
#include <tessarine/formula/detail/GraphAccess.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/detail/LookupBlocks.h>
#include <tessarine/formula/detail/NumericBlocks.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/formula/detail/RunningAggregates.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kMinBlock = 4;      // fewer rows are not worth compiling steps for
constexpr int32_t kMaxStarts = 8;     // of a running aggregate within one piece
constexpr int32_t kPollRows = 65536;  // rows between two looks at the stop token

using TDirection = TRunGroup::TDirection;

/// The formulas in rows of a column, downward: AVisit(row, record) answers whether to go on.
template <class TVisit>
bool ForEachFormula(TCellStore& AStore, int32_t ACol, TRowSpan ARows, TVisit&& AVisit) {
  for (int32_t row = ARows.First; row <= ARows.Last;) {
    const int32_t index = (row - 1) / kTileRows;
    const int32_t last = std::min(ARows.Last, (index + 1) * kTileRows);
    const TTile* tile = AStore.FindTile(ACol, index);
    if (tile && tile->FormulaCount != 0) {
      const TCellSlot* slot = tile->Slots() + tile->Rank(static_cast<uint32_t>(row - 1) % kTileRows);
      for (; row <= last; ++row) {
        if (!tile->Has(static_cast<uint32_t>(row - 1) % kTileRows)) continue;
        const TCellSlot& cell = *slot++;
        if (cell.Kind == cvkFormula && !AVisit(row, AStore.Record(cell.Record))) return false;
      }
    }
    row = last + 1;
  }
  return true;
}

/// The part of a span whose cells share a template, as the sheet reads now.
struct TPiece {
  TRowSpan Rows;
  const TFormulaTemplate* Template;
};

}  // namespace

struct TFastOrder::TState {
  TWorkbook& Workbook;
  TInterpreter& Interpreter;
  TDependencyRuns& Runs;
  uint64_t SheetListVersion = 0;         // at the last rebuild; runs go by sheet indexes
  std::vector<uint64_t> BoundsVersions;  // likewise, for ranges that were cut to the used bounds
  const TWorkControl* Control = nullptr;
  int64_t RowsDone = 0;
  int64_t RowsInAll = 0;
  TCellId LastCell;

  bool ProgramIsPlain(const TProgram& AProgram) const;
  bool SpanIsPlain(const TDependencyRun& ARun, TRowSpan ARows, size_t& AUncached) const;
  bool RunIsPlain(const TDependencyRun& ARun, std::span<const TRowSpan> ASpans, size_t& AUncached) const;
  bool MayRun(const TAffectedRuns& AAffected) const;
  void Evaluate(const TAffectedRuns& AAffected, const std::vector<TRunGroup>& AGroups);
  void EvaluateRow(const TDependencyRun& ARun, int32_t ARow);
  void EvaluateSpan(const TDependencyRun& ARun, TRowSpan ARows, TDirection ADirection);
  void EvaluatePiece(const TDependencyRun& ARun, const TPiece& APiece, TDirection ADirection);
  void EvaluateGroup(const TAffectedRuns& AAffected, const TRunGroup& AGroup);
  void EvaluateCells(const TDependencyRun& ARun, TRowSpan ARows, TDirection ADirection);
  std::vector<TPiece> PiecesOf(const TDependencyRun& ARun, TRowSpan ARows) const;
  void NoteRows(int64_t ACount);
};

/// Whether a formula's value follows from tracked cells alone, is one cell and shows nothing of the order.
bool TFastOrder::TState::ProgramIsPlain(const TProgram& AProgram) const {
  if (AProgram.IsPositionBound || AProgram.HasOrderEffects || AProgram.ReadsUntracked || AProgram.MaySpill ||
      AProgram.HasTableRefs)
    return false;
  if (AProgram.HasIdentifiers) {  // could be names or tables
    if (Workbook.HasNamedFormulas()) return false;
    for (int32_t i = 0; i < Workbook.SheetCount(); ++i) {
      if (Workbook.GetSheet(i)->Tables().Count() != 0) return false;
    }
  }
  if (AProgram.HasWholeLines) {
    for (int32_t i = 0; i < Workbook.SheetCount(); ++i) {
      if (Workbook.GetSheet(i)->BoundsVersion() != BoundsVersions[static_cast<size_t>(i)]) return false;
    }
  }
  return true;
}

bool TFastOrder::TState::SpanIsPlain(const TDependencyRun& ARun, TRowSpan ARows, size_t& AUncached) const {
  const TFormulaTemplate* known = nullptr;
  const auto visit = [&](int32_t ARow, const TFormulaRecord& ARecord) {
    constexpr uint8_t kAll = kRegistered | TFormulaRecord::frVisiting | TFormulaRecord::frSparkline;
    if ((ARecord.Flags & kAll) != kRegistered) return false;
    AUncached += ARecord.HasCached() ? 0 : 1;
    if (ARecord.Template == known) return true;
    known = ARecord.Template;
    std::unique_ptr<TProgram> owned;
    return ProgramIsPlain(ProgramOf(*known, ARun.Col, ARow, owned));
  };
  // What is no formula any more is skipped by every order.
  return ForEachFormula(Workbook.GetSheet(ARun.Sheet)->Store(), ARun.Col, ARows, visit);
}

bool TFastOrder::TState::RunIsPlain(const TDependencyRun& ARun, std::span<const TRowSpan> ASpans,
                                    size_t& AUncached) const {
  TWorksheet* sheet = Workbook.GetSheet(ARun.Sheet);
  if (!sheet || !sheet->ChangesAreUnobserved()) return false;
  const TSpillMap& spills = sheet->Spills();
  return std::all_of(ASpans.begin(), ASpans.end(), [&](const TRowSpan& ASpan) {
    const bool isFree = spills.IsEmpty() || spills.BlocksIn({ARun.Col, ASpan.First, ARun.Col, ASpan.Last}).empty();
    return isFree && SpanIsPlain(ARun, ASpan, AUncached);
  });
}

bool TFastOrder::TState::MayRun(const TAffectedRuns& AAffected) const {
  size_t lacking = 0;
  for (int32_t i = 0; i < Workbook.SheetCount(); ++i) lacking += Workbook.GetSheet(i)->Store().UncachedCount();
  bool isPlain = true;
  AAffected.ForEachRun([&](uint32_t ARun) {
    if (!isPlain) return;
    size_t uncached = 0;
    isPlain = RunIsPlain(Runs.Run(ARun), AAffected.RowsOf(ARun), uncached);
    lacking -= std::min(lacking, uncached);
  });
  return isPlain && lacking == 0;
}

std::vector<TPiece> TFastOrder::TState::PiecesOf(const TDependencyRun& ARun, TRowSpan ARows) const {
  std::vector<TPiece> pieces;
  ForEachFormula(Workbook.GetSheet(ARun.Sheet)->Store(), ARun.Col, ARows, [&](int32_t ARow, TFormulaRecord& ARecord) {
    if (!pieces.empty() && pieces.back().Template == ARecord.Template && pieces.back().Rows.Last == ARow - 1) {
      pieces.back().Rows.Last = ARow;
    } else {
      pieces.push_back({{ARow, ARow}, ARecord.Template});
    }
    return true;
  });
  return pieces;
}

void TFastOrder::TState::NoteRows(int64_t ACount) {
  RowsDone += ACount;
  if (!Control) return;
  Control->CheckStop();
  Control->Report(ppCalculating, static_cast<double>(RowsDone) / static_cast<double>(std::max<int64_t>(RowsInAll, 1)));
}

void TFastOrder::TState::EvaluateCells(const TDependencyRun& ARun, TRowSpan ARows, TDirection ADirection) {
  const int32_t count = ARows.Last - ARows.First + 1;
  for (int32_t i = 0; i < count; ++i) {
    const int32_t row = ADirection == TDirection::diUp ? ARows.Last - i : ARows.First + i;
    Interpreter.EvaluateFormulaCell(ARun.Sheet, ARun.Col, row);
    if (Control && i % 1024 == 1023) Control->CheckStop();
  }
}

void TFastOrder::TState::EvaluatePiece(const TDependencyRun& ARun, const TPiece& APiece, TDirection ADirection) {
  const bool upward = ADirection == TDirection::diUp;
  TRowSpan rest = APiece.Rows;
  std::unique_ptr<TProgram> owned;
  const TProgram& program = ProgramOf(*APiece.Template, ARun.Col, rest.First, owned);
  const bool blocks = Interpreter.Options().BlockEvaluation && rest.Last - rest.First + 1 >= kMinBlock;
  auto block = blocks ? TNumericBlock::Compile(program, Workbook, Interpreter, ARun.Sheet, ARun.Col) : std::nullopt;
  auto running = blocks && !upward && !block
                     ? TRunningAggregate::Compile(program, Workbook, Interpreter, ARun.Sheet, ARun.Col)
                     : std::nullopt;
  auto lookup = blocks && !block && !running && ADirection == TDirection::diAny
                    ? TLookupBlock::Compile(program, Workbook, Interpreter, ARun.Sheet, ARun.Col)
                    : std::nullopt;
  int32_t gaveUp = 0;
  while (!rest.IsEmpty()) {
    // What a fast way gives up, one tile or one row at a time, goes cell by cell; then the fast way is tried again.
    TRowSpan now = rest;
    now.Last = upward ? now.Last : std::min(now.Last, now.First + kPollRows - 1);
    now.First = upward ? std::max(now.First, now.Last - kPollRows + 1) : now.First;
    int32_t done = 0;
    int32_t byCell = now.Last - now.First + 1;
    if (block) {
      done = ADirection == TDirection::diAny ? block->EvaluateRows(now) : block->EvaluateChain(now, upward);
      byCell = ADirection == TDirection::diAny ? kTileRows : 1;
    } else if (running) {
      done = running->EvaluateDown(rest);
      byCell = kTileRows;
    } else if (lookup) {
      done = lookup->EvaluateRows(now);
      byCell = kTileRows;
    }
    TRowSpan plain = rest;
    if (upward) {
      plain.Last -= done;
      plain.First = std::max(plain.First, plain.Last - byCell + 1);
    } else {
      plain.First += done;
      plain.Last = std::min(plain.Last, plain.First + byCell - 1);
    }
    const int32_t asked = running ? rest.Last - rest.First + 1 : now.Last - now.First + 1;
    if (done < asked) {
      // Each new start of a running aggregate reads its range from the top again.
      if (running && ++gaveUp == kMaxStarts) running.reset();
      EvaluateCells(ARun, plain, ADirection);
      done += plain.Last - plain.First + 1;
    }
    if (upward)
      rest.Last -= done;
    else
      rest.First += done;
    NoteRows(done);
  }
}

/// EvaluateSpan for a single row, which no block takes.
void TFastOrder::TState::EvaluateRow(const TDependencyRun& ARun, int32_t ARow) {
  if (!Workbook.GetSheet(ARun.Sheet)->Store().FindRecord(ARun.Col, ARow)) return;
  Interpreter.EvaluateFormulaCell(ARun.Sheet, ARun.Col, ARow);
  NoteRows(1);
  LastCell = TCellId::Of(ARun.Sheet, ARun.Col, ARow);
}

void TFastOrder::TState::EvaluateSpan(const TDependencyRun& ARun, TRowSpan ARows, TDirection ADirection) {
  if (ARows.First == ARows.Last) return EvaluateRow(ARun, ARows.First);
  std::vector<TPiece> pieces = PiecesOf(ARun, ARows);
  if (ADirection == TDirection::diUp) std::reverse(pieces.begin(), pieces.end());
  for (const TPiece& piece : pieces) {
    EvaluatePiece(ARun, piece, ADirection);
    LastCell = TCellId::Of(ARun.Sheet, ARun.Col, ADirection == TDirection::diUp ? piece.Rows.First : piece.Rows.Last);
  }
}

/// Row by row over the runs of a group.
void TFastOrder::TState::EvaluateGroup(const TAffectedRuns& AAffected, const TRunGroup& AGroup) {
  struct TCursor {
    const TDependencyRun* Run;
    std::span<const TRowSpan> Spans;
    size_t At;
  };
  std::vector<TCursor> cursors;
  TRowSpan all{kMaxRow, 1};
  const bool upward = AGroup.Direction == TDirection::diUp;
  for (const uint32_t index : AGroup.Runs) {
    const std::span<const TRowSpan> spans = AAffected.RowsOf(index);
    cursors.push_back({&Runs.Run(index), spans, upward ? spans.size() - 1 : 0});
    all.First = std::min(all.First, spans.front().First);
    all.Last = std::max(all.Last, spans.back().Last);
  }
  for (int32_t i = 0; i <= all.Last - all.First; ++i) {
    const int32_t row = upward ? all.Last - i : all.First + i;
    for (TCursor& cursor : cursors) {
      if (cursor.At >= cursor.Spans.size()) continue;
      const TRowSpan& span = cursor.Spans[cursor.At];
      if (row < span.First || row > span.Last) continue;
      if (Workbook.GetSheet(cursor.Run->Sheet)->Store().FindRecord(cursor.Run->Col, row)) {
        Interpreter.EvaluateFormulaCell(cursor.Run->Sheet, cursor.Run->Col, row);
        LastCell = TCellId::Of(cursor.Run->Sheet, cursor.Run->Col, row);
      }
      if (row == (upward ? span.First : span.Last)) cursor.At = upward ? cursor.At - 1 : cursor.At + 1;
    }
    if (i % 1024 == 1023) NoteRows(1024 * static_cast<int64_t>(cursors.size()));
  }
}

void TFastOrder::TState::Evaluate(const TAffectedRuns& AAffected, const std::vector<TRunGroup>& AGroups) {
  LastCell = {};
  RowsDone = 0;
  for (const TRunGroup& group : AGroups) {
    if (group.Runs.size() > 1) {
      EvaluateGroup(AAffected, group);
      continue;
    }
    const TDependencyRun& run = Runs.Run(group.Runs.front());
    const std::span<const TRowSpan> spans = AAffected.RowsOf(group.Runs.front());
    for (size_t i = 0; i < spans.size(); ++i)
      EvaluateSpan(run, spans[group.Direction == TDirection::diUp ? spans.size() - 1 - i : i], group.Direction);
  }
  int32_t noted = -1;
  AAffected.ForEachRun([&](uint32_t ARun) {
    const int32_t sheet = Runs.Run(ARun).Sheet;
    if (sheet != noted) Workbook.GetSheet(sheet)->NoteBulkChange();
    noted = sheet;
  });
}

TFastOrder::TFastOrder(TWorkbook& AWorkbook, TInterpreter& AInterpreter, TDependencyRuns& ARuns)
    : FState(new TState{AWorkbook, AInterpreter, ARuns, 0, {}, nullptr, 0, 0, {}}) {}

TFastOrder::~TFastOrder() = default;

TCellId TFastOrder::LastCell() const { return FState->LastCell; }

int64_t TFastOrder::RowsEvaluated() const { return FState->RowsDone; }

void TFastOrder::NoteRebuilt() {
  FState->SheetListVersion = FState->Workbook.SheetListVersion();
  FState->BoundsVersions.clear();
  for (int32_t i = 0; i < FState->Workbook.SheetCount(); ++i)
    FState->BoundsVersions.push_back(FState->Workbook.GetSheet(i)->BoundsVersion());
}

bool TFastOrder::TryNotify(TCellId ACell) {
  TState& state = *FState;
  if (!state.Interpreter.Options().FastOrder || !state.Interpreter.IsIdle() ||
      state.SheetListVersion != state.Workbook.SheetListVersion())
    return false;
  TAffectedRuns affected(state.Runs);
  const uint32_t run = state.Runs.FindRun(ACell.Sheet(), ACell.Col(), ACell.Row());
  const bool spread =
      run == TDependencyRuns::kNone ? affected.AddReaders(ACell) : affected.Add(run, {ACell.Row(), ACell.Row()});
  std::vector<TRunGroup> groups;
  if (!spread || !affected.Order(groups) || !state.MayRun(affected)) return false;
  state.Control = nullptr;
  state.Evaluate(affected, groups);
  return true;
}

bool TFastOrder::TryRecalculateAll(const TWorkControl& AControl) {
  TState& state = *FState;
  if (!state.Interpreter.Options().FastOrder || !state.Interpreter.IsIdle()) return false;
  TAffectedRuns affected(state.Runs);
  state.RowsInAll = 0;
  for (uint32_t run = 0; run < state.Runs.RunLimit(); ++run) {
    const TRowSpan& rows = state.Runs.Run(run).Rows;
    if (!rows.IsEmpty()) state.RowsInAll += rows.Last - rows.First + 1;
  }
  std::vector<TRunGroup> groups;
  if (!affected.AddAll() || !affected.Order(groups) || !state.MayRun(affected)) return false;
  state.Control = &AControl;
  state.Evaluate(affected, groups);
  state.Control = nullptr;
  return true;
}

}  // namespace tessarine::detail
