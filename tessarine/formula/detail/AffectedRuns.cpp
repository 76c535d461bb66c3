#include <tessarine/formula/detail/AffectedRuns.h>

#include <algorithm>
#include <limits>
#include <numeric>

namespace tessarine::detail {

namespace {

constexpr size_t kMaxSteps = 4'000'000;  // beyond it cells are taken one by one
constexpr size_t kMaxGroup = 64;         // runs that read each other, likewise

uint64_t LinkKey(uint32_t ARead, uint32_t AReader) { return (static_cast<uint64_t>(ARead) << 32) | AReader; }

/// Which of the columns that hold formulas lie in what formulas read. Most workbooks read few of them, so that most
/// runs need no search for their readers.
class TReadColumns {
 public:
  explicit TReadColumns(const TDependencyRuns& ARuns) {
    for (uint32_t i = 0; i < ARuns.RunLimit(); ++i) {
      const TDependencyRun& run = ARuns.Run(i);
      const uint64_t column = KeyOf(run.Sheet, run.Col);
      if (!run.Rows.IsEmpty() && (FColumns.empty() || FColumns.back() != column)) FColumns.push_back(column);
    }
    std::sort(FColumns.begin(), FColumns.end());
    FColumns.erase(std::unique(FColumns.begin(), FColumns.end()), FColumns.end());
    FReads.resize(FColumns.size() + 1);
    for (uint32_t i = 0; i < ARuns.RunLimit(); ++i) {
      const TDependencyRun& run = ARuns.Run(i);
      if (run.Rows.IsEmpty()) continue;
      for (const TPrecedentPattern& pattern : *run.Patterns) {
        ++FReads[PlaceOf(pattern.Sheet, pattern.Col)];
        --FReads[PlaceOf(pattern.Sheet, pattern.Col2 + 1)];
      }
    }
    std::partial_sum(FReads.begin(), FReads.end(), FReads.begin());
  }

  /// For a column that holds formulas.
  bool IsRead(int32_t ASheet, int32_t ACol) const { return FReads[PlaceOf(ASheet, ACol)] != 0; }

 private:
  static uint64_t KeyOf(int32_t ASheet, int32_t ACol) {
    return (static_cast<uint64_t>(static_cast<uint32_t>(ASheet)) << 32) | static_cast<uint32_t>(ACol);
  }
  /// The first column with formulas that is this one or behind it.
  size_t PlaceOf(int32_t ASheet, int32_t ACol) const {
    const uint64_t key = KeyOf(ASheet, ACol);
    return static_cast<size_t>(std::lower_bound(FColumns.begin(), FColumns.end(), key) - FColumns.begin());
  }

