#include <tessarine/formula/library/detail/ArgReading.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine::detail {

namespace {

/// The part of a view that is walked; all 1-based and inclusive.
struct TWalkArea {
  const TWorksheet& Sheet;
  const TCellStore& Store;
  int32_t FirstCol;
  int32_t LastCol;
  int32_t FirstRow;
  int32_t LastRow;
  int32_t ViewRow;  // the view's own first row, where index 0 lies

  int64_t IndexOf(int32_t ACol, int32_t ARow) const {
    return (int64_t{ARow} - ViewRow) * (int64_t{LastCol} - FirstCol + 1) + (ACol - FirstCol);
  }
};

TWalkArea AreaOf(const TFormulaArg& AView, int32_t AFirstRow, int32_t ARowCount) {
  const TWorksheet& sheet = *AView.ViewSheet();
  const int32_t first = AView.OriginRow + AFirstRow;
  return {sheet, sheet.Store(),         AView.OriginCol, AView.OriginCol + AView.ColCount - 1,
          first, first + ARowCount - 1, AView.OriginRow};
}

/// Collects what a walk finds and hands it on in batches.
template <class T>
class TBatch {
 public:
  explicit TBatch(TBatchSink<T> ASink) : FSink(ASink) {}

  bool Add(const T& AItem) {
    std::construct_at(Items() + FCount++, AItem);
    return FCount < kSize || Flush();
  }
  bool Flush() {
    if (FCount == 0) return true;
    const size_t count = FCount;
    FCount = 0;
    return FSink(std::span<const T>(Items(), count));
  }

 private:
  static constexpr size_t kSize = 256;
  static_assert(std::is_trivially_copyable_v<T>);

  T* Items() { return reinterpret_cast<T*>(FBytes); }

  TBatchSink<T> FSink;
  size_t FCount = 0;
  alignas(T) std::byte FBytes[kSize * sizeof(T)];  // raw: a walk over three cells must not pay for 256
};

/// Keeps the numbers of what is found.
class TNumberCollector {
 public:
  TNumberCollector(const TCellStore& AStore, TBatchSink<double> ASink) : FStore(AStore), FBatch(ASink) {}

  bool Slot(int64_t, const TCellSlot& ASlot) { return Slot(ASlot); }
  bool Slot(const TCellSlot& ASlot) {
    if (ASlot.Kind == cvkNumber) return FBatch.Add(ASlot.Number);
    if (ASlot.Kind != cvkFormula) return true;
    const TFormulaRecord& record = FStore.Record(ASlot.Record);
    return !record.HasCached() || record.CachedKind != cvkNumber || FBatch.Add(record.Number);
  }
  bool View(int64_t, const TValueView& AValue) { return AValue.Kind != cvkNumber || FBatch.Add(AValue.Number); }
  bool Flush() { return FBatch.Flush(); }

 private:
  const TCellStore& FStore;
  TBatch<double> FBatch;
};

/// Keeps all that is not blank, with its index.
class TValueCollector {
 public:
  TValueCollector(const TCellStore& AStore, TBatchSink<TIndexedValue> ASink) : FStore(AStore), FBatch(ASink) {}

  bool Slot(int64_t AIndex, const TCellSlot& ASlot) { return View(AIndex, FStore.EffectiveView(ASlot)); }
  bool View(int64_t AIndex, const TValueView& AValue) { return AValue.IsEmpty() || FBatch.Add({AIndex, AValue}); }
  bool Flush() { return FBatch.Flush(); }

