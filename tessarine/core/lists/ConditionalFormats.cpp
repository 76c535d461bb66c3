#include <tessarine/core/lists/ConditionalFormats.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/lists/FloatTolerance.h>
#include <tessarine/core/lists/detail/RectIndex.h>
#include <tessarine/core/lists/detail/SlidLine.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr std::u16string_view kOperatorNames[] = {
    u"cellValue", u"equal",      u"notEqual",     u"greaterThan",     u"lessThan",   u"greaterEqual", u"lessEqual",
    u"between",   u"notBetween", u"containsText", u"notContainsText", u"beginsWith", u"endsWith",
};
static_assert(std::size(kOperatorNames) == static_cast<size_t>(cfoEndsWith) + 1);

constexpr std::pair<std::u16string_view, TCfOperator> kOperatorSpellings[] = {
    {u"equal", cfoEqual},
    {u"eq", cfoEqual},
    {u"=", cfoEqual},
    {u"notequal", cfoNotEqual},
    {u"ne", cfoNotEqual},
    {u"<>", cfoNotEqual},
    {u"greaterthan", cfoGreaterThan},
    {u"gt", cfoGreaterThan},
    {u">", cfoGreaterThan},
    {u"lessthan", cfoLessThan},
    {u"lt", cfoLessThan},
    {u"<", cfoLessThan},
    {u"greaterequal", cfoGreaterEqual},
    {u"gte", cfoGreaterEqual},
    {u">=", cfoGreaterEqual},
    {u"lessequal", cfoLessEqual},
    {u"lte", cfoLessEqual},
    {u"<=", cfoLessEqual},
    {u"between", cfoBetween},
    {u"notbetween", cfoNotBetween},
    {u"contains", cfoContainsText},
    {u"containstext", cfoContainsText},
    {u"notcontains", cfoNotContainsText},
    {u"notcontainstext", cfoNotContainsText},
    {u"beginswith", cfoBeginsWith},
    {u"startswith", cfoBeginsWith},
    {u"endswith", cfoEndsWith},
};

/// One comparison with its operands read.
struct TTest {
  TCfOperator Operator = cfoCellValue;
  bool HasFirst = false;
  bool HasSecond = false;
  double First = 0;
  double Second = 0;
  std::u16string FirstText;  // upper case
  std::u16string SecondText;
};

TTest CompileTest(const TConditionalFormatRule& ARule) {
  const TFormatSettings& settings = CurrentFormatSettings();
  TTest test;
  test.Operator = ARule.Operator;
  test.HasFirst = TryStrToFloat(TrimSpaces(ARule.Formula1), settings, test.First);
  test.HasSecond = TryStrToFloat(TrimSpaces(ARule.Formula2), settings, test.Second);
  test.FirstText = ToAsciiUpper(ARule.Formula1);
  test.SecondText = ToAsciiUpper(ARule.Formula2);
  return test;
}

/// What rules look at, handed over as text and number.
struct TGivenSubject {
  std::u16string_view Given;
  bool IsNumeric = false;
  double Number = 0;
  std::u16string Upper = {};
  bool HasUpper = false;

  std::u16string_view UpperText() {
    if (!std::exchange(HasUpper, true)) Upper = ToAsciiUpper(Given);
    return Upper;
  }
};

/// The same for a value whose text is made when it is asked for.
struct TValueSubject {
  explicit TValueSubject(const TValueView& AValue)
      : Value(AValue), IsNumeric(AValue.Kind == cvkNumber), Number(IsNumeric ? AValue.Number : 0) {}

  const TValueView& Value;
  bool IsNumeric;
  double Number;
  std::u16string Upper;
  bool HasUpper = false;

  std::u16string_view UpperText() {
    if (std::exchange(HasUpper, true)) return Upper;
    Upper = IsNumeric ? FloatToStr(Number, CurrentFormatSettings())
                      : std::u16string(std::u16string_view(TCellValue::FromView(Value).ToDisplayString()));
    Upper = ToAsciiUpper(Upper);
    return Upper;
  }
};

bool TestNumbers(const TTest& ATest, double AValue) {
  const auto [low, high] = std::minmax(ATest.First, ATest.Second);
  switch (ATest.Operator) {
    case cfoNotEqual: return !IsSameFloat(AValue, ATest.First);
    case cfoGreaterThan: return AValue > ATest.First;
    case cfoLessThan: return AValue < ATest.First;
    case cfoGreaterEqual: return AValue >= ATest.First;
    case cfoLessEqual: return AValue <= ATest.First;
    case cfoBetween: return AValue >= low && AValue <= high;
    case cfoNotBetween: return AValue < low || AValue > high;
    default: return IsSameFloat(AValue, ATest.First);
  }
}

