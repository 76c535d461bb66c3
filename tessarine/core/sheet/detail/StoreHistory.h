#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <boost/unordered/unordered_flat_set.hpp>

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/sheet/detail/LineMap.h>

namespace tessarine::detail {

/// Formula cells below one another that had one template.
struct TFormulaRun {
  int32_t Col = 0;
  int32_t FirstRow = 0;
  int32_t LastRow = 0;
  TFormulaTemplate* Template = nullptr;  // one reference held
};

/// How a state of a store follows from the one that came after it: lines go back where they were, then formulas get
/// their templates, then cells their content. Places are those of the earlier state.
struct TStoreChange {
  explicit TStoreChange(TFormulaPool& APool) : Pool(APool), Cells(APool) {}
  ~TStoreChange();
  TStoreChange(const TStoreChange&) = delete;
  TStoreChange& operator=(const TStoreChange&) = delete;

  /// Takes over the reference.
  void NoteFormula(int32_t ACol, int32_t ARow, TFormulaTemplate* ATemplate);
  /// Notes what a place of the store holds, unless it is noted already.
  void NoteCell(const TCellStore& AStore, int32_t ACol, int32_t ARow);

  TFormulaPool& Pool;
  TLineMap Map;
  std::vector<TFormulaRun> Formulas;
  TCellStore Cells;                              // places that held something
  boost::unordered_flat_set<uint64_t> FreeKeys;  // places that did not: column << 32 | row
};

/// A state of a store. The latest one is the store itself; each earlier one knows how it follows from the next, so
/// that what nobody has captured costs nothing and a captured state costs what has changed since.
struct TStoreVersion {
  std::shared_ptr<TStoreVersion> Next;   // null for the latest
  std::unique_ptr<TStoreChange> Change;  // from Next to this state
};

/// Finds the store of a captured state, also after its sheet is gone.
struct TStoreKeeper {
  TCellStore* Store = nullptr;
  std::unique_ptr<TCellStore> Orphan;  // Store, once no sheet owns it
};

/// A captured state of a store: all but the cached results of formulas.
struct TStoreSnapshot {
  std::shared_ptr<TStoreKeeper> Keeper;  // destroyed after Version
  std::shared_ptr<TStoreVersion> Version;
};

}  // namespace tessarine::detail
