#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include <tessarine/formula/library/detail/Random.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::NumberCalled;

TEST(NumberFunctions, ZeroNeverCarriesASign) {
  ASSERT_TRUE(std::signbit(testing::ValueOf("-0").Number));
  for (const char* call : {"ROUND", "TRUNC", "ROUNDUP", "ROUNDDOWN", "ABS", "SIGN", "INT"}) {
    EXPECT_FALSE(std::signbit(NumberCalled(call, "-0"))) << call;
  }
}

TEST(NumberFunctions, RandomNumbersStayInTheirRange) {
  detail::SeedRandom(42);
  double sum = 0;
  for (int i = 0; i < 20000; ++i) {
    const double drawn = NumberCalled("RAND", "");
    ASSERT_GE(drawn, 0);
    ASSERT_LT(drawn, 1);
    sum += drawn;
  }
  EXPECT_NEAR(sum / 20000, 0.5, 0.02);
  std::set<std::string> seen;
  for (int i = 0; i < 200; ++i) seen.insert(Called("RANDBETWEEN", "-1.9 2.9"));
  EXPECT_EQ(seen, (std::set<std::string>{"-1", "0", "1", "2"}));
  EXPECT_TRUE(std::isfinite(NumberCalled("RANDBETWEEN", "-1e300 1e300")));
}

TEST(NumberFunctions, TheSameSeedGivesTheSameNumbers) {
  detail::SeedRandom(1);
  const uint64_t first = detail::NextRandomBits();
  const uint64_t second = detail::NextRandomBits();
  detail::SeedRandom(1);
  EXPECT_EQ(detail::NextRandomBits(), first);
  EXPECT_NE(first, second);
  detail::SeedRandom(2);
  EXPECT_NE(detail::NextRandomBits(), first);
}

}  // namespace

}  // namespace tessarine
