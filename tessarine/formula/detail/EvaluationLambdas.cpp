#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

#include <tessarine/formula/LambdaClosure.h>
#include <tessarine/formula/detail/NumericLambda.h>
#include <tessarine/formula/detail/ProgramTree.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/platform/Progress.h>

// LET, LAMBDA and the functions that call a LAMBDA for each cell of an array. A LAMBDA that stands in its place among
// the arguments is called straight from the program. Frames in this file may be left by a suspension (see
// EvaluationCells.cpp): they then leave the bound names as they are, for the cell that is pulled reads them.

namespace tessarine::detail {

namespace {

/// A closure that the evaluator has made, and the LAMBDA in the program under evaluation.
class TProgramClosure final : public TLambdaClosure {
 public:
  TProgramClosure(const TProgramFrame& AFrame, const TProgramNode& ALambda, std::vector<std::u16string> ANames)
      : TLambdaClosure(
            std::move(ANames),
            MakeTree(AFrame.Program, AFrame.Program.Child(ALambda, ALambda.ChildCount - 1), AFrame.Col, AFrame.Row)),
        Program(&AFrame.Program),
        Lambda(&ALambda) {}

  const TProgram* const Program;
  const TProgramNode* const Lambda;
};

bool IsPlainName(const TProgramNode& ANode) { return ANode.IsIdentifier && !ANode.Text.IsEmpty(); }

/// A body and at least one parameter, all of which are names.
bool IsWellFormedLambda(const TProgram& AProgram, const TProgramNode& ANode) {
  if (ANode.ChildCount < 2) return false;
  for (uint32_t i = 0; i + 1 < ANode.ChildCount; ++i) {
    if (!IsPlainName(AProgram.Child(ANode, i))) return false;
  }
  return true;
}

int64_t CountOf(const TFormulaArg& AArray) { return AArray.IsRange ? AArray.CellCount() : 1; }

TCellValue ElementAt(const TFormulaArg& AArray, int64_t AIndex) {
  return TCellValue::FromView(AArray.IsRange ? AArray.ViewAt(AIndex) : AArray.FirstView());
}

bool ToLane(const TValueView& AValue, double& ALane) {
  if (AValue.Kind == cvkNumber) ALane = AValue.Number;
  return AValue.Kind == cvkNumber || AValue.IsEmpty();
}

/// The numbers of up to ALanes.size() elements from AFirst on, blanks as 0. False when another kind is among them.
bool LoadLanes(const TFormulaArg& AArray, int64_t AFirst, std::span<double> ALanes) {
  std::fill(ALanes.begin(), ALanes.end(), 0.0);
  if (!AArray.IsRange) return ToLane(AArray.FirstView(), ALanes[0]);
  const auto count = static_cast<int64_t>(ALanes.size());
  if (!AArray.IsView() || AFirst % AArray.ColCount != 0 || count % AArray.ColCount != 0) {
    for (int64_t i = 0; i < count; ++i) {
      if (!ToLane(AArray.ViewAt(AFirst + i), ALanes[static_cast<size_t>(i)])) return false;
    }
    return true;
  }
  return WalkViewValues(AArray, static_cast<int32_t>(AFirst / AArray.ColCount),
                        static_cast<int32_t>(count / AArray.ColCount), [&](std::span<const TIndexedValue> AValues) {
                          for (const TIndexedValue& item : AValues) {
                            if (!ToLane(item.Value, ALanes[static_cast<size_t>(item.Index - AFirst)])) return false;
                          }
                          return true;
                        });
}

}  // namespace

/// Names that an expression has bound so far: every AStride-th child of a node, the first ACount of them. They are
/// unbound at its end, unless that is a suspension.
class TEvaluation::TNameScope {
 public:
  TNameScope(TEvaluation& AOwner, const TProgramFrame& AFrame, const TProgramNode& ANode, uint32_t AStride)
      : FOwner(AOwner), FFrame(AFrame), FNode(ANode), FStride(AStride) {}
  ~TNameScope() {
    FOwner.FArgs.PutDown(FHeldCells);
    if (FOwner.FSuspending) return;
    for (uint32_t i = 0; i < FCount; ++i) FOwner.FLocals.Unbind(NameAt(i));
  }
  TNameScope(const TNameScope&) = delete;
  TNameScope& operator=(const TNameScope&) = delete;

