#include <tessarine/io/ods/detail/OdsNumberStyleReader.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kMaxDigits = 30;  // that a code may ask for in one place

std::u16string ElementText(const TXmlNode* ANode) {
  std::u16string text;
  for (const TXmlNode* child = ANode->FirstChild; child != nullptr; child = child->NextSibling)
    if (!child->IsElement()) text += Utf8ToUtf16(child->Text);
  return text;
}

int32_t Digits(const TXmlNode* ANode, std::string_view AName, int32_t ADefault) {
  return std::clamp(XmlAttrInt(ANode, AName, ADefault), 0, kMaxDigits);
}

bool IsTrue(const TXmlNode* ANode, std::string_view AName) { return XmlAttr(ANode, AName) == "true"; }

bool IsLong(const TXmlNode* ANode) { return XmlAttr(ANode, "style") == "long"; }

void AppendUnits(std::u16string& AOut, char16_t AUnit, int32_t ACount) {
  AOut.append(static_cast<size_t>(std::max(ACount, 0)), AUnit);
}

/// A text that means itself in a code.
void AppendLiteral(std::u16string_view AText, bool AIsPercentage, std::u16string& AOut) {
  constexpr std::u16string_view kPlain = u" -+()/:$,.\u20AC\u00A3\u00A5";
  const auto isPlain = [&](char16_t AUnit) {
    return kPlain.find(AUnit) != kPlain.npos || (AIsPercentage && AUnit == u'%');
  };
  bool inQuotes = false;
  const auto quote = [&](bool AInQuotes) {
    if (inQuotes != AInQuotes) AOut += u'"';
    inQuotes = AInQuotes;
  };
  for (const char16_t unit : AText) {
    if (unit == u'"') {
      quote(false);
      AOut += u"\\\"";
    } else {
      // A point or comma would count as one of the number.
      quote(!isPlain(unit) || unit == u',' || unit == u'.');
      AOut += unit;
    }
  }
  quote(false);
}

/// In dates points and commas mean themselves.
void AppendDateLiteral(std::u16string_view AText, std::u16string& AOut) {
  constexpr std::u16string_view kPlain = u" -/:.,";
  const bool isPlain =
      std::all_of(AText.begin(), AText.end(), [&](char16_t AUnit) { return kPlain.find(AUnit) != kPlain.npos; });
  if (isPlain) {
    AOut += AText;
  } else {
    AppendLiteral(AText, false, AOut);
  }
}

/// "000", "#,##0", with a decimal part where the element states one.
void AppendNumberCode(const TXmlNode* ANode, std::u16string& AOut) {
  const int32_t integers = Digits(ANode, "min-integer-digits", 1);
  const bool hasPlaces = XmlHasAttr(ANode, "decimal-places");
  const bool isGrouped = IsTrue(ANode, "grouping");
  if (!hasPlaces && !isGrouped && integers <= 1 && !XmlHasAttr(ANode, "display-factor")) {
    AOut += u"General";
    return;
  }
  if (isGrouped) {
    // Groups of three; what is asked for stands as zeros on the right.
    const int32_t width = std::max(integers, 4);
    for (int32_t place = width; place > 0; --place) {
      AOut += place <= integers ? u'0' : u'#';
      if (place % 3 == 1 && place > 1) AOut += u',';
    }
  } else {
    AppendUnits(AOut, u'#', integers == 0 ? 1 : 0);
    AppendUnits(AOut, u'0', integers);
  }
  const int32_t places = Digits(ANode, "decimal-places", 0);
  const int32_t least = std::min(places, Digits(ANode, "min-decimal-places", places));
  if (places > 0) AOut += u'.';
  AppendUnits(AOut, u'0', least);
  AppendUnits(AOut, u'#', places - least);
  double factor = 1;
  if (TryParseFileNumber(XmlAttr(ANode, "display-factor"), factor))
    for (int step = 0; step < 5 && factor >= 1000; ++step, factor /= 1000) AOut += u',';
}

void AppendScientific(const TXmlNode* ANode, std::u16string& AOut) {
  AppendUnits(AOut, u'0', std::max(Digits(ANode, "min-integer-digits", 1), 1));
  const int32_t places = Digits(ANode, "decimal-places", 0);
  if (places > 0) AOut += u'.';
  AppendUnits(AOut, u'0', places);
  AOut += u"E+";
  AppendUnits(AOut, u'0', std::max(Digits(ANode, "min-exponent-digits", 2), 1));
}

void AppendFraction(const TXmlNode* ANode, std::u16string& AOut) {
  if (XmlHasAttr(ANode, "min-integer-digits")) AOut += u"# ";
  AppendUnits(AOut, u'?', std::max(Digits(ANode, "min-numerator-digits", 1), 1));
  AOut += u'/';
  if (const int32_t denominator = XmlAttrInt(ANode, "denominator-value", 0); denominator > 0) {
    AOut += GeneralNumberText(denominator);
  } else {
    AppendUnits(AOut, u'?', std::max(Digits(ANode, "min-denominator-digits", 1), 1));
  }
}

void AppendMonth(const TXmlNode* ANode, std::u16string& AOut) {
  const bool isTextual = IsTrue(ANode, "textual");
  AppendUnits(AOut, u'm', (isTextual ? 3 : 1) + (IsLong(ANode) ? 1 : 0));
}

/// Hours, minutes or seconds; the first unit of a duration counts on beyond its limit.
void AppendTimeUnit(const TXmlNode* ANode, char16_t AUnit, bool AIsDuration, std::u16string& AOut) {
  if (AIsDuration) AOut += u'[';
  AppendUnits(AOut, AUnit, IsLong(ANode) ? 2 : 1);
  if (AIsDuration) AOut += u']';
  const int32_t places = AUnit == u's' ? std::min(Digits(ANode, "decimal-places", 0), 3) : 0;
  if (places > 0) AOut += u'.';
  AppendUnits(AOut, u'0', places);
}

