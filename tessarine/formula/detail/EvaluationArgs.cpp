#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <utility>

namespace tessarine::detail {

namespace {

std::vector<TCellValue> RoomFor(int64_t ACount) {
  std::vector<TCellValue> cells;
  cells.reserve(static_cast<size_t>(ACount));
  return cells;
}

TFormulaArg NegateArg(const TFormulaArg& AArg) {
  if (!AArg.IsRange) return TFormulaArg::FromScalar(NegateValue(AArg.Scalar));
  const int64_t count = AArg.CellCount();
  if (count > kMaxArrayCells) return TFormulaArg::FromError(ceNum);
  std::vector<TCellValue> cells = RoomFor(count);
  for (int64_t i = 0; i < count; ++i) cells.push_back(NegateValue(TCellValue::FromView(AArg.ViewAt(i))));
  TFormulaArg result = TFormulaArg::FromRange(std::move(cells), AArg.RowCount, AArg.ColCount);
  result.HasOrigin = AArg.HasOrigin;
  result.OriginCol = AArg.OriginCol;
  result.OriginRow = AArg.OriginRow;
  result.OriginSheetIndex = AArg.OriginSheetIndex;
  return result;
}

/// ATimes negations: behind the first one every value is a number or an error, so that only their parity counts.
TFormulaArg NegateTimes(TFormulaArg AArg, size_t ATimes) {
  if (ATimes == 0) return AArg;
  TFormulaArg negated = NegateArg(AArg);
  return ATimes % 2 == 0 ? NegateArg(negated) : negated;
}

/// A comparison over every element of AShape, with the other side's element at the same place.
template <class TLeftAt, class TRightAt>
TFormulaArg CompareEach(TOperator AOperator, const TFormulaArg& AShape, TLeftAt ALeftAt, TRightAt ARightAt) {
  const int64_t count = AShape.CellCount();
  if (count > kMaxArrayCells) return TFormulaArg::FromError(ceNum);
  std::vector<TCellValue> cells = RoomFor(count);
  for (int64_t i = 0; i < count; ++i) cells.push_back(CompareCells(AOperator, ALeftAt(i), ARightAt(i)));
  return TFormulaArg::FromRange(std::move(cells), AShape.RowCount, AShape.ColCount);
}

TFormulaArg CompareArgs(TOperator AOperator, const TFormulaArg& ALeft, const TFormulaArg& ARight) {
  const auto leftAt = [&ALeft](int64_t AIndex) { return ALeft.ViewAt(AIndex); };
  const auto rightAt = [&ARight](int64_t AIndex) { return ARight.ViewAt(AIndex); };
  if (!ALeft.IsRange && !ARight.IsRange)
    return TFormulaArg::FromScalar(CompareCells(AOperator, ALeft.FirstView(), ARight.FirstView()));
  if (!ALeft.IsRange)
    return CompareEach(
        AOperator, ARight, [first = ALeft.FirstView()](int64_t) { return first; }, rightAt);
  if (!ARight.IsRange)
    return CompareEach(AOperator, ALeft, leftAt, [first = ARight.FirstView()](int64_t) { return first; });
  if (ALeft.RowCount != ARight.RowCount || ALeft.ColCount != ARight.ColCount) return TFormulaArg::FromError(ceValue);
  return CompareEach(AOperator, ALeft, leftAt, rightAt);
}

bool IsComparisonNode(const TProgramNode& ANode) { return ANode.Kind == ankBinary && IsComparison(ANode.Op); }

}  // namespace

/// The root of a formula, and functions as arguments: a rectangle may come out, but operators are scalar.
TFormulaArg TEvaluation::EvalNodeArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  switch (ANode.Kind) {
    case ankUnary: return EvalSigns(AFrame, ANode, TArgMode::amNode);
    case ankRange: return EvalRangeArg(AFrame, ANode);
    case ankArrayLit: return EvalArrayLiteral(AFrame, ANode);
    case ankFunc: return EvalFunctionArg(AFrame, ANode);
    default: return TFormulaArg::FromScalar(EvalNode(AFrame, ANode));
  }
}