  /// Binds the next name.
  void Bind(TFormulaArg AArg, bool AIsMissing) { FOwner.FLocals.Bind(NameAt(FCount++), std::move(AArg), AIsMissing); }
  void Hold(TFormulaArg& AArg) {
    AArg.Materialize();
    FHeldCells += FOwner.FArgs.PickUp(AArg);
  }

 private:
  const TText& NameAt(uint32_t AIndex) const { return FFrame.Program.Child(FNode, AIndex * FStride).Text; }

  TEvaluation& FOwner;
  const TProgramFrame& FFrame;
  const TProgramNode& FNode;
  uint32_t FStride;
  uint32_t FCount = 0;
  int64_t FHeldCells = 0;
};

/// One helper at work: its LAMBDA and what it may still do. Helpers inside others call a bounded number of times, and
/// the arrays in the making have a bounded number of cells, all of them together.
class TEvaluation::TLambdaRun {
 public:
  TLambdaRun(TEvaluation& AOwner, const TProgramFrame& AFrame, const TProgramNode& ALambda, const TArgFrame& AArgs)
      : Frame(AFrame), Lambda(ALambda), Args(AArgs), FOwner(AOwner), FBefore(AOwner.FCalls) {
    FIsOutermost = FBefore.Depth == 0 || FBefore.Readers != AOwner.FReaders.size();
    if (FIsOutermost) AOwner.FCalls = {AOwner.FReaders.size(), 0, 0, FBefore.ResultCells};
    ++AOwner.FCalls.Depth;
  }
  ~TLambdaRun() {
    FOwner.FCalls.ResultCells = FBefore.ResultCells;
    --FOwner.FCalls.Depth;
    if (FIsOutermost) FOwner.FCalls = FBefore;
    if (!FOwner.FSuspending && FHasCalls) {
      for (uint32_t i = 0; i + 1 < Lambda.ChildCount; ++i) FOwner.FLocals.Unbind(Frame.Program.Child(Lambda, i).Text);
    }
  }
  TLambdaRun(const TLambdaRun&) = delete;
  TLambdaRun& operator=(const TLambdaRun&) = delete;

  /// Whether there is room for ACalls calls, of which AResultCells results are kept.
  bool Reserve(int64_t ACalls, int64_t AResultCells) {
    constexpr int64_t kMostOuterCalls = int64_t{1} << 26;
    constexpr int64_t kMostInnerCalls = int64_t{1} << 24;
    const int64_t room = FIsOutermost ? kMostOuterCalls : kMostInnerCalls - FOwner.FCalls.Calls;
    if (ACalls > room || AResultCells > kMaxArrayCells) return false;
    if (!FIsOutermost) FOwner.FCalls.Calls += ACalls;
    FResultCells = static_cast<size_t>(AResultCells);
    FHasCalls = ACalls > 0;
    return true;
  }

  /// Adds a result to the array. Room is taken only now that there is one: an evaluation that nests before its first
  /// result holds nothing. False when all arrays in the making are too large together.
  bool Keep(TCellValue AValue) {
    constexpr size_t kStep = 4096;
    if (FCells.size() % kStep == 0) {
      if (FOwner.FCalls.ResultCells > kMaxArrayCells) return false;
      FOwner.FCalls.ResultCells += kStep;
      if (FCells.empty()) FCells.reserve(FResultCells);
    }
    FCells.push_back(std::move(AValue));
    return true;
  }
  TFormulaArg Result(int32_t ARows, int32_t ACols) { return TFormulaArg::FromRange(std::move(FCells), ARows, ACols); }
  TFormulaArg ResultLikeArray() { return Array().IsRange ? Result(Array().RowCount, Array().ColCount) : Result(1, 1); }

  /// The array that is worked through. A view of it may become an array while a cell is pulled.
  const TFormulaArg& Array() const { return Args.Values()[0]; }

