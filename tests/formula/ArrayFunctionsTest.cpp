#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/ArrayBodies.h>
#include <tessarine/platform/Unicode.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::TCallCase;

std::string ShownArg(const TFormulaArg& AArg) {
  if (!AArg.IsRange) return testing::Shown(AArg.Scalar);
  std::string shown = "[";
  for (int32_t row = 0; row < AArg.RowCount; ++row) {
    if (row > 0) shown += ";";
    for (int32_t col = 0; col < AArg.ColCount; ++col) {
      shown += (col > 0 ? " " : "") + testing::Shown(AArg.CellAt(row, col));
    }
  }
  return shown + "]";
}

TFormulaArg CallArray(std::string_view AName, std::vector<TFormulaArg> AArgs) {
  const TFunctionDef* row = FindFunction(Utf8ToUtf16(AName));
  return row && row->ArrayBody ? row->ArrayBody(AArgs, {}) : TFormulaArg::FromError(ceName);
}

void ExpectArrays(std::initializer_list<TCallCase> ACases) {
  for (const TCallCase& row : ACases) {
    const TFormulaArg result = CallArray(row.Name, testing::ArgsOf(row.Args));
    EXPECT_EQ(ShownArg(result), row.Result) << row.Name << "(" << row.Args << ")";
    EXPECT_FALSE(result.HasOrigin);
  }
}

TEST(ArrayFunctions, Filter) {
  ExpectArrays({
      {"FILTER", "[1 2;3 4;5 6] [TRUE;0;'x']", "[1 2;5 6]"},
      {"FILTER", "[1 2;3 4] [TRUE FALSE;FALSE TRUE]", "[1 2]"},  // only the first column decides
      {"FILTER", "[1 2;3 4] [TRUE TRUE TRUE;FALSE TRUE TRUE]", "#VALUE!"},
      {"FILTER", "[1 2;3 4] [TRUE TRUE]", "#VALUE!"},  // rows only
      {"FILTER", "[1;2;3] [TRUE;TRUE]", "#VALUE!"},
      {"FILTER", "[1;2] [0;#N/A]", "#N/A"},
      {"FILTER", "[1;2] [0;_] ['none' 2]", "'none'"},
      {"FILTER", "7 TRUE", "[7]"},
      {"FILTER", "[] TRUE", "#VALUE!"},
      {"FILTER", "[1]", "#VALUE!"},
  });
}

TEST(ArrayFunctions, SequenceAndItsLimits) {
  ExpectArrays({
      {"SEQUENCE", "3", "[1;2;3]"},
      {"SEQUENCE", "2 2 5 -1.5", "[5 3.5;2 0.5]"},
      {"SEQUENCE", "2.9 'x' 'x' 'x'", "[1;2]"},
      {"SEQUENCE", "2 1 0 0", "[0;0]"},
      {"SEQUENCE", "2 1 1e308 1e308", "[1E+308;#NUM!]"},
      {"SEQUENCE", "0", "#NUM!"},
      {"SEQUENCE", "2 _", "#NUM!"},
      {"SEQUENCE", "'x'", "#VALUE!"},
      {"SEQUENCE", "", "#VALUE!"},
      {"SEQUENCE", "1048577", "#NUM!"},
      {"SEQUENCE", "1048576", "#NUM!"},
      {"SEQUENCE", "1 16385", "#NUM!"},
      {"SEQUENCE", "1048576 16384", "#NUM!"},
      {"SEQUENCE", "1e300 1e300", "#NUM!"},
  });
  EXPECT_EQ(CallArray("SEQUENCE", testing::ArgsOf("1000000")).CellCount(), kMaxGeneratedCells);
}

