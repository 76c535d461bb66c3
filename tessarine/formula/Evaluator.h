#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/formula/FormulaArg.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;
class TFormulaDependencyGraph;
class TTessarineRtdHub;

namespace detail {
struct TEvaluationOptions;
}

/// Evaluates the formulas of one workbook and keeps their dependencies. The host creates it on the workbook and calls
/// NotifyCellChanged after each edit; nothing is recalculated by itself. Results stand in the cells.
/// Failures are values (#DIV/0!); only work that was cancelled throws.
class TESSARINE_API TFormulaEvaluator {
 public:
  /// AWorkbook outlives the evaluator. The graph is empty at first: after loading call RecalculateAll, or
  /// RebuildAllDependencies to keep the results of a file.
  explicit TFormulaEvaluator(TWorkbook& AWorkbook);
  ~TFormulaEvaluator();
  TFormulaEvaluator(const TFormulaEvaluator&) = delete;
  TFormulaEvaluator& operator=(const TFormulaEvaluator&) = delete;

  /// The scalar value of a formula text that stands in no cell; a negative index means the active sheet.
  /// Stores nothing of its own, but cells without a result that it reads are evaluated and keep theirs.
  TCellValue Evaluate(TTextArg AFormula, int32_t ASheetIndex = -1);

  /// What the text would yield as the formula of a cell, a rectangle where it would spill. With a stop token in
  /// AControl the call may throw ECancelled; cells that it has evaluated on the way keep their results.
  TFormulaArg EvaluateAt(TTextArg AFormula, int32_t ASheetIndex, int32_t ACol, int32_t ARow,
                         const TWorkControl& AControl = {});

  /// Evaluates a formula cell anew and answers its result; any other cell's stored value. #REF! for no such sheet.
  TCellValue EvaluateCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow);

  /// Rebuilds the edges of one cell from its present content.
  void RegisterCellFormula(int32_t ASheetIndex, int32_t ACol, int32_t ARow);

  /// After any change of one cell: evaluates it and all that depends on it, precedents first.
  void NotifyCellChanged(int32_t ASheetIndex, int32_t ACol, int32_t ARow);

  void RebuildAllDependencies();

  /// Rebuilds the graph and evaluates every formula of the workbook. With a stop token in AControl the call may throw
  /// ECancelled; all results, blocks and bounds are then as they were before.
  void RecalculateAll(const TWorkControl& AControl = {});

  /// For a sheet of this workbook: the whole workbook is recalculated. Null or a foreign sheet: nothing.
  void RecalculateSheet(const TWorksheet* ASheet);

  /// A source of real-time values reports that a topic, or any of them, has changed: the cells that show it are
  /// evaluated, and all that depends on them. On the evaluator's thread only.
  void NotifyRtdUpdate(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics);
  void NotifyRtdUpdateAll();

  /// Empties the graph and forgets all real-time subscriptions; results stay.
  void Reset();

  TFormulaDependencyGraph& Graph();
  TTessarineRtdHub& RtdHub();

  /// Switches of fast paths, for tests and measurements.
  detail::TEvaluationOptions& Options();

 private:
  struct TState;
  std::unique_ptr<TState> FState;
};

}  // namespace tessarine