 private:
  const TCellStore& FStore;
  TBatch<TIndexedValue> FBatch;
};

/// The rows of a tile that lie in an area, 0-based in the tile and inclusive.
struct TTileRows {
  uint32_t First;
  uint32_t Last;
};

TTileRows RowsInTile(int32_t ATileIndex, int32_t AFirstRow, int32_t ALastRow) {
  const int32_t base = ATileIndex * kTileRows + 1;
  return {static_cast<uint32_t>(std::max(AFirstRow - base, 0)),
          static_cast<uint32_t>(std::min(ALastRow - base, kTileRows - 1))};
}

size_t RankBehind(const TTile& ATile, uint32_t ARow) {
  return ARow + 1 == static_cast<uint32_t>(kTileRows) ? ATile.Count : ATile.Rank(ARow + 1);
}

/// The tiles of the area's first column downward: AVisit(const TTile&, int32_t tileIndex, TTileRows), which ends the
/// walk by false.
template <class TVisit>
bool WalkColumnTiles(const TWalkArea& AArea, TVisit&& AVisit) {
  const int32_t limit = std::min((AArea.LastRow - 1) / kTileRows + 1, AArea.Store.TileLimit(AArea.FirstCol));
  for (int32_t index = (AArea.FirstRow - 1) / kTileRows; index < limit; ++index) {
    const TTile* tile = AArea.Store.FindTile(AArea.FirstCol, index);
    if (tile && !AVisit(*tile, index, RowsInTile(index, AArea.FirstRow, AArea.LastRow))) return false;
  }
  return true;
}

/// One column without spilled values: the packed slots of each tile, one after the other. Only for collectors that
/// need no index.
bool WalkColumnNumbers(const TWalkArea& AArea, TNumberCollector& ACollector) {
  return WalkColumnTiles(AArea, [&](const TTile& ATile, int32_t, TTileRows ARows) {
    const TCellSlot* slot = ATile.Slots() + ATile.Rank(ARows.First);
    const TCellSlot* const end = ATile.Slots() + RankBehind(ATile, ARows.Last);
    for (; slot != end; ++slot) {
      if (!ACollector.Slot(*slot)) return false;
    }
    return true;
  });
}

/// The same for collectors that need the index. Unlike the strips, of which a column is a special case, it has no list
/// of columns to make.
bool WalkColumnValues(const TWalkArea& AArea, TValueCollector& ACollector) {
  return WalkColumnTiles(AArea, [&](const TTile& ATile, int32_t AIndex, TTileRows ARows) {
    const int64_t base = AArea.IndexOf(AArea.FirstCol, AIndex * kTileRows + 1);
    const TCellSlot* slot = ATile.Slots() + ATile.Rank(ARows.First);
    for (uint32_t word = ARows.First / 64; word <= ARows.Last / 64; ++word) {
      uint64_t bits = ATile.Occupied[word];
      if (word == ARows.First / 64) bits &= ~uint64_t{0} << (ARows.First % 64);
      if (word == ARows.Last / 64) bits &= ~uint64_t{0} >> (63 - ARows.Last % 64);
      for (; bits != 0; bits &= bits - 1) {
        if (!ACollector.Slot(base + word * 64 + std::countr_zero(bits), *slot++)) return false;
      }
    }
    return true;
  });
}

/// A column's tile in a strip of 256 rows and its next slot.
struct TTileCursor {
  int32_t Col;
  const TTile* Tile;
  const TCellSlot* Next;
};

/// Walks an area strip by strip: the columns that have a tile there side by side, each with a cursor.
class TStripWalk {
 public:
  explicit TStripWalk(const TWalkArea& AArea) : FArea(AArea) {
    const int32_t last = std::min(AArea.LastCol, AArea.Store.ColumnLimit());
    const int32_t firstTile = (AArea.FirstRow - 1) / kTileRows;
    for (int32_t col = AArea.FirstCol; col <= last; ++col) {
      const int32_t limit = AArea.Store.TileLimit(col);
      if (limit <= firstTile) continue;
      FColumns.push_back(col);
      FTileLimit = std::max(FTileLimit, limit);
    }
  }

  const std::vector<int32_t>& Columns() const { return FColumns; }
  int32_t TileLimit() const { return std::min(FTileLimit, (FArea.LastRow - 1) / kTileRows + 1); }

  template <class TCollector>
  bool Walk(TCollector& ACollector) {
    for (int32_t index = (FArea.FirstRow - 1) / kTileRows; index < TileLimit(); ++index) {
      if (!Strip(index, FArea.FirstRow, FArea.LastRow, ACollector)) return false;
    }
    return true;
  }

  /// The stored cells of the strip in these rows of the sheet.
  template <class TCollector>
  bool Strip(int32_t AIndex, int32_t AFirstRow, int32_t ALastRow, TCollector& ACollector) {
    const TTileRows rows = RowsInTile(AIndex, AFirstRow, ALastRow);
    uint64_t any[4] = {0, 0, 0, 0};
    FCursors.clear();
    for (const int32_t col : FColumns) {
      const TTile* tile = FArea.Store.FindTile(col, AIndex);
      if (!tile) continue;
      FCursors.push_back({col, tile, tile->Slots() + tile->Rank(rows.First)});
      for (size_t i = 0; i < 4; ++i) any[i] |= tile->Occupied[i];
    }
    if (FCursors.empty()) return true;
    for (uint32_t row = rows.First; row <= rows.Last; ++row) {
      if ((any[row >> 6] >> (row & 63)) == 0) {
        row |= 63;  // nothing more in this word
        continue;
      }
      if ((any[row >> 6] >> (row & 63) & 1) == 0) continue;
      const int64_t base = FArea.IndexOf(FArea.FirstCol, AIndex * kTileRows + static_cast<int32_t>(row) + 1);
      for (TTileCursor& cursor : FCursors) {
        if (cursor.Tile->Has(row) && !ACollector.Slot(base + (cursor.Col - FArea.FirstCol), *cursor.Next++))
          return false;
      }
    }
    return true;
  }

