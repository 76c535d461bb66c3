#include <tessarine/core/lists/SpillMap.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/lists/detail/RectIndex.h>

namespace tessarine {

namespace {

const TCellValue kNoSpillValue;

uint64_t AnchorKey(int32_t ACol, int32_t ARow) {
  return (uint64_t{static_cast<uint32_t>(ARow)} << 32) | static_cast<uint32_t>(ACol);
}

/// The last of ACount lines from AStart, as far as 32 bits reach.
int32_t LastOf(int32_t AStart, int64_t ACount) {
  constexpr int64_t kLast = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::min(kLast, AStart + std::min(ACount, kLast * 2) - 1));
}

}  // namespace

const TCellValue& TSpillRange::ValueAt(int32_t ACol, int32_t ARow) const {
  if (!Contains(ACol, ARow)) return kNoSpillValue;
  const auto row = static_cast<uint64_t>(int64_t{ARow} - AnchorRow);
  const auto col = static_cast<uint64_t>(int64_t{ACol} - AnchorCol);
  const auto width = static_cast<uint64_t>(ColCount());
  if (row > Values.size() / width) return kNoSpillValue;
  const uint64_t index = row * width + col;
  return index < Values.size() ? Values[index] : kNoSpillValue;
}

/// Invariants:
/// 1. A slot holds a block or is in FreeSlots.
/// 2. SlotOfAnchor and Index name exactly the slots that hold blocks, by the blocks' anchors and rectangles.
/// 3. Of two blocks the one that was set later has the greater Serial.
struct TSpillMap::TState {
  struct TSlot {
    TSpillRange Block;
    uint64_t Serial = 0;  // 0 when the slot is free
  };

  std::vector<TSlot> Slots;
  std::vector<uint32_t> FreeSlots;
  boost::unordered_flat_map<uint64_t, uint32_t> SlotOfAnchor;
  detail::TRectIndex Index;
  uint64_t LastSerial = 0;

  uint32_t TakeSlot() {
    if (FreeSlots.empty()) {
      Slots.emplace_back();
      return static_cast<uint32_t>(Slots.size() - 1);
    }
    const uint32_t slot = FreeSlots.back();
    FreeSlots.pop_back();
    return slot;
  }

  /// The slots of ASlots in the order in which their blocks were set.
  std::vector<const TSpillRange*> InOrder(std::vector<const TSlot*> ASlots) const {
    std::sort(ASlots.begin(), ASlots.end(),
              [](const TSlot* ALeft, const TSlot* ARight) { return ALeft->Serial < ARight->Serial; });
    std::vector<const TSpillRange*> blocks;
    blocks.reserve(ASlots.size());
    for (const TSlot* slot : ASlots) blocks.push_back(&slot->Block);
    return blocks;
  }
};

TSpillMap::TSpillMap() : FState(std::make_unique<TState>()) {}
TSpillMap::~TSpillMap() = default;

void TSpillMap::SetSpill(int32_t ACol, int32_t ARow, int64_t ARowCount, int64_t AColCount,
                         std::vector<TCellValue> AValues) {
  ClearAnchor(ACol, ARow);
  if (ARowCount < 1 || AColCount < 1 || (ARowCount == 1 && AColCount == 1)) return;
  const uint32_t number = FState->TakeSlot();
  TState::TSlot& slot = FState->Slots[number];
  slot.Block = TSpillRange::Create(ACol, ARow, LastOf(ACol, AColCount), LastOf(ARow, ARowCount), std::move(AValues));
  slot.Serial = ++FState->LastSerial;
  FState->SlotOfAnchor[AnchorKey(ACol, ARow)] = number;
  FState->Index.Insert(number, slot.Block.AsRange());
  ++FBlockCount;
  ++FVersion;
}

void TSpillMap::ClearAnchor(int32_t ACol, int32_t ARow) {
  const auto found = FState->SlotOfAnchor.find(AnchorKey(ACol, ARow));
  if (found == FState->SlotOfAnchor.end()) return;
  const uint32_t number = found->second;
  FState->SlotOfAnchor.erase(found);
  FState->Index.Remove(number, FState->Slots[number].Block.AsRange());
  FState->Slots[number] = {};
  FState->FreeSlots.push_back(number);
  --FBlockCount;
  ++FVersion;
}

void TSpillMap::ClearAll() {
  if (IsEmpty()) return;
  const uint64_t lastSerial = FState->LastSerial;
  FState = std::make_unique<TState>();
  FState->LastSerial = lastSerial;
  FBlockCount = 0;
  ++FVersion;
}

