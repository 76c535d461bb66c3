#include <tessarine/io/ods/detail/OdsValidationReader.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/ods/detail/OdsAddress.h>
#include <tessarine/io/ods/detail/OdsFormula.h>
#include <tessarine/io/ods/detail/OdsListWriter.h>
#include <tessarine/io/ods/detail/OdsTextReader.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

/// The arguments between a "(" in front of AText and the ")" that closes it, separated by commas.
std::vector<std::u16string_view> Arguments(std::u16string_view AText) {
  std::vector<std::u16string_view> arguments;
  size_t start = 0;
  size_t depth = 1;
  bool inString = false;
  for (size_t at = 0; at < AText.size(); ++at) {
    const char16_t unit = AText[at];
    if (unit == u'"') inString = !inString;
    if (inString) continue;
    if (unit == u'(' || unit == u'{') ++depth;
    if (unit == u')' || unit == u'}') --depth;
    if (depth == 0 || (depth == 1 && unit == u',')) {
      arguments.push_back(TrimSpaces(AText.substr(start, at - start)));
      start = at + 1;
    }
    if (depth == 0) break;
  }
  return arguments;
}

/// Items in quotes as one text, "a,b", with the quotes around it; a source of another form as it is.
std::u16string ListSource(const std::vector<std::u16string_view>& AItems) {
  if (AItems.empty()) return {};
  if (!AItems.front().starts_with(u'"')) return std::u16string(AItems.front());
  std::u16string source = u"\"";
  for (std::u16string_view item : AItems) {
    if (item.size() >= 2 && item.starts_with(u'"') && item.ends_with(u'"')) item = item.substr(1, item.size() - 2);
    if (source.size() > 1) source += u',';
    source += item;
  }
  return source += u'"';
}

std::u16string_view BehindCall(std::u16string_view AText, std::u16string_view AName) {
  const size_t at = AText.find(AName);
  return at == AText.npos ? std::u16string_view() : AText.substr(at + AName.size());
}

/// ">=5" behind "cell-content()".
bool ReadComparison(std::u16string_view AText, TDataValidationRule& ARule) {
  struct TOperator {
    std::u16string_view Text;
    TDataValidationOperator Value;
  };
  static constexpr TOperator kOperators[] = {{u">=", dvoGreaterEqual}, {u"<=", dvoLessEqual},  {u"!=", dvoNotEqual},
                                             {u"<>", dvoNotEqual},     {u">", dvoGreaterThan}, {u"<", dvoLessThan},
                                             {u"=", dvoEqual}};
  AText = TrimSpaces(AText);
  for (const TOperator& candidate : kOperators) {
    if (!AText.starts_with(candidate.Text)) continue;
    ARule.Operator = candidate.Value;
    ARule.Formula1 = TText(TrimSpaces(AText.substr(candidate.Text.size())));
    return true;
  }
  return false;
}

bool ReadOperands(std::u16string_view AText, TDataValidationRule& ARule) {
  struct TCall {
    std::u16string_view Name;
    TDataValidationOperator Value;
  };
  static constexpr TCall kCalls[] = {{u"is-between(", dvoBetween}, {u"is-not-between(", dvoNotBetween}};
  for (const TCall& call : kCalls) {
    const std::u16string_view rest = BehindCall(AText, call.Name);
    if (rest.empty()) continue;
    const auto arguments = Arguments(rest);
    if (arguments.size() != 2) return false;
    ARule.Operator = call.Value;
    ARule.Formula1 = TText(arguments[0]);
    ARule.Formula2 = TText(arguments[1]);
    return true;
  }
  for (const std::u16string_view name : {u"cell-content-text-length()", u"cell-content()"})
    if (const std::u16string_view rest = BehindCall(AText, name); !rest.empty()) return ReadComparison(rest, ARule);
  return false;
}

/// Texts of a paragraph and what is inside, with blanks, tabs and line breaks in place of their elements.
void AppendParagraph(const TXmlNode* ANode, std::u16string& AText) {
  constexpr int32_t kMaxMessageBlanks = 1024;  // of one element; messages are short
  for (const TXmlNode* child = ANode->FirstChild; child; child = child->NextSibling) {
    if (!child->IsElement()) {
      AText += Utf8ToUtf16(child->Text);
    } else if (XmlLocalNameIs(child, "s")) {
      AText.append(static_cast<size_t>(std::clamp(XmlAttrInt(child, "c", 1), 1, kMaxMessageBlanks)), u' ');
    } else if (XmlLocalNameIs(child, "tab")) {
      AText += u'\t';
    } else if (XmlLocalNameIs(child, "line-break")) {
      AText += u"\r\n";
    } else {
      AppendParagraph(child, AText);
    }
  }
}