 private:
  const TWalkArea& FArea;
  std::vector<int32_t> FColumns;  // those that may have cells in the area
  int32_t FTileLimit = 0;
  std::vector<TTileCursor> FCursors;
};

/// Walks an area that spilled blocks reach into. Rows are taken in bands with the same blocks in all of them; a band
/// without a block is walked as stored cells, in the others every position that has a cell's column or a block is read.
class TSpilledWalk {
 public:
  TSpilledWalk(const TWalkArea& AArea, std::vector<const TSpillRange*> ABlocks)
      : FArea(AArea), FStrips(AArea), FBlocks(std::move(ABlocks)) {
    std::sort(FBlocks.begin(), FBlocks.end(),
              [](const TSpillRange* ALeft, const TSpillRange* ARight) { return ALeft->AnchorRow < ARight->AnchorRow; });
  }

  template <class TCollector>
  bool Walk(TCollector& ACollector) {
    size_t next = 0;
    for (int32_t row = FArea.FirstRow; row <= FArea.LastRow;) {
      std::erase_if(FActive, [&](const TSpillRange* ABlock) { return ABlock->EndRow < row; });
      for (; next < FBlocks.size() && FBlocks[next]->AnchorRow <= row; ++next) {
        if (FBlocks[next]->EndRow >= row) FActive.push_back(FBlocks[next]);
      }
      int32_t last = FArea.LastRow;
      if (next < FBlocks.size()) last = std::min(last, FBlocks[next]->AnchorRow - 1);
      for (const TSpillRange* block : FActive) last = std::min(last, block->EndRow);
      if (!Band(row, last, ACollector)) return false;
      row = last + 1;
    }
    return true;
  }

 private:
  struct TSpan {
    int32_t First;
    int32_t Last;
  };

  template <class TCollector>
  bool Band(int32_t AFirstRow, int32_t ALastRow, TCollector& ACollector) {
    if (FActive.empty()) {
      const int32_t limit = std::min(FStrips.TileLimit(), (ALastRow - 1) / kTileRows + 1);
      for (int32_t index = (AFirstRow - 1) / kTileRows; index < limit; ++index) {
        if (!FStrips.Strip(index, AFirstRow, ALastRow, ACollector)) return false;
      }
      return true;
    }
    FindSpans();
    for (int32_t row = AFirstRow; row <= ALastRow; ++row) {
      for (const TSpan& span : FSpans) {
        for (int32_t col = span.First; col <= span.Last; ++col) {
          if (!ACollector.View(FArea.IndexOf(col, row), FArea.Sheet.EffectiveView(col, row))) return false;
        }
      }
    }
    return true;
  }

  /// The columns of cells and active blocks inside the area, in order and without overlap.
  void FindSpans() {
    FSpans.clear();
    for (const int32_t col : FStrips.Columns()) FSpans.push_back({col, col});
    for (const TSpillRange* block : FActive) {
      FSpans.push_back({std::max(block->AnchorCol, FArea.FirstCol), std::min(block->EndCol, FArea.LastCol)});
    }
    std::sort(FSpans.begin(), FSpans.end(),
              [](const TSpan& ALeft, const TSpan& ARight) { return ALeft.First < ARight.First; });
    size_t kept = 0;
    for (size_t i = 1; i < FSpans.size(); ++i) {
      if (FSpans[i].First <= FSpans[kept].Last + 1) {
        FSpans[kept].Last = std::max(FSpans[kept].Last, FSpans[i].Last);
      } else {
        FSpans[++kept] = FSpans[i];
      }
    }
    FSpans.resize(kept + 1);
  }

  const TWalkArea& FArea;
  TStripWalk FStrips;
  std::vector<const TSpillRange*> FBlocks;  // by first row
  std::vector<const TSpillRange*> FActive;
  std::vector<TSpan> FSpans;
};

std::vector<const TSpillRange*> BlocksIn(const TWalkArea& AArea) {
  const TSpillMap& spills = AArea.Sheet.Spills();
  if (spills.IsEmpty()) return {};
  return spills.BlocksIn({AArea.FirstCol, AArea.FirstRow, AArea.LastCol, AArea.LastRow});
}

template <class TCollector>
bool WalkArea(const TWalkArea& AArea, std::vector<const TSpillRange*> ABlocks, TCollector& ACollector) {
  const bool ended =
      ABlocks.empty() ? TStripWalk(AArea).Walk(ACollector) : TSpilledWalk(AArea, std::move(ABlocks)).Walk(ACollector);
  return ended && ACollector.Flush();
}

}  // namespace