  std::optional<TNumericLambda> Numeric(size_t AArgCount) const {
    if (!FOwner.Options.NumericLambdas) return std::nullopt;
    return TNumericLambda::Compile(Frame.Program, Lambda, AArgCount);
  }

  TCellValue Call(TCellValue AFirst) const {
    TFormulaArg args[] = {TFormulaArg::FromScalar(std::move(AFirst))};
    return FOwner.InvokeLambda(Frame, Lambda, args);
  }
  TCellValue Call(TCellValue AFirst, TCellValue ASecond) const {
    TFormulaArg args[] = {TFormulaArg::FromScalar(std::move(AFirst)), TFormulaArg::FromScalar(std::move(ASecond))};
    return FOwner.InvokeLambda(Frame, Lambda, args);
  }
  TCellValue CallLine(std::vector<TCellValue> ACells, bool AIsRow) const {
    const auto length = static_cast<int32_t>(ACells.size());
    TFormulaArg args[] = {TFormulaArg::FromRange(std::move(ACells), AIsRow ? 1 : length, AIsRow ? length : 1)};
    const THeldArg held(FOwner.FArgs, args[0]);
    return FOwner.InvokeLambda(Frame, Lambda, args);
  }

  /// To be asked for every element, for those that cost no call: every few thousand of them it looks whether the work
  /// is to stop.
  void Poll(int64_t AIndex) const {
    if ((AIndex & 0xfff) == 0xfff && FOwner.Control) FOwner.Control->CheckStop();
  }

  const TProgramFrame& Frame;
  const TProgramNode& Lambda;
  const TArgFrame& Args;

