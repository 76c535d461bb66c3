#include <gtest/gtest.h>

#include <random>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Coercion.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(AggregateFunctions, OnlyNumbersCountAndNothingElseDisturbs) {
  ExpectCalls({
      {"SUM", "", "0"},
      {"SUM", "1 2 3", "6"},
      {"SUM", "'3' TRUE", "0"},
      {"SUM", "1 #N/A", "1"},
      {"SUM", "[1 'a';#DIV/0! 4] _ 5", "10"},
      {"SUM", "fn", "0"},
      {"SUM", "[]", "0"},
      {"SUM", "1e308 1e308", "#NUM!"},
      {"SUM", "1e16 1 -1e16 1", "1"},  // strictly from left to right
      {"AVERAGE", "1 2 '9' _ #N/A", "1.5"},
      {"AVERAGE", "'x'", "#DIV/0!"},
      {"AVERAGE", "", "#DIV/0!"},
      {"MIN", "[3 _;-2 'a'] TRUE", "-2"},
      {"MIN", "'-5'", "0"},
      {"MAX", "[-3 _;-2 'a'] TRUE", "-2"},
      {"MAX", "#N/A", "0"},
      {"PRODUCT", "[2 3] '4' _", "6"},
      {"PRODUCT", "'4'", "0"},
      {"PRODUCT", "1e200 1e200", "#NUM!"},
      {"COUNT", "[1 '2';TRUE #N/A] _ 3", "2"},
  });
}

TEST(AggregateFunctions, CountsOfBlanks) {
  ExpectCalls({
      {"COUNTA", "[1 '';_ #N/A] FALSE _", "4"},
      {"COUNTA", "", "0"},
      {"COUNTA", "fn", "0"},
      {"COUNTBLANK", "[1 '';_ #N/A] FALSE _", "3"},
      {"COUNTBLANK", "fn []", "1"},
  });
}

TEST(AggregateFunctions, SubtotalKnowsSevenCodesAndIgnoresHundreds) {
  ExpectCalls({
      {"SUBTOTAL", "1 [1 2;'x' _]", "1.5"}, {"SUBTOTAL", "1 'x'", "#DIV/0!"},     {"SUBTOTAL", "2 [1 2;'x' _]", "2"},
      {"SUBTOTAL", "3 [1 2;'x' _]", "3"},   {"SUBTOTAL", "4 [1 2;'x' _]", "2"},   {"SUBTOTAL", "5 [1 2;'x' _]", "1"},
      {"SUBTOTAL", "6 [3 2;'x' _]", "6"},   {"SUBTOTAL", "9 [1 2;'x' _] 4", "7"}, {"SUBTOTAL", "109 1 2", "3"},
      {"SUBTOTAL", "101 1 2", "1.5"},       {"SUBTOTAL", "9.9 1 2", "3"},         {"SUBTOTAL", "'9' 1", "1"},
      {"SUBTOTAL", "7 1 2", "#VALUE!"},     {"SUBTOTAL", "8 1", "#VALUE!"},       {"SUBTOTAL", "110 1", "#VALUE!"},
      {"SUBTOTAL", "209 1", "#VALUE!"},     {"SUBTOTAL", "0 1", "#VALUE!"},       {"SUBTOTAL", "-1e300 1", "#VALUE!"},
      {"SUBTOTAL", "'x' 1", "#VALUE!"},     {"SUBTOTAL", "9", "#VALUE!"},
  });
}

