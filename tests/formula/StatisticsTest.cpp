#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

TEST(Statistics, OnlyNumbersCountUnlessTheNameEndsInA) {
  ExpectCalls({
      {"STDEV", "1 2 '9' TRUE #N/A _ [3 4;'x' FALSE]", "1.29099444873581"},
      {"STDEVA", "1 2 '9' TRUE #N/A _ [3 4;'x' FALSE]", "2.90593262902712"},
      {"VAR", "[2 4 4 4 5 5 7 9]", "4.57142857142857"},
      {"VAR.S", "[2 4 4 4 5 5 7 9]", "4.57142857142857"},
      {"VARP", "[2 4 4 4 5 5 7 9]", "4"},
      {"STDEV.P", "[2 4 4 4 5 5 7 9]", "2"},
      {"VARA", "[_ _ 3]", "3"},
      {"VARPA", "TRUE FALSE '5' 'x'", "4.25"},
      {"STDEVPA", "[_ 2] fn", "0.942809041582063"},
      {"AVERAGEA", "[1 TRUE;_ 'x'] #DIV/0! 8", "2"},
      {"MAXA", "-5 _ -3", "0"},
      {"MAXA", "-5 #REF! -3", "-3"},
      {"MINA", "5 'x'", "0"},
      {"MINA", "5 '-2' TRUE", "-2"},
      {"STDEV", "1", "#DIV/0!"},
      {"STDEV.P", "1", "0"},
      {"VARP", "'x'", "#DIV/0!"},
      {"VARPA", "'x'", "0"},
      {"AVERAGEA", "#N/A", "#DIV/0!"},
      {"MAXA", "#N/A", "0"},
      {"VAR", "1e300 -1e300", "#NUM!"},
      {"VAR", "1e308 1e308 1e308", "#NUM!"},
      {"MEDIAN", "1e308 1.5e308", "1.25E+308"},
  });
  for (const char* name : {"STDEV", "VARPA", "MEDIAN", "MODE", "KURT", "GEOMEAN", "AVERAGEA", "MAXA", "DEVSQ"}) {
    EXPECT_EQ(Called(name, ""), "#VALUE!") << name;
  }
}

TEST(Statistics, Shapes) {
  ExpectCalls({
      {"AVEDEV", "[4 5 6 7 5 4 3]", "1.02040816326531"},
      {"AVEDEV", "'x'", "#NUM!"},
      {"DEVSQ", "[4 5 8 7 11 4 3]", "48"},
      {"DEVSQ", "_", "#NUM!"},
      {"KURT", "3 4 5 2 3 4 5 6 4 7", "-0.151799637208416"},
      {"KURT", "1 2 3", "#DIV/0!"},
      {"KURT", "5 5 5 5", "#DIV/0!"},
      {"SKEW", "3 4 5 2 3 4 5 6 4 7", "0.359543071406797"},
      {"SKEW.P", "3 4 5 2 3 4 5 6 4 7", "0.303193339354144"},
      {"SKEW", "1 2", "#DIV/0!"},
      {"SKEW.P", "2 2 2", "#DIV/0!"},
      {"GEOMEAN", "[4 5 8 7 11 4 3]", "5.47698696965696"},
      {"GEOMEAN", "1 0", "#NUM!"},
      {"HARMEAN", "[4 5 8 7 11 4 3]", "5.02837596206173"},
      {"HARMEAN", "1 -1", "#NUM!"},
      {"HARMEAN", "'x'", "#NUM!"},
      {"GEOMEAN", "1e200 1e-200 1", "1"},
      {"FISHER", "0.75", "0.972955074527657"},
      {"FISHER", "-1", "#NUM!"},
      {"FISHERINV", "1e300", "1"},
      {"FISHERINV", "#N/A", "#VALUE!"},
      {"STANDARDIZE", "42 40 1.5", "1.33333333333333"},
      {"STANDARDIZE", "1 1 0", "#NUM!"},
      {"STANDARDIZE", "1 2", "#VALUE!"},
  });
}

