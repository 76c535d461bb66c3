#include <tessarine/formula/detail/Evaluation.h>

#include <utility>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/platform/Progress.h>

namespace tessarine::detail {

namespace {

/// Marks a formula as being evaluated, so that what reads it finds that out.
class TVisitMark {
 public:
  explicit TVisitMark(TFormulaRecord& ARecord) : FRecord(ARecord) { FRecord.Flags |= TFormulaRecord::frVisiting; }
  ~TVisitMark() { FRecord.Flags &= static_cast<uint8_t>(~TFormulaRecord::frVisiting); }
  TVisitMark(const TVisitMark&) = delete;
  TVisitMark& operator=(const TVisitMark&) = delete;

 private:
  TFormulaRecord& FRecord;
};

bool IsCell(const TProgramNode& ANode) { return ANode.Kind == ankCellRef || ANode.Kind == ankSheetRef; }

TFormulaArg LiteralArg(const TProgramNode& ANode) {
  switch (ANode.Kind) {
    case ankNumber: return TFormulaArg::FromScalar(TCellValue::FromNumber(ANode.Number));
    case ankString: return TFormulaArg::FromScalar(TCellValue::FromText(ANode.Text));
    case ankBool: return TFormulaArg::FromScalar(TCellValue::FromBoolean(ANode.BooleanValue));
    case ankError: return TFormulaArg::FromError(ANode.ErrorCode);
    default: return {};
  }
}

/// The arguments of the call at a program's root. They are taken out of the program for the time of the evaluation;
/// literals stay in their places from one to the next. The texts of cells are lent: their cells, which do not change
/// meanwhile, keep the references that are counted for them.
class TDirectArgs {
 public:
  TDirectArgs(const TProgram& AProgram, bool AKeep)
      : FProgram(AProgram), FKeep(AKeep), FArgs(std::exchange(AProgram.CallArgs, {})) {
    if (!FArgs.empty()) return;
    const TProgramNode& root = AProgram.Root();
    FArgs.reserve(root.ChildCount);
    for (uint32_t i = 0; i < root.ChildCount; ++i) FArgs.push_back(LiteralArg(AProgram.Child(root, i)));
  }
  ~TDirectArgs() {
    const TProgramNode& root = FProgram.Root();
    for (uint32_t i = 0; i < root.ChildCount; ++i) {
      if (IsCell(FProgram.Child(root, i))) FArgs[i].Scalar.Text.Detach();
    }
    if (FKeep) FProgram.CallArgs = std::move(FArgs);
  }
  TDirectArgs(const TDirectArgs&) = delete;
  TDirectArgs& operator=(const TDirectArgs&) = delete;

  TFormulaArg& operator[](uint32_t AIndex) { return FArgs[AIndex]; }
  std::span<const TFormulaArg> Values() const { return FArgs; }

 private:
  const TProgram& FProgram;
  bool FKeep;
  std::vector<TFormulaArg> FArgs;
};

/// Lends the value of a cell to the argument that stands for the cell.
void Lend(TFormulaArg& AArg, const TValueView& AValue, int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  const bool isText = AValue.Kind == cvkText || AValue.Kind == cvkFormula;
  AArg.Scalar.Kind = AValue.Kind;
  AArg.Scalar.ErrorCode = AValue.ErrorCode;
  AArg.Scalar.BooleanValue = AValue.BooleanValue;
  AArg.Scalar.Number = isText ? 0 : AValue.Number;
  if (isText) AArg.Scalar.Text = TText::Adopt(AValue.Block);
  AArg.HasOrigin = true;
  AArg.OriginCol = ACol;
  AArg.OriginRow = ARow;
  AArg.OriginSheetIndex = ASheetIndex;
}

/// The program of a formula that is a direct call (IsDirectCall), or null.
const TProgram* DirectProgramOf(const TFormulaRecord& ARecord) {
  constexpr uint8_t kSpecial = TFormulaRecord::frVisiting | TFormulaRecord::frSparkline;
  if ((ARecord.Flags & kSpecial) != 0 || !ARecord.Template->Program) return nullptr;
  const auto& program = static_cast<const TProgram&>(*ARecord.Template->Program);
  return program.IsDirectCall && !program.IsPositionBound ? &program : nullptr;
}

}  // namespace

/// The value of a cell that stands there already; false when it has to be evaluated first, or may be a spilled one.
bool TEvaluation::ReadReadyCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow, TValueView& AValue) {
  const TWorksheet* sheet = ASheetIndex < 0 ? nullptr : SheetAt(ASheetIndex);
  if (!sheet || !TCellAddress{ACol, ARow}.IsValid()) return false;
  const TCellSlot* slot = sheet->Store().Find(ACol, ARow);
  if (!slot || slot->Kind == cvkEmpty) return sheet->Spills().IsEmpty();
  if (slot->Kind != cvkFormula) {
    AValue = slot->ConstantView();
    return true;
  }
  const TFormulaRecord& record = sheet->Store().Record(slot->Record);
  AValue = record.CachedView();
  return record.HasCached() && !record.IsVisiting();
}

