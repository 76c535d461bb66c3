#pragma once

#include <cstdint>
#include <vector>

#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TSheetChartType : uint8_t {
  sctUnknown,
  sctBar,
  sctColumn,
  sctLine,
  sctPie,
  sctArea,
  sctScatter,
  sctDoughnut,
  sctRadar,
  sctBubble,
  sctStock,
  sctCombo,
  sctOfPie,
  sctSurface,
};
using enum TSheetChartType;

enum class TSheetChartLayoutMode : uint8_t { clmFactor, clmEdge };
using enum TSheetChartLayoutMode;

enum class TSheetChartLayoutTarget : uint8_t { cltOuter, cltInner };
using enum TSheetChartLayoutTarget;

enum class TSheetChartTickLblPos : uint8_t { ctlpNextTo, ctlpLow, ctlpHigh, ctlpNone };
using enum TSheetChartTickLblPos;

enum class TSheetChartRadarStyle : uint8_t { crsStandard, crsMarker, crsFilled };
using enum TSheetChartRadarStyle;

enum class TSheetChartScatterStyle : uint8_t { cssMarker, cssLine, cssLineMarker, cssSmooth, cssSmoothMarker };
using enum TSheetChartScatterStyle;

enum class TSheetChartGrouping : uint8_t { cgrpClustered, cgrpStacked, cgrpPercentStacked, cgrpStandard };
using enum TSheetChartGrouping;

enum class TSheetChartLegendPos : uint8_t { clpBottom, clpTop, clpLeft, clpRight, clpTopRight };
using enum TSheetChartLegendPos;

/// The parts of a chart that can be pointed at.
enum class TChartElementKind : uint8_t {
  cekNone,
  cekChart,
  cekTitle,
  cekLegend,
  cekPlot,
  cekValueAxis,
  cekCategoryAxis,
};
using enum TChartElementKind;

enum class TSheetChartTickMark : uint8_t { ctmNone, ctmIn, ctmOut, ctmCross };
using enum TSheetChartTickMark;

enum class TSheetChartMarkerSymbol : uint8_t {
  cmsAuto,
  cmsNone,
  cmsCircle,
  cmsSquare,
  cmsDiamond,
  cmsTriangle,
  cmsX,
  cmsStar,
  cmsPlus,
  cmsDot,
  cmsDash,
};
using enum TSheetChartMarkerSymbol;

enum class TSheetChartPaintMode : uint8_t { cpmDefault, cpmNone, cpmSolid };
using enum TSheetChartPaintMode;

enum class TSheetChartFillPattern : uint8_t {
  scfpNone,
  scfpLtDnDiag,
  scfpLtUpDiag,
  scfpHorz,
  scfpVert,
  scfpCross,
  scfpDiagCross,
  scfpPct50,
  scfpOther,
};
using enum TSheetChartFillPattern;

// Colours of charts are 0x00BBGGRR.

/// Where a part of a chart stands when it was placed by hand, as shares of the chart's size.
struct TSheetChartManualLayout {
  bool Overlay = false;
  bool HasX = false;
  bool HasY = false;
  bool HasW = false;
  bool HasH = false;
  double X = 0;
  double Y = 0;
  double W = 0;
  double H = 0;
  TSheetChartLayoutMode XMode = clmFactor;
  TSheetChartLayoutMode YMode = clmFactor;
  TSheetChartLayoutMode WMode = clmFactor;
  TSheetChartLayoutMode HMode = clmFactor;
  TSheetChartLayoutTarget Target = cltOuter;

  /// Whether any coordinate is given; Overlay alone is no placement.
  bool HasManual() const { return HasX || HasY || HasW || HasH; }

  friend bool operator==(const TSheetChartManualLayout&, const TSheetChartManualLayout&) = default;
};

struct TSheetChartDataLabels {
  bool Assigned = false;  // false: nothing was stated, inherited labels apply
  bool ShowLegendKey = false;
  bool ShowVal = false;
  bool ShowCatName = false;
  bool ShowSerName = false;
  bool ShowPercent = false;
  bool ShowBubbleSize = false;
  bool ShowLeaderLines = false;

  friend bool operator==(const TSheetChartDataLabels&, const TSheetChartDataLabels&) = default;
};

struct TSheetChartFill {
  TSheetChartPaintMode Mode = cpmDefault;
  uint32_t Color = 0;
  uint8_t Alpha = 0;  // 255: opaque
  TSheetChartFillPattern Pattern = scfpNone;
  uint32_t BackColor = 0;

  static TSheetChartFill Solid(uint32_t AColor) { return {cpmSolid, AColor, 255, scfpNone, 0}; }

  friend bool operator==(const TSheetChartFill&, const TSheetChartFill&) = default;
};

struct TSheetChartStroke {
  TSheetChartPaintMode Mode = cpmDefault;
  uint32_t Color = 0;
  float WidthPt = 0;

  friend bool operator==(const TSheetChartStroke&, const TSheetChartStroke&) = default;
};

