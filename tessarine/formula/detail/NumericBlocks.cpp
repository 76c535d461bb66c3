#include <tessarine/formula/detail/NumericBlocks.h>

#include <algorithm>
#include <cmath>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/detail/Interpreter.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kLanes = kTileRows;
constexpr size_t kMaxNodes = 64;

/// The number that a slot stands for in arithmetic, without looking at texts: false for all that is not plain.
inline bool SlotNumber(const TCellStore& AStore, const TCellSlot& ASlot, double& ANumber) {
  if (ASlot.Kind == cvkNumber) {
    ANumber = ASlot.Number;
    return true;
  }
  if (ASlot.Kind != cvkFormula) return false;
  const TFormulaRecord& record = AStore.Record(ASlot.Record);
  ANumber = record.Number;
  return record.CachedKind == cvkNumber && record.HasCached() && !record.IsVisiting();
}

/// Brings each lane's result to what a single evaluation stores; false when one is not finite.
bool Settle(double* ALanes, int32_t ACount) {
  double sum = 0;
  for (int32_t i = 0; i < ACount; ++i) {
    ALanes[i] += 0.0;        // -0 becomes 0
    sum += ALanes[i] * 0.0;  // 0 unless the lane is not finite
  }
  return sum == 0.0;
}

}  // namespace

std::optional<TNumericBlock> TNumericBlock::Compile(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                                    const TInterpreter& AInterpreter, int32_t ASheet, int32_t ACol) {
  if (AProgram.Nodes.size() > kMaxNodes) return std::nullopt;
  TNumericBlock block;
  block.FTarget = AWorkbook.GetSheet(ASheet);
  block.FCol = ACol;
  size_t depth = 0;
  const auto push = [&](TStep AStep, size_t AOperand) {
    block.FSteps.push_back({AStep, static_cast<uint32_t>(AOperand)});
    block.FDepth = std::max(block.FDepth, ++depth);
  };
  for (const TProgramNode& node : AProgram.Nodes) {  // children first: this is the order of a stack machine
    switch (node.Kind) {
      case ankNumber:
        push(TStep::stConstant, block.FConstants.size());
        block.FConstants.push_back(node.Number);
        break;
      case ankCellRef:
      case ankSheetRef: {
        const int32_t sheet = node.Kind == ankCellRef ? ASheet : AInterpreter.ResolveSheetIndex(ASheet, node.SheetName);
        const TWorksheet* source = AWorkbook.GetSheet(sheet);
        if (!source) return std::nullopt;
        const int32_t col = node.Col + ((node.Relative & TProgramNode::rlCol) ? ACol : 0);
        push(TStep::stCell, block.FOperands.size());
        block.FOperands.push_back({sheet, col, node.Row, (node.Relative & TProgramNode::rlRow) != 0, source});
        break;
      }
      case ankBinary: {
        TStep step;
        switch (node.Op) {
          case opAdd: step = TStep::stAdd; break;
          case opSub: step = TStep::stSubtract; break;
          case opMul: step = TStep::stMultiply; break;
          case opDiv: step = TStep::stDivide; break;
          default: return std::nullopt;
        }
        block.FSteps.push_back({step, 0});
        --depth;
        break;
      }
      case ankUnary:
        if (node.Op != opMinus) return std::nullopt;
        block.FSteps.push_back({TStep::stNegate, 0});
        break;
      default: return std::nullopt;
    }
  }
  const TAstNodeKind root = AProgram.Root().Kind;
  if (root != ankBinary && root != ankUnary) return std::nullopt;  // a bare reference passes any kind on
  block.FStack.resize(block.FDepth * kLanes);
  return block;
}

bool TNumericBlock::ReadsColumn(int32_t ASheet, int32_t ACol) const {
  return std::any_of(FOperands.begin(), FOperands.end(),
                     [=](const TOperand& AOperand) { return AOperand.Sheet == ASheet && AOperand.Col == ACol; });
}

/// ACount numbers of a column from row ARow of the target on; false when one of them is not plain.
bool TNumericBlock::LoadLanes(const TOperand& AOperand, int32_t ARow, int32_t ACount, double* ALanes) const {
  const TCellStore& store = AOperand.Source->Store();
  const bool blanksAreZero = AOperand.Source->Spills().IsEmpty();
  if (!AOperand.RowRelative) {
    const TCellSlot* slot = store.Find(AOperand.Col, AOperand.Row);
    double number = 0;
    if (slot && slot->Kind != cvkEmpty ? !SlotNumber(store, *slot, number) : !blanksAreZero) return false;
    std::fill_n(ALanes, ACount, number);
    return true;
  }
  int32_t row = ARow + AOperand.Row;
  const int32_t end = row + ACount;
  while (row < end) {
    const int32_t index = (row - 1) / kTileRows;
    const int32_t tileEnd = std::min(end, (index + 1) * kTileRows + 1);
    const TTile* tile = store.FindTile(AOperand.Col, index);
    const TCellSlot* slot = tile ? tile->Slots() + tile->Rank(static_cast<uint32_t>(row - 1) % kTileRows) : nullptr;
    for (; row < tileEnd; ++row, ++ALanes) {
      *ALanes = 0;
      if (tile && tile->Has(static_cast<uint32_t>(row - 1) % kTileRows)) {
        const TCellSlot& cell = *slot++;
        if (cell.Kind != cvkEmpty ? !SlotNumber(store, cell, *ALanes) : !blanksAreZero) return false;
      } else if (!blanksAreZero) {
        return false;
      }
    }
  }
  return true;
}

