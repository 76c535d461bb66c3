#include <tessarine/platform/FloatPattern.h>

#include <algorithm>
#include <cmath>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/detail/DecimalDigits.h>

namespace tessarine {

/// Reads the text of a pattern into the items and counts of a TFloatPattern.
class TFloatPatternReader {
 public:
  TFloatPatternReader(std::u16string_view APattern, TFloatPattern& APatternOut) : FText(APattern), FOut(APatternOut) {}

  void Read() {
    while (FAt < FText.size()) ReadItem();
    FOut.FLeastIntegers = FSeenZero ? FOut.FIntegerPlaces - FFirstZero : 0;
    FindShape();
  }

 private:
  using TItemKind = TFloatPattern::TItemKind;

  void Add(TItemKind AKind, char16_t AUnit = 0) { FOut.FItems.push_back({AKind, AUnit}); }

  void ReadItem() {
    const char16_t unit = FText[FAt];
    switch (unit) {
      case u'0':
      case u'#': AddPlace(unit == u'0'); break;
      case u'.': AddPoint(); break;
      case u',': FOut.FGrouped = true; break;
      case u'\'':
      case u'"': ReadQuoted(unit); return;
      case u'E':
      case u'e':
        if (ReadExponent()) return;
        Add(TItemKind::ikLiteral, unit);
        break;
      default: Add(TItemKind::ikLiteral, unit); break;
    }
    ++FAt;
  }

  void AddPlace(bool AIsZero) {
    if (FSeenPoint) {
      Add(TItemKind::ikDecimal);
      ++FOut.FDecimalPlaces;
      if (AIsZero) FOut.FLeastDecimals = FOut.FDecimalPlaces;
      return;
    }
    Add(TItemKind::ikInteger);
    if (AIsZero && !FSeenZero) {
      FSeenZero = true;
      FFirstZero = FOut.FIntegerPlaces;
    }
    ++FOut.FIntegerPlaces;
  }

  void AddPoint() {
    Add(FSeenPoint ? TItemKind::ikLiteral : TItemKind::ikPoint, u'.');
    FSeenPoint = true;
  }

  void ReadQuoted(char16_t AQuote) {
    for (++FAt; FAt < FText.size(); ++FAt) {
      if (FText[FAt] == AQuote) {
        const bool doubled = AQuote == u'\'' && FAt + 1 < FText.size() && FText[FAt + 1] == AQuote;
        if (!doubled) break;
        ++FAt;
      }
      Add(TItemKind::ikLiteral, FText[FAt]);
    }
    FAt = std::min(FAt + 1, FText.size());
  }

  bool ReadExponent() {
    const bool isExponent = !FOut.FHasExponent && FAt + 2 < FText.size() &&
                            (FText[FAt + 1] == u'+' || FText[FAt + 1] == u'-') && FText[FAt + 2] == u'0';
    if (!isExponent) return false;
    Add(TItemKind::ikExponent, FText[FAt]);
    FOut.FHasExponent = true;
    FOut.FExponentPlus = FText[FAt + 1] == u'+';
    for (FAt += 2; FAt < FText.size() && FText[FAt] == u'0'; ++FAt) ++FOut.FExponentDigits;
    return true;
  }

  /// Finds out whether the pattern is literals, integer places, a point with "0" places, literals: the shape that the
  /// short cut writes.
  void FindShape() {
    constexpr uint32_t kMostDecimals = 9;
    const auto& items = FOut.FItems;
    const auto isKind = [&](size_t AIndex, TItemKind AKind) {
      return AIndex < items.size() && items[AIndex].Kind == AKind;
    };
    size_t at = 0;
    while (isKind(at, TItemKind::ikLiteral)) ++at;
    FOut.FPrefixCount = at;
    while (isKind(at, TItemKind::ikInteger)) ++at;
    const bool hasIntegers = at > FOut.FPrefixCount;
    if (isKind(at, TItemKind::ikPoint)) ++at;
    while (isKind(at, TItemKind::ikDecimal)) ++at;
    FOut.FSuffixStart = at;
    while (isKind(at, TItemKind::ikLiteral)) ++at;
    FOut.FIsSimple = hasIntegers && at == items.size() && FOut.FLeastIntegers <= 1 &&
                     FOut.FLeastDecimals == FOut.FDecimalPlaces && FOut.FDecimalPlaces <= kMostDecimals;
  }

