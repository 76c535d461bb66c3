#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <tessarine/platform/Progress.h>

namespace tessarine::detail {

namespace {

/// Forms of which one argument decides which other one is the result.
bool IsBranchForm(const TProgramNode& ANode) {
  switch (ANode.Special) {
    case TSpecialForm::sfIf:
    case TSpecialForm::sfIfError:
    case TSpecialForm::sfIfNa:
    case TSpecialForm::sfChoose: return ANode.ChildCount >= 2;
    default: return false;
  }
}

/// Other forms that do not have their arguments evaluated for them; each takes one argument at least, or is told by
/// EvalIdentifier.
bool IsLazyForm(const TProgramNode& ANode) {
  switch (ANode.Special) {
    case TSpecialForm::sfIsOmitted:
    case TSpecialForm::sfIndirect:
    case TSpecialForm::sfRow:
    case TSpecialForm::sfColumn: return true;
    default: return false;
  }
}

/// No function lets an infinity or a NaN into a cell.
TCellValue FiniteOnly(TCellValue AValue) {
  if (AValue.Kind == cvkNumber && !std::isfinite(AValue.Number)) return TCellValue::FromError(ceNum);
  return AValue;
}

TCellValue LineOf(const TProgramFrame& AFrame, const TProgramNode& AReference, bool AIsRow) {
  const TRelativeRect rect = AFrame.RectOf(AReference);
  switch (AReference.Kind) {
    case ankCellRef:
    case ankSheetRef: return TCellValue::FromNumber(AIsRow ? rect.Row : rect.Col);
    case ankRange:
      return TCellValue::FromNumber(AIsRow ? std::min(rect.Row, rect.Row2) : std::min(rect.Col, rect.Col2));
    default: return TCellValue::FromNumber(1);
  }
}

}  // namespace

TFormulaContext TEvaluation::ContextOf(const TProgramFrame& AFrame) {
  TFormulaContext context;
  context.Sheet = SheetAt(AFrame.SheetIndex);
  context.SheetIndex = AFrame.SheetIndex;
  context.StyleSheet = &FWorkbook.StyleSheet();
  context.Workbook = &FWorkbook;
  context.EvalCol = EvalCol;
  context.EvalRow = EvalRow;
  context.RtdHub = RtdHub;
  context.Indexes = Options.RangeIndexes ? FIndexes.get() : nullptr;
  return context;
}

/// A function in scalar mode.
TCellValue TEvaluation::EvalFunction(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  if (ANode.ChildCount == 0) return EvalIdentifier(AFrame, ANode);
  if (IsBranchForm(ANode)) {
    TCellValue value;
    const TProgramNode* branch = ChooseBranch(AFrame, ANode, value);
    return branch ? EvalNode(AFrame, *branch) : value;
  }
  if (IsLazyForm(ANode)) return EvalSpecial(AFrame, ANode);
  if (ANode.Special == TSpecialForm::sfOffset && ANode.ChildCount >= 3) return EvalOffset(AFrame, ANode).First();
  return EvalCall(AFrame, ANode, false);
}

/// A name without arguments: what is bound to it, the defined name, the function. A defined name whose value is #NAME?
/// counts as none; it is asked once more at the end, which can only differ when something was evaluated meanwhile.
TCellValue TEvaluation::EvalIdentifier(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  if (const TFormulaArg* local = FLocals.Find(ANode.Text)) return local->First();
  const uint64_t stamp = Stamp;
  const size_t names = FLocals.Count();
  TCellValue named = EvalNamedFormula(ANode.Text, AFrame.SheetIndex);
  if (!(named.IsError() && named.ErrorCode == ceName)) return named;
  if (ANode.Special == TSpecialForm::sfRow) return TCellValue::FromNumber(EvalRow > 0 ? EvalRow : 1);
  if (ANode.Special == TSpecialForm::sfColumn) return TCellValue::FromNumber(EvalCol > 0 ? EvalCol : 1);
  TCellValue value = EvalCall(AFrame, ANode, false);
  const bool isUnknown = value.IsError() && value.ErrorCode == ceName;
  const bool mayDiffer = Stamp != stamp || FLocals.Count() != names;
  return isUnknown && mayDiffer ? EvalNamedFormula(ANode.Text, AFrame.SheetIndex) : value;
}

TCellValue TEvaluation::EvalSpecial(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  const TProgramNode& first = AFrame.Program.Child(ANode, 0);
  switch (ANode.Special) {
    case TSpecialForm::sfRow: return LineOf(AFrame, first, true);
    case TSpecialForm::sfColumn: return LineOf(AFrame, first, false);
    case TSpecialForm::sfIsOmitted:
      if (!first.IsIdentifier || first.Text.IsEmpty()) return TCellValue::FromError(ceValue);
      return TCellValue::FromBoolean(FLocals.IsMissing(first.Text));
    default: break;
  }
  TCellValue target = EvalNode(AFrame, first);
  if (target.IsError()) return target;
  return EvalIndirect(target.ToDisplayString(), AFrame.SheetIndex);
}

/// Evaluates what decides a branch form: the branch that remains to be evaluated, or null and the result in AValue.
const TProgramNode* TEvaluation::ChooseBranch(const TProgramFrame& AFrame, const TProgramNode& ANode,
                                              TCellValue& AValue) {
  const TProgramNode& first = AFrame.Program.Child(ANode, 0);
  if (ANode.Special != TSpecialForm::sfIf && ANode.Special != TSpecialForm::sfChoose && first.Kind == ankArrayLit)
    return &first;
  AValue = EvalNode(AFrame, first);
  switch (ANode.Special) {
    case TSpecialForm::sfIf:
      if (AValue.IsError()) return nullptr;
      if (ValueIsTruthy(AValue)) return &AFrame.Program.Child(ANode, 1);
      if (ANode.ChildCount >= 3) return &AFrame.Program.Child(ANode, 2);
      AValue = TCellValue::FromBoolean(false);
      return nullptr;
    case TSpecialForm::sfIfError: return AValue.IsError() ? &AFrame.Program.Child(ANode, 1) : nullptr;
    case TSpecialForm::sfIfNa:
      return AValue.IsError() && AValue.ErrorCode == ceNA ? &AFrame.Program.Child(ANode, 1) : nullptr;
    default: break;
  }
  double index = 0;
  const bool isNumber = AsNumber(AValue, index);
  AValue = TCellValue::FromError(ceValue);
  if (!isNumber || !(index >= 1 && index < ANode.ChildCount)) return nullptr;
  return &AFrame.Program.Child(ANode, static_cast<uint32_t>(index));
}

void TEvaluation::EvalArgs(const TProgramFrame& AFrame, const TProgramNode& ANode, TArgFrame& AArgs) {
  for (uint32_t i = 0; i < ANode.ChildCount; ++i) AArgs.Set(i, EvalArg(AFrame, AFrame.Program.Child(ANode, i)));
}

/// Whether of ABefore bound names some are no longer bound. Calls within calls that lose names again and again would
/// double the work at every level without end: above a few levels only some thousand of them are made up for.
bool TEvaluation::LostNames(size_t ABefore) {
  constexpr int32_t kFreeLevels = 3;
  constexpr int32_t kMostTimes = 4096;
  if (FLocals.Count() == ABefore) return false;
  return ++FRepeatLevel <= kFreeLevels || (FNameRepeats < kMostTimes && ++FNameRepeats > 0);
}

/// A general call. As an argument or at the root its arguments count as evaluated twice (AMayRepeat), which differs
/// from once only when their evaluation has changed the state that they read: then they are evaluated once more.
TCellValue TEvaluation::EvalCall(const TProgramFrame& AFrame, const TProgramNode& ANode, bool AMayRepeat) {
  TArgFrame args(FArgs, ANode.ChildCount);
  const uint64_t stamp = Stamp;
  const size_t names = FLocals.Count();
  const int32_t level = names > 0 ? std::exchange(FRepeatLevel, 0) : 0;
  EvalArgs(AFrame, ANode, args);
  if (AMayRepeat && (Stamp != stamp || LostNames(names))) {
    args.Restart();
    EvalArgs(AFrame, ANode, args);
  }
  if (names > 0) FRepeatLevel = std::max(FRepeatLevel, level);
  return CallFunction(AFrame, ANode, args);
}

/// A name that no tier knows is #NAME?; so are, as long as they stand as operands, the forms that only the argument
/// mode knows.
TCellValue TEvaluation::CallFunction(const TProgramFrame& AFrame, const TProgramNode& ANode, const TArgFrame& AArgs) {
  if (Control) Control->CheckStop();
  const TFunctionDef* row = ANode.Function;
  if (!row) return TCellValue::FromError(ceName);
  switch (row->Tier) {
    case ftrBasic:
    case ftrExtra:
      if (!row->Body) break;
      return FiniteOnly(row->Body(AArgs.Values(), ContextOf(AFrame)));
    case ftrArray: return FiniteOnly(row->ArrayBody(AArgs.Values(), ContextOf(AFrame)).First());
    case ftrUnsupported: return TCellValue::FromError(ceNA);
    case ftrEvaluator: break;
  }
  return TCellValue::FromError(ceName);
}

/// A function in argument mode.
TFormulaArg TEvaluation::EvalFunctionArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  if (IsBindingForm(ANode)) return EvalBindingForm(AFrame, ANode);
  if (ANode.ChildCount == 0) return TFormulaArg::FromScalar(EvalIdentifier(AFrame, ANode));
  if (IsBranchForm(ANode)) return EvalBranchArg(AFrame, ANode);
  if (IsLazyForm(ANode)) return TFormulaArg::FromScalar(EvalSpecial(AFrame, ANode));
  if (ANode.Special == TSpecialForm::sfOffset && ANode.ChildCount >= 3) return EvalOffset(AFrame, ANode);
  const TFunctionDef* row = ANode.Function;
  if (row && row->Tier == ftrArray && static_cast<int64_t>(ANode.ChildCount) >= row->ArrayMinArgs)
    return EvalArrayFunction(AFrame, ANode);
  return TFormulaArg::FromScalar(EvalCall(AFrame, ANode, true));
}

/// A branch is a scalar, but for an array literal that stands there.
TFormulaArg TEvaluation::EvalBranchArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  const TProgramNode* node = &ANode;
  while (node->Kind == ankFunc && IsBranchForm(*node)) {
    TCellValue value;
    const TProgramNode* branch = ChooseBranch(AFrame, *node, value);
    if (!branch) return TFormulaArg::FromScalar(std::move(value));
    node = branch;
  }
  return node->Kind == ankArrayLit ? EvalArrayLiteral(AFrame, *node) : TFormulaArg::FromScalar(EvalNode(AFrame, *node));
}

TFormulaArg TEvaluation::EvalArrayFunction(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  TArgFrame args(FArgs, ANode.ChildCount);
  EvalArgs(AFrame, ANode, args);
  if (Control) Control->CheckStop();
  return ANode.Function->ArrayBody(args.Values(), ContextOf(AFrame));
}

}  // namespace tessarine::detail
