#include <optional>
#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

#include "../support/Thrown.h"
#include "../support/XlsxBuilder.h"

namespace tessarine {
namespace {

using test::Row;
using test::TXlsxBuilder;

/// A workbook of one sheet with this content.
struct TLoaded {
  explicit TLoaded(const std::string& AContent) { TXlsxBuilder().Sheet(AContent).Load(Book); }
  const TWorksheet& Sheet() const { return *Book.GetSheet(0); }
  TWorkbook Book;
};

// ---- views

std::string SavedViewText(const TSheetSavedView& AView) {
  if (!AView.HasView) return "none";
  const auto a1 = [](int32_t ACol, int32_t ARow) { return Utf16ToUtf8(TCellAddress{ACol, ARow}.ToA1()); };
  std::string text = a1(AView.ActiveCol, AView.ActiveRow) + " [";
  text += Utf16ToUtf8(TSheetSavedView::FormatSqref(AView.SelectionRanges)) + "]";
  if (AView.TopLeftCol != 0) text += " from " + a1(AView.TopLeftCol, AView.TopLeftRow);
  return text + (AView.TabSelected ? " selected" : "");
}

TEST(XlsxViews, AreKeptWithASelectionATopLeftOrASelectedTab) {
  const struct {
    const char* View;
    const char* Saved;
  } cases[] = {
      {"<sheetView/>", "none"},
      {"<sheetView tabSelected='0'><selection activeCell='B2'/></sheetView>", "none"},
      {"<sheetView tabSelected='1'/>", "A1 [] selected"},
      {"<sheetView><selection sqref='B2:C3 E5' activeCell='C3'/></sheetView>", "C3 [B2:C3 E5]"},
      {"<sheetView><selection sqref='B2:C3'/></sheetView>", "B2 [B2:C3]"},
      {"<sheetView><selection sqref='A:A x'/></sheetView>", "none"},
      {"<sheetView topLeftCell='D9'/>", "A1 [] from D9"},
      {"<sheetView topLeftCell='D9'><pane state='frozen' ySplit='1' topLeftCell='A5'/></sheetView>", "A1 [] from A5"},
      {"<sheetView><pane state='split' topLeftCell='A5'/></sheetView>", "none"},
      {"<sheetView><pane state='frozen' topLeftCell='A5'/><selection pane='topRight' sqref='B1'/>"
       "<selection pane='bottomRight' activeCell='C7' sqref='C7:D8'/></sheetView>",
       "C7 [C7:D8] from A5"},
  };
  for (const auto& row : cases) {
    const TLoaded loaded("<sheetViews>" + std::string(row.View) + "</sheetViews>");
    EXPECT_EQ(SavedViewText(loaded.Sheet().SavedView()), row.Saved) << row.View;
  }
}

TEST(XlsxViews, SetTheOptionsOfTheSheet) {
  const TLoaded loaded(
      "<sheetViews><sheetView showGridLines='0' showRowColHeaders='False' zoomScale='75' rightToLeft='1'>"
      "<pane state='FrozenSplit' xSplit='2.0' ySplit='3'/></sheetView></sheetViews>");
  const TSheetViewOptions expected{.ShowGridLines = false, .ShowHeaders = false, .Zoom = 75, .RightToLeft = true};
  EXPECT_EQ(loaded.Sheet().View(), expected);
  EXPECT_EQ(loaded.Sheet().FrozenCols(), 2);
  EXPECT_EQ(loaded.Sheet().FrozenRows(), 3);
  const TLoaded odd(
      "<sheetViews><sheetView showGridLines='2' zoomScale='-9'>"
      "<pane state='frozen' xSplit='-4' ySplit='9e99'/></sheetView></sheetViews>");
  EXPECT_EQ(odd.Sheet().View(), TSheetViewOptions());
  EXPECT_EQ(odd.Sheet().FrozenCols(), 0);
  EXPECT_EQ(odd.Sheet().FrozenRows(), 1048575);
}

// ---- sizes

/// "width[level][h][c]" of a column that has something of its own, "-" else.
std::string ColText(const TRowColSizing& ASizing, int32_t ACol) {
  std::string text =
      ASizing.HasCustomColWidth(ACol) ? std::to_string(ASizing.GetColWidthChars(ACol)).substr(0, 4) : "-";
  if (ASizing.GetColOutlineLevel(ACol) != 0) text += "[" + std::to_string(ASizing.GetColOutlineLevel(ACol)) + "]";
  return text + (ASizing.IsColHidden(ACol) ? "h" : "") + (ASizing.IsColCollapsed(ACol) ? "c" : "");
}

TEST(XlsxSizes, ColumnsComeInRanges) {
  const struct {
    const char* Cols;
    const char* Shown[4];  // columns 1 to 4
  } cases[] = {
      {"<col min='2' max='3' width='20'/>", {"-", "20.0", "20.0", "-"}},
      {"<col/>", {"8.43", "-", "-", "-"}},
      {"<col min='3' hidden='1' outlineLevel='2' collapsed='true'/>", {"-", "-", "8.43[2]hc", "-"}},
      {"<col min='0' max='2' width='5'/><col min='-3' max='0' width='9'/>", {"5.00", "5.00", "-", "-"}},
      {"<col min='3' max='2' width='5'/>", {"-", "-", "-", "-"}},
      {"<col min='4' max='2000000000' width='5'/>", {"-", "-", "-", "5.00"}},
      {"<col min='2' max='3' width='5' outlineLevel='12' hidden='0'/>", {"-", "5.00[7]", "5.00[7]", "-"}},
      // Records that overlap: the last width counts, the rest adds up.
      {"<col min='1' max='3' width='5' hidden='1' outlineLevel='3'/><col min='2' max='4' width='6' outlineLevel='1'/>"
       "<col min='3' max='3' width='7' collapsed='1'/>",
       {"5.00[3]h", "6.00[1]h", "7.00[1]hc", "6.00[1]"}},
  };
  for (const auto& row : cases) {
    const TLoaded loaded("<cols>" + std::string(row.Cols) + "</cols>");
    for (int32_t col = 1; col <= 4; ++col)
      EXPECT_EQ(ColText(loaded.Sheet().Sizing(), col), row.Shown[col - 1]) << row.Cols << " " << col;
  }
}

TEST(XlsxSizes, ManyOverlappingColumnRecordsCostLittle) {
  std::string cols;
  for (int i = 0; i < 100'000; ++i) cols += "<col min='1' max='16384' width='5'/>";
  const TLoaded loaded("<cols>" + cols + "<col min='7' max='7' width='6'/></cols>");
  EXPECT_EQ(loaded.Sheet().Sizing().GetColWidthChars(7), 6);
  EXPECT_EQ(loaded.Sheet().Sizing().GetColWidthChars(16384), 5);
}

TEST(XlsxSizes, RowsSayTheirNumberOrAreCounted) {
  const TLoaded loaded(
      "<sheetFormatPr defaultRowHeight='20' defaultColWidth='x'/><sheetData><row ht='30'/><row r='7' ht='x' "
      "hidden='1'/>"
      "<row ht='31' outlineLevel='1' collapsed='1'/><row r='0' ht='40'/><row r='1048577' ht='41'/>"
      "<other/><row r='x' ht='42'/></sheetData>");
  const TRowColSizing& sizing = loaded.Sheet().Sizing();
  EXPECT_EQ(sizing.DefaultRowHeight(), 20);
  EXPECT_EQ(sizing.DefaultColWidth(), 8.43);
  const double heights[] = {30, 20, 31, 20, 20, 42, 15, 20};  // of rows 1 to 8
  for (int32_t row = 1; row <= 8; ++row) EXPECT_EQ(sizing.GetRowHeightPt(row), heights[row - 1]) << row;
  EXPECT_TRUE(sizing.IsRowHidden(7));
  EXPECT_TRUE(sizing.IsRowCollapsed(3));
  EXPECT_EQ(sizing.GetRowOutlineLevel(3), 1);
  EXPECT_FALSE(sizing.IsRowHidden(1));
}

TEST(XlsxSizes, SummaryLinesStandWhereThePartSays) {
  const struct {
    const char* Properties;
    bool Below;
    bool Right;
  } cases[] = {
      {"", true, true},
      {"<sheetPr><outlinePr/></sheetPr>", true, true},
      {"<sheetPr><outlinePr summaryBelow='0' summaryRight='OFF'/></sheetPr>", false, false},
      {"<sheetPr><outlinePr summaryBelow='x'/><outlinePr summaryRight='0'/></sheetPr>", true, true},
      {"<sheetPr/><sheetPr><outlinePr summaryRight='0'/></sheetPr>", true, true},
  };
  for (const auto& row : cases) {
    const TLoaded loaded(row.Properties);
    EXPECT_EQ(loaded.Sheet().Sizing().OutlineSummaryBelow(), row.Below) << row.Properties;
    EXPECT_EQ(loaded.Sheet().Sizing().OutlineSummaryRight(), row.Right) << row.Properties;
  }
}

TEST(XlsxSizes, AnEmptyDataSectionStillLeavesTheColumns) {
  EXPECT_EQ(TLoaded("<cols><col width='9'/></cols><sheetData/>").Sheet().Sizing().GetColWidthChars(1), 9);
  EXPECT_EQ(TLoaded("<sheetData/><cols><col width='9'/></cols>").Sheet().Sizing().GetColWidthChars(1), 9);
}

// ---- merges and links

TEST(XlsxMerges, AreTakenInOrderWhereTheyCanBeRead) {
  const TLoaded loaded(
      "<mergeCells count='99'><mergeCell ref='B2'/><mergeCell ref='D5:C3'/><mergeCell ref='A:A'/>"
      "<mergeCell/><mergeCell ref='A1:ZZZZ9'/><mergeCell ref='A1:XFD1048576'/></mergeCells>");
  std::string text;
  for (const TMergedRange& merge : loaded.Sheet().Merges()) {
    text += Utf16ToUtf8(TCellAddress{merge.StartCol, merge.StartRow}.ToA1()) + ":" +
            Utf16ToUtf8(TCellAddress{merge.EndCol, merge.EndRow}.ToA1()) + " ";
  }
  EXPECT_EQ(text, "B2:B2 C3:D5 A1:XFD1048576 ");
}

TEST(XlsxLinks, GoToALocationOrThroughARelationship) {
  TWorkbook book;
  TXlsxBuilder()
      .Sheet(
          "<hyperlinks><hyperlink ref='A1' location=' S2!B2 ' r:id='r1'/><hyperlink ref=' A2 ' r:id='r1'/>"
          "<hyperlink ref='A3' location=' ' id='r2' r:id='r1'/><hyperlink ref='A4' r:id='r9'/>"
          "<hyperlink ref='A5' r:id='r3'/><hyperlink ref='A:A' location='x'/><hyperlink location='x'/>"
          "<hyperlink ref='B1:XFD1048576' location='all'/><hyperlink ref='C5' location='one'/></hyperlinks>")
      .Part(
          "xl/worksheets/_rels/sheet1.xml.rels",
          "<Relationships><Relationship Id='r1' Target=' http://a/?x=1&amp;y=2 '/><Relationship Id='r2' Target='two'/>"
          "<Relationship Id='r1' Target='late'/><Relationship Id='r3' Target=' '/></Relationships>")
      .Load(book);
  const struct {
    int32_t Col, Row;
    const char* Target;
  } cases[] = {{1, 1, "S2!B2"}, {1, 2, "http://a/?x=1&y=2"}, {1, 3, "two"}, {1, 4, "-"}, {1, 5, "-"},
               {2, 1, "all"},   {16384, 9999, "all"},        {3, 5, "one"}};
  for (const auto& row : cases) {
    const std::optional<TText> target = book.GetSheet(0)->FindHyperlink(row.Col, row.Row);
    EXPECT_EQ(target ? target->ToUtf8() : "-", row.Target) << row.Col << " " << row.Row;
  }
}

// ---- tables

std::string TableText(const TSheetTable& ATable) {
  std::string text =
      ATable.Name().ToUtf8() + "/" + ATable.DisplayName().ToUtf8() + " " + Utf16ToUtf8(ATable.Ref().ToA1()) + " ";
  if (ATable.HasHeaderRow()) text += "H";
  if (ATable.HasTotalsRow()) text += "T";
  if (ATable.ShowAutoFilter()) text += "F";
  if (ATable.ShowRowStripes()) text += "R";
  if (ATable.ShowColumnStripes()) text += "C";
  text += " " + ATable.StyleName().ToUtf8() + " ";
  for (const TText& name : ATable.ColumnNames()) text += "[" + name.ToUtf8() + "]";
  return text;
}

/// Adds tables to the first sheet: pairs of target and content.
TXlsxBuilder WithTables(const std::vector<std::pair<std::string, std::string>>& ATables) {
  TXlsxBuilder xlsx;
  xlsx.Sheet(Row("<c r='A1'><is><t>head</t></is></c><c r='B1'><v>5</v></c>"));
  std::string relationships;
  for (const auto& [target, content] : ATables) {
    relationships += "<Relationship Id='x' Type='http://S/Relationships/Table' Target='" + target + "'/>";
    if (!content.empty()) xlsx.Part("xl/tables/" + target.substr(target.find_last_of("/\\") + 1), content);
  }
  xlsx.Part("xl/worksheets/_rels/sheet1.xml.rels", "<Relationships>" + relationships + "</Relationships>");
  return xlsx;
}

TEST(XlsxTables, AreReadFromThePartsThatTheSheetNames) {
  const struct {
    const char* Content;
    const char* Shown;
  } cases[] = {
      {"<table name='T' displayName='D' ref='A1:C9'><autoFilter/><tableColumns><tableColumn name='x'/></tableColumns>"
       "<tableStyleInfo name='Medium' showRowStripes='0' showColumnStripes='1'/></table>",
       "T/D A1:C9 HFC Medium [head][5][Column3]"},
      {"<table name='T' ref='A2:C9' headerRowCount='0' totalsRowCount='1'><tableColumns><tableColumn name='x'/>"
       "<tableColumn/></tableColumns></table>",
       "T/T A2:C9 TR  [x][Column2]"},
      {"<q:Table xmlns:q='u' name='T' ref='A1'><q:tableStyleInfo/></q:Table>", "T/T A1 HR  [head]"},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    WithTables({{"../tables/t.xml", row.Content}}).Load(book);
    ASSERT_EQ(book.GetSheet(0)->Tables().Count(), 1u) << row.Content;
    EXPECT_EQ(TableText(book.GetSheet(0)->Tables().GetItem(0)), row.Shown) << row.Content;
  }
  for (const char* content : {"<table ref='A1:B2'/>", "<table name='T'/>", "<table name='T' ref='A:B'/>"}) {
    TWorkbook book;
    WithTables({{"../tables/t.xml", content}}).Load(book);
    EXPECT_TRUE(book.GetSheet(0)->Tables().IsEmpty()) << content;
  }
}

TEST(XlsxTables, TargetsAreResolvedInsideThePackage) {
  const char* const good = "<table name='T' ref='A1:B2'/>";
  const char* const targets[] = {"/xl/tables/t.xml", "..\\tables\\t.xml", "./../tables/./t.xml",
                                 "../../../../../xl/tables/t.xml", "x/../../tables//t.xml"};
  for (const char* target : targets) {
    TWorkbook book;
    WithTables({{target, good}}).Load(book);
    EXPECT_EQ(book.GetSheet(0)->Tables().Count(), 1u) << target;
  }
  TWorkbook book;
  WithTables({{"../tables/missing.xml", ""}, {"", ""}, {"../tables/t.xml", good}}).Load(book);
  EXPECT_EQ(book.GetSheet(0)->Tables().Count(), 1u);
}

TEST(XlsxTables, ADamagedOneLeavesThoseBeforeIt) {
  TWorkbook book;
  const auto xlsx = WithTables({{"../tables/a.xml", "<table name='A' ref='A1:B2'/>"}, {"../tables/b.xml", "<table"}});
  EXPECT_EQ(test::Thrown([&] { xlsx.Load(book); }), "format: xl/tables/b.xml, line 1: the tag \"table\" is not closed");
  ASSERT_EQ(book.GetSheet(0)->Tables().Count(), 1u);
  EXPECT_EQ(test::DumpCells(*book.GetSheet(0)), "A1='head B1=5");
}

TEST(XlsxTables, TheirColumnsTogetherAreBounded) {
  std::string names = "<table name='A' ref='A1:B2'><tableColumns>";
  for (int i = 0; i < 30'000; ++i) names += "<tableColumn/>";
  for (const std::string& part : {std::string("<table name='A' ref='A1:XFD2'/>"), names + "</tableColumns></table>"}) {
    const std::vector<std::pair<std::string, std::string>> tables(70, {"../tables/t.xml", part});
    TWorkbook book;
    EXPECT_EQ(test::Thrown([&] { WithTables(tables).Load(book); }),
              "limit: xl/tables/t.xml: the columns of all tables of the workbook exceed the limit of the reader");
  }
}

}  // namespace
}  // namespace tessarine
