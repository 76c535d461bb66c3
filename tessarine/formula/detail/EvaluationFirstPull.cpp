#include <tessarine/formula/detail/Evaluation.h>

#include <functional>
#include <utility>

namespace tessarine::detail {

namespace {

/// What a formula does first, as far as it can be told without running it.
enum class TFirstPull : uint8_t { fpNone, fpFound, fpUnknown };

/// The three walkers over programs: as operands, at the root, as arguments.
enum class TWalk : uint8_t { twScalar, twNode, twArg };

/// Walks a program in its order of reading over operands that are certainly read, up to the first cell that lacks a
/// result. Reading any other cell has no effect, so that cell is what the formula pulls first. Ends with fpUnknown at
/// whatever depends on more than literals and references. What decides between branches is evaluated when it is made
/// of operators alone: once nothing in it lacks a result, that has no effect either.
class TFirstPullScan {
 public:
  using TBranchOf = std::function<const TProgramNode*(const TProgramNode&)>;

  template <class TRecordAt, class TSheetOf>
  TFirstPullScan(const TProgramFrame& AFrame, TRecordAt&& ARecordAt, TSheetOf&& ASheetOf, TBranchOf ABranchOf)
      : FFrame(AFrame), FRecordAt(ARecordAt), FSheetOf(ASheetOf), FBranchOf(std::move(ABranchOf)) {}

  TFirstPull Scan(const TProgramNode& ANode, TWalk AWalk, int ADepth);
  TCellId Found() const { return FFound; }

 private:
  static constexpr int64_t kMostCells = 64;

  TFirstPull ScanCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow);
  TFirstPull ScanRange(const TProgramNode& ANode);
  TFirstPull ScanBranches(const TProgramNode& ANode, int ADepth);
  TFirstPull ScanCall(const TProgramNode& ANode, int ADepth);
  TFirstPull ScanChildren(const TProgramNode& ANode, TWalk AWalk, int ADepth);

  const TProgramFrame& FFrame;
  std::function<const TFormulaRecord*(TCellId)> FRecordAt;
  std::function<int32_t(const TText&)> FSheetOf;
  TBranchOf FBranchOf;
  TCellId FFound;
  int FBudget = 128;
  int FOpaque = 0;  // calls and intersections met so far
};

TFirstPull TFirstPullScan::ScanCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  const TCellId id = TCellId::Of(ASheetIndex, ACol, ARow);
  const TFormulaRecord* record = ASheetIndex < 0 ? nullptr : FRecordAt(id);
  if (!record || record->HasCached() || record->IsVisiting()) return TFirstPull::fpNone;
  FFound = id;
  return TFirstPull::fpFound;
}

TFirstPull TFirstPullScan::ScanRange(const TProgramNode& ANode) {
  const TRelativeRect rect = FFrame.RectOf(ANode);
  const TCellRange range = TCellRange{rect.Col, rect.Row, rect.Col2, rect.Row2}.Normalize();
  if (int64_t{range.Width()} * range.Height() > kMostCells) return TFirstPull::fpUnknown;
  const int32_t sheet = FSheetOf(ANode.SheetName);
  for (int32_t row = range.StartRow; row <= range.EndRow; ++row) {
    for (int32_t col = range.StartCol; col <= range.EndCol; ++col) {
      if (ScanCell(sheet, col, row) == TFirstPull::fpFound) return TFirstPull::fpFound;
    }
  }
  return TFirstPull::fpNone;
}

TFirstPull TFirstPullScan::ScanChildren(const TProgramNode& ANode, TWalk AWalk, int ADepth) {
  for (uint32_t i = 0; i < ANode.ChildCount; ++i) {
    const TFirstPull result = Scan(FFrame.Program.Child(ANode, i), AWalk, ADepth - 1);
    if (result != TFirstPull::fpNone) return result;
  }
  return TFirstPull::fpNone;
}