  std::u16string_view FText;
  TFloatPattern& FOut;
  size_t FAt = 0;
  bool FSeenPoint = false;
  bool FSeenZero = false;
  uint32_t FFirstZero = 0;
};

namespace {

using detail::TDecimalDigits;

/// The digit before the decimal point that has APlace digits between it and the point, "0" beyond the first digit.
char16_t IntegerDigit(const TDecimalDigits& ADigits, int64_t APlace) {
  const int64_t index = ADigits.Point - 1 - APlace;
  return index >= 0 && index < ADigits.Count ? static_cast<char16_t>(ADigits.Digits[index]) : u'0';
}

/// Decimal digit AIndex (0-based), "0" beyond the last.
char16_t DecimalDigit(const TDecimalDigits& ADigits, int64_t AIndex) {
  const int64_t index = ADigits.Point + AIndex;
  return index >= 0 && index < ADigits.Count ? static_cast<char16_t>(ADigits.Digits[index]) : u'0';
}

void AppendExponent(int AExponent, uint32_t ALeastDigits, bool APlus, std::u16string& AOut) {
  if (AExponent < 0)
    AOut.push_back(u'-');
  else if (APlus)
    AOut.push_back(u'+');
  char16_t text[kNumberTextSize];
  const size_t count = WriteGeneralNumber(std::abs(AExponent), text);
  if (ALeastDigits > count) AOut.append(ALeastDigits - count, u'0');
  AOut.append(text, count);
}

/// Writes AWhole before AEnd, with separators after every third digit unless ASeparator is 0; returns its start.
char16_t* WriteGroupedBefore(char16_t* AEnd, uint64_t AWhole, char16_t ASeparator) {
  int digits = 0;
  while (AWhole > 0) {
    if (ASeparator != 0 && digits > 0 && digits % 3 == 0) *--AEnd = ASeparator;
    *--AEnd = static_cast<char16_t>(u'0' + AWhole % 10);
    AWhole /= 10;
    ++digits;
  }
  return AEnd;
}

}  // namespace

TFloatPattern TFloatPattern::Compile(std::u16string_view APattern) {
  TFloatPattern pattern;
  pattern.FItems.reserve(APattern.size());
  TFloatPatternReader(APattern, pattern).Read();
  return pattern;
}

void TFloatPattern::Append(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const {
  if (FIsSimple && TryAppendSimple(AValue, ASettings, AOut)) return;
  AppendPlain(AValue, ASettings, AOut);
}

void TFloatPattern::AppendPlain(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const {
  if (!std::isfinite(AValue)) return AppendGeneralNumber(AValue, AOut);
  TDecimalDigits digits = detail::GeneralDigits(AValue);
  int exponent = 0;
  if (FHasExponent && digits.Count > 0) {
    // Point becomes the number of integer places; a carry out of the first digit raises it, which is undone.
    const int places = static_cast<int>(FIntegerPlaces);
    exponent = digits.Point - places;
    digits.Point = places;
    detail::RoundDigits(digits, int64_t{FIntegerPlaces} + FDecimalPlaces);
    if (digits.Point > places) {
      digits.Point = places;
      ++exponent;
    }
  } else {
    detail::RoundDigits(digits, digits.Point + int64_t{FDecimalPlaces});
  }
  if (AValue < 0) AOut.push_back(u'-');
  AppendItems(digits, exponent, ASettings, AOut);
}

void TFloatPattern::AppendItems(const TDecimalDigits& ADigits, int AExponent, const TFormatSettings& ASettings,
                                std::u16string& AOut) const {
  const int64_t integerDigits = std::max(ADigits.Point, 0);
  const int64_t decimals = std::max<int64_t>(FLeastDecimals, ADigits.Count - ADigits.Point);
  const bool showsDecimals = FDecimalPlaces > 0 && decimals > 0;
  const auto appendInteger = [&](int64_t APlace) {
    AOut.push_back(IntegerDigit(ADigits, APlace));
    if (FGrouped && APlace > 0 && APlace % 3 == 0) AOut.push_back(ASettings.GroupSeparator);
  };
  int64_t place = FIntegerPlaces;
  int64_t decimal = 0;
  for (const TItem item : FItems) {
    switch (item.Kind) {
      case TItemKind::ikLiteral: AOut.push_back(item.Unit); break;
      case TItemKind::ikInteger:
        if (place == FIntegerPlaces)
          for (int64_t i = integerDigits - 1; i >= place; --i) appendInteger(i);
        --place;
        if (place < integerDigits || place < FLeastIntegers) appendInteger(place);
        break;
      case TItemKind::ikPoint:
        if (FIntegerPlaces == 0)
          for (int64_t i = integerDigits - 1; i >= 0; --i) appendInteger(i);
        if (showsDecimals) AOut.push_back(ASettings.DecimalSeparator);
        break;
      case TItemKind::ikDecimal:
        if (decimal < decimals) AOut.push_back(DecimalDigit(ADigits, decimal));
        ++decimal;
        break;
      case TItemKind::ikExponent:
        AOut.push_back(item.Unit);
        AppendExponent(AExponent, FExponentDigits, FExponentPlus, AOut);
        break;
    }
  }
}

/// Scales the value to the last place and rounds there. Rounding to 15 digits first, as the plain way does, moves the
/// scaled value by less than 5e-15 of it and the product's own error is smaller still: so unless the value lies as near
/// to a tie as that, both ways round to the same integer. Measured: 20 to 50 ns against 100 to 300.
bool TFloatPattern::TryAppendSimple(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const {
  const double scaled = std::fabs(AValue) * detail::ExactPowerOfTen(static_cast<int>(FDecimalPlaces));
  if (!(scaled < 1e13)) return false;
  const auto floor = static_cast<uint64_t>(scaled);
  const double fraction = scaled - static_cast<double>(floor);
  if (std::fabs(fraction - 0.5) <= scaled * 1e-14) return false;
  uint64_t whole = floor + (fraction > 0.5 ? 1 : 0);

  char16_t buffer[32];
  char16_t* const end = buffer + 32;
  char16_t* start = end;
  for (uint32_t i = 0; i < FDecimalPlaces; ++i) {
    *--start = static_cast<char16_t>(u'0' + whole % 10);
    whole /= 10;
  }
  if (FDecimalPlaces > 0) *--start = ASettings.DecimalSeparator;
  if (whole == 0 && FLeastIntegers > 0)
    *--start = u'0';
  else
    start = WriteGroupedBefore(start, whole, FGrouped ? ASettings.GroupSeparator : u'\0');

  if (AValue < 0) AOut.push_back(u'-');
  for (size_t i = 0; i < FPrefixCount; ++i) AOut.push_back(FItems[i].Unit);
  AOut.append(start, static_cast<size_t>(end - start));
  for (size_t i = FSuffixStart; i < FItems.size(); ++i) AOut.push_back(FItems[i].Unit);
  return true;
}

std::u16string FormatFloat(std::u16string_view APattern, double AValue, const TFormatSettings& ASettings) {
  std::u16string text;
  TFloatPattern::Compile(APattern).Append(AValue, ASettings, text);
  return text;
}

}  // namespace tessarine
