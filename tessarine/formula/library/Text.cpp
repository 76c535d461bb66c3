#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/TextSearch.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using namespace detail;

// Parts of texts -----------------------------------------------------------------------------------------------------

/// The text of one unit. Those of the first 256 stand ready and are shared.
TText UnitText(char16_t AUnit) {
  static const auto kTexts = [] {
    std::array<TText, 256> texts;
    for (size_t i = 0; i < texts.size(); ++i) {
      const auto unit = static_cast<char16_t>(i);
      texts[i] = TText::Immortal({&unit, 1});
    }
    return texts;
  }();
  return AUnit < kTexts.size() ? kTexts[AUnit] : TText(std::u16string_view(&AUnit, 1));
}

/// The display text of an argument, borrowed for the time of a call.
class TArgText {
 public:
  explicit TArgText(const TFormulaArg& AArg) : FValue(AArg.FirstView()), FView(DisplayView(FValue, FBuffer)) {}
  TArgText(const TArgText&) = delete;
  TArgText& operator=(const TArgText&) = delete;

  std::u16string_view View() const { return FView; }
  size_t Length() const { return FView.size(); }

  /// The text itself; shared where it stands already.
  TCellValue Whole() const { return TextOf(FValue.Kind == cvkText ? TText::Share(FValue.Block) : TText(FView)); }

  /// ACount units from AStart, both cut to the text. The whole text is shared.
  TCellValue Part(size_t AStart, size_t ACount) const {
    const std::u16string_view part = FView.substr(std::min(AStart, FView.size()), ACount);
    if (part.size() == FView.size()) return Whole();
    return TextOf(part.size() == 1 ? UnitText(part[0]) : TText(part));
  }

 private:
  TValueView FValue;
  std::u16string FBuffer;
  std::u16string_view FView;
};

/// A count that is negative as 0.
size_t CountOf(int64_t ACount) { return ACount < 0 ? 0 : static_cast<size_t>(ACount); }

TCellValue CallLen(TFormulaArgs AArgs, const TFormulaContext&) {
  return TCellValue::FromNumber(AArgs.empty() ? 0 : static_cast<double>(TArgText(AArgs[0]).Length()));
}

/// The count of units of LEFT and RIGHT: 1 when it is left out or no number.
size_t EndCount(TFormulaArgs AArgs) {
  int64_t count = 1;
  if (AArgs.size() > 1 && !ArgAsInt64(AArgs[1], count)) return 1;
  return CountOf(count);
}

TCellValue CallLeft(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return TArgText(AArgs[0]).Part(0, EndCount(AArgs));
}

TCellValue CallRight(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TArgText text(AArgs[0]);
  const size_t count = std::min(EndCount(AArgs), text.Length());
  return text.Part(text.Length() - count, count);
}

TCellValue CallMid(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t start = 0;
  int64_t count = 0;
  if (AArgs.size() < 3 || !ArgAsInt64(AArgs[1], start) || !ArgAsInt64(AArgs[2], count)) return ValueError();
  if (start < 1 || count < 0) return ValueError();
  return TArgText(AArgs[0]).Part(CountOf(start) - 1, CountOf(count));
}

TCellValue CallTrim(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TArgText text(AArgs[0]);
  const std::u16string_view kept = TrimSpaces(text.View());
  return kept.empty() ? TextOf({}) : text.Part(static_cast<size_t>(kept.data() - text.View().data()), kept.size());
}

// Units changed or dropped -------------------------------------------------------------------------------------------

using TUnitMap = char16_t (*)(char16_t APrevious, char16_t AUnit);

char16_t UpperUnit(char16_t, char16_t AUnit) { return AsciiUpper(AUnit); }
char16_t LowerUnit(char16_t, char16_t AUnit) { return AsciiLower(AUnit); }
char16_t ProperUnit(char16_t APrevious, char16_t AUnit) {
  return IsAsciiLetter(APrevious) || IsAsciiDigit(APrevious) ? AsciiLower(AUnit) : AsciiUpper(AUnit);
}