/// The paragraphs, with the line ends that the file says they had.
TText MessageText(const TXmlNode* ANode) {
  std::u16string text;
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(child, "p")) continue;
    if (!text.empty()) text += u"\r\n";
    AppendParagraph(child, text);
  }
  TRichTextRuns runs(1);
  runs[0].Text = TText(text);
  const std::u16string exact = Utf8ToUtf16(XmlAttr(ANode, "exact-text"));
  return !exact.empty() && OdsTakeLineEnds(exact, runs) ? runs[0].Text : TText(text);
}

bool IsShown(const TXmlNode* ANode) { return XmlAttr(ANode, "display") == "true"; }

TDataValidationErrorStyle ErrorStyleOf(std::string_view AText) {
  if (AText == "warning") return dvesWarning;
  return AText == "information" ? dvesInformation : dvesStop;
}

TDataValidationRule ReadTexts(const TXmlNode* ANode) {
  TDataValidationRule rule;
  rule.Name = TText::FromUtf8(XmlAttr(ANode, XmlHasAttr(ANode, "exact-name") ? "exact-name" : "name"));
  rule.AllowBlank = XmlAttr(ANode, "allow-empty-cell", "true") != "false";
  if (const TXmlNode* const help = XmlFindChild(ANode, "help-message")) {
    rule.ShowInputMessage = IsShown(help);
    rule.PromptTitle = TText::FromUtf8(XmlAttr(help, "title"));
    rule.Prompt = MessageText(help);
  }
  if (const TXmlNode* const error = XmlFindChild(ANode, "error-message")) {
    rule.ShowErrorMessage = IsShown(error);
    rule.ErrorTitle = TText::FromUtf8(XmlAttr(error, "title"));
    rule.Error = MessageText(error);
    rule.ErrorStyle = ErrorStyleOf(XmlAttr(error, "message-type"));
  }
  return rule;
}

/// Operands in their own spelling, as long as the condition says the same.
void TakeExactOperands(const TXmlNode* ANode, TDataValidationRule& ARule) {
  TDataValidationRule exact = ARule;
  if (XmlHasAttr(ANode, "exact-first")) exact.Formula1 = TText::FromUtf8(XmlAttr(ANode, "exact-first"));
  if (XmlHasAttr(ANode, "exact-second")) exact.Formula2 = TText::FromUtf8(XmlAttr(ANode, "exact-second"));
  if (exact.Formula1 == ARule.Formula1 && exact.Formula2 == ARule.Formula2) return;
  const std::u16string condition = Utf8ToUtf16(XmlAttr(ANode, "condition"));
  for (const bool isName : {false, true})
    if (OdsValidationCondition(exact, {isName, false}) == condition) ARule = exact;
}

/// Operands count from the first range.
void PutFirst(const TCellRange& ACell, std::vector<TCellRange>& ARanges) {
  const auto found = std::find_if(ARanges.begin(), ARanges.end(), [&](const TCellRange& ARange) {
    return ARange.StartCol == ACell.StartCol && ARange.StartRow == ACell.StartRow;
  });
  if (found != ARanges.end()) std::rotate(ARanges.begin(), found, found + 1);
}

constexpr uint64_t ColumnsKey(int32_t ASheet, const TCellRange& ARange) {
  return uint64_t{static_cast<uint32_t>(ASheet)} << 32 | uint64_t{static_cast<uint32_t>(ARange.StartCol)} << 16 |
         static_cast<uint32_t>(ARange.EndCol);
}

}  // namespace

