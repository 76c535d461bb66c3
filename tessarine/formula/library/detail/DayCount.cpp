#include <tessarine/formula/library/detail/DayCount.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <tessarine/platform/Dates.h>

namespace tessarine::detail {

namespace {

bool IsLeapYear(int32_t AYear) { return DaysInMonth(AYear, 2) == 29; }

int32_t Days30(const TDay& AStart, int32_t AStartDay, const TDay& AEnd, int32_t AEndDay) {
  return (AEnd.Year - AStart.Year) * 360 + (AEnd.Month - AStart.Month) * 30 + AEndDay - AStartDay;
}

bool IsWithinAYear(const TDay& AStart, const TDay& AEnd) {
  if (AStart.Year == AEnd.Year) return true;
  return AStart.Year + 1 == AEnd.Year && std::pair(AStart.Month, AStart.Day) >= std::pair(AEnd.Month, AEnd.Day);
}

/// Whether the 29 February of AYear, if it has one, is one of the days from AStart to AEnd.
bool HasLeapDayOf(int32_t AYear, const TDay& AStart, const TDay& AEnd) {
  double leapDay = 0;
  return TryEncodeDate(AYear, 2, 29, leapDay) && AStart.Serial <= leapDay && leapDay <= AEnd.Serial;
}

double ActualYearLength(const TDay& AStart, const TDay& AEnd) {
  if (!IsWithinAYear(AStart, AEnd)) {
    const int32_t years = AEnd.Year - AStart.Year + 1;
    int32_t days = years * 365;
    for (int32_t year = AStart.Year; year <= AEnd.Year; ++year) days += IsLeapYear(year) ? 1 : 0;
    return static_cast<double>(days) / years;
  }
  const bool hasLeapDay = AStart.Year == AEnd.Year
                              ? IsLeapYear(AStart.Year)
                              : HasLeapDayOf(AStart.Year, AStart, AEnd) || HasLeapDayOf(AEnd.Year, AStart, AEnd);
  return hasLeapDay ? 366 : 365;
}

}  // namespace

bool TDay::IsMonthEnd() const { return Day == DaysInMonth(Year, Month); }

std::optional<TDay> DayAt(double ASerial) {
  const TDateParts date = DecodeDate(ASerial);
  double serial = ASerial;  // of a whole day
  if (date.Year == 0) return {};
  if (ASerial != std::floor(ASerial) && !TryEncodeDate(date.Year, date.Month, date.Day, serial)) return {};
  return TDay{static_cast<int32_t>(serial), date.Year, date.Month, date.Day};
}

std::optional<TDay> MonthsAfter(const TDay& ADay, int64_t AMonths, bool AToMonthEnd) {
  if (AMonths < -200'000 || AMonths > 200'000) return {};
  const auto months = static_cast<int32_t>(ADay.Year * 12 + ADay.Month - 1 + AMonths);
  if (months < 12) return {};
  const int32_t year = months / 12;
  const int32_t month = months % 12 + 1;
  const int32_t last = DaysInMonth(year, month);
  const int32_t day = AToMonthEnd ? last : std::min(ADay.Day, last);
  double serial = 0;
  if (!TryEncodeDate(year, month, day, serial)) return {};
  return TDay{static_cast<int32_t>(serial), year, month, day};
}

std::optional<TDayBasis> BasisOf(double ANumber) {
  const double basis = std::trunc(ANumber);
  if (!(basis >= 0 && basis <= 4)) return {};
  return static_cast<TDayBasis>(static_cast<int>(basis));
}

int32_t DaysUs30(const TDay& AStart, const TDay& AEnd, TMonthEnds AEnds) {
  int32_t first = AStart.Day;
  int32_t last = AEnd.Day;
  if (AEnd.IsFebruaryEnd() && (AEnds == meBoth || AStart.IsFebruaryEnd())) last = 30;
  if (last == 31 && (AEnds == meBoth || first >= 30)) last = 30;
  if (first == 31 || AStart.IsFebruaryEnd()) first = 30;
  return Days30(AStart, first, AEnd, last);
}

int32_t DaysEurope30(const TDay& AStart, const TDay& AEnd) {
  return Days30(AStart, std::min(AStart.Day, 30), AEnd, std::min(AEnd.Day, 30));
}

int32_t DaysBetween(const TDay& AStart, const TDay& AEnd, TDayBasis ABasis) {
  switch (ABasis) {
    case dbUs30: return DaysUs30(AStart, AEnd);
    case dbEurope30: return DaysEurope30(AStart, AEnd);
    case dbActual:
    case dbActual360:
    case dbActual365: break;
  }
  return AEnd.Serial - AStart.Serial;
}

double DaysInYear(const TDay& AStart, const TDay& AEnd, TDayBasis ABasis) {
  switch (ABasis) {
    case dbActual: return ActualYearLength(AStart, AEnd);
    case dbActual365: return 365;
    case dbUs30:
    case dbActual360:
    case dbEurope30: break;
  }
  return 360;
}

double YearFraction(const TDay& AStart, const TDay& AEnd, TDayBasis ABasis) {
  const auto& [first, last] = std::minmax(AStart, AEnd);
  return DaysBetween(first, last, ABasis) / DaysInYear(first, last, ABasis);
}

}  // namespace tessarine::detail
