#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/detail/DecimalDigits.h>

namespace tessarine {

namespace {

template <typename TUnit>
using TView = std::basic_string_view<TUnit>;

template <typename TUnit>
constexpr bool IsDigit(TUnit AUnit) {
  return AUnit >= static_cast<TUnit>('0') && AUnit <= static_cast<TUnit>('9');
}

constexpr bool IsBlank(char16_t AUnit) { return AUnit <= u' '; }
constexpr bool IsBlank(char AUnit) { return static_cast<unsigned char>(AUnit) <= ' '; }

template <typename TUnit>
TView<TUnit> TrimBlanks(TView<TUnit> AText) {
  while (!AText.empty() && IsBlank(AText.front())) AText.remove_prefix(1);
  while (!AText.empty() && IsBlank(AText.back())) AText.remove_suffix(1);
  return AText;
}

/// A number's text as from_chars reads it: ASCII, "." and no plus in front. Short ones need no allocation.
class TAsciiNumber {
 public:
  explicit TAsciiNumber(size_t ALength) {
    if (ALength > sizeof FShort) FLong.reserve(ALength);
    FIsLong = ALength > sizeof FShort;
  }
  void Push(char AUnit) {
    if (FIsLong)
      FLong.push_back(AUnit);
    else
      FShort[FCount++] = AUnit;
  }
  std::string_view View() const { return FIsLong ? std::string_view(FLong) : std::string_view(FShort, FCount); }

