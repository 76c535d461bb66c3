#include <gtest/gtest.h>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/SheetTables.h>

namespace tessarine {
namespace {

TEST(AutoFilter, CriteriaKeepWhatTheOtherKindHadSet) {
  TSheetAutoFilter filter;
  filter.Enable({3, 10, 1, 1});
  EXPECT_TRUE(filter.IsEnabled());
  EXPECT_TRUE(filter.IsFilterHeaderCell(2, 1));
  EXPECT_FALSE(filter.IsFilterHeaderCell(2, 2));
  filter.SetColumnContains(2, u"x", true);
  filter.SetColumnValues(2, {u"a"}, false);
  const TAutoFilterColumn column = filter.GetColumn(2);
  EXPECT_EQ(column.Contains, u"x");
  EXPECT_EQ(column.Values.size(), 1u);
  EXPECT_FALSE(column.MatchCase);
  EXPECT_FALSE(filter.ColumnHasFilter(3));
  filter.ClearColumn(2);
  EXPECT_FALSE(filter.GetColumn(2).Active);
  filter.Enable({0, 1, 3, 3});
  EXPECT_FALSE(filter.IsEnabled());
}

TEST(AutoFilter, RangeAndCriteriaFollowEdits) {
  TSheetAutoFilter filter;
  filter.Enable({1, 1, 3, 10});
  filter.SetColumnValues(2, {u"b"}, false);
  filter.SetColumnValues(3, {u"c"}, false);
  filter.ShiftColumns(2, -1);
  EXPECT_EQ(filter.Range(), (TCellRange{1, 1, 2, 10}));
  EXPECT_FALSE(filter.ColumnHasFilter(3));
  ASSERT_TRUE(filter.ColumnHasFilter(2));
  EXPECT_EQ(filter.GetColumn(2).Values[0], u"c");
  filter.MoveColumns(2, 1, 1);
  EXPECT_TRUE(filter.ColumnHasFilter(1));
  filter.ShiftRows(1, -10);
  EXPECT_FALSE(filter.IsEnabled());
  EXPECT_TRUE(filter.Columns().empty());
}

TEST(AutoFilter, TotalsRowsStayOutside) {
  TSheetTableList tables;
  TSheetTable& table = tables.Add(u"T", {2, 1, 4, 8});
  table.SetHasTotalsRow(true);
  TSheetAutoFilter filter;
  filter.Enable({1, 1, 3, 8});
  EXPECT_EQ(filter.DataSortRange(tables), (TCellRange{1, 1, 3, 7}));
  table.SetRef({2, 1, 4, 1});  // a totals row in the header's place takes nothing away
  EXPECT_EQ(filter.DataSortRange(tables), (TCellRange{1, 1, 3, 8}));
  table.SetRef({2, 1, 4, 8});
  filter.SyncToTables(tables);
  EXPECT_EQ(filter.Range(), (TCellRange{2, 1, 4, 7}));
  table.SetShowAutoFilter(false);
  filter.Enable({1, 1, 3, 8});
  filter.SyncToTables(tables);
  EXPECT_EQ(filter.Range(), (TCellRange{1, 1, 3, 8}));
}

}  // namespace
}  // namespace tessarine
