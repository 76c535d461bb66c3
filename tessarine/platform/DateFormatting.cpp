#include <algorithm>
#include <cstddef>
#include <utility>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

/// Applies one pattern to one date and time, left to right.
class TDateTimeWriter {
 public:
  TDateTimeWriter(std::u16string_view APattern, double ASerial, const TFormatSettings& ASettings, std::u16string& AOut)
      : FPattern(APattern),
        FSettings(ASettings),
        FDate(DecodeDate(ASerial)),
        FTime(DecodeTime(ASerial)),
        FDayOfWeek(DayOfWeek(ASerial)),
        FOut(AOut) {}

  void Write() {
    FTwelveHours = HasHalfDayMark();
    while (FAt < FPattern.size()) WriteItem();
  }

 private:
  /// The pattern's text in quotes that opens at AAt ends before the returned place; the closing quote may be missing.
  size_t QuotedEnd(size_t AAt) const {
    const char16_t quote = FPattern[AAt];
    for (size_t at = AAt + 1; at < FPattern.size(); ++at) {
      if (FPattern[at] != quote) continue;
      if (quote != u'\'' || at + 1 >= FPattern.size() || FPattern[at + 1] != quote) return at;
      ++at;
    }
    return FPattern.size();
  }

  static bool IsQuote(char16_t AUnit) { return AUnit == u'\'' || AUnit == u'"'; }

  bool StartsWith(size_t AAt, std::u16string_view AWord) const {
    return EqualAsciiNoCase(FPattern.substr(AAt, AWord.size()), AWord);
  }

  /// Length of the half-day mark at AAt; 0 when none stands there.
  size_t HalfDayLength(size_t AAt) const {
    if (AsciiUpper(FPattern[AAt]) != u'A') return 0;
    return StartsWith(AAt, u"AM/PM") ? 5 : StartsWith(AAt, u"A/P") ? 3 : 0;
  }

  bool HasHalfDayMark() const {
    for (size_t at = 0; at < FPattern.size(); ++at) {
      if (IsQuote(FPattern[at]))
        at = QuotedEnd(at);
      else if (HalfDayLength(at) > 0)
        return true;
    }
    return false;
  }

  void WriteItem() {
    const char16_t unit = FPattern[FAt];
    if (IsQuote(unit)) return WriteQuoted();
    if (const size_t length = HalfDayLength(FAt)) return WriteHalfDay(length);
    const size_t start = FAt;
    while (FAt < FPattern.size() && AsciiUpper(FPattern[FAt]) == AsciiUpper(unit)) ++FAt;
    WriteRun(unit, FAt - start);
    if (IsAsciiLetter(unit)) FFollowsHours = AsciiUpper(unit) == u'H';
  }

  void WriteQuoted() {
    const size_t end = QuotedEnd(FAt);
    for (size_t at = FAt + 1; at < end; ++at) {
      FOut.push_back(FPattern[at]);
      if (FPattern[at] == u'\'' && FPattern[FAt] == u'\'') ++at;  // inside single quotes they come in pairs only
    }
    FAt = std::min(end + 1, FPattern.size());
  }

  void WriteHalfDay(size_t ALength) {
    const std::u16string_view text = FTime.Hour < 12 ? FSettings.AmText : FSettings.PmText;
    FOut.append(ALength == 5 ? text : text.substr(0, 1));
    FAt += ALength;
    FFollowsHours = false;
  }

  void WriteRun(char16_t AUnit, size_t ACount) {
    const size_t width = std::min<size_t>(ACount, 2);
    switch (AsciiUpper(AUnit)) {
      case u'D': WriteDay(ACount); break;
      case u'M': FFollowsHours&& ACount <= 2 ? WriteNumber(FTime.Minute, width) : WriteMonth(ACount); break;
      case u'Y': ACount <= 2 ? WriteNumber(FDate.Year % 100, 2) : WriteNumber(FDate.Year, 4); break;
      case u'H': WriteNumber(FTwelveHours ? (FTime.Hour + 11) % 12 + 1 : FTime.Hour, width); break;
      case u'N': WriteNumber(FTime.Minute, width); break;
      case u'S': WriteNumber(FTime.Second, width); break;
      case u'/': FOut.append(ACount, FSettings.DateSeparator); break;
      case u':': FOut.append(ACount, FSettings.TimeSeparator); break;
      default: FOut.append(FPattern.substr(FAt - ACount, ACount)); break;
    }
  }

  void WriteDay(size_t ACount) {
    const auto weekday = static_cast<size_t>(FDayOfWeek - 1);
    if (ACount <= 2)
      WriteNumber(FDate.Day, ACount);
    else
      FOut.append(ACount == 3 ? FSettings.ShortDayNames[weekday] : FSettings.LongDayNames[weekday]);
  }

  void WriteMonth(size_t ACount) {
    const auto month = static_cast<size_t>(FDate.Month - 1);
    if (ACount <= 2)
      WriteNumber(FDate.Month, ACount);
    else
      FOut.append(ACount == 3 ? FSettings.ShortMonthNames[month] : FSettings.LongMonthNames[month]);
  }

  /// Padded with zeros to AWidth digits.
  void WriteNumber(int AValue, size_t AWidth) {
    char16_t text[8];
    size_t count = 0;
    for (int rest = AValue; rest > 0 || count < AWidth; rest /= 10)
      text[count++] = static_cast<char16_t>(u'0' + rest % 10);
    while (count > 0) FOut.push_back(text[--count]);
  }

  std::u16string_view FPattern;
  const TFormatSettings& FSettings;
  TDateParts FDate;
  TTimeParts FTime;
  int FDayOfWeek;
  std::u16string& FOut;
  size_t FAt = 0;
  bool FTwelveHours = false;
  bool FFollowsHours = false;  // the last letters outside quotes were hours
};

}  // namespace

bool TryFormatDateTime(std::u16string_view APattern, double ASerial, const TFormatSettings& ASettings,
                       std::u16string& AOut) {
  if (DayOfWeek(ASerial) == 0) return false;
  std::u16string text;
  text.reserve(APattern.size() + 16);
  TDateTimeWriter(APattern, ASerial, ASettings, text).Write();
  AOut = std::move(text);
  return true;
}

}  // namespace tessarine
