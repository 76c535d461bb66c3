#include <tessarine/io/xlsx/detail/XlsxValidations.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include <tessarine/core/lists/SavedView.h>
#include <tessarine/formula/FormulaDialect.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxFormulas.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

template <class TValue>
struct TValidationWord {
  std::string_view Word;
  TValue Value;
};

constexpr TValidationWord<TDataValidationType> kValidationTypes[] = {
    {"list", dvtList}, {"whole", dvtWhole},           {"decimal", dvtDecimal},
    {"date", dvtDate}, {"textLength", dvtTextLength}, {"custom", dvtCustom},
};

constexpr TValidationWord<TDataValidationOperator> kValidationOperators[] = {
    {"notBetween", dvoNotBetween},     {"equal", dvoEqual},       {"notEqual", dvoNotEqual},
    {"greaterThan", dvoGreaterThan},   {"lessThan", dvoLessThan}, {"greaterThanOrEqual", dvoGreaterEqual},
    {"lessThanOrEqual", dvoLessEqual},
};

constexpr TValidationWord<TDataValidationErrorStyle> kValidationStyles[] = {
    {"warning", dvesWarning},
    {"information", dvesInformation},
};

template <class TValue, size_t Size>
std::optional<TValue> ValidationWord(const TValidationWord<TValue> (&AWords)[Size], std::string_view AText) {
  for (const auto& word : AWords) {
    if (EqualXmlNames(AText, word.Word)) return word.Value;
  }
  return std::nullopt;
}

/// An operand without what stands for other workbooks and placeholder calls. The "=" that a call behind a placeholder
/// comes with goes: operands have none.
TText OperandText(std::string_view AText) {
  std::u16string text(XlsxText(AText).View());
  StripXlsxWorkbookIndexes(text);
  StripXlsxParameterPrefixes(text);
  const std::u16string_view trimmed = TrimSpaces(text);
  std::u16string unwrapped = UnwrapXlUdfDummyFunction(trimmed);
  if (unwrapped != trimmed) unwrapped.erase(0, unwrapped.starts_with(u'=') ? 1 : 0);
  return TText(unwrapped);
}

/// A literal list with each quote in it once, as the list shows it. Anything else as it is.
TText ListOperand(const TText& AOperand) {
  const std::u16string_view text = AOperand;
  if (text.size() < 2 || text.front() != u'"' || text.back() != u'"') return AOperand;
  std::u16string literal = u"\"";
  for (size_t at = 1; at + 1 < text.size(); ++at) {
    literal += text[at];
    if (text[at] != u'"') continue;
    if (at + 2 >= text.size() || text[++at] != u'"') return AOperand;
  }
  return TText(literal += u'"');
}

void ReadValidationTexts(TXmlAttributes AAttributes, TDataValidationRule& ARule) {
  ARule.PromptTitle = XlsxText(XlsxAttr(AAttributes, "promptTitle"));
  ARule.Prompt = XlsxText(XlsxAttr(AAttributes, "prompt"));
  ARule.ErrorTitle = XlsxText(XlsxAttr(AAttributes, "errorTitle"));
  ARule.Error = XlsxText(XlsxAttr(AAttributes, "error"));
  ARule.ShowInputMessage = !ARule.Prompt.IsEmpty() && !XlsxAttrIsOff(AAttributes, "showInputMessage");
  ARule.ShowErrorMessage = !XlsxAttrIsOff(AAttributes, "showErrorMessage");
  ARule.AllowBlank = !XlsxAttrIsOff(AAttributes, "allowBlank");
}

/// Of each operand the first counts.
void ReadValidationOperands(TXmlReader& AReader, TDataValidationRule& ARule) {
  bool isRead[2] = {};
  std::string text;
  for (TXmlEvent event = AReader.Next(); event != xeEndElement && event != xeEnd; event = AReader.Next()) {
    if (event != xeStartElement) continue;
    const bool isFirst = AReader.LocalNameIs("formula1");
    if ((!isFirst && !AReader.LocalNameIs("formula2")) || std::exchange(isRead[isFirst ? 0 : 1], true)) {
      AReader.SkipElement();
      continue;
    }
    ReadXlsxText(AReader, text);
    const TText operand = OperandText(text);
    (isFirst ? ARule.Formula1 : ARule.Formula2) = ARule.ValidationType == dvtList ? ListOperand(operand) : operand;
  }
}

}  // namespace

std::vector<TDataValidationRule> ReadXlsxValidations(TXmlReader& AReader, size_t AMaxRecords,
                                                     const TXlsxReport& AReport) {
  std::vector<TDataValidationRule> rules;
  size_t position = 0;
  size_t records = 0;
  ForEachXlsxChild(AReader, "dataValidation", [&] {
    const TXmlAttributes attributes = AReader.Attributes();
    const std::string_view typeText = XlsxTrim(XlsxAttr(attributes, "type"));
    const auto type = ValidationWord(kValidationTypes, typeText);
    const auto ranges = FindXmlAttribute(attributes, "sqref");
    ++position;
    if (!type || !ranges) {
      AReport.Drop("data validation", 1, typeText.empty() ? "without a type" : typeText);
      AReader.SkipElement();
      return;
    }
    TDataValidationRule rule;
    rule.Name = TText::FromUtf8("xlsx" + std::to_string(position));
    rule.Ranges = TSheetSavedView::ParseSqref(Utf8ToUtf16(*ranges));
    records += 1 + rule.Ranges.size();
    if (records > AMaxRecords) {
      throw ELimit(AReader.PartName() + ": the data validations have more rules and ranges than the limit of " +
                   std::to_string(AMaxRecords));
    }
    rule.ValidationType = *type;
    rule.Operator = ValidationWord(kValidationOperators, XlsxAttr(attributes, "operator")).value_or(dvoBetween);
    rule.ErrorStyle = ValidationWord(kValidationStyles, XlsxAttr(attributes, "errorStyle")).value_or(dvesStop);
    ReadValidationTexts(attributes, rule);
    ReadValidationOperands(AReader, rule);
    rules.push_back(std::move(rule));
  });
  return rules;
}

}  // namespace tessarine::detail
