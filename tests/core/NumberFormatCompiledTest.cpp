#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/detail/DateTimeProgram.h>
#include <tessarine/core/format/detail/FractionText.h>
#include <tessarine/core/format/detail/NumberFormatPlain.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>

namespace tessarine {
namespace {

using TRandom = std::mt19937_64;

size_t Below(TRandom& ARandom, size_t ALimit) { return static_cast<size_t>(ARandom() % ALimit); }

std::u16string RandomCode(TRandom& ARandom) {
  static constexpr std::u16string_view kPieces[] = {
      u"0",       u"#",     u"?",     u"#,##0",  u"0.00",  u".",       u",",       u"%",       u"E+00",   u"e-0",
      u";",       u";",     u"\"",    u"'",      u"\\",    u"_",       u"*",       u"$",       u"(",      u")",
      u"-",       u" ",     u"/",     u"?/?",    u"# ?/8", u"[Red]",   u"[h]",     u"[$",      u"]",      u"[",
      u"[$x-40]", u"[>5]",  u"@",     u"y",      u"yyyy",  u"mm",      u"mmm",     u"d",       u"dddd",   u"h:mm",
      u"ss",      u"AM/PM", u"a/p",   u":",      u"\x1",   u"\x7",     u"General", u"\"x 0\"", u"\u20AC", u"mm-dd-yy",
      u"M",       u"S",     u"n",     u"color3", u"text",  u"0%",      u"0.00%",   u"@",       u"_)",     u"* ",
      u"T",       u"yy",    u"MMMMM", u"ddd",    u"0",     u"#,##0.00"};
  static constexpr std::u16string_view kWhole[] = {u"0",     u"0.00", u"#,##0", u"#,##0.00", u"0%",
                                                   u"0.00%", u"@",    u"Text",  u""};
  std::u16string code;
  if (Below(ARandom, 12) == 0) return std::u16string(kWhole[Below(ARandom, std::size(kWhole))]);
  // Dates and numbers each need codes without the other's marks.
  const bool datesOnly = Below(ARandom, 4) == 0;
  for (size_t count = 1 + Below(ARandom, 8); count > 0; --count) {
    const std::u16string_view piece = kPieces[Below(ARandom, std::size(kPieces))];
    if (datesOnly && piece.find_first_of(u"#0%") != std::u16string_view::npos) continue;
    code += piece;
  }
  return code;
}

double RandomNumber(TRandom& ARandom) {
  static constexpr double kSpecial[] = {
      0,      -0.0,   0.5,     -0.5, 1.005,  -0.001,           0.9999999999, 1e-11,   1e15,   -1e15,
      1e20,   1e300,  2.5,     -2.5, 1234.5, 2958465.99999999, 2958466,      -693593, 5e-324, 1.0 / 3,
      0.0005, 99.995, -99.995, 1e18, 9.3e18};
  switch (Below(ARandom, 6)) {
    case 0: return kSpecial[Below(ARandom, std::size(kSpecial))];
    case 1: return static_cast<double>(static_cast<int64_t>(Below(ARandom, 200001)) - 100000);
    case 2: return static_cast<double>(static_cast<int64_t>(Below(ARandom, 2000001)) - 1000000) / 1000;
    case 3: return static_cast<double>(Below(ARandom, 3000000)) + static_cast<double>(Below(ARandom, 86400)) / 86400;
    case 4: return std::ldexp(static_cast<double>(ARandom()) - 9e18, static_cast<int>(Below(ARandom, 120)) - 110);
    default: {
      const uint64_t bits = ARandom();
      double value;
      std::memcpy(&value, &bits, sizeof value);
      return value;  // anything, what is not finite included
    }
  }
}

TFormatSettings OtherSettings() {
  TFormatSettings settings;
  settings.DecimalSeparator = u',';
  settings.GroupSeparator = u'\u00A0';
  settings.DateSeparator = u'-';
  settings.TimeSeparator = u'h';
  settings.LongMonthNames[0] = u"janvier";
  settings.AmText = u"";
  return settings;
}

TEST(NumberFormatCompiled, CompiledCodesEqualTheStepsTakenAnew) {
  TRandom random(20240501);
  const TFormatSettings english = CurrentFormatSettings();
  for (int i = 0; i < 40000; ++i) {
    if (i % 1000 == 0) SetDefaultFormatSettings(i % 2000 == 0 ? english : OtherSettings());
    const std::u16string code = RandomCode(random);
    for (int j = 0; j < 4; ++j) {
      const double value = RandomNumber(random);
      std::u16string fast = u"<";
      AppendFormattedNumber(value, code, fast);
      const std::u16string plain = u"<" + detail::FormatNumberPlain(value, code, CurrentFormatSettings());
      ASSERT_EQ(TText(fast).ToUtf8(), TText(plain).ToUtf8()) << TText(code).ToUtf8() << " of " << value;
    }
  }
  SetDefaultFormatSettings(english);
}

TEST(NumberFormatCompiled, DateProgramsEqualTheDateFormatter) {
  static constexpr std::u16string_view kPieces[] = {
      u"y", u"Y", u"yy", u"yyyy", u"m", u"M", u"mm", u"mmm", u"mmmm", u"d",  u"dd",    u"ddd", u"h",   u"hh",     u"H",
      u"n", u"s", u"ss", u"/",    u":", u"-", u" ",  u"'",   u"''",   u"\"", u"AM/PM", u"x",   u"'h'", u"\u00E9", u"@"};
  TRandom random(7);
  const TFormatSettings settings = OtherSettings();
  for (int i = 0; i < 40000; ++i) {
    std::u16string pattern;
    for (size_t count = 1 + Below(random, 7); count > 0; --count) pattern += kPieces[Below(random, std::size(kPieces))];
    const double value = RandomNumber(random);
    std::u16string expected;
    std::u16string text;
    const bool shown = TryFormatDateTime(pattern, value, settings, expected);
    ASSERT_EQ(detail::TDateTimeProgram(pattern).TryAppend(value, settings, text), shown) << TText(pattern).ToUtf8();
    ASSERT_EQ(TText(text).ToUtf8(), TText(expected).ToUtf8()) << TText(pattern).ToUtf8() << " of " << value;
  }
}

double RandomFraction(TRandom& ARandom) {
  const double denominator = static_cast<double>(1 + Below(ARandom, 3000));
  double fraction = 0;
  switch (Below(ARandom, 4)) {
    case 0: fraction = std::ldexp(static_cast<double>(ARandom() >> 11), -53); break;
    case 1: fraction = static_cast<double>(Below(ARandom, 3000)) / denominator; break;
    case 2: fraction = std::nextafter(static_cast<double>(Below(ARandom, 3000)) / (2 * denominator), 1.0); break;
    default:
      fraction = std::ldexp(static_cast<double>(ARandom() >> 11), -53 - static_cast<int>(Below(ARandom, 20)));
      break;
  }
  fraction -= std::floor(fraction);
  return fraction < 1e-10 ? 0.5 : fraction;
}

TEST(NumberFormatCompiled, TheFractionSearchEqualsTryingEveryDenominator) {
  TRandom random(11);
  static constexpr int64_t kLimits[] = {1, 2, 3, 4, 7, 8, 9, 16, 25, 99, 100, 365, 999, 5000};
  for (int i = 0; i < 30000; ++i) {
    const double fraction = RandomFraction(random);
    const int64_t limit = kLimits[Below(random, std::size(kLimits))];
    const auto fast = detail::BestFraction(fraction, limit);
    const auto plain = detail::BestFractionPlain(fraction, limit);
    ASSERT_EQ(fast, plain) << fraction << " up to " << limit << ": " << fast.Numerator << "/" << fast.Denominator
                           << " instead of " << plain.Numerator << "/" << plain.Denominator;
  }
  for (int i = 0; i < 20; ++i) {
    const double fraction = RandomFraction(random);
    ASSERT_EQ(detail::BestFraction(fraction, 999999), detail::BestFractionPlain(fraction, 999999)) << fraction;
  }
}

TEST(NumberFormatCompiled, TheLargestDenominatorsAreFoundAtOnce) {
  TRandom random(13);
  for (int i = 0; i < 20000; ++i) {
    const double fraction = RandomFraction(random);
    const auto best = detail::BestFraction(fraction, detail::kMaxDenominator);
    EXPECT_NEAR(static_cast<double>(best.Numerator) / static_cast<double>(best.Denominator), fraction, 1e-15);
    EXPECT_EQ(std::gcd(best.Numerator, best.Denominator), 1);
  }
}

TEST(NumberFormatCompiled, MemoryUsedAgainForAnotherCodeDoesNotConfuse) {
  std::u16string code(4, u' ');
  for (int i = 0; i < 3; ++i)
    for (const std::u16string_view text : {u"0.00", u"0000", u"yyyy", u"\"ab\""}) {
      code = text;
      EXPECT_EQ(FormatNumber(44927, code).View(), detail::FormatNumberPlain(44927, text, CurrentFormatSettings()));
    }
}

TEST(NumberFormatCompiled, AnyNumberOfCodesIsServed) {
  for (int i = 0; i < 3000; ++i) {
    const std::string digits = std::to_string(i);
    const std::string expected = "5x" + digits;
    const TText code = TText::FromUtf8("0\"x" + digits + "\"");
    EXPECT_EQ(FormatNumber(5, code).ToUtf8(), expected);
    if (i % 100 == 0) {
      const std::u16string longCode = std::u16string(300, u'0') + code.ToString();
      EXPECT_EQ(FormatNumber(5, longCode).ToUtf8(), std::string(300, '0') + expected);
    }
  }
}

TEST(NumberFormatCompiled, ThreadsFormatWithCodesTheyShare) {
  const TText code(u"#,##0.0_);(#,##0.0)");
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);
  for (size_t thread = 0; thread < wrong.size(); ++thread)
    threads.emplace_back([&, thread] {
      for (int i = 0; i < 2000; ++i)
        if (FormatNumber(1234.56, code) != u"1,234.6 " || FormatNumber(-2, code) != u"(2.0)") ++wrong[thread];
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace tessarine
