#include <tessarine/formula/Evaluator.h>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/DependencyGraph.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/detail/Recalculation.h>

namespace tessarine {

struct TFormulaEvaluator::TState {
  explicit TState(TWorkbook& AWorkbook)
      : Workbook(AWorkbook), Interpreter(AWorkbook), Recalculation(AWorkbook, Interpreter, Graph) {
    Interpreter.SetSpillListener(&Recalculation);
  }

  TWorkbook& Workbook;
  TFormulaDependencyGraph Graph;
  detail::TInterpreter Interpreter;
  detail::TRecalculation Recalculation;
};

TFormulaEvaluator::TFormulaEvaluator(TWorkbook& AWorkbook) : FState(std::make_unique<TState>(AWorkbook)) {}

TFormulaEvaluator::~TFormulaEvaluator() = default;

TCellValue TFormulaEvaluator::Evaluate(TTextArg AFormula, int32_t ASheetIndex) {
  return FState->Interpreter.EvaluateText(AFormula.View(), ASheetIndex);
}

TFormulaArg TFormulaEvaluator::EvaluateAt(TTextArg AFormula, int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  return FState->Interpreter.EvaluateTextAt(AFormula.View(), ASheetIndex, ACol, ARow);
}

TCellValue TFormulaEvaluator::EvaluateCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  const TWorksheet* sheet = FState->Workbook.GetSheet(ASheetIndex);
  if (!sheet) return TCellValue::FromError(ceRef);
  const TCell cell = sheet->GetCellAt(ACol, ARow);
  if (cell.Value.Kind != cvkFormula) return cell.Value;
  FState->Interpreter.EvaluateFormulaCell(ASheetIndex, ACol, ARow);
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
}

void TFormulaEvaluator::RebuildAllDependencies() { FState->Recalculation.RebuildAllDependencies(); }

void TFormulaEvaluator::RecalculateAll(const TWorkControl& AControl) { FState->Recalculation.RecalculateAll(AControl); }

void TFormulaEvaluator::RecalculateSheet(const TWorksheet* ASheet) {
  if (FState->Workbook.IndexOfSheet(ASheet) < 0) return;
  RebuildAllDependencies();
  RecalculateAll();
}

void TFormulaEvaluator::Reset() {
  FState->Interpreter.Reset();
  FState->Recalculation.Reset();
}

TFormulaDependencyGraph& TFormulaEvaluator::Graph() { return FState->Graph; }

detail::TEvaluationOptions& TFormulaEvaluator::Options() { return FState->Interpreter.Options(); }

}  // namespace tessarine
