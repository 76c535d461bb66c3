#include <tessarine/io/ods/detail/OdsUnits.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <span>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr double kPixelsPerInch = 96;
constexpr double kDigitPixels = 7;    // of the width that a character means
constexpr double kPaddingPixels = 5;  // on both sides of a cell together
constexpr double kNoWidthChars = 8.43;
constexpr double kLeastWidthChars = 0.1;
constexpr double kSecondsPerDay = 86'400;

std::string_view TrimUnits(std::string_view AText) {
  while (!AText.empty() && static_cast<unsigned char>(AText.front()) <= ' ') AText.remove_prefix(1);
  while (!AText.empty() && static_cast<unsigned char>(AText.back()) <= ' ') AText.remove_suffix(1);
  return AText;
}

char LowerUnit(char AUnit) { return AUnit >= 'A' && AUnit <= 'Z' ? static_cast<char>(AUnit + 32) : AUnit; }

bool IsDigitUnit(char AUnit) { return AUnit >= '0' && AUnit <= '9'; }

struct TLengthUnit {
  std::string_view Suffix;
  double Cm;
};
constexpr TLengthUnit kLengthUnits[] = {{"cm", 1}, {"mm", 0.1}, {"in", kOdsCmPerInch}, {"pt", kOdsCmPerPoint}};

bool EndsWithNoCase(std::string_view AText, std::string_view ALowerSuffix) {
  if (AText.size() < ALowerSuffix.size()) return false;
  const std::string_view tail = AText.substr(AText.size() - ALowerSuffix.size());
  return std::equal(tail.begin(), tail.end(), ALowerSuffix.begin(),
                    [](char AL, char AR) { return LowerUnit(AL) == AR; });
}

/// Reads pieces of a date from the front of a text.
class TDateScan {
 public:
  explicit TDateScan(std::string_view AText) : FRest(AText) {}

  bool IsDone() const { return FRest.empty(); }
  char Peek() const { return FRest.empty() ? '\0' : FRest.front(); }
  bool Take(char AUnit) {
    if (Peek() != AUnit) return false;
    FRest.remove_prefix(1);
    return true;
  }

  /// Digits as a number of at most nine places.
  bool TakeInt(int& AValue) {
    size_t count = 0;
    int value = 0;
    for (; count < FRest.size() && IsDigitUnit(FRest[count]); ++count) {
      if (count == 9) return false;
      value = value * 10 + (FRest[count] - '0');
    }
    if (count == 0) return false;
    FRest.remove_prefix(count);
    AValue = value;
    return true;
  }

  /// Digits with a fraction behind "." or ",".
  bool TakeFloat(double& AValue) {
    size_t count = 0;
    while (count < FRest.size() && (IsDigitUnit(FRest[count]) || FRest[count] == '.' || FRest[count] == ',')) ++count;
    std::string text(FRest.substr(0, count));
    std::replace(text.begin(), text.end(), ',', '.');
    if (!TryParseFileNumber(std::string_view(text), AValue)) return false;
    FRest.remove_prefix(count);
    return true;
  }

 private:
  std::string_view FRest;
};

/// "13:45", "13:45:10.5", as a fraction of a day; hours may be more than a day has.
bool TakeClock(TDateScan& AScan, double& ADays) {
  int hours = 0;
  int minutes = 0;
  double seconds = 0;
  if (!AScan.TakeInt(hours) || !AScan.Take(':') || !AScan.TakeInt(minutes)) return false;
  if (AScan.Take(':') && !AScan.TakeFloat(seconds)) return false;
  if (minutes > 59 || seconds >= 61) return false;
  ADays = (hours * 3600.0 + minutes * 60.0 + seconds) / kSecondsPerDay;
  return true;
}

/// "Z", "+02:00" or nothing, to the end of the text.
bool IsZone(TDateScan AScan) {
  if (AScan.Take('Z')) return AScan.IsDone();
  int part = 0;
  if (AScan.Take('+') || AScan.Take('-')) {
    if (!AScan.TakeInt(part) || (AScan.Take(':') && !AScan.TakeInt(part))) return false;
  }
  return AScan.IsDone();
}

