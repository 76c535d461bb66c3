#include <tessarine/formula/FunctionTable.h>

#include <cmath>
#include <optional>

#include <tessarine/formula/library/detail/DayCount.h>
#include <tessarine/formula/library/detail/NumbersBody.h>
#include <tessarine/formula/library/detail/WorkingDays.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using namespace detail;

// Days between dates --------------------------------------------------------------------------------------------------

double DaysApart(double AEnd, double AStart) {
  const auto end = DayAt(AEnd);
  const auto start = DayAt(AStart);
  return end && start ? end->Serial - start->Serial : kOutsideDomain;
}

/// start, end, [European]. Otherwise the end of February is a 30th as a start, but never as an end.
double DaysApart360(const TNumbers<3>& ANumbers) {
  const auto start = DayAt(ANumbers[0]);
  const auto end = DayAt(ANumbers[1]);
  if (!start || !end) return kOutsideDomain;
  if (ANumbers[2] != 0) return DaysEurope30(*start, *end);
  const int32_t first = start->Day == 31 || start->IsFebruaryEnd() ? 30 : start->Day;
  const int32_t last = end->Day == 31 && first == 30 ? 30 : end->Day;
  return (end->Year - start->Year) * 360 + (end->Month - start->Month) * 30 + last - first;
}

/// start, end, [basis]
double YearsApart(const TNumbers<3>& ANumbers) {
  const auto start = DayAt(ANumbers[0]);
  const auto end = DayAt(ANumbers[1]);
  const auto basis = BasisOf(ANumbers[2]);
  return start && end && basis ? YearFraction(*start, *end, *basis) : kOutsideDomain;
}

/// Whole months from AStart to AEnd, which is not earlier.
int32_t WholeMonths(const TDay& AStart, const TDay& AEnd) {
  return (AEnd.Year - AStart.Year) * 12 + AEnd.Month - AStart.Month - (AEnd.Day < AStart.Day ? 1 : 0);
}

int32_t WholeYears(const TDay& AStart, const TDay& AEnd) { return WholeMonths(AStart, AEnd) / 12; }

/// Days since the last day that lies AMonths whole months behind AStart.
double DaysBeyond(const TDay& AStart, const TDay& AEnd, int32_t AMonths) {
  const auto last = MonthsAfter(AStart, AMonths);
  return last ? AEnd.Serial - last->Serial : kOutsideDomain;
}

struct TDifferenceUnit {
  std::u16string_view Name;
  double (*Between)(const TDay& AStart, const TDay& AEnd);
};

constexpr TDifferenceUnit kDifferenceUnits[] = {
    {u"Y", [](const TDay& AStart, const TDay& AEnd) -> double { return WholeYears(AStart, AEnd); }},
    {u"M", [](const TDay& AStart, const TDay& AEnd) -> double { return WholeMonths(AStart, AEnd); }},
    {u"D", [](const TDay& AStart, const TDay& AEnd) -> double { return AEnd.Serial - AStart.Serial; }},
    {u"YM", [](const TDay& AStart, const TDay& AEnd) -> double { return WholeMonths(AStart, AEnd) % 12; }},
    {u"MD", [](const TDay& AStart, const TDay& AEnd) { return DaysBeyond(AStart, AEnd, WholeMonths(AStart, AEnd)); }},
    {u"YD", [](const TDay& AStart,
               const TDay& AEnd) { return DaysBeyond(AStart, AEnd, WholeMonths(AStart, AEnd) / 12 * 12); }},
};

TCellValue CallDateDif(TFormulaArgs AArgs, const TFormulaContext&) {
  TNumbers<2> days{};
  if (AArgs.size() < 3 || !ReadNumbers(AArgs, days)) return ValueError();
  const std::u16string name = ToAsciiUpper(ArgText(AArgs[2]).View());
  for (const TDifferenceUnit& unit : kDifferenceUnits) {
    if (unit.Name != name) continue;
    const auto start = DayAt(days[0]);
    const auto end = DayAt(days[1]);
    return start && end && *start <= *end ? NumberOrError(unit.Between(*start, *end)) : NumError();
  }
  return ValueError();
}

// Weeks ---------------------------------------------------------------------------------------------------------------

