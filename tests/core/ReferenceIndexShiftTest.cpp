#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

constexpr int64_t kGone = -1;

TEST(IndexShift, IndexesFollowInsertedAndDeletedLines) {
  const struct {
    int64_t Index, Start, Delta, Result;
  } cases[] = {
      {5, 5, 2, 7},
      {4, 5, 2, 4},
      {5, 5, -1, kGone},
      {6, 5, -1, 5},
      {4, 5, -1, 4},
      {9, 5, 0, 9},
      {7, 5, -3, kGone},
      {8, 5, -3, 5},
      {5, 1, 2147483647, 2147483652},
      {2147483647, 1, 2147483647, 4294967294},
      {6, std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min(), 6},
  };
  for (const auto& row : cases)
    EXPECT_EQ(ShiftIndex(row.Index, row.Start, row.Delta).value_or(kGone), row.Result)
        << row.Index << " " << row.Start << " " << row.Delta;
}

TEST(IndexShift, MoveDestinationsAreNormalized) {
  const struct {
    int64_t Start, Count, Dest, Result;
  } cases[] = {
      {3, 2, 5, kGone},
      {3, 2, 6, 4},
      {3, 2, 3, kGone},
      {3, 2, 4, kGone},
      {3, 2, 1, 1},
      {3, 2, 2, 2},
      {0, 2, 6, kGone},
      {3, 0, 6, kGone},
      {3, 2, 0, kGone},
      {1, 1, 3, 2},
      {1, std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::max(), kGone},
  };
  for (const auto& row : cases)
    EXPECT_EQ(NormalizeMoveDest(row.Start, row.Count, row.Dest).value_or(kGone), row.Result)
        << row.Start << " " << row.Count << " " << row.Dest;
}

/// A move carried out on a list of numbers.
std::vector<int> MovedOrder(int AStart, int ACount, int ADest) {
  std::vector<int> order;
  for (int i = 1; i <= 12; ++i) order.push_back(i);
  const std::vector<int> block(order.begin() + AStart - 1, order.begin() + AStart - 1 + ACount);
  order.erase(order.begin() + AStart - 1, order.begin() + AStart - 1 + ACount);
  order.insert(order.begin() + ADest - 1, block.begin(), block.end());
  return order;
}

TEST(IndexShift, MovedIndexesAreThoseOfAMovedList) {
  for (int start = 1; start <= 12; ++start)
    for (int count = 1; start + count - 1 <= 12; ++count)
      for (int dest = 1; dest + count - 1 <= 12; ++dest) {
        const std::vector<int> order = MovedOrder(start, count, dest);
        for (int place = 1; place <= 12; ++place)
          ASSERT_EQ(MoveIndex(order[static_cast<size_t>(place - 1)], start, count, dest), place)
              << start << " " << count << " " << dest;
      }
}

TEST(IndexShift, RangesMoveGrowAndShrink) {
  const struct {
    int64_t Start, Delta;
    const char* Rows2To5;
  } cases[] = {
      {2, 1, "B3:C6"},  {3, 1, "B2:C6"},  {6, 1, "B2:C5"},  {5, 1, "B2:C6"},  {1, -10, "gone"},
      {1, -3, "B1:C2"}, {4, -7, "B2:C3"}, {3, -2, "B2:C3"}, {6, -3, "B2:C5"}, {1, -1, "B1:C4"},
      {2, -4, "gone"},  {2, -3, "B2:C2"}, {9, 0, "B2:C5"},
  };
  for (const auto& row : cases) {
    const TAdjustedRange byRow = AdjustRange({3, 5, 2, 2}, saRows, row.Start, row.Delta);
    EXPECT_EQ(byRow.Deleted ? "gone" : Utf16ToUtf8(byRow.Range.ToA1()), row.Rows2To5) << row.Start << " " << row.Delta;
    const TAdjustedRange byColumn = AdjustRange({5, 3, 2, 2}, saColumns, row.Start, row.Delta);
    EXPECT_EQ(byColumn.Deleted, byRow.Deleted);
    EXPECT_EQ(byColumn.Range,
              (TCellRange{byRow.Range.StartRow, byRow.Range.StartCol, byRow.Range.EndRow, byRow.Range.EndCol}));
  }
  EXPECT_EQ(AdjustRange({3, 5, 2, 2}, saRows, 1, -9).Range, (TCellRange{2, 2, 3, 5}));
  EXPECT_EQ(AdjustRange({1, 5, 1, 2147483647}, saRows, 1, 2147483647).Range.EndRow, 2147483647);
}

TEST(IndexShift, AShrunkRangeHoldsTheLinesThatAreLeft) {
  std::mt19937 random(7);
  for (int round = 0; round < 5000; ++round) {
    const auto pick = [&](int ALimit) { return static_cast<int>(random() % static_cast<unsigned>(ALimit)) + 1; };
    const int first = pick(10), last = first + pick(6) - 1, start = pick(14);
    const int delta = pick(6) * (random() % 2 ? 1 : -1);
    std::set<int64_t> left;
    for (int row = first; row <= last; ++row)
      if (const auto moved = ShiftIndex(row, start, delta)) left.insert(*moved);
    const TAdjustedRange adjusted = AdjustRange({1, first, 1, last}, saRows, start, delta);
    ASSERT_EQ(adjusted.Deleted, left.empty());
    if (left.empty()) continue;
    ASSERT_EQ(adjusted.Range.StartRow, *left.begin());
    ASSERT_EQ(adjusted.Range.EndRow, *left.rbegin());
  }
}

TEST(IndexShift, MovedRangesKeepTheirEndsNotTheirInside) {
  const struct {
    int64_t Start, Count, Dest;
    const char* Range;
  } cases[] = {
      {2, 4, 8, "A8:A11"}, {2, 1, 9, "A4:A9"}, {5, 1, 1, "A1:A3"},
      {7, 2, 1, "A4:A7"},  {3, 1, 3, "A2:A5"}, {3, 0, 9, "A2:A5"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Utf16ToUtf8(AdjustRangeForMove({1, 5, 1, 2}, saRows, row.Start, row.Count, row.Dest).ToA1()), row.Range)
        << row.Start << " " << row.Count << " " << row.Dest;
  EXPECT_EQ(AdjustRangeForMove({2, 1, 2, 1}, saColumns, 2, 1, 4), (TCellRange{4, 1, 4, 1}));
}

}  // namespace
}  // namespace tessarine
