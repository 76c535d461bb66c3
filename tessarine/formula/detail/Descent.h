#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/formula/Ast.h>

namespace tessarine::detail {

/// The descent of a recursive grammar (comparison, "&", sums, products, "^", signs, primaries) on a stack of its own:
/// any frame stands for the callers that a recursive parser would have between two operands.
///
/// What becomes of the constructs is for a builder. Its TTree is a finished subtree, its TOpen one that waits for
/// operands. Subtrees come in the order of the text, children before their parents; what is given up by Discard is
/// always the latest.
///
///   TTree Leaf(TAstNodeKind, TFormulaToken&)      TOpen OpenSign(std::u16string_view AOperator)
///   TTree Name(std::u16string)                    TOpen OpenInfix(std::u16string_view AOperator, TTree ALeft)
///   TTree Error()                                 TOpen OpenCall(std::u16string AName), OpenArray()
///   void AddItem(TOpen&, TTree)                   TTree CloseOperator(TOpen, TTree AOperand)
///   void Discard(TTree), Discard(TOpen)           TTree CloseCall(TOpen, size_t AArguments)
///                                                 TTree CloseArray(TOpen, size_t AColumns, size_t ACells)
template <class TBuilder>
class TDescent {
 public:
  using TTree = typename TBuilder::TTree;
  using TOpen = typename TBuilder::TOpen;

  /// A finished subtree and its depth as TFormulaParser::kMaxDepth counts it.
  struct TOperand {
    TTree Tree;
    size_t Depth = 1;
    TAstNodeKind Kind = ankError;
  };

  TDescent(std::u16string_view AText, TBuilder& ABuilder) : FTokenizer(AText), FBuilder(ABuilder) { Next(); }

  TOperand ReadFormula();

 private:
  enum class TFrameKind : uint8_t { fmSign, fmInfix, fmParen, fmCall, fmArray };

  /// A construct that waits for an operand.
  struct TFrame {
    TFrameKind Kind;
    uint8_t Level = 0;     // fmInfix
    TOpen Open = {};       // unused for fmParen
    size_t Depth = 0;      // of the deepest child so far
    size_t Items = 0;      // fmCall, fmArray: children so far
    size_t RowStart = 0;   // fmArray: index of the first cell of the row that is being read
    size_t RowLength = 0;  // fmArray: cells of the first row, 0 while that is being read
  };

  void Next() { FTokenizer.NextToken(FToken); }
  bool StartOperand();
  bool StartName();
  bool StartArray();
  bool FinishOperand();
  void ApplySigns();
  void ApplyInfix(uint8_t ALowestLevel);
  bool ContinueGroup();
  bool ContinueArray(TFrame& AFrame);
  bool ContinueArguments(TFrame& AFrame);
  void FailGroup();
  void AdoptChild(TFrame& AFrame);
  void SetLeaf(TAstNodeKind AKind) { FOperand = {FBuilder.Leaf(AKind, FToken), 1, AKind}; }
  void SetError() { FOperand = {FBuilder.Error(), 1, ankError}; }

