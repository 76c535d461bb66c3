#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/io/xlsx/XlsxWriter.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

#include "../support/WorkbookDump.h"

namespace tessarine {
namespace {

std::vector<std::byte> SavedBytes(TWorkbook& ABook) {
  TMemoryWriteStream stream;
  TXlsxWriter::SaveToStream(ABook, stream, {.Time = 45000});
  return stream.ToVector();
}

void LoadBytes(TWorkbook& ABook, const std::vector<std::byte>& ABytes) {
  TMemoryReadStream stream(ABytes);
  TXlsxReader::LoadFromStream(ABook, stream);
}

/// Shared formulas are loaded with the prefix of newer functions in capitals and written with it in small letters.
std::string Spelled(std::string ADump) {
  for (size_t at = 0; (at = ADump.find("_XLFN.", at)) != ADump.npos;) ADump.replace(at, 6, "_xlfn.");
  return ADump;
}

/// Saves ABook and loads it again: all that the file keeps is the same, and from then on so is every byte.
void ExpectRoundTrip(TWorkbook& ABook, const std::string& AName) {
  const std::vector<std::byte> first = SavedBytes(ABook);
  TWorkbook back;
  LoadBytes(back, first);
  EXPECT_EQ(test::DumpDifference(Spelled(test::DumpWorkbook(ABook)), Spelled(test::DumpWorkbook(back))), "") << AName;
  const std::vector<std::byte> second = SavedBytes(back);
  TWorkbook again;
  LoadBytes(again, second);
  EXPECT_TRUE(SavedBytes(again) == second) << AName;
}

/// Makes workbooks with a little of everything.
class TRandomBook {
 public:
  explicit TRandomBook(uint32_t ASeed) : FRandom(ASeed) {}

  void Fill(TWorkbook& ABook) {
    for (uint32_t i = Below(30); i > 0; --i) ABook.StyleSheet().AddCellXf(Format());
    ABook.SetNamedFormula(u"Rate", u"=0.25");
    ABook.SetNamedFormula(u"Twice_x0041_", u"=LAMBDA(x,x*2)");
    for (uint32_t i = Below(3); i > 0; --i) ABook.AddSheet(u"Sheet " + Text() + u"z");
    for (int32_t index = 0; index < ABook.SheetCount(); ++index) FillSheet(ABook, *ABook.GetSheet(index), index);
    ABook.SetActiveSheetIndex(static_cast<int32_t>(Below(static_cast<uint32_t>(ABook.SheetCount()))));
  }

 private:
  uint32_t Below(uint32_t ALimit) { return static_cast<uint32_t>(FRandom() % ALimit); }
  bool Chance() { return Below(2) == 0; }
  int32_t Line() { return static_cast<int32_t>(Below(30)) + 1; }
  TCellRange Range() { return TCellRange{Line(), Line(), Line(), Line()}.Normalize(); }

  std::u16string Text() {
    constexpr char16_t kUnits[] = u"ab \"<&>'_x0041_\n\t\r\x01é漢\xFFFE,%";
    std::u16string text;
    for (uint32_t i = Below(9) + 1; i > 0; --i) text += kUnits[Below(std::size(kUnits) - 1)];
    return Chance() ? text : text + u"_x0041_";
  }
  TColorRef Color() {
    return Chance() ? TColorRef::FromARGB(kOpaqueBlack | static_cast<uint32_t>(FRandom()))
                    : TColorRef::FromTheme(static_cast<int32_t>(Below(10)), Below(5) / 4.0 - 0.5);
  }
  TCellFontInfo Font() {
    TCellFontInfo font;
    if (Chance()) font.Name = u"Font \"A\" & _x0042_";
    font.Size = static_cast<float>(Below(80)) / 2 + 1;
    font.Bold = Chance();
    font.Italic = Chance();
    font.Strikethrough = Chance();
    font.Underline = static_cast<TUnderlineStyle>(Below(3));
    font.Color = Color();
    return font;
  }
  TCellFormat Format() {
    constexpr const char16_t* kCodes[] = {u"General", u"0.00", u"m/d/yyyy", u"[Red]0;-0\"_x0041_<\"", u"@"};
    TCellFormat format;
    format.Font = Font();
    format.NumberFormat = kCodes[Below(std::size(kCodes))];
    if (Chance()) {
      format.Fill.PatternType = static_cast<int32_t>(Below(11)) - 1;
      format.Fill.ForegroundColor = Color();
      format.Fill.BackgroundColor = TColorRef::FromARGB(kOpaqueBlack | Below(0xFFFFFF));
    }
    TCellBorderInfo& border = format.Border;
    for (TBorderSide* side : {&border.Left, &border.Top, &border.Right, &border.Bottom, &border.Diagonal})
      side->Style = static_cast<TBorderLineStyle>(Chance() ? Below(8) : 0);
    format.Alignment.Horizontal = static_cast<THorizontalAlignment>(Below(6));
    format.Alignment.Vertical = static_cast<TVerticalAlignment>(Below(3));
    format.Alignment.WrapText = Chance();
    format.Alignment.Indent = static_cast<int32_t>(Below(4));
    format.Alignment.TextRotation = static_cast<int32_t>(Below(181));
    format.Alignment.ReadingOrder = static_cast<TReadingOrder>(Below(3));
    return format;
  }

