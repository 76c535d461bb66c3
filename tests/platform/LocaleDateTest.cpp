#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

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
  const struct {
    double Serial;
    TDateParts Date;
    TTimeParts Time;
    int Weekday;
  } cases[] = {
      {0, {1899, 12, 30}, {0, 0, 0, 0}, 7},
      {0.5, {1899, 12, 30}, {12, 0, 0, 0}, 7},
      {1, {1899, 12, 31}, {0, 0, 0, 0}, 1},
      {45351.25, {2024, 2, 29}, {6, 0, 0, 0}, 5},
      {45351 + 1 / 86400.0, {2024, 2, 29}, {0, 0, 1, 0}, 5},
      {45351 + 86399.999 / 86400, {2024, 2, 29}, {23, 59, 59, 999}, 5},
      {0.999999999, {1899, 12, 31}, {0, 0, 0, 0}, 1},
      {0.99999, {1899, 12, 30}, {23, 59, 59, 136}, 7},
      {-1.25, {1899, 12, 28}, {6, 0, 0, 0}, 5},
      {-1, {1899, 12, 29}, {0, 0, 0, 0}, 6},
      {-0.25, {1899, 12, 29}, {6, 0, 0, 0}, 6},
      {-0.999999999, {1899, 12, 29}, {0, 0, 0, 0}, 6},
      {-693593, {1, 1, 1}, {0, 0, 0, 0}, 2},
      {2958465.75, {9999, 12, 31}, {18, 0, 0, 0}, 6},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(DecodeDate(row.Serial), row.Date) << row.Serial;
    EXPECT_EQ(DecodeTime(row.Serial), row.Time) << row.Serial;
    EXPECT_EQ(DayOfWeek(row.Serial), row.Weekday) << row.Serial;
  }
  for (int ms = 0; ms < 86'400'000; ms += 7'919) {
    const TTimeParts time{ms / 3'600'000, ms / 60'000 % 60, ms / 1'000 % 60, ms % 1'000};
    const double fraction = EncodeTime(time.Hour, time.Minute, time.Second, time.Millisecond);
    for (const double day : {0.0, 45000.0, -45000.0}) {
      ASSERT_EQ(DecodeTime(CombineDateTime(day, fraction)), time) << day;
      ASSERT_EQ(DecodeDate(CombineDateTime(day, fraction)), DecodeDate(day)) << testing::PrintToString(time);
    }
  }
}

