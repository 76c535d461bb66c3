#include <tessarine/formula/detail/Evaluation.h>

#include <cmath>
#include <string>
#include <utility>

#include <tessarine/formula/FunctionTable.h>

namespace tessarine::detail {

namespace {

/// Operands of the numeric path nest at most this deep; deeper ones go the plain way.
constexpr int kNumberDepth = 48;

/// The number of an arithmetic operator; false where the result is an error.
inline bool Compute(TOperator AOperator, double ALeft, double ARight, double& AResult) {
  switch (AOperator) {
    case opAdd: AResult = ALeft + ARight; break;
    case opSub: AResult = ALeft - ARight; break;
    case opMul: AResult = ALeft * ARight; break;
    case opDiv:
      if (ARight == 0) return false;
      AResult = ALeft / ARight;
      break;
    case opPow: AResult = std::pow(ALeft, ARight); break;
    default: return false;
  }
  AResult += 0.0;  // a negative zero loses its sign
  return std::isfinite(AResult);
}

TCellValue Joined(std::u16string&& AText) {
  if (AText.size() > kMaxGeneratedText) return TCellValue::FromError(ceValue);
  return TCellValue::FromText(TText(AText));
}

TCellValue Concatenate(const TCellValue& ALeft, const TCellValue& ARight) {
  std::u16string text;
  AppendDisplayString(ALeft.View(), text);
  AppendDisplayString(ARight.View(), text);
  return Joined(std::move(text));
}

TCellValue Calculate(TOperator AOperator, const TCellValue& ALeft, const TCellValue& ARight) {
  double left = 0;
  double right = 0;
  if (!AsNumber(ALeft, left) || !AsNumber(ARight, right)) return TCellValue::FromError(ceValue);
  double result = 0;
  if (Compute(AOperator, left, right, result)) return TCellValue::FromNumber(result);
  return TCellValue::FromError(AOperator == opDiv && right == 0 ? ceDiv0 : ceNum);
}

}  // namespace

TCellValue CompareCells(TOperator AOperator, const TValueView& ALeft, const TValueView& ARight) {
  int order = 0;
  if (ALeft.Kind == cvkNumber && ARight.Kind == cvkNumber) {
    order = ALeft.Number < ARight.Number ? -1 : ALeft.Number > ARight.Number ? 1 : 0;
  } else {
    order = CompareValues(ALeft, ARight);
  }
  switch (AOperator) {
    case opEq: return TCellValue::FromBoolean(order == 0);
    case opNe: return TCellValue::FromBoolean(order != 0);
    case opLt: return TCellValue::FromBoolean(order < 0);
    case opGt: return TCellValue::FromBoolean(order > 0);
    case opLe: return TCellValue::FromBoolean(order <= 0);
    case opGe: return TCellValue::FromBoolean(order >= 0);
    default: return TCellValue::FromError(ceValue);
  }
}

TCellValue ApplyOperator(TOperator AOperator, const TCellValue& ALeft, const TCellValue& ARight) {
  if (ALeft.IsError()) return ALeft;
  if (ARight.IsError()) return ARight;
  switch (AOperator) {
    case opAdd:
    case opSub:
    case opMul:
    case opDiv:
    case opPow: return Calculate(AOperator, ALeft, ARight);
    case opConcat: return Concatenate(ALeft, ARight);
    default: return CompareCells(AOperator, ALeft.View(), ARight.View());
  }
}

TCellValue NegateValue(const TCellValue& AValue) {
  if (AValue.IsError()) return AValue;
  double number = 0;
  if (!AsNumber(AValue, number)) return TCellValue::FromError(ceValue);
  return NumberOrError(-number);
}

TCellValue TEvaluation::EvalNode(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  switch (ANode.Kind) {
    case ankNumber: return TCellValue::FromNumber(ANode.Number);
    case ankString: return TCellValue::FromText(ANode.Text);
    case ankBool: return TCellValue::FromBoolean(ANode.BooleanValue);
    case ankError: return TCellValue::FromError(ANode.ErrorCode);
    case ankCellRef:
    case ankSheetRef: {
      const int32_t sheet = SheetOf(AFrame, ANode.SheetName);
      if (sheet < 0) return TCellValue::FromError(ceRef);
      const TRelativeRect at = AFrame.RectOf(ANode);
      return TCellValue::FromView(ReadCell(sheet, at.Col, at.Row));
    }
    case ankRange: {
      const int32_t sheet = SheetOf(AFrame, ANode.SheetName);
      if (sheet < 0) return TCellValue::FromError(ceRef);
      const TRelativeRect rect = AFrame.RectOf(ANode);
      return IntersectCells(sheet, TCellRange{rect.Col, rect.Row, rect.Col2, rect.Row2}.Normalize());
    }
    case ankTableRef: return EvalTableRef(AFrame, ANode);
    case ankUnary: return EvalSignsScalar(AFrame, ANode);
    case ankBinary: return EvalBinary(AFrame, ANode);
    case ankArrayLit: return {};  // has a value only as an argument
    case ankFunc: return EvalFunction(AFrame, ANode);
  }
  return {};
}

/// A chain of signs from the outermost on. All of them are in scalar mode up to the first "@", whose operand is
/// evaluated as an argument. What is behind the first negation is a number or an error, so that their parity counts.
TCellValue TEvaluation::EvalSignsScalar(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  double number = 0;
  if (TryNumber(AFrame, ANode, number)) return TCellValue::FromNumber(number);
  const TProgramNode* node = &ANode;
  size_t negations = 0;
  while (node->Kind == ankUnary && node->Op != opAt) {
    if (node->Op == opMinus) ++negations;
    node = &AFrame.Program.Child(*node, 0);
  }
  TCellValue value = node->Kind == ankUnary
                         ? ImplicitIntersectArg(EvalNodeArg(AFrame, AFrame.Program.Child(*node, 0))).First()
                         : EvalNode(AFrame, *node);
  if (negations == 0) return value;
  value = NegateValue(value);
  return negations % 2 == 0 ? NegateValue(value) : value;
}

TCellValue TEvaluation::EvalBinary(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  double number = 0;
  if (TryNumber(AFrame, ANode, number)) return TCellValue::FromNumber(number);
  const TProgramNode& left = AFrame.Program.Child(ANode, 0);
  if (left.Kind == ankBinary) return EvalBinaryChain(AFrame, ANode);
  const TCellValue leftValue = EvalNode(AFrame, left);
  const TCellValue rightValue = EvalNode(AFrame, AFrame.Program.Child(ANode, 1));
  return ApplyOperator(ANode.Op, leftValue, rightValue);
}

/// A chain of operators that leans to the left, from its far end on. Texts that "&" joins grow in one buffer.
TCellValue TEvaluation::EvalBinaryChain(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  TNodeTrail trail(*this);
  const TProgramNode* node = &ANode;
  for (; node->Kind == ankBinary; node = &AFrame.Program.Child(*node, 0)) trail.Push(*node);
  TCellValue value = EvalNode(AFrame, *node);
  std::u16string text;
  bool isJoining = false;
  while (!trail.IsEmpty()) {
    const TProgramNode& step = trail.Pop();
    const TCellValue right = EvalNode(AFrame, AFrame.Program.Child(step, 1));
    if (step.Op == opConcat && !value.IsError() && !right.IsError()) {
      if (!isJoining) AppendDisplayString(value.View(), text);
      isJoining = true;
      AppendDisplayString(right.View(), text);
      if (text.size() <= kMaxGeneratedText) continue;
    }
    if (isJoining && !value.IsError()) value = Joined(std::move(text));
    if (step.Op != opConcat || !isJoining) {
      value = ApplyOperator(step.Op, value, right);
    } else if (!value.IsError()) {
      value = right;
    }
    isJoining = false;
    text.clear();
  }
  return isJoining ? Joined(std::move(text)) : value;
}

/// Arithmetic over literals and over cells of the frame's sheet that hold numbers, or have them as results, without the
/// building of values. Equal to the plain way because it reads only and gives up, before anything has happened, on
/// whatever is not a plain number or yields an error.
bool TEvaluation::TryNumber(const TProgramFrame& AFrame, const TProgramNode& ANode, double& ANumber) {
  if (IsReplaying()) return false;
  const TWorksheet* sheet = SheetAt(AFrame.SheetIndex);
  return sheet && NumberOf(sheet->Store(), AFrame, ANode, kNumberDepth, ANumber);
}

bool TEvaluation::NumberOf(const TCellStore& AStore, const TProgramFrame& AFrame, const TProgramNode& ANode, int ADepth,
                           double& ANumber) const {
  switch (ANode.Kind) {
    case ankNumber: ANumber = ANode.Number; return true;
    case ankCellRef: {
      const TRelativeRect at = AFrame.RectOf(ANode);
      if (!TCellAddress{at.Col, at.Row}.IsValid()) return false;
      const TCellSlot* slot = AStore.Find(at.Col, at.Row);
      if (!slot) return false;
      if (slot->Kind == cvkNumber) {
        ANumber = slot->Number;
        return true;
      }
      if (slot->Kind != cvkFormula) return false;
      const TFormulaRecord& record = AStore.Record(slot->Record);
      ANumber = record.Number;
      return record.HasCached() && record.CachedKind == cvkNumber && !record.IsVisiting();
    }
    case ankUnary:
      if (ANode.Op == opAt || ADepth == 0) return false;
      if (!NumberOf(AStore, AFrame, AFrame.Program.Child(ANode, 0), ADepth - 1, ANumber)) return false;
      if (ANode.Op == opMinus) ANumber = 0.0 - ANumber;
      return std::isfinite(ANumber);
    case ankBinary: {
      if (ANode.Op > opPow || ADepth == 0) return false;
      double right = 0;
      return NumberOf(AStore, AFrame, AFrame.Program.Child(ANode, 0), ADepth - 1, ANumber) &&
             NumberOf(AStore, AFrame, AFrame.Program.Child(ANode, 1), ADepth - 1, right) &&
             Compute(ANode.Op, ANumber, right, ANumber);
    }
    default: return false;
  }
}

}  // namespace tessarine::detail
