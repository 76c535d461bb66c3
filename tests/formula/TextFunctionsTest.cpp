#include <gtest/gtest.h>

#include <random>
#include <string>

#include <tessarine/formula/library/detail/TextSearch.h>
#include <tessarine/platform/Locale.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

TCellValue Call(std::u16string_view AName, std::vector<TCellValue> AValues) {
  std::vector<TFormulaArg> args;
  for (TCellValue& value : AValues) args.push_back(TFormulaArg::FromScalar(std::move(value)));
  return EvaluateFunction(AName, args, {});
}

TCellValue Text(const std::u16string& AText) { return TCellValue::FromText(AText); }
TCellValue Number(double ANumber) { return TCellValue::FromNumber(ANumber); }

TEST(TextFunctions, RefuseTooFewArgumentsAndWhatIsNoNumber) {
  for (const char* name : {"LEFT", "RIGHT", "MID", "UPPER", "LOWER", "PROPER", "TRIM", "EXACT", "REPT", "FIND",
                           "SEARCH", "SUBSTITUTE", "REPLACE", "VALUE", "TEXT", "CHAR", "CODE", "CLEAN", "TEXTJOIN"}) {
    EXPECT_EQ(Called(name, ""), "#VALUE!") << name;
  }
  ExpectCalls({
      {"LEN", "", "0"},
      {"MID", "'abc' 1", "#VALUE!"},
      {"MID", "'abc' 'x' 1", "#VALUE!"},
      {"MID", "'abc' 1 #N/A", "#VALUE!"},
      {"EXACT", "'a'", "#VALUE!"},
      {"REPT", "'a'", "#VALUE!"},
      {"REPT", "'a' 'x'", "#VALUE!"},
      {"FIND", "'a'", "#VALUE!"},
      {"FIND", "'a' 'a' 'x'", "#VALUE!"},
      {"SUBSTITUTE", "'a' 'a'", "#VALUE!"},
      {"SUBSTITUTE", "'a' 'a' 'b' 'x'", "#VALUE!"},
      {"REPLACE", "'abc' 1 1", "#VALUE!"},
      {"REPLACE", "'abc' 'x' 1 ''", "#VALUE!"},
      {"TEXT", "1", "#VALUE!"},
      {"TEXTJOIN", "',' TRUE", "#VALUE!"},
      {"CHAR", "'x'", "#VALUE!"},
      {"CODE", "''", "#VALUE!"},
      {"CODE", "_", "#VALUE!"},
  });
}

TEST(TextFunctions, ReadAnyValueByItsDisplayText) {
  ExpectCalls({
      {"LEN", "TRUE", "4"},
      {"LEN", "1.2e20", "6"},
      {"LEN", "#N/A", "4"},
      {"LEN", "_", "0"},
      {"LEN", "['abcd' 'x']", "4"},
      {"LEN", "[]", "0"},
      {"LEN", "fn", "0"},
      {"LEN", "'\xF0\x9F\x98\x80'", "2"},
      {"LEFT", "1234.5 3", "'123'"},
      {"MID", "TRUE 2 2", "'RU'"},
      {"CONCAT", "#N/A 1 TRUE _ 'x'", "'#N/A1TRUEx'"},
      {"EXACT", "1 '1'", "TRUE"},
      {"CODE", "#N/A", "35"},
  });
}

TEST(TextFunctions, PartsOfTexts) {
  ExpectCalls({
      {"LEFT", "'abc'", "'a'"},
      {"LEFT", "'abc' 2.9", "'ab'"},
      {"LEFT", "'abc' 'x'", "'a'"},
      {"LEFT", "'abc' #N/A", "'a'"},
      {"LEFT", "'abc' _", "''"},
      {"LEFT", "'abc' -1", "''"},
      {"LEFT", "'abc' 1e300", "'abc'"},
      {"LEFT", "'' 5", "''"},
      {"RIGHT", "'abc'", "'c'"},
      {"RIGHT", "'abc' 2", "'bc'"},
      {"RIGHT", "'abc' -5", "''"},
      {"RIGHT", "'abc' 3", "'abc'"},
      {"RIGHT", "'abc' 1e300", "'abc'"},
      {"RIGHT", "'abc' 'x'", "'c'"},
      {"MID", "'abc' 2 1", "'b'"},
      {"MID", "'abc' 2 99", "'bc'"},
      {"MID", "'abc' 4 1", "''"},
      {"MID", "'abc' 1e300 1e300", "''"},
      {"MID", "'abc' 0 1", "#VALUE!"},
      {"MID", "'abc' 0.9 1", "#VALUE!"},
      {"MID", "'abc' 1 -1", "#VALUE!"},
      {"MID", "'abc' 1 -0.9", "''"},
      {"TRIM", "'  a  b '", "'a  b'"},
      {"TRIM", "'\t\n a\r'", "'a'"},
      {"TRIM", "'   '", "''"},
      {"TRIM",
       "'\xC2\xA0"
       "a'",
       "'\xC2\xA0"
       "a'"},
      {"CLEAN", "'a\tb\nc d\x7F'", "'abc d\x7F'"},
      {"CLEAN", "'\x1F'", "''"},
  });
}

