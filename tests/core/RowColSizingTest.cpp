#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

TEST(RowColSizing, SizesBecomePixels) {
  const TRowColSizing sizing;
  EXPECT_EQ(sizing.ColWidthToPixels(8.43, 96), 64);
  EXPECT_EQ(sizing.ColWidthToPixels(8.43, 144), 96);
  EXPECT_EQ(sizing.ColWidthToPixels(-3, 96), 1);
  EXPECT_EQ(TRowColSizing::RowHeightToPixels(15, 96), 20);
  EXPECT_EQ(TRowColSizing::RowHeightToPixels(0.001, 96), 1);
  EXPECT_EQ(TRowColSizing::RowHeightToPixels(1.125, 96), 2);  // 1.5
  EXPECT_EQ(TRowColSizing::RowHeightToPixels(1.875, 96), 2);  // 2.5, a tie goes to even
  EXPECT_EQ(TRowColSizing::RowHeightToPixels(1e300, 96), 2147483647);
  EXPECT_EQ(TRowColSizing::RowHeightToPixels(std::nan(""), 96), 1);
  TRowColSizing narrow;
  narrow.SetMaxDigitWidth(0.5);
  EXPECT_EQ(narrow.ColWidthToPixels(8.43, 96), 64);
  narrow.SetMaxDigitWidth(10);
  EXPECT_EQ(narrow.ColWidthToPixels(2, 96), 25);
}

TEST(RowColSizing, CustomHeightsWinOverMeasuredOnes) {
  TRowColSizing sizing;
  sizing.SetAutoRowHeightPt(3, 30);
  EXPECT_EQ(sizing.GetRowHeightPt(3), 30);
  EXPECT_FALSE(sizing.HasCustomRowHeight(3));
  sizing.SetRowHeightPt(3, 10);
  EXPECT_EQ(sizing.GetRowHeightPt(3), 10);
  sizing.SetAutoRowHeightPt(3, 40);
  EXPECT_EQ(sizing.GetRowHeightPt(3), 10);
  sizing.SetAutoRowHeightPt(4, 30);
  sizing.SetAutoRowHeightPt(4, 15.005);
  EXPECT_EQ(sizing.GetRowHeightPt(4), 15);
  sizing.SetAutoRowHeightPt(5, 30);
  sizing.SetDefaultRowHeight(50);
  EXPECT_EQ(sizing.GetRowHeightPt(5), 50);
  sizing.Clear();
  EXPECT_EQ(sizing.GetRowHeightPt(3), 50);
}

TEST(RowColSizing, OffsetsOfADefaultSheetAreOneDivision) {
  const TRowColSizing sizing;
  const std::pair<int64_t, int32_t> cases[] = {
      {-5, 1}, {0, 1}, {19, 1}, {20, 2}, {20971500, 1048576}, {int64_t{1} << 60, 1048576}};
  for (const auto& [offset, row] : cases) EXPECT_EQ(sizing.FindRowAtOffset(offset, 96), row) << offset;
  EXPECT_EQ(sizing.FindColAtOffset(64, 96), 2);
  EXPECT_EQ(sizing.FindColAtOffset(int64_t{1} << 40, 96), 16384);
  EXPECT_EQ(sizing.GetCumulativeColWidthBefore(1, 96), 0);
  EXPECT_EQ(sizing.GetCumulativeColWidthBefore(3, 96), 128);
  EXPECT_EQ(sizing.GetCumulativeRowHeightBefore(-7, 96), 0);
}

TEST(RowColSizing, HiddenRowsHaveNoHeight) {
  TRowColSizing sizing;
  for (const int32_t row : {2, 3, 4}) sizing.SetRowHidden(row, true);
  sizing.SetRowHeightPt(3, 90);
  EXPECT_EQ(sizing.GetRowHeightPixels(3, 96), 0);
  EXPECT_EQ(sizing.GetCumulativeRowHeightBefore(5, 96), 20);
  EXPECT_EQ(sizing.FindRowAtOffset(20, 96), 5);  // the last of equal starts
  sizing.SetRowHidden(3, false);
  EXPECT_EQ(sizing.FindRowAtOffset(20, 96), 3);
  EXPECT_EQ(sizing.GetCumulativeRowHeightBefore(5, 96), 140);
}