/// Maps each unit, seeing the one before it in the source; a text that stays as it is is shared.
template <TUnitMap Map>
TCellValue CallMapped(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TArgText text(AArgs[0]);
  const std::u16string_view view = text.View();
  char16_t previous = u' ';
  const auto changes = [&previous](char16_t AUnit) { return Map(std::exchange(previous, AUnit), AUnit) != AUnit; };
  if (std::none_of(view.begin(), view.end(), changes)) return text.Whole();
  previous = u' ';
  return TextOf(TText::Build(view.size(), [&](char16_t* AOut) {
    for (const char16_t unit : view) *AOut++ = Map(std::exchange(previous, unit), unit);
  }));
}

TCellValue CallClean(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TArgText text(AArgs[0]);
  const std::u16string_view view = text.View();
  const auto isKept = [](char16_t AUnit) { return AUnit >= u' '; };
  const auto kept = static_cast<size_t>(std::count_if(view.begin(), view.end(), isKept));
  if (kept == view.size()) return text.Whole();
  return TextOf(TText::Build(kept, [&](char16_t* AOut) { std::copy_if(view.begin(), view.end(), AOut, isKept); }));
}

// Joining ------------------------------------------------------------------------------------------------------------

/// The display texts of many values, for a first pass that measures them and a second one, over the same values in the
/// same order, that writes them. Numbers become text in the first.
class TDisplayPieces {
 public:
  size_t Measure(const TValueView& AValue) {
    if (AValue.Kind != cvkNumber) return DisplayView(AValue, FNumbers).size();
    const size_t start = FNumbers.size();
    FNumbers.push_back(0);
    AppendDisplayString(AValue, FNumbers);
    const size_t length = FNumbers.size() - start - 1;
    FNumbers[start] = static_cast<char16_t>(length);
    return length;
  }

  std::u16string_view Next(const TValueView& AValue) {
    if (AValue.Kind != cvkNumber) return DisplayView(AValue, FNumbers);
    const std::u16string_view text = std::u16string_view(FNumbers).substr(FAt + 1, FNumbers[FAt]);
    FAt += 1 + text.size();
    return text;
  }

 private:
  std::u16string FNumbers;  // each behind a unit with its length
  size_t FAt = 0;
};

/// Joins the pieces that AWalk shows twice; #VALUE! for what would be too long. AWalk(visitor) calls the visitor with
/// each value and stops when it answers false.
template <class TWalk>
TCellValue JoinValues(std::u16string_view ADelimiter, bool ASkipEmpty, TWalk&& AWalk) {
  TDisplayPieces pieces;
  size_t total = 0;
  bool first = true;
  const bool fits = AWalk([&](const TValueView& AValue) {
    const size_t length = pieces.Measure(AValue);
    if (ASkipEmpty && length == 0) return true;
    total += length + (std::exchange(first, false) ? 0 : ADelimiter.size());
    return total <= kMaxGeneratedText;
  });
  if (!fits) return ValueError();
  first = true;
  return TextOf(TText::Build(total, [&](char16_t* AOut) {
    AWalk([&](const TValueView& AValue) {
      const std::u16string_view piece = pieces.Next(AValue);
      if (ASkipEmpty && piece.empty()) return true;
      if (!std::exchange(first, false)) AOut = std::copy(ADelimiter.begin(), ADelimiter.end(), AOut);
      AOut = std::copy(piece.begin(), piece.end(), AOut);
      return true;
    });
  }));
}

/// Every value of the arguments, or with ASkipBlanks those that are not blank.
template <class F>
bool WalkPieces(TFormulaArgs AArgs, bool ASkipBlanks, F&& AVisit) {
  if (!ASkipBlanks) return ForEachValue(AArgs, AVisit);
  for (const TFormulaArg& arg : AArgs) {
    if (!ForEachNonBlank(arg, [&](int64_t, const TValueView& AValue) { return AVisit(AValue); })) return false;
  }
  return true;
}

TCellValue CallConcat(TFormulaArgs AArgs, const TFormulaContext&) {
  return JoinValues({}, true, [&](auto&& AVisit) { return WalkPieces(AArgs, true, AVisit); });
}

