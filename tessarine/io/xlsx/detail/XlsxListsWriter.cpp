#include <tessarine/io/xlsx/detail/XlsxListsWriter.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <vector>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxFormulaWriter.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

// ---- filters

/// Whether a table shows this filter: over the whole of it or all but the totals.
bool IsFilterOf(const TSheetTable& ATable, const TCellRange& ARange) {
  if (!ATable.ShowAutoFilter() || !ATable.HasHeaderRow()) return false;
  TCellRange range = ATable.Ref();
  if (range == ARange) return true;
  if (!ATable.HasTotalsRow()) return false;
  --range.EndRow;
  return range == ARange;
}

/// Texts to be kept; that blanks are kept is told beside them.
void AppendValues(const std::vector<TText>& AValues, bool AIsLiteral, std::string& AOut) {
  const auto isBlank = [AIsLiteral](const TText& AValue) { return !AIsLiteral && AValue.IsEmpty(); };
  AOut += "<filters";
  AppendXlsxFlag("blank", std::any_of(AValues.begin(), AValues.end(), isBlank), AOut);
  if (std::all_of(AValues.begin(), AValues.end(), isBlank)) {
    AOut += "/>";
    return;
  }
  AOut += '>';
  for (const TText& value : AValues) {
    if (isBlank(value)) continue;
    AOut += "<filter";
    AppendXlsxTextAttr("val", value, AOut);
    AOut += "/>";
  }
  AOut += "</filters>";
}

void AppendCriterion(const TAutoFilterColumn& AColumn, bool AIsLiteral, std::string& AOut) {
  if (!AColumn.Contains.IsEmpty()) {
    AOut += "<customFilters><customFilter";
    AppendXlsxWord("operator", AIsLiteral ? "contains" : "equal", AOut);
    AppendXlsxTextAttr("val", AIsLiteral ? AColumn.Contains.ToString() : XlsxContainsPattern(AColumn.Contains), AOut);
    AOut += "/></customFilters>";
  } else {
    AppendValues(AColumn.Values, AIsLiteral, AOut);
  }
}

// ---- merges

/// Leaves out merges that meet another one: of two the upper stays, of two in one row the one that was added first.
/// Goes down the rows and keeps the column spans in force, which do not overlap.
std::vector<TCellRange> WithoutOverlaps(const std::vector<TCellRange>& AMerges) {
  struct TSpan {
    int32_t EndCol;
    int32_t EndRow;
  };
  std::vector<size_t> order(AMerges.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t ALeft, size_t ARight) { return AMerges[ALeft].StartRow < AMerges[ARight].StartRow; });
  std::map<int32_t, TSpan> spans;  // by first column
  std::vector<bool> isKept(AMerges.size());
  for (const size_t index : order) {
    const TCellRange& merge = AMerges[index];
    auto span = spans.upper_bound(merge.StartCol);
    if (span != spans.begin()) --span;
    bool isFree = true;
    while (isFree && span != spans.end() && span->first <= merge.EndCol) {
      const bool isOver = span->second.EndRow < merge.StartRow;
      isFree = isOver || span->second.EndCol < merge.StartCol;
      span = isOver ? spans.erase(span) : std::next(span);
    }
    if (isFree) spans[merge.StartCol] = {merge.EndCol, merge.EndRow};
    isKept[index] = isFree;
  }
  std::vector<TCellRange> kept;
  for (size_t index = 0; index < AMerges.size(); ++index) {
    if (isKept[index]) kept.push_back(AMerges[index]);
  }
  return kept;
}

// ---- validations

constexpr std::string_view kTypeWords[] = {"none", "list", "whole", "decimal", "date", "textLength", "custom"};
constexpr std::string_view kOperatorWords[] = {
    "between", "notBetween", "equal", "notEqual", "greaterThan", "lessThan", "greaterThanOrEqual", "lessThanOrEqual"};
constexpr std::string_view kErrorStyleWords[] = {"stop", "warning", "information"};

void AppendTextAttr(std::string_view AName, const TText& AText, std::string& AOut) {
  if (!AText.IsEmpty()) AppendXlsxTextAttr(AName, AText, AOut);
}

std::u16string_view WithoutSign(std::u16string_view AText) {
  const std::u16string_view text = TrimSpaces(AText);
  return text.starts_with(u'=') ? text.substr(1) : AText;
}

void AppendOperand(std::string_view AName, std::u16string_view AText, std::string& AOut) {
  if (!AText.empty()) AppendXlsxElement(AName, AText, AOut);
}

void AppendRule(const TWorkbook& AWorkbook, const TDataValidationRule& ARule, const std::vector<TCellRange>& ARanges,
                bool AIsLiteral, std::string& AOut) {
  AOut += "<dataValidation";
  AppendXlsxWord("type", kTypeWords[static_cast<size_t>(ARule.ValidationType)], AOut);
  AppendXlsxWord("errorStyle", kErrorStyleWords[static_cast<size_t>(ARule.ErrorStyle)], AOut);
  AppendXlsxWord("operator", kOperatorWords[static_cast<size_t>(ARule.Operator)], AOut);
  AppendXlsxBool("allowBlank", ARule.AllowBlank, AOut);
  AppendXlsxBool("showInputMessage", ARule.ShowInputMessage, AOut);
  AppendXlsxBool("showErrorMessage", ARule.ShowErrorMessage, AOut);
  AppendTextAttr("errorTitle", ARule.ErrorTitle, AOut);
  AppendTextAttr("error", ARule.Error, AOut);
  AppendTextAttr("promptTitle", ARule.PromptTitle, AOut);
  AppendTextAttr("prompt", ARule.Prompt, AOut);
  AppendXlsxAttr("sqref", TSheetSavedView::FormatSqref(ARanges), AOut);
  AOut += '>';
  if (AIsLiteral) {
    AppendOperand("formula1", ARule.Formula1, AOut);
    AppendOperand("formula2", ARule.Formula2, AOut);
  } else {
    const bool isList = ARule.ValidationType == dvtList;
    const std::u16string first =
        isList ? XlsxListSource(AWorkbook, ARule.Formula1) : std::u16string(WithoutSign(ARule.Formula1));
    AppendOperand("formula1", XlsxFormulaText(first), AOut);
    AppendOperand("formula2", XlsxFormulaText(WithoutSign(ARule.Formula2)), AOut);
  }
  AOut += "</dataValidation>";
}

