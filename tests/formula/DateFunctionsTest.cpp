#include <gtest/gtest.h>

#include <cmath>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::Called;
using testing::ExpectCalls;

TEST(DateFunctions, RefuseTooFewArgumentsAndWhatIsNoNumber) {
  for (const char* name : {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND", "WEEKDAY"}) {
    for (const char* args : {"", "'x'", "#N/A", "'2024-01-01'"})
      EXPECT_EQ(Called(name, args), "#VALUE!") << name << args;
  }
  for (const char* name : {"EDATE", "EOMONTH"}) {
    for (const char* args : {"", "45000", "45000 'x'", "#N/A 1"})
      EXPECT_EQ(Called(name, args), "#VALUE!") << name << args;
  }
  for (const char* name : {"DATE", "TIME"}) {
    for (const char* args : {"", "1 1", "1 1 'x'", "1 #N/A 1"})
      EXPECT_EQ(Called(name, args), "#VALUE!") << name << args;
  }
  EXPECT_EQ(Called("DATEVALUE", ""), "#VALUE!");
  EXPECT_EQ(Called("WEEKDAY", "45000 'x'"), "#VALUE!");
}

TEST(DateFunctions, DatesAreOnlyThoseOfTheCalendar) {
  ExpectCalls({
      {"DATE", "2024 2 29", "45351"},
      {"DATE", "2024.9 2.9 29.9", "45351"},
      {"DATE", "'2024' TRUE 1", "45292"},
      {"DATE", "1900 1 1", "2"},
      {"DATE", "1899 12 30", "0"},
      {"DATE", "24 1 1", "-685193"},
      {"DATE", "1 1 1", "-693593"},
      {"DATE", "9999 12 31", "2958465"},
      {"DATE", "2024 13 1", "#VALUE!"},
      {"DATE", "2024 2 30", "#VALUE!"},
      {"DATE", "2023 2 29", "#VALUE!"},
      {"DATE", "2024 0 1", "#VALUE!"},
      {"DATE", "2024 1 0", "#VALUE!"},
      {"DATE", "0 1 1", "#VALUE!"},
      {"DATE", "10000 1 1", "#VALUE!"},
      {"DATE", "-1 1 1", "#VALUE!"},
      {"DATE", "1e300 1 1", "#VALUE!"},
      {"DATE", "2024 -1e300 1", "#VALUE!"},
  });
}

TEST(DateFunctions, EachPartOfATimeIsTakenModulo) {
  ExpectCalls({
      {"TIME", "12 0 0", "0.5"},
      {"TIME", "25 60 120", "0.0416666666666667"},
      {"TIME", "6.9 0.9 0.9", "0.25"},
      {"TIME", "0 0 0", "0"},
      {"TIME", "-1 0 0", "#VALUE!"},
      {"TIME", "0 -1 0", "#VALUE!"},
      {"TIME", "-0.9 0 0", "0"},
      {"TIME", "36 1e300 0", "0.5"},
  });
}

TEST(DateFunctions, PartsOfASerialNumber) {
  const struct {
    const char* Serial;
    const char* Parts;  // year month day hour minute second
  } cases[] = {
      {"0", "1900 1 0 0 0 0"},
      {"_", "1900 1 0 0 0 0"},
      {"1e-13", "1900 1 0 0 0 0"},
      {"-1e-13", "1900 1 0 0 0 0"},
      {"0.5", "1899 12 30 12 0 0"},
      {"1", "1899 12 31 0 0 0"},
      {"60", "1900 2 28 0 0 0"},
      {"61", "1900 3 1 0 0 0"},
      {"45351.75", "2024 2 29 18 0 0"},
      {"'45351.999988425927'", "2024 2 29 23 59 59"},
      {"45351.9999999999", "2024 3 1 0 0 0"},
      {"-1", "1899 12 29 0 0 0"},
      {"-1.25", "1899 12 28 6 0 0"},
      {"2958465.5", "9999 12 31 12 0 0"},
      {"2958466.5", "#NUM! #NUM! #NUM! 12 0 0"},
      {"-700000.25", "#NUM! #NUM! #NUM! 6 0 0"},
      {"1e300", "#NUM! #NUM! #NUM! 0 0 0"},
  };
  for (const auto& row : cases) {
    std::string parts;
    for (const char* name : {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND"}) {
      parts += (parts.empty() ? "" : " ") + Called(name, row.Serial);
    }
    EXPECT_EQ(parts, row.Parts) << row.Serial;
  }
}

TEST(DateFunctions, DaysOfTheWeek) {
  ExpectCalls({
      {"WEEKDAY", "0", "7"},
      {"WEEKDAY", "1", "1"},
      {"WEEKDAY", "45351.9", "5"},
      {"WEEKDAY", "45354 1.9", "1"},
      {"WEEKDAY", "45354 2", "7"},
      {"WEEKDAY", "45355 2", "1"},
      {"WEEKDAY", "45354 3", "7"},
      {"WEEKDAY", "45354 17", "7"},
      {"WEEKDAY", "45354 0", "7"},
      {"WEEKDAY", "45354 -1e300", "7"},
      {"WEEKDAY", "-1", "6"},
      {"WEEKDAY", "1e300", "#NUM!"},
  });
}

TEST(DateFunctions, MonthsAhead) {
  ExpectCalls({
      {"EDATE", "45322 1", "45351"},
      {"EDATE", "45322.25 1", "45351.25"},
      {"EDATE", "45351 -12", "44985"},
      {"EDATE", "45351 12.9", "45716"},
      {"EDATE", "45351 1e300", "#NUM!"},
      {"EDATE", "1e300 1", "#NUM!"},
      {"EDATE", "2958465 1", "#NUM!"},
      {"EDATE", "-693593 -1", "#NUM!"},
      {"EOMONTH", "45322 1", "45351"},
      {"EOMONTH", "45322.99999999999 0", "45322"},
      {"EOMONTH", "45351.5 -12", "44985"},
      {"EOMONTH", "0 0", "1"},
      {"EOMONTH", "-0.5 0", "1"},
      {"EOMONTH", "2958440 0", "2958465"},
      {"EOMONTH", "2958440 1", "#NUM!"},
      {"EOMONTH", "45351 -1e300", "#NUM!"},
  });
}

TEST(DateFunctions, DatesFromText) {
  ExpectCalls({
      {"DATEVALUE", "'2/29/2024'", "45351"},
      {"DATEVALUE", "'2024-02-29'", "45351"},
      {"DATEVALUE", "'2/29/2024 18:00'", "45351"},
      {"DATEVALUE", "'1/1/1850 18:00'", "-18260"},
      {"DATEVALUE", "'1/1/1850'", "-18260"},
      {"DATEVALUE", "'2/30/2024'", "#VALUE!"},
      {"DATEVALUE", "'x'", "#VALUE!"},
      {"DATEVALUE", "45351", "#VALUE!"},
      {"DATEVALUE", "_", "#VALUE!"},
      {"DATEVALUE", "#N/A", "#VALUE!"},
  });
  TFormatSettings settings;
  settings.DateOrder = doDMY;
  SetDefaultFormatSettings(settings);
  EXPECT_EQ(Called("DATEVALUE", "'29/2/2024'"), "45351");
  EXPECT_EQ(Called("DATEVALUE", "'2/29/2024'"), "#VALUE!");
  SetDefaultFormatSettings({});
}

TEST(DateFunctions, TheClockMovesForward) {
  const double before = NowSerial();
  const double now = EvaluateFunction(u"NOW", {}, {}).Number;
  const double today = EvaluateFunction(u"TODAY", {}, {}).Number;
  EXPECT_GE(now, before);
  EXPECT_GE(NowSerial(), now);
  EXPECT_EQ(today, std::floor(today));
  EXPECT_TRUE(std::floor(before) <= today && today <= NowSerial());
}

}  // namespace

}  // namespace tessarine
