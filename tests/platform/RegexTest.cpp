#include <tessarine/platform/Regex.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {

namespace {

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

TEST(Regex, ExamplesHold) {
  test::ExpectCases(
      "platform/regex.tsv",
      {{"find", [](const test::TCase& ACase) { return Found(ACase.Text(1), ACase.Text(2)); }},
       {"replace", [](const test::TCase& ACase) { return Replaced(ACase.Text(1), ACase.Text(2), ACase.Text(3)); }}});
  EXPECT_EQ(Found(std::u16string(40'000, u'a'), u"a"), "!");
  const std::u16string half = {u'a', 0xD83D, u'b'};  // half a pair is no character
  EXPECT_EQ(Found(u"b", half), "b");
  EXPECT_EQ(Found(u"a.b", half), "-");
  EXPECT_EQ(Found(std::u16string(1, 0xDE00), u"\U0001F600"), "!");
}

TEST(Regex, ResultsAreBounded) {
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
