#include <tessarine/formula/Parser.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include <tessarine/core/reference/FormulaTokenizer.h>

namespace tessarine {

namespace {

/// The binding strength of an infix operator, 0 for a token that is none.
int32_t InfixLevel(const TFormulaToken& AToken) {
  if (AToken.Kind != ftOperator) return 0;
  switch (AToken.Text.front()) {
    case u'=':
    case u'<':
    case u'>': return 1;
    case u'&': return 2;
    case u'+':
    case u'-': return 3;
    case u'*':
    case u'/': return 4;
    case u'^': return 5;
    default: return 0;
  }
}

bool IsSign(const TFormulaToken& AToken) {
  return AToken.Kind == ftOperator && (AToken.Text == u"-" || AToken.Text == u"+" || AToken.Text == u"@");
}

/// A finished subtree and its depth as TFormulaParser::kMaxDepth counts it.
struct TParsedOperand {
  std::unique_ptr<TAstNode> Node;
  size_t Depth = 1;
};

enum class TParseFrameKind : uint8_t { fmSign, fmInfix, fmParen, fmCall, fmArray };

/// A construct that waits for an operand.
struct TParseFrame {
  TParseFrameKind Kind;
  int32_t Level = 0;                         // fmInfix
  std::unique_ptr<TAstNode> Node = nullptr;  // without the operand that is being read; null for fmParen
  size_t Depth = 0;                          // of the deepest child so far
  size_t RowStart = 0;                       // fmArray: index of the first cell of the row that is being read
  size_t RowLength = 0;                      // fmArray: cells of the first row, 0 while that is being read
};

/// The descent of a recursive grammar (comparison, "&", sums, products, "^", signs, primaries) on a stack of its own:
/// any frame stands for the callers that a recursive parser would have between two operands.
class TDescent {
 public:
  explicit TDescent(std::u16string_view AText) : FTokenizer(AText) { Next(); }

  TParsedOperand ReadFormula();

 private:
  void Next() { FTokenizer.NextToken(FToken); }
  bool StartOperand();
  bool StartGroup(TParseFrameKind AKind, std::unique_ptr<TAstNode> ANode, TFormulaTokenKind AClosing);
  bool FinishOperand();
  void ApplySigns();
  void ApplyInfix(int32_t ALowestLevel);
  bool ContinueGroup();
  bool ContinueArray(TParseFrame& AFrame);
  bool ContinueArguments(TParseFrame& AFrame);
  void CloseGroup(TFormulaTokenKind AClosing);
  void FailGroup();
  void AdoptChild(TParseFrame& AFrame);
  void SetError();
  void SetLeaf(TAstNodeKind AKind);
  void SetReference(TAstNodeKind AKind);

