#pragma once

#include <cstdint>

#include <tessarine/Export.h>
#include <tessarine/api/CellProperties.h>

namespace tessarine {

class TESSARINE_API TSheetCellRef;
extern template class TESSARINE_API TCellProperties<TSheetCellRef>;

/// One cell of a sheet, to be read and written: `TSheetCellRef(sheet, "B2").SetValue(12.5).SetFontBold(true)`.
/// A sheet and an address, passed by value; it owns nothing, and the sheet must outlive it. The address does not follow
/// its cell when lines are inserted or deleted.
class TSheetCellRef : public TCellProperties<TSheetCellRef> {
 public:
  /// AA1 is "B2" in any case, with or without "$". Throws EArgument "Invalid cell address: TEXT".
  TSheetCellRef(TWorksheet& ASheet, TTextArg AA1);
  static TSheetCellRef Create(TWorksheet& ASheet, TTextArg AA1) { return {ASheet, AA1.View()}; }
  /// Throws EArgument for an address outside the sheet.
  TSheetCellRef(TWorksheet& ASheet, TCellAddress AAddress);
  static TSheetCellRef CreateAddr(TWorksheet& ASheet, TCellAddress AAddress) { return {ASheet, AAddress}; }

  TWorksheet& Sheet() const { return *FSheet; }
  TCellAddress Address() const { return FAddr; }
  TCellAddress TopLeft() const { return FAddr; }

  // ---- content
  /// Value as a plain text, without its number format.
  TText Text() const { return Value().ToText(); }
  /// Stores a text as it is, also one that reads as a number.
  TSheetCellRef SetText(TTextArg AText) const;
  /// TSheetValue::ToNumber of Value.
  double AsNumber() const { return Value().ToNumber(); }
  TSheetCellRef SetAsNumber(double AValue) const { return SetValue(AValue); }
  /// TSheetValue::ToBoolean of Value.
  bool AsBoolean() const { return Value().ToBoolean(); }
  TSheetCellRef SetAsBoolean(bool AValue) const { return SetValue(AValue); }
  /// What the grid shows: with its number format; a formula without a result shows its source.
  TText DisplayText() const;

  /// Any number is kept; one that is no style shows the default format. A format of the cell's own stays and wins over
  /// the style until ClearFormats.
  int32_t StyleIndex() const;
  TSheetCellRef SetStyleIndex(int32_t AIndex) const;

  /// The same border on all four sides.
  TSheetCellRef BorderAround(TBorderLineStyle AStyle, TSheetColor AColor = kOpaqueBlack) const;

  // ---- rich text: runs of text in fonts of their own. The cell's value is then the text of all runs.
  bool HasRichText() const;
  /// The text of the runs, else Text.
  TText PlainText() const;
  TRichTextRuns RichText() const;
  /// No runs clear the content.
  TSheetCellRef SetRichText(TRichTextRuns ARuns) const;
  /// Runs read from HTML, on top of the cell's font.
  TSheetCellRef SetHtml(TTextArg AHtml) const;
  /// The HTML of the runs, or of the text, as they differ from the cell's font.
  TText GetHtml() const;
  /// Appends a run. What stood in the cell without runs, a result too, becomes the first run in the cell's font.
  TSheetCellRef AddRun(TTextArg AText, const TCellFontInfo& AFont) const;
  /// The cell's font with these flags.
  TSheetCellRef AddRun(TTextArg AText, TRichFlags AFlags = {}) const;
  /// The text stays, in the cell's font.
  TSheetCellRef ClearRichText() const;

  friend bool operator==(const TSheetCellRef& ALeft, const TSheetCellRef& ARight) {
    return ALeft.FSheet == ARight.FSheet && ALeft.FAddr == ARight.FAddr;
  }

 private:
  friend class TCellProperties<TSheetCellRef>;

  TCell Load() const;
  void EditCells(const TCellEdit& AEdit) const;
  void EditFormats(const TFormatEdit& AEdit) const;
  void WriteCells(const TCellValue& AValue) const;
  TSheetCellRef AppendRun(TRichTextRun ARun) const;

  TWorksheet* FSheet;
  TCellAddress FAddr;  // valid
};

}  // namespace tessarine