/// 0 for Monday to 6 for Sunday.
int32_t WeekdayOf(const TDay& ADay) { return (DayOfWeek(ADay.Serial) + 5) % 7; }

int32_t DayOfYear(const TDay& ADay) {
  double first = 0;
  return TryEncodeDate(ADay.Year, 1, 1, first) ? ADay.Serial - static_cast<int32_t>(first) + 1 : 0;
}

/// Weeks begin on Monday; the first of a year is the one with its first Thursday.
double IsoWeek(double ADate) {
  const auto day = DayAt(ADate);
  const auto thursday = day ? DayAt(day->Serial - WeekdayOf(*day) + 3) : std::nullopt;
  if (!thursday) return kOutsideDomain;
  const int32_t weeksBefore = (DayOfYear(*thursday) - 1) / 7;
  return weeksBefore + 1;
}

/// The first day of the week of a type, 0 for Monday; nothing for other types.
std::optional<int32_t> WeekStartOf(double AType) {
  if (AType == 1) return 6;
  if (AType == 2) return 0;
  if (!(AType >= 11 && AType <= 17)) return {};
  return static_cast<int32_t>(AType) - 11;
}

/// date, [type]. The first week of a year is the one with 1 January; type 21 counts as IsoWeek does.
double WeekOfYear(const TNumbers<2>& ANumbers) {
  const double type = std::trunc(ANumbers[1]);
  if (type == 21) return IsoWeek(ANumbers[0]);
  const auto day = DayAt(ANumbers[0]);
  const auto start = WeekStartOf(type);
  if (!day || !start) return kOutsideDomain;
  const int32_t inWeek = (WeekdayOf(*day) - *start + 7) % 7;
  const int32_t weeksBefore = (DayOfYear(*day) - 1 - inWeek + 6) / 7;
  return weeksBefore + 1;
}

// Working days --------------------------------------------------------------------------------------------------------

/// The weekend of an argument: seven digits as a text, or a code. An error code when it is neither.
TCellErrorCode ReadWeekend(const TFormulaArg& AArg, TWeekend& AWeekend) {
  const bool isText = AArg.FirstView().Kind == cvkText;
  int64_t code = 0;
  if (!isText && !ArgAsInt64(AArg, code)) return ceValue;
  const auto weekend = isText ? WeekendOfPattern(ArgText(AArg).View()) : WeekendOfCode(code);
  if (!weekend) return isText ? ceValue : ceNum;
  AWeekend = *weekend;
  return ceNone;
}

TCellErrorCode ReadHolidays(const TFormulaArg& AArg, std::vector<int32_t>& AHolidays) {
  TCellErrorCode failure = ceNone;
  ForEachNonBlank(AArg, [&](int64_t, const TValueView& AValue) {
    double serial = 0;
    if (!AsNumber(AValue, serial)) {
      failure = ceValue;
    } else if (const auto day = DayAt(serial)) {
      AHolidays.push_back(day->Serial);
    } else {
      failure = ceNum;
    }
    return failure == ceNone;
  });
  return failure;
}

/// Arguments from AAt on: [weekend] when AHasWeekend, [holidays].
struct TWorkArgs {
  TWeekend Weekend;
  std::vector<int32_t> Holidays;
  TCellErrorCode Failure = ceNone;
};

TWorkArgs ReadWorkArgs(TFormulaArgs AArgs, bool AHasWeekend) {
  TWorkArgs result;
  size_t at = 2;
  if (AHasWeekend) {
    if (AArgs.size() > at) result.Failure = ReadWeekend(AArgs[at], result.Weekend);
    ++at;
  }
  if (result.Failure == ceNone && AArgs.size() > at) result.Failure = ReadHolidays(AArgs[at], result.Holidays);
  return result;
}

/// start, end, [weekend], [holidays]
template <bool HasWeekend>
TCellValue CallNetworkDays(TFormulaArgs AArgs, const TFormulaContext&) {
  TNumbers<2> days{};
  if (!ReadNumbers(AArgs, days)) return ValueError();
  TWorkArgs work = ReadWorkArgs(AArgs, HasWeekend);
  if (work.Failure != ceNone) return TCellValue::FromError(work.Failure);
  const auto start = DayAt(days[0]);
  const auto end = DayAt(days[1]);
  if (!start || !end) return NumError();
  const TWorkCalendar calendar(work.Weekend, std::move(work.Holidays));
  return TCellValue::FromNumber(static_cast<double>(calendar.CountBetween(start->Serial, end->Serial)));
}

