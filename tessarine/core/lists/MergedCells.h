#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {

namespace detail {
class TRectIndex;
}

/// One merged area; its corners are ordered.
struct TESSARINE_API TMergedRange {
  int32_t StartCol = 0;
  int32_t StartRow = 0;
  int32_t EndCol = 0;
  int32_t EndRow = 0;

  /// Orders the corners.
  static TMergedRange Create(int32_t AStartCol, int32_t AStartRow, int32_t AEndCol, int32_t AEndRow);
  static TMergedRange FromRange(const TCellRange& ARange);

  TCellRange AsRange() const { return {StartCol, StartRow, EndCol, EndRow}; }
  TCellAddress Anchor() const { return {StartCol, StartRow}; }
  bool Contains(int32_t ACol, int32_t ARow) const {
    return ACol >= StartCol && ACol <= EndCol && ARow >= StartRow && ARow <= EndRow;
  }

  friend bool operator==(const TMergedRange&, const TMergedRange&) = default;
};

/// Where the content of a cell stands as far as merges are concerned.
struct TMergeAnchor {
  bool InMerge = false;
  TCellAddress Anchor;  // the merge's top left cell; the cell itself outside merges
};

/// The merged areas of a sheet in order of addition. Areas may overlap; the first one that holds a cell counts.
class TESSARINE_API TMergedCellList {
 public:
  TMergedCellList();
  ~TMergedCellList();
  TMergedCellList(const TMergedCellList& AOther);
  TMergedCellList& operator=(const TMergedCellList& AOther);
  TMergedCellList(TMergedCellList&&) noexcept;
  TMergedCellList& operator=(TMergedCellList&&) noexcept;

  void Clear();
  void Add(const TCellRange& ARange);
  void RemoveAt(size_t AIndex);

  bool IsEmpty() const { return FItems.empty(); }
  size_t Count() const { return FItems.size(); }
  const TMergedRange& GetItem(size_t AIndex) const { return FItems[AIndex]; }
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

  /// The index of the first merge that holds the cell, -1 when there is none. Does not grow with the number of merges.
  int64_t FindContaining(int32_t ACol, int32_t ARow) const;

  /// The same by a walk over all merges.
  int64_t FindContainingPlain(int32_t ACol, int32_t ARow) const;

  TMergeAnchor FindAnchor(int32_t ACol, int32_t ARow) const;
  /// Whether a merge has its top left cell here (any merge, not only the first that holds the cell).
  bool IsMergeAnchor(int32_t ACol, int32_t ARow) const;
  bool IsInsideMerge(int32_t ACol, int32_t ARow) const { return FindContaining(ACol, ARow) >= 0; }

  /// The smallest rectangle around ARange that cuts no merge with its edges.
  TCellRange ExpandRange(const TCellRange& ARange) const;

  /// Inserts (ADelta above 0) or deletes lines at AStart. A merge that is deleted or left with one cell goes.
  void ShiftRows(int64_t AStart, int64_t ADelta);
  void ShiftColumns(int64_t AStart, int64_t ADelta);

  /// Moves ACount lines from AStart to ADest (the block's new first line). No merge goes.
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest);
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest);

 private:
  const detail::TRectIndex& Index() const;
  void DropIndex();

  std::vector<TMergedRange> FItems;
  /// Item numbers by rectangle; null until the next question when an item went or changed its place.
  mutable std::unique_ptr<detail::TRectIndex> FIndex;
};

}  // namespace tessarine