  std::vector<uint64_t> FColumns;  // sorted
  std::vector<int64_t> FReads;     // patterns that hold the column
};

}  // namespace

void TRowSet::Add(TRowSpan ARows, std::vector<TRowSpan>& AAdded) {
  // The first span that could touch the new rows: it ends at the row before them, or later.
  auto first = std::lower_bound(FSpans.begin(), FSpans.end(), ARows.First,
                                [](const TRowSpan& ASpan, int32_t ARow) { return ASpan.Last < ARow - 1; });
  TRowSpan merged = ARows;
  int32_t next = ARows.First;  // rows of ARows below it are dealt with
  auto last = first;
  for (; last != FSpans.end() && last->First <= ARows.Last + 1; ++last) {
    if (next < last->First) AAdded.push_back({next, std::min(last->First - 1, ARows.Last)});
    next = std::max(next, last->Last + 1);
    merged.First = std::min(merged.First, last->First);
    merged.Last = std::max(merged.Last, last->Last);
  }
  if (next <= ARows.Last) AAdded.push_back({next, ARows.Last});
  if (first == last) {
    FSpans.insert(first, merged);
  } else {
    *first = merged;
    FSpans.erase(first + 1, last);
  }
}

bool TAffectedRuns::Add(uint32_t ARun, TRowSpan ARows) {
  std::vector<TArea> pending;
  Reach(ARun, ARows, pending);
  return Spread(pending);
}

bool TAffectedRuns::AddReaders(TCellId ACell) {
  std::vector<TArea> pending{{TDependencyRuns::kNone, ACell.Sheet(), ACell.Col(), {ACell.Row(), ACell.Row()}}};
  return Spread(pending);
}

bool TAffectedRuns::AddAll() {
  FHasAll = true;
  const TReadColumns columns(FRuns);
  bool isDone = true;
  ForEachRun([&](uint32_t ARun) {
    const TDependencyRun& run = FRuns.Run(ARun);
    if (!isDone || !columns.IsRead(run.Sheet, run.Col)) return;
    isDone = ++FSteps <= kMaxSteps;
    const TCellRange range{run.Col, run.Rows.First, run.Col, run.Rows.Last};
    FRuns.ForEachReader(run.Sheet, range, [&](uint32_t AReader, const TPrecedentPattern& APattern, TRowSpan) {
      NoteLink(ARun, AReader, APattern);
    });
  });
  return isDone;
}

std::span<const TRowSpan> TAffectedRuns::RowsOf(uint32_t ARun) const {
  if (FHasAll) return {&FRuns.Run(ARun).Rows, 1};
  return FRows.find(ARun)->second.Spans();
}

void TAffectedRuns::NoteLink(uint32_t ARead, uint32_t AReader, const TPrecedentPattern& APattern) {
  // Distances are linear in the row, so their extremes stand at the ends of the run.
  const TRowSpan& all = FRuns.Run(AReader).Rows;
  const int64_t least =
      std::min(int64_t{APattern.Top(all.First)} - all.First, int64_t{APattern.Top(all.Last)} - all.Last);
  const int64_t greatest =
      std::max(int64_t{APattern.Bottom(all.First)} - all.First, int64_t{APattern.Bottom(all.Last)} - all.Last);
  const auto [place, isNew] = FLinks.try_emplace(LinkKey(ARead, AReader), TLink{least, greatest});
  if (isNew) return;
  place->second.Least = std::min(place->second.Least, least);
  place->second.Greatest = std::max(place->second.Greatest, greatest);
}

void TAffectedRuns::Reach(uint32_t ARun, TRowSpan ARows, std::vector<TArea>& APending) {
  const TDependencyRun& run = FRuns.Run(ARun);
  std::vector<TRowSpan> added;
  FRows[ARun].Add(ARows, added);
  for (const TRowSpan& rows : added) APending.push_back({ARun, run.Sheet, run.Col, rows});
}

bool TAffectedRuns::Spread(std::vector<TArea>& APending) {
  while (!APending.empty()) {
    if (++FSteps > kMaxSteps) return false;
    const TArea area = APending.back();
    APending.pop_back();
    const TCellRange range{area.Col, area.Rows.First, area.Col, area.Rows.Last};
    FRuns.ForEachReader(area.Sheet, range, [&](uint32_t AReader, const TPrecedentPattern& APattern, TRowSpan ARows) {
      const TRowSpan& all = FRuns.Run(AReader).Rows;
      if (area.Run != TDependencyRuns::kNone) NoteLink(area.Run, AReader, APattern);
      // A run whose rows read the row next to them is reached to its end at once.
      if (AReader == area.Run && APattern.RowRelative && APattern.Row2Relative) {
        if (std::max(APattern.Row, APattern.Row2) == -1) ARows.Last = all.Last;
        if (std::min(APattern.Row, APattern.Row2) == 1) ARows.First = all.First;
      }
      Reach(AReader, ARows, APending);
    });
  }
  return true;
}

namespace {

/// Strongly connected components by Tarjan's method (1972), without recursion. Components come out with those that
/// read nothing of the others last, so the caller reverses.
class TComponents {
 public:
  TComponents(size_t ANodeCount, const std::vector<std::vector<uint32_t>>& AReaders)
      : FReaders(AReaders), FIndex(ANodeCount, 0), FLow(ANodeCount, 0), FOnStack(ANodeCount, false) {
    for (uint32_t node = 0; node < ANodeCount; ++node) {
      if (FIndex[node] == 0) Walk(node);
    }
  }
  std::vector<std::vector<uint32_t>> Found;

 private:
  struct TFrame {
    uint32_t Node;
    size_t Next;
  };

  void Enter(uint32_t ANode) {
    FIndex[ANode] = FLow[ANode] = ++FCounter;
    FStack.push_back(ANode);
    FOnStack[ANode] = true;
    FFrames.push_back({ANode, 0});
  }

  void Walk(uint32_t ARoot) {
    Enter(ARoot);
    while (!FFrames.empty()) {
      TFrame& frame = FFrames.back();
      const uint32_t node = frame.Node;
      if (frame.Next < FReaders[node].size()) {
        const uint32_t reader = FReaders[node][frame.Next++];
        if (FIndex[reader] == 0) {
          Enter(reader);
        } else if (FOnStack[reader]) {
          FLow[node] = std::min(FLow[node], FIndex[reader]);
        }
        continue;
      }
      FFrames.pop_back();
      if (!FFrames.empty()) FLow[FFrames.back().Node] = std::min(FLow[FFrames.back().Node], FLow[node]);
      if (FLow[node] == FIndex[node]) Close(node);
    }
  }

