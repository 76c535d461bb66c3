#pragma once

#include <tessarine/core/lists/Charts.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>

namespace tessarine::detail {

// The words of chart parts (ECMA-376-1 §21.2.3), for reading and writing.

inline constexpr TXlsxWord<TSheetChartLegendPos> kXlsxLegendPositions[] = {
    {"b", clpBottom}, {"t", clpTop}, {"l", clpLeft}, {"r", clpRight}, {"tr", clpTopRight},
};

inline constexpr TXlsxWord<TSheetChartTickMark> kXlsxTickMarks[] = {
    {"none", ctmNone},
    {"in", ctmIn},
    {"out", ctmOut},
    {"cross", ctmCross},
};

inline constexpr TXlsxWord<TSheetChartTickLblPos> kXlsxTickLabels[] = {
    {"nextTo", ctlpNextTo},
    {"low", ctlpLow},
    {"high", ctlpHigh},
    {"none", ctlpNone},
};

inline constexpr TXlsxWord<TSheetChartMarkerSymbol> kXlsxMarkers[] = {
    {"auto", cmsAuto},       {"none", cmsNone},         {"circle", cmsCircle}, {"square", cmsSquare},
    {"diamond", cmsDiamond}, {"triangle", cmsTriangle}, {"x", cmsX},           {"star", cmsStar},
    {"plus", cmsPlus},       {"dot", cmsDot},           {"dash", cmsDash},
};

inline constexpr TXlsxWord<TSheetChartRadarStyle> kXlsxRadarStyles[] = {
    {"standard", crsStandard},
    {"marker", crsMarker},
    {"filled", crsFilled},
};

inline constexpr TXlsxWord<TSheetChartScatterStyle> kXlsxScatterStyles[] = {
    {"lineMarker", cssLineMarker},     {"line", cssLine},     {"smooth", cssSmooth},
    {"smoothMarker", cssSmoothMarker}, {"marker", cssMarker},
};

inline constexpr TXlsxWord<TSheetChartGrouping> kXlsxGroupings[] = {
    {"clustered", cgrpClustered},
    {"stacked", cgrpStacked},
    {"percentStacked", cgrpPercentStacked},
    {"standard", cgrpStandard},
};

}  // namespace tessarine::detail
