#include <algorithm>
#include <cstring>
#include <utility>

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/sheet/detail/FormulaMover.h>
#include <tessarine/core/sheet/detail/LineMap.h>
#include <tessarine/core/sheet/detail/StoreHistory.h>

namespace tessarine::detail {

namespace {

constexpr auto kTileSize = static_cast<uint32_t>(kTileRows);

/// A tile that is filled from parts of others, rows ascending.
class TTileBuilder {
 public:
  bool IsEmpty() const { return FTile.Count == 0; }
  int32_t Index() const { return FIndex; }

  void Start(int32_t AIndex) {
    FTile = TTile();
    FIndex = AIndex;
  }

  /// Takes the cells of the rows AFirst to ALast of a tile (0-based) to the rows from ADest on.
  void Append(const TTile& ATile, uint32_t AFirst, uint32_t ALast, uint32_t ADest) {
    const uint32_t begin = ATile.Rank(AFirst);
    const uint32_t end = ALast + 1 == kTileSize ? ATile.Count : ATile.Rank(ALast + 1);
    if (begin == end) return;
    std::memcpy(static_cast<void*>(FSlots + FTile.Count), ATile.Slots() + begin, (end - begin) * sizeof(TCellSlot));
    FTile.Count = static_cast<uint16_t>(FTile.Count + (end - begin));
    for (uint32_t word = 0; word < 4; ++word) {
      const uint32_t top = word * 64;
      if (ALast < top || AFirst > top + 63) continue;
      uint64_t bits = ATile.Occupied[word];
      if (AFirst > top) bits &= ~uint64_t{0} << (AFirst - top);
      if (ALast < top + 63) bits &= ~uint64_t{0} >> (top + 63 - ALast);
      if (bits != 0) Mark(bits, static_cast<int32_t>(top + ADest) - static_cast<int32_t>(AFirst));
    }
  }

  /// The cells in a tile with room for them.
  void CopyTo(TTile& ATile) {
    for (uint32_t word = 1; word < 4; ++word)
      FTile.Below[word] = static_cast<uint8_t>(FTile.Below[word - 1] + CountBits(FTile.Occupied[word - 1]));
    for (uint32_t i = 0; i < FTile.Count; ++i) {
      FTile.NumberCount = static_cast<uint16_t>(FTile.NumberCount + (FSlots[i].Kind == cvkNumber));
      FTile.FormulaCount = static_cast<uint16_t>(FTile.FormulaCount + (FSlots[i].Kind == cvkFormula));
    }
    FTile.Capacity = ATile.Capacity;
    ATile = FTile;
    std::memcpy(static_cast<void*>(ATile.Slots()), FSlots, FTile.Count * sizeof(TCellSlot));
  }

  uint32_t Capacity() const {
    const uint32_t count = FTile.Count;
    return count == 1 ? 1 : std::max(4u, std::bit_ceil(count));
  }

 private:
  /// 64 rows of which the first is row ATop, which may lie above the tile as long as the set ones do not.
  void Mark(uint64_t ABits, int32_t ATop) {
    if (ATop < 0) {
      FTile.Occupied[0] |= ABits >> -ATop;
      return;
    }
    const auto word = static_cast<uint32_t>(ATop) / 64;
    const auto shift = static_cast<uint32_t>(ATop) % 64;
    FTile.Occupied[word] |= ABits << shift;
    if (shift != 0 && word + 1 < 4) FTile.Occupied[word + 1] |= ABits >> (64 - shift);
  }

  TTile FTile;
  TCellSlot FSlots[kTileRows];
  int32_t FIndex = 0;
};

/// The new place of rows or columns that are asked for in ascending order.
class TLineWalk {
 public:
  explicit TLineWalk(const TLineMap& AMap) : FMap(AMap) {}
  int32_t NewLine(int32_t ALine) {
    if (FMap.IsIdentity()) return ALine;
    if (ALine < FNow.First || ALine > FNow.Last) {
      for (const TLineStretch& stretch : FMap.Stretches)
        if (ALine >= stretch.First && ALine <= stretch.Last) FNow = stretch;
    }
    return ALine + FNow.Distance();
  }

