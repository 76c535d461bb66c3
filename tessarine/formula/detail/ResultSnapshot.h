#pragma once

#include <cstdint>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/formula/CellId.h>

namespace tessarine {

class TWorkbook;

namespace detail {

/// The results of all formulas of a workbook at one moment: cached values, in-cell charts, spilled blocks and used
/// bounds. What a cancelled recalculation goes back to.
class TResultSnapshot {
 public:
  explicit TResultSnapshot(TWorkbook& AWorkbook);

  /// Puts the results back into the cells that still hold formulas. Cells that were filled meanwhile stay.
  void Restore();

 private:
  struct TResult {
    TCellId Cell;
    TCellValue Value;
    bool HasValue;
  };
  struct TChart {
    TCellId Cell;
    TSparklineData Data;
  };
  struct TSheetState {
    std::vector<TSpillRange> Blocks;
    int32_t UsedMaxCol;
    int32_t UsedMaxRow;
  };

  TWorkbook& FWorkbook;
  std::vector<TResult> FResults;
  std::vector<TChart> FCharts;
  std::vector<TSheetState> FSheets;
};

}  // namespace detail
}  // namespace tessarine
