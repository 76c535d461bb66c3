#include <tessarine/formula/FunctionTable.h>

#include <cmath>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>

namespace tessarine {

namespace {

using namespace detail;

/// Reads the first three arguments, cut toward zero.
bool ReadWholeTriple(TFormulaArgs AArgs, double (&AParts)[3]) {
  if (AArgs.size() < 3) return false;
  for (size_t i = 0; i < 3; ++i) {
    if (!ArgAsNumber(AArgs[i], AParts[i])) return false;
    AParts[i] = std::trunc(AParts[i]);
  }
  return true;
}

TCellValue CallToday(TFormulaArgs, const TFormulaContext&) { return TCellValue::FromNumber(std::floor(NowSerial())); }

TCellValue CallNow(TFormulaArgs, const TFormulaContext&) { return TCellValue::FromNumber(NowSerial()); }

/// Only dates that the calendar has: nothing carries over into the next month or year.
TCellValue CallDate(TFormulaArgs AArgs, const TFormulaContext&) {
  double parts[3];
  if (!ReadWholeTriple(AArgs, parts)) return ValueError();
  for (const double part : parts) {
    if (!(part >= 1 && part <= 9999)) return ValueError();
  }
  double serial = 0;
  const bool exists =
      TryEncodeDate(static_cast<int>(parts[0]), static_cast<int>(parts[1]), static_cast<int>(parts[2]), serial);
  return exists ? TCellValue::FromNumber(serial) : ValueError();
}

/// Each part is taken modulo its own range; nothing carries over.
TCellValue CallTime(TFormulaArgs AArgs, const TFormulaContext&) {
  double parts[3];
  if (!ReadWholeTriple(AArgs, parts)) return ValueError();
  for (const double part : parts) {
    if (part < 0) return ValueError();
  }
  const auto modulo = [](double APart, double ARange) { return static_cast<int>(std::fmod(APart, ARange)); };
  return TCellValue::FromNumber(EncodeTime(modulo(parts[0], 24), modulo(parts[1], 60), modulo(parts[2], 60), 0));
}

/// One part of the date of a serial number; #NUM! outside the calendar. The serial number 0 reads as 1900-01-00.
template <int TDateParts::*Part>
TCellValue CallDatePart(TFormulaArgs AArgs, const TFormulaContext&) {
  double serial = 0;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], serial)) return ValueError();
  const TDateParts date = std::fabs(serial) <= 1e-12 ? TDateParts{1900, 1, 0} : DecodeDate(serial);
  return date.Year == 0 ? NumError() : TCellValue::FromNumber(date.*Part);
}

/// One part of the time of day of a serial number, also of one outside the calendar.
template <int TTimeParts::*Part>
TCellValue CallTimePart(TFormulaArgs AArgs, const TFormulaContext&) {
  double serial = 0;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], serial)) return ValueError();
  const bool isKnown = DecodeDate(serial).Year != 0;
  const TTimeParts time = DecodeTime(isKnown ? serial : std::fabs(serial - std::trunc(serial)));
  return TCellValue::FromNumber(time.*Part);
}

TCellValue CallWeekday(TFormulaArgs AArgs, const TFormulaContext&) {
  double serial = 0;
  int64_t type = 1;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], serial)) return ValueError();
  if (AArgs.size() > 1 && !ArgAsInt64(AArgs[1], type)) return ValueError();
  const int fromSunday = DayOfWeek(serial);
  if (fromSunday == 0) return NumError();
  return TCellValue::FromNumber(type == 1 ? fromSunday : (fromSunday + 5) % 7 + 1);
}

/// Reads a serial number and a count of months.
bool ReadDateAndMonths(TFormulaArgs AArgs, double& ASerial, int64_t& AMonths) {
  return AArgs.size() >= 2 && ArgAsNumber(AArgs[0], ASerial) && ArgAsInt64(AArgs[1], AMonths);
}

TCellValue CallEdate(TFormulaArgs AArgs, const TFormulaContext&) {
  double serial = 0;
  int64_t months = 0;
  if (!ReadDateAndMonths(AArgs, serial, months)) return ValueError();
  return NumberOrError(IncMonth(serial, months));
}

