#include <tessarine/core/lists/DataValidations.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include <tessarine/core/lists/FloatTolerance.h>
#include <tessarine/core/lists/detail/RectIndex.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr std::u16string_view kDefaultMessage =
    u"This value doesn't match the data validation restrictions for this cell.";
constexpr std::u16string_view kDefaultTitle = u"Data Validation";

double BoundOf(std::u16string_view AText) {
  double bound = 0;
  return TryStrToFloat(TrimSpaces(AText), CurrentFormatSettings(), bound) ? bound : 0;
}

bool PassesOperator(const TDataValidationRule& ARule, double AValue) {
  const double first = BoundOf(ARule.Formula1);
  const double second = BoundOf(ARule.Formula2);
  switch (ARule.Operator) {
    case dvoBetween: return AValue >= std::min(first, second) && AValue <= std::max(first, second);
    case dvoNotBetween: return AValue < std::min(first, second) || AValue > std::max(first, second);
    case dvoEqual: return IsSameFloat(AValue, first);
    case dvoNotEqual: return !IsSameFloat(AValue, first);
    case dvoGreaterThan: return AValue > first;
    case dvoLessThan: return AValue < first;
    case dvoGreaterEqual: return AValue >= first;
    case dvoLessEqual: return AValue <= first;
  }
  return true;
}

/// The number by which a text is judged, nothing when it is none of the rule's type.
std::optional<double> MeasureOf(TDataValidationType AType, std::u16string_view AText) {
  const TFormatSettings& settings = CurrentFormatSettings();
  double value = 0;
  if (AType == dvtTextLength) return static_cast<double>(AText.size());
  if (TryStrToFloat(AText, settings, value)) {
    if (AType == dvtWhole && value != std::trunc(value)) return std::nullopt;
    return value;
  }
  const bool hasTime = AText.find(settings.TimeSeparator) != AText.npos;
  if (AType == dvtDate && !hasTime && TryStrToDate(AText, settings, value)) return std::trunc(value);
  return std::nullopt;
}

bool IsListed(std::span<const TText> AItems, std::u16string_view AText) {
  return std::any_of(AItems.begin(), AItems.end(), [&](const TText& AItem) { return EqualAsciiNoCase(AItem, AText); });
}

bool Passes(const TDataValidationRule& ARule, std::u16string_view AText, std::span<const TText> AItems) {
  switch (ARule.ValidationType) {
    case dvtNone:
    case dvtCustom: return true;
    case dvtList:
      return AItems.empty() ? IsListed(TDataValidationList::ParseListItems(ARule.Formula1), AText)
                            : IsListed(AItems, AText);
    case dvtWhole:
    case dvtDecimal:
    case dvtDate:
    case dvtTextLength: {
      const std::optional<double> value = MeasureOf(ARule.ValidationType, AText);
      return value && PassesOperator(ARule, *value);
    }
  }
  return true;
}

bool IsQuoted(std::u16string_view AText) { return AText.size() >= 2 && AText.front() == u'"' && AText.back() == u'"'; }

/// Numbers, words and the items of a literal list are no formulas.
bool IsFormulaOperand(std::u16string_view AText) {
  const std::u16string_view text = TrimSpaces(AText);
  return text.starts_with(u'=') || (text.find(u',') == text.npos && TDataValidationList::IsListRangeFormula(text));
}

}  // namespace

TDataValidationList::TDataValidationList() = default;
TDataValidationList::~TDataValidationList() = default;

void TDataValidationList::DropIndex() { FIndex.reset(); }

void TDataValidationList::Clear() {
  FRules.clear();
  DropIndex();
}

void TDataValidationList::AddRule(TDataValidationRule ARule) {
  FRules.push_back(std::move(ARule));
  DropIndex();
}

void TDataValidationList::ReplaceRule(size_t AIndex, TDataValidationRule ARule) {
  if (AIndex >= FRules.size()) return;
  FRules[AIndex] = std::move(ARule);
  DropIndex();
}

void TDataValidationList::DeleteRule(size_t AIndex) {
  if (AIndex >= FRules.size()) return;
  FRules.erase(FRules.begin() + static_cast<ptrdiff_t>(AIndex));
  DropIndex();
}

TDataValidationRule* TDataValidationList::FindNamed(std::u16string_view AName) {
  if (AName.empty()) return nullptr;
  const auto found = std::find_if(FRules.rbegin(), FRules.rend(), [&](const TDataValidationRule& ARule) {
    return EqualAsciiNoCase(ARule.Name, AName);
  });
  return found == FRules.rend() ? nullptr : &*found;
}

const TDataValidationRule* TDataValidationList::FindByName(std::u16string_view AName) const {
  return const_cast<TDataValidationList*>(this)->FindNamed(AName);
}

void TDataValidationList::AddNamedPrompt(TText AName, TText APrompt, TText ATitle, bool AShow) {
  TDataValidationRule* rule = FindNamed(AName);
  if (!rule) {
    FRules.push_back({});
    rule = &FRules.back();
    rule->Name = std::move(AName);
    rule->AllowBlank = true;
  }
  rule->Prompt = std::move(APrompt);
  rule->PromptTitle = std::move(ATitle);
  rule->ShowInputMessage = AShow;
}

void TDataValidationList::BindNameToRange(const TText& AName, const TCellRange& ARange) {
  if (!FindNamed(AName)) AddNamedPrompt(AName, TText(), TText(), true);
  if (TDataValidationRule* rule = AName.IsEmpty() ? &FRules.back() : FindNamed(AName)) rule->Ranges.push_back(ARange);
  DropIndex();
}

