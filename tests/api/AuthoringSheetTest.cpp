#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/features/AutoFiltering.h>
#include <tessarine/platform/Unicode.h>

#include "../support/TemporaryFolder.h"
#include "ApiFixture.h"

namespace tessarine {
namespace {

using testing::FailureOf;
using testing::TApiFixture;

std::vector<std::byte> Bytes(std::string_view AText) {
  const auto* data = reinterpret_cast<const std::byte*>(AText.data());
  return {data, data + AText.size()};
}

TEST(AuthoringSheet, MistakesRaiseTheirMessageAndChangeNothing) {
  TApiFixture book{{"A1", "1"}};
  TApiFixture other;
  book.Api().AddTable("Known", "C1:D2");
  book.Workbook.ClearModified();
  const TAuthoringSheet sheet = book.Api();
  const struct {
    std::function<void()> Work;
    const char* Message;
  } cases[] = {
      {[] { TAuthoringSheet(nullptr, nullptr); }, "argument: AuthoringSheet: missing workbook/sheet"},
      {[&] { TAuthoringSheet(&book.Workbook, &other.Sheet()); }, "argument: AuthoringSheet: missing workbook/sheet"},
      {[&] { book.Book().UseSheet("Nowhere"); }, "argument: Sheet not found: Nowhere"},
      {[&] { book.Book().UseSheet(1); }, "argument: Sheet not found: 1"},
      {[&] { book.Book().GetSheetByName(u""); }, "argument: Sheet not found: "},
      {[&] { book.Book().AddWorksheet("SHEET1"); }, "argument: Sheet name already exists: SHEET1"},
      {[&] { book.Book().Names().Define(" $ ", "1"); }, "argument: Invalid name:  $ "},
      {[&] { sheet.AddTable("", "A1:?"); }, "argument: Invalid range: A1:?"},
      {[&] { sheet.AddTable("kNOWN", "A1:B2"); }, "argument: Table name already exists: kNOWN"},
      {[&] { sheet.DeleteTable("T"); }, "argument: Table not found: T"},
      {[&] { sheet.MaterializeSpillAsTable("A1", ""); }, "state: No formula spills from A1"},
      {[&] { sheet.SetComment("A", "x"); }, "argument: Invalid cell address: A"},
      {[&] { sheet.SetHyperlink("", "x"); }, "argument: Invalid cell address: "},
      {[&] { (void)sheet.TryGetHyperlink("1"); }, "argument: Invalid cell address: 1"},
      {[&] { sheet.SetPrintArea("A0"); }, "argument: Invalid range: A0"},
      {[&] { sheet.EnableAutoFilter("x"); }, "argument: Invalid range: x"},
      {[&] { sheet.AddListValidation("x", "a"); }, "argument: Invalid range: x"},
      {[&] { sheet.AddWholeValidation("x", dvoEqual, "1"); }, "argument: Invalid range: x"},
      {[&] { sheet.AddConditionalFormat("x", cfoEqual, "1"); }, "argument: Invalid range: x"},
      {[&] { sheet.Sort("x", 1); }, "argument: Invalid range: x"},
      {[&] { sheet.Sort("A1", std::span<const TSheetSortKey>()); }, "argument: SortRange: no sort keys"},
      {[&] { TessarineSortRange(nullptr, &book.Sheet(), "A1", false, {}); },
       "argument: SortRange: missing workbook/sheet"},
      {[&] { sheet.Hide(); }, "state: Cannot hide the only visible worksheet"},
      {[&] { sheet.SetRowHeightPt(0, 5); }, "argument: Invalid row: 0"},
      {[&] { sheet.SetColWidthChars(16385, 5); }, "argument: Invalid column: 16385"},
      {[&] { sheet.HideRows(-1, 5); }, "argument: Invalid row: -1"},
      {[&] { sheet.AutoFitColumn(0); }, "argument: Invalid column: 0"},
      {[&] { sheet.SetRowHeightPt(1, -1); }, "argument: Invalid size: -1.000000"},
      {[&] { sheet.SetColWidthChars(1, std::nan("")); }, "argument: Invalid size: nan"},
      {[&] { sheet.AddChart("", sctLine, "A1", "", "?"); }, "argument: Invalid cell address: ?"},
      {[&] { TessarineAddChart(nullptr, nullptr, "", sctLine, "A1", ""); },
       "argument: AddChart: missing workbook/sheet"},
      {[&] { TessarineAddChart(&book.Workbook, &other.Sheet(), "", sctLine, "A1", ""); },
       "argument: AddChart: sheet not in workbook"},
      {[&] { TessarineAddPictureBytes(&book.Workbook, nullptr, {}); }, "argument: AddPicture: missing workbook/sheet"},
      {[&] { sheet.AddPictureFromBytes({}); }, "argument: AddPicture: empty image data"},
      {[&] { TessarineAddPictureBytes(&book.Workbook, &other.Sheet(), Bytes("x")); },
       "argument: AddPicture: sheet not in workbook"},
      {[&] { sheet.AddPictureFromBytes(Bytes("x"), "", "1"); }, "argument: Invalid cell address: 1"},
      {[&] { sheet.AddPictureFromFile("/nowhere/at all.png"); }, "file: File not found: /nowhere/at all.png"},
      {[&] { sheet.AddInkFromInkML({}, "A1", 0, 0); }, "argument: AddInk: empty ink data"},
      {[&] { sheet.AddShape("", "A1048577", 1, 1); }, "argument: Invalid cell address: A1048577"},
  };
  for (const auto& row : cases) EXPECT_EQ(FailureOf(row.Work), row.Message);
  EXPECT_FALSE(book.Workbook.IsModified());
  EXPECT_FALSE(book.Workbook.UndoManager().CanUndo());
  EXPECT_EQ(book.Sheet().Drawings().Count(), 0);
}

TEST(AuthoringSheet, EveryChangeMarksTheWorkbook) {
  TApiFixture book{{"A1", "1"}, {"A2", "0"}};
  book.Workbook.AddSheet(u"Other");
  const TAuthoringSheet sheet = book.Api();
  const std::function<void()> cases[] = {
      // clang-format off
      [&] { sheet.Freeze(1, 1); }, [&] { sheet.SetZoom(50); }, [&] { sheet.SetRtl(true); }, [&] { sheet.Hide(); },
      [&] { sheet.Unhide(); }, [&] { sheet.SetPrintArea("A1:B2"); }, [&] { sheet.ClearPrintArea(); },
      [&] { sheet.SetHyperlink("A1", "x"); }, [&] { sheet.ClearHyperlink("A1"); },
      [&] { sheet.SetComment("A1", "x"); }, [&] { sheet.ClearComment("A1"); }, [&] { sheet.InsertRows(3); },
      [&] { sheet.DeleteColumns(7, 2); }, [&] { sheet.HideColumns(2); }, [&] { sheet.SetColOutlineLevel(2, 3, 1); },
      [&] { sheet.SetColWidthChars(1, 9); }, [&] { sheet.SetRowHeightPt(1, 9); }, [&] { sheet.AutoFitColumns(); },
      [&] { sheet.AutoFitRows(); }, [&] { sheet.EnableAutoFilter("A1:A2"); }, [&] { sheet.ClearAutoFilter(); },
      [&] { sheet.ClearConditionalFormats(); }, [&] { sheet.ClearValidations(); }, [&] { sheet.Sort("A1:A2", 1); },
      [&] { sheet.AddShape("", "A1", 0, 0); }, [&] { book.Book().Names().Define("N", "1"); },
      [&] { book.Book().Names().Delete("n"); }, [&] { book.Book().AddWorksheet(); },
      // clang-format on
  };
  for (size_t index = 0; index < std::size(cases); ++index) {
    book.Workbook.ClearModified();
    cases[index]();
    EXPECT_TRUE(book.Workbook.IsModified()) << index;
  }
  book.Workbook.ClearModified();
  const size_t steps = book.Workbook.UndoManager().UndoCount();
  sheet.Sort("A1:A2", 1);
  sheet.InsertRows(0, 2);
  EXPECT_FALSE(sheet.DeleteChart(0));
  EXPECT_FALSE(book.Book().Names().Delete("n"));
  EXPECT_FALSE(book.Workbook.IsModified()) << "nothing changed place, nothing was there";
  EXPECT_EQ(book.Workbook.UndoManager().UndoCount(), steps);
}

TEST(AuthoringSheet, ViewSettingsAreHeldInTheirLimits) {
  TApiFixture book;
  const TAuthoringSheet sheet = book.Api();
  for (const auto& [asked, got] : {std::pair(5, 10), {10, 10}, {75, 75}, {400, 400}, {9999, 400}, {-1, 10}}) {
    sheet.SetZoom(asked);
    EXPECT_EQ(book.Sheet().View().Zoom, got);
  }
  sheet.Freeze(-3, 2);
  EXPECT_EQ(book.Sheet().FrozenRows(), 0);
  EXPECT_EQ(book.Sheet().FrozenCols(), 2);
  sheet.SetRtl(true);
  EXPECT_EQ(book.Sheet().View().Zoom, 10) << "one setting leaves the others alone";
  book.Book().AddWorksheet("Two");
  sheet.Hide(true);
  EXPECT_EQ(sheet.Visibility(), svVeryHidden);
  EXPECT_FALSE(sheet.IsVisible());
  sheet.SetPrintArea("C4:A1");
  EXPECT_EQ(book.Sheet().PageSetup().PrintArea(), (TCellRange{1, 1, 3, 4}));
}

TEST(AuthoringSheet, LinesAreHiddenAndSizedInsideTheSheet) {
  TApiFixture book;
  const TAuthoringSheet sheet = book.Api();
  const TRowColSizing& sizing = book.Sheet().Sizing();
  sheet.HideColumns(16383, std::numeric_limits<int32_t>::max());
  EXPECT_TRUE(sizing.IsColHidden(16383) && sizing.IsColHidden(16384));
  EXPECT_FALSE(sizing.IsColHidden(16382) || sizing.IsColHidden(16385));
  sheet.HideRows(2, 2);
  sheet.HideRows(3, 1, false);
  EXPECT_TRUE(sizing.IsRowHidden(2) && !sizing.IsRowHidden(3));
  sheet.HideRows(9, -4);
  EXPECT_FALSE(sizing.IsRowHidden(9));
  sheet.SetRowOutlineLevel(4, 2, 99);
  EXPECT_EQ(sizing.GetRowOutlineLevel(5), 7);
  sheet.SetRowHeightPt(7, 33.5);
  EXPECT_EQ(sheet.GetRowHeightPt(7), 33.5);
  sheet.SetColWidthChars(2, 20);
  EXPECT_EQ(sheet.GetColWidthChars(2), 20);
}

TEST(AuthoringSheet, RowsFitTheirTallestCell) {
  TApiFixture book{{"A1", "'x"}, {"A2", "'one\ntwo"}, {"A3", "'x"}, {"A4", "'x"}, {"A5", "'x"}};
  const TAuthoringSheet sheet = book.Api();
  const double line = book.Sheet().Sizing().DefaultRowHeight();
  book.Cell("A3").SetFontSize(22);
  book.Cell("A4").SetText(std::string(100, 'x')).SetWrapText(true);
  sheet.SetColWidthChars(1, 30);
  for (const int32_t row : {5, 6}) sheet.SetRowHeightPt(row, 80);
  book.Cells("A7:A8").Merge().SetValue(std::string(500, '\n'));
  book.Cell("A9").SetText(std::string(5000, '\n'));
  sheet.AutoFitRows();
  const double expected[] = {line, 2 * line, 2 * line, 4 * line, line, line, line, line, 409};
  for (int32_t row = 1; row <= 9; ++row) EXPECT_DOUBLE_EQ(sheet.GetRowHeightPt(row), expected[row - 1]) << row;
  book.Cell("A9").SetText("x");
  sheet.AutoFitRow(9);
  EXPECT_EQ(sheet.GetRowHeightPt(9), line);
  sheet.AutoFitColumn(3);
  EXPECT_DOUBLE_EQ(sheet.GetColWidthChars(1), 30) << "one column, and that one unused";
  sheet.AutoFitColumns();
  EXPECT_DOUBLE_EQ(sheet.GetColWidthChars(1), 48);
}

TEST(AuthoringSheet, LinksNotesNamesAndStyles) {
  TApiFixture book;
  const TAuthoringSheet sheet = book.Api();
  sheet.SetHyperlink("B2", " https://example.org ");
  EXPECT_EQ(sheet.TryGetHyperlink("$B$2"), TText(u" https://example.org "));
  sheet.ClearHyperlink("B2");
  EXPECT_FALSE(sheet.TryGetHyperlink("B2"));
  sheet.SetComment("C3", "text", "me");
  EXPECT_EQ(*book.Sheet().Comments().Find(3, 3), TCellComment::Create(u"me", u"text"));
  sheet.ClearComment("C3");
  EXPECT_TRUE(book.Sheet().Comments().IsEmpty());

  const TWorkbookNamesFacade names = book.Book().Names();
  names.Define(" tax$ ", "A1*2");
  EXPECT_EQ(names.TryGet("TAX"), TText(u"=A1*2"));
  const uint64_t version = book.Workbook.NamesVersion();
  EXPECT_TRUE(names.Delete("Tax"));
  EXPECT_NE(book.Workbook.NamesVersion(), version);
  EXPECT_FALSE(names.TryGet("tax"));

  TCellFormat format;
  format.Hidden = true;
  const int32_t index = book.Book().Styles().Add(format);
  EXPECT_EQ(book.Book().Styles().Add(format), index + 1);
  EXPECT_EQ(book.Book().Styles().Resolve(index), format);
  EXPECT_EQ(book.Book().Styles().Resolve(99), TCellFormat());
  book.Book().AddWorksheet("Sheet3");
  EXPECT_EQ(book.Book().AddWorksheet().Sheet().Name(), u"Sheet2");
  EXPECT_EQ(book.Book().AddWorksheet(" ").Sheet().Name(), u"Sheet4");
}

TEST(AuthoringSheet, RulesSayWhatMayBeEnteredAndHowItLooks) {
  TApiFixture book{{"A1", "5"}, {"A2", "12"}};
  const TAuthoringSheet sheet = book.Api();
  sheet.AddConditionalFormat("A1:A9", cfoBetween, "10", "20", 0xFF00FF00, 0, true);
  const auto look = [&](int32_t ARow) { return book.Sheet().ResolveFormat({1, ARow}, nullptr); };
  EXPECT_EQ(look(1), TCellFormat());
  EXPECT_EQ(look(2).Fill, TCellFillInfo::Solid(SheetColorToRef(0xFF00FF00)));
  EXPECT_TRUE(look(2).Font.Bold && look(2).Font.Color == TCellFontInfo().Color);

  sheet.AddListValidation("B1:B9", "Yes,No", "Choose", "");
  sheet.AddWholeValidation("C1", dvoGreaterThan, "3");
  const TDataValidationList& rules = book.Sheet().Validations();
  EXPECT_TRUE(rules.ValidateValue(2, 5, u"No").IsAccepted);
  EXPECT_EQ(rules.ValidateValue(2, 5, u"Maybe").Title, u"Data Validation") << "the usual texts";
  EXPECT_EQ(rules.FindPromptAt(2, 9)->Text, u"Choose");
  EXPECT_FALSE(rules.FindPromptAt(3, 1));
  EXPECT_TRUE(rules.ValidateValue(3, 1, u"4").IsAccepted && rules.ValidateValue(3, 1, u"").IsAccepted);
  EXPECT_FALSE(rules.ValidateValue(3, 1, u"3").IsAccepted || rules.ValidateValue(3, 1, u"4.5").IsAccepted);

  sheet.EnableAutoFilter("A1:A2");
  book.Sheet().AutoFilter().SetColumnValues(1, {}, false);
  ApplyAutoFilter(book.Sheet(), nullptr);
  ASSERT_TRUE(book.Sheet().Sizing().IsRowHidden(2));
  sheet.EnableAutoFilter("A1:A5");
  EXPECT_FALSE(book.Sheet().Sizing().IsRowHidden(2)) << "a new filter begins with all rows";
  EXPECT_TRUE(book.Sheet().AutoFilter().IsEnabled());
}

TEST(AuthoringSheet, TablesGetFreeNamesAndColumns) {
  TApiFixture book{{"A1", "'Name"}, {"C1", "'Age"}, {"E1", "=SEQUENCE(2,2)"}};
  const TAuthoringSheet sheet = book.Api();
  const TSheetTable& first = sheet.AddTable("", "C5:A1", true, false);
  EXPECT_EQ(first.Name(), u"Table1");
  EXPECT_EQ(first.ColumnNames(), (std::vector<TText>{u"Name", u"Column2", u"Age"}));
  EXPECT_FALSE(first.ShowAutoFilter());
  const TSheetTable& second = book.Book().AddWorksheet("Two").AddTable("", "A1:B2", false);
  EXPECT_EQ(second.Name(), u"Table2") << "names count in the workbook";
  EXPECT_EQ(second.ColumnNames(), (std::vector<TText>{u"Column1", u"Column2"}));
  sheet.DeleteTable("TABLE1");
  EXPECT_EQ(FailureOf([&] { sheet.AddTable(" ", "A1:B2"); }), "argument: Table name already exists: Table2");

  book.Run("E1");
  book.Cell("F2").SetFontBold(true);
  const TSheetTable& spilled = sheet.MaterializeSpillAsTable("$E$1", "", false);
  EXPECT_EQ(spilled.Name(), u"Import_E1");
  EXPECT_EQ(Utf16ToUtf8(spilled.Ref().ToA1()), "E1:F2");
  EXPECT_TRUE(book.Sheet().Spills().IsEmpty());
  EXPECT_EQ(book.Show("E1 F1 E2 F2"), "1 2 3 4");
  EXPECT_EQ(book.Cell("E1").Formula(), u"");
  EXPECT_TRUE(book.Cell("F2").FontBold());
}

TEST(AuthoringSheet, ChartsStandBesideTheCellsAndAreUndone) {
  const struct {
    TApiFixture::TCells Cells;
    const char* Anchor;
    int32_t Width, Height;
    TCellRange Place;
  } cases[] = {
      {{}, "", 8, 12, {6, 2, 14, 14}},
      {{{"C9", "1"}}, " ", 1, -5, {5, 2, 13, 6}},
      {{{"XFD1", "1"}}, "", 20, 4, {16384, 2, 16384, 6}},
      {{{"C9", "1"}}, "b3", 10, std::numeric_limits<int32_t>::max(), {2, 3, 12, kMaxRow}},
  };
  for (const auto& row : cases) {
    TApiFixture book(row.Cells);
    const TDrawingAnchor at =
        book.Api().AddChart("", sctPie, std::vector<TSheetChartSeries>(2), row.Anchor, row.Width, row.Height).Anchor;
    EXPECT_EQ((TCellRange{at.FromCol, at.FromRow, at.ToCol, at.ToRow}), row.Place);
  }

  TApiFixture book{{"A1", "3"}, {"A2", "4"}, {"B1", "'x"}, {"B2", "'y"}};
  const TAuthoringSheet sheet = book.Api();
  TSheetDrawing& chart = sheet.AddChart("", sctLine, "A1:A2", "=B1:B2");
  EXPECT_EQ(chart.Title, u"Chart");
  EXPECT_EQ(chart.Series.front().Values, (std::vector<double>{3, 4}));
  EXPECT_EQ(chart.Series.front().Categories, (std::vector<TText>{u"x", u"y"}));
  EXPECT_EQ(sheet.AddChart("T", sctBar, std::vector<TSheetChartSeries>(3)).Series[2].Order, 2);
  sheet.AddPictureFromBytes(Bytes("x"));
  EXPECT_EQ(sheet.ChartCount(), 2);
  EXPECT_EQ(sheet.PictureCount(), 1);
  EXPECT_EQ(sheet.GetChart(1)->Title, u"T");
  EXPECT_EQ(sheet.GetChart(2), nullptr);
  EXPECT_EQ(sheet.GetPicture(-1), nullptr);
  book.Workbook.UndoManager().Undo();
  EXPECT_EQ(sheet.PictureCount(), 0);
  book.Workbook.UndoManager().Redo();
  EXPECT_TRUE(sheet.DeletePicture(0) && sheet.DeleteChart(1) && !sheet.DeleteChart(1));
  EXPECT_EQ(sheet.GetChart(0), &chart);
}

TEST(AuthoringSheet, PicturesAndShapesTakeTheirDefaults) {
  TApiFixture book;
  const TAuthoringSheet sheet = book.Api();
  const test::TTemporaryFolder folder;
  const std::pair<const char*, const char16_t*> files[] = {
      {"a.JPG", u"image/jpeg"}, {"a.jpeg", u"image/jpeg"}, {"a.gif", u"image/gif"},
      {"a.bmp", u"image/bmp"},  {"a.png", u"image/png"},   {"gif", u"image/png"},
  };
  int number = 0;
  for (const auto& [name, type] : files) {
    test::WriteFile(folder.Path(name), "bytes");
    const TSheetDrawing& picture = sheet.AddPictureFromFile(folder.Path(name), "C4", 0, 20);
    EXPECT_EQ(picture.ContentType, type) << name;
    EXPECT_EQ(picture.ImageBytes, Bytes("bytes"));
    EXPECT_EQ(picture.Name.ToUtf8(), "Picture " + std::to_string(++number));
    EXPECT_EQ(picture.Anchor.ExtCxEmu, 240 * 9525);
    EXPECT_EQ(picture.Anchor.ExtCyEmu, 20 * 9525);
    EXPECT_EQ(picture.Anchor.FromRow, 4);
  }
  const TSheetDrawing& shape = sheet.AddShape("", "", 10, 0, 0xFF112233, 0);
  EXPECT_EQ(shape.PresetGeom, u"rect");
  EXPECT_EQ(shape.FillColor, 0x332211U);
  EXPECT_TRUE(shape.HasFill && !shape.HasLine);
  EXPECT_EQ(shape.Anchor.ExtCyEmu, 180 * 9525);
  EXPECT_EQ(sheet.AddInkFromInkML(Bytes("<ink/>"), "A1", 5, 5).InkMlBytes, Bytes("<ink/>"));
  EXPECT_EQ(book.Workbook.UndoManager().UndoCount(), std::size(files)) << "shapes and ink go past undo";
}

}  // namespace
}  // namespace tessarine