TFirstPull TFirstPullScan::ScanBranches(const TProgramNode& ANode, int ADepth) {
  if (ANode.ChildCount < 2) return TFirstPull::fpUnknown;
  const TProgramNode& decisive = FFrame.Program.Child(ANode, 0);
  const int opaque = FOpaque;
  const TFirstPull first = Scan(decisive, TWalk::twScalar, ADepth - 1);
  if (first != TFirstPull::fpNone) return first;
  if (decisive.Kind == ankArrayLit || FOpaque != opaque) return TFirstPull::fpUnknown;
  const TProgramNode* branch = FBranchOf(ANode);
  if (!branch) return TFirstPull::fpNone;
  return branch->Kind == ankArrayLit ? TFirstPull::fpUnknown : Scan(*branch, TWalk::twScalar, ADepth - 1);
}

TFirstPull TFirstPullScan::ScanCall(const TProgramNode& ANode, int ADepth) {
  ++FOpaque;
  if (ANode.ChildCount == 0) return TFirstPull::fpUnknown;
  switch (ANode.Special) {
    case TSpecialForm::sfNone:
      return ANode.Function ? ScanChildren(ANode, TWalk::twArg, ADepth) : TFirstPull::fpUnknown;
    case TSpecialForm::sfIndirect: {
      const TFirstPull first = Scan(FFrame.Program.Child(ANode, 0), TWalk::twScalar, ADepth - 1);
      return first == TFirstPull::fpNone ? TFirstPull::fpUnknown : first;
    }
    case TSpecialForm::sfIf:
    case TSpecialForm::sfIfError:
    case TSpecialForm::sfIfNa:
    case TSpecialForm::sfChoose: return ScanBranches(ANode, ADepth);
    default: return TFirstPull::fpUnknown;
  }
}

TFirstPull TFirstPullScan::Scan(const TProgramNode& ANode, TWalk AWalk, int ADepth) {
  if (ADepth == 0 || --FBudget < 0) return TFirstPull::fpUnknown;
  switch (ANode.Kind) {
    case ankNumber:
    case ankString:
    case ankBool:
    case ankError: return TFirstPull::fpNone;
    case ankCellRef:
    case ankSheetRef: {
      const TRelativeRect at = FFrame.RectOf(ANode);
      return ScanCell(FSheetOf(ANode.SheetName), at.Col, at.Row);
    }
    case ankRange: return AWalk == TWalk::twScalar ? TFirstPull::fpUnknown : ScanRange(ANode);
    case ankUnary: {
      if (ANode.Op == opAt) ++FOpaque;
      const bool isArgument = ANode.Op == opAt && AWalk == TWalk::twScalar;
      return Scan(FFrame.Program.Child(ANode, 0), isArgument ? TWalk::twNode : AWalk, ADepth - 1);
    }
    case ankBinary: {
      const bool isByElement = AWalk == TWalk::twArg && IsComparison(ANode.Op);
      return ScanChildren(ANode, isByElement ? TWalk::twArg : TWalk::twScalar, ADepth);
    }
    case ankFunc: return ScanCall(ANode, ADepth);
    case ankArrayLit:
      return AWalk == TWalk::twScalar ? TFirstPull::fpNone : ScanChildren(ANode, TWalk::twScalar, ADepth);
    case ankTableRef: break;
  }
  return TFirstPull::fpUnknown;
}

}  // namespace

/// The cell that the formula of a cell pulls first, when that can be told without running it. The loop over waiting
/// readers then goes there straight away, which saves it one run and one suspension for each link of a plain chain.
std::optional<TCellId> TEvaluation::FindFirstPull(TCellId AId) {
  const TFormulaRecord* record = RecordOf(AId);
  if (!record || !Options.ReusePrograms) return std::nullopt;
  std::unique_ptr<TProgram> owned;
  const TProgram& program = ProgramOf(*record->Template, AId.Col(), AId.Row(), owned);
  const TProgramFrame frame{program, AId.Col(), AId.Row(), AId.Sheet()};
  TFirstPullScan scan(
      frame, [this](TCellId AOther) { return RecordOf(AOther); },
      [this, &frame](const TText& AName) { return SheetOf(frame, AName); },
      [this, &frame](const TProgramNode& ANode) {
        TCellValue value;
        return ChooseBranch(frame, ANode, value);
      });
  constexpr int kDepth = 24;
  if (scan.Scan(program.Root(), TWalk::twNode, kDepth) != TFirstPull::fpFound) return std::nullopt;
  return scan.Found();
}

}  // namespace tessarine::detail
