#include <stop_token>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

#include "../support/TemporaryFolder.h"
#include "../support/Thrown.h"
#include "../support/XlsxBuilder.h"
#include "../support/ZipBuilder.h"

namespace tessarine {
namespace {

using test::DumpCells;
using test::Row;
using test::Thrown;
using test::TXlsxBuilder;

const std::string kCell = Row("<c r='A1'><v>1</v></c>");

/// The sheets as "S1: cells | S2: cells", with "*" behind the active one and "h" or "v" behind hidden ones.
std::string DumpBook(const TWorkbook& ABook) {
  std::string text;
  for (int32_t index = 0; index < ABook.SheetCount(); ++index) {
    const TWorksheet& sheet = *ABook.GetSheet(index);
    if (index > 0) text += " | ";
    text += sheet.Name().ToUtf8();
    if (index == ABook.ActiveSheetIndex()) text += "*";
    if (!sheet.IsVisible()) text += sheet.Visibility() == svHidden ? "h" : "v";
    text += ": " + DumpCells(sheet);
  }
  return text;
}

// ---- the walk

TEST(XlsxPackage, WithoutAWorkbookPartIsANewWorkbook) {
  TWorkbook book;
  book.AddSheet("old");
  TXlsxBuilder()
      .Part("xl/workbook.xml", "")
      .Part("xl/styles.xml", "<styleSheet><cellXfs><xf/><xf/></cellXfs></styleSheet>")
      .Part("xl/worksheets/sheet1.xml", "<not well-formed")
      .Load(book);
  EXPECT_EQ(DumpBook(book), "Sheet1*: ");
  EXPECT_EQ(book.StyleSheet().Count(), 2);
  EXPECT_FALSE(book.IsModified());
}

TEST(XlsxPackage, FindsPartsUnderOddNames) {
  const auto workbook = [](const std::string& ATarget) {
    test::TZipBuilder zip;
    zip.Add("XL\\Workbook.XML",
            "<x:workbook xmlns:x='u'><x:sheets><x:sheet name='S' r:id='a'/></x:sheets></x:workbook>");
    zip.Add("xl/_RELS/workbook.xml.RELS",
            "<Relationships><Relationship Id='a' Target='" + ATarget + "'/></Relationships>");
    zip.Add("xl\\Sheets\\One.xml", "<worksheet>" + kCell + "</worksheet>");
    zip.Add("xl/sheets/one.xml", "<worksheet/>");
    TWorkbook book;
    const auto bytes = zip.Finish();
    TMemoryReadStream stream(bytes);
    TXlsxReader::LoadFromStream(book, stream);
    return DumpBook(book);
  };
  for (const char* target : {"sheets/one.xml", "/xl/sheets/ONE.xml", "sheets\\one.xml", "\\XL\\sheets\\one.xml"})
    EXPECT_EQ(workbook(target), "S*: A1=1") << target;
  for (const char* target : {"/sheets/one.xml", "xl/sheets/one.xml", "../xl/sheets/one.xml", ""})
    EXPECT_EQ(workbook(target), "S*: ") << target;
}

TEST(XlsxPackage, SheetsWithoutAPartAreEmpty) {
  TWorkbook book;
  TXlsxBuilder()
      .Part("xl/workbook.xml",
            "<workbook><sheets><sheet r:id='none'/><sheet name='B' state='Hidden'/>"
            "<sheet name='C' state='veryhidden' id='c'/><other name='D'/></sheets></workbook>")
      .Part("xl/_rels/workbook.xml.rels", "<Relationships><Relationship Id='c' Target='c.xml'/></Relationships>")
      .Part("xl/c.xml", "")
      .Load(book);
  EXPECT_EQ(DumpBook(book), "Sheet1*:  | Bh:  | Cv: ");
}

TEST(XlsxPackage, ChoosesTheActiveSheet) {
  const struct {
    const char* Views;
    const char* States[3];
    const char* Selected[3];
    int32_t Active;
  } cases[] = {
      {"<workbookView activeTab='2'/><workbookView activeTab='1'/>", {"", "", ""}, {"0", "1", "0"}, 2},
      {"<workbookView activeTab='3'/>", {"", "", ""}, {"0", "1", "1"}, 1},
      {"<workbookView activeTab='-1'/>", {"", "", ""}, {"0", "0", "0"}, 0},
      {"<workbookView/>", {"", "", ""}, {"0", "0", "1"}, 2},
      {"", {"", "", ""}, {"0", "1", "0"}, 1},
      {"<workbookView activeTab='1'/>", {"", "hidden", ""}, {"0", "0", "0"}, 0},
      {"<workbookView activeTab='0'/>", {"hidden", "veryHidden", ""}, {"0", "0", "0"}, 2},
      {"<workbookView activeTab='1'/>", {"hidden", "hidden", "hidden"}, {"0", "0", "0"}, 0},
  };
  for (const auto& row : cases) {
    TXlsxBuilder xlsx;
    for (size_t i = 0; i < 3; ++i) {
      xlsx.Sheet("<sheetViews><sheetView tabSelected='" + std::string(row.Selected[i]) + "'/></sheetViews>",
                 "state='" + std::string(row.States[i]) + "'");
    }
    TWorkbook book;
    xlsx.Workbook("<bookViews>" + std::string(row.Views) + "</bookViews>").Load(book);
    EXPECT_EQ(book.ActiveSheetIndex(), row.Active) << row.Views;
  }
}

TEST(XlsxPackage, ReadsDefinedNames) {
  TWorkbook book;
  TXlsxBuilder()
      .Sheet("")
      .Workbook(
          "<definedNames><definedName name='Rate'> S1!$A$1\n</definedName><definedName name='none'> </definedName>"
          "<definedName>A1</definedName><definedName name='rate' localSheetId='0'>2*<b>3</b></definedName>"
          "<definedName name='_xlnm.Print_Area'>S1!$A$1:$B$2</definedName>"
          "<definedName name='let'>SUM(_xlfn.LET(_xlpm.a,1,_xlpm.a))</definedName></definedNames>")
      .Load(book);
  EXPECT_EQ(book.NamedFormulaNames(), (std::vector<TText>{u"LET", u"RATE", u"_XLNM.PRINT_AREA"}));
  EXPECT_EQ(book.FindNamedFormula("rate"), u"=2*3");
  EXPECT_EQ(book.FindNamedFormula("let"), u"=SUM(_xlfn.LET(a,1,a))");
  EXPECT_EQ(book.FindNamedFormula("_xlnm.print_area"), u"=S1!$A$1:$B$2");
}

// ---- failures

TEST(XlsxPackage, RaisesTheFirstErrorOfTheWalk) {
  // All of these parts are damaged; each step mends one, in the order in which they are read.
  const char* const parts[] = {"xl/theme/theme1.xml",
                               "xl/styles.xml",
                               "xl/sharedStrings.xml",
                               "xl/workbook.xml",
                               "xl/_rels/workbook.xml.rels",
                               "xl/worksheets/sheet1.xml",
                               "xl/worksheets/_rels/sheet1.xml.rels",
                               "xl/tables/t.xml",
                               "xl/worksheets/sheet2.xml"};
  const auto good = [](const std::string& AName) -> std::string {
    if (AName == "xl/workbook.xml")
      return "<workbook><sheets><sheet name='S1' r:id='a'/><sheet name='S2' r:id='b'/><sheet name='S3' r:id='c'/>"
             "</sheets><definedNames><definedName name='n'>1</definedName></definedNames></workbook>";
    if (AName == "xl/_rels/workbook.xml.rels")
      return "<Relationships><Relationship Id='a' Target='worksheets/sheet1.xml'/>"
             "<Relationship Id='b' Target='worksheets/sheet2.xml'/></Relationships>";
    if (AName == "xl/worksheets/_rels/sheet1.xml.rels")
      return "<Relationships><Relationship Id='a' Type='x/table' Target='../tables/t.xml'/></Relationships>";
    return "<root>" + kCell + "</root>";
  };
  const char* const states[] = {"Sheet1*: ", "Sheet1*: ", "Sheet1*: ", "Sheet1*: ",       "",
                                "S1*: ",     "S1*: ",     "S1*: A1=1", "S1*: A1=1 | S2: "};
  for (size_t sound = 0; sound < std::size(parts); ++sound) {
    TXlsxBuilder xlsx;
    for (size_t i = 0; i < std::size(parts); ++i)
      xlsx.Part(parts[i], i < sound ? good(parts[i]) : good(parts[i]) + "<");
    xlsx.Part("xl/calcChain.xml", "<");
    TWorkbook book;
    const std::string error = Thrown([&] { xlsx.Load(book); });
    EXPECT_EQ(error.substr(0, error.find(',')), "format: " + std::string(parts[sound]));
    EXPECT_EQ(DumpBook(book), states[sound]) << parts[sound];
    EXPECT_EQ(book.IsModified(), sound >= 7) << parts[sound];
    EXPECT_TRUE(book.NamedFormulaNames().empty());
  }
}

TEST(XlsxPackage, OnePartIsNotReadForManySheets) {
  TXlsxBuilder xlsx;
  std::string sheets;
  for (int i = 0; i < 20; ++i) sheets += "<sheet r:id='a'/>";
  xlsx.Part("xl/workbook.xml", "<workbook><sheets>" + sheets + "</sheets></workbook>");
  xlsx.Part("xl/_rels/workbook.xml.rels", "<Relationships><Relationship Id='a' Target='s.xml'/></Relationships>");
  xlsx.Part("xl/s.xml", "<worksheet>" + kCell + "<!--" + std::string(4'000'000, '.') + "--></worksheet>");
  TWorkbook book;
  EXPECT_EQ(Thrown([&] { xlsx.Load(book); }),
            "limit: xl/s.xml: the repeated readings of parts of the workbook exceed the limit of the reader");
}

TEST(XlsxPackage, ADamagedSheetIsThereAndEmpty) {
  const char* const everything =
      "<sheetViews><sheetView showGridLines='0' tabSelected='1'><pane state='frozen' xSplit='1' "
      "ySplit='1'/></sheetView>"
      "</sheetViews><cols><col width='30'/></cols><sheetData><row ht='40'><c r='C3'><v>1</v></c>"
      "<c r='A1'><f t='array' ref='A1:A2'>B1</f></c><c r='A2'><v>1</v></c></row></sheetData>"
      "<mergeCells><mergeCell ref='A1:B2'/></mergeCells><hyperlinks><hyperlink ref='A1' location='x'/></hyperlinks>";
  TXlsxBuilder xlsx;
  xlsx.Sheet(kCell).Sheet(everything).Sheet(kCell);
  xlsx.Part("xl/worksheets/sheet2.xml", "<worksheet>" + std::string(everything) + "</worksheet><");
  TWorkbook book;
  EXPECT_EQ(Thrown([&] { xlsx.Load(book); }),
            "format: xl/worksheets/sheet2.xml, line 1: the name of an element is missing or not valid");
  EXPECT_EQ(DumpBook(book), "S1*: A1=1 | S2: ");
  const TWorksheet& sheet = *book.GetSheet(1);
  EXPECT_EQ(sheet.View(), TSheetViewOptions());
  EXPECT_EQ(sheet.FrozenCols() + sheet.FrozenRows(), 0);
  EXPECT_EQ(sheet.UsedMaxCol() + sheet.UsedMaxRow(), 2);
  EXPECT_TRUE(sheet.Merges().IsEmpty());
  EXPECT_FALSE(sheet.FindHyperlink(1, 1));
  EXPECT_FALSE(sheet.SavedView().HasView);
  EXPECT_FALSE(sheet.Sizing().HasCustomColWidth(1));
  EXPECT_FALSE(sheet.Sizing().HasCustomRowHeight(1));
  EXPECT_TRUE(sheet.GetEffectiveValue({1, 2}).IsEmpty());
}

TEST(XlsxPackage, AFileThatIsNoPackageLeavesANewWorkbook) {
  const test::TTemporaryFolder folder;
  test::WriteFile(folder.Path("a.xlsx"), "no archive");
  TWorkbook book;
  book.AddSheet("old");
  EXPECT_THROW(TXlsxReader::LoadFromFile(book, folder.Path("missing.xlsx")), EFileAccess);
  EXPECT_EQ(DumpBook(book), "Sheet1*:  | old: ");
  EXPECT_THROW(TXlsxReader::LoadFromFile(book, folder.Path("a.xlsx")), EFileFormat);
  EXPECT_EQ(DumpBook(book), "Sheet1*: ");
}

TEST(XlsxPackage, EncodingsAreTakenFromTheByteOrderMark) {
  std::string sheet = "\xff\xfe";
  for (const char unit : "<worksheet>" + kCell + "</worksheet>") (sheet += unit) += '\0';
  TWorkbook book;
  TXlsxBuilder().Sheet("").Part("xl/worksheets/sheet1.xml", sheet).Load(book);
  EXPECT_EQ(DumpBook(book), "S1*: A1=1");
}

TEST(XlsxPackage, LimitsHold) {
  std::string columns;
  for (int i = 0; i < 60; ++i) columns += "<col/>";
  std::string links;
  for (int i = 0; i < 1001; ++i) links += "<hyperlink ref='A1:A4097' location='x'/>";
  const struct {
    TReadLimits Limits;
    TXlsxBuilder Package;
    const char* Error;
  } cases[] = {
      {{.MaxXmlDepth = 4},
       TXlsxBuilder().Sheet(kCell),
       "limit: xl/worksheets/sheet1.xml, line 1: elements are nested deeper than the limit of 4"},
      {{.MaxPartBytes = 600},
       TXlsxBuilder().Sheet(kCell + std::string(700, ' ')),
       "limit: xl/worksheets/sheet1.xml: the part inflates to 779 bytes, the limit is 600"},
      {{.MaxXmlTreeNodes = 50},
       TXlsxBuilder().Sheet("<cols>" + columns + "</cols>"),
       "limit: xl/worksheets/sheet1.xml: the part has more columns or links than the limit of 50"},
      {{},
       TXlsxBuilder().Sheet("<hyperlinks>" + links + "</hyperlinks>"),
       "limit: xl/worksheets/sheet1.xml: more than 1000 links cover more than 4096 cells each"},
      {{.MaxEntries = 4},
       TXlsxBuilder().Part("xl/workbook.xml",
                           "<workbook><sheets><sheet/><sheet/><sheet/><sheet/><sheet/></sheets></workbook>"),
       "limit: xl/workbook.xml: 5 sheets, the limit is 4"},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    EXPECT_EQ(Thrown([&] { row.Package.Load(book, {.Limits = row.Limits, .Control = {}}); }), row.Error);
  }
}

// ---- events, progress, stopping

TEST(XlsxPackage, TellsChangesOncePerSheetAndEndsUnmodified) {
  TWorkbook book;
  int fired = 0;
  book.SetOnModified([&](TWorkbook& ABook) {
    ++fired;
    EXPECT_TRUE(ABook.IsModified());
  });
  TXlsxBuilder()
      .Sheet(Row("<c r='A1'><v>1</v></c><c r='A2'><v>1</v></c>"))
      .Sheet("<cols><col/></cols>")
      .Sheet(kCell)
      .Load(book);
  EXPECT_EQ(fired, 2);
  EXPECT_FALSE(book.IsModified());
}

std::string ManyCells(int ACount) {
  std::string cells;
  for (int row = 1; row <= ACount; ++row) cells += "<c r='A" + std::to_string(row) + "'><v>1</v></c>";
  return Row(cells);
}

TEST(XlsxPackage, ProgressRisesToOne) {
  std::vector<double> fractions;
  TXlsxReadOptions options;
  options.Control.Progress = [&](const TTessarineProgressEvent& AEvent) { fractions.push_back(AEvent.Fraction); };
  TWorkbook book;
  TXlsxBuilder().Sheet(ManyCells(30'000)).Sheet(kCell).Load(book, options);
  EXPECT_GE(fractions.size(), 6u);
  EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
  EXPECT_EQ(fractions.back(), 1);
}

TEST(XlsxPackage, AStopLeavesWholeSheets) {
  const TXlsxBuilder xlsx = TXlsxBuilder().Sheet(kCell).Sheet(ManyCells(40'000)).Sheet(kCell);
  for (int after = 0;; ++after) {
    std::stop_source source;
    TXlsxReadOptions options;
    options.Control.Stop = source.get_token();
    int reports = 0;
    options.Control.Progress = [&](const TTessarineProgressEvent&) {
      if (reports++ == after) source.request_stop();
    };
    TWorkbook book;
    try {
      xlsx.Load(book, options);
      EXPECT_EQ(book.SheetCount(), 3);
      EXPECT_GT(after, 6);
      break;
    } catch (const ECancelled&) {
      for (int32_t index = 0; index < book.SheetCount(); ++index) {
        const TWorksheet& sheet = *book.GetSheet(index);
        const int32_t rows = sheet.UsedMaxRow();
        EXPECT_TRUE(rows == 1 || rows == 40'000) << index;
        EXPECT_EQ(sheet.HasCell({1, 2}), rows > 1) << index;
      }
    }
  }
}

// ---- the second thread

/// Sheets big enough to be inflated ahead.
std::string BigSheet(int ASeed) {
  return Row("<c r='A1'><v>" + std::to_string(ASeed) + "</v></c>") + std::string(3 << 19, ' ');
}

TEST(XlsxPackage, PartsReadAheadGiveTheSameSheetsAndErrors) {
  const std::string strings = "<si><t>s</t></si>" + std::string(3 << 19, ' ');
  TWorkbook book;
  TXlsxBuilder().Strings(strings).Sheet(BigSheet(1)).Sheet(BigSheet(2)).Sheet(kCell).Sheet(BigSheet(4)).Load(book);
  EXPECT_EQ(DumpBook(book), "S1*: A1=1 | S2: A1=2 | S3: A1=1 | S4: A1=4");

  // The sheet cannot be inflated; damage in front of it is still what is told.
  for (const char* damaged : {"xl/sharedStrings.xml", "xl/workbook.xml", "xl/_rels/workbook.xml.rels", ""}) {
    test::TZipBuilder zip;
    const auto add = [&](const char* AName, std::string AContent) {
      zip.Add(AName, AName == std::string(damaged) ? AContent + "<" : AContent);
    };
    add("xl/sharedStrings.xml", "<sst>" + strings + "</sst>");
    add("xl/workbook.xml", "<workbook><sheets><sheet name='S' r:id='a'/></sheets></workbook>");
    add("xl/_rels/workbook.xml.rels", "<Relationships><Relationship Id='a' Target='s.xml'/></Relationships>");
    zip.Add("xl/s.xml", "<worksheet>" + BigSheet(1) + "</worksheet>").DirectoryCrc = 7;
    const auto bytes = zip.Finish();
    TMemoryReadStream stream(bytes);
    const std::string error = Thrown([&] { TXlsxReader::LoadFromStream(book, stream); });
    const std::string part = *damaged ? damaged : "xl/s.xml";
    EXPECT_EQ(error.substr(0, part.size() + 8), "format: " + part);
  }
}

}  // namespace
}  // namespace tessarine
