#include <tessarine/formula/library/detail/ArrayBodies.h>

#include <algorithm>
#include <numeric>

namespace tessarine::detail {

namespace {

/// A part of one axis: where it starts, 0-based, and how much of it there is.
struct TSlice {
  int64_t First;
  int64_t Count;
};

/// ACount from the start, or for a negative one from the end, as far as there is.
TSlice TakeSlice(int64_t ALength, int64_t ACount) {
  const int64_t count = ACount < 0 ? (ACount < -ALength ? ALength : -ACount) : std::min(ACount, ALength);
  return {ACount < 0 ? ALength - count : 0, count};
}

/// What is left without them.
TSlice DropSlice(int64_t ALength, int64_t ACount) {
  const TSlice dropped = TakeSlice(ALength, ACount);
  return {ACount < 0 ? 0 : dropped.Count, ALength - dropped.Count};
}

TFormulaArg PartOf(const TFormulaArg& ARectangle, TSlice ARows, TSlice ACols) {
  const auto rows = static_cast<int32_t>(ARows.Count);
  const auto cols = static_cast<int32_t>(ACols.Count);
  if (rows < 1 || cols < 1) return ErrorArg(ceValue);
  if (!FitsArranged(rows, cols)) return ErrorArg(ceNum);
  const auto firstRow = static_cast<int32_t>(ARows.First);
  const auto firstCol = static_cast<int32_t>(ACols.First);
  if (ARectangle.IsView()) {
    const TFormulaArg part =
        TFormulaArg::FromView(*ARectangle.ViewSheet(), ARectangle.OriginSheetIndex, ARectangle.OriginCol + firstCol,
                              ARectangle.OriginRow + firstRow, rows, cols);
    return TFormulaArg::FromRange(*AllCells(part), rows, cols);
  }
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(int64_t{rows} * cols));
  for (int32_t row = firstRow; row < firstRow + rows; ++row) {
    const auto from = ARectangle.Cells().begin() + int64_t{row} * ARectangle.ColCount + firstCol;
    cells.insert(cells.end(), from, from + cols);
  }
  return TFormulaArg::FromRange(std::move(cells), rows, cols);
}

/// A rectangle of one value into which others are copied.
class TCanvas {
 public:
  /// The size fits.
  TCanvas(int64_t ARows, int64_t ACols, const TCellValue& AFill)
      : FRows(static_cast<int32_t>(ARows)),
        FCols(static_cast<int32_t>(ACols)),
        FCells(static_cast<size_t>(ARows * ACols), AFill) {}

  void Paste(const TFormulaArg& APart, int64_t ARow, int64_t ACol) {
    for (int32_t row = 0; row < APart.RowCount; ++row) {
      TCellValue* cell = FCells.data() + (ARow + row) * FCols + ACol;
      for (int32_t col = 0; col < APart.ColCount; ++col) *cell++ = TCellValue::FromView(APart.ViewAt(row, col));
    }
  }

  TFormulaArg Take() { return TFormulaArg::FromRange(std::move(FCells), FRows, FCols); }

