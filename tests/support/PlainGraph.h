#pragma once

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <span>
#include <vector>

#include <tessarine/formula/CellId.h>

namespace tessarine::test {

/// The dependency graph in its simplest form, one entry for each cell and precedent: what the real one is held against.
class TPlainGraph {
 public:
  void SetDependencies(TCellId ACell, std::span<const TCellId> APrecedents) {
    ClearCell(ACell);
    std::vector<TCellId>& list = FDependencies[ACell];
    for (const TCellId id : APrecedents) {
      if (std::find(list.begin(), list.end(), id) != list.end()) continue;
      list.push_back(id);
      FDependents[id].push_back(ACell);
    }
  }

  void ClearCell(TCellId ACell) {
    const auto found = FDependencies.find(ACell);
    if (found == FDependencies.end()) return;
    for (const TCellId id : found->second) std::erase(FDependents[id], ACell);
    FDependencies.erase(found);
  }

  std::vector<TCellId> GetDependents(TCellId ACell) const {
    const auto found = FDependents.find(ACell);
    return found == FDependents.end() ? std::vector<TCellId>() : found->second;
  }

  std::vector<TCellId> CollectTransitiveDependents(TCellId ACell) const {
    std::vector<TCellId> list;
    std::set<TCellId> seen{ACell};
    std::deque<TCellId> queue{ACell};
    for (; !queue.empty(); queue.pop_front()) {
      for (const TCellId id : GetDependents(queue.front())) {
        if (!seen.insert(id).second) continue;
        list.push_back(id);
        queue.push_back(id);
      }
    }
    return list;
  }

  std::vector<TCellId> TopologicalOrder(std::span<const TCellId> ACells, std::vector<TCellId>& ACycles) const {
    std::map<TCellId, int> degree;
    for (const TCellId id : ACells) degree[id] = 0;
    for (const TCellId id : ACells) {
      if (const auto found = FDependencies.find(id); found != FDependencies.end()) {
        for (const TCellId precedent : found->second) degree[id] += degree.count(precedent) ? 1 : 0;
      }
    }
    std::deque<TCellId> queue;
    for (const TCellId id : ACells) {
      if (degree[id] == 0) queue.push_back(id);
    }
    std::vector<TCellId> order;
    for (; !queue.empty(); queue.pop_front()) {
      order.push_back(queue.front());
      for (const TCellId id : GetDependents(queue.front())) {
        if (degree.count(id) && --degree[id] == 0) queue.push_back(id);
      }
    }
    ACycles.clear();
    for (const TCellId id : ACells) {
      if (std::find(order.begin(), order.end(), id) == order.end()) ACycles.push_back(id);
    }
    return order;
  }

 private:
  std::map<TCellId, std::vector<TCellId>> FDependencies;
  std::map<TCellId, std::vector<TCellId>> FDependents;
};

}  // namespace tessarine::test
