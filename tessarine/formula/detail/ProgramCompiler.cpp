#include <algorithm>
#include <utility>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/formula/Parser.h>
#include <tessarine/formula/detail/Descent.h>
#include <tessarine/formula/detail/Program.h>
#include <tessarine/formula/detail/ProgramFlags.h>

namespace tessarine::detail {

namespace {

TOperator InfixOperator(std::u16string_view AText) {
  if (AText == u"<>") return opNe;
  if (AText == u"<=") return opLe;
  if (AText == u">=") return opGe;
  switch (AText.front()) {
    case u'-': return opSub;
    case u'*': return opMul;
    case u'/': return opDiv;
    case u'^': return opPow;
    case u'&': return opConcat;
    case u'=': return opEq;
    case u'<': return opLt;
    case u'>': return opGt;
    default: return opAdd;
  }
}

TOperator SignOperator(std::u16string_view AText) { return AText == u"-" ? opMinus : AText == u"@" ? opAt : opPlus; }

TSpecialForm SpecialFormOf(std::u16string_view ACanonicalName) {
  static constexpr std::pair<std::u16string_view, TSpecialForm> kForms[] = {
      {u"BYCOL", TSpecialForm::sfByCol},
      {u"BYROW", TSpecialForm::sfByRow},
      {u"CHOOSE", TSpecialForm::sfChoose},
      {u"COLUMN", TSpecialForm::sfColumn},
      {u"IF", TSpecialForm::sfIf},
      {u"IFERROR", TSpecialForm::sfIfError},
      {u"IFNA", TSpecialForm::sfIfNa},
      {u"INDIRECT", TSpecialForm::sfIndirect},
      {u"ISOMITTED", TSpecialForm::sfIsOmitted},
      {u"LAMBDA", TSpecialForm::sfLambda},
      {u"LET", TSpecialForm::sfLet},
      {u"MAKEARRAY", TSpecialForm::sfMakeArray},
      {u"MAP", TSpecialForm::sfMap},
      {u"OFFSET", TSpecialForm::sfOffset},
      {u"REDUCE", TSpecialForm::sfReduce},
      {u"ROW", TSpecialForm::sfRow},
      {u"SCAN", TSpecialForm::sfScan},
  };
  for (const auto& [name, form] : kForms)
    if (name == ACanonicalName) return form;
  return TSpecialForm::sfNone;
}

/// Finds the slots of a template that stand in the references of its text, asked for in the order of the text. A slot
/// belongs to the corner whose source it is; that it names the same cell is tested.
class TSlotReader {
 public:
  TSlotReader(std::vector<TReferenceSlot> ASlots, int32_t ACol, int32_t ARow)
      : FSlots(std::move(ASlots)), FCol(ACol), FRow(ARow) {}

  struct TCorners {
    const TReferenceSlot* First = nullptr;
    const TReferenceSlot* Second = nullptr;
  };

  /// The slots of a reference. Those that lie before it are passed by for good.
  TCorners CornersOf(const TFormulaToken& AReference, bool AIsRange) {
    const auto start = static_cast<size_t>(AReference.StartIndex);
    const size_t end = start + static_cast<size_t>(AReference.Length);
    while (FNext < FSlots.size() && FSlots[FNext].Offset < start) ++FNext;
    TCorners corners;
    for (; FNext < FSlots.size() && FSlots[FNext].Offset < end; ++FNext) {
      const TReferenceSlot& slot = FSlots[FNext];
      const bool isLast = slot.Offset + slot.Length == end;
      if (AIsRange && isLast && Names(slot, AReference.Col2, AReference.Row2)) {
        corners.Second = &slot;
      } else if (AIsRange != isLast && !corners.First && Names(slot, AReference.Col, AReference.Row)) {
        corners.First = &slot;
      } else {
        continue;
      }
      ++FFound;
    }
    return corners;
  }

  bool FoundAll() const { return FFound == FSlots.size(); }

  void Restart() { FNext = FFound = 0; }

 private:
  bool Names(const TReferenceSlot& ASlot, int32_t ACol, int32_t ARow) const {
    return (ASlot.ColAbsolute ? ASlot.Col : ASlot.Col + FCol) == ACol &&
           (ASlot.RowAbsolute ? ASlot.Row : ASlot.Row + FRow) == ARow;
  }

  std::vector<TReferenceSlot> FSlots;
  int32_t FCol;
  int32_t FRow;
  size_t FNext = 0;
  size_t FFound = 0;
};

/// Makes the flat tree of a program, each node behind its children.
class TProgramBuilder {
 public:
  TProgramBuilder(TProgram& AProgram, TSlotReader& ASlots, int32_t ACol, int32_t ARow)
      : FProgram(AProgram), FSlots(ASlots), FCol(ACol), FRow(ARow) {}

