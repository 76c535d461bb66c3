#pragma once

#include <cstdint>
#include <optional>

#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/detail/DependencyRuns.h>
#include <tessarine/formula/detail/Program.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;

namespace detail {

class TCellStore;
class TInterpreter;
class TRangeIndexCache;
struct TFormulaRecord;

/// An exact lookup filled down: VLOOKUP(D1,A$1:B$9,2,FALSE), MATCH(D1,A$1:A$9,0) or XLOOKUP(D1,A$1:A$9,B$1:B$9). The
/// key may move with the row, what is searched and answered from stands still, so that all rows ask one index.
///
/// Equal to the call of the function because it asks the same index with the same key and takes the cell at the place
/// that it answers. The object lives for one pass, in which nothing of the ranges changes. Turned away: ranges too
/// small for an index, over whole lines, or with a formula that lacks its result; sheets with spilled blocks.
class TLookupBlock {
 public:
  /// Nothing for any other formula.
  static std::optional<TLookupBlock> Compile(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                             TInterpreter& AInterpreter, int32_t ASheet, int32_t ACol);

  /// Evaluates the formulas in rows of one column, which all have the compiled program and do not read one another,
  /// and stores their results. Answers how many rows from the first were done: a key that lacks a result ends it.
  int32_t EvaluateRows(TRowSpan ARows);

 private:
  TLookupBlock() = default;
  bool ReadKey(int32_t ARow, TValueView& AKey) const;
  int32_t FindPlaces(int32_t ARow, int32_t ACount, int64_t* APlaces) const;
  void StoreResult(TFormulaRecord& ARecord, int64_t APlace) const;

  TRangeIndexCache* FIndexes = nullptr;
  TFormulaArg FSearched;  // views
  TFormulaArg FResults;   // no rectangle: the answer is the place
  const TCellStore* FKeys = nullptr;
  int32_t FKeyCol = 0;
  int32_t FKeyRow = 0;  // a distance when relative
  bool FKeyRowRelative = false;
  TCellStore* FTarget = nullptr;
  int32_t FCol = 0;
};

}  // namespace detail
}  // namespace tessarine
