#pragma once

#include <tessarine/Export.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;
struct TSheetDrawing;

/// Reads the series of a chart on ASheet anew from the cells that their formulas name: references with and without a
/// sheet (without one it is ASheet), unions of them in parentheses, whole columns and rows as far as cells are used,
/// columns of tables, and defined names that stand for such. Values are the present ones, nothing is evaluated; what is
/// no number counts as 0. Categories are texts as shown, several columns of one row joined by blanks. Cells in hidden
/// rows and columns are left out when the chart shows visible cells only.
///
/// An array whose formula is empty or leads nowhere (a missing sheet, #REF!, more than kMaxChartPoints cells) stays as
/// it is, and so do those behind 16 times as many cells of one chart. Nothing is marked as modified.
TESSARINE_API void RefreshDrawingCharts(const TWorkbook& AWorkbook, const TWorksheet& ASheet, TSheetDrawing& ADrawing);

/// The same for all charts of a sheet.
TESSARINE_API void RefreshSheetCharts(const TWorkbook& AWorkbook, TWorksheet& ASheet);

/// Points that an array of a series takes at most.
constexpr int kMaxChartPoints = 1048576;

}  // namespace tessarine
