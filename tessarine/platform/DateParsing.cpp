#include <algorithm>
#include <optional>
#include <string_view>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

/// A run of digits; a name of a month has no digits and its month as value.
struct TDatePart {
  int Value = 0;
  int Digits = 0;
  bool IsName() const { return Digits == 0; }
  bool IsLongYear() const { return Digits >= 3; }
};

std::u16string_view WithoutDot(std::u16string_view AName) {
  return AName.ends_with(u'.') ? AName.substr(0, AName.size() - 1) : AName;
}

/// Reads one date and time. Each Read function that gives nothing leaves the place where it was.
class TDateReader {
 public:
  TDateReader(std::u16string_view AText, const TFormatSettings& ASettings) : FText(AText), FSettings(ASettings) {}

  std::optional<double> Read() {
    std::optional<double> date = ReadNumericDate();
    if (!date) {
      FAt = 0;
      date = ReadNamedDate();
    }
    if (!date) return {};
    if (IsAtEnd()) return date;
    const std::optional<double> time = ReadTimeBehindDate();
    if (!time || !IsAtEnd()) return {};
    return CombineDateTime(*date, *time);
  }

 private:
  bool IsAtEnd() const { return FAt == FText.size(); }
  char16_t Peek() const { return IsAtEnd() ? u'\0' : FText[FAt]; }

  bool IsDateSeparator(char16_t AUnit) const {
    return AUnit != 0 && (AUnit == FSettings.DateSeparator || AUnit == u'-' || AUnit == u'.' || AUnit == u'/');
  }
  bool IsTimeSeparator(char16_t AUnit) const {
    return AUnit != 0 && (AUnit == FSettings.TimeSeparator || AUnit == u':');
  }
  static bool IsWordUnit(char16_t AUnit) { return IsAsciiLetter(AUnit) || AUnit > 0xA0; }

  bool SkipBlanks() {
    const size_t start = FAt;
    while (!IsAtEnd() && Peek() <= u' ') ++FAt;
    return FAt > start;
  }

  std::optional<TDatePart> ReadNumber(int AMostDigits) {
    size_t at = FAt;
    TDatePart part;
    for (; at < FText.size() && IsAsciiDigit(FText[at]); ++at) {
      if (++part.Digits > AMostDigits) return {};
      part.Value = part.Value * 10 + (FText[at] - u'0');
    }
    if (part.Digits == 0) return {};
    FAt = at;
    return part;
  }

  std::u16string_view ReadWord() {
    const size_t start = FAt;
    while (!IsAtEnd() && IsWordUnit(Peek())) ++FAt;
    return FText.substr(start, FAt - start);
  }

  std::optional<TDatePart> ReadMonthName() {
    const size_t start = FAt;
    const std::u16string_view word = ReadWord();
    for (size_t i = 0; i < 12 && !word.empty(); ++i) {
      if (!EqualAsciiNoCase(word, WithoutDot(FSettings.ShortMonthNames[i])) &&
          !EqualAsciiNoCase(word, WithoutDot(FSettings.LongMonthNames[i])))
        continue;
      return TDatePart{static_cast<int>(i) + 1, 0};
    }
    FAt = start;
    return {};
  }

  int PlaceYear(TDatePart AYear) const {
    if (AYear.IsLongYear()) return AYear.Value;
    const int current = DecodeDate(NowSerial()).Year;
    const int first = FSettings.TwoDigitYearWindow > 0 ? current - FSettings.TwoDigitYearWindow : current / 100 * 100;
    const int year = first / 100 * 100 + AYear.Value;
    return year < first ? year + 100 : year;
  }

  std::optional<double> Encode(std::optional<TDatePart> AYear, TDatePart AMonth, TDatePart ADay) const {
    if (AMonth.IsLongYear() || ADay.IsLongYear()) return {};
    const int year = AYear ? PlaceYear(*AYear) : DecodeDate(NowSerial()).Year;
    double serial = 0;
    if (!TryEncodeDate(year, AMonth.Value, ADay.Value, serial)) return {};
    return serial;
  }

  std::optional<double> ReadNumericDate() {
    const auto first = ReadNumber(4);
    const char16_t separator = Peek();
    if (!first || !IsDateSeparator(separator)) return {};
    ++FAt;
    const auto second = ReadNumber(4);
    if (!second) return {};
    if (Peek() != separator) {
      const bool isFraction = separator == FSettings.DecimalSeparator && separator != FSettings.DateSeparator;
      if (isFraction) return {};
      return FSettings.DateOrder == doDMY ? Encode({}, *second, *first) : Encode({}, *first, *second);
    }
    ++FAt;
    const auto third = ReadNumber(4);
    if (!third) return {};
    if (first->Digits == 4 || FSettings.DateOrder == doYMD) return Encode(*first, *second, *third);
    return FSettings.DateOrder == doDMY ? Encode(*third, *second, *first) : Encode(*third, *first, *second);
  }

