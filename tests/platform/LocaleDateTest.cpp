#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <limits>
#include <thread>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {

void PrintTo(const TDateParts& ADate, std::ostream* AOut) {
  *AOut << ADate.Year << '-' << ADate.Month << '-' << ADate.Day;
}
void PrintTo(const TTimeParts& ATime, std::ostream* AOut) {
  *AOut << ATime.Hour << ':' << ATime.Minute << ':' << ATime.Second << '.' << ATime.Millisecond;
}

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double Day(int AYear, int AMonth, int ADay) {
  double serial = kNan;
  EXPECT_TRUE(TryEncodeDate(AYear, AMonth, ADay, serial)) << AYear << '-' << AMonth << '-' << ADay;
  return serial;
}

TFormatSettings German() {
  TFormatSettings settings;
  settings.DecimalSeparator = u',';
  settings.GroupSeparator = u'.';
  settings.DateSeparator = u'.';
  settings.DateOrder = doDMY;
  settings.ShortMonthNames[2] = u"M\u00E4r.";
  settings.LongMonthNames[2] = u"M\u00E4rz";
  settings.ShortMonthNames[4] = settings.LongMonthNames[4] = u"Mai";
  settings.LongDayNames[0] = u"Sonntag";
  settings.AmText = u"vorm.";
  return settings;
}

TEST(Locale, SwitchingBackAndForthKeepsReferencesAndCountsVersions) {
  const TFormatSettings& original = CurrentFormatSettings();
  EXPECT_EQ(original, TFormatSettings());
  const uint64_t version = FormatSettingsVersion();
  SetDefaultFormatSettings(TFormatSettings());
  EXPECT_EQ(FormatSettingsVersion(), version);
  SetDefaultFormatSettings(German());
  const TFormatSettings& german = CurrentFormatSettings();
  EXPECT_EQ(german, German());
  EXPECT_EQ(FormatSettingsVersion(), version + 1);
  SetDefaultFormatSettings(TFormatSettings());
  EXPECT_EQ(&CurrentFormatSettings(), &original);
  EXPECT_EQ(FormatSettingsVersion(), version + 2);
  SetDefaultFormatSettings(German());
  EXPECT_EQ(&CurrentFormatSettings(), &german);
  SetDefaultFormatSettings(TFormatSettings());
}