TEST(TextFunctions, CaseKnowsTheLettersAToZ) {
  ExpectCalls({
      {"UPPER", "'aZ\xC3\xA9_1'", "'AZ\xC3\xA9_1'"},
      {"LOWER", "'aZ\xC3\x89[`'", "'az\xC3\x89[`'"},
      {"PROPER", "'2nd o'", "'2nd O'"},
      {"PROPER", "'hELLO wORLD-x_y z9a'", "'Hello World-X_Y Z9a'"},
      {"PROPER", "'\xC3\xA9t\xC3\xA9'", "'\xC3\xA9T\xC3\xA9'"},
      {"EXACT", "'a' 'A'", "FALSE"},
      {"EXACT", "_ ''", "TRUE"},
  });
  EXPECT_EQ(Call(u"PROPER", {Text(u"o'neil")}), Text(u"O'Neil"));
}

TEST(TextFunctions, TextsThatStayAsTheyAreAreShared) {
  const TCellValue text = Text(u"ABC 123");
  const std::vector<std::pair<std::u16string_view, std::vector<TCellValue>>> calls = {
      {u"UPPER", {text}},
      {u"TRIM", {text}},
      {u"CLEAN", {text}},
      {u"LEFT", {text, Number(7)}},
      {u"RIGHT", {text, Number(9)}},
      {u"MID", {text, Number(1), Number(7)}},
      {u"SUBSTITUTE", {text, Text(u"x"), Text(u"y")}},
      {u"REPT", {text, Number(1)}},
  };
  for (const auto& [name, args] : calls) {
    const TCellValue result = Call(name, args);
    EXPECT_EQ(result.Text.Block(), text.Text.Block()) << TText(name).ToUtf8();
  }
}

TEST(TextFunctions, Joining) {
  ExpectCalls({
      {"CONCAT", "'a' ['b' 2;TRUE _] 'c'", "'ab2TRUEc'"},
      {"CONCATENATE", "1 [2 3]", "'123'"},
      {"CONCAT", "[]", "''"},
      {"TEXTJOIN", "',' TRUE 'a' '' _ 'b'", "'a,b'"},
      {"TEXTJOIN", "',' FALSE 'a' '' _ 'b'", "'a,,,b'"},
      {"TEXTJOIN", "',' FALSE _ _", "','"},
      {"TEXTJOIN", "',' 'FALSE' ['' 'x';_ 1.5]", "'x,1.5'"},
      {"TEXTJOIN", "'' FALSE 'a' _ 'b'", "'ab'"},
      {"TEXTJOIN", "1 0 'a' 2 3", "'a1213'"},
      {"TEXTJOIN", "['-' 'x'] TRUE #REF! 1", "'#REF!-1'"},
      {"TEXTJOIN", "',' TRUE _ ''", "''"},
      {"TEXTJOIN", "',' TRUE []", "''"},
      {"REPT", "'ab' 3", "'ababab'"},
      {"REPT", "'a' 0", "''"},
      {"REPT", "'a' 2.9", "'aa'"},
      {"REPT", "'a' -0.5", "''"},
      {"REPT", "'a' -1", "#VALUE!"},
      {"REPT", "'' 1e300", "''"},
      {"REPT", "'-' '3'", "'---'"},
  });
}

TEST(TextFunctions, FindAndSearch) {
  ExpectCalls({
      {"FIND", "'b' 'abcb'", "2"},
      {"FIND", "'b' 'abcb' 3", "4"},
      {"FIND", "'B' 'abcb'", "#VALUE!"},
      {"FIND", "'b' 'abcb' 5", "#VALUE!"},
      {"FIND", "'b' 'abcb' 1e300", "#VALUE!"},
      {"FIND", "'b' 'abcb' 0", "#VALUE!"},
      {"FIND", "'b' 'abcb' -3", "#VALUE!"},
      {"FIND", "'' 'abcb'", "#VALUE!"},
      {"FIND", "'abcbx' 'abcb'", "#VALUE!"},
      {"FIND", "2 12.5", "2"},
      {"SEARCH", "'B' 'abcb'", "2"},
      {"SEARCH", "'b?' 'abcb b?'", "6"},
      {"SEARCH", "'*' 'ab'", "#VALUE!"},
      {"SEARCH", "'C\xC3\x89' 'abc\xC3\xA9'", "#VALUE!"},
      {"SEARCH", "'c\xC3\x89' 'abC\xC3\x89'", "3"},
      {"SEARCH", "'' 'ab'", "#VALUE!"},
      {"SEARCH", "'a' 'ab' 0.5", "#VALUE!"},
  });
}