 private:
  const TLineMap& FMap;
  TLineStretch FNow{1, 0, 1};
};

bool HasSideResult(const TCellExtras& AExtras) {
  return AExtras.ConstantCache ||
         (AExtras.Sparkline && (AExtras.Sparkline->Kind != spkNone || !AExtras.Sparkline->Values.empty()));
}

}  // namespace

/// The plain way: every cell is taken out, moved and written again.
void TCellStore::RearrangePlain(const TLineMap& AMap, IFormulaMover& AMover) {
  struct TMoved {
    TCellAddress Address;
    TCell Cell;
  };
  std::vector<TMoved> cells;
  const bool rows = AMap.Axis == saRows;
  ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    const TCellAddress place{rows ? ACol : AMap.NewLine(ACol), rows ? AMap.NewLine(ARow) : ARow};
    if (place.Col == 0 || place.Row == 0) return;
    TCell cell = Get(ACol, ARow);
    bool isChanged = !AMap.IsIdentity();
    if (ASlot.Kind == cvkFormula) {
      TFormulaTemplate* const old = Record(ASlot.Record).Template;
      TFormulaTemplate* const moved = AMover.Moved(old, ACol, ARow, place.Col, place.Row);
      cell.Value.Text = moved->TextAt(place.Col, place.Row);
      isChanged |= moved != old;
      if (moved != old) FPool.Release(moved);
    }
    if (isChanged) cell.ClearCachedResult();
    cells.push_back({place, std::move(cell)});
  });
  Clear();
  for (const TMoved& moved : cells) Set(moved.Address.Col, moved.Address.Row, moved.Cell);
}

void TCellStore::Rearrange(const TLineMap& AMap, IFormulaMover& AMover) {
  TStoreChange* const change = BeginChange();
  FOpenChange.reset();
  if (change) change->Map = AMap.Inverse();
  std::shared_ptr<TStoreVersion> now = std::move(FVersionNow);  // the writes below are no changes of their own
  RearrangeLogged(AMap, AMover, change);
  FVersionNow = std::move(now);
}

/// ALog, if not null, learns what the way back needs beside the map.
void TCellStore::RearrangeLogged(const TLineMap& AMap, IFormulaMover& AMover, TStoreChange* ALog) {
  const bool moves = !AMap.IsIdentity();
  if (moves) {
    DropSideResults(ALog);
    DropLines(AMap, ALog);
  }
  const bool isRewritten = MoveFormulas(AMap, AMover, ALog);
  if (isRewritten || (moves && FFormulaCount != 0)) ++FFormulaVersion;
  if (!moves) return;
  if (AMap.Axis == saRows) {
    for (int32_t col = 1; col <= ColumnLimit(); ++col) RepackColumn(col, AMap);
  } else {
    MoveColumns(AMap);
  }
  MoveExtras(AMap);
  FClearedAt = ++FVersion;
}

/// Cached results of cells that are no formulas, and the charts of sparklines.
void TCellStore::DropSideResults(TStoreChange* ALog) {
  std::vector<uint64_t> keys;
  for (const auto& [key, extras] : FExtras) {
    if (HasSideResult(extras)) keys.push_back(key);
  }
  for (const uint64_t key : keys) {
    const auto col = static_cast<int32_t>(key >> 32);
    const auto row = static_cast<int32_t>(key & 0xFFFFFFFFu);
    const TCell old = Get(col, row);
    if (ALog && old.Value.Kind != cvkFormula) ALog->NoteCell(*this, col, row);
    if (old.Value.Kind == cvkFormula) {
      ClearSparkline(col, row);
    } else {
      TCell cell = old;
      cell.ClearCachedResult();
      Set(col, row, cell);
    }
  }
}