struct TSheetChartFont {
  bool Assigned = false;  // false: the chart's default font
  TText Name;
  float SizePt = 0;
  uint32_t Color = 0;
  bool Bold = false;
  bool Italic = false;
  TSheetChartStroke Outline;
  uint32_t ShadowColor = 0;
  float ShadowDistPt = 0;
  TSheetChartFillPattern FillPattern = scfpNone;
  uint32_t FillBackColor = 0;

  friend bool operator==(const TSheetChartFont&, const TSheetChartFont&) = default;
};

/// A stretch of a chart's title in one font.
struct TSheetChartTextRun {
  TText Text;
  TSheetChartFont Font;

  friend bool operator==(const TSheetChartTextRun&, const TSheetChartTextRun&) = default;
};

/// An axis. A number that may be absent counts only with its Has flag: 0 is a number like any other.
struct TSheetChartAxisInfo {
  bool Deleted = false;
  TSheetChartStroke Line;
  bool MajorGridlines = false;
  TSheetChartStroke MajorGridStroke;
  bool MinorGridlines = false;
  TSheetChartStroke MinorGridStroke;
  TSheetChartTickMark MajorTickMark = ctmNone;
  TSheetChartTickMark MinorTickMark = ctmNone;
  bool HasMin = false;
  bool HasMax = false;
  bool HasMajorUnit = false;
  double MinVal = 0;
  double MaxVal = 0;
  double MajorUnitVal = 0;
  TSheetChartFont Font;
  TText NumFmt;
  bool HasCrossBetween = false;
  bool CrossBetweenMidCat = false;
  TText Title;
  TSheetChartFont TitleFont;
  bool HasTitleRotation = false;
  int32_t TitleRotation = 0;  // as files have it: 60,000ths of a degree
  bool HasTickLabelRotation = false;
  int32_t TickLabelRotation = 0;
  TSheetChartTickLblPos TickLblPos = ctlpNextTo;
  TText AxPos;    // "l", "r", "t", "b"
  TText Crosses;  // "autoZero", "min", "max"
  bool HasMinorUnit = false;
  double MinorUnitVal = 0;
  TSheetChartManualLayout Layout;
  bool OrientationMaxMin = false;  // runs from the largest value to the smallest

  /// With the tick marks that a new chart has.
  static TSheetChartAxisInfo OfNewChart() {
    TSheetChartAxisInfo axis;
    axis.MajorTickMark = ctmOut;
    return axis;
  }

  friend bool operator==(const TSheetChartAxisInfo&, const TSheetChartAxisInfo&) = default;
};

struct TSheetChartSeriesStyle {
  TSheetChartFill Fill;
  TSheetChartStroke Line;
  TSheetChartMarkerSymbol Marker = cmsAuto;
  float MarkerSizePt = 0;
  TSheetChartFill MarkerFill;
  TSheetChartStroke MarkerLine;
  bool Smooth = false;
  std::vector<TSheetChartFill> PointFills;      // by index of the point
  std::vector<TSheetChartStroke> PointStrokes;  // by index of the point

  friend bool operator==(const TSheetChartSeriesStyle&, const TSheetChartSeriesStyle&) = default;
};

/// One series. The arrays are what was read or computed last; the formulas (texts of references, with or without "=")
/// tell where they come from, see features/ChartData.
struct TSheetChartSeries {
  TText Title;
  std::vector<TText> Categories;
  std::vector<double> Values;
  std::vector<double> XValues;
  std::vector<double> Sizes;
  std::vector<uint32_t> PointColors;
  bool ShowDataLabels = false;
  TSheetChartDataLabels Labels;
  TSheetChartType PlotKind = sctUnknown;  // of this series in a combination
  TText ValuesFormula;
  TText CategoriesFormula;
  TText XValuesFormula;
  TText SizesFormula;
  TSheetChartSeriesStyle Style;
  int32_t Explosion = 0;  // of a pie's slices, percent
  bool InvertIfNegative = false;
  int32_t AxisGroup = 0;  // 1: the secondary axes
  int32_t Idx = 0;
  int32_t Order = 0;
  bool HasTrendline = false;
  TText TrendlineType;
  bool HasErrorBars = false;

  friend bool operator==(const TSheetChartSeries&, const TSheetChartSeries&) = default;
};

/// One group of a combination chart.
struct TSheetChartSubplot {
  TSheetChartType ChartType = sctUnknown;
  bool Stacked = false;
  bool PercentStacked = false;
  std::vector<TSheetChartSeries> Series;
  int32_t GapWidth = 0;  // percent
  int32_t Overlap = 0;   // percent
  bool VaryColors = false;
  TSheetChartRadarStyle RadarStyle = crsStandard;
  TSheetChartScatterStyle ScatterStyle = cssMarker;
  TSheetChartGrouping Grouping = cgrpClustered;
  bool HasDropLines = false;
  bool HasHiLowLines = false;
  bool HasUpDownBars = false;

  friend bool operator==(const TSheetChartSubplot&, const TSheetChartSubplot&) = default;
};

}  // namespace tessarine
