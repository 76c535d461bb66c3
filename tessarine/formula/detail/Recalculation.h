#pragma once

#include <cstdint>
#include <memory>

#include <tessarine/formula/DependencyGraph.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/platform/Progress.h>

namespace tessarine::detail {

/// Decides what is evaluated after a change and in which order, over the graph and an interpreter.
class TRecalculation final : public ISpillListener {
 public:
  /// All three outlive the recalculation.
  TRecalculation(TWorkbook& AWorkbook, TInterpreter& AInterpreter, TFormulaDependencyGraph& AGraph);
  ~TRecalculation() override;

  void RegisterCellFormula(int32_t ASheetIndex, int32_t ACol, int32_t ARow);
  void NotifyCellChanged(int32_t ASheetIndex, int32_t ACol, int32_t ARow);
  void RebuildAllDependencies();
  void RecalculateAll(const TWorkControl& AControl);
  void Reset();

  void DirtySpillDependents(int32_t ASheetIndex, int32_t ACol, int32_t ARow, int32_t AEndCol, int32_t AEndRow) override;

 private:
  struct TState;
  std::unique_ptr<TState> FState;
};

}  // namespace tessarine::detail
