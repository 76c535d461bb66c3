#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "DatedCalls.h"

namespace tessarine {

namespace {

using testing::DatedCall;
using testing::ExpectDatedCalls;

double NumberOf(const char* AName, const std::string& AArgs) { return std::stod(DatedCall(AName, AArgs)); }

TEST(Loans, InterestAndPrincipal) {
  ExpectDatedCalls({
      {"IPMT", "0.01 1 36 8000", "-80"},
      {"IPMT", "0.1 3 3 8000", "-292.447129909366"},
      {"IPMT", "0.1 1 3 8000 0 1", "0"},
      {"PPMT", "0.08 10 10 200000", "-27598.0534624214"},
      {"PPMT", "0 2 4 100 20", "-30"},
      {"IPMT", "0 2 4 100 20", "0"},
      {"CUMIPMT", "0.0075 360 125000 1 1 0", "-937.5"},
      {"CUMPRINC", "0.0075 360 125000 1 1 0", "-68.2782711809769"},
      {"CUMIPMT", "0.0075 1e9 125000 1 1e9 0", "-937499875000"},
      {"CUMIPMT", "1e-9 12 1200 1 12 0", "-7.8e-06", 1e-12},
      {"CUMPRINC", "0.5 1e9 1000 1 1000 1", "-333.333333333333"},
      {"IPMT", "0.1 0 3 8000", "#NUM!"},
      {"IPMT", "0.1 4 3 8000", "#NUM!"},
      {"PPMT", "-1 1 3 8000", "#NUM!"},
      {"CUMIPMT", "0.1 3 8000 1 4 0", "#NUM!"},
      {"CUMIPMT", "0.1 3 8000 1 3 2", "#NUM!"},
      {"CUMPRINC", "0 3 8000 1 3 0", "#NUM!"},
      {"ISPMT", "0.1 1 3 8000000", "-533333.333333333"},
      {"ISPMT", "0.1 1 0 8000000", "#DIV/0!"},
  });
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
    const double payment = NumberOf("PMT", rateText + loan + "0" + type);
    double interest = 0;
    double principal = 0;
    for (int period = 1; period <= periods; ++period) {
      const std::string args = rateText + std::to_string(period) + " " + loan + "0" + type;
      interest += NumberOf("IPMT", args);
      principal += NumberOf("PPMT", args);
      EXPECT_NEAR(NumberOf("IPMT", args) + NumberOf("PPMT", args), payment, 1e-7) << args;
    }
    EXPECT_NEAR(principal, -5000, 1e-6);
    if (std::stod(rateText) <= 0) continue;
    const std::string all = rateText + loan + "1 " + std::to_string(periods) + type;
    EXPECT_NEAR(NumberOf("CUMIPMT", all), interest, 1e-6) << all;
    EXPECT_NEAR(NumberOf("CUMPRINC", all), -5000, 1e-6) << all;
  }
}

TEST(Loans, Depreciation) {
  ExpectDatedCalls({
      {"SLN", "30000 7500 10", "2250"},
      {"SLN", "30000 7500 0", "#DIV/0!"},
      {"SYD", "30000 7500 10 10", "409.090909090909"},
      {"SYD", "30000 7500 10 11", "#NUM!"},
      {"DB", "1000000 100000 6 7 7", "15845.0984738462", 1e-9},
      {"DB", "1000000 100000 6 7", "#NUM!"},
      {"DB", "0 100 6 1", "0"},
      {"DB", "1000 0 6 1", "1000"},
      {"DB", "1000 0 6 2", "0"},
      {"DDB", "2400 300 10 10", "22.1225472000003"},
      {"DDB", "2400 300 10 2 1.5", "306"},
      {"DDB", "100 10 1 1", "90"},
      {"DDB", "100 200 5 1", "0"},
      {"DDB", "100 10 5 6", "#NUM!"},
      {"DDB", "100 10 5 1 0", "#NUM!"},
      {"DDB", "1e6 1 1e9 1e9", "0.000270670566473225"},
      {"VDB", "2400 300 3650 0 1", "1.31506849315068"},
      {"VDB", "2400 300 120 6 18", "396.306053264751"},
      {"VDB", "2400 300 120 6 18 1.5", "311.808936658234"},
      {"VDB", "2400 300 10 0 0.875 1.5", "315"},
      {"VDB", "10000 1000 5 0 5 0.2 1", "1846.273024", 1e-9},
      {"VDB", "1e6 0 1e9 0 1e9", "1000000"},
      {"VDB", "1e6 0 1e9 0 1e9 2 TRUE", "864664.717034058"},
      {"VDB", "100 0 0.5 0 0.5", "100"},
      {"VDB", "100 10 5 2 1", "#NUM!"},
      {"VDB", "100 10 5 1 6", "#NUM!"},
      {"VDB", "100 10 5 1 2 2 'x'", "#VALUE!"},
  });
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
    EXPECT_NEAR(NumberOf("VDB", args), PlainVdb(1000, salvage, life, start, end, factor), 1e-8) << args;
  }
}

