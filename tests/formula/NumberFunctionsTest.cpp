#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include <tessarine/formula/library/detail/Random.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

TEST(NumberFunctions, RefuseWhatIsNoNumber) {
  for (const char* name :
       {"ABS", "SIGN", "INT", "TRUNC", "ROUND", "ROUNDUP", "ROUNDDOWN", "SQRT", "EXP", "LN", "LOG", "LOG10"}) {
    for (const char* args : {"", "'x'", "''", "#N/A", "['x' 1]"})
      EXPECT_EQ(Called(name, args), "#VALUE!") << name << args;
  }
  for (const char* name : {"CEILING", "FLOOR", "MOD", "POWER", "RANDBETWEEN"}) {
    for (const char* args : {"", "1", "1 'x'", "#REF! 1"}) EXPECT_EQ(Called(name, args), "#VALUE!") << name << args;
  }
  for (const char* name : {"TRUNC", "ROUND", "ROUNDUP", "ROUNDDOWN", "LOG"}) {
    EXPECT_EQ(Called(name, "8 'x'"), "#VALUE!") << name;
  }
}

TEST(NumberFunctions, PlainMathematics) {
  ExpectCalls({
      {"ABS", "-2.5", "2.5"},
      {"ABS", "'-3'", "3"},
      {"ABS", "TRUE", "1"},
      {"ABS", "[-4 5]", "4"},
      {"SIGN", "-0.1", "-1"},
      {"SIGN", "_", "0"},
      {"SIGN", "9", "1"},
      {"EXP", "0", "1"},
      {"EXP", "1000", "#NUM!"},
      {"POWER", "2 10", "1024"},
      {"POWER", "-8 2", "64"},
      {"POWER", "-8 0.5", "#NUM!"},
      {"POWER", "0 -1", "#NUM!"},
      {"POWER", "10 400", "#NUM!"},
      {"POWER", "0 0", "1"},
      {"SQRT", "2.25", "1.5"},
      {"SQRT", "-1", "#NUM!"},
      {"LN", "1", "0"},
      {"LN", "0", "#NUM!"},
      {"LOG10", "1000", "3"},
      {"LOG10", "-1", "#NUM!"},
      {"LOG", "1000", "3"},
      {"LOG", "8 2", "3"},
      {"LOG", "125 5", "3"},
      {"LOG", "8 1", "#NUM!"},
      {"LOG", "8 0", "#NUM!"},
      {"LOG", "0 2", "#NUM!"},
      {"LOG", "8 0.5", "-3"},
      {"PI", "", "3.14159265358979"},
  });
}

TEST(NumberFunctions, IntegersWrapAt32Bits) {
  ExpectCalls({
      {"INT", "2.7", "2"},
      {"INT", "-2.1", "-3"},
      {"INT", "3000000000", "-1294967296"},
      {"INT", "-3000000000", "1294967296"},
      {"INT", "1e19", "0"},
      {"FLOOR", "3000000000 1", "-1294967296"},
      {"CEILING", "2147483647.5 1", "-2147483648"},
      {"MOD", "3000000000 1", "4294967296"},
      {"ROUNDUP", "21474836.485 2", "-21474836.47"},
      {"ROUNDDOWN", "-30000000 2", "12949672.96"},
  });
}

TEST(NumberFunctions, Rounding) {
  ExpectCalls({
      {"ROUND", "2.5", "3"},
      {"ROUND", "-2.5", "-3"},
      {"ROUND", "1.005 2", "1"},
      {"ROUND", "0.49999999999999994", "1"},
      {"ROUND", "1234.5 -2", "1200"},
      {"ROUND", "3000000000.4", "3000000000"},
      {"ROUND", "-0.4", "0"},
      {"ROUND", "2.345 1.9", "2.3"},
      {"TRUNC", "-2.79 1", "-2.7"},
      {"TRUNC", "3000000000.9", "3000000000"},
      {"TRUNC", "0.9 400", "0"},
      {"TRUNC", "5 -400", "#NUM!"},
      {"ROUND", "5 400", "0"},
      {"ROUND", "0 400", "0"},
      {"ROUND", "5 -400", "#NUM!"},
      {"ROUNDUP", "5 400", "0"},
      {"ROUNDDOWN", "5 -400", "#NUM!"},
      {"ROUNDUP", "-2.01", "-3"},
      {"ROUNDUP", "2.341 2", "2.35"},
      {"ROUNDUP", "0", "0"},
      {"ROUNDDOWN", "-2.99", "-2"},
      {"ROUNDDOWN", "2.349 2", "2.34"},
      {"CEILING", "2.1 0.5", "2.5"},
      {"CEILING", "-2.1 1", "-2"},
      {"CEILING", "5 0", "0"},
      {"CEILING", "5 -2", "4"},
      {"FLOOR", "2.9 0.5", "2.5"},
      {"FLOOR", "-2.1 1", "-3"},
      {"FLOOR", "5 0", "#DIV/0!"},
      {"MOD", "7 3", "1"},
      {"MOD", "-7 3", "2"},
      {"MOD", "7 -3", "-2"},
      {"MOD", "5.5 1", "0.5"},
      {"MOD", "7 0", "#DIV/0!"},
  });
}

TEST(NumberFunctions, ZeroNeverCarriesASign) {
  for (const char* call : {"ROUND", "TRUNC", "ROUNDUP", "ROUNDDOWN", "ABS", "SIGN", "INT"}) {
    const std::u16string name(call, call + std::char_traits<char>::length(call));
    const TFormulaArg arg = TFormulaArg::FromScalar(TCellValue::FromNumber(-0.0));
    EXPECT_FALSE(std::signbit(EvaluateFunction(name, {&arg, 1}, {}).Number)) << call;
  }
}

TEST(NumberFunctions, RandomNumbersStayInTheirRange) {
  detail::SeedRandom(42);
  double sum = 0;
  for (int i = 0; i < 20000; ++i) {
    const double drawn = EvaluateFunction(u"RAND", {}, {}).Number;
    ASSERT_GE(drawn, 0);
    ASSERT_LT(drawn, 1);
    sum += drawn;
  }
  EXPECT_NEAR(sum / 20000, 0.5, 0.02);
  std::set<std::string> seen;
  for (int i = 0; i < 200; ++i) seen.insert(Called("RANDBETWEEN", "-1.9 2.9"));
  EXPECT_EQ(seen, (std::set<std::string>{"-1", "0", "1", "2"}));
  EXPECT_EQ(Called("RANDBETWEEN", "5 5"), "5");
  EXPECT_EQ(Called("RANDBETWEEN", "2 1"), "#NUM!");
  EXPECT_EQ(Called("RANDBETWEEN", "2.9 2.1"), "2");
  const auto wide = testing::ArgsOf("-1e300 1e300");
  EXPECT_TRUE(std::isfinite(EvaluateFunction(u"RANDBETWEEN", wide, {}).Number));
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
