#include <tessarine/platform/Regex.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using namespace std::string_literals;

/// "whole", "whole|group" for a pattern with groups, "-" without a match, "!" for a failure.
std::string Found(std::u16string_view APattern, std::u16string_view AText) {
  const TRegexMatch match = FindRegex(APattern, AText);
  if (match.Outcome != roMatched) return match.Outcome == roNoMatch ? "-" : "!";
  return Utf16ToUtf8(match.Whole) + (match.HasGroups ? "|" + Utf16ToUtf8(match.FirstGroup) : "");
}

std::string Replaced(std::u16string_view APattern, std::u16string_view AText, std::u16string_view AReplacement,
                     size_t AMaxLength = 1000) {
  std::u16string result;
  const TRegexOutcome outcome = ReplaceRegex(APattern, AText, AReplacement, AMaxLength, result);
  return outcome == roFailed ? "!" : Utf16ToUtf8(result) + (outcome == roNoMatch ? " (as it was)" : "");
}

TEST(Regex, FindsTheFirstMatchAndItsFirstGroup) {
  const std::u16string nul(u"a\0b", 3);
  const struct {
    std::u16string Pattern, Text;
    const char* Result;
  } cases[] = {
      {u"[0-9]+", u"ab12cd3", "12"},
      {u"b([0-9])([a-z])?", u"ab1", "b1|1"},
      {u"(x)|b", u"ab", "b|"},  // a group that took no part
      {u"abc", u"ABC", "-"},
      {u"(?i)abc", u"xABC", "ABC"},
      {u"^$", u"", ""},
      {u"", u"", ""},
      {u"a.b", nul, "a\0b"},
      {u"(", u"x", "!"},
      {u"[", u"x", "!"},
      {u"a\\C", u"ab", "!"},
      {std::u16string(40'000, u'a'), u"a", "!"},
      // A pair is one character, half of one is none.
      {u"^.$", u"\U0001F600", "\U0001F600"},
      {u"x(.)y", u"x\U0001F600y", "x\U0001F600y|\U0001F600"},
      {u"[\U0001F600-\U0001F64F]", u"a\U0001F601", "\U0001F601"},
      {u"b",
       u"a\xD83D"
       u"b",
       "b"},
      {u"a.b",
       u"a\xD83D"
       u"b",
       "-"},
      {u"\xDE00", u"\U0001F600", "!"},
  };
  for (const auto& row : cases) {
    if (row.Text == nul) {
      EXPECT_EQ(Found(row.Pattern, row.Text), "a\0b"s);
    } else {
      EXPECT_EQ(Found(row.Pattern, row.Text), row.Result)
          << Utf16ToUtf8(row.Pattern) << " in " << Utf16ToUtf8(row.Text);
    }
  }
}

TEST(Regex, ReplacesEveryMatch) {
  const struct {
    const char16_t* Pattern;
    const char16_t* Text;
    const char16_t* Replacement;
    const char* Result;
  } cases[] = {
      {u"[0-9]", u"a1b2", u"#", "a#b#"},
      {u"(a)(b)?", u"abac", u"<$2$1>", "<ba><a>c"},
      {u"(?<n>a)", u"ab", u"${n}$n\\1${1}$0", "aaaaab"},
      {u"a", u"banana", u"$$\\\\\\x", "b$\\\\xn$\\\\xn$\\\\x"},
      {u"x*", u"abc", u"-", "-a-b-c-"},
      {u"a", u"bbb", u"x", "bbb (as it was)"},
      {u"a", u"a", u"$3", "!"},
      {u"a", u"a", u"${", "!"},
      {u"(", u"a", u"x", "!"},
      {u".", u"\U0001F600\U0001F601", u"x", "xx"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Replaced(row.Pattern, row.Text, row.Replacement), row.Result)
        << Utf16ToUtf8(row.Pattern) << " by " << Utf16ToUtf8(row.Replacement);
  }
  const std::u16string text(100, u'a');
  EXPECT_EQ(Replaced(u"a", text, u"12345", 500).size(), 500u);
  EXPECT_EQ(Replaced(u"a", text, u"123456", 599), "!");
  EXPECT_EQ(Replaced(u"b", text, u"", 99), "!");
}

TEST(Regex, WhatTakesTooLongFails) {
  const std::u16string many(1'000'000, u'a');
  const std::u16string bomb = std::u16string(30, u'a') + u'b';
  EXPECT_EQ(Found(u"(a+)+$", bomb), "!");
  EXPECT_EQ(Found(u"(?:a(?=a*[bc]))*[bc]|(?:a(?=a*[bc]))*[de]", many), "!");
  EXPECT_EQ(Replaced(u"(a+)+$", bomb, u"x"), "!");
  EXPECT_EQ(Replaced(u"a", many, std::u16string(100'000, u'x')), "!");
  // Long texts as such do not.
  EXPECT_EQ(Found(u"[0-9]+$", many + u"17"), "17");
  EXPECT_EQ(Found(u"^(?:a|b)*$", std::u16string(10'000, u'a')).size(), 10'000u);
  EXPECT_EQ(Found(u"(a+)+$", std::u16string(200, u'a')).size(), 401u);
}

TEST(Regex, ManyPatternsOnManyThreads) {
  std::vector<std::thread> threads;
  std::vector<int> wrong(4);
  for (size_t thread = 0; thread < wrong.size(); ++thread) {
    threads.emplace_back([&wrong, thread] {
      for (int i = 0; i < 400; ++i) {
        const std::string number = std::to_string(i % 45);  // more than are kept
        const std::u16string wide(number.begin(), number.end());
        wrong[thread] += Found(u"x(" + wide + u")y", u"ax" + wide + u"y") != "x" + number + "y|" + number;
        wrong[thread] += Found(u"(" + wide, u"x") != "!";
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(wrong.size(), 0));
}

}  // namespace

}  // namespace tessarine
