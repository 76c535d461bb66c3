#include <gtest/gtest.h>

#include <random>
#include <string>

#include <tessarine/formula/library/detail/TextSearch.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

TCellValue Call(std::u16string_view AName, std::vector<TCellValue> AValues) {
  std::vector<TFormulaArg> args;
  for (TCellValue& value : AValues) args.push_back(TFormulaArg::FromScalar(std::move(value)));
  return EvaluateFunction(AName, args, {});
}

TCellValue Text(const std::u16string& AText) { return TCellValue::FromText(AText); }
TCellValue Number(double ANumber) { return TCellValue::FromNumber(ANumber); }

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

TEST(TextFunctions, UnitsAreReplacedAsTextsAre) {
  std::mt19937 random(3);
  for (int round = 0; round < 2000; ++round) {
    std::u16string text(random() % 60, u'a');
    for (char16_t& unit : text) unit = u"ab-\u00E9"[random() % 4];
    const std::u16string oldPart(1, u"ab-\u00E9x"[random() % 5]);
    const std::u16string newPart(1, u"ab/\0"[random() % 4]);
    // In pairs of equal units the same calls go by the search for texts.
    std::u16string doubled;
    for (const char16_t unit : text) doubled += {unit, unit};
    std::u16string expected;
    const TCellValue pairs = Call(u"SUBSTITUTE", {Text(doubled), Text(oldPart + oldPart), Text(newPart + newPart)});
    for (size_t i = 0; i < pairs.Text.Length(); i += 2) expected += pairs.Text.View()[i];
    ASSERT_EQ(Call(u"SUBSTITUTE", {Text(text), Text(oldPart), Text(newPart)}), Text(expected)) << round;
  }
  const std::u16string full(kMaxGeneratedText + 1, u'a');
  EXPECT_EQ(Call(u"SUBSTITUTE", {Text(full), Text(u"a"), Text(u"b")}), TCellValue::FromError(ceValue));
  EXPECT_EQ(Call(u"SUBSTITUTE", {Text(full), Text(u"x"), Text(u"b")}), Text(full));
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
