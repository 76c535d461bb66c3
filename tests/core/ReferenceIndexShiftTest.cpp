#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using test::ExpectCases;
using test::TCase;

std::string ShiftedRange(const TCase& ACase) {
  const TAdjustedRange byRow = AdjustRange({3, 5, 2, 2}, saRows, ACase.Integer(1), ACase.Integer(2));
  const TAdjustedRange byColumn = AdjustRange({5, 3, 2, 2}, saColumns, ACase.Integer(1), ACase.Integer(2));
  EXPECT_EQ(byColumn.Deleted, byRow.Deleted) << ACase.Place();
  EXPECT_EQ(byColumn.Range,
            (TCellRange{byRow.Range.StartRow, byRow.Range.StartCol, byRow.Range.EndRow, byRow.Range.EndCol}));
  return byRow.Deleted ? "gone" : Utf16ToUtf8(byRow.Range.ToA1());
}

TEST(IndexShift, ExamplesHold) {
  const auto shift = [](const TCase& ACase) {
    return ShiftIndex(ACase.Integer(1), ACase.Integer(2), ACase.Integer(3));
  };
  const auto destination = [](const TCase& ACase) {
    return NormalizeMoveDest(ACase.Integer(1), ACase.Integer(2), ACase.Integer(3));
  };
  const auto movedRange = [](const TCase& ACase) {
    return AdjustRangeForMove({1, 5, 1, 2}, saRows, ACase.Integer(1), ACase.Integer(2), ACase.Integer(3)).ToA1();
  };
  ExpectCases(
      "core/line_shifts.tsv",
      {{"shift", shift}, {"destination", destination}, {"shift-range", ShiftedRange}, {"move-range", movedRange}});
  EXPECT_EQ(AdjustRange({3, 5, 2, 2}, saRows, 1, -9).Range, (TCellRange{2, 2, 3, 5}));
  EXPECT_EQ(AdjustRange({1, 5, 1, 2147483647}, saRows, 1, 2147483647).Range.EndRow, 2147483647);
  EXPECT_EQ(AdjustRangeForMove({2, 1, 2, 1}, saColumns, 2, 1, 4), (TCellRange{4, 1, 4, 1}));
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

}  // namespace
}  // namespace tessarine
