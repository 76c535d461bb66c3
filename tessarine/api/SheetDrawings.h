#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/lists/Charts.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;

/// The 0-based position of a sheet; -1 for a sheet of another workbook, and when one of the two is missing.
TESSARINE_API int32_t TessarineSheetIndexOf(const TWorkbook* AWorkbook, const TWorksheet* ASheet);

// Both add one drawing as an undo step "Insert drawing" and mark the workbook modified. The drawing belongs to its
// sheet; it may be changed further, and stays the same object when it is taken back and put in again.

/// A chart over at least 8 columns and 4 rows from the cell AAnchorA1 on; without one two columns right of the cells in
/// use, in row 2 (F2 on an empty sheet). An empty title is "Chart". Series are read from the cells that their formulas
/// name; those without a formula keep their arrays.
///
/// Throws EArgument "AddChart: missing workbook/sheet", "AddChart: sheet not in workbook" and "Invalid cell address:
/// TEXT". Nothing has been changed then.
TESSARINE_API TSheetDrawing& TessarineAddChart(TWorkbook* AWorkbook, TWorksheet* ASheet, TTextArg ATitle,
                                               TSheetChartType AChartType, std::vector<TSheetChartSeries> ASeries,
                                               TTextArg AAnchorA1 = u"", int32_t AWidthCols = 8,
                                               int32_t AHeightRows = 12);
/// A chart of one series, whose values and categories come from references ("B2:B9", "=Data!$B$2:$B$9", a name).
TESSARINE_API TSheetDrawing& TessarineAddChart(TWorkbook* AWorkbook, TWorksheet* ASheet, TTextArg ATitle,
                                               TSheetChartType AChartType, TTextArg AValuesFormula,
                                               TTextArg ACategoriesFormula, TTextArg AAnchorA1 = u"",
                                               int32_t AWidthCols = 8, int32_t AHeightRows = 12);

/// A picture from the bytes of its file, with its top left corner in the cell AAnchorA1 (A1 without one). An empty
/// content type is "image/png"; a size of 0 (pixels at 96 dots per inch) is 240 wide or 180 high.
///
/// Throws EArgument "AddPicture: missing workbook/sheet", "AddPicture: empty image data", "AddPicture: sheet not in
/// workbook" and "Invalid cell address: TEXT". Nothing has been changed then.
TESSARINE_API TSheetDrawing& TessarineAddPictureBytes(TWorkbook* AWorkbook, TWorksheet* ASheet,
                                                      std::span<const std::byte> ABytes, TTextArg AContentType = u"",
                                                      TTextArg AAnchorA1 = u"", int32_t AWidthPx = 0,
                                                      int32_t AHeightPx = 0);

}  // namespace tessarine
