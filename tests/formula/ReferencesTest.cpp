#include <gtest/gtest.h>

#include <random>
#include <string>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;
using testing::Shown;

TEST(References, Addresses) {
  ExpectCalls({
      {"ADDRESS", "2 3", "'$C$2'"},
      {"ADDRESS", "2.9 28 2", "'AB$2'"},
      {"ADDRESS", "2 3 3 TRUE", "'$C2'"},
      {"ADDRESS", "1048576 16384 4 1 'My Data'", "''My Data'!XFD1048576'"},
      {"ADDRESS", "2 3 2 FALSE 'Data'", "'Data!R2C[3]'"},
      {"ADDRESS", "2 3 1 0 ''", "'!R2C3'"},
      {"ADDRESS", "1048577 1", "#VALUE!"},
      {"ADDRESS", "1 0", "#VALUE!"},
      {"ADDRESS", "1 1 5", "#VALUE!"},
      {"ADDRESS", "1 1e300", "#VALUE!"},
      {"ADDRESS", "1 1 'x'", "#VALUE!"},
  });
}

TEST(References, WhatAReferenceIs) {
  TWorkbook book;
  book.AddSheet(u"Other");
  book.GetSheet(0)->SetValue({1, 1}, TCellValue::FromFormula(u"=1 +  1"));
  book.GetSheet(0)->SetValue({1, 2}, TCellValue::FromNumber(5));
  book.GetSheet(1)->SetValue({2, 3}, TCellValue::FromFormula(u"=sum( A1 )"));
  TFormulaEvaluator evaluator(book);
  evaluator.RecalculateAll();
  const struct {
    const char* Formula;
    const char* Result;
  } cases[] = {
      {"=FORMULATEXT(A1)", "'=1 +  1'"},
      {"=FORMULATEXT(Other!B3)", "'=sum( A1 )'"},
      {"=FORMULATEXT(Other!B3:C9)", "'=sum( A1 )'"},
      {"=FORMULATEXT(A2)", "#N/A"},
      {"=FORMULATEXT(1)", "#VALUE!"},
      {"=ISFORMULA(A1)", "TRUE"},
      {"=ISFORMULA(A2)", "FALSE"},
      {"=ISFORMULA(\"A1\")", "#VALUE!"},
      {"=ISREF(A1)", "TRUE"},
      {"=ISREF(A1:B2)", "TRUE"},
      {"=ISREF(A1+1)", "FALSE"},
      {"=AREAS(A1:B2)", "1"},
      {"=AREAS(1)", "#VALUE!"},
      {"=SHEET()", "1"},
      {"=SHEET(Other!A1)", "2"},
      {"=SHEET(Other!A1:B2)", "2"},
      {"=SHEET(\"other\")", "2"},
      {"=SHEET(\"none\")", "#N/A"},
      {"=SHEET(7)", "#REF!"},
      {"=SHEETS()", "2"},
      {"=SHEETS(Other!A1)", "1"},
      {"=SHEETS(1)", "#REF!"},
      {"=ERROR.TYPE(NA())", "7"},
      {"=ERROR.TYPE(1/0)", "2"},
      {"=ERROR.TYPE(A2)", "#N/A"},
      {"=HYPERLINK(\"https://a.example\")", "'https://a.example'"},
      {"=HYPERLINK(\"https://a.example\",A2)", "5"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Shown(evaluator.EvaluateAt(row.Formula, 0, 5, 5).First()), row.Result) << row.Formula;
  }
}

