#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <tessarine/formula/CellId.h>

namespace tessarine {

/// Which formula cell reads which cells, as registration saw it. Edges stay as they are until the cell is registered
/// again or cleared, whatever becomes of the cells themselves. Holds no values.
class TFormulaDependencyGraph {
 public:
  TFormulaDependencyGraph();
  ~TFormulaDependencyGraph();
  TFormulaDependencyGraph(const TFormulaDependencyGraph&) = delete;
  TFormulaDependencyGraph& operator=(const TFormulaDependencyGraph&) = delete;

  /// "sheet!column,row" and back, see CellId.h.
  static TText CellKey(int32_t ASheetIndex, int32_t ACol, int32_t ARow) {
    return CellKeyOf(TCellId::Of(ASheetIndex, ACol, ARow));
  }

  /// Replaces the precedents of a cell; duplicates are dropped, the first occurrence counts. The cell becomes the last
  /// among the dependents of each.
  void SetDependencies(TCellId ACell, std::span<const TCellId> APrecedents);

  /// Removes the cell from the dependents of all its precedents. What depends on it stays.
  void ClearCell(TCellId ACell);

  /// Appends the direct dependents of a cell, in the order of their registration.
  void GetDependents(TCellId ACell, std::vector<TCellId>& AList) const;

  /// Appends all that depends on a cell, breadth first, each once, the cell itself not.
  void CollectTransitiveDependents(TCellId ACell, std::vector<TCellId>& AList) const;

  /// The cells in an order in which every cell stands behind those of its precedents that are among ACells: Kahn's
  /// algorithm, first in first out, seeded in the given order. ACycles (optional) is replaced by the cells that lie on
  /// a cycle or behind one, in the given order.
  void TopologicalOrder(std::span<const TCellId> ACells, std::vector<TCellId>* ACycles,
                        std::vector<TCellId>& AOrder) const;

  void Clear();

  /// The engine's own side: blocks of filled-down formulas are registered as one run.
  struct TRuns;
  TRuns& Runs() { return *FRuns; }
  const TRuns& Runs() const { return *FRuns; }

 private:
  std::unique_ptr<TRuns> FRuns;
};

}  // namespace tessarine