TEST(ArrayFunctions, UniqueTellsKindsAndCaseApart) {
  ExpectArrays({
      {"UNIQUE", "[1;'1';1]", "[1;'1']"},
      {"UNIQUE", "['a';'A';'a']", "['a';'A']"},
      {"UNIQUE", "[0.3;0.30000000000000004;0.300000000000001]", "[0.3;0.300000000000001]"},  // 15 digits
      {"UNIQUE", "[_;'';0;FALSE;-0]", "[_;'';0;FALSE]"},
      {"UNIQUE", "[#N/A;#REF!;#N/A]", "[#N/A;#REF!]"},
      {"UNIQUE", "[1.2e20;1.2e200;120]", "[1.2E+20;1.2E+200;120]"},
      {"UNIQUE", "[1 2;1 3;1 2]", "[1 2;1 3]"},
      {"UNIQUE", "[1 2 1;3 4 3] TRUE", "[1 2;3 4]"},
      {"UNIQUE", "[1;2;1] 0 1", "[2]"},
      {"UNIQUE", "[1;1] 'x' 5", "#N/A"},
      {"UNIQUE", "[]", "#N/A"},
      {"UNIQUE", "5", "[5]"},
      {"UNIQUE", "", "#VALUE!"},
      {"UNIQUE", "['x\x01T:y' 'z';'x' 'y\x01T:z']", "['x\x01T:y' 'z']"},  // the joined keys are the same
  });
}

TEST(ArrayFunctions, SortsByOneKeyWithTheTiesOfTheExchangeSort) {
  ExpectArrays({
      {"SORT", "[3;1;2]", "[1;2;3]"},
      {"SORT", "[3;1;2] 1 -1", "[3;2;1]"},
      {"SORT", "[2 'a';2 'b';1 'c']", "[1 'c';2 'b';2 'a']"},
      {"SORT", "[1 'b';2 'a'] 2", "[2 'a';1 'b']"},
      {"SORT", "[3 1 2;'x' 'y' 'z'] 1 1 TRUE", "[1 2 3;'y' 'z' 'x']"},
      {"SORT", "[3 1 2]", "[3 1 2]"},
      {"SORT", "['b';_;'a';-1;1]", "[-1;_;1;'a';'b']"},
      {"SORT", "[1;2] 0", "#VALUE!"},
      {"SORT", "[1;2] 2", "#VALUE!"},
      {"SORT", "[2;1] 'x' 'x'", "[1;2]"},
      {"SORT", "5", "[5]"},
      {"SORT", "[]", "#VALUE!"},
      {"SORT", "", "#VALUE!"},
      {"SORTBY", "['a';'b';'c'] [3;1;2]", "['b';'c';'a']"},
      {"SORTBY", "['a';'b';'c'] [3 9;1 0;2 5] -1", "['a';'c';'b']"},
      {"SORTBY", "['a';'b';'c'] [2;2;1] 1 [9;8;7] -1", "['c';'b';'a']"},  // one key only
      {"SORTBY", "['a';'b'] [1]", "#VALUE!"},
      {"SORTBY", "['a';'b']", "#VALUE!"},
  });
}

TEST(ArrayFunctions, Shapes) {
  ExpectArrays({
      {"TRANSPOSE", "[1 2 3;4 5 6]", "[1 4;2 5;3 6]"},
      {"TRANSPOSE", "7", "[7]"},
      {"HSTACK", "[1;2] 3 [4 5;_ 6]", "[1 3 4 5;2 #N/A _ 6]"},
      {"VSTACK", "[1 2] 3", "[1 2;3 #N/A]"},
      {"VSTACK", "fn [1]", "[_;1]"},
      {"VSTACK", "[] [1 2]", "[1 2]"},
      {"HSTACK", "", "#VALUE!"},
      {"TOROW", "[1 2;3 _]", "[1 2 3 _]"},
      {"TOCOL", "[1 2;3 _] 1 TRUE", "[1;2;3;_]"},
      {"WRAPROWS", "[1 2 3 4 5] 2", "[1 2;3 4;5 _]"},
      {"WRAPROWS", "[1 2;3 4] 3 'p'", "[1 2 3;4 'p' 'p']"},
      {"WRAPCOLS", "[1 2 3 4] 2", "[1 2;3 4]"},
      {"WRAPCOLS", "[1 2 3 4 5] 2 0", "[1 2 3;4 5 0]"},
      {"WRAPCOLS", "[1 2] 3", "[1;2;_]"},
      {"WRAPROWS", "[1 2] 0", "#VALUE!"},
      {"WRAPROWS", "[1 2] 'x'", "#VALUE!"},
      {"WRAPROWS", "[1 2]", "#VALUE!"},
      {"EXPAND", "[1 2] 2 3 'p'", "[1 2 'p';'p' 'p' 'p']"},
      {"EXPAND", "[1 2] 1 2", "[1 2]"},
      {"EXPAND", "7 1 2", "[7 _]"},
      {"EXPAND", "[1 2] 2", "#VALUE!"},
      {"EXPAND", "[1 2] 1 1", "#VALUE!"},
      {"EXPAND", "[1 2] 'x' 3", "#VALUE!"},
  });
}