int64_t TruncateToInt64(double AValue) {
  constexpr double kEdge = 9223372036854775808.0;  // 2^63
  if (std::isnan(AValue)) return 0;
  if (AValue >= kEdge) return std::numeric_limits<int64_t>::max();
  if (AValue < -kEdge) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(AValue);
}

bool ArgAsInt64(const TFormulaArg& AArg, int64_t& ANumber) {
  double number = 0;
  const bool known = ArgAsNumber(AArg, number);
  ANumber = TruncateToInt64(number);
  return known;
}

TText ArgText(const TFormulaArg& AArg) {
  const TValueView value = AArg.FirstView();
  if (value.Kind == cvkText || value.Kind == cvkFormula) return TText::Share(value.Block);
  return TCellValue::FromView(value).ToDisplayString();
}

std::u16string_view ArgTextView(const TFormulaArg& AArg, std::u16string& ABuffer) {
  return DisplayView(AArg.FirstView(), ABuffer);
}

bool WalkViewValues(const TFormulaArg& AView, TBatchSink<TIndexedValue> ASink) {
  return WalkViewValues(AView, 0, AView.RowCount, ASink);
}

bool WalkViewValues(const TFormulaArg& AView, int32_t AFirstRow, int32_t ARowCount, TBatchSink<TIndexedValue> ASink) {
  if (ARowCount <= 0 || AView.CellCount() <= 0) return true;
  const TWalkArea area = AreaOf(AView, AFirstRow, ARowCount);
  TValueCollector collector(area.Store, ASink);
  std::vector<const TSpillRange*> blocks = BlocksIn(area);
  if (AView.ColCount == 1 && blocks.empty()) return WalkColumnValues(area, collector) && collector.Flush();
  return WalkArea(area, std::move(blocks), collector);
}

bool WalkViewNumbers(const TFormulaArg& AView, TBatchSink<double> ASink) {
  if (AView.CellCount() <= 0) return true;
  const TWalkArea area = AreaOf(AView, 0, AView.RowCount);
  TNumberCollector collector(area.Store, ASink);
  std::vector<const TSpillRange*> blocks = BlocksIn(area);
  if (AView.ColCount == 1 && blocks.empty()) return WalkColumnNumbers(area, collector) && collector.Flush();
  return WalkArea(area, std::move(blocks), collector);
}

bool WalkViewNumbersPlain(const TFormulaArg& AView, TBatchSink<double> ASink) {
  for (int64_t index = 0; index < AView.CellCount(); ++index) {
    const TValueView value = AView.ViewAt(index);
    if (value.Kind == cvkNumber && !ASink(std::span<const double>(&value.Number, 1))) return false;
  }
  return true;
}

int64_t CountValues(TFormulaArgs AArgs) {
  int64_t count = 0;
  for (const TFormulaArg& arg : AArgs) count += arg.IsRange ? arg.CellCount() : 1;
  return count;
}

TBlankCount CountBlanks(TFormulaArgs AArgs) {
  int64_t found = 0;
  int64_t emptyTexts = 0;
  for (const TFormulaArg& arg : AArgs) {
    ForEachNonBlank(arg, [&](int64_t, const TValueView& AValue) {
      ++found;
      emptyTexts += AValue.Kind == cvkText && !AValue.Block ? 1 : 0;
    });
  }
  return {.Blanks = CountValues(AArgs) - found, .EmptyTexts = emptyTexts, .Others = found - emptyTexts};
}

bool ReadNumberLanes(const TFormulaArg& ARange, int32_t AFirstRow, int32_t ARowCount, std::span<double> ALanes) {
  const int64_t base = int64_t{AFirstRow} * ARange.ColCount;
  if (!ARange.IsView()) {
    for (size_t i = 0; i < ALanes.size(); ++i) AsNumber(ARange.ViewAt(base + static_cast<int64_t>(i)), ALanes[i]);
    return true;
  }
  bool found = false;
  std::fill(ALanes.begin(), ALanes.end(), 0.0);
  WalkViewValues(ARange, AFirstRow, ARowCount, [&](std::span<const TIndexedValue> AValues) {
    found = true;
    for (const TIndexedValue& item : AValues) AsNumber(item.Value, ALanes[static_cast<size_t>(item.Index - base)]);
    return true;
  });
  return found;
}

}  // namespace tessarine::detail
