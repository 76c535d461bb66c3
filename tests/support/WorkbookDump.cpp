#include "WorkbookDump.h"

#include <cstdarg>
#include <cstdio>
#include <sstream>
#include <string_view>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/detail/XlsxLinksWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::test {

namespace {

std::string Text(std::u16string_view AText) { return Utf16ToUtf8(AText); }
std::string Ref(const TCellRange& ARange) { return Text(ARange.ToA1()); }

[[gnu::format(printf, 1, 2)]] std::string Line(const char* AFormat, ...) {
  char text[400];
  va_list arguments;
  va_start(arguments, AFormat);
  std::vsnprintf(text, sizeof text, AFormat, arguments);
  va_end(arguments);
  return text;
}

std::string Color(const TColorRef& AColor) {
  if (AColor.IsThemeColor()) return Line("theme%d%+.4f", AColor.ThemeIndex, AColor.Tint);
  return Line("#%06X", AColor.ARGB & 0xFFFFFFu);
}

std::string Font(const TCellFontInfo& AFont) {
  return Text(AFont.Name) + Line(" %.2f", static_cast<double>(AFont.Size)) + (AFont.Bold ? " b" : "") +
         (AFont.Italic ? " i" : "") + (AFont.Strikethrough ? " s" : "") +
         Line(" u%d ", static_cast<int>(AFont.Underline)) + Color(AFont.Color);
}

std::string Value(const TCellValue& AValue) {
  switch (AValue.Kind) {
    case cvkNumber: return Line("%.17g", AValue.Number);
    case cvkText: return "'" + Text(AValue.Text);
    default: return AValue.ToDisplayString().ToUtf8();
  }
}

/// Results that are errors are not in the files.
std::string Cell(const TCell& ACell, const TTessarineTheme& ATheme) {
  std::string text = ACell.Value.IsError() ? "_" : Value(ACell.Value);
  if (ACell.HasCachedValue && !ACell.CachedValue.IsError() && !ACell.CachedValue.IsEmpty())
    text += " {" + Value(ACell.CachedValue) + "}";
  for (const TRichTextRun& run : ACell.RichText) {
    if (run.Text.IsEmpty()) continue;
    TCellFontInfo font = run.Font;
    font.Color = TColorRef::FromARGB(ResolveColor(font.Color, &ATheme));
    text += " [" + Text(run.Text) + "|" + Font(font) + Line(" p%d]", static_cast<int>(font.Script));
  }
  return text;
}

void DumpSizes(const TWorksheet& ASheet, std::string& AOut) {
  const TRowColSizing& sizing = ASheet.Sizing();
  AOut += Line("sizes %.6g x %.6g\n", sizing.DefaultColWidth(), sizing.DefaultRowHeight());
  for (const int32_t col : sizing.MarkedCols()) {
    AOut += Line("col %d %.6g h%d l%d c%d\n", col, sizing.GetColWidthChars(col), sizing.IsColHidden(col),
                 sizing.GetColOutlineLevel(col), sizing.IsColCollapsed(col));
  }
  for (const int32_t row : sizing.MarkedRows()) {
    const double height = sizing.HasCustomRowHeight(row) ? sizing.GetRowHeightPt(row) : sizing.DefaultRowHeight();
    const bool isPlain = height == sizing.DefaultRowHeight() && !sizing.IsRowHidden(row) &&
                         sizing.GetRowOutlineLevel(row) == 0 && !sizing.IsRowCollapsed(row);
    if (isPlain) continue;
    AOut += Line("row %d %.6g h%d l%d c%d\n", row, height, sizing.IsRowHidden(row), sizing.GetRowOutlineLevel(row),
                 sizing.IsRowCollapsed(row));
  }
  if (sizing.MaxRowOutlineLevel() > 0 || sizing.MaxColOutlineLevel() > 0)
    AOut += Line("summary %d %d\n", sizing.OutlineSummaryBelow(), sizing.OutlineSummaryRight());
}

void DumpCells(const TWorkbook& ABook, const TWorksheet& ASheet, std::string& AOut) {
  ASheet.Store().ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    const TCell cell = ASheet.GetCellAt(ACol, ARow);
    const std::string content = Cell(cell, ABook.Theme());
    const std::string format = DumpFormat(ABook.StyleSheet().GetCellXf(cell.StyleIndex));
    AOut += "cell " + Ref({ACol, ARow, ACol, ARow}) + " " + content + " <" + format + ">\n";
  });
}