/// One argument of a function: references keep their place, comparisons work element by element.
TFormulaArg TEvaluation::EvalArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  switch (ANode.Kind) {
    case ankCellRef:
    case ankSheetRef: return EvalCellArg(AFrame, ANode);
    case ankRange: return EvalRangeArg(AFrame, ANode);
    case ankTableRef: return EvalTableArg(AFrame, ANode.Text, ANode.ColumnName);
    case ankUnary: return EvalSigns(AFrame, ANode, TArgMode::amArg);
    case ankBinary:
      if (IsComparison(ANode.Op)) return EvalComparisons(AFrame, ANode);
      return TFormulaArg::FromScalar(EvalBinary(AFrame, ANode));
    case ankArrayLit: return EvalArrayLiteral(AFrame, ANode);
    case ankFunc: return ANode.ChildCount == 0 ? EvalIdentifierArg(AFrame, ANode) : EvalFunctionArg(AFrame, ANode);
    default: return TFormulaArg::FromScalar(EvalNode(AFrame, ANode));
  }
}

/// A name without arguments: what is bound to it, whole; the data of a table; else as everywhere.
TFormulaArg TEvaluation::EvalIdentifierArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  if (const TFormulaArg* local = FLocals.Find(ANode.Text)) return *local;
  if (ResolveTableColumn(AFrame.SheetIndex, ANode.Text, {}).Found) return EvalTableArg(AFrame, ANode.Text, {});
  return EvalFunctionArg(AFrame, ANode);
}

/// A chain of signs over one operand. Behind the innermost "@" stands a scalar, on which further ones have no effect.
TFormulaArg TEvaluation::EvalSigns(const TProgramFrame& AFrame, const TProgramNode& ANode, TArgMode AMode) {
  const TProgramNode* node = &ANode;
  size_t inside = 0;
  size_t outside = 0;
  bool isIntersected = false;
  for (; node->Kind == ankUnary; node = &AFrame.Program.Child(*node, 0)) {
    if (node->Op == opMinus) ++inside;
    if (node->Op != opAt) continue;
    isIntersected = true;
    outside += inside;
    inside = 0;
  }
  TFormulaArg result = AMode == TArgMode::amNode ? EvalNodeArg(AFrame, *node) : EvalArg(AFrame, *node);
  result = NegateTimes(std::move(result), inside);
  return isIntersected ? NegateTimes(ImplicitIntersectArg(std::move(result)), outside) : result;
}

/// A chain of comparisons that leans to the left, from its far end on. Errors are compared by their texts here.
TFormulaArg TEvaluation::EvalComparisons(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  TNodeTrail trail(*this);
  const TProgramNode* node = &ANode;
  for (; IsComparisonNode(*node); node = &AFrame.Program.Child(*node, 0)) trail.Push(*node);
  TFormulaArg left = EvalArg(AFrame, *node);
  while (!trail.IsEmpty()) {
    const TProgramNode& step = trail.Pop();
    const THeldArg held(FArgs, left);
    const TFormulaArg right = EvalArg(AFrame, AFrame.Program.Child(step, 1));
    left = CompareArgs(step.Op, left, right);
  }
  return left;
}

TFormulaArg TEvaluation::EvalArrayLiteral(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  std::vector<TCellValue> cells = RoomFor(ANode.ChildCount);
  int64_t units = 0;
  for (uint32_t i = 0; i < ANode.ChildCount; ++i) {
    cells.push_back(EvalNode(AFrame, AFrame.Program.Child(ANode, i)));
    if (cells.back().Kind == cvkText) units += static_cast<int64_t>(cells.back().Text.Length());
    if (units > kMaxHeldCells * kUnitsPerCell) return TFormulaArg::FromError(ceNum);
  }
  const int32_t cols = std::max(ANode.Col2, 1);
  return TFormulaArg::FromRange(std::move(cells), static_cast<int32_t>(ANode.ChildCount) / cols, cols);
}

TFormulaArg TEvaluation::ImplicitIntersectArg(TFormulaArg AArg) const {
  if (!AArg.IsRange) return AArg;
  if (!AArg.HasOrigin) return TFormulaArg::FromScalar(AArg.First());
  const bool isOneCol = AArg.ColCount == 1;
  const bool isOneRow = AArg.RowCount == 1;
  const int32_t col = isOneCol ? 0 : EvalCol - AArg.OriginCol;
  const int32_t row = isOneRow ? 0 : EvalRow - AArg.OriginRow;
  if (col < 0 || col >= AArg.ColCount || row < 0 || row >= AArg.RowCount) return TFormulaArg::FromError(ceValue);
  return TFormulaArg::FromScalar(AArg.CellAt(row, col));
}

}  // namespace tessarine::detail
