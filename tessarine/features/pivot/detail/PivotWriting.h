#pragma once

#include <cstdint>

#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/features/pivot/detail/PivotLayout.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

/// Where the filter fields of a table stand: a row each from here on, with a free row between them and the table.
/// Below 1 there is no room for them.
int64_t PivotFilterTop(const TPivotTable& ATable, size_t AFilterCount);

/// Clears the table's last output, and the two columns above it in which its AFilterCount filters stand.
void ClearPivotOutput(TWorksheet& ASheet, const TPivotTable& ATable, size_t AFilterCount);

/// Writes headers, body and totals. What would stand outside the sheet is left out.
void WritePivotBody(TWorksheet& ASheet, const TPivotCache& ACache, const TPivotTable& ATable,
                    const TPivotLayout& ALayout);

/// Writes the names of the filter fields and what is selected in them; nothing without room.
void WritePivotFilters(TWorksheet& ASheet, const TPivotCache& ACache, const TPivotTable& ATable);

/// The rectangle from the table's cell on; ends that 32 bits cannot hold stay at their limit.
TCellRange PivotBodyRange(TCellAddress ADest, int64_t AColumnCount, int64_t ARowCount);

}  // namespace tessarine::detail
