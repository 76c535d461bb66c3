#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::string General(double AValue) { return Utf16ToUtf8(GeneralNumberText(AValue)); }

std::string PlainGeneral(double AValue) {
  char16_t text[kNumberTextSize];
  return Utf16ToUtf8({text, WriteGeneralNumberPlain(AValue, text)});
}

std::string ForFile(double AValue) {
  std::string text;
  AppendFileNumber(AValue, text);
  return text;
}

/// Numbers of every kind that a sheet holds: integers, prices, products of them, random bits.
double AnyNumber(std::mt19937_64& ARandom) {
  const auto whole = static_cast<double>(static_cast<int64_t>(ARandom()) >> (ARandom() % 63));
  switch (ARandom() % 6) {
    case 0: return whole;
    case 1: return whole / std::pow(10, static_cast<double>(ARandom() % 12));
    case 2: return std::bit_cast<double>(ARandom());
    case 3: return whole / static_cast<double>(ARandom() % 1000 + 1);
    case 4: return std::nextafter(whole / 1000, kInfinity);
    default: return (whole + 0.5) / std::pow(10, static_cast<double>(ARandom() % 25));
  }
}

TEST(NumberText, GeneralShowsFifteenDigits) {
  const struct {
    double Value;
    const char* Text;
  } cases[] = {
      {0, "0"},
      {-0.0, "0"},
      {1, "1"},
      {-1, "-1"},
      {100, "100"},
      {0.5, "0.5"},
      {1234.5, "1234.5"},
      {-1234.5678, "-1234.5678"},
      {0.1 + 0.2, "0.3"},
      {1.0 / 3, "0.333333333333333"},
      {2.0 / 3, "0.666666666666667"},
      {-2e9 / 3, "-666666666.666667"},
      {1e14, "100000000000000"},
      {999999999999999, "999999999999999"},
      {999999999999999.4, "999999999999999"},
      {999999999999999.5, "1E+15"},
      {1e15, "1E+15"},
      {1234567890123456, "1.23456789012346E+15"},
      {1.2e20, "1.2E+20"},
      {-1.5e300, "-1.5E+300"},
      {0.00001, "0.00001"},
      {0.000123456, "0.000123456"},
      {0.0000099, "9.9E-6"},
      {0.00000999999999999999999, "0.00001"},
      {1e-7, "1E-7"},
      {-2.5e-10, "-2.5E-10"},
      {0.1234567890123456, "0.123456789012346"},
      {5e-324, "4.94065645841247E-324"},
      {std::numeric_limits<double>::max(), "1.79769313486232E+308"},
      {kInfinity, "INF"},
      {-kInfinity, "-INF"},
      {kNan, "NAN"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(General(row.Value), row.Text);
    EXPECT_EQ(PlainGeneral(row.Value), row.Text);
    char narrow[kNumberTextSize];
    EXPECT_EQ(std::string(narrow, WriteGeneralNumber(row.Value, narrow)), row.Text);
  }
}

TEST(NumberText, ShortCutGivesThePlainText) {
  std::mt19937_64 random(1);
  for (int round = 0; round < 300'000; ++round) {
    const double value = AnyNumber(random);
    ASSERT_EQ(General(value), PlainGeneral(value)) << std::hexfloat << value;
  }
}

TEST(NumberText, FifteenDigitsAreThoseOfTheCLibrary) {
  std::mt19937_64 random(2);
  for (int round = 0; round < 100'000; ++round) {
    const double value = AnyNumber(random);
    if (!std::isfinite(value)) continue;
    char expected[64];
    std::snprintf(expected, sizeof expected, "%.14e", value == 0 ? 0.0 : value);
    double reread = 0;
    ASSERT_TRUE(TryParseFileNumber(General(value), reread) || std::fabs(value) > 1.797e308) << expected;
    if (std::fabs(value) > 1.797e308) continue;
    char actual[64];
    std::snprintf(actual, sizeof actual, "%.14e", reread);
    ASSERT_STREQ(actual, expected);
  }
}

TEST(NumberText, LocaleAndExponentWidthChangeOnlyThemselves) {
  TFormatSettings german;
  german.DecimalSeparator = u',';
  const struct {
    double Value;
    std::u16string_view German;
    std::u16string_view Exponent4;
  } cases[] = {
      {1234.5, u"1234,5", u"1234,5"},
      {100, u"100", u"100"},
      {1.2e20, u"1,2E+20", u"1,2E+0020"},
      {1e15, u"1E+15", u"1E+0015"},
      {-1e-7, u"-1E-7", u"-1E-0007"},
      {1.5e-300, u"1,5E-300", u"1,5E-0300"},
      {1.0 / 3, u"0,333333333333333", u"0,333333333333333"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(FloatToStr(row.Value, german), row.German);
    EXPECT_EQ(GeneralNumberTextExponent4(row.Value, german), row.Exponent4);
  }
}

TEST(NumberText, FileTextReadsBackToTheSameDouble) {
  EXPECT_EQ(ForFile(0.1), "0.1");
  EXPECT_EQ(ForFile(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(ForFile(9007199254740992.0), "9007199254740992");
  EXPECT_EQ(ForFile(-12345678901234568.0), "-12345678901234568");
  EXPECT_EQ(ForFile(1e17), "1E+17");
  EXPECT_EQ(ForFile(0.00001), "0.00001");
  EXPECT_EQ(ForFile(1.5e-7), "1.5E-7");
  EXPECT_EQ(ForFile(-0.0), "0");
  EXPECT_EQ(ForFile(5e-324), "5E-324");
  std::mt19937_64 random(3);
  for (int round = 0; round < 300'000; ++round) {
    const double value = AnyNumber(random);
    if (!std::isfinite(value)) continue;
    const std::string text = ForFile(value);
    ASSERT_LE(text.size(), kNumberTextSize);
    ASSERT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
    double general = 0;
    if (TryParseFileNumber(General(value), general) && general == value && std::fabs(value) < 1e15 &&
        std::fabs(value) >= std::numeric_limits<double>::min()) {
      ASSERT_EQ(text, General(value));
    }
  }
}

TEST(NumberParsing, ReadsTheWholeTextOrNothing) {
  const struct {
    std::u16string_view Text;
    double Value;
  } good[] = {
      {u"3", 3},
      {u" \t12\r\n", 12},
      {u"+1.5", 1.5},
      {u"-1.5", -1.5},
      {u".5", 0.5},
      {u"5.", 5},
      {u"1e3", 1000},
      {u"1E+3", 1000},
      {u"-1.25e-2", -0.0125},
      {u"000000000000000000000000001", 1},
      {u"0.1", 0.1},
      {u"123456789012345678901234567890", 123456789012345678901234567890.0},
      {u"9007199254740993", 9007199254740992.0},
      {u"1e-400", 0},
      {u"0.000e999999999999999999999", 0},
      {u"0e5", 0},
      {u"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {u"4.9e-324", 5e-324},
      {u"1e-99999999999999999999999999", 0},
  };
  for (const auto& row : good) {
    double value = kNan;
    EXPECT_TRUE(TryParseFileNumber(row.Text, value)) << Utf16ToUtf8(row.Text);
    EXPECT_EQ(value, row.Value) << Utf16ToUtf8(row.Text);
    double narrow = kNan;
    EXPECT_TRUE(TryParseFileNumber(Utf16ToUtf8(row.Text), narrow));
    EXPECT_EQ(narrow, row.Value);
  }
  const std::u16string_view bad[] = {
      u"",
      u" ",
      u".",
      u"+",
      u"-",
      u"e5",
      u"1e",
      u"1e+",
      u"1 2",
      u"1,5",
      u"1,000",
      u"--1",
      u"+-1",
      u"1.2.3",
      u"0x10",
      u"inf",
      u"nan",
      u"INF",
      u"1a",
      u"a1",
      u"$1",
      u"1%",
      u"1e5.",
      u"1e 5",
      u"- 1",
      u"1..",
      u"1e999",
      u"-1e309",
      u"\u0661",
      u"1\u00A0",
      u"1e99999999999999999999",
      u"\u0131",
      u"1_",
  };
  for (const std::u16string_view text : bad) {
    double value = 42;
    EXPECT_FALSE(TryParseFileNumber(text, value)) << Utf16ToUtf8(text);
    EXPECT_EQ(value, 42) << Utf16ToUtf8(text);
  }
  const std::u16string digits(5'000, u'7');
  double value = 0;
  EXPECT_FALSE(TryParseFileNumber(digits, value));
  EXPECT_TRUE(TryParseFileNumber(u"0." + digits + u"e-4", value));
  EXPECT_DOUBLE_EQ(value, 7.0 / 90'000);
  EXPECT_TRUE(TryParseFileNumber(u"0." + std::u16string(5'000, u'0') + u"7e5000", value));
  EXPECT_EQ(value, 0.7);
}

TEST(NumberParsing, FollowsTheDecimalSeparatorOfTheLocale) {
  TFormatSettings german;
  german.DecimalSeparator = u',';
  double value = 0;
  EXPECT_TRUE(TryStrToFloat(u"1,5", german, value));
  EXPECT_EQ(value, 1.5);
  EXPECT_TRUE(TryStrToFloat(u"-1,5e3 ", german, value));
  EXPECT_EQ(value, -1500);
  EXPECT_FALSE(TryStrToFloat(u"1.5", german, value));
  EXPECT_FALSE(TryStrToFloat(u"1.000,5", german, value));
}

TEST(NumberParsing, ShortCutGivesThePlainResult) {
  std::mt19937_64 random(4);
  const std::u16string_view alphabet = u"0123456789012345678901234567890123456789...-+eE, x";
  for (int round = 0; round < 300'000; ++round) {
    std::u16string text;
    if (round % 2 == 0) {
      text = GeneralNumberText(AnyNumber(random));
    } else {
      for (size_t count = random() % 20; count > 0; --count) text.push_back(alphabet[random() % alphabet.size()]);
    }
    double fast = 42;
    double plain = 42;
    const bool isFast = TryParseFileNumber(text, fast);
    ASSERT_EQ(isFast, TryStrToFloatPlain(text, u'.', plain)) << Utf16ToUtf8(text);
    ASSERT_EQ(std::bit_cast<uint64_t>(fast), std::bit_cast<uint64_t>(plain)) << Utf16ToUtf8(text);
  }
}

TEST(NumberParsing, IntegersStayWithinTheirBits) {
  const struct {
    const char* Text;
    int32_t Value;
    bool IsGood;
  } cases[] = {
      {"0", 0, true},
      {"-7", -7, true},
      {"+7", 7, true},
      {"2147483647", 2147483647, true},
      {"2147483648", 0, false},
      {"-2147483648", std::numeric_limits<int32_t>::min(), true},
      {"-2147483649", 0, false},
      {"99999999999999999999999", 0, false},
      {"", 0, false},
      {"-", 0, false},
      {" 1", 0, false},
      {"1.0", 0, false},
      {"0000000000000000000012", 12, true},
  };
  for (const auto& row : cases) {
    int32_t narrow = 0;
    int32_t wide = 0;
    EXPECT_EQ(TryParseInt32(std::string_view(row.Text), narrow), row.IsGood) << row.Text;
    EXPECT_EQ(TryParseInt32(Utf8ToUtf16(row.Text), wide), row.IsGood) << row.Text;
    EXPECT_EQ(narrow, row.Value) << row.Text;
    EXPECT_EQ(wide, row.Value) << row.Text;
  }
}

TEST(NumberRounding, TiesGoToTheEvenNeighbour) {
  for (double value = -1000; value <= 1000; value += 0.125)
    EXPECT_EQ(RoundToEven(value), std::nearbyint(value)) << value;
  std::mt19937_64 random(5);
  for (int round = 0; round < 100'000; ++round) {
    const double value = AnyNumber(random);
    if (std::isnan(value)) continue;
    ASSERT_EQ(RoundToEven(value), std::nearbyint(value)) << std::hexfloat << value;
  }
  for (const double near : {0.5, 1.5, 2.5, 4503599627370495.5})
    for (const double value : {std::nextafter(near, 0.0), near, std::nextafter(near, kInfinity)}) {
      EXPECT_EQ(RoundToEven(value), std::nearbyint(value)) << value;
      EXPECT_EQ(RoundToEven(-value), std::nearbyint(-value)) << value;
    }
}

TEST(NumberRounding, IntegersWrapToTheirLow32Bits) {
  const struct {
    double Value;
    int32_t Floor;
    int32_t Ceil;
  } cases[] = {
      {1.5, 1, 2},
      {-1.5, -2, -1},
      {3e9, -1294967296, -1294967296},
      {4294967296.0, 0, 0},
      {4294967295.5, -1, 0},
      {-2147483648.5, 2147483647, std::numeric_limits<int32_t>::min()},
      {1e18 + 1024, static_cast<int32_t>(0xA7640400u), static_cast<int32_t>(0xA7640400u)},
      {9.3e18, 0, 0},
      {-9223372036854775808.0, 0, 0},
      {-1e19, 0, 0},
      {kInfinity, 0, 0},
      {kNan, 0, 0},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(FloorInt32(row.Value), row.Floor) << row.Value;
    EXPECT_EQ(CeilInt32(row.Value), row.Ceil) << row.Value;
  }
}

}  // namespace
}  // namespace tessarine