/// Takes the chart of a formula's sparkline away; what else it holds stays.
void TCellStore::ClearSparkline(int32_t ACol, int32_t ARow) {
  const auto found = FExtras.find(ExtrasKey(ACol, ARow));
  if (found == FExtras.end() || !found->second.Sparkline) return;
  TCellExtras& extras = found->second;
  extras.Sparkline->Kind = spkNone;
  extras.Sparkline->Values.clear();
  if (*extras.Sparkline != TSparklineData{}) return;
  extras.Sparkline.reset();
  const TPlace place = Open(ACol, ARow);
  Record(place.Slot->Record).Flags &= static_cast<uint8_t>(~TFormulaRecord::frSparkline);
  if (extras.Override || extras.Runs) return;
  FExtras.erase(found);
  place.Slot->Flags &= static_cast<uint8_t>(~TCellSlot::sfExtras);
}

void TCellStore::ClearResult(int32_t ACol, int32_t ARow) {
  TFormulaRecord* const record = FindRecord(ACol, ARow);
  if (!record) return;
  if ((record->Flags & TFormulaRecord::frSparkline) != 0) {
    ClearSparkline(ACol, ARow);
    Touch(ACol);
  }
  if (record->HasCached()) ClearCached(ACol, *record);
}

void TCellStore::ClearResults() {
  if (FFormulaCount == 0) return;
  ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
    if (ASlot.Kind == cvkFormula) ClearResult(ACol, ARow);
  });
}

void TCellStore::DropLines(const TLineMap& AMap, TStoreChange* ALog) {
  std::vector<TCellAddress> places;
  const auto note = [&](int32_t ACol, int32_t ARow, const TCellSlot&) { places.push_back({ACol, ARow}); };
  for (const TLineStretch& gone : AMap.Gone()) {
    if (AMap.Axis == saRows) {
      ForEachByRow({1, gone.First, kMaxCol, gone.Last}, note);
    } else {
      ForEachByRow({gone.First, 1, gone.Last, kMaxRow}, note);
    }
  }
  for (auto place = places.rbegin(); place != places.rend(); ++place) {  // from below: nothing has to close up
    if (ALog) ALog->NoteCell(*this, place->Col, place->Row);
    Remove(place->Col, place->Row);
  }
}

/// Gives formulas the templates of their new places and drops the results of those that change, or of all when cells
/// move. True when a template has changed.
bool TCellStore::MoveFormulas(const TLineMap& AMap, IFormulaMover& AMover, TStoreChange* ALog) {
  const bool clearsAll = !AMap.IsIdentity();
  const bool rows = AMap.Axis == saRows;
  bool anyChanged = false;
  TLineWalk cols(AMap);
  for (int32_t col = 1; col <= ColumnLimit(); ++col) {
    const int32_t newCol = rows || TileLimit(col) == 0 ? col : cols.NewLine(col);
    TLineWalk lines(AMap);
    bool isTouched = false;
    const auto visit = [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
      if (ASlot.Kind != cvkFormula) return;
      TFormulaRecord& record = Record(ASlot.Record);
      TFormulaTemplate* const old = record.Template;
      TFormulaTemplate* const moved = AMover.Moved(old, ACol, ARow, newCol, rows ? lines.NewLine(ARow) : ARow);
      if (moved != old) {
        record.Template = moved;
        ALog ? ALog->NoteFormula(ACol, ARow, old) : FPool.Release(old);
        anyChanged = isTouched = true;
        if ((record.Flags & TFormulaRecord::frSparkline) != 0) ClearSparkline(ACol, ARow);
      } else if (!clearsAll) {
        return;
      }
      if (!record.HasCached()) return;
      ReleaseCached(record);
      record.Flags &= static_cast<uint8_t>(~TFormulaRecord::frHasCached);
      record.CachedKind = cvkEmpty;
      record.Number = 0;
      ++FUncachedCount;
      isTouched = true;
    };
    ForEachTile(col, [&](const TTile& ATile, int32_t AIndex) {
      if (ATile.FormulaCount != 0) VisitTile(ATile, col, AIndex, visit);
    });
    if (isTouched) Touch(col);
  }
  return anyChanged;
}

