#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/platform/Errors.h>

namespace tessarine {
namespace {

TEST(PivotRecords, ValuesComeBackWhateverTheirKind) {
  TPivotCache cache(1);
  cache.SetFieldNames({u"a", u"b"});
  const std::vector<TCellValue> values = {
      TCellValue::FromNumber(1.5),        TCellValue::FromText(u"x"),    TCellValue::FromText(u"X"),
      TCellValue::FromText(u""),          TCellValue::Empty(),           TCellValue::FromBoolean(true),
      TCellValue::FromBoolean(false),     TCellValue::FromError(ceDiv0), TCellValue::FromFormula(u"=1"),
      TCellValue::FromNumber(-INFINITY),  TCellValue::FromText(u"x"),    TCellValue::FromNumber(-0.0),
      TCellValue::FromNumber(4294967296), TCellValue::FromError(ceNA)};
  for (const TCellValue& value : values) cache.AddRecord(std::vector{TCellValue::FromText(u"p"), value, value});
  cache.AddRecord({});
  ASSERT_EQ(cache.RecordCount(), values.size() + 1);
  for (size_t i = 0; i < values.size(); ++i) EXPECT_EQ(cache.Value(i, 1), values[i]) << i;
  EXPECT_TRUE(cache.Value(values.size(), 0).IsEmpty());
  EXPECT_TRUE(cache.Value(0, 2).IsEmpty());
  EXPECT_EQ(cache.Records().Column(0).Items().size(), 2u);  // the empty value and "p"
  const double nan = -std::numeric_limits<double>::quiet_NaN();
  cache.AddRecord(std::vector{TCellValue::FromNumber(nan)});
  EXPECT_TRUE(std::isnan(cache.Value(cache.RecordCount() - 1, 0).Number));
  cache.ClearData();
  EXPECT_EQ(cache.RecordCount(), 0u);
  EXPECT_EQ(cache.FieldIndex(u"B"), 1);
  EXPECT_EQ(cache.FieldIndex(u"c"), -1);
  EXPECT_EQ(cache.FieldNumberFormat(7), u"");
}

TEST(PivotCaches, IdsAreNeverGivenTwice) {
  TPivotCacheList caches;
  const int32_t first = caches.AddNew().Id();
  caches.Add(std::make_unique<TPivotCache>(5));
  caches.RemoveAt(0);
  EXPECT_EQ(caches.FindById(5), &caches.GetItem(0));
  EXPECT_EQ(caches.FindById(first), nullptr);
  EXPECT_EQ(caches.AddNew().Id(), 6);
  caches.Clear();
  EXPECT_EQ(caches.AddNew().Id(), 7);
  caches.Add(std::make_unique<TPivotCache>(std::numeric_limits<int32_t>::max()));
  EXPECT_THROW(caches.AddNew(), ELimit);
}

TEST(PivotCaches, SlicersCompareThePlainTextOfEveryFilteredField) {
  TPivotCache cache(1);
  const TCellValue record[] = {TCellValue::FromText(u"Red"), TCellValue::FromNumber(2.5), TCellValue::Empty()};
  const struct {
    int32_t Field;
    std::vector<TText> Items;
    bool Passes;
  } cases[] = {{0, {u"blue", u"RED"}, true}, {0, {u"blue"}, false}, {0, {}, true},     {1, {u"2.5"}, true},
               {2, {u"(blank)"}, false},     {2, {u""}, true},      {9, {u"x"}, true}, {-1, {u"x"}, true}};
  for (const auto& row : cases) {
    cache.ClearAllSlicerFilters();
    cache.SetSlicerFilter(row.Field, row.Items);
    EXPECT_EQ(cache.RowPassesSlicers(record), row.Passes) << row.Field;
  }
  cache.SetSlicerFilter(0, {u"red"});
  cache.SetSlicerFilter(1, {u"3"});
  EXPECT_FALSE(cache.RowPassesSlicers(record));
  cache.ClearSlicerFilter(1);
  EXPECT_TRUE(cache.RowPassesSlicers(record));
}

TEST(PivotTables, EditsShiftThemCoarselyAndNeverRemoveThem) {
  const struct {
    int32_t Top, Bottom;
    void (*Edit)(TSheetPivotTableList&);
    const char* Result;
  } cases[] = {
      {10, 20, [](TSheetPivotTableList& AList) { AList.ShiftRows(8, -5); }, "5 5..15"},
      {2, 10, [](TSheetPivotTableList& AList) { AList.ShiftRows(5, -10); }, "2 2..0"},
      {2, 10, [](TSheetPivotTableList& AList) { AList.ShiftRows(3, 4); }, "2 2..14"},
      {2, 2, [](TSheetPivotTableList& AList) { AList.MoveRows(2, 2, 8); }, "0 0..0"},
      {50, 60, [](TSheetPivotTableList& AList) { AList.MoveRows(10, 2, 4); }, "44 44..54"},
      {50, 60, [](TSheetPivotTableList& AList) { AList.MoveRows(2, 2, 8); }, "50 50..60"},
      {9, 9, [](TSheetPivotTableList& AList) { AList.ShiftRows(1, INT64_MAX); }, "2147483647 2147483647..2147483647"},
      {9, 12, [](TSheetPivotTableList& AList) { AList.ShiftColumns(1, 3); }, "9 9..12"},
  };
  for (const auto& row : cases) {
    TSheetPivotTableList list;
    TPivotTable& table = list.Add(u"P", 1, {3, row.Top});
    table.LastBody = {3, row.Top, 5, row.Bottom};
    row.Edit(list);
    EXPECT_EQ(std::to_string(table.Dest.Row) + " " + std::to_string(table.LastBody.StartRow) + ".." +
                  std::to_string(table.LastBody.EndRow),
              row.Result);
  }
  TSheetPivotTableList list;
  list.Add(u"First", 1, {2, 2}).LastBody = {2, 2, 4, 9};
  TPivotTable& second = list.Add(u"Second", 1, {4, 4});
  EXPECT_EQ(list.FindContaining(4, 4), &list.GetItem(0));
  list.MoveColumns(2, 1, 9);
  EXPECT_EQ(second.Dest.Col, 3);
  EXPECT_EQ(list.FindByName(u"SECOND"), &second);
}

TEST(OlapConnections, MembersAndValuesAreFoundTrimmedInAnyCase) {
  TOlapConnection cube(u"c");
  cube.SetMockMembers(u" Years ", {u"2023", u"2024"});
  cube.SetMockMembers(u"cities", {u"Bonn"});
  cube.SetMockMembers(u"YEARS", {u"2024"});
  cube.SetMockMeasure(u"a|B", 7);
  const TText members[] = {u" a ", u"b"};
  EXPECT_EQ(cube.EvaluateCubeValue(members), TCellValue::FromNumber(7));
  EXPECT_EQ(cube.EvaluateCubeValue(std::span(members, 1)), TCellValue::FromError(ceNA));
  EXPECT_EQ(cube.ResolveMember(u" x "), u"x");
  EXPECT_EQ(cube.MockMemberCount(u"years "), 1u);
  EXPECT_EQ(cube.MockMemberCount(u"days"), 0u);
  EXPECT_EQ(cube.MockMembers().front().first, u"YEARS");
}

}  // namespace
}  // namespace tessarine
