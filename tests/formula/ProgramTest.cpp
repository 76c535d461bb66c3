#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>
#include <string>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/formula/Parser.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine::detail {
namespace {

/// A template as a cell would hold it.
class TInterned {
 public:
  TInterned(std::u16string_view AText, int32_t ACol, int32_t ARow) : FTemplate(FPool.Intern(AText, ACol, ARow)) {}
  ~TInterned() { FPool.Release(FTemplate); }
  TInterned(const TInterned&) = delete;
  TInterned& operator=(const TInterned&) = delete;
  const TFormulaTemplate& operator*() const { return *FTemplate; }

 private:
  TFormulaPool FPool;
  TFormulaTemplate* FTemplate;
};

/// A program as the tree that it stands for at a cell; also tests the order of its nodes.
std::unique_ptr<TAstNode> TreeAt(const TProgram& AProgram, uint32_t AIndex, int32_t ACol, int32_t ARow) {
  static constexpr std::array<const char16_t*, 15> kOperators = {u"+", u"-", u"*",  u"/",  u"^", u"&", u"=", u"<>",
                                                                 u"<", u">", u"<=", u">=", u"+", u"-", u"@"};
  const TProgramNode& node = AProgram.Nodes[AIndex];
  auto tree = std::make_unique<TAstNode>(node.Kind);
  tree->ErrorCode = node.ErrorCode;
  tree->BooleanValue = node.BooleanValue;
  tree->Number = node.Number;
  tree->Text = node.Text.ToString();
  tree->SheetName = node.SheetName.ToString();
  tree->ColumnName = node.ColumnName.ToString();
  tree->Op = kOperators[static_cast<size_t>(node.Op)];
  const TRelativeRect rect = TProgram::RectAt(node, ACol, ARow);
  tree->Col = rect.Col;
  tree->Row = rect.Row;
  tree->Col2 = rect.Col2;
  tree->Row2 = rect.Row2;
  for (uint32_t i = 0; i < node.ChildCount; ++i) {
    const uint32_t child = AProgram.Children[node.FirstChild + i];
    EXPECT_LT(child, AIndex);
    auto subtree = TreeAt(AProgram, child, ACol, ARow);
    if (node.Kind == ankFunc || node.Kind == ankArrayLit) {
      tree->Args.push_back(std::move(subtree));
    } else {
      (i == 0 ? tree->Left : tree->Right) = std::move(subtree);
    }
  }
  return tree;
}

std::string DumpAt(const TProgram& AProgram, int32_t ACol, int32_t ARow) {
  const auto tree = TreeAt(AProgram, static_cast<uint32_t>(AProgram.Nodes.size() - 1), ACol, ARow);
  return Utf16ToUtf8(DumpAst(tree.get()));
}

/// The text of a number or a Boolean is not kept in a program: the tree is shown without it.
void ForgetTexts(TAstNode& ANode) {
  if (ANode.Kind == ankNumber || ANode.Kind == ankBool) ANode.Text.clear();
  if (ANode.Left) ForgetTexts(*ANode.Left);
  if (ANode.Right) ForgetTexts(*ANode.Right);
  for (const auto& item : ANode.Args) ForgetTexts(*item);
}

std::string DumpText(std::u16string_view AText) {
  const auto tree = TFormulaParser::Parse(AText);
  ForgetTexts(*tree);
  return Utf16ToUtf8(DumpAst(tree.get()));
}

TEST(Program, OneProgramServesEveryCellOfItsTemplate) {
  const char16_t* const formulas[] = {
      u"=A1+$B2*C$3-$D$4",
      u"=SUM(A$1:A1)+SUM(A1:A$9)+SUM($A1:B$2)",
      u"=Sheet2!B7&'It''s A1'!C8:D$9&Sheet1.E5",
      u"=a1+A01+A1:a2+a1:A2+a1:a2",                  // what is not spelled canonically stays where it is
      u"=A:C+$1:$5+Sheet1!A:A+Tab[A1]+[A1]+\"A1\"",  // and so do whole lines, names and texts
      u"= A1 : B2 + LOG10(C3) + LOG10 + IF({1,C4;D5,2},E6)",
  };
  for (const auto* formula : formulas) {
    const TInterned source(formula, 7, 20);
    const auto program = CompileTemplate(*source, 7, 20);
    EXPECT_FALSE(program->IsPositionBound) << Utf16ToUtf8(formula);
    for (const auto& [col, row] : {std::pair{7, 20}, {8, 20}, {7, 21}, {300, 4000}}) {
      const TText text = (*source).TextAt(col, row);
      EXPECT_EQ(DumpAt(*program, col, row), DumpText(text)) << text.ToUtf8();
    }
  }
}

/// A piece of a formula; references stay away from the edges, so that they can be filled anywhere.
std::u16string RandomReference(std::mt19937& ARandom) {
  std::u16string text;
  if (ARandom() % 3 == 0) text += u'$';
  AppendColLetters(static_cast<int32_t>(500 + ARandom() % 400), text);
  if (ARandom() % 3 == 0) text += u'$';
  const std::string row = std::to_string(5000 + ARandom() % 9000);
  text.append(row.begin(), row.end());
  if (ARandom() % 8 == 0) text = ToAsciiLower(text);
  return text;
}

std::u16string RandomPiece(std::mt19937& ARandom) {
  static constexpr const char16_t* kFixed[] = {
      u"1",   u"2.5",   u"1E5", u"\"A1\"", u"\"", u"'A1'!", u"'A1'", u"Sheet1!", u"Sheet1.", u"[", u"Tab[", u"]",
      u"A:C", u"$1:$5", u"F(",  u"LOG10(", u".",  u"!",     u"$",    u"TRUE",    u"x",       u" ", u"%",    u"'"};
  if (ARandom() % 4 == 0) return kFixed[ARandom() % std::size(kFixed)];
  if (ARandom() % 4 == 0) return RandomReference(ARandom) + u":" + RandomReference(ARandom);
  if (ARandom() % 6 == 0) return u"S!" + RandomReference(ARandom);
  return RandomReference(ARandom);
}

std::u16string RandomFormula(std::mt19937& ARandom) {
  static constexpr const char16_t* kJoints[] = {u"+", u"*",   u"&", u"<", u"+-", u"+(", u")",  u",",
                                                u"^", u"+F(", u"",  u" ", u":",  u"+{", u"};", u"="};
  std::u16string text = u"=";
  const size_t length = 1 + ARandom() % 7;
  for (size_t i = 0; i < length; ++i) {
    if (i > 0) text += kJoints[ARandom() % (ARandom() % 2 == 0 ? 5 : std::size(kJoints))];
    text += RandomPiece(ARandom);
  }
  return text;
}

TEST(Program, FilledFormulasReadAsTheirOwnTextsDo) {
  std::mt19937 random(77);
  int shared = 0, readable = 0;
  for (int round = 0; round < 40'000; ++round) {
    const std::u16string formula = RandomFormula(random);
    const auto col = static_cast<int32_t>(1 + random() % 300), row = static_cast<int32_t>(1 + random() % 3000);
    const TInterned source(formula, col, row);
    for (int fill = 0; fill < 3; ++fill) {
      const auto toCol = fill == 0 ? col : static_cast<int32_t>(1 + random() % 300);
      const auto toRow = fill == 0 ? row : static_cast<int32_t>(1 + random() % 3000);
      std::unique_ptr<TProgram> owned;
      const TProgram& program = ProgramOf(*source, toCol, toRow, owned);
      const TText text = (*source).TextAt(toCol, toRow);
      const std::string expected = DumpText(text);
      ASSERT_EQ(DumpAt(program, toCol, toRow), expected) << text.ToUtf8();
      ASSERT_EQ(DumpAt(*CompileText(text), 1, 1), expected) << text.ToUtf8();
      shared += owned == nullptr;
      readable += expected != "#VALUE!";
    }
  }
  EXPECT_GT(shared, 100'000);
  EXPECT_GT(readable, 30'000);
}

TEST(Program, ASlotInsideAnotherTokenBindsTheProgramToItsCell) {
  const TInterned source(u"=1+Sheet1!B:A1", 3, 3);  // no range: the tokenizer refuses it whole
  std::unique_ptr<TProgram> owned;
  const TProgram& first = ProgramOf(*source, 3, 3, owned);
  EXPECT_TRUE(first.IsPositionBound);
  EXPECT_NE((*source).Program, nullptr);
  const TProgram& second = ProgramOf(*source, 4, 9, owned);
  EXPECT_EQ(&second, owned.get());
  EXPECT_EQ(DumpAt(second, 4, 9), DumpText((*source).TextAt(4, 9)));
}

TEST(Program, ATemplateKeepsItsProgramAlsoWhenTheParserRefusesIt) {
  for (const char16_t* formula : {u"=A1+B2", u"=A1 B2", u"=SUM(A1,,B2:C3)", u"=F(A1;S!B2)"}) {
    const TInterned source(formula, 3, 3);
    std::unique_ptr<TProgram> owned;
    const TProgram& first = ProgramOf(*source, 3, 3, owned);
    EXPECT_EQ(&ProgramOf(*source, 9, 9, owned), &first) << Utf16ToUtf8(formula);
    EXPECT_EQ(owned, nullptr);
  }
}

TEST(Program, CallsAreBoundByCanonicalName) {
  const struct {
    const char16_t* Formula;
    TSpecialForm Special;
    const char16_t* Function;  // null for a name that no tier knows
  } cases[] = {
      {u"=sum(1)", TSpecialForm::sfNone, u"SUM"},
      {u"=_xlfn.single(A1)", TSpecialForm::sfNone, u"SINGLE"},
      {u"=_xlfn._xlws.sort(A1)", TSpecialForm::sfNone, u"SORT"},
      {u"=if(1,2)", TSpecialForm::sfIf, u"IF"},
      {u"=offset(A1,1,1)", TSpecialForm::sfOffset, u"OFFSET"},
      {u"=_xlfn.LET(x,1,x)", TSpecialForm::sfLet, nullptr},
      {u"=nonesuch(1)", TSpecialForm::sfNone, nullptr},
      {u"=pi", TSpecialForm::sfNone, u"PI"},
  };
  for (const auto& row : cases) {
    const auto program = CompileText(row.Formula);
    const TProgramNode& root = program->Root();
    EXPECT_EQ(root.Special, row.Special) << Utf16ToUtf8(row.Formula);
    if (row.Special == TSpecialForm::sfLet) continue;  // known to the evaluator, with a row or without
    EXPECT_EQ(root.Function ? root.Function->Name : u"", row.Function ? row.Function : u"") << Utf16ToUtf8(row.Formula);
  }
  EXPECT_TRUE(CompileText(u"=PI()")->Root().IsIdentifier);
  EXPECT_FALSE(CompileText(u"=ABS(1)")->Root().IsIdentifier);
}

std::string Flags(const TProgram& AProgram) {
  std::string text;
  const auto add = [&text](bool ASet, const char* AName) {
    if (ASet) text += (text.empty() ? "" : " ") + std::string(AName);
  };
  add(AProgram.HasCalls, "calls");
  add(AProgram.HasIdentifiers, "identifiers");
  add(AProgram.ReadsPosition, "position");
  add(AProgram.ReadsUntracked, "untracked");
  add(AProgram.HasOrderEffects, "order");
  add(AProgram.MaySpill, "spill");
  add(AProgram.HasTableRefs, "table");
  add(AProgram.HasSheetRefs, "sheet");
  add(AProgram.HasWholeLines, "lines");
  return text;
}

TEST(Program, FlagsTellWhatAFormulaMayDo) {
  test::ExpectCases("formula/program_flags.tsv",
                    [](const test::TCase& ACase) { return Flags(*CompileText(ACase.Text(0))); });
  const TInterned column(u"=SUM(B1:C1048576)", 1, 5);
  EXPECT_TRUE(CompileTemplate(*column, 1, 5)->HasWholeLines);
}

TEST(Program, LongChainsCompile) {
  std::u16string sum = u"=B1";
  for (int i = 0; i < 500'000; ++i) sum += u"+1";
  const TInterned source(sum, 1, 1);
  const auto program = CompileTemplate(*source, 1, 1);
  ASSERT_EQ(program->Nodes.size(), 1'000'001u);
  EXPECT_EQ(program->Nodes[0].Relative, TProgramNode::rlCol | TProgramNode::rlRow);
  const auto signs = CompileText(std::u16string(1'000'000, u'-') + u"1");
  EXPECT_EQ(signs->Nodes.size(), 1'000'001u);
  EXPECT_EQ(CompileText(std::u16string(100'000, u'('))->Root().Kind, ankError);
}

}  // namespace
}  // namespace tessarine::detail