TCellValue CallEomonth(TFormulaArgs AArgs, const TFormulaContext&) {
  double serial = 0;
  int64_t months = 0;
  if (!ReadDateAndMonths(AArgs, serial, months)) return ValueError();
  const TDateParts date = DecodeDate(IncMonth(std::floor(serial), months));
  double lastDay = 0;
  return TryEncodeDate(date.Year, date.Month, DaysInMonth(date.Year, date.Month), lastDay)
             ? TCellValue::FromNumber(lastDay)
             : NumError();
}

TCellValue CallDateValue(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  std::u16string buffer;
  double serial = 0;
  if (!TryStrToDate(ArgTextView(AArgs[0], buffer), CurrentFormatSettings(), serial)) return ValueError();
  return NumberOrError(std::floor(serial));  // the day of a serial number is that of its floor, below 0 too
}

// clang-format off
constexpr TFunctionDef kDateFunctions[] = {
    {.Name = u"DATE", .MinArgs = 3, .MaxArgs = 3, .Body = CallDate, .InCompletion = true,
     .Arguments = u"year, month, day", .Description = u"The serial number of a date."},
    {.Name = u"DATEVALUE", .MinArgs = 1, .MaxArgs = 1, .Body = CallDateValue,
     .Arguments = u"text", .Description = u"The serial number of the date that a text reads as."},
    {.Name = u"DAY", .MinArgs = 1, .MaxArgs = 1, .Body = CallDatePart<&TDateParts::Day>, .InCompletion = true,
     .Arguments = u"date", .Description = u"The day of the month of a date."},
    {.Name = u"EDATE", .MinArgs = 2, .MaxArgs = 2, .Body = CallEdate,
     .Arguments = u"date, months", .Description = u"A date some months later, or earlier with a negative count."},
    {.Name = u"EOMONTH", .MinArgs = 2, .MaxArgs = 2, .Body = CallEomonth, .InCompletion = true,
     .Arguments = u"date, months", .Description = u"The last day of the month some months after a date."},
    {.Name = u"HOUR", .MinArgs = 1, .MaxArgs = 1, .Body = CallTimePart<&TTimeParts::Hour>, .InCompletion = true,
     .Arguments = u"time", .Description = u"The hour of a time, 0 to 23."},
    {.Name = u"MINUTE", .MinArgs = 1, .MaxArgs = 1, .Body = CallTimePart<&TTimeParts::Minute>, .InCompletion = true,
     .Arguments = u"time", .Description = u"The minute of a time, 0 to 59."},
    {.Name = u"MONTH", .MinArgs = 1, .MaxArgs = 1, .Body = CallDatePart<&TDateParts::Month>, .InCompletion = true,
     .Arguments = u"date", .Description = u"The month of a date, 1 to 12."},
    {.Name = u"NOW", .MinArgs = 0, .MaxArgs = 0, .Body = CallNow, .InCompletion = true,
     .Arguments = u"", .Description = u"The local date and time."},
    {.Name = u"SECOND", .MinArgs = 1, .MaxArgs = 1, .Body = CallTimePart<&TTimeParts::Second>, .InCompletion = true,
     .Arguments = u"time", .Description = u"The second of a time, 0 to 59."},
    {.Name = u"TIME", .MinArgs = 3, .MaxArgs = 3, .Body = CallTime, .InCompletion = true,
     .Arguments = u"hour, minute, second", .Description = u"A time of day as a fraction of a day."},
    {.Name = u"TODAY", .MinArgs = 0, .MaxArgs = 0, .Body = CallToday, .InCompletion = true,
     .Arguments = u"", .Description = u"The local date."},
    {.Name = u"WEEKDAY", .MinArgs = 1, .MaxArgs = 2, .Body = CallWeekday, .InCompletion = true,
     .Arguments = u"date, [type]", .Description = u"The day of the week: from Sunday 1, or from Monday 1 with type 2."},
    {.Name = u"YEAR", .MinArgs = 1, .MaxArgs = 1, .Body = CallDatePart<&TDateParts::Year>, .InCompletion = true,
     .Arguments = u"date", .Description = u"The year of a date."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> DateFunctions() { return kDateFunctions; }

}  // namespace tessarine
