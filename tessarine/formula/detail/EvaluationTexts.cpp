#include <tessarine/formula/detail/Evaluation.h>

#include <utility>

#include <tessarine/formula/detail/EvaluationStack.h>
#include <tessarine/formula/library/detail/RangeIndex.h>

namespace tessarine::detail {

TEvaluation::TActivity::TActivity(TEvaluation& AOwner)
    : FOwner(AOwner),
      FPulls(AOwner.FPulls.size()),
      FReplayNext(std::exchange(AOwner.FReplayNext, 0)),
      FReplayEnd(std::exchange(AOwner.FReplayEnd, 0)),
      FStackLimit(AOwner.FStackLimit),
      FCanSuspend(std::exchange(AOwner.FCanSuspend, false)),
      FAnswers(AOwner.FActive == 0) {
  if (AOwner.FActive++ == 0) {
    AOwner.FStackBase = StackAddress();
    AOwner.FStackLimit = kPullStack;
    AOwner.FNameRepeats = 0;
    AOwner.FRepeatLevel = 0;
  }
}

TEvaluation::TActivity::~TActivity() {
  FOwner.CutPulls(FPulls);
  FOwner.FReplayNext = FReplayNext;
  FOwner.FReplayEnd = FReplayEnd;
  FOwner.FStackLimit = FStackLimit;
  FOwner.FCanSuspend = FCanSuspend;
  if (--FOwner.FActive > 0) return;
  if (!FOwner.FLocals.IsEmpty()) FOwner.FLocals.Clear();
  FOwner.ReleaseDeferred();
}

TEvaluation::TEvaluation(TWorkbook& AWorkbook) : FWorkbook(AWorkbook), FIndexes(std::make_unique<TRangeIndexCache>()) {}

TEvaluation::~TEvaluation() = default;

/// The compiled form of a text; the texts that came last are kept.
std::shared_ptr<const TProgram> TEvaluation::ProgramOfText(std::u16string_view AFormula) {
  constexpr size_t kMostTexts = 256;
  constexpr size_t kLongestText = 4096;
  if (!Options.ReusePrograms || AFormula.size() > kLongestText) return CompileText(AFormula);
  const auto known = FTexts.find(AFormula);
  if (known != FTexts.end()) return known->second;
  if (FTexts.size() >= kMostTexts) FTexts.clear();
  std::shared_ptr<const TProgram> program = CompileText(AFormula);
  FTexts.emplace(std::u16string(AFormula), program);
  return program;
}

TCellValue TEvaluation::EvaluateText(std::u16string_view AFormula, int32_t ASheetIndex) {
  const TActivity activity(*this);
  FArgs.MaterializeViews();
  const std::shared_ptr<const TProgram> program = ProgramOfText(AFormula);
  const int32_t sheet = ASheetIndex < 0 ? FWorkbook.ActiveSheetIndex() : ASheetIndex;
  if (program->ReadsPosition) SettleEvalCell();
  return EvalNode(TProgramFrame{*program, 0, 0, sheet}, program->Root());
}

void TEvaluation::SettleEvalCell() {
  if (!PendingEvalCell) return;
  const TCellId id = std::exchange(PendingEvalCell, nullptr)();
  EvalCol = id.Col();
  EvalRow = id.Row();
}

TFormulaArg TEvaluation::EvaluateTextAt(std::u16string_view AFormula, int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  const TActivity activity(*this);
  FArgs.MaterializeViews();
  const std::shared_ptr<const TProgram> program = ProgramOfText(AFormula);
  const int32_t sheet = ASheetIndex < 0 ? FWorkbook.ActiveSheetIndex() : ASheetIndex;
  PendingEvalCell = nullptr;
  EvalCol = ACol;
  EvalRow = ARow;
  TFormulaArg result = EvalNodeArg(TProgramFrame{*program, 0, 0, sheet}, program->Root());
  if (result.IsLambda) return TFormulaArg::FromError(ceValue);
  result.Materialize();
  return result;
}

void TEvaluation::EvaluateFormulaCell(TCellId AId) {
  if (TryDirectCall(AId)) return;
  const TActivity activity(*this);
  FArgs.MaterializeViews();
  if (StackUsed() > FStackLimit) {
    RunDeep(AId);
  } else {
    RunNative(AId);
  }
}

void TEvaluation::WriteCircular(TCellId AId) {
  if (TWorksheet* sheet = SheetAt(AId.Sheet()))
    sheet->StoreCachedResult({AId.Col(), AId.Row()}, TCellValue::FromError(ceCirc));
}

bool TEvaluation::IsVisiting(TCellId AId) {
  const TFormulaRecord* record = RecordOf(AId);
  return record && record->IsVisiting();
}

void TEvaluation::Reset() {
  while (!FReaders.empty()) Leave();
  ReleaseDeferred();
  FVisitingNames.clear();
  FLocals.Clear();
}

}  // namespace tessarine::detail
