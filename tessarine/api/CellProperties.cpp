#include <tessarine/api/CellProperties.h>

#include <string>

#include <tessarine/api/SheetCell.h>
#include <tessarine/api/SheetRange.h>
#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>

namespace tessarine {

namespace {

constexpr float kMaxFontSize = 409;  // what spreadsheet programs take from a file

}  // namespace

template <class TSelf>
TSelf TCellProperties<TSelf>::Edit(const TCellEdit& AEdit) const {
  Self().EditCells(AEdit);
  return Self();
}

template <class TSelf>
TSelf TCellProperties<TSelf>::EditFormat(const TFormatEdit& AEdit) const {
  Self().EditFormats(AEdit);
  return Self();
}

template <class TSelf>
TSheetColor TCellProperties<TSelf>::ColorOf(const TColorRef& AColor) const {
  const TWorkbook* owner = Self().Sheet().Owner();
  return SheetRefToColor(AColor, owner ? &owner->Theme() : nullptr);
}

// ---- content

template <class TSelf>
TSheetValue TCellProperties<TSelf>::Value() const {
  return TSheetValue::From(Self().Sheet().GetEffectiveValue(Self().TopLeft()));
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetValue(const TSheetValue& AValue) const {
  Self().WriteCells(AValue.ToCellValue());
  return Self();
}

template <class TSelf>
TText TCellProperties<TSelf>::Formula() const {
  const TCellValue value = Self().Sheet().GetCell(Self().TopLeft()).Value;
  return value.Kind == cvkFormula ? value.Formula() : TText();
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFormula(TTextArg AFormula) const {
  Self().WriteCells(detail::FormulaOfText(AFormula));
  return Self();
}

template <class TSelf>
TSelf TCellProperties<TSelf>::ClearContents() const {
  return SetValue(TSheetValue());
}

// ---- format

template <class TSelf>
TCellFormat TCellProperties<TSelf>::Format() const {
  return detail::FormatOf(Self().Sheet(), Self().Sheet().GetCell(Self().TopLeft()));
}

template <class TSelf>
TSelf TCellProperties<TSelf>::ApplyFormat(const TCellFormat& AFormat) const {
  return EditFormat([&](TCellFormat& ATarget) { ATarget = AFormat; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::ClearFormats() const {
  return Edit(detail::ClearFormatsOf);
}

template <class TSelf>
TSelf TCellProperties<TSelf>::Clear() const {
  return Edit([](TCell& ACell) {
    detail::PutValue(ACell, TCellValue::Empty());
    detail::ClearFormatsOf(ACell);
  });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetNumberFormat(TTextArg ACode) const {
  const TText code = ACode.View().empty() ? detail::GeneralFormatCode() : TText(ACode.View());
  return EditFormat([&](TCellFormat& AFormat) { AFormat.NumberFormat = code; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFontName(TTextArg AName) const {
  const TText name(AName.View());
  return EditFormat([&](TCellFormat& AFormat) { AFormat.Font.Name = name; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFontSize(float ASizePt) const {
  if (!(ASizePt >= 1 && ASizePt <= kMaxFontSize)) throw EArgument("Invalid size: " + std::to_string(ASizePt));
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Font.Size = ASizePt; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFontBold(bool AValue) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Font.Bold = AValue; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFontItalic(bool AValue) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Font.Italic = AValue; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFontUnderline(bool AValue) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Font.Underline = AValue ? usSingle : usNone; });
}

template <class TSelf>
TSheetColor TCellProperties<TSelf>::FontColor() const {
  return ColorOf(Format().Font.Color);
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFontColor(TSheetColor AColor) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Font.Color = SheetColorToRef(AColor); });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::FontColorTheme(int32_t AThemeIndex, double ATint) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Font.Color = TColorRef::FromTheme(AThemeIndex, ATint); });
}

template <class TSelf>
TSheetColor TCellProperties<TSelf>::FillColor() const {
  const TCellFillInfo fill = Format().Fill;
  return fill.PatternType == 0 ? 0 : ColorOf(fill.ForegroundColor);
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetFillColor(TSheetColor AColor) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Fill = TCellFillInfo::Solid(SheetColorToRef(AColor)); });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::FillThemeColor(int32_t AThemeIndex, double ATint) const {
  return EditFormat(
      [=](TCellFormat& AFormat) { AFormat.Fill = TCellFillInfo::Solid(TColorRef::FromTheme(AThemeIndex, ATint)); });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::ClearFill() const {
  return EditFormat([](TCellFormat& AFormat) { AFormat.Fill = TCellFillInfo::None(); });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetHAlign(THorizontalAlignment AValue) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Alignment.Horizontal = AValue; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetVAlign(TVerticalAlignment AValue) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Alignment.Vertical = AValue; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetWrapText(bool AValue) const {
  return EditFormat([=](TCellFormat& AFormat) { AFormat.Alignment.WrapText = AValue; });
}

template <class TSelf>
TSelf TCellProperties<TSelf>::SetBorder(TBorderSideKind ASide, TBorderLineStyle AStyle, TSheetColor AColor) const {
  return EditFormat([=](TCellFormat& AFormat) {
    BorderSideOf(AFormat.Border, ASide) = {AStyle, SheetColorToRef(AColor)};
  });
}

template class TCellProperties<TSheetCellRef>;
template class TCellProperties<TSheetRangeRef>;

}  // namespace tessarine
