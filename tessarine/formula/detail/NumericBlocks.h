#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <tessarine/formula/detail/DependencyRuns.h>
#include <tessarine/formula/detail/Program.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;

namespace detail {

class TInterpreter;
class TCellStore;

/// A formula of plain arithmetic (+ - * / and signs over numbers and single cells) as steps over columns of numbers.
///
/// Equal to the walk of the tree by construction: the same operations in the same order, each result through the same
/// test (not finite: given up) and the same loss of a negative zero. Any operand that is no number or blank (and
/// blanks where blocks are spilled), a division by zero, a result that is not finite: the rows at hand are given up,
/// and the caller evaluates them one by one.
class TNumericBlock {
 public:
  /// Nothing for a formula that is no plain arithmetic or names a sheet that does not exist.
  static std::optional<TNumericBlock> Compile(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                              const TInterpreter& AInterpreter, int32_t ASheet, int32_t ACol);

  /// Evaluates the formulas in rows of one column, which all have the compiled program and do not read one another,
  /// and stores their results. Answers how many rows from the first were done.
  int32_t EvaluateRows(TRowSpan ARows);

  /// The same for rows that read rows above them (or below, with AUpward), one after the other in that direction.
  /// Answers how many rows were done, counted from the end at which it started.
  int32_t EvaluateChain(TRowSpan ARows, bool AUpward);

  bool ReadsColumn(int32_t ASheet, int32_t ACol) const;

 private:
  enum class TStep : uint8_t { stConstant, stCell, stAdd, stSubtract, stMultiply, stDivide, stNegate };
  struct TInstruction {
    TStep Step;
    uint32_t Operand;  // index of the constant or cell
  };
  struct TOperand {
    int32_t Sheet;
    int32_t Col;
    int32_t Row;  // a distance when relative
    bool RowRelative;
    const TWorksheet* Source;
    // Where the last single read happened, for chains.
    int32_t TileIndex = -1;
    const struct TTile* Tile = nullptr;
  };

  TNumericBlock() = default;
  bool LoadLanes(const TOperand& AOperand, int32_t ARow, int32_t ACount, double* ALanes) const;
  static bool LoadOne(TOperand& AOperand, int32_t ARow, double& ANumber);
  bool Run(int32_t ARow, int32_t ACount, double* AStack);
  bool RunOne(int32_t ARow, double* AStack);

  std::vector<TInstruction> FSteps;
  std::vector<double> FConstants;
  std::vector<TOperand> FOperands;
  size_t FDepth = 0;
  TWorksheet* FTarget = nullptr;
  int32_t FCol = 0;
  std::vector<double> FStack;
};

}  // namespace detail
}  // namespace tessarine
