#include <algorithm>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Ranges.h>
#include <hosts/cli/Session.h>
#include <hosts/cli/Table.h>
#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr int32_t kMostRows = 100;   // without --range
constexpr int32_t kCellColumns = 4;  // the least that a column takes, its rule included

std::string ColorCode(int AKind, uint32_t AColor) {
  return std::to_string(AKind) + ";2;" + std::to_string(AColor >> 16 & 0xFF) + ";" +
         std::to_string(AColor >> 8 & 0xFF) + ";" + std::to_string(AColor & 0xFF);
}

/// Shows one sheet's cells as the cells of a table.
class TSheetPrinter {
 public:
  TSheetPrinter(const TWorkbook& AWorkbook, const TWorksheet& ASheet, bool AHasColors)
      : FWorkbook(AWorkbook), FSheet(ASheet), FHasColors(AHasColors) {}

  /// The cell at AAddress of a table whose last column is ALastCol. A merged area shows at its top left cell, which
  /// covers its columns.
  TTableCell CellAt(TCellAddress AAddress, int32_t ALastCol) const {
    TTableCell cell;
    const int64_t merge = FSheet.Merges().FindContaining(AAddress.Col, AAddress.Row);
    if (merge >= 0) {
      const TMergedRange& area = FSheet.Merges().GetItem(static_cast<size_t>(merge));
      if (area.Anchor() != AAddress) return cell;
      cell.Span = std::min(area.EndCol, ALastCol) - AAddress.Col + 1;
    }
    const TValueView value = FSheet.EffectiveView(AAddress.Col, AAddress.Row);
    FSheet.AppendDisplayText(AAddress, &FWorkbook.StyleSheet(), cell.Text);
    const TCellFormat format = FSheet.ResolveFormat(AAddress, &FWorkbook.StyleSheet());
    cell.Align = AlignOf(value, format, FSheet.View().ShowFormulas);
    if (FHasColors) cell.Style = StyleOf(value, format);
    return cell;
  }

 private:
  static TAlign AlignOf(const TValueView& AValue, const TCellFormat& AFormat, bool AShowsFormulas) {
    switch (AFormat.Alignment.Horizontal) {
      case haLeft: return alLeft;
      case haCenter: return alCenter;
      case haRight: return alRight;
      case haGeneral:
      case haFill:
      case haJustify: break;
    }
    if (AShowsFormulas) return alLeft;
    if (AValue.Kind == cvkNumber) return alRight;
    return AValue.Kind == cvkBoolean || AValue.Kind == cvkError ? alCenter : alLeft;
  }

  std::string StyleOf(const TValueView& AValue, const TCellFormat& AFormat) const {
    std::string style;
    const auto add = [&style](const std::string& ACode) { style += (style.empty() ? "" : ";") + ACode; };
    if (AFormat.Font.Bold) add("1");
    if (AFormat.Font.Italic) add("3");
    if (AFormat.Font.Underline != usNone) add("4");
    if (AFormat.Font.Strikethrough) add("9");
    const bool hasFill = AFormat.Fill.PatternType == 1;
    uint32_t color = ResolveColor(AFormat.Font.Color, &FWorkbook.Theme());
    bool hasColor = (color & 0xFFFFFF) != 0 || hasFill;  // plain black is the terminal's own colour
    if (AValue.Kind == cvkNumber) {
      const TNumberFormatColor tag = NumberFormatColor(AValue.Number, AFormat.NumberFormat);
      if (tag.Found) color = tag.ARGB;
      hasColor = hasColor || tag.Found;
    }
    if (hasColor) add(ColorCode(38, color));
    if (hasFill) add(ColorCode(48, ResolveColor(AFormat.Fill.ForegroundColor, &FWorkbook.Theme())));
    return style;
  }

  const TWorkbook& FWorkbook;
  const TWorksheet& FSheet;
  bool FHasColors;
};

/// What is shown of a sheet: the asked range, whole columns and rows cut to the used area, or the first rows of that.
TCellRange ShownRange(const TWorksheet& ASheet, const TCellRange* AAsked) {
  if (AAsked) {
    TCellRange range = *AAsked;
    if (range.EndRow == kMaxRow) range.EndRow = std::max(range.StartRow, ASheet.UsedMaxRow());
    if (range.EndCol == kMaxCol) range.EndCol = std::max(range.StartCol, ASheet.UsedMaxCol());
    return range;
  }
  return {1, 1, ASheet.UsedMaxCol(), std::min(ASheet.UsedMaxRow(), kMostRows)};
}

std::string CountOf(int64_t ACount, const char* AOne) {
  return std::to_string(ACount) + " more " + AOne + (ACount == 1 ? "" : "s");
}

/// Says what the table leaves out, if anything.
void PutRest(int64_t ARows, int64_t ACols, std::string& AOut) {
  if (ARows <= 0 && ACols <= 0) return;
  AOut += "... ";
  if (ARows > 0) AOut += CountOf(ARows, "row");
  if (ARows > 0 && ACols > 0) AOut += " and ";
  if (ACols > 0) AOut += CountOf(ACols, "column");
  AOut += "; choose with --range\n";
}

}  // namespace

int RunShow(const TArguments& AArguments, TSession& ASession) {
  TCellRange asked;
  if (!AArguments.Range.empty()) asked = ParseRange(AArguments.Range);
  ASession.Load(AArguments);
  TWorkbook& workbook = ASession.Workbook();
  TWorksheet* const sheet = workbook.GetSheet(ASession.SheetIndex(AArguments));
  if (!sheet) throw ECli(ecInput, AArguments.Input + ": the workbook has no sheet");
  TSheetViewOptions view = sheet->View();
  view.ShowFormulas = AArguments.Formulas;
  sheet->SetView(view);

  const TCellRange range = ShownRange(*sheet, AArguments.Range.empty() ? nullptr : &asked);
  const int32_t lastCol = std::min(range.EndCol, range.StartCol + ASession.Terminal().Width / kCellColumns);
  const int32_t lastRow =
      std::min(range.EndRow, std::max(sheet->UsedMaxRow(), std::min(range.EndRow, range.StartRow + kMostRows - 1)));
  std::vector<TTableColumn> columns{{"", alRight}};
  for (int32_t col = range.StartCol; col <= lastCol; ++col)
    columns.push_back({Utf16ToUtf8(ColToLetters(col)), alCenter});
  TTextTable table(std::move(columns));
  table.SetHasRules(true);
  const TSheetPrinter printer(workbook, *sheet, ASession.Terminal().HasColors);
  for (int32_t row = range.StartRow; row <= lastRow; ++row) {
    ASession.Control().CheckStop();
    std::vector<TTableCell> cells{{.Text = Utf8ToUtf16(std::to_string(row)), .Align = alRight, .Style = {}}};
    for (int32_t col = range.StartCol; col <= lastCol; ++col) cells.push_back(printer.CellAt({col, row}, lastCol));
    table.AddCells(std::move(cells));
  }
  const auto shownCols = static_cast<int64_t>(table.FitTo(ASession.Terminal().Width)) - 1;
  ASession.Out() += sheet->Name().ToUtf8() + "\n";
  table.Append(ASession.Out());
  const int64_t rest =
      AArguments.Range.empty() ? int64_t{sheet->UsedMaxRow()} - lastRow : int64_t{range.EndRow} - lastRow;
  PutRest(rest, int64_t{range.EndCol} - range.StartCol + 1 - shownCols, ASession.Out());
  return ecDone;
}

}  // namespace tessarine::cli
