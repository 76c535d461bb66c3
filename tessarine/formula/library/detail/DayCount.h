#pragma once

#include <cstdint>
#include <optional>

/// Dates as financial contracts count them: whole days, months from an anchor, and the day-count bases.
namespace tessarine::detail {

/// A day of the calendar, its serial number beside its parts.
struct TDay {
  int32_t Serial = 0;
  int32_t Year = 0;
  int32_t Month = 0;
  int32_t Day = 0;

  bool IsMonthEnd() const;
  bool IsFebruaryEnd() const { return Month == 2 && IsMonthEnd(); }

  friend bool operator==(const TDay& ALeft, const TDay& ARight) { return ALeft.Serial == ARight.Serial; }
  friend auto operator<=>(const TDay& ALeft, const TDay& ARight) { return ALeft.Serial <=> ARight.Serial; }
};

/// The day of a serial number, whose time of day is dropped; nothing outside the years 1 to 9999.
std::optional<TDay> DayAt(double ASerial);

/// AMonths months later (earlier when negative): the same day of the month or, where the month is too short or
/// AToMonthEnd is set, its last. Nothing outside the calendar.
std::optional<TDay> MonthsAfter(const TDay& ADay, int64_t AMonths, bool AToMonthEnd = false);

/// How days and years are counted. The values are those that users give.
enum class TDayBasis : uint8_t {
  dbUs30 = 0,    // months of 30 days, NASD rules
  dbActual = 1,  // days and years of the calendar
  dbActual360 = 2,
  dbActual365 = 3,
  dbEurope30 = 4,  // months of 30 days, the 31st counts as the 30th
};
using enum TDayBasis;

/// The basis of a number, its fraction cut; nothing for other numbers.
std::optional<TDayBasis> BasisOf(double ANumber);

/// Which ends of a period of months of 30 days are the last day of their month wherever they stand.
enum class TMonthEnds : uint8_t { meStart, meBoth };
using enum TMonthEnds;

/// Days by months of 30 days, NASD rules. The end of February is a 30th as a start, and as an end when the start is one
/// too or with meBoth.
int32_t DaysUs30(const TDay& AStart, const TDay& AEnd, TMonthEnds AEnds = meStart);

int32_t DaysEurope30(const TDay& AStart, const TDay& AEnd);

/// Days from AStart to AEnd; negative when AEnd is earlier.
int32_t DaysBetween(const TDay& AStart, const TDay& AEnd, TDayBasis ABasis);

/// Days of the year that days between AStart and AEnd (not earlier) are parts of. With dbActual up to a year apart 366
/// when a 29 February lies between them or both lie in a leap year, else 365; further apart the mean length of all
/// calendar years touched.
double DaysInYear(const TDay& AStart, const TDay& AEnd, TDayBasis ABasis);

/// DaysBetween over DaysInYear, in whichever order the days are given.
double YearFraction(const TDay& AStart, const TDay& AEnd, TDayBasis ABasis);

}  // namespace tessarine::detail
