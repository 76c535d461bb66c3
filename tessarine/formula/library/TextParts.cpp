#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/JoinedText.h>
#include <tessarine/formula/library/detail/LongTexts.h>
#include <tessarine/formula/library/detail/TextSearch.h>
#include <tessarine/platform/FloatPattern.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using namespace detail;

// Delimiters ---------------------------------------------------------------------------------------------------------

/// Units of text times delimiters that one call may search.
constexpr size_t kMostDelimiterWork = size_t{1} << 28;

/// The different display texts of some arguments.
std::vector<std::u16string> DelimitersOf(TFormulaArgs AArgs) {
  std::vector<std::u16string> delimiters;
  std::u16string buffer;
  TLongTextMemo<bool> longTexts;
  const auto add = [&](const TValueView& AValue) {
    const std::u16string_view text = DisplayView(AValue, buffer);
    if (delimiters.empty() || delimiters.back() != text) delimiters.emplace_back(text);
    return true;
  };
  int64_t others = 0;
  for (const TFormulaArg& arg : AArgs) {
    ForEachNonBlank(arg, [&](int64_t, const TValueView& AValue) {
      ++others;
      return IsLongText(AValue) ? longTexts.Of(AValue, [&] { return add(AValue); }) : add(AValue);
    });
  }
  if (others < CountValues(AArgs)) add({});  // one blank stands for all
  std::sort(delimiters.begin(), delimiters.end());
  delimiters.erase(std::unique(delimiters.begin(), delimiters.end()), delimiters.end());
  return delimiters;
}

struct TFoundDelimiter {
  size_t Place = std::u16string_view::npos;
  size_t Length = 0;

  bool IsFound() const { return Place != std::u16string_view::npos; }
  size_t End() const { return Place + Length; }
};

/// Looks for any of some delimiters in a text, from left to right; of several at one place the longest counts.
class TDelimiterSearch {
 public:
  /// The delimiters are not empty texts; they and the text outlive the search.
  TDelimiterSearch(std::u16string_view AText, const std::vector<std::u16string>& ADelimiters, TTextCase ACase)
      : FText(AText) {
    for (const std::u16string& delimiter : ADelimiters) {
      FCandidates.push_back({TTextSearch(delimiter, ACase), {0, delimiter.size()}, false});
    }
  }

  /// The first occurrence that begins at AFrom or behind. AFrom never falls from call to call.
  TFoundDelimiter Next(size_t AFrom) {
    TFoundDelimiter first;
    for (TCandidate& candidate : FCandidates) {
      TFoundDelimiter& found = candidate.Found;
      if (!candidate.IsSearched || (found.IsFound() && found.Place < AFrom)) {
        found.Place = candidate.Search.Find(FText, AFrom);
        candidate.IsSearched = true;
      }
      if (found.Place < first.Place || (found.IsFound() && found.Place == first.Place && found.Length > first.Length)) {
        first = found;
      }
    }
    return first;
  }

 private:
  struct TCandidate {
    TTextSearch Search;
    TFoundDelimiter Found;
    bool IsSearched;
  };

  std::u16string_view FText;
  std::vector<TCandidate> FCandidates;
};

// TEXTBEFORE and TEXTAFTER -------------------------------------------------------------------------------------------

/// How the two are called.
struct TCutCall {
  std::u16string Text;
  std::vector<std::u16string> Delimiters;
  int64_t Instance = 1;
  TTextCase Case = tcsExact;
  bool EndCounts = false;  // the end of the text is a delimiter too
};

/// An optional argument that must be the number 0 or 1.
bool ReadSwitch(TFormulaArgs AArgs, size_t AIndex, bool& ASwitch) {
  int64_t number = 0;
  if (AIndex < AArgs.size() && (!ArgAsInt64(AArgs[AIndex], number) || (number != 0 && number != 1))) return false;
  ASwitch = number == 1;
  return true;
}