/// Puts what a node stands for into its argument, in which a literal stands already; false when that has to be
/// evaluated.
bool TEvaluation::TryPutArg(const TProgramFrame& AFrame, const TProgramNode& ANode, TFormulaArg& AArg) {
  switch (ANode.Kind) {
    case ankNumber:
    case ankString:
    case ankBool:
    case ankError: return true;
    case ankCellRef:
    case ankSheetRef: {
      const int32_t sheet = SheetOf(AFrame, ANode.SheetName);
      const TRelativeRect at = AFrame.RectOf(ANode);
      TValueView value;
      if (!ReadReadyCell(sheet, at.Col, at.Row, value)) return false;
      Lend(AArg, value, sheet, at.Col, at.Row);
      return true;
    }
    case ankRange: return TryViewRange(AFrame, ANode, AArg);
    default: AArg.Scalar.Kind = cvkNumber; return TryNumber(AFrame, ANode, AArg.Scalar.Number);
  }
}

/// The call of TryDirectCall; false, without a trace, when an argument is not ready.
bool TEvaluation::CallDirectly(const TProgramFrame& AFrame, TFormulaRecord& ARecord, TCellValue& AResult) {
  const TVisitMark mark(ARecord);
  // A program of a single cell is not worth the room.
  TDirectArgs args(AFrame.Program, ARecord.Template->RefCount() > 1);
  const TProgramNode& root = AFrame.Program.Root();
  for (uint32_t i = 0; i < root.ChildCount; ++i) {
    if (!TryPutArg(AFrame, AFrame.Program.Child(root, i), args[i])) return false;
  }
  ++Stamp;
  if (PendingEvalCell) PendingEvalCell = nullptr;
  EvalCol = AFrame.Col;
  EvalRow = AFrame.Row;
  if (Control) Control->CheckStop();
  AResult = root.Function->Body(args.Values(), ContextOf(AFrame));
  return true;
}

/// Evaluates a cell whose formula is a call of literals, cells, ranges and arithmetic that all have their results: the
/// arguments are put where those of the last evaluation stood, and the body is called on the spot. 45 % fewer
/// instructions over half a million text functions.
///
/// Equal to the plain way because such arguments evaluate nothing and change nothing, and the body sees them alike; so
/// the frame of a reader, which is there for pulls, is not needed. Whatever may differ is given up before anything has
/// happened: cells without results, a cell that reads itself, spilled blocks, evaluations under way, listeners.
bool TEvaluation::TryDirectCall(TCellId AId) {
  if (FActive > 0 || !Options.DirectCalls || !Options.ReusePrograms) return false;
  TFormulaRecord* record = RecordOf(AId);
  const TProgram* program = record ? DirectProgramOf(*record) : nullptr;
  if (!program) return false;
  TWorksheet& sheet = *SheetAt(AId.Sheet());
  TCellValue result;
  if (!sheet.Spills().IsEmpty() || !sheet.ChangesAreUnobserved() ||
      !CallDirectly({*program, AId.Col(), AId.Row(), AId.Sheet()}, *record, result))
    return false;
  if (result.Kind == cvkNumber) {
    sheet.Store().SetCachedNumber(AId.Col(), *record, result.Number);
  } else {
    sheet.Store().SetCached(AId.Col(), *record, result);
  }
  if (AId.Col() > sheet.UsedMaxCol() || AId.Row() > sheet.UsedMaxRow()) sheet.ExpandUsedBounds(AId.Col(), AId.Row());
  sheet.NoteBulkChange();
  return true;
}

}  // namespace tessarine::detail