  /// The binding strength of an infix operator, 0 for a token that is none.
  static uint8_t InfixLevel(const TFormulaToken& AToken) {
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

  static bool IsSign(const TFormulaToken& AToken) {
    return AToken.Kind == ftOperator && (AToken.Text == u"-" || AToken.Text == u"+" || AToken.Text == u"@");
  }

  TFormulaTokenizer FTokenizer;
  TBuilder& FBuilder;
  TFormulaToken FToken;
  TOperand FOperand;  // the operand read last
  std::vector<TFrame> FStack;
};

template <class TBuilder>
auto TDescent<TBuilder>::ReadFormula() -> TOperand {
  if (FToken.Kind == ftEnd) {
    SetError();
    return std::move(FOperand);
  }
  do {
    while (!StartOperand()) {}
  } while (!FinishOperand());
  if (FToken.Kind != ftEnd) {
    FBuilder.Discard(std::move(FOperand.Tree));
    SetError();
  }
  return std::move(FOperand);
}

/// Reads the beginning of an operand. True when that was all of it: FOperand holds it. False when it opened a frame
/// that needs an operand first.
template <class TBuilder>
bool TDescent<TBuilder>::StartOperand() {
  if (IsSign(FToken)) {
    FStack.push_back({TFrameKind::fmSign, 0, FBuilder.OpenSign(FToken.Text)});
    Next();
    return false;
  }
  switch (FToken.Kind) {
    case ftNumber: SetLeaf(ankNumber); break;
    case ftString: SetLeaf(ankString); break;
    case ftBoolean: SetLeaf(ankBool); break;
    case ftCellRef: SetLeaf(ankCellRef); break;
    case ftRangeRef: SetLeaf(ankRange); break;
    case ftSheetRef: SetLeaf(ankSheetRef); break;
    case ftTableRef: SetLeaf(ankTableRef); break;
    case ftFunction: return StartName();
    case ftLParen:
      Next();
      FStack.push_back({TFrameKind::fmParen});
      return false;
    case ftLBrace: return StartArray();
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

/// A bare name, a call without arguments, or the beginning of a call.
template <class TBuilder>
bool TDescent<TBuilder>::StartName() {
  std::u16string name = std::move(FToken.Text);
  Next();
  const bool isCall = FToken.Kind == ftLParen;
  if (isCall) Next();
  if (isCall && FToken.Kind != ftRParen) {
    FStack.push_back({TFrameKind::fmCall, 0, FBuilder.OpenCall(std::move(name))});
    return false;
  }
  if (isCall) Next();
  FOperand = {FBuilder.Name(std::move(name)), 1, ankFunc};
  return true;
}

template <class TBuilder>
bool TDescent<TBuilder>::StartArray() {
  Next();
  TOpen array = FBuilder.OpenArray();
  if (FToken.Kind != ftRBrace) {
    FStack.push_back({TFrameKind::fmArray, 0, std::move(array)});
    return false;
  }
  Next();
  FOperand = {FBuilder.CloseArray(std::move(array), 0, 0), 1, ankArrayLit};
  return true;
}

/// Takes FOperand as far as it goes. True when it is the whole expression, false when another operand is needed.
template <class TBuilder>
bool TDescent<TBuilder>::FinishOperand() {
  for (;;) {
    ApplySigns();
    const uint8_t level = InfixLevel(FToken);
    ApplyInfix(level);
    if (level > 0) {
      const size_t depth = FOperand.Kind == ankBinary ? FOperand.Depth - 1 : FOperand.Depth;
      FStack.push_back({TFrameKind::fmInfix, level, FBuilder.OpenInfix(FToken.Text, std::move(FOperand.Tree)), depth});
      Next();
      return false;
    }
    if (FStack.empty()) return true;
    if (ContinueGroup()) return false;
  }
}

template <class TBuilder>
void TDescent<TBuilder>::ApplySigns() {
  while (!FStack.empty() && FStack.back().Kind == TFrameKind::fmSign) {
    TFrame frame = std::move(FStack.back());
    FStack.pop_back();
    const size_t depth = FOperand.Kind == ankUnary ? FOperand.Depth : FOperand.Depth + 1;
    FOperand = {FBuilder.CloseOperator(std::move(frame.Open), std::move(FOperand.Tree)), depth, ankUnary};
  }
}

/// Closes the infix operators on top of the stack that bind at least as tightly as ALowestLevel.
template <class TBuilder>
void TDescent<TBuilder>::ApplyInfix(uint8_t ALowestLevel) {
  while (!FStack.empty() && FStack.back().Kind == TFrameKind::fmInfix && FStack.back().Level >= ALowestLevel) {
    TFrame frame = std::move(FStack.back());
    FStack.pop_back();
    const size_t depth = std::max(frame.Depth, FOperand.Depth) + 1;
    FOperand = {FBuilder.CloseOperator(std::move(frame.Open), std::move(FOperand.Tree)), depth, ankBinary};
  }
}

/// Gives FOperand to the group on top of the stack. True when the group needs another operand, false when it is closed
/// and has become FOperand itself.
template <class TBuilder>
bool TDescent<TBuilder>::ContinueGroup() {
  TFrame& frame = FStack.back();
  if (frame.Kind == TFrameKind::fmArray) return ContinueArray(frame);
  if (frame.Kind == TFrameKind::fmCall) return ContinueArguments(frame);
  FStack.pop_back();
  if (FToken.Kind == ftRParen) {
    Next();
  } else {  // the token stays, and an error stands in the place of what was read
    FBuilder.Discard(std::move(FOperand.Tree));
    SetError();
  }
  return false;
}

template <class TBuilder>
bool TDescent<TBuilder>::ContinueArguments(TFrame& AFrame) {
  AdoptChild(AFrame);
  if (FToken.Kind == ftComma) {
    Next();
    return true;
  }
  if (FToken.Kind == ftRParen) {
    FOperand = {FBuilder.CloseCall(std::move(AFrame.Open), AFrame.Items), AFrame.Depth + 1, ankFunc};
    FStack.pop_back();
    Next();
  } else {
    FailGroup();
  }
  return false;
}

template <class TBuilder>
bool TDescent<TBuilder>::ContinueArray(TFrame& AFrame) {
  AdoptChild(AFrame);
  if (FToken.Kind == ftComma) {
    Next();
    return true;
  }
  const size_t length = AFrame.Items - AFrame.RowStart;
  const bool fits = AFrame.RowLength == 0 || AFrame.RowLength == length;
  AFrame.RowLength = length;
  AFrame.RowStart = AFrame.Items;
  if (fits && FToken.Kind == ftSemicolon) {
    Next();
    return true;
  }
  if (fits && FToken.Kind == ftRBrace) {
    FOperand = {FBuilder.CloseArray(std::move(AFrame.Open), length, AFrame.Items), AFrame.Depth + 1, ankArrayLit};
    FStack.pop_back();
    Next();
  } else {
    FailGroup();
  }
  return false;
}

/// The group on top of the stack cannot go on at the current token, which stays: an error stands in its place.
template <class TBuilder>
void TDescent<TBuilder>::FailGroup() {
  FBuilder.Discard(std::move(FStack.back().Open));
  FStack.pop_back();
  SetError();
}

template <class TBuilder>
void TDescent<TBuilder>::AdoptChild(TFrame& AFrame) {
  FBuilder.AddItem(AFrame.Open, std::move(FOperand.Tree));
  AFrame.Depth = std::max(AFrame.Depth, FOperand.Depth);
  ++AFrame.Items;
}

}  // namespace tessarine::detail
