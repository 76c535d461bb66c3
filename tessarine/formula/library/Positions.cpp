#include <chrono>
#include <cstddef>

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/CellRuns.h>
#include <tessarine/formula/library/detail/LongTexts.h>
#include <tessarine/formula/library/detail/ReferenceBodies.h>
#include <tessarine/formula/library/detail/Search.h>
#include <tessarine/platform/Regex.h>
#include <tessarine/platform/Unicode.h>

// Searches for the position of a key that know more than equality.

namespace tessarine::detail {

namespace {

enum class TMatchMode : uint8_t { mmExact, mmOrSmaller, mmOrLarger, mmWildcard, mmRegex };
using enum TMatchMode;

constexpr size_t kMaxWildcardPattern = 255;
constexpr std::chrono::seconds kMaxRegexTime{1};  // of all cells together

/// Calls ATest on the texts of a line in order, on long ones that cells share once; the position of the first (last)
/// one that it holds for, or -1.
template <class F>
int64_t FindText(const TSearchLine& ALine, bool AFromEnd, F&& ATest) {
  int64_t found = -1;
  TLongTextMemo<bool> longTexts;
  const auto holds = [&](const TValueView& AText) {
    return IsLongText(AText) ? longTexts.Of(AText, [&] { return ATest(AText); }) : ATest(AText);
  };
  ForEachRun(ALine.Cells(), ALine.Count(), ALine.Stride(), [&](int64_t APosition, int64_t, const TValueView& AValue) {
    if (AValue.Kind == cvkText && holds(AValue)) found = APosition;
    return found < 0 || AFromEnd;
  });
  return found;
}

int64_t FindLastEqual(const TSearchLine& ALine, const TMatchKey& AKey) {
  int64_t found = -1;
  ForEachRun(ALine.Cells(), ALine.Count(), ALine.Stride(),
             [&](int64_t AFirst, int64_t ACount, const TValueView& AValue) {
               if (AKey.Equals(AValue)) found = AFirst + ACount - 1;
               return true;
             });
  return found;
}

/// The largest text not above (the smallest not below) a key that is no number, the last or first of equals.
int64_t FindNearestText(const TSearchLine& ALine, const TValueView& AKey, bool ABelow, bool ALastOfEquals) {
  int64_t found = -1;
  TValueView best;
  ForEachRun(ALine.Cells(), ALine.Count(), ALine.Stride(), [&](int64_t APosition, int64_t, const TValueView& AValue) {
    if (AValue.Kind != cvkText) return true;
    const int side = CompareValues(AValue, AKey);
    if (ABelow ? side > 0 : side < 0) return true;
    const int rank = found < 0 ? 1 : ABelow ? CompareValues(AValue, best) : CompareValues(best, AValue);
    if (rank > 0 || (rank == 0 && ALastOfEquals)) {
      best = AValue;
      found = APosition;
    }
    return true;
  });
  return found;
}

/// The key itself or the nearest value on one side of it: numbers among numbers, texts among texts.
int64_t FindEqualOrNearest(const TSearchLine& ALine, const TValueView& AKey, bool ABelow, bool ALastOfEquals,
                           TRangeIndexCache* ACache) {
  double number = 0;
  if (AsNumber(AKey, number)) {
    const int64_t last = FindNearest(ALine, number, ABelow, ACache);
    double nearest = 0;
    if (last < 0 || ALastOfEquals || !AsNumber(ALine.At(last), nearest)) return last;
    return FindEqual(ALine, TMatchKey(TValueView::FromNumber(nearest)), ACache);
  }
  if (AKey.Kind == cvkText) return FindNearestText(ALine, AKey, ABelow, ALastOfEquals);
  return ALastOfEquals ? FindLastEqual(ALine, TMatchKey(AKey)) : FindEqual(ALine, TMatchKey(AKey), ACache);
}

/// Whether AText is what APattern says, without regard to ASCII case: "*" stands for any units, "?" for one, "~" before
/// one of these three for itself. Time grows with the product of the lengths at worst.
bool MatchesWildcards(std::u16string_view APattern, std::u16string_view AText) {
  size_t text = 0;
  size_t pattern = 0;
  size_t retryText = 0;
  size_t retryPattern = std::u16string_view::npos;  // behind the last "*"
  while (text < AText.size()) {
    if (pattern < APattern.size() && APattern[pattern] == u'*') {
      retryPattern = ++pattern;
      retryText = text;
      continue;
    }
    if (pattern < APattern.size()) {
      const bool isEscaped = APattern[pattern] == u'~' && pattern + 1 < APattern.size() &&
                             std::u16string_view(u"*?~").find(APattern[pattern + 1]) != std::u16string_view::npos;
      const size_t at = pattern + (isEscaped ? 1 : 0);
      if ((!isEscaped && APattern[at] == u'?') || AsciiUpper(APattern[at]) == AsciiUpper(AText[text])) {
        pattern = at + 1;
        ++text;
        continue;
      }
    }
    if (retryPattern == std::u16string_view::npos) return false;
    pattern = retryPattern;
    text = ++retryText;
  }
  return APattern.find_first_not_of(u'*', pattern) == std::u16string_view::npos;
}

/// The text of a value that is one, as long as ABuffer stands.
std::u16string_view TextOfView(const TValueView& AValue, TCellValue& ABuffer) {
  ABuffer = TCellValue::FromView(AValue);
  return ABuffer.Text.View();
}

TCellValue PositionOrNone(int64_t APosition) {
  return APosition < 0 ? NotAvailable() : TCellValue::FromNumber(static_cast<double>(APosition + 1));
}

TCellValue MatchByWildcards(const TSearchLine& ALine, std::u16string_view APattern, bool AFromEnd) {
  if (APattern.size() > kMaxWildcardPattern) return ValueError();
  TCellValue buffer;
  return PositionOrNone(FindText(ALine, AFromEnd, [&](const TValueView& AValue) {
    return MatchesWildcards(APattern, TextOfView(AValue, buffer));
  }));
}

TCellValue MatchByRegex(const TSearchLine& ALine, std::u16string_view APattern, bool AFromEnd) {
  TCellValue buffer;
  bool failed = FindRegex(APattern, u"").Outcome == roFailed;
  const auto end = std::chrono::steady_clock::now() + kMaxRegexTime;
  const int64_t found = failed ? -1 : FindText(ALine, AFromEnd, [&](const TValueView& AValue) {
    if (failed) return false;
    const TRegexMatch match = FindRegex(APattern, TextOfView(AValue, buffer));
    failed = match.Outcome == roFailed || std::chrono::steady_clock::now() > end;
    return match.Outcome == roMatched;
  });
  return failed ? ValueError() : PositionOrNone(found);
}

/// The mode of a number; false for other numbers.
bool ReadMatchMode(int64_t ANumber, TMatchMode& AMode) {
  constexpr TMatchMode modes[] = {mmOrSmaller, mmExact, mmOrLarger, mmWildcard, mmRegex};
  if (ANumber < -1 || ANumber > 3) return false;
  AMode = modes[ANumber + 1];
  return true;
}

}  // namespace

/// key, cells, [results]: the largest value not above the key, the last of equals. Without results they are the last
/// column of the cells whose first column is searched, or the rows of cells that are wider than high.
TCellValue CallLookup(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.size() < 2) return ValueError();
  const TFormulaArg one = AArgs[1].IsRange ? TFormulaArg() : AsRangeArg(AArgs[1]);
  const TFormulaArg& cells = AArgs[1].IsRange ? AArgs[1] : one;
  const bool isTable = AArgs.size() < 3;
  const bool isWide = cells.ColCount > cells.RowCount;
  const TSearchLine line = !isTable ? TSearchLine::All(cells)
                           : isWide ? TSearchLine::FirstRow(cells)
                                    : TSearchLine::FirstColumn(cells);
  const int64_t found = FindEqualOrNearest(line, AArgs[0].FirstView(), true, true, AContext.Indexes);
  if (found < 0) return NotAvailable();
  if (isTable) {
    const auto along = static_cast<int32_t>(found);
    return isWide ? cells.CellAt(cells.RowCount - 1, along) : cells.CellAt(along, cells.ColCount - 1);
  }
  const TFormulaArg& results = AArgs[2];
  if (!results.IsRange) return found == 0 ? results.First() : RefError();
  return found < results.CellCount() ? TCellValue::FromView(results.ViewAt(found)) : RefError();
}