  /// A subtree by what there was before it was begun.
  struct TTree {
    size_t Nodes = 0;
    size_t Children = 0;
    size_t Finished = 0;
  };
  struct TOpen {
    TTree Begin;
    TAstNodeKind Kind = ankError;
    TOperator Op = opAdd;
    TText Name;  // ankFunc
  };

  TTree Leaf(TAstNodeKind AKind, const TFormulaToken& AToken);
  TTree Name(std::u16string_view AName) { return Emit(Here(), MakeCall(AName, true), 0); }
  TTree Error() {
    TProgramNode node;
    node.ErrorCode = ceValue;
    return Emit(Here(), std::move(node), 0);
  }
  TOpen OpenSign(std::u16string_view AOperator) { return {Here(), ankUnary, SignOperator(AOperator), {}}; }
  TOpen OpenInfix(std::u16string_view AOperator, TTree ALeft) {
    return {ALeft, ankBinary, InfixOperator(AOperator), {}};
  }
  TOpen OpenCall(std::u16string_view AName) { return {Here(), ankFunc, opAdd, TText(AName)}; }
  TOpen OpenArray() { return {Here(), ankArrayLit, opAdd, {}}; }
  void AddItem(TOpen&, TTree) {}
  TTree CloseOperator(const TOpen& AOpen, TTree) {
    TProgramNode node;
    node.Kind = AOpen.Kind;
    node.Op = AOpen.Op;
    return Emit(AOpen.Begin, std::move(node), AOpen.Kind == ankUnary ? 1 : 2);
  }
  TTree CloseCall(const TOpen& AOpen, size_t AArguments) {
    return Emit(AOpen.Begin, MakeCall(AOpen.Name, false), AArguments);
  }
  TTree CloseArray(const TOpen& AOpen, size_t AColumns, size_t ACells) {
    TProgramNode node;
    node.Kind = ankArrayLit;
    node.Col2 = static_cast<int32_t>(AColumns);
    node.Row2 = AColumns == 0 ? 0 : static_cast<int32_t>(ACells / AColumns);
    return Emit(AOpen.Begin, std::move(node), ACells);
  }
  void Discard(TTree ATree) {
    FProgram.Nodes.resize(ATree.Nodes);
    FProgram.Children.resize(ATree.Children);
    FFinished.resize(ATree.Finished);
  }
  void Discard(const TOpen& AOpen) { Discard(AOpen.Begin); }

 private:
  TTree Here() const { return {FProgram.Nodes.size(), FProgram.Children.size(), FFinished.size()}; }
  TTree Emit(TTree ABegin, TProgramNode ANode, size_t AChildCount);
  static TProgramNode MakeCall(std::u16string_view AName, bool AIsIdentifier);
  void FillReference(const TFormulaToken& AToken, TProgramNode& AResult);
  void MakeRelative(const TReferenceSlot* ASlot, uint8_t AColBit, uint8_t ARowBit, TProgramNode& AResult) const;

