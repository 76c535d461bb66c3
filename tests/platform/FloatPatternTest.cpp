#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <tessarine/platform/FloatPattern.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

TEST(FloatPattern, ExamplesHold) {
  TFormatSettings german;
  german.DecimalSeparator = u',';
  german.GroupSeparator = u'.';
  const auto shown = [](const TFormatSettings& ASettings) {
    return [ASettings](const test::TCase& ACase) { return FormatFloat(ACase.Text(1), ACase.Number(2), ASettings); };
  };
  test::ExpectCases("platform/float_patterns.tsv", {{"english", shown({})}, {"german", shown(german)}});
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
