#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

std::vector<TCellValue> Numbers(int64_t ACount, double AFirst = 1) {
  std::vector<TCellValue> values;
  for (int64_t i = 0; i < ACount; ++i) values.push_back(TCellValue::FromNumber(AFirst + static_cast<double>(i)));
  return values;
}

std::string ChildAt(const TSpillMap& AMap, int32_t ACol, int32_t ARow) {
  const auto value = AMap.TryGetValue(ACol, ARow);
  return value ? "[" + value->ToDisplayString().ToUtf8() + "]" : "-";
}

std::string AnchorOf(const TSpillMap& AMap, int32_t ACol, int32_t ARow) {
  const auto anchor = AMap.FindAnchor(ACol, ARow);
  return anchor ? Utf16ToUtf8(anchor->ToA1()) : "-";
}

TEST(SpillMap, ChildrenAnswerAndTheAnchorDoesNot) {
  TSpillMap map;
  map.SetSpill(2, 3, 2, 2, Numbers(3));
  EXPECT_EQ(ChildAt(map, 2, 3), "-");
  EXPECT_EQ(ChildAt(map, 3, 3), "[2]");
  EXPECT_EQ(ChildAt(map, 2, 4), "[3]");
  EXPECT_EQ(ChildAt(map, 3, 4), "[]");  // behind the end of the values
  EXPECT_EQ(ChildAt(map, 4, 4), "-");
  EXPECT_EQ(AnchorOf(map, 2, 3), "B3");
  EXPECT_EQ(AnchorOf(map, 3, 4), "B3");
  EXPECT_EQ(AnchorOf(map, 1, 1), "-");
  ASSERT_NE(map.TryGetSpill(2, 3), nullptr);
  EXPECT_EQ(map.TryGetSpill(2, 3)->AsRange(), (TCellRange{2, 3, 3, 4}));
  EXPECT_EQ(map.TryGetSpill(3, 3), nullptr);
}

TEST(SpillMap, OneCellAndNothingOnlyClear) {
  const std::pair<int64_t, int64_t> sizes[] = {{1, 1}, {0, 5}, {5, 0}, {-1, -1}};
  for (const auto& [rows, cols] : sizes) {
    TSpillMap map;
    map.SetSpill(1, 1, 3, 1, Numbers(3));
    map.SetSpill(1, 1, rows, cols, Numbers(9));
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(ChildAt(map, 1, 2), "-");
  }
}

TEST(SpillMap, EveryChangeRaisesTheVersion) {
  TSpillMap map;
  uint64_t last = map.Version();
  const auto changed = [&] { return std::exchange(last, map.Version()) != map.Version(); };
  map.SetSpill(1, 1, 3, 1, Numbers(3));
  EXPECT_TRUE(changed());
  map.SetSpill(1, 1, 3, 1, Numbers(3, 5));
  EXPECT_TRUE(changed());
  map.ClearAnchor(1, 2);
  EXPECT_FALSE(changed());
  map.ClearAnchor(1, 1);
  EXPECT_TRUE(changed());
  map.ClearAll();
  EXPECT_FALSE(changed());
  map.SetSpill(1, 1, 3, 1, Numbers(3));
  last = map.Version();
  map.ShiftRows(5, 0);
  EXPECT_FALSE(changed());
  map.ShiftColumns(5, 1);
  EXPECT_TRUE(changed());
  EXPECT_TRUE(map.IsEmpty());
}

TEST(SpillMap, AnAnchorMayStandOnAnotherBlocksChild) {
  TSpillMap map;
  map.SetSpill(1, 1, 3, 1, Numbers(3));
  map.SetSpill(1, 2, 1, 2, Numbers(2, 20));
  EXPECT_EQ(ChildAt(map, 1, 2), "[2]");
  EXPECT_EQ(AnchorOf(map, 1, 2), "A1");
  EXPECT_EQ(ChildAt(map, 2, 2), "[21]");
  map.ClearAnchor(1, 1);
  EXPECT_EQ(AnchorOf(map, 1, 2), "A2");
}

TEST(SpillMap, BlockedPlacesAreFound) {
  TSpillMap map;
  map.SetSpill(2, 2, 2, 2, Numbers(4));  // B2:C3
  const struct {
    const char16_t* Rect;
    int32_t AnchorCol, AnchorRow;
    bool Blocked;
  } cases[] = {
      {u"A1:A9", 1, 1, false}, {u"A1:B2", 1, 1, true}, {u"B2:B2", 2, 2, false}, {u"B2:B3", 2, 2, true},
      {u"C3:D3", 3, 3, false}, {u"C3:D4", 4, 4, true}, {u"D4:E5", 4, 4, false}, {u"A3:E3", 1, 3, true},
  };
  for (const auto& row : cases)
    EXPECT_EQ(map.IntersectsOther(TCellRange::FromA1(row.Rect), row.AnchorCol, row.AnchorRow), row.Blocked)
        << Utf16ToUtf8(row.Rect);
}

TEST(SpillMap, BlocksMayLeaveTheSheet) {
  TSpillMap map;
  map.SetSpill(kMaxCol, kMaxRow, 3, 2, Numbers(6));
  EXPECT_EQ(ChildAt(map, kMaxCol + 1, kMaxRow + 2), "[6]");
  EXPECT_EQ(ChildAt(map, kMaxCol + 2, kMaxRow), "-");
  map.SetSpill(1, 1, std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::max(), Numbers(2));
  EXPECT_EQ(ChildAt(map, 2, 1), "[2]");
  EXPECT_EQ(ChildAt(map, 2147483647, 2147483647), "[]");
  EXPECT_EQ(map.TryGetSpill(1, 1)->EndRow, 2147483647);
}