void TCellStore::MoveColumns(const TLineMap& AMap) {
  std::vector<TTileColumn> columns;
  for (const TLineStretch& stretch : AMap.Stretches) {
    const int32_t last = std::min(stretch.Last, ColumnLimit());
    for (int32_t col = stretch.First; col <= last; ++col) {
      TTileColumn& column = FColumns[static_cast<size_t>(col - 1)];
      if (column.TileLimit == 0) continue;
      const int32_t count = col + stretch.Distance();
      columns.resize(static_cast<size_t>(count));
      columns.back() = std::move(column);
      column = TTileColumn();
    }
  }
  // A column without tiles may still have a directory, which nothing but its own array holds.
  FColumns = std::move(columns);
}

/// Puts a tile that stands alone into a column's directory.
void TCellStore::LinkTile(int32_t ACol, int32_t ATileIndex, TTile* ATile) {
  const auto index = static_cast<uint32_t>(ATileIndex);
  TileLink(ACol, index) = ATile;
  TTileColumn& column = FColumns[static_cast<size_t>(ACol - 1)];
  column.Pages[index / kPageTiles]->Used |= 1u << (index % kPageTiles);
  column.TileLimit = std::max(column.TileLimit, ATileIndex + 1);
}

/// Builds a column's directory anew. Tiles that stay whole slide over, however far; the cells of all others are packed
/// into new ones in one pass.
void TCellStore::RepackColumn(int32_t ACol, const TLineMap& AMap) {
  const TLineStretch& head = AMap.Stretches.front();
  TTileColumn& column = FColumns[static_cast<size_t>(ACol - 1)];
  if (column.TileLimit == 0 || (head.Distance() == 0 && head.First == 1 && column.TileLimit * kTileRows <= head.Last))
    return;
  TTileColumn old = std::exchange(column, TTileColumn());
  column.Version = old.Version;
  TTileBuilder builder;
  const auto flush = [&] {
    if (builder.IsEmpty()) return;
    TTile* const tile = NewTile(builder.Capacity());
    builder.CopyTo(*tile);
    LinkTile(ACol, builder.Index(), tile);
    builder.Start(0);
  };
  for (const TLineStretch& stretch : AMap.Stretches) {
    const int32_t lastTile = std::min((stretch.Last - 1) / kTileRows, old.TileLimit - 1);
    for (int32_t index = (stretch.First - 1) / kTileRows; index <= lastTile; ++index) {
      TTilePage* const page = old.Pages[static_cast<uint32_t>(index / kPageTiles)];
      TTile* const tile = page ? page->Tiles[index % kPageTiles] : nullptr;
      if (!tile) continue;
      const int32_t top = index * kTileRows;  // 0-based row of the tile's first
      const int32_t last = std::min(stretch.Last - 1, top + kTileRows - 1);
      int32_t row = std::max(stretch.First - 1, top);
      if (stretch.Distance() % kTileRows == 0 && row == top && last == top + kTileRows - 1) {
        flush();
        LinkTile(ACol, index + stretch.Distance() / kTileRows, tile);
        page->Tiles[index % kPageTiles] = nullptr;
        continue;
      }
      while (row <= last) {
        const int32_t newRow = row + stretch.Distance();
        const int32_t newIndex = newRow / kTileRows;
        const int32_t end = std::min(last, (newIndex + 1) * kTileRows - 1 - stretch.Distance());
        if (builder.IsEmpty() || builder.Index() != newIndex) {
          flush();
          builder.Start(newIndex);
        }
        builder.Append(*tile, static_cast<uint32_t>(row - top), static_cast<uint32_t>(end - top),
                       static_cast<uint32_t>(newRow % kTileRows));
        row = end + 1;
      }
    }
  }
  flush();
  FreePages(old);
}

void TCellStore::MoveExtras(const TLineMap& AMap) {
  if (FExtras.empty()) return;
  decltype(FExtras) moved;
  moved.reserve(FExtras.size());
  for (auto& [key, extras] : FExtras) {
    auto col = static_cast<int32_t>(key >> 32);
    auto row = static_cast<int32_t>(key & 0xFFFFFFFFu);
    int32_t& line = AMap.Axis == saRows ? row : col;
    line = AMap.NewLine(line);
    moved.emplace(ExtrasKey(col, row), std::move(extras));
  }
  FExtras = std::move(moved);
}

}  // namespace tessarine::detail
