#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <boost/container/small_vector.hpp>
#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/formula/detail/DependencyRuns.h>

namespace tessarine::detail {

/// A set of rows as sorted spans that neither touch nor overlap.
class TRowSet {
 public:
  /// Adds rows and appends those that were not in the set to AAdded.
  void Add(TRowSpan ARows, std::vector<TRowSpan>& AAdded);
  const std::vector<TRowSpan>& Spans() const { return FSpans; }

 private:
  std::vector<TRowSpan> FSpans;
};

/// Runs that are evaluated together, row by row, because they read each other; most often a single run.
struct TRunGroup {
  enum class TDirection : uint8_t { diAny, diDown, diUp };  // diDown: a row reads rows above it, so go downward

  boost::container::small_vector<uint32_t, 2> Runs;  // in the order within one row
  TDirection Direction = TDirection::diAny;
};

/// What a change reaches, by runs, and the order in which runs can be evaluated.
class TAffectedRuns {
 public:
  explicit TAffectedRuns(const TDependencyRuns& ARuns) : FRuns(ARuns) {}

  /// Adds rows of a run and all that depends on them. False when the cells are too entangled for runs; the object is
  /// then of no use any more.
  [[nodiscard]] bool Add(uint32_t ARun, TRowSpan ARows);

  /// Adds all that depends on a cell which is in no run.
  [[nodiscard]] bool AddReaders(TCellId ACell);

  /// Adds all rows of all runs to an object to which nothing was added yet; equal to Add for each run.
  [[nodiscard]] bool AddAll();

  /// Orders the groups, precedents first. False when runs read each other in both directions.
  [[nodiscard]] bool Order(std::vector<TRunGroup>& AGroups) const;

  /// The spans of a run that was reached, downward.
  std::span<const TRowSpan> RowsOf(uint32_t ARun) const;

  /// Every run that was reached, in no order: AVisit(run index).
  template <class TVisit>
  void ForEachRun(TVisit&& AVisit) const;

 private:
  struct TArea {
    uint32_t Run;  // kNone for a cell outside all runs
    int32_t Sheet;
    int32_t Col;
    TRowSpan Rows;
  };
  /// That one run reads another: the least and the greatest distance from a reading row to a row it reads.
  struct TLink {
    int64_t Least;
    int64_t Greatest;
  };

  bool Spread(std::vector<TArea>& APending);
  void Reach(uint32_t ARun, TRowSpan ARows, std::vector<TArea>& APending);
  void NoteLink(uint32_t ARead, uint32_t AReader, const TPrecedentPattern& APattern);
  bool OrderGroup(const std::vector<uint32_t>& ARuns, TRunGroup& AGroup) const;

  const TDependencyRuns& FRuns;
  bool FHasAll = false;  // every run with all its rows; FRows is empty then
  boost::unordered_flat_map<uint32_t, TRowSet> FRows;
  boost::unordered_flat_map<uint64_t, TLink> FLinks;  // read run << 32 | reading run
  size_t FSteps = 0;
};

template <class TVisit>
void TAffectedRuns::ForEachRun(TVisit&& AVisit) const {
  for (const auto& [run, rows] : FRows) AVisit(run);
  for (uint32_t run = 0; FHasAll && run < FRuns.RunLimit(); ++run) {
    if (!FRuns.Run(run).Rows.IsEmpty()) AVisit(run);
  }
}

}  // namespace tessarine::detail
