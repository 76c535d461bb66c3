#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/platform/Unicode.h>

#include "ListCases.h"

namespace tessarine {
namespace {

std::string HiddenRows(const TRowColSizing& ASizing) {
  std::string text;
  for (int32_t row = 1; row <= 12; ++row) text += ASizing.IsRowHidden(row) ? 'x' : '.';
  return text;
}

std::string MarkedLines(const TRowColSizing& ASizing) {
  std::string text;
  const auto mark = [&](bool AIsMarked, const char* AMark, int32_t ARow) {
    if (AIsMarked) text += (text.empty() ? "" : " ") + std::string(AMark) + std::to_string(ARow);
  };
  for (int32_t row = 1; row <= 14; ++row) {
    mark(ASizing.GetRowHeightPt(row) != 15, "h", row);
    mark(ASizing.IsRowHidden(row), "x", row);
    mark(ASizing.GetRowOutlineLevel(row) > 0, "l", row);
    mark(ASizing.IsRowCollapsed(row), "c", row);
  }
  return text;
}

/// Rows 3 and 4 are summed up in 5; all of 2 to 6 in 7.
void Nest(TRowColSizing& ASizing) {
  for (const int32_t row : {2, 5, 6}) ASizing.SetRowOutlineLevel(row, 1);
  for (const int32_t row : {3, 4}) ASizing.SetRowOutlineLevel(row, 2);
}

TEST(RowColSizing, ExamplesHold) {
  using T = TRowColSizing;
  const std::map<std::string, test::TStepWork<T>> steps = {
      // clang-format off
      {"pixels-of-width", &T::ColWidthToPixels}, {"pixels-of-height", &T::RowHeightToPixels},
      {"pixels-of-row", &T::GetRowHeightPixels}, {"set-digit-width", &T::SetMaxDigitWidth},
      {"set-height", &T::SetRowHeightPt}, {"height", &T::GetRowHeightPt},
      {"set-measured-height", &T::SetAutoRowHeightPt}, {"set-default-height", &T::SetDefaultRowHeight},
      {"has-custom-height", &T::HasCustomRowHeight}, {"set-width", &T::SetColWidthChars},
      {"width", &T::GetColWidthChars}, {"clear", &T::Clear}, {"row-at", &T::FindRowAtOffset},
      {"column-at", &T::FindColAtOffset}, {"width-before", &T::GetCumulativeColWidthBefore},
      {"height-before", &T::GetCumulativeRowHeightBefore}, {"hide-row", &T::SetRowHidden},
      {"shift-rows", &T::ShiftRows}, {"move-rows", &T::MoveRows}, {"shift-columns", &T::ShiftColumns},
      {"set-level", &T::SetRowOutlineLevel}, {"level", &T::GetRowOutlineLevel},
      {"highest-level", &T::MaxRowOutlineLevel}, {"set-column-level", &T::SetColOutlineLevel},
      {"collapse", &T::SetRowCollapsed}, {"is-collapsed", &T::IsRowCollapsed},
      {"summary-below", &T::SetOutlineSummaryBelow}, {"group-of-row", &T::FindRowGroupDetails},
      {"group-of-column", &T::FindColGroupDetails}, {"summary-of-row", &T::FindOwningSummaryRow},
      {"group-level", &T::RowGroupLevel}, {"button-count", &T::OutlineLevelButtonCount},
      {"gutter", &T::OutlineGutterPixels}, {"pitch", &T::OutlineLevelPitch}, {"button-x", &T::OutlineLevelCenterX},
      {"button-y", &T::OutlineLevelCenterY}, {"toggle", &T::ToggleRowGroup},
      {"show-level", &T::ShowRowOutlineLevel}, {"nest", [](T& A, const test::TCase&) { Nest(A); }},
      {"hidden", [](T& A, const test::TCase&) { return HiddenRows(A); }},
      {"dump", [](T& A, const test::TCase&) { return MarkedLines(A); }},
      // clang-format on
  };
  test::ExpectDialogues<T>("core/line_sizes.tsv", steps);
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

TEST(RowColSizing, GroupsEndAfterTenThousandSteps) {
  TRowColSizing sizing;
  for (int32_t row = 1; row <= 20000; ++row) sizing.SetRowOutlineLevel(row, 1);
  EXPECT_EQ(sizing.FindRowGroupDetails(20001), (TOutlineGroup{10000, 20000}));
  EXPECT_EQ(sizing.FindOwningSummaryRow(10001), 20001);
  EXPECT_EQ(sizing.FindOwningSummaryRow(10000), 0);
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