  TProgram& FProgram;
  TSlotReader& FSlots;
  int32_t FCol;
  int32_t FRow;
  std::vector<uint32_t> FFinished;  // emitted nodes that have no parent yet
};

TProgramBuilder::TTree TProgramBuilder::Leaf(TAstNodeKind AKind, const TFormulaToken& AToken) {
  TProgramNode node;
  node.Kind = AKind;
  if (AKind == ankNumber) {
    node.Number = AToken.Number;
  } else if (AKind == ankBool) {
    node.BooleanValue = AToken.Number != 0;
  } else if (AKind == ankString || AKind == ankTableRef) {
    node.Text = TText(AToken.Text);
    node.ColumnName = TText(AToken.ColumnName);
  } else {
    FillReference(AToken, node);
  }
  return Emit(Here(), std::move(node), 0);
}

/// Appends a node whose children are the last AChildCount of the finished ones.
TProgramBuilder::TTree TProgramBuilder::Emit(TTree ABegin, TProgramNode ANode, size_t AChildCount) {
  const auto firstChild = FFinished.end() - static_cast<std::ptrdiff_t>(AChildCount);
  ANode.FirstChild = static_cast<uint32_t>(FProgram.Children.size());
  ANode.ChildCount = static_cast<uint32_t>(AChildCount);
  FProgram.Children.insert(FProgram.Children.end(), firstChild, FFinished.end());
  FFinished.erase(firstChild, FFinished.end());
  FFinished.push_back(static_cast<uint32_t>(FProgram.Nodes.size()));
  FProgram.Nodes.push_back(std::move(ANode));
  return ABegin;
}

TProgramNode TProgramBuilder::MakeCall(std::u16string_view AName, bool AIsIdentifier) {
  TProgramNode node;
  node.Kind = ankFunc;
  node.Text = TText(AName);
  node.IsIdentifier = AIsIdentifier;
  node.CanonicalName = TText(CanonicalFunctionName(AName));
  node.Special = SpecialFormOf(node.CanonicalName);
  node.Function = FindFunction(node.CanonicalName);
  return node;
}

void TProgramBuilder::FillReference(const TFormulaToken& AToken, TProgramNode& AResult) {
  AResult.Col = AToken.Col;
  AResult.Row = AToken.Row;
  AResult.Col2 = AToken.Col2;
  AResult.Row2 = AToken.Row2;
  AResult.SheetName = TText(AToken.SheetName);
  const TSlotReader::TCorners corners = FSlots.CornersOf(AToken, AToken.Kind == ftRangeRef);
  MakeRelative(corners.First, TProgramNode::rlCol, TProgramNode::rlRow, AResult);
  MakeRelative(corners.Second, TProgramNode::rlCol2, TProgramNode::rlRow2, AResult);
}

void TProgramBuilder::MakeRelative(const TReferenceSlot* ASlot, uint8_t AColBit, uint8_t ARowBit,
                                   TProgramNode& AResult) const {
  if (!ASlot) return;
  if (!ASlot->ColAbsolute) {
    AResult.Relative = static_cast<uint8_t>(AResult.Relative | AColBit);
    (AColBit == TProgramNode::rlCol ? AResult.Col : AResult.Col2) -= FCol;
  }
  if (!ASlot->RowAbsolute) {
    AResult.Relative = static_cast<uint8_t>(AResult.Relative | ARowBit);
    (ARowBit == TProgramNode::rlRow ? AResult.Row : AResult.Row2) -= FRow;
  }
}

/// Gives back what was reserved and is not used, unless that is little: while it is done there are two copies.
template <class T>
void Trim(std::vector<T>& AItems) {
  if (AItems.capacity() - AItems.size() > AItems.size() / 8) AItems.shrink_to_fit();
}

std::unique_ptr<TProgram> CompileAt(std::u16string_view AText, TSlotReader& ASlots, int32_t ACol, int32_t ARow) {
  auto program = std::make_unique<TProgram>();
  TProgramBuilder builder(*program, ASlots, ACol, ARow);
  const auto formula = TDescent<TProgramBuilder>(AText, builder).ReadFormula();
  if (formula.Depth > TFormulaParser::kMaxDepth) {
    builder.Discard(formula.Tree);
    builder.Error();
  }
  Trim(program->Nodes);
  Trim(program->Children);
  FindProgramFlags(*program, ACol, ARow);
  return program;
}

/// Whether every slot is a reference to the tokenizer, be it in a part of the formula that the parser refused. Then
/// the text reads the same way, token by token, wherever the template stands.
bool AreAllReferences(std::u16string_view AText, TSlotReader& ASlots) {
  ASlots.Restart();
  TFormulaTokenizer tokenizer(AText);
  TFormulaToken token;
  for (tokenizer.NextToken(token); token.Kind != ftEnd; tokenizer.NextToken(token)) {
    if (token.Kind == ftCellRef || token.Kind == ftRangeRef || token.Kind == ftSheetRef)
      ASlots.CornersOf(token, token.Kind == ftRangeRef);
  }
  return ASlots.FoundAll();
}

}  // namespace

std::unique_ptr<TProgram> CompileText(std::u16string_view AText) {
  TSlotReader slots({}, 0, 0);
  return CompileAt(AText, slots, 0, 0);
}

std::unique_ptr<TProgram> CompileTemplate(const TFormulaTemplate& ATemplate, int32_t ACol, int32_t ARow) {
  const TText text = ATemplate.TextAt(ACol, ARow);
  TSlotReader slots(ATemplate.HasSlots() ? ATemplate.SlotsAt(ACol, ARow) : std::vector<TReferenceSlot>{}, ACol, ARow);
  auto program = CompileAt(text, slots, ACol, ARow);
  program->IsPositionBound = !slots.FoundAll() && !AreAllReferences(text, slots);
  return program;
}

const TProgram& ProgramOf(const TFormulaTemplate& ATemplate, int32_t ACol, int32_t ARow,
                          std::unique_ptr<TProgram>& AOwned) {
  if (!ATemplate.Program) ATemplate.Program = CompileTemplate(ATemplate, ACol, ARow);
  const auto& kept = static_cast<const TProgram&>(*ATemplate.Program);
  if (!kept.IsPositionBound) return kept;
  AOwned = CompileTemplate(ATemplate, ACol, ARow);
  return *AOwned;
}

}  // namespace tessarine::detail
