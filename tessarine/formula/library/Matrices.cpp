#include <tessarine/formula/FunctionTable.h>

#include <optional>
#include <utility>
#include <vector>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/Matrix.h>

namespace tessarine {

namespace {

using namespace detail;

// The functions that make matrices answer their first cell.

int32_t RowsOf(const TFormulaArg& AArg) { return AArg.IsRange ? AArg.RowCount : 1; }
int32_t ColsOf(const TFormulaArg& AArg) { return AArg.IsRange ? AArg.ColCount : 1; }

/// Whether every cell is a number, and there is one; blanks and texts that read as numbers are none.
bool IsAllNumbers(const TFormulaArg& AArg) {
  int64_t count = 0;
  ForEachNumber(AArg, [&](double) { ++count; });
  return count > 0 && count == CountValues({&AArg, 1});
}

double NumberAt(const TFormulaArg& AArg, int32_t ARow, int32_t ACol) {
  return AArg.IsRange ? AArg.ViewAt(ARow, ACol).Number : AArg.Scalar.Number;
}

/// Reads a square matrix of numbers: ceValue for any other argument, ceNum above the largest order.
TCellErrorCode ReadSquare(TFormulaArgs AArgs, TSquareMatrix& AMatrix) {
  if (AArgs.empty() || AArgs[0].IsLambda || RowsOf(AArgs[0]) != ColsOf(AArgs[0])) return ceValue;
  if (RowsOf(AArgs[0]) > kMaxMatrixOrder) return ceNum;
  if (!IsAllNumbers(AArgs[0])) return ceValue;
  AMatrix.Order = RowsOf(AArgs[0]);
  ForEachNumber(AArgs[0], [&](double ANumber) { AMatrix.Cells.push_back(ANumber); });
  return ceNone;
}

TCellValue CallDeterminant(TFormulaArgs AArgs, const TFormulaContext&) {
  TSquareMatrix matrix;
  const TCellErrorCode error = ReadSquare(AArgs, matrix);
  return error == ceNone ? NumberOrError(Determinant(matrix)) : TCellValue::FromError(error);
}

TCellValue CallInverse(TFormulaArgs AArgs, const TFormulaContext&) {
  TSquareMatrix matrix;
  const TCellErrorCode error = ReadSquare(AArgs, matrix);
  if (error != ceNone) return TCellValue::FromError(error);
  std::vector<double> unit(static_cast<size_t>(matrix.Order));
  unit[0] = 1;
  const std::optional<std::vector<double>> column = SolveLinear(matrix, std::move(unit));
  return column ? NumberOrError(column->front()) : NumError();
}

TCellValue CallMatrixProduct(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2 || ColsOf(AArgs[0]) != RowsOf(AArgs[1])) return ValueError();
  if (int64_t{RowsOf(AArgs[0])} * ColsOf(AArgs[1]) > kMaxGeneratedCells) return NumError();
  if (!IsAllNumbers(AArgs[0]) || !IsAllNumbers(AArgs[1])) return ValueError();
  double sum = 0;
  for (int32_t i = 0; i < ColsOf(AArgs[0]); ++i) sum += NumberAt(AArgs[0], 0, i) * NumberAt(AArgs[1], i, 0);
  return NumberOrError(sum);
}

TCellValue CallUnitMatrix(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t order = 0;
  if (AArgs.empty() || !ArgAsInt64(AArgs[0], order) || order < 1) return ValueError();
  return order > kMaxMatrixOrder ? NumError() : TCellValue::FromNumber(1);
}

// clang-format off
constexpr TFunctionDef kMatrixFunctions[] = {
    {.Name = u"MDETERM", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallDeterminant,
     .Arguments = u"matrix", .Description = u"Determinant of a square matrix."},
    {.Name = u"MINVERSE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallInverse,
     .Arguments = u"matrix", .Description = u"First cell of the inverse of a square matrix."},
    {.Name = u"MMULT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallMatrixProduct,
     .Arguments = u"matrix1, matrix2", .Description = u"First cell of the product of two matrices."},
    {.Name = u"MUNIT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallUnitMatrix,
     .Arguments = u"order", .Description = u"First cell, 1, of a unit matrix."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> MatrixFunctions() { return kMatrixFunctions; }

}  // namespace tessarine
