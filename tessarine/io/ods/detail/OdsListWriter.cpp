#include <tessarine/io/ods/detail/OdsListWriter.h>

#include <map>
#include <set>
#include <string_view>
#include <utility>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/io/ods/detail/OdsAddress.h>
#include <tessarine/io/ods/detail/OdsFormula.h>
#include <tessarine/io/ods/detail/OdsTextWriter.h>
#include <tessarine/io/ods/detail/OdsValidationReader.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

void AppendTextPair(const char* AName, std::u16string_view AValue, std::string& AOut) {
  AOut.append(" ").append(AName).append("=\"");
  AppendXmlAttribute(AValue, AOut);
  AOut += '"';
}

void AppendWordPair(const char* AName, const char* AValue, std::string& AOut) {
  AOut.append(" ").append(AName).append("=\"").append(AValue).append("\"");
}

const char* TrueOrFalse(bool AValue) { return AValue ? "true" : "false"; }

/// Gives out names that differ in more than case.
class TUniqueNames {
 public:
  std::u16string Take(std::u16string_view AName) {
    std::u16string name(AName);
    while (!FTaken.insert(ToAsciiLower(name)).second)
      name = std::u16string(AName) + u"_" + Utf8ToUtf16(std::to_string(++FNumbers[ToAsciiLower(AName)] + 1));
    return name;
  }

 private:
  std::set<std::u16string> FTaken;
  std::map<std::u16string, int> FNumbers;  // given out behind each name
};

// ---- validations

/// An operand or condition as formulas of files are, without the prefix.
std::u16string ExpressionOf(std::u16string_view AText, bool AIsLiteral) {
  std::u16string_view text = TrimSpaces(AText);
  if (text.starts_with(u'=')) text.remove_prefix(1);
  std::u16string expression = OdsFormulaFromExcel(std::u16string(u"=").append(text), AIsLiteral);
  constexpr std::u16string_view kPrefix = u"of:=";
  return expression.starts_with(kPrefix) ? expression.substr(kPrefix.size()) : expression;
}

std::u16string ListCondition(std::u16string_view ASource, const TOdsRuleForm& AForm) {
  std::u16string condition = u"cell-content-is-in-list(";
  if (AForm.SourceIsName || TDataValidationList::IsListRangeFormula(ASource) || TrimSpaces(ASource).starts_with(u'='))
    return condition.append(ExpressionOf(ASource, AForm.IsLiteral)).append(u")");
  bool isFirst = true;
  for (const TText& item : TDataValidationList::ParseListItems(ASource)) {
    condition += isFirst ? u"\"" : u";\"";
    isFirst = false;
    for (const char16_t unit : item.View()) condition.append(unit == u'"' ? 2 : 1, unit);
    condition += u'"';
  }
  return condition + u")";
}

std::u16string ComparisonOf(const TDataValidationRule& ARule, bool AIsLiteral) {
  const std::u16string subject = ARule.ValidationType == dvtTextLength ? u"cell-content-text-length" : u"cell-content";
  const bool isBetween = ARule.Operator == dvoBetween || ARule.Operator == dvoNotBetween;
  if (isBetween) {
    const char16_t* test = ARule.Operator == dvoBetween ? u"-is-between(" : u"-is-not-between(";
    return subject + test + ExpressionOf(ARule.Formula1, AIsLiteral) + u"," + ExpressionOf(ARule.Formula2, AIsLiteral) +
           u")";
  }
  const char16_t* sign = u"=";
  switch (ARule.Operator) {
    case dvoNotEqual: sign = u"!="; break;
    case dvoGreaterThan: sign = u">"; break;
    case dvoLessThan: sign = u"<"; break;
    case dvoGreaterEqual: sign = u">="; break;
    case dvoLessEqual: sign = u"<="; break;
    case dvoBetween:
    case dvoNotBetween:
    case dvoEqual: break;
  }
  return subject + u"()" + sign + ExpressionOf(ARule.Formula1, AIsLiteral);
}

}  // namespace

