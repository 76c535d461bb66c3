#include <tessarine/formula/FormulaArg.h>

#include <utility>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine {

namespace {

/// A view of more cells than this is not copied: 1.5 GB of values would be the least it takes.
constexpr int64_t kMaxOwnedCells = int64_t{1} << 26;

std::vector<TCellValue> CopyCells(const TFormulaArg& AView) {
  std::vector<TCellValue> cells(static_cast<size_t>(AView.CellCount()));
  detail::WalkViewValues(AView, [&](std::span<const detail::TIndexedValue> AValues) {
    for (const detail::TIndexedValue& item : AValues) {
      cells[static_cast<size_t>(item.Index)] = TCellValue::FromView(item.Value);
    }
    return true;
  });
  return cells;
}

}  // namespace

TFormulaArg TFormulaArg::FromScalar(TCellValue AValue) {
  TFormulaArg arg;
  arg.Scalar = std::move(AValue);
  return arg;
}

TFormulaArg TFormulaArg::FromRange(std::vector<TCellValue> ACells, int32_t ARows, int32_t ACols) {
  TFormulaArg arg;
  arg.IsRange = true;
  arg.RowCount = ARows > 0 ? ARows : 0;
  arg.ColCount = ACols > 0 ? ACols : 0;
  // Cells that are missing would be read out of bounds: they are blank. A shape far beyond its cells is no shape.
  if (static_cast<int64_t>(ACells.size()) != arg.CellCount()) {
    if (arg.CellCount() > kMaxOwnedCells) return FromError(ceNum);
    ACells.resize(static_cast<size_t>(arg.CellCount()));
  }
  arg.FCells = std::make_shared<std::vector<TCellValue>>(std::move(ACells));
  return arg;
}

TFormulaArg TFormulaArg::FromLambda(std::shared_ptr<const ILambdaClosure> AClosure) {
  TFormulaArg arg;
  arg.IsLambda = true;
  arg.Lambda = std::move(AClosure);
  return arg;
}

TFormulaArg TFormulaArg::FromView(const TWorksheet& ASheet, int32_t ASheetIndex, int32_t ACol, int32_t ARow,
                                  int32_t ARows, int32_t ACols) {
  TFormulaArg arg;
  arg.IsRange = true;
  arg.HasOrigin = true;
  arg.RowCount = ARows > 0 ? ARows : 0;
  arg.ColCount = ACols > 0 ? ACols : 0;
  arg.OriginCol = ACol;
  arg.OriginRow = ARow;
  arg.OriginSheetIndex = ASheetIndex;
  arg.FSheet = &ASheet;
  return arg;
}

TCellValue TFormulaArg::First() const { return IsRange ? TCellValue::FromView(FirstView()) : Scalar; }

TValueView TFormulaArg::FirstView() const {
  if (!IsRange) return Scalar.View();
  return CellCount() > 0 ? ViewAt(0, 0) : TValueView();
}

TCellValue TFormulaArg::CellAt(int32_t ARow, int32_t ACol) const {
  if (!IsRange) return Scalar;
  if (ARow < 0 || ARow >= RowCount || ACol < 0 || ACol >= ColCount) return TCellValue::FromError(ceRef);
  return TCellValue::FromView(ViewAt(ARow, ACol));
}

TValueView TFormulaArg::ViewAt(int64_t AIndex) const {
  if (FSheet) return ViewAt(static_cast<int32_t>(AIndex / ColCount), static_cast<int32_t>(AIndex % ColCount));
  const auto index = static_cast<size_t>(AIndex);
  return FCells && index < FCells->size() ? (*FCells)[index].View() : TValueView();
}

TValueView TFormulaArg::ViewAt(int32_t ARow, int32_t ACol) const {
  if (FSheet) return FSheet->EffectiveView(OriginCol + ACol, OriginRow + ARow);
  return ViewAt(int64_t{ARow} * ColCount + ACol);
}

const std::vector<TCellValue>& TFormulaArg::Cells() const {
  static const std::vector<TCellValue> none;
  return FCells ? *FCells : none;
}

std::vector<TCellValue> TFormulaArg::TakeCells() {
  if (FSheet) Materialize();
  const std::shared_ptr<std::vector<TCellValue>> cells = std::move(FCells);
  FCells.reset();
  if (!cells) return {};
  return cells.use_count() == 1 ? std::move(*cells) : *cells;
}

void TFormulaArg::Materialize() {
  if (!FSheet) return;
  if (CellCount() > kMaxOwnedCells) {
    *this = FromError(ceNum);
    return;
  }
  FCells = std::make_shared<std::vector<TCellValue>>(CopyCells(*this));
  FSheet = nullptr;
}

}  // namespace tessarine