/// start, days, [weekend], [holidays]
template <bool HasWeekend>
TCellValue CallWorkDay(TFormulaArgs AArgs, const TFormulaContext&) {
  double from = 0;
  int64_t count = 0;
  if (AArgs.size() < 2 || !ArgAsNumber(AArgs[0], from) || !ArgAsInt64(AArgs[1], count)) return ValueError();
  TWorkArgs work = ReadWorkArgs(AArgs, HasWeekend);
  if (work.Failure != ceNone) return TCellValue::FromError(work.Failure);
  if (work.Weekend.IsWhole()) return ValueError();
  const auto start = DayAt(from);
  if (!start) return NumError();
  const auto day = TWorkCalendar(work.Weekend, std::move(work.Holidays)).DayAfter(start->Serial, count);
  return day ? TCellValue::FromNumber(*day) : NumError();
}

// Times ---------------------------------------------------------------------------------------------------------------

/// The time of day in a text, with a date before it or without.
TCellValue CallTimeValue(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  std::u16string buffer;
  const std::u16string_view text = ArgTextView(AArgs[0], buffer);
  if (text.find_first_not_of(u' ') == std::u16string_view::npos) return ValueError();
  const TFormatSettings& settings = CurrentFormatSettings();
  double serial = 0;
  if (!TryStrToDate(u"2000-01-01 " + std::u16string(text), settings, serial) && !TryStrToDate(text, settings, serial)) {
    return ValueError();
  }
  const TTimeParts time = DecodeTime(serial);
  return TCellValue::FromNumber(EncodeTime(time.Hour, time.Minute, time.Second, time.Millisecond));
}

// clang-format off
constexpr TFunctionDef kCalendarFunctions[] = {
    {.Name = u"DATEDIF", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallDateDif, .InCompletion = true,
     .Arguments = u"start, end, unit",
     .Description = u"Whole years (Y), months (M) or days (D) between dates; MD, YM, YD leave larger units out."},
    {.Name = u"DAYS", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumericBody<DaysApart>::Call,
     .Arguments = u"end, start", .Description = u"Days from one date to another."},
    {.Name = u"DAYS360", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumbersBody<DaysApart360>::Call<2>,
     .Arguments = u"start, end, [european]", .Description = u"Days between dates by months of 30 days."},
    {.Name = u"ISOWEEKNUM", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = NumericBody<IsoWeek>::Call,
     .Arguments = u"date", .Description = u"The number of the week of a date by ISO 8601."},
    {.Name = u"NETWORKDAYS", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallNetworkDays<false>,
     .InCompletion = true, .Arguments = u"start, end, [holidays]",
     .Description = u"Working days between dates, both included."},
    {.Name = u"NETWORKDAYS.INTL", .MinArgs = 2, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallNetworkDays<true>,
     .Arguments = u"start, end, [weekend], [holidays]",
     .Description = u"Working days between dates, both included, with a weekend of one's own."},
    {.Name = u"TIMEVALUE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallTimeValue,
     .Arguments = u"text", .Description = u"The time of day that a text reads as, as a part of a day."},
    {.Name = u"WEEKNUM", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = NumbersBody<WeekOfYear>::Call<1, 1>,
     .Arguments = u"date, [type]", .Description = u"The number of the week of a date in its year."},
    {.Name = u"WORKDAY", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallWorkDay<false>, .InCompletion = true,
     .Arguments = u"start, days, [holidays]", .Description = u"The date that lies a number of working days ahead."},
    {.Name = u"WORKDAY.INTL", .MinArgs = 2, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallWorkDay<true>,
     .Arguments = u"start, days, [weekend], [holidays]",
     .Description = u"The date that lies a number of working days ahead, with a weekend of one's own."},
    {.Name = u"YEARFRAC", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = NumbersBody<YearsApart>::Call<2>,
     .InCompletion = true, .Arguments = u"start, end, [basis]",
     .Description = u"The years between dates, by a way of counting days."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> CalendarFunctions() { return kCalendarFunctions; }

}  // namespace tessarine
