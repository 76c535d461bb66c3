#include <algorithm>
#include <utility>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/formula/Parser.h>
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

  /// The slots of a reference, a node or a token. Those that lie before it are passed by for good.
  template <class TReference>
  TCorners CornersOf(const TReference& AReference, bool AIsRange) {
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

/// Flattens one tree.
class TCompiler {
 public:
  TCompiler(TSlotReader& ASlots, int32_t ACol, int32_t ARow) : FSlots(ASlots), FCol(ACol), FRow(ARow) {}

  std::unique_ptr<TProgram> Compile(const TAstNode& ARoot);

 private:
  void Emit(const TAstNode& ANode, size_t AChildCount);
  void FillCall(const TAstNode& ANode, TProgramNode& AResult);
  void FillReference(const TAstNode& ANode, TProgramNode& AResult);
  void MakeRelative(const TReferenceSlot* ASlot, uint8_t AColBit, uint8_t ARowBit, TProgramNode& AResult) const;

  TSlotReader& FSlots;
  int32_t FCol;
  int32_t FRow;
  std::unique_ptr<TProgram> FProgram = std::make_unique<TProgram>();
  std::vector<uint32_t> FFinished;  // emitted nodes that have no parent yet
};

/// Calls AVisit with the children of a node, last one first; they are never null in a parsed tree.
template <class TVisit>
size_t ForEachChildBackwards(const TAstNode& ANode, TVisit&& AVisit) {
  size_t count = 0;
  const auto visit = [&](const std::unique_ptr<TAstNode>& AChild) {
    if (!AChild) return;
    AVisit(*AChild);
    ++count;
  };
  for (size_t i = ANode.Args.size(); i-- > 0;) visit(ANode.Args[i]);
  visit(ANode.Right);
  visit(ANode.Left);
  return count;
}

std::unique_ptr<TProgram> TCompiler::Compile(const TAstNode& ARoot) {
  struct TVisit {
    const TAstNode* Node;
    size_t ChildCount;
    bool IsOpened;
  };
  std::vector<TVisit> visits{{&ARoot, 0, false}};
  while (!visits.empty()) {
    TVisit& visit = visits.back();
    if (!visit.IsOpened) {
      visit.IsOpened = true;
      const size_t self = visits.size() - 1;
      const size_t count = ForEachChildBackwards(*visit.Node, [&visits](const TAstNode& AChild) {
        visits.push_back({&AChild, 0, false});
      });
      visits[self].ChildCount = count;
      if (count > 0) continue;
    }
    const TVisit finished = visits.back();
    visits.pop_back();
    Emit(*finished.Node, finished.ChildCount);
  }
  FProgram->Nodes.shrink_to_fit();
  FProgram->Children.shrink_to_fit();
  return std::move(FProgram);
}

/// Appends a node whose children are the last AChildCount of the finished ones.
void TCompiler::Emit(const TAstNode& ANode, size_t AChildCount) {
  TProgramNode result;
  result.Kind = ANode.Kind;
  switch (ANode.Kind) {
    case ankNumber: result.Number = ANode.Number; break;
    case ankString: result.Text = TText(ANode.Text); break;
    case ankBool: result.BooleanValue = ANode.BooleanValue; break;
    case ankError: result.ErrorCode = ANode.ErrorCode; break;
    case ankCellRef:
    case ankRange:
    case ankSheetRef: FillReference(ANode, result); break;
    case ankTableRef:
      result.Text = TText(ANode.Text);
      result.ColumnName = TText(ANode.ColumnName);
      break;
    case ankUnary: result.Op = SignOperator(ANode.Op); break;
    case ankBinary: result.Op = InfixOperator(ANode.Op); break;
    case ankFunc: FillCall(ANode, result); break;
    case ankArrayLit:
      result.Col2 = ANode.Col2;
      result.Row2 = ANode.Row2;
      break;
  }
  const auto firstChild = FFinished.end() - static_cast<std::ptrdiff_t>(AChildCount);
  result.FirstChild = static_cast<uint32_t>(FProgram->Children.size());
  result.ChildCount = static_cast<uint32_t>(AChildCount);
  FProgram->Children.insert(FProgram->Children.end(), firstChild, FFinished.end());
  FFinished.erase(firstChild, FFinished.end());
  FFinished.push_back(static_cast<uint32_t>(FProgram->Nodes.size()));
  FProgram->Nodes.push_back(std::move(result));
}

void TCompiler::FillCall(const TAstNode& ANode, TProgramNode& AResult) {
  AResult.Text = TText(ANode.Text);
  AResult.IsIdentifier = ANode.Args.empty();
  AResult.CanonicalName = CanonicalFunctionName(ANode.Text);
  AResult.Special = SpecialFormOf(AResult.CanonicalName);
  AResult.Function = FindFunction(AResult.CanonicalName);
}

void TCompiler::FillReference(const TAstNode& ANode, TProgramNode& AResult) {
  AResult.Col = ANode.Col;
  AResult.Row = ANode.Row;
  AResult.Col2 = ANode.Col2;
  AResult.Row2 = ANode.Row2;
  AResult.SheetName = TText(ANode.SheetName);
  const TSlotReader::TCorners corners = FSlots.CornersOf(ANode, ANode.Kind == ankRange);
  MakeRelative(corners.First, TProgramNode::rlCol, TProgramNode::rlRow, AResult);
  MakeRelative(corners.Second, TProgramNode::rlCol2, TProgramNode::rlRow2, AResult);
}

void TCompiler::MakeRelative(const TReferenceSlot* ASlot, uint8_t AColBit, uint8_t ARowBit,
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

std::unique_ptr<TProgram> CompileAt(std::u16string_view AText, TSlotReader& ASlots, int32_t ACol, int32_t ARow) {
  const std::unique_ptr<TAstNode> tree = TFormulaParser::Parse(AText);
  auto program = TCompiler(ASlots, ACol, ARow).Compile(*tree);
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
