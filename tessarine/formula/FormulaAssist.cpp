#include <tessarine/formula/FormulaAssist.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr uint32_t kRefColors[TFormulaAssist::kRefColorCount] = {0xFF0070C0, 0xFFC00000, 0xFF00B050,
                                                                 0xFF7030A0, 0xFFED7D31, 0xFF00B0F0};

constexpr std::u16string_view kOfferedFunctions[] = {
    u"ABS",        u"ACOS",        u"ADDRESS",     u"AND",       u"ASIN",         u"ATAN",       u"ATAN2",
    u"AVERAGE",    u"AVERAGEIF",   u"AVERAGEIFS",  u"BYCOL",     u"BYROW",        u"CEILING",    u"CHAR",
    u"CHOOSE",     u"CHOOSECOLS",  u"CHOOSEROWS",  u"CLEAN",     u"CODE",         u"COLUMN",     u"COLUMNS",
    u"CONCAT",     u"CONCATENATE", u"COS",         u"COUNT",     u"COUNTA",       u"COUNTBLANK", u"COUNTIF",
    u"COUNTIFS",   u"CUBEVALUE",   u"CUBEMEMBER",  u"DATE",      u"DATEDIF",      u"DAY",        u"DROP",
    u"EOMONTH",    u"EVEN",        u"EXP",         u"EXPAND",    u"FACT",         u"FALSE",      u"FILTER",
    u"FIND",       u"FIXED",       u"FLOOR",       u"FV",        u"GETPIVOTDATA", u"GROUPBY",    u"HLOOKUP",
    u"HOUR",       u"HSTACK",      u"HYPERLINK",   u"IF",        u"IFERROR",      u"IFNA",       u"IFS",
    u"INDEX",      u"INDIRECT",    u"INT",         u"IRR",       u"ISBLANK",      u"ISERROR",    u"ISNA",
    u"ISNUMBER",   u"ISOMITTED",   u"ISTEXT",      u"LAMBDA",    u"LARGE",        u"LEFT",       u"LEN",
    u"LET",        u"LN",          u"LOG",         u"LOG10",     u"LOOKUP",       u"LOWER",      u"MATCH",
    u"MAX",        u"MEDIAN",      u"MID",         u"MIN",       u"MINUTE",       u"MOD",        u"MONTH",
    u"N",          u"NA",          u"NETWORKDAYS", u"NOT",       u"NOW",          u"NPER",       u"NPV",
    u"ODD",        u"OFFSET",      u"OR",          u"PI",        u"PIVOTBY",      u"PMT",        u"POWER",
    u"PRODUCT",    u"PV",          u"RAND",        u"RANDARRAY", u"RANDBETWEEN",  u"RANK",       u"RATE",
    u"REDUCE",     u"REPLACE",     u"REPT",        u"RIGHT",     u"ROUND",        u"ROUNDDOWN",  u"ROUNDUP",
    u"ROW",        u"ROWS",        u"SCAN",        u"SEARCH",    u"SECOND",       u"SEQUENCE",   u"SIGN",
    u"SIN",        u"SMALL",       u"SORT",        u"SORTBY",    u"SPARKLINE",    u"SQRT",       u"STDEV",
    u"SUBSTITUTE", u"SUM",         u"SUMIF",       u"SUMIFS",    u"SUMPRODUCT",   u"T",          u"TAKE",
    u"TAN",        u"TEXT",        u"TEXTJOIN",    u"TIME",      u"TOCOL",        u"TODAY",      u"TOROW",
    u"TRANSPOSE",  u"TRIM",        u"TRUE",        u"TRUNC",     u"TYPE",         u"UNIQUE",     u"UPPER",
    u"VALUE",      u"VAR",         u"VLOOKUP",     u"VSTACK",    u"WEEKDAY",      u"WORKDAY",    u"WRAPCOLS",
    u"WRAPROWS",   u"XLOOKUP",     u"XMATCH",      u"XOR",       u"YEAR",         u"YEARFRAC",
};
static_assert(std::size(kOfferedFunctions) == 160);

bool IsFormula(std::u16string_view AText) { return AText.starts_with(u'='); }

