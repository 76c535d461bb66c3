#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

#include <tessarine/formula/library/detail/WorkingDays.h>

#include "DatedCalls.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectDatedCalls;

TEST(Calendars, DaysAndYearsBetweenDates) {
  ExpectDatedCalls({
      {"DAYS", "2024-03-01.9 2024-02-28.1", "2"},
      {"DAYS", "0001-01-01 9999-12-31", "-3652058"},
      {"DAYS", "1e9 1", "#NUM!"},
      {"DAYS360", "2000-02-29 2000-03-31", "30"},
      {"DAYS360", "2000-02-28 2000-03-31", "33"},
      {"DAYS360", "2000-02-28 2000-03-31 TRUE", "32"},
      {"DAYS360", "2024-01-30 2024-02-29", "29"},
      {"DAYS360", "2024-01-01 2024-02-01 'x'", "#VALUE!"},
      {"YEARFRAC", "2012-01-01 2012-07-30", "0.580555555555556"},
      {"YEARFRAC", "2012-07-30 2012-01-01 1", "0.576502732240437"},
      {"YEARFRAC", "2000-02-29 2000-03-31 0", "0.0861111111111111"},
      {"YEARFRAC", "2000-02-29 2004-02-29 0", "4"},
      {"YEARFRAC", "2011-02-28 2012-02-28 1", "1"},
      {"YEARFRAC", "2011-02-28 2012-02-29 1", "1.00136798905609"},
      {"YEARFRAC", "2012-01-01 2016-01-01 1", "3.99835796387521"},
      {"YEARFRAC", "0001-01-01 9999-12-31 1", "9998.99726209243"},
      {"YEARFRAC", "2012-01-31 2012-05-31 4", "0.333333333333333"},
      {"YEARFRAC", "2012-01-01 2012-07-30 5", "#NUM!"},
      {"YEARFRAC", "2012-01-01 2012-07-30 -0.9", "0.580555555555556"},
  });
}

TEST(Calendars, DifferencesByUnits) {
  ExpectDatedCalls({
      {"DATEDIF", "2001-06-01 2002-08-15 'YD'", "75"},
      {"DATEDIF", "2001-06-01 2002-08-15 'md'", "14"},
      {"DATEDIF", "2007-01-31 2007-03-01 'MD'", "1"},
      {"DATEDIF", "2024-02-29 2025-02-28 'Y'", "0"},
      {"DATEDIF", "2024-02-29 2025-02-28 'M'", "11"},
      {"DATEDIF", "2024-02-29 2025-02-28 'YD'", "365"},
      {"DATEDIF", "2024-01-31 2024-01-31 'YM'", "0"},
      {"DATEDIF", "2024-02-01 2024-01-31 'D'", "#NUM!"},
      {"DATEDIF", "2024-01-31 2024-02-01 'W'", "#VALUE!"},
  });
}

TEST(Calendars, Weeks) {
  ExpectDatedCalls({
      {"WEEKNUM", "2012-03-09", "10"},
      {"WEEKNUM", "2012-03-09 17", "10"},
      {"WEEKNUM", "2012-03-11 11", "11"},
      {"WEEKNUM", "2012-03-09 15", "11"},  // a Friday
      {"WEEKNUM", "2012-12-31 1", "53"},
      {"WEEKNUM", "2012-12-31 21", "1"},
      {"WEEKNUM", "2012-12-31 3", "#NUM!"},
      {"ISOWEEKNUM", "2021-01-03", "53"},
      {"ISOWEEKNUM", "2008-12-29", "1"},
      {"ISOWEEKNUM", "0001-01-01", "1"},
      {"ISOWEEKNUM", "9999-12-31", "52"},
      {"ISOWEEKNUM", "3e6", "#NUM!"},
  });
}

