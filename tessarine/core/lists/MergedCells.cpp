#include <tessarine/core/lists/MergedCells.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <tessarine/core/lists/detail/RectIndex.h>
#include <tessarine/core/reference/IndexShift.h>

namespace tessarine {

namespace {

bool IsInside(const TCellRange& AInner, const TCellRange& AOuter) {
  return AInner.StartCol >= AOuter.StartCol && AInner.EndCol <= AOuter.EndCol && AInner.StartRow >= AOuter.StartRow &&
         AInner.EndRow <= AOuter.EndRow;
}

TCellRange UnionOf(const TCellRange& ALeft, const TCellRange& ARight) {
  return {std::min(ALeft.StartCol, ARight.StartCol), std::min(ALeft.StartRow, ARight.StartRow),
          std::max(ALeft.EndCol, ARight.EndCol), std::max(ALeft.EndRow, ARight.EndRow)};
}

void ShiftMerges(std::vector<TMergedRange>& AItems, TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  const auto isGone = [&](TMergedRange& AItem) {
    const TAdjustedRange adjusted = AdjustRange(AItem.AsRange(), AAxis, AStart, ADelta);
    if (adjusted.Deleted) return true;
    AItem = TMergedRange::FromRange(adjusted.Range);
    return AItem.StartCol == AItem.EndCol && AItem.StartRow == AItem.EndRow;
  };
  std::vector<TMergedRange> kept;
  kept.reserve(AItems.size());
  for (TMergedRange& item : AItems)
    if (!isGone(item)) kept.push_back(item);
  AItems = std::move(kept);
}

void MoveMerges(std::vector<TMergedRange>& AItems, TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  for (TMergedRange& item : AItems)
    item = TMergedRange::FromRange(AdjustRangeForMove(item.AsRange(), AAxis, AStart, ACount, ADest));
}

}  // namespace

TMergedRange TMergedRange::Create(int32_t AStartCol, int32_t AStartRow, int32_t AEndCol, int32_t AEndRow) {
  return FromRange({AStartCol, AStartRow, AEndCol, AEndRow});
}

TMergedRange TMergedRange::FromRange(const TCellRange& ARange) {
  const TCellRange range = ARange.Normalize();
  return {range.StartCol, range.StartRow, range.EndCol, range.EndRow};
}

TMergedCellList::TMergedCellList() = default;
TMergedCellList::~TMergedCellList() = default;
TMergedCellList::TMergedCellList(const TMergedCellList& AOther) : FItems(AOther.FItems) {}
TMergedCellList& TMergedCellList::operator=(const TMergedCellList& AOther) {
  FItems = AOther.FItems;
  DropIndex();
  return *this;
}
TMergedCellList::TMergedCellList(TMergedCellList&&) noexcept = default;
TMergedCellList& TMergedCellList::operator=(TMergedCellList&&) noexcept = default;

const detail::TRectIndex& TMergedCellList::Index() const {
  if (!FIndex) {
    FIndex = std::make_unique<detail::TRectIndex>();
    for (size_t i = 0; i < FItems.size(); ++i) FIndex->Insert(static_cast<uint32_t>(i), FItems[i].AsRange());
  }
  return *FIndex;
}

void TMergedCellList::DropIndex() { FIndex.reset(); }

void TMergedCellList::Clear() {
  FItems.clear();
  DropIndex();
}

void TMergedCellList::Add(const TCellRange& ARange) {
  FItems.push_back(TMergedRange::FromRange(ARange));
  if (FIndex) FIndex->Insert(static_cast<uint32_t>(FItems.size() - 1), FItems.back().AsRange());
}

void TMergedCellList::RemoveAt(size_t AIndex) {
  if (AIndex >= FItems.size()) return;
  if (FIndex && AIndex + 1 == FItems.size()) {
    FIndex->Remove(static_cast<uint32_t>(AIndex), FItems[AIndex].AsRange());
  } else {
    DropIndex();
  }
  FItems.erase(FItems.begin() + static_cast<ptrdiff_t>(AIndex));
}

int64_t TMergedCellList::FindContaining(int32_t ACol, int32_t ARow) const {
  if (FItems.empty()) return -1;
  constexpr uint32_t kNone = std::numeric_limits<uint32_t>::max();
  uint32_t first = kNone;
  Index().VisitAt(ACol, ARow, [&](uint32_t AId) {
    if (AId >= first) return true;
    if (!FItems[AId].Contains(ACol, ARow)) return false;
    first = AId;
    return true;
  });
  return first == kNone ? -1 : int64_t{first};
}

int64_t TMergedCellList::FindContainingPlain(int32_t ACol, int32_t ARow) const {
  for (size_t i = 0; i < FItems.size(); ++i)
    if (FItems[i].Contains(ACol, ARow)) return static_cast<int64_t>(i);
  return -1;
}

TMergeAnchor TMergedCellList::FindAnchor(int32_t ACol, int32_t ARow) const {
  const int64_t found = FindContaining(ACol, ARow);
  if (found < 0) return {false, {ACol, ARow}};
  return {true, FItems[static_cast<size_t>(found)].Anchor()};
}

bool TMergedCellList::IsMergeAnchor(int32_t ACol, int32_t ARow) const {
  if (FItems.empty()) return false;
  bool isAnchor = false;
  Index().VisitAt(ACol, ARow, [&](uint32_t AId) {
    isAnchor = isAnchor || FItems[AId].Anchor() == TCellAddress{ACol, ARow};
    return isAnchor;
  });
  return isAnchor;
}

TCellRange TMergedCellList::ExpandRange(const TCellRange& ARange) const {
  TCellRange range = ARange.Normalize();
  if (FItems.empty()) return range;
  // Every other pass goes backwards, so that a long chain of merges is taken in at once whichever way it runs.
  bool backwards = false;
  for (bool grown = true; grown; backwards = !backwards) {
    grown = false;
    std::vector<uint32_t> candidates = Index().CandidatesIn(range);
    if (backwards) std::reverse(candidates.begin(), candidates.end());
    for (const uint32_t id : candidates) {
      const TCellRange merge = FItems[id].AsRange();
      if (!merge.Intersects(range) || IsInside(merge, range)) continue;
      range = UnionOf(range, merge);
      grown = true;
    }
  }
  return range;
}

void TMergedCellList::ShiftRows(int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  ShiftMerges(FItems, saRows, AStart, ADelta);
  DropIndex();
}

void TMergedCellList::ShiftColumns(int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  ShiftMerges(FItems, saColumns, AStart, ADelta);
  DropIndex();
}

void TMergedCellList::MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) {
  MoveMerges(FItems, saRows, AStart, ACount, ADest);
  DropIndex();
}

void TMergedCellList::MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) {
  MoveMerges(FItems, saColumns, AStart, ACount, ADest);
  DropIndex();
}

}  // namespace tessarine