TEST(Loans, RatesAndGrowth) {
  ExpectDatedCalls({
      {"EFFECT", "0.0525 4.9", "0.0535426673707584"},
      {"EFFECT", "1e-9 365", "1e-09", 1e-18},
      {"NOMINAL", "0.053543 4", "0.0525003198689864"},
      {"EFFECT", "0 4", "#NUM!"},
      {"NOMINAL", "0.1 0.9", "#NUM!"},
      {"PDURATION", "0.025 2000 2200", "3.85986616262266"},
      {"RRI", "96 10000 11000", "0.000993307380526014"},
      {"RRI", "2 -1 1", "#NUM!"},
      {"FVSCHEDULE", "1 [0.09 _;0.11 0.1]", "1.33089"},
      {"FVSCHEDULE", "1 [0.09 'x']", "#VALUE!"},
      {"DOLLARDE", "1.02 16", "1.125"},
      {"DOLLARDE", "-1.1 32.9", "-1.3125"},
      {"DOLLARFR", "1.125 16", "1.02"},
      {"DOLLARFR", "-3.9999 100", "-3.9999"},
      {"DOLLARDE", "1 0.5", "#DIV/0!"},
      {"DOLLARFR", "1 -0.5", "#NUM!"},
      {"MIRR", "[-120000 39000 30000 'x' 21000 _ 37000 46000] 0.1 0.12", "0.126094130365905"},
      {"MIRR", "[100 200] 0.1 0.1", "#DIV/0!"},
      {"MIRR", "[-100 -200] 0.1 0.1", "#DIV/0!"},
      {"MIRR", "[-100 -200 1] -1 0.1", "#NUM!"},
  });
}

TEST(Loans, DatedCashFlows) {
  ExpectDatedCalls({
      {"XNPV", "0.09 [-10000 2750 4250 3250 2750] [2008-01-01 2008-03-01 2008-10-30 2009-02-15 2009-04-01]",
       "2086.64760203153"},
      {"XIRR", "[-10000 2750 4250 3250 2750] [2008-01-01 2008-03-01 2008-10-30 2009-02-15 2009-04-01]",
       "0.373362533509901", 1e-9},
      {"XIRR", "[-100 _ 110] [2023-01-01 _ 2024-01-01] 50", "0.1"},
      {"XIRR", "[-100;1] [2023-01-01;2024-01-01]", "-0.99"},
      {"XIRR", "[-100 1e9] [2023-01-01 2023-02-01] -0.9", "2.626363527653303e+82"},
      {"XIRR", "[-100 110] [2023-01-01 2022-01-01]", "#NUM!"},
      {"XIRR", "[-100 -110] [2023-01-01 2024-01-01]", "#NUM!"},
      {"XIRR", "[-100 110 5] [2023-01-01 2024-01-01]", "#NUM!"},
      {"XIRR", "[-100 'x'] [2023-01-01 2024-01-01]", "#VALUE!"},
      {"XIRR", "[-100 110] [2023-01-01 2024-01-01] -1", "#NUM!"},
      {"XNPV", "-1 [-100 110] [2023-01-01 2024-01-01]", "#NUM!"},
      {"XNPV", "0.1 [-100 110] [2023-01-01 99999999]", "#NUM!"},
      {"XNPV", "0 [-100 #N/A] [2023-01-01 2024-01-01]", "#VALUE!"},
  });
}

}  // namespace

}  // namespace tessarine