TFormulaColorKind ColorKindOf(TFormulaTokenKind AKind) {
  switch (AKind) {
    case ftNumber: return fckNumber;
    case ftString: return fckString;
    case ftBoolean: return fckBoolean;
    case ftError: return fckError;
    case ftFunction: return fckFunction;
    case ftOperator: return fckOperator;
    case ftCellRef:
    case ftRangeRef:
    case ftSheetRef:
    case ftTableRef: return fckRef;
    case ftLParen:
    case ftRParen:
    case ftComma:
    case ftColon: return fckPunct;
    case ftEnd:
    case ftLBrace:
    case ftRBrace:
    case ftSemicolon: break;
  }
  return fckDefault;
}

void AddSpan(int32_t AStart, int32_t AEnd, TFormulaColorKind AKind, int32_t ARefColorIndex,
             std::vector<TFormulaColorSpan>& ASpans) {
  if (AEnd > AStart) ASpans.push_back({AStart, AEnd - AStart, AKind, ARefColorIndex});
}

/// Position of the caret as an offset between ALeast and the end of the text.
size_t ClampCaret(int32_t ACaret, size_t ALeast, std::u16string_view AText) {
  const size_t caret = ACaret < 0 ? 0 : static_cast<size_t>(ACaret);
  return std::clamp(caret, ALeast, AText.size());
}

bool IsPrefixUnit(char16_t AUnit) {
  return AUnit == u'!' || AUnit == u'.' || AUnit == u'_' || IsAsciiDigit(AUnit) || IsAsciiLetter(AUnit);
}

bool BeginsWithPrefix(std::u16string_view AText, std::u16string_view AUpperPrefix) {
  return EqualAsciiNoCase(AText.substr(0, AUpperPrefix.size()), AUpperPrefix);
}

/// The token that the caret touches, the left one of two; the last token when it touches none. The list is not empty.
size_t TokenAtCaret(const std::vector<TFormulaToken>& ATokens, int32_t ACaret) {
  for (size_t i = 0; i < ATokens.size(); ++i) {
    const TFormulaToken& token = ATokens[i];
    if (token.StartIndex <= ACaret && ACaret <= token.StartIndex + token.Length) return i;
  }
  return ATokens.size() - 1;
}

int32_t NextArgument(const std::vector<TFormulaToken>& ATokens, size_t ACurrent, int32_t ACaret) {
  bool inCall = false;
  int64_t depth = 0;
  for (size_t i = 0; i < ATokens.size(); ++i) {
    const TFormulaToken& token = ATokens[i];
    inCall |= token.Kind == ftFunction;
    if (!inCall) continue;
    if (token.Kind == ftLParen) ++depth;
    if (token.Kind == ftComma && i > ACurrent && depth >= 1) return token.StartIndex + token.Length;
    if (token.Kind == ftRParen && --depth == 0 && i > ACurrent) return token.StartIndex;
  }
  for (size_t i = ACurrent + 1; i < ATokens.size(); ++i)
    if (ATokens[i].Kind == ftRParen) return ATokens[i].StartIndex;
  return ACaret;
}

int32_t PreviousArgument(const std::vector<TFormulaToken>& ATokens, size_t ACurrent, int32_t ACaret) {
  for (size_t i = ACurrent + 1; i-- > 0;) {
    const TFormulaToken& token = ATokens[i];
    if (token.Kind == ftComma && token.StartIndex < ACaret) return token.StartIndex + token.Length;
  }
  return ACaret;
}

}  // namespace

std::vector<TFormulaColorSpan> TFormulaAssist::ColorSpans(TTextArg AFormula) {
  const std::u16string_view text = AFormula;
  std::vector<TFormulaColorSpan> spans;
  if (!IsFormula(text)) return spans;
  int32_t at = 0;
  int32_t references = 0;
  for (const TFormulaToken& token : TokenizeFormula(text)) {
    AddSpan(at, token.StartIndex, fckDefault, -1, spans);
    at = token.StartIndex + token.Length;
    const TFormulaColorKind kind = ColorKindOf(token.Kind);
    AddSpan(token.StartIndex, at, kind, kind == fckRef ? references++ % kRefColorCount : -1, spans);
  }
  AddSpan(at, static_cast<int32_t>(text.size()), fckDefault, -1, spans);
  return spans;
}

