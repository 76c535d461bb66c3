#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/SharedStrings.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/io/xlsx/detail/XlsxFormulas.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>
#include <tessarine/io/xlsx/detail/XlsxSharedFormula.h>
#include <tessarine/io/xlsx/detail/XlsxSheetReader.h>
#include <tessarine/platform/Unicode.h>

#include "../support/Thrown.h"
#include "../support/XlsxBuilder.h"

namespace tessarine {
namespace {

using test::LoadedCells;
using test::Row;
using test::TXlsxBuilder;

constexpr const char* kStrings =
    "<si><t>zero</t></si><si><t/></si><si><r><t>ri</t></r><r><rPr><b/></rPr><t>ch</t></r></si>";

TEST(XlsxCells, TheFirstRuleThatFitsDecides) {
  const struct {
    const char* Cell;
    const char* Shown;
  } cases[] = {
      // Text of the string table wins over everything else.
      {"<c r='A1' t='s'><v>0</v></c>", "A1='zero"},
      {"<c r='A1' t='s' s='2'><v>1</v></c>", "A1='~2"},
      {"<c r='A1' t='s'><v>2</v></c>", "A1='ri/ch"},
      {"<c r='A1' t='s'><v> 2\n</v></c>", "A1='ri/ch"},
      {"<c r='A1' t='s'><v/></c>", "A1='zero"},
      {"<c r='A1' t='s'><v>junk</v></c>", "A1='zero"},
      {"<c r='A1' t='s'><v>3</v></c>", ""},
      {"<c r='A1' t='s' s='7'><v>99999999999999999999</v></c>", "A1=_~7"},
      {"<c r='A1' t='s' s='7'><v>-1</v></c>", "A1=_~7"},
      {"<c r='A1' t='s'><f>B1</f><v>0</v></c>", "A1='zero"},
      {"<c r='A1' t='S'><v>0</v></c>", "A1=0"},
      {"<c r='A1' t='s'><is><t>inline</t></is></c>", "A1='inline"},
      // Booleans are true for "1" alone.
      {"<c r='A1' t='b'><v>1</v></c>", "A1=TRUE"},
      {"<c r='A1' t='b'><v>true</v></c>", "A1=FALSE"},
      {"<c r='A1' t='b'><v/></c>", "A1=FALSE"},
      // Results of formulas.
      {"<c r='A1'><f>B1*2</f><v>4.5</v></c>", "A1==B1*2{4.5}"},
      {"<c r='A1'><f>B1</f></c>", "A1==B1"},
      {"<c r='A1'><f>B1</f><v/></c>", "A1==B1"},
      {"<c r='A1' t='str'><f>B1</f><v>12</v></c>", "A1==B1{'12}"},
      {"<c r='A1' t='str'><f>B1</f><v></v></c>", "A1==B1{'}"},
      {"<c r='A1' t='inlineStr'><f>B1</f><v>x</v></c>", "A1==B1{'x}"},
      {"<c r='A1' t='b'><f>B1</f><v>1</v></c>", "A1==B1{TRUE}"},
      {"<c r='A1' t='b'><f>B1</f><v>0</v></c>", "A1==B1{FALSE}"},
      {"<c r='A1' t='e'><f>1/0</f><v>#DIV/0!</v></c>", "A1==1/0"},
      {"<c r='A1' t='n' s='3'><f>B1</f><v>1e2</v></c>", "A1==B1{100}~3"},
      {"<c r='A1'><f/><v>5</v></c>", "A1=5"},
      {"<c r='A1'><v>1</v><f>B1</f></c>", "A1==B1{1}"},
      {"<c r='A1'><f>\"a\"&amp;\"&lt;\"&#x41;</f></c>", "A1==\"a\"&\"<\"A"},
      {"<c r='A1'><f>=B1</f></c>", "A1==B1"},
      {"<c r='A1' t='str'><f>B1</f><v>a_x000D_b_x005F_x0041_</v></c>", "A1==B1{'a\rb_x0041_}"},
      // Any other value is a number.
      {"<c r='A1'><v> 12.50 </v></c>", "A1=12.5"},
      {"<c r='A1' t='n'><v>-1.5E-3</v></c>", "A1=-0.0015"},
      {"<c r='A1' t='str'><v>abc</v></c>", "A1=0"},
      {"<c r='A1' t='str'><v>42</v></c>", "A1=42"},
      {"<c r='A1' t='e'><v>#N/A</v></c>", "A1=0"},
      {"<c r='A1' t='d'><v>2020-01-01T00:00:00</v></c>", "A1=0"},
      {"<c r='A1'><v>nan</v></c>", "A1=0"},
      {"<c r='A1'><v>1e999</v></c>", "A1=0"},
      {"<c r='A1'><v>_x0031_2</v></c>", "A1=12"},
      {"<c r='A1'><v>1<!-- -->2<![CDATA[3]]></v></c>", "A1=123"},
      // Without a value an inline text counts; else only the style is left.
      {"<c r='A1' t='inlineStr'><is><t> in </t></is></c>", "A1=' in "},
      {"<c r='A1'><is><t>in</t></is></c>", "A1='in"},
      {"<c r='A1' t='inlineStr'><is/></c>", "A1='"},
      {"<c r='A1' t='inlineStr'><v/><is><t>in</t></is></c>", ""},
      {"<c r='A1' t='inlineStr'><is><r><t>a</t></r><r><t>b</t></r></is></c>", "A1='ab"},
      {"<c r='A1'><is><r><t>a</t></r><r><rPr><i/></rPr><t>b</t></r></is></c>", "A1='a/b"},
      {"<c r='A1' s='5'/>", "A1=_~5"},
      {"<c r='A1' s='-5'/>", "A1=_~-5"},
      {"<c r='A1' s='x'/>", ""},
      // Of each kind the first child counts, and only a child.
      {"<c r='A1'><v>1</v><v>2</v></c>", "A1=1"},
      {"<c r='A1'><extLst><v>1</v><f>B1</f></extLst></c>", ""},
  };
  for (const auto& row : cases) EXPECT_EQ(LoadedCells(Row(row.Cell), kStrings), row.Shown) << row.Cell;
}

TEST(XlsxCells, StandWhereTheySayInAnyOrder) {
  const struct {
    const char* Rows;
    const char* Shown;
  } cases[] = {
      {"<row r='9'><c r='B2'><v>1</v></c></row>", "B2=1"},
      {"<row><c r='$b$2'><v>1</v></c><c><v>2</v></c><c r=''><v>3</v></c></row>", "B2=1"},
      {"<row><c r='C3'><v>3</v></c><c r='A3'><v>1</v></c><c r='B1'><v>2</v></c></row>", "B1=2 A3=1 C3=3"},
      {"<row><c r='A1'><v>1</v></c><c r='A1' s='2'><v>2</v></c></row>", "A1=2~2"},
      {"<row><c r='A1'><f>B1</f><v>1</v></c></row><row><c r='A1'><f>C1</f></c></row>", "A1==C1"},
      {"<row><c r='A1'><v>1</v></c><c r='A1'/></row>", ""},
      {"<row><c r='XFD1048576'><v>1</v></c><c r='XFE1'><v>2</v></c><c r='A1048577'><v>3</v></c></row>", "XFD1048576=1"},
      {"<row><c r='A0'><v>1</v></c><c r='1'><v>1</v></c><c r='A'><v>1</v></c><c r='A1B'><v>1</v></c></row>", ""},
      {"<row><c r='A99999999999'><v>1</v></c><c r='AAAA1'><v>1</v></c></row>", ""},
      // Another spelling of the attributes: the exact name wins wherever it stands.
      {"<row><c R='A1' T='b' S='3'><v>1</v></c></row>", "A1=TRUE~3"},
      {"<row><c x:r='B9' r='A1' q:s='4' cm=''><v>1</v></c></row>", "A1=1~4"},
      // Only what lies on the path counts.
      {"<other><c r='A1'><v>1</v></c></other><row><x><c r='B1'><v>1</v></c></x></row>", ""},
  };
  for (const auto& row : cases)
    EXPECT_EQ(LoadedCells("<sheetData>" + std::string(row.Rows) + "</sheetData>"), row.Shown) << row.Rows;
}

TEST(XlsxCells, ArePlainUnderPrefixesAndOtherCase) {
  EXPECT_EQ(LoadedCells("<x:SheetData xmlns:x='u'><x:ROW><x:C r='A1'><x:F>B1</x:F><x:V>2</x:V></x:C></x:ROW>"
                        "</x:SheetData>"),
            "A1==B1{2}");
  EXPECT_EQ(LoadedCells("<controls><sheetData><row><c r='A1'><v>1</v></c></row></sheetData></controls>"
                        "<sheetData/><sheetData><row><c r='A1'><v>2</v></c></row></sheetData>"),
            "");
}

TEST(XlsxCells, RaiseTheUsedBoundsEvenWhenNothingIsStored) {
  TWorkbook book;
  TXlsxBuilder().Sheet(Row("<c r='Z900'/><c r='AB2' t='s'><v>5</v></c><c r='ZZZ1'/>")).Load(book);
  EXPECT_EQ(book.GetSheet(0)->UsedMaxCol(), 28);
  EXPECT_EQ(book.GetSheet(0)->UsedMaxRow(), 900);
  EXPECT_EQ(test::DumpCells(*book.GetSheet(0)), "");
}

// ---- formulas

TEST(XlsxFormulas, SharedOnesGetATextOfTheirOwn) {
  const struct {
    const char* Cells;
    const char* Shown;
  } cases[] = {
      {"<c r='B2'><f t='shared' ref='B2:B3' si='0'>A2 + $A$1</f></c><c r='B3'><f t='shared' si='0'/><v>7</v></c>",
       "B2==A2 + $A$1 B3==A3+$A$1{7}"},
      {"<c r='B2'><f t='SHARED' si='0'>A1</f></c><c r='B1'><f t='Shared' si='0'/></c>", "B1==#REF! B2==A1"},
      {"<c r='A2'><f t='shared' si='0'/></c><c r='A1'><f t='shared' si='0'>B1</f></c>", "A1==B1"},
      {"<c r='A1'><f t='shared' si='-1'>B1</f></c><c r='A2'><f t='shared' si='-1'/></c>", "A1==B1"},
      {"<c r='A1'><f t='shared'>B1</f></c><c r='A2' s='1'><f t='shared'/></c>", "A1==B1 A2=_~1"},
      {"<c r='A1'><f si='0'>B1</f></c><c r='A2'><f t='shared' si='0'/></c>", "A1==B1"},
      // A formula that its cell loses to the string table is a master all the same.
      {"<c r='A1' t='s'><f t='shared' si='0'>B1</f><v>0</v></c><c r='A2'><f t='shared' si='0'/></c>",
       "A1='zero A2==B2"},
      {"<c r='A1'><f t='shared' si='0'>B1</f></c><c r='A2'><f t='shared' si='0'>C1</f></c>"
       "<c r='A3'><f t='shared' si='0'/></c>",
       "A1==B1 A2==C1 A3==C2"},
      {"<c r='A1'><f t='shared' si='0'>SORT(B1:B2)</f></c><c r='A2' cm='1'><f t='shared' si='0'/></c>"
       "<c r='A3'><f t='shared' si='0'/></c>",
       "A1==@SORT(B1:B2) A2==SORT(B2:B3) A3==@SORT(B3:B4)"},
  };
  for (const auto& row : cases) EXPECT_EQ(LoadedCells(Row(row.Cells), kStrings), row.Shown) << row.Cells;
}

TEST(XlsxFormulas, SharedIndexesBelongToOneSheet) {
  TWorkbook book;
  TXlsxBuilder()
      .Sheet(Row("<c r='A1'><f t='shared' si='0'>B1</f></c>"))
      .Sheet(Row("<c r='A2'><f t='shared' si='0'/><v>3</v></c>"))
      .Load(book);
  EXPECT_EQ(test::DumpCells(*book.GetSheet(1)), "A2=3");
}

/// Formulas out of pieces that look like references, and of some that are.
std::u16string RandomFormula(std::mt19937& ARandom) {
  static const char16_t* const kPieces[] = {
      u"A1",         u"$B$2",        u"C$3",     u"$D4",       u"b7",     u"A1:B9",    u"$A1:C$4",
      u"XFD1048576", u"A:C",         u"$2:3",    u"5:9",       u"S!A1",   u"'a b'!C3", u"'it''s'!A1:B2",
      u"S.A1",       u"T[x]",        u"T[[A1]]", u"[A1]",      u"LOG10(", u"SUM(",     u"A1(",
      u"\"A1\"",     u"\"a\"\"B2\"", u"{A1,2}",  u"A01",       u"A1B2",   u"_A1",      u"A1.B2",
      u"#REF!",      u"1.5E3",       u"1E5",     u"TRUE",      u"x",      u"@A1:A3",   u"#",
      u"!",          u"XFE1",        u"A0",      u"A1048577",  u"'",      u"\"",       u"[",
      u"]",          u":",           u".",       u"Z99!A1:B2", u"$A",     u"A$1:A1",   u"B2:A1",
      u"\uE000",     u"\u00E4A1"};
  static const char16_t* const kBetween[] = {u"+", u"*", u",", u" ", u"", u")", u"(", u"=", u"&", u";"};
  std::u16string text;
  for (uint32_t count = ARandom() % 6 + 1; count > 0; --count) {
    text += kPieces[ARandom() % std::size(kPieces)];
    text += kBetween[ARandom() % std::size(kBetween)];
  }
  return text;
}

TEST(XlsxFormulas, TheShortWayOfSharingGivesThePlainTexts) {
  std::mt19937 random(1);
  for (int round = 0; round < 4000; ++round) {
    const std::u16string formula = RandomFormula(random);
    detail::TFormulaPool pool;
    const auto any = [&](int32_t AMost) { return static_cast<int32_t>(random() % static_cast<uint32_t>(AMost)) + 1; };
    const bool isNarrow = random() % 2 == 0;
    const TCellAddress first{any(isNarrow ? 9 : kMaxCol), any(isNarrow ? 9 : kMaxRow)};
    detail::TXlsxSharedFormula shared(formula, first);
    for (int i = 0; i < 12; ++i) {
      const TCellAddress cell{isNarrow ? any(12) : any(kMaxCol), isNarrow ? any(12) : any(kMaxRow)};
      std::u16string text = u"old";
      std::u16string plain;
      shared.TextAt(cell, pool, text);
      shared.TextAtPlain(cell, plain);
      ASSERT_EQ(text, plain) << Utf16ToUtf8(formula) << " at " << Utf16ToUtf8(cell.ToA1());
    }
  }
}

TEST(XlsxFormulas, TextsTakenFromAnotherCellAreBounded) {
  detail::TXlsxBudget budget;
  detail::TXlsxFormulas formulas(budget);
  detail::TXlsxFormulaElement child;
  child.IsShared = true;
  // The row of the first cell below the formula's own that is refused it, 100 when none is.
  const auto refusedRow = [&](const std::string& AText) {
    budget.SharedFormulaUnits = 20'000;
    ++child.SharedIndex;
    detail::TXlsxFormulaElement master = child;
    master.Text = AText;
    formulas.Resolve(master, {2, 1}, "part");
    int32_t row = 2;
    std::string message = "nothing";
    for (; row < 100 && message == "nothing"; ++row)
      message = test::Thrown([&] { formulas.Resolve(child, {2, row}, "part"); });
    if (message == "nothing") return row;
    EXPECT_EQ(message, "limit: part, cell B" + std::to_string(row - 1) +
                           ": the texts of shared formulas of the workbook exceed the limit of the reader");
    return row - 1;
  };
  const auto sum = [](size_t ALength) {
    std::string text = "1";
    while (text.size() < ALength) text += "+A1";
    return text;
  };
  EXPECT_EQ(refusedRow("A1+1"), 100);
  EXPECT_EQ(refusedRow(sum(90)), 100) << "texts of common length are free";
  EXPECT_GT(refusedRow(sum(300)), 60);
  EXPECT_LT(refusedRow(sum(300) + "+#REF!"), 40) << "without a template";
  EXPECT_EQ(refusedRow(sum(21'000)), 2);
}

TEST(XlsxFormulas, AreCleanedUp) {
  const struct {
    const char* Attributes;  // of the cell
    const char* Element;
    const char* Formula;
  } cases[] = {
      {"", "<f>'[1]Sheet'!A1</f>", "='Sheet'!A1"},
      {"", "<f>[12]Sheet!A1+'[3]a b'!B1</f>", "=Sheet!A1+'a b'!B1"},
      {"", "<f>SUM([1]S!A1)</f>", "=SUM([1]S!A1)"},
      {"", "<f>[x]Sheet!A1</f>", "=[x]Sheet!A1"},
      {"", "<f>[]A1+'[1'</f>", "=[]A1+'[1'"},
      {"", "<f>IFERROR(__xludf.DUMMYFUNCTION(\"QUERY(A1:B2)\"),1)</f>", "=@QUERY(A1:B2)"},
      {"", "<f>IFERROR(__xludf.DUMMYFUNCTION(\"FOO(A1:B2)\"),1)</f>",
       "=IFERROR(__xludf.DUMMYFUNCTION(\"FOO(A1:B2)\"),1)"},
      {"", "<f>_xlfn._xlws.SORT(B1:B3)</f>", "=@_xlfn._xlws.SORT(B1:B3)"},
      {"", "<f> +unique (B1:B3)</f>", "=@ +unique (B1:B3)"},
      {"", "<f>SUM(SORT(B1:B3))</f>", "=SUM(SORT(B1:B3))"},
      {"", "<f>SORT(@B1:B3)</f>", "=SORT(@B1:B3)"},
      {"cm='1'", "<f>SORT(B1:B3)</f>", "=SORT(B1:B3)"},
      {"", "<f t='Array' ref='A1:A3'>SORT(B1:B3)</f>", "=SORT(B1:B3)"},
      {"", "<f>B1:B3_x0040_</f>", "=B1:B3@"},
      {"", "<f>_xlfn.LET(_xlpm.x,1,_xlpm.x+a_xlpm.x)&amp;\"_xlpm.\"\"_xlpm.\"&amp;'_xlpm.s'!A1&amp;_xlpm.x</f>",
       "=_xlfn.LET(x,1,x+a_xlpm.x)&\"_xlpm.\"\"_xlpm.\"&'_xlpm.s'!A1&x"},
  };
  for (const auto& row : cases) {
    const std::string cell = "<c r='A1' " + std::string(row.Attributes) + ">" + row.Element + "</c>";
    EXPECT_EQ(LoadedCells(Row(cell)), "A1=" + std::string(row.Formula)) << cell;
  }
}

/// The values that the file gives for the cells beside an array formula, as the sheet shows them.
std::string Effective(std::string_view ACells, int32_t ACol, int32_t ARow) {
  TWorkbook book;
  TXlsxBuilder().Sheet(Row(ACells)).Strings(kStrings).Load(book);
  const TCellValue value = book.GetSheet(0)->GetEffectiveValue({ACol, ARow});
  return value.ToDisplayString().ToUtf8();
}

TEST(XlsxFormulas, CellsInTheRangeOfAnArrayFormulaAreItsBlock) {
  const std::string block =
      "<c r='A1'><f t='array' ref='A1:B3'>C1:D3</f><v>1</v></c><c r='B1' t='str' s='4'><v>two</v></c>"
      "<c r='A2' t='b'><v>1</v></c><c r='B2' t='s'><v>0</v></c><c r='A3'><f/><v>5</v></c>"
      "<c r='B3' t='e'><v>#N/A</v></c><c r='C3'><v>7</v></c>";
  EXPECT_EQ(LoadedCells(Row(block), kStrings), "A1==C1:D3{1} B1=_~4 C3=7");
  const char* const shown[3][3] = {{"1", "two", ""}, {"TRUE", "zero", ""}, {"5", "", "7"}};
  for (int32_t row = 1; row <= 3; ++row) {
    for (int32_t col = 1; col <= 3; ++col) EXPECT_EQ(Effective(block, col, row), shown[row - 1][col - 1]);
  }
}

TEST(XlsxFormulas, ARangeThatIsNoBlockLeavesItsCells) {
  const struct {
    const char* Cells;
    const char* Shown;
  } cases[] = {
      {"<c r='A1'><f t='array' ref='A1'>C1</f></c><c r='A2'><v>2</v></c>", "A1==C1 A2=2"},
      {"<c r='A1'><f t='array' ref='A:A'>C1</f></c><c r='A2'><v>2</v></c>", "A1==C1 A2=2"},
      {"<c r='A1'><f t='array' ref='B1:B3'>C1</f></c><c r='B2'><v>2</v></c>", "A1==C1 B2=2"},
      {"<c r='A1'><f t='array' ref='A1:XFD1048576'>C1</f></c><c r='A2'><v>2</v></c>", "A1==C1 A2=2"},
      {"<c r='A1'><f t='array' ref='A1:A3'/></c><c r='A2'><v>2</v></c>", "A2=2"},
      // The second block meets the first one, which has no value.
      {"<c r='A1'><f t='array' ref='A1:B2'>C1</f></c><c r='B1'><f t='array' ref='B1:B3'>C1</f></c>"
       "<c r='B3'><v>2</v></c>",
       "A1==C1 B1==C1 B3=2"},
  };
  for (const auto& row : cases) EXPECT_EQ(LoadedCells(Row(row.Cells)), row.Shown) << row.Cells;
}

TEST(XlsxFormulas, TheSearchForOverlapsIsBounded) {
  const std::string part =
      "<worksheet>" +
      Row("<c r='A1'><f t='array' ref='A1:A2'>C1</f></c><c r='B1'><f t='array' ref='B1:B9'>C1</f></c>"
          "<c r='C1'><f t='array' ref='C1:C9'>D1</f></c><c r='D1'><f t='array' ref='D1:D9'>E1</f></c>") +
      "</worksheet>";
  TWorkbook book;
  const TSharedStringTable strings;
  detail::TXlsxBudget budget;
  budget.BlockProbes = 5;  // one for the second formula, two for the third, three for the fourth
  TXmlReader xml(part, "part");
  const detail::TXlsxCellContext context{strings, book.StyleSheet(), budget};
  const detail::TXlsxReport report;
  detail::TXlsxSheetReader reader(xml, *book.GetSheet(0), context, {}, report);
  EXPECT_EQ(test::Thrown([&] { reader.Read(); }),
            "limit: part, cell D1: the overlaps of array formulas of the workbook exceed the limit of the reader");
}

TEST(XlsxFormulas, ABlockNeedsItsFormulaAndAValue) {
  const char* const cases[] = {
      "<c r='A1'><f t='array' ref='A1:A2'>C1</f></c><c r='A2'><v>2</v></c><c r='A1'><v>1</v></c>",
      "<c r='A1'><f t='array' ref='A1:A2'>C1</f></c><c r='A2' s='1'/>",
  };
  for (const char* cells : cases) {
    TWorkbook book;
    TXlsxBuilder().Sheet(Row(cells)).Load(book);
    EXPECT_TRUE(book.GetSheet(0)->Spills().IsEmpty()) << cells;
  }
}

}  // namespace
}  // namespace tessarine
