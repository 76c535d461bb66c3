#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

std::string DumpTables(const TSheetTableList& ATables) {
  std::string text;
  for (const auto& table : ATables) text += table->Name().ToUtf8() + "=" + Utf16ToUtf8(table->Ref().ToA1()) + " ";
  return text;
}

TEST(SheetTables, DataLiesBetweenHeaderAndTotals) {
  const struct {
    const char16_t* Ref;
    bool Header, Totals;
    const char* Data;
    int32_t HeaderRow;
  } cases[] = {
      {u"B2:C9", true, false, "B3:C9", 2},  {u"B2:C9", true, true, "B3:C8", 2},  {u"B2:C9", false, true, "B2:C8", 0},
      {u"B2:C9", false, false, "B2:C9", 0}, {u"B2:C2", true, false, "B3:C3", 2}, {u"B2:C3", true, true, "B3:C3", 2},
      {u"B2:C2", false, true, "B2:C2", 0},  {u"C9:B2", true, true, "B3:C8", 2},
  };
  for (const auto& row : cases) {
    TSheetTable table(u"T", TCellRange::FromA1(row.Ref));
    table.SetHasHeaderRow(row.Header);
    table.SetHasTotalsRow(row.Totals);
    EXPECT_EQ(Utf16ToUtf8(table.DataRange().ToA1()), row.Data) << Utf16ToUtf8(row.Ref);
    EXPECT_EQ(table.HeaderRow(), row.HeaderRow);
    EXPECT_EQ(table.IsHeaderRow(2), row.Header);
    EXPECT_EQ(table.IsTotalsRow(table.Ref().EndRow), row.Totals);
    EXPECT_EQ(table.DataBandIndex(table.DataRange().StartRow), 0);
    EXPECT_EQ(table.DataBandIndex(table.DataRange().StartRow - 1), -1);
    EXPECT_EQ(table.DataBandIndex(table.DataRange().EndRow + 1), -1);
  }
  constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  const TSheetTable vast(u"V", {kLeast, kLeast, kMost, kMost});
  EXPECT_EQ(vast.ColumnCount(), kMost);
  EXPECT_EQ(vast.DataBandIndex(5), kMost);
}

TEST(SheetTables, ColumnsAreFoundByName) {
  TSheetTable table(u"T", {2, 2, 4, 9});
  table.SetColumnNames({u"Name", u"Price", u"name"});
  EXPECT_EQ(table.ColumnCount(), 3);
  EXPECT_EQ(table.ColumnIndex(u"NAME"), 0);
  EXPECT_EQ(table.ColumnDataRange(u"price"), (TCellRange{3, 3, 3, 9}));
  EXPECT_EQ(table.ColumnIndex(u"@Price"), -1);
  const TCellRange unknown = table.ColumnDataRange(u"x");
  EXPECT_EQ(unknown.StartCol, 2);
  EXPECT_LT(unknown.EndRow, unknown.StartRow);
}

TEST(SheetTables, TablesAreFoundByEitherNameAndByPlace) {
  TSheetTableList tables;
  tables.Add(u"Sales", {1, 1, 3, 5}).SetDisplayName(u"Umsatz");
  tables.Add(u"Umsatz", {1, 1, 9, 9});
  EXPECT_EQ(tables.FindByName(u"UMSATZ"), &tables.GetItem(0));
  EXPECT_EQ(tables.FindByName(u"sales"), &tables.GetItem(0));
  EXPECT_EQ(tables.FindByName(u"none"), nullptr);
  EXPECT_EQ(tables.FindContaining(3, 5), &tables.GetItem(0));
  EXPECT_EQ(tables.FindContaining(4, 5), &tables.GetItem(1));
  EXPECT_EQ(tables.FindContaining(10, 5), nullptr);
}

TEST(SheetTables, TablesFollowStructuralEdits) {
  const auto after = [](auto AEdit) {
    TSheetTableList tables;
    tables.Add(u"A", {1, 1, 3, 5});
    tables.Add(u"B", {1, 7, 3, 8});
    AEdit(tables);
    return DumpTables(tables);
  };
  EXPECT_EQ(after([](auto& ATables) { ATables.ShiftRows(3, 2); }), "A=A1:C7 B=A9:C10 ");
  EXPECT_EQ(after([](auto& ATables) { ATables.ShiftRows(1, -5); }), "B=A2:C3 ");
  EXPECT_EQ(after([](auto& ATables) { ATables.ShiftColumns(2, -1); }), "A=A1:B5 B=A7:B8 ");
  EXPECT_EQ(after([](auto& ATables) { ATables.MoveRows(7, 2, 1); }), "A=A3:C7 B=A1:C2 ");
  EXPECT_EQ(after([](auto& ATables) { ATables.MoveColumns(1, 3, 5); }), "A=E1:G5 B=E7:G8 ");
}

TEST(SheetTables, TheVersionTellsOfAllThatNamesDependOn) {
  TSheetTableList tables;
  uint64_t last = tables.Version();
  const auto changed = [&] { return std::exchange(last, tables.Version()) != tables.Version(); };
  TSheetTable& table = tables.Add(u"T", {1, 1, 2, 5});
  EXPECT_TRUE(changed());
  table.SetName(u"U");
  EXPECT_TRUE(changed());
  table.SetRef({1, 1, 2, 6});
  EXPECT_TRUE(changed());
  table.SetColumnNames({u"a"});
  EXPECT_TRUE(changed());
  table.SetColumnNames({u"a"});
  EXPECT_FALSE(changed());
  table.SetHasTotalsRow(true);
  EXPECT_TRUE(changed());
  table.SetShowRowStripes(false);
  EXPECT_FALSE(changed());
  tables.ShiftRows(1, 1);
  EXPECT_TRUE(changed());
  tables.RemoveAt(0);
  EXPECT_TRUE(changed());
}

TEST(SavedView, SelectionTextsAreReadAndWritten) {
  const struct {
    const char16_t* Text;
    const char* Ranges;
  } cases[] = {
      {u"A1", "A1"},
      {u"  C9:B2   D4 ", "B2:C9 D4"},
      {u"A1 nonsense B2:", "A1"},
      {u"", ""},
      {u"XFE1 A0 A1048576", "A1048576"},
      {u"A1\t B2", "A1 B2"},
      {u"$A$1:$B$2", "A1:B2"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Utf16ToUtf8(TSheetSavedView::FormatSqref(TSheetSavedView::ParseSqref(row.Text))), row.Ranges)
        << Utf16ToUtf8(row.Text);
  EXPECT_EQ(TSheetSavedView::FormatSqref({{3, 9, 2, 2}}), u"B2:C9");
}

TEST(SavedView, ClearForgetsWhatWasAssigned) {
  TSheetSavedView view;
  view.AssignFrom({{1, 1, 2, 2}}, 3, 4, 5, 6, true);
  EXPECT_TRUE(view.HasView);
  EXPECT_EQ(view.TopLeftRow, 6);
  view.Clear();
  EXPECT_EQ(view, TSheetSavedView());
  EXPECT_EQ(view.ActiveCol, 1);
}

}  // namespace
}  // namespace tessarine
