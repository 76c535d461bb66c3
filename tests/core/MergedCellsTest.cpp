#include <gtest/gtest.h>

#include <random>
#include <string>

#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

std::string DumpMerges(const TMergedCellList& AMerges) {
  std::u16string text;
  for (const TMergedRange& merge : AMerges) text += (text.empty() ? u"" : u" ") + merge.AsRange().ToA1();
  return Utf16ToUtf8(text);
}

TMergedCellList MergesOf(std::initializer_list<const char16_t*> ARanges) {
  TMergedCellList merges;
  for (const char16_t* range : ARanges) merges.Add(TCellRange::FromA1(range));
  return merges;
}

TEST(MergedCells, TheFirstMergeThatHoldsACellCounts) {
  TMergedCellList merges = MergesOf({u"B2:C3", u"C3:E5", u"A1:Z99"});
  EXPECT_EQ(merges.FindContaining(3, 3), 0);
  EXPECT_EQ(merges.FindContaining(4, 4), 1);
  EXPECT_EQ(merges.FindContaining(6, 6), 2);
  EXPECT_EQ(merges.FindContaining(27, 1), -1);
  EXPECT_EQ(merges.FindAnchor(4, 4).Anchor, (TCellAddress{3, 3}));
  EXPECT_FALSE(merges.FindAnchor(27, 7).InMerge);
  EXPECT_EQ(merges.FindAnchor(27, 7).Anchor, (TCellAddress{27, 7}));
  EXPECT_TRUE(merges.IsMergeAnchor(3, 3));
  EXPECT_FALSE(merges.IsMergeAnchor(2, 3));
  merges.RemoveAt(0);
  EXPECT_EQ(merges.FindContaining(3, 3), 0);
  EXPECT_EQ(merges.FindContaining(2, 2), 1);
  merges.RemoveAt(7);
  EXPECT_EQ(merges.Count(), 2u);
  merges.Clear();
  EXPECT_FALSE(merges.IsInsideMerge(3, 3));
}

TEST(MergedCells, RangesExpandUntilNoMergeIsCut) {
  const TMergedCellList merges = MergesOf({u"C3:D4", u"D5:F5", u"B2:C2", u"H1:H9"});
  const struct {
    const char16_t* Range;
    const char* Expanded;
  } cases[] = {
      {u"A1", "A1"},    {u"C2:C3", "B2:D4"}, {u"B2:D5", "B2:F5"}, {u"D4:D5", "C3:F5"},
      {u"E5", "D5:F5"}, {u"G1:H1", "G1:H9"}, {u"D2:C5", "B2:F5"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Utf16ToUtf8(merges.ExpandRange(TCellRange::FromA1(row.Range)).ToA1()), row.Expanded)
        << Utf16ToUtf8(row.Range);
}

TEST(MergedCells, LinesComeAndGo) {
  const auto after = [](auto AEdit) {
    TMergedCellList merges = MergesOf({u"B2:C2", u"A5:A6", u"D1:E9"});
    EXPECT_EQ(merges.FindContaining(1, 5), 1);
    AEdit(merges);
    EXPECT_EQ(merges.FindContaining(16000, 1000000), -1);
    return DumpMerges(merges);
  };
  EXPECT_EQ(after([](auto& AMerges) { AMerges.ShiftRows(5, 2); }), "B2:C2 A7:A8 D1:E11");
  EXPECT_EQ(after([](auto& AMerges) { AMerges.ShiftRows(6, -1); }), "B2:C2 D1:E8");
  EXPECT_EQ(after([](auto& AMerges) { AMerges.ShiftRows(1, -9); }), "");
  EXPECT_EQ(after([](auto& AMerges) { AMerges.ShiftColumns(3, -1); }), "A5:A6 C1:D9");
  EXPECT_EQ(after([](auto& AMerges) { AMerges.ShiftColumns(3, 0); }), "B2:C2 A5:A6 D1:E9");
  EXPECT_EQ(after([](auto& AMerges) { AMerges.MoveRows(5, 1, 1); }), "B3:C3 A1:A6 D2:E9");
  EXPECT_EQ(after([](auto& AMerges) { AMerges.MoveColumns(1, 1, 3); }), "A2:B2 C5:C6 D1:E9");
}

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
