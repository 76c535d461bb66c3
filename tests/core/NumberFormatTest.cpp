#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/platform/Locale.h>

namespace tessarine {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string ShownNumber(double AValue, const char* ACode) {
  return FormatNumber(AValue, TText::FromUtf8(ACode)).ToUtf8();
}

struct TNumberCase {
  double Value;
  const char* Code;
  const char* Shown;
};

template <size_t N>
void ExpectShown(const TNumberCase (&ACases)[N]) {
  for (const auto& row : ACases) EXPECT_EQ(ShownNumber(row.Value, row.Code), row.Shown) << row.Value << " " << row.Code;
}

/// The settings of the process, put back at the end.
class TLocaleGuard {
 public:
  explicit TLocaleGuard(const TFormatSettings& ASettings) : FBefore(CurrentFormatSettings()) {
    SetDefaultFormatSettings(ASettings);
  }
  ~TLocaleGuard() { SetDefaultFormatSettings(FBefore); }

 private:
  TFormatSettings FBefore;
};

TEST(NumberFormat, GeneralShowsFifteenDigitsAndFourExponentDigits) {
  ExpectShown({{1234.5, "General", "1234.5"},
               {1234.5, "", "1234.5"},
               {1234.5, "  gEnErAl ", "1234.5"},
               {-0.0, "General", "0"},
               {0.1 + 0.2, "General", "0.3"},
               {1e20, "General", "1E+0020"},
               {1.5e-7, "General", "1.5E-0007"},
               {1e15, "General", "1E+0015"},
               {123456789012345, "General", "123456789012345"},
               {1e20, "@", "1E+20"},
               {-2.5, " text ", "-2.5"}});
}

TEST(NumberFormat, CommonCodesRoundEachInItsOwnWay) {
  ExpectShown({{2.5, "0", "2"},  // to even
               {3.5, "0", "4"},
               {-0.5, "0", "0"},
               {-1.5, " 0 ", "-2"},
               {1e18, "0", "1000000000000000000"},
               {1e20, "0", "100000000000000000000"},
               {-1e20, "0", "-100000000000000000000"},
               {2.5, "#,##0", "3"},  // half away from zero
               {1.005, "0.00", "1.01"},
               {-0.001, "0.00", "-0.00"},
               {-0.0, "0.00", "0.00"},
               {-0.0, "#,##0.0", "0.0"},
               {1234567.891, "#,##0.00", "1,234,567.89"},
               {-999.995, "#,##0.00", "-1,000.00"},
               {0.5, "0%", "50%"},
               {0.125, "0%", "13%"},
               {-0.12345, "0.00%", "-12.35%"}});
}

TEST(NumberFormat, SectionsAreChosenBySignAndKeepTheMinusUnlessTheyBringTheirOwn) {
  ExpectShown({{1234.5, "$#,##0_)", "$1,235 "},
               {-1234, "$#,##0_);($#,##0)", "($1,234)"},
               {1234, "$#,##0_);($#,##0)", "$1,234 "},
               {-1, "0;[Red]0", "-1"},
               {-5, "0;0", "-5"},
               {-5, "0;-0", "-5"},
               {-5, "0;\"minus \"0", "-minus 5"},
               {0, "0;-0;\"zero\"", "zero"},
               {-0.0, "0;-0;\"zero\"", "zero"},
               {0, "0.0;-0", "0.0"},
               {7, "0;-0;\"zero\";\"text\"", "7"},
               {5, "\"x\"", "x"},
               {-5, "\"x\"", "-x"},
               {5, ";;;", "5"},
               {-5, ";;;", "-5"},
               {0, ";;;", "0"},
               {5, "General;-General", "General"},
               {-5, "General;-General", "-General"},
               {-0.001, "0.000;0.0", "-0.0"},
               {0.001, "0.0;-0.0;\"nil\"", "0.0"},  // by the value, not by what is shown
               {5, "0\";\"0", "0;5"},
               {500, "[>100]\"big \"0;0", "big 500"},
               {5, "[>100]\"big \"0;0", "big 5"}});
}

TEST(NumberFormat, LiteralsAndPaddingKeepTheirPlaces) {
  ExpectShown({{5, "\"#\"0", "#5"},
               {5, "\\#0", "#5"},
               {5, "0\\0", "50"},
               {5, "0\"00\"", "500"},
               {5, "0\" it's\"", "5 it's"},
               {5, "0\"''\"", "5''"},
               {1234, "_(* #,##0_);_(* (#,##0)", "1,234 "},
               {-1234, "_(* #,##0_);_(* (#,##0)", "(1,234)"},
               {0, "_($* #,##0.00_);_($* (#,##0.00);_($* \"-\"\?\?_);_(@_)", "$ -?? "},
               {5, "0_", "5_"},
               {5, "0*", "5*"},
               {5, "0\\", "5\\"},
               {5, "0_)_)", "5  "},
               {5, "\" \"0", "5"},
               {5, "0\" \"", "5 "},
               {5, "?0", "?5"},
               {1234, "0,0", "1,234"},
               {0.5, "#.##", ".5"},
               {12345.678, "0.00E+00", "1.23E+04"},
               {5, "\"", "5"},
               {5, "$", "$"}});
}

TEST(NumberFormat, OnlyAPercentSignAtTheEndScales) {
  ExpectShown({{0.5, "0.0%", "50.0%"},
               {0.5, "0%;(0%)", "50%"},
               {-0.5, "0%;(0%)", "(1%)"},  // the parenthesis stands behind: no scaling, 0.5 rounds away from zero
               {0.5, "%0", "%1"},
               {0.5, "0% ", "50%"},
               {0.5, "0%_)", "1% "},
               {0.25, "0 \"%\"", "25%"},
               {0.25, "\\%", "25%"},
               {-0.25, "0.0 %", "-25.0% "},
               {1e308, "0.0%", "INF%"}});
}

TEST(NumberFormat, TagsLeaveTheirSymbolOrNothing) {
  ExpectShown({{5, "[$\xE2\x82\xAC-407] 0", "\xE2\x82\xAC 5"},
               {5, "[$EUR]0", "EUR5"},
               {5, "[$-409]0", "$5"},
               {5, "[$]0", "$5"},
               {5, "[color10]0", "5"},
               {5, "[Blue][$x-1][>4]0", "x5"},
               {5, "[hh]0", "[hh]5"},
               {5, "[hh][Red]0", "[hh][Red]5"},
               {5, "[Red][hh]0", "[hh]5"},
               {5, "[Red0", "[Red5"},
               {5, "Red]0", "Red]5"},
               {5, "[$[-1]x]0", "5"},  // the symbol opens the next tag
               {5, "\"[a]\"0", "5"}});
}

TEST(NumberFormat, DateCodesFollowTheDateFormatter) {
  ExpectShown({{44927, "yyyy-mm-dd", "2023-01-01"},
               {44927.75, "m/d/yyyy h:mm", "1/1/2023 18:00"},
               {44927.75, "h:mm AM/PM", "6:00 PM"},
               {44927.75, "h:mm a/p", "6:00 PM"},
               {44927, "d-mmm-yy", "1-Jan-23"},
               {44927, "DDDD, MMMM D", "Sunday, January 1"},
               {44927, "mmmmm", "1"},
               {44927, "mm-dd-yy", "01/01/23"},
               {44927, "mm-dd-yyyy", "01/01/2023"},
               {44927.5, "mm:ss", "01:00"},  // nothing before it says hours: months
               {44927.5, "hh:mm:ss", "12:00:00"},
               {1.5, "[h]:mm:ss", "[12]:00:00"},
               {44929, "[Red]@", "[Re3]@"},
               {44927, "yyyy\"y 'y\"", "2023y 'y"},
               {44927, "d\\d", "01"},               // the backslash goes, its letter counts
               {44927.5, "mmss.0", "mmss44927.5"},  // a "0" makes it a number
               {5, "0 \\days", "5 days"},
               {44927, "yyyy;@", "2023;@"},
               {44927, "d\xE2\x80\x93m",
                "1\xE2\x80\x93"
                "1"},
               {0, "yyyy-mm-dd", "1899-12-30"},
               {3e6, "yyyy", "3000000"},  // no such year
               {-7e5, "h:mm", "-700000"},
               {1e300, "yyyy", "1E+300"}});
}

TEST(NumberFormat, FractionsSplitOffTheWholeAndTakeTheBestDenominator) {
  ExpectShown({{0.75, "# ?/?", "3/4"},
               {1.5, "?/?", "1 1/2"},
               {-1.5, "# ?/?", "-1 1/2"},
               {0.3, "# ?/10", "0"},  // the mask's 0 is a place: the limit is 1
               {0.3, "# ?/16", "3/10"},
               {0.7, "# ?/1", "1"},
               {0.5, "# ?/1", "0"},
               {3.14159265358979, "# \?\?/\?\?", "3 14/99"},
               {3.14159265358979, "# \?\?\?/\?\?\?", "3 16/113"},
               {3, "# ?/?", "3"},
               {0, "# ?/?", "0"},
               {-0.01, "# ?/?", "0"},
               {-0.99, "# ?/?", "-1"},
               {2.99999999999, "# ?/?", "3"},
               {0.5, "# ?/?_)", "1/2 "},
               {0.5, "#/#%", "1/2"},
               {-0.5, "(?/?)", "-1/2"},
               {0.5, "?/a", "?/a"},
               {0.5, "\"x\"/?", "x/?"},
               {1e19, "?/?", "1E+19"},
               {1.0 / 3, "?/\?\?\?\?\?\?\?\?\?\?\?\?\?\?\?\?\?\?\?", "1/3"}});
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

TEST(NumberFormat, SeparatorsAndNamesAreThoseOfTheMoment) {
  const struct {
    double Value;
    const char* Code;
    const char* English;
    const char* German;
  } cases[] = {
      {1234.5, "General", "1234.5", "1234,5"},
      {1234.5, "#,##0.00", "1,234.50", "1.234,50"},
      {0.125, "0.0%", "12.5%", "12,5%"},
      {-1234, "$#,##0_);($#,##0)", "($1,234)", "($1.234)"},
      {44927, "m/d/yyyy", "1/1/2023", "1.1.2023"},
      {44986, "d mmm h:mm", "1 Mar 0:00", "1 M\xC3\xA4r 0:00"},
      {0.5, "@", "0.5", "0,5"},
      {1e7, "yyyy", "10000000", "10000000"},
      {1.5e20, "x;;", "x", "x"},
      {2.5e-8, "General", "2.5E-0008", "2,5E-0008"},
  };
  TFormatSettings german;
  german.DecimalSeparator = u',';
  german.GroupSeparator = u'.';
  german.DateSeparator = u'.';
  german.ShortMonthNames[2] = u"M\u00E4r";
  for (int round = 0; round < 2; ++round) {
    for (const auto& row : cases) EXPECT_EQ(ShownNumber(row.Value, row.Code), row.English) << row.Code;
    const TLocaleGuard guard(german);
    for (const auto& row : cases) EXPECT_EQ(ShownNumber(row.Value, row.Code), row.German) << row.Code;
  }
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

TEST(NumberFormat, TheColourIsThatOfTheSectionForTheValue) {
  const struct {
    double Value;
    const char16_t* Code;
    bool Found;
    uint32_t ARGB;
  } cases[] = {
      {1, u"[color10]0", true, 0xFFFF0000},       {1, u"0;[Red]0", false, 0xFF000000},
      {-1, u"0;[Red]0", true, 0xFFFF0000},        {0, u"0;[Red]0;[BLUE]0", true, 0xFF0000FF},
      {1, u"[Green]yyyy", true, 0xFF008000},      {1, u"[Black]0", true, 0xFF000000},
      {1, u"[White][Cyan]0", true, 0xFF00FFFF},   {1, u"[h][Red]", false, 0xFF000000},
      {1, u"[Yellow][h][Red]", true, 0xFFFFFF00}, {1, u" [magenta]General ", true, 0xFFFF00FF},
      {1, u"[reddish]0", false, 0xFF000000},      {1, u"", false, 0xFF000000},
  };
  for (const auto& row : cases)
    EXPECT_EQ(NumberFormatColor(row.Value, row.Code), (TNumberFormatColor{row.Found, row.ARGB}))
        << TText(row.Code).ToUtf8();
}

TEST(NumberFormat, AFillSplitsTheTextInTwo) {
  const struct {
    double Value;
    const char16_t* Code;
    const char16_t* Left;
    const char16_t* Right;
  } cases[] = {
      {1234, u"_($* #,##0_);_($* (#,##0)", u" $", u"1,234 "},
      {-1234, u"_($* #,##0_);_($* (#,##0)", u" $", u"(1,234)"},
      {0, u"_(* #,##0_);_(* (#,##0);_(* \"-\"_)", u" ", u"- "},
      {-5, u"\"a*b\"[Red]*-0.0", u"a*b", u"-5.0"},
      {-0.0, u"x*-0.0", u"x", u"0.0"},
      {5, u"0*", u"0", u"5"},
      {5, u"0*x", u"0", u"5"},
      {0.5, u"a* 0%", u"a", u"50%"},
  };
  for (const auto& row : cases) {
    const auto split = TryFormatNumberFillSplit(row.Value, row.Code);
    ASSERT_TRUE(split) << TText(row.Code).ToUtf8();
    EXPECT_EQ(split->Left, row.Left) << TText(row.Code).ToUtf8();
    EXPECT_EQ(split->Right, row.Right) << TText(row.Code).ToUtf8();
  }
  EXPECT_FALSE(TryFormatNumberFillSplit(1, u"0;* 0"));
  EXPECT_FALSE(TryFormatNumberFillSplit(1, u"\"*\"0"));
}

TEST(NumberFormat, TextCodesAreKnownInAnyCase) {
  for (const char16_t* code : {u"@", u" @ ", u"text", u" TEXT "}) EXPECT_TRUE(IsTextNumberFormat(code));
  for (const char16_t* code : {u"", u"@@", u"General", u"@ 0", u"Texts"}) EXPECT_FALSE(IsTextNumberFormat(code));
}

}  // namespace
}  // namespace tessarine