TEST(TextFunctions, SubstituteAndReplace) {
  ExpectCalls({
      {"SUBSTITUTE", "'banana' 'an' 'AN'", "'bANANa'"},
      {"SUBSTITUTE", "'banana' 'AN' 'x'", "'banana'"},
      {"SUBSTITUTE", "'banana' 'a' ''", "'bnn'"},
      {"SUBSTITUTE", "'banana' 'a' 'long'", "'blongnlongnlong'"},
      {"SUBSTITUTE", "'banana' 'a' '*' 2", "'ban*na'"},
      {"SUBSTITUTE", "'banana' 'a' '*' 4", "'banana'"},
      {"SUBSTITUTE", "'banana' 'a' '*' 0", "'banana'"},
      {"SUBSTITUTE", "'banana' 'a' '*' -1", "'banana'"},
      {"SUBSTITUTE", "'banana' 'a' '*' 1e300", "'banana'"},
      {"SUBSTITUTE", "'aaaa' 'aa' 'b' 2", "'aab'"},
      {"SUBSTITUTE", "'aaa' 'aa' 'b'", "'ba'"},
      {"SUBSTITUTE", "'abc' '' 'x'", "'abc'"},
      {"SUBSTITUTE", "1231 1 9", "'9239'"},
      {"REPLACE", "'abcdef' 2 3 '*'", "'a*ef'"},
      {"REPLACE", "'abc' 1 0 '*'", "'*abc'"},
      {"REPLACE", "'abc' 9 5 '*'", "'abc*'"},
      {"REPLACE", "'abc' 2 1e300 ''", "'a'"},
      {"REPLACE", "'abc' 1e300 1e300 '*'", "'abc*'"},
      {"REPLACE", "'abc' 3 -1 '*'", "'ab*bc'"},
      {"REPLACE", "'abc' 2 -1e300 '*'", "'a*abc'"},
      {"REPLACE", "'abc' 0 1 '*'", "#VALUE!"},
      {"REPLACE", "12345 2 1 'x'", "'1x345'"},
  });
}

TEST(TextFunctions, NumbersAndCodes) {
  ExpectCalls({
      {"VALUE", "' 12.5 '", "12.5"},
      {"VALUE", "_", "0"},
      {"VALUE", "TRUE", "1"},
      {"VALUE", "''", "#VALUE!"},
      {"VALUE", "'5%'", "#VALUE!"},
      {"VALUE", "'1,000'", "#VALUE!"},
      {"VALUE", "'2024-01-01'", "#VALUE!"},
      {"VALUE", "#N/A", "#VALUE!"},
      {"TEXT", "1234.567 '#,##0.00'", "'1,234.57'"},
      {"TEXT", "'0.5' '0%'", "'50%'"},
      {"TEXT", "TRUE '0.0'", "'1.0'"},
      {"TEXT", "'abc' '0.0'", "'abc'"},
      {"TEXT", "#N/A '0.0'", "'#N/A'"},
      {"TEXT", "45000 'yyyy-mm-dd'", "'2023-03-15'"},
      {"CHAR", "65", "'A'"},
      {"CHAR", "255.9", "'\xC3\xBF'"},
      {"CHAR", "128", "'\xC2\x80'"},
      {"CHAR", "256", "#VALUE!"},
      {"CHAR", "0.9", "#VALUE!"},
      {"CHAR", "1e300", "#VALUE!"},
      {"CODE", "'ABC'", "65"},
      {"CODE", "'\xE2\x82\xAC'", "8364"},
      {"CODE", "'\xF0\x9F\x98\x80'", "55357"},
  });
}

TEST(TextFunctions, TextsReadUnderTheLocaleInForce) {
  TFormatSettings settings;
  settings.DecimalSeparator = u',';
  settings.GroupSeparator = u'.';
  SetDefaultFormatSettings(settings);
  EXPECT_EQ(Called("VALUE", "'1,5'"), "1.5");
  EXPECT_EQ(Called("VALUE", "'1.5'"), "#VALUE!");
  EXPECT_EQ(Called("TEXT", "1.5 '0.00'"), "'1,50'");
  SetDefaultFormatSettings({});
  EXPECT_EQ(Called("VALUE", "'1,5'"), "#VALUE!");
}