bool TNumericBlock::LoadOne(TOperand& AOperand, int32_t ARow, double& ANumber) {
  const TCellStore& store = AOperand.Source->Store();
  const int32_t row = AOperand.RowRelative ? ARow + AOperand.Row : AOperand.Row;
  const int32_t index = (row - 1) / kTileRows;
  if (index != AOperand.TileIndex) {
    AOperand.TileIndex = index;
    AOperand.Tile = store.FindTile(AOperand.Col, index);
  }
  const uint32_t inTile = static_cast<uint32_t>(row - 1) % kTileRows;
  ANumber = 0;
  if (AOperand.Tile && AOperand.Tile->Has(inTile)) {
    const TCellSlot& slot = AOperand.Tile->Slots()[AOperand.Tile->Rank(inTile)];
    if (slot.Kind != cvkEmpty) return SlotNumber(store, slot, ANumber);
  }
  return AOperand.Source->Spills().IsEmpty();
}

/// Runs the steps over lanes; the result stands at the bottom of the stack.
bool TNumericBlock::Run(int32_t ARow, int32_t ACount, double* AStack) {
  double* top = AStack;  // behind the topmost column
  for (const TInstruction& step : FSteps) {
    switch (step.Step) {
      case TStep::stConstant:
        std::fill_n(top, ACount, FConstants[step.Operand]);
        top += kLanes;
        continue;
      case TStep::stCell:
        if (!LoadLanes(FOperands[step.Operand], ARow, ACount, top)) return false;
        top += kLanes;
        continue;
      case TStep::stNegate: {
        double* lane = top - kLanes;
        for (int32_t i = 0; i < ACount; ++i) lane[i] = -lane[i];
        break;
      }
      default: {
        const double* right = top - kLanes;
        double* left = top - 2 * kLanes;
        switch (step.Step) {
          case TStep::stAdd:
            for (int32_t i = 0; i < ACount; ++i) left[i] += right[i];
            break;
          case TStep::stSubtract:
            for (int32_t i = 0; i < ACount; ++i) left[i] -= right[i];
            break;
          case TStep::stMultiply:
            for (int32_t i = 0; i < ACount; ++i) left[i] *= right[i];
            break;
          default:
            if (std::find(right, right + ACount, 0.0) != right + ACount) return false;
            for (int32_t i = 0; i < ACount; ++i) left[i] /= right[i];
        }
        top -= kLanes;
      }
    }
    if (!Settle(top - kLanes, ACount)) return false;
  }
  return true;
}

bool TNumericBlock::RunOne(int32_t ARow, double* AStack) {
  double* top = AStack;
  for (const TInstruction& step : FSteps) {
    switch (step.Step) {
      case TStep::stConstant: *top++ = FConstants[step.Operand]; continue;
      case TStep::stCell:
        if (!LoadOne(FOperands[step.Operand], ARow, *top)) return false;
        ++top;
        continue;
      case TStep::stNegate: top[-1] = -top[-1]; break;
      case TStep::stAdd: --top, top[-1] += *top; break;
      case TStep::stSubtract: --top, top[-1] -= *top; break;
      case TStep::stMultiply: --top, top[-1] *= *top; break;
      case TStep::stDivide:
        if (*--top == 0) return false;
        top[-1] /= *top;
    }
    if (!std::isfinite(top[-1])) return false;
    top[-1] += 0.0;
  }
  return true;
}

int32_t TNumericBlock::EvaluateRows(TRowSpan ARows) {
  TCellStore& store = FTarget->Store();
  int32_t done = 0;
  for (int32_t row = ARows.First; row <= ARows.Last;) {
    const int32_t index = (row - 1) / kTileRows;
    const int32_t count = std::min(ARows.Last, (index + 1) * kTileRows) - row + 1;
    if (!Run(row, count, FStack.data())) break;
    const TTile* tile = store.FindTile(FCol, index);
    const TCellSlot* slot = tile->Slots() + tile->Rank(static_cast<uint32_t>(row - 1) % kTileRows);
    for (int32_t i = 0; i < count; ++i)
      store.SetCachedNumber(FCol, store.Record(slot[i].Record), FStack[static_cast<size_t>(i)]);
    done += count;
    row += count;
  }
  return done;
}

int32_t TNumericBlock::EvaluateChain(TRowSpan ARows, bool AUpward) {
  TCellStore& store = FTarget->Store();
  for (TOperand& operand : FOperands) operand.TileIndex = -1;
  TOperand target{0, FCol, 0, true, FTarget};
  const int32_t count = ARows.Last - ARows.First + 1;
  for (int32_t i = 0; i < count; ++i) {
    const int32_t row = AUpward ? ARows.Last - i : ARows.First + i;
    if (!RunOne(row, FStack.data())) return i;
    const int32_t index = (row - 1) / kTileRows;
    if (index != target.TileIndex) {
      target.TileIndex = index;
      target.Tile = store.FindTile(FCol, index);
    }
    const uint32_t inTile = static_cast<uint32_t>(row - 1) % kTileRows;
    store.SetCachedNumber(FCol, store.Record(target.Tile->Slots()[target.Tile->Rank(inTile)].Record), FStack[0]);
  }
  return count;
}

}  // namespace tessarine::detail
