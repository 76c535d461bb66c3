#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/sheet/detail/TileArena.h>
#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

class IFormulaMover;
struct TLineMap;
struct TStoreChange;
struct TStoreKeeper;
struct TStoreSnapshot;
struct TStoreVersion;

constexpr int32_t kTileRows = 256;
constexpr int32_t kPageTiles = 32;  // tiles in one page of a column's directory

/// A formula in a cell: its shared template and its last result.
struct TFormulaRecord {
  enum TFlags : uint8_t {
    frHasCached = 1,  // the cached members are valid
    frVisiting = 2,   // the evaluator is inside this formula
    frSparkline = 4,  // the cell has a sparkline in the side table
  };

  TFormulaTemplate* Template = nullptr;  // one reference held
  union {
    double Number;           // cvkNumber
    const TTextBlock* Text;  // cvkText, and cvkFormula where a caller set one by hand; one reference held
  };
  TCellValueKind CachedKind = cvkEmpty;
  TCellErrorCode CachedError = ceNone;
  bool CachedBoolean = false;
  uint8_t Flags = 0;
  uint32_t Mark = 0;  // scratch of the recalculation: 0 between its operations

  TFormulaRecord() : Number(0) {}
  bool HasCached() const { return (Flags & frHasCached) != 0; }
  bool IsVisiting() const { return (Flags & frVisiting) != 0; }

  /// The cached result, or empty without one.
  TValueView CachedView() const {
    if (!HasCached()) return {};
    switch (CachedKind) {
      case cvkNumber: return TValueView::FromNumber(Number);
      case cvkText:
      case cvkFormula: return TValueView::FromBlock(CachedKind, Text);
      case cvkBoolean: return TValueView::FromBoolean(CachedBoolean);
      case cvkError: return TValueView::FromError(CachedError);
      default: return {};
    }
  }
};
static_assert(sizeof(TFormulaRecord) == 24);

/// One stored cell, 16 bytes. What few cells have stands in the store's side table, flagged here.
struct TCellSlot {
  enum TFlags : uint8_t {
    sfBoolean = 1,  // the value of a cvkBoolean
    sfExtras = 2,   // format override, runs, sparkline, or a cached result beside a constant
  };

  union {
    double Number;           // cvkNumber
    const TTextBlock* Text;  // cvkText; one reference held, null for the empty text
    uint32_t Record;         // cvkFormula: index for TCellStore::Record
  };
  int32_t StyleIndex = 0;
  TCellValueKind Kind = cvkEmpty;
  TCellErrorCode ErrorCode = ceNone;  // cvkError
  uint8_t Flags = 0;
  uint8_t Reserved = 0;

  TCellSlot() : Number(0) {}
  bool HasExtras() const { return (Flags & sfExtras) != 0; }

  /// The stored constant; a formula gives an empty view.
  TValueView ConstantView() const {
    switch (Kind) {
      case cvkNumber: return TValueView::FromNumber(Number);
      case cvkText: return TValueView::FromBlock(cvkText, Text);
      case cvkBoolean: return TValueView::FromBoolean((Flags & sfBoolean) != 0);
      case cvkError: return TValueView::FromError(ErrorCode);
      default: return {};
    }
  }
};
static_assert(sizeof(TCellSlot) == 16);

