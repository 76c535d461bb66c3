#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/ods/detail/OdsChartReader.h>
#include <tessarine/io/ods/detail/OdsValidationReader.h>
#include <tessarine/platform/Errors.h>

#include "../support/OdsBuilder.h"
#include "../support/Thrown.h"

namespace tessarine {
namespace {

using test::DumpCells;
using test::Thrown;
using test::TOdsBuilder;

const std::string kRow = "<table:table-row><table:table-cell><text:p>x</text:p></table:table-cell></table:table-row>";

/// "S1: cells | S2: cells", with "*" behind the active sheet and "h" behind hidden ones.
std::string DumpBook(const TWorkbook& ABook) {
  std::string text;
  for (int32_t index = 0; index < ABook.SheetCount(); ++index) {
    const TWorksheet& sheet = *ABook.GetSheet(index);
    if (index > 0) text += " | ";
    text += sheet.Name().ToUtf8() + (index == ABook.ActiveSheetIndex() ? "*" : "") + (sheet.IsVisible() ? "" : "h");
    text += ": " + DumpCells(sheet);
  }
  return text;
}

TEST(OdsDocument, FindsTablesInWrappersAndNoOthers) {
  TWorkbook book;
  TOdsBuilder()
      .Styles(
          "<style:style style:name='h' style:family='table'><style:table-properties "
          "table:display='false'/></style:style>")
      .Front("<table:dde-links><table:dde-link><table:table table:name='dde'/></table:dde-link></table:dde-links>")
      .Table(kRow, "table:style-name='h'")
      .Tail("<x:wrap><x:deep><table:table>" + kRow +
            "</table:table></x:deep></x:wrap>"
            "<table:tracked-changes><table:table/></table:tracked-changes>")
      .Load(book);
  EXPECT_EQ(DumpBook(book), "S1h: A1='x | Sheet2*: A1='x");
  EXPECT_FALSE(book.IsModified());
}

TEST(OdsDocument, WithoutSheetsIsANewWorkbook) {
  for (const char* const content : {"", "<office:document-content/>", "<d><body><text/></body></d>",
                                    "<d><body><spreadsheet/><spreadsheet><table/></spreadsheet></body></d>"}) {
    TWorkbook book;
    book.AddSheet("old");
    TOdsBuilder().Part("content.xml", content).Load(book);
    EXPECT_EQ(DumpBook(book).substr(0, 8), "Sheet1*:") << content;
    EXPECT_EQ(book.SheetCount(), 1);
  }
}

TEST(OdsDocument, IsReadWholeOrNotAtAll) {
  const std::string whole = TOdsBuilder().Table(kRow).Content();
  const struct {
    const char* Name;
    std::string Content;
    const char* Error;
  } cases[] = {{"content.xml", whole.substr(0, whole.size() - 1), "format: content.xml, line 1"},
               {"content.xml", whole + "<", "format: content.xml, line 1"},
               {"styles.xml", "<styles>", "format: styles.xml, line 1"}};
  for (const auto& row : cases) {
    TWorkbook book;
    const TOdsBuilder ods = TOdsBuilder().Part(row.Name, row.Content).Table(kRow);
    EXPECT_EQ(Thrown([&] { ods.Load(book); }).substr(0, std::string(row.Error).size()), row.Error);
    EXPECT_EQ(DumpBook(book), "Sheet1*: ");
    EXPECT_FALSE(book.IsModified());
  }
  TWorkbook book;
  std::stop_source stop;
  TOdsReadOptions options;
  options.Control.Stop = stop.get_token();
  options.Control.Progress = [&](const TTessarineProgressEvent&) { stop.request_stop(); };
  EXPECT_THROW(TOdsBuilder().Table(kRow).Load(book, options), ECancelled);
  EXPECT_EQ(DumpBook(book), "Sheet1*: ");
  options.Control = {};
  options.Limits.MaxEntries = 2;
  EXPECT_EQ(Thrown([&] { TOdsBuilder().Table("").Table("").Table("").Load(book, options); }),
            "limit: content.xml: more sheets than the limit of 2");
}

TEST(OdsDocument, HasNamesTablesAndFilters) {
  TWorkbook book;
  TFileReport report;
  TOdsReadOptions options;
  options.Report = &report;
  TOdsBuilder()
      .Table(
          "<table:named-expressions><table:named-range table:name='rate' table:cell-range-address='S1.A9'/>"
          "<table:named-range table:name='local' table:cell-range-address='S1.A8'/></table:named-expressions>" +
          kRow)
      .Table(kRow)
      .Tail(
          "<table:named-expressions><table:named-range table:name='rate' table:cell-range-address=\"$'S "
          "1'.$A$1:.$B$2\"/>"
          "<table:named-expression table:name='sum' table:expression='of:=SUM([.A1:.B2];1)'/>"
          "<table:named-range table:name='far' "
          "table:cell-range-address=\"'file:///x'#S.A1\"/></table:named-expressions>"
          "<table:database-ranges><table:database-range table:name='T' table:target-range-address='S2.A1:S2.B5' "
          "table:display-filter-buttons='true'><table:filter/></table:database-range>"
          "<table:database-range table:target-range-address='gone.C1:gone.C3' table:contains-header='false'/>"
          "<table:database-range table:target-range-address='bad'/></table:database-ranges>"
          "<table:data-pilot-tables><table:data-pilot-table/><table:data-pilot-table/></table:data-pilot-tables>")
      .Load(book, options);
  std::string names;
  for (const auto& [name, formula] : book.CopyNamedFormulas()) names += name.ToUtf8() + formula.ToUtf8() + " ";
  EXPECT_EQ(names, "LOCAL=S1!A8 RATE='S 1'!$A$1:$B$2 SUM=SUM(A1:B2,1) ");
  const TSheetTable& table = book.GetSheet(1)->Tables().GetItem(0);
  EXPECT_TRUE(table.Name() == u"T" && table.Ref().ToA1() == u"A1:B5" && table.ShowAutoFilter());
  EXPECT_EQ(table.ColumnNames(), (std::vector<TText>{u"x", u"Column2"}));
  EXPECT_EQ(book.GetSheet(1)->AutoFilter().Range().ToA1(), u"A1:B5");
  const TSheetTable& other = book.GetSheet(0)->Tables().GetItem(0);
  EXPECT_TRUE(other.Name() == u"Table2" && !other.HasHeaderRow() && !book.GetSheet(0)->AutoFilter().IsEnabled());
  std::string dropped;
  for (const TFileReportItem& item : report.Items()) dropped += item.Feature + " " + std::to_string(item.Count) + ", ";
  EXPECT_EQ(dropped, "name 1, filter criterion 1, pivot table 2, ");
}

TEST(OdsValidations, ReadConditions) {
  const struct {
    const char* Condition;
    const char* Rule;  // type, operator, operands
  } cases[] = {
      {"of:cell-content-is-in-list(\"a\";\"b c\")", "1 0 \"a,b c\" "},
      {"of:cell-content-is-in-list([$S1.$A$1:.$A$3])", "1 0 S1!$A$1:$A$3 "},
      {"of:cell-content-is-whole-number() and cell-content-is-between(1;MAX([.A1];2))", "2 0 1 MAX(A1,2)"},
      {"of:cell-content-is-decimal-number() and cell-content-is-not-between(0;9)", "3 1 0 9"},
      {"cell-content-is-date() and cell-content()>=45000", "4 6 45000 "},
      {"of:cell-content-text-length()<5", "5 5 5 "},
      {"of:cell-content-text-length-is-between(1;5)", "5 0 1 5"},
      {"of:cell-content()!=[.B1]", "3 3 B1 "},
      {"of:is-true-formula(ISNUMBER([.A1]))", "6 0 ISNUMBER(A1) "},
      {"", "0 0  "},
      {"of:cell-content-is-time() and cell-content()>0.5", "none"},
      {"of:cell-content-is-whole-number()", "none"},
      {"of:cell-content-is-between(1)", "none"},
  };
  for (const auto& row : cases) {
    TDataValidationRule rule;
    const bool isKnown = detail::OdsParseValidationCondition(row.Condition, rule);
    const std::string text = std::to_string(static_cast<int>(rule.ValidationType)) + " " +
                             std::to_string(static_cast<int>(rule.Operator)) + " " + rule.Formula1.ToUtf8() + " " +
                             rule.Formula2.ToUtf8();
    EXPECT_EQ(isKnown ? text : "none", row.Rule) << row.Condition;
  }
}

TEST(OdsValidations, AreBoundToTheRangesOfTheirCells) {
  const std::string cell = "<table:table-cell table:content-validation-name='v'/>";
  TWorkbook book;
  TOdsBuilder()
      .Front(
          "<table:content-validations><table:content-validation table:name='v' "
          "table:condition='of:cell-content-is-in-list(&quot;a&quot;)' table:allow-empty-cell='false'>"
          "<table:help-message table:title='t' "
          "table:display='true'><text:p>one</text:p><text:p>two</text:p></table:help-message>"
          "<table:error-message table:message-type='warning'/></table:content-validation>"
          "<table:content-validation table:name='unused'/><table:content-validation "
          "table:name='v'/></table:content-validations>")
      .Table("<table:table-row>" + cell + cell +
             "</table:table-row><table:table-row table:number-rows-repeated='1048575'>"
             "<table:table-cell table:content-validation-name='v' table:number-columns-repeated='2'/>"
             "<table:table-cell/>" +
             cell + "</table:table-row>")
      .Table(
          "<table:table-row><table:table-cell table:content-validation-name='v' "
          "table:number-columns-repeated='999999999'/></table:table-row>")
      .Load(book);
  std::string ranges;
  for (int32_t sheet = 0; sheet < 2; ++sheet)
    for (const TDataValidationRule& rule : book.GetSheet(sheet)->Validations())
      for (const TCellRange& range : rule.Ranges) ranges += TText(range.ToA1()).ToUtf8() + " ";
  EXPECT_EQ(ranges, "A1:B1048576 D2:D1048576 A1:XFD1 ");
  const TDataValidationRule& rule = book.GetSheet(0)->Validations().GetRule(0);
  EXPECT_TRUE(rule.Prompt == u"one\r\ntwo" && rule.ShowInputMessage && rule.PromptTitle == u"t" && !rule.AllowBlank);
  EXPECT_TRUE(!rule.ShowErrorMessage && rule.ErrorStyle == dvesWarning);
}

const char* const kShapes =
    "<draw:rect draw:z-index='2' draw:name='late' svg:x='1cm' svg:y='2cm' svg:width='3cm' svg:height='4cm' "
    "draw:style-name='g'><text:p>in</text:p></draw:rect>"
    "<draw:g><draw:a><draw:custom-shape draw:name='tri' svg:width='2cm' svg:height='2cm' "
    "draw:transform='rotate (1.5707963267949) translate (1cm 3cm)'><draw:enhanced-geometry draw:type='right-triangle' "
    "draw:mirror-horizontal='true'/></draw:custom-shape></draw:a><draw:line svg:x1='5cm' svg:y1='1cm' svg:x2='2cm' "
    "svg:y2='3cm'/></draw:g><draw:frame><draw:image xlink:href='Pictures/a.JPG'/></draw:frame>"
    "<draw:frame><draw:image xlink:href='http://x/a.png'/></draw:frame>"
    "<draw:frame><draw:image xlink:href='Pictures/none.png'/></draw:frame>"
    "<draw:frame><draw:text-box><text:p>box</text:p></draw:text-box></draw:frame>";

TEST(OdsDrawings, AreReadWithPlaceShapeAndStyle) {
  TWorkbook book;
  TOdsBuilder()
      .Styles(
          "<style:style style:name='g' style:family='graphic'><style:graphic-properties draw:fill-color='#112233' "
          "draw:stroke='none' svg:stroke-width='1mm'/></style:style>")
      .Part("Pictures/a.jpg", "bytes")
      .Table("<table:shapes>" + std::string(kShapes) +
             "</table:shapes><table:table-row><table:table-cell "
             "table:number-columns-repeated='2'/><table:table-cell><draw:ellipse draw:z-index='1' svg:x='1cm'/>"
             "</table:table-cell></table:table-row>")
      .Load(book);
  std::string dump;
  const TSheetDrawingList& drawings = book.GetSheet(0)->Drawings();
  for (int32_t index = 0; index < drawings.Count(); ++index) {
    const TSheetDrawing& drawing = *drawings.GetItem(index);
    const TDrawingAnchor& anchor = drawing.Anchor;
    dump += drawing.Kind == sdkPicture ? drawing.ContentType.ToUtf8() : drawing.PresetGeom.ToUtf8();
    dump += " " + std::to_string(anchor.PosXEmu / 360000) + "," + std::to_string(anchor.PosYEmu / 360000) + " " +
            std::to_string(anchor.ExtCxEmu / 360000) + "x" + std::to_string(anchor.ExtCyEmu / 360000) + " " +
            drawing.Text.ToUtf8() + "; ";
  }
  EXPECT_EQ(dump,
            "rtTriangle 1,1 2x2 ; line 2,1 3x2 ; image/jpeg 0,0 0x0 ; rect 0,0 0x0 box; ellipse 0,0 0x0 ; "
            "rect 1,2 3x4 in; ");
  EXPECT_TRUE(drawings.GetItem(0)->FlipH && drawings.GetItem(1)->FlipH && !drawings.GetItem(1)->FlipV);
  EXPECT_EQ(drawings.GetItem(0)->Rotation, 270 * 60000);
  EXPECT_EQ(drawings.GetItem(2)->ImageBytes.size(), 5u);
  EXPECT_TRUE(drawings.GetItem(4)->Anchor.Kind == dakOneCell && drawings.GetItem(4)->Anchor.FromCol == 3);
  EXPECT_EQ(drawings.GetItem(5)->FillColor, 0x332211u);
  EXPECT_TRUE(drawings.GetItem(5)->HasFill && !drawings.GetItem(5)->HasLine);
}

TEST(OdsCharts, AreReadFromTheirOwnTable) {
  const auto cell = [](const std::string& AText) { return "<table-cell><p>" + AText + "</p></table-cell>"; };
  const std::string chart =
      "<document-content><automatic-styles><style name='s' family='chart'><chart-properties data-label-number='value' "
      "data-label-text='true'/></style><style name='p' family='chart'><graphic-properties "
      "fill-color='#ff0000'/></style>"
      "<style name='plot' family='chart'><chart-properties vertical='true' stacked='true'/></style></automatic-styles>"
      "<body><chart><chart:chart class='chart:bar'><title><p>Sales</p></title><legend legend-position='top'/>"
      "<plot-area style-name='plot'><axis dimension='x'><categories cell-range-address='S1.A2:S1.A3'/></axis>"
      "<axis dimension='y'><title><p>Mio</p></title></axis><series style-name='s' "
      "values-cell-range-address='S1.B2:S1.B3'>"
      "<data-point/><data-point style-name='p' repeated='99999'/></series><series "
      "values-cell-range-address='local-table.C2:.C3'/><series/></plot-area><table "
      "name='local-table'><table-header-rows>"
      "<table-row>" +
      cell("") + cell("One") + cell("Two") + "</table-row></table-header-rows><table-rows><table-row>" + cell("a") +
      "<table-cell value='1.5'><p>x</p></table-cell>" + cell("2,5") + "</table-row><table-row>" + cell("b") +
      cell("3") + "</table-row></table-rows></table></chart:chart></chart></body></document-content>";
  const auto frame = [](const std::string& AObject) {
    return "<draw:frame><draw:object xlink:href='" + AObject + "'/><draw:image xlink:href='r'/></draw:frame>";
  };
  TWorkbook book;
  TOdsBuilder()
      .Part("Object 1/content.xml", chart)
      .Part("Object 2/content.xml", "<document-content><body><text/></body></document-content>")
      .Table("<table:shapes>" + frame("./Object 1") + frame("/Object 2/") + frame("Object 3") + "</table:shapes>" +
             kRow)
      .Load(book);
  ASSERT_EQ(book.GetSheet(0)->Drawings().Count(), 1);
  const TSheetDrawing& drawing = *book.GetSheet(0)->Drawings().GetItem(0);
  EXPECT_TRUE(drawing.ChartType == sctBar && drawing.Stacked && drawing.ShowLegend && drawing.LegendPos == clpTop);
  EXPECT_TRUE(drawing.Title == u"Sales" && drawing.ChartValueAxis.Title == u"Mio");
  ASSERT_EQ(drawing.Series.size(), 3u);
  const TSheetChartSeries& first = drawing.Series[0];
  EXPECT_EQ(first.Title, u"One");
  EXPECT_EQ(first.Values, (std::vector<double>{1.5, 3}));
  EXPECT_EQ(first.Categories, (std::vector<TText>{u"a", u"b"}));
  EXPECT_EQ(first.ValuesFormula, u"S1!B2:B3");
  EXPECT_EQ(first.CategoriesFormula, u"S1!A2:A3");
  EXPECT_EQ(first.PointColors, (std::vector<uint32_t>{0x6B6B1F, 0x0000FF}));
  EXPECT_TRUE(first.Labels.ShowVal && first.Labels.ShowCatName && !first.Labels.ShowPercent);
  EXPECT_EQ(drawing.Series[1].Values, (std::vector<double>{2.5, 0}));
  EXPECT_TRUE(drawing.Series[1].ValuesFormula.IsEmpty() && drawing.Series[2].Values.empty());

  size_t points = 5;  // of the first series with its categories, and not all of the second
  TSheetDrawing limited;
  detail::TOdsChartReader reader({}, points);
  EXPECT_TRUE(reader.Read(chart, "chart", limited) && reader.HasLeftOut() && points == 1);
  EXPECT_TRUE(limited.Series.size() == 3 && limited.Series[0].Values.size() == 2 && limited.Series[1].Values.empty());

  const TOdsBuilder damaged = TOdsBuilder()
                                  .Part("Object 1/content.xml", "<x>")
                                  .Table("<table:shapes>" + frame("Object 1") + "</table:shapes>" + kRow);
  EXPECT_EQ(Thrown([&] { damaged.Load(book); }).substr(0, 29), "format: Object 1/content.xml,");
  EXPECT_EQ(DumpBook(book), "S1*: A1='x");
}

/// Every file of the corpus that some checkouts have beside them opens, or says why not.
TEST(OdsCorpus, OpensOrIsRefused) {
  namespace fs = std::filesystem;
  const fs::path corpus = fs::path(TESS_SOURCE_DIR) / ".." / "shared" / "corpus";
  if (!fs::is_directory(corpus / "ods")) GTEST_SKIP() << "no corpus";
  for (const char* const folder : {"ods", "broken"}) {
    for (const auto& entry : fs::directory_iterator(corpus / folder)) {
      if (entry.path().extension() != ".ods") continue;
      TWorkbook book;
      const std::string error = Thrown([&] { TOdsReader::LoadFromFile(book, entry.path().string()); });
      const bool isDamaged = entry.path().filename() == "derived_trunc60.ods";
      EXPECT_EQ(error.substr(0, 6), isDamaged ? "format" : "nothin") << entry.path() << ": " << error;
      EXPECT_GE(book.SheetCount(), 1);
      EXPECT_FALSE(book.IsModified());
    }
  }
}

}  // namespace
}  // namespace tessarine