TEST(ArrayFunctions, Parts) {
  ExpectArrays({
      {"TAKE", "[1 2;3 4;5 6] 2", "[1 2;3 4]"},
      {"TAKE", "[1 2;3 4;5 6] -1 -1", "[6]"},
      {"TAKE", "[1 2;3 4] 9 0", "[1 2;3 4]"},
      {"TAKE", "[1 2;3 4] 1 'x'", "[1 2]"},
      {"TAKE", "[1 2;3 4] -1e300", "[1 2;3 4]"},
      {"TAKE", "[1 2] 0", "#VALUE!"},
      {"TAKE", "[1 2] 0.9", "#VALUE!"},
      {"TAKE", "[1 2] 'x'", "#VALUE!"},
      {"TAKE", "[1 2]", "#VALUE!"},
      {"DROP", "[1 2;3 4;5 6] 1", "[3 4;5 6]"},
      {"DROP", "[1 2;3 4;5 6] -2 1", "[2]"},
      {"DROP", "[1 2;3 4] 0 0", "[1 2;3 4]"},
      {"DROP", "[1 2] 5", "#VALUE!"},
      {"DROP", "[1 2] -1e300", "#VALUE!"},
      {"DROP", "[1 2] 0 -2", "#VALUE!"},
      {"CHOOSEROWS", "[1 2;3 4;5 6] 3 [1 -1]", "[5 6;1 2;5 6]"},
      {"CHOOSECOLS", "[1 2 3;4 5 6] -1 '1'", "[3 1;6 4]"},
      {"CHOOSEROWS", "[1;2] 3", "#VALUE!"},
      {"CHOOSEROWS", "[1;2] 0", "#VALUE!"},
      {"CHOOSEROWS", "[1;2] -3", "#VALUE!"},
      {"CHOOSEROWS", "[1;2] 1 'x'", "#VALUE!"},
      {"CHOOSECOLS", "[1;2] 1e300", "#VALUE!"},
      {"CHOOSECOLS", "[1;2]", "#VALUE!"},
      {"CHOOSECOLS", "7 1 1", "[7 7]"},
  });
}

TEST(ArrayFunctions, GroupsGoByDisplayTextInOrderOfAppearance) {
  ExpectArrays({
      {"GROUPBY", "['b';'a';'b';1;'1'] [1;2;'3';4;5] 0", "['b' 4;'a' 2;'1' 9]"},
      {"GROUPBY", "['a' 'z';'A' 'z'] [1 100;2 100] 'x'", "['a' 1;'A' 2]"},
      {"GROUPBY", "['a';'a';_] [1;'x'] 0", "['a' 1;'' 0]"},  // below the values there is nothing to add
      {"GROUPBY", "['a';'b'] 5 0", "['a' 5;'b' 5]"},
      {"GROUPBY", "['a';'a'] [1e308;1e308] 0", "['a' #NUM!]"},
      {"GROUPBY", "[] [1] 0", "#VALUE!"},
      {"GROUPBY", "['a'] [1]", "#VALUE!"},
      {"PIVOTBY", "['r';'s';'r'] ['x';'y';'x'] [1;2;4] 0", "[_ 'x' 'y';'r' 5 0;'s' 0 2]"},
      {"PIVOTBY", "['r';'s'] ['x'] [1;2] 0", "[_ 'x' '#REF!';'r' 1 0;'s' 0 2]"},
      {"PIVOTBY",
       "['a\x01"
       "b';'a'] ['c';'b\x01"
       "c'] [1;2] 0",
       "[_ 'c' 'b\x01"
       "c';'a\x01"
       "b' 3 0;'a' 0 3]"},  // the joined pairs are the same
      {"PIVOTBY", "[] [1] [1] 0", "#VALUE!"},
      {"PIVOTBY", "['r'] ['x'] [1]", "#VALUE!"},
  });
}

