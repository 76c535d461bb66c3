#include <tessarine/formula/FormulaDialect.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>

#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr std::u16string_view kWrappedCalls[] = {
    u"SPARKLINE(",  u"QUERY(",      u"GOOGLEFINANCE(", u"IMPORTXML(",
    u"IMPORTHTML(", u"IMPORTDATA(", u"IMPORTFEED(",    u"IMPORTRANGE(",
};

/// Offset behind the parenthesis of the placeholder call, npos without one.
size_t FindDummyArguments(std::u16string_view AFormula) {
  const std::u16string lower = ToAsciiLower(AFormula);
  for (const std::u16string_view name : {u"__xludf.dummyfunction(", u"_xludf.dummyfunction("}) {
    const size_t at = lower.find(name);
    if (at != lower.npos) return at + name.size();
  }
  return std::u16string_view::npos;
}

/// The content of the string literal that begins at AAt, doubled quotes undone; nothing when it has no end.
std::optional<std::u16string> ReadStringLiteral(std::u16string_view AText, size_t AAt) {
  std::u16string content;
  for (size_t at = AAt + 1; at < AText.size(); ++at) {
    if (AText[at] == u'"') {
      if (at + 1 >= AText.size() || AText[at + 1] != u'"') return content;
      ++at;
    }
    content += AText[at];
  }
  return std::nullopt;
}

std::optional<std::u16string> TryUnwrap(std::u16string_view AFormula) {
  std::u16string_view formula = TrimSpaces(AFormula);
  if (formula.starts_with(u'=')) formula.remove_prefix(1);
  size_t at = FindDummyArguments(formula);
  if (at == formula.npos) return std::nullopt;
  while (at < formula.size() && formula[at] <= u' ') ++at;
  if (at >= formula.size() || formula[at] != u'"') return std::nullopt;
  const std::optional<std::u16string> content = ReadStringLiteral(formula, at);
  if (!content) return std::nullopt;
  const std::u16string_view unwrapped = TrimSpaces(*content);
  const bool isKnown = std::any_of(std::begin(kWrappedCalls), std::end(kWrappedCalls), [&](std::u16string_view ACall) {
    return EqualAsciiNoCase(unwrapped.substr(0, ACall.size()), ACall);
  });
  return isKnown ? std::optional(u"=" + std::u16string(unwrapped)) : std::nullopt;
}

}  // namespace

std::u16string UnwrapXlUdfDummyFunction(std::u16string_view AFormula) {
  return TryUnwrap(AFormula).value_or(std::u16string(AFormula));
}

std::u16string OdsSeparatorsToExcel(std::u16string_view AFormula) {
  std::u16string result(AFormula);
  bool inString = false;
  size_t depth = 0;
  for (char16_t& unit : result) {
    // A doubled quote closes the text and opens it again at once.
    if (unit == u'"') inString = !inString;
    if (inString) continue;
    if (unit == u'{') ++depth;
    if (unit == u'}' && depth > 0) --depth;
    if (unit == u';' && depth == 0) unit = u',';
  }
  return result;
}

}  // namespace tessarine
