#include <gtest/gtest.h>

#include <random>

#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

TEST(MergedCells, TheIndexAnswersAsAWalkOverAllMerges) {
  std::mt19937 random(3);
  const auto pick = [&](uint64_t ALimit) { return static_cast<int32_t>(random() % ALimit) + 1; };
  for (int round = 0; round < 30; ++round) {
    TMergedCellList merges;
    for (int step = 0; step < 300; ++step) {
      const int32_t spread = random() % 4 ? 30 : 5000;
      const int32_t col = pick(40), row = pick(60);
      const auto action = random() % 20;
      if (action == 0) merges.RemoveAt(random() % (merges.Count() + 1));
      if (action == 1) merges.ShiftRows(pick(60), pick(3) * (random() % 2 ? 1 : -1));
      if (action == 2) merges.MoveColumns(pick(40), pick(5), pick(40));
      if (action > 2)
        merges.Add(
            {col, row, col + pick(static_cast<uint64_t>(spread)) - 1, row + pick(static_cast<uint64_t>(spread)) - 1});
      if (random() % 8 == 0) merges = TMergedCellList(merges);
      for (int probe = 0; probe < 4; ++probe) {
        const int32_t probeCol = pick(80), probeRow = pick(100);
        ASSERT_EQ(merges.FindContaining(probeCol, probeRow), merges.FindContainingPlain(probeCol, probeRow));
      }
    }
  }
}

}  // namespace
}  // namespace tessarine