TEST(ArrayFunctions, RandomNumbersStayInTheirRange) {
  const TFormulaArg units = CallArray("RANDARRAY", testing::ArgsOf("20 10"));
  ASSERT_EQ(units.RowCount, 20);
  ASSERT_EQ(units.ColCount, 10);
  for (const TCellValue& cell : units.Cells()) EXPECT_TRUE(cell.Number >= 0 && cell.Number < 1);
  bool seen[4] = {};
  const TFormulaArg integers = CallArray("RANDARRAY", testing::ArgsOf("200 1 -1.9 2.9 TRUE"));
  for (const TCellValue& cell : integers.Cells()) {
    ASSERT_TRUE(cell.Number == std::trunc(cell.Number) && cell.Number >= -1 && cell.Number <= 2) << cell.Number;
    seen[static_cast<int>(cell.Number) + 1] = true;
  }
  EXPECT_TRUE(seen[0] && seen[1] && seen[2] && seen[3]);
  ExpectArrays({
      {"RANDARRAY", "1 2 5 5", "[5 5]"},
      {"RANDARRAY", "1 1 7 7 1", "[7]"},
      {"RANDARRAY", "0", "#VALUE!"},
      {"RANDARRAY", "1 -1", "#VALUE!"},
      {"RANDARRAY", "1001 1000", "#NUM!"},
      {"RANDARRAY", "1e300 1e300", "#NUM!"},
  });
  EXPECT_EQ(CallArray("RANDARRAY", {}).CellCount(), 1);
  EXPECT_EQ(testing::Called("RANDARRA", "2 1 5 5"), "5");  // one value by this name
  const TFormulaArg wide = CallArray("RANDARRAY", testing::ArgsOf("9 1 -1e300 1e300 1"));
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
    return AArg.IsRange ? std::to_string(AArg.RowCount) + "x" + std::to_string(AArg.ColCount)
                        : testing::Shown(AArg.Scalar);
  };
  const auto number = [](double ANumber) { return TFormulaArg::FromScalar(TCellValue::FromNumber(ANumber)); };
  EXPECT_EQ(shape(CallArray("TRANSPOSE", {all})), "#NUM!");
  EXPECT_EQ(shape(CallArray("HSTACK", {column, row})), "#NUM!");
  EXPECT_EQ(shape(CallArray("VSTACK", {all, all, all})), "#NUM!");
  EXPECT_EQ(shape(CallArray("TOCOL", {all})), "#NUM!");
  EXPECT_EQ(shape(CallArray("WRAPROWS", {all, number(5)})), "#NUM!");
  EXPECT_EQ(shape(CallArray("SORT", {all})), "#NUM!");
  EXPECT_EQ(shape(CallArray("UNIQUE", {all})), "#NUM!");
  EXPECT_EQ(shape(CallArray("TAKE", {all, number(5)})), "5x16384");
  EXPECT_EQ(shape(CallArray("TAKE", {all, number(5000)})), "#NUM!");
  EXPECT_EQ(shape(CallArray("DROP", {all, number(1)})), "#NUM!");
  EXPECT_EQ(shape(CallArray("CHOOSEROWS", {row, number(1), CallArray("EXPAND", testing::ArgsOf("1 4096 1 1"))})),
            "#NUM!");
  EXPECT_EQ(shape(CallArray("PIVOTBY", {CallArray("SEQUENCE", testing::ArgsOf("9000")),
                                        CallArray("SEQUENCE", testing::ArgsOf("9000")), column, number(0)})),
            "#NUM!");
  // What comes from the sheet may be more than what may be generated.
  EXPECT_EQ(shape(CallArray("TOCOL", {column})), "1048576x1");
  EXPECT_EQ(shape(CallArray("WRAPROWS", {column, number(1000)})), "1049x1000");
  EXPECT_EQ(shape(CallArray("EXPAND", {column, number(1'048'576), number(1)})), "1048576x1");
  ExpectArrays({
      {"EXPAND", "1 1000001 1", "#NUM!"},
      {"EXPAND", "1 1e300 1e300", "#NUM!"},
      {"WRAPROWS", "[1 2] 1000001", "#NUM!"},
      {"WRAPCOLS", "[1 2] 1e300", "#NUM!"},
  });
}

