#include <tessarine/core/lists/detail/RectIndex.h>

#include <algorithm>

namespace tessarine::detail {

namespace {

/// The number of low bits that a grid's bucket drops: 2, 4, 6 ... 30, the least whose bucket holds the extent.
int ShiftFor(int64_t AExtent) {
  int shift = 2;
  while (shift < 30 && (int64_t{1} << shift) < AExtent) shift += 2;
  return shift;
}

}  // namespace

void TRectIndex::Clear() { FGrids.clear(); }

TRectIndex::TGrid* TRectIndex::FindGrid(const TCellRange& ARect, bool ACreate) {
  const int rowShift = ShiftFor(int64_t{ARect.EndRow} - ARect.StartRow + 1);
  const int colShift = ShiftFor(int64_t{ARect.EndCol} - ARect.StartCol + 1);
  for (TGrid& grid : FGrids)
    if (grid.RowShift == rowShift && grid.ColShift == colShift) return &grid;
  if (!ACreate) return nullptr;
  FGrids.push_back({rowShift, colShift, {}});
  return &FGrids.back();
}

template <class TVisit>
void TRectIndex::ForEachKey(const TGrid& AGrid, const TCellRange& ARect, TVisit&& AVisit) {
  const int32_t lastRow = ARect.EndRow >> AGrid.RowShift;
  const int32_t lastCol = ARect.EndCol >> AGrid.ColShift;
  for (int32_t row = ARect.StartRow >> AGrid.RowShift; row <= lastRow; ++row)
    for (int32_t col = ARect.StartCol >> AGrid.ColShift; col <= lastCol; ++col) AVisit(KeyOf(row, col));
}

void TRectIndex::Insert(uint32_t AId, const TCellRange& ARect) {
  TGrid& grid = *FindGrid(ARect, true);
  ForEachKey(grid, ARect, [&](uint64_t AKey) { grid.Buckets[AKey].push_back(AId); });
}

void TRectIndex::Remove(uint32_t AId, const TCellRange& ARect) {
  TGrid* const grid = FindGrid(ARect, false);
  if (!grid) return;
  ForEachKey(*grid, ARect, [&](uint64_t AKey) {
    const auto found = grid->Buckets.find(AKey);
    if (found == grid->Buckets.end()) return;
    TBucket& bucket = found->second;
    if (const auto at = std::find(bucket.begin(), bucket.end(), AId); at != bucket.end()) bucket.erase(at);
    if (bucket.empty()) grid->Buckets.erase(found);
  });
  if (grid->Buckets.empty()) FGrids.erase(FGrids.begin() + (grid - FGrids.data()));
}

std::vector<uint32_t> TRectIndex::CandidatesIn(const TCellRange& ARect) const {
  std::vector<uint32_t> ids;
  for (const TGrid& grid : FGrids) {
    const int64_t rows = int64_t{ARect.EndRow >> grid.RowShift} - (ARect.StartRow >> grid.RowShift) + 1;
    const int64_t cols = int64_t{ARect.EndCol >> grid.ColShift} - (ARect.StartCol >> grid.ColShift) + 1;
    if (rows * cols > static_cast<int64_t>(grid.Buckets.size())) {
      for (const auto& [key, bucket] : grid.Buckets) {
        const int64_t row = static_cast<int32_t>(key >> 32) - int64_t{ARect.StartRow >> grid.RowShift};
        const int64_t col = static_cast<int32_t>(key) - int64_t{ARect.StartCol >> grid.ColShift};
        if (row >= 0 && row < rows && col >= 0 && col < cols) ids.insert(ids.end(), bucket.begin(), bucket.end());
      }
      continue;
    }
    ForEachKey(grid, ARect, [&](uint64_t AKey) {
      const auto found = grid.Buckets.find(AKey);
      if (found != grid.Buckets.end()) ids.insert(ids.end(), found->second.begin(), found->second.end());
    });
  }
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  return ids;
}

}  // namespace tessarine::detail