std::u16string OdsValidationCondition(const TDataValidationRule& ARule, const TOdsRuleForm& AForm) {
  const auto comparison = [&] { return ComparisonOf(ARule, AForm.IsLiteral); };
  switch (ARule.ValidationType) {
    case dvtList: return u"of:" + ListCondition(ARule.Formula1, AForm);
    case dvtWhole: return u"of:cell-content-is-whole-number() and " + comparison();
    case dvtDecimal: return u"of:cell-content-is-decimal-number() and " + comparison();
    case dvtDate: return u"of:cell-content-is-date() and " + comparison();
    case dvtTextLength: return u"of:" + comparison();
    case dvtCustom: return u"of:is-true-formula(" + ExpressionOf(ARule.Formula1, AForm.IsLiteral) + u")";
    case dvtNone: break;
  }
  return {};
}

namespace {

/// Operands that the condition does not give back in their own spelling.
void AppendOperandMarks(const TDataValidationRule& ARule, std::u16string_view ACondition, std::string& AOut) {
  TDataValidationRule back;
  if (!OdsParseValidationCondition(Utf16ToUtf8(ACondition), back, true)) return;
  if (back.Formula1 != ARule.Formula1) AppendTextPair("tessarine:exact-first", ARule.Formula1, AOut);
  if (back.Formula2 != ARule.Formula2) AppendTextPair("tessarine:exact-second", ARule.Formula2, AOut);
}

/// Whether the items of a list are a name that the workbook defines.
bool IsDefinedName(const TWorkbook& AWorkbook, const TDataValidationRule& ARule) {
  const std::u16string_view source = TrimSpaces(ARule.Formula1.View());
  return ARule.ValidationType == dvtList && !source.empty() && source.front() != u'"' &&
         AWorkbook.FindNamedFormula(source).has_value();
}

const char* MessageType(TDataValidationErrorStyle AStyle) {
  switch (AStyle) {
    case dvesWarning: return "warning";
    case dvesInformation: return "information";
    case dvesStop: break;
  }
  return "stop";
}

void AppendMessage(const char* AElement, const char* AType, std::u16string_view ATitle, std::u16string_view AText,
                   bool AIsShown, bool AIsLiteral, std::string& AOut) {
  AOut.append("<").append(AElement);
  if (AType) AppendWordPair("table:message-type", AType, AOut);
  if (!ATitle.empty()) AppendTextPair("table:title", ATitle, AOut);
  AppendWordPair("table:display", TrueOrFalse(AIsShown), AOut);
  if (!AIsLiteral && !OdsLineEndsComeBack(AText)) AppendTextPair("tessarine:exact-text", AText, AOut);
  AOut += '>';
  if (!AText.empty()) AppendOdsParagraphs(AText, {}, AOut);
  AOut.append("</").append(AElement).append(">");
}

void AppendValidation(const TWorksheet& ASheet, const TDataValidationRule& ARule, const std::string& AName,
                      const TOdsRuleForm& AForm, std::string& AOut) {
  AOut.append("<table:content-validation table:name=\"");
  AppendXmlAttribute(AName, AOut);
  AOut += '"';
  const std::u16string condition = OdsValidationCondition(ARule, AForm);
  if (!condition.empty()) AppendTextPair("table:condition", condition, AOut);
  if (!AForm.IsLiteral) {
    if (!condition.empty()) AppendOperandMarks(ARule, condition, AOut);
    if (AName != ARule.Name.ToUtf8()) AppendTextPair("tessarine:exact-name", ARule.Name, AOut);
  }
  AppendWordPair("table:allow-empty-cell", TrueOrFalse(ARule.AllowBlank), AOut);
  if (ARule.ValidationType == dvtList) AppendWordPair("table:display-list", "unsorted", AOut);
  const TCellRange first = ARule.Ranges.empty() ? TCellRange{1, 1, 1, 1} : ARule.Ranges[0].Normalize();
  AppendTextPair("table:base-cell-address",
                 OdsSheetRangeAddress(ASheet.Name(), {first.StartCol, first.StartRow, first.StartCol, first.StartRow}),
                 AOut);
  AOut += '>';
  if (ARule.ShowInputMessage || !ARule.Prompt.IsEmpty() || !ARule.PromptTitle.IsEmpty())
    AppendMessage("table:help-message", nullptr, ARule.PromptTitle, ARule.Prompt, ARule.ShowInputMessage,
                  AForm.IsLiteral, AOut);
  AppendMessage("table:error-message", MessageType(ARule.ErrorStyle), ARule.ErrorTitle, ARule.Error,
                ARule.ShowErrorMessage, AForm.IsLiteral, AOut);
  AOut += "</table:content-validation>";
}

// ---- filters and tables

/// Whether a filter is the one of a table: its range, or its range less the totals.
bool IsFilterOf(const TSheetAutoFilter& AFilter, const TSheetTable& ATable) {
  if (!AFilter.IsEnabled()) return false;
  TCellRange ref = ATable.Ref();
  const TCellRange range = AFilter.Range().Normalize();
  if (range == ref) return true;
  --ref.EndRow;
  return ATable.HasTotalsRow() && range == ref;
}

void AppendCondition(int32_t AField, bool AMatchCase, const char* AOperator, std::u16string_view AValue,
                     std::string& AOut) {
  AOut.append("<table:filter-condition table:field-number=\"").append(std::to_string(AField)).append("\"");
  AppendTextPair("table:value", AValue, AOut);
  AppendWordPair("table:operator", AOperator, AOut);
  if (AMatchCase) AppendWordPair("table:case-sensitive", "true", AOut);
  AOut += "/>";
}

/// A regular expression for texts that contain AText.
std::u16string ContainsPattern(std::u16string_view AText) {
  std::u16string pattern = u".*";
  for (const char16_t unit : AText) {
    if (std::u16string_view(u".*+?()[]{}|^$\\").find(unit) != std::u16string_view::npos) pattern += u'\\';
    pattern += unit;
  }
  return pattern + u".*";
}

void AppendCriterion(const TAutoFilterColumn& AColumn, int32_t AFirstCol, std::string& AOut) {
  const int32_t field = AColumn.Col - AFirstCol;
  if (!AColumn.Contains.IsEmpty())
    return AppendCondition(field, AColumn.MatchCase, "match", ContainsPattern(AColumn.Contains), AOut);
  if (AColumn.Values.size() > 1) AOut += "<table:filter-or>";
  for (const TText& value : AColumn.Values)
    AppendCondition(field, AColumn.MatchCase, value.IsEmpty() ? "empty" : "=", value, AOut);
  if (AColumn.Values.size() > 1) AOut += "</table:filter-or>";
}

void AppendCriteria(const TSheetAutoFilter& AFilter, std::string& AOut) {
  std::string criteria;
  int count = 0;
  for (const auto& [col, column] : AFilter.Columns()) {
    if (!column.Active || (column.Values.empty() && column.Contains.IsEmpty())) continue;
    AppendCriterion(column, AFilter.Range().Normalize().StartCol, criteria);
    ++count;
  }
  if (count == 0) return;
  AOut += count > 1 ? "<table:filter><table:filter-and>" : "<table:filter>";
  AOut.append(criteria).append(count > 1 ? "</table:filter-and></table:filter>" : "</table:filter>");
}

void AppendDatabaseRange(const TWorksheet& ASheet, std::u16string_view AName, const TCellRange& ARange, bool AHasHeader,
                         const TSheetAutoFilter* AFilter, const char* AMark, std::string& AOut) {
  AOut += "<table:database-range";
  AppendTextPair("table:name", AName, AOut);
  AppendTextPair("table:target-range-address", OdsSheetRangeAddress(ASheet.Name(), ARange), AOut);
  if (AFilter) AppendWordPair("table:display-filter-buttons", "true", AOut);
  if (!AHasHeader) AppendWordPair("table:contains-header", "false", AOut);
  AOut.append(AMark).append(">");
  if (AFilter) AppendCriteria(*AFilter, AOut);
  AOut += "</table:database-range>";
}

void ReportTable(const TSheetTable& ATable, const std::string& ASheet, TFileReport* AReport) {
  if (!AReport) return;
  if (!ATable.StyleName().IsEmpty()) AReport->Add("table style", ffDropped, ASheet, 1, ATable.StyleName().ToUtf8());
  if (ATable.HasTotalsRow()) AReport->Add("totals row of a table", ffDropped, ASheet, 1, "its cells stay");
}

}  // namespace