/// Whether the source of a list is a formula though it has no "=": a range, a call, a name, a reference to a sheet or a
/// table.
bool IsFormulaSource(const TWorkbook& AWorkbook, std::u16string_view ASource) {
  if (TDataValidationList::IsListRangeFormula(ASource)) return true;
  if (AWorkbook.FindNormalizedName(TWorkbook::NormalizeName(ASource))) return true;
  const size_t open = ASource.find(u'(');
  const auto isNameUnit = [](char16_t AUnit) {
    return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_' || AUnit == u'.';
  };
  const bool isCall = open != ASource.npos && open > 0 && ASource.ends_with(u')') &&
                      std::all_of(ASource.begin(), ASource.begin() + static_cast<std::ptrdiff_t>(open), isNameUnit);
  return isCall || ASource.ends_with(u']');
}

}  // namespace

std::u16string XlsxContainsPattern(std::u16string_view AText) {
  std::u16string pattern = u"*";
  for (const char16_t unit : AText) {
    if (unit == u'*' || unit == u'?' || unit == u'~') pattern += u'~';
    pattern += unit;
  }
  return pattern += u'*';
}

std::u16string XlsxListSource(const TWorkbook& AWorkbook, std::u16string_view ASource) {
  const std::u16string_view source = TrimSpaces(ASource);
  if (source.starts_with(u'=')) return std::u16string(source.substr(1));
  const bool isQuoted = source.size() >= 2 && source.front() == u'"' && source.back() == u'"';
  if (source.empty() || (!isQuoted && IsFormulaSource(AWorkbook, source))) return std::u16string(source);
  std::u16string quoted = u"\"";
  for (const char16_t unit : isQuoted ? source.substr(1, source.size() - 2) : source)
    quoted.append(unit == u'"' ? 2 : 1, unit);
  return quoted += u'"';
}

void AppendXlsxAutoFilter(const TWorksheet& ASheet, bool AIsLiteral, TXlsxListLosses& ALosses, std::string& AOut) {
  const TSheetAutoFilter& filter = ASheet.AutoFilter();
  const TCellRange range = XlsxInsideSheet(filter.Range());
  if (!filter.IsEnabled() || range.StartCol < 1) return;
  const TSheetTableList& tables = ASheet.Tables();
  if (std::any_of(tables.begin(), tables.end(), [&](const auto& ATable) { return IsFilterOf(*ATable, range); })) {
    for (const auto& [col, column] : filter.Columns()) ALosses.Criteria += column.Active ? 1 : 0;
    return;
  }
  AOut += "<autoFilter";
  AppendXlsxRef("ref", range, AOut);
  AOut += '>';
  for (const auto& [col, column] : filter.Columns()) {
    if (!column.Active || col < range.StartCol || col > range.EndCol) continue;
    AOut += "<filterColumn";
    AppendXlsxInt("colId", col - range.StartCol, AOut);
    AOut += '>';
    AppendCriterion(column, AIsLiteral, AOut);
    AOut += "</filterColumn>";
  }
  AOut += "</autoFilter>";
}

void AppendXlsxMerges(const TMergedCellList& AMerges, bool AIsLiteral, TXlsxListLosses& ALosses, std::string& AOut) {
  std::vector<TCellRange> merges;
  for (const TMergedRange& merge : AMerges) {
    const TCellRange range = XlsxInsideSheet(merge.AsRange());
    const bool isWide = range.StartCol != range.EndCol || range.StartRow != range.EndRow;
    if (range.StartCol > 0 && (AIsLiteral || isWide)) merges.push_back(range);
  }
  if (!AIsLiteral) merges = WithoutOverlaps(merges);
  ALosses.Merges += AMerges.Count() - merges.size();
  if (merges.empty()) return;
  AOut += "<mergeCells";
  AppendXlsxInt("count", static_cast<int64_t>(merges.size()), AOut);
  AOut += '>';
  for (const TCellRange& merge : merges) {
    AOut += "<mergeCell";
    AppendXlsxRef("ref", merge, AOut);
    AOut += "/>";
  }
  AOut += "</mergeCells>";
}

void AppendXlsxValidations(const TWorkbook& AWorkbook, const TDataValidationList& AValidations, bool AIsLiteral,
                           TXlsxListLosses& ALosses, std::string& AOut) {
  std::string rules;
  int64_t count = 0;
  for (const TDataValidationRule& rule : AValidations) {
    std::vector<TCellRange> ranges;
    for (const TCellRange& range : rule.Ranges) {
      const TCellRange inside = XlsxInsideSheet(range);
      if (inside.StartCol > 0) ranges.push_back(inside);
    }
    if (rule.ValidationType == dvtNone || ranges.empty()) {
      ++ALosses.Rules;
      continue;
    }
    AppendRule(AWorkbook, rule, ranges, AIsLiteral, rules);
    ++count;
  }
  if (count == 0) return;
  AOut += "<dataValidations";
  AppendXlsxInt("count", count, AOut);
  ((AOut += '>') += rules) += "</dataValidations>";
}

}  // namespace tessarine::detail