void DumpLists(const TWorksheet& ASheet, std::string& AOut) {
  for (const TMergedRange& merge : ASheet.Merges())
    if (merge.StartCol != merge.EndCol || merge.StartRow != merge.EndRow)
      AOut += "merge " + Ref(merge.AsRange()) + "\n";
  for (const TDataValidationRule& rule : ASheet.Validations()) {
    if (rule.ValidationType == dvtNone || rule.Ranges.empty()) continue;
    AOut += "rule " + Text(TSheetSavedView::FormatSqref(rule.Ranges)) +
            Line(" t%d o%d e%d %d%d%d", static_cast<int>(rule.ValidationType), static_cast<int>(rule.Operator),
                 static_cast<int>(rule.ErrorStyle), rule.AllowBlank, rule.ShowErrorMessage,
                 rule.ShowInputMessage && !rule.Prompt.IsEmpty());
    for (const TText* text :
         {&rule.Formula1, &rule.Formula2, &rule.PromptTitle, &rule.Prompt, &rule.ErrorTitle, &rule.Error})
      AOut += " |" + Text(text->View().substr(text->View().starts_with(u'=') ? 1 : 0));
    AOut += '\n';
  }
  if (ASheet.AutoFilter().IsEnabled()) {
    AOut += "filter " + Ref(ASheet.AutoFilter().Range());
    for (const auto& [col, column] : ASheet.AutoFilter().Columns()) {
      AOut += Line(" %d:", col) + Text(column.Contains);
      for (const TText& value : column.Values) AOut += "," + Text(value);
    }
    AOut += '\n';
  }
  for (const detail::TXlsxLink& link : detail::XlsxSheetLinks(ASheet.Hyperlinks()))
    AOut += "link " + Ref(link.Range) + " " + Text(link.Target) + "\n";
  for (const auto& table : ASheet.Tables()) {
    AOut += "table " + Text(table->Name()) + " " + Text(table->DisplayName()) + " " + Ref(table->Ref()) +
            Line(" %d%d%d%d%d ", table->HasHeaderRow(), table->HasTotalsRow(), table->ShowAutoFilter(),
                 table->ShowRowStripes(), table->ShowColumnStripes()) +
            Text(table->StyleName());
    for (const TText& name : table->ColumnNames()) AOut += "," + Text(name);
    AOut += '\n';
  }
}

void DumpPage(const TPageSetup& ASetup, std::string& AOut) {
  AOut += Line("page o%d p%d %d%% fit%d %dx%d first%d bw%d d%d ", static_cast<int>(ASetup.Orientation),
               static_cast<int>(ASetup.PaperSize() == psCustom ? psLetter : ASetup.PaperSize()),
               ASetup.FitToPage ? 100 : ASetup.ScalePercent, ASetup.FitToPage, ASetup.FitToPage ? ASetup.FitToWidth : 1,
               ASetup.FitToPage ? ASetup.FitToHeight : 1, ASetup.FirstPageNumber, ASetup.BlackAndWhite,
               ASetup.DraftQuality);
  AOut += Line("c%d%d g%d h%d order%d com%d err%d m %g %g %g %g %g %g", ASetup.CenterHorizontally,
               ASetup.CenterVertically, ASetup.PrintGridlines, ASetup.PrintHeadings, static_cast<int>(ASetup.PageOrder),
               static_cast<int>(ASetup.CommentsMode), static_cast<int>(ASetup.ErrorsMode), ASetup.MarginLeft,
               ASetup.MarginRight, ASetup.MarginTop, ASetup.MarginBottom, ASetup.MarginHeader, ASetup.MarginFooter);
  for (const auto* section : {&ASetup.Header, &ASetup.Footer})
    AOut += " |" + Text(section->Left) + "|" + Text(section->Center) + "|" + Text(section->Right);
  for (const int32_t row : ASetup.RowBreaks()) AOut += Line(" r%d", row);
  for (const int32_t col : ASetup.ColBreaks()) AOut += Line(" c%d", col);
  AOut +=
      " area " + Ref(ASetup.PrintArea()) + " titles " + Ref(ASetup.TitleRows()) + " " + Ref(ASetup.TitleCols()) + "\n";
}

}  // namespace