TOdsRuleNames NameOdsValidations(const TWorkbook& AWorkbook) {
  TOdsRuleNames names;
  TUniqueNames unique;
  int number = 0;
  for (int32_t i = 0; i < AWorkbook.SheetCount(); ++i) {
    std::vector<std::string>& ofSheet = names.emplace_back();
    for (const TDataValidationRule& rule : AWorkbook.GetSheet(i)->Validations()) {
      ofSheet.emplace_back();
      if (rule.Name.IsEmpty() && rule.Ranges.empty()) continue;
      const std::u16string own =
          rule.Name.IsEmpty() ? u"val" + Utf8ToUtf16(std::to_string(++number)) : rule.Name.ToString();
      ofSheet.back() = Utf16ToUtf8(unique.Take(own));
    }
  }
  return names;
}

void AppendOdsValidations(const TWorkbook& AWorkbook, const TOdsRuleNames& ANames, bool AIsLiteral, std::string& AOut) {
  std::string validations;
  for (int32_t i = 0; i < AWorkbook.SheetCount(); ++i) {
    const TWorksheet& sheet = *AWorkbook.GetSheet(i);
    size_t index = 0;
    for (const std::string& name : ANames[static_cast<size_t>(i)]) {
      const TDataValidationRule& rule = sheet.Validations().GetRule(index++);
      if (!name.empty()) AppendValidation(sheet, rule, name, {IsDefinedName(AWorkbook, rule), AIsLiteral}, validations);
    }
  }
  if (validations.empty()) return;
  AOut.append("<table:content-validations>").append(validations).append("</table:content-validations>");
}

