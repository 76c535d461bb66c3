#include <gtest/gtest.h>

#include <random>
#include <string>

#include <tessarine/formula/library/detail/RecordFilter.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

/// Called with the database of an orchard ahead of AArgs, which are field and criteria.
std::string Orchard(const std::string& AName, const std::string& AArgs) {
  return testing::Called(AName,
                         "['Tree' 'Height' 'Age' 'Yield';'Apple' 18 20 14;'Pear' 12 12 10;'Cherry' 13 14 9;"
                         "'apple' 14 _ '10';'Pear' 9 8 'none';'Apple' 8 9 #N/A] " +
                             AArgs);
}

TEST(Database, RecordsFieldsAndCriteria) {
  const struct {
    const char* Name;
    const char* Args;
    const char* Result;
  } cases[] = {
      // fields
      {"DSUM", "'height' 0", "74"},
      {"DSUM", "2.9 0", "74"},
      {"DSUM", "'2' 0", "74"},
      {"DSUM", "0 0", "#VALUE!"},
      {"DSUM", "5 0", "#VALUE!"},
      {"DSUM", "'Width' 0", "#VALUE!"},
      {"DSUM", "#N/A 0", "#VALUE!"},
      // criteria: rows are alternatives, cells of a row hold together
      {"DSUM", "'Height' ['Tree';'apple']", "40"},
      {"DSUM", "'Height' ['Tree';'Apple';'Cherry']", "53"},
      {"DSUM", "'Height' ['Tree' 'HEIGHT' 'Height';'Apple' '>10' '<16']", "14"},
      {"DSUM", "'Height' ['Tree' 'Height';'Apple' '>15';_ '<9']", "26"},
      {"DSUM", "'Height' ['Tree' 'Height';'Apple' '>15';_ _]", "74"},
      {"DSUM", "'Height' ['Tree' 'Colour';'Apple' 'red']", "0"},
      {"DSUM", "'Height' ['Tree' 'Colour';'Apple' 'red';'Pear' _]", "21"},
      {"DSUM", "'Height' ['Tree' 'Colour']", "74"},
      {"DSUM", "'Height' 'Tree'", "74"},
      {"DSUM", "'Height' ['Tree';'A*']", "0"},
      {"DSUM", "'Height' ['Age';0]", "14"},
      {"DSUM", "'Height' ['Age';'']", "14"},
      {"DSUM", "'Height' ['Yield';'<>10']", "48"},
      // values
      {"DCOUNT", "'Yield' 0", "4"},
      {"DCOUNT", "'Age' 0", "6"},
      {"DCOUNTA", "'Age' 0", "5"},
      {"DCOUNTA", "'Yield' 0", "6"},
      {"DAVERAGE", "'Yield' 0", "10.75"},
      {"DAVERAGE", "'Tree' 0", "#DIV/0!"},
      {"DMAX", "'Age' 0", "20"},
      {"DMIN", "'Age' 0", "0"},
      {"DMIN", "'Tree' 0", "0"},
      {"DPRODUCT", "'Height' ['Tree';'Pear']", "108"},
      {"DPRODUCT", "'Tree' 0", "0"},
      {"DSTDEV", "'Height' ['Tree';'Pear']", "2.12132034355964"},
      {"DSTDEVP", "'Height' ['Tree';'Pear']", "1.5"},
      {"DVAR", "'Height' ['Tree';'Pear']", "4.5"},
      {"DVARP", "'Height' ['Tree';'Cherry']", "0"},
      {"DVAR", "'Height' ['Tree';'Cherry']", "#DIV/0!"},
      {"DVARP", "'Tree' 0", "#DIV/0!"},
      {"DGET", "'Yield' ['Tree';'Cherry']", "9"},
      {"DGET", "'Yield' ['Age';'8']", "'none'"},
      {"DGET", "'Yield' ['Tree';'Pear']", "#NUM!"},
      {"DGET", "'Yield' ['Tree';'Plum']", "#VALUE!"},
      {"DGET", "'Yield' ['Height';8]", "#N/A"},
  };
  for (const auto& row : cases) EXPECT_EQ(Orchard(row.Name, row.Args), row.Result) << row.Name << " " << row.Args;
  EXPECT_EQ(testing::Called("DSUM", "5 1 0"), "#VALUE!");
  EXPECT_EQ(testing::Called("DSUM", "[] 1 0"), "#VALUE!");
  EXPECT_EQ(testing::Called("DSUM", "['a';1] 1"), "#VALUE!");
  EXPECT_EQ(testing::Called("DSUM", "['a'] 1 0"), "0");
}

/// Rows of random values under the names a, b and c.
std::string RandomRows(std::mt19937& ARandom, int ARows, std::initializer_list<const char*> AValues) {
  std::string text = "['a' 'b' 'C'";
  for (int row = 0; row < ARows; ++row) {
    for (int col = 0; col < 3; ++col) {
      text += (col == 0 ? ";" : " ") + std::string(AValues.begin()[ARandom() % AValues.size()]);
    }
  }
  return text + "]";
}

TEST(Database, FiledCriteriaPassTheSameRecordsAsPlainOnes) {
  std::mt19937 random(7);
  int passed = 0;
  int failed = 0;
  for (int round = 0; round < 60; ++round) {
    const std::string database = RandomRows(
        random, 40, {"_", "''", "0", "1", "2.5", "'2.5'", "'x'", "'X'", "'1x'", "TRUE", "'true'", "#N/A", "-0", "3"});
    const std::string criteria = RandomRows(random, round % 2 == 0 ? 6 : 90,
                                            {"'>1'", "'<=2.5'", "'<0'", "'>=3'", "'>x'", "1", "'=2.50'", "'=x'", "'1X'",
                                             "TRUE", "'#n/a'", "'<>1'", "'='", "''", "0", "3", "'zz'", "'>2'", "'<1'"});
    const auto args = testing::ArgsOf(database + " " + criteria);
    const detail::TRecordFilter filter(args[0], args[1]);
    const auto expected = filter.PassingPlain();
    ASSERT_EQ(filter.Passing(), expected) << database << criteria;
    for (const uint8_t passes : expected) ++(passes ? passed : failed);
  }
  EXPECT_TRUE(passed > 100 && failed > 100) << passed << ' ' << failed;
}

}  // namespace

}  // namespace tessarine