  void Close(uint32_t ANode) {
    std::vector<uint32_t>& component = Found.emplace_back();
    uint32_t member;
    do {
      member = FStack.back();
      FStack.pop_back();
      FOnStack[member] = false;
      component.push_back(member);
    } while (member != ANode);
  }

  const std::vector<std::vector<uint32_t>>& FReaders;
  std::vector<uint32_t> FIndex;
  std::vector<uint32_t> FLow;
  std::vector<bool> FOnStack;
  std::vector<uint32_t> FStack;
  std::vector<TFrame> FFrames;
  uint32_t FCounter = 0;
};

}  // namespace

bool TAffectedRuns::Order(std::vector<TRunGroup>& AGroups) const {
  std::vector<uint32_t> runs;
  ForEachRun([&runs](uint32_t ARun) { runs.push_back(ARun); });
  const auto isEarlier = [this](uint32_t ALeft, uint32_t ARight) {
    return FRuns.Run(ALeft).Stamp < FRuns.Run(ARight).Stamp;
  };
  if (!std::is_sorted(runs.begin(), runs.end(), isEarlier)) std::sort(runs.begin(), runs.end(), isEarlier);
  if (FLinks.empty()) {  // each run is a component, as below
    AGroups.resize(runs.size());
    for (TRunGroup& group : AGroups) {
      group.Runs.push_back(runs.back());
      runs.pop_back();
    }
    return true;
  }
  boost::unordered_flat_map<uint32_t, uint32_t> nodes;
  nodes.reserve(runs.size());
  for (uint32_t i = 0; i < runs.size(); ++i) nodes.emplace(runs[i], i);
  std::vector<std::vector<uint32_t>> readers(runs.size());
  for (const auto& [key, link] : FLinks)
    readers[nodes.find(static_cast<uint32_t>(key >> 32))->second].push_back(
        nodes.find(static_cast<uint32_t>(key))->second);
  for (std::vector<uint32_t>& list : readers) std::sort(list.begin(), list.end());

  TComponents components(runs.size(), readers);
  for (auto component = components.Found.rbegin(); component != components.Found.rend(); ++component) {
    for (uint32_t& node : *component) node = runs[node];
    if (!OrderGroup(*component, AGroups.emplace_back())) return false;
  }
  return true;
}

/// Finds the direction in which the rows of a group can be taken, and the order of its runs within one row.
bool TAffectedRuns::OrderGroup(const std::vector<uint32_t>& ARuns, TRunGroup& AGroup) const {
  if (ARuns.size() > kMaxGroup) return false;
  int64_t least = std::numeric_limits<int64_t>::max();
  int64_t greatest = std::numeric_limits<int64_t>::min();
  std::vector<std::pair<uint32_t, uint32_t>> sameRow;  // read run, reading run
  for (const uint32_t read : ARuns) {
    for (const uint32_t reader : ARuns) {
      const auto link = FLinks.find(LinkKey(read, reader));
      if (link == FLinks.end()) continue;
      least = std::min(least, link->second.Least);
      greatest = std::max(greatest, link->second.Greatest);
      if (link->second.Least <= 0 && link->second.Greatest >= 0) sameRow.emplace_back(read, reader);
    }
  }
  if (least > greatest) {  // a run that reads nothing of the group
    AGroup.Runs.assign(ARuns.begin(), ARuns.end());
    return true;
  }
  if (greatest <= 0) {
    AGroup.Direction = TRunGroup::TDirection::diDown;
  } else if (least >= 0) {
    AGroup.Direction = TRunGroup::TDirection::diUp;
  } else {
    return false;
  }
  std::vector<uint32_t> open = ARuns;
  while (!open.empty()) {
    const auto free = std::find_if(open.begin(), open.end(), [&](uint32_t ARun) {
      return std::none_of(sameRow.begin(), sameRow.end(), [ARun](const auto& APair) { return APair.second == ARun; });
    });
    if (free == open.end()) return false;
    std::erase_if(sameRow, [run = *free](const auto& APair) { return APair.first == run; });
    AGroup.Runs.push_back(*free);
    open.erase(free);
  }
  return true;
}

}  // namespace tessarine::detail
