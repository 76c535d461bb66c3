#include <gtest/gtest.h>

#include <cmath>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

double NumberCalled(std::u16string_view AName, std::string_view AArgs) {
  const TCellValue value = EvaluateFunction(AName, testing::ArgsOf(AArgs), {});
  EXPECT_EQ(value.Kind, cvkNumber) << AArgs;
  return value.Number;
}

TEST(FinanceFunctions, TheFirstThreeArgumentsMustBeNumbers) {
  for (const char* name : {"PMT", "FV", "PV", "NPER", "RATE"}) {
    for (const char* args : {"", "0.1 10", "'x' 10 100", "0.1 #N/A 100", "0.1 10 ''"})
      EXPECT_EQ(Called(name, args), "#VALUE!") << name << " " << args;
  }
  for (const char* args : {"", "0.1", "'x' 1", "#N/A 1"}) EXPECT_EQ(Called("NPV", args), "#VALUE!") << args;
  EXPECT_EQ(Called("IRR", ""), "#VALUE!");
}

TEST(FinanceFunctions, OtherArgumentsThatAreNoNumbersKeepTheirDefault) {
  for (const char* name : {"PMT", "FV", "PV", "NPER", "RATE"}) {
    EXPECT_EQ(Called(name, "0.1 10 -100 'x' #N/A"), Called(name, "0.1 10 -100")) << name;
  }
  EXPECT_EQ(Called("IRR", "[-100 60 60] 'x'"), Called("IRR", "[-100 60 60]"));
  EXPECT_EQ(Called("RATE", "10 -20 100 0 0 #N/A"), Called("RATE", "10 -20 100"));
}

TEST(FinanceFunctions, LoansAndSavings) {
  ExpectCalls({
      {"PMT", "0.01 12 1000", "-88.8487886783417"},
      {"PMT", "0.01 12 1000 0 1", "-87.9690977013284"},
      {"PMT", "0.01 12 0 1000", "-78.8487886783417"},
      {"PMT", "0 10 1000 500", "-150"},
      {"PMT", "1e-13 10 1000", "-100"},
      {"PMT", "0 0 1000", "#NUM!"},
      {"PMT", "0.1 0 1000", "#NUM!"},
      {"PMT", "-1 10 1000", "0"},
      {"PMT", "-2 0.5 1000", "#NUM!"},
      {"FV", "0.01 12 -100 -1000", "2395.07533145167"},
      {"FV", "0.01 12 -100 -1000 1", "2407.75783446486"},
      {"FV", "0 10 -100 -1000", "2000"},
      {"FV", "1 10000 -1", "#NUM!"},
      {"PV", "0.01 12 -100", "1125.50774734846"},
      {"PV", "0.01 12 -100 0 1", "1136.76282482195"},
      {"PV", "0 10 -100 50", "950"},
      {"PV", "-1 10 -100", "#NUM!"},
      {"NPER", "0.01 -100 1000", "10.5886444594232"},
      {"NPER", "0 -100 1000 500", "15"},
      {"NPER", "0 1e-13 1000", "#VALUE!"},
      {"NPER", "0.5 -100 1000", "#NUM!"},
      {"NPER", "-1 -100 1000", "#NUM!"},
      {"NPER", "-3 -100 1000", "#NUM!"},
  });
}

TEST(FinanceFunctions, PaymentFutureAndPresentValueUndoEachOther) {
  for (const char* rest : {"0", "1", "0.5"}) {
    const double payment = NumberCalled(u"PMT", "0.0125 36 20000 -3000 " + std::string(rest));
    const std::string known = std::to_string(payment);
    const std::string end = std::string(" ") + rest;
    EXPECT_NEAR(NumberCalled(u"PV", "0.0125 36 " + known + " -3000" + end), 20000, 1e-3) << rest;
    EXPECT_NEAR(NumberCalled(u"FV", "0.0125 36 " + known + " 20000" + end), -3000, 1e-3) << rest;
    EXPECT_NEAR(NumberCalled(u"NPER", "0.0125 " + known + " 20000 -3000" + end), 36, 1e-6) << rest;
    EXPECT_NEAR(NumberCalled(u"RATE", "36 " + known + " 20000 -3000" + end), 0.0125, 1e-8) << rest;
  }
}

TEST(FinanceFunctions, NetPresentValueGivesAPeriodToNumbersOnly) {
  ExpectCalls({
      {"NPV", "1 2", "1"},
      {"NPV", "1 2 4", "2"},
      {"NPV", "1 2 'x' #N/A 4", "2"},
      {"NPV", "1 [2 'x';4 8]", "3"},
      {"NPV", "1 2 _ 8", "2"},
      {"NPV", "1 '2' TRUE", "1.25"},
      {"NPV", "1 'x'", "0"},
      {"NPV", "-1 2", "#NUM!"},
      {"NPV", "-0.5 1 1", "6"},
  });
}

TEST(FinanceFunctions, RateOfReturnGivesAPeriodToEveryValue) {
  EXPECT_NEAR(NumberCalled(u"IRR", "[-100;110]"), 0.1, 1e-12);
  EXPECT_NEAR(NumberCalled(u"IRR", "[-100 'x' 121]"), 0.1, 1e-12);
  EXPECT_NEAR(NumberCalled(u"IRR", "[-100 _ 121] 0.5"), 0.1, 1e-12);
  EXPECT_NEAR(NumberCalled(u"IRR", "[-70000 12000 15000 18000 21000 26000]"), 0.0866309480365315, 1e-12);
  EXPECT_NEAR(NumberCalled(u"IRR", "['-100' TRUE 120]"), 0.10045, 1e-4);
}

TEST(FinanceFunctions, SearchesForARateAnswerTheirLastRate) {
  ExpectCalls({
      {"IRR", "[]", "0.1"},
      {"IRR", "5", "0.1"},
      {"IRR", "['x' 'y'] 0.3", "0.3"},
      {"RATE", "10 -100 1000 0 0 0", "0"},
      {"RATE", "10 0 0", "0.1"},
      {"IRR", "[-100 110] -1", "#NUM!"},
  });
  const TCellValue rootless = EvaluateFunction(u"IRR", testing::ArgsOf("[1 -1 1]"), {});
  EXPECT_EQ(rootless.Kind, cvkNumber);
}

TEST(FinanceFunctions, ReadCellsOfASheetInPlace) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const double amounts[] = {-1000, 300, 400, 500};
  for (int32_t i = 0; i < 4; ++i) {
    TCell cell;
    cell.Value = TCellValue::FromNumber(amounts[i]);
    sheet.SetCell({2, 2 + i}, cell);
  }
  const TFormulaArg view = TFormulaArg::FromView(sheet, 0, 2, 2, 1'000'000, 1);
  EXPECT_NEAR(EvaluateFunction(u"IRR", {&view, 1}, {}).Number, 0.0889633946933989, 1e-9);
  const TFormulaArg args[] = {TFormulaArg::FromScalar(TCellValue::FromNumber(1)), view};
  EXPECT_EQ(EvaluateFunction(u"NPV", args, {}).Number, -500 + 75 + 50 + 31.25);
}

}  // namespace

}  // namespace tessarine