 private:
  TEvaluation& FOwner;
  TCallCounts FBefore;
  std::vector<TCellValue> FCells;
  size_t FResultCells = 0;
  bool FIsOutermost = false;
  bool FHasCalls = false;
};

/// The forms that bind names or take closures, where the argument mode knows them.
TFormulaArg TEvaluation::EvalBindingForm(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  switch (ANode.Special) {
    case TSpecialForm::sfLet: return EvalLet(AFrame, ANode);
    case TSpecialForm::sfLambda: return MakeLambdaArg(AFrame, ANode);
    default: return EvalLambdaHelper(AFrame, ANode);
  }
}

TFormulaArg TEvaluation::EvalLet(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  if (ANode.ChildCount % 2 == 0) return TFormulaArg::FromError(ceValue);
  TNameScope scope(*this, AFrame, ANode, 2);
  for (uint32_t i = 0; i + 1 < ANode.ChildCount; i += 2) {
    if (!IsPlainName(AFrame.Program.Child(ANode, i))) return TFormulaArg::FromError(ceValue);
    TFormulaArg value = EvalNodeArg(AFrame, AFrame.Program.Child(ANode, i + 1));
    scope.Hold(value);
    if (value.FirstView().IsError()) return TFormulaArg::FromScalar(value.First());
    scope.Bind(std::move(value), false);
  }
  return EvalNodeArg(AFrame, AFrame.Program.Child(ANode, ANode.ChildCount - 1));
}

/// A LAMBDA as a value.
TFormulaArg TEvaluation::MakeLambdaArg(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  if (!IsWellFormedLambda(AFrame.Program, ANode)) return TFormulaArg::FromError(ceValue);
  std::vector<std::u16string> names;
  for (uint32_t i = 0; i + 1 < ANode.ChildCount; ++i)
    names.push_back(TWorkbook::NormalizeName(AFrame.Program.Child(ANode, i).Text));
  return TFormulaArg::FromLambda(std::make_shared<TProgramClosure>(AFrame, ANode, std::move(names)));
}

/// The LAMBDA in the place where a helper expects one, null when there is none. A name bound to one does not count:
/// what a name yields here is a scalar.
const TProgramNode* TEvaluation::EvalLambdaRef(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  if (ANode.Kind == ankFunc && ANode.Special == TSpecialForm::sfLambda)
    return IsWellFormedLambda(AFrame.Program, ANode) ? &ANode : nullptr;
  const TFormulaArg value = EvalNodeArg(AFrame, ANode);
  const auto* closure = value.IsLambda ? dynamic_cast<const TProgramClosure*>(value.Lambda.get()) : nullptr;
  return closure && closure->Program == &AFrame.Program ? closure->Lambda : nullptr;
}

/// Calls a LAMBDA of the frame's program. Parameters without an argument are blank and count as omitted. A call may be
/// any amount of work, so each looks whether the work is to stop.
TCellValue TEvaluation::InvokeLambda(const TProgramFrame& AFrame, const TProgramNode& ALambda,
                                     std::span<TFormulaArg> AArgs) {
  if (Control) Control->CheckStop();
  const uint32_t params = ALambda.ChildCount - 1;
  TNameScope scope(*this, AFrame, ALambda, 1);
  for (uint32_t i = 0; i < params; ++i) {
    const bool isMissing = i >= AArgs.size();
    scope.Bind(isMissing ? TFormulaArg() : std::move(AArgs[i]), isMissing);
  }
  const TProgramNode& body = AFrame.Program.Child(ALambda, params);
  if (body.Kind != ankFunc && body.Kind != ankUnary && body.Kind != ankArrayLit && body.Kind != ankRange)
    return EvalNode(AFrame, body);
  return EvalNodeArg(AFrame, body).First();
}

TFormulaArg TEvaluation::EvalLambdaHelper(const TProgramFrame& AFrame, const TProgramNode& ANode) {
  const uint32_t slot = ANode.Special == TSpecialForm::sfMakeArray ? 2 : 1;
  const TProgramNode* lambda = nullptr;
  TArgFrame args(FArgs, ANode.ChildCount);
  for (uint32_t i = 0; i < ANode.ChildCount; ++i) {
    const TProgramNode& child = AFrame.Program.Child(ANode, i);
    if (i == slot) {
      lambda = EvalLambdaRef(AFrame, child);
    } else {
      args.Set(i, EvalArg(AFrame, child));
    }
  }
  if (!lambda) return TFormulaArg::FromError(ceValue);
  TLambdaRun run(*this, AFrame, *lambda, args);
  switch (ANode.Special) {
    case TSpecialForm::sfMap: return EvalMap(run);
    case TSpecialForm::sfByRow: return EvalByLine(run, true);
    case TSpecialForm::sfByCol: return EvalByLine(run, false);
    case TSpecialForm::sfReduce: return EvalFold(run, false);
    case TSpecialForm::sfScan: return EvalFold(run, true);
    default: return EvalMakeArray(run);
  }
}

TFormulaArg TEvaluation::EvalMap(TLambdaRun& ARun) {
  const int64_t count = CountOf(ARun.Array());
  if (!ARun.Reserve(count, count)) return TFormulaArg::FromError(ceNum);
  std::optional<TNumericLambda> numeric = ARun.Numeric(1);
  for (int64_t next = 0; next < count;) {
    const int64_t batch = std::min<int64_t>(count - next, TNumericLambda::kMostLanes);
    const std::span<double> numbers = numeric ? numeric->Lanes(batch) : std::span<double>();
    const bool isNumeric = numeric && LoadLanes(ARun.Array(), next, numbers) && numeric->CallEach(numbers);
    for (int64_t i = 0; i < batch; ++i, ++next) {
      ARun.Poll(next);
      TCellValue value = isNumeric ? TCellValue::FromNumber(numbers[static_cast<size_t>(i)])
                                   : ARun.Call(ElementAt(ARun.Array(), next));
      if (value.IsError()) return TFormulaArg::FromScalar(std::move(value));
      if (!ARun.Keep(std::move(value))) return TFormulaArg::FromError(ceNum);
    }
  }
  return ARun.ResultLikeArray();
}

/// BYROW and BYCOL.
TFormulaArg TEvaluation::EvalByLine(TLambdaRun& ARun, bool AByRow) {
  const int32_t rows = ARun.Array().IsRange ? ARun.Array().RowCount : 1;
  const int32_t cols = ARun.Array().IsRange ? ARun.Array().ColCount : 1;
  const int32_t lines = AByRow ? rows : cols;
  const int32_t length = AByRow ? cols : rows;
  if (!ARun.Reserve(int64_t{rows} * cols, lines)) return TFormulaArg::FromError(ceNum);  // the cells count as calls
  for (int32_t line = 0; line < lines; ++line) {
    ARun.Poll(line);
    std::vector<TCellValue> cells;
    cells.reserve(static_cast<size_t>(length));
    for (int32_t i = 0; i < length; ++i)
      cells.push_back(ElementAt(ARun.Array(), AByRow ? int64_t{line} * cols + i : int64_t{i} * cols + line));
    TCellValue value = ARun.CallLine(std::move(cells), AByRow);
    if (value.IsError()) return TFormulaArg::FromScalar(std::move(value));
    if (!ARun.Keep(std::move(value))) return TFormulaArg::FromError(ceNum);
  }
  return AByRow ? ARun.Result(rows, 1) : ARun.Result(1, cols);
}

/// REDUCE, and SCAN, which keeps every value on the way. Without a start value the first cell is one, and counts again
/// as a cell.
TFormulaArg TEvaluation::EvalFold(TLambdaRun& ARun, bool AKeepsAll) {
  const int64_t count = CountOf(ARun.Array());
  const bool hasStart = ARun.Args.Values().size() > 2;
  if (count == 0 && (AKeepsAll || !hasStart)) return TFormulaArg::FromError(ceValue);
  if (!ARun.Reserve(count, AKeepsAll ? count : 0)) return TFormulaArg::FromError(ceNum);
  TCellValue value = hasStart ? ARun.Args.Values()[2].First() : ElementAt(ARun.Array(), 0);
  std::optional<TNumericLambda> numeric = ARun.Numeric(2);
  for (int64_t next = 0; next < count;) {
    const int64_t batch = std::min<int64_t>(count - next, TNumericLambda::kMostLanes);
    const std::span<double> lanes = numeric ? numeric->Lanes(batch) : std::span<double>();
    double number = 0;
    bool isNumeric = numeric && ToLane(value.View(), number) && LoadLanes(ARun.Array(), next, lanes);
    for (int64_t i = 0; i < batch; ++i, ++next) {
      ARun.Poll(next);
      isNumeric = isNumeric && numeric->Call(number, lanes[static_cast<size_t>(i)], number);
      value = isNumeric ? TCellValue::FromNumber(number) : ARun.Call(std::move(value), ElementAt(ARun.Array(), next));
      if (value.IsError()) return TFormulaArg::FromScalar(std::move(value));
      if (AKeepsAll && !ARun.Keep(value)) return TFormulaArg::FromError(ceNum);
    }
  }
  return AKeepsAll ? ARun.ResultLikeArray() : TFormulaArg::FromScalar(std::move(value));
}

TFormulaArg TEvaluation::EvalMakeArray(TLambdaRun& ARun) {
  int64_t rows = 0;
  int64_t cols = 0;
  const std::span<const TFormulaArg> args = ARun.Args.Values();
  if (!ArgAsInt64(args[0], rows) || !ArgAsInt64(args[1], cols)) return TFormulaArg::FromError(ceValue);
  if (rows < 1 || cols < 1) return TFormulaArg::FromError(ceValue);
  if (rows > kMaxGeneratedCells || cols > kMaxGeneratedCells || rows * cols > kMaxGeneratedCells ||
      !ARun.Reserve(rows * cols, rows * cols))
    return TFormulaArg::FromError(ceNum);
  std::optional<TNumericLambda> numeric = ARun.Numeric(2);
  for (int64_t i = 0; i < rows * cols; ++i) {
    ARun.Poll(i);
    const int64_t rowsAbove = i / cols;
    const auto row = static_cast<double>(rowsAbove + 1);
    const auto col = static_cast<double>(i - rowsAbove * cols + 1);
    double number = 0;
    TCellValue value = numeric && numeric->Call(row, col, number)
                           ? TCellValue::FromNumber(number)
                           : ARun.Call(TCellValue::FromNumber(row), TCellValue::FromNumber(col));
    if (value.IsError()) return TFormulaArg::FromScalar(std::move(value));
    if (!ARun.Keep(std::move(value))) return TFormulaArg::FromError(ceNum);
  }
  return ARun.Result(static_cast<int32_t>(rows), static_cast<int32_t>(cols));
}

}  // namespace tessarine::detail