  TCell Cell(const TWorkbook& ABook) {
    constexpr const char16_t* kFormulas[] = {
        u"=A1+Sheet1!$B$2", u"=SUM(A1:B9)&\"<_x0041_>\"", u"=@SORT(A1:A3)",
        u"=SORT(A1:A3)",    u"=_xlfn.LET(a,1,b,a+1,a*b)", u"=IF(A1>\"é\",TRUE,Rate)"};
    TCell cell;
    switch (Below(6)) {
      case 0:
        cell.Value = TCellValue::FromNumber(std::ldexp(static_cast<double>(FRandom()), -static_cast<int>(Below(60))));
        break;
      case 1: cell.Value = TCellValue::FromNumber(static_cast<double>(Below(100000)) / 100); break;
      case 2: cell.Value = TCellValue::FromBoolean(Chance()); break;
      case 3: cell.Value = TCellValue::FromText(Text()); break;
      case 4: break;
      default:
        cell.Value = TCellValue::FromFormula(kFormulas[Below(std::size(kFormulas))]);
        if (Chance())
          cell.SetCachedResult(Chance() ? TCellValue::FromNumber(Below(9) / 3.0) : TCellValue::FromText(Text()));
    }
    cell.StyleIndex = static_cast<int32_t>(Below(static_cast<uint32_t>(ABook.StyleSheet().Count())));
    if (Below(8) == 0) {
      cell.HasFormatOverride = true;
      cell.FormatOverride = Format();
    }
    if (cell.Value.Kind == cvkText && Chance()) {
      cell.RichText = {{u"one ", Font()}, {TText(Text()), Font()}};
      cell.Value = TCellValue::FromText(cell.RichText[0].Text.ToString() + cell.RichText[1].Text.ToString());
    }
    return cell;
  }

  void FillSheet(TWorkbook& ABook, TWorksheet& ASheet, int32_t AIndex) {
    for (uint32_t i = Below(300); i > 0; --i) ASheet.SetCell({Line(), Line()}, Cell(ABook));
    TRowColSizing& sizing = ASheet.Sizing();
    for (uint32_t i = Below(8); i > 0; --i) {
      sizing.SetColWidthChars(Line(), Below(1000) / 16.0);
      sizing.SetRowHeightPt(Line(), Below(100) / 4.0);
      sizing.SetRowHidden(Line(), true);
      sizing.SetColHidden(Line(), true);
      sizing.SetRowOutlineLevel(Line(), static_cast<int32_t>(Below(8)));
      sizing.SetColOutlineLevel(Line(), static_cast<int32_t>(Below(8)));
      sizing.SetRowCollapsed(Line(), true);
      sizing.SetColCollapsed(Line(), true);
    }
    sizing.SetDefaultRowHeight(12.75);
    sizing.SetOutlineSummaryBelow(Chance());
    for (int32_t i = 0; i < 4; ++i) ASheet.MergeRange({40 + i * 3, 1, 41 + i * 3, Line() + 1});
    for (uint32_t i = Below(12); i > 0; --i)
      ASheet.Hyperlinks().SetHyperlinkRange(Range(), TText(Chance() ? u"http://a.example/?a&b" : u"Sheet1!_x0041_"));
    FillRules(ASheet);
    FillPage(ASheet.PageSetup());
    TSheetViewOptions view;
    view.ShowGridLines = Chance();
    view.Zoom = Chance() ? 100 : 75;
    view.RightToLeft = Chance();
    ASheet.SetView(view);
    ASheet.SetFrozenRows(static_cast<int32_t>(Below(3)));
    ASheet.SetFrozenCols(static_cast<int32_t>(Below(3)));
    const TCellRange selected = Range();
    ASheet.SavedView().AssignFrom({Range(), selected}, selected.StartCol, selected.EndRow, 0, 0, false);
    if (Chance()) {
      ASheet.AutoFilter().Enable({1, 1, 9, 20});
      ASheet.AutoFilter().SetColumnContains(3, TText(u"a*?~b" + Text()), false);
      ASheet.AutoFilter().SetColumnValues(5, {u"", TText(Text())}, false);
    }
    TSheetTable& table =
        ASheet.Tables().Add(TText(u"Table_" + std::u16string(1, static_cast<char16_t>(u'a' + AIndex))), {60, 1, 62, 9});
    for (int32_t col = 60; col <= 62; ++col)
      ASheet.SetValue({col, 1}, TCellValue::FromText(Text() + static_cast<char16_t>(u'0' + col - 60)));
    table.SetShowAutoFilter(false);
    table.SetStyleName(u"_x0041_");
    ASheet.RefreshTableColumnNames();
  }