TCellValue CallTextJoin(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 3) return ValueError();
  const TArgText delimiter(AArgs[0]);
  // Without a delimiter an empty piece leaves no trace.
  const bool skipEmpty = delimiter.Length() == 0 || ArgIsTrue(AArgs[1]);
  const TFormulaArgs values = AArgs.subspan(2);
  return JoinValues(delimiter.View(), skipEmpty, [&](auto&& AVisit) { return WalkPieces(values, skipEmpty, AVisit); });
}

TCellValue CallRept(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t times = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[1], times) || times < 0) return ValueError();
  const TArgText text(AArgs[0]);
  if (times == 1 || text.Length() == 0) return text.Whole();
  if (CountOf(times) > kMaxGeneratedText / text.Length()) return ValueError();
  return TextOf(TText::Build(text.Length() * CountOf(times), [&](char16_t* AOut) {
    if (text.Length() == 1) {
      std::fill_n(AOut, CountOf(times), text.View()[0]);
      return;
    }
    for (int64_t i = 0; i < times; ++i) AOut = std::copy(text.View().begin(), text.View().end(), AOut);
  }));
}

// Searching ----------------------------------------------------------------------------------------------------------

template <TTextCase Case>
TCellValue CallFind(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t start = 1;
  if (AArgs.size() < 2 || (AArgs.size() > 2 && !ArgAsInt64(AArgs[2], start)) || start < 1) return ValueError();
  const TArgText what(AArgs[0]);
  const TArgText within(AArgs[1]);
  if (what.Length() == 0) return ValueError();
  const size_t at = TTextSearch(what.View(), Case).Find(within.View(), CountOf(start) - 1);
  return at == within.View().npos ? ValueError() : TCellValue::FromNumber(static_cast<double>(at + 1));
}

/// A part of a text put in the place of another; #VALUE! for what would be too long.
TCellValue Spliced(std::u16string_view AHead, std::u16string_view AMiddle, std::u16string_view ATail) {
  const size_t total = AHead.size() + AMiddle.size() + ATail.size();
  if (total > kMaxGeneratedText) return ValueError();
  return TextOf(TText::Build(total, [&](char16_t* AOut) {
    for (const std::u16string_view part : {AHead, AMiddle, ATail}) AOut = std::copy(part.begin(), part.end(), AOut);
  }));
}

/// Replaces the AOrdinal-th of the occurrences that do not overlap, counted from 1.
TCellValue SubstituteOne(const TArgText& AText, std::u16string_view AOld, std::u16string_view ANew, int64_t AOrdinal) {
  const std::u16string_view view = AText.View();
  if (AOrdinal < 1) return AText.Whole();
  TTextSearch search(AOld, tcsExact);
  size_t at = search.Find(view, 0);
  for (; at != view.npos && AOrdinal > 1; --AOrdinal) at = search.Find(view, at + AOld.size());
  if (at == view.npos) return AText.Whole();
  return Spliced(view.substr(0, at), ANew, view.substr(at + AOld.size()));
}

/// SubstituteAll of one unit by one: the places are the same ones, and nothing moves.
TCellValue SubstituteUnit(const TArgText& AText, char16_t AOld, char16_t ANew) {
  const std::u16string_view view = AText.View();
  if (view.find(AOld) == view.npos) return AText.Whole();
  if (view.size() > kMaxGeneratedText) return ValueError();
  return TextOf(TText::Build(view.size(),
                             [&](char16_t* AOut) { std::replace_copy(view.begin(), view.end(), AOut, AOld, ANew); }));
}

