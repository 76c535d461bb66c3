#include <gtest/gtest.h>

#include <random>

#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

TEST(Unicode, Utf8BecomesUtf16WithOneReplacementForEachIllFormedPiece) {
  const struct {
    std::string_view Utf8;
    std::u16string_view Utf16;
    bool IsValid;
  } cases[] = {
      {"", u"", true},
      {"plain ASCII text of some length", u"plain ASCII text of some length", true},
      {"12345678\xC3\xBC"
       "12345678",
       u"12345678\u00FC12345678", true},
      {"\xE2\x82\xAC", u"\u20AC", true},
      {"\xF0\x9F\x98\x80", u"\U0001F600", true},
      {"\xF4\x8F\xBF\xBF", u"\U0010FFFF", true},
      {"\xEF\xBF\xBF", u"\uFFFF", true},
      {std::string_view("a\0b", 3), std::u16string_view(u"a\0b", 3), true},
      {"a\x80z", u"a\uFFFDz", false},                            // a tail alone
      {"\xC0\xAF", u"\uFFFD\uFFFD", false},                      // overlong
      {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD", false},            // overlong
      {"\xF0\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", false},  // overlong
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", false},            // a surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", false},  // above U+10FFFF
      {"\xF5", u"\uFFFD", false},
      {"\xE2\x82", u"\uFFFD", false},  // cut off
      {"\xE2\x82x", u"\uFFFDx", false},
      {"\xF0\x9F\x98", u"\uFFFD", false},
      {"\xF1\x80\x80\xE1\x80\xC2"
       "b\x80",
       u"\uFFFD\uFFFD\uFFFDb\uFFFD", false},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Utf8ToUtf16(row.Utf8), row.Utf16) << row.Utf8;
    EXPECT_EQ(IsValidUtf8(row.Utf8), row.IsValid) << row.Utf8;
    if (row.IsValid) {
      EXPECT_EQ(Utf16ToUtf8(row.Utf16), row.Utf8);
    }
  }
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

TEST(Unicode, TextFilesAreDecodedByTheirMark) {
  const struct {
    std::string_view Bytes;
    std::u16string_view Text;
  } cases[] = {
      {"a\xC3\xA9", u"a\u00E9"},
      {"\xEF\xBB\xBF"
       "a",
       u"a"},
      {std::string_view("\xFF\xFE"
                        "a\0\xAC\x20",
                        6),
       u"a\u20AC"},
      {std::string_view("\xFE\xFF\0a\x20\xAC", 6), u"a\u20AC"},
      {std::string_view("\xFF\xFE"
                        "a\0b",
                        5),
       u"a\uFFFD"},
      {"\xFF\xFE", u""},
      {"\xFF", u"\uFFFD"},
      {"", u""},
  };
  for (const auto& row : cases) EXPECT_EQ(DecodeTextBytes(row.Bytes), row.Text);
}

TEST(Unicode, ComparisonFoldsAsciiToUpperCase) {
  const struct {
    std::u16string_view Left;
    std::u16string_view Right;
    int Sign;
  } cases[] = {
      {u"", u"", 0},     {u"abc", u"ABC", 0},         {u"abc", u"abd", -1},
      {u"B", u"a", 1},   {u"ab", u"abc", -1},         {u"_", u"a", 1},
      {u"[", u"z", 1},   {u"\u00E9", u"\u00C9", 1},   {u"\uFFFF", u"a", 1},
      {u"a1", u"A-", 1}, {u"straSSe", u"STRAsse", 0},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(CompareAsciiNoCase(row.Left, row.Right), row.Sign) << Utf16ToUtf8(row.Left);
    EXPECT_EQ(CompareAsciiNoCase(row.Right, row.Left), -row.Sign) << Utf16ToUtf8(row.Left);
    EXPECT_EQ(EqualAsciiNoCase(row.Left, row.Right), row.Sign == 0) << Utf16ToUtf8(row.Left);
  }
  EXPECT_EQ(ToAsciiUpper(u"az{`\u00E9"), u"AZ{`\u00E9");
  EXPECT_EQ(ToAsciiLower(u"AZ[@\u00C9"), u"az[@\u00C9");
  EXPECT_EQ(TrimSpaces(u" \t\r\n a b \u00A0 "), u"a b \u00A0");
  EXPECT_EQ(TrimSpaces(u" \t "), u"");
}

}  // namespace
}  // namespace tessarine
