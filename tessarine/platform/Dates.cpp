#include <tessarine/platform/Dates.h>

#include <chrono>
#include <cmath>
#include <ctime>
#include <limits>

namespace tessarine {

namespace {

constexpr int64_t kMillisecondsPerDay = 86'400'000;
constexpr int64_t kFirstDay = -693'593;   // 0001-01-01
constexpr int64_t kLastDay = 2'958'465;   // 9999-12-31
constexpr int64_t kCivilOffset = 25'569;  // serial number of 1970-01-01

/// A serial number in whole days and milliseconds of the day.
struct TInstant {
  int64_t Day = 0;
  int64_t Milliseconds = 0;
  bool IsValid = false;
};

int64_t FloorDivide(int64_t AValue, int64_t ADivisor) {
  const int64_t quotient = AValue / ADivisor;
  return quotient - (AValue % ADivisor < 0 ? 1 : 0);
}

bool IsKnownDay(int64_t ADay) { return ADay >= kFirstDay && ADay <= kLastDay; }

TInstant SplitSerial(double ASerial) {
  if (!(ASerial > kFirstDay - 1.0 && ASerial < kLastDay + 2.0)) return {};
  const int64_t total = std::llround(ASerial * static_cast<double>(kMillisecondsPerDay));
  const int64_t day = FloorDivide(total, kMillisecondsPerDay);
  if (!IsKnownDay(day)) return {};
  return {day, std::abs(total) % kMillisecondsPerDay, true};
}

/// Days from 1970-01-01 to a date, by Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms" (days_from_civil).
/// The year begins in March here, so that the leap day is its last.
int64_t DaysFromCivil(int64_t AYear, int64_t AMonth, int64_t ADay) {
  const int64_t year = AMonth <= 2 ? AYear - 1 : AYear;
  const int64_t era = FloorDivide(year, 400);
  const int64_t yearOfEra = year - era * 400;
  const int64_t dayOfYear = (153 * (AMonth > 2 ? AMonth - 3 : AMonth + 9) + 2) / 5 + ADay - 1;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146'097 + dayOfEra - 719'468;
}

/// The reverse (civil_from_days, same source).
TDateParts CivilFromDays(int64_t ADays) {
  const int64_t days = ADays + 719'468;
  const int64_t era = FloorDivide(days, 146'097);
  const int64_t dayOfEra = days - era * 146'097;
  const int64_t yearOfEra = (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t shifted = (5 * dayOfYear + 2) / 153;
  const int64_t month = shifted < 10 ? shifted + 3 : shifted - 9;
  const int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  return {static_cast<int>(year), static_cast<int>(month), static_cast<int>(dayOfYear - (153 * shifted + 2) / 5 + 1)};
}

}  // namespace

int DaysInMonth(int AYear, int AMonth) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (AYear < 1 || AYear > 9999 || AMonth < 1 || AMonth > 12) return 0;
  const bool isLeap = AYear % 4 == 0 && (AYear % 100 != 0 || AYear % 400 == 0);
  return AMonth == 2 && isLeap ? 29 : kDays[AMonth - 1];
}

bool TryEncodeDate(int AYear, int AMonth, int ADay, double& AResult) {
  if (ADay < 1 || ADay > DaysInMonth(AYear, AMonth)) return false;
  AResult = static_cast<double>(DaysFromCivil(AYear, AMonth, ADay) + kCivilOffset);
  return true;
}

TDateParts DecodeDate(double ASerial) {
  const TInstant instant = SplitSerial(ASerial);
  if (!instant.IsValid) return {};
  return CivilFromDays(instant.Day - kCivilOffset);
}

double EncodeTime(int AHour, int AMinute, int ASecond, int AMillisecond) {
  const int64_t total = ((int64_t{AHour} * 60 + AMinute) * 60 + ASecond) * 1000 + AMillisecond;
  return static_cast<double>(total) / static_cast<double>(kMillisecondsPerDay);
}

double CombineDateTime(double ADay, double ATime) {
  return ADay >= 0 || ATime == 0 ? ADay + ATime : ADay + (1 - ATime);
}

TTimeParts DecodeTime(double ASerial) {
  const auto rest = static_cast<int>(SplitSerial(ASerial).Milliseconds);
  return {rest / 3'600'000, rest / 60'000 % 60, rest / 1'000 % 60, rest % 1'000};
}

int DayOfWeek(double ASerial) {
  const TInstant instant = SplitSerial(ASerial);
  if (!instant.IsValid) return 0;
  const int64_t sinceSunday = instant.Day - 1;  // day 1 is a Sunday
  return static_cast<int>(sinceSunday - FloorDivide(sinceSunday, 7) * 7) + 1;
}

double IncMonth(double ASerial, int64_t AMonths) {
  constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
  constexpr int64_t kMostMonths = 9999 * 12;
  if (!(ASerial >= kFirstDay && ASerial < kLastDay + 1.0)) return kNothing;
  if (AMonths < -kMostMonths || AMonths > kMostMonths) return kNothing;
  // The whole serial number decides the day, without rounding: the fraction must stay what it is.
  const TDateParts date = CivilFromDays(static_cast<int64_t>(std::floor(ASerial)) - kCivilOffset);
  const int64_t months = int64_t{date.Year} * 12 + (date.Month - 1) + AMonths;
  const auto year = static_cast<int>(FloorDivide(months, 12));
  const int month = static_cast<int>(months - int64_t{year} * 12) + 1;
  const int lastDay = DaysInMonth(year, month);
  if (lastDay == 0) return kNothing;
  const int64_t day = DaysFromCivil(year, month, date.Day < lastDay ? date.Day : lastDay) + kCivilOffset;
  return CombineDateTime(static_cast<double>(day), std::fabs(ASerial - std::trunc(ASerial)));
}

double NowSerial() {
  const auto now = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
  const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
  const std::time_t time = std::chrono::system_clock::to_time_t(seconds);
  std::tm local{};
#if defined(_WIN32)
  const bool isKnown = localtime_s(&local, &time) == 0;
#else
  const bool isKnown = localtime_r(&time, &local) != nullptr;
#endif
  if (!isKnown) return static_cast<double>(now.time_since_epoch().count()) / kMillisecondsPerDay + kCivilOffset;
  const int64_t day = DaysFromCivil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday) + kCivilOffset;
  const auto milliseconds = static_cast<int>((now - seconds).count());
  const int second = local.tm_sec < 60 ? local.tm_sec : 59;  // a leap second is told as 60
  return static_cast<double>(day) + EncodeTime(local.tm_hour, local.tm_min, second, milliseconds);
}

}  // namespace tessarine
