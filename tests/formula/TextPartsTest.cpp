#include <gtest/gtest.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(TextParts, BeforeAndAfterADelimiter) {
  const struct {
    const char* Args;
    const char* Before;
    const char* After;
  } cases[] = {
      {"'a-b-c' '-'", "'a'", "'b-c'"},
      {"'a-b-c' '-' 2", "'a-b'", "'c'"},
      {"'a-b-c' '-' -1", "'a-b'", "'c'"},
      {"'a-b-c' '-' -2", "'a'", "'b-c'"},
      {"'a-b-c' '-' 3", "#N/A", "#N/A"},
      {"'a-b-c' '-' 3 0 1", "'a-b-c'", "''"},
      {"'a-b-c' '-' -3 0 1", "''", "'a-b-c'"},
      {"'a-b-c' '-' 4 0 1 'none'", "'none'", "'none'"},
      {"'a-b-c' '-' 1 0 0 #REF!", "'a'", "'b-c'"},
      {"'a-b-c' '-' 0", "#VALUE!", "#VALUE!"},
      {"'a-b-c' '-' 6", "#VALUE!", "#VALUE!"},
      {"'a-b-c' '-' -6", "#VALUE!", "#VALUE!"},
      {"'' '-'", "#N/A", "#N/A"},
      {"'aXbxc' 'x'", "'aXb'", "'c'"},
      {"'aXbxc' 'x' 1 1", "'a'", "'bxc'"},
      {"'abc' ''", "''", "'abc'"},
      {"'abc' '' -1", "'abc'", "''"},
      {"'aaa' 'aa' -1", "'a'", "''"},
      {"'aaa' 'aa' 2", "#N/A", "#N/A"},
      {"'1,2;34' [';' ','] 2", "'1,2'", "'34'"},
      {"'1ab2' ['a' 'ab']", "'1'", "'2'"},
      {"'abc' 'b' 'x'", "#VALUE!", "#VALUE!"},
      {"'abc' 'b' 1 2", "#VALUE!", "#VALUE!"},
      {"#N/A '/'", "'#N'", "'A'"},  // an error is read as its text
      {"'abc'", "#VALUE!", "#VALUE!"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(testing::Called("TEXTBEFORE", row.Args), row.Before) << row.Args;
    EXPECT_EQ(testing::Called("TEXTAFTER", row.Args), row.After) << row.Args;
  }
}

TEST(TextParts, SplitAnswersItsFirstPart) {
  ExpectCalls({
      {"TEXTSPLIT", "'a,b;c' ','", "'a'"},
      {"TEXTSPLIT", "'a;b,c' ',' ';'", "'a'"},
      {"TEXTSPLIT", "',,b' ','", "''"},
      {"TEXTSPLIT", "',;b,c' ',' ';' TRUE", "'b'"},
      {"TEXTSPLIT", "',,' ',' ';' TRUE", "#VALUE!"},
      {"TEXTSPLIT", "'axbXc' 'X' ';' FALSE 1", "'a'"},
      {"TEXTSPLIT", "'abc' ''", "#VALUE!"},
      {"TEXTSPLIT", "'abc' ['x' 'b']", "'a'"},
      {"TEXTSPLIT", "#N/A '/'", "'#N'"},
  });
}

TEST(TextParts, NumbersAsTextsAndBack) {
  ExpectCalls({
      {"FIXED", "1234.567", "'1234.57'"},
      {"FIXED", "1.005 2", "'1.01'"},
      {"FIXED", "1234.567 -2", "'1200'"},
      {"FIXED", "-4 -1", "'0'"},
      {"FIXED", "1234 -400", "'0'"},
      {"FIXED", "0.5 0.9", "'1'"},
      {"FIXED", "'2.5' 3", "'2.500'"},
      {"FIXED", "1 127",
       "'1."
       "0000000000000000000000000000000000000000000000000000000000000000"
       "000000000000000000000000000000000000000000000000000000000000000'"},
      {"FIXED", "1 128", "#VALUE!"},
      {"FIXED", "'x'", "#VALUE!"},
      {"FIXED", "1 'x'", "#VALUE!"},
      {"DOLLAR", "1234.567", "'$1234.57'"},
      {"DOLLAR", "-1.5 1", "'$-1.5'"},
      {"DOLLAR", "#N/A", "#VALUE!"},
      {"NUMBERVALUE", "' 1 234,5'", "12345"},
      {"NUMBERVALUE", "'1.234.567,89' ',' '.'", "1234567.89"},
      {"NUMBERVALUE", "'2.5%%'", "0.00025"},
      {"NUMBERVALUE", "''", "0"},
      {"NUMBERVALUE", "'%'", "#VALUE!"},
      {"NUMBERVALUE", "'1.5,0'", "#VALUE!"},
      {"NUMBERVALUE", "'1.5.0'", "#VALUE!"},
      {"NUMBERVALUE", "'1.5' ',' ' '", "#VALUE!"},
      {"NUMBERVALUE", "'1e3'", "1000"},
      {"NUMBERVALUE", "'1' ''", "#VALUE!"},
      {"NUMBERVALUE", "#REF!", "#VALUE!"},
  });
}

TEST(TextParts, CharactersAndValues) {
  ExpectCalls({
      {"UNICHAR", "128512", "'\U0001F600'"},
      {"UNICHAR", "65.9", "'A'"},
      {"UNICHAR", "0", "#VALUE!"},
      {"UNICHAR", "1114112", "#VALUE!"},
      {"UNICHAR", "55296", "#N/A"},
      {"UNICHAR", "65535", "'\uFFFF'"},
      {"UNICODE", "'\U0001F600x'", "128512"},
      {"UNICODE", "'\U0010FFFF'", "1114111"},
      {"UNICODE", "'Ab'", "65"},
      {"UNICODE", "''", "#VALUE!"},
      {"UNICODE", "#N/A", "35"},
      {"T", "'x'", "'x'"},
      {"T", "1", "''"},
      {"T", "_", "''"},
      {"T", "['x' 'y']", "'x'"},
      {"T", "#NUM!", "#NUM!"},
      {"VALUETOTEXT", "'a\"b' 1", "'\"a\"\"b\"'"},
      {"VALUETOTEXT", "'a\"b'", "'a\"b'"},
      {"VALUETOTEXT", "1.5 1", "'1.5'"},
      {"VALUETOTEXT", "#N/A", "'#N/A'"},
      {"VALUETOTEXT", "1 2", "#VALUE!"},
      {"VALUETOTEXT", "1 'x'", "#VALUE!"},
      {"ARRAYTOTEXT", "[1 'a';_ TRUE]", "'1, a, , TRUE'"},
      {"ARRAYTOTEXT", "[1 'a';_ TRUE] 1", "'{1,\"a\";,TRUE}'"},
      {"ARRAYTOTEXT", "'a' 1", "'{\"a\"}'"},
      {"ARRAYTOTEXT", "[1 2] 3", "#VALUE!"},
  });
}

}  // namespace

}  // namespace tessarine