TEST(References, LookupTakesTheLastLargestValueNotAboveTheKey) {
  ExpectCalls({
      {"LOOKUP", "4.19 [4.14 4.19 4.19 5.77] ['a' 'b' 'c' 'd']", "'c'"},
      {"LOOKUP", "5 [9 1 4 3]", "4"},
      {"LOOKUP", "5 [1 4;2 9;'x' 'y']", "9"},      // high: first and last column
      {"LOOKUP", "2 [1 2 3;'a' 'b' 'c']", "'b'"},  // wide: first and last row
      {"LOOKUP", "'bz' ['a' 'B' 'c'] [1 2 3]", "2"},
      {"LOOKUP", "'b' ['a' 'B' 5 'b'] [1;2;3;4]", "4"},
      {"LOOKUP", "'A' ['b'] [1]", "#N/A"},
      {"LOOKUP", "0 [1 2] [1 2]", "#N/A"},
      {"LOOKUP", "2 [1 2] [7]", "#REF!"},
      {"LOOKUP", "#DIV/0! [1 #DIV/0!] [7 8]", "8"},
      {"LOOKUP", "2 2 'x'", "'x'"},
      {"LOOKUP", "2", "#VALUE!"},
  });
}

TEST(References, XMatchModes) {
  ExpectCalls({
      {"XMATCH", "4 [5 4 3 4]", "2"},
      {"XMATCH", "4 [5 4 3 4] 0 -1", "4"},
      {"XMATCH", "4 [5 4 3 4] 0 2", "2"},
      {"XMATCH", "0 [5 _ _ 4] 0 -1", "3"},
      {"XMATCH", "4.5 [5 4 3 4 5] -1", "2"},
      {"XMATCH", "4.5 [5 4 3 4 5] -1 -1", "4"},
      {"XMATCH", "4.5 [5 4 3 4 5] 1", "1"},
      {"XMATCH", "4.5 [5 4 3 4 5] 1 -1", "5"},
      {"XMATCH", "-1 [5 '' _] 1", "3"},  // the blank is 0, the text is not
      {"XMATCH", "'bb' ['a' 'c' 'B' 'b'] -1", "3"},
      {"XMATCH", "'bb' ['a' 'c' 'B' 'C'] 1 -1", "4"},
      {"XMATCH", "'b*d' ['abd' 'BxxD' 'bd'] 2", "2"},
      {"XMATCH", "'b*d' ['abd' 'BxxD' 'bd'] 2 -1", "3"},
      {"XMATCH", "'?~*?' ['aab' 'a*b'] 2", "2"},
      {"XMATCH", "'*ab*ab' ['abaab' 'ab'] 2", "1"},
      {"XMATCH", "'~' ['a' '~'] 2", "2"},
      {"XMATCH", "'b*d' ['b*d' 'bxd'] 0", "1"},
      {"XMATCH", "5 ['5x' 5] 2", "2"},
      {"XMATCH", "'^[A-Z]+y$' ['Italy' 'ITALy'] 3", "2"},
      {"XMATCH", "'[' ['a'] 3", "#VALUE!"},
      {"XMATCH", "'b' ['a'] 4", "#VALUE!"},
      {"XMATCH", "'b' ['a'] 0 3", "#VALUE!"},
      {"XMATCH", "'b' ['a']", "#N/A"},
  });
}

TEST(References, IndexesGiveTheSamePositions) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::mt19937 random(8);
  std::string cells = "[";
  for (int32_t row = 1; row <= 400; ++row) {
    const auto value = static_cast<int>(random() % 90);
    cells += (row > 1 ? ";" : "") + (value == 0 ? std::string("_") : std::to_string(value));
    if (value != 0) sheet.SetValue({1, row}, TCellValue::FromNumber(value));
  }
  cells += "]";
  TFormulaEvaluator evaluator(book);
  for (const char* modes : {"-1,1", "1,1", "-1,-1", "1,-1", "0,1", "0,-1"}) {
    for (const int key : {-3, 0, 17, 43, 89, 95}) {
      const std::string formula = "=XMATCH(" + std::to_string(key) + ",A1:A400," + modes + ")";
      std::string args = std::to_string(key) + " " + cells + " " + modes;
      args[args.rfind(',')] = ' ';
      for (int again = 0; again < 3; ++again)  // the first searches scan
        EXPECT_EQ(Shown(evaluator.EvaluateAt(formula, 0, 5, 5).First()), Called("XMATCH", args)) << formula;
    }
  }
}

}  // namespace

}  // namespace tessarine
