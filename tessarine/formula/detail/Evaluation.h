#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/CellId.h>
#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/detail/ArgStack.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/detail/LocalNames.h>
#include <tessarine/formula/detail/Program.h>

namespace tessarine {
struct TWorkControl;
}

namespace tessarine::detail {

/// A program at work for one cell; a text without a cell has column and row 0.
struct TProgramFrame {
  const TProgram& Program;
  int32_t Col = 0;
  int32_t Row = 0;
  int32_t SheetIndex = -1;

  TRelativeRect RectOf(const TProgramNode& ANode) const { return TProgram::RectAt(ANode, Col, Row); }
};

/// Hash and equality of maps with text keys that are asked with views.
struct TTextHash {
  using is_transparent = void;
  size_t operator()(std::u16string_view AText) const { return std::hash<std::u16string_view>()(AText); }
};
struct TTextEqual {
  using is_transparent = void;
  bool operator()(std::u16string_view ALeft, std::u16string_view ARight) const { return ALeft == ARight; }
};
template <class TValue>
using TTextMap = boost::unordered_flat_map<std::u16string, TValue, TTextHash, TTextEqual>;

/// Arrays that are read from a sheet or made by an operator hold at most this many cells (384 MB); larger ones are
/// #NUM!. Views have no such limit.
constexpr int64_t kMaxArrayCells = int64_t{1} << 24;

/// The operators' shared semantics. Both operands are evaluated: the left one's error wins.
TCellValue ApplyOperator(TOperator AOperator, const TCellValue& ALeft, const TCellValue& ARight);
TCellValue NegateValue(const TCellValue& AValue);
/// The answer of a comparison without a test for errors.
TCellValue CompareCells(TOperator AOperator, const TValueView& ALeft, const TValueView& ARight);
constexpr bool IsComparison(TOperator AOperator) { return AOperator >= opEq && AOperator <= opGe; }

/// All of one interpreter: the walkers over programs, the reading of cells and the state of what is under way.
///
/// Reading a formula cell that has no result evaluates it there and then ("a pull"). Pulls nest natively as long as the
/// stack stands it; behind that the evaluation of a cell at the end of the chain goes on in a loop over readers that
/// wait (see EvaluationCells.cpp).
///
/// 1. FReaders holds the formula cells under evaluation, innermost last. Their records, and those of the cells in
///    FDeferredCells, carry frVisiting; no others do.
/// 2. FPulls from a reader's PullBase on holds the pulls that it has made, up to the next reader's PullBase.
/// 3. While a cell is pulled, every argument that is held anywhere owns its cells: no view outlives a change.
class TEvaluation {
 public:
  explicit TEvaluation(TWorkbook& AWorkbook);
  ~TEvaluation();
  TEvaluation(const TEvaluation&) = delete;
  TEvaluation& operator=(const TEvaluation&) = delete;

  // ---- EvaluationTexts.cpp: what hosts and the recalculation call
  TCellValue EvaluateText(std::u16string_view AFormula, int32_t ASheetIndex);
  TFormulaArg EvaluateTextAt(std::u16string_view AFormula, int32_t ASheetIndex, int32_t ACol, int32_t ARow);
  void EvaluateFormulaCell(TCellId AId);
  void WriteCircular(TCellId AId);
  bool IsVisiting(TCellId AId);
  bool IsIdle() const { return FActive == 0; }
  TRangeIndexCache* RangeIndexes() { return Options.RangeIndexes ? FIndexes.get() : nullptr; }
  void Reset();

  // ---- EvaluationSpills.cpp
  void ApplySpill(TCellId AAnchor, TFormulaArg AResult);

  // ---- EvaluationNames.cpp
  int32_t ResolveSheetIndex(int32_t ACurrentSheet, std::u16string_view AName) const;
  TInterpreter::TTableArea ResolveTableColumn(int32_t ACurrentSheet, std::u16string_view ATable,
                                              std::u16string_view AColumn) const;

  ISpillListener* Listener = nullptr;
  const TWorkControl* Control = nullptr;  // asked whether to stop, by what may take long
  TTessarineRtdHub* RtdHub = nullptr;
  TEvaluationOptions Options;
  int32_t EvalCol = 0;
  int32_t EvalRow = 0;
  /// Finds the cell entered last where that was left open, see TInterpreter::SetPendingEvalCell.
  std::function<TCellId()> PendingEvalCell;
  void SettleEvalCell();
  uint64_t Stamp = 1;

 private:
  class TActivity;
  class TReaderGuard;
  class TDeepRun;
  class TNameGuard;
  class TNodeTrail;
  class TNameScope;
  class TLambdaRun;

