#pragma once

#include <string>
#include <string_view>

namespace tessarine {
struct TSheetDrawing;
}

namespace tessarine::detail {

/// A chart part (ECMA-376-1 §21.2.2.29) for a chart that has none of its own: title, series with their data, axes and
/// legend in a plain look. Bars, columns, lines, pies, rings, areas, scatter, radar and bubble charts are what they
/// are, all others clustered columns. References without a sheet get ASheetName, which other programs insist on.
std::string BuildChartSpaceXml(const TSheetDrawing& ADrawing, std::u16string_view ASheetName = {});

}  // namespace tessarine::detail
