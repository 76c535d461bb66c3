#include <gtest/gtest.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(RegexFunctions, ExtractMatchAndReplace) {
  ExpectCalls({
      {"REGEXEXTRACT", "'ab12' '[0-9]+'", "'12'"},
      {"REGEXEXTRACT", "'ab12' 'b([0-9])'", "'1'"},
      {"REGEXEXTRACT", "'b' '(a)?b'", "''"},
      {"REGEXEXTRACT", "'ab' 'x'", "#N/A"},
      {"REGEXEXTRACT", "1234.5 '[.].*'", "'.5'"},
      {"REGEXEXTRACT", "['x1' 'x2';'x3' _] 'x(.)'", "'1'"},
      {"REGEXEXTRACT", "'a' '('", "#VALUE!"},
      {"REGEXEXTRACT", "#DIV/0! #N/A", "#DIV/0!"},
      {"REGEXEXTRACT", "'a'", "#VALUE!"},
      {"REGEXMATCH", "'ABC' 'abc'", "FALSE"},
      {"REGEXTEST", "'xABCx' '(?i)abc'", "TRUE"},
      {"REGEXMATCH", "'x' '('", "#VALUE!"},
      {"REGEXMATCH", "'aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab' '(a+)+$'", "#VALUE!"},
      {"REGEXMATCH", "_ '^$'", "TRUE"},
      {"REGEXMATCH", "'x' #REF!", "#REF!"},
      {"REGEXREPLACE", "'a1b22' '[0-9]+' '#'", "'a#b#'"},
      {"REGEXREPLACE", "'John Smith' '(\\w+) (\\w+)' '$2, $1'", "'Smith, John'"},
      {"REGEXREPLACE", "'abc' 'x' 'y'", "'abc'"},
      {"REGEXREPLACE", "'abc' 'b' '$7'", "#VALUE!"},
      {"REGEXREPLACE", "'abc' 'b' #N/A", "#N/A"},
      {"REGEXREPLACE", "'abc' 'b'", "#VALUE!"},
  });
}

TEST(RegexFunctions, TextChecks) {
  const struct {
    const char* Text;
    bool IsEmail, IsUrl;
  } cases[] = {
      {"''", false, false},         {"'a@b.'", true, true},      {"'a@b@c.d'", false, true},
      {"'@b.c'", false, true},      {"'a.b@c'", false, true},    {"'a @b.c'", false, false},
      {"'a@.'", true, true},        {"'word'", false, false},    {"'http://x'", false, true},
      {"'HTTPS://x'", false, true}, {"'http:/x'", false, false}, {"'  x.org '", false, true},
      {"' a@b.c'", false, true},    {"1.5", false, true},        {"_", false, false},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(testing::Called("ISEMAIL", row.Text), row.IsEmail ? "TRUE" : "FALSE") << row.Text;
    EXPECT_EQ(testing::Called("ISURL", row.Text), row.IsUrl ? "TRUE" : "FALSE") << row.Text;
  }
  ExpectCalls({{"ISEMAIL", "#N/A", "#N/A"}, {"ISURL", "#REF!", "#REF!"}, {"ISURL", "", "#VALUE!"}});
}

TEST(RegexFunctions, JoinKeepsEmptyPieces) {
  ExpectCalls({
      {"JOIN", "'-' 'a' 'b'", "'a-b'"},
      {"JOIN", "'-' [1 _;'' TRUE] _", "'1---TRUE-'"},
      {"JOIN", "'-' [1 #N/A]", "'1-#N/A'"},
      {"JOIN", "'-' 1 [#N/A 1]", "#N/A"},
      {"JOIN", "'' [1 _;_ 2] _ 'a'", "'12a'"},
      {"JOIN", "#REF! 1", "#REF!"},
      {"JOIN", "', '", "', '"},
      {"JOIN", "", "#VALUE!"},
  });
  const TFormulaArg wide = TFormulaArg::FromRange(std::vector<TCellValue>(2000), 2000, 1);
  const std::vector<TFormulaArg> args = {TFormulaArg::FromScalar(TCellValue::FromText(std::u16string(1000, u'x'))),
                                         wide};
  EXPECT_EQ(testing::Shown(FindFunction(u"JOIN")->Body(args, {})), "#VALUE!");
}

TEST(RegexFunctions, ArrayConstrain) {
  const struct {
    const char* Args;
    int32_t Rows, Cols;  // 0: one value
    const char* First;
  } cases[] = {
      {"[1 2 3;4 5 6;7 8 9] 2 10", 2, 3, "1"}, {"[1 2 3;4 5 6;7 8 9] 1.9 1", 1, 1, "1"},
      {"[#N/A 2] 1 2", 1, 2, "#N/A"},          {"7 3 3", 1, 1, "7"},
      {"[1 2] 0 1", 0, 0, "#VALUE!"},          {"[1 2] 1 0.5", 0, 0, "#VALUE!"},
      {"[1 2] 'x' 1", 0, 0, "#VALUE!"},        {"[1 2] #REF! 1", 0, 0, "#REF!"},
      {"#DIV/0! 1 1", 0, 0, "#DIV/0!"},        {"[1 2] 1", 0, 0, "#VALUE!"},
  };
  for (const auto& row : cases) {
    const TFormulaArg result = FindFunction(u"ARRAY_CONSTRAIN")->ArrayBody(testing::ArgsOf(row.Args), {});
    EXPECT_EQ(result.RowCount, row.Rows) << row.Args;
    EXPECT_EQ(result.ColCount, row.Cols) << row.Args;
    EXPECT_EQ(testing::Shown(result.First()), row.First) << row.Args;
  }
}

}  // namespace

}  // namespace tessarine
