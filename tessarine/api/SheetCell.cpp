#include <tessarine/api/SheetCell.h>

#include <string>
#include <utility>

#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/api/detail/RangeEdits.h>
#include <tessarine/core/html/Html.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

TSheetCellRef::TSheetCellRef(TWorksheet& ASheet, TTextArg AA1) : FSheet(&ASheet), FAddr(detail::CellOfText(AA1)) {}

TSheetCellRef::TSheetCellRef(TWorksheet& ASheet, TCellAddress AAddress) : FSheet(&ASheet), FAddr(AAddress) {
  if (!AAddress.IsValid()) throw EArgument("Invalid cell address: " + Utf16ToUtf8(AAddress.ToA1()));
}

TCell TSheetCellRef::Load() const { return FSheet->GetCell(FAddr); }

void TSheetCellRef::EditCells(const TCellEdit& AEdit) const {
  TCell cell = Load();
  AEdit(cell);
  FSheet->SetCell(FAddr, cell);
}

void TSheetCellRef::EditFormats(const TFormatEdit& AEdit) const {
  detail::EditFormats(*FSheet, {FAddr.Col, FAddr.Row, FAddr.Col, FAddr.Row}, AEdit);
}

void TSheetCellRef::WriteCells(const TCellValue& AValue) const { detail::WriteValue(*FSheet, FAddr, AValue); }

TSheetCellRef TSheetCellRef::SetText(TTextArg AText) const { return SetValue(TText(AText.View())); }

TText TSheetCellRef::DisplayText() const {
  return FSheet->GetDisplayText(FAddr, FSheet->Owner() ? &FSheet->Owner()->StyleSheet() : nullptr);
}

int32_t TSheetCellRef::StyleIndex() const { return Load().StyleIndex; }

TSheetCellRef TSheetCellRef::SetStyleIndex(int32_t AIndex) const {
  return Edit([AIndex](TCell& ACell) { ACell.StyleIndex = AIndex; });
}

TSheetCellRef TSheetCellRef::BorderAround(TBorderLineStyle AStyle, TSheetColor AColor) const {
  return EditFormat([&](TCellFormat& AFormat) {
    for (const TBorderSideKind side : {bsLeft, bsTop, bsRight, bsBottom})
      BorderSideOf(AFormat.Border, side) = {AStyle, SheetColorToRef(AColor)};
  });
}

// ---- rich text

bool TSheetCellRef::HasRichText() const { return !Load().RichText.empty(); }

TRichTextRuns TSheetCellRef::RichText() const { return Load().RichText; }

TText TSheetCellRef::PlainText() const {
  const TRichTextRuns runs = RichText();
  return runs.empty() ? Text() : TText(RichTextToPlain(runs));
}

TSheetCellRef TSheetCellRef::SetRichText(TRichTextRuns ARuns) const {
  if (ARuns.empty()) return ClearContents();
  return Edit([&](TCell& ACell) {
    detail::PutValue(ACell, TCellValue::FromText(TText(RichTextToPlain(ARuns))));
    ACell.RichText = std::move(ARuns);
  });
}

TSheetCellRef TSheetCellRef::SetHtml(TTextArg AHtml) const {
  return SetRichText(HtmlToRichText(AHtml.View(), Format().Font));
}

TText TSheetCellRef::GetHtml() const {
  const TRichTextRuns runs = RichText();
  return TText(runs.empty() ? HtmlEscape(Text()) : RichTextToHtml(runs, Format().Font));
}

TSheetCellRef TSheetCellRef::AppendRun(TRichTextRun ARun) const {
  TRichTextRuns runs = RichText();
  if (runs.empty()) {
    if (TText text = Text(); !text.IsEmpty()) runs.push_back({std::move(text), Format().Font});
  }
  runs.push_back(std::move(ARun));
  return SetRichText(std::move(runs));
}

TSheetCellRef TSheetCellRef::AddRun(TTextArg AText, const TCellFontInfo& AFont) const {
  return AppendRun(RichRun(AText.View(), AFont));
}

TSheetCellRef TSheetCellRef::AddRun(TTextArg AText, TRichFlags AFlags) const {
  return AppendRun(RichRun(AText.View(), RichFont(AFlags, u"", 0, 0, Format().Font)));
}

TSheetCellRef TSheetCellRef::ClearRichText() const {
  return Edit([](TCell& ACell) { ACell.RichText.clear(); });
}

}  // namespace tessarine
