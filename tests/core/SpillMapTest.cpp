#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tessarine
