#pragma once

#include <cstdint>
#include <span>

#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine::detail {

/// Every cell of ACells in order, blanks between stored cells of a view as one run:
/// AVisit(int64_t first, int64_t count, const TValueView&), false ends the walk. The count is 1 but for such runs.
/// ACells is a rectangle. AStride > 1 visits every AStride-th cell of an owned array; indexes count visits.
/// Returns false when the walk was ended.
template <class F>
bool ForEachRun(const TFormulaArg& ACells, int64_t ACount, int64_t AStride, F&& AVisit) {
  if (!ACells.IsView()) {
    for (int64_t index = 0; index < ACount; ++index) {
      if (!AVisit(index, int64_t{1}, ACells.ViewAt(index * AStride))) return false;
    }
    return true;
  }
  int64_t next = 0;
  const bool ended = WalkViewValues(ACells, [&](std::span<const TIndexedValue> AValues) {
    for (const TIndexedValue& item : AValues) {
      if (item.Index > next && !AVisit(next, item.Index - next, TValueView())) return false;
      if (!AVisit(item.Index, int64_t{1}, item.Value)) return false;
      next = item.Index + 1;
    }
    return true;
  });
  return ended && (next >= ACount || AVisit(next, ACount - next, TValueView()));
}

template <class F>
bool ForEachRun(const TFormulaArg& ACells, F&& AVisit) {
  return ForEachRun(ACells, ACells.CellCount(), 1, AVisit);
}

/// The cell at a row-by-row index, without a division for a single column.
inline TValueView CellOf(const TFormulaArg& ACells, int64_t AIndex) {
  return ACells.ColCount == 1 ? ACells.ViewAt(static_cast<int32_t>(AIndex), 0) : ACells.ViewAt(AIndex);
}

}  // namespace tessarine::detail
