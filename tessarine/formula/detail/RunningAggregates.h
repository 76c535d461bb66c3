#pragma once

#include <cstdint>
#include <optional>

#include <tessarine/formula/detail/DependencyRuns.h>
#include <tessarine/formula/detail/Program.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;

namespace detail {

class TInterpreter;

/// SUM(A$1:A1) filled down, and AVERAGE, COUNT, MIN, MAX likewise: each row's range is the one before with the next
/// row added, so one pass carries the state from row to row. The numbers are taken in the order of a single
/// evaluation (row by row from the top, one accumulator), so every sum has the same bits.
/// The state is this object's own and lives for one pass, in which nothing of the ranges may change but the rows of
/// the pass themselves, each before the rows that read it.
class TRunningAggregate {
 public:
  /// Nothing for any other formula.
  static std::optional<TRunningAggregate> Compile(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                                  const TInterpreter& AInterpreter, int32_t ASheet, int32_t ACol);

  /// Evaluates the rows downward and stores their results. Answers how many rows from the first were done: a cell in
  /// the way that lacks a result or is being evaluated, or a sum that overflows, ends it.
  int32_t EvaluateDown(TRowSpan ARows);

 private:
  enum class TKind : uint8_t { rkSum, rkAverage, rkCount, rkMin, rkMax };

  TRunningAggregate() = default;
  bool Take(int32_t ARow);
  bool Result(double& ANumber) const;

  TKind FKind = TKind::rkSum;
  const TWorksheet* FSource = nullptr;
  TWorksheet* FTarget = nullptr;
  int32_t FTargetCol = 0;
  int32_t FCol = 0;
  int32_t FCol2 = 0;
  int32_t FTop = 0;
  int32_t FBottomDistance = 0;
  double FSum = 0;
  int64_t FCount = 0;
  double FMin = 0;
  double FMax = 0;
};

}  // namespace detail
}  // namespace tessarine
