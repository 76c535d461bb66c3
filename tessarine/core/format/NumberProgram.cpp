#include <tessarine/core/format/detail/NumberProgram.h>

#include <algorithm>
#include <cmath>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/detail/FractionText.h>
#include <tessarine/core/format/detail/NumberFormatCode.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

TSectionProgram::TSectionProgram(std::u16string_view ASection) {
  std::u16string masked = MaskSection(StripTags(ASection).Code);
  std::u16string plain = WithoutMarks(masked);
  const bool hasParentheses = plain.find(u'(') != std::u16string::npos;
  FIsPercent = plain.ends_with(u'%');
  if (FIsPercent) masked.pop_back();
  const size_t blanks = CountTrailingBlanks(masked);
  masked = std::u16string(TrimMasked(masked));
  if (masked.empty()) masked += u'0';
  plain = WithoutMarks(masked);
  FShowsMinus = !hasParentheses && plain.find(u'-') == std::u16string::npos;

  if (const auto slash = FindFractionSlash(plain)) {
    FKind = TSectionKind::skFraction;
    FDenominatorLimit = DenominatorLimit(std::u16string_view(plain).substr(*slash + 1));
  } else {
    const std::u16string pattern = FloatPatternOf(masked);
    if (HoldsPlaceholder(pattern)) {
      FKind = TSectionKind::skPattern;
      FPattern = TFloatPattern::Compile(pattern);
    } else {
      FLiteral = std::move(plain);
    }
    if (FIsPercent) FTail += u'%';
  }
  FTail.append(blanks, u' ');
}

void TSectionProgram::Append(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const {
  if (FKind == TSectionKind::skFraction) {
    AppendFraction(AValue, FDenominatorLimit, BestFraction, ASettings, AOut);
  } else {
    if (AValue < 0 && FShowsMinus) AOut += u'-';
    if (FKind == TSectionKind::skLiteral) {
      AOut += FLiteral;
    } else {
      FPattern.Append(std::abs(AValue) * (FIsPercent ? 100 : 1), ASettings, AOut);
    }
  }
  AOut += FTail;
}

TNumberProgram::TNumberProgram(std::u16string_view ACode) : FCode(ACode) {
  FKind = ReadCode(ACode.size() > kMaxFormatCodeLength ? std::u16string_view() : TrimSpaces(ACode));
}

TNumberProgram::TProgramKind TNumberProgram::ReadCode(std::u16string_view ATrimmed) {
  if (ATrimmed.empty() || EqualAsciiNoCase(ATrimmed, u"General")) return TProgramKind::pkGeneral;
  if (IsTextNumberFormat(ATrimmed)) return TProgramKind::pkPlainText;
  const std::u16string_view pattern =
      ATrimmed == u"0%" || ATrimmed == u"0.00%" ? ATrimmed.substr(0, ATrimmed.size() - 1) : ATrimmed;
  if (pattern == u"0" || pattern == u"0.00" || pattern == u"#,##0" || pattern == u"#,##0.00") {
    FPattern = TFloatPattern::Compile(pattern);
    FIsPercent = pattern.size() < ATrimmed.size();
    return ATrimmed == u"0" ? TProgramKind::pkRounded : TProgramKind::pkPattern;
  }
  if (IsDateTimeCode(ATrimmed)) {
    FDateTime = TDateTimeProgram(DateTimePatternOf(ATrimmed));
    return TProgramKind::pkDateTime;
  }
  const auto sections = SplitSections(ATrimmed);
  for (size_t i = 0; i < std::min<size_t>(sections.size(), 3); ++i) FSections.emplace_back(sections[i]);
  return TProgramKind::pkSections;
}

void TNumberProgram::Append(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const {
  const double value = AValue == 0 ? 0 : AValue;  // no sign for -0.0
  switch (FKind) {
    case TProgramKind::pkGeneral: AppendGeneralNumberExponent4(value, ASettings, AOut); break;
    case TProgramKind::pkPlainText: AOut += FloatToStr(value, ASettings); break;
    case TProgramKind::pkRounded: {
      const double rounded = RoundToEven(value);
      if (std::abs(rounded) < 9.2e18) {
        AppendWhole(rounded, ASettings, AOut);
      } else {
        FPattern.Append(value, ASettings, AOut);
      }
      break;
    }
    case TProgramKind::pkPattern:
      FPattern.Append(FIsPercent ? value * 100 : value, ASettings, AOut);
      if (FIsPercent) AOut += u'%';
      break;
    case TProgramKind::pkDateTime:
      if (!FDateTime.TryAppend(value, ASettings, AOut)) AOut += FloatToStr(value, ASettings);
      break;
    case TProgramKind::pkSections: {
      const size_t count = FSections.size();
      const size_t section = value < 0 && count >= 2 ? 1 : value == 0 && count >= 3 ? 2 : 0;
      FSections[section].Append(value, ASettings, AOut);
      break;
    }
  }
}

}  // namespace tessarine::detail