/// Compares every indexed answer with the walk over all entries.
void ExpectLikePlain(const TRowColSizing& ASizing, std::mt19937& ARandom) {
  const int32_t dpi = ARandom() % 4 ? 96 : 120;
  const auto row = static_cast<int32_t>(ARandom() % (ARandom() % 2 ? 400 : kMaxRow + 100));
  const auto col = static_cast<int32_t>(ARandom() % (ARandom() % 2 ? 400 : kMaxCol + 100));
  ASSERT_EQ(ASizing.GetCumulativeRowHeightBefore(row, dpi), ASizing.GetCumulativeRowHeightBeforePlain(row, dpi)) << row;
  ASSERT_EQ(ASizing.GetCumulativeColWidthBefore(col, dpi), ASizing.GetCumulativeColWidthBeforePlain(col, dpi)) << col;
  const int64_t offsets[] = {static_cast<int64_t>(ARandom() % 8000), static_cast<int64_t>(ARandom() % 25'000'000),
                             ASizing.GetCumulativeRowHeightBefore(row, dpi)};
  for (const int64_t offset : offsets) {
    ASSERT_EQ(ASizing.FindRowAtOffset(offset, dpi), ASizing.FindRowAtOffsetPlain(offset, dpi)) << offset;
    ASSERT_EQ(ASizing.FindColAtOffset(offset, dpi), ASizing.FindColAtOffsetPlain(offset, dpi)) << offset;
  }
}

TEST(RowColSizing, TheIndexAnswersAsAWalkOverAllEntries) {
  std::mt19937 random(17);
  for (int round = 0; round < 25; ++round) {
    TRowColSizing sizing;
    if (random() % 3 == 0) sizing.SetDefaultRowHeight(static_cast<double>(random() % 3) * 0.4);
    for (int step = 0; step < 150; ++step) {
      const auto line = static_cast<int32_t>(random() % (random() % 6 ? 300 : 1'048'600));
      const double size = static_cast<double>(random() % 800) / 10 - 5;
      switch (random() % 9) {
        case 0: sizing.SetRowHeightPt(line, size); break;
        case 1: sizing.SetAutoRowHeightPt(line, size); break;
        case 2: sizing.SetRowHidden(line, random() % 3 != 0); break;
        case 3: sizing.SetColWidthChars(line % 16400, size); break;
        case 4: sizing.SetColHidden(line % 16400, random() % 3 != 0); break;
        case 5: sizing.ClearAutoRowHeight(line); break;
        case 6: sizing.ShiftRows(line, static_cast<int64_t>(random() % 7) - 3); break;
        case 7: sizing.MoveColumns(line % 300 + 1, static_cast<int64_t>(random() % 9), line % 200 + 1); break;
        default: sizing.SetMaxDigitWidth(static_cast<double>(random() % 12)); break;
      }
      if (random() % 10 == 0) sizing = TRowColSizing(sizing);
      ASSERT_NO_FATAL_FAILURE(ExpectLikePlain(sizing, random));
    }
  }
}

TEST(RowColSizing, LinesComeGoAndMove) {
  TRowColSizing sizing;
  sizing.SetRowHeightPt(5, 50);
  sizing.SetAutoRowHeightPt(6, 60);
  sizing.SetRowHidden(7, true);
  sizing.SetRowOutlineLevel(8, 3);
  sizing.SetRowCollapsed(9, true);
  sizing.SetColWidthChars(5, 50);
  const auto dump = [&] {
    std::string text;
    for (int32_t row = 1; row <= 14; ++row) {
      if (sizing.GetRowHeightPt(row) != 15) text += " h" + std::to_string(row);
      if (sizing.IsRowHidden(row)) text += " x" + std::to_string(row);
      if (sizing.GetRowOutlineLevel(row) > 0) text += " l" + std::to_string(row);
      if (sizing.IsRowCollapsed(row)) text += " c" + std::to_string(row);
    }
    return text;
  };
  sizing.ShiftRows(6, 2);
  EXPECT_EQ(dump(), " h5 h8 x9 l10 c11");
  sizing.ShiftRows(9, -1);
  EXPECT_EQ(dump(), " h5 h8 l9 c10");
  sizing.MoveRows(8, 2, 1);
  EXPECT_EQ(dump(), " h1 l2 h7 c10");
  EXPECT_EQ(sizing.GetColWidthChars(5), 50);
  sizing.ShiftColumns(5, -1);
  EXPECT_EQ(sizing.GetColWidthChars(5), 8.43);
  sizing.SetRowHidden(kMaxRow, true);
  sizing.ShiftRows(1, 2147483647);
  EXPECT_EQ(dump(), "");
}

