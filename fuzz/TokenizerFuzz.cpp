// Reads arbitrary UTF-16 units as a formula: tokens must cover the text in order, and rewriting must leave alone the
// references that it does not mean.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/reference/ReferenceRewrite.h>

namespace {

using namespace tessarine;

void Require(bool ACondition) {
  if (!ACondition) std::abort();
}

bool IsReference(const TFormulaToken& AToken) {
  return AToken.Kind == ftCellRef || AToken.Kind == ftRangeRef || AToken.Kind == ftSheetRef;
}

void CheckTokens(std::u16string_view AFormula) {
  TFormulaTokenizer tokenizer(AFormula);
  TFormulaToken token;
  size_t end = AFormula.starts_with(u'=') ? 1 : 0;
  for (tokenizer.NextToken(token); token.Kind != ftEnd; tokenizer.NextToken(token)) {
    const auto start = static_cast<size_t>(token.StartIndex);
    Require(start >= end && token.Length > 0);
    Require(AFormula.substr(end, start - end).find_first_not_of(u' ') == std::u16string_view::npos);
    end = start + static_cast<size_t>(token.Length);
    Require(end <= AFormula.size());
    Require(!IsReference(token) || (token.Col >= 1 && token.Col <= 16384 && token.Row >= 1 && token.Row <= 1048576));
    Require(token.Kind != ftRangeRef ||
            (token.Col2 >= 1 && token.Col2 <= 16384 && token.Row2 >= 1 && token.Row2 <= 1048576));
  }
  Require(AFormula.substr(end).find_first_not_of(u' ') == std::u16string_view::npos);
}

void CheckUntouchedReferences(std::u16string_view AFormula) {
  // No text can name this sheet: the name is longer than the formula.
  const std::u16string sheet(AFormula.size() + 1, u'x');
  const std::u16string rewritten = AdjustFormula(AFormula, sheet, false, saRows, 1, 1);
  size_t at = 0;
  for (const TFormulaToken& token : TokenizeFormula(AFormula)) {
    if (!IsReference(token)) continue;
    const auto source = AFormula.substr(static_cast<size_t>(token.StartIndex), static_cast<size_t>(token.Length));
    at = rewritten.find(source, at);
    Require(at != rewritten.npos);
    at += source.size();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  std::u16string formula;
  for (size_t i = 0; i + 1 < ASize; i += 2) formula += static_cast<char16_t>(AData[i] | AData[i + 1] << 8);
  CheckTokens(formula);
  CheckUntouchedReferences(formula);
  CheckTokens(OffsetSharedFormula(formula, 3, -2));
  CheckTokens(AdjustFormula(formula, u"S", true, saColumns, 2, -1));
  CheckTokens(AdjustFormulaForMove(formula, u"a", true, saRows, 2, 3, 7));
  SplitSheetRefText(formula);
  return 0;
}