/// The number of set bits, without a call where the machine's own instruction may not be assumed.
inline uint32_t CountBits(uint64_t ABits) {
#if defined(__POPCNT__)
  return static_cast<uint32_t>(std::popcount(ABits));
#else
  ABits -= (ABits >> 1) & 0x5555555555555555u;
  ABits = (ABits & 0x3333333333333333u) + ((ABits >> 2) & 0x3333333333333333u);
  ABits = (ABits + (ABits >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
  return static_cast<uint32_t>((ABits * 0x0101010101010101u) >> 56);
#endif
}

/// 256 rows of one column: an occupancy bitmap and the stored cells packed behind it in row order.
struct TTile {
  uint64_t Occupied[4] = {0, 0, 0, 0};  // bit r: row r of the tile is stored
  uint8_t Below[4] = {0, 0, 0, 0};      // stored cells in the words of Occupied before this one
  uint16_t Count = 0;
  uint16_t Capacity = 0;      // 1, 4, 8, 16 ... 256
  uint16_t FormulaCount = 0;  // slots of kind cvkFormula
  uint16_t NumberCount = 0;   // slots of kind cvkNumber; equal to Count in a tile of nothing but numbers
  uint32_t Reserved = 0;

  TCellSlot* Slots() { return reinterpret_cast<TCellSlot*>(this + 1); }
  const TCellSlot* Slots() const { return reinterpret_cast<const TCellSlot*>(this + 1); }

  bool Has(uint32_t ARow) const { return (Occupied[ARow >> 6] >> (ARow & 63) & 1) != 0; }

  /// How many stored cells stand above row ARow (0-based in the tile): its place in Slots() when it is stored.
  uint32_t Rank(uint32_t ARow) const {
    if (Count == kTileRows) return ARow;
    const uint32_t word = ARow >> 6;
    const uint64_t before = (uint64_t{1} << (ARow & 63)) - 1;
    return Below[word] + CountBits(Occupied[word] & before);
  }
};
static_assert(sizeof(TTile) == 48);

/// 32 tiles of one column, so that a column with few cells far apart does not pay for what lies between.
struct TTilePage {
  uint32_t Used = 0;  // bit i: Tiles[i] is there
  uint32_t Reserved = 0;
  TTile* Tiles[kPageTiles] = {};
};
static_assert(sizeof(TTilePage) == 264);

/// The directory of one column.
struct TTileColumn {
  std::unique_ptr<TTilePage*[]> Pages;  // null entries where a page would be empty
  uint32_t PageCount = 0;
  int32_t TileLimit = 0;  // the last tile's index + 1
  uint64_t Version = 0;   // the store's version after the last write into the column

  const TTilePage* Page(uint32_t AIndex) const { return AIndex < PageCount ? Pages[AIndex] : nullptr; }
};

/// Changes a format; what it does depends on nothing but the format.
using TFormatEdit = std::function<void(TCellFormat& AFormat)>;

/// What a cell has beside its slot.
struct TCellExtras {
  std::shared_ptr<const TCellFormat> Override;  // interned by the store: equal overrides share one record
  std::shared_ptr<const TRichTextRuns> Runs;
  std::unique_ptr<TSparklineData> Sparkline;
  std::unique_ptr<TCellValue> ConstantCache;  // CachedValue of a cell that is no formula, HasCachedValue set
};

/// The cells of one sheet. Behaves as a dictionary from address to TCell that holds only cells which are not empty.
///
/// Invariants:
/// 1. FColumns[c] is the directory of column c + 1; a page holds at least one tile, a tile at least one cell.
/// 2. A tile's slots stand in row order without gaps, and its counts agree with them.
/// 3. Every text and template that a slot or record points to has one reference counted for it.
/// 4. A slot has sfExtras exactly when FExtras has its key.
/// 5. FOverrides holds each format that an entry of FExtras shares.
///
/// Members of a TCell that mean nothing are not kept: FormatOverride without HasFormatOverride, CachedValue without
/// HasCachedValue, fields of a value that do not belong to its kind.
///
/// Slot pointers are valid until the next write to their tile, record references until the store is cleared.
/// Addresses are valid ones: callers test them.
class TCellStore {
 public:
  explicit TCellStore(TFormulaPool& APool);
  ~TCellStore();
  TCellStore(const TCellStore&) = delete;
  TCellStore& operator=(const TCellStore&) = delete;

  // ---- reading
  /// The stored cell or null.
  const TCellSlot* Find(int32_t ACol, int32_t ARow) const {
    const TTile* tile = FindTile(ACol, (ARow - 1) / kTileRows);
    if (!tile) return nullptr;
    const auto row = static_cast<uint32_t>(ARow - 1) % kTileRows;
    return tile->Has(row) ? tile->Slots() + tile->Rank(row) : nullptr;
  }

  /// The tile ATileIndex (0-based, rows ATileIndex * 256 + 1 onward) of a column, or null.
  const TTile* FindTile(int32_t ACol, int32_t ATileIndex) const {
    const auto col = static_cast<size_t>(ACol - 1);
    if (col >= FColumns.size()) return nullptr;
    const auto tile = static_cast<uint32_t>(ATileIndex);
    const TTilePage* page = FColumns[col].Page(tile / kPageTiles);
    return page ? page->Tiles[tile % kPageTiles] : nullptr;
  }

  /// Columns that may hold cells: 1 to ColumnLimit(). Tiles of a column: 0 to TileLimit(col) - 1.
  int32_t ColumnLimit() const { return static_cast<int32_t>(FColumns.size()); }
  int32_t TileLimit(int32_t ACol) const {
    const auto col = static_cast<size_t>(ACol - 1);
    return col < FColumns.size() ? FColumns[col].TileLimit : 0;
  }

  TFormulaRecord& Record(uint32_t AIndex) { return FRecordPages[AIndex >> kPageBits][AIndex & kPageMask]; }
  const TFormulaRecord& Record(uint32_t AIndex) const { return FRecordPages[AIndex >> kPageBits][AIndex & kPageMask]; }

  /// The record of a formula cell, or null for any other.
  TFormulaRecord* FindRecord(int32_t ACol, int32_t ARow) {
    const TCellSlot* slot = Find(ACol, ARow);
    return slot && slot->Kind == cvkFormula ? &Record(slot->Record) : nullptr;
  }

  /// What formulas see of a stored cell, spills apart: the constant, or a formula's cached result.
  TValueView EffectiveView(const TCellSlot& ASlot) const {
    return ASlot.Kind == cvkFormula ? Record(ASlot.Record).CachedView() : ASlot.ConstantView();
  }

  /// The side table's entry of a slot with HasExtras().
  const TCellExtras* FindExtras(int32_t ACol, int32_t ARow) const;

  TFormulaPool& Pool() const { return FPool; }
  size_t CellCount() const { return FCellCount; }
  size_t FormulaCount() const { return FFormulaCount; }

  /// Raised by every change of a stored value, of a cached result and of which cells exist.
  uint64_t Version() const { return FVersion; }
  /// Raised by every write of a formula and whenever one goes.
  uint64_t FormulaVersion() const { return FFormulaVersion; }

  /// Raised by every write into a column: stored values, cached results, which cells exist. Never falls, also not
  /// when the store is cleared. Indexes over ranges are valid as long as the versions of their columns stand.
  uint64_t ColumnVersion(int32_t ACol) const {
    const auto col = static_cast<size_t>(ACol - 1);
    return col < FColumns.size() ? std::max(FColumns[col].Version, FClearedAt) : FClearedAt;
  }

  /// How many formula cells have no cached result at present.
  size_t UncachedCount() const { return FUncachedCount; }

  /// The cell built for callers; TCell::CreateEmpty() where nothing is stored.
  TCell Get(int32_t ACol, int32_t ARow) const;

  /// The bytes that tiles, records, directories and side tables take; texts and templates not counted.
  size_t BytesUsed() const;

  // ---- writing
  /// Stores ACell whole, or frees its place when it is empty.
  void Set(int32_t ACol, int32_t ARow, const TCell& ACell);
  void Remove(int32_t ACol, int32_t ARow);
  void Clear();

  /// Narrow writes for loaders and fills: the cell then holds this value and style and nothing else, exactly as
  /// after Set with such a TCell. An empty value with style 0 frees the place.
  void SetValue(int32_t ACol, int32_t ARow, const TCellValue& AValue, int32_t AStyleIndex);
  void SetNumber(int32_t ACol, int32_t ARow, double ANumber, int32_t AStyleIndex);
  void SetText(int32_t ACol, int32_t ARow, TText AText, int32_t AStyleIndex);
  void SetFormula(int32_t ACol, int32_t ARow, std::u16string_view AText, int32_t AStyleIndex);

  /// Changes the format override of every cell of a range (normalized, inside the sheet), free places included; one
  /// that has none begins with the default format. AEdit is called once for each different override.
  void EditOverrides(const TCellRange& ARange, const TFormatEdit& AEdit);

  /// Replaces the cached result of a formula in column ACol; a cvkFormula becomes a text.
  void SetCached(int32_t ACol, TFormulaRecord& ARecord, const TCellValue& AResult);
  void SetCachedNumber(int32_t ACol, TFormulaRecord& ARecord, double ANumber);
  /// Drops the result alone; a cell with frSparkline is written back whole instead (TCell::ClearCachedResult).
  void ClearCached(int32_t ACol, TFormulaRecord& ARecord);
  /// Drops the result of a formula, or of all of them, and with it the chart of its sparkline.
  void ClearResult(int32_t ACol, int32_t ARow);
  void ClearResults();

  // ---- structure
  /// Carries cells and side table along with their lines and asks AMover for the template of every formula. When lines
  /// move, all cached results go; otherwise those of the formulas that get another template.
  void Rearrange(const TLineMap& AMap, IFormulaMover& AMover);
  /// The same cell by cell.
  void RearrangePlain(const TLineMap& AMap, IFormulaMover& AMover);

  /// Keeps the present state at the cost of what changes from now on.
  TStoreSnapshot Capture();
  /// Makes a captured state the present one, but for results: those of formulas are gone where lines moved in between,
  /// and elsewhere may be later ones. False for a state of another store, or of none.
  bool ReturnTo(const TStoreSnapshot& ASnapshot);
  /// Whether nothing but results and, by Rearrange, texts of formulas has changed since a state was captured.
  bool DiffersInTextsOnly(const TStoreSnapshot& ASnapshot) const;
  /// Takes a store that its sheet needs no longer; it goes with the last of its captured states.
  static void Retire(std::unique_ptr<TCellStore> AStore);

  // ---- walking
  /// Every stored cell, columns from the left, rows downward: AVisit(int32_t col, int32_t row, const TCellSlot&).
  /// The store must not change meanwhile, cached results excepted.
  template <class TVisit>
  void ForEachByColumn(TVisit&& AVisit) const {
    for (int32_t col = 1; col <= ColumnLimit(); ++col) {
      ForEachTile(col, [&](const TTile& ATile, int32_t AIndex) { VisitTile(ATile, col, AIndex, AVisit); });
    }
  }

  /// The tiles of a column downward: AVisit(const TTile&, int32_t tileIndex).
  template <class TVisit>
  void ForEachTile(int32_t ACol, TVisit&& AVisit) const {
    if (ACol < 1 || ACol > ColumnLimit()) return;
    const TTileColumn& column = FColumns[static_cast<size_t>(ACol - 1)];
    for (uint32_t index = 0; index < column.PageCount; ++index) {
      const TTilePage* page = column.Pages[index];
      if (!page) continue;
      for (uint32_t used = page->Used; used != 0; used &= used - 1) {
        const auto inPage = static_cast<uint32_t>(std::countr_zero(used));
        AVisit(*page->Tiles[inPage], static_cast<int32_t>(index * kPageTiles + inPage));
      }
    }
  }

  /// Every stored cell inside a range (normalized, inside the sheet), rows downward, columns from the left in each.
  /// Costs by the tiles that exist, not by the area.
  template <class TVisit>
  void ForEachByRow(const TCellRange& ARange, TVisit&& AVisit) const;

 private:
  static constexpr uint32_t kPageBits = 6;  // records come in pages of 64, cut from larger slabs, so they never move
  static constexpr uint32_t kPageMask = (1u << kPageBits) - 1;

  struct TPlace {
    TTile* Tile;
    TCellSlot* Slot;
  };
  class TOverrideEdits;
  struct TFormatHash {
    using is_transparent = void;
    size_t operator()(const TCellFormat& AFormat) const { return HashOf(AFormat); }
    size_t operator()(const std::shared_ptr<const TCellFormat>& AFormat) const { return HashOf(*AFormat); }
  };
  struct TFormatEqual {
    using is_transparent = void;
    static const TCellFormat& Of(const TCellFormat& AFormat) { return AFormat; }
    static const TCellFormat& Of(const std::shared_ptr<const TCellFormat>& AFormat) { return *AFormat; }
    bool operator()(const auto& ALeft, const auto& ARight) const { return Of(ALeft) == Of(ARight); }
  };
  /// Tiles that stand side by side, and what a walk by rows has before it in 64 rows of each.
  struct TStrip {
    struct TMember {
      int32_t Col;
      const TTile* Tile;
    };
    struct TPart {
      int32_t Col;
      uint64_t Bits;
      const TCellSlot* Next;
    };
    std::vector<TMember> Members;
    std::vector<TPart> Parts;
  };

  template <class TVisit>
  static void VisitTile(const TTile& ATile, int32_t ACol, int32_t AIndex, TVisit& AVisit) {
    const TCellSlot* slot = ATile.Slots();
    for (uint32_t word = 0; word < 4; ++word) {
      for (uint64_t bits = ATile.Occupied[word]; bits != 0; bits &= bits - 1) {
        const int32_t row = AIndex * kTileRows + static_cast<int32_t>(word * 64) + std::countr_zero(bits) + 1;
        AVisit(ACol, row, *slot++);
      }
    }
  }
  template <class TVisit>
  static void VisitStrip(TStrip& AStrip, const TCellRange& ARange, int32_t AIndex, TVisit& AVisit);

  TTile*& TileLink(int32_t ACol, uint32_t ATileIndex);
  TPlace Open(int32_t ACol, int32_t ARow);
  TPlace OpenBlank(int32_t ACol, int32_t ARow);
  TPlace OpenBlankPlain(int32_t ACol, int32_t ARow);
  TPlace TryAppend(int32_t ACol, int32_t ARow);
  bool FollowsFullTile(int32_t ACol, uint32_t ATileIndex) const;
  TTile* NewTile(uint32_t ACapacity);
  TTile* Resized(TTile* ATile, uint32_t ACapacity);
  void FreeTile(TTile* ATile) noexcept;
  void DropTile(int32_t ACol, uint32_t ATileIndex);
  void DropContent(int32_t ACol, int32_t ARow, TPlace APlace);
  void DropExtras(int32_t ACol, int32_t ARow);
  void ReleaseReferences();

  uint32_t NewRecord();
  void FreeRecord(uint32_t AIndex);
  static void ReleaseCached(TFormulaRecord& ARecord);
  void StoreCached(TFormulaRecord& ARecord, const TCellValue& AResult);
  void NoteCached(TFormulaRecord& ARecord) {
    FUncachedCount -= ARecord.HasCached() ? 0 : 1;
    ARecord.Flags |= TFormulaRecord::frHasCached;
  }
  /// Every write passes here with its column, which exists.
  void Touch(int32_t ACol) { FColumns[static_cast<size_t>(ACol - 1)].Version = ++FVersion; }
  void PutFormula(int32_t ACol, int32_t ARow, std::u16string_view AText, int32_t AStyleIndex);
  static constexpr uint64_t ExtrasKey(int32_t ACol, int32_t ARow) {
    return static_cast<uint64_t>(static_cast<uint32_t>(ACol)) << 32 | static_cast<uint32_t>(ARow);
  }
  void SetExtras(int32_t ACol, int32_t ARow, const TCell& ACell);
  void ReserveExtras(const TCellRange& ARange);
  std::shared_ptr<const TCellFormat> InternOverride(const TCellFormat& AFormat);

  void RearrangeLogged(const TLineMap& AMap, IFormulaMover& AMover, TStoreChange* ALog);
  void DropSideResults(TStoreChange* ALog);
  void ClearSparkline(int32_t ACol, int32_t ARow);
  void DropLines(const TLineMap& AMap, TStoreChange* ALog);
  bool MoveFormulas(const TLineMap& AMap, IFormulaMover& AMover, TStoreChange* ALog);
  void MoveColumns(const TLineMap& AMap);
  void LinkTile(int32_t ACol, int32_t ATileIndex, TTile* ATile);
  void RepackColumn(int32_t ACol, const TLineMap& AMap);
  void FreePages(TTileColumn& AColumn) noexcept;
  void MoveExtras(const TLineMap& AMap);

  TStoreChange* BeginChange();
  void NoteWrite(int32_t ACol, int32_t ARow);
  void Apply(const TStoreChange& AChange, TStoreChange* AInverse);

  TFormulaPool& FPool;
  TTileArena FArena;
  std::vector<TTileColumn> FColumns;
  std::vector<TFormulaRecord*> FRecordPages;
  uint32_t FRecordEnd = 0;  // records handed out so far, free ones among them
  std::vector<uint32_t> FFreeRecords;
  boost::unordered_flat_map<uint64_t, TCellExtras> FExtras;  // key: column << 32 | row
  boost::unordered_flat_set<std::shared_ptr<const TCellFormat>, TFormatHash, TFormatEqual> FOverrides;
  size_t FCellCount = 0;
  size_t FFormulaCount = 0;
  size_t FUncachedCount = 0;
  uint64_t FVersion = 1;
  uint64_t FClearedAt = 1;  // the version when the store was cleared last: of all columns written since not at all
  uint64_t FFormulaVersion = 1;
  std::shared_ptr<TStoreVersion> FVersionNow;  // the present state, null while nobody has captured one
  std::weak_ptr<TStoreVersion> FOpenChange;    // the state before it, which takes note of single writes
  std::shared_ptr<TStoreKeeper> FKeeper;
};

template <class TVisit>
void TCellStore::ForEachByRow(const TCellRange& ARange, TVisit&& AVisit) const {
  struct TColumnPage {
    int32_t Col;
    const TTilePage* Page;
  };
  std::vector<TColumnPage> pages;
  TStrip strip;
  const int32_t lastCol = ARange.EndCol < ColumnLimit() ? ARange.EndCol : ColumnLimit();
  uint32_t pageLimit = 0;
  for (int32_t col = ARange.StartCol; col <= lastCol; ++col) {
    const uint32_t count = FColumns[static_cast<size_t>(col - 1)].PageCount;
    pageLimit = count > pageLimit ? count : pageLimit;
  }
  const auto firstTile = static_cast<uint32_t>(ARange.StartRow - 1) / kTileRows;
  const auto lastTile = static_cast<uint32_t>(ARange.EndRow - 1) / kTileRows;
  for (uint32_t page = firstTile / kPageTiles; page < pageLimit && page <= lastTile / kPageTiles; ++page) {
    pages.clear();
    uint32_t any = 0;
    for (int32_t col = ARange.StartCol; col <= lastCol; ++col) {
      const TTilePage* found = FColumns[static_cast<size_t>(col - 1)].Page(page);
      if (!found) continue;
      pages.push_back({col, found});
      any |= found->Used;
    }
    for (; any != 0; any &= any - 1) {
      const auto inPage = static_cast<uint32_t>(std::countr_zero(any));
      const uint32_t index = page * kPageTiles + inPage;
      if (index < firstTile || index > lastTile) continue;
      strip.Members.clear();
      for (const TColumnPage& part : pages) {
        if (const TTile* tile = part.Page->Tiles[inPage]) strip.Members.push_back({part.Col, tile});
      }
      VisitStrip(strip, ARange, static_cast<int32_t>(index), AVisit);
    }
  }
}

/// Visits tiles side by side, 64 rows at a time; columns without a cell in these rows are set aside first, so a cell
/// costs at most 64 tests however sparse the tiles are.
template <class TVisit>
void TCellStore::VisitStrip(TStrip& AStrip, const TCellRange& ARange, int32_t AIndex, TVisit& AVisit) {
  for (uint32_t word = 0; word < 4; ++word) {
    const int32_t top = AIndex * kTileRows + static_cast<int32_t>(word * 64) + 1;
    if (top > ARange.EndRow || top + 63 < ARange.StartRow) continue;
    uint64_t mask = ~uint64_t{0};
    if (ARange.StartRow > top) mask &= ~uint64_t{0} << (ARange.StartRow - top);
    if (ARange.EndRow < top + 63) mask &= ~uint64_t{0} >> (top + 63 - ARange.EndRow);
    AStrip.Parts.clear();
    uint64_t any = 0;
    for (const auto& [col, tile] : AStrip.Members) {
      const uint64_t bits = tile->Occupied[word] & mask;
      if (bits == 0) continue;
      any |= bits;
      const uint32_t first = word * 64 + static_cast<uint32_t>(std::countr_zero(bits));
      AStrip.Parts.push_back({col, bits, tile->Slots() + tile->Rank(first)});
    }
    for (; any != 0; any &= any - 1) {
      const auto bit = static_cast<uint32_t>(std::countr_zero(any));
      for (auto& part : AStrip.Parts) {
        if ((part.Bits >> bit & 1) != 0) AVisit(part.Col, top + static_cast<int32_t>(bit), *part.Next++);
      }
    }
  }
}

}  // namespace tessarine::detail