TEST(Dates, MonthsMoveAndClipTheDay) {
  const struct {
    double Serial;
    int64_t Months;
    double Moved;
  } cases[] = {
      {Day(2024, 1, 31), 1, Day(2024, 2, 29)},
      {Day(2023, 1, 31), 1, Day(2023, 2, 28)},
      {Day(2024, 3, 31), -1, Day(2024, 2, 29)},
      {Day(2024, 12, 15), 1, Day(2025, 1, 15)},
      {Day(2024, 1, 15), -1, Day(2023, 12, 15)},
      {Day(2024, 1, 15), -13, Day(2022, 12, 15)},
      {Day(2024, 2, 29) + 0.75, 12, Day(2025, 2, 28) + 0.75},
      {-1.25, -1, Day(1899, 11, 28) + 0.75},  // 06:00 below day 0
      {-1.25, 2, Day(1900, 2, 28) + 0.25},
      {Day(9999, 11, 30), 1, Day(9999, 12, 30)},
      {Day(9999, 12, 1), 1, kNan},
      {Day(1, 1, 1), -1, kNan},
      {Day(2024, 1, 1), std::numeric_limits<int64_t>::max(), kNan},
      {Day(2024, 1, 1), std::numeric_limits<int64_t>::min(), kNan},
  };
  for (const auto& row : cases) {
    const double moved = IncMonth(row.Serial, row.Months);
    if (std::isnan(row.Moved))
      EXPECT_TRUE(std::isnan(moved)) << row.Serial << " " << row.Months;
    else
      EXPECT_EQ(moved, row.Moved) << row.Serial << " " << row.Months;
  }
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

TEST(DateParsing, AcceptsTheFormsOfTheLocale) {
  TFormatSettings english;
  TFormatSettings iso;
  iso.DateOrder = doYMD;
  iso.DateSeparator = u'-';
  const TFormatSettings german = German();
  const std::string year = std::to_string(DecodeDate(NowSerial()).Year);
  const struct {
    std::u16string_view Text;
    std::string English;
    std::string German;
    std::string Iso;
  } cases[] = {
      {u"2024-02-29", "2024-02-29", "2024-02-29", "2024-02-29"},
      {u"2024/2/9", "2024-02-09", "2024-02-09", "2024-02-09"},
      {u" 2/9/2024 ", "2024-02-09", "2024-09-02", "no"},
      {u"02.09.2024", "2024-02-09", "2024-09-02", "no"},
      {u"29-2-2007", "no", "no", "no"},
      {u"13/1/2020", "no", "2020-01-13", "no"},
      {u"10/11/12", "2012-10-11", "2012-11-10", "2010-11-12"},
      {u"2/9", year + "-02-09", year + "-09-02", year + "-02-09"},
      {u"2.9", "no", year + "-09-02", "no"},
      {u"2-9", year + "-02-09", year + "-09-02", year + "-02-09"},
      {u"1/2-2020", "no", "no", "no"},
      {u"1-May-1900", "1900-05-01", "no", "1900-05-01"},
      {u"22-AUG-2008", "2008-08-22", "2008-08-22", "2008-08-22"},
      {u"February 12 2010", "2010-02-12", "2010-02-12", "2010-02-12"},
      {u"January 23, 1951", "1951-01-23", "1951-01-23", "1951-01-23"},
      {u"Jan 2010", "2010-01-01", "2010-01-01", "2010-01-01"},
      {u"2010 Jan 5", "2010-01-05", "2010-01-05", "2010-01-05"},
      {u"5 jan", year + "-01-05", year + "-01-05", year + "-01-05"},
      {u"3. M\u00E4rz 2021", "no", "2021-03-03", "no"},
      {u"3. M\u00E4r. 2021 14:05", "no", "2021-03-03 14:05:00", "no"},
      {u"Apr 2, 1952 3:54 pm", "1952-04-02 15:54:00", "1952-04-02 15:54:00", "1952-04-02 15:54:00"},
      {u"2 Apr 3:54 pm", year + "-04-02 15:54:00", year + "-04-02 15:54:00", year + "-04-02 15:54:00"},
      {u"2024-02-29 06:00", "2024-02-29 06:00:00", "2024-02-29 06:00:00", "2024-02-29 06:00:00"},
      {u"2024-02-29T06:00:07.25", "2024-02-29 06:00:07", "2024-02-29 06:00:07", "2024-02-29 06:00:07"},
      {u"2024-02-29 12 am", "2024-02-29", "2024-02-29", "2024-02-29"},
      {u"2024-02-29 12 PM", "2024-02-29 12:00:00", "2024-02-29 12:00:00", "2024-02-29 12:00:00"},
      {u"2024-02-29 6 vorm.", "no", "2024-02-29 06:00:00", "no"},
      {u"1850-01-01 06:00", "1850-01-01 06:00:00", "1850-01-01 06:00:00", "1850-01-01 06:00:00"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(ReadDate(row.Text, english), row.English) << Utf16ToUtf8(row.Text);
    EXPECT_EQ(ReadDate(row.Text, german), row.German) << Utf16ToUtf8(row.Text);
    EXPECT_EQ(ReadDate(row.Text, iso), row.Iso) << Utf16ToUtf8(row.Text);
  }
}

TEST(DateParsing, RefusesEverythingElse) {
  const std::u16string_view cases[] = {u"",
                                       u" ",
                                       u"1",
                                       u"1999",
                                       u"1.5",
                                       u"1,5",
                                       u"-5",
                                       u"--10",
                                       u"10--",
                                       u"32/32",
                                       u"1/2/3/4",
                                       u"1/2/",
                                       u"1//2",
                                       u"2024-02-30",
                                       u"0000-1-1",
                                       u"20245-1-1",
                                       u"January",
                                       u"Jan",
                                       u"First August 2010",
                                       u"1me Fev 2010",
                                       u"1/2/2020x",
                                       u"1/2/2020 x",
                                       u"1/2/2020 5",
                                       u"1/2/2020 25:00",
                                       u"1/2/2020 5:60",
                                       u"1/2/2020 13:00 pm",
                                       u"1/2/2020 5:",
                                       u"1/2/2020 5:00:",
                                       u"1/2/2020 5:00:00.",
                                       u"5:00",
                                       u"1 / 2 / 2020",
                                       u"1/2/2020T",
                                       u"Janu 5 2020",
                                       u"1/2/2020 5:00 pmx",
                                       u"999999999999/1/1",
                                       u"\u0661/2/2020"};
  for (const auto text : cases) EXPECT_EQ(ReadDate(text, {}), "no") << Utf16ToUtf8(text);
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
  const double serial = Day(2023, 3, 5) + EncodeTime(15, 4, 9, 0);  // a Sunday
  const double midnight = Day(1905, 11, 20);
  const struct {
    std::u16string_view Pattern;
    const char* Afternoon;
    const char* Midnight;
  } cases[] = {
      {u"yyyy-mm-dd", "2023-03-05", "1905-11-20"},
      {u"d/m/yy", "5/3/23", "20/11/05"},
      {u"ddd d mmm", "Sun 5 Mar", "Mon 20 Nov"},
      {u"dddd, mmmm dd", "Sunday, March 05", "Monday, November 20"},
      {u"h:mm", "15:04", "0:00"},
      {u"hh:mm:ss", "15:04:09", "00:00:00"},
      {u"h:m:s", "15:4:9", "0:0:0"},
      {u"h:nn AM/PM", "3:04 PM", "12:00 AM"},
      {u"hh:mm am/pm", "03:04 PM", "12:00 AM"},
      {u"h A/P", "3 P", "12 A"},
      {u"mm:ss", "03:09", "11:00"},           // without hours before it a month
      {u"hh:mm mm", "15:04 03", "00:00 11"},  // minutes once
      {u"hh'h'mm", "15h04", "00h00"},         // what is quoted does not come between
      {u"hh \"of\" mm", "15 of 04", "00 of 00"},
      {u"h mmm", "15 Mar", "0 Nov"},
      {u"h AM/PM mm", "3 PM 03", "12 AM 11"},
      {u"HH:NN YYYY", "15:04 2023", "00:00 1905"},
      {u"'yyyy'yyyy", "yyyy2023", "yyyy1905"},
      {u"d 'o''clock' h", "5 o'clock 15", "20 o'clock 0"},
      {u"[h]:mm", "[15]:04", "[0]:00"},
      {u"d'open", "5open", "20open"},
      {u"d'", "5", "20"},
      {u"q? \u20AC%", "q? \xE2\x82\xAC%", "q? \xE2\x82\xAC%"},
      {u"", "", ""},
  };
  for (const auto& row : cases) {
    std::u16string text = u"replaced";
    EXPECT_TRUE(TryFormatDateTime(row.Pattern, serial, {}, text));
    EXPECT_EQ(Utf16ToUtf8(text), row.Afternoon) << Utf16ToUtf8(row.Pattern);
    EXPECT_TRUE(TryFormatDateTime(row.Pattern, midnight, {}, text));
    EXPECT_EQ(Utf16ToUtf8(text), row.Midnight) << Utf16ToUtf8(row.Pattern);
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