const TSpillRange* TSpillMap::FindChildBlock(int32_t ACol, int32_t ARow) const {
  if (IsEmpty()) return nullptr;
  const TState::TSlot* latest = nullptr;
  FState->Index.VisitAt(ACol, ARow, [&](uint32_t ANumber) {
    const TState::TSlot& slot = FState->Slots[ANumber];
    const bool isChild =
        slot.Block.Contains(ACol, ARow) && (slot.Block.AnchorCol != ACol || slot.Block.AnchorRow != ARow);
    if (isChild && (!latest || slot.Serial > latest->Serial)) latest = &slot;
    return false;
  });
  return latest ? &latest->Block : nullptr;
}

const TCellValue* TSpillMap::FindChildValue(int32_t ACol, int32_t ARow) const {
  const TSpillRange* const block = FindChildBlock(ACol, ARow);
  return block ? &block->ValueAt(ACol, ARow) : nullptr;
}

std::optional<TCellValue> TSpillMap::TryGetValue(int32_t ACol, int32_t ARow) const {
  const TCellValue* const value = FindChildValue(ACol, ARow);
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<TCellAddress> TSpillMap::FindAnchor(int32_t ACol, int32_t ARow) const {
  if (const TSpillRange* const block = FindChildBlock(ACol, ARow))
    return TCellAddress{block->AnchorCol, block->AnchorRow};
  return TryGetSpill(ACol, ARow) ? std::optional(TCellAddress{ACol, ARow}) : std::nullopt;
}

const TSpillRange* TSpillMap::TryGetSpill(int32_t AAnchorCol, int32_t AAnchorRow) const {
  const auto found = FState->SlotOfAnchor.find(AnchorKey(AAnchorCol, AAnchorRow));
  return found == FState->SlotOfAnchor.end() ? nullptr : &FState->Slots[found->second].Block;
}

bool TSpillMap::IntersectsOther(const TCellRange& ARect, int32_t AAnchorCol, int32_t AAnchorRow) const {
  for (const TSpillRange* block : BlocksIn(ARect)) {
    const TCellRange rect = ARect.Normalize();
    const int32_t startCol = std::max(rect.StartCol, block->AnchorCol);
    const int32_t startRow = std::max(rect.StartRow, block->AnchorRow);
    const bool isOneCell =
        startCol == std::min(rect.EndCol, block->EndCol) && startRow == std::min(rect.EndRow, block->EndRow);
    if (!isOneCell || startCol != AAnchorCol || startRow != AAnchorRow) return true;
  }
  return false;
}

void TSpillMap::CollectNavRowsInColumn(int32_t ACol, std::vector<int32_t>& AList) const {
  constexpr int32_t kLast = std::numeric_limits<int32_t>::max();
  for (const TSpillRange* block : BlocksIn({ACol, -kLast, ACol, kLast}))
    for (int64_t row = block->AnchorRow; row <= block->EndRow; ++row) AList.push_back(static_cast<int32_t>(row));
}

void TSpillMap::CollectNavColsInRow(int32_t ARow, std::vector<int32_t>& AList) const {
  constexpr int32_t kLast = std::numeric_limits<int32_t>::max();
  for (const TSpillRange* block : BlocksIn({-kLast, ARow, kLast, ARow}))
    for (int64_t col = block->AnchorCol; col <= block->EndCol; ++col) AList.push_back(static_cast<int32_t>(col));
}

void TSpillMap::ShiftRows(int64_t /*AStart*/, int64_t ACount) {
  if (ACount != 0) ClearAll();
}

void TSpillMap::ShiftColumns(int64_t /*AStart*/, int64_t ACount) {
  if (ACount != 0) ClearAll();
}

void TSpillMap::ForEachSpill(const std::function<void(const TSpillRange&)>& AVisit) const {
  std::vector<const TState::TSlot*> slots;
  for (const TState::TSlot& slot : FState->Slots)
    if (slot.Serial != 0) slots.push_back(&slot);
  for (const TSpillRange* block : FState->InOrder(std::move(slots))) AVisit(*block);
}

std::vector<const TSpillRange*> TSpillMap::BlocksIn(const TCellRange& ARect) const {
  if (IsEmpty()) return {};
  const TCellRange rect = ARect.Normalize();
  std::vector<const TState::TSlot*> slots;
  for (const uint32_t number : FState->Index.CandidatesIn(rect))
    if (FState->Slots[number].Block.AsRange().Intersects(rect)) slots.push_back(&FState->Slots[number]);
  return FState->InOrder(std::move(slots));
}

}  // namespace tessarine
