#include <tessarine/core/sheet/detail/CellStore.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include <tessarine/core/sheet/detail/StoreHistory.h>

namespace tessarine::detail {

namespace {

constexpr size_t TileBytes(uint32_t ACapacity) { return sizeof(TTile) + ACapacity * sizeof(TCellSlot); }

// Block classes of the arena: tiles by capacity, and directory pages in their place between them.
constexpr size_t kPageClass = 3;
constexpr std::array<size_t, TTileArena::kClassCount> kClassBytes = {
    TileBytes(1),  TileBytes(4),  TileBytes(8),   sizeof(TTilePage), TileBytes(16),
    TileBytes(32), TileBytes(64), TileBytes(128), TileBytes(256),
};
static_assert(std::is_sorted(kClassBytes.begin(), kClassBytes.end()));
static_assert(kClassBytes[kPageClass] == sizeof(TTilePage));

constexpr size_t TileClass(uint32_t ACapacity) {
  if (ACapacity == 1) return 0;
  const auto power = static_cast<size_t>(std::countr_zero(ACapacity));  // 2 for 4, 3 for 8, 4 for 16 ...
  return power < 4 ? power - 1 : power;
}
static_assert(TileClass(4) == 1 && TileClass(8) == 2 && TileClass(16) == 4 && TileClass(256) == 8);

constexpr uint32_t GrownCapacity(uint32_t ACapacity) { return ACapacity == 1 ? 4 : ACapacity * 2; }

// Slabs of formula records double up to this many.
constexpr uint32_t kSlabLimit = 4096;

/// One more cell in a row that is not stored yet; answers its place among the slots.
uint32_t MarkRow(TTile& ATile, uint32_t ARow) {
  const uint32_t word = ARow >> 6;
  uint64_t after = ATile.Occupied[word] >> (ARow & 63);
  for (uint32_t i = word + 1; i < 4; ++i) after |= ATile.Occupied[i];
  const uint32_t rank = after == 0 ? ATile.Count : ATile.Rank(ARow);
  ATile.Occupied[word] |= uint64_t{1} << (ARow & 63);
  for (uint32_t i = word + 1; i < 4; ++i) ++ATile.Below[i];
  ++ATile.Count;
  return rank;
}

void UnmarkRow(TTile& ATile, uint32_t ARow) {
  const uint32_t word = ARow >> 6;
  ATile.Occupied[word] &= ~(uint64_t{1} << (ARow & 63));
  for (uint32_t i = word + 1; i < 4; ++i) --ATile.Below[i];
  --ATile.Count;
}

bool NeedsExtras(const TCell& ACell) {
  return ACell.HasFormatOverride || !ACell.RichText.empty() || ACell.Sparkline != TSparklineData{} ||
         (ACell.HasCachedValue && ACell.Value.Kind != cvkFormula);
}

void MoveSlots(TCellSlot* ATo, const TCellSlot* AFrom, uint32_t ACount) {
  std::memmove(static_cast<void*>(ATo), AFrom, ACount * sizeof(TCellSlot));
}

}  // namespace

TCellStore::TCellStore(TFormulaPool& APool) : FPool(APool), FArena(kClassBytes) {}

TCellStore::~TCellStore() { ReleaseReferences(); }

// ---- reading

const TCellExtras* TCellStore::FindExtras(int32_t ACol, int32_t ARow) const {
  const auto found = FExtras.find(ExtrasKey(ACol, ARow));
  return found == FExtras.end() ? nullptr : &found->second;
}

TCell TCellStore::Get(int32_t ACol, int32_t ARow) const {
  TCell cell;
  const TCellSlot* slot = Find(ACol, ARow);
  if (!slot) return cell;
  cell.StyleIndex = slot->StyleIndex;
  if (slot->Kind == cvkFormula) {
    const TFormulaRecord& record = Record(slot->Record);
    cell.Value.Kind = cvkFormula;
    cell.Value.Text = record.Template->TextAt(ACol, ARow);
    cell.HasCachedValue = record.HasCached();
    cell.CachedValue = TCellValue::FromView(record.CachedView());
  } else {
    cell.Value = TCellValue::FromView(slot->ConstantView());
  }
  if (!slot->HasExtras()) return cell;
  const TCellExtras& extras = *FindExtras(ACol, ARow);
  if (extras.Override) {
    cell.HasFormatOverride = true;
    cell.FormatOverride = *extras.Override;
  }
  if (extras.Runs) cell.RichText = *extras.Runs;
  if (extras.Sparkline) cell.Sparkline = *extras.Sparkline;
  if (extras.ConstantCache) {
    cell.HasCachedValue = true;
    cell.CachedValue = *extras.ConstantCache;
  }
  return cell;
}

size_t TCellStore::BytesUsed() const {
  size_t bytes = sizeof *this + FArena.BytesReserved();
  bytes += FColumns.capacity() * sizeof(TTileColumn);
  for (const TTileColumn& column : FColumns) bytes += column.PageCount * sizeof(void*);
  bytes += FRecordPages.capacity() * sizeof(void*) + FFreeRecords.capacity() * sizeof(uint32_t);
  bytes += FExtras.bucket_count() * (sizeof(std::pair<uint64_t, TCellExtras>) + 1);
  bytes += FOverrides.bucket_count() * (sizeof(std::shared_ptr<const TCellFormat>) + 1);
  bytes += FOverrides.size() * sizeof(TCellFormat);
  for (const auto& [key, extras] : FExtras) {
    if (extras.Runs) bytes += sizeof(TRichTextRuns) + extras.Runs->size() * sizeof(TRichTextRun);
    if (extras.Sparkline) bytes += sizeof(TSparklineData) + extras.Sparkline->Values.size() * sizeof(double);
    if (extras.ConstantCache) bytes += sizeof(TCellValue);
  }
  return bytes;
}

// ---- tiles

/// The directory's entry for a tile, with its page made where it is missing.
TTile*& TCellStore::TileLink(int32_t ACol, uint32_t ATileIndex) {
  const auto col = static_cast<size_t>(ACol - 1);
  if (col >= FColumns.size()) FColumns.resize(col + 1);
  TTileColumn& column = FColumns[col];
  const uint32_t page = ATileIndex / kPageTiles;
  if (page >= column.PageCount) {
    auto pages = std::make_unique<TTilePage*[]>(page + 1);
    std::copy_n(column.Pages.get(), column.PageCount, pages.get());
    column.Pages = std::move(pages);
    column.PageCount = page + 1;
  }
  TTilePage*& link = column.Pages[page];
  if (!link) link = new (FArena.Allocate(kPageClass)) TTilePage;
  return link->Tiles[ATileIndex % kPageTiles];
}

TTile* TCellStore::NewTile(uint32_t ACapacity) {
  auto* tile = new (FArena.Allocate(TileClass(ACapacity))) TTile;
  tile->Capacity = static_cast<uint16_t>(ACapacity);
  return tile;
}

void TCellStore::FreeTile(TTile* ATile) noexcept { FArena.Free(ATile, TileClass(ATile->Capacity)); }

/// A tile of another capacity with the same cells; the old one is free afterwards.
TTile* TCellStore::Resized(TTile* ATile, uint32_t ACapacity) {
  TTile* const tile = NewTile(ACapacity);
  *tile = *ATile;
  tile->Capacity = static_cast<uint16_t>(ACapacity);
  MoveSlots(tile->Slots(), ATile->Slots(), ATile->Count);
  FreeTile(ATile);
  return tile;
}

/// The slot of a place, with what it holds; a new slot is blank.
TCellStore::TPlace TCellStore::Open(int32_t ACol, int32_t ARow) {
  const uint32_t tileIndex = static_cast<uint32_t>(ARow - 1) / kTileRows;
  const uint32_t row = static_cast<uint32_t>(ARow - 1) % kTileRows;
  TTile*& link = TileLink(ACol, tileIndex);
  if (!link) {
    TTileColumn& column = FColumns[static_cast<size_t>(ACol - 1)];
    link = NewTile(FollowsFullTile(ACol, tileIndex) ? kTileRows : 1);
    column.Pages[tileIndex / kPageTiles]->Used |= 1u << (tileIndex % kPageTiles);
    column.TileLimit = std::max(column.TileLimit, static_cast<int32_t>(tileIndex) + 1);
  } else if (link->Has(row)) {
    return {link, link->Slots() + link->Rank(row)};
  } else if (link->Count == link->Capacity) {
    link = Resized(link, GrownCapacity(link->Capacity));
  }
  TTile* const tile = link;
  const uint32_t rank = MarkRow(*tile, row);
  TCellSlot* const slot = tile->Slots() + rank;
  MoveSlots(slot + 1, slot, tile->Count - 1 - rank);
  ++FCellCount;
  return {tile, new (slot) TCellSlot};
}

/// A column that is filled downward has the room of its next tile at once instead of growing it eight times.
bool TCellStore::FollowsFullTile(int32_t ACol, uint32_t ATileIndex) const {
  const TTile* const above = ATileIndex == 0 ? nullptr : FindTile(ACol, static_cast<int32_t>(ATileIndex) - 1);
  return above && above->Count == kTileRows;
}

/// OpenBlankPlain for a row below all that its tile stores and with room for it, as loaders write them: nothing has to
/// be found, moved or released. No tile in the result for any other place.
inline TCellStore::TPlace TCellStore::TryAppend(int32_t ACol, int32_t ARow) {
  const uint32_t row = static_cast<uint32_t>(ARow - 1) % kTileRows;
  // The tiles are this store's own: only the way to them is const.
  auto* const tile = const_cast<TTile*>(FindTile(ACol, (ARow - 1) / kTileRows));
  if (!tile || tile->Count == tile->Capacity) return {nullptr, nullptr};
  const uint32_t word = row >> 6;
  uint64_t behind = tile->Occupied[word] >> (row & 63);
  for (uint32_t i = word + 1; i < 4; ++i) behind |= tile->Occupied[i];
  if (behind != 0) return {nullptr, nullptr};
  tile->Occupied[word] |= uint64_t{1} << (row & 63);
  for (uint32_t i = word + 1; i < 4; ++i) ++tile->Below[i];
  ++FCellCount;
  return {tile, new (tile->Slots() + tile->Count++) TCellSlot};
}

/// The slot of a place, blank: what it held is released.
inline TCellStore::TPlace TCellStore::OpenBlank(int32_t ACol, int32_t ARow) {
  if (FVersionNow) NoteWrite(ACol, ARow);
  const TPlace place = TryAppend(ACol, ARow);
  return place.Tile ? place : OpenBlankPlain(ACol, ARow);
}

TCellStore::TPlace TCellStore::OpenBlankPlain(int32_t ACol, int32_t ARow) {
  const TPlace place = Open(ACol, ARow);
  DropContent(ACol, ARow, place);
  return place;
}

/// Takes an empty tile out of the directory, and its page with it when that was its last one.
void TCellStore::DropTile(int32_t ACol, uint32_t ATileIndex) {
  TTileColumn& column = FColumns[static_cast<size_t>(ACol - 1)];
  const uint32_t pageIndex = ATileIndex / kPageTiles;
  TTilePage*& page = column.Pages[pageIndex];
  FreeTile(page->Tiles[ATileIndex % kPageTiles]);
  page->Tiles[ATileIndex % kPageTiles] = nullptr;
  page->Used &= ~(1u << (ATileIndex % kPageTiles));
  if (page->Used == 0) {
    FArena.Free(page, kPageClass);
    page = nullptr;
  }
  if (static_cast<int32_t>(ATileIndex) + 1 != column.TileLimit) return;
  uint32_t last = pageIndex + 1;
  while (last > 0 && !column.Pages[last - 1]) --last;
  column.TileLimit = last == 0
                         ? 0
                         : static_cast<int32_t>((last - 1) * kPageTiles + kPageTiles -
                                                static_cast<uint32_t>(std::countl_zero(column.Pages[last - 1]->Used)));
}

/// Frees a directory that belongs to no column any more, with the tiles that are left in it; their cells are elsewhere.
void TCellStore::FreePages(TTileColumn& AColumn) noexcept {
  for (uint32_t index = 0; index < AColumn.PageCount; ++index) {
    TTilePage* const page = AColumn.Pages[index];
    if (!page) continue;
    for (TTile* const tile : page->Tiles) {
      if (tile) FreeTile(tile);
    }
    FArena.Free(page, kPageClass);
  }
}

/// Releases what a slot holds and leaves it blank.
void TCellStore::DropContent(int32_t ACol, int32_t ARow, TPlace APlace) {
  TCellSlot& slot = *APlace.Slot;
  switch (slot.Kind) {
    case cvkNumber: --APlace.Tile->NumberCount; break;
    case cvkText: ReleaseText(slot.Text); break;
    case cvkFormula:
      --APlace.Tile->FormulaCount;
      --FFormulaCount;
      ++FFormulaVersion;
      FreeRecord(slot.Record);
      break;
    case cvkEmpty:
    case cvkBoolean:
    case cvkError: break;
  }
  if (slot.HasExtras()) DropExtras(ACol, ARow);
  slot = TCellSlot();
}

void TCellStore::DropExtras(int32_t ACol, int32_t ARow) {
  const auto found = FExtras.find(ExtrasKey(ACol, ARow));
  std::shared_ptr<const TCellFormat> format = std::move(found->second.Override);
  FExtras.erase(found);
  if (format && format.use_count() == 2) FOverrides.erase(format);
}

/// Gives back every reference to texts and templates; the slots are not touched.
void TCellStore::ReleaseReferences() {
  for (int32_t col = 1; col <= ColumnLimit(); ++col) {
    ForEachTile(col, [&](const TTile& ATile, int32_t) {
      if (ATile.NumberCount == ATile.Count) return;
      for (const TCellSlot *slot = ATile.Slots(), *end = slot + ATile.Count; slot != end; ++slot) {
        if (slot->Kind == cvkText) ReleaseText(slot->Text);
        if (slot->Kind != cvkFormula) continue;
        TFormulaRecord& record = Record(slot->Record);
        ReleaseCached(record);
        FPool.Release(record.Template);
      }
    });
  }
}

// ---- formula records

uint32_t TCellStore::NewRecord() {
  if (!FFreeRecords.empty()) {
    const uint32_t index = FFreeRecords.back();
    FFreeRecords.pop_back();
    return index;
  }
  const size_t page = FRecordEnd >> kPageBits;
  if (page == FRecordPages.size()) {
    const uint32_t records = std::clamp(FRecordEnd, kPageMask + 1, kSlabLimit) & ~kPageMask;
    FRecordPages.reserve(FRecordPages.size() + (records >> kPageBits));
    auto* slab = static_cast<TFormulaRecord*>(FArena.Carve(records * sizeof(TFormulaRecord)));
    for (uint32_t at = 0; at < records; at += kPageMask + 1) FRecordPages.push_back(slab + at);
  }
  return FRecordEnd++;
}

void TCellStore::FreeRecord(uint32_t AIndex) {
  TFormulaRecord& record = Record(AIndex);
  ReleaseCached(record);
  FUncachedCount -= record.HasCached() ? 0 : 1;
  FPool.Release(record.Template);
  record = TFormulaRecord();
  FFreeRecords.push_back(AIndex);
}

/// Gives back the text of a cached result.
void TCellStore::ReleaseCached(TFormulaRecord& ARecord) {
  if (ARecord.HasCached() && (ARecord.CachedKind == cvkText || ARecord.CachedKind == cvkFormula))
    ReleaseText(ARecord.Text);
}

/// Puts a result of any kind into a record as it is, but for a number that is not finite.
void TCellStore::StoreCached(TFormulaRecord& ARecord, const TCellValue& AResult) {
  if (AResult.Kind == cvkNumber && !std::isfinite(AResult.Number))
    return StoreCached(ARecord, TCellValue::FromError(ceNum));
  TText text = AResult.Text;
  ReleaseCached(ARecord);
  NoteCached(ARecord);
  ARecord.CachedKind = AResult.Kind;
  ARecord.CachedError = AResult.Kind == cvkError ? AResult.ErrorCode : ceNone;
  ARecord.CachedBoolean = AResult.Kind == cvkBoolean && AResult.BooleanValue;
  if (AResult.Kind == cvkText || AResult.Kind == cvkFormula) {
    ARecord.Text = text.Detach();
  } else {
    ARecord.Number = AResult.Kind == cvkNumber ? AResult.Number : 0;
  }
}

void TCellStore::SetCached(int32_t ACol, TFormulaRecord& ARecord, const TCellValue& AResult) {
  StoreCached(ARecord, AResult);
  if (ARecord.CachedKind == cvkFormula) ARecord.CachedKind = cvkText;
  Touch(ACol);
}

void TCellStore::SetCachedNumber(int32_t ACol, TFormulaRecord& ARecord, double ANumber) {
  if (!std::isfinite(ANumber)) return SetCached(ACol, ARecord, TCellValue::FromError(ceNum));
  ReleaseCached(ARecord);
  NoteCached(ARecord);
  ARecord.CachedKind = cvkNumber;
  ARecord.Number = ANumber;
  Touch(ACol);
}

void TCellStore::ClearCached(int32_t ACol, TFormulaRecord& ARecord) {
  ReleaseCached(ARecord);
  FUncachedCount += ARecord.HasCached() ? 1 : 0;
  ARecord.Flags &= static_cast<uint8_t>(~TFormulaRecord::frHasCached);
  ARecord.CachedKind = cvkEmpty;
  ARecord.Number = 0;
  Touch(ACol);
}

// ---- writing

/// Writes a formula without a result. A formula that takes the place of another keeps its record, and with it the mark
/// that the evaluator is inside this cell.
void TCellStore::PutFormula(int32_t ACol, int32_t ARow, std::u16string_view AText, int32_t AStyleIndex) {
  struct TRelease {
    TFormulaPool* Pool;
    void operator()(TFormulaTemplate* ATemplate) const { Pool->Release(ATemplate); }
  };
  std::unique_ptr<TFormulaTemplate, TRelease> formula(FPool.Intern(AText, ACol, ARow), TRelease{&FPool});
  if (TFormulaRecord* old = FindRecord(ACol, ARow)) {
    if (FVersionNow) NoteWrite(ACol, ARow);
    const TPlace place = Open(ACol, ARow);
    if (place.Slot->HasExtras()) DropExtras(ACol, ARow);
    place.Slot->Flags = 0;
    place.Slot->StyleIndex = AStyleIndex;
    ClearCached(ACol, *old);
    old->Flags &= TFormulaRecord::frVisiting;
    ++FFormulaVersion;  // also for the same text: the marks of what is known of the formula are gone
    FPool.Release(old->Template);
    old->Template = formula.release();
    return;
  }
  const uint32_t index = NewRecord();
  const TPlace place = OpenBlank(ACol, ARow);
  auto* record = new (&Record(index)) TFormulaRecord;
  record->Template = formula.release();
  place.Slot->Kind = cvkFormula;
  place.Slot->Record = index;
  place.Slot->StyleIndex = AStyleIndex;
  ++place.Tile->FormulaCount;
  ++FFormulaCount;
  ++FUncachedCount;
  ++FFormulaVersion;
  Touch(ACol);
}

void TCellStore::SetFormula(int32_t ACol, int32_t ARow, std::u16string_view AText, int32_t AStyleIndex) {
  PutFormula(ACol, ARow, AText, AStyleIndex);
}

void TCellStore::SetNumber(int32_t ACol, int32_t ARow, double ANumber, int32_t AStyleIndex) {
  if (!std::isfinite(ANumber)) return SetValue(ACol, ARow, TCellValue::FromError(ceNum), AStyleIndex);
  const TPlace place = OpenBlank(ACol, ARow);
  place.Slot->Kind = cvkNumber;
  place.Slot->Number = ANumber;
  place.Slot->StyleIndex = AStyleIndex;
  ++place.Tile->NumberCount;
  Touch(ACol);
}

void TCellStore::SetText(int32_t ACol, int32_t ARow, TText AText, int32_t AStyleIndex) {
  const TPlace place = OpenBlank(ACol, ARow);
  place.Slot->Kind = cvkText;
  place.Slot->Text = AText.Detach();
  place.Slot->StyleIndex = AStyleIndex;
  Touch(ACol);
}

void TCellStore::SetValue(int32_t ACol, int32_t ARow, const TCellValue& AValue, int32_t AStyleIndex) {
  switch (AValue.Kind) {
    case cvkNumber: SetNumber(ACol, ARow, AValue.Number, AStyleIndex); return;
    case cvkText: SetText(ACol, ARow, AValue.Text, AStyleIndex); return;
    case cvkFormula: PutFormula(ACol, ARow, AValue.Text, AStyleIndex); return;
    case cvkEmpty:
      if (AStyleIndex != 0) break;
      Remove(ACol, ARow);
      return;
    case cvkBoolean:
    case cvkError: break;
  }
  const TPlace place = OpenBlank(ACol, ARow);
  place.Slot->Kind = AValue.Kind;
  if (AValue.Kind == cvkError) place.Slot->ErrorCode = AValue.ErrorCode;
  if (AValue.Kind == cvkBoolean && AValue.BooleanValue) place.Slot->Flags |= TCellSlot::sfBoolean;
  place.Slot->StyleIndex = AStyleIndex;
  Touch(ACol);
}

void TCellStore::Set(int32_t ACol, int32_t ARow, const TCell& ACell) {
  if (ACell.IsEmpty()) {
    Remove(ACol, ARow);
    return;
  }
  // A cell that is kept by its extras alone needs its slot first, which SetValue would free.
  if (ACell.Value.Kind == cvkEmpty && ACell.StyleIndex == 0) {
    OpenBlank(ACol, ARow);
    Touch(ACol);
  } else {
    SetValue(ACol, ARow, ACell.Value, ACell.StyleIndex);
  }
  if (ACell.Value.Kind == cvkFormula && ACell.HasCachedValue) StoreCached(*FindRecord(ACol, ARow), ACell.CachedValue);
  if (NeedsExtras(ACell)) SetExtras(ACol, ARow, ACell);
}

/// Adds the side table's entry of a cell that has none yet.
void TCellStore::SetExtras(int32_t ACol, int32_t ARow, const TCell& ACell) {
  TCellExtras extras;
  if (!ACell.RichText.empty()) extras.Runs = std::make_shared<const TRichTextRuns>(ACell.RichText);
  if (ACell.Sparkline != TSparklineData{}) extras.Sparkline = std::make_unique<TSparklineData>(ACell.Sparkline);
  if (ACell.HasCachedValue && ACell.Value.Kind != cvkFormula)
    extras.ConstantCache = std::make_unique<TCellValue>(ACell.CachedValue);
  if (ACell.HasFormatOverride) extras.Override = InternOverride(ACell.FormatOverride);
  const bool hasSparkline = extras.Sparkline != nullptr;
  FExtras.insert_or_assign(ExtrasKey(ACol, ARow), std::move(extras));
  const TPlace place = Open(ACol, ARow);
  place.Slot->Flags |= TCellSlot::sfExtras;
  if (hasSparkline && place.Slot->Kind == cvkFormula) Record(place.Slot->Record).Flags |= TFormulaRecord::frSparkline;
}

std::shared_ptr<const TCellFormat> TCellStore::InternOverride(const TCellFormat& AFormat) {
  if (const auto found = FOverrides.find(AFormat); found != FOverrides.end()) return *found;
  return *FOverrides.insert(std::make_shared<const TCellFormat>(AFormat)).first;
}

void TCellStore::Remove(int32_t ACol, int32_t ARow) {
  const TCellSlot* found = Find(ACol, ARow);
  if (!found) return;
  if (FVersionNow) NoteWrite(ACol, ARow);
  const uint32_t tileIndex = static_cast<uint32_t>(ARow - 1) / kTileRows;
  const uint32_t row = static_cast<uint32_t>(ARow - 1) % kTileRows;
  TTile*& link = TileLink(ACol, tileIndex);
  TCellSlot* const slot = link->Slots() + (found - link->Slots());
  DropContent(ACol, ARow, {link, slot});
  UnmarkRow(*link, row);
  MoveSlots(slot, slot + 1, static_cast<uint32_t>(link->Slots() + link->Count - slot));
  --FCellCount;
  Touch(ACol);
  if (link->Count == 0) {
    DropTile(ACol, tileIndex);
  } else if (link->Capacity > 8 && link->Count <= link->Capacity / 4) {
    link = Resized(link, link->Capacity / 2u);
  }
}

void TCellStore::Clear() {
  if (FVersionNow) ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot&) { NoteWrite(ACol, ARow); });
  if (FFormulaCount != 0) ++FFormulaVersion;
  ReleaseReferences();
  std::vector<TTileColumn>().swap(FColumns);
  std::vector<TFormulaRecord*>().swap(FRecordPages);
  std::vector<uint32_t>().swap(FFreeRecords);
  FRecordEnd = 0;
  FExtras = {};
  FOverrides = {};
  FArena.Reset();
  FCellCount = 0;
  FFormulaCount = 0;
  FUncachedCount = 0;
  FClearedAt = ++FVersion;
}

}  // namespace tessarine::detail