TCellValue SubstituteAll(const TArgText& AText, std::u16string_view AOld, std::u16string_view ANew) {
  if (AOld.size() == 1 && ANew.size() == 1) return SubstituteUnit(AText, AOld[0], ANew[0]);
  const std::u16string_view view = AText.View();
  TTextSearch search(AOld, tcsExact);
  const size_t first = search.Find(view, 0);
  if (first == view.npos) return AText.Whole();
  size_t total = view.size();
  for (size_t at = first; at != view.npos; at = search.Find(view, at + AOld.size())) {
    total = total - AOld.size() + ANew.size();
    if (ANew.size() >= AOld.size() && total > kMaxGeneratedText) return ValueError();
  }
  if (total > kMaxGeneratedText) return ValueError();
  return TextOf(TText::Build(total, [&](char16_t* AOut) {
    size_t copied = 0;
    for (size_t at = first; at != view.npos; at = search.Find(view, copied)) {
      AOut = std::copy(view.begin() + copied, view.begin() + at, AOut);
      AOut = std::copy(ANew.begin(), ANew.end(), AOut);
      copied = at + AOld.size();
    }
    std::copy(view.begin() + copied, view.end(), AOut);
  }));
}

TCellValue CallSubstitute(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t ordinal = 0;
  if (AArgs.size() < 3 || (AArgs.size() > 3 && !ArgAsInt64(AArgs[3], ordinal))) return ValueError();
  const TArgText text(AArgs[0]);
  const TArgText oldPart(AArgs[1]);
  const TArgText newPart(AArgs[2]);
  if (oldPart.Length() == 0) return text.Whole();
  if (AArgs.size() > 3) return SubstituteOne(text, oldPart.View(), newPart.View(), ordinal);
  return SubstituteAll(text, oldPart.View(), newPart.View());
}

/// A negative count is taken at its word: the rest begins before the place of the new part, at the earliest with the
/// first unit.
TCellValue CallReplace(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t start = 0;
  int64_t count = 0;
  if (AArgs.size() < 4 || !ArgAsInt64(AArgs[1], start) || !ArgAsInt64(AArgs[2], count)) return ValueError();
  if (start < 1) return ValueError();
  const TArgText text(AArgs[0]);
  const TArgText newPart(AArgs[3]);
  const auto length = static_cast<int64_t>(text.Length());
  const int64_t head = std::min(start - 1, length);
  const int64_t rest = std::clamp<int64_t>(std::min(start - 1, length) + std::clamp(count, -length, length), 0, length);
  return Spliced(text.View().substr(0, CountOf(head)), newPart.View(), text.View().substr(CountOf(rest)));
}

TCellValue CallExact(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  return BooleanOf(TArgText(AArgs[0]).View() == TArgText(AArgs[1]).View());
}

// Texts, numbers and codes -------------------------------------------------------------------------------------------

TCellValue CallValue(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], number)) return ValueError();
  return NumberOrError(number);
}

TCellValue CallText(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  double number = 0;
  if (!ArgAsNumber(AArgs[0], number)) return TArgText(AArgs[0]).Whole();
  return TextOf(FormatNumber(number, TArgText(AArgs[1]).View()));
}

TCellValue CallChar(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t code = 0;
  if (AArgs.empty() || !ArgAsInt64(AArgs[0], code) || code < 1 || code > 255) return ValueError();
  return TextOf(UnitText(static_cast<char16_t>(code)));
}

TCellValue CallCode(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TArgText text(AArgs[0]);
  return text.Length() == 0 ? ValueError() : TCellValue::FromNumber(text.View()[0]);
}

