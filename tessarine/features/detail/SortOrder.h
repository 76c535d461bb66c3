#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <tessarine/core/values/Text.h>
#include <tessarine/features/Sorting.h>

namespace tessarine {
class TTessarineStyleSheet;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

/// The rows AFirst to ALast in the order that the keys, whose columns are those of the sheet, ask for.
std::vector<int32_t> SortedRows(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t AFirst,
                                int32_t ALast, std::span<const TSheetSortKey> AKeys);
/// The same with every comparison made as it is defined, which judges the way above.
std::vector<int32_t> SortedRowsPlain(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t AFirst,
                                     int32_t ALast, std::span<const TSheetSortKey> AKeys);

}  // namespace tessarine::detail