TEST(ArrayFunctions, ViewsGiveWhatTheirCellsGive) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const char* const shown[] = {"1", "'b'", "_", "TRUE", "'B'", "2", "#N/A", "0.5"};
  for (int32_t row = 1; row <= 6; ++row) {
    for (int32_t col = 1; col <= 3; ++col) {
      sheet.SetValue({col + 1, row + 2}, testing::ArgsOf(shown[(row * 5 + col * 3) % 8])[0].First());
    }
  }
  const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 2, 3, 6, 3);
  TFormulaArg array = view;
  array.Materialize();
  const auto number = [](double ANumber) { return TFormulaArg::FromScalar(TCellValue::FromNumber(ANumber)); };
  const std::pair<std::string_view, std::vector<TFormulaArg>> calls[] = {
      {"FILTER", {array}},
      {"UNIQUE", {}},
      {"SORT", {number(2)}},
      {"TRANSPOSE", {}},
      {"TOROW", {}},
      {"HSTACK", {view}},
      {"TAKE", {number(-2), number(2)}},
      {"DROP", {number(1), number(-1)}},
      {"EXPAND", {number(7), number(4)}},
      {"CHOOSECOLS", {number(-1)}},
      {"WRAPROWS", {number(4)}},
      {"SORTBY", {view}},
      {"GROUPBY", {view, number(0)}},
      {"PIVOTBY", {view, view, number(0)}},
  };
  for (const auto& [name, rest] : calls) {
    std::vector<TFormulaArg> viewArgs = {view};
    std::vector<TFormulaArg> arrayArgs = {array};
    viewArgs.insert(viewArgs.end(), rest.begin(), rest.end());
    arrayArgs.insert(arrayArgs.end(), rest.begin(), rest.end());
    const TFormulaArg result = CallArray(name, viewArgs);
    EXPECT_EQ(ShownArg(result), ShownArg(CallArray(name, arrayArgs))) << name;
    EXPECT_FALSE(result.IsView() || result.HasOrigin) << name;
  }
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
      sheet.SetValue({col, row}, testing::ArgsOf(kinds[random() % 6])[0].First());
    }
  }
  const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 1, 1, 320, 3);
  const TFormulaArg key = TFormulaArg::FromView(sheet, 0, 2, 1, 320, 1);
  TFormulaArg array = view;
  array.Materialize();
  for (const char* const name : {"SORT", "SORTBY", "FILTER", "UNIQUE", "GROUPBY", "PIVOTBY"}) {
    std::vector<TFormulaArg> rest;
    if (std::string(name) != "SORT" && std::string(name) != "UNIQUE") rest = {key, key, key};
    std::vector<TFormulaArg> viewArgs = {view};
    std::vector<TFormulaArg> arrayArgs = {array};
    viewArgs.insert(viewArgs.end(), rest.begin(), rest.end());
    arrayArgs.insert(arrayArgs.end(), rest.begin(), rest.end());
    EXPECT_EQ(ShownArg(CallArray(name, viewArgs)), ShownArg(CallArray(name, arrayArgs))) << name;
  }
}

