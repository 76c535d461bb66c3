#pragma once

#include <functional>

#include <tessarine/Export.h>
#include <tessarine/api/SheetFormats.h>
#include <tessarine/api/SheetValue.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TWorksheet;

/// What one cell (TSheetCellRef) and a range (TSheetRangeRef) have in common. Reading asks the cell, or the top left
/// one of the range; writing changes every cell and returns the reference, so that calls can follow one another:
/// `sheet.Range("A1:C1").SetFontBold(true).SetFillColor(0xFFDDEBF7)`.
///
/// Writes go straight to the sheet, past the undo manager; a change tells itself by the sheet's change event, which
/// marks a workbook modified, and by nothing else. Formulas are not calculated: that is the evaluator's business.
template <class TSelf>
class TCellProperties {
 public:
  // ---- content
  /// What formulas see: the result of a formula, what spills over an empty cell, else the content itself. An error is
  /// its text; a formula without a result is empty.
  TSheetValue Value() const;
  /// Runs of rich text and a result go, format and style stay. A number that is not finite becomes #NUM!.
  TSelf SetValue(const TSheetValue& AValue) const;
  /// The source with its "="; empty for a cell that holds no formula.
  TText Formula() const;
  /// The text is trimmed and gets a "=" where it lacks one; an empty text becomes a formula of no source. References
  /// are not adjusted: all cells of a range get the same text.
  TSelf SetFormula(TTextArg AFormula) const;
  /// Value, formula and runs go, format and style stay.
  TSelf ClearContents() const;

  // ---- format. A setter gives a cell without a format of its own the default format before it changes it: the look
  // that the cell had through its style index is lost.
  /// The cell's own format, else that of its style; conditional formats do not count.
  TCellFormat Format() const;
  TSelf ApplyFormat(const TCellFormat& AFormat) const;
  /// Own format and style go.
  TSelf ClearFormats() const;
  /// ClearContents and ClearFormats.
  TSelf Clear() const;

  TText NumberFormat() const { return Format().NumberFormat; }
  /// A format code ("#,##0.00"); an empty one is "General".
  TSelf SetNumberFormat(TTextArg ACode) const;
  TText FontName() const { return Format().Font.Name; }
  TSelf SetFontName(TTextArg AName) const;
  /// Points.
  float FontSize() const { return Format().Font.Size; }
  /// From 1 to 409, as spreadsheet files hold it; throws EArgument for any other.
  TSelf SetFontSize(float ASizePt) const;
  bool FontBold() const { return Format().Font.Bold; }
  TSelf SetFontBold(bool AValue) const;
  bool FontItalic() const { return Format().Font.Italic; }
  TSelf SetFontItalic(bool AValue) const;
  bool FontUnderline() const { return Format().Font.Underline != usNone; }
  /// One line; two by ApplyFormat.
  TSelf SetFontUnderline(bool AValue) const;
  /// Theme colours are resolved.
  TSheetColor FontColor() const;
  TSelf SetFontColor(TSheetColor AColor) const;
  /// A slot of the workbook's theme in file order and a tint from -1 (black) to 1 (white).
  TSelf FontColorTheme(int32_t AThemeIndex, double ATint) const;
  /// The solid colour, or the start of a gradient; 0 without a fill. Theme colours are resolved.
  TSheetColor FillColor() const;
  TSelf SetFillColor(TSheetColor AColor) const;
  TSelf FillThemeColor(int32_t AThemeIndex, double ATint) const;
  TSelf ClearFill() const;
  THorizontalAlignment HAlign() const { return Format().Alignment.Horizontal; }
  TSelf SetHAlign(THorizontalAlignment AValue) const;
  TVerticalAlignment VAlign() const { return Format().Alignment.Vertical; }
  TSelf SetVAlign(TVerticalAlignment AValue) const;
  bool WrapText() const { return Format().Alignment.WrapText; }
  TSelf SetWrapText(bool AValue) const;
  /// The border on one side of each cell.
  TSelf SetBorder(TBorderSideKind ASide, TBorderLineStyle AStyle, TSheetColor AColor = kOpaqueBlack) const;

 protected:
  /// Changes a cell that was loaded and will be stored, or its format; the same for every cell.
  using TCellEdit = std::function<void(TCell& ACell)>;
  using TFormatEdit = std::function<void(TCellFormat& AFormat)>;

  const TSelf& Self() const { return static_cast<const TSelf&>(*this); }
  TSelf Edit(const TCellEdit& AEdit) const;
  TSelf EditFormat(const TFormatEdit& AEdit) const;
  TSheetColor ColorOf(const TColorRef& AColor) const;
};

}  // namespace tessarine
