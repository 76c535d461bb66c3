#pragma once

#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/lists/Charts.h>

namespace tessarine {

class TPivotTable;
class TWorkbook;
class TWorksheet;

/// The series that show what the last refresh of a pivot table wrote on ASheet: one for each of its value columns, at
/// most kMaxPivotChartSeries, without totals and subtotals, with the row labels as categories. They read the cells by
/// formulas. None for a table that shows no values.
TESSARINE_API std::vector<TSheetChartSeries> PivotChartSeries(const TWorksheet& ASheet, const TPivotTable& ATable);

/// Gives the charts that are linked to a pivot table of ASheet these series, and reads them. A chart is linked by the
/// table's name: to the table of its own sheet, else to the first sheet that has one of that name. The looks of series
/// stay by position.
TESSARINE_API void RebuildPivotCharts(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable);

constexpr int kMaxPivotChartSeries = 255;

}  // namespace tessarine
