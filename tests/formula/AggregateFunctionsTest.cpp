#include <gtest/gtest.h>

#include <random>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Coercion.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

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
