#include <tessarine/formula/DependencyGraph.h>

#include <algorithm>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/formula/detail/DependencyRuns.h>
#include <tessarine/formula/detail/GraphAccess.h>

namespace tessarine {

struct TFormulaDependencyGraph::TRuns : detail::TDependencyRuns {};

detail::TDependencyRuns& detail::RunsOf(TFormulaDependencyGraph& AGraph) { return AGraph.Runs(); }

namespace {

/// Stamps in rising order belong to cells in the order of their registration.
struct TStampSpan {
  uint64_t First;
  uint64_t Last;
  uint32_t Run;
};

}  // namespace

TFormulaDependencyGraph::TFormulaDependencyGraph() : FRuns(std::make_unique<TRuns>()) {}
TFormulaDependencyGraph::~TFormulaDependencyGraph() = default;

void TFormulaDependencyGraph::SetDependencies(TCellId ACell, std::span<const TCellId> APrecedents) {
  auto patterns = std::make_shared<detail::TPrecedentPatterns>();
  for (const TCellId id : APrecedents) patterns->push_back({id.Sheet(), id.Col(), id.Col(), id.Row(), id.Row()});
  FRuns->Add(ACell.Sheet(), ACell.Col(), {ACell.Row(), ACell.Row()}, std::move(patterns));
}

void TFormulaDependencyGraph::ClearCell(TCellId ACell) { FRuns->Remove(ACell); }

void TFormulaDependencyGraph::Clear() { FRuns->Clear(); }

void TFormulaDependencyGraph::GetDependents(TCellId ACell, std::vector<TCellId>& AList) const {
  const int32_t col = ACell.Col();
  const int32_t row = ACell.Row();
  if (col > kMaxCol || row > kMaxRow) return;  // nothing refers past the sheet's edge
  std::vector<TStampSpan> spans;
  FRuns->ForEachReader(ACell.Sheet(), {col, row, col, row},
                       [&](uint32_t ARun, const detail::TPrecedentPattern&, detail::TRowSpan ARows) {
                         const detail::TDependencyRun& run = FRuns->Run(ARun);
                         const auto stamp = [&run](int32_t ARow) {
                           return run.Stamp + static_cast<uint64_t>(ARow - run.Rows.First);
                         };
                         spans.push_back({stamp(ARows.First), stamp(ARows.Last), ARun});
                       });
  std::sort(spans.begin(), spans.end(),
            [](const TStampSpan& ALeft, const TStampSpan& ARight) { return ALeft.First < ARight.First; });
  uint64_t next = 0;  // stamps below it are in the list
  for (const TStampSpan& span : spans) {
    const detail::TDependencyRun& run = FRuns->Run(span.Run);
    for (uint64_t stamp = std::max(next, span.First); stamp <= span.Last; ++stamp) {
      AList.push_back(TCellId::Of(run.Sheet, run.Col, run.Rows.First + static_cast<int32_t>(stamp - run.Stamp)));
    }
    next = std::max(next, span.Last + 1);
  }
}

void TFormulaDependencyGraph::CollectTransitiveDependents(TCellId ACell, std::vector<TCellId>& AList) const {
  boost::unordered_flat_map<uint64_t, bool> seen;
  seen.emplace(ACell.Packed, true);
  std::vector<TCellId> queue{ACell};
  std::vector<TCellId> dependents;
  for (size_t at = 0; at < queue.size(); ++at) {
    dependents.clear();
    GetDependents(queue[at], dependents);
    for (const TCellId id : dependents) {
      if (!seen.emplace(id.Packed, true).second) continue;
      AList.push_back(id);
      queue.push_back(id);
    }
  }
}

void TFormulaDependencyGraph::TopologicalOrder(std::span<const TCellId> ACells, std::vector<TCellId>* ACycles,
                                               std::vector<TCellId>& AOrder) const {
  boost::unordered_flat_map<uint64_t, uint32_t> waitingFor;  // cell -> precedents among ACells that are still to come
  waitingFor.reserve(ACells.size());
  for (const TCellId id : ACells) waitingFor.emplace(id.Packed, 0);
  std::vector<TCellId> dependents;
  for (const auto& [packed, count] : waitingFor) {
    dependents.clear();
    GetDependents({packed}, dependents);
    for (const TCellId id : dependents) {
      if (const auto found = waitingFor.find(id.Packed); found != waitingFor.end()) ++found->second;
    }
  }
  constexpr uint32_t kDone = 0xFFFFFFFFu;
  AOrder.clear();
  AOrder.reserve(ACells.size());
  for (const TCellId id : ACells) {
    uint32_t& count = waitingFor.find(id.Packed)->second;
    if (count != 0) continue;
    count = kDone;  // a cell that is given twice is ordered once
    AOrder.push_back(id);
  }
  for (size_t at = 0; at < AOrder.size(); ++at) {
    dependents.clear();
    GetDependents(AOrder[at], dependents);
    for (const TCellId id : dependents) {
      const auto found = waitingFor.find(id.Packed);
      if (found == waitingFor.end() || found->second == kDone || --found->second != 0) continue;
      found->second = kDone;
      AOrder.push_back(id);
    }
  }
  if (!ACycles) return;
  ACycles->clear();
  for (const TCellId id : ACells) {
    if (waitingFor.find(id.Packed)->second != kDone) ACycles->push_back(id);
  }
}

}  // namespace tessarine
