#pragma once

#include <cstdint>
#include <functional>

#include <tessarine/Export.h>
#include <tessarine/api/CellProperties.h>
#include <tessarine/api/SheetCell.h>

namespace tessarine {

class TESSARINE_API TSheetRangeRef;
extern template class TESSARINE_API TCellProperties<TSheetRangeRef>;

/// The most cells that one setter of a range writes.
constexpr int64_t kMaxRangeCells = int64_t{1} << 24;

/// A rectangle of a sheet, to be written as a whole: `TSheetRangeRef(sheet, "A1:C1").SetFontBold(true)`. A sheet and a
/// range, passed by value; it owns nothing, and the sheet must outlive it.
///
/// Setters have the effect of the same setter on every cell, row by row from the left, with its change events. One that
/// would fill more than kMaxRangeCells cells throws ELimit and changes nothing; clearing costs by what is stored.
class TSheetRangeRef : public TCellProperties<TSheetRangeRef> {
 public:
  /// AA1 is "A1:C3" or "A1" in any case, with or without "$", its corners in any order. Throws EArgument "Invalid
  /// range: TEXT".
  TSheetRangeRef(TWorksheet& ASheet, TTextArg AA1);
  static TSheetRangeRef Create(TWorksheet& ASheet, TTextArg AA1) { return {ASheet, AA1.View()}; }

  TWorksheet& Sheet() const { return *FSheet; }
  /// Normalized.
  const TCellRange& Range() const { return FRange; }
  TCellAddress TopLeft() const { return {FRange.StartCol, FRange.StartRow}; }

  /// Visits every cell, row by row from the left.
  void ForEachCell(const std::function<void(TSheetCellRef ACell)>& AProc) const;

  /// Rows of values from the top left cell on, each as by SetValue. What falls outside the range is left out; cells
  /// without a value, behind a short row or below the last one, stay.
  TSheetRangeRef SetValues(const TSheetRows& AValues) const;
  /// The same for sources of formulas, each as by SetFormula.
  TSheetRangeRef SetFormulas(const TSheetRows& AFormulas) const;

  /// A border along the edge of the range: each side only on the cells of that edge.
  TSheetRangeRef BorderAround(TBorderLineStyle AStyle, TSheetColor AColor = kOpaqueBlack) const;
  /// Borders between the cells of the range, on both sides of each edge; its outer edges stay.
  TSheetRangeRef BorderInside(TBorderLineStyle AStyle, TSheetColor AColor = kOpaqueBlack) const;

  /// Makes the range one merged area, in place of all that meet it; contents stay. Nothing for a single cell.
  TSheetRangeRef Merge() const;
  /// Takes apart all merged areas that meet the range.
  TSheetRangeRef Unmerge() const;

 private:
  friend class TCellProperties<TSheetRangeRef>;

  void EditCells(const TCellEdit& AEdit) const;
  void EditFormats(const TFormatEdit& AEdit) const;
  void WriteCells(const TCellValue& AValue) const;
  void EditSides(bool AInside, const TBorderSide& ASide) const;

  TWorksheet* FSheet;
  TCellRange FRange;  // normalized, on the sheet
};

}  // namespace tessarine
