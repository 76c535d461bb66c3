// Any text as a formula: tokenizer, parser, compiler, the editing helpers and the dialect conversions. A program that
// was compiled at one cell must read at another as the text there does.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/formula/FormulaAssist.h>
#include <tessarine/formula/FormulaDialect.h>
#include <tessarine/formula/Parser.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/platform/Unicode.h>

namespace {

using namespace tessarine;

void Require(bool ACondition) {
  if (!ACondition) std::abort();
}

void TestTokens(std::u16string_view AText) {
  int32_t at = 0;
  for (const TFormulaToken& token : TokenizeFormula(AText)) {
    Require(token.StartIndex >= at && token.Length > 0);
    at = token.StartIndex + token.Length;
    Require(static_cast<size_t>(at) <= AText.size());
  }
}

void TestTree(std::u16string_view AText) {
  const auto tree = TFormulaParser::Parse(AText);
  const auto copy = CloneAstNode(tree.get());
  Require(DumpAst(copy.get()) == DumpAst(tree.get()));
}

bool SameRect(const detail::TRelativeRect& ALeft, const detail::TRelativeRect& ARight) {
  return ALeft.Col == ARight.Col && ALeft.Row == ARight.Row && ALeft.Col2 == ARight.Col2 && ALeft.Row2 == ARight.Row2;
}

void RequireSameAt(const detail::TProgram& AProgram, const detail::TProgram& AExpected, int32_t ACol, int32_t ARow) {
  Require(AProgram.Children == AExpected.Children && AProgram.Nodes.size() == AExpected.Nodes.size());
  for (size_t i = 0; i < AProgram.Nodes.size(); ++i) {
    const detail::TProgramNode& node = AProgram.Nodes[i];
    const detail::TProgramNode& expected = AExpected.Nodes[i];
    Require(node.Kind == expected.Kind && node.Op == expected.Op && node.Text == expected.Text &&
            node.Number == expected.Number && node.SheetName == expected.SheetName);
    Require(SameRect(detail::TProgram::RectAt(node, ACol, ARow), detail::TProgram::RectAt(expected, 0, 0)));
  }
}

void TestPrograms(std::u16string_view AText) {
  detail::TFormulaPool pool;
  detail::TFormulaTemplate* const source = pool.Intern(AText, 3, 3);
  for (const int32_t at : {3, 4, 9}) {
    std::unique_ptr<detail::TProgram> owned;
    const detail::TProgram& program = detail::ProgramOf(*source, at, at, owned);
    const TText text = source->TextAt(at, at);
    Require(at != 3 || text == AText);
    // A reference at the edge of the sheet cannot be filled: its text is no reference any more.
    bool inside = true;
    for (const detail::TReferenceSlot& slot : source->SlotsAt(at, at)) {
      const TCellAddress place{slot.ColAbsolute ? slot.Col : slot.Col + at,
                               slot.RowAbsolute ? slot.Row : slot.Row + at};
      inside = inside && place.IsValid();
    }
    if (inside) RequireSameAt(program, *detail::CompileText(text), at, at);
  }
  pool.Release(source);
}

void TestAssist(std::u16string_view AText) {
  size_t covered = 0;
  for (const TFormulaColorSpan& span : TFormulaAssist::ColorSpans(AText)) covered += static_cast<size_t>(span.Length);
  Require(covered == (AText.starts_with(u'=') ? AText.size() : 0));
  TFormulaAssist::RefHighlights(AText);
  const auto middle = static_cast<int32_t>(AText.size() / 2);
  for (const bool backward : {false, true}) TFormulaAssist::NextArgumentCaret(AText, middle, backward);
  TFormulaAssist::CaretAllowsPointing(AText, middle);
  const TAutocompletePrefix prefix = TFormulaAssist::AutocompletePrefix(AText, middle);
  TFormulaAssist::AutocompleteCandidates(prefix.Prefix, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const std::u16string text = Utf8ToUtf16(std::string_view(reinterpret_cast<const char*>(AData), ASize));
  TestTokens(text);
  TestTree(text);
  TestPrograms(text);
  TestAssist(text);
  UnwrapXlUdfDummyFunction(text);
  OdsSeparatorsToExcel(text);
  return 0;
}