 private:
  char FShort[64];
  size_t FCount = 0;
  bool FIsLong = false;
  std::string FLong;
};

/// Copies the digits from AAt on, and moves AAt behind them.
template <typename TUnit>
size_t CopyDigits(TView<TUnit> AText, size_t& AAt, TAsciiNumber& AOut) {
  const size_t start = AAt;
  for (; AAt < AText.size() && IsDigit(AText[AAt]); ++AAt) AOut.Push(static_cast<char>(AText[AAt]));
  return AAt - start;
}

template <typename TUnit>
bool ReadSign(TView<TUnit> AText, size_t& AAt) {
  const bool negative = AAt < AText.size() && AText[AAt] == static_cast<TUnit>('-');
  if (negative || (AAt < AText.size() && AText[AAt] == static_cast<TUnit>('+'))) ++AAt;
  return negative;
}

/// Digits with at most one separator. False when there is no digit.
template <typename TUnit>
bool ReadMantissa(TView<TUnit> AText, TUnit ASeparator, size_t& AAt, TAsciiNumber& AOut) {
  size_t digits = CopyDigits(AText, AAt, AOut);
  if (AAt < AText.size() && AText[AAt] == ASeparator) {
    ++AAt;
    AOut.Push('.');
    digits += CopyDigits(AText, AAt, AOut);
  }
  return digits > 0;
}

/// "E", a sign and digits, if they are there. False for an "E" without digits.
template <typename TUnit>
bool ReadExponent(TView<TUnit> AText, size_t& AAt, TAsciiNumber& AOut) {
  if (AAt == AText.size() || (AText[AAt] != static_cast<TUnit>('E') && AText[AAt] != static_cast<TUnit>('e')))
    return true;
  ++AAt;
  AOut.Push('e');
  if (ReadSign(AText, AAt)) AOut.Push('-');
  return CopyDigits(AText, AAt, AOut) > 0;
}

/// True when a number that does not fit a double is too small for it rather than too large.
bool IsBelowOne(std::string_view ANumber) {
  const size_t mantissaEnd = std::min(ANumber.find('e'), ANumber.size());
  const std::string_view mantissa = ANumber.substr(0, mantissaEnd);
  const size_t point = std::min(mantissa.find('.'), mantissa.size());
  const size_t first = std::min(mantissa.find_first_of("123456789"), mantissa.size());
  constexpr int64_t kEnough = 1'000'000'000'000'000;  // beyond any mantissa's length
  int64_t exponent = 0;
  if (mantissaEnd < ANumber.size()) {
    const bool negative = ANumber[mantissaEnd + 1] == '-';
    for (const char unit : ANumber.substr(mantissaEnd + (negative ? 2 : 1)))
      if (exponent < kEnough) exponent = exponent * 10 + (unit - '0');
    if (negative) exponent = -exponent;
  }
  return static_cast<int64_t>(point) - static_cast<int64_t>(first) + exponent <= 0;
}

/// Converts digits with an optional point and exponent; false beyond the range of a double, 0 below it.
bool ConvertAscii(std::string_view ANumber, bool ANegative, double& AResult) {
  double value = 0;
  const auto result = std::from_chars(ANumber.data(), ANumber.data() + ANumber.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    if (!IsBelowOne(ANumber)) return false;
    value = 0;
  } else if (result.ec != std::errc() || result.ptr != ANumber.data() + ANumber.size()) {
    return false;
  }
  if (!(value <= std::numeric_limits<double>::max())) return false;
  AResult = ANegative ? -value : value;
  return true;
}

template <typename TUnit>
bool ParsePlain(TView<TUnit> AText, TUnit ASeparator, double& AResult) {
  const TView<TUnit> text = TrimBlanks(AText);
  size_t at = 0;
  const bool negative = ReadSign(text, at);
  if (at == text.size() || (!IsDigit(text[at]) && text[at] != ASeparator)) return false;
  TAsciiNumber number(text.size());
  if (!ReadMantissa(text, ASeparator, at, number) || !ReadExponent(text, at, number) || at != text.size()) return false;
  return ConvertAscii(number.View(), negative, AResult);
}

/// Converts in place what files mostly hold beyond the short numbers: digits with at most one point. False for anything
/// else, numbers among it.
bool TryParseDigits(std::string_view AText, double& AResult) {
  size_t at = 0;
  const bool negative = ReadSign(AText, at);
  const std::string_view number = AText.substr(at);
  size_t points = 0;
  for (const char unit : number) {
    if (unit == '.')
      ++points;
    else if (!IsDigit(unit))
      return false;
  }
  return points <= 1 && number.size() > points && ConvertAscii(number, negative, AResult);
}

/// Reads sign, digits and separator with at most 15 digits; false for anything else, numbers among it. The digits as an
/// integer and the power of ten are exact doubles, so the one division is correctly rounded (Clinger 1990).
template <typename TUnit>
bool TryParseShort(TView<TUnit> AText, TUnit ASeparator, double& AResult) {
  size_t at = 0;
  const bool negative = ReadSign(AText, at);
  if (AText.size() - at > detail::kGeneralDigits + 1) return false;
  int64_t whole = 0;
  int digits = 0;
  int decimals = 0;
  bool separated = false;
  for (; at < AText.size(); ++at) {
    if (IsDigit(AText[at])) {
      whole = whole * 10 + static_cast<int64_t>(AText[at] - static_cast<TUnit>('0'));
      ++digits;
      decimals += separated ? 1 : 0;
    } else if (AText[at] == ASeparator && !separated) {
      separated = true;
    } else {
      return false;
    }
  }
  if (digits == 0 || digits > detail::kGeneralDigits) return false;
  const double value = static_cast<double>(whole) / detail::ExactPowerOfTen(decimals);
  AResult = negative ? -value : value;
  return true;
}

template <typename TUnit>
bool Parse(TView<TUnit> AText, TUnit ASeparator, double& AResult) {
  return TryParseShort(AText, ASeparator, AResult) || ParsePlain(AText, ASeparator, AResult);
}

template <typename TUnit>
bool ParseInt32(TView<TUnit> AText, int32_t& AResult) {
  size_t at = 0;
  const bool negative = ReadSign(AText, at);
  if (at == AText.size()) return false;
  int64_t value = 0;
  for (; at < AText.size(); ++at) {
    if (!IsDigit(AText[at])) return false;
    value = value * 10 + static_cast<int64_t>(AText[at] - static_cast<TUnit>('0'));
    if (value > int64_t{std::numeric_limits<int32_t>::max()} + (negative ? 1 : 0)) return false;
  }
  AResult = static_cast<int32_t>(negative ? -value : value);
  return true;
}

}  // namespace

bool TryStrToFloat(std::u16string_view AText, const TFormatSettings& ASettings, double& AResult) {
  return Parse(AText, ASettings.DecimalSeparator, AResult);
}

bool TryStrToFloatPlain(std::u16string_view AText, char16_t ADecimalSeparator, double& AResult) {
  return ParsePlain(AText, ADecimalSeparator, AResult);
}

bool TryParseFileNumber(std::u16string_view AText, double& AResult) { return Parse(AText, u'.', AResult); }
bool TryParseFileNumber(std::string_view AText, double& AResult) {
  return TryParseShort(AText, '.', AResult) || TryParseDigits(AText, AResult) || ParsePlain(AText, '.', AResult);
}

bool TryParseInt32(std::u16string_view AText, int32_t& AResult) { return ParseInt32(AText, AResult); }
bool TryParseInt32(std::string_view AText, int32_t& AResult) { return ParseInt32(AText, AResult); }

}  // namespace tessarine