TEST(RowColSizing, GroupsAreRecognisedByTheLevelsBesideASummary) {
  TRowColSizing sizing;
  for (const int32_t row : {2, 3, 4}) sizing.SetRowOutlineLevel(row, 1);
  EXPECT_EQ(sizing.FindRowGroupDetails(5), (TOutlineGroup{2, 4}));
  EXPECT_EQ(sizing.FindRowGroupDetails(4), std::nullopt);
  EXPECT_EQ(sizing.FindRowGroupDetails(0), std::nullopt);
  EXPECT_EQ(sizing.FindRowGroupDetails(kMaxRow + 1), std::nullopt);
  EXPECT_EQ(sizing.FindOwningSummaryRow(3), 5);
  EXPECT_EQ(sizing.FindOwningSummaryRow(6), 0);
  EXPECT_EQ(sizing.RowGroupLevel(5), 1);
  EXPECT_EQ(sizing.RowGroupLevel(4), 0);
  sizing.SetOutlineSummaryBelow(false);
  EXPECT_EQ(sizing.FindRowGroupDetails(1), (TOutlineGroup{2, 4}));
  EXPECT_EQ(sizing.FindRowGroupDetails(5), std::nullopt);
  EXPECT_EQ(sizing.FindOwningSummaryRow(3), 1);
  EXPECT_EQ(sizing.FindOwningSummaryRow(2000000), 0);
  sizing.SetColOutlineLevel(kMaxCol, 2);
  EXPECT_EQ(sizing.FindColGroupDetails(kMaxCol), std::nullopt);
  sizing.SetColOutlineLevel(1, 2);
  EXPECT_EQ(sizing.FindColGroupDetails(2), (TOutlineGroup{1, 1}));
}

TEST(RowColSizing, GroupsEndAfterTenThousandSteps) {
  TRowColSizing sizing;
  for (int32_t row = 1; row <= 20000; ++row) sizing.SetRowOutlineLevel(row, 1);
  EXPECT_EQ(sizing.FindRowGroupDetails(20001), (TOutlineGroup{10000, 20000}));
  EXPECT_EQ(sizing.FindOwningSummaryRow(10001), 20001);
  EXPECT_EQ(sizing.FindOwningSummaryRow(10000), 0);
}

TEST(RowColSizing, LevelsAreClampedAndZeroRemoves) {
  TRowColSizing sizing;
  sizing.SetRowOutlineLevel(3, 9);
  EXPECT_EQ(sizing.GetRowOutlineLevel(3), 7);
  EXPECT_EQ(sizing.OutlineLevelButtonCount(), 8);
  sizing.SetRowOutlineLevel(3, 0);
  EXPECT_EQ(sizing.OutlineLevelButtonCount(), 0);
  sizing.SetRowOutlineLevel(3, -4);
  EXPECT_EQ(sizing.MaxRowOutlineLevel(), 0);
}

TEST(RowColSizing, TheGutterHasAStripPerLevel) {
  TRowColSizing sizing;
  EXPECT_EQ(sizing.OutlineGutterPixels(96), 0);
  sizing.SetRowOutlineLevel(3, 2);
  EXPECT_EQ(TRowColSizing::OutlineLevelPitch(96), 18);
  EXPECT_EQ(TRowColSizing::OutlineLevelPitch(1), 1);
  EXPECT_EQ(sizing.OutlineGutterPixels(96), 54);
  EXPECT_EQ(sizing.OutlineLevelCenterX(1, 100, 96, true), 109);
  EXPECT_EQ(sizing.OutlineLevelCenterX(1, 100, 96, false), 127);
  EXPECT_EQ(sizing.OutlineLevelCenterX(9, 0, 96, true), 27);
  EXPECT_EQ(sizing.OutlineLevelCenterY(9, 0, 96, true), 9);
}

std::string HiddenRows(const TRowColSizing& ASizing) {
  std::string text;
  for (int32_t row = 1; row <= 12; ++row) text += ASizing.IsRowHidden(row) ? 'x' : '.';
  return text;
}

TRowColSizing NestedOutline() {
  TRowColSizing sizing;
  for (const int32_t row : {2, 5, 6}) sizing.SetRowOutlineLevel(row, 1);
  for (const int32_t row : {3, 4}) sizing.SetRowOutlineLevel(row, 2);  // summed up in 5; all of 2 to 6 in 7
  return sizing;
}

