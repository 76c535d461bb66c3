#include <gtest/gtest.h>

#include <tessarine/formula/library/detail/Combinations.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

TEST(IntegerFunctions, Combinations) {
  // clang-format off
  ExpectCalls({
      {"FACT", "170", "7.257415615308E+306"}, {"FACT", "171", "#NUM!"}, {"FACT", "2.5", "#NUM!"},
      {"FACT", "-1", "#NUM!"}, {"FACT", "_", "1"}, {"FACT", "5", "120"}, {"FACT", "'x'", "#VALUE!"},
      {"FACTDOUBLE", "7.9", "105"}, {"FACTDOUBLE", "8", "384"}, {"FACTDOUBLE", "-0.9", "1"},
      {"FACTDOUBLE", "-1", "#NUM!"}, {"FACTDOUBLE", "301", "#NUM!"}, {"FACTDOUBLE", "1e300", "#NUM!"},
      {"COMBIN", "5.9 2.9", "10"}, {"COMBIN", "56 28", "7.64869060076044E+15"}, {"COMBIN", "5 6", "#NUM!"},
      {"COMBIN", "-1 0", "#NUM!"}, {"COMBIN", "1029 514", "1.4298206864989E+308"}, {"COMBIN", "1030 515", "#NUM!"},
      {"COMBIN", "1e300 1e299", "#NUM!"}, {"COMBIN", "9007199254740991 1", "9.00719925474099E+15"},
      {"COMBIN", "0 0", "1"}, {"COMBINA", "3 10", "66"}, {"COMBINA", "0 0", "1"}, {"COMBINA", "0 5", "#NUM!"},
      {"COMBINA", "-1 2", "#NUM!"}, {"PERMUT", "49 6", "10068347520"}, {"PERMUT", "2 3", "#NUM!"},
      {"PERMUT", "5 -1", "#NUM!"}, {"PERMUT", "1e300 1e300", "#NUM!"}, {"PERMUTATIONA", "7 6", "117649"},
      {"PERMUTATIONA", "0 0", "1"}, {"PERMUTATIONA", "-1 2", "#NUM!"}, {"PERMUTATIONA", "10 400", "#NUM!"},
      {"MULTINOMIAL", "[2 3;4 _]", "1260"}, {"MULTINOMIAL", "20 20 20", "5.77831214478476E+26"},
      {"MULTINOMIAL", "3 -1", "#NUM!"}, {"MULTINOMIAL", "1 'x'", "#VALUE!"}, {"MULTINOMIAL", "", "#VALUE!"},
  });
  // clang-format on
  // Exact where products of factorials would be rounded.
  EXPECT_EQ(detail::CombinationCount(56, 28), 7648690600760440.0);
  EXPECT_EQ(detail::CombinationCount(54, 23), 1085929983159840.0);
}

TEST(IntegerFunctions, DivisorsAndMultiples) {
  // clang-format off
  ExpectCalls({
      {"GCD", "24 [36 _] 60.9", "12"}, {"GCD", "0 0", "0"}, {"GCD", "4 'x'", "#VALUE!"}, {"GCD", "-4 'x'", "#VALUE!"},
      {"GCD", "4 -2", "#NUM!"}, {"GCD", "9007199254740992 2", "#NUM!"}, {"GCD", "", "#VALUE!"}, {"GCD", "6 '9'", "3"},
      {"LCM", "24.9 36.9", "72"}, {"LCM", "5 0", "0"}, {"LCM", "4 _", "0"}, {"LCM", "4 0 'x'", "#VALUE!"},
      {"LCM", "7 0 -1", "#NUM!"}, {"LCM", "94906267 94906266", "#NUM!"}, {"LCM", "[4 6;10 15]", "60"},
      {"QUOTIENT", "-7 2", "-3"}, {"QUOTIENT", "1 0", "#DIV/0!"}, {"QUOTIENT", "5e12 2", "2500000000000"},
      {"MROUND", "10 -3", "#NUM!"}, {"MROUND", "-10 -3", "-9"}, {"MROUND", "7.5 5", "10"},
      {"MROUND", "-7.5 -5", "-10"}, {"MROUND", "5 0", "0"}, {"MROUND", "0 -5", "0"},
      {"MROUND", "1e300 1e-300", "#NUM!"}, {"CEILING.MATH", "-4.1 2", "-4"}, {"CEILING.MATH", "-4.1 2 1", "-6"},
      {"CEILING.MATH", "2.5 -2", "4"}, {"CEILING.MATH", "6.1", "7"}, {"CEILING.MATH", "6.1 0", "0"},
      {"CEILING.MATH", "0.6 0.1", "0.6"}, {"CEILING.MATH", "3000000000.5", "3000000001"},
      {"CEILING.PRECISE", "-2.5 -2", "-2"}, {"ISO.CEILING", "22.25 10", "30"},
      {"CEILING.PRECISE", "2 'x'", "#VALUE!"}, {"FLOOR.PRECISE", "-3.2 -1", "-4"},
      {"FLOOR.PRECISE", "0.7 0.1", "0.7"}, {"FLOOR.MATH", "-8.1 2", "-10"}, {"FLOOR.MATH", "-8.1 2 -1", "-8"},
      {"FLOOR.MATH", "8.1 2 -1", "8"}, {"FLOOR.MATH", "3 0", "0"}, {"EVEN", "-1", "-2"}, {"EVEN", "2", "2"},
      {"EVEN", "0.1", "2"}, {"EVEN", "0", "0"}, {"EVEN", "5e9", "5000000000"}, {"ODD", "0", "1"},
      {"ODD", "-1.5", "-3"}, {"ODD", "-0.2", "-1"}, {"ODD", "2", "3"}, {"ODD", "3", "3"},
  });
  // clang-format on
}

