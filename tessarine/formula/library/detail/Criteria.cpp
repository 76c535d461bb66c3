#include <tessarine/formula/library/detail/Criteria.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

struct TCriterionText {
  TCriterionOperator Operator = coEqual;
  std::u16string_view Operand;
};

TCriterionText SplitCriterion(std::u16string_view AText) {
  if (AText.starts_with(u"<>")) return {coDiffers, AText.substr(2)};
  if (AText.starts_with(u"<=")) return {coLessOrEqual, AText.substr(2)};
  if (AText.starts_with(u">=")) return {coGreaterOrEqual, AText.substr(2)};
  if (AText.starts_with(u"<")) return {coLess, AText.substr(1)};
  if (AText.starts_with(u"=")) return {coEqual, AText.substr(1)};
  if (AText.starts_with(u">")) return {coGreater, AText.substr(1)};
  return {coEqual, AText};
}

bool HoldsBetween(TCriterionOperator AOperator, double ACell, double AOperand) {
  switch (AOperator) {
    case coEqual: return ACell == AOperand;
    case coDiffers: return ACell != AOperand;
    case coLess: return ACell < AOperand;
    case coLessOrEqual: return ACell <= AOperand;
    case coGreater: return ACell > AOperand;
    case coGreaterOrEqual: return ACell >= AOperand;
  }
  return false;
}

/// Whether a unit occurs in the display text of some number, in either case ("INF" and "NAN" included).
bool IsNumberUnit(char16_t AUnit) {
  return IsAsciiDigit(AUnit) || std::u16string_view(u".+-EINFA").find(AsciiUpper(AUnit)) != std::u16string_view::npos;
}

TText DisplayTextOf(const TValueView& AValue) {
  if (AValue.Kind == cvkText || AValue.Kind == cvkFormula) return TText::Share(AValue.Block);
  return TCellValue::FromView(AValue).ToDisplayString();
}

/// Whether a text could be the display text of a number.
bool MayBeNumberText(std::u16string_view AText) {
  return !AText.empty() && std::all_of(AText.begin(), AText.end(), IsNumberUnit);
}

}  // namespace

TMatchKey::TMatchKey(const TValueView& AValue) {
  FIsNumber = AsNumber(AValue, FNumber);
  FHasText = AValue.Kind != cvkNumber;
  if (!FHasText) return;
  FText = DisplayTextOf(AValue);
  FMayBeNumberText = MayBeNumberText(FText.View());
}

TMatchKey::TMatchKey(TText AText) : FText(std::move(AText)) {
  FIsNumber = TextAsNumber(FText.View(), FNumber);
  FMayBeNumberText = MayBeNumberText(FText.View());
}

/// Of a key made from a number.
void TMatchKey::MakeText() const {
  FText = TCellValue::FromNumber(FNumber).ToDisplayString();
  FMayBeNumberText = true;
  FHasText = true;
}

bool TMatchKey::EqualsText(const TValueView& ACell) const {
  const std::u16string_view text = Text();
  // A number's text is only made when the key could be one.
  if (ACell.Kind == cvkNumber && !FMayBeNumberText) return false;
  return EqualAsciiNoCase(DisplayView(ACell, FBuffer), text);
}

bool TMatchKey::Equals(const TValueView& ACell) const {
  if (!FIsNumber) return EqualsText(ACell);
  double number = 0;
  return AsNumber(ACell, number) ? number == FNumber : EqualsText(ACell);
}

TCriterion::TCriterion(const TValueView& ACriterion) {
  const TText text = DisplayTextOf(ACriterion);
  const TCriterionText split = SplitCriterion(text.View());
  FOperator = split.Operator;
  FOperand = TMatchKey(split.Operand.size() == text.Length() ? text : TText(split.Operand));
  FMatchesBlank = Matches(TValueView());
}

bool TCriterion::Matches(const TValueView& ACell) const {
  if (FOperator == coEqual) return FOperand.Equals(ACell);
  if (FOperator == coDiffers) return !FOperand.Equals(ACell);
  double number = 0;
  return FOperand.IsNumber() && AsNumber(ACell, number) && HoldsBetween(FOperator, number, FOperand.Number());
}

bool EqualsKeyPlain(const TValueView& AKey, const TValueView& ACell) {
  double key = 0;
  double cell = 0;
  if (AsNumber(AKey, key) && AsNumber(ACell, cell)) return key == cell;
  return EqualDisplayText(AKey, ACell);
}

bool MatchesCriteriaPlain(const TValueView& ACell, const TValueView& ACriterion) {
  const std::u16string text(TCellValue::FromView(ACriterion).ToDisplayString().View());
  const TCriterionText criterion = SplitCriterion(text);
  double cell = 0;
  double operand = 0;
  if (AsNumber(ACell, cell) && TextAsNumber(criterion.Operand, operand)) {
    return HoldsBetween(criterion.Operator, cell, operand);
  }
  std::u16string buffer;
  const bool equal = EqualAsciiNoCase(DisplayView(ACell, buffer), criterion.Operand);
  if (criterion.Operator == coEqual) return equal;
  return criterion.Operator == coDiffers && !equal;
}

}  // namespace tessarine::detail
