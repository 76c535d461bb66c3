#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

#include "../support/Thrown.h"
#include "../support/XlsxBuilder.h"

namespace tessarine {
namespace {

using test::Row;
using test::TXlsxBuilder;

std::string Ranges(const std::vector<TCellRange>& ARanges) {
  return Utf16ToUtf8(TSheetSavedView::FormatSqref(ARanges));
}

// ---- validations

/// "name type operator [ranges] formula1;formula2 flags|title|prompt|error title|error"; flags: b blank, i input, e
/// error, w or n for the two mild styles.
std::string RuleText(const TDataValidationRule& ARule) {
  std::string text = ARule.Name.ToUtf8() + " " + std::to_string(static_cast<int>(ARule.ValidationType)) +
                     std::to_string(static_cast<int>(ARule.Operator)) + " [" + Ranges(ARule.Ranges) + "] ";
  text += ARule.Formula1.ToUtf8() + ";" + ARule.Formula2.ToUtf8() + " ";
  if (ARule.AllowBlank) text += 'b';
  if (ARule.ShowInputMessage) text += 'i';
  if (ARule.ShowErrorMessage) text += 'e';
  if (ARule.ErrorStyle != dvesStop) text += ARule.ErrorStyle == dvesWarning ? 'w' : 'n';
  for (const TText* part : {&ARule.PromptTitle, &ARule.Prompt, &ARule.ErrorTitle, &ARule.Error})
    text += "|" + part->ToUtf8();
  return text;
}

std::string LoadedRules(const std::string& AContent) {
  TWorkbook book;
  TXlsxBuilder().Sheet("<dataValidations>" + AContent + "</dataValidations>" + Row("")).Load(book);
  std::string text;
  for (const TDataValidationRule& rule : book.GetSheet(0)->Validations())
    text += (text.empty() ? "" : " / ") + RuleText(rule);
  return text;
}

TEST(XlsxValidations, AreReadByTheirWords) {
  const struct {
    const char* Content;
    const char* Rules;
  } cases[] = {
      {"<dataValidation type='list' sqref='A1:A3 C5'><formula1> \"a, b\" </formula1></dataValidation>",
       "xlsx1 10 [A1:A3 C5] \"a, b\"; be||||"},
      {"<dataValidation type=' textlength ' operator='GREATERTHANOREQUAL' sqref='B2' allowBlank='0' "
       "showErrorMessage='0' errorStyle='warning'><formula1>3</formula1><formula1>4</formula1></dataValidation>",
       "xlsx1 56 [B2] 3; w||||"},
      {"<dataValidation type='whole' operator='notBetween' sqref='B2' errorStyle='Information'>"
       "<formula2>9</formula2><formula1>1</formula1></dataValidation>",
       "xlsx1 21 [B2] 1;9 ben||||"},
      // A prompt is shown when there is one, unless the file says no.
      {"<dataValidation type='custom' sqref='B2' promptTitle='T' prompt='two_x000a_lines' errorTitle='E' error='e'/>"
       "<dataValidation type='date' sqref='B3' prompt='p' showInputMessage='0'/>",
       "xlsx1 60 [B2] ; bie|T|two\nlines|E|e / xlsx2 40 [B3] ; be||p||"},
      // Rules that are skipped count in the names.
      {"<dataValidation type='time' sqref='A1'/><dataValidation sqref='A1'/><dataValidation type='list'/>"
       "<other type='list' sqref='A1'/><x:dataValidation type='decimal' sqref='A:A $B$2'/>",
       "xlsx4 30 [B2] ; be||||"},
      {"<dataValidation type='custom' sqref='A1'><formula1>'[2]In'!A1+LET(_xlpm.x,1,_xlpm.x)</formula1>"
       "</dataValidation>",
       "xlsx1 60 [A1] 'In'!A1+LET(x,1,x); be||||"},
  };
  for (const auto& row : cases) EXPECT_EQ(LoadedRules(row.Content), row.Rules) << row.Content;
}

TEST(XlsxValidations, OfExtensionsAndDamagedPartsAreNotThere) {
  const std::string rule = "<dataValidations><dataValidation type='list' sqref='A1'/></dataValidations>";
  TWorkbook book;
  TXlsxBuilder().Sheet("<extLst><ext>" + rule + "</ext></extLst>" + rule).Load(book);
  EXPECT_EQ(book.GetSheet(0)->Validations().Count(), 1u);
  EXPECT_NE(test::Thrown([&] {
              TXlsxBuilder().Sheet(rule + "<pageSetup scale='50'/><autoFilter ref='A1:B2'/><broken").Load(book);
            }),
            "nothing");
  const TWorksheet& sheet = *book.GetSheet(0);
  EXPECT_TRUE(sheet.Validations().IsEmpty());
  EXPECT_EQ(sheet.PageSetup(), TPageSetup());
  EXPECT_FALSE(sheet.AutoFilter().IsEnabled());
}

// ---- page settings

TPageSetup LoadedPage(const std::string& AContent) {
  TWorkbook book;
  TXlsxBuilder().Sheet(AContent).Load(book);
  return book.GetSheet(0)->PageSetup();
}

TEST(XlsxPageSettings, AreReadElementByElement) {
  const TPageSetup page = LoadedPage(
      "<printOptions gridLines='1' headings='TRUE' horizontalCentered='1' verticalCentered='0'/>"
      "<pageMargins left='1.5' top='x' header='.25'/>"
      "<pageSetup paperSize='9' orientation='Landscape' scale='55' firstPageNumber='7' pageOrder='overThenDown' "
      "blackAndWhite='1' draft='true' cellComments='atEnd' errors='NA'/>"
      "<pageSetup fitToHeight='0'/>"
      "<rowBreaks><brk id='20'/><brk id='5' man='1'/><brk id='20'/><brk id='0'/><brk id='-3'/><brk id='2147483647'/>"
      "<x id='8'/></rowBreaks><colBreaks><brk id='16383'/><brk id='16'/></colBreaks><rowBreaks><brk id='1'/>"
      "</rowBreaks>");
  TPageSetup wanted;
  wanted.PrintGridlines = wanted.PrintHeadings = wanted.CenterHorizontally = true;
  wanted.MarginLeft = 1.5;
  wanted.MarginHeader = 0.25;
  wanted.SetPaperSize(psA4);
  wanted.Orientation = poLandscape;
  wanted.ScalePercent = 55;
  wanted.FirstPageNumber = 7;
  wanted.PageOrder = poOverThenDown;
  wanted.BlackAndWhite = wanted.DraftQuality = true;
  wanted.CommentsMode = pcmAtEnd;
  wanted.ErrorsMode = pemNA;
  wanted.FitToPage = true;
  wanted.FitToHeight = 0;
  for (const int32_t row : {2, 6, 21}) wanted.AddRowBreak(row);
  for (const int32_t col : {17, 16384}) wanted.AddColBreak(col);
  EXPECT_EQ(page, wanted);
}

TEST(XlsxPageSettings, PaperOfItsOwnSizeIsInInches) {
  const struct {
    const char* Setup;
    double Width;
    double Height;
  } cases[] = {
      {"paperSize='77' paperWidth='254mm' paperHeight='12.7cm'", 10, 5},
      {"paperSize='77' paperWidth='7' paperHeight='144pt'", 7, 2},
      {"paperSize='77' paperWidth='-7' paperHeight='mm'", 8.5, 11},
      {"paperSize='8'", 11.69, 16.54},
      {"", 8.5, 11},
  };
  for (const auto& row : cases) {
    const TPageSetup page = LoadedPage("<pageSetup " + std::string(row.Setup) + "/>");
    EXPECT_DOUBLE_EQ(page.PaperWidthInches(), row.Width) << row.Setup;
    EXPECT_DOUBLE_EQ(page.PaperHeightInches(), row.Height) << row.Setup;
  }
}

TEST(XlsxPageSettings, HeadersAreSplitAtTheFirstCodeOfEachSection) {
  const struct {
    const char* Text;
    const char* Sections;
  } cases[] = {
      {"plain &amp;P", "|plain &P|"},
      {"&amp;Lleft&amp;Cmid &amp;P&amp;Rright", "left|mid &P|right"},
      {"&amp;Rr&amp;Ll", "l||r"},
      {"&amp;Ca&amp;Cb", "|a&Cb|"},
      {"Q&amp;&amp;Loss&amp;Lx", "x|Q&&Loss|"},
      {"front&amp;Ccentre", "|frontcentre|"},
      {"&amp;L&amp;\"A,Bold\"x_x000a_y&amp;", "&\"A,Bold\"x\ny&||"},
  };
  for (const auto& row : cases) {
    const std::string text(row.Text);
    const TPageSetup page = LoadedPage("<headerFooter><evenHeader>e</evenHeader><oddHeader>" + text +
                                       "</oddHeader><oddFooter>&amp;Rf</oddFooter><oddHeader>2</oddHeader>"
                                       "</headerFooter>");
    const THeaderFooterSection& header = page.Header;
    EXPECT_EQ(header.Left.ToUtf8() + "|" + header.Center.ToUtf8() + "|" + header.Right.ToUtf8(), row.Sections) << text;
    EXPECT_EQ(page.Footer.Right, u"f");
  }
}

// ---- print names

TEST(XlsxPrintNames, GoToTheSheetsThatTheyName) {
  TWorkbook book;
  TXlsxBuilder()
      .Sheet("")
      .Sheet("")
      .Workbook(
          "<definedNames><definedName name='_xlnm.Print_Area' localSheetId='0'>S1!$B$2:$C$9,s1!$E$1</definedName>"
          "<definedName name='_XLNM.print_area' localSheetId='1'>='S2'!$A$1:$A$5</definedName>"
          "<definedName name='print_titles'>'S2'!$A:$B,'S2'!$1:$3,S1!$2:$2,S3!$1:$1,broken</definedName>"
          "<definedName name='_xlnm.Print_Titles'>S1!$4:$4</definedName>"
          "<definedName name='Other'>S1!$A$1</definedName></definedNames>")
      .Load(book);
  const auto dump = [&](int32_t ASheet) {
    const TPageSetup& page = book.GetSheet(ASheet)->PageSetup();
    std::string text = page.HasPrintArea() ? Ranges({page.PrintArea()}) : "none";
    if (page.HasTitleCols()) text += " cols " + Ranges({page.TitleCols()});
    if (page.HasTitleRows()) text += " rows " + Ranges({page.TitleRows()});
    return text;
  };
  EXPECT_EQ(dump(0), "B1:E9 rows A4:XFD4");
  EXPECT_EQ(dump(1), "A1:A5 cols A1:B1048576 rows A1:XFD3");
  // All stay names of the workbook; of several of one name the last counts.
  EXPECT_EQ(book.FindNamedFormula(u"_xlnm.Print_Area"), TText(u"='S2'!$A$1:$A$5"));
  EXPECT_EQ(book.NamedFormulaNames().size(), 4u);
}

// ---- filters

std::string FilterText(const TSheetAutoFilter& AFilter) {
  if (!AFilter.IsEnabled()) return "off";
  std::string text = Ranges({AFilter.Range()});
  for (const auto& [col, column] : AFilter.Columns()) {
    text += " " + std::to_string(col) + (column.Contains.IsEmpty() ? "" : "~" + column.Contains.ToUtf8());
    for (const TText& value : column.Values) text += "," + value.ToUtf8();
  }
  return text;
}

TEST(XlsxFilters, KeepTextsAndPiecesOfText) {
  const auto custom = [](const std::string& AInside) {
    return "<filterColumn colId='0'><customFilters" + AInside + "</customFilters></filterColumn>";
  };
  const std::pair<std::string, const char*> cases[] = {
      {"", "B2:D9"},
      {"<filterColumn colId='1'><filters blank='1'><filter val='a'/><filter val='_x0041_'/></filters></filterColumn>",
       "B2:D9 3,,a,A"},
      {"<filterColumn colId='2'><filters/></filterColumn><filterColumn colId='0'/>", "B2:D9 4"},
      {custom("><customFilter operator='contains' val='a*b'/>"), "B2:D9 2~a*b"},
      {custom("><customFilter val='*a~*b*'/>"), "B2:D9 2~a*b"},
      {custom("><customFilter operator='equal' val='*x*'/>"), "B2:D9 2~x"},
      {custom("><customFilter val='p~?'/><customFilter val='q'/>"), "B2:D9 2,p?,q"},
      // What cannot be told by texts leaves the column unfiltered.
      {custom(" and='1'><customFilter val='p'/><customFilter val='q'/>"), "B2:D9"},
      {custom("><customFilter val='*x*'/><customFilter val='q'/>"), "B2:D9"},
      {custom("><customFilter operator='notEqual' val=' '/>") + custom("><customFilter val='x*'/>") +
           custom("><customFilter val='*'/>") + custom("><customFilter val='**'/>") +
           custom("><customFilter val='*x~*'/>"),
       "B2:D9"},
      {"<filterColumn colId='0'><filters><filter val='a'/><dateGroupItem year='2020'/></filters></filterColumn>"
       "<filterColumn colId='1'><top10 val='3'/></filterColumn>"
       "<filterColumn colId='-1'><filters/></filterColumn><filterColumn colId='16384'><filters/></filterColumn>",
       "B2:D9"},
  };
  for (const auto& [content, wanted] : cases) {
    TWorkbook book;
    TXlsxBuilder()
        .Sheet("<autoFilter ref='B2:D9'>" + content + "</autoFilter><autoFilter ref='A1'/>" + Row("<c r='B3'/>"))
        .Load(book);
    EXPECT_EQ(FilterText(book.GetSheet(0)->AutoFilter()), wanted) << content;
    EXPECT_FALSE(book.GetSheet(0)->Sizing().IsRowHidden(3));
  }
}

TEST(XlsxFilters, OfATableWithAHeaderBecomeTheSheets) {
  const struct {
    const char* Table;
    const char* Filter;
  } cases[] = {
      {"ref='A1:C9'><autoFilter ref='A1:C8'><filterColumn colId='1'><filters><filter val='x'/></filters>"
       "</filterColumn></autoFilter>",
       "A1:C8 2,x"},
      {"ref='A1:C9' totalsRowCount='1'><autoFilter/>", "A1:C8"},
      {"ref='A1:C9' headerRowCount='0'><autoFilter ref='A1:C9'/>", "H1:H5"},
      {"ref='A1:C9'><extLst><autoFilter ref='A1:C9'/></extLst>", "H1:H5"},
      {"ref='A:C'><autoFilter ref='A1:C9'/>", "H1:H5"},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    TXlsxBuilder()
        .Sheet("<autoFilter ref='H1:H5'/>")
        .Part("xl/worksheets/_rels/sheet1.xml.rels",
              "<Relationships><Relationship Id='t' Type='x/table' Target='../t.xml'/></Relationships>")
        .Part("xl/t.xml", "<table name='T' " + std::string(row.Table) + "</table>")
        .Load(book);
    EXPECT_EQ(FilterText(book.GetSheet(0)->AutoFilter()), row.Filter) << row.Table;
  }
}

// ---- what is lost is told

std::string ReportText(const TFileReport& AReport) {
  std::string text;
  for (const TFileReportItem& item : AReport.Items()) {
    text += std::string(FileFateName(item.Fate)) + " " + std::to_string(item.Count) + " " + item.Feature;
    if (!item.Where.empty()) text += " in " + item.Where;
    if (!item.Note.empty()) text += " (" + item.Note + ")";
    text += "\n";
  }
  return text;
}

TEST(XlsxReport, CountsWhatTheWorkbookCannotHold) {
  TFileReport report;
  TXlsxReadOptions options;
  options.Report = &report;
  TWorkbook book;
  TXlsxBuilder()
      .Sheet(
          Row("<c r='A1' t='e'><v>#N/A</v></c><c r='B1' t='s'><f>1</f><v>9</v></c><c r='C1'><v>1</v></c>"
              "<c r='D1' t='str'><v>12</v></c><c r='E1'><f t='dataTable' ref='E1'/><v>3</v></c>") +
          "<sheetPr><tabColor/></sheetPr><sheetViews><sheetView><pane xSplit='9'/></sheetView></sheetViews>"
          "<cols><col style='1'/><col style='0'/></cols><hyperlinks><hyperlink ref='A1' location='x' tooltip='t'/>"
          "<hyperlink ref='A2' location='x' "
          "r:id='t'/></hyperlinks><sheetProtection/><conditionalFormatting><cfRule/><cfRule><extLst><ext/></extLst></"
          "cfRule>"
          "</conditionalFormatting><dataValidations><dataValidation type='time' sqref='A1'/></dataValidations>"
          "<headerFooter><firstHeader>x</firstHeader><evenFooter/></headerFooter>"
          "<autoFilter ref='A1:B2'><filterColumn colId='0'><top10/></filterColumn></autoFilter>"
          "<mc:AlternateContent><mc:Choice><controls><control/></controls></mc:Choice><mc:Fallback><controls>"
          "<control/></controls></mc:Fallback></mc:AlternateContent>"
          "<extLst><ext uri='s'><sparklineGroup><sparkline/><sparkline/></sparklineGroup></ext><ext uri='u'/></extLst>")
      .Workbook(
          "<workbookPr date1904='1'/><workbookProtection/><definedNames><definedName name='N'>1</definedName>"
          "<definedName name='n' localSheetId='0'>2</definedName><definedName name='m' localSheetId='0'>3"
          "</definedName><definedName name='_xlnm._FilterDatabase' localSheetId='0'>S1!A1</definedName>"
          "</definedNames>")
      .Strings("<si><t>only</t></si>")
      .Part("xl/worksheets/_rels/sheet1.xml.rels",
            "<Relationships><Relationship Id='t' Type='x/table' Target='../t.xml'/></Relationships>")
      .Part("xl/t.xml",
            "<table name='T' ref='F1:G2'><tableColumns><tableColumn totalsRowFunction='sum'/><tableColumn>"
            "<calculatedColumnFormula>1</calculatedColumnFormula></tableColumn></tableColumns></table>")
      .Part("xl/comments1.xml", "<not read")
      .Part("xl/Comments2.xml", "")
      .Part("xl/calcChain.xml", "<not read")
      .Part("xl/worksheets/sheet9.xml", "<not read")
      .Part("docProps/app.xml", "")
      .Part("[Content_Types].xml", "")
      .Part("_rels/.rels", "")
      .Part("elsewhere/thing.bin", "")
      .Load(book, options);
  EXPECT_EQ(ReportText(report),
            "dropped 1 tab colour in S1\n"
            "dropped 1 split of a view in S1\n"
            "dropped 1 tip of a link in S1\n"
            "dropped 1 sheet protection in S1\n"
            "dropped 2 conditional format in S1\n"
            "dropped 1 data validation in S1 (time)\n"
            "dropped 1 header or footer of first or even pages in S1\n"
            "dropped 1 filter criterion in S1 (top10)\n"
            "dropped 1 form control in S1\n"
            "dropped 2 sparkline in S1\n"
            "dropped 1 extension in S1 (u)\n"
            "dropped 1 constant in S1 (errors, dates and texts without a table entry read as 0)\n"
            "dropped 1 shared text in S1 (the string table has no such entry)\n"
            "dropped 1 formula in S1 (the cell refers to the string table as well)\n"
            "dropped 1 data table in S1 (its values stay)\n"
            "dropped 1 format of a whole row or column in S1 (cells have their own)\n"
            "dropped 1 address of a link in S1 (it names a place as well, which is kept)\n"
            "dropped 2 column formula of a table in S1 (its cells have theirs)\n"
            "dropped 1 defined name in xl/workbook.xml (n)\n"
            "rewritten 1 defined name of one sheet in xl/workbook.xml (m)\n"
            "dropped 1 1904 date system in xl/workbook.xml (all dates show four years and a day too early)\n"
            "dropped 1 workbook protection in xl/workbook.xml\n"
            "dropped 2 comment part (xl/comments1.xml)\n"
            "dropped 1 calculation chain (xl/calcChain.xml)\n"
            "dropped 1 unlisted sheet (xl/worksheets/sheet9.xml)\n"
            "dropped 1 document properties (docProps/app.xml)\n"
            "dropped 1 part (elsewhere/thing.bin)\n");
}

TEST(XlsxReport, IsEmptyForWhatComesThroughWhole) {
  TFileReport report;
  TXlsxReadOptions options;
  options.Report = &report;
  TWorkbook book;
  TXlsxBuilder().Sheet(Row("<c r='A1'><v>1</v></c>") + "<pageMargins left='1'/>").Load(book, options);
  EXPECT_EQ(ReportText(report), "");
}

}  // namespace
}  // namespace tessarine