/// A million cells of one text of a million units, and of its twin.
TEST(ArrayFunctions, HugeTextsThatManyCellsShareAreLookedAtOnce) {
  const std::u16string units(1'000'000, u'1');
  const TCellValue twins[] = {TCellValue::FromText(TText(units)), TCellValue::FromText(TText(units + u"x"))};
  std::vector<TCellValue> cells;
  for (int i = 0; i < 1'000'000; ++i) cells.push_back(twins[i % 2]);
  cells.back() = TCellValue::FromText(TText(units));  // another block
  const TFormulaArg column = TFormulaArg::FromRange(std::move(cells), 1'000'000, 1);
  const TFormulaArg one = TFormulaArg::FromScalar(TCellValue::FromNumber(1));
  EXPECT_EQ(CallArray("UNIQUE", {column}).RowCount, 2);
  EXPECT_TRUE(CallArray("SORT", {column}).CellAt(500'000, 0) == twins[0]);
  const TFormulaArg groups = CallArray("GROUPBY", {column, one, one});
  EXPECT_EQ(testing::Shown(groups.CellAt(0, 1)) + " " + testing::Shown(groups.CellAt(1, 1)), "500001 499999");
  EXPECT_EQ(testing::Shown(CallArray("PIVOTBY", {column, column, one, one}).CellAt(1, 1)), "500001");
}

TEST(ArrayFunctions, WhatFormulasStackCountsAsMade) {
  TWorkbook book;
  const TFormulaArg sheetColumn = TFormulaArg::FromView(*book.GetSheet(0), 0, 1, 1, 1'048'576, 1);
  const TFormulaArg made = CallArray("SEQUENCE", testing::ArgsOf("1000000"));
  const TFormulaArg cell = TFormulaArg::FromScalar(TCellValue::FromNumber(1));
  EXPECT_EQ(CallArray("VSTACK", {made}).CellCount(), 1'000'000);
  EXPECT_EQ(CallArray("VSTACK", {sheetColumn, sheetColumn, made}).CellCount(), 3'097'152);
  EXPECT_EQ(testing::Shown(CallArray("VSTACK", {made, cell}).First()), "#NUM!");
  EXPECT_EQ(testing::Shown(CallArray("HSTACK", std::vector<TFormulaArg>(50, made)).First()), "#NUM!");
  EXPECT_EQ(CallArray("HSTACK", {sheetColumn, cell}).First().ErrorCode, ceNum) << "a million pads";
}

TEST(ArrayFunctions, UniqueLinesAreThoseOfTheJoinedKeys) {
  std::mt19937 random(9);
  const char* const shown[] = {"_",
                               "''",
                               "1",
                               "'1'",
                               "TRUE",
                               "'TRUE'",
                               "#N/A",
                               "#REF!",
                               "0.1",
                               "0.3",
                               "0.30000000000000004",
                               "-0",
                               "0",
                               "1e300",
                               "1.7976931348623157e308",
                               "1.7976931348623155e308",
                               "5e-324",
                               "1234.5678",
                               "1234.56780000000001",
                               "123456789012345.6",
                               "123456789012345.7",
                               "'a long text that many cells may share, so long that it is hashed only once'",
                               "'a long text that many cells may share, so long that it is hashed only once!'",
                               "'a'",
                               "'A'"};
  for (int round = 0; round < 300; ++round) {
    const auto rows = static_cast<int32_t>(1 + random() % 40);
    const auto cols = static_cast<int32_t>(1 + random() % 3);
    std::vector<TCellValue> cells;
    for (int32_t i = 0; i < rows * cols; ++i) {
      cells.push_back(testing::ArgsOf(shown[random() % std::size(shown)])[0].First());
    }
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
