#include <tessarine/formula/detail/ProgramTree.h>

#include <iterator>
#include <vector>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kOperatorTexts[] = {u"+", u"-", u"*",  u"/",  u"^", u"&", u"=", u"<>",
                                                  u"<", u">", u"<=", u">=", u"+", u"-", u"@"};
static_assert(std::size(kOperatorTexts) == static_cast<size_t>(opAt) + 1);

void FillReference(const TProgramNode& ANode, int32_t ACol, int32_t ARow, TAstNode& AResult) {
  const TRelativeRect rect = TProgram::RectAt(ANode, ACol, ARow);
  AResult.Col = rect.Col;
  AResult.Row = rect.Row;
  AResult.Col2 = rect.Col2;
  AResult.Row2 = rect.Row2;
  AResult.SheetName = ANode.SheetName;
}

/// The node alone.
std::unique_ptr<TAstNode> MakeNode(const TProgramNode& ANode, int32_t ACol, int32_t ARow) {
  auto result = std::make_unique<TAstNode>(ANode.Kind);
  result->Text = ANode.Text;
  switch (ANode.Kind) {
    case ankNumber:
      result->Number = ANode.Number;
      result->Text = TCellValue::FromNumber(ANode.Number).ToDisplayString();
      break;
    case ankBool:
      result->BooleanValue = ANode.BooleanValue;
      result->Text = TCellValue::FromBoolean(ANode.BooleanValue).ToDisplayString();
      break;
    case ankError: result->ErrorCode = ANode.ErrorCode; break;
    case ankCellRef:
    case ankRange:
    case ankSheetRef: FillReference(ANode, ACol, ARow, *result); break;
    case ankTableRef: result->ColumnName = ANode.ColumnName; break;
    case ankUnary:
    case ankBinary: result->Op = kOperatorTexts[static_cast<size_t>(ANode.Op)]; break;
    case ankArrayLit:
      result->Col2 = ANode.Col2;
      result->Row2 = ANode.Row2;
      break;
    case ankString:
    case ankFunc: break;
  }
  return result;
}

}  // namespace

std::unique_ptr<TAstNode> MakeTree(const TProgram& AProgram, const TProgramNode& ANode, int32_t ACol, int32_t ARow) {
  struct TStep {
    const TProgramNode* Source;
    std::unique_ptr<TAstNode>* Target;
  };
  std::unique_ptr<TAstNode> root;
  std::vector<TStep> steps{{&ANode, &root}};
  while (!steps.empty()) {
    const auto [source, target] = steps.back();
    steps.pop_back();
    *target = MakeNode(*source, ACol, ARow);
    TAstNode& made = **target;
    const bool isOperator = source->Kind == ankUnary || source->Kind == ankBinary;
    if (!isOperator) made.Args.resize(source->ChildCount);
    for (uint32_t i = 0; i < source->ChildCount; ++i)
      steps.push_back({&AProgram.Child(*source, i), !isOperator ? &made.Args[i] : i == 0 ? &made.Left : &made.Right});
  }
  return root;
}

}  // namespace tessarine::detail
