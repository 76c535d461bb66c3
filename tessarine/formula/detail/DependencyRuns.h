#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include <boost/container/small_vector.hpp>
#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/Address.h>
#include <tessarine/formula/CellId.h>

namespace tessarine::detail {

/// A rectangle that the formulas of one column read, as a function of the formula's row. Columns are settled, since
/// a run lies in one column; each of the two rows is a row itself or a distance from the formula's row.
struct TPrecedentPattern {
  int32_t Sheet = 0;
  int32_t Col = 0;  // ordered
  int32_t Col2 = 0;
  int32_t Row = 0;  // as written: not ordered
  int32_t Row2 = 0;
  bool RowRelative = false;
  bool Row2Relative = false;

  int32_t First(int32_t ARow) const { return RowRelative ? Row + ARow : Row; }
  int32_t Second(int32_t ARow) const { return Row2Relative ? Row2 + ARow : Row2; }
  int32_t Top(int32_t ARow) const { return std::min(First(ARow), Second(ARow)); }
  int32_t Bottom(int32_t ARow) const { return std::max(First(ARow), Second(ARow)); }

  friend bool operator==(const TPrecedentPattern&, const TPrecedentPattern&) = default;
};
using TPrecedentPatterns = std::vector<TPrecedentPattern>;

/// Rows of one column, both ends included; empty when Last < First.
struct TRowSpan {
  int32_t First = 1;
  int32_t Last = 0;
  bool IsEmpty() const { return Last < First; }
  friend bool operator==(const TRowSpan&, const TRowSpan&) = default;
};

/// The formula rows inside ARows whose rectangle under APattern meets the rows ALow to AHigh. One span in all cases:
/// with one fixed and one moving end the rectangle only grows in one direction.
TRowSpan ReadersOf(const TPrecedentPattern& APattern, TRowSpan ARows, int32_t ALow, int32_t AHigh);

/// Registered formulas of one column with the same precedents but for their rows.
struct TDependencyRun {
  int32_t Sheet = 0;
  int32_t Col = 0;
  TRowSpan Rows;
  uint64_t Stamp = 0;  // of the first row; each further row has the next one
  std::shared_ptr<const TPrecedentPatterns> Patterns;
};

/// The edges of the dependency graph: runs, and an index from cells to the runs that read them.
///
/// Invariants:
/// 1. Every registered cell lies in exactly one run; stamps are unique and rise with each registration.
/// 2. Each pattern of each run stands in the index under its influence: the union of its rectangles over the run.
///    The index is a grid for each pair of powers of two (height, width); an influence stands in at most four buckets
///    of the grid whose squares are at least as large as itself.
class TDependencyRuns {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFFu;

  /// Registers rows of a column as one run with rising stamps; earlier registrations of these cells are replaced.
  void Add(int32_t ASheet, int32_t ACol, TRowSpan ARows, std::shared_ptr<const TPrecedentPatterns> APatterns);
  void Remove(TCellId ACell);
  void Clear();

  /// The run that holds a cell, or kNone.
  uint32_t FindRun(int32_t ASheet, int32_t ACol, int32_t ARow) const;
  const TDependencyRun& Run(uint32_t AIndex) const { return FRuns[AIndex]; }
  /// Run indexes are below this; free ones have empty rows.
  uint32_t RunLimit() const { return static_cast<uint32_t>(FRuns.size()); }

  /// Readers of a rectangle: AVisit(run index, pattern, rows of the run). A run may be visited several times.
  template <class TVisit>
  void ForEachReader(int32_t ASheet, const TCellRange& ARange, TVisit&& AVisit) const;

  /// Raised by every change of the edges.
  uint64_t Version() const { return FVersion; }

 private:
  struct TEntry {
    uint32_t Run;
    uint32_t Pattern;
    friend auto operator<=>(const TEntry&, const TEntry&) = default;  // NOLINT(modernize-use-nullptr)
  };
  struct TLevel {
    int32_t Sheet;
    uint8_t RowBits;
    uint8_t ColBits;
    uint32_t Count;  // entries of this level, each counted once
  };
  using TBucket = boost::container::small_vector<TEntry, 2>;
  using TColumnRuns = std::map<int32_t, uint32_t>;  // first row -> run

  static TCellRange Influence(const TDependencyRun& ARun, const TPrecedentPattern& APattern);
  static uint64_t BucketKey(int32_t ASheet, uint8_t ARowBits, uint8_t AColBits, int32_t ARow, int32_t ACol);
  static uint64_t ColumnKey(int32_t ASheet, int32_t ACol) {
    return (static_cast<uint64_t>(static_cast<uint32_t>(ASheet)) << 16) | static_cast<uint32_t>(ACol);
  }
  uint32_t Insert(TDependencyRun ARun);
  void Erase(uint32_t AIndex);
  void CutOut(int32_t ASheet, int32_t ACol, TRowSpan ARows);
  template <class TAction>
  void ForEachBucket(uint32_t ARun, TAction&& AAction);
  TLevel& LevelOf(int32_t ASheet, uint8_t ARowBits, uint8_t AColBits);
  void CollectEntries(int32_t ASheet, const TCellRange& ARange, std::vector<TEntry>& AEntries) const;

  std::vector<TDependencyRun> FRuns;
  std::vector<uint32_t> FFreeRuns;
  boost::unordered_flat_map<uint64_t, TColumnRuns> FColumns;
  boost::unordered_flat_map<uint64_t, TBucket> FBuckets;
  std::vector<TLevel> FLevels;
  size_t FEntryCount = 0;
  uint64_t FNextStamp = 1;
  uint64_t FVersion = 1;
};

template <class TVisit>
void TDependencyRuns::ForEachReader(int32_t ASheet, const TCellRange& ARange, TVisit&& AVisit) const {
  const auto visit = [&](const TEntry& AEntry) {
    const TDependencyRun& run = FRuns[AEntry.Run];
    const TPrecedentPattern& pattern = (*run.Patterns)[AEntry.Pattern];
    if (pattern.Sheet != ASheet || pattern.Col > ARange.EndCol || pattern.Col2 < ARange.StartCol) return;
    const TRowSpan rows = ReadersOf(pattern, run.Rows, ARange.StartRow, ARange.EndRow);
    if (!rows.IsEmpty()) AVisit(AEntry.Run, pattern, rows);
  };
  if (ARange.StartCol == ARange.EndCol && ARange.StartRow == ARange.EndRow) {
    for (const TLevel& level : FLevels) {
      if (level.Sheet != ASheet || level.Count == 0) continue;
      const auto found =
          FBuckets.find(BucketKey(ASheet, level.RowBits, level.ColBits, ARange.StartRow, ARange.StartCol));
      if (found == FBuckets.end()) continue;
      for (const TEntry& entry : found->second) visit(entry);
    }
    return;
  }
  std::vector<TEntry> entries;
  CollectEntries(ASheet, ARange, entries);
  for (const TEntry& entry : entries) visit(entry);
}

}  // namespace tessarine::detail
