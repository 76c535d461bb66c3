#include <tessarine/core/format/detail/NumberFormatCode.h>

#include <algorithm>

#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kNowhere = std::u16string_view::npos;

bool StartsWithNoCase(std::u16string_view AText, std::u16string_view APrefix) {
  return AText.size() >= APrefix.size() && EqualAsciiNoCase(AText.substr(0, APrefix.size()), APrefix);
}

/// Quotes and escapes of a format code turned into those of the date formatter.
std::u16string WithDateQuotes(std::u16string_view ACode) {
  std::u16string pattern;
  pattern.reserve(ACode.size());
  bool quoted = false;
  for (size_t i = 0; i < ACode.size(); ++i) {
    const char16_t unit = ACode[i];
    if (unit == u'"') {
      quoted = !quoted;
      pattern += u'\'';
    } else if (quoted) {
      pattern += unit;
      if (unit == u'\'') pattern += u'\'';
    } else if (unit == u'\\' && i + 1 < ACode.size()) {
      pattern += ACode[++i];
    } else {
      pattern += unit;
    }
  }
  return pattern;
}

void ReplaceAllNoCase(std::u16string& AText, std::u16string_view AOld, std::u16string_view ANew) {
  std::u16string replaced;
  size_t copied = 0;
  for (size_t i = 0; i + AOld.size() <= AText.size();) {
    if (!StartsWithNoCase(std::u16string_view(AText).substr(i), AOld)) {
      ++i;
      continue;
    }
    replaced.append(AText, copied, i - copied);
    replaced += ANew;
    copied = i += AOld.size();
  }
  if (copied == 0) return;
  replaced.append(AText, copied);
  AText = std::move(replaced);
}

enum class TTagKind : uint8_t { tkColor, tkElapsedTime, tkCurrency, tkOther };

struct TTag {
  TTagKind Kind;
  uint32_t ARGB;
};

TTag ReadTag(std::u16string_view ATag) {
  static constexpr struct {
    std::u16string_view Word;
    uint32_t ARGB;
  } kColors[] = {{u"red", 0xFFFF0000},   {u"blue", 0xFF0000FF},   {u"green", 0xFF008000}, {u"black", 0xFF000000},
                 {u"white", 0xFFFFFFFF}, {u"yellow", 0xFFFFFF00}, {u"cyan", 0xFF00FFFF},  {u"magenta", 0xFFFF00FF}};
  for (const auto& color : kColors)
    if (EqualAsciiNoCase(ATag, color.Word)) return {TTagKind::tkColor, color.ARGB};
  if (StartsWithNoCase(ATag, u"color")) return {TTagKind::tkColor, 0xFFFF0000};
  for (const std::u16string_view time : {u"h", u"hh", u"m", u"mm", u"s", u"ss"})
    if (EqualAsciiNoCase(ATag, time)) return {TTagKind::tkElapsedTime, 0};
  return {ATag.starts_with(u'$') ? TTagKind::tkCurrency : TTagKind::tkOther, 0};
}

std::u16string_view CurrencySymbol(std::u16string_view ATag) {
  const std::u16string_view symbol = ATag.substr(1, std::min(ATag.find(u'-'), ATag.size()) - 1);
  return symbol.empty() ? std::u16string_view(u"$") : symbol;
}

/// Reads a masked section character by character.
struct TMaskedReader {
  std::u16string_view Masked;
  size_t Position = 0;
  bool Literal = false;
  char16_t Unit = 0;

  bool Next() {
    if (Position >= Masked.size()) return false;
    Unit = Masked[Position++];
    Literal = Unit == kLiteralMark && Position < Masked.size();
    if (Literal) Unit = Masked[Position++];
    return true;
  }
};

}  // namespace

bool IsDateTimeCode(std::u16string_view ACode) {
  if (ACode.empty() || EqualAsciiNoCase(ACode, u"general")) return false;
  bool month = false;
  bool other = false;
  for (size_t i = 0; i < ACode.size(); ++i) {
    switch (AsciiLower(ACode[i])) {
      case u'#':
      case u'0':
      case u'%': return false;
      case u'y':
      case u'd':
      case u'h':
      case u's': other = true; break;
      case u'm': month = true; break;
      case u'a': other = other || StartsWithNoCase(ACode.substr(i), u"a/p"); break;
      default: break;
    }
  }
  return month || other;
}

std::u16string DateTimePatternOf(std::u16string_view ACode) {
  std::u16string pattern = WithDateQuotes(ACode);
  static constexpr struct {
    std::u16string_view Old, New;
  } kReplacements[] = {
      {u"yyyy", u"yyyy"},   {u"yy", u"yy"},     {u"mmmmm", u"m"}, {u"mmmm", u"mmmm"}, {u"mmm", u"mmm"},
      {u"AM/PM", u"AM/PM"}, {u"A/P", u"AM/PM"}, {u"ss", u"ss"},   {u"hh", u"hh"},     {u"mm-dd-yy", u"mm/dd/yy"}};
  for (const auto& replacement : kReplacements) ReplaceAllNoCase(pattern, replacement.Old, replacement.New);
  return pattern;
}

