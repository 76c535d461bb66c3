#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/formula/CellId.h>
#include <tessarine/formula/FormulaArg.h>

namespace tessarine {

class TWorkbook;
struct TWorkControl;

namespace detail {

class TProgram;
class TRangeIndexCache;

/// Told when a spilled block came into being, moved or went away: its readers are to be evaluated.
class ISpillListener {
 public:
  virtual ~ISpillListener() = default;
  virtual void DirtySpillDependents(int32_t ASheetIndex, int32_t ACol, int32_t ARow, int32_t AEndCol,
                                    int32_t AEndRow) = 0;
};

/// Which fast paths are on; all results are the same with any of them off. Tests compare.
struct TEvaluationOptions {
  bool ReusePrograms = true;    // false: every evaluation parses its text anew
  bool RangeViews = true;       // false: every range is read into an array
  bool RangeIndexes = true;     // false: lookups and criteria scan
  bool NumericLambdas = true;   // false: every call of a closure binds its parameters and walks its body
  bool BlockEvaluation = true;  // false: cell by cell
  bool DirectCalls = true;      // false: every call at a root goes through the frame of a reader
  bool FastOrder = true;        // false: every recalculation goes by Kahn's algorithm over cells
  bool NestPulls = true;  // false: a cell that lacks a result always waits for the one it reads, as in deep chains
};

/// Walks compiled formulas against a workbook. Holds the state of the evaluation under way: which cells are being
/// evaluated, the cell entered last, local names. One interpreter serves one workbook.
class TInterpreter {
 public:
  explicit TInterpreter(TWorkbook& AWorkbook);
  ~TInterpreter();

  void SetSpillListener(ISpillListener* AListener);  // may be null; outlives the interpreter
  void SetRtdHub(TTessarineRtdHub* AHub);            // what RTD asks; may be null, outlives the interpreter
  /// What stops evaluations that take long, by ECancelled; may be null. Answers what it was before.
  const TWorkControl* SetControl(const TWorkControl* AControl);
  TEvaluationOptions& Options();

  /// A text in scalar mode, without a cell of its own.
  TCellValue EvaluateText(std::u16string_view AFormula, int32_t ASheetIndex);

  /// A text as the formula of the cell (ACol, ARow) would yield it, rectangle and all, without touching that cell.
  TFormulaArg EvaluateTextAt(std::u16string_view AFormula, int32_t ASheetIndex, int32_t ACol, int32_t ARow);

  /// Evaluates the formula in a cell and stores its result, spilled block included. A cell without a formula only
  /// loses a block that is anchored there.
  void EvaluateFormulaCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow);

  /// Makes a value the result of the formula in a cell: its cached result, the block that it spills, or a sheet table.
  void ApplySpill(int32_t ASheetIndex, int32_t ACol, int32_t ARow, TFormulaArg AResult);

  /// Stores #CIRC! as the cached result of a formula cell; its spilled block stays.
  void WriteCircular(int32_t ASheetIndex, int32_t ACol, int32_t ARow);

  bool IsVisiting(TCellId AId) const;
  bool IsIdle() const;  // no evaluation under way

  /// The cell entered last by EvaluateFormulaCell: what intersections, ROW() and bare [Column] go by. (0, 0) at first.
  int32_t EvalCol() const;
  int32_t EvalRow() const;
  void SetEvalCell(int32_t ACol, int32_t ARow);

  /// Leaves the cell entered last open: AFind is asked for it when a text or a registration comes that goes by it
  /// before another cell is entered.
  void SetPendingEvalCell(std::function<TCellId()> AFind);
  void SettleEvalCell();

  /// -1 when no sheet has that name; an empty name is the current sheet (the active one if that is negative).
  int32_t ResolveSheetIndex(int32_t ACurrentSheet, std::u16string_view AName) const;

  /// The data of a table or of one of its columns; see the evaluator's rules for both names.
  struct TTableArea {
    bool Found = false;
    int32_t SheetIndex = -1;
    TCellRange Range;
  };
  TTableArea ResolveTableColumn(int32_t ACurrentSheet, std::u16string_view ATable, std::u16string_view AColumn) const;

  /// Forgets what is being evaluated (after an exception of a host's handler).
  void Reset();

  /// The indexes over searched ranges; null when lookups are to scan.
  TRangeIndexCache* RangeIndexes();

  /// Raised whenever something was evaluated, imported or bound while an evaluation was under way.
  uint64_t StateStamp() const;

 private:
  struct TState;
  std::unique_ptr<TState> FState;
};

/// Lets the evaluations of a stretch of work stop.
class TControlScope {
 public:
  TControlScope(TInterpreter& AInterpreter, const TWorkControl& AControl)
      : FInterpreter(AInterpreter), FOuter(AInterpreter.SetControl(&AControl)) {}
  ~TControlScope() { FInterpreter.SetControl(FOuter); }
  TControlScope(const TControlScope&) = delete;
  TControlScope& operator=(const TControlScope&) = delete;

 private:
  TInterpreter& FInterpreter;
  const TWorkControl* FOuter;
};

}  // namespace detail
}  // namespace tessarine