const TDataValidationRule* TDataValidationList::FindRuleAt(int32_t ACol, int32_t ARow) const {
  if (FRules.empty()) return nullptr;
  if (!FIndex) {
    FIndex = std::make_unique<detail::TRectIndex>();
    for (size_t i = 0; i < FRules.size(); ++i)
      for (const TCellRange& range : FRules[i].Ranges) FIndex->Insert(static_cast<uint32_t>(i), range.Normalize());
  }
  size_t first = FRules.size();
  FIndex->VisitAt(ACol, ARow, [&](uint32_t ARule) {
    const auto& ranges = FRules[ARule].Ranges;
    const bool covers = ARule < first && std::any_of(ranges.begin(), ranges.end(), [&](const TCellRange& ARange) {
                          return ARange.Contains(ACol, ARow);
                        });
    if (covers) first = ARule;
    return covers;
  });
  return first < FRules.size() ? &FRules[first] : nullptr;
}

std::optional<TValidationPrompt> TDataValidationList::FindPromptAt(int32_t ACol, int32_t ARow) const {
  const TDataValidationRule* rule = FindRuleAt(ACol, ARow);
  if (!rule || !rule->ShowInputMessage || rule->Prompt.IsEmpty()) return std::nullopt;
  return TValidationPrompt{rule->PromptTitle, rule->Prompt};
}

TValidationVerdict TDataValidationList::ValidateValue(int32_t ACol, int32_t ARow, std::u16string_view AText,
                                                      std::span<const TText> AItems) const {
  TValidationVerdict verdict;
  const TDataValidationRule* rule = FindRuleAt(ACol, ARow);
  if (!rule || rule->ValidationType == dvtNone) return verdict;
  const std::u16string_view text = TrimSpaces(AText);
  if ((text.empty() && rule->AllowBlank) || Passes(*rule, text, AItems)) return verdict;
  verdict.IsAccepted = false;
  verdict.Style = rule->ErrorStyle;
  if (rule->ShowErrorMessage) {
    verdict.Title = rule->ErrorTitle;
    verdict.Message = rule->Error;
  }
  if (verdict.Message.IsEmpty()) verdict.Message = kDefaultMessage;
  if (verdict.Title.IsEmpty()) verdict.Title = kDefaultTitle;
  return verdict;
}

bool TDataValidationList::IsListRangeFormula(std::u16string_view ASource) {
  std::u16string_view source = TrimSpaces(ASource);
  if (source.empty() || IsQuoted(source)) return false;
  if (source.front() == u'=') source.remove_prefix(1);
  std::u16string text(source);
  std::erase(text, u'$');
  if (const std::optional<TSheetRefParts> parts = SplitSheetRefText(text)) {
    text = parts->Second.empty() ? parts->First : parts->First + u':' + parts->Second;
  }
  const TCellRange range = TCellRange::FromA1(text);
  return range.StartCol >= 1 && range.StartRow >= 1;
}

std::vector<TText> TDataValidationList::ParseListItems(std::u16string_view ASource) {
  std::u16string_view source = TrimSpaces(ASource);
  if (IsQuoted(source)) source = source.substr(1, source.size() - 2);
  std::vector<TText> items;
  if (source.empty() || IsListRangeFormula(source)) return items;
  while (!source.empty()) {
    const size_t comma = std::min(source.find(u','), source.size());
    const std::u16string_view item = TrimSpaces(source.substr(0, comma));
    if (!item.empty()) items.emplace_back(item);
    source.remove_prefix(std::min(comma + 1, source.size()));
  }
  return items;
}

void TDataValidationList::Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  std::erase_if(FRules, [&](TDataValidationRule& ARule) {
    std::vector<TCellRange> kept;
    for (const TCellRange& range : ARule.Ranges) {
      const TAdjustedRange adjusted = AdjustRange(range, AAxis, AStart, ADelta);
      if (!adjusted.Deleted) kept.push_back(adjusted.Range);
    }
    ARule.Ranges = std::move(kept);
    return ARule.Ranges.empty() && ARule.Name.IsEmpty();
  });
  DropIndex();
}

void TDataValidationList::Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (ACount < 1 || AStart == ADest) return;
  for (TDataValidationRule& rule : FRules)
    for (TCellRange& range : rule.Ranges) range = AdjustRangeForMove(range, AAxis, AStart, ACount, ADest);
  DropIndex();
}

template <class TRewrite>
void TDataValidationList::RewriteOperands(TRewrite&& ARewrite) {
  for (TDataValidationRule& rule : FRules) {
    for (TText* operand : {&rule.Formula1, &rule.Formula2})
      if (IsFormulaOperand(*operand)) *operand = ARewrite(std::u16string_view(*operand));
  }
}

void TDataValidationList::AdjustFormulas(std::u16string_view ASheetName, bool AOnSheet, bool ARows, int64_t AStart,
                                         int64_t ADelta) {
  RewriteOperands([&](std::u16string_view AText) {
    return AdjustFormula(AText, ASheetName, AOnSheet, ARows ? saRows : saColumns, AStart, ADelta);
  });
}

void TDataValidationList::AdjustFormulasForMove(std::u16string_view ASheetName, bool AOnSheet, bool ARows,
                                                int64_t AStart, int64_t ACount, int64_t ADest) {
  RewriteOperands([&](std::u16string_view AText) {
    return AdjustFormulaForMove(AText, ASheetName, AOnSheet, ARows ? saRows : saColumns, AStart, ACount, ADest);
  });
}

}  // namespace tessarine
