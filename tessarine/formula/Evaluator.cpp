#include <tessarine/formula/Evaluator.h>

#include <optional>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/DependencyGraph.h>
#include <tessarine/formula/RtdHub.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/detail/Recalculation.h>

namespace tessarine {

struct TFormulaEvaluator::TState {
  explicit TState(TWorkbook& AWorkbook)
      : Workbook(AWorkbook), Interpreter(AWorkbook), Recalculation(AWorkbook, Interpreter, Graph) {
    Interpreter.SetSpillListener(&Recalculation);
    Interpreter.SetRtdHub(&RtdHub);
    RtdHub.SetOnDirty(
        [this](const TRtdCellRef& ACell) { Recalculation.NotifyCellChanged(ACell.SheetIndex, ACell.Col, ACell.Row); });
  }

  /// Real-time notifications that came while an evaluation asked its source are carried out behind it.
  void DeliverRtd() {
    if (RtdHub.HasPending() && Interpreter.IsIdle()) RtdHub.DeliverPending();
  }

  TWorkbook& Workbook;
  TFormulaDependencyGraph Graph;
  TTessarineRtdHub RtdHub;
  detail::TInterpreter Interpreter;
  detail::TRecalculation Recalculation;
};

TFormulaEvaluator::TFormulaEvaluator(TWorkbook& AWorkbook) : FState(std::make_unique<TState>(AWorkbook)) {}

TFormulaEvaluator::~TFormulaEvaluator() = default;

TCellValue TFormulaEvaluator::Evaluate(TTextArg AFormula, int32_t ASheetIndex) {
  TCellValue value = FState->Interpreter.EvaluateText(AFormula.View(), ASheetIndex);
  FState->DeliverRtd();
  return value;
}

TFormulaArg TFormulaEvaluator::EvaluateAt(TTextArg AFormula, int32_t ASheetIndex, int32_t ACol, int32_t ARow,
                                          const TWorkControl& AControl) {
  std::optional<detail::TControlScope> scope;  // without a token of its own it stops with the work around it
  if (AControl.Stop.stop_possible()) scope.emplace(FState->Interpreter, AControl);
  TFormulaArg value = FState->Interpreter.EvaluateTextAt(AFormula.View(), ASheetIndex, ACol, ARow);
  FState->DeliverRtd();
  return value;
}

TCellValue TFormulaEvaluator::EvaluateCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  const TWorksheet* sheet = FState->Workbook.GetSheet(ASheetIndex);
  if (!sheet) return TCellValue::FromError(ceRef);
  const TCell cell = sheet->GetCellAt(ACol, ARow);
  if (cell.Value.Kind != cvkFormula) return cell.Value;
  FState->Interpreter.EvaluateFormulaCell(ASheetIndex, ACol, ARow);
  FState->DeliverRtd();
  sheet = FState->Workbook.GetSheet(ASheetIndex);
  if (!sheet) return {};
  const TCell result = sheet->GetCellAt(ACol, ARow);
  return result.HasCachedValue ? result.CachedValue : TCellValue();
}

void TFormulaEvaluator::RegisterCellFormula(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  FState->Recalculation.RegisterCellFormula(ASheetIndex, ACol, ARow);
}

void TFormulaEvaluator::NotifyCellChanged(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  FState->Recalculation.NotifyCellChanged(ASheetIndex, ACol, ARow);
  FState->DeliverRtd();
}

void TFormulaEvaluator::RebuildAllDependencies() { FState->Recalculation.RebuildAllDependencies(); }

void TFormulaEvaluator::RecalculateAll(const TWorkControl& AControl) {
  FState->Recalculation.RecalculateAll(AControl);
  FState->DeliverRtd();
}

void TFormulaEvaluator::RecalculateSheet(const TWorksheet* ASheet) {
  if (FState->Workbook.IndexOfSheet(ASheet) < 0) return;
  RebuildAllDependencies();
  RecalculateAll();
}

void TFormulaEvaluator::NotifyRtdUpdate(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics) {
  FState->RtdHub.NotifyUpdate(AProgId, AServer, ATopics);
}

void TFormulaEvaluator::NotifyRtdUpdateAll() { FState->RtdHub.NotifyUpdateAll(); }

void TFormulaEvaluator::Reset() {
  FState->Interpreter.Reset();
  FState->Recalculation.Reset();
  FState->RtdHub.ClearSubscriptions();
}

TFormulaDependencyGraph& TFormulaEvaluator::Graph() { return FState->Graph; }

TTessarineRtdHub& TFormulaEvaluator::RtdHub() { return FState->RtdHub; }

detail::TEvaluationOptions& TFormulaEvaluator::Options() { return FState->Interpreter.Options(); }

}  // namespace tessarine
