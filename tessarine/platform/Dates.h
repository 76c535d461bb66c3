#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

struct TFormatSettings;

// A date and time is a double: days since 1899-12-30 (day 0) in the Gregorian calendar, the fraction being the time of
// day. Years 1 to 9999 are known, which are the days -693593 to 2958465. Everywhere here a serial number is first
// rounded to whole milliseconds, so that 0.999999999 is the midnight that begins day 1, for its date as for its time.
// Below 0 the date is that of the floor, the time that of the fraction's absolute value.

/// All zeros for a serial number outside the years 1 to 9999.
struct TDateParts {
  int Year = 0;
  int Month = 0;
  int Day = 0;
  bool operator==(const TDateParts&) const = default;
};

struct TTimeParts {
  int Hour = 0;
  int Minute = 0;
  int Second = 0;
  int Millisecond = 0;
  bool operator==(const TTimeParts&) const = default;
};

/// 28 to 31; 0 for a month that is none of 1 to 12 or a year outside 1 to 9999.
TESSARINE_API int DaysInMonth(int AYear, int AMonth);

/// The serial number of a date. False, with AResult untouched, for a date that the calendar does not have.
[[nodiscard]] TESSARINE_API bool TryEncodeDate(int AYear, int AMonth, int ADay, double& AResult);

TESSARINE_API TDateParts DecodeDate(double ASerial);

/// The time of day as a fraction of a day. The parts are added as they are given; nothing is checked.
TESSARINE_API double EncodeTime(int AHour, int AMinute, int ASecond, int AMillisecond);

/// The serial number of a whole day and a time of day (a fraction from 0 to below 1). Below 0 that is not their sum.
TESSARINE_API double CombineDateTime(double ADay, double ATime);

/// The time of day; all zeros for what is not finite or outside the years 1 to 9999.
TESSARINE_API TTimeParts DecodeTime(double ASerial);

/// 1 for Sunday to 7 for Saturday; 0 outside the years 1 to 9999.
TESSARINE_API int DayOfWeek(double ASerial);

/// ASerial moved by AMonths months. A day beyond the end of the new month becomes its last; the time of day stays.
/// NaN when either date lies outside the years 1 to 9999.
TESSARINE_API double IncMonth(double ASerial, int64_t AMonths);

/// The local date and time now.
TESSARINE_API double NowSerial();

/// Reads AText as a date, with an optional time of day after a blank. Accepted are, in the order of ASettings, two or
/// three numbers joined by one of the date separator, "-", "." and "/" (two numbers joined by what is the decimal
/// separator, but not the date separator, are no date); a month by its short or long name in any case, with a day
/// before or after it and the year last, or the year first, joined by separators, blanks and commas; and always
/// year-month-day when three numbers begin with a year of four digits. Without a year it is the current one, without a
/// day the first; a year of one or two digits is placed by TwoDigitYearWindow. The time is hours and minutes, seconds
/// and their fraction if given, and AM or PM; with these the hours suffice. AResult is written on success only.
[[nodiscard]] TESSARINE_API bool TryStrToDate(std::u16string_view AText, const TFormatSettings& ASettings,
                                              double& AResult);

/// Formats ASerial by APattern: d, dd, ddd, dddd (day, padded, short and long name), m, mm, mmm, mmmm, yy, yyyy, h, hh,
/// n, nn (minutes), s, ss, AM/PM and A/P (which make the hours count to 12). Letters count in either case. "m" and "mm"
/// mean minutes when no letter outside quotes stands between them and the hours before. "/" and ":" write the
/// separators of ASettings; text in single or double quotes is copied without them (two single quotes within single
/// quotes give one), and so is everything else. False, with AOut untouched, for a date outside the years 1 to 9999;
/// else AOut is replaced.
[[nodiscard]] TESSARINE_API bool TryFormatDateTime(std::u16string_view APattern, double ASerial,
                                                   const TFormatSettings& ASettings, std::u16string& AOut);

}  // namespace tessarine