  /// Thrown by a pull that the stack does not stand any more; caught by the loop over waiting readers.
  struct TSuspension {
    TCellId Target;
  };

  /// A formula cell under evaluation.
  struct TReader {
    TCellId Cell;
    size_t PullBase = 0;
    size_t NameBase = 0;         // how many defined names were under evaluation when it was entered
    size_t OuterReplayNext = 0;  // the replay of the reader around it
    size_t OuterReplayEnd = 0;
    bool StaysVisiting = false;        // its dependents are told later
    TFormulaRecord* Record = nullptr;  // as long as the versions of the sheet list and of the sheet's formulas stand
    uint64_t SheetVersion = 0;
    uint64_t FormulaVersion = 0;
  };

  /// A cell that a reader has pulled, and the evaluation position that the pull left behind.
  struct TPull {
    TCellId Cell;
    int32_t Col = 0;
    int32_t Row = 0;
  };

  /// What was bound when a reader was entered: a run of it that starts again starts from there.
  struct TSavedNames {
    size_t Reader = 0;
    TLocalNames::TSaved Names;
    int64_t Weight = 0;  // of a table that the entry before does not share
  };

  /// A name that was bound before a pull and no longer is.
  struct TLostName {
    size_t Pull = 0;
    std::u16string Name;
  };

  /// What the helpers under way that call closures have used up of what they may.
  struct TCallCounts {
    size_t Readers = 0;       // whose innermost is the formula that Calls and Depth are about
    int32_t Depth = 0;        // helpers within one another
    int64_t Calls = 0;        // by helpers inside others
    int64_t ResultCells = 0;  // of all arrays in the making, also those of waiting formulas
  };

  struct TNamedProgram {
    TText Text;
    bool Exists = false;
    std::shared_ptr<const TProgram> Program;  // compiled at the first use
  };

  struct TSheetName {
    TText Name;
    int32_t SheetIndex = -1;
  };