/// key, cells, [match mode], [search mode]. No search needs sorted cells: those for sorted ones are as the first.
TCellValue CallXMatch(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  int64_t modeNumber = 0;
  int64_t search = 1;
  TMatchMode mode = mmExact;
  if (AArgs.size() < 2) return ValueError();
  if (AArgs.size() > 2 && !ArgAsInt64(AArgs[2], modeNumber)) return ValueError();
  if (AArgs.size() > 3 && !ArgAsInt64(AArgs[3], search)) return ValueError();
  if (!ReadMatchMode(modeNumber, mode) || search == 0 || search < -2 || search > 2) return ValueError();
  const TFormulaArg one = AArgs[1].IsRange ? TFormulaArg() : AsRangeArg(AArgs[1]);
  const TSearchLine line = TSearchLine::All(AArgs[1].IsRange ? AArgs[1] : one);
  const TValueView key = AArgs[0].FirstView();
  const bool fromEnd = search == -1;
  std::u16string buffer;
  switch (mode) {
    case mmOrSmaller: return PositionOrNone(FindEqualOrNearest(line, key, true, fromEnd, AContext.Indexes));
    case mmOrLarger: return PositionOrNone(FindEqualOrNearest(line, key, false, fromEnd, AContext.Indexes));
    case mmWildcard:
      if (key.Kind == cvkText) return MatchByWildcards(line, ArgTextView(AArgs[0], buffer), fromEnd);
      break;
    case mmRegex: return MatchByRegex(line, ArgTextView(AArgs[0], buffer), fromEnd);
    case mmExact: break;
  }
  const TMatchKey equal(key);
  return PositionOrNone(fromEnd ? FindLastEqual(line, equal) : FindEqual(line, equal, AContext.Indexes));
}

}  // namespace tessarine::detail