/// Reads the arguments; false when they are too few or cannot be used.
bool ReadCutCall(TFormulaArgs AArgs, TCutCall& ACall) {
  if (AArgs.size() < 2) return false;
  bool ignoresCase = false;
  if (AArgs.size() > 2 && !ArgAsInt64(AArgs[2], ACall.Instance)) return false;
  if (!ReadSwitch(AArgs, 3, ignoresCase) || !ReadSwitch(AArgs, 4, ACall.EndCounts)) return false;
  ACall.Case = ignoresCase ? tcsIgnoreAscii : tcsExact;
  ACall.Text = ArgText(AArgs[0]).ToString();
  ACall.Delimiters = DelimitersOf(AArgs.subspan(1, 1));
  if (ACall.Instance == 0 || ACall.Delimiters.empty()) return false;
  const auto length = static_cast<int64_t>(ACall.Text.size());
  if (length > 0 && (ACall.Instance > length || ACall.Instance < -length)) return false;
  return ACall.Delimiters.size() <= kMostDelimiterWork / (ACall.Text.size() + 1);
}

/// The AOrdinal-th delimiter, counted from 1. An empty delimiter is found at once, before the first unit.
TFoundDelimiter FindOrdinal(const TCutCall& ACall, int64_t AOrdinal) {
  if (ACall.Delimiters.front().empty()) return {0, 0};
  TDelimiterSearch search(ACall.Text, ACall.Delimiters, ACall.Case);
  TFoundDelimiter found = search.Next(0);
  for (; found.IsFound() && AOrdinal > 1; --AOrdinal) found = search.Next(found.End());
  if (!found.IsFound() && ACall.EndCounts && AOrdinal == 1) return {ACall.Text.size(), 0};
  return found;
}

/// A negative instance counts from the end: the same search in the mirrored texts.
TFoundDelimiter FindCut(TCutCall ACall) {
  if (ACall.Instance > 0) return FindOrdinal(ACall, ACall.Instance);
  std::reverse(ACall.Text.begin(), ACall.Text.end());
  for (std::u16string& delimiter : ACall.Delimiters) std::reverse(delimiter.begin(), delimiter.end());
  // In an empty text an instance of any size is asked for.
  TFoundDelimiter found = FindOrdinal(ACall, -std::max(ACall.Instance, -std::numeric_limits<int64_t>::max()));
  if (found.IsFound()) found.Place = ACall.Text.size() - found.End();
  return found;
}

template <bool After>
TCellValue CallTextCut(TFormulaArgs AArgs, const TFormulaContext&) {
  TCutCall call;
  if (!ReadCutCall(AArgs, call)) return ValueError();
  const TFoundDelimiter found = FindCut(call);
  if (!found.IsFound()) return AArgs.size() > 5 ? AArgs[5].First() : NotAvailable();
  const std::u16string_view text = call.Text;
  return TextOf(After ? text.substr(found.End()) : text.substr(0, found.Place));
}

/// The first of the parts: what stands before the first delimiter of either kind, empty parts left out if so asked.
TCellValue CallTextSplit(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  bool ignoresEmpty = false;
  bool ignoresCase = false;
  if (!ReadSwitch(AArgs, 3, ignoresEmpty) || !ReadSwitch(AArgs, 4, ignoresCase)) return ValueError();
  const TText text = ArgText(AArgs[0]);
  const std::vector<std::u16string> delimiters = DelimitersOf(AArgs.subspan(1, std::min<size_t>(AArgs.size() - 1, 2)));
  if (delimiters.empty() || delimiters.front().empty()) return ValueError();
  if (delimiters.size() > kMostDelimiterWork / (text.Length() + 1)) return ValueError();
  TDelimiterSearch search(text, delimiters, ignoresCase ? tcsIgnoreAscii : tcsExact);
  size_t start = 0;
  TFoundDelimiter found = search.Next(0);
  while (ignoresEmpty && found.IsFound() && found.Place == start) {
    start = found.End();
    found = search.Next(start);
  }
  const std::u16string_view part = text.View().substr(start, found.IsFound() ? found.Place - start : text.View().npos);
  return part.empty() && ignoresEmpty ? ValueError() : TextOf(part);
}

// Numbers as texts ---------------------------------------------------------------------------------------------------

constexpr int64_t kMostDecimals = 127;
constexpr int64_t kLeastDecimals = -309;  // no number has more digits before its point

/// ANumber with a fixed count of decimals; a negative one rounds before the point.
std::u16string FixedText(double ANumber, int64_t ADecimals) {
  if (ADecimals >= 0) {
    std::u16string pattern = u"0";
    if (ADecimals > 0) (pattern += u'.').append(static_cast<size_t>(ADecimals), u'0');
    return FormatFloat(pattern, ANumber, CurrentFormatSettings());
  }
  const double unit = std::pow(10.0, static_cast<double>(-ADecimals));
  const double rounded = std::isfinite(unit) ? std::round(ANumber / unit) * unit : 0.0;
  return FormatFloat(u"0", rounded == 0 ? 0.0 : rounded, CurrentFormatSettings());
}

