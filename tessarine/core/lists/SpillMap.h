#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

/// The rectangle of values that one formula lays over a sheet. It may run past the sheet's last row and column.
struct TESSARINE_API TSpillRange {
  int32_t AnchorCol = 0;
  int32_t AnchorRow = 0;
  int32_t EndCol = 0;  // inclusive
  int32_t EndRow = 0;
  std::vector<TCellValue> Values;  // row by row, the anchor's value first

  static TSpillRange Create(int32_t AAnchorCol, int32_t AAnchorRow, int32_t AEndCol, int32_t AEndRow,
                            std::vector<TCellValue> AValues) {
    return {AAnchorCol, AAnchorRow, AEndCol, AEndRow, std::move(AValues)};
  }

  TCellRange AsRange() const { return {AnchorCol, AnchorRow, EndCol, EndRow}; }
  bool Contains(int32_t ACol, int32_t ARow) const {
    return ACol >= AnchorCol && ACol <= EndCol && ARow >= AnchorRow && ARow <= EndRow;
  }
  int64_t RowCount() const { return int64_t{EndRow} - AnchorRow + 1; }
  int64_t ColCount() const { return int64_t{EndCol} - AnchorCol + 1; }

  /// The value at a place of the sheet; empty outside the block and behind the end of Values.
  const TCellValue& ValueAt(int32_t ACol, int32_t ARow) const;
};

/// The values that spilling formulas lay over one sheet, beside its cells. A block's anchor is the formula's own cell,
/// whose value is the cell's cached result; all other positions of the block are its children.
/// Setting, clearing and asking cost no entry per position. Blocks are not meant to share positions, but for an anchor
/// that stands on another block's child; where they do, the block that was set last answers.
class TESSARINE_API TSpillMap {
 public:
  TSpillMap();
  ~TSpillMap();
  TSpillMap(const TSpillMap&) = delete;
  TSpillMap& operator=(const TSpillMap&) = delete;

  /// Replaces the block anchored at the position. A block of one cell, or a count below 1, only clears.
  void SetSpill(int32_t ACol, int32_t ARow, int64_t ARowCount, int64_t AColCount, std::vector<TCellValue> AValues);

  /// Removes the block anchored at the position, if there is one.
  void ClearAnchor(int32_t ACol, int32_t ARow);
  void ClearAll();

  bool IsEmpty() const { return FBlockCount == 0; }
  size_t Count() const { return FBlockCount; }

  /// Raised by every change of what the map holds.
  uint64_t Version() const { return FVersion; }

  /// The value of a child; null for every other position, anchors included. Valid until the next change.
  const TCellValue* FindChildValue(int32_t ACol, int32_t ARow) const;
  std::optional<TCellValue> TryGetValue(int32_t ACol, int32_t ARow) const;
  bool IsSpillChild(int32_t ACol, int32_t ARow) const { return FindChildBlock(ACol, ARow) != nullptr; }

  /// The block that has the position among its children, null when there is none. Valid until the next change.
  const TSpillRange* FindChildBlock(int32_t ACol, int32_t ARow) const;

  /// The anchor of the block that lays a value over the position, or the position itself when it is an anchor.
  std::optional<TCellAddress> FindAnchor(int32_t ACol, int32_t ARow) const;

  /// The block anchored exactly at the position, null when there is none. Valid until the next change.
  const TSpillRange* TryGetSpill(int32_t AAnchorCol, int32_t AAnchorRow) const;

  /// Whether ARect holds a child of any block, or the anchor of a block, leaving out the position
  /// (AAnchorCol, AAnchorRow): the test whether a block anchored there may be laid out.
  bool IntersectsOther(const TCellRange& ARect, int32_t AAnchorCol, int32_t AAnchorRow) const;

  /// Adds the rows (columns) of a column (row) that children or anchors occupy; unsorted.
  void CollectNavRowsInColumn(int32_t ACol, std::vector<int32_t>& AList) const;
  void CollectNavColsInRow(int32_t ARow, std::vector<int32_t>& AList) const;

  /// Any shift other than 0 clears the map: blocks return with the next recalculation.
  void ShiftRows(int64_t AStart, int64_t ACount);
  void ShiftColumns(int64_t AStart, int64_t ACount);

  /// All blocks in the order in which they were set. The callback must not change the map.
  void ForEachSpill(const std::function<void(const TSpillRange&)>& AVisit) const;

  /// The blocks that share a position with ARect, in the order in which they were set.
  std::vector<const TSpillRange*> BlocksIn(const TCellRange& ARect) const;

 private:
  struct TState;

  std::unique_ptr<TState> FState;  // never null
  size_t FBlockCount = 0;
  uint64_t FVersion = 0;
};

}  // namespace tessarine