bool TestTexts(const TTest& ATest, std::u16string_view AUpper) {
  const std::u16string_view first = ATest.FirstText;
  switch (ATest.Operator) {
    case cfoCellValue:
    case cfoEqual: return TrimSpaces(AUpper) == TrimSpaces(first);
    case cfoNotEqual: return TrimSpaces(AUpper) != TrimSpaces(first);
    case cfoGreaterThan: return AUpper > first;
    case cfoLessThan: return AUpper < first;
    case cfoGreaterEqual: return AUpper >= first;
    case cfoLessEqual: return AUpper <= first;
    case cfoBetween: return AUpper >= first && AUpper <= ATest.SecondText;
    case cfoNotBetween: return !(AUpper >= first && AUpper <= ATest.SecondText);
    case cfoContainsText: return AUpper.find(first) != AUpper.npos;
    case cfoNotContainsText: return AUpper.find(first) == AUpper.npos;
    case cfoBeginsWith: return AUpper.starts_with(first);
    case cfoEndsWith: return AUpper.ends_with(first);
  }
  return false;
}

bool IsTextOperator(TCfOperator AOperator) { return AOperator >= cfoContainsText; }
bool NeedsSecond(TCfOperator AOperator) { return AOperator == cfoBetween || AOperator == cfoNotBetween; }

template <class TSubject>
bool Holds(const TTest& ATest, TSubject& ASubject) {
  const bool byNumber = ASubject.IsNumeric && ATest.HasFirst && !IsTextOperator(ATest.Operator) &&
                        (ATest.HasSecond || !NeedsSecond(ATest.Operator));
  return byNumber ? TestNumbers(ATest, ASubject.Number) : TestTexts(ATest, ASubject.UpperText());
}

void Overlay(const TConditionalFormatRule& ARule, TCellFormat& AFormat) {
  if (ARule.HasFill) AFormat.Fill = ARule.Fill;
  if (ARule.HasFontColor) AFormat.Font.Color = ARule.FontColor;
  if (ARule.HasBold) AFormat.Font.Bold = ARule.Bold;
  if (ARule.HasItalic) AFormat.Font.Italic = ARule.Italic;
}

bool Covers(const TConditionalFormatRule& ARule, int32_t ACol, int32_t ARow) {
  return std::any_of(ARule.Ranges.begin(), ARule.Ranges.end(),
                     [&](const TCellRange& ARange) { return ARange.Contains(ACol, ARow); });
}

/// The ends of ranges along one axis cut it into stretches inside which the same rules apply.
size_t StretchOf(const std::vector<int64_t>& ACuts, int64_t ALine) {
  return static_cast<size_t>(std::upper_bound(ACuts.begin(), ACuts.end(), ALine) - ACuts.begin());
}

}  // namespace

/// Invariants:
/// 1. Tests[i] is rule i read under the locale of Version.
/// 2. RulesAt holds, for stretches asked for so far, the rules that cover all their cells, ascending.
struct TConditionalFormatList::TCompiled {
  uint64_t Version = 0;
  std::vector<TTest> Tests;
  detail::TRectIndex Index;
  std::vector<int64_t> ColCuts;
  std::vector<int64_t> RowCuts;
  boost::unordered_flat_map<uint64_t, std::vector<uint32_t>> RulesAt;
  size_t Remembered = 0;  // rules in all entries of RulesAt

  static constexpr size_t kMostRemembered = size_t{1} << 20;

  explicit TCompiled(const std::vector<TConditionalFormatRule>& ARules) : Version(FormatSettingsVersion()) {
    Tests.reserve(ARules.size());
    for (size_t i = 0; i < ARules.size(); ++i) {
      Tests.push_back(CompileTest(ARules[i]));
      for (const TCellRange& range : ARules[i].Ranges) Add(static_cast<uint32_t>(i), range.Normalize());
    }
    for (std::vector<int64_t>* cuts : {&ColCuts, &RowCuts}) {
      std::sort(cuts->begin(), cuts->end());
      cuts->erase(std::unique(cuts->begin(), cuts->end()), cuts->end());
    }
  }

  void Add(uint32_t ARule, const TCellRange& ARange) {
    Index.Insert(ARule, ARange);
    ColCuts.insert(ColCuts.end(), {int64_t{ARange.StartCol}, int64_t{ARange.EndCol} + 1});
    RowCuts.insert(RowCuts.end(), {int64_t{ARange.StartRow}, int64_t{ARange.EndRow} + 1});
  }

  const std::vector<uint32_t>& RulesFor(const std::vector<TConditionalFormatRule>& ARules, int32_t ACol, int32_t ARow) {
    const uint64_t key = (uint64_t{StretchOf(ColCuts, ACol)} << 32) | StretchOf(RowCuts, ARow);
    const auto found = RulesAt.find(key);
    if (found != RulesAt.end()) return found->second;
    std::vector<uint32_t> rules;
    Index.VisitAt(ACol, ARow, [&](uint32_t ARule) {
      if (Covers(ARules[ARule], ACol, ARow)) rules.push_back(ARule);
      return false;
    });
    std::sort(rules.begin(), rules.end());
    rules.erase(std::unique(rules.begin(), rules.end()), rules.end());
    if (Remembered + rules.size() > kMostRemembered) {
      RulesAt.clear();
      Remembered = 0;
    }
    Remembered += rules.size() + 1;
    return RulesAt.emplace(key, std::move(rules)).first->second;
  }
};

