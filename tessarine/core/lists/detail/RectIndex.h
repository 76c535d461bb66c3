#pragma once

#include <cstdint>
#include <vector>

#include <boost/container/small_vector.hpp>
#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

/// Finds among many rectangles the few that may hold a cell or meet another rectangle. Knows numbers ("ids"), not the
/// rectangles: candidates are to be checked by the caller.
///
/// Rectangles are sorted into grids by their size: a grid's bucket is at least as wide and as high as the rectangles in
/// it, so each stands in at most four buckets, and a cell is looked up in one bucket per grid that is in use. Any
/// 32-bit corners will do.
class TRectIndex {
 public:
  void Clear();

  /// ARect must be normalized, here and below. The ids of a bucket keep the order of insertion.
  void Insert(uint32_t AId, const TCellRange& ARect);
  void Remove(uint32_t AId, const TCellRange& ARect);

  /// Calls AVisit(id) for every candidate of a grid at the cell until it returns true, which ends that grid only.
  template <class TVisit>
  void VisitAt(int32_t ACol, int32_t ARow, TVisit&& AVisit) const {
    for (const TGrid& grid : FGrids) {
      const auto found = grid.Buckets.find(KeyOf(ARow >> grid.RowShift, ACol >> grid.ColShift));
      if (found == grid.Buckets.end()) continue;
      for (const uint32_t id : found->second)
        if (AVisit(id)) break;
    }
  }

  /// All candidates that may meet ARect, ascending, each once.
  std::vector<uint32_t> CandidatesIn(const TCellRange& ARect) const;

 private:
  using TBucket = boost::container::small_vector<uint32_t, 2>;

  struct TGrid {
    int RowShift = 0;
    int ColShift = 0;
    boost::unordered_flat_map<uint64_t, TBucket> Buckets;
  };

  static uint64_t KeyOf(int32_t ARowBucket, int32_t AColBucket) {
    return (uint64_t{static_cast<uint32_t>(ARowBucket)} << 32) | static_cast<uint32_t>(AColBucket);
  }
  TGrid* FindGrid(const TCellRange& ARect, bool ACreate);
  template <class TVisit>
  static void ForEachKey(const TGrid& AGrid, const TCellRange& ARect, TVisit&& AVisit);

  std::vector<TGrid> FGrids;  // at most 16 x 16, seldom more than three
};

}  // namespace tessarine::detail