std::optional<double> ParseDateTime(TDateScan AScan) {
  int year = 0;
  int month = 0;
  int day = 0;
  double date = 0;
  if (!AScan.TakeInt(year) || !AScan.Take('-') || !AScan.TakeInt(month) || !AScan.Take('-') || !AScan.TakeInt(day) ||
      !TryEncodeDate(year, month, day, date)) {
    return std::nullopt;
  }
  if (!AScan.Take('T') && !AScan.Take('t') && !AScan.Take(' '))
    return IsZone(AScan) ? std::optional(date) : std::nullopt;
  double time = 0;
  if (!TakeClock(AScan, time) || !IsZone(AScan)) return std::nullopt;
  return time < 1 ? CombineDateTime(date, time) : date + time;
}

/// "P1DT2H3M4.5S"; years and months have no fixed length and are refused unless they are 0.
std::optional<double> ParseDuration(TDateScan AScan) {
  const bool isNegative = AScan.Take('-');
  if (!AScan.Take('P')) return std::nullopt;
  bool inTime = false;
  bool hasPart = false;
  double seconds = 0;
  while (!AScan.IsDone()) {
    if (!inTime && AScan.Take('T')) {
      inTime = true;
      continue;
    }
    double amount = 0;
    if (!AScan.TakeFloat(amount)) return std::nullopt;
    hasPart = true;
    if (!inTime && AScan.Take('D')) {
      seconds += amount * kSecondsPerDay;
    } else if (inTime && AScan.Take('H')) {
      seconds += amount * 3600;
    } else if (inTime && AScan.Take('M')) {
      seconds += amount * 60;
    } else if (inTime && AScan.Take('S')) {
      seconds += amount;
    } else if (amount != 0 || inTime || (!AScan.Take('Y') && !AScan.Take('M'))) {
      return std::nullopt;
    }
  }
  const double days = seconds / kSecondsPerDay;
  if (!hasPart || !std::isfinite(days)) return std::nullopt;
  return isNegative ? -days : days;
}

constexpr std::u16string_view kRoman[] = {u"Times New Roman", u"Georgia", u"Cambria", u"Palatino Linotype",
                                          u"Book Antiqua"};
constexpr std::u16string_view kSwiss[] = {u"Arial", u"Calibri", u"Segoe UI", u"Helvetica"};
constexpr std::u16string_view kModern[] = {u"Consolas", u"Courier New", u"Lucida Console"};
constexpr std::u16string_view kScript[] = {u"Segoe Script", u"Comic Sans MS", u"Bradley Hand ITC"};
constexpr std::u16string_view kDecorative[] = {u"Impact", u"Papyrus", u"Arial Black"};
constexpr std::u16string_view kSystem[] = {u"Tahoma"};

struct TGenericFamily {
  std::string_view Name;
  std::span<const std::u16string_view> Fonts;
};
constexpr TGenericFamily kGenericFamilies[] = {{"roman", kRoman},   {"swiss", kSwiss},           {"modern", kModern},
                                               {"script", kScript}, {"decorative", kDecorative}, {"system", kSystem}};

std::u16string_view WithoutQuotes(std::u16string_view AText) {
  AText = TrimSpaces(AText);
  const bool isQuoted = AText.size() >= 2 && (AText.front() == u'\'' || AText.front() == u'"');
  return isQuoted && AText.back() == AText.front() ? TrimSpaces(AText.substr(1, AText.size() - 2)) : AText;
}

}  // namespace

