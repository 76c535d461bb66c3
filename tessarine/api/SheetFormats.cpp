#include <tessarine/api/SheetFormats.h>

#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/core/format/Theme.h>

namespace tessarine {

TSheetColor SheetRefToColor(const TColorRef& AColor, const TTessarineTheme* ATheme) {
  return ResolveColor(AColor, ATheme);
}

TBorderSide& BorderSideOf(TCellBorderInfo& ABorder, TBorderSideKind ASide) {
  switch (ASide) {
    case bsLeft: return ABorder.Left;
    case bsTop: return ABorder.Top;
    case bsRight: return ABorder.Right;
    case bsBottom: break;
  }
  return ABorder.Bottom;
}

TCellFontInfo RichFont(TRichFlags AFlags, TTextArg AName, float ASizePt, TSheetColor AColor,
                       const TCellFontInfo& ABase) {
  TCellFontInfo font = ABase;
  font.Bold = font.Bold || AFlags.Has(rfBold);
  font.Italic = font.Italic || AFlags.Has(rfItalic);
  if (AFlags.Has(rfUnderline)) font.Underline = usSingle;
  font.Strikethrough = font.Strikethrough || AFlags.Has(rfStrikeout);
  if (!AName.View().empty()) font.Name = TText(AName.View());
  if (ASizePt > 0) font.Size = ASizePt;
  if (AColor != 0) font.Color = SheetColorToRef(AColor);
  return font;
}

TRichTextRun RichRun(TTextArg AText, const TCellFontInfo& AFont) { return {TText(AText.View()), AFont}; }

TRichTextRun RichRun(TTextArg AText, TRichFlags AFlags) { return {TText(AText.View()), RichFont(AFlags)}; }

void ApplyNumberFormat(TCell& ACell, TTextArg ACode) {
  const TText code(ACode.View());
  detail::EnsureFormat(ACell).NumberFormat = code.IsEmpty() ? detail::GeneralFormatCode() : code;
}

void ApplyCellAlignment(TCell& ACell, THorizontalAlignment AHorizontal, TVerticalAlignment AVertical) {
  TCellAlignmentInfo& alignment = detail::EnsureFormat(ACell).Alignment;
  alignment.Horizontal = AHorizontal;
  alignment.Vertical = AVertical;
}

void SetCellWrapText(TCell& ACell, bool AWrap) { detail::EnsureFormat(ACell).Alignment.WrapText = AWrap; }

}  // namespace tessarine