TEST(Locale, MayChangeWhileOtherThreadsRead) {
  std::atomic<bool> stop{false};
  std::atomic<int> mixed{0};
  const auto read = [&] {
    while (!stop) {
      const TFormatSettings& settings = CurrentFormatSettings();
      if ((settings.DecimalSeparator == u',') != (settings.DateOrder == doDMY)) ++mixed;
    }
  };
  std::thread first(read);
  std::thread second(read);
  for (int round = 0; round < 2'000; ++round) SetDefaultFormatSettings(round % 2 == 0 ? German() : TFormatSettings());
  stop = true;
  first.join();
  second.join();
  EXPECT_EQ(mixed, 0);
  EXPECT_EQ(CurrentFormatSettings(), TFormatSettings());
}

TEST(Dates, EveryDayOfTheCalendarIsItsOwnNumber) {
  EXPECT_EQ(Day(1899, 12, 30), 0);
  EXPECT_EQ(Day(1900, 3, 1), 61);
  EXPECT_EQ(Day(2023, 1, 1), 44927);
  double expected = -693593;
  for (int year = 1; year <= 9999; ++year)
    for (int month = 1; month <= 12; ++month)
      for (int day = 1; day <= DaysInMonth(year, month); ++day, ++expected) {
        double serial = kNan;
        ASSERT_TRUE(TryEncodeDate(year, month, day, serial));
        ASSERT_EQ(serial, expected);
        ASSERT_EQ(DecodeDate(serial), (TDateParts{year, month, day}));
      }
  EXPECT_EQ(expected, 2958466);
}

TEST(Dates, WhatTheCalendarDoesNotHaveIsRefused) {
  const TDateParts cases[] = {{2023, 2, 29}, {1900, 2, 29}, {2024, 2, 30}, {2024, 13, 1},     {2024, 0, 1},
                              {2024, 4, 31}, {2024, 1, 0},  {0, 1, 1},     {10000, 1, 1},     {-5, 1, 1},
                              {2024, 1, -1}, {2024, -1, 1}, {2024, 1, 32}, {2147483647, 1, 1}};
  for (const TDateParts& row : cases) {
    double serial = 42;
    EXPECT_FALSE(TryEncodeDate(row.Year, row.Month, row.Day, serial)) << testing::PrintToString(row);
    EXPECT_EQ(serial, 42);
  }
  for (const double serial :
       {-693594.0, -693593.0001, 2958466.0, 1e18, -1e300, kNan, std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(DecodeDate(serial), TDateParts()) << serial;
    EXPECT_EQ(DecodeTime(serial), TTimeParts()) << serial;
    EXPECT_EQ(DayOfWeek(serial), 0) << serial;
    EXPECT_TRUE(std::isnan(IncMonth(serial, 0))) << serial;
    std::u16string text = u"as it was";
    EXPECT_FALSE(TryFormatDateTime(u"yyyy", serial, {}, text)) << serial;
    EXPECT_EQ(text, u"as it was");
  }
}

TEST(Dates, TimesAreRoundedToMillisecondsAndCarryIntoTheDate) {
  for (int ms = 0; ms < 86'400'000; ms += 7'919) {
    const TTimeParts time{ms / 3'600'000, ms / 60'000 % 60, ms / 1'000 % 60, ms % 1'000};
    const double fraction = EncodeTime(time.Hour, time.Minute, time.Second, time.Millisecond);
    for (const double day : {0.0, 45000.0, -45000.0}) {
      ASSERT_EQ(DecodeTime(CombineDateTime(day, fraction)), time) << day;
      ASSERT_EQ(DecodeDate(CombineDateTime(day, fraction)), DecodeDate(day)) << testing::PrintToString(time);
    }
  }
}

/// "2024-1-31" or a serial.
double SerialOf(const test::TCase& ACase, size_t AField) {
  int year = 0, month = 0, day = 0;
  return std::sscanf(ACase[AField].c_str(), "%d-%d-%d", &year, &month, &day) == 3 ? Day(year, month, day)
                                                                                  : ACase.Number(AField);
}

TEST(Dates, ExamplesHold) {
  const auto parts = [](const test::TCase& ACase) {
    const double serial = ACase.Number(1);
    return testing::PrintToString(DecodeDate(serial)) + " " + testing::PrintToString(DecodeTime(serial)) + " weekday " +
           std::to_string(DayOfWeek(serial));
  };
  const auto months = [](const test::TCase& ACase) {
    const double moved = IncMonth(SerialOf(ACase, 1), ACase.Integer(2));
    if (std::isnan(moved)) return std::string("none");
    return moved == std::floor(moved) ? testing::PrintToString(DecodeDate(moved)) : test::Shown(moved);
  };
  test::ExpectCases("platform/dates.tsv", {{"serial", parts}, {"months", months}});
}

TEST(Dates, TheClockRunsInThisCentury) {
  const double before = NowSerial();
  EXPECT_GT(before, Day(2020, 1, 1));
  EXPECT_LT(before, Day(2100, 1, 1));
  EXPECT_GE(NowSerial(), before - 0.1);  // a change of the clock at most
}

std::string ReadDate(std::u16string_view AText, const TFormatSettings& ASettings) {
  double serial = 0;
  std::u16string text;
  if (!TryStrToDate(AText, ASettings, serial)) return "no";
  EXPECT_TRUE(TryFormatDateTime(serial == std::floor(serial) ? u"yyyy'-'mm'-'dd" : u"yyyy'-'mm'-'dd hh':'nn':'ss",
                                serial, ASettings, text));
  return Utf16ToUtf8(text);
}

TEST(DateParsing, FormsOfTheLocaleAreReadAndOthersRefused) {
  TFormatSettings iso;
  iso.DateOrder = doYMD;
  iso.DateSeparator = u'-';
  const TFormatSettings settings[] = {{}, German(), iso};
  const std::string year = std::to_string(DecodeDate(NowSerial()).Year);
  for (const test::TCase& row : test::CasesOf("platform/date_texts.tsv", 2, 4)) {
    for (size_t i = 1; i < row.Count(); ++i) {
      const std::string wanted = row[i].starts_with("YEAR") ? year + row[i].substr(4) : row[i];
      EXPECT_EQ(ReadDate(row.Text(0), settings[i - 1]), wanted) << row.Place();
    }
  }
}

TEST(DateParsing, TwoDigitYearsFallIntoTheWindow) {
  const int year = DecodeDate(NowSerial()).Year;
  for (const int window : {0, 1, 30, 50, 99}) {
    TFormatSettings settings;
    settings.TwoDigitYearWindow = window;
    const int first = window == 0 ? year / 100 * 100 : year - window;
    for (int expected = first; expected < first + 100; ++expected) {
      const int digits = expected % 100;
      const std::string text = "1/2/" + std::string(digits < 10 ? "0" : "") + std::to_string(digits);
      double serial = 0;
      ASSERT_TRUE(TryStrToDate(Utf8ToUtf16(text), settings, serial)) << text;
      ASSERT_EQ(DecodeDate(serial).Year, expected) << text << " window " << window;
    }
  }
}

TEST(DateFormatting, PatternsShowTheirParts) {
  const double serials[] = {Day(2023, 3, 5) + EncodeTime(15, 4, 9, 0), Day(1905, 11, 20)};
  for (const test::TCase& row : test::CasesOf("platform/date_patterns.tsv", 3)) {
    for (size_t i = 0; i < 2; ++i) {
      std::u16string text = u"replaced";
      EXPECT_TRUE(TryFormatDateTime(row.Text(0), serials[i], {}, text));
      EXPECT_EQ(Utf16ToUtf8(text), row[i + 1]) << row.Place();
    }
  }
}

TEST(DateFormatting, NamesAndSeparatorsComeFromTheSettings) {
  TFormatSettings settings = German();
  settings.TimeSeparator = u'h';
  std::u16string text;
  EXPECT_TRUE(TryFormatDateTime(u"dddd, dd/mm/yyyy mmmm h:nn AM/PM", Day(2023, 3, 5) + 0.25, settings, text));
  EXPECT_EQ(text, u"Sonntag, 05.03.2023 M\u00E4rz 6h00 vorm.");
}

}  // namespace
}  // namespace tessarine
