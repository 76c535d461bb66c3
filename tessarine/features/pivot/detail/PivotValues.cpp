#include <tessarine/features/pivot/detail/PivotValues.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// A whole number that fits 32 bits, as digits.
std::u16string DigitsOf(int64_t ANumber) { return GeneralNumberText(static_cast<double>(ANumber)); }

/// The text of a date under a grouping; false for a day outside the calendar.
bool TryDateGroupText(TPivotDateGroup AGroup, double ASerial, std::u16string& AText) {
  static constexpr std::u16string_view kPatterns[] = {
      u"", u"", u"", u"yyyy-mm", u"yyyy-mm-dd", u"yyyy-mm-dd hh", u"yyyy-mm-dd hh:nn"};
  const TDateParts date = DecodeDate(ASerial);
  if (date.Year == 0) return false;
  if (AGroup == pdgYears) {
    AText = DigitsOf(date.Year);
  } else if (AGroup == pdgQuarters) {
    AText = u"Q" + DigitsOf((date.Month + 2) / 3) + u" " + DigitsOf(date.Year);
  } else if (static_cast<size_t>(AGroup) < std::size(kPatterns)) {
    return TryFormatDateTime(kPatterns[static_cast<size_t>(AGroup)], ASerial, CurrentFormatSettings(), AText);
  } else {
    return false;
  }
  return true;
}

TCellValue GroupedDate(TPivotDateGroup AGroup, const TCellValue& AValue) {
  double serial = AValue.Number;
  const bool isDate =
      AValue.Kind == cvkNumber ||
      (AValue.Kind == cvkText && TryStrToDate(TrimSpaces(AValue.Text), CurrentFormatSettings(), serial));
  std::u16string text;
  return isDate && TryDateGroupText(AGroup, serial, text) ? TCellValue::FromText(text) : AValue;
}

/// The bin of a number. What is no number by kind has 0 for its number, also a text that reads as another one.
TCellValue GroupedNumber(const TPivotGroupDef& AGroup, const TCellValue& AValue) {
  const double bin = std::floor((AValue.Number - AGroup.NumStart) / AGroup.NumBy);
  return TCellValue::FromText(GeneralNumberText(AGroup.NumStart + bin * AGroup.NumBy) + u"-" +
                              GeneralNumberText(AGroup.NumStart + (bin + 1) * AGroup.NumBy));
}

/// The caption of the first manual group that holds the value's label; false when none does.
bool TryManualGroup(const TPivotGroupDef& AGroup, const TCellValue& AValue, TCellValue& AResult) {
  if (AGroup.ManualItems.empty()) return false;
  const TText label = PivotLabel(AValue);
  for (size_t i = 0; i < AGroup.ManualItems.size(); ++i) {
    const auto& items = AGroup.ManualItems[i];
    if (std::none_of(items.begin(), items.end(), [&](const TText& AItem) { return EqualAsciiNoCase(AItem, label); }))
      continue;
    const bool isNamed = i < AGroup.GroupNames.size() && !AGroup.GroupNames[i].IsEmpty();
    AResult =
        TCellValue::FromText(isNamed ? AGroup.GroupNames[i] : TText(u"Group" + DigitsOf(static_cast<int64_t>(i) + 1)));
    return true;
  }
  return false;
}

}  // namespace

bool TryPivotNumber(const TValueView& AValue, double& ANumber) {
  return AValue.Kind != cvkEmpty && AsNumber(AValue, ANumber);
}

void AppendKeyPart(const TValueView& AValue, std::u16string& AKey) {
  switch (AValue.Kind) {
    case cvkNumber:
      AKey += u'N';
      AppendGeneralNumber(AValue.Number, AKey);
      return;
    case cvkBoolean: AKey += AValue.BooleanValue ? u"BT" : u"BF"; return;
    case cvkError:
      AKey += u'E';
      AKey += DigitsOf(static_cast<int64_t>(AValue.ErrorCode));
      return;
    case cvkText:
    case cvkFormula:
    case cvkEmpty: break;
  }
  AKey += u'T';
  AKey += AValue.Kind == cvkEmpty ? std::u16string_view() : AValue.Text();
}

TText PivotLabel(const TCellValue& AValue) {
  static const TText blank = TText::Immortal(u"(blank)");
  TText text = AValue.ToDisplayString();
  return text.IsEmpty() ? blank : text;
}

TCellValue GroupedPivotValue(const TPivotTable& ATable, int32_t AField, const TCellValue& AValue) {
  double number = 0;
  for (const TPivotGroupDef& group : ATable.Groups) {
    if (group.FieldIndex != AField) continue;
    if (group.DateGroup != pdgNone) return GroupedDate(group.DateGroup, AValue);
    if (group.NumBy > 0 && TryPivotNumber(AValue.View(), number)) return GroupedNumber(group, AValue);
    if (TCellValue result; TryManualGroup(group, AValue, result)) return result;
  }
  return AValue;
}

TPivotFormula::TPivotFormula(const TPivotCache& ACache, std::u16string_view AText) {
  const std::u16string_view text = TrimSpaces(AText);
  const size_t at = text.find_first_of(u"*+-/", 1);
  if (at == std::u16string_view::npos) {
    FLeft = text.empty() ? -1 : ACache.FieldIndex(text);
    return;
  }
  FOperator = text[at];
  FLeft = ACache.FieldIndex(TrimSpaces(text.substr(0, at)));
  const std::u16string_view right = TrimSpaces(text.substr(at + 1));
  FRight = ACache.FieldIndex(right);
  FHasLiteral = FRight < 0 && TryParseFileNumber(right, FLiteral);
}

TCellValue TPivotFormula::Combine(double ALeft, double ARight) const {
  switch (FOperator) {
    case u'*': return NumberOrError(ALeft * ARight);
    case u'+': return NumberOrError(ALeft + ARight);
    case u'-': return NumberOrError(ALeft - ARight);
    default: return ARight == 0 ? TCellValue::FromError(ceDiv0) : NumberOrError(ALeft / ARight);
  }
}

TCellValue TPivotFormula::Evaluate(const TPivotRecords& ARecords, size_t ARecord) const {
  const auto view = [&](int32_t AField) {
    return AField < 0 ? TValueView() : ARecords.View(ARecord, static_cast<size_t>(AField));
  };
  if (FOperator == 0) return TCellValue::FromView(view(FLeft));
  double left = 0;
  double right = FLiteral;
  if (!TryPivotNumber(view(FLeft), left) || !(FHasLiteral || TryPivotNumber(view(FRight), right)))
    return TCellValue::FromError(ceValue);
  return Combine(left, right);
}

const TPivotColumn* TPivotFields::Column(int32_t AField) {
  if (AField < 0 || static_cast<size_t>(AField) >= FieldCount()) return nullptr;
  const auto field = static_cast<size_t>(AField);
  if (field < FCache.FieldCount()) return &FCache.Records().Column(field);
  const auto [found, isNew] = FCalculated.try_emplace(field - FCache.FieldCount());
  TPivotColumn& column = found->second;
  if (isNew) {
    const TPivotFormula formula(FCache, FTable.CalcFields[found->first].Formula);
    column.Resize(RecordCount());
    for (size_t record = 0; record < RecordCount(); ++record)
      column.SetWord(record, column.Intern(formula.Evaluate(FCache.Records(), record).View()));
  }
  return &column;
}

}  // namespace tessarine::detail
