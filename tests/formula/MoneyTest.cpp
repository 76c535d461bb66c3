#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "CallNotation.h"

namespace tessarine::testing {
namespace {

TEST(Loans, PaymentFutureAndPresentValueUndoEachOther) {
  for (const char* rest : {"0", "1", "0.5"}) {
    const double payment = NumberCalled("PMT", "0.0125 36 20000 -3000 " + std::string(rest));
    const std::string known = std::to_string(payment);
    const std::string end = std::string(" ") + rest;
    EXPECT_NEAR(NumberCalled("PV", "0.0125 36 " + known + " -3000" + end), 20000, 1e-3) << rest;
    EXPECT_NEAR(NumberCalled("FV", "0.0125 36 " + known + " 20000" + end), -3000, 1e-3) << rest;
    EXPECT_NEAR(NumberCalled("NPER", "0.0125 " + known + " 20000 -3000" + end), 36, 1e-6) << rest;
    EXPECT_NEAR(NumberCalled("RATE", "36 " + known + " 20000 -3000" + end), 0.0125, 1e-8) << rest;
  }
}

TEST(Loans, PartsOfPaymentsAddUp) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> rates(-0.02, 0.2);
  for (int round = 0; round < 40; ++round) {
    const double rate = round % 2 == 0 ? std::fabs(rates(random)) + 0.001 : rates(random);
    const int periods = 2 + static_cast<int>(random() % 40);
    const std::string type = random() % 2 == 0 ? " 0" : " 1";
    const std::string loan = std::to_string(periods) + " 5000 ";
    const std::string rateText = std::to_string(rate) + " ";
    const double payment = NumberCalled("PMT", rateText + loan + "0" + type);
    double interest = 0;
    double principal = 0;
    for (int period = 1; period <= periods; ++period) {
      const std::string args = rateText + std::to_string(period) + " " + loan + "0" + type;
      interest += NumberCalled("IPMT", args);
      principal += NumberCalled("PPMT", args);
      EXPECT_NEAR(NumberCalled("IPMT", args) + NumberCalled("PPMT", args), payment, 1e-7) << args;
    }
    EXPECT_NEAR(principal, -5000, 1e-6);
    if (std::stod(rateText) <= 0) continue;
    const std::string all = rateText + loan + "1 " + std::to_string(periods) + type;
    EXPECT_NEAR(NumberCalled("CUMIPMT", all), interest, 1e-6) << all;
    EXPECT_NEAR(NumberCalled("CUMPRINC", all), -5000, 1e-6) << all;
  }
}

/// Period by period: the definition of VDB for whole times.
double PlainVdb(double ACost, double ASalvage, int ALife, int AStart, int AEnd, double AFactor) {
  double rest = ACost - ASalvage;
  double lost = 0;
  for (int period = 1; period <= AEnd; ++period) {
    const double declining = std::min((rest + ASalvage) * std::min(AFactor / ALife, 1.0), rest);
    const double loss = std::max(declining, rest / (ALife - period + 1));
    rest -= loss;
    if (period > AStart) lost += loss;
  }
  return lost;
}

TEST(Loans, VariableDepreciationIsThatOfItsPeriods) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    const int life = 1 + static_cast<int>(random() % 30);
    const int start = static_cast<int>(random() % static_cast<unsigned>(life));
    const int end = start + static_cast<int>(random() % static_cast<unsigned>(life - start + 1));
    const int salvage = static_cast<int>(random() % 900);
    const int factor = 1 + static_cast<int>(random() % 4);
    std::string args = "1000";
    for (const int part : {salvage, life, start, end, factor}) args += " " + std::to_string(part);
    EXPECT_NEAR(NumberCalled("VDB", args), PlainVdb(1000, salvage, life, start, end, factor), 1e-8) << args;
  }
}

TEST(Securities, YieldsUndoPrices) {
  const struct {
    const char* Price;
    const char* Yield;
    std::string Before;
  } cases[] = {
      {"PRICE", "YIELD", "2008-02-15 2017-11-15 0.0575 "},
      {"PRICE", "YIELD", "2017-10-15 2017-11-15 0.0575 "},
      {"PRICE", "YIELD", "1008-02-15 9017-11-15 0.01 "},
      {"PRICEMAT", "YIELDMAT", "2017-07-01 2019-01-01 2017-01-01 0.07 "},
      {"ODDFPRICE", "ODDFYIELD", "2008-11-11 2021-03-01 2008-10-15 2009-03-01 0.0785 "},
      {"ODDFPRICE", "ODDFYIELD", "2008-11-11 2021-03-01 2007-01-17 2009-03-01 0.0785 "},
      {"ODDLPRICE", "ODDLYIELD", "2008-02-07 2009-06-15 2007-10-15 0.0375 "},
  };
  for (const auto& row : cases) {
    for (const char* basis : {" 0", " 1", " 2", " 3", " 4"}) {
      const std::string after = (std::string(row.Price) == "PRICEMAT" ? "" : " 100 2") + std::string(basis);
      const std::string price = Called(row.Price, row.Before + "0.0425" + after);
      EXPECT_NEAR(NumberCalled(row.Yield, row.Before + price + after), 0.0425, 1e-9)
          << row.Price << " " << row.Before << basis << ": " << price;
    }
  }
}

TEST(Securities, RegularPeriodsAreOddOnesOfTheirLength) {
  for (const char* basis : {"0", "1", "4"}) {
    const std::string end = std::string(" 0.05 0.04 100 2 ") + basis;
    EXPECT_NEAR(NumberCalled("ODDFPRICE", "2009-01-11 2021-03-01 2008-09-01 2009-03-01" + end),
                NumberCalled("PRICE", "2009-01-11 2021-03-01" + end), 1e-9)
        << basis;
    EXPECT_NEAR(NumberCalled("ODDLPRICE", "2021-01-11 2021-03-01 2020-09-01" + end),
                NumberCalled("PRICE", "2021-01-11 2021-03-01" + end), *basis == '0' ? 1e-9 : 1e-2)
        << basis;
  }
}

}  // namespace
}  // namespace tessarine::testing
