#pragma once

#include <cstdint>
#include <memory>

#include <tessarine/formula/CellId.h>
#include <tessarine/formula/detail/DependencyRuns.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {

class TWorkbook;

namespace detail {

class TInterpreter;

/// Recalculates by runs instead of cell by cell: what an edit reaches is found as spans of runs, runs are ordered
/// among each other, and a span is evaluated as a block where its formula is plain arithmetic.
///
/// Both operations first prove that no difference to the order of single cells can be seen, and answer false, having
/// changed nothing, where they cannot:
///  - every affected formula is registered as it reads now and yields a scalar that depends on tracked cells only;
///  - no evaluation can pull another cell: whatever lacks a result is itself affected, and comes in its turn;
///  - runs that read each other or themselves do so in one direction, so that no cell lies on a cycle;
///  - nobody listens to single changes.
/// Every value is then a function of values that stand before it in any order of precedents first.
class TFastOrder {
 public:
  TFastOrder(TWorkbook& AWorkbook, TInterpreter& AInterpreter, TDependencyRuns& ARuns);
  ~TFastOrder();

  /// Evaluates the formula in a cell, if there is one, and all that depends on it.
  bool TryNotify(TCellId ACell);

  /// Evaluates all formulas; the runs have just been rebuilt. Throws ECancelled when stopped.
  bool TryRecalculateAll(const TWorkControl& AControl);

  /// The cell evaluated last by the latest successful try; (0, 0) on sheet 0 when it evaluated none.
  TCellId LastCell() const;
  int64_t RowsEvaluated() const;

  /// The runs now agree with sheets, tables and bounds as they are.
  void NoteRebuilt();

 private:
  struct TState;
  std::unique_ptr<TState> FState;
};

}  // namespace detail
}  // namespace tessarine
