#include <algorithm>
#include <utility>
#include <vector>

#include <hosts/cli/EditLine.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

/// What is left of a range without the cells of another: at most four ranges.
std::vector<TCellRange> Without(const TCellRange& ARange, const TCellRange& AHole) {
  if (!ARange.Intersects(AHole)) return {ARange};
  const TCellRange range = ARange.Normalize();
  const int32_t top = std::max(range.StartRow, AHole.StartRow);
  const int32_t bottom = std::min(range.EndRow, AHole.EndRow);
  std::vector<TCellRange> rest;
  if (range.StartRow < top) rest.push_back({range.StartCol, range.StartRow, range.EndCol, top - 1});
  if (range.StartCol < AHole.StartCol) rest.push_back({range.StartCol, top, AHole.StartCol - 1, bottom});
  if (range.EndCol > AHole.EndCol) rest.push_back({AHole.EndCol + 1, top, range.EndCol, bottom});
  if (range.EndRow > bottom) rest.push_back({range.StartCol, bottom + 1, range.EndCol, range.EndRow});
  return rest;
}

/// Takes a range away from all rules: the first rule that covers a cell counts, and that is to be the new one.
void ClearRules(TDataValidationList& ARules, const TCellRange& AHole) {
  for (size_t i = ARules.Count(); i-- > 0;) {
    TDataValidationRule rule = ARules.GetRule(i);
    const auto meets = [&](const TCellRange& ARange) { return ARange.Intersects(AHole); };
    if (std::none_of(rule.Ranges.begin(), rule.Ranges.end(), meets)) continue;
    std::vector<TCellRange> rest;
    for (const TCellRange& range : rule.Ranges) {
      const std::vector<TCellRange> pieces = Without(range, AHole);
      rest.insert(rest.end(), pieces.begin(), pieces.end());
    }
    rule.Ranges = std::move(rest);
    if (rule.Ranges.empty() && rule.Name.IsEmpty())
      ARules.DeleteRule(i);
    else
      ARules.ReplaceRule(i, std::move(rule));
  }
}

/// A bound: a number, or a text such as "2024-01-31" or "=A1".
TText BoundOf(const TJsonValue& AValue, std::string_view AKey) {
  if (AValue.Kind == jkNumber) return TCellValue::FromNumber(AValue.Number).ToDisplayString();
  return TText::FromUtf8(JsonTextOf(AValue, AKey));
}

/// The items of a list as one text, or the range that holds them.
TText SourceOf(const TJsonValue& AValue) {
  if (AValue.Kind != jkArray) return TText::FromUtf8(JsonTextOf(AValue, "source"));
  std::string items;
  for (const TJsonValue& item : AValue.Items) {
    const std::string text = JsonTextOf(item, "source");
    if (text.find(',') != text.npos) FailEdit("an item of a list has no comma: put the items in cells and name those");
    items += (items.empty() ? "" : ",") + text;
  }
  return TText::FromUtf8(items);
}

TDataValidationOperator OperatorOf(const std::string& AWord) {
  return WordOf<TDataValidationOperator>({{"between", dvoBetween},
                                          {"notBetween", dvoNotBetween},
                                          {"equal", dvoEqual},
                                          {"notEqual", dvoNotEqual},
                                          {"greaterThan", dvoGreaterThan},
                                          {"lessThan", dvoLessThan},
                                          {"greaterEqual", dvoGreaterEqual},
                                          {"lessEqual", dvoLessEqual}},
                                         AWord, "operator");
}

void ReadBounds(const TEditLine& ALine, TDataValidationRule& ARule) {
  if (ARule.ValidationType == dvtList) {
    ARule.Formula1 = SourceOf(ALine.Get("source"));
    return;
  }
  if (ARule.ValidationType == dvtNone) return;
  ARule.Formula1 = BoundOf(ALine.Get("first"), "first");
  if (ARule.ValidationType == dvtCustom) return;
  ARule.Operator = OperatorOf(ALine.FindText("operator").value_or("between"));
  if (ARule.Operator == dvoBetween || ARule.Operator == dvoNotBetween)
    ARule.Formula2 = BoundOf(ALine.Get("second"), "second");
}

}  // namespace

void EditValidation(const TEditLine& ALine) {
  const TCellRange range = ALine.Range("range");
  const std::string type = ALine.Text("type");
  TDataValidationRule rule;
  rule.Ranges = {range};
  rule.ValidationType = WordOf<TDataValidationType>({{"any", dvtNone},
                                                     {"list", dvtList},
                                                     {"whole", dvtWhole},
                                                     {"decimal", dvtDecimal},
                                                     {"date", dvtDate},
                                                     {"textLength", dvtTextLength},
                                                     {"custom", dvtCustom}},
                                                    type, "type");
  ReadBounds(ALine, rule);
  rule.AllowBlank = ALine.Flag("allowBlank", true);
  const auto text = [&](std::string_view AKey) { return TText::FromUtf8(ALine.FindText(AKey).value_or("")); };
  rule.Prompt = text("prompt");
  rule.PromptTitle = text("promptTitle");
  rule.ShowInputMessage = !rule.Prompt.IsEmpty() || !rule.PromptTitle.IsEmpty();
  rule.Error = text("error");
  rule.ErrorTitle = text("errorTitle");
  rule.ShowErrorMessage = true;
  rule.ErrorStyle = WordOf<TDataValidationErrorStyle>(
      {{"stop", dvesStop}, {"warning", dvesWarning}, {"information", dvesInformation}},
      ALine.FindText("errorStyle").value_or("stop"), "errorStyle");
  TDataValidationList& rules = ALine.Sheet().Validations();
  ClearRules(rules, range);
  if (rule.ValidationType != dvtNone || rule.ShowInputMessage) rules.AddRule(std::move(rule));
}

}  // namespace tessarine::cli