TEST(IntegerFunctions, Numerals) {
  // clang-format off
  ExpectCalls({
      {"BASE", "255 16", "'FF'"}, {"BASE", "15.9 3.9 8.9", "'00000120'"}, {"BASE", "0 2", "'0'"},
      {"BASE", "35 36", "'Z'"}, {"BASE", "-1 2", "#NUM!"}, {"BASE", "5 1", "#NUM!"}, {"BASE", "5 37", "#NUM!"},
      {"BASE", "5 2 -1", "#NUM!"}, {"BASE", "5 2 1e9", "#NUM!"}, {"BASE", "9007199254740991 36", "'2GOSA7PA2GV'"},
      {"BASE", "9007199254740992 36", "#NUM!"}, {"DECIMAL", "'ff' 16", "255"}, {"DECIMAL", "101 2", "5"},
      {"DECIMAL", "'' 2", "0"}, {"DECIMAL", "'12' 2", "#NUM!"}, {"DECIMAL", "'-1' 10", "#NUM!"},
      {"DECIMAL", "'1' 1", "#NUM!"}, {"DECIMAL", "'1' 'x'", "#VALUE!"}, {"ROMAN", "3999", "'MMMCMXCIX'"},
      {"ROMAN", "499 4", "'CDXCIX'"}, {"ROMAN", "1.9", "'I'"}, {"ROMAN", "0", "#VALUE!"},
      {"ROMAN", "4000", "#VALUE!"}, {"ROMAN", "-1", "#VALUE!"}, {"ARABIC", "' mcmxii '", "1912"},
      {"ARABIC", "'-IV'", "-4"}, {"ARABIC", "''", "0"}, {"ARABIC", "'ABC'", "#VALUE!"}, {"ARABIC", "'   '", "0"},
      {"ARABIC", "'X-'", "#VALUE!"},
  });
  // clang-format on
  const std::string letters(255, 'M');
  EXPECT_EQ(Called("ARABIC", "'" + letters + "'"), "255000");
  EXPECT_EQ(Called("ARABIC", "'M" + letters + "'"), "#VALUE!");
  EXPECT_EQ(Called("DECIMAL", "'" + std::string(255, 'Z') + "' 36"), "#NUM!");
  EXPECT_EQ(Called("DECIMAL", "'0" + std::string(255, '1') + "' 2"), "#VALUE!");
}

TEST(IntegerFunctions, SumsOfSquaresAndSeries) {
  // clang-format off
  ExpectCalls({
      {"SUMSQ", "3 4", "25"}, {"SUMSQ", "3 TRUE '4' #N/A", "9"}, {"SUMSQ", "", "#VALUE!"},
      {"SUMSQ", "1e200", "#NUM!"}, {"SUMX2MY2", "[1 3] [2 1]", "5"}, {"SUMX2PY2", "[1 3] [2 1]", "15"},
      {"SUMXMY2", "[1 3] [2 1]", "5"}, {"SUMX2PY2", "[1 '2' _ 4] [3 4 5 #N/A]", "10"},
      {"SUMXMY2", "[1;3] [2 1]", "5"}, {"SUMXMY2", "[1 2] [1 2 3]", "#N/A"}, {"SUMXMY2", "5 3", "4"},
      {"SUMXMY2", "['x'] [1]", "0"}, {"SUMXMY2", "5", "#VALUE!"}, {"SERIESSUM", "2 0 1 [1 2;3 _]", "17"},
      {"SERIESSUM", "5 1 1 [1 1 0 1 1]", "3780"}, {"SERIESSUM", "2 0 1 ['x']", "#VALUE!"},
      {"SERIESSUM", "'x' 0 1 1", "#VALUE!"}, {"SERIESSUM", "10 300 10 [1 1]", "#NUM!"},
      {"SERIESSUM", "2 0 1", "#VALUE!"},
  });
  // clang-format on
}

}  // namespace

}  // namespace tessarine
