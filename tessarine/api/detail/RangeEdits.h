#pragma once

#include <functional>

#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

using TOneCellEdit = std::function<void(TCell& ACell)>;

/// Loads, changes and stores every cell of a range (normalized, on the sheet); AEdit depends on nothing but its cell.
/// Where nobody listens only cells that are stored, or will be, are touched. Throws ELimit beforehand when more than
/// kMaxRangeCells cells would be written.
void EditRange(TWorksheet& ASheet, const TCellRange& ARange, const TOneCellEdit& AEdit);
/// The same cell by cell, row by row, which judges the way above.
void EditRangePlain(TWorksheet& ASheet, const TCellRange& ARange, const TOneCellEdit& AEdit);

using TOneFormatEdit = std::function<void(TCellFormat& AFormat)>;

/// EditRange with AEdit on the result of EnsureFormat; AEdit depends on nothing but its format.
void EditFormats(TWorksheet& ASheet, const TCellRange& ARange, const TOneFormatEdit& AEdit);
/// The same cell by cell, row by row.
void EditFormatsPlain(TWorksheet& ASheet, const TCellRange& ARange, const TOneFormatEdit& AEdit);

/// Throws ELimit when a range has more than kMaxRangeCells cells.
void CheckRangeCount(const TCellRange& ARange);

/// PutValue on every cell of a range, and on one cell.
void WriteRange(TWorksheet& ASheet, const TCellRange& ARange, const TCellValue& AValue);
void WriteValue(TWorksheet& ASheet, TCellAddress AAddress, const TCellValue& AValue);

}  // namespace tessarine::detail