bool OdsParseValidationCondition(std::string_view ACondition, TDataValidationRule& ARule, bool AStandardArrays) {
  struct TKind {
    std::u16string_view Mark;
    TDataValidationType Type;
  };
  static constexpr TKind kKinds[] = {{u"cell-content-is-whole-number()", dvtWhole},
                                     {u"cell-content-is-decimal-number()", dvtDecimal},
                                     {u"cell-content-is-date()", dvtDate},
                                     {u"cell-content-text-length", dvtTextLength},
                                     {u"cell-content()", dvtDecimal},
                                     {u"cell-content-is-between(", dvtDecimal},
                                     {u"cell-content-is-not-between(", dvtDecimal}};
  if (ACondition.empty()) return true;
  const std::u16string text = OdsFormulaToExcel(Utf8ToUtf16(ACondition), AStandardArrays);
  if (const std::u16string_view list = BehindCall(text, u"cell-content-is-in-list("); !list.empty()) {
    ARule.ValidationType = dvtList;
    ARule.Formula1 = TText(ListSource(Arguments(list)));
    return !ARule.Formula1.IsEmpty();
  }
  if (const std::u16string_view formula = BehindCall(text, u"is-true-formula("); !formula.empty()) {
    const size_t end = formula.rfind(u')');
    ARule.ValidationType = dvtCustom;
    ARule.Formula1 = TText(TrimSpaces(formula.substr(0, end)));
    return !ARule.Formula1.IsEmpty();
  }
  if (text.find(u"cell-content-is-time()") != text.npos) return false;
  for (const TKind& kind : kKinds) {
    if (text.find(kind.Mark) == text.npos) continue;
    ARule.ValidationType = kind.Type;
    return ReadOperands(text, ARule);
  }
  return false;
}

void TOdsValidationReader::ReadRules(const TXmlNode* ANode) {
  for (const TXmlNode* node : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(node, "content-validation")) continue;
    TDataValidationRule rule = ReadTexts(node);
    if (OdsParseValidationCondition(XmlAttr(node, "condition"), rule, FContext.StandardArrays)) {
      TakeExactOperands(node, rule);
      const auto base = OdsParseSheetRangeAddress(Utf8ToUtf16(XmlAttr(node, "base-cell-address")));
      FRules.push_back({std::string(XmlAttr(node, "name")), base ? base->Range : TCellRange(), std::move(rule)});
    } else {
      FContext.ReportDropped("validation", "content.xml", 1, XmlAttr(node, "condition"));
    }
  }
}

void TOdsValidationReader::Bind(std::string_view AName, const TCellRange& ARange) {
  TCellRange range = ARange;
  range.EndCol = std::min(range.EndCol, kMaxCol);
  range.EndRow = std::min(range.EndRow, kMaxRow);
  auto found = FNames.find(AName);
  if (found == FNames.end()) found = FNames.try_emplace(std::string(AName)).first;
  std::vector<TBinding>& bindings = found->second.Bindings;
  if (!bindings.empty() && bindings.back().Sheet == FSheet) {
    TCellRange& last = bindings.back().Range;
    if (last.StartRow == range.StartRow && last.EndRow == range.EndRow && last.EndCol + 1 == range.StartCol) {
      range.StartCol = last.StartCol;
      bindings.pop_back();
    }
  }
  const auto [above, isNew] = found->second.ByColumns.try_emplace(ColumnsKey(FSheet, range), bindings.size());
  if (!isNew && above->second < bindings.size()) {
    TBinding& binding = bindings[above->second];
    const bool isSame = binding.Sheet == FSheet && binding.Range.StartCol == range.StartCol &&
                        binding.Range.EndCol == range.EndCol && binding.Range.EndRow + 1 == range.StartRow;
    if (isSame) {
      binding.Range.EndRow = range.EndRow;
      return;
    }
  }
  above->second = bindings.size();
  bindings.push_back({FSheet, range});
}

/// Of several rules with one name the first counts.
void TOdsValidationReader::Apply(TWorkbook& AWorkbook) {
  for (const TRule& rule : FRules) {
    const auto found = FNames.find(rule.Name);
    if (found == FNames.end()) continue;
    const std::vector<TBinding> bindings = std::exchange(found->second.Bindings, {});
    for (size_t at = 0; at < bindings.size();) {
      TDataValidationRule bound = rule.Rule;
      const int32_t sheet = bindings[at].Sheet;
      for (; at < bindings.size() && bindings[at].Sheet == sheet; ++at) bound.Ranges.push_back(bindings[at].Range);
      PutFirst(rule.Base, bound.Ranges);
      AWorkbook.GetSheet(sheet)->Validations().AddRule(std::move(bound));
    }
  }
}

}  // namespace tessarine::detail
