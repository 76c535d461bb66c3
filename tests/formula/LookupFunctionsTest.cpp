#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/FunctionTable.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(LookupFunctions, ExactHitsAreTheFirstEqualCell) {
  ExpectCalls({
      {"VLOOKUP", "2 [1 'a';2 'b';2 'c'] 2 FALSE", "'b'"},
      {"VLOOKUP", "'2' [1 'a';2 'b'] 2 FALSE", "'b'"},
      {"VLOOKUP", "'B' ['a' 1;'b' 2] 2 FALSE", "2"},
      {"VLOOKUP", "'' [1 'a';_ 'b'] 2 FALSE", "'b'"},
      {"VLOOKUP", "0 [1 'a';_ 'b';0 'c'] 2 FALSE", "'b'"},
      {"VLOOKUP", "_ ['x' 'a';'' 'b';0 'c'] 2 FALSE", "'b'"},
      {"VLOOKUP", "'TRUE' [1 'a';TRUE 'b'] 2 FALSE", "'b'"},  // the text is no number
      {"VLOOKUP", "TRUE ['TRUE' 'a';1 'b'] 2 FALSE", "'a'"},
      {"VLOOKUP", "#N/A [1 'a';#N/A 'b'] 2 FALSE", "'b'"},
      {"VLOOKUP", "3 [1 'a';2 'b'] 2 FALSE", "#N/A"},
      {"VLOOKUP", "-0 [0 'a'] 2 FALSE", "'a'"},
      {"HLOOKUP", "'y' ['x' 'y';1 2] 2 FALSE", "2"},
      {"HLOOKUP", "'y' ['x' 'y';1 2] 3 FALSE", "#REF!"},
      {"XLOOKUP", "2 [1 2;3 2] [5;6;7;8]", "6"},  // by index, whatever the shapes
      {"XLOOKUP", "3 [1 2 3] [5 6]", "#REF!"},
      {"XLOOKUP", "9 [1 2 3] [5 6 7]", "#N/A"},
      {"XLOOKUP", "9 [1 2 3] [5 6 7] ['none' 1]", "'none'"},
      {"XLOOKUP", "9 [1 2 3] [5 6 7] 'none' -1 2", "'none'"},
      {"XLOOKUP", "4 4 8", "8"},
      {"XLOOKUP", "4 [3 4] 8", "#REF!"},
      {"XLOOKUP", "4 [4]", "#VALUE!"},
      {"MATCH", "'b' ['a' 'B';'b' 'c'] 0", "2"},
      {"MATCH", "5 ['5' 5] 0", "1"},
      {"MATCH", "5 5 0", "1"},
      {"MATCH", "6 5 0", "#N/A"},
  });
}

TEST(LookupFunctions, ApproximateTableLookupsScanWithoutOrder) {
  ExpectCalls({
      {"VLOOKUP", "2 [5 'a';1 'b';3 'c'] 2", "'b'"},
      {"VLOOKUP", "4 [3 'a';1 'b';3 'c';9 'd'] 2", "'c'"},  // the last of equals below
      {"VLOOKUP", "3 [1 'a';3 'b';3 'c'] 2", "'b'"},        // but the first equal one
      {"VLOOKUP", "3 [1 'a';'3' 'b';3 'c'] 2 TRUE", "'b'"},
      {"VLOOKUP", "0.5 [1 'a';_ 'b';FALSE 'c';'x' 'd'] 2", "'c'"},  // blanks and Booleans are numbers
      {"VLOOKUP", "'b' ['a' 1;'c' 2] 2", "#N/A"},
      {"VLOOKUP", "'c' ['a' 1;'C' 2] 2", "2"},
      {"VLOOKUP", "0 [1 'a'] 2", "#N/A"},
      {"VLOOKUP", "0 [1 'a';-1e308 'b'] 2", "'b'"},
      {"VLOOKUP", "1 [1 'a'] 2 'FALSE'", "'a'"},  // a text is true
      {"HLOOKUP", "4 [1 3 9;'a' 'b' 'c'] 2", "'b'"},
  });
}

TEST(LookupFunctions, MatchTypesTakeTheLastOfEquals) {
  ExpectCalls({
      {"MATCH", "3 [1 3 3 5]", "3"},
      {"MATCH", "4 [5 3 1 3] 1", "4"},
      {"MATCH", "0 [1 _ _ 'x'] 1", "3"},
      {"MATCH", "'b' ['a' 'b'] 1", "#N/A"},
      {"MATCH", "'3' ['3' 'b'] 1", "1"},
      {"MATCH", "3 [9 4 3 4 3] -1", "5"},
      {"MATCH", "3.5 [9 4 3 4] -1", "4"},
      {"MATCH", "3.5 [9 4 3 4] 2", "4"},
      {"MATCH", "3 [1 3] 'x'", "2"},
      {"MATCH", "3 [1 3] 0.9", "2"},  // cut to 0
      {"MATCH", "10 [1 3] -1", "#N/A"},
      {"MATCH", "1", "#VALUE!"},
      {"MATCH", "1 [] 0", "#N/A"},
      {"MATCH", "1 fn 0", "#N/A"},
      {"MATCH", "0 fn 0", "1"},
  });
}

