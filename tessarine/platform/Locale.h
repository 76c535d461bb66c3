#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <tessarine/Export.h>

namespace tessarine {

/// Order of day, month and year in a written date.
enum class TDateOrder : uint8_t { doMDY, doDMY, doYMD };
using enum TDateOrder;

/// How numbers and dates are written and read for people. The initial values are those of en-US.
struct TFormatSettings {
  char16_t DecimalSeparator = u'.';
  char16_t GroupSeparator = u',';
  char16_t DateSeparator = u'/';
  char16_t TimeSeparator = u':';
  TDateOrder DateOrder = doMDY;
  /// A year of one or two digits lies in the hundred years that begin this many years before the current one;
  /// 0 means the current century.
  int TwoDigitYearWindow = 50;
  std::array<std::u16string, 12> ShortMonthNames{u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                                 u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
  std::array<std::u16string, 12> LongMonthNames{u"January",   u"February", u"March",    u"April",
                                                u"May",       u"June",     u"July",     u"August",
                                                u"September", u"October",  u"November", u"December"};
  /// Sunday first.
  std::array<std::u16string, 7> ShortDayNames{u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};
  std::array<std::u16string, 7> LongDayNames{u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                             u"Thursday", u"Friday", u"Saturday"};
  std::u16string AmText = u"AM";
  std::u16string PmText = u"PM";

  bool operator==(const TFormatSettings&) const = default;
};

/// The settings that the process uses now: en-US unless a host has set others. Takes no lock. The block never changes
/// and lives as long as the process, so a reference may be kept for the length of an operation that must see one
/// locale.
TESSARINE_API const TFormatSettings& CurrentFormatSettings();

/// Makes ASettings those of the process. May be called from any thread at any time; equal settings share one block, so
/// switching between a few locales needs no further memory.
TESSARINE_API void SetDefaultFormatSettings(TFormatSettings ASettings);

/// A number that grows whenever the settings of the process change to different ones: what was derived from them may be
/// kept as long as it stays the same.
TESSARINE_API uint64_t FormatSettingsVersion();

}  // namespace tessarine
