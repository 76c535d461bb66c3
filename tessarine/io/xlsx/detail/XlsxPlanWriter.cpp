#include <tessarine/io/xlsx/detail/XlsxPlanWriter.h>

#include <cmath>
#include <string>
#include <utility>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/detail/XlsxStringsWriter.h>
#include <tessarine/platform/Progress.h>

namespace tessarine::detail {

namespace {

constexpr size_t kCellsPerCut = 16384;

}  // namespace

TXlsxSheetPlan TXlsxPlanWriter::Run(TWorksheet& ASheet, const TWorkControl& AControl) {
  FPlan = {};
  FFolded.clear();
  TCellStore& store = ASheet.Store();
  const int32_t styleCount = FWorkbook.StyleSheet().Count();
  size_t visited = 0;
  int32_t cutRow = kMaxRow + 1;  // a piece begins with the next row that is not above it
  store.ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    if (ARow >= cutRow) {
      FPlan.Cuts.push_back({ARow, visited, FPlan.Strings.size()});
      cutRow = kMaxRow + 1;
    }
    if (++visited % kCellsPerCut == 0) {
      AControl.CheckStop();
      cutRow = ARow + 1;
    }
    if (ASlot.HasExtras()) return VisitExtras(ACol, ARow, ASlot, *store.FindExtras(ACol, ARow));
    if (ASlot.StyleIndex < 0 || ASlot.StyleIndex >= styleCount)
      FHasStrayStyle = FHasStrayStyle || ASlot.StyleIndex != 0;
    if (ASlot.Kind == cvkText) FPlan.Strings.push_back(PlainIndex(ASlot.Text));
    if (ASlot.Kind == cvkError) ++FPlan.LostErrors;
    if (ASlot.Kind == cvkNumber && !std::isfinite(ASlot.Number)) ++FPlan.LostNumbers;
  });
  for (const TFolded& folded : FFolded) {
    TCell cell = store.Get(folded.Col, folded.Row);
    cell.StyleIndex = folded.StyleIndex;
    cell.HasFormatOverride = false;
    cell.FormatOverride = TCellFormat::Default();
    store.Set(folded.Col, folded.Row, cell);
  }
  return std::move(FPlan);
}

void TXlsxPlanWriter::VisitExtras(int32_t ACol, int32_t ARow, const TCellSlot& ASlot, const TCellExtras& AExtras) {
  const TTessarineStyleSheet& styles = FWorkbook.StyleSheet();
  int32_t style = ASlot.StyleIndex;
  if (AExtras.Override) {
    style = FoldedIndex(*AExtras.Override);
    FFolded.push_back({ACol, ARow, style});
  }
  if (style != 0 && (style < 0 || style >= styles.Count())) FHasStrayStyle = true;
  if (AExtras.Sparkline && AExtras.Sparkline->Kind != spkNone) ++FPlan.LostSparklines;
  if (ASlot.Kind == cvkError) ++FPlan.LostErrors;
  if (ASlot.Kind == cvkNumber && !std::isfinite(ASlot.Number)) ++FPlan.LostNumbers;
  if (ASlot.Kind != cvkText) return;
  FPlan.Strings.push_back(AExtras.Runs ? RichIndex(*AExtras.Runs, ASlot.Text, styles.GetCellXf(style).Font)
                                       : PlainIndex(ASlot.Text));
}

int32_t TXlsxPlanWriter::FoldedIndex(const TCellFormat& AOverride) {
  const auto known = FNewFormats.find(&AOverride);
  if (known != FNewFormats.end()) return known->second;
  TTessarineStyleSheet& styles = FWorkbook.StyleSheet();
  // Cells without a style have index 0: it must not become that of an override.
  if (styles.Count() == 0) styles.AddCellXf(TCellFormat::Default());
  const int32_t index = styles.AddCellXf(AOverride);
  FNewFormats.emplace(&styles.GetCellXf(index), index);
  return index;
}

/// Cells that were read or filled share their texts' blocks.
int32_t TXlsxPlanWriter::PlainIndex(const TTextBlock* ABlock) {
  TRecent& recent = FRecent[(reinterpret_cast<uintptr_t>(ABlock) >> 4) % FRecent.size()];
  if (recent.Block == ABlock && ABlock) return recent.Index;
  recent = {ABlock, FTable.FindOrAdd(TText::Share(ABlock))};
  return recent.Index;
}

int32_t TXlsxPlanWriter::RichIndex(const TRichTextRuns& ARuns, const TTextBlock* ABlock, const TCellFontInfo& ABase) {
  std::vector<TRichStringRun> runs = XlsxStringRuns(ARuns, ABase, FWorkbook.Theme(), FIsLiteral);
  if (runs.empty()) return PlainIndex(ABlock);
  std::u16string text;
  for (const TRichStringRun& run : runs) text += run.Text.View();
  return FTable.AddRich(std::move(runs), TText(text));
}

}  // namespace tessarine::detail
