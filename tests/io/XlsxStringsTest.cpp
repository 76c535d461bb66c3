#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/SharedStrings.h>
#include <tessarine/platform/Errors.h>

#include "../support/Thrown.h"
#include "../support/XlsxBuilder.h"

namespace tessarine {
namespace {

using test::LoadedCells;
using test::Row;
using test::TXlsxBuilder;

TEST(SharedStringTable, AppendsOrFinds) {
  TSharedStringTable table;
  EXPECT_EQ(table.Add(u"a"), 0);
  EXPECT_EQ(table.Add(u"a"), 1);
  EXPECT_EQ(table.AddRich(std::vector<TRichStringRun>(1), u"r"), 2);
  EXPECT_EQ(table.FindOrAdd(u"a"), 0);
  EXPECT_EQ(table.FindOrAdd(u"r"), 3);  // a formatted text is never found
  EXPECT_EQ(table.FindOrAdd(u""), 4);
  EXPECT_EQ(table.FindOrAdd(u""), 4);
  EXPECT_EQ(table.Add(u"r"), 5);
  EXPECT_EQ(table.FindOrAdd(u"r"), 3);
  EXPECT_EQ(table.Count(), 6);
  EXPECT_TRUE(table.GetItem(2).IsRich);
  EXPECT_EQ(table.GetItem(2).Runs.size(), 1u);
  EXPECT_FALSE(table.GetItem(3).IsRich);
  EXPECT_EQ(test::Thrown([&] { table.GetItem(6); }), "other: a string table of 6 texts has no text 6");
  EXPECT_EQ(test::Thrown([&] { table.GetItem(-1); }), "other: a string table of 6 texts has no text -1");
  table.Clear();
  EXPECT_EQ(table.Count(), 0);
  EXPECT_EQ(table.FindOrAdd(u"r"), 0);
}

TEST(SharedStringTable, ManyTextsAreFoundAgain) {
  TSharedStringTable table;
  const auto text = [](int32_t AIndex) {
    return TText(std::u16string(static_cast<size_t>(AIndex % 13), u'x') + static_cast<char16_t>(AIndex / 13));
  };
  for (int32_t index = 0; index < 5000; ++index) {
    EXPECT_EQ(index % 3 == 0 ? table.Add(text(index)) : table.FindOrAdd(text(index)), index);
    EXPECT_EQ(table.FindOrAdd(text(index / 2)), index / 2);
  }
  for (int32_t index = 0; index < 5000; ++index) EXPECT_EQ(table.FindOrAdd(text(index)), index);
  EXPECT_EQ(table.Count(), 5000);
}

TEST(XlsxStrings, ItemsAreOneTextOrRuns) {
  const struct {
    const char* Item;
    const char* Shown;
  } cases[] = {
      {"<t>plain</t>", "'plain"},
      {"<t> </t>", "' "},
      {"<t>\n\ttab </t>", "'\n\ttab "},
      {"<t>a<b>c</b><![CDATA[<d>]]><!-- x --><?p x?>e</t>", "'ac<d>e"},
      {"<t>a_x000D__X0042__x5_</t>", "'a\rB_x5_"},
      {"<t>_x005F_x0041_</t>", "'_x0041_"},
      {"<t>&#x1F600;\xF0\x9F\x98\x80</t>", "'\xF0\x9F\x98\x80\xF0\x9F\x98\x80"},
      {"<t>one</t><t>two</t>", "'one"},
      {"<r><t>run</t></r><t>text</t>", "'text"},
      {"<rPh><t>spoken</t></rPh><t>text</t><phoneticPr/>", "'text"},
      {"", "'"},
      // One run without a font is plain, as is an item whose runs have no text.
      {"<r><t>one</t></r>", "'one"},
      {"<r><rPr/><t>one</t></r>", "'one"},
      {"<r><t>one</t></r><r><t>two</t></r>", "'one/two"},
      {"<r><t>one</t></r><r><rPr><b/></rPr><t/></r>", "'one"},
      {"<r><x>lo<y>o</y></x>se</r><r><t>t</t><x>not</x></r>", "'loose/t"},
      {"<R><T>one</T></R><q:r xmlns:q='u'><q:t>two</q:t></q:r>", "'one/two"},
  };
  for (const auto& row : cases) {
    const std::string item = "<si>" + std::string(row.Item) + "</si>";
    EXPECT_EQ(LoadedCells(Row("<c r='A1' t='s'><v>0</v></c>"), item), "A1=" + std::string(row.Shown)) << row.Item;
  }
}

TEST(XlsxStrings, OnlyItemsOfTheTableAreCounted) {
  EXPECT_EQ(
      LoadedCells(Row("<c r='A1' t='s'><v>1</v></c>"), "<x><si><t>no</t></si></x>text<si/><S:SI><t>yes</t></S:SI>"),
      "A1='yes");
}

TEST(XlsxStrings, CellsShareTheTextsOfTheTable) {
  TWorkbook book;
  TXlsxBuilder()
      .Sheet(Row("<c r='A1' t='s'><v>0</v></c><c r='B1' t='s'><v>0</v></c>"))
      .Sheet(Row("<c r='A1' t='s'><v>0</v></c>"))
      .Strings("<si><t>shared</t></si>")
      .Load(book);
  const auto block = [&](int32_t ASheet, int32_t ACol) { return book.GetSheet(ASheet)->Store().Find(ACol, 1)->Text; };
  EXPECT_EQ(block(0, 1), block(0, 2));
  EXPECT_EQ(block(0, 1), block(1, 1));
}

/// "name size flags color" of a font: b, i, u (single), U (double), s, ^ and v for the script.
std::string FontText(const TCellFontInfo& AFont) {
  std::string text = AFont.Name.ToUtf8() + " " + std::to_string(static_cast<int>(AFont.Size)) + " ";
  if (AFont.Bold) text += "b";
  if (AFont.Italic) text += "i";
  if (AFont.Underline != usNone) text += AFont.Underline == usDouble ? "U" : "u";
  if (AFont.Strikethrough) text += "s";
  if (AFont.Script != spNormal) text += AFont.Script == spSuperscript ? "^" : "v";
  char color[16];
  std::snprintf(color, sizeof color, " %08X", static_cast<unsigned>(AFont.Color.ARGB));
  return text + color;
}

TEST(XlsxStrings, RunsTakeWhatTheyDoNotStateFromTheCellsStyle) {
  const char* const kStyles =
      "<styleSheet><fonts><font/><font><name val='Base'/><sz val='20'/><b/><u val='double'/><color rgb='FF112233'/>"
      "<vertAlign val='superscript'/></font></fonts><cellXfs><xf/><xf fontId='1'/></cellXfs></styleSheet>";
  const struct {
    const char* Font;
    const char* OnBase;
    const char* OnDefault;
  } cases[] = {
      {"", "Base 20 bU^ FF112233", "Calibri 11  FF000000"},
      {"<rPr/>", "Base 20 bU^ FF112233", "Calibri 11  FF000000"},
      {"<rPr><rFont val='R'/><sz val='8.5'/></rPr>", "R 8 bU^ FF112233", "R 8  FF000000"},
      {"<rPr><b val='0'/><i/><u val='none'/></rPr>", "Base 20 i^ FF112233", "Calibri 11 i FF000000"},
      {"<rPr><u/><strike val='off'/></rPr>", "Base 20 bu^ FF112233", "Calibri 11 u FF000000"},
      {"<rPr><strike/><vertAlign val='sub'/></rPr>", "Base 20 bUsv FF112233", "Calibri 11 sv FF000000"},
      {"<rPr><color rgb='80ABCDEF'/><vertAlign val='baseline'/></rPr>", "Base 20 bU FFABCDEF", "Calibri 11  FFABCDEF"},
      {"<rPr><color indexed='10'/></rPr>", "Base 20 bU^ FF000000", "Calibri 11  FF000000"},
      {"<rPr><b/></rPr><rPr><i/></rPr>", "Base 20 bU^ FF112233", "Calibri 11 b FF000000"},
  };
  for (const auto& row : cases) {
    const std::string runs = "<r>" + std::string(row.Font) + "<t>a</t></r><r><rPr><b/></rPr><t>b</t></r>";
    TWorkbook book;
    TXlsxBuilder()
        .Sheet(Row("<c r='A1' s='1' t='s'><v>0</v></c><c r='B1' t='s'><v>0</v></c><c r='C1' s='1'><is>" + runs +
                   "</is></c>"))
        .Strings("<si>" + runs + "</si>")
        .Part("xl/styles.xml", kStyles)
        .Load(book);
    const TWorksheet& sheet = *book.GetSheet(0);
    EXPECT_EQ(FontText(sheet.GetCellAt(1, 1).RichText.at(0).Font), row.OnBase) << row.Font;
    EXPECT_EQ(FontText(sheet.GetCellAt(2, 1).RichText.at(0).Font), row.OnDefault) << row.Font;
    EXPECT_EQ(FontText(sheet.GetCellAt(3, 1).RichText.at(0).Font), row.OnBase) << row.Font << " inline";
  }
}

TEST(XlsxStrings, FormattedRunsAreBounded) {
  std::string runs;
  for (int i = 0; i < 2000; ++i) runs += "<r><t>a</t></r>";
  std::string cells;
  for (int row = 1; row <= 2100; ++row) cells += "<c r='A" + std::to_string(row) + "' t='s'><v>0</v></c>";
  TWorkbook book;
  EXPECT_EQ(
      test::Thrown([&] { TXlsxBuilder().Sheet(Row(cells)).Strings("<si>" + runs + "</si>").Load(book); }),
      "limit: xl/worksheets/sheet1.xml, cell A2000: the formatted runs of text of the workbook exceed the limit of "
      "the reader");
  EXPECT_EQ(test::DumpCells(*book.GetSheet(0)), "");
}

}  // namespace
}  // namespace tessarine
