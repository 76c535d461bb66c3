#include <tessarine/core/sheet/Worksheet.h>

#include <algorithm>
#include <cmath>
#include <string>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine {

namespace {

/// A number this near to 0 is 0 where zeros are hidden.
constexpr double kZeroTolerance = 1e-12;

bool IsShownAsZero(const TValueView& AValue) {
  return AValue.Kind == cvkNumber && std::fabs(AValue.Number) <= kZeroTolerance;
}

/// The width that a text of ALength characters asks of its column, in characters of an 11 point font.
double TextWidthChars(size_t ALength, const TCellFontInfo& AFont) {
  const double charWidth = std::max(AFont.Size / 11.0, 0.75);
  return static_cast<double>(ALength) * charWidth * (AFont.Bold ? 1.1 : 1.0) + 2;
}

}  // namespace

// ---- formats

const TCellFormat& TWorksheet::FormatOf(TCellAddress AAddress, const detail::TCellSlot* ASlot,
                                        const TTessarineStyleSheet* AStyleSheet) const {
  if (ASlot && ASlot->HasExtras()) {
    if (const auto& format = FStore->FindExtras(AAddress.Col, AAddress.Row)->Override) return *format;
  }
  return AStyleSheet ? AStyleSheet->ResolveFormat(ASlot ? ASlot->StyleIndex : 0) : TCellFormat::Default();
}

TCellFormat TWorksheet::ResolveFormat(TCellAddress AAddress, const TTessarineStyleSheet* AStyleSheet) const {
  TCellFormat format = FormatOf(AAddress, FindSlot(AAddress), AStyleSheet);
  if (!FConditionalFormats->IsEmpty())
    FConditionalFormats->Evaluate(AAddress.Col, AAddress.Row, EffectiveView(AAddress.Col, AAddress.Row), format);
  return format;
}

// ---- display texts

const TRichTextRuns* TWorksheet::RunsOf(TCellAddress AAddress, const detail::TCellSlot& ASlot) const {
  return ASlot.HasExtras() ? FStore->FindExtras(AAddress.Col, AAddress.Row)->Runs.get() : nullptr;
}

/// A value under a number format, with zeros hidden where the sheet wants it.
void TWorksheet::AppendShownValue(const TValueView& AValue, const TCellFormat& AFormat, std::u16string& AText) const {
  if (!FView.ShowZeros && IsShownAsZero(AValue)) return;
  if (AValue.Kind == cvkNumber) {
    AppendFormattedNumber(AValue.Number, AFormat.NumberFormat, AText);
  } else {
    AppendFormattedValue(AValue, AFormat.NumberFormat, AText);
  }
}

void TWorksheet::AppendDisplayText(TCellAddress AAddress, const TTessarineStyleSheet* AStyleSheet,
                                   std::u16string& AText) const {
  const detail::TCellSlot* slot = FindSlot(AAddress);
  const TCellValueKind kind = slot ? slot->Kind : cvkEmpty;
  const detail::TFormulaRecord* record = kind == cvkFormula ? &FStore->Record(slot->Record) : nullptr;
  if (record && FView.ShowFormulas) return record->Template->AppendTextAt(AAddress.Col, AAddress.Row, AText);
  if (const TRichTextRuns* runs = slot ? RunsOf(AAddress, *slot) : nullptr) {
    const size_t before = AText.size();
    for (const TRichTextRun& run : *runs) AText += run.Text.View();
    if (AText.size() != before) return;
  }
  switch (kind) {
    case cvkNumber: AppendShownValue(slot->ConstantView(), FormatOf(AAddress, slot, AStyleSheet), AText); return;
    case cvkFormula:
      if (record->HasCached()) {
        AppendShownValue(record->CachedView(), FormatOf(AAddress, slot, AStyleSheet), AText);
      } else {
        record->Template->AppendTextAt(AAddress.Col, AAddress.Row, AText);
      }
      return;
    case cvkText:
    case cvkBoolean:
    case cvkError: AppendDisplayString(slot->ConstantView(), AText); return;
    case cvkEmpty: break;
  }
  if (FSpills->IsEmpty()) return;
  const TCellValue* spilled = FSpills->FindChildValue(AAddress.Col, AAddress.Row);
  if (spilled) AppendShownValue(spilled->View(), FormatOf(AAddress, slot, AStyleSheet), AText);
}

TText TWorksheet::GetDisplayText(TCellAddress AAddress, const TTessarineStyleSheet* AStyleSheet) const {
  const detail::TCellSlot* slot = FindSlot(AAddress);
  if (slot && slot->Kind == cvkText && !slot->HasExtras()) return TText::Share(slot->Text);
  std::u16string text;
  AppendDisplayText(AAddress, AStyleSheet, text);
  return TText(text);
}

// ---- column widths from texts

/// The width that the texts of a column ask for, at least AMinChars. Cells that show nothing do not count, so only what
/// is stored and what spills are looked at.
double TWorksheet::FittingWidth(int32_t ACol, const TTessarineStyleSheet* AStyleSheet, double AMinChars) const {
  double widest = AMinChars;
  std::u16string text;
  const auto measure = [&](int32_t ARow) {
    if (ARow < 1 || ARow > FUsedMaxRow) return;
    if (!FMerges->IsEmpty()) {
      if (const TMergeSpan span = GetMergeSpan(ACol, ARow);
          span.IsAnchor ? span.ColSpan > 1 : FMerges->FindAnchor(ACol, ARow).Anchor != TCellAddress{ACol, ARow})
        return;
    }
    text.clear();
    AppendDisplayText({ACol, ARow}, AStyleSheet, text);
    if (text.empty()) return;
    const TCellAddress address{ACol, ARow};
    widest = std::max(widest, TextWidthChars(text.size(), FormatOf(address, FindSlot(address), AStyleSheet).Font));
  };
  FStore->ForEachTile(ACol, [&](const detail::TTile& ATile, int32_t AIndex) {
    for (uint32_t row = 0; row < detail::kTileRows; ++row) {
      if (ATile.Has(row)) measure(AIndex * detail::kTileRows + static_cast<int32_t>(row) + 1);
    }
  });
  if (FSpills->IsEmpty()) return widest;
  for (const TSpillRange* block : FSpills->BlocksIn({ACol, 1, ACol, FUsedMaxRow})) {
    for (int32_t row = block->AnchorRow; row <= std::min(block->EndRow, FUsedMaxRow); ++row) measure(row);
  }
  return widest;
}

void TWorksheet::AutoFitColumns(const TTessarineStyleSheet* AStyleSheet, double AMinChars, double AMaxChars) {
  for (int32_t col = 1; col <= FUsedMaxCol; ++col) AutoFitColumn(col, AStyleSheet, AMinChars, AMaxChars);
}

void TWorksheet::AutoFitColumn(int32_t ACol, const TTessarineStyleSheet* AStyleSheet, double AMinChars,
                               double AMaxChars) {
  if (ACol < 1 || ACol > kMaxCol) return;
  const double least = AMinChars > 0 ? AMinChars : std::max(FSizing->DefaultColWidth(), 8.43);
  const double most = AMaxChars > 0 ? AMaxChars : 48;
  FSizing->SetColWidthChars(ACol, std::min(FittingWidth(ACol, AStyleSheet, least), most));
}

}  // namespace tessarine
