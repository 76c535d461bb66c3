#pragma once

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/DependencyGraph.h>
#include <tessarine/formula/detail/DependencyRuns.h>

namespace tessarine::detail {

/// The runs behind a graph's public face.
TDependencyRuns& RunsOf(TFormulaDependencyGraph& AGraph);

/// Set in TFormulaRecord::Flags once the formula is registered. A formula that is entered anew has a record without
/// it, so a formula whose edges are not those of its present text is told apart.
constexpr uint8_t kRegistered = 8;

}  // namespace tessarine::detail