TCfOperator ParseCfOperator(std::u16string_view AText) {
  const std::u16string text = ToAsciiLower(TrimSpaces(AText));
  for (const auto& [spelling, value] : kOperatorSpellings)
    if (spelling == text) return value;
  return cfoCellValue;
}

std::u16string_view CfOperatorName(TCfOperator AOperator) { return kOperatorNames[static_cast<size_t>(AOperator)]; }

TConditionalFormatList::TConditionalFormatList() = default;
TConditionalFormatList::~TConditionalFormatList() = default;

void TConditionalFormatList::Clear() {
  FRules.clear();
  FCompiled.reset();
}

void TConditionalFormatList::AddRule(TConditionalFormatRule ARule) {
  FRules.push_back(std::move(ARule));
  FCompiled.reset();
}

void TConditionalFormatList::DeleteRule(size_t AIndex) {
  if (AIndex >= FRules.size()) return;
  FRules.erase(FRules.begin() + static_cast<ptrdiff_t>(AIndex));
  FCompiled.reset();
}

void TConditionalFormatList::ClearOverlapping(const TCellRange& ARange) {
  std::erase_if(FRules, [&](TConditionalFormatRule& ARule) {
    std::erase_if(ARule.Ranges, [&](const TCellRange& AOwn) { return AOwn.Intersects(ARange); });
    return ARule.Ranges.empty();
  });
  FCompiled.reset();
}

const TConditionalFormatList::TCompiled& TConditionalFormatList::Compiled() const {
  if (!FCompiled || FCompiled->Version != FormatSettingsVersion()) FCompiled = std::make_unique<TCompiled>(FRules);
  return *FCompiled;
}

template <class TSubject>
bool TConditionalFormatList::Apply(int32_t ACol, int32_t ARow, TSubject& ASubject, TCellFormat& AFormat) const {
  if (FRules.empty()) return false;
  const TCompiled& compiled = Compiled();
  bool hasApplied = false;
  for (const uint32_t rule : FCompiled->RulesFor(FRules, ACol, ARow)) {
    if (!Holds(compiled.Tests[rule], ASubject)) continue;
    hasApplied = true;
    Overlay(FRules[rule], AFormat);
    if (FRules[rule].StopIfTrue) break;
  }
  return hasApplied;
}

bool TConditionalFormatList::Evaluate(int32_t ACol, int32_t ARow, std::u16string_view AText, bool AIsNumeric,
                                      double ANumber, TCellFormat& AFormat) const {
  TGivenSubject subject{.Given = AText, .IsNumeric = AIsNumeric, .Number = ANumber};
  return Apply(ACol, ARow, subject, AFormat);
}

bool TConditionalFormatList::Evaluate(int32_t ACol, int32_t ARow, const TValueView& AValue,
                                      TCellFormat& AFormat) const {
  TValueSubject subject(AValue);
  return Apply(ACol, ARow, subject, AFormat);
}

bool TConditionalFormatList::EvaluatePlain(int32_t ACol, int32_t ARow, std::u16string_view AText, bool AIsNumeric,
                                           double ANumber, TCellFormat& AFormat) const {
  TGivenSubject subject{.Given = AText, .IsNumeric = AIsNumeric, .Number = ANumber};
  bool hasApplied = false;
  for (const TConditionalFormatRule& rule : FRules) {
    if (!Covers(rule, ACol, ARow) || !Holds(CompileTest(rule), subject)) continue;
    hasApplied = true;
    Overlay(rule, AFormat);
    if (rule.StopIfTrue) break;
  }
  return hasApplied;
}

void TConditionalFormatList::Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  for (TConditionalFormatRule& rule : FRules) {
    for (TCellRange& range : rule.Ranges) {
      int32_t& start = AAxis == saRows ? range.StartRow : range.StartCol;
      int32_t& end = AAxis == saRows ? range.EndRow : range.EndCol;
      start = detail::SlidLine(start, AStart, ADelta);
      end = detail::SlidLine(end, AStart, ADelta);
    }
  }
  FCompiled.reset();
}

void TConditionalFormatList::Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (ACount < 1 || AStart == ADest) return;
  for (TConditionalFormatRule& rule : FRules)
    for (TCellRange& range : rule.Ranges) range = AdjustRangeForMove(range, AAxis, AStart, ACount, ADest);
  FCompiled.reset();
}

}  // namespace tessarine
