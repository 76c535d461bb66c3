#include <tessarine/io/ods/detail/OdsCellLayers.h>

#include <algorithm>
#include <set>

#include <tessarine/core/lists/detail/RectIndex.h>

namespace tessarine::detail {

TOdsLayer::TOdsLayer(std::vector<TRect> ARects, bool AFirstRowDiffers)
    : FRects(std::move(ARects)), FFirstRowDiffers(AFirstRowDiffers) {
  std::stable_sort(FRects.begin(), FRects.end(), [](const TRect& ALeft, const TRect& ARight) {
    return ALeft.second.StartRow < ARight.second.StartRow;
  });
  for (const TRect& rect : FRects) {
    FLastRow = std::max(FLastRow, rect.second.EndRow);
    FLastCol = std::max(FLastCol, rect.second.EndCol);
  }
}

void TOdsLayer::Advance(int32_t ARow) {
  std::erase_if(FActive, [&](const TRect& ARect) { return ARect.second.EndRow < ARow; });
  for (; FNext < FRects.size() && FRects[FNext].second.StartRow <= ARow; ++FNext)
    if (FRects[FNext].second.EndRow >= ARow) FActive.push_back(FRects[FNext]);
  FNextChange = FNext < FRects.size() ? FRects[FNext].second.StartRow : kMaxRow + 1;
  for (const auto& [id, range] : FActive) {
    FNextChange = std::min(FNextChange, range.EndRow + 1);
    if (FFirstRowDiffers && range.StartRow == ARow) FNextChange = ARow + 1;
  }
  BuildSpans();
}

/// A sweep over the columns where rectangles begin and end.
void TOdsLayer::BuildSpans() {
  struct TEdge {
    int32_t Col;
    uint32_t Id;
    bool Opens;
  };
  FSpans.clear();
  std::vector<TEdge> edges;
  for (const auto& [id, range] : FActive) {
    edges.push_back({range.StartCol, id, true});
    edges.push_back({range.EndCol + 1, id, false});
  }
  std::sort(edges.begin(), edges.end(), [](const TEdge& ALeft, const TEdge& ARight) { return ALeft.Col < ARight.Col; });
  std::multiset<uint32_t> open;
  for (size_t i = 0; i < edges.size();) {
    const int32_t col = edges[i].Col;
    for (; i < edges.size() && edges[i].Col == col; ++i) {
      if (edges[i].Opens) {
        open.insert(edges[i].Id);
      } else {
        open.erase(open.find(edges[i].Id));
      }
    }
    if (open.empty()) continue;
    const int32_t last = edges[i].Col - 1;  // an open one has its end ahead
    if (!FSpans.empty() && FSpans.back().Id == *open.begin() && FSpans.back().To == col - 1) {
      FSpans.back().To = last;
    } else {
      FSpans.push_back({col, last, *open.begin()});
    }
  }
}

bool ClipToSheet(TCellRange& ARange) {
  ARange = ARange.Normalize();
  ARange.StartCol = std::max(ARange.StartCol, 1);
  ARange.StartRow = std::max(ARange.StartRow, 1);
  ARange.EndCol = std::min(ARange.EndCol, kMaxCol);
  ARange.EndRow = std::min(ARange.EndRow, kMaxRow);
  return ARange.StartCol <= ARange.EndCol && ARange.StartRow <= ARange.EndRow;
}

std::vector<uint32_t> RectsWithoutOverlap(const std::vector<TCellRange>& ARects) {
  std::vector<uint32_t> taken;
  TRectIndex index;
  for (uint32_t i = 0; i < ARects.size(); ++i) {
    const std::vector<uint32_t> candidates = index.CandidatesIn(ARects[i]);
    const bool meets = std::any_of(candidates.begin(), candidates.end(),
                                   [&](uint32_t AId) { return ARects[AId].Intersects(ARects[i]); });
    if (meets) continue;
    index.Insert(i, ARects[i]);
    taken.push_back(i);
  }
  return taken;
}

}  // namespace tessarine::detail
