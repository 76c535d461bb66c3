#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include <tessarine/platform/FloatPattern.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

std::string Shown(std::u16string_view APattern, double AValue, const TFormatSettings& ASettings = {}) {
  return Utf16ToUtf8(FormatFloat(APattern, AValue, ASettings));
}

TEST(FloatPattern, PlaceholdersPointAndGroups) {
  const struct {
    std::u16string_view Pattern;
    double Value;
    const char* Text;
  } cases[] = {
      {u"0", 0, "0"},
      {u"0", 2.5, "3"},
      {u"0", 3.5, "4"},
      {u"0", -2.5, "-3"},
      {u"0", -0.0, "0"},
      {u"0", 1e20, "100000000000000000000"},
      {u"000", 7, "007"},
      {u"0##", 7, "007"},
      {u"0.00", 1.005, "1.01"},
      {u"0.00", 1.004999, "1.00"},
      {u"0.00", 0.995, "1.00"},
      {u"0.00", 999.995, "1000.00"},
      {u"0.00", -0.001, "-0.00"},
      {u"0.00", -0.0, "0.00"},
      {u"0.00", 1e-300, "0.00"},
      {u"0.00", 5e-3, "0.01"},
      {u"0.00", 4.9e-3, "0.00"},
      {u"0.00", 2.675 * 100, "267.50"},
      {u"0", 0.285 * 100, "29"},  // 28.499999999999996, which General shows as 28.5
      {u"0.0", 1.15, "1.2"},
      {u"0.##", 5, "5"},
      {u"0.##", 5.5, "5.5"},
      {u"0.0#", 5, "5.0"},
      {u"0.#0", 5, "5.00"},
      {u"0.", 5.25, "5"},
      {u"#", 0, ""},
      {u"#.##", 0, ""},
      {u"#.##", 0.5, ".5"},
      {u".00", 12.5, "12.50"},
      {u"#,##0", 1234567.8, "1,234,568"},
      {u"#,##0", 999, "999"},
      {u"#,##0", 0, "0"},
      {u"#,##0.00", 1234.5, "1,234.50"},
      {u"#,##0.00", -1234567.891, "-1,234,567.89"},
      {u"0,", 1234567, "1,234,567"},
      {u"0,000", 7, "0,007"},
      {u",#.0", 4321, "4,321.0"},
      {u"#,##0", 1e16, "10,000,000,000,000,000"},
      {u"#,##0.000", 123456789012.3456, "123,456,789,012.346"},
      {u"0.00.0", 1.2345, "1.23.5"},
      {u"", 5, ""},
  };
  for (const auto& row : cases) EXPECT_EQ(Shown(row.Pattern, row.Value), row.Text) << Utf16ToUtf8(row.Pattern);
}

TEST(FloatPattern, LiteralsStandInTheirPlaces) {
  const struct {
    std::u16string_view Pattern;
    double Value;
    const char* Text;
  } cases[] = {
      {u"(000) 000-0000", 5551234567, "(555) 123-4567"},
      {u"(###) ###-####", 1234567, "() 123-4567"},
      {u"000-00-0000", 1234567890, "1234-56-7890"},
      {u"00-00-00-00", 12, "00-00-00-12"},
      {u"'$'#,##0.00' net'", 1234.5, "$1,234.50 net"},
      {u"\"a,b.c\"0", 5, "a,b.c5"},
      {u"'it''s '0", 5, "it's 5"},
      {u"0' open", 5, "5 open"},
      {u"0'", 5, "5"},
      {u"? 0 ?", 5, "? 5 ?"},
      {u"0.0' '00", 1.2345, "1.2 35"},
      {u"'x'", 5, "x"},
      {u"E0e", 5, "E5e"},
      {u"0 EUR", 1234.5, "1235 EUR"},
      {u"\u20AC 0", 5, "\xE2\x82\xAC 5"},
  };
  for (const auto& row : cases) EXPECT_EQ(Shown(row.Pattern, row.Value), row.Text) << Utf16ToUtf8(row.Pattern);
}

