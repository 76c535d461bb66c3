#include <tessarine/formula/Ast.h>

#include <string_view>
#include <utility>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {

namespace {

std::u16string DumpReference(const TAstNode& ANode) {
  std::u16string text;
  if (!ANode.SheetName.empty()) text = QuoteSheetName(ANode.SheetName) + u"!";
  text += TCellAddress::Create(ANode.Col, ANode.Row).ToA1();
  if (ANode.Kind == ankRange) text += u":" + TCellAddress::Create(ANode.Col2, ANode.Row2).ToA1();
  return text;
}

std::u16string DumpString(std::u16string_view AText) {
  std::u16string text(1, u'"');
  for (const char16_t unit : AText) text.append(unit == u'"' ? 2 : 1, unit);
  return text + u'"';
}

/// A step of a dump still to be done: a text, then a node (null for the text alone).
struct TDumpStep {
  std::u16string_view Before;
  const TAstNode* Node;
};

/// Writes what stands before the children of a node and puts these and the closing text on the stack, last one first.
void DumpNode(const TAstNode& ANode, std::u16string& AText, std::vector<TDumpStep>& ASteps) {
  switch (ANode.Kind) {
    case ankNumber:
    case ankBool: AText += ANode.Text; break;
    case ankString: AText += DumpString(ANode.Text); break;
    case ankError: AText += ErrorCodeToString(ANode.ErrorCode); break;
    case ankCellRef:
    case ankRange:
    case ankSheetRef: AText += DumpReference(ANode); break;
    case ankTableRef: AText += ANode.Text + u"[" + ANode.ColumnName + u"]"; break;
    case ankUnary:
    case ankBinary:
      AText += u"(" + ANode.Op;
      ASteps.push_back({u")", nullptr});
      if (ANode.Right) ASteps.push_back({u" ", ANode.Right.get()});
      if (ANode.Left) ASteps.push_back({u" ", ANode.Left.get()});
      break;
    case ankFunc:
      AText += u"(" + ANode.Text;
      ASteps.push_back({u")", nullptr});
      for (size_t i = ANode.Args.size(); i-- > 0;) ASteps.push_back({u" ", ANode.Args[i].get()});
      break;
    case ankArrayLit:
      AText += u'{';
      ASteps.push_back({u"}", nullptr});
      for (size_t i = ANode.Args.size(); i-- > 0;) {
        const bool startsRow = ANode.Col2 > 0 && i % static_cast<size_t>(ANode.Col2) == 0;
        ASteps.push_back({i == 0 ? u"" : startsRow ? u"; " : u" ", ANode.Args[i].get()});
      }
      break;
  }
}

}  // namespace

TAstNode::~TAstNode() {
  TAstNode* pending = nullptr;
  DetachChildren(pending);
  while (pending) {
    TAstNode* const node = pending;
    pending = node->FNextToFree;
    node->DetachChildren(pending);
    delete node;
  }
}

void TAstNode::DetachChildren(TAstNode*& APending) noexcept {
  const auto detach = [&APending](std::unique_ptr<TAstNode>& AChild) {
    if (!AChild) return;
    AChild->FNextToFree = APending;
    APending = AChild.release();
  };
  detach(Left);
  detach(Right);
  for (auto& item : Args) detach(item);
}

std::unique_ptr<TAstNode> CloneAstNode(const TAstNode* ANode) {
  struct TStep {
    const TAstNode* Source;
    std::unique_ptr<TAstNode>* Target;
  };
  std::unique_ptr<TAstNode> root;
  std::vector<TStep> steps{{ANode, &root}};
  while (!steps.empty()) {
    const auto [source, target] = steps.back();
    steps.pop_back();
    if (!source) continue;
    auto copy = std::make_unique<TAstNode>(source->Kind);
    copy->BooleanValue = source->BooleanValue;
    copy->ErrorCode = source->ErrorCode;
    copy->Number = source->Number;
    copy->Text = source->Text;
    copy->Col = source->Col;
    copy->Row = source->Row;
    copy->Col2 = source->Col2;
    copy->Row2 = source->Row2;
    copy->SheetName = source->SheetName;
    copy->ColumnName = source->ColumnName;
    copy->Op = source->Op;
    copy->StartIndex = source->StartIndex;
    copy->Length = source->Length;
    copy->Args.resize(source->Args.size());
    steps.push_back({source->Left.get(), &copy->Left});
    steps.push_back({source->Right.get(), &copy->Right});
    for (size_t i = 0; i < source->Args.size(); ++i) steps.push_back({source->Args[i].get(), &copy->Args[i]});
    *target = std::move(copy);
  }
  return root;
}

std::u16string DumpAst(const TAstNode* ANode) {
  std::u16string text;
  if (!ANode) return text;
  std::vector<TDumpStep> steps{{u"", ANode}};
  while (!steps.empty()) {
    const TDumpStep step = steps.back();
    steps.pop_back();
    text += step.Before;
    if (step.Node) DumpNode(*step.Node, text, steps);
  }
  return text;
}

}  // namespace tessarine
