#include <gtest/gtest.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(LogicFunctions, AndOrXorFlattenAndStopAtNothing) {
  ExpectCalls({
      {"AND", "", "#VALUE!"},
      {"AND", "TRUE 1 'FALSE'", "TRUE"},  // any text but "" is true
      {"AND", "TRUE ''", "FALSE"},
      {"AND", "[TRUE _]", "FALSE"},
      {"AND", "[_ TRUE]", "FALSE"},
      {"AND", "TRUE #N/A", "FALSE"},
      {"AND", "fn", "FALSE"},
      {"AND", "[]", "TRUE"},
      {"OR", "", "#VALUE!"},
      {"OR", "[_ #N/A;0 '']", "FALSE"},
      {"OR", "[_ #N/A;0 'x']", "TRUE"},
      {"OR", "#N/A TRUE", "TRUE"},
      {"XOR", "", "#VALUE!"},
      {"XOR", "[TRUE 1;'x' _] #N/A", "TRUE"},
      {"XOR", "TRUE -1", "FALSE"},
      {"NOT", "", "#VALUE!"},
      {"NOT", "#N/A", "TRUE"},
      {"NOT", "[0.5 0]", "FALSE"},
      {"NOT", "_", "TRUE"},
      {"TRUE", "1 2", "TRUE"},
      {"FALSE", "", "FALSE"},
  });
}

TEST(LogicFunctions, ChoicesAmongEvaluatedValues) {
  ExpectCalls({
      {"IF", "TRUE", "#VALUE!"},
      {"IF", "'x' 1 2", "1"},
      {"IF", "0 1", "FALSE"},
      {"IF", "_ 1 [7 8]", "7"},
      {"IF", "#DIV/0! 1 2", "#DIV/0!"},
      {"IFERROR", "#N/A", "#VALUE!"},
      {"IFERROR", "#N/A 5", "5"},
      {"IFERROR", "3 5", "3"},
      {"IFNA", "#N/A 5", "5"},
      {"IFNA", "#REF! 5", "#REF!"},
      {"IFNA", "_ 5", "_"},
      {"IFS", "", "#N/A"},
      {"IFS", "0 1 #N/A 2 'x' 3", "3"},
      {"IFS", "0 1 TRUE", "#N/A"},
      {"CHOOSE", "1", "#VALUE!"},
      {"CHOOSE", "2.9 'a' 'b'", "'b'"},
      {"CHOOSE", "0.9 'a'", "#VALUE!"},
      {"CHOOSE", "3 'a' 'b'", "#VALUE!"},
      {"CHOOSE", "'x' 'a'", "#VALUE!"},
      {"CHOOSE", "TRUE [5 6]", "5"},
      {"CHOOSE", "1e300 1", "#VALUE!"},
  });
}

TEST(LogicFunctions, SwitchComparesTextsAndNumbers) {
  ExpectCalls({
      {"SWITCH", "1 2", "#VALUE!"},
      {"SWITCH", "'AB' 'x' 1 'ab' 2", "2"},
      {"SWITCH", "1 '1.0' 5", "5"},
      {"SWITCH", "_ 0 5", "5"},
      {"SWITCH", "_ '' 5", "5"},
      {"SWITCH", "TRUE 1 5", "5"},
      {"SWITCH", "#N/A '#N/A' 5 6", "5"},
      {"SWITCH", "3 1 10 2 20", "#N/A"},
      {"SWITCH", "3 1 10 2 20 [30 40]", "30"},
      {"SWITCH", "1 [1 9] 'first of a range'", "'first of a range'"},
  });
}

TEST(InformationFunctions, KindsOfTheFirstValue) {
  struct TRow {
    const char* Name;
    const char* Results;  // for: _ '' 1 TRUE #N/A #REF! [_ 1] fn
  };
  const char* const values[] = {"_", "''", "1", "TRUE", "#N/A", "#REF!", "[_ 1]", "fn"};
  const TRow rows[] = {
      {"ISBLANK", "10000011"},  {"ISERROR", "00001100"}, {"ISERR", "00000100"},     {"ISNA", "00001000"},
      {"ISNUMBER", "00100000"}, {"ISTEXT", "01000000"},  {"ISLOGICAL", "00010000"}, {"ISNONTEXT", "10111111"},
  };
  for (const TRow& row : rows) {
    EXPECT_EQ(testing::Called(row.Name, ""), "#VALUE!") << row.Name;
    for (size_t i = 0; i < std::size(values); ++i) {
      EXPECT_EQ(testing::Called(row.Name, values[i]), row.Results[i] == '1' ? "TRUE" : "FALSE")
          << row.Name << "(" << values[i] << ")";
    }
  }
}

TEST(InformationFunctions, NumbersOfValues) {
  ExpectCalls({
      {"ISEVEN", "2.9", "TRUE"},
      {"ISEVEN", "-3.5", "FALSE"},
      {"ISEVEN", "_", "TRUE"},
      {"ISEVEN", "'x'", "#VALUE!"},
      {"ISEVEN", "1e300", "TRUE"},
      {"ISODD", "-3.5", "TRUE"},
      {"ISODD", "'7'", "TRUE"},
      {"ISODD", "#N/A", "#VALUE!"},
      {"ISODD", "", "#VALUE!"},
      {"N", "", "0"},
      {"N", "'7'", "0"},
      {"N", "TRUE", "1"},
      {"N", "#REF!", "#REF!"},
      {"N", "[2.5 3]", "2.5"},
      {"N", "_", "0"},
      {"NA", "1", "#N/A"},
      {"TYPE", "_", "1"},
      {"TYPE", "1", "1"},
      {"TYPE", "''", "2"},
      {"TYPE", "TRUE", "4"},
      {"TYPE", "#NUM!", "16"},
      {"TYPE", "['a' 1]", "2"},
      {"TYPE", "", "#VALUE!"},
      {"TYPE", "fn", "1"},
  });
}

}  // namespace

}  // namespace tessarine