void AppendOdsNames(const TWorkbook& AWorkbook, bool AIsLiteral, std::string& AOut) {
  const TWorksheet* first = AWorkbook.GetSheet(0);
  std::string names;
  for (const auto& [name, formula] : AWorkbook.CopyNamedFormulas()) {
    if (!first || formula.IsEmpty() || name.IsEmpty()) continue;
    const auto address = OdsAddressFromExcel(formula);
    names += address ? "<table:named-range" : "<table:named-expression";
    AppendTextPair("table:name", name, names);
    AppendTextPair("table:base-cell-address", u"$" + OdsQuoteSheetName(first->Name()) + u".$A$1", names);
    AppendTextPair(address ? "table:cell-range-address" : "table:expression",
                   address ? *address : OdsFormulaFromExcel(formula, AIsLiteral), names);
    names += "/>";
  }
  if (names.empty()) return;
  AOut.append("<table:named-expressions>").append(names).append("</table:named-expressions>");
}

void AppendOdsDatabaseRanges(const TWorkbook& AWorkbook, const TOdsWriteOptions& AOptions, std::string& AOut) {
  std::string ranges;
  TUniqueNames unique;
  for (int32_t i = 0; i < AWorkbook.SheetCount(); ++i) {
    const TWorksheet& sheet = *AWorkbook.GetSheet(i);
    bool filterWritten = !sheet.AutoFilter().IsEnabled();
    for (const auto& table : sheet.Tables()) {
      const bool isFiltered = !filterWritten && IsFilterOf(sheet.AutoFilter(), *table);
      filterWritten = filterWritten || isFiltered;
      AppendDatabaseRange(sheet, unique.Take(table->Name()), table->Ref(), table->HasHeaderRow(),
                          isFiltered ? &sheet.AutoFilter() : nullptr, "", ranges);
      ReportTable(*table, sheet.Name().ToUtf8(), AOptions.Report);
    }
    if (filterWritten) continue;
    AppendDatabaseRange(sheet, unique.Take(u"__Anonymous_Sheet_DB__" + Utf8ToUtf16(std::to_string(i))),
                        sheet.AutoFilter().Range().Normalize(), true, &sheet.AutoFilter(),
                        AOptions.Literal ? "" : " tessarine:no-table=\"true\"", ranges);
  }
  if (ranges.empty()) return;
  AOut.append("<table:database-ranges>").append(ranges).append("</table:database-ranges>");
}

}  // namespace tessarine::detail
