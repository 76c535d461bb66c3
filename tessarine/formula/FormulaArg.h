#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;
class TTessarineStyleSheet;
class TTessarineRtdHub;
class ILambdaClosure;
class TFormulaArg;

namespace detail {
class TRangeIndexCache;
}

/// A value in the course of an evaluation: a scalar, a rectangle or a closure.
///
/// A rectangle either owns its cells (row by row) or is a view on cells of a sheet that have their results. A view
/// shows the sheet as it is when it is read, so the evaluator makes it an array of its own (Materialize) before
/// anything that could change what it shows. Functions read both alike.
class TESSARINE_API TFormulaArg {
 public:
  bool IsRange = false;
  bool IsLambda = false;
  bool HasOrigin = false;         // came from a reference and knows where it lies
  bool AsTable = false;           // the result is to become a sheet table
  bool AsTableHasHeader = false;  // whose first row is a header
  int32_t RowCount = 0;
  int32_t ColCount = 0;
  int32_t OriginCol = 0;
  int32_t OriginRow = 0;
  int32_t OriginSheetIndex = -1;
  TCellValue Scalar;  // when neither a rectangle nor a closure
  std::shared_ptr<const ILambdaClosure> Lambda;

  TFormulaArg() = default;
  static TFormulaArg FromScalar(TCellValue AValue);
  static TFormulaArg FromError(TCellErrorCode ACode) { return FromScalar(TCellValue::FromError(ACode)); }
  /// ACells row by row, ARows * ACols of them; missing ones are blank.
  static TFormulaArg FromRange(std::vector<TCellValue> ACells, int32_t ARows, int32_t ACols);
  static TFormulaArg FromLambda(std::shared_ptr<const ILambdaClosure> AClosure);
  /// A view on cells of ASheet; the caller has made sure that all its formulas have results and none is being
  /// evaluated. The origin is set to it.
  static TFormulaArg FromView(const TWorksheet& ASheet, int32_t ASheetIndex, int32_t ACol, int32_t ARow, int32_t ARows,
                              int32_t ACols);

  /// Cells of the rectangle; 0 for scalars.
  int64_t CellCount() const { return IsRange ? int64_t{RowCount} * ColCount : 0; }

  /// The scalar; for a rectangle its first cell, or empty when it has none; empty for a closure.
  TCellValue First() const;
  TValueView FirstView() const;

  /// 0-based. Outside a rectangle #REF!; a scalar is itself at any position.
  TCellValue CellAt(int32_t ARow, int32_t ACol) const;

  /// The cell at a row-by-row index inside the rectangle, borrowed. AIndex must be below CellCount().
  TValueView ViewAt(int64_t AIndex) const;
  TValueView ViewAt(int32_t ARow, int32_t ACol) const;

  bool IsView() const { return FSheet != nullptr; }
  const TWorksheet* ViewSheet() const { return FSheet; }
  /// The owned cells; empty for a view.
  const std::vector<TCellValue>& Cells() const;
  /// The cells moved or copied out, blanks of a view among them; the counts stay and the rest reads as blank.
  std::vector<TCellValue> TakeCells();

  /// Makes a view own its cells as they are now. A view of more than 2^26 cells becomes #NUM!.
  void Materialize();

 private:
  std::shared_ptr<std::vector<TCellValue>> FCells;  // shared between copies, never changed once shared
  const TWorksheet* FSheet = nullptr;               // set for a view
};

/// What the library sees of the evaluation around a call.
struct TFormulaContext {
  TWorksheet* Sheet = nullptr;  // null when the index is out of range
  int32_t SheetIndex = -1;
  const TTessarineStyleSheet* StyleSheet = nullptr;
  TWorkbook* Workbook = nullptr;
  int32_t EvalCol = 0;  // the cell entered last, 1-based; 0 when none was
  int32_t EvalRow = 0;
  TTessarineRtdHub* RtdHub = nullptr;
  detail::TRangeIndexCache* Indexes = nullptr;  // null: every lookup scans
};

}  // namespace tessarine
