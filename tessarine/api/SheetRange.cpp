#include <tessarine/api/SheetRange.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/api/detail/RangeEdits.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/sheet/Worksheet.h>

namespace tessarine {

namespace {

/// AWrite(address, value) for the values that fall into a range.
template <class TWrite>
void ForEachValue(const TCellRange& ARange, const TSheetRows& AValues, TWrite&& AWrite) {
  const auto rowCount = static_cast<int32_t>(std::min(AValues.size(), static_cast<size_t>(ARange.Height())));
  for (int32_t row = 0; row < rowCount; ++row) {
    const TSheetRow& values = AValues[static_cast<size_t>(row)];
    const auto colCount = static_cast<int32_t>(std::min(values.size(), static_cast<size_t>(ARange.Width())));
    for (int32_t col = 0; col < colCount; ++col)
      AWrite(TCellAddress{ARange.StartCol + col, ARange.StartRow + row}, values[static_cast<size_t>(col)]);
  }
}

}  // namespace

TSheetRangeRef::TSheetRangeRef(TWorksheet& ASheet, TTextArg AA1) : FSheet(&ASheet), FRange(detail::RangeOfText(AA1)) {}

void TSheetRangeRef::EditCells(const TCellEdit& AEdit) const { detail::EditRange(*FSheet, FRange, AEdit); }

void TSheetRangeRef::EditFormats(const TFormatEdit& AEdit) const { detail::EditFormats(*FSheet, FRange, AEdit); }

void TSheetRangeRef::WriteCells(const TCellValue& AValue) const { detail::WriteRange(*FSheet, FRange, AValue); }

void TSheetRangeRef::ForEachCell(const std::function<void(TSheetCellRef ACell)>& AProc) const {
  for (int32_t row = FRange.StartRow; row <= FRange.EndRow; ++row) {
    for (int32_t col = FRange.StartCol; col <= FRange.EndCol; ++col)
      AProc(TSheetCellRef(*FSheet, TCellAddress{col, row}));
  }
}

TSheetRangeRef TSheetRangeRef::SetValues(const TSheetRows& AValues) const {
  ForEachValue(FRange, AValues, [&](TCellAddress AAddress, const TSheetValue& AValue) {
    detail::WriteValue(*FSheet, AAddress, AValue.ToCellValue());
  });
  return *this;
}

TSheetRangeRef TSheetRangeRef::SetFormulas(const TSheetRows& AFormulas) const {
  ForEachValue(FRange, AFormulas, [&](TCellAddress AAddress, const TSheetValue& AFormula) {
    detail::WriteValue(*FSheet, AAddress, detail::FormulaOfText(AFormula.ToText()));
  });
  return *this;
}

// ---- borders

/// Sets the sides of cells that lie on the edge of the range, or those that do not. Corners, edges and the middle are
/// nine parts with the same sides in each, so that every cell is written once.
void TSheetRangeRef::EditSides(bool AInside, const TBorderSide& ASide) const {
  if (AInside) detail::CheckRangeCount(FRange);
  const int32_t rows[] = {FRange.StartRow, FRange.StartRow + 1, std::max(FRange.EndRow, FRange.StartRow + 1)};
  const int32_t cols[] = {FRange.StartCol, FRange.StartCol + 1, std::max(FRange.EndCol, FRange.StartCol + 1)};
  const int32_t rowEnds[] = {FRange.StartRow, FRange.EndRow - 1, FRange.EndRow};
  const int32_t colEnds[] = {FRange.StartCol, FRange.EndCol - 1, FRange.EndCol};
  for (size_t part = 0; part < 9; ++part) {
    const TCellRange cells{cols[part % 3], rows[part / 3], colEnds[part % 3], rowEnds[part / 3]};
    if (cells.EndRow < cells.StartRow || cells.EndCol < cells.StartCol) continue;
    const bool left = (cells.StartCol == FRange.StartCol) != AInside;
    const bool top = (cells.StartRow == FRange.StartRow) != AInside;
    const bool right = (cells.EndCol == FRange.EndCol) != AInside;
    const bool bottom = (cells.EndRow == FRange.EndRow) != AInside;
    if (!left && !top && !right && !bottom) continue;
    detail::EditFormats(*FSheet, cells, [&](TCellFormat& AFormat) {
      TCellBorderInfo& border = AFormat.Border;
      if (left) border.Left = ASide;
      if (top) border.Top = ASide;
      if (right) border.Right = ASide;
      if (bottom) border.Bottom = ASide;
    });
  }
}

TSheetRangeRef TSheetRangeRef::BorderAround(TBorderLineStyle AStyle, TSheetColor AColor) const {
  EditSides(false, {AStyle, SheetColorToRef(AColor)});
  return *this;
}

TSheetRangeRef TSheetRangeRef::BorderInside(TBorderLineStyle AStyle, TSheetColor AColor) const {
  EditSides(true, {AStyle, SheetColorToRef(AColor)});
  return *this;
}

// ---- merged areas

TSheetRangeRef TSheetRangeRef::Merge() const {
  if (FRange.Width() == 1 && FRange.Height() == 1) return *this;
  Unmerge();
  FSheet->MergeRange(FRange);
  return *this;
}

TSheetRangeRef TSheetRangeRef::Unmerge() const {
  TMergedCellList& merges = FSheet->Merges();
  TMergedCellList kept;
  for (const TMergedRange& merge : merges) {
    if (!FRange.Intersects(merge.AsRange())) kept.Add(merge.AsRange());
  }
  if (kept.Count() != merges.Count()) merges = std::move(kept);
  return *this;
}

}  // namespace tessarine
