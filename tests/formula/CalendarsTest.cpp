#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include <tessarine/formula/library/detail/DayCount.h>
#include <tessarine/formula/library/detail/WorkingDays.h>
#include <tessarine/platform/Dates.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

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

TEST(Calendars, WholeDaysAreTheirOwnNumbers) {
  for (int32_t day = -693'593; day <= 2'958'465; day += 97) {
    const auto whole = detail::DayAt(day);
    const auto noon = detail::DayAt(day + 0.5);
    ASSERT_TRUE(whole && noon && whole->Serial == day && noon->Serial == day && whole->Day == noon->Day) << day;
  }
  for (const double day : {-693'594.0, 2'958'466.0, std::nan(""), HUGE_VAL}) EXPECT_FALSE(detail::DayAt(day)) << day;
}

TEST(Calendars, TheClockMovesForward) {
  const double before = NowSerial();
  const double now = testing::NumberCalled("NOW", "");
  const double today = testing::NumberCalled("TODAY", "");
  EXPECT_GE(now, before);
  EXPECT_GE(NowSerial(), now);
  EXPECT_EQ(today, std::floor(today));
  EXPECT_TRUE(std::floor(before) <= today && today <= NowSerial());
}

}  // namespace

}  // namespace tessarine