  TFormulaTokenizer FTokenizer;
  TFormulaToken FToken;
  TParsedOperand FOperand;  // the operand read last
  std::vector<TParseFrame> FStack;
};

TParsedOperand TDescent::ReadFormula() {
  if (FToken.Kind == ftEnd) {
    SetError();
    return std::move(FOperand);
  }
  do {
    while (!StartOperand()) {}
  } while (!FinishOperand());
  if (FToken.Kind != ftEnd) SetError();
  return std::move(FOperand);
}

/// Reads the beginning of an operand. True when that was all of it: FOperand holds it. False when it opened a frame
/// that needs an operand first.
bool TDescent::StartOperand() {
  if (IsSign(FToken)) {
    auto node = std::make_unique<TAstNode>(ankUnary);
    node->Op = FToken.Text;
    FStack.push_back({TParseFrameKind::fmSign, 0, std::move(node)});
    Next();
    return false;
  }
  switch (FToken.Kind) {
    case ftNumber:
      SetLeaf(ankNumber);
      FOperand.Node->Number = FToken.Number;
      break;
    case ftString: SetLeaf(ankString); break;
    case ftBoolean:
      SetLeaf(ankBool);
      FOperand.Node->BooleanValue = FToken.Number != 0;
      break;
    case ftCellRef: SetReference(ankCellRef); break;
    case ftRangeRef: SetReference(ankRange); break;
    case ftSheetRef: SetReference(ankSheetRef); break;
    case ftTableRef: SetReference(ankTableRef); break;
    case ftFunction:
      SetLeaf(ankFunc);
      Next();
      return FToken.Kind != ftLParen || StartGroup(TParseFrameKind::fmCall, std::move(FOperand.Node), ftRParen);
    case ftLParen:
      Next();
      FStack.push_back({TParseFrameKind::fmParen});
      return false;
    case ftLBrace: return StartGroup(TParseFrameKind::fmArray, std::make_unique<TAstNode>(ankArrayLit), ftRBrace);
    case ftEnd:
    case ftError:
    case ftOperator:
    case ftRParen:
    case ftComma:
    case ftColon:
    case ftRBrace:
    case ftSemicolon: SetError(); break;
  }
  if (FToken.Kind != ftEnd) Next();
  return true;
}

/// Enters a call or an array literal on its opening token; an empty one is an operand at once.
bool TDescent::StartGroup(TParseFrameKind AKind, std::unique_ptr<TAstNode> ANode, TFormulaTokenKind AClosing) {
  Next();
  if (FToken.Kind != AClosing) {
    FStack.push_back({AKind, 0, std::move(ANode)});
    return false;
  }
  Next();
  FOperand = {std::move(ANode), 1};
  return true;
}

/// Takes FOperand as far as it goes. True when it is the whole expression, false when another operand is needed.
bool TDescent::FinishOperand() {
  for (;;) {
    ApplySigns();
    const int32_t level = InfixLevel(FToken);
    ApplyInfix(level);
    if (level > 0) {
      auto node = std::make_unique<TAstNode>(ankBinary);
      node->Op = FToken.Text;
      const bool continuesChain = FOperand.Node->Kind == ankBinary;
      const size_t depth = continuesChain ? FOperand.Depth - 1 : FOperand.Depth;
      node->Left = std::move(FOperand.Node);
      FStack.push_back({TParseFrameKind::fmInfix, level, std::move(node), depth});
      Next();
      return false;
    }
    if (FStack.empty()) return true;
    if (ContinueGroup()) return false;
  }
}

void TDescent::ApplySigns() {
  while (!FStack.empty() && FStack.back().Kind == TParseFrameKind::fmSign) {
    TParseFrame frame = std::move(FStack.back());
    FStack.pop_back();
    if (FOperand.Node->Kind != ankUnary) ++FOperand.Depth;
    frame.Node->Left = std::move(FOperand.Node);
    FOperand.Node = std::move(frame.Node);
  }
}

/// Closes the infix operators on top of the stack that bind at least as tightly as ALowestLevel.
void TDescent::ApplyInfix(int32_t ALowestLevel) {
  while (!FStack.empty() && FStack.back().Kind == TParseFrameKind::fmInfix && FStack.back().Level >= ALowestLevel) {
    TParseFrame frame = std::move(FStack.back());
    FStack.pop_back();
    frame.Node->Right = std::move(FOperand.Node);
    FOperand = {std::move(frame.Node), std::max(frame.Depth, FOperand.Depth) + 1};
  }
}

/// Gives FOperand to the group on top of the stack. True when the group needs another operand, false when it is closed
/// and has become FOperand itself.
bool TDescent::ContinueGroup() {
  TParseFrame& frame = FStack.back();
  if (frame.Kind == TParseFrameKind::fmArray) return ContinueArray(frame);
  if (frame.Kind == TParseFrameKind::fmCall) return ContinueArguments(frame);
  if (FToken.Kind == ftRParen) {
    FStack.pop_back();
    Next();
  } else {
    FailGroup();
  }
  return false;
}

bool TDescent::ContinueArguments(TParseFrame& AFrame) {
  AdoptChild(AFrame);
  if (FToken.Kind == ftComma) {
    Next();
    return true;
  }
  CloseGroup(ftRParen);
  return false;
}

bool TDescent::ContinueArray(TParseFrame& AFrame) {
  AdoptChild(AFrame);
  if (FToken.Kind == ftComma) {
    Next();
    return true;
  }
  TAstNode& node = *AFrame.Node;
  const size_t length = node.Args.size() - AFrame.RowStart;
  if (AFrame.RowLength != 0 && AFrame.RowLength != length) {
    FailGroup();
    return false;
  }
  AFrame.RowLength = length;
  AFrame.RowStart = node.Args.size();
  if (FToken.Kind == ftSemicolon) {
    Next();
    return true;
  }
  node.Col2 = static_cast<int32_t>(length);
  node.Row2 = static_cast<int32_t>(node.Args.size() / length);
  CloseGroup(ftRBrace);
  return false;
}

/// Ends the group on top of the stack, whose children are complete.
void TDescent::CloseGroup(TFormulaTokenKind AClosing) {
  if (FToken.Kind != AClosing) return FailGroup();
  FOperand = {std::move(FStack.back().Node), FStack.back().Depth + 1};
  FStack.pop_back();
  Next();
}

/// The group on top of the stack cannot go on at the current token, which stays: an error stands in its place.
void TDescent::FailGroup() {
  FStack.pop_back();
  SetError();
}

void TDescent::AdoptChild(TParseFrame& AFrame) {
  AFrame.Node->Args.push_back(std::move(FOperand.Node));
  AFrame.Depth = std::max(AFrame.Depth, FOperand.Depth);
}

void TDescent::SetError() {
  FOperand = {std::make_unique<TAstNode>(ankError), 1};
  FOperand.Node->ErrorCode = ceValue;
}

void TDescent::SetLeaf(TAstNodeKind AKind) {
  FOperand = {std::make_unique<TAstNode>(AKind), 1};
  FOperand.Node->Text = std::move(FToken.Text);
}

void TDescent::SetReference(TAstNodeKind AKind) {
  SetLeaf(AKind);
  TAstNode& node = *FOperand.Node;
  node.Col = FToken.Col;
  node.Row = FToken.Row;
  node.Col2 = FToken.Col2;
  node.Row2 = FToken.Row2;
  node.SheetName = std::move(FToken.SheetName);
  node.ColumnName = std::move(FToken.ColumnName);
  node.StartIndex = FToken.StartIndex;
  node.Length = FToken.Length;
}

}  // namespace

std::unique_ptr<TAstNode> TFormulaParser::Parse(std::u16string_view AText) {
  TParsedOperand formula = TDescent(AText).ReadFormula();
  if (formula.Depth <= kMaxDepth) return std::move(formula.Node);
  auto error = std::make_unique<TAstNode>(ankError);
  error->ErrorCode = ceValue;
  return error;
}

}  // namespace tessarine
