#include <tessarine/formula/detail/RunningAggregates.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/detail/Interpreter.h>

namespace tessarine::detail {

std::optional<TRunningAggregate> TRunningAggregate::Compile(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                                            const TInterpreter& AInterpreter, int32_t ASheet,
                                                            int32_t ACol) {
  const TProgramNode& root = AProgram.Root();
  if (root.Kind != ankFunc || !root.Function || root.ChildCount != 1) return std::nullopt;
  TRunningAggregate result;
  const std::u16string_view name = root.Function->Name;
  if (name == u"SUM")
    result.FKind = TKind::rkSum;
  else if (name == u"AVERAGE")
    result.FKind = TKind::rkAverage;
  else if (name == u"COUNT")
    result.FKind = TKind::rkCount;
  else if (name == u"MIN")
    result.FKind = TKind::rkMin;
  else if (name == u"MAX")
    result.FKind = TKind::rkMax;
  else
    return std::nullopt;

  const TProgramNode& range = AProgram.Child(root, 0);
  if (range.Kind != ankRange || (range.Relative & TProgramNode::rlRow) || !(range.Relative & TProgramNode::rlRow2))
    return std::nullopt;
  const int32_t sheet = AInterpreter.ResolveSheetIndex(ASheet, range.SheetName);
  result.FSource = AWorkbook.GetSheet(sheet);
  result.FTarget = AWorkbook.GetSheet(ASheet);
  if (!result.FSource || !result.FSource->Spills().IsEmpty()) return std::nullopt;
  const int32_t col = range.Col + ((range.Relative & TProgramNode::rlCol) ? ACol : 0);
  const int32_t col2 = range.Col2 + ((range.Relative & TProgramNode::rlCol2) ? ACol : 0);
  std::tie(result.FCol, result.FCol2) = std::minmax(col, col2);
  if (result.FCol <= 1 && result.FCol2 >= kMaxCol) return std::nullopt;
  result.FTargetCol = ACol;
  result.FTop = range.Row;
  result.FBottomDistance = range.Row2;
  return result;
}

/// Adds one row of the range, columns from the left.
bool TRunningAggregate::Take(int32_t ARow) {
  const TCellStore& store = FSource->Store();
  for (int32_t col = FCol; col <= FCol2; ++col) {
    const TCellSlot* slot = store.Find(col, ARow);
    if (!slot) continue;
    double number = slot->Number;
    if (slot->Kind == cvkFormula) {
      const TFormulaRecord& record = store.Record(slot->Record);
      if (!record.HasCached() || record.IsVisiting()) return false;
      if (record.CachedKind != cvkNumber) continue;
      number = record.Number;
    } else if (slot->Kind != cvkNumber) {
      continue;
    }
    FMin = FCount == 0 ? number : std::min(FMin, number);
    FMax = FCount == 0 ? number : std::max(FMax, number);
    FSum += number;
    ++FCount;
  }
  return true;
}

/// The aggregate so far; false where a single evaluation yields an error.
bool TRunningAggregate::Result(double& ANumber) const {
  switch (FKind) {
    case TKind::rkSum: ANumber = FSum; break;
    case TKind::rkCount: ANumber = static_cast<double>(FCount); break;
    case TKind::rkMin: ANumber = FMin; break;
    case TKind::rkMax: ANumber = FMax; break;
    case TKind::rkAverage:
      if (FCount == 0) return false;
      ANumber = FSum / static_cast<double>(FCount);
      break;
  }
  ANumber += 0.0;  // -0 becomes 0
  return std::isfinite(ANumber);
}

int32_t TRunningAggregate::EvaluateDown(TRowSpan ARows) {
  // The end that moves must stand below the fixed one, and not on the last row, where the range could span all rows.
  if (ARows.First + FBottomDistance < FTop || ARows.Last + FBottomDistance >= kMaxRow) return 0;
  TCellStore& target = FTarget->Store();
  FSum = 0;
  FCount = 0;
  FMin = FMax = 0;
  int32_t next = FTop;
  for (int32_t row = ARows.First; row <= ARows.Last; ++row) {
    for (; next <= row + FBottomDistance; ++next) {
      if (!Take(next)) return row - ARows.First;
    }
    double number = 0;
    if (!Result(number)) return row - ARows.First;
    target.SetCachedNumber(FTargetCol, *target.FindRecord(FTargetCol, row), number);
  }
  return ARows.Last - ARows.First + 1;
}

}  // namespace tessarine::detail
