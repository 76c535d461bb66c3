#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using test::ExpectCases;
using test::TCase;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

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

TEST(NumberText, ExamplesHold) {
  TFormatSettings german;
  german.DecimalSeparator = u',';
  const auto general = [](const TCase& ACase) {
    const double value = ACase.Number(1);
    char narrow[kNumberTextSize];
    EXPECT_EQ(PlainGeneral(value), General(value)) << ACase.Place();
    EXPECT_EQ(std::string(narrow, WriteGeneralNumber(value, narrow)), General(value)) << ACase.Place();
    return General(value);
  };
  const auto parse = [](const TCase& ACase) -> std::optional<double> {
    double wide = 42;
    double narrow = 42;
    const bool isNumber = TryParseFileNumber(ACase.Text(1), wide);
    EXPECT_EQ(TryParseFileNumber(ACase[1], narrow), isNumber) << ACase.Place();
    EXPECT_EQ(wide, narrow) << ACase.Place();
    if (isNumber) return wide;
    EXPECT_EQ(wide, 42) << ACase.Place();
    return std::nullopt;
  };
  const auto parseGerman = [&](const TCase& ACase) {
    double value = 0;
    return TryStrToFloat(ACase.Text(1), german, value) ? std::optional(value) : std::nullopt;
  };
  const auto integer = [](const TCase& ACase) {
    int32_t narrow = 0;
    int32_t wide = 0;
    const bool isInteger = TryParseInt32(std::string_view(ACase[1]), narrow);
    EXPECT_EQ(TryParseInt32(ACase.Text(1), wide), isInteger) << ACase.Place();
    EXPECT_EQ(narrow, wide) << ACase.Place();
    return isInteger ? std::optional(narrow) : std::nullopt;
  };
  ExpectCases("platform/numbers.tsv",
              {{"general", general},
               {"german", [&](const TCase& ACase) { return FloatToStr(ACase.Number(1), german); }},
               {"exponent4", [&](const TCase& ACase) { return GeneralNumberTextExponent4(ACase.Number(1), german); }},
               {"file", [](const TCase& ACase) { return ForFile(ACase.Number(1)); }},
               {"parse", parse},
               {"parse-german", parseGerman},
               {"integer", integer},
               {"floor", [](const TCase& ACase) { return FloorInt32(ACase.Number(1)); }},
               {"ceil", [](const TCase& ACase) { return CeilInt32(ACase.Number(1)); }}});
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

TEST(NumberText, FileTextReadsBackToTheSameDouble) {
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

TEST(NumberParsing, LongTextsAreReadToTheirEnd) {
  const std::u16string digits(5'000, u'7');
  double value = 0;
  EXPECT_FALSE(TryParseFileNumber(digits, value));
  EXPECT_TRUE(TryParseFileNumber(u"0." + digits + u"e-4", value));
  EXPECT_DOUBLE_EQ(value, 7.0 / 90'000);
  EXPECT_TRUE(TryParseFileNumber(u"0." + std::u16string(5'000, u'0') + u"7e5000", value));
  EXPECT_EQ(value, 0.7);
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
    double narrow = 42;
    ASSERT_EQ(TryParseFileNumber(Utf16ToUtf8(text), narrow), isFast) << Utf16ToUtf8(text);
    ASSERT_EQ(std::bit_cast<uint64_t>(narrow), std::bit_cast<uint64_t>(plain)) << Utf16ToUtf8(text);
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

}  // namespace
}  // namespace tessarine
