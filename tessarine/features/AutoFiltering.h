#pragma once

#include <cstdint>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TWorksheet;
class TTessarineStyleSheet;

// A filter works on what is shown: the texts that GetDisplayText gives under AStyleSheet, which may be null. Nothing
// is evaluated, no event fires and nothing is marked as modified. Rows outside the sheet are left alone.

/// Whether the sheet's filter lets a row stay: all criteria in force must accept it. Rows outside the filter's data and
/// its header always stay.
TESSARINE_API bool AutoFilterRowPasses(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t ARow);

/// Hides the rows that the filter rejects and shows all others in its range, also those hidden by hand.
TESSARINE_API void ApplyAutoFilter(TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet);
/// The same row by row, which judges the way above.
TESSARINE_API void ApplyAutoFilterPlain(TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet);

/// Shows all rows of the filter and switches it off; nothing without one.
TESSARINE_API void DisableAutoFilter(TWorksheet& ASheet);

/// The texts of a column in the filter's rows, sorted: of those that differ by ASCII case only, the topmost.
TESSARINE_API std::vector<TText> CollectAutoFilterValues(const TWorksheet& ASheet,
                                                         const TTessarineStyleSheet* AStyleSheet, int32_t ACol);
TESSARINE_API std::vector<TText> CollectAutoFilterValuesPlain(const TWorksheet& ASheet,
                                                              const TTessarineStyleSheet* AStyleSheet, int32_t ACol);

}  // namespace tessarine