TEST(SpillMap, NavigationSeesAnchorsAndChildren) {
  TSpillMap map;
  map.SetSpill(2, 2, 3, 2, Numbers(6));
  map.SetSpill(3, 9, 1, 3, Numbers(3));
  std::vector<int32_t> rows = {77};
  map.CollectNavRowsInColumn(3, rows);
  std::sort(rows.begin(), rows.end());
  EXPECT_EQ(rows, (std::vector<int32_t>{2, 3, 4, 9, 77}));
  std::vector<int32_t> cols;
  map.CollectNavColsInRow(9, cols);
  std::sort(cols.begin(), cols.end());
  EXPECT_EQ(cols, (std::vector<int32_t>{3, 4, 5}));
}

TEST(SpillMap, AMillionCellsAreOneBlock) {
  TSpillMap map;
  for (int round = 0; round < 3; ++round) {
    map.SetSpill(5, 7, 1000, 1000, Numbers(1'000'000));
    EXPECT_EQ(ChildAt(map, 1004, 1006), "[1000000]");
    EXPECT_EQ(ChildAt(map, 1005, 1006), "-");
    map.ClearAnchor(5, 7);
    EXPECT_EQ(ChildAt(map, 6, 7), "-");
  }
}

/// One entry per position, as a dictionary would have it.
class TPlainSpills {
 public:
  void Set(int32_t ACol, int32_t ARow, int32_t ARows, int32_t ACols, double AFirst) {
    Clear(ACol, ARow);
    if (ARows * ACols == 1) return;
    FBlocks[{ACol, ARow}] = {ARows, ACols};
    for (int32_t row = 0; row < ARows; ++row)
      for (int32_t col = 0; col < ACols; ++col)
        if (row + col > 0) FChildren[{ACol + col, ARow + row}] = {{ACol, ARow}, AFirst + row * ACols + col};
  }
  void Clear(int32_t ACol, int32_t ARow) {
    if (FBlocks.erase({ACol, ARow}) == 0) return;
    std::erase_if(FChildren, [&](const auto& AEntry) { return AEntry.second.first == TPlace{ACol, ARow}; });
  }
  bool IsBlocked(int32_t ACol, int32_t ARow, int32_t ARows, int32_t ACols) const {
    for (int32_t row = ARow; row < ARow + ARows; ++row)
      for (int32_t col = ACol; col < ACol + ACols; ++col)
        if ((col != ACol || row != ARow) && (FChildren.contains({col, row}) || FBlocks.contains({col, row})))
          return true;
    return false;
  }
  std::string Describe(int32_t ACol, int32_t ARow) const {
    const auto child = FChildren.find({ACol, ARow});
    if (child != FChildren.end())
      return Utf16ToUtf8(TCellAddress{child->second.first.first, child->second.first.second}.ToA1()) + "=" +
             std::to_string(child->second.second);
    return FBlocks.contains({ACol, ARow}) ? "anchor" : "-";
  }

 private:
  using TPlace = std::pair<int32_t, int32_t>;
  std::map<TPlace, std::pair<int32_t, int32_t>> FBlocks;
  std::map<TPlace, std::pair<TPlace, double>> FChildren;
};

std::string DescribeSpill(const TSpillMap& AMap, int32_t ACol, int32_t ARow) {
  if (const TCellValue* value = AMap.FindChildValue(ACol, ARow))
    return AnchorOf(AMap, ACol, ARow) + "=" + std::to_string(value->Number);
  return AMap.FindAnchor(ACol, ARow) ? "anchor" : "-";
}

TEST(SpillMap, ActsAsAnEntryPerPositionWould) {
  std::mt19937 random(5);
  const auto pick = [&](uint64_t ALimit) { return static_cast<int32_t>(random() % ALimit) + 1; };
  for (int round = 0; round < 40; ++round) {
    TSpillMap map;
    TPlainSpills plain;
    for (int step = 0; step < 120; ++step) {
      const int32_t col = pick(30), row = pick(40), rows = pick(random() % 5 ? 6 : 40), cols = pick(6);
      map.ClearAnchor(col, row);
      plain.Clear(col, row);
      const bool blocked = plain.IsBlocked(col, row, rows, cols);
      ASSERT_EQ(map.IntersectsOther({col, row, col + cols - 1, row + rows - 1}, col, row), blocked);
      if (!blocked) {
        map.SetSpill(col, row, rows, cols, Numbers(int64_t{rows} * cols, step * 1000));
        plain.Set(col, row, rows, cols, step * 1000);
      }
      for (int probe = 0; probe < 8; ++probe) {
        const int32_t probeCol = pick(40), probeRow = pick(90);
        ASSERT_EQ(DescribeSpill(map, probeCol, probeRow), plain.Describe(probeCol, probeRow));
      }
    }
  }
}

TEST(SpillMap, BlocksComeInTheOrderTheyWereSet) {
  TSpillMap map;
  for (const int32_t col : {9, 1, 5}) map.SetSpill(col, 1, 2, 1, Numbers(2));
  map.SetSpill(9, 1, 2, 1, Numbers(2));
  std::vector<int32_t> order;
  map.ForEachSpill([&](const TSpillRange& ABlock) { order.push_back(ABlock.AnchorCol); });
  EXPECT_EQ(order, (std::vector<int32_t>{1, 5, 9}));
  order.clear();
  for (const TSpillRange* block : map.BlocksIn({16384, 2, 4, 2})) order.push_back(block->AnchorCol);
  EXPECT_EQ(order, (std::vector<int32_t>{5, 9}));
}

}  // namespace
}  // namespace tessarine