struct TNamedColor {
  std::string_view Value;
  std::u16string_view Code;
};
constexpr TNamedColor kNamedColors[] = {
    {"#ff0000", u"[Red]"},  {"#0000ff", u"[Blue]"},  {"#00ff00", u"[Green]"},   {"#ffff00", u"[Yellow]"},
    {"#00ffff", u"[Cyan]"}, {"#ffffff", u"[White]"}, {"#ff00ff", u"[Magenta]"},
};

void AppendColorMark(std::string_view AColor, std::u16string& AOut) {
  for (const TNamedColor& color : kNamedColors)
    if (EqualXmlNames(color.Value, AColor)) AOut += color.Code;
}

/// The digits of a condition's operand; a condition that cannot be read is none.
struct TCodeCondition {
  std::u16string_view Operator;
  double Operand = 0;
};

TCodeCondition ReadCodeCondition(std::string_view AText) {
  struct TOperator {
    std::string_view Text;
    std::u16string_view Code;
  };
  static constexpr TOperator kOperators[] = {{">=", u">="}, {"<=", u"<="}, {"!=", u"<>"}, {"<>", u"<>"},
                                             {">", u">"},   {"<", u"<"},   {"=", u"="}};
  const size_t at = AText.find_first_of("<>=!");
  if (at == AText.npos) return {};
  const std::string_view rest = AText.substr(at);
  for (const TOperator& candidate : kOperators) {
    if (!rest.starts_with(candidate.Text)) continue;
    TCodeCondition condition{candidate.Code, 0};
    if (!TryParseFileNumber(rest.substr(candidate.Text.size()), condition.Operand)) return {};
    return condition;
  }
  return {};
}

}  // namespace

bool OdsIsNumberStyle(std::string_view ALocalName) {
  static constexpr std::string_view kNames[] = {"number-style", "percentage-style", "currency-style", "date-style",
                                                "time-style",   "text-style",       "boolean-style"};
  return std::find(std::begin(kNames), std::end(kNames), ALocalName) != std::end(kNames);
}

std::u16string OdsNumberFormatCode(const TXmlNode* ANode) {
  const std::string_view kind = XmlLocalName(ANode);
  const bool isDate = kind == "date-style" || kind == "time-style";
  const bool isPercentage = kind == "percentage-style";
  bool isDuration = isDate && XmlAttr(ANode, "truncate-on-overflow") == "false";
  std::u16string code;
  for (const TXmlNode* child : TXmlElements(ANode)) {
    const std::string_view name = XmlLocalName(child);
    const auto time = [&](char16_t AUnit) { AppendTimeUnit(child, AUnit, std::exchange(isDuration, false), code); };
    if (name == "number") AppendNumberCode(child, code);
    if (name == "scientific-number") AppendScientific(child, code);
    if (name == "fraction") AppendFraction(child, code);
    if (name == "text" && isDate) AppendDateLiteral(ElementText(child), code);
    if (name == "text" && !isDate) AppendLiteral(ElementText(child), isPercentage, code);
    if (name == "currency-symbol") AppendLiteral(ElementText(child), false, code);
    if (name == "text-content") code += u'@';
    if (name == "fill-character") (code += u'*') += ElementText(child).substr(0, 1);
    if (name == "day") AppendUnits(code, u'd', IsLong(child) ? 2 : 1);
    if (name == "day-of-week") AppendUnits(code, u'd', IsLong(child) ? 4 : 3);
    if (name == "month") AppendMonth(child, code);
    if (name == "year") AppendUnits(code, u'y', IsLong(child) ? 4 : 2);
    if (name == "hours") time(u'h');
    if (name == "minutes") time(u'm');
    if (name == "seconds") time(u's');
    if (name == "am-pm") code += u"AM/PM";
    if (name == "text-properties") AppendColorMark(XmlAttr(child, "color"), code);
  }
  if (code.ends_with(u'*')) code.pop_back();
  const bool showsNothing = XmlFindChild(ANode, "text") != nullptr;
  return code.empty() && !showsNothing ? u"General" : code;
}

std::u16string OdsJoinConditionalCodes(const std::u16string& ACode, bool AIsText,
                                       const std::vector<TOdsConditionalCode>& ASections) {
  const std::u16string* positive = nullptr;
  const std::u16string* negative = nullptr;
  const std::u16string* zero = nullptr;
  std::u16string others;
  for (const TOdsConditionalCode& section : ASections) {
    const TCodeCondition condition = ReadCodeCondition(section.Condition);
    if (condition.Operator.empty()) continue;
    if (condition.Operand != 0 || condition.Operator == u"<>") {
      ((((others += u'[') += condition.Operator) += GeneralNumberText(condition.Operand)) += u']') += section.Code;
      others += u';';
    } else if (condition.Operator.front() == u'>') {
      positive = &section.Code;
    } else if (condition.Operator.front() == u'<') {
      negative = &section.Code;
    } else {
      zero = &section.Code;
    }
  }
  if (!others.empty()) return others + ACode;
  if (!positive && !negative) return ACode;
  if (!positive) return ACode + u";" + *negative;
  if (!negative) return *positive + u";" + ACode;
  std::u16string code = *positive + u";" + *negative;
  if (zero) (code += u';') += *zero;
  if (!zero || AIsText) (code += zero || !AIsText ? u";" : u";General;") += ACode;
  return code;
}

}  // namespace tessarine::detail