TEST(Calendars, WorkingDays) {
  ExpectDatedCalls({
      {"NETWORKDAYS", "2012-10-01 2013-03-01 [2012-11-22 2012-12-04 2013-01-21 2012-12-04]", "107"},
      {"NETWORKDAYS", "2013-03-01 2012-10-01 2012-11-24", "-110"},  // a Saturday counts once
      {"NETWORKDAYS", "2012-10-06 2012-10-07", "0"},
      {"NETWORKDAYS", "0001-01-01 9999-12-31", "2608615"},
      {"NETWORKDAYS.INTL", "2006-01-01 2006-02-01 7 [2006-01-02;2006-01-16]", "22"},
      {"NETWORKDAYS.INTL", "2006-01-01 2006-02-01 '0010001' [2006-01-16;_]", "21"},
      {"NETWORKDAYS.INTL", "2006-01-01 2006-02-01 11", "27"},
      {"NETWORKDAYS.INTL", "2006-01-01 2006-02-01 '1111111'", "0"},
      {"NETWORKDAYS.INTL", "2006-01-01 2006-02-01 8", "#NUM!"},
      {"NETWORKDAYS.INTL", "2006-01-01 2006-02-01 '0000012'", "#VALUE!"},
      {"NETWORKDAYS.INTL", "2006-01-01 2006-02-01 '000001'", "#VALUE!"},
      {"NETWORKDAYS", "2006-01-01 2006-02-01 [1 'x']", "#VALUE!"},
      {"NETWORKDAYS", "2006-01-01 2006-02-01 #N/A", "#VALUE!"},
      {"WORKDAY", "2008-10-01 151", "2009-04-30"},
      {"WORKDAY", "2008-10-01 151 [2008-11-26 2008-12-04 2009-01-21]", "2009-05-05"},
      {"WORKDAY", "2024-01-06 0", "2024-01-06"},
      {"WORKDAY", "2024-01-06 -1", "2024-01-05"},
      {"WORKDAY", "2024-01-08 -1.9 2024-01-05", "2024-01-04"},
      {"WORKDAY", "2024-01-06 1e18", "#NUM!"},
      {"WORKDAY", "2024-01-06 -1e300", "#NUM!"},
      {"WORKDAY", "0001-01-01 2608614", "9999-12-31"},
      {"WORKDAY", "9999-12-31 1", "#NUM!"},
      {"WORKDAY.INTL", "2012-01-01 30 17", "2012-02-05"},
      {"WORKDAY.INTL", "2012-01-01 30 0", "#NUM!"},
      {"WORKDAY.INTL", "2012-01-01 1 '1111111'", "#VALUE!"},
      {"WORKDAY.INTL", "2012-01-01 1 '1111110'", "2012-01-08"},
  });
}

/// Day by day: the definition of both counts.
bool IsWorkingPlain(int32_t ADay, const detail::TWeekend& AWeekend, const std::set<int32_t>& AHolidays) {
  return !AWeekend.IsFree[((ADay - 2) % 7 + 7) % 7] && !AHolidays.contains(ADay);  // day 2 is a Monday
}

TEST(Calendars, CountsAreThoseOfWalkingDayByDay) {
  std::mt19937 random(3);
  for (int round = 0; round < 100; ++round) {
    detail::TWeekend weekend;
    for (int day = 0; day < 6; ++day) weekend.IsFree[day] = random() % 3 == 0;
    weekend.IsFree[6] = false;
    std::set<int32_t> holidays;
    for (int i = 0; i < 30; ++i) holidays.insert(static_cast<int32_t>(random() % 400) - 200);
    const detail::TWorkCalendar calendar(weekend, {holidays.begin(), holidays.end()});
    const auto first = static_cast<int32_t>(random() % 200) - 100;
    int64_t count = 0;
    for (int32_t day = first; day < first + 150; ++day) {
      if (IsWorkingPlain(day, weekend, holidays)) {
        ++count;
        EXPECT_EQ(calendar.DayAfter(first - 1, count), day);
        EXPECT_EQ(calendar.DayAfter(first + 150, count - calendar.CountBetween(first, first + 149) - 1), day);
      }
      EXPECT_EQ(calendar.CountBetween(first, day), count);
      EXPECT_EQ(calendar.CountBetween(day, first), day == first ? count : -count);
    }
  }
}

TEST(Calendars, TimesInTexts) {
  ExpectDatedCalls({
      {"TIMEVALUE", "'2:24 AM'", "0.1"},
      {"TIMEVALUE", "'2011-08-22 6:35'", "0.274305555555556"},
      {"TIMEVALUE", "'23:59:59'", "0.999988425925926"},
      {"TIMEVALUE", "'2011-08-22'", "0"},
      {"TIMEVALUE", "' '", "#VALUE!"},
      {"TIMEVALUE", "'25:00'", "#VALUE!"},
      {"TIMEVALUE", "0.5", "#VALUE!"},
  });
}

}  // namespace

}  // namespace tessarine