TEST(AggregateFunctions, SumproductTakesWhatReadsAsANumber) {
  ExpectCalls({
      {"SUMPRODUCT", "", "#VALUE!"},
      {"SUMPRODUCT", "[1 2 3]", "6"},
      {"SUMPRODUCT", "['2' TRUE;#N/A _] [3 4;5 6]", "10"},
      {"SUMPRODUCT", "[1 2 3] [1;2;3]", "14"},   // by index, whatever the shape
      {"SUMPRODUCT", "[1 2 3] [10 20]", "50"},   // behind a short range all is 0
      {"SUMPRODUCT", "[1 2] [10 20 30]", "50"},  // the first argument decides how many terms there are
      {"SUMPRODUCT", "[1 2 3] 2", "12"},
      {"SUMPRODUCT", "2 [5 6]", "10"},
      {"SUMPRODUCT", "'3' TRUE", "3"},
      {"SUMPRODUCT", "[] [1]", "0"},
      {"SUMPRODUCT", "fn [1]", "0"},
      {"SUMPRODUCT", "[1e200 0] [1e200 1]", "#NUM!"},
  });
}

TEST(AggregateFunctions, RankCountsBetterNumbersOnly) {
  ExpectCalls({
      {"RANK", "2 [3 2;2 1]", "2"},
      {"RANK", "2 [3 2;2 1] 1", "2"},
      {"RANK", "1 [3 2;2 1]", "4"},
      {"RANK", "3 [3 2;2 1] -1", "4"},
      {"RANK", "3 ['3' TRUE _]", "#N/A"},
      {"RANK", "'2' [2 'x' 9]", "2"},
      {"RANK", "5 [1 2]", "#N/A"},
      {"RANK.EQ", "2 [3 2;2 1] 0", "2"},
      {"RANK", "2 2", "1"},
      {"RANK", "2", "#VALUE!"},
      {"RANK", "'x' [1 2]", "#VALUE!"},
      {"RANK", "#N/A [1]", "#VALUE!"},
      {"RANK", "2 [3 2] 'x'", "2"},
      {"RANK.EQ", "2 [3 2] '1'", "1"},
  });
}

/// SUMPRODUCT as it is defined, term by term.
double TermByTerm(std::span<const TFormulaArg> AArgs) {
  double sum = 0;
  const int64_t terms = AArgs[0].IsRange ? AArgs[0].CellCount() : 1;
  for (int64_t i = 0; i < terms; ++i) {
    double product = 1;
    for (const TFormulaArg& arg : AArgs) {
      double factor = 0;
      if (!arg.IsRange || i < arg.CellCount()) AsNumber(arg.IsRange ? arg.ViewAt(i) : arg.Scalar.View(), factor);
      product *= factor;
    }
    sum += product;
  }
  return sum;
}

TEST(AggregateFunctions, SumproductOverViewsEqualsTermByTerm) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::mt19937 random(7);
  const auto draw = [&](int32_t ALast) { return static_cast<int32_t>(random() % static_cast<uint32_t>(ALast + 1)); };
  for (int i = 0; i < 6000; ++i) {
    const char* const values[] = {"TRUE", "#N/A", "1E-3", "0", "7.25"};
    const TCellValue value = i % 3 ? TCellValue::FromNumber(draw(2000) / 7.0 - 100) : testing::ValueOf(values[draw(4)]);
    sheet.SetValue({1 + draw(5), 1 + draw(2999)}, i % 17 ? value : TCellValue::FromText(u"12.5"));
  }
  for (int round = 0; round < 60; ++round) {
    const int32_t rows = 1 + draw(round % 3 ? 40 : 2500);
    const int32_t cols = 1 + draw(3);
    std::vector<TFormulaArg> args;
    for (int32_t count = 1 + draw(2); count >= 0; --count) {
      const int32_t height = draw(9) ? rows : 1 + draw(rows);
      args.push_back(TFormulaArg::FromView(sheet, 0, 1 + draw(2), 1 + draw(500), height, cols));
    }
    if (draw(2) == 0) args.back().Materialize();
    if (draw(3) == 0) args[static_cast<size_t>(draw(1))] = TFormulaArg::FromScalar(TCellValue::FromNumber(1.5));
    const TCellValue sum = EvaluateFunction(u"SUMPRODUCT", args, {});
    ASSERT_EQ(sum.Kind, cvkNumber);
    EXPECT_EQ(sum.Number, TermByTerm(args) + 0.0) << "round " << round;
  }
}

}  // namespace

}  // namespace tessarine