/// FIXED and DOLLAR: two decimals unless told otherwise.
TCellValue CallFixedText(TFormulaArgs AArgs, std::u16string_view APrefix) {
  double number = 0;
  int64_t decimals = 2;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], number)) return ValueError();
  if (AArgs.size() > 1 && !ArgAsInt64(AArgs[1], decimals)) return ValueError();
  if (decimals > kMostDecimals) return ValueError();
  if (!std::isfinite(number)) return NumError();
  return TextOf(std::u16string(APrefix) + FixedText(number, std::max(decimals, kLeastDecimals)));
}

TCellValue CallDollarText(TFormulaArgs AArgs, const TFormulaContext&) { return CallFixedText(AArgs, u"$"); }
TCellValue CallFixed(TFormulaArgs AArgs, const TFormulaContext&) { return CallFixedText(AArgs, {}); }

/// The first unit of an optional argument; 0 for an empty text.
char16_t SeparatorOf(TFormulaArgs AArgs, size_t AIndex, char16_t ADefault) {
  if (AIndex >= AArgs.size()) return ADefault;
  std::u16string buffer;
  const std::u16string_view text = ArgTextView(AArgs[AIndex], buffer);
  return text.empty() ? u'\0' : text.front();
}

/// The text as a file writes numbers: without blanks and groups, the decimal separator a point. False when a separator
/// stands where none may.
bool PlainNumberText(std::u16string_view AText, char16_t ADecimal, char16_t AGroup, std::u16string& APlain) {
  bool isWhole = true;
  for (const char16_t unit : AText) {
    if (unit <= u' ') continue;
    if (unit == ADecimal) {
      if (!std::exchange(isWhole, false)) return false;
      APlain += u'.';
    } else if (unit == AGroup) {
      if (!isWhole) return false;
    } else if (unit == u'.') {
      return false;
    } else {
      APlain += unit;
    }
  }
  return true;
}

/// Blanks count nowhere, each percent sign at the end divides by 100, and a text of nothing is 0.
TCellValue CallNumberValue(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const char16_t decimal = SeparatorOf(AArgs, 1, u'.');
  const char16_t group = SeparatorOf(AArgs, 2, u',');
  std::u16string buffer;
  std::u16string plain;
  if (decimal == 0 || group == 0) return ValueError();
  if (!PlainNumberText(ArgTextView(AArgs[0], buffer), decimal, group, plain)) return ValueError();
  if (plain.empty()) return TCellValue::FromNumber(0);
  const size_t percents = plain.size() - (plain.find_last_not_of(u'%') + 1);
  plain.resize(plain.size() - percents);
  double number = 0;
  if (!TryParseFileNumber(std::u16string_view(plain), number)) return ValueError();
  return NumberOrError(percents > 0 ? number / std::pow(100.0, static_cast<double>(percents)) : number);
}

// Characters and values ----------------------------------------------------------------------------------------------

TCellValue CallUnichar(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t code = 0;
  if (AArgs.empty() || !ArgAsInt64(AArgs[0], code) || code < 1 || code > 0x10FFFF) return ValueError();
  if (code >= 0xD800 && code <= 0xDFFF) return NotAvailable();
  const auto point = static_cast<uint32_t>(code);
  if (point < 0x10000) {
    const auto unit = static_cast<char16_t>(point);
    return TextOf(std::u16string_view(&unit, 1));
  }
  const char16_t pair[] = {static_cast<char16_t>(0xD7C0 + (point >> 10)),
                           static_cast<char16_t>(0xDC00 + (point & 0x3FF))};
  return TextOf(std::u16string_view(pair, 2));
}

TCellValue CallUnicode(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  std::u16string buffer;
  const std::u16string_view text = ArgTextView(AArgs[0], buffer);
  if (text.empty()) return ValueError();
  const uint32_t first = text[0];
  if ((first & 0xF800) != 0xD800) return TCellValue::FromNumber(first);
  if (first >= 0xDC00 || text.size() < 2 || (text[1] & 0xFC00) != 0xDC00) return ValueError();
  return TCellValue::FromNumber(((first - 0xD7C0) << 10) + (text[1] & 0x3FFu));
}

TCellValue CallT(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TCellValue value = AArgs[0].First();
  return value.Kind == cvkText || value.IsError() ? value : TextOf({});
}

