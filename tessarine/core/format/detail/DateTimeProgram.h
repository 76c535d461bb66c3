#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine {
struct TFormatSettings;
}

namespace tessarine::detail {

/// A pattern of TryFormatDateTime, read once and applied many times. Patterns with anything beyond years, months, days,
/// hours, minutes, seconds, names, quotes and punctuation are handed to TryFormatDateTime each time.
class TDateTimeProgram {
 public:
  TDateTimeProgram() = default;
  explicit TDateTimeProgram(std::u16string APattern);

  /// As TryFormatDateTime, but appends. False, with AOut untouched, for a date outside the years 1 to 9999.
  [[nodiscard]] bool TryAppend(double ASerial, const TFormatSettings& ASettings, std::u16string& AOut) const;

 private:
  enum class TPartKind : uint8_t {
    pkLiteral,
    pkDateSeparator,
    pkTimeSeparator,
    pkYear2,
    pkYear4,
    pkMonth,
    pkMonthShort,
    pkMonthLong,
    pkDay,
    pkDayShort,
    pkDayLong,
    pkHour,
    pkMinute,
    pkSecond,
  };
  struct TPart {
    TPartKind Kind;
    char16_t Unit;  // pkLiteral
    uint8_t Width;  // of a number: 1 or 2 digits at least
  };
  struct TReader;

  std::u16string FPattern;
  std::vector<TPart> FParts;
  bool FIsCompiled = false;
  bool FHasDate = false;
  bool FHasTime = false;
  bool FHasDayName = false;
};

}  // namespace tessarine::detail