std::vector<TFormulaRefHighlight> TFormulaAssist::RefHighlights(TTextArg AFormula) {
  const std::u16string_view text = AFormula;
  std::vector<TFormulaRefHighlight> highlights;
  if (!IsFormula(text)) return highlights;
  int32_t references = 0;
  for (TFormulaToken& token : TokenizeFormula(text)) {
    if (ColorKindOf(token.Kind) != fckRef) continue;
    const int32_t color = references++ % kRefColorCount;
    if (token.Kind == ftTableRef || token.Col < 1 || token.Row < 1) continue;
    const bool isRange = token.Col2 >= 1 && token.Row2 >= 1;
    const TCellRange range =
        TCellRange::Create(token.Col, token.Row, isRange ? token.Col2 : token.Col, isRange ? token.Row2 : token.Row);
    highlights.push_back({range, color, std::move(token.SheetName)});
  }
  return highlights;
}

uint32_t TFormulaAssist::ColorForKind(TFormulaColorKind AKind, int32_t AColorIndex) {
  switch (AKind) {
    case fckFunction:
    case fckBoolean: return 0xFF0000FF;
    case fckRef: return kRefColors[AColorIndex >= 0 && AColorIndex < kRefColorCount ? AColorIndex : 0];
    case fckString: return 0xFFA31515;
    case fckNumber: return 0xFF098658;
    case fckError: return 0xFFC00000;
    case fckPunct: return 0xFF666666;
    case fckOperator:
    case fckDefault: break;
  }
  return 0xFF000000;
}

TAutocompletePrefix TFormulaAssist::AutocompletePrefix(TTextArg AFormula, int32_t ACaret) {
  const std::u16string_view text = AFormula;
  if (!IsFormula(text)) return {};
  const size_t caret = ClampCaret(ACaret, 1, text);
  size_t start = caret;
  while (start > 0 && IsPrefixUnit(text[start - 1])) --start;
  return {static_cast<int32_t>(start), std::u16string(text.substr(start, caret - start))};
}

std::vector<TText> TFormulaAssist::AutocompleteCandidates(TTextArg APrefix, const TWorkbook* AWorkbook) {
  std::vector<TText> candidates;
  const std::u16string prefix = ToAsciiUpper(TrimSpaces(APrefix));
  if (prefix.empty()) return candidates;
  const auto offer = [&](std::u16string_view AName) {
    if (BeginsWithPrefix(AName, prefix)) candidates.emplace_back(AName);
  };
  for (const std::u16string_view name : kOfferedFunctions) offer(name);
  if (AWorkbook) {
    for (const TText& name : AWorkbook->NamedFormulaNames()) offer(name);
    for (int32_t i = 0; i < AWorkbook->SheetCount(); ++i) offer(AWorkbook->GetSheet(i)->Name().ToString() + u'!');
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const TText& ALeft, const TText& ARight) { return CompareAsciiNoCase(ALeft, ARight) < 0; });
  candidates.erase(std::unique(candidates.begin(), candidates.end(),
                               [](const TText& ALeft, const TText& ARight) { return EqualAsciiNoCase(ALeft, ARight); }),
                   candidates.end());
  return candidates;
}

int32_t TFormulaAssist::NextArgumentCaret(TTextArg AFormula, int32_t ACaret, bool ABackward) {
  const std::u16string_view text = AFormula;
  if (!IsFormula(text)) return ACaret;
  const std::vector<TFormulaToken> tokens = TokenizeFormula(text);
  if (tokens.empty()) return ACaret;
  const size_t current = TokenAtCaret(tokens, ACaret);
  return ABackward ? PreviousArgument(tokens, current, ACaret) : NextArgument(tokens, current, ACaret);
}

bool TFormulaAssist::CaretAllowsPointing(TTextArg AFormula, int32_t ACaret) {
  const std::u16string_view text = AFormula;
  if (!IsFormula(text)) return false;
  size_t caret = ClampCaret(ACaret, 0, text);
  while (caret > 0 && text[caret - 1] == u' ') --caret;
  return caret > 0 && std::u16string_view(u"&(*+,-/:<=>^").find(text[caret - 1]) != std::u16string_view::npos;
}

std::span<const std::u16string_view> TFormulaAssist::RegisteredFunctionNames() { return kOfferedFunctions; }

}  // namespace tessarine
