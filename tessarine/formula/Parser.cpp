#include <tessarine/formula/Parser.h>

#include <utility>

#include <tessarine/formula/detail/Descent.h>

namespace tessarine {

namespace {

/// Makes the nodes of a tree that owns them.
struct TAstBuilder {
  using TTree = std::unique_ptr<TAstNode>;
  using TOpen = std::unique_ptr<TAstNode>;

  TTree Leaf(TAstNodeKind AKind, TFormulaToken& AToken) {
    auto node = std::make_unique<TAstNode>(AKind);
    node->Text = std::move(AToken.Text);
    if (AKind == ankNumber) node->Number = AToken.Number;
    if (AKind == ankBool) node->BooleanValue = AToken.Number != 0;
    if (AKind == ankNumber || AKind == ankBool || AKind == ankString) return node;
    node->Col = AToken.Col;
    node->Row = AToken.Row;
    node->Col2 = AToken.Col2;
    node->Row2 = AToken.Row2;
    node->SheetName = std::move(AToken.SheetName);
    node->ColumnName = std::move(AToken.ColumnName);
    node->StartIndex = AToken.StartIndex;
    node->Length = AToken.Length;
    return node;
  }
  TTree Name(std::u16string AName) { return OpenCall(std::move(AName)); }
  TTree Error() {
    auto node = std::make_unique<TAstNode>(ankError);
    node->ErrorCode = ceValue;
    return node;
  }
  TOpen OpenSign(std::u16string_view AOperator) {
    auto node = std::make_unique<TAstNode>(ankUnary);
    node->Op = AOperator;
    return node;
  }
  TOpen OpenInfix(std::u16string_view AOperator, TTree ALeft) {
    auto node = std::make_unique<TAstNode>(ankBinary);
    node->Op = AOperator;
    node->Left = std::move(ALeft);
    return node;
  }
  TOpen OpenCall(std::u16string AName) {
    auto node = std::make_unique<TAstNode>(ankFunc);
    node->Text = std::move(AName);
    return node;
  }
  TOpen OpenArray() { return std::make_unique<TAstNode>(ankArrayLit); }
  void AddItem(TOpen& AOpen, TTree AItem) { AOpen->Args.push_back(std::move(AItem)); }
  TTree CloseOperator(TOpen AOpen, TTree AOperand) {
    (AOpen->Kind == ankUnary ? AOpen->Left : AOpen->Right) = std::move(AOperand);
    return AOpen;
  }
  TTree CloseCall(TOpen AOpen, size_t) { return AOpen; }
  TTree CloseArray(TOpen AOpen, size_t AColumns, size_t ACells) {
    AOpen->Col2 = static_cast<int32_t>(AColumns);
    AOpen->Row2 = AColumns == 0 ? 0 : static_cast<int32_t>(ACells / AColumns);
    return AOpen;
  }
  void Discard(TTree) {}
};

}  // namespace

std::unique_ptr<TAstNode> TFormulaParser::Parse(std::u16string_view AText) {
  TAstBuilder builder;
  auto formula = detail::TDescent<TAstBuilder>(AText, builder).ReadFormula();
  return formula.Depth <= kMaxDepth ? std::move(formula.Tree) : builder.Error();
}

}  // namespace tessarine