TEST(FloatPattern, ExponentForm) {
  const struct {
    std::u16string_view Pattern;
    double Value;
    const char* Text;
  } cases[] = {
      {u"0.00E+00", 12345, "1.23E+04"},   {u"0.00E+00", 99999, "1.00E+05"}, {u"0.00E+00", 0.00012345, "1.23E-04"},
      {u"0.00E+00", -12345, "-1.23E+04"}, {u"0.00E+00", 0, "0.00E+00"},     {u"0.00e-00", 12345, "1.23e04"},
      {u"0.00E-0", 0.0012, "1.20E-3"},    {u"0.###E+0", 1200, "1.2E+3"},    {u"0E+000", 1e100, "1E+100"},
      {u"0E+0", 1.5e-300, "2E-300"},      {u"##0.0E+0", 12345, "123.5E+2"}, {u"00.0E+0", 99999, "10.0E+4"},
      {u".00E+0", 0.999, ".10E+1"},       {u"0.0E+", 12, "12.0E+"},         {u"0.0E+00' V'", 1500, "1.5E+03 V"},
  };
  for (const auto& row : cases) EXPECT_EQ(Shown(row.Pattern, row.Value), row.Text) << Utf16ToUtf8(row.Pattern);
}

TEST(FloatPattern, SeparatorsComeFromTheSettings) {
  TFormatSettings german;
  german.DecimalSeparator = u',';
  german.GroupSeparator = u'.';
  EXPECT_EQ(Shown(u"#,##0.00", -1234567.891, german), "-1.234.567,89");
  EXPECT_EQ(Shown(u"0.0E+00", 1234567, german), "1,2E+06");
  EXPECT_EQ(Shown(u"#,##0.000' x'", 1234.0005, german), "1.234,001 x");
}

TEST(FloatPattern, WhatIsNotFiniteIsNamed) {
  EXPECT_EQ(Shown(u"0.00", std::numeric_limits<double>::infinity()), "INF");
  EXPECT_EQ(Shown(u"#,##0", -std::numeric_limits<double>::infinity()), "-INF");
  EXPECT_EQ(Shown(u"0.0E+0", std::numeric_limits<double>::quiet_NaN()), "NAN");
}

TEST(FloatPattern, ShortCutGivesThePlainText) {
  const std::u16string_view patterns[] = {u"0",         u"0.00",       u"#,##0",    u"#,##0.00",      u"#",
                                          u"#,###.000", u"'$'#,##0.0", u"0.000000", u"0.000000000 x", u"##0.0"};
  std::mt19937_64 random(11);
  const TFormatSettings settings;
  for (const std::u16string_view text : patterns) {
    const TFloatPattern pattern = TFloatPattern::Compile(text);
    for (int round = 0; round < 40'000; ++round) {
      const auto whole = static_cast<double>(static_cast<int64_t>(random()) >> (random() % 63));
      double value = whole / std::pow(10, static_cast<double>(random() % 14));
      if (random() % 4 == 0) value += 0.5 / std::pow(10, static_cast<double>(random() % 7));  // near ties
      if (random() % 4 == 0) value = std::nextafter(value, random() % 2 == 0 ? 0.0 : 1e300);
      if (random() % 8 == 0) value = value / 3;
      std::u16string fast;
      std::u16string plain;
      pattern.Append(value, settings, fast);
      pattern.AppendPlain(value, settings, plain);
      ASSERT_EQ(fast, plain) << Utf16ToUtf8(text) << " " << std::hexfloat << value;
    }
  }
}

TEST(FloatPattern, RandomPatternsAreHarmless) {
  const std::u16string_view alphabet = u"00##..,,'\"Ee+-? x%;\\";
  std::mt19937_64 random(12);
  for (int round = 0; round < 50'000; ++round) {
    std::u16string text;
    for (size_t count = random() % 14; count > 0; --count) text.push_back(alphabet[random() % alphabet.size()]);
    const TFloatPattern pattern = TFloatPattern::Compile(text);
    for (const double value : {0.0, -1.5, 123456.789, 9.99999999e99, 1e-99}) {
      std::u16string fast;
      std::u16string plain;
      pattern.Append(value, {}, fast);
      pattern.AppendPlain(value, {}, plain);
      ASSERT_EQ(fast, plain) << Utf16ToUtf8(text) << " " << value;
      ASSERT_LT(fast.size(), 1'000u);
    }
  }
}

}  // namespace
}  // namespace tessarine
