#include <tessarine/formula/detail/Interpreter.h>

#include <utility>

#include <tessarine/formula/detail/Evaluation.h>

namespace tessarine::detail {

struct TInterpreter::TState {
  explicit TState(TWorkbook& AWorkbook) : Evaluation(AWorkbook) {}

  TEvaluation Evaluation;
};

TInterpreter::TInterpreter(TWorkbook& AWorkbook) : FState(std::make_unique<TState>(AWorkbook)) {}

TInterpreter::~TInterpreter() = default;

void TInterpreter::SetSpillListener(ISpillListener* AListener) { FState->Evaluation.Listener = AListener; }

void TInterpreter::SetRtdHub(TTessarineRtdHub* AHub) { FState->Evaluation.RtdHub = AHub; }

const TWorkControl* TInterpreter::SetControl(const TWorkControl* AControl) {
  return std::exchange(FState->Evaluation.Control, AControl);
}

TEvaluationOptions& TInterpreter::Options() { return FState->Evaluation.Options; }

TCellValue TInterpreter::EvaluateText(std::u16string_view AFormula, int32_t ASheetIndex) {
  return FState->Evaluation.EvaluateText(AFormula, ASheetIndex);
}

TFormulaArg TInterpreter::EvaluateTextAt(std::u16string_view AFormula, int32_t ASheetIndex, int32_t ACol,
                                         int32_t ARow) {
  return FState->Evaluation.EvaluateTextAt(AFormula, ASheetIndex, ACol, ARow);
}

void TInterpreter::EvaluateFormulaCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  if (ASheetIndex >= 0 && ACol >= 1 && ARow >= 1)
    FState->Evaluation.EvaluateFormulaCell(TCellId::Of(ASheetIndex, ACol, ARow));
}

void TInterpreter::ApplySpill(int32_t ASheetIndex, int32_t ACol, int32_t ARow, TFormulaArg AResult) {
  if (ASheetIndex >= 0 && TCellAddress{ACol, ARow}.IsValid())
    FState->Evaluation.ApplySpill(TCellId::Of(ASheetIndex, ACol, ARow), std::move(AResult));
}

void TInterpreter::WriteCircular(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  if (ASheetIndex >= 0) FState->Evaluation.WriteCircular(TCellId::Of(ASheetIndex, ACol, ARow));
}

bool TInterpreter::IsVisiting(TCellId AId) const { return FState->Evaluation.IsVisiting(AId); }

bool TInterpreter::IsIdle() const { return FState->Evaluation.IsIdle(); }

int32_t TInterpreter::EvalCol() const {
  FState->Evaluation.SettleEvalCell();
  return FState->Evaluation.EvalCol;
}

int32_t TInterpreter::EvalRow() const {
  FState->Evaluation.SettleEvalCell();
  return FState->Evaluation.EvalRow;
}

void TInterpreter::SetPendingEvalCell(std::function<TCellId()> AFind) {
  FState->Evaluation.PendingEvalCell = std::move(AFind);
}

void TInterpreter::SettleEvalCell() { FState->Evaluation.SettleEvalCell(); }

void TInterpreter::SetEvalCell(int32_t ACol, int32_t ARow) {
  FState->Evaluation.PendingEvalCell = nullptr;
  FState->Evaluation.EvalCol = ACol;
  FState->Evaluation.EvalRow = ARow;
}

int32_t TInterpreter::ResolveSheetIndex(int32_t ACurrentSheet, std::u16string_view AName) const {
  return FState->Evaluation.ResolveSheetIndex(ACurrentSheet, AName);
}

TInterpreter::TTableArea TInterpreter::ResolveTableColumn(int32_t ACurrentSheet, std::u16string_view ATable,
                                                          std::u16string_view AColumn) const {
  return FState->Evaluation.ResolveTableColumn(ACurrentSheet, ATable, AColumn);
}

void TInterpreter::Reset() { FState->Evaluation.Reset(); }

TRangeIndexCache* TInterpreter::RangeIndexes() { return FState->Evaluation.RangeIndexes(); }

uint64_t TInterpreter::StateStamp() const { return FState->Evaluation.Stamp; }

}  // namespace tessarine::detail
