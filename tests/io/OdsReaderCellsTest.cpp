#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>

#include "../support/OdsBuilder.h"
#include "../support/Thrown.h"

namespace tessarine {
namespace {

using test::DumpCells;
using test::Thrown;
using test::TOdsBuilder;

/// A cell with these attributes, where "v:" stands for "office:" and "t:" for "table:", and this content.
std::string Cell(std::string_view AAttributes, std::string_view AContent = {}) {
  std::string cell = "<table:table-cell ";
  for (size_t at = 0; at < AAttributes.size(); ++at) {
    const bool isPrefix =
        at + 1 < AAttributes.size() && AAttributes[at + 1] == ':' && (at == 0 || AAttributes[at - 1] == ' ');
    if (isPrefix) {
      cell += AAttributes[at] == 'v' ? "office" : "table";
    } else {
      cell += AAttributes[at];
    }
  }
  return ((cell += ">") += AContent) + "</table:table-cell>";
}

std::string P(std::string_view AText) { return ("<text:p>" + std::string(AText)) + "</text:p>"; }

std::string Row(std::string_view ACells, std::string_view AAttributes = {}) {
  return "<table:table-row " + std::string(AAttributes) + ">" + std::string(ACells) + "</table:table-row>";
}

std::string Loaded(std::string_view ATable, std::string_view AStyles = {}) {
  TWorkbook book;
  TOdsBuilder().Styles(AStyles).Table(ATable).Load(book);
  return DumpCells(*book.GetSheet(0));
}

/// The first cell as "text [number format]".
std::string Shown(std::string_view ACell, std::string_view AStyles = {}) {
  TWorkbook book;
  TOdsBuilder().Styles(AStyles).Table(Row(ACell)).Load(book);
  const TWorksheet& sheet = *book.GetSheet(0);
  return sheet.GetDisplayText({1, 1}, &book.StyleSheet()).ToUtf8() + " [" +
         sheet.ResolveFormat({1, 1}, &book.StyleSheet()).NumberFormat.ToUtf8() + "]";
}

TEST(OdsCells, HaveTheValuesOfTheirTypes) {
  const struct {
    std::string Cell;
    const char* Dump;
  } cases[] = {
      {Cell("v:value-type='float' v:value='1.5'", P("x")), "A1=1.5"},
      {Cell("v:value-type='currency' v:value='2'", P("$2")), "A1=2"},
      {Cell("v:value-type='float'", P("7")), "A1=7"},
      {Cell("v:value-type='float' v:value='inf'", P("much")), "A1='much"},
      {Cell("v:value-type='boolean' v:boolean-value='true'", P("no")), "A1=TRUE"},
      {Cell("v:value-type='boolean' v:value='1'"), "A1=TRUE"},
      {Cell("v:value-type='boolean' v:boolean-value='false'"), "A1=FALSE"},
      {Cell("v:value-type='string' v:string-value='whole'", P("part")), "A1='whole"},
      {Cell("v:value-type='string'", P("a") + P("") + P("b")), "A1='a\r\n\r\nb"},
      {Cell("", P("1")), "A1='1"},
      {Cell("v:value-type='string'", P("")), ""},
      {Cell("v:value-type='string' v:value='5'"), ""},
      {Cell("v:value-type='float' calcext:value-type='string' v:value='3' calcext:value='4'"), "A1=3"},
      {Cell("v:value-type='string'", "<office:annotation>" + P("note") + "</office:annotation>" + P("t")), "A1='t"},
      {Cell("v:value-type='string'", "<table:table>" + Row(Cell("", P("in"))) + "</table:table>" + P("t")), "A1='t"},
      {Cell("t:formula='of:=[.B1]*2' v:value-type='float' v:value='4'", P("4")), "A1==B1*2{4}"},
      {Cell("t:formula='of:=1=1' v:value-type='boolean' v:boolean-value='true'", P("WAHR")), "A1==1=1{TRUE}"},
      {Cell("t:formula='of:=\"x\"' v:value-type='string'", P("x")), "A1==\"x\"{'x}"},
      {Cell("t:formula='of:=1'", P("1")), "A1==1{1}"},
      {Cell("t:formula='of:=1'", P("one")), "A1==1{'one}"},
      {Cell("t:formula='of:=1'"), "A1==1"},
      {Cell("t:formula='of:=NA()' v:value-type='string' v:string-value='' calcext:value-type='error'", P("#N/A")),
       "A1==NA(){#N/A}"},
      {"<table:covered-table-cell office:value-type='float' office:value='5'/>", "A1=5"},
  };
  for (const auto& row : cases) EXPECT_EQ(Loaded(Row(row.Cell)), row.Dump) << row.Cell;
}

TEST(OdsCells, OfSomeTypesGetANumberFormat) {
  const std::string_view kStyles =
      "<number:number-style style:name='N2'><number:number number:decimal-places='2'/></number:number-style>"
      "<style:style style:name='c' style:family='table-cell' style:data-style-name='N2'/>";
  const struct {
    std::string Cell;
    const char* Shown;
  } cases[] = {
      {Cell("v:value-type='percentage' v:value='0.5'"), "50% [0%]"},
      {Cell("v:value-type='percentage' v:value='0.5' t:style-name='c'"), "0.50 [0.00]"},
      {Cell("v:value-type='date' v:date-value='2024-02-29'"), "2/29/2024 [m/d/yyyy]"},
      {Cell("v:value-type='time' v:time-value='PT13H05M09S'"), "13:05:09 [h:mm:ss]"},
      {Cell("v:value-type='date' v:date-value='soon'", P("later")), "later [m/d/yyyy]"},
      {Cell("v:value-type='float' v:value='0.5'"), "0.5 [General]"},
      {Cell("t:formula='of:=TODAY()' v:value-type='date' v:date-value='2024-02-29'", P("x")), "2/29/2024 [m/d/yyyy]"},
  };
  for (const auto& row : cases) EXPECT_EQ(Shown(row.Cell, kStyles), row.Shown) << row.Cell;
}

TEST(OdsCells, AreRepeatedWithinLimits) {
  const std::string x = Cell("", P("x"));
  const auto repeated = [&](const char* ACount) {
    return Cell(std::string("t:number-columns-repeated='") + ACount + "'", P("x"));
  };
  EXPECT_EQ(Loaded(Row(Cell("t:number-columns-repeated='2'") + x + Cell("t:number-columns-repeated='1024'"))), "C1='x");
  EXPECT_EQ(Loaded(Row(repeated("2") + Cell("") + x)), "A1='x B1='x D1='x");
  EXPECT_EQ(Loaded(Row(x, "table:number-rows-repeated='3'") + Row(x)), "A1='x A2='x A3='x A4='x");
  EXPECT_EQ(Loaded(Row("", "table:number-rows-repeated='1000'") + Row(x)), "A1001='x");

  TWorkbook book;
  TOdsBuilder()
      .Table(Row(repeated("300") + x, "table:number-rows-repeated='99999999999999'") + Row(x))
      .Table(Row(Cell("t:number-columns-repeated='999999999'") + x))
      .Load(book);
  const TWorksheet& sheet = *book.GetSheet(0);
  EXPECT_EQ(sheet.UsedMaxCol(), 301);
  EXPECT_EQ(sheet.UsedMaxRow(), 256);
  EXPECT_TRUE(sheet.HasCell({256, 256}) && sheet.HasCell({301, 256}));
  EXPECT_FALSE(sheet.HasCell({257, 1}) || sheet.HasCell({1, 257}));
  EXPECT_EQ(DumpCells(*book.GetSheet(1)), "");

  // Equal neighbours in a long table are no attack, a few elements that stand for millions of formulas are.
  std::string table;
  const std::string line = Row(repeated("16"));
  for (int row = 0; row < 280'000; ++row) table += line;
  TWorkbook wide;
  TOdsBuilder().Table(table).Load(wide);
  EXPECT_TRUE(wide.GetSheet(0)->HasCell({16, 280'000}));
  std::string bomb;
  const std::string formulas = Cell("t:formula='of:=1' t:number-columns-repeated='256'");
  for (int row = 0; row < 70; ++row) bomb += Row(formulas, "table:number-rows-repeated='256'");
  EXPECT_EQ(Thrown([&] { Loaded(bomb); }),
            "limit: content.xml, cell S1!A15617: the repeated cells of the workbook exceed the limit of the reader");
}

TEST(OdsCells, TakeStylesFromTheirColumns) {
  const std::string_view kStyles =
      "<style:style style:name='bold' style:family='table-cell'><style:text-properties fo:font-weight='bold'/>"
      "</style:style>"
      "<style:style style:name='red' style:family='table-cell'>"
      "<style:table-cell-properties fo:background-color='#ff0000'/></style:style>";
  const std::string columns =
      "<table:table-column table:default-cell-style-name='red' table:number-columns-repeated='2'/>"
      "<table:table-column table:default-cell-style-name='bold' table:number-columns-repeated='16382'/>";
  const std::string one = Cell("v:value-type='float' v:value='1'");
  // Blanks show a fill of their column, not its font; their own style they always have.
  EXPECT_EQ(Loaded(columns + Row(one + Cell("") + one + Cell("")), kStyles), "A1=1~1 B1=_~1 C1=1~2");
  EXPECT_EQ(
      Loaded(columns + Row(Cell("t:style-name='bold'") + Cell("t:style-name='red' t:number-columns-repeated='300'")),
             kStyles),
      "A1=_~1");
  EXPECT_EQ(Loaded(columns + Row(one + one, "table:default-cell-style-name='bold'"), kStyles), "A1=1~1 B1=1~1");
}

TEST(OdsCells, HaveTextWithBlanksBreaksLinksAndFonts) {
  const std::string_view kStyles =
      "<style:style style:name='T1' style:family='text'><style:text-properties fo:font-weight='bold'/></style:style>"
      "<style:style style:name='T2' style:family='text'/>";
  const struct {
    const char* Paragraph;
    const char* Dump;
  } cases[] = {
      {"a<text:s text:c='3'/>b<text:s/>c<text:tab/>d<text:line-break/>e", "A1='a   b c\td\r\ne"},
      {"\n  a\n   b  c <text:s/>\n", "A1='a b  c  "},
      {"a<text:span text:style-name='T1'>b</text:span>c", "A1='a/b/c"},
      {"<text:span text:style-name='T2'>a</text:span>b", "A1='a/b"},
      {"<text:span text:style-name='T1'>a</text:span><text:span text:style-name='T1'/>"
       "<text:span text:style-name='T1'>b</text:span></text:p><text:p><text:span text:style-name='T1'>c</text:span>",
       "A1='a/b\r\nc"},
      {"a<text:span>b<text:date>c</text:date></text:span>", "A1='abc"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Loaded(Row(Cell("v:value-type='string'", P(row.Paragraph))), kStyles), row.Dump) << row.Paragraph;
  }
  TWorkbook book;
  TOdsBuilder()
      .Styles(kStyles)
      .Table(Row(Cell(
          "t:number-columns-repeated='2'",
          P("x<text:a xlink:href='http://a/?b&amp;c'>link</text:a><text:span text:style-name='T1'>b</text:span>"))))
      .Load(book);
  const TCell cell = book.GetSheet(0)->GetCellAt(2, 1);
  ASSERT_EQ(cell.RichText.size(), 2u);
  EXPECT_EQ(cell.RichText[0].Text, u"xlink");
  EXPECT_TRUE(cell.RichText[1].Font.Bold && !cell.RichText[0].Font.Bold);
  EXPECT_EQ(book.GetSheet(0)->FindHyperlink(2, 1).value_or(TText()), u"http://a/?b&c");
}

TEST(OdsCells, OfArrayFormulasAreTheirBlock) {
  TWorkbook book;
  TOdsBuilder()
      .Table(Row(Cell("t:formula='of:=[.D1:.E2]' t:number-matrix-columns-spanned='2' t:number-matrix-rows-spanned='2' "
                      "v:value-type='float' v:value='1'") +
                 Cell("v:value-type='float' v:value='2'")) +
             Row(Cell("v:value-type='float' v:value='3'") + Cell("v:value-type='float' v:value='4'")))
      .Load(book);
  const TWorksheet& sheet = *book.GetSheet(0);
  EXPECT_EQ(DumpCells(sheet), "A1==D1:E2{1}");
  EXPECT_EQ(sheet.GetEffectiveValue({2, 2}), TCellValue::FromNumber(4));
}

TEST(OdsCells, AreMergedBySpans) {
  TWorkbook book;
  TOdsBuilder()
      .Table(Row(Cell("t:number-columns-spanned='2' t:number-rows-spanned='3'", P("x")) +
                 Cell("t:number-columns-spanned='1'")) +
             Row(Cell("t:number-columns-spanned='99999'"), "table:number-rows-repeated='2'"))
      .Load(book);
  std::string merges;
  for (const TMergedRange& merge : book.GetSheet(0)->Merges()) merges += TText(merge.AsRange().ToA1()).ToUtf8() + " ";
  EXPECT_EQ(merges, "A1:B3 A2:XFD2 A3:XFD3 ");
}

TEST(OdsRowsAndColumns, HaveSizesAndVisibility) {
  const std::string_view kStyles =
      "<style:style style:name='co' style:family='table-column'><style:table-column-properties "
      "style:column-width='2.54cm'/></style:style><style:style style:name='ro' style:family='table-row'>"
      "<style:table-row-properties style:row-height='20pt'/></style:style>";
  TWorkbook book;
  TOdsBuilder()
      .Styles(kStyles)
      .Table(
          "<table:table-column-group><table:table-header-columns><table:table-column table:style-name='co' "
          "table:number-columns-repeated='2'/></table:table-header-columns></table:table-column-group>"
          "<table:table-column table:visibility='collapse'/><table:table-column>"
          "<style:table-column-properties style:column-width='5.08cm'/></table:table-column>"
          "<table:table-column table:number-columns-repeated='1000' table:visibility='filter'/>"
          "<table:table-row-group><table:table-header-rows><table:table-row table:style-name='ro' "
          "table:number-rows-repeated='2'/></table:table-header-rows></table:table-row-group>"
          "<table:table-row table:visibility='filter'/>" +
          Row(Cell("", P("x"))))
      .Load(book);
  const TRowColSizing& sizing = book.GetSheet(0)->Sizing();
  EXPECT_NEAR(sizing.GetColWidthChars(2), 13, 1e-9);
  EXPECT_NEAR(sizing.GetColWidthChars(4), (192.0 - 5) / 7, 1e-9);
  EXPECT_FALSE(sizing.HasCustomColWidth(3) || sizing.IsColHidden(4));
  EXPECT_TRUE(sizing.IsColHidden(3) && sizing.IsColHidden(260) && !sizing.IsColHidden(261));
  EXPECT_NEAR(sizing.GetRowHeightPt(2), 20, 1e-9);
  EXPECT_TRUE(sizing.IsRowHidden(3) && !sizing.IsRowHidden(2) && !sizing.HasCustomRowHeight(3));
  EXPECT_EQ(DumpCells(*book.GetSheet(0)), "A4='x");
}

}  // namespace
}  // namespace tessarine