TEST(RowColSizing, InnerGroupsStayShutWhenAnOuterOneOpens) {
  TRowColSizing sizing = NestedOutline();
  EXPECT_FALSE(sizing.ToggleRowGroup(9));
  EXPECT_TRUE(sizing.ToggleRowGroup(5));
  EXPECT_EQ(HiddenRows(sizing), "..xx........");
  EXPECT_TRUE(sizing.ToggleRowGroup(7));
  EXPECT_EQ(HiddenRows(sizing), ".xxxxx......");
  EXPECT_TRUE(sizing.IsRowCollapsed(7));
  EXPECT_TRUE(sizing.ToggleRowGroup(7));
  EXPECT_EQ(HiddenRows(sizing), "..xx........");
  EXPECT_FALSE(sizing.IsRowCollapsed(7));
  EXPECT_TRUE(sizing.ToggleRowGroup(5));
  EXPECT_EQ(HiddenRows(sizing), "............");
  sizing.SetRowHidden(2, true);  // hidden by hand counts as collapsed
  EXPECT_TRUE(sizing.ToggleRowGroup(7));
  EXPECT_EQ(HiddenRows(sizing), "............");
}

TEST(RowColSizing, LevelButtonsShowWhatLiesAbove) {
  const struct {
    int32_t Level;
    const char* Hidden;
    bool Collapsed5, Collapsed7;
  } cases[] = {
      {1, ".xxxxx......", true, true},   {-3, ".xxxxx......", true, true},   {2, "..xx........", true, false},
      {3, "............", false, false}, {99, "............", false, false},
  };
  for (const auto& row : cases) {
    TRowColSizing sizing = NestedOutline();
    sizing.SetRowHidden(4, true);
    sizing.SetRowCollapsed(5, true);
    EXPECT_TRUE(sizing.ShowRowOutlineLevel(row.Level));
    EXPECT_EQ(HiddenRows(sizing), row.Hidden) << row.Level;
    EXPECT_EQ(sizing.IsRowCollapsed(5), row.Collapsed5) << row.Level;
    EXPECT_EQ(sizing.IsRowCollapsed(7), row.Collapsed7) << row.Level;
  }
  TRowColSizing none;
  EXPECT_FALSE(none.ShowRowOutlineLevel(1));
  none.SetRowOutlineLevel(-5, 1);
  EXPECT_FALSE(none.ShowRowOutlineLevel(1));
}

TEST(RowColSizing, EveryRowMayHaveItsOwnSize) {
  TRowColSizing sizing;
  for (int32_t row = 1; row <= kMaxRow; ++row) {
    sizing.SetRowHeightPt(row, 15 + row % 3 * 3);
    sizing.SetRowHidden(row, row % 5 == 0);
  }
  for (const int64_t offset : {int64_t{1}, int64_t{12'345'678}, int64_t{20'000'000}})
    EXPECT_EQ(sizing.FindRowAtOffset(offset, 96), sizing.FindRowAtOffsetPlain(offset, 96));
}

class TFakeMeasurer : public IDigitMeasurer {
 public:
  std::optional<double> WidestDigitPixels(std::u16string_view AFontName, int32_t ASizePt, int32_t ADpi) override {
    Asked = Utf16ToUtf8(AFontName) + " " + std::to_string(ASizePt) + " " + std::to_string(ADpi);
    return Answer;
  }
  std::string Asked;
  std::optional<double> Answer = 9.5;
};

TEST(RowColSizing, DigitsAreMeasuredByTheHost) {
  EXPECT_EQ(TRowColSizing::MeasureMaxDigitWidth(u"Arial", 10, 96), 7);
  const auto measurer = std::make_shared<TFakeMeasurer>();
  TRowColSizing::SetDigitMeasurer(measurer);
  EXPECT_EQ(TRowColSizing::MeasureMaxDigitWidth(u" Arial ", 10.6, 120), 9.5);
  EXPECT_EQ(measurer->Asked, "Arial 11 120");
  EXPECT_EQ(TRowColSizing::MeasureMaxDigitWidth(u" ", 0, 0), 9.5);
  EXPECT_EQ(measurer->Asked, "Calibri 11 96");
  measurer->Answer = std::nullopt;
  EXPECT_EQ(TRowColSizing::MeasureMaxDigitWidth(u"Arial", 0.1, 96), 7);
  EXPECT_EQ(measurer->Asked, "Arial 1 96");
  TRowColSizing::SetDigitMeasurer(nullptr);
}

}  // namespace
}  // namespace tessarine
