#include <gtest/gtest.h>

#include <random>

#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using test::TCase;

TEST(Unicode, ExamplesHold) {
  const auto decoded = [](const TCase& ACase) {
    const std::u16string text = Utf8ToUtf16(ACase[1]);
    EXPECT_EQ(IsValidUtf8(ACase[1]), ACase[0] == "valid") << ACase.Place();
    EXPECT_EQ(Utf16ToUtf8(text) == ACase[1], ACase[0] == "valid") << ACase.Place();
    return text;
  };
  const auto compared = [](const TCase& ACase) {
    const int sign = CompareAsciiNoCase(ACase.Text(1), ACase.Text(2));
    EXPECT_EQ(CompareAsciiNoCase(ACase.Text(2), ACase.Text(1)), -sign) << ACase.Place();
    EXPECT_EQ(EqualAsciiNoCase(ACase.Text(1), ACase.Text(2)), sign == 0) << ACase.Place();
    return sign;
  };
  test::ExpectCases("platform/unicode.tsv",
                    {{"valid", decoded},
                     {"ill-formed", decoded},
                     {"file", [](const TCase& ACase) { return DecodeTextBytes(std::string_view(ACase[1])); }},
                     {"compare", compared},
                     {"upper", [](const TCase& ACase) { return ToAsciiUpper(ACase.Text(1)); }},
                     {"lower", [](const TCase& ACase) { return ToAsciiLower(ACase.Text(1)); }},
                     {"trim", [](const TCase& ACase) { return std::u16string(TrimSpaces(ACase.Text(1))); }}});
}

TEST(Unicode, LoneSurrogatesBecomeReplacementsInUtf8) {
  const char16_t high = 0xD83D;
  const char16_t low = 0xDE00;
  EXPECT_EQ(Utf16ToUtf8(std::u16string{u'a', high}), "a\xEF\xBF\xBD");
  EXPECT_EQ(Utf16ToUtf8(std::u16string{low, u'a'}),
            "\xEF\xBF\xBD"
            "a");
  EXPECT_EQ(Utf16ToUtf8(std::u16string{low, high, low}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
  EXPECT_EQ(Utf16ToUtf8(std::u16string{high, high, low}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

TEST(Unicode, EveryCodePointSurvivesTheWayThereAndBack) {
  std::u16string all;
  for (char32_t point = 0; point < 0x110000; point += point < 0x3000 ? 1 : 7) {
    if (point >= 0xD800 && point < 0xE000) continue;
    if (point < 0x10000) {
      all.push_back(static_cast<char16_t>(point));
    } else {
      all.push_back(static_cast<char16_t>(0xD7C0 + (point >> 10)));
      all.push_back(static_cast<char16_t>(0xDC00 + (point & 0x3FF)));
    }
  }
  const std::string utf8 = Utf16ToUtf8(all);
  EXPECT_TRUE(IsValidUtf8(utf8));
  EXPECT_TRUE(Utf8ToUtf16(utf8) == all);
}

TEST(Unicode, RandomBytesDecodeToValidText) {
  std::mt19937 random(7);
  for (int round = 0; round < 20'000; ++round) {
    std::string bytes(random() % 24, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random() % 3 == 0 ? random() % 128 : random() % 256);
    const std::u16string text = Utf8ToUtf16(bytes);
    const std::string again = Utf16ToUtf8(text);
    ASSERT_TRUE(IsValidUtf8(again));
    ASSERT_EQ(again == bytes, IsValidUtf8(bytes));
  }
}

}  // namespace
}  // namespace tessarine
