#pragma once

#include <cstdint>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;

enum class TTessarineFillDirection : uint8_t { tfdNone, tfdDown, tfdUp, tfdRight, tfdLeft };
using enum TTessarineFillDirection;

/// The largest destination of a fill, in cells.
constexpr int64_t kMaxFillCells = 100000;

/// Which way ADest extends ASource. One that grows on both sides counts as down (or right); tfdNone for one that
/// extends on both axes or not at all.
TESSARINE_API TTessarineFillDirection TessarineFillDirectionOf(const TCellRange& ASource, const TCellRange& ADest);

/// ASource extended to the cell under the pointer of a drag, which is first taken into the sheet: along the axis on
/// which the pointer is farther away, vertically on a tie.
TESSARINE_API TCellRange TessarineComputeFillDest(const TCellRange& ASource, int32_t ACol, int32_t ARow);

/// Fills from the edge of ASource to the far edge of ADest; the cells of ASource stay as they are. Every column (or
/// row, for a horizontal fill) of the source goes its own way: two numbers or more and nothing else are continued as a
/// series with even steps, anything else is repeated in turn with relative references moved along. Formats go with
/// the cells. ACopyOnly repeats everything.
///
/// One undo step named ACaption with the workbook's manager, and the workbook is marked modified. False, with nothing
/// done, without a workbook or sheet, without a direction, for whole rows or columns as source, and for destinations
/// above kMaxFillCells.
TESSARINE_API bool TessarineApplyFill(TWorkbook* AWorkbook, int32_t ASheetIndex, TWorksheet* ASheet,
                                      const TCellRange& ASource, const TCellRange& ADest, bool ACopyOnly,
                                      TTextArg ACaption);

}  // namespace tessarine