std::vector<std::u16string_view> SplitSections(std::u16string_view ACode) {
  std::vector<std::u16string_view> sections;
  bool quoted = false;
  size_t start = 0;
  for (size_t i = 0; i < ACode.size(); ++i) {
    if (ACode[i] == u'"') quoted = !quoted;
    if (ACode[i] != u';' || quoted) continue;
    sections.push_back(ACode.substr(start, i - start));
    start = i + 1;
  }
  sections.push_back(ACode.substr(start));
  return sections;
}

std::u16string_view SelectSection(const std::vector<std::u16string_view>& ASections, double AValue) {
  if (ASections.empty()) return u"General";
  if (AValue < 0 && ASections.size() >= 2) return ASections[1];
  if (AValue == 0 && ASections.size() >= 3) return ASections[2];
  return ASections[0];
}

TStrippedSection StripTags(std::u16string_view ASection) {
  TStrippedSection section;
  std::u16string reread;  // what follows a tag, with a symbol in front that opens the next tag itself
  std::u16string_view rest = ASection;
  for (size_t open = rest.find(u'['); open != kNowhere; open = rest.find(u'[')) {
    const size_t close = rest.find(u']', open);
    if (close == kNowhere) break;
    const std::u16string_view tagText = rest.substr(open + 1, close - open - 1);
    const TTag tag = ReadTag(tagText);
    if (tag.Kind == TTagKind::tkElapsedTime) break;
    if (tag.Kind == TTagKind::tkColor) {
      section.ColorFound = true;
      section.ARGB = tag.ARGB;
    }
    section.Code += rest.substr(0, open);
    const std::u16string_view symbol = tag.Kind == TTagKind::tkCurrency ? CurrencySymbol(tagText) : u"";
    rest.remove_prefix(close + 1);
    if (symbol.find(u'[') == kNowhere) {
      section.Code += symbol;
    } else {
      std::u16string joined(symbol);
      joined += rest;
      reread = std::move(joined);
      rest = reread;
    }
  }
  section.Code += rest;
  return section;
}

std::u16string MaskSection(std::u16string_view ASection) {
  std::u16string masked;
  masked.reserve(ASection.size() * 2);
  const auto addLiteral = [&](char16_t AUnit) {
    masked += kLiteralMark;
    masked += AUnit;
  };
  bool quoted = false;
  for (size_t i = 0; i < ASection.size(); ++i) {
    const char16_t unit = ASection[i];
    const bool hasNext = i + 1 < ASection.size();
    if (unit == u'"') {
      quoted = !quoted;
    } else if (quoted || unit == u'$') {
      addLiteral(unit);
    } else if (unit == u'\\' && hasNext) {
      addLiteral(ASection[++i]);
    } else if ((unit == u'_' || unit == u'*') && hasNext) {
      masked += u' ';
      ++i;
    } else {
      masked += unit;
    }
  }
  return masked;
}

std::u16string WithoutMarks(std::u16string_view AMasked) {
  std::u16string plain;
  plain.reserve(AMasked.size());
  for (TMaskedReader reader{AMasked}; reader.Next();) plain += reader.Unit;
  return plain;
}

std::u16string_view TrimMasked(std::u16string_view AMasked) {
  size_t first = kNowhere;
  size_t last = 0;
  size_t position = 0;
  for (TMaskedReader reader{AMasked}; reader.Next(); position = reader.Position) {
    if (reader.Unit <= u' ') continue;
    if (first == kNowhere) first = position;
    last = reader.Position;
  }
  return first == kNowhere ? std::u16string_view() : AMasked.substr(first, last - first);
}

size_t CountTrailingBlanks(std::u16string_view AText) {
  const size_t last = AText.find_last_not_of(u' ');
  return AText.size() - (last == kNowhere ? 0 : last + 1);
}

std::u16string FloatPatternOf(std::u16string_view AMasked) {
  std::u16string pattern;
  pattern.reserve(AMasked.size() + 2);
  bool open = false;
  for (TMaskedReader reader{AMasked}; reader.Next();) {
    if (reader.Literal != open) {
      pattern += u'\'';
      open = reader.Literal;
    }
    pattern += reader.Unit;
    if (open && reader.Unit == u'\'') pattern += u'\'';
  }
  if (open) pattern += u'\'';
  return pattern;
}

bool HoldsPlaceholder(std::u16string_view APattern) { return APattern.find_first_of(u"#0?") != kNowhere; }

size_t FindFill(std::u16string_view ASection) {
  bool quoted = false;
  for (size_t i = 0; i < ASection.size(); ++i) {
    if (ASection[i] == u'"') quoted = !quoted;
    if (ASection[i] == u'*' && !quoted) return i;
  }
  return kNowhere;
}

}  // namespace tessarine::detail