  /// What may stand between the parts of a date with a month's name.
  bool SkipJoint() {
    const size_t start = FAt;
    while (!IsAtEnd() && (Peek() <= u' ' || Peek() == u',' || IsDateSeparator(Peek()))) ++FAt;
    return FAt > start;
  }

  /// The number behind a joint, unless it begins a time of day or nothing is there.
  std::optional<TDatePart> ReadNumberBehindJoint() {
    const size_t start = FAt;
    if (SkipJoint()) {
      const auto number = ReadNumber(4);
      if (number && !IsTimeSeparator(Peek()) && !IsHalfDayNext()) return number;
    }
    FAt = start;
    return {};
  }

  bool IsHalfDayNext() {
    const size_t start = FAt;
    const bool isNext = ReadHalfDay().has_value();
    FAt = start;
    return isNext;
  }

  std::optional<double> ReadNamedDate() {
    constexpr TDatePart kFirstOfMonth{1, 1};
    if (const auto month = ReadMonthName()) {
      const auto first = ReadNumberBehindJoint();
      if (!first) return {};
      if (first->IsLongYear()) return Encode(*first, *month, kFirstOfMonth);
      return Encode(ReadNumberBehindJoint(), *month, *first);
    }
    const auto first = ReadNumber(4);
    if (!first) return {};
    SkipJoint();
    const auto month = ReadMonthName();
    if (!month) return {};
    const auto second = ReadNumberBehindJoint();
    if (first->IsLongYear()) return Encode(*first, *month, second.value_or(kFirstOfMonth));
    return Encode(second, *month, *first);
  }

  /// False for morning, true for afternoon.
  std::optional<bool> ReadHalfDay() {
    const size_t start = FAt;
    SkipBlanks();
    const std::u16string_view rest = FText.substr(FAt);
    const auto accepts = [&](std::u16string_view AText) {
      if (AText.empty() || !EqualAsciiNoCase(rest.substr(0, AText.size()), AText)) return false;
      FAt += AText.size();
      return true;
    };
    if (accepts(FSettings.AmText) || accepts(u"AM")) return false;
    if (accepts(FSettings.PmText) || accepts(u"PM")) return true;
    FAt = start;
    return {};
  }

  std::optional<double> ReadTimeBehindDate() {
    const bool isIso = Peek() == u'T' && FAt > 0 && IsAsciiDigit(FText[FAt - 1]);
    if (isIso)
      ++FAt;
    else if (!SkipBlanks())
      return {};
    return ReadTime();
  }

  /// A separator and up to two digits below 60; nothing when no separator stands here, -1 when they do not follow it.
  std::optional<int> ReadSixtieth() {
    if (!IsTimeSeparator(Peek())) return {};
    ++FAt;
    const auto number = ReadNumber(2);
    return number && number->Value < 60 ? number->Value : -1;
  }

  /// The fraction of a second as milliseconds, digits beyond them cut; -1 when no digit follows the separator.
  int ReadMilliseconds() {
    if (Peek() != FSettings.DecimalSeparator && Peek() != u'.') return 0;
    ++FAt;
    int value = 0;
    int digits = 0;
    for (; IsAsciiDigit(Peek()); ++FAt, ++digits)
      if (digits < 3) value = value * 10 + (Peek() - u'0');
    if (digits == 0) return -1;
    for (; digits < 3; ++digits) value *= 10;
    return value;
  }

  std::optional<double> ReadTime() {
    const auto hours = ReadNumber(2);
    if (!hours) return {};
    const auto minute = ReadSixtieth();
    const auto second = minute ? ReadSixtieth() : std::nullopt;
    const int milliseconds = second ? ReadMilliseconds() : 0;
    if (minute.value_or(0) < 0 || second.value_or(0) < 0 || milliseconds < 0) return {};
    const auto isAfternoon = ReadHalfDay();
    int hour = hours->Value;
    if (isAfternoon) {
      if (hour > 12) return {};
      hour = hour % 12 + (*isAfternoon ? 12 : 0);
    } else if (!minute) {
      return {};
    }
    if (hour > 23) return {};
    return EncodeTime(hour, minute.value_or(0), second.value_or(0), milliseconds);
  }

  std::u16string_view FText;
  const TFormatSettings& FSettings;
  size_t FAt = 0;
};

}  // namespace

bool TryStrToDate(std::u16string_view AText, const TFormatSettings& ASettings, double& AResult) {
  const auto serial = TDateReader(TrimSpaces(AText), ASettings).Read();
  if (!serial) return false;
  AResult = *serial;
  return true;
}

}  // namespace tessarine
