#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/undo/UndoManager.h>

#include "ApiFixture.h"

namespace tessarine {
namespace {

using testing::FailureOf;
using testing::NotationOf;
using testing::TApiFixture;

TEST(SheetCell, StoresPlainTypesAsTheirKinds) {
  const struct {
    TSheetValue Value;
    const char *Stored, *Text;
    double Number;
    bool Boolean;
  } cases[] = {
      {nullptr, "_", "", 0, false},
      {TSheetValue(), "_", "", 0, false},
      {true, "TRUE", "TRUE", 1, true},
      {false, "FALSE", "FALSE", 0, false},
      {3, "3", "3", 3, true},
      {-2.5, "-2.5", "-2.5", -2.5, true},
      {uint64_t{7}, "7", "7", 7, true},
      {0.0F, "0", "0", 0, false},
      {"", "''", "", 0, false},
      {"12.5", "'12.5'", "12.5", 12.5, false},
      {u"tRue", "'tRue'", "tRue", 0, true},
      {"\xC3\xA9", "'\xC3\xA9'", "\xC3\xA9", 0, false},
      {std::string("=A1"), "'=A1'", "=A1", 0, false},
  };
  for (const auto& row : cases) {
    TApiFixture book;
    const TSheetCellRef cell = book.Cell("$b$2").SetValue(row.Value);
    EXPECT_EQ(NotationOf(book.Sheet().GetCellAt(2, 2).Value), row.Stored);
    EXPECT_EQ(cell.Value(), row.Value) << row.Stored;
    EXPECT_EQ(cell.Text().ToUtf8(), row.Text) << row.Stored;
    EXPECT_EQ(cell.AsNumber(), row.Number) << row.Stored;
    EXPECT_EQ(cell.AsBoolean(), row.Boolean) << row.Stored;
  }
}

TEST(SheetCell, RefusesWhatNoFileHolds) {
  TApiFixture book{{"C1", "=A1+1"}, {"C2", "=COUNT(A1:B1)"}};
  for (const double number : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    book.Cell("A1").SetValue(number);
    book.Cells("B1:B2").SetValue(number);
    book.Run("C1 C2");
    for (const char* place : {"A1", "B2", "C1"}) EXPECT_EQ(book.Cell(place).Text(), u"#NUM!") << place << number;
    EXPECT_EQ(book.Cell("C2").AsNumber(), 0);
  }
  const auto size = [&](float ASize) { return FailureOf([&] { book.Cell("A1").SetFontSize(ASize); }); };
  for (const float refused : {-3.0F, 0.0F, 0.9F, 410.0F, 1e9F, std::nanf("")})
    EXPECT_EQ(size(refused), "argument: Invalid size: " + std::to_string(refused));
  for (const float taken : {1.0F, 409.0F}) EXPECT_EQ(size(taken), "nothing");
}

TEST(SheetCell, ReadsWhatFormulasSee) {
  TApiFixture book{{"A1", "=1/0"}, {"A2", "=SEQUENCE(2,1,4)"}, {"A4", "=1+1"}, {"A5", "#N/A"}};
  book.Run("A1 A2");
  EXPECT_EQ(book.Cell("A1").Value(), TSheetValue("#DIV/0!"));
  EXPECT_EQ(book.Cell("A3").Value(), TSheetValue(5)) << "a spilled value";
  EXPECT_TRUE(book.Cell("A4").Value().IsEmpty()) << "a formula without a result";
  EXPECT_EQ(book.Cell("A4").DisplayText(), u"=1+1");
  EXPECT_EQ(book.Cell("A5").Value().Kind(), svkText);
  EXPECT_EQ(book.Cell("A5").Formula(), u"");
}

TEST(SheetCell, FormulasAreTrimmedAndGetTheirSign) {
  const std::pair<const char*, const char*> cases[] = {
      {"SUM(A1:A2)", "=SUM(A1:A2)"}, {" = 1+1 ", "= 1+1"}, {"\t5\n", "=5"}, {"", ""}, {"  ", ""}};
  for (const auto& [text, stored] : cases) {
    TApiFixture book{{"A1", "7"}};
    book.Cell("A1").SetFormula(text);
    EXPECT_EQ(book.Sheet().GetCellAt(1, 1).Value.Kind, cvkFormula) << text;
    EXPECT_EQ(book.Cell("A1").Formula().ToUtf8(), stored);
  }
}

TEST(SheetCell, AValueDropsRunsAndResultAndKeepsTheLook) {
  TApiFixture book{{"A1", "=1+1"}};
  book.Run("A1");
  book.Cell("A1").SetFontBold(true).SetStyleIndex(3);
  ASSERT_TRUE(book.Sheet().GetCellAt(1, 1).HasCachedValue);
  const TCell valued = (book.Cell("A1").SetValue(4), book.Sheet().GetCellAt(1, 1));
  EXPECT_FALSE(valued.HasCachedValue);
  EXPECT_TRUE(valued.FormatOverride.Font.Bold);
  EXPECT_EQ(valued.StyleIndex, 3);
  book.Cell("A1").SetRichText({RichRun("a", rfBold), RichRun("b")}).SetText("c");
  EXPECT_FALSE(book.Cell("A1").HasRichText());

  book.Cell("A1").ClearContents();
  EXPECT_TRUE(book.Cell("A1").FontBold());
  book.Cell("A1").SetValue(1).ClearFormats();
  TCell plain;
  plain.Value = TCellValue::FromNumber(1);
  EXPECT_EQ(book.Sheet().GetCellAt(1, 1), plain);
  book.Cell("A1").SetFontBold(true).Clear();
  EXPECT_FALSE(book.Sheet().HasCell({1, 1}));
}

TEST(SheetCell, FormatSettersStartFromTheDefaultFormat) {
  TApiFixture book;
  TCellFormat style;
  style.Font.Name = u"Styled";
  style.Fill = TCellFillInfo::Solid(TColorRef::FromARGB(kOpaqueWhite));
  const TSheetCellRef cell = book.Cell("A1").SetStyleIndex(book.Book().Styles().Add(style));
  ASSERT_EQ(cell.FontName(), u"Styled");
  TCellFormat wanted;
  wanted.Font.Bold = true;
  EXPECT_EQ(cell.SetFontBold(true).Format(), wanted) << "the style's fields are gone";

  wanted.Font.Name = u"Arial";
  wanted.Font.Size = 9.5F;
  wanted.Font.Italic = true;
  wanted.Font.Underline = usSingle;
  wanted.Font.Color = TColorRef::FromARGB(0xFF112233);
  wanted.Fill = TCellFillInfo::Solid(TColorRef::FromTheme(5, 0.25));
  wanted.NumberFormat = u"0.0";
  wanted.Alignment.Horizontal = haRight;
  wanted.Alignment.Vertical = vaTop;
  wanted.Alignment.WrapText = true;
  cell.SetFontName("Arial").SetFontSize(9.5F).SetFontItalic(true).SetFontUnderline(true).SetFontColor(0xFF112233);
  cell.FillThemeColor(5, 0.25).SetNumberFormat("0.0").SetHAlign(haRight).SetVAlign(vaTop).SetWrapText(true);
  EXPECT_EQ(cell.Format(), wanted);
  EXPECT_TRUE(cell.FontBold() && cell.FontItalic() && cell.FontUnderline() && cell.WrapText());
  EXPECT_EQ(cell.NumberFormat(), u"0.0");
  EXPECT_TRUE(cell.HAlign() == haRight && cell.VAlign() == vaTop);

  wanted = {};
  for (TBorderSide* side : {&wanted.Border.Left, &wanted.Border.Right, &wanted.Border.Bottom})
    *side = {blsThin, TColorRef::FromARGB(kOpaqueBlack)};
  wanted.Border.Top = {blsThick, TColorRef::FromARGB(0xFF0000FF)};
  cell.ApplyFormat({}).BorderAround(blsThin).SetBorder(bsTop, blsThick, 0xFF0000FF);
  EXPECT_EQ(cell.SetFillColor(1).ClearFill().SetNumberFormat("").SetFontUnderline(false).Format(), wanted);
}

TEST(SheetCell, ColoursAreResolvedWhenTheyAreRead) {
  TApiFixture book;
  EXPECT_EQ(book.Cell("A1").FillColor(), 0U);
  EXPECT_EQ(book.Cell("A1").FontColor(), kOpaqueBlack);
  const uint32_t accent = book.Workbook.Theme().ResolveThemeColor(4, 0.5);
  EXPECT_EQ(book.Cell("A1").FontColorTheme(4, 0.5).FontColor(), accent);
  EXPECT_EQ(book.Cell("A1").FillThemeColor(4, 0.5).FillColor(), accent);
  EXPECT_EQ(SheetRefToColor(SheetColorToRef(0x80112233)), 0x80112233U);
  EXPECT_EQ(SheetColorToBGR(0x80112233), 0x332211U);
}

TEST(SheetCell, RichTextCarriesItsTextAsValue) {
  TApiFixture book{{"A1", "5"}, {"A2", "7"}, {"A3", "8"}};
  TSheetCellRef cell = book.Cell("A1").SetFontItalic(true).AddRun(" apples", rfBold | rfUnderline);
  cell.AddRun("!", RichFont({rfStrikeout}, "Arial", 14, 0xFFFF0000));
  EXPECT_EQ(cell.Value(), TSheetValue("5 apples!"));
  ASSERT_EQ(cell.RichText().size(), 3U);
  EXPECT_TRUE(cell.RichText()[0].Font.Italic) << "what stood there, in the cell's font";
  EXPECT_TRUE(cell.RichText()[1].Font.Bold && cell.RichText()[1].Font.Italic);
  EXPECT_EQ(cell.RichText()[1].Font.Underline, usSingle);
  EXPECT_EQ(cell.RichText()[2].Font, RichFont(rfStrikeout, u"Arial", 14, 0xFFFF0000));
  cell.ClearRichText();
  EXPECT_FALSE(cell.HasRichText());
  EXPECT_EQ(cell.PlainText(), u"5 apples!");

  cell = book.Cell("A2").SetHtml("one <b>two</b>");
  EXPECT_EQ(cell.PlainText(), u"one two");
  EXPECT_EQ(cell.GetHtml().ToUtf8(), "one <b>two</b>");
  EXPECT_EQ(book.Cell("A3").SetText("1<2").GetHtml(), u"1&lt;2");
  EXPECT_TRUE(book.Cell("A3").SetRichText({}).Value().IsEmpty());
}

TEST(SheetCell, RefusesAddressesThatAreNone) {
  TApiFixture book;
  for (const char* text : {"", "A", "1", "A1:B2", "XFE1", "A1048577", "A0", "Sheet1!A1"})
    EXPECT_EQ(FailureOf([&] { book.Cell(text); }), std::string("argument: Invalid cell address: ") + text);
  EXPECT_EQ(FailureOf([&] { TSheetCellRef(book.Sheet(), TCellAddress{0, 1}); }), "argument: Invalid cell address: 1");
  for (const char* text : {"", "A1:", "A1:B", "A1:B0", "A1:B2:C3"})
    EXPECT_EQ(FailureOf([&] { book.Cells(text); }), std::string("argument: Invalid range: ") + text);
  EXPECT_EQ(book.Cells("c3:$A$1").Range(), (TCellRange{1, 1, 3, 3}));
}

TEST(SheetCell, WritesGoPastUndoAndAreToldByTheSheet) {
  TApiFixture book;
  int told = 0;
  book.Sheet().SetOnChange([&](TWorksheet&, TCellAddress, const TCell&, const TCell&) { ++told; });
  book.Workbook.ClearModified();
  book.Cell("A1").SetValue(1).SetFontBold(true).Clear();
  EXPECT_EQ(told, 3);
  EXPECT_FALSE(book.Workbook.IsModified()) << "nothing marks but the event's handler";
  book.Sheet().SetOnChange({});
  book.Cell("A1").SetValue(1);
  EXPECT_TRUE(book.Workbook.IsModified());
  EXPECT_FALSE(book.Workbook.UndoManager().CanUndo());
}

}  // namespace
}  // namespace tessarine
