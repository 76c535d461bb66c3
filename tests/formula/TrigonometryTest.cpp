#include <gtest/gtest.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

TEST(TrigonometryFunctions, RefuseWhatIsNoNumber) {
  for (const char* name :
       {"ACOS", "ACOSH", "ACOT", "ACOTH", "ASIN", "ASINH", "ATAN", "ATANH", "COS",     "COSH",    "COT",   "COTH",
        "CSC",  "CSCH",  "SEC",  "SECH",  "SIN",  "SINH",  "TAN",  "TANH",  "DEGREES", "RADIANS", "SQRTPI"}) {
    for (const char* args : {"", "'x'", "#N/A", "['x' 1]"}) EXPECT_EQ(Called(name, args), "#VALUE!") << name << args;
  }
}

TEST(TrigonometryFunctions, Values) {
  // clang-format off
  ExpectCalls({
      {"SIN", "1", "0.841470984807897"}, {"COS", "TRUE", "0.54030230586814"}, {"TAN", "'1'", "1.5574077246549"},
      {"COT", "-2", "0.457657554360286"}, {"SEC", "2", "-2.40299796172238"}, {"CSC", "2", "1.09975017029462"},
      {"ACOT", "-2", "2.67794504458899"}, {"ACOT", "0", "1.5707963267949"}, {"ATAN2", "-1 -1", "-2.35619449019234"},
      {"ATAN2", "0 -1", "-1.5707963267949"}, {"COTH", "0.5", "2.16395341373865"}, {"SECH", "2", "0.26580222883408"},
      {"CSCH", "2", "0.275720564771783"}, {"ACOTH", "-1.5", "-0.80471895621705"}, {"ACOSH", "1", "0"},
      {"ASINH", "-0.5", "-0.481211825059603"}, {"DEGREES", "3.14159265358979312", "180"},
      {"RADIANS", "-180", "-3.14159265358979"}, {"SQRTPI", "5", "3.96332729760601"}, {"CSCH", "1000", "0"},
  });
  // clang-format on
}

TEST(TrigonometryFunctions, EdgesOfDomains) {
  // clang-format off
  ExpectCalls({
      {"ACOS", "1.1", "#NUM!"}, {"ACOS", "-1", "3.14159265358979"}, {"ASIN", "-1.1", "#NUM!"},
      {"ACOSH", "0.9", "#NUM!"}, {"ACOTH", "1", "#NUM!"}, {"ACOTH", "-1", "#NUM!"}, {"ACOTH", "0", "#NUM!"},
      {"ATANH", "1", "#NUM!"}, {"ATANH", "-1.5", "#NUM!"}, {"COT", "0", "#DIV/0!"}, {"CSC", "_", "#DIV/0!"},
      {"COTH", "0", "#DIV/0!"}, {"CSCH", "0", "#DIV/0!"}, {"SEC", "0", "1"}, {"SECH", "0", "1"},
      {"ATAN2", "0 0", "#DIV/0!"}, {"SQRTPI", "-1", "#NUM!"}, {"SINH", "1000", "#NUM!"}, {"ACOSH", "1e200", "#NUM!"},
      {"ASINH", "-1e10", "#NUM!"},
  });
  // clang-format on
}

}  // namespace

}  // namespace tessarine