TEST(TextFunctions, TooLongResultsAreRefusedBeforeTheyAreMade) {
  const TCellValue half = Call(u"REPT", {Text(u"x"), Number(kMaxGeneratedText / 2)});
  ASSERT_EQ(half.Text.Length(), kMaxGeneratedText / 2);
  const TCellValue error = TCellValue::FromError(ceValue);
  EXPECT_EQ(Call(u"REPT", {Text(u"x"), Number(kMaxGeneratedText)}).Text.Length(), kMaxGeneratedText);
  EXPECT_EQ(Call(u"REPT", {Text(u"x"), Number(kMaxGeneratedText + 1)}), error);
  EXPECT_EQ(Call(u"REPT", {Text(u"xy"), Number(1e18)}), error);
  EXPECT_EQ(Call(u"REPT", {half, half}), error);
  EXPECT_EQ(Call(u"CONCAT", {half, half}).Text.Length(), kMaxGeneratedText);
  EXPECT_EQ(Call(u"CONCAT", {half, half, Number(1)}), error);
  EXPECT_EQ(Call(u"TEXTJOIN", {Text(u""), Number(0), half, half}).Text.Length(), kMaxGeneratedText);
  EXPECT_EQ(Call(u"TEXTJOIN", {Text(u","), Number(0), half, half}), error);
  EXPECT_EQ(Call(u"SUBSTITUTE", {half, Text(u"x"), Text(u"yy")}).Text.Length(), kMaxGeneratedText);
  EXPECT_EQ(Call(u"SUBSTITUTE", {half, Text(u"x"), half}), error);
  EXPECT_EQ(Call(u"SUBSTITUTE", {half, Text(u"x"), Text(u"yyy")}), error);
  EXPECT_EQ(Call(u"REPLACE", {half, Number(9), Number(0), half}).Text.Length(), kMaxGeneratedText);
  EXPECT_EQ(Call(u"REPLACE", {half, Number(9), Number(-1), half}), error);
}

// Each case would take minutes if every place were compared anew.
TEST(TextFunctions, RepetitiveLongTextsAreSearchedInLinearTime) {
  const std::u16string text(1'000'000, u'a');
  std::u16string needle(500'000, u'a');
  needle.back() = u'b';
  const TCellValue error = TCellValue::FromError(ceValue);
  EXPECT_EQ(Call(u"FIND", {Text(needle), Text(text)}), error);
  EXPECT_EQ(Call(u"SEARCH", {Text(needle), Text(text)}), error);
  EXPECT_EQ(Call(u"SUBSTITUTE", {Text(text), Text(needle), Text(u"")}), Text(text));
  EXPECT_EQ(Call(u"SUBSTITUTE", {Text(text), Text(u"a"), Text(u"b"), Number(1e6)}).Text.View().back(), u'b');
  EXPECT_EQ(Call(u"FIND", {Text(needle), Text(text + u'b')}), Number(500'002));
  EXPECT_EQ(Call(u"SEARCH", {Text(needle), Text(text + u'B')}), Number(500'002));
}

TEST(TextSearch, FindsWhatComparingAtEachPlaceFinds) {
  std::mt19937 random(7);
  const auto textOf = [&](size_t ALength, unsigned ALetters) {
    std::u16string text(ALength, u'a');
    for (char16_t& unit : text) unit = u"aAbB\u00E9_"[random() % ALetters];
    return text;
  };
  for (int round = 0; round < 3000; ++round) {
    const auto letters = static_cast<unsigned>(1 + random() % 6);
    const std::u16string text = textOf(random() % 400, letters);
    std::u16string needle = textOf(1 + random() % (round % 3 ? 6 : 60), letters);
    if (round % 2 && text.size() > 60) needle = text.substr(random() % 50, needle.size());
    for (const auto textCase : {detail::tcsExact, detail::tcsIgnoreAscii}) {
      detail::TTextSearch search(needle, textCase);
      for (size_t from = 0; from <= text.size(); from += 1 + random() % 9) {
        ASSERT_EQ(search.Find(text, from), search.FindPlain(text, from))
            << TText(text).ToUtf8() << " / " << TText(needle).ToUtf8() << " from " << from;
      }
      EXPECT_EQ(search.Find(text, text.size() + 1), text.npos);
    }
  }
}

}  // namespace

}  // namespace tessarine
