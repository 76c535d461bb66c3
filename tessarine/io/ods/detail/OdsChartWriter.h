#pragma once

#include <string>

namespace tessarine {
struct TSheetDrawing;
}

namespace tessarine::detail {

/// The "content.xml" of a chart's own document: its class, title, legend, axes, the first series and a table with
/// categories in column A and values in column B. A series whose formula is one reference is linked to the sheet.
/// ALiteral writes the class "chart:column" for columns.
std::string OdsChartContent(const TSheetDrawing& ADrawing, double AWidthCm, double AHeightCm, bool ALiteral);

}  // namespace tessarine::detail