std::string DumpFormat(const TCellFormat& AFormat) {
  const TCellFillInfo& fill = AFormat.Fill;
  const TCellAlignmentInfo& alignment = AFormat.Alignment;
  const bool isGeneral = AFormat.NumberFormat.IsEmpty() || EqualAsciiNoCase(AFormat.NumberFormat, u"General");
  std::string text = (isGeneral ? "General" : Text(AFormat.NumberFormat)) + " | " + Font(AFormat.Font) +
                     Line(" | f%d", fill.PatternType);
  if (fill.PatternType != 0)
    text += " " + Color(fill.ForegroundColor) + Line(" %06X", fill.BackgroundColor.ARGB & 0xFFFFFFu);
  if (fill.IsGradient()) text += Line(" %d", fill.GradientAngle);
  const TCellBorderInfo& border = AFormat.Border;
  text += Line(" | b%d%d%d%d%d%d%d", static_cast<int>(border.Left.Style), static_cast<int>(border.Top.Style),
               static_cast<int>(border.Right.Style), static_cast<int>(border.Bottom.Style),
               static_cast<int>(border.Diagonal.Style), border.DiagonalUp, border.DiagonalDown);
  return text + Line(" | h%d v%d w%d s%d i%d r%d o%d",
                     static_cast<int>(alignment.Horizontal == haFill ? haGeneral : alignment.Horizontal),
                     static_cast<int>(alignment.Vertical), alignment.WrapText, alignment.ShrinkToFit, alignment.Indent,
                     alignment.TextRotation, static_cast<int>(alignment.ReadingOrder));
}

std::string DumpWorkbook(const TWorkbook& ABook) {
  std::string out = Line("active %d theme", ABook.ActiveSheetIndex());
  for (const uint32_t color : ABook.Theme().Colors()) out += Line(" %06X", color & 0xFFFFFFu);
  out += "\n";
  for (const auto& [name, formula] : ABook.CopyNamedFormulas())
    if (!formula.IsEmpty() && !name.View().starts_with(u"_XLNM.PRINT"))
      out += "name " + Text(name) + " " + Text(formula) + "\n";
  for (int32_t index = 0; index < ABook.SheetCount(); ++index) {
    const TWorksheet& sheet = *ABook.GetSheet(index);
    const TSheetViewOptions& view = sheet.View();
    out += "sheet " + Text(sheet.Name()) +
           Line(" v%d g%d h%d z%d rtl%d frozen %d %d\n", static_cast<int>(sheet.Visibility()), view.ShowGridLines,
                view.ShowHeaders, view.Zoom, view.RightToLeft, sheet.FrozenCols(), sheet.FrozenRows());
    const TSheetSavedView& saved = sheet.SavedView();
    if (!saved.SelectionRanges.empty() || saved.ActiveCol != 1 || saved.ActiveRow != 1) {
      out += Line("view %d %d ", saved.ActiveCol, saved.ActiveRow) +
             Text(TSheetSavedView::FormatSqref(saved.SelectionRanges)) + "\n";
    }
    DumpSizes(sheet, out);
    DumpCells(ABook, sheet, out);
    DumpLists(sheet, out);
    DumpPage(sheet.PageSetup(), out);
  }
  return out;
}

std::string DumpDifference(const std::string& ALeft, const std::string& ARight) {
  if (ALeft == ARight) return {};
  std::istringstream left(ALeft);
  std::istringstream right(ARight);
  std::string leftLine;
  std::string rightLine;
  for (;;) {
    const bool hasLeft = static_cast<bool>(std::getline(left, leftLine));
    const bool hasRight = static_cast<bool>(std::getline(right, rightLine));
    if (!hasLeft && !hasRight) return {};
    if (!hasLeft || !hasRight || leftLine != rightLine)
      return (hasLeft ? leftLine : "(end)") + "\n" + (hasRight ? rightLine : "(end)");
  }
}

}  // namespace tessarine::test
