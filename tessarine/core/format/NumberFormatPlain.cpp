#include <tessarine/core/format/detail/NumberFormatPlain.h>

#include <cmath>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/detail/FractionText.h>
#include <tessarine/core/format/detail/NumberFormatCode.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr int64_t kMostDenominatorsTried = 1000;

std::u16string RoundedPlain(double AValue, const TFormatSettings& ASettings) {
  const double rounded = RoundToEven(AValue);
  if (!(std::abs(rounded) < 9.2e18)) return FormatFloat(u"0", AValue, ASettings);
  std::u16string text;
  AppendWhole(rounded, ASettings, text);
  return text;
}

std::u16string DateTimePlain(double AValue, std::u16string_view ACode, const TFormatSettings& ASettings) {
  std::u16string text;
  if (TryFormatDateTime(DateTimePatternOf(ACode), AValue, ASettings, text)) return text;
  return FloatToStr(AValue, ASettings);
}

}  // namespace

std::u16string FormatSectionPlain(double AValue, std::u16string_view ASection, const TFormatSettings& ASettings) {
  const bool negative = AValue < 0;
  double magnitude = std::abs(AValue);
  std::u16string masked = MaskSection(StripTags(ASection).Code);
  std::u16string plain = WithoutMarks(masked);
  const bool hasParentheses = plain.find(u'(') != std::u16string::npos;

  std::u16string_view suffix;
  if (plain.ends_with(u'%')) {
    suffix = u"%";
    masked.pop_back();
    magnitude *= 100;
  }
  const size_t blanks = CountTrailingBlanks(masked);
  masked = std::u16string(TrimMasked(masked));
  if (masked.empty()) masked += u'0';
  plain = WithoutMarks(masked);

  std::u16string text;
  if (const auto slash = FindFractionSlash(plain)) {
    const int64_t limit = DenominatorLimit(std::u16string_view(plain).substr(*slash + 1));
    AppendFraction(AValue, limit, limit <= kMostDenominatorsTried ? BestFractionPlain : BestFraction, ASettings, text);
    return text.append(blanks, u' ');
  }

  if (negative && !hasParentheses && plain.find(u'-') == std::u16string::npos) text += u'-';
  const std::u16string pattern = FloatPatternOf(masked);
  text += HoldsPlaceholder(pattern) ? FormatFloat(pattern, magnitude, ASettings) : plain;
  text += suffix;
  return text.append(blanks, u' ');
}

std::u16string FormatNumberPlain(double AValue, std::u16string_view AFormat, const TFormatSettings& ASettings) {
  const std::u16string_view code = AFormat.size() > kMaxFormatCodeLength ? u"" : TrimSpaces(AFormat);
  const double value = AValue == 0 ? 0 : AValue;  // no sign for -0.0
  if (code.empty() || EqualAsciiNoCase(code, u"General")) return GeneralNumberTextExponent4(value, ASettings);
  if (code == u"0") return RoundedPlain(value, ASettings);
  if (code == u"0.00" || code == u"#,##0.00" || code == u"#,##0") return FormatFloat(code, value, ASettings);
  if (code == u"0%") return FormatFloat(u"0", value * 100, ASettings) + u"%";
  if (code == u"0.00%") return FormatFloat(u"0.00", value * 100, ASettings) + u"%";
  if (IsTextNumberFormat(code)) return FloatToStr(value, ASettings);
  if (IsDateTimeCode(code)) return DateTimePlain(value, code, ASettings);
  return FormatSectionPlain(value, SelectSection(SplitSections(code), value), ASettings);
}

}  // namespace tessarine::detail
