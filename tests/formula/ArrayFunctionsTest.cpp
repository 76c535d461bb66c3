#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/library/detail/ArrayBodies.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ArgsOf;
using testing::NumberArg;
using testing::ResultOf;
using testing::Shown;

TEST(ArrayFunctions, RandomNumbersStayInTheirRange) {
  const TFormulaArg units = ResultOf("RANDARRAY", ArgsOf("20 10"));
  ASSERT_EQ(units.RowCount, 20);
  ASSERT_EQ(units.ColCount, 10);
  for (const TCellValue& cell : units.Cells()) EXPECT_TRUE(cell.Number >= 0 && cell.Number < 1);
  bool seen[4] = {};
  const TFormulaArg integers = ResultOf("RANDARRAY", ArgsOf("200 1 -1.9 2.9 TRUE"));
  for (const TCellValue& cell : integers.Cells()) {
    ASSERT_TRUE(cell.Number == std::trunc(cell.Number) && cell.Number >= -1 && cell.Number <= 2) << cell.Number;
    seen[static_cast<int>(cell.Number) + 1] = true;
  }
  EXPECT_TRUE(seen[0] && seen[1] && seen[2] && seen[3]);
  EXPECT_EQ(ResultOf("RANDARRAY", {}).CellCount(), 1);
  const TFormulaArg wide = ResultOf("RANDARRAY", ArgsOf("9 1 -1e300 1e300 1"));
  for (const TCellValue& cell : wide.Cells()) EXPECT_LE(std::fabs(cell.Number), 9.3e18);
}

TEST(ArrayFunctions, SizesAreRefusedBeforeTheyAreMade) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({1, 1}, TCellValue::FromNumber(1));
  const TFormulaArg column = TFormulaArg::FromView(sheet, 0, 1, 1, 1'048'576, 1);
  const TFormulaArg row = TFormulaArg::FromView(sheet, 0, 1, 1, 1, 16'384);
  const TFormulaArg all = TFormulaArg::FromView(sheet, 0, 1, 1, 1'048'576, 16'384);
  const auto shape = [](const TFormulaArg& AArg) {
    return AArg.IsRange ? std::to_string(AArg.RowCount) + "x" + std::to_string(AArg.ColCount) : Shown(AArg);
  };
  EXPECT_EQ(shape(ResultOf("TRANSPOSE", {all})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("HSTACK", {column, row})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("VSTACK", {all, all, all})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("TOCOL", {all})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("WRAPROWS", {all, NumberArg(5)})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("SORT", {all})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("UNIQUE", {all})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("TAKE", {all, NumberArg(5)})), "5x16384");
  EXPECT_EQ(shape(ResultOf("TAKE", {all, NumberArg(5000)})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("DROP", {all, NumberArg(1)})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("CHOOSEROWS", {row, NumberArg(1), ResultOf("EXPAND", ArgsOf("1 4096 1 1"))})), "#NUM!");
  EXPECT_EQ(shape(ResultOf("PIVOTBY", {ResultOf("SEQUENCE", ArgsOf("9000")), ResultOf("SEQUENCE", ArgsOf("9000")),
                                       column, NumberArg(0)})),
            "#NUM!");
  // What comes from the sheet may be more than what may be generated.
  EXPECT_EQ(shape(ResultOf("TOCOL", {column})), "1048576x1");
  EXPECT_EQ(shape(ResultOf("WRAPROWS", {column, NumberArg(1000)})), "1049x1000");
  EXPECT_EQ(shape(ResultOf("EXPAND", {column, NumberArg(1'048'576), NumberArg(1)})), "1048576x1");
}

/// A view and a copy of its cells must give the same.
void ExpectSameOfCopy(std::string_view AName, const TFormulaArg& AView, const std::vector<TFormulaArg>& ARest) {
  std::vector<TFormulaArg> args = {AView};
  args.insert(args.end(), ARest.begin(), ARest.end());
  const TFormulaArg result = ResultOf(AName, args);
  EXPECT_FALSE(result.IsView() || result.HasOrigin) << AName;
  args[0].Materialize();
  EXPECT_EQ(Shown(result), Shown(ResultOf(AName, args))) << AName;
}

TEST(ArrayFunctions, ViewsGiveWhatTheirCellsGive) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const char* const shown[] = {"1", "'b'", "_", "TRUE", "'B'", "2", "#N/A", "0.5"};
  for (int32_t row = 1; row <= 6; ++row) {
    for (int32_t col = 1; col <= 3; ++col) {
      sheet.SetValue({col + 1, row + 2}, ArgsOf(shown[(row * 5 + col * 3) % 8])[0].First());
    }
  }
  const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 2, 3, 6, 3);
  TFormulaArg array = view;
  array.Materialize();
  const std::pair<std::string_view, std::vector<TFormulaArg>> calls[] = {
      {"FILTER", {array}},
      {"UNIQUE", {}},
      {"SORT", {NumberArg(2)}},
      {"TRANSPOSE", {}},
      {"TOROW", {}},
      {"HSTACK", {view}},
      {"TAKE", {NumberArg(-2), NumberArg(2)}},
      {"DROP", {NumberArg(1), NumberArg(-1)}},
      {"EXPAND", {NumberArg(7), NumberArg(4)}},
      {"CHOOSECOLS", {NumberArg(-1)}},
      {"WRAPROWS", {NumberArg(4)}},
      {"SORTBY", {view}},
      {"GROUPBY", {view, NumberArg(0)}},
      {"PIVOTBY", {view, view, NumberArg(0)}},
  };
  for (const auto& [name, rest] : calls) ExpectSameOfCopy(name, view, rest);
}