// clang-format off
constexpr TFunctionDef kTextFunctions[] = {
    {.Name = u"CHAR", .MinArgs = 1, .MaxArgs = 1, .Body = CallChar, .InCompletion = true,
     .Arguments = u"code", .Description = u"The character of a code from 1 to 255."},
    {.Name = u"CLEAN", .MinArgs = 1, .MaxArgs = 1, .Body = CallClean, .InCompletion = true,
     .Arguments = u"text", .Description = u"A text without its control characters."},
    {.Name = u"CODE", .MinArgs = 1, .MaxArgs = 1, .Body = CallCode, .InCompletion = true,
     .Arguments = u"text", .Description = u"The code of the first character of a text."},
    {.Name = u"CONCAT", .MinArgs = 1, .Body = CallConcat, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Joins the texts of values and ranges."},
    {.Name = u"CONCATENATE", .MinArgs = 1, .Body = CallConcat, .InCompletion = true,
     .Arguments = u"value1, [value2], ...", .Description = u"Joins the texts of values and ranges."},
    {.Name = u"EXACT", .MinArgs = 2, .MaxArgs = 2, .Body = CallExact,
     .Arguments = u"text1, text2", .Description = u"Whether two texts are equal, case included."},
    {.Name = u"FIND", .MinArgs = 2, .MaxArgs = 3, .Body = CallFind<tcsExact>, .InCompletion = true,
     .Arguments = u"what, within, [start]", .Description = u"Position of a text in another, with regard to case."},
    {.Name = u"LEFT", .MinArgs = 1, .MaxArgs = 2, .Body = CallLeft, .InCompletion = true,
     .Arguments = u"text, [count]", .Description = u"The first characters of a text."},
    {.Name = u"LEN", .MinArgs = 1, .MaxArgs = 1, .Body = CallLen, .InCompletion = true,
     .Arguments = u"text", .Description = u"The length of a text."},
    {.Name = u"LOWER", .MinArgs = 1, .MaxArgs = 1, .Body = CallMapped<LowerUnit>, .InCompletion = true,
     .Arguments = u"text", .Description = u"A text with the letters A to Z in lower case."},
    {.Name = u"MID", .MinArgs = 3, .MaxArgs = 3, .Body = CallMid, .InCompletion = true,
     .Arguments = u"text, start, count", .Description = u"Characters from inside a text; the first has position 1."},
    {.Name = u"PROPER", .MinArgs = 1, .MaxArgs = 1, .Body = CallMapped<ProperUnit>,
     .Arguments = u"text", .Description = u"A text with each word's first letter in upper case, the others in lower."},
    {.Name = u"REPLACE", .MinArgs = 4, .MaxArgs = 4, .Body = CallReplace, .InCompletion = true,
     .Arguments = u"text, start, count, new", .Description = u"Puts a new text in the place of some characters."},
    {.Name = u"REPT", .MinArgs = 2, .MaxArgs = 2, .Body = CallRept, .InCompletion = true,
     .Arguments = u"text, times", .Description = u"A text many times over."},
    {.Name = u"RIGHT", .MinArgs = 1, .MaxArgs = 2, .Body = CallRight, .InCompletion = true,
     .Arguments = u"text, [count]", .Description = u"The last characters of a text."},
    {.Name = u"SEARCH", .MinArgs = 2, .MaxArgs = 3, .Body = CallFind<tcsIgnoreAscii>, .InCompletion = true,
     .Arguments = u"what, within, [start]", .Description = u"Position of a text in another, without regard to case."},
    {.Name = u"SUBSTITUTE", .MinArgs = 3, .MaxArgs = 4, .Body = CallSubstitute, .InCompletion = true,
     .Arguments = u"text, old, new, [occurrence]",
     .Description = u"Replaces a text within another, everywhere or once."},
    {.Name = u"TEXT", .MinArgs = 2, .MaxArgs = 2, .Body = CallText, .InCompletion = true,
     .Arguments = u"value, format", .Description = u"The text of a number under a number format."},
    {.Name = u"TEXTJOIN", .MinArgs = 3, .Body = CallTextJoin, .InCompletion = true,
     .Arguments = u"delimiter, ignore_empty, value1, [value2], ...",
     .Description = u"Joins texts with a delimiter between them."},
    {.Name = u"TRIM", .MinArgs = 1, .MaxArgs = 1, .Body = CallTrim, .InCompletion = true,
     .Arguments = u"text", .Description = u"A text without the blanks at its ends."},
    {.Name = u"UPPER", .MinArgs = 1, .MaxArgs = 1, .Body = CallMapped<UpperUnit>, .InCompletion = true,
     .Arguments = u"text", .Description = u"A text with the letters a to z in upper case."},
    {.Name = u"VALUE", .MinArgs = 1, .MaxArgs = 1, .Body = CallValue, .InCompletion = true,
     .Arguments = u"text", .Description = u"The number that a text reads as."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> TextFunctions() { return kTextFunctions; }

}  // namespace tessarine