  void FillRules(TWorksheet& ASheet) {
    for (uint32_t i = Below(5); i > 0; --i) {
      TDataValidationRule rule;
      rule.ValidationType = static_cast<TDataValidationType>(Below(6) + 1);
      rule.Operator = static_cast<TDataValidationOperator>(Below(8));
      rule.ErrorStyle = static_cast<TDataValidationErrorStyle>(Below(3));
      rule.Ranges = {Range(), {50, 50, 50, 50}};
      rule.Formula1 = Chance() ? u"$A$1:$A$9" : u"LET(x,$A$1:$A$9,x)";
      rule.Formula2 = rule.ValidationType == dvtList ? u"" : u"B1*2";
      rule.AllowBlank = Chance();
      rule.ShowErrorMessage = Chance();
      rule.Prompt = Text();
      rule.ShowInputMessage = true;
      rule.ErrorTitle = Text();
      ASheet.Validations().AddRule(rule);
    }
  }

  void FillPage(TPageSetup& ASetup) {
    ASetup.Orientation = Chance() ? poLandscape : poPortrait;
    ASetup.SetPaperSize(static_cast<TPaperSize>(Below(15)));
    ASetup.FitToPage = Chance();
    ASetup.FitToHeight = static_cast<int32_t>(Below(3));
    ASetup.ScalePercent = static_cast<int32_t>(Below(200)) + 10;
    ASetup.FirstPageNumber = static_cast<int32_t>(Below(3));
    ASetup.BlackAndWhite = Chance();
    ASetup.MarginLeft = Below(100) / 64.0;
    ASetup.CenterVertically = Chance();
    ASetup.PageOrder = Chance() ? poOverThenDown : poDownThenOver;
    ASetup.CommentsMode = static_cast<TPrintCommentsMode>(Below(3));
    ASetup.ErrorsMode = static_cast<TPrintErrorsMode>(Below(4));
    ASetup.Header = {u"&A", u"", u"page &P"};
    ASetup.Footer.Center = u"<&D>";
    for (uint32_t i = Below(4); i > 0; --i) ASetup.AddRowBreak(Line());
    ASetup.AddColBreak(Line());
    if (Chance()) ASetup.SetPrintArea(Range());
    if (Chance()) ASetup.SetTitleRows(2, 3);
    if (Chance()) ASetup.SetTitleCols(1, Line());
  }

  std::mt19937 FRandom;
};

TEST(XlsxRoundTrip, RandomWorkbooksComeBack) {
  for (uint32_t seed = 1; seed <= 60 && !testing::Test::HasFailure(); ++seed) {
    TWorkbook book;
    TRandomBook(seed).Fill(book);
    ExpectRoundTrip(book, "seed " + std::to_string(seed));
  }
}

TEST(XlsxRoundTrip, SamplesComeBack) {
  namespace fs = std::filesystem;
  const fs::path source = TESS_SOURCE_DIR;
  std::vector<fs::path> files;
  for (const fs::path& folder : {source / "tests" / "data", source / ".." / "shared" / "corpus" / "xlsx"}) {
    if (!fs::is_directory(folder)) continue;
    for (const auto& entry : fs::directory_iterator(folder))
      if (entry.path().extension() == ".xlsx") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  ASSERT_FALSE(files.empty());
  for (const fs::path& file : files) {
    TWorkbook book;
    try {
      TXlsxReader::LoadFromFile(book, file.string());
    } catch (const ETessarineError&) {
      continue;  // what a reader makes of broken files is tested beside it
    }
    ExpectRoundTrip(book, file.filename().string());
  }
}

}  // namespace
}  // namespace tessarine