TEST(ArrayFunctions, ManyRowsOfAViewAreThoseOfItsCells) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::mt19937 random(4);
  const std::string longText = "'" + std::string(80, 'k');
  for (int32_t row = 1; row <= 300; ++row) {
    for (int32_t col = 1; col <= 3; ++col) {
      const std::string digit = std::to_string(random() % 9);
      const std::string kinds[] = {digit, "'" + digit + "x'", longText + digit + "'", "_", "TRUE", "#N/A"};
      sheet.SetValue({col, row}, ArgsOf(kinds[random() % 6])[0].First());
    }
  }
  const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 1, 1, 320, 3);
  const TFormulaArg key = TFormulaArg::FromView(sheet, 0, 2, 1, 320, 1);
  for (const char* const name : {"SORT", "UNIQUE"}) ExpectSameOfCopy(name, view, {});
  for (const char* const name : {"SORTBY", "FILTER", "GROUPBY", "PIVOTBY"})
    ExpectSameOfCopy(name, view, {key, key, key});
}

/// A million cells of one text of a million units, and of its twin.
TEST(ArrayFunctions, HugeTextsThatManyCellsShareAreLookedAtOnce) {
  const std::u16string units(1'000'000, u'1');
  const TCellValue twins[] = {TCellValue::FromText(TText(units)), TCellValue::FromText(TText(units + u"x"))};
  std::vector<TCellValue> cells;
  for (int i = 0; i < 1'000'000; ++i) cells.push_back(twins[i % 2]);
  cells.back() = TCellValue::FromText(TText(units));  // another block
  const TFormulaArg column = TFormulaArg::FromRange(std::move(cells), 1'000'000, 1);
  const TFormulaArg one = NumberArg(1);
  EXPECT_EQ(ResultOf("UNIQUE", {column}).RowCount, 2);
  EXPECT_TRUE(ResultOf("SORT", {column}).CellAt(500'000, 0) == twins[0]);
  const TFormulaArg groups = ResultOf("GROUPBY", {column, one, one});
  EXPECT_EQ(Shown(groups.CellAt(0, 1)) + " " + Shown(groups.CellAt(1, 1)), "500001 499999");
  EXPECT_EQ(Shown(ResultOf("PIVOTBY", {column, column, one, one}).CellAt(1, 1)), "500001");
}

TEST(ArrayFunctions, WhatFormulasStackCountsAsMade) {
  TWorkbook book;
  const TFormulaArg sheetColumn = TFormulaArg::FromView(*book.GetSheet(0), 0, 1, 1, 1'048'576, 1);
  const TFormulaArg made = ResultOf("SEQUENCE", ArgsOf("1000000"));
  const TFormulaArg cell = NumberArg(1);
  EXPECT_EQ(ResultOf("VSTACK", {made}).CellCount(), 1'000'000);
  EXPECT_EQ(ResultOf("VSTACK", {sheetColumn, sheetColumn, made}).CellCount(), 3'097'152);
  EXPECT_EQ(Shown(ResultOf("VSTACK", {made, cell}).First()), "#NUM!");
  EXPECT_EQ(Shown(ResultOf("HSTACK", std::vector<TFormulaArg>(50, made)).First()), "#NUM!");
  EXPECT_EQ(ResultOf("HSTACK", {sheetColumn, cell}).First().ErrorCode, ceNum) << "a million pads";
}

TEST(ArrayFunctions, UniqueLinesAreThoseOfTheJoinedKeys) {
  std::mt19937 random(9);
  const std::string text = "a long text that many cells may share, so long that it is hashed only once";
  const std::vector<TFormulaArg> values = ArgsOf(
      "_ '' 1 '1' TRUE 'TRUE' #N/A #REF! 0.1 0.3 0.30000000000000004 -0 0 1e300 1.7976931348623157e308 "
      "1.7976931348623155e308 5e-324 1234.5678 1234.56780000000001 123456789012345.6 123456789012345.7 'a' 'A' '" +
      text + "' '" + text + "!'");
  for (int round = 0; round < 300; ++round) {
    const auto rows = static_cast<int32_t>(1 + random() % 40);
    const auto cols = static_cast<int32_t>(1 + random() % 3);
    std::vector<TCellValue> cells;
    for (int32_t i = 0; i < rows * cols; ++i) cells.push_back(values[random() % values.size()].Scalar);
    const TFormulaArg array = TFormulaArg::FromRange(cells, rows, cols);
    for (const bool byCol : {false, true}) {
      for (const bool once : {false, true}) {
        ASSERT_EQ(detail::UniqueLines(array, byCol, once), detail::UniqueLinesPlain(array, byCol, once)) << round;
      }
    }
  }
}

}  // namespace

}  // namespace tessarine
