#include <tessarine/formula/FunctionTable.h>

#include <algorithm>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/ArrayBodies.h>
#include <tessarine/formula/library/detail/JoinedText.h>
#include <tessarine/platform/Regex.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using namespace detail;

// Each body answers with the first error among its arguments.

/// What AMatch makes of the text and the pattern, the first two arguments.
template <class F>
TCellValue WithTextAndPattern(TFormulaArgs AArgs, F&& AMatch) {
  const TCellValue error = FirstError(AArgs);
  if (error.IsError()) return error;
  std::u16string textBuffer;
  std::u16string patternBuffer;
  const std::u16string_view text = ArgTextView(AArgs[0], textBuffer);
  return AMatch(text, ArgTextView(AArgs[1], patternBuffer));
}

TCellValue CallRegexExtract(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  return WithTextAndPattern(AArgs, [](std::u16string_view AText, std::u16string_view APattern) {
    const TRegexMatch match = FindRegex(APattern, AText);
    if (match.Outcome == roFailed) return ValueError();
    if (match.Outcome == roNoMatch) return NotAvailable();
    return TextOf(match.HasGroups ? match.FirstGroup : match.Whole);
  });
}

TCellValue CallRegexMatch(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  return WithTextAndPattern(AArgs, [](std::u16string_view AText, std::u16string_view APattern) {
    const TRegexOutcome outcome = FindRegex(APattern, AText).Outcome;
    return outcome == roFailed ? ValueError() : BooleanOf(outcome == roMatched);
  });
}

TCellValue CallRegexReplace(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 3) return ValueError();
  return WithTextAndPattern(AArgs, [AArgs](std::u16string_view AText, std::u16string_view APattern) {
    std::u16string buffer;
    std::u16string result;
    const std::u16string_view replacement = ArgTextView(AArgs[2], buffer);
    const TRegexOutcome outcome = ReplaceRegex(APattern, AText, replacement, kMaxGeneratedText, result);
    if (outcome == roFailed) return ValueError();
    return TextOf(outcome == roMatched ? TText(result) : TText(AText));
  });
}

// Tests of texts -----------------------------------------------------------------------------------------------------

bool IsEmail(std::u16string_view AText) {
  const size_t at = AText.find(u'@');
  if (at == AText.npos || at == 0 || AText.find(u' ') != AText.npos) return false;
  const std::u16string_view domain = AText.substr(at + 1);
  return domain.find(u'@') == domain.npos && domain.find(u'.') != domain.npos;
}

bool StartsWithNoCase(std::u16string_view AText, std::u16string_view AStart) {
  return EqualAsciiNoCase(AText.substr(0, AStart.size()), AStart);
}

bool IsUrl(std::u16string_view AText) {
  const std::u16string_view text = TrimSpaces(AText);
  if (text.empty() || text.find(u' ') != text.npos) return false;
  return StartsWithNoCase(text, u"http://") || StartsWithNoCase(text, u"https://") || text.find(u'.') != text.npos;
}

template <bool (*Test)(std::u16string_view)>
TCellValue CallTextTest(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TCellValue error = FirstError(AArgs);
  std::u16string buffer;
  return error.IsError() ? error : BooleanOf(Test(ArgTextView(AArgs[0], buffer)));
}

// Joining and cutting ------------------------------------------------------------------------------------------------

TCellValue CallJoin(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TCellValue error = FirstError(AArgs);
  if (error.IsError()) return error;
  std::u16string buffer;
  const std::u16string_view delimiter = ArgTextView(AArgs[0], buffer);
  TGrowingText text;
  if (AArgs.size() == 1) text.Add(delimiter);
  bool isFirst = true;
  const auto add = [&](const TValueView& AValue) {
    return (std::exchange(isFirst, false) || text.Add(delimiter)) && text.Add(AValue);
  };
  // Without a delimiter blanks leave no trace, and there may be more of them than could be gone through.
  for (const TFormulaArg& arg : AArgs.subspan(1)) {
    if (!delimiter.empty()) {
      ForEachValue(arg, add);
    } else {
      ForEachNonBlank(arg, [&](int64_t, const TValueView& AValue) { return add(AValue); });
    }
  }
  return text.Value();
}

/// An error inside a rectangle is a cell like any other.
TFormulaArg CallArrayConstrain(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 3) return ErrorArg(ceValue);
  const TCellValue error = FirstError(AArgs.subspan(AArgs[0].IsRange ? 1 : 0));
  if (error.IsError()) return ErrorArg(error.ErrorCode);
  int64_t rows = 0;
  int64_t cols = 0;
  if (!ArgAsInt64(AArgs[1], rows) || !ArgAsInt64(AArgs[2], cols) || rows < 1 || cols < 1) return ErrorArg(ceValue);
  return CallTake(AArgs.first(3), AContext);
}

// clang-format off
constexpr TFunctionDef kRegexFunctions[] = {
    {.Name = u"ARRAY_CONSTRAIN", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallArrayConstrain,
     .ArrayMinArgs = 3, .Arguments = u"array, rows, columns",
     .Description = u"The top left part of a rectangle, at most so many rows and columns of it."},
    {.Name = u"ISEMAIL", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallTextTest<IsEmail>,
     .Arguments = u"text", .Description = u"Whether a text looks like an address for mail."},
    {.Name = u"ISURL", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallTextTest<IsUrl>,
     .Arguments = u"text", .Description = u"Whether a text looks like an address of the web."},
    {.Name = u"JOIN", .MinArgs = 2, .Tier = ftrExtra, .Body = CallJoin,
     .Arguments = u"delimiter, value1, [value2], ...",
     .Description = u"Joins the texts of values and ranges, empty ones included, with a delimiter between them."},
    {.Name = u"REGEXEXTRACT", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallRegexExtract,
     .Arguments = u"text, pattern",
     .Description = u"The part of a text that matches a regular expression, or that its first group matches."},
    {.Name = u"REGEXMATCH", .Spellings = u"REGEXTEST", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrExtra,
     .Body = CallRegexMatch, .Arguments = u"text, pattern",
     .Description = u"Whether a regular expression matches anywhere in a text."},
    {.Name = u"REGEXREPLACE", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallRegexReplace,
     .Arguments = u"text, pattern, replacement",
     .Description = u"A text with all matches of a regular expression replaced; $1 stands for the first group."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> RegexFunctions() { return kRegexFunctions; }

}  // namespace tessarine
