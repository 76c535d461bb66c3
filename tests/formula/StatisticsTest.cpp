#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

/// A place is found by a heap or in a copy, blanks of a view are counted without being met: both against the plain way.
TEST(Statistics, LongRangesGiveWhatSortedCopiesGive) {
  std::mt19937 random(11);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::vector<double> sorted;
  for (int32_t row = 1; row <= 900; ++row) {
    if (random() % 3 == 0) continue;
    sorted.push_back(random() % 500 / 7.0);
    sheet.SetValue({2, row}, TCellValue::FromNumber(sorted.back()));
  }
  std::sort(sorted.begin(), sorted.end());
  const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 1, 1, 1000, 3);
  const auto call = [&](std::string_view AName, double ANumber) {
    return testing::ResultOf(AName, {view, testing::NumberArg(ANumber)}).First().Number;
  };
  for (size_t place = 1; place <= sorted.size(); place += 9) {
    EXPECT_EQ(call("SMALL", static_cast<double>(place)), sorted[place - 1]) << place;
    EXPECT_EQ(call("LARGE", static_cast<double>(place)), sorted[sorted.size() - place]) << place;
  }
  TFormulaArg owned = view;
  owned.Materialize();
  for (const char* name : {"VARA", "STDEVPA", "AVERAGEA", "MINA", "VAR", "MEDIAN", "MODE"})
    EXPECT_EQ(testing::Shown(testing::ResultOf(name, {view})), testing::Shown(testing::ResultOf(name, {owned})));
}

}  // namespace

}  // namespace tessarine
