#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/platform/Locale.h>

#include "../support/CaseTable.h"
#include "../support/LocaleGuard.h"

namespace tessarine {
namespace {

using test::ExpectCases;
using test::TCase;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string ShownNumber(double AValue, const char* ACode) {
  return FormatNumber(AValue, TText::FromUtf8(ACode)).ToUtf8();
}

TEST(NumberFormat, WhatIsNotFiniteNeverFails) {
  const char* codes[] = {
      "",    "0",      "0.00", "0%",      "@",  "yyyy", "# ?/?", "# ?/\?\?\?\?\?\?\?\?\?", "$#,##0_);($#,##0)",
      "x;y", "0.0E+0", "[h]0", "0;0;0;0", "\"a"};
  for (const char* code : codes)
    for (const double value : {kInfinity, -kInfinity, std::nan(""), 1.7e308, -1.7e308, 5e-324})
      EXPECT_FALSE(ShownNumber(value, code).empty()) << value << " " << code;
}

TEST(NumberFormat, EndlessCodesReadAsGeneral) {
  std::u16string code(kMaxFormatCodeLength, u'0');
  EXPECT_EQ(FormatNumber(5, code).Length(), kMaxFormatCodeLength);
  code += u'0';
  EXPECT_EQ(FormatNumber(5, code), u"5");
}

TEST(NumberFormat, ExamplesHold) {
  TFormatSettings german;
  german.DecimalSeparator = u',';
  german.GroupSeparator = u'.';
  german.DateSeparator = u'.';
  german.ShortMonthNames[2] = u"M\u00E4r";
  const auto shown = [](const TCase& ACase) { return ShownNumber(ACase.Number(1), ACase[2].c_str()); };
  const auto shownInGerman = [&](const TCase& ACase) {
    const test::TLocaleGuard guard;
    SetDefaultFormatSettings(german);
    return shown(ACase);
  };
  const auto colour = [](const TCase& ACase) {
    const TNumberFormatColor color = NumberFormatColor(ACase.Number(1), ACase.Text(2));
    if (color.Found) return test::ShownColor(color.ARGB);
    EXPECT_EQ(color.ARGB, 0xFF000000) << ACase.Place();
    return std::string("none");
  };
  const auto split = [](const TCase& ACase) {
    const auto parts = TryFormatNumberFillSplit(ACase.Number(1), ACase.Text(2));
    return parts ? Utf16ToUtf8(parts->Left) + "|" + Utf16ToUtf8(parts->Right) : "none";
  };
  ExpectCases("core/number_formats.tsv",
              {{"shown", shown},
               {"german", shownInGerman},
               {"colour", colour},
               {"split", split},
               {"is-text", [](const TCase& ACase) { return IsTextNumberFormat(ACase.Text(1)); }}});
}

TEST(NumberFormat, OnlyNumbersAreFormatted) {
  const TText code(u"0.00;;;\"text\"");
  EXPECT_EQ(FormatCellValue(TCellValue::Empty(), code), u"");
  EXPECT_EQ(FormatCellValue(TCellValue::FromText(u"5"), code), u"5");
  EXPECT_EQ(FormatCellValue(TCellValue::FromNumber(5), code), u"5.00");
  EXPECT_EQ(FormatCellValue(TCellValue::FromBoolean(true), code), u"TRUE");
  EXPECT_EQ(FormatCellValue(TCellValue::FromBoolean(false), u"0"), u"FALSE");
  EXPECT_EQ(FormatCellValue(TCellValue::FromError(ceDiv0), code), u"#DIV/0!");
  EXPECT_EQ(FormatCellValue(TCellValue::FromFormula(u"=A1"), code), u"=A1");
}

}  // namespace
}  // namespace tessarine
