#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

/// Columns of one row that a rectangle covers.
struct TOdsSpan {
  int32_t From = 0;
  int32_t To = 0;
  uint32_t Id = 0;

  friend bool operator==(const TOdsSpan&, const TOdsSpan&) = default;
};

/// Rectangles on a sheet, asked row by row from the top: which of them lie over each column. Where several do, the one
/// with the lowest id counts. Costs by the rows where something begins or ends.
class TOdsLayer {
 public:
  /// An id and its rectangle, normalized and on the sheet. With AFirstRowDiffers the first row of each rectangle counts
  /// as different from those below it.
  using TRect = std::pair<uint32_t, TCellRange>;
  TOdsLayer(std::vector<TRect> ARects, bool AFirstRowDiffers);
  TOdsLayer() : TOdsLayer({}, false) {}

  /// What lies over ARow, ascending and without overlap. Rows only go up from call to call.
  const std::vector<TOdsSpan>& MoveTo(int32_t ARow) {
    if (ARow >= FNextChange) Advance(ARow);
    return FSpans;
  }

  /// The first row behind the last MoveTo where the answer may be another; kMaxRow + 1 for none.
  int32_t NextChange() const { return FNextChange; }

  /// The last row that any rectangle covers; 0 for none.
  int32_t LastRow() const { return FLastRow; }
  int32_t LastCol() const { return FLastCol; }

 private:
  void Advance(int32_t ARow);
  void BuildSpans();

  std::vector<TRect> FRects;  // by first row
  bool FFirstRowDiffers;
  size_t FNext = 0;            // of FRects, not begun yet
  std::vector<TRect> FActive;  // those that lie over the row
  std::vector<TOdsSpan> FSpans;
  int32_t FNextChange = 1;
  int32_t FLastRow = 0;
  int32_t FLastCol = 0;
};

/// A range brought onto the sheet; false when nothing of it is there.
bool ClipToSheet(TCellRange& ARange);

/// Of rectangles in order, those that meet none that was taken before.
std::vector<uint32_t> RectsWithoutOverlap(const std::vector<TCellRange>& ARects);

}  // namespace tessarine::detail