double OdsParseLengthCm(std::string_view AText) {
  std::string_view text = TrimUnits(AText);
  double factor = 1;
  for (const TLengthUnit& unit : kLengthUnits) {
    if (!EndsWithNoCase(text, unit.Suffix)) continue;
    text.remove_suffix(unit.Suffix.size());
    factor = unit.Cm;
    break;
  }
  double value = 0;
  if (text.find(',') == text.npos) return TryParseFileNumber(text, value) ? value * factor : 0;
  std::string pointed(text);
  std::replace(pointed.begin(), pointed.end(), ',', '.');
  return TryParseFileNumber(std::string_view(pointed), value) ? value * factor : 0;
}

std::string OdsLengthText(double ACm) {
  // A locale of the process may have another decimal separator, so only integers are printed. The range is far beyond
  // any sheet.
  const double limited = std::isfinite(ACm) ? std::clamp(ACm, -1e9, 1e9) : 0;
  const auto thousandths = static_cast<int64_t>(std::llround(limited * 1000));
  const int64_t size = thousandths < 0 ? -thousandths : thousandths;
  char text[40];
  const int length = std::snprintf(text, sizeof(text), "%s%lld.%03lldcm", thousandths < 0 ? "-" : "",
                                   static_cast<long long>(size / 1000), static_cast<long long>(size % 1000));
  return {text, static_cast<size_t>(length)};
}

double OdsCmToColChars(double ACm) {
  if (!(ACm > 0)) return kNoWidthChars;
  const double pixels = ACm / kOdsCmPerInch * kPixelsPerInch;
  return std::max((pixels - kPaddingPixels) / kDigitPixels, kLeastWidthChars);
}

std::string OdsColCharsToCm(double AWidthChars) {
  return OdsLengthText((AWidthChars * kDigitPixels + kPaddingPixels) / kPixelsPerInch * kOdsCmPerInch);
}

double OdsCmToPoints(double ACm) { return ACm / kOdsCmPerPoint; }

std::string OdsPointsToCm(double AHeightPt) { return OdsLengthText(AHeightPt * kOdsCmPerPoint); }

std::optional<uint32_t> OdsColorFromHex(std::string_view AText) {
  std::string_view text = TrimUnits(AText);
  if (text.starts_with('#')) text.remove_prefix(1);
  if (text.size() != 6 && text.size() != 8) return std::nullopt;
  uint32_t color = 0;
  for (const char unit : text) {
    const char lower = LowerUnit(unit);
    if (!IsDigitUnit(lower) && (lower < 'a' || lower > 'f')) return std::nullopt;
    color = color << 4 | static_cast<uint32_t>(IsDigitUnit(lower) ? lower - '0' : lower - 'a' + 10);
  }
  return text.size() == 6 ? 0xFF000000u | color : color;
}

std::optional<double> OdsParseDateValue(std::string_view AText) {
  const std::string_view text = TrimUnits(AText);
  if (text.starts_with('P') || text.starts_with("-P")) return ParseDuration(TDateScan(text));
  if (text.find('-', 1) != text.npos && text.find('-', 1) < text.find(':')) return ParseDateTime(TDateScan(text));
  TDateScan scan(text);
  double time = 0;
  if (!TakeClock(scan, time) || !IsZone(scan)) return std::nullopt;
  return time;
}

TText OdsResolveFontName(std::u16string_view AName, std::u16string_view AFamily, std::string_view AGeneric,
                         const TOdsFontInstalled& AIsInstalled) {
  const std::u16string_view name = TrimSpaces(AName);
  if (!AIsInstalled || AIsInstalled(name)) return TText(name);
  for (size_t at = 0; at < AFamily.size();) {
    const size_t end = std::min(AFamily.find(u',', at), AFamily.size());
    const std::u16string_view member = WithoutQuotes(AFamily.substr(at, end - at));
    if (!member.empty() && AIsInstalled(member)) return TText(member);
    at = end + 1;
  }
  for (const TGenericFamily& family : kGenericFamilies) {
    if (family.Name != AGeneric) continue;
    for (const std::u16string_view candidate : family.Fonts)
      if (AIsInstalled(candidate)) return TText(candidate);
  }
  return TText(name);
}

}  // namespace tessarine::detail