/// Adds a value as it shows, or as it would be written in a formula.
bool AddWritten(const TValueView& AValue, bool AStrict, TGrowingText& AText) {
  if (!AStrict || AValue.Kind != cvkText) return AText.Add(AValue);
  AText.Add(u"\"");
  std::u16string_view rest = AValue.Text();
  for (size_t quote = rest.find(u'"'); quote != rest.npos; quote = rest.find(u'"')) {
    if (!AText.Add(rest.substr(0, quote + 1)) || !AText.Add(u"\"")) return false;
    rest.remove_prefix(quote + 1);
  }
  return AText.Add(rest) && AText.Add(u"\"");
}

TCellValue CallValueToText(TFormulaArgs AArgs, const TFormulaContext&) {
  bool isStrict = false;
  if (AArgs.empty() || !ReadSwitch(AArgs, 1, isStrict)) return ValueError();
  TGrowingText text;
  AddWritten(AArgs[0].FirstView(), isStrict, text);
  return text.Value();
}

TCellValue CallArrayToText(TFormulaArgs AArgs, const TFormulaContext&) {
  bool isStrict = false;
  if (AArgs.empty() || !ReadSwitch(AArgs, 1, isStrict)) return ValueError();
  TGrowingText text;
  const int64_t columns = AArgs[0].IsRange ? AArgs[0].ColCount : 1;
  int64_t index = 0;
  if (isStrict) text.Add(u"{");
  ForEachValue(AArgs[0], [&](const TValueView& AValue) {
    const std::u16string_view separator = !isStrict ? u", " : index % columns == 0 ? u";" : u",";
    return (index++ == 0 || text.Add(separator)) && AddWritten(AValue, isStrict, text);
  });
  if (isStrict) text.Add(u"}");
  return text.Value();
}

// clang-format off
constexpr TFunctionDef kTextPartFunctions[] = {
    {.Name = u"ARRAYTOTEXT", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallArrayToText,
     .Arguments = u"array, [format]",
     .Description = u"All values of a rectangle as one text; with format 1 as a formula would write them."},
    {.Name = u"DOLLAR", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallDollarText,
     .Arguments = u"number, [decimals]", .Description = u"A number as text with a dollar sign and fixed decimals."},
    {.Name = u"FIXED", .MinArgs = 1, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallFixed, .InCompletion = true,
     .Arguments = u"number, [decimals], [no_groups]",
     .Description = u"A number as text with fixed decimals, never with group separators."},
    {.Name = u"NUMBERVALUE", .MinArgs = 1, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallNumberValue,
     .Arguments = u"text, [decimal_separator], [group_separator]",
     .Description = u"The number that a text with given separators reads as."},
    {.Name = u"T", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallT, .InCompletion = true,
     .Arguments = u"value", .Description = u"A text as it is, and an empty text for anything else."},
    {.Name = u"TEXTAFTER", .MinArgs = 2, .MaxArgs = 6, .Tier = ftrExtra, .Body = CallTextCut<true>,
     .Arguments = u"text, delimiter, [instance], [match_mode], [match_end], [if_not_found]",
     .Description = u"What follows a delimiter; a negative instance counts from the end."},
    {.Name = u"TEXTBEFORE", .MinArgs = 2, .MaxArgs = 6, .Tier = ftrExtra, .Body = CallTextCut<false>,
     .Arguments = u"text, delimiter, [instance], [match_mode], [match_end], [if_not_found]",
     .Description = u"What stands before a delimiter; a negative instance counts from the end."},
    {.Name = u"TEXTSPLIT", .MinArgs = 2, .MaxArgs = 6, .Tier = ftrExtra, .Body = CallTextSplit,
     .Arguments = u"text, column_delimiter, [row_delimiter], [ignore_empty], [match_mode], [pad]",
     .Description = u"The first part of a text that delimiters divide."},
    {.Name = u"UNICHAR", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallUnichar,
     .Arguments = u"code", .Description = u"The character of a Unicode number."},
    {.Name = u"UNICODE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallUnicode,
     .Arguments = u"text", .Description = u"The Unicode number of the first character of a text."},
    {.Name = u"VALUETOTEXT", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallValueToText,
     .Arguments = u"value, [format]", .Description = u"A value as text; with format 1 as a formula would write it."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> TextPartFunctions() { return kTextPartFunctions; }

}  // namespace tessarine