  // ---- EvaluationScalar.cpp
  TCellValue EvalNode(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TCellValue EvalSignsScalar(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TCellValue EvalBinary(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TCellValue EvalBinaryChain(const TProgramFrame& AFrame, const TProgramNode& ANode);
  bool TryNumber(const TProgramFrame& AFrame, const TProgramNode& ANode, double& ANumber);
  bool NumberOf(const TCellStore& AStore, const TProgramFrame& AFrame, const TProgramNode& ANode, int ADepth,
                double& ANumber) const;

  // ---- EvaluationCalls.cpp
  TCellValue EvalFunction(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TCellValue EvalIdentifier(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TCellValue EvalSpecial(const TProgramFrame& AFrame, const TProgramNode& ANode);
  const TProgramNode* ChooseBranch(const TProgramFrame& AFrame, const TProgramNode& ANode, TCellValue& AValue);
  TCellValue EvalCall(const TProgramFrame& AFrame, const TProgramNode& ANode, bool AMayRepeat);
  bool LostNames(size_t ABefore);
  void EvalArgs(const TProgramFrame& AFrame, const TProgramNode& ANode, TArgFrame& AArgs);
  TCellValue CallFunction(const TProgramFrame& AFrame, const TProgramNode& ANode, const TArgFrame& AArgs);
  TFormulaContext ContextOf(const TProgramFrame& AFrame);
  TFormulaArg EvalFunctionArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalBranchArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalArrayFunction(const TProgramFrame& AFrame, const TProgramNode& ANode);

  // ---- EvaluationDirectCalls.cpp
  bool TryDirectCall(TCellId AId);
  bool CallDirectly(const TProgramFrame& AFrame, TFormulaRecord& ARecord, TCellValue& AResult);
  bool TryPutArg(const TProgramFrame& AFrame, const TProgramNode& ANode, TFormulaArg& AArg);
  bool ReadReadyCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow, TValueView& AValue);

  // ---- EvaluationLambdas.cpp
  static bool IsBindingForm(const TProgramNode& ANode);
  TFormulaArg EvalBindingForm(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalLet(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg MakeLambdaArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  const TProgramNode* EvalLambdaRef(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TCellValue InvokeLambda(const TProgramFrame& AFrame, const TProgramNode& ALambda, std::span<TFormulaArg> AArgs);
  TFormulaArg EvalLambdaHelper(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalMap(TLambdaRun& ARun);
  TFormulaArg EvalByLine(TLambdaRun& ARun, bool AByRow);
  TFormulaArg EvalFold(TLambdaRun& ARun, bool AKeepsAll);
  TFormulaArg EvalMakeArray(TLambdaRun& ARun);

  // ---- EvaluationArgs.cpp
  TFormulaArg EvalNodeArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  enum class TArgMode : uint8_t { amNode, amArg };
  TFormulaArg EvalSigns(const TProgramFrame& AFrame, const TProgramNode& ANode, TArgMode AMode);
  TFormulaArg EvalComparisons(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalArrayLiteral(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalIdentifierArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg ImplicitIntersectArg(TFormulaArg AArg) const;

  // ---- EvaluationReading.cpp
  TWorksheet* SheetAt(int32_t ASheetIndex);
  TFormulaRecord* RecordOf(TCellId AId);
  TValueView ReadCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow);
  TValueView ReadFormula(TCellId AId, const TFormulaRecord& ARecord);
  TCellValue IntersectCells(int32_t ASheetIndex, const TCellRange& ARange);
  TFormulaArg ReadRectangle(int32_t ASheetIndex, const TCellRange& ARange);
  TFormulaArg ReadCells(int32_t ASheetIndex, const TCellRange& ARange);
  TFormulaArg EvalCellArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalRangeArg(const TProgramFrame& AFrame, const TProgramNode& ANode);
  bool TryViewRange(const TProgramFrame& AFrame, const TProgramNode& ANode, TFormulaArg& AArg);
  bool HasVisiting(const TWorksheet& ASheet, int32_t ASheetIndex, const TCellRange& ARange) const;
  void PullInside(int32_t ASheetIndex, const TCellRange& ARange);

  // ---- EvaluationReferences.cpp: references that are known only when they are evaluated
  TCellValue EvalTableRef(const TProgramFrame& AFrame, const TProgramNode& ANode);
  TFormulaArg EvalTableArg(const TProgramFrame& AFrame, std::u16string_view ATable, std::u16string_view AColumn);
  TCellValue EvalIndirect(std::u16string_view AText, int32_t ASheetIndex);
  TFormulaArg EvalOffset(const TProgramFrame& AFrame, const TProgramNode& ANode);

  // ---- EvaluationNames.cpp
  int32_t SheetOf(const TProgramFrame& AFrame, const TText& AName);
  const TNamedProgram& FindNamed(std::u16string_view AName);
  TCellValue EvalNamedFormula(std::u16string_view AName, int32_t ASheetIndex);

  // ---- EvaluationTexts.cpp
  std::shared_ptr<const TProgram> ProgramOfText(std::u16string_view AFormula);

  // ---- EvaluationCells.cpp
  bool PullCell(TCellId AId);
  bool Enter(TCellId AId);
  void Leave();
  void ResetSparkline(TCellId AId);
  void RunNative(TCellId AId);
  void RunDeep(TCellId AId);
  void RunReader(TCellId AId);
  TFormulaRecord* RecordOf(const TReader& AReader);
  void StoreScalar(TCellId AId, const TCellValue& AValue);
  bool TryStoreNumber(TCellId AId, TFormulaRecord& ARecord, double ANumber);
  bool IsReplaying() const { return FReplayNext != FReplayEnd; }
  bool ReplayPull(TCellId AId);
  void NotePull(TCellId AId, const TLocalNames::TSaved& ANamesBefore);
  void CutPulls(size_t ACount);
  void SaveNames();
  TLocalNames::TSaved NamesOfReader() const;
  size_t StackUsed() const;

  // ---- EvaluationFirstPull.cpp
  std::optional<TCellId> FindFirstPull(TCellId AId);

  // ---- EvaluationSpills.cpp
  void TellDependents(TCellId AAnchor, const TCellRange& ABlock);
  void ReleaseDeferred();
  void MaterializeAsTable(TCellId AAnchor, const TFormulaArg& AResult);

  TWorkbook& FWorkbook;
  size_t FActive = 0;  // calls from outside that are under way
  uintptr_t FStackBase = 0;
  size_t FStackLimit = 0;
  bool FCanSuspend = false;  // a loop over waiting readers stands below, with nothing but our own frames above it
  bool FSuspending = false;
  std::vector<TReader> FReaders;
  std::vector<TPull> FPulls;
  size_t FReplayNext = 0;  // pulls of the reader under way that it has made in an earlier run and not yet met again
  size_t FReplayEnd = 0;
  std::vector<TText> FVisitingNames;
  TLocalNames FLocals;
  std::vector<TSavedNames> FSavedNames;  // by readers; those that were entered while nothing was bound have none
  int64_t FSavedWeight = 0;
  std::vector<TLostName> FLostNames;  // by pulls
  TCallCounts FCalls;
  int32_t FNameRepeats = 0;  // since the call from outside
  int32_t FRepeatLevel = 0;  // calls within one another that have lost names, in the call under way so far
  TArgStack FArgs;
  std::vector<const TProgramNode*> FTrail;  // nodes of chains that are walked without recursion

  int FSpillDepth = 0;  // tellings of dependents under way
  bool FRunsDeferred = false;
  struct TDeferredBlock {
    int32_t SheetIndex = -1;
    TCellRange Block;
  };
  std::vector<TDeferredBlock> FDeferredBlocks;
  std::vector<TCellId> FDeferredCells;

  std::unique_ptr<TRangeIndexCache> FIndexes;

  // What was found out before; each with the version it holds for.
  TWorksheet* FSheet = nullptr;
  int32_t FSheetIndex = -1;
  uint64_t FSheetVersion = 0;
  static constexpr size_t kSheetNames = 8;
  TSheetName FSheetNames[kSheetNames];
  size_t FNextSheetName = 0;
  uint64_t FSheetNamesVersion = 0;
  TTextMap<TNamedProgram> FNamed;
  uint64_t FNamedVersion = 0;
  TTextMap<std::shared_ptr<const TProgram>> FTexts;
};

/// Nodes of one chain, kept on a stack that all chains share.
class TEvaluation::TNodeTrail {
 public:
  explicit TNodeTrail(TEvaluation& AOwner) : FNodes(AOwner.FTrail), FBase(FNodes.size()) {}
  ~TNodeTrail() { FNodes.resize(FBase); }
  TNodeTrail(const TNodeTrail&) = delete;
  TNodeTrail& operator=(const TNodeTrail&) = delete;

  void Push(const TProgramNode& ANode) { FNodes.push_back(&ANode); }
  bool IsEmpty() const { return FNodes.size() == FBase; }
  const TProgramNode& Pop() {
    const TProgramNode& node = *FNodes.back();
    FNodes.pop_back();
    return node;
  }

 private:
  std::vector<const TProgramNode*>& FNodes;
  size_t FBase;
};

/// Forms that only the argument mode knows, with as many arguments as they need to be known.
inline bool TEvaluation::IsBindingForm(const TProgramNode& ANode) {
  static_assert(TSpecialForm::sfLet < TSpecialForm::sfLambda && TSpecialForm::sfLambda < TSpecialForm::sfMap &&
                TSpecialForm::sfMap < TSpecialForm::sfMakeArray);
  if (ANode.Special < TSpecialForm::sfLet) return false;
  if (ANode.Special == TSpecialForm::sfLambda) return true;
  const bool needsThree = ANode.Special == TSpecialForm::sfLet || ANode.Special == TSpecialForm::sfMakeArray;
  return ANode.ChildCount >= (needsThree ? 3 : 2);
}

inline TWorksheet* TEvaluation::SheetAt(int32_t ASheetIndex) {
  if (ASheetIndex != FSheetIndex || FSheetVersion != FWorkbook.SheetListVersion()) {
    FSheet = FWorkbook.GetSheet(ASheetIndex);
    FSheetIndex = ASheetIndex;
    FSheetVersion = FWorkbook.SheetListVersion();
  }
  return FSheet;
}

/// Reads one cell as every formula sees it: a blank cell shows the value that a spill lays over it, a formula cell its
/// result, which is evaluated now if there is none; one that is being evaluated is #CIRC!. Valid until the next change.
inline TValueView TEvaluation::ReadCell(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
  TWorksheet* sheet = SheetAt(ASheetIndex);
  if (!sheet) return TValueView::FromError(ceRef);
  if (TCellAddress{ACol, ARow}.IsValid()) {
    if (const TCellSlot* slot = sheet->Store().Find(ACol, ARow)) {
      if (slot->Kind == cvkFormula)
        return ReadFormula(TCellId::Of(ASheetIndex, ACol, ARow), sheet->Store().Record(slot->Record));
      if (slot->Kind != cvkEmpty) return slot->ConstantView();
    }
  }
  if (sheet->Spills().IsEmpty()) return {};
  const TCellValue* spilled = sheet->Spills().FindChildValue(ACol, ARow);
  return spilled ? spilled->View() : TValueView();
}

inline TValueView TEvaluation::ReadFormula(TCellId AId, const TFormulaRecord& ARecord) {
  if (ARecord.IsVisiting()) return TValueView::FromError(ceCirc);
  if (IsReplaying() && ReplayPull(AId)) return ARecord.CachedView();
  if (ARecord.HasCached()) return ARecord.CachedView();
  if (!PullCell(AId)) return TValueView::FromError(ceValue);
  const TFormulaRecord* record = RecordOf(AId);
  return record ? record->CachedView() : TValueView();
}

}  // namespace tessarine::detail