 private:
  int32_t FRows;
  int32_t FCols;
  std::vector<TCellValue> FCells;
};

/// What the sheet holds already does not count as generated; what formulas made and the pads do.
TFormulaArg Stack(TFormulaArgs AArgs, bool ASideBySide) {
  if (AArgs.empty()) return ErrorArg(ceValue);
  int64_t rows = 0;
  int64_t cols = 0;
  int64_t fromSheet = 0;
  for (const TFormulaArg& arg : AArgs) {
    const int64_t partRows = arg.IsRange ? arg.RowCount : 1;
    const int64_t partCols = arg.IsRange ? arg.ColCount : 1;
    rows = ASideBySide ? std::max(rows, partRows) : rows + partRows;
    cols = ASideBySide ? cols + partCols : std::max(cols, partCols);
    if (arg.HasOrigin) fromSheet += partRows * partCols;
  }
  if (!FitsArranged(rows, cols) || rows * cols - fromSheet > kMaxGeneratedCells) return ErrorArg(ceNum);
  TCanvas canvas(rows, cols, NotAvailable());
  int64_t at = 0;
  for (const TFormulaArg& arg : AArgs) {
    const TAsRectangle part(arg);
    canvas.Paste(*part, ASideBySide ? 0 : at, ASideBySide ? at : 0);
    at += ASideBySide ? part->ColCount : part->RowCount;
  }
  return canvas.Take();
}

/// The cells row by row in another shape, pads behind them.
TFormulaArg Reshape(const TFormulaArg& AVector, int64_t ARows, int64_t ACols, const TCellValue& APad) {
  auto cells = AllCells(AVector);
  if (!cells || !FitsArranged(ARows, ACols)) return ErrorArg(ceNum);
  cells->resize(static_cast<size_t>(ARows * ACols), APad);
  return TFormulaArg::FromRange(std::move(*cells), static_cast<int32_t>(ARows), static_cast<int32_t>(ACols));
}

/// WRAPROWS and WRAPCOLS: they differ only in which side of the result has the given length.
TFormulaArg Wrap(TFormulaArgs AArgs, bool ALengthOfRows) {
  int64_t length = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[1], length) || length < 1) return ErrorArg(ceValue);
  const TAsRectangle vector(AArgs[0]);
  const int64_t count = vector->CellCount();
  const int64_t others = count / length + (count % length != 0 ? 1 : 0);
  const int64_t rows = ALengthOfRows ? others : length;
  const int64_t cols = ALengthOfRows ? length : others;
  if (!MayGenerate(rows, cols, count)) return ErrorArg(ceNum);
  return Reshape(*vector, rows, cols, AArgs.size() > 2 ? AArgs[2].First() : TCellValue());
}

}  // namespace

TFormulaArg CallTranspose(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  if (!FitsArranged(array->RowCount, array->ColCount)) return ErrorArg(ceNum);
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(array->CellCount()));
  for (int32_t col = 0; col < array->ColCount; ++col) {
    for (int32_t row = 0; row < array->RowCount; ++row) cells.push_back(TCellValue::FromView(array->ViewAt(row, col)));
  }
  return TFormulaArg::FromRange(std::move(cells), array->ColCount, array->RowCount);
}

TFormulaArg CallHStack(TFormulaArgs AArgs, const TFormulaContext&) { return Stack(AArgs, true); }
TFormulaArg CallVStack(TFormulaArgs AArgs, const TFormulaContext&) { return Stack(AArgs, false); }

TFormulaArg CallToRow(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  return Reshape(*array, 1, array->CellCount(), {});
}

TFormulaArg CallToCol(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  return Reshape(*array, array->CellCount(), 1, {});
}

TFormulaArg CallTake(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t rows = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[1], rows) || rows == 0) return ErrorArg(ceValue);
  const int64_t cols = IntegerOr(AArgs, 2, 0);
  const TAsRectangle array(AArgs[0]);
  return PartOf(*array, TakeSlice(array->RowCount, rows),
                TakeSlice(array->ColCount, cols == 0 ? array->ColCount : cols));
}

TFormulaArg CallDrop(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t rows = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[1], rows)) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  return PartOf(*array, DropSlice(array->RowCount, rows), DropSlice(array->ColCount, IntegerOr(AArgs, 2, 0)));
}

TFormulaArg CallExpand(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t rows = 0;
  int64_t cols = 0;
  if (AArgs.size() < 3 || !ArgAsInt64(AArgs[1], rows) || !ArgAsInt64(AArgs[2], cols)) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  if (rows < array->RowCount || cols < array->ColCount) return ErrorArg(ceValue);
  if (!MayGenerate(rows, cols, array->CellCount())) return ErrorArg(ceNum);
  TCanvas canvas(rows, cols, AArgs.size() > 3 ? AArgs[3].First() : TCellValue());
  canvas.Paste(*array, 0, 0);
  return canvas.Take();
}

TFormulaArg CallWrapRows(TFormulaArgs AArgs, const TFormulaContext&) { return Wrap(AArgs, true); }
TFormulaArg CallWrapCols(TFormulaArgs AArgs, const TFormulaContext&) { return Wrap(AArgs, false); }

}  // namespace tessarine::detail