TEST(Statistics, PlacesAndShares) {
  ExpectCalls({
      {"LARGE", "[3 5 'x';5 _ 4] 2.9", "5"},
      {"LARGE", "[3 5;5 4] 3", "4"},
      {"SMALL", "[3 5;5 4] 4", "5"},
      {"SMALL", "[3 5;5 4] 5", "#NUM!"},
      {"SMALL", "[3 5;5 4] 0.9", "#NUM!"},
      {"SMALL", "'3' 1", "#NUM!"},
      {"LARGE", "[3 5;5 4] 'x'", "#VALUE!"},
      {"LARGE", "[3] 1e300", "#NUM!"},
      {"MEDIAN", "1 2 3 4 5 6", "3.5"},
      {"MEDIAN", "9 [1 8]", "8"},
      {"MEDIAN", "TRUE 'x'", "#NUM!"},
      {"MODE", "5.6 4 4 3 2 4", "4"},
      {"MODE.SNGL", "2 1 1 2", "2"},
      {"MODE.MULT", "7 1 3 3 1", "1"},
      {"MODE", "1 2 3", "#N/A"},
      {"MODE", "'1' '1'", "#N/A"},
      {"PERCENTILE", "[1 3 2 4] 0.3", "1.9"},
      {"PERCENTILE.INC", "[7] 0.3", "7"},
      {"PERCENTILE.INC", "[1 3 2 4] 1", "4"},
      {"PERCENTILE.INC", "[1 2] 1.01", "#NUM!"},
      {"PERCENTILE.INC", "['x'] 0.5", "#NUM!"},
      {"PERCENTILE.INC", "[1 2] 'x'", "#VALUE!"},
      {"PERCENTILE.EXC", "[1 2 3] 0", "#NUM!"},
      {"PERCENTILE.EXC", "[6 7 8 9] 0.25", "6.25"},
      {"PERCENTILE.EXC", "[1 2 3 4] 0.8", "4"},
      {"PERCENTILE.EXC", "[1 2 3 4] 0.81", "#NUM!"},
      {"QUARTILE", "[1 2 4 7 8 9 10 12] 1.9", "3.5"},
      {"QUARTILE.INC", "[1 2] 5", "#NUM!"},
      {"QUARTILE.INC", "[1 2] 4", "2"},
      {"QUARTILE.EXC", "[6 7 15 36 39 40 41 42 43 47 49] 3", "43"},
      {"QUARTILE.EXC", "[6 7 15] 0.5", "#NUM!"},
      {"QUARTILE.INC", "[6 7] -0.5", "6"},
      {"PERCENTRANK", "[13 12 11 8 4 3 2 1 1 1] 2", "0.333"},
      {"PERCENTRANK.INC", "[13 12 11 8 4 3 2 1 1 1] 5 5", "0.58333"},
      {"PERCENTRANK.EXC", "[1 2 3 6 6 6 7 8 9] 5.43 5", "0.381"},
      {"PERCENTRANK.EXC", "[1 2 3 6 6 6 7 8 9] 7", "0.7"},
      {"PERCENTRANK", "[1 2] 3", "#N/A"},
      {"PERCENTRANK", "[1 2] 1 0.5", "#NUM!"},
      {"PERCENTRANK", "['x'] 3", "#NUM!"},
      {"PERCENTRANK", "[5] 5", "1"},
      {"PERCENTRANK", "[0 1 2 3] 1 1e300", "0.333333333333333"},
      {"RANK.AVG", "5 [5 5 5 9 1]", "3"},
      {"RANK.AVG", "5 [5 5 9] 1", "1.5"},
      {"RANK.AVG", "5 ['5' 6]", "#N/A"},
      {"RANK.AVG", "5 [5] 'x'", "#VALUE!"},
      {"TRIMMEAN", "[4 5 6 7 2 3 4 5 1 2 3] 0.2", "3.77777777777778"},
      {"TRIMMEAN", "[1 2 90] 0.99", "2"},
      {"TRIMMEAN", "[1 2 3] 1", "#NUM!"},
      {"TRIMMEAN", "[1 2 3] -0.1", "#NUM!"},
      {"TRIMMEAN", "['x'] 0", "#NUM!"},
      {"FREQUENCY", "[79 85 78 85 50 81 95 88 97] [70 79 89]", "1"},
      {"FREQUENCY", "[1 2 3 4 5] [4;2;3]", "1"},
      {"FREQUENCY", "[1 2 'x'] ['x']", "2"},
      {"FREQUENCY", "['x'] [3]", "0"},
  });
}

TEST(Statistics, ValuesWithCriteria) {
  ExpectCalls({
      {"AVERAGEIFS", "[1 2 4 'x' 9] [1 1 1 1 2] 1", "2.33333333333333"},
      {"AVERAGEIFS", "[1 2] [1 1] '>1'", "#DIV/0!"},
      {"MAXIFS", "[-1 -2 -4 3] ['a' 'A' 'b' 'c'] 'a' [1 2 3 4] '>0'", "-1"},
      {"MINIFS", "[-1 -2 -4 3] ['a' 'A' 'b' 'c'] 'a' [1 2 3 4] '>0'", "-2"},
      {"MAXIFS", "[-1 -2] ['a' 'b'] 'c'", "0"},
      {"MINIFS", "[1 2] [1 2 3] 1", "#VALUE!"},
      {"MAXIFS", "[1 2] [1 2] 1 [1 2]", "#VALUE!"},
      {"AVERAGEIFS", "[1 2] [1 2]", "#VALUE!"},
  });
}

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
  const auto call = [&](std::u16string_view AName, double ANumber) {
    TCellValue value;
    TryEvaluateExtra(AName, std::vector{view, TFormulaArg::FromScalar(TCellValue::FromNumber(ANumber))}, {}, value);
    return value.Number;
  };
  for (size_t place = 1; place <= sorted.size(); place += 9) {
    EXPECT_EQ(call(u"SMALL", static_cast<double>(place)), sorted[place - 1]) << place;
    EXPECT_EQ(call(u"LARGE", static_cast<double>(place)), sorted[sorted.size() - place]) << place;
  }
  TFormulaArg owned = view;
  owned.Materialize();
  for (const char16_t* name : {u"VARA", u"STDEVPA", u"AVERAGEA", u"MINA", u"VAR", u"MEDIAN", u"MODE"}) {
    TCellValue ofView;
    TCellValue ofCopy;
    TryEvaluateExtra(name, std::span(&view, 1), {}, ofView);
    TryEvaluateExtra(name, std::span(&owned, 1), {}, ofCopy);
    EXPECT_EQ(testing::Shown(ofView), testing::Shown(ofCopy));
  }
}

}  // namespace

}  // namespace tessarine
