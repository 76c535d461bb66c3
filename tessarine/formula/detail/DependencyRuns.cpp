#include <tessarine/formula/detail/DependencyRuns.h>

#include <bit>

namespace tessarine::detail {

namespace {

TRowSpan Intersect(TRowSpan ARows, int64_t AFirst, int64_t ALast) {
  return {static_cast<int32_t>(std::max<int64_t>(ARows.First, AFirst)),
          static_cast<int32_t>(std::min<int64_t>(ARows.Last, ALast))};
}

/// The smallest number of bits whose power of two covers a length.
uint8_t BitsFor(int32_t ALength) {
  return static_cast<uint8_t>(std::bit_width(static_cast<uint32_t>(std::max(ALength, 1)) - 1));
}

}  // namespace

TRowSpan ReadersOf(const TPrecedentPattern& APattern, TRowSpan ARows, int32_t ALow, int32_t AHigh) {
  const int64_t low = ALow;
  const int64_t high = AHigh;
  if (APattern.RowRelative && APattern.Row2Relative) {
    const auto [top, bottom] = std::minmax(APattern.Row, APattern.Row2);
    return Intersect(ARows, low - bottom, high - top);
  }
  if (!APattern.RowRelative && !APattern.Row2Relative) {
    const auto [top, bottom] = std::minmax(APattern.Row, APattern.Row2);
    return top <= high && bottom >= low ? ARows : TRowSpan{};
  }
  const int64_t fixed = APattern.RowRelative ? APattern.Row2 : APattern.Row;
  const int64_t distance = APattern.RowRelative ? APattern.Row : APattern.Row2;
  if (fixed < low) return Intersect(ARows, low - distance, ARows.Last);
  if (fixed > high) return Intersect(ARows, ARows.First, high - distance);
  return ARows;
}

TCellRange TDependencyRuns::Influence(const TDependencyRun& ARun, const TPrecedentPattern& APattern) {
  const int32_t first = ARun.Rows.First;
  const int32_t last = ARun.Rows.Last;
  return {APattern.Col, std::min(APattern.Top(first), APattern.Top(last)), APattern.Col2,
          std::max(APattern.Bottom(first), APattern.Bottom(last))};
}

uint64_t TDependencyRuns::BucketKey(int32_t ASheet, uint8_t ARowBits, uint8_t AColBits, int32_t ARow, int32_t ACol) {
  // 19 bits of sheet, 5 and 4 of level, 21 of row and 15 of column.
  return (static_cast<uint64_t>(static_cast<uint32_t>(ASheet)) << 45) | (static_cast<uint64_t>(ARowBits) << 40) |
         (static_cast<uint64_t>(AColBits) << 36) |
         (static_cast<uint64_t>(static_cast<uint32_t>(ARow) >> ARowBits) << 15) |
         (static_cast<uint32_t>(ACol) >> AColBits);
}

TDependencyRuns::TLevel& TDependencyRuns::LevelOf(int32_t ASheet, uint8_t ARowBits, uint8_t AColBits) {
  for (TLevel& level : FLevels) {
    if (level.Sheet == ASheet && level.RowBits == ARowBits && level.ColBits == AColBits) return level;
  }
  return FLevels.emplace_back(TLevel{ASheet, ARowBits, AColBits, 0});
}

/// Calls AAction(level, bucket key, entry) for every bucket in which a pattern of the run belongs.
template <class TAction>
void TDependencyRuns::ForEachBucket(uint32_t ARun, TAction&& AAction) {
  const TDependencyRun& run = FRuns[ARun];
  for (uint32_t i = 0; i < run.Patterns->size(); ++i) {
    const TPrecedentPattern& pattern = (*run.Patterns)[i];
    const TCellRange area = Influence(run, pattern);
    const uint8_t rowBits = BitsFor(area.EndRow - area.StartRow + 1);
    const uint8_t colBits = BitsFor(area.EndCol - area.StartCol + 1);
    TLevel& level = LevelOf(pattern.Sheet, rowBits, colBits);
    bool first = true;
    for (int32_t row = area.StartRow >> rowBits; row <= area.EndRow >> rowBits; ++row) {
      for (int32_t col = area.StartCol >> colBits; col <= area.EndCol >> colBits; ++col) {
        AAction(level, BucketKey(pattern.Sheet, rowBits, colBits, row << rowBits, col << colBits), TEntry{ARun, i},
                first);
        first = false;
      }
    }
  }
}

uint32_t TDependencyRuns::Insert(TDependencyRun ARun) {
  uint32_t index = RunLimit();
  if (FFreeRuns.empty()) {
    FRuns.push_back(std::move(ARun));
  } else {
    index = FFreeRuns.back();
    FFreeRuns.pop_back();
    FRuns[index] = std::move(ARun);
  }
  const TDependencyRun& run = FRuns[index];
  TColumnRuns& column = FColumns[ColumnKey(run.Sheet, run.Col)];
  column.emplace_hint(column.end(), run.Rows.First, index);
  FEntryCount += run.Patterns->size();
  ForEachBucket(index, [this](TLevel& ALevel, uint64_t AKey, TEntry AEntry, bool AFirst) {
    ALevel.Count += AFirst ? 1 : 0;
    FBuckets[AKey].push_back(AEntry);
  });
  ++FVersion;
  return index;
}

void TDependencyRuns::Erase(uint32_t AIndex) {
  ForEachBucket(AIndex, [this](TLevel& ALevel, uint64_t AKey, TEntry AEntry, bool AFirst) {
    ALevel.Count -= AFirst ? 1 : 0;
    const auto found = FBuckets.find(AKey);
    TBucket& bucket = found->second;
    const auto place = std::find(bucket.begin(), bucket.end(), AEntry);
    *place = bucket.back();
    bucket.pop_back();
    if (bucket.empty()) FBuckets.erase(found);
  });
  TDependencyRun& run = FRuns[AIndex];
  FEntryCount -= run.Patterns->size();
  FColumns[ColumnKey(run.Sheet, run.Col)].erase(run.Rows.First);
  run = TDependencyRun{};
  FFreeRuns.push_back(AIndex);
  ++FVersion;
}

void TDependencyRuns::CutOut(int32_t ASheet, int32_t ACol, TRowSpan ARows) {
  const auto found = FColumns.find(ColumnKey(ASheet, ACol));
  if (found == FColumns.end() || found->second.empty()) return;
  const TColumnRuns& column = found->second;
  std::vector<uint32_t> touched;
  auto at = column.upper_bound(ARows.First);
  if (at != column.begin()) --at;
  for (; at != column.end() && at->first <= ARows.Last; ++at) {
    if (FRuns[at->second].Rows.Last >= ARows.First) touched.push_back(at->second);
  }
  for (const uint32_t index : touched) {
    const TDependencyRun old = FRuns[index];
    Erase(index);
    if (old.Rows.First < ARows.First) {
      TDependencyRun above = old;
      above.Rows.Last = ARows.First - 1;
      Insert(std::move(above));
    }
    if (old.Rows.Last > ARows.Last) {
      TDependencyRun below = old;
      below.Rows.First = ARows.Last + 1;
      below.Stamp += static_cast<uint64_t>(below.Rows.First - old.Rows.First);
      Insert(std::move(below));
    }
  }
}

void TDependencyRuns::Add(int32_t ASheet, int32_t ACol, TRowSpan ARows,
                          std::shared_ptr<const TPrecedentPatterns> APatterns) {
  CutOut(ASheet, ACol, ARows);
  const uint64_t stamp = FNextStamp;
  FNextStamp += static_cast<uint64_t>(ARows.Last - ARows.First) + 1;
  Insert({ASheet, ACol, ARows, stamp, std::move(APatterns)});
}

void TDependencyRuns::Remove(TCellId ACell) { CutOut(ACell.Sheet(), ACell.Col(), {ACell.Row(), ACell.Row()}); }

void TDependencyRuns::Clear() {
  FRuns.clear();
  FFreeRuns.clear();
  FColumns.clear();
  FBuckets.clear();
  FLevels.clear();
  FEntryCount = 0;
  ++FVersion;
}

uint32_t TDependencyRuns::FindRun(int32_t ASheet, int32_t ACol, int32_t ARow) const {
  const auto found = FColumns.find(ColumnKey(ASheet, ACol));
  if (found == FColumns.end()) return kNone;
  auto at = found->second.upper_bound(ARow);
  if (at == found->second.begin()) return kNone;
  --at;
  return FRuns[at->second].Rows.Last >= ARow ? at->second : kNone;
}

void TDependencyRuns::CollectEntries(int32_t ASheet, const TCellRange& ARange, std::vector<TEntry>& AEntries) const {
  uint64_t probes = 0;
  for (const TLevel& level : FLevels) {
    if (level.Sheet != ASheet || level.Count == 0) continue;
    probes += (static_cast<uint64_t>(ARange.EndRow >> level.RowBits) - (ARange.StartRow >> level.RowBits) + 1) *
              (static_cast<uint64_t>(ARange.EndCol >> level.ColBits) - (ARange.StartCol >> level.ColBits) + 1);
  }
  if (probes > FEntryCount) {  // asking every run is cheaper than looking at every square
    for (uint32_t run = 0; run < RunLimit(); ++run) {
      if (FRuns[run].Rows.IsEmpty()) continue;
      for (uint32_t i = 0; i < FRuns[run].Patterns->size(); ++i) AEntries.push_back({run, i});
    }
    return;
  }
  for (const TLevel& level : FLevels) {
    if (level.Sheet != ASheet || level.Count == 0) continue;
    for (int32_t row = ARange.StartRow >> level.RowBits; row <= ARange.EndRow >> level.RowBits; ++row) {
      for (int32_t col = ARange.StartCol >> level.ColBits; col <= ARange.EndCol >> level.ColBits; ++col) {
        const auto found =
            FBuckets.find(BucketKey(ASheet, level.RowBits, level.ColBits, row << level.RowBits, col << level.ColBits));
        if (found != FBuckets.end()) AEntries.insert(AEntries.end(), found->second.begin(), found->second.end());
      }
    }
  }
  std::sort(AEntries.begin(), AEntries.end());
  AEntries.erase(std::unique(AEntries.begin(), AEntries.end()), AEntries.end());
}

}  // namespace tessarine::detail