TEST(LookupFunctions, TablesMustBeRectanglesWithThatColumn) {
  ExpectCalls({
      {"VLOOKUP", "1 1 1", "#REF!"},
      {"VLOOKUP", "1 [1] 1", "1"},
      {"VLOOKUP", "1 [] 1", "#REF!"},
      {"VLOOKUP", "1 [1 2] 0", "#REF!"},
      {"VLOOKUP", "1 [1 2] 3", "#REF!"},
      {"VLOOKUP", "1 [1 2] 2.9", "2"},
      {"VLOOKUP", "1 [1 2] 1e300", "#REF!"},
      {"VLOOKUP", "1 [1 2] 'x'", "#VALUE!"},
      {"VLOOKUP", "1 1 'x'", "#REF!"},
      {"VLOOKUP", "1 [1 2]", "#VALUE!"},
      {"HLOOKUP", "1 1 1", "#REF!"},
      {"HLOOKUP", "1 fn 1", "#REF!"},
  });
}

TEST(LookupFunctions, IndexNeverReturnsMoreThanOneCell) {
  ExpectCalls({
      {"INDEX", "[1 2;3 4] 2 2", "4"},
      {"INDEX", "[1 2;3 4] 0 2", "2"},
      {"INDEX", "[1 2;3 4] 2 0", "3"},
      {"INDEX", "[1 2;3 4] 2", "3"},
      {"INDEX", "[1 2 3] 2", "#REF!"},
      {"INDEX", "[1 2;3 4] 3 1", "#REF!"},
      {"INDEX", "[1 2;3 4] -1 1", "#REF!"},
      {"INDEX", "[1 2] 1 'x'", "#VALUE!"},
      {"INDEX", "[1 2] 'x'", "#VALUE!"},
      {"INDEX", "7 1 1", "7"},
      {"INDEX", "7 0 -5", "7"},
      {"INDEX", "7 2", "#REF!"},
      {"INDEX", "[1 _] 1 2", "_"},
      {"INDEX", "[1 #N/A] 1 2", "#N/A"},
      {"INDEX", "[1]", "#VALUE!"},
      {"INDEX", "[] 1 1", "#REF!"},
      {"INDEX", "[1 2] 1 1e300", "#REF!"},
      {"INDEX", "[1 2] '1' '2'", "2"},
      {"ROWS", "[1 2 3;4 5 6]", "2"},
      {"COLUMNS", "[1 2 3;4 5 6]", "3"},
      {"ROWS", "5", "1"},
      {"COLUMNS", "fn", "1"},
      {"ROWS", "[]", "0"},
      {"ROWS", "", "#VALUE!"},
      {"COLUMNS", "", "#VALUE!"},
      {"ROW", "", "1"},
      {"COLUMN", "[1 2]", "1"},
      {"SINGLE", "", "#VALUE!"},
      {"SINGLE", "[4 5;6 7]", "4"},
      {"SINGLE", "3", "3"},
  });
}

TEST(LookupFunctions, PositionsOfTheCellEnteredLast) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t row = 1; row <= 5; ++row) {
    for (int32_t col = 1; col <= 5; ++col) sheet.SetValue({col, row}, TCellValue::FromNumber(10 * row + col));
  }
  TFormulaContext context;
  context.EvalCol = 3;
  context.EvalRow = 4;
  const auto call = [&](std::u16string_view AName, std::vector<TFormulaArg> AArgs) {
    return testing::Shown(EvaluateFunction(AName, AArgs, context));
  };
  const auto view = [&](int32_t ACol, int32_t ARow, int32_t ARows, int32_t ACols) {
    return TFormulaArg::FromView(sheet, 0, ACol, ARow, ARows, ACols);
  };
  EXPECT_EQ(call(u"ROW", {}), "4");
  EXPECT_EQ(call(u"COLUMN", {}), "3");
  EXPECT_EQ(call(u"ROW", {view(2, 5, 1, 1)}), "5");
  EXPECT_EQ(call(u"COLUMN", {view(2, 5, 1, 1)}), "2");
  EXPECT_EQ(call(u"SINGLE", {view(2, 2, 1, 1)}), "22");  // one cell, wherever it lies
  EXPECT_EQ(call(u"SINGLE", {view(1, 2, 3, 1)}), "41");  // a column: its cell in row 4
  EXPECT_EQ(call(u"SINGLE", {view(1, 1, 3, 1)}), "#VALUE!");
  EXPECT_EQ(call(u"SINGLE", {view(2, 1, 1, 3)}), "13");  // a row: its cell in column 3
  EXPECT_EQ(call(u"SINGLE", {view(4, 1, 1, 2)}), "#VALUE!");
  EXPECT_EQ(call(u"SINGLE", {view(2, 2, 4, 4)}), "43");
  EXPECT_EQ(call(u"SINGLE", {view(4, 2, 4, 2)}), "#VALUE!");
}

}  // namespace

}  // namespace tessarine
