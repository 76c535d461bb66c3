#pragma once

#include <tessarine/core/lists/Charts.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/io/native/detail/NativeFields.h>

namespace tessarine::detail {

// Continues NativeFields.h for what floats over a sheet.

template <>
inline constexpr auto kLastNative<TSheetDrawingKind> = sdkUnknown;
template <>
inline constexpr auto kLastNative<TDrawingAnchorKind> = dakAbsolute;
template <>
inline constexpr auto kLastNative<TSheetChartType> = sctSurface;
template <>
inline constexpr auto kLastNative<TSheetChartLayoutMode> = clmEdge;
template <>
inline constexpr auto kLastNative<TSheetChartLayoutTarget> = cltInner;
template <>
inline constexpr auto kLastNative<TSheetChartTickLblPos> = ctlpNone;
template <>
inline constexpr auto kLastNative<TSheetChartRadarStyle> = crsFilled;
template <>
inline constexpr auto kLastNative<TSheetChartScatterStyle> = cssSmoothMarker;
template <>
inline constexpr auto kLastNative<TSheetChartGrouping> = cgrpStandard;
template <>
inline constexpr auto kLastNative<TSheetChartLegendPos> = clpTopRight;
template <>
inline constexpr auto kLastNative<TSheetChartTickMark> = ctmCross;
template <>
inline constexpr auto kLastNative<TSheetChartMarkerSymbol> = cmsDash;
template <>
inline constexpr auto kLastNative<TSheetChartPaintMode> = cpmSolid;
template <>
inline constexpr auto kLastNative<TSheetChartFillPattern> = scfpOther;

template <>
inline TSheetChartSubplot NewNativeRecord() {
  TSheetChartSubplot subplot;
  subplot.GapWidth = 150;
  subplot.RadarStyle = crsMarker;
  subplot.ScatterStyle = cssLineMarker;
  return subplot;
}
template <>
inline TSheetDrawing NewNativeRecord() {
  TSheetDrawing drawing;
  drawing.ContentType = u"image/png";
  return drawing;
}

void VisitNativeFields(auto& AVisit, ANative<TDrawingAnchor> auto& AAnchor) {
  AVisit("kind", AAnchor.Kind);
  AVisit("fromCol", AAnchor.FromCol);
  AVisit("fromRow", AAnchor.FromRow);
  AVisit("fromColOffEmu", AAnchor.FromColOffEmu);
  AVisit("fromRowOffEmu", AAnchor.FromRowOffEmu);
  AVisit("toCol", AAnchor.ToCol);
  AVisit("toRow", AAnchor.ToRow);
  AVisit("toColOffEmu", AAnchor.ToColOffEmu);
  AVisit("toRowOffEmu", AAnchor.ToRowOffEmu);
  AVisit("extCxEmu", AAnchor.ExtCxEmu);
  AVisit("extCyEmu", AAnchor.ExtCyEmu);
  AVisit("posXEmu", AAnchor.PosXEmu);
  AVisit("posYEmu", AAnchor.PosYEmu);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartFill> auto& AFill) {
  AVisit("mode", AFill.Mode);
  AVisit("color", AFill.Color);
  AVisit("alpha", AFill.Alpha);
  AVisit("pattern", AFill.Pattern);
  AVisit("backColor", AFill.BackColor);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartStroke> auto& AStroke) {
  AVisit("mode", AStroke.Mode);
  AVisit("color", AStroke.Color);
  AVisit("widthPt", AStroke.WidthPt);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartFont> auto& AFont) {
  AVisit("assigned", AFont.Assigned);
  AVisit("name", AFont.Name);
  AVisit("sizePt", AFont.SizePt);
  AVisit("color", AFont.Color);
  AVisit("bold", AFont.Bold);
  AVisit("italic", AFont.Italic);
  AVisit("outline", AFont.Outline);
  AVisit("shadowColor", AFont.ShadowColor);
  AVisit("shadowDistPt", AFont.ShadowDistPt);
  AVisit("fillPattern", AFont.FillPattern);
  AVisit("fillBackColor", AFont.FillBackColor);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartTextRun> auto& ARun) {
  AVisit("text", ARun.Text);
  AVisit("font", ARun.Font);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartManualLayout> auto& ALayout) {
  AVisit("overlay", ALayout.Overlay);
  AVisit("hasX", ALayout.HasX);
  AVisit("hasY", ALayout.HasY);
  AVisit("hasW", ALayout.HasW);
  AVisit("hasH", ALayout.HasH);
  AVisit("x", ALayout.X);
  AVisit("y", ALayout.Y);
  AVisit("w", ALayout.W);
  AVisit("h", ALayout.H);
  AVisit("xMode", ALayout.XMode);
  AVisit("yMode", ALayout.YMode);
  AVisit("wMode", ALayout.WMode);
  AVisit("hMode", ALayout.HMode);
  AVisit("target", ALayout.Target);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartDataLabels> auto& ALabels) {
  AVisit("assigned", ALabels.Assigned);
  AVisit("showLegendKey", ALabels.ShowLegendKey);
  AVisit("showVal", ALabels.ShowVal);
  AVisit("showCatName", ALabels.ShowCatName);
  AVisit("showSerName", ALabels.ShowSerName);
  AVisit("showPercent", ALabels.ShowPercent);
  AVisit("showBubbleSize", ALabels.ShowBubbleSize);
  AVisit("showLeaderLines", ALabels.ShowLeaderLines);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartAxisInfo> auto& AAxis) {
  AVisit("deleted", AAxis.Deleted);
  AVisit("line", AAxis.Line);
  AVisit("majorGridlines", AAxis.MajorGridlines);
  AVisit("majorGridStroke", AAxis.MajorGridStroke);
  AVisit("minorGridlines", AAxis.MinorGridlines);
  AVisit("minorGridStroke", AAxis.MinorGridStroke);
  AVisit("majorTickMark", AAxis.MajorTickMark);
  AVisit("minorTickMark", AAxis.MinorTickMark);
  AVisit("hasMin", AAxis.HasMin);
  AVisit("hasMax", AAxis.HasMax);
  AVisit("hasMajorUnit", AAxis.HasMajorUnit);
  AVisit("minVal", AAxis.MinVal);
  AVisit("maxVal", AAxis.MaxVal);
  AVisit("majorUnitVal", AAxis.MajorUnitVal);
  AVisit("font", AAxis.Font);
  AVisit("numFmt", AAxis.NumFmt);
  AVisit("hasCrossBetween", AAxis.HasCrossBetween);
  AVisit("crossBetweenMidCat", AAxis.CrossBetweenMidCat);
  AVisit("title", AAxis.Title);
  AVisit("titleFont", AAxis.TitleFont);
  AVisit("hasTitleRotation", AAxis.HasTitleRotation);
  AVisit("titleRotation", AAxis.TitleRotation);
  AVisit("hasTickLabelRotation", AAxis.HasTickLabelRotation);
  AVisit("tickLabelRotation", AAxis.TickLabelRotation);
  AVisit("tickLblPos", AAxis.TickLblPos);
  AVisit("axPos", AAxis.AxPos);
  AVisit("crosses", AAxis.Crosses);
  AVisit("hasMinorUnit", AAxis.HasMinorUnit);
  AVisit("minorUnitVal", AAxis.MinorUnitVal);
  AVisit("layout", AAxis.Layout);
  AVisit("orientationMaxMin", AAxis.OrientationMaxMin);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartSeriesStyle> auto& AStyle) {
  AVisit("fill", AStyle.Fill);
  AVisit("line", AStyle.Line);
  AVisit("marker", AStyle.Marker);
  AVisit("markerSizePt", AStyle.MarkerSizePt);
  AVisit("markerFill", AStyle.MarkerFill);
  AVisit("markerLine", AStyle.MarkerLine);
  AVisit("smooth", AStyle.Smooth);
  AVisit("pointFills", AStyle.PointFills);
  AVisit("pointStrokes", AStyle.PointStrokes);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartSeries> auto& ASeries) {
  AVisit("title", ASeries.Title);
  AVisit("categories", ASeries.Categories);
  AVisit("values", ASeries.Values);
  AVisit("xValues", ASeries.XValues);
  AVisit("sizes", ASeries.Sizes);
  AVisit("pointColors", ASeries.PointColors);
  AVisit("showDataLabels", ASeries.ShowDataLabels);
  AVisit("labels", ASeries.Labels);
  AVisit("plotKind", ASeries.PlotKind);
  AVisit("valuesFormula", ASeries.ValuesFormula);
  AVisit("categoriesFormula", ASeries.CategoriesFormula);
  AVisit("xValuesFormula", ASeries.XValuesFormula);
  AVisit("sizesFormula", ASeries.SizesFormula);
  AVisit("style", ASeries.Style);
  AVisit("explosion", ASeries.Explosion);
  AVisit("invertIfNegative", ASeries.InvertIfNegative);
  AVisit("axisGroup", ASeries.AxisGroup);
  AVisit("idx", ASeries.Idx);
  AVisit("order", ASeries.Order);
  AVisit("hasTrendline", ASeries.HasTrendline);
  AVisit("trendlineType", ASeries.TrendlineType);
  AVisit("hasErrorBars", ASeries.HasErrorBars);
}

void VisitNativeFields(auto& AVisit, ANative<TSheetChartSubplot> auto& ASubplot) {
  AVisit("chartType", ASubplot.ChartType);
  AVisit("stacked", ASubplot.Stacked);
  AVisit("percentStacked", ASubplot.PercentStacked);
  AVisit("series", ASubplot.Series);
  AVisit("gapWidth", ASubplot.GapWidth);
  AVisit("overlap", ASubplot.Overlap);
  AVisit("varyColors", ASubplot.VaryColors);
  AVisit("radarStyle", ASubplot.RadarStyle);
  AVisit("scatterStyle", ASubplot.ScatterStyle);
  AVisit("grouping", ASubplot.Grouping);
  AVisit("hasDropLines", ASubplot.HasDropLines);
  AVisit("hasHiLowLines", ASubplot.HasHiLowLines);
  AVisit("hasUpDownBars", ASubplot.HasUpDownBars);
}

void VisitPictureFields(auto& AVisit, ANative<TSheetDrawing> auto& ADrawing) {
  AVisit.Bytes("imageBase64", ADrawing.ImageBytes);
  AVisit.When(!ADrawing.ImageBytes.empty(), "contentType", ADrawing.ContentType);
  AVisit("imageOpacity", ADrawing.ImageOpacity);
  AVisit.Bytes("inkMlBase64", ADrawing.InkMlBytes);
  AVisit("inkTipWidthCm", ADrawing.InkTipWidthCm);
  AVisit("inkTipHeightCm", ADrawing.InkTipHeightCm);
}

void VisitChartFields(auto& AVisit, ANative<TSheetDrawing> auto& ADrawing) {
  AVisit("chartType", ADrawing.ChartType);
  AVisit("stacked", ADrawing.Stacked);
  AVisit("title", ADrawing.Title);
  AVisit("showLegend", ADrawing.ShowLegend);
  AVisit("legendPos", ADrawing.LegendPos);
  AVisit("gapWidth", ADrawing.GapWidth);
  AVisit("overlap", ADrawing.Overlap);
  AVisit("chartIs3D", ADrawing.ChartIs3D);
  AVisit("viewRotX", ADrawing.ViewRotX);
  AVisit("viewRotY", ADrawing.ViewRotY);
  AVisit("viewPerspective", ADrawing.ViewPerspective);
  AVisit("viewRightAngleAxes", ADrawing.ViewRightAngleAxes);
  AVisit("series", ADrawing.Series);
  AVisit("subplots", ADrawing.Subplots);
  AVisit("roundedCorners", ADrawing.RoundedCorners);
  AVisit("chartStyleId", ADrawing.ChartStyleId);
  AVisit("doughnutHolePct", ADrawing.DoughnutHolePct);
  AVisit("firstSliceAng", ADrawing.FirstSliceAng);
  AVisit("dispBlanksAs", ADrawing.DispBlanksAs);
  AVisit("plotVisOnly", ADrawing.PlotVisOnly);
  AVisit("plotVaryColors", ADrawing.PlotVaryColors);
  AVisit("radarStyle", ADrawing.RadarStyle);
  AVisit("scatterStyle", ADrawing.ScatterStyle);
  AVisit("percentStacked", ADrawing.PercentStacked);
  AVisit("hasDropLines", ADrawing.HasDropLines);
  AVisit("hasHiLowLines", ADrawing.HasHiLowLines);
  AVisit("hasUpDownBars", ADrawing.HasUpDownBars);
  AVisit("styleMarker", ADrawing.StyleMarker);
  AVisit("styleMarkerSizePt", ADrawing.StyleMarkerSizePt);
  AVisit("hasSecondaryValueAxis", ADrawing.HasSecondaryValueAxis);
  AVisit("chartPalette", ADrawing.ChartPalette);
  AVisit("chartAreaFill", ADrawing.ChartAreaFill);
  AVisit("chartAreaLine", ADrawing.ChartAreaLine);
  AVisit("plotAreaFill", ADrawing.PlotAreaFill);
  AVisit("plotAreaLine", ADrawing.PlotAreaLine);
  AVisit("titleFont", ADrawing.ChartTitleFont);
  AVisit("titleRuns", ADrawing.ChartTitleRuns);
  AVisit("legendFont", ADrawing.ChartLegendFont);
  AVisit("valueAxis", ADrawing.ChartValueAxis);
  AVisit("catAxis", ADrawing.ChartCatAxis);
  AVisit("valueAxis2", ADrawing.ChartValueAxis2);
  AVisit("titleLayout", ADrawing.TitleLayout);
  AVisit("legendLayout", ADrawing.LegendLayout);
  AVisit("plotLayout", ADrawing.PlotLayout);
  AVisit("plotLabels", ADrawing.PlotLabels);
  AVisit.Bytes("chartSpaceXmlBase64", ADrawing.ChartSpaceXml);
  AVisit.Bytes("chartStyleXmlBase64", ADrawing.ChartStyleXml);
  AVisit.Bytes("chartColorsXmlBase64", ADrawing.ChartColorsXml);
}

void VisitShapeFields(auto& AVisit, ANative<TSheetDrawing> auto& ADrawing) {
  AVisit("presetGeom", ADrawing.PresetGeom);
  AVisit("fillColor", ADrawing.FillColor);
  AVisit("hasFill", ADrawing.HasFill);
  AVisit("lineColor", ADrawing.LineColor);
  AVisit("hasLine", ADrawing.HasLine);
  AVisit("lineWidthEmu", ADrawing.LineWidthEmu);
  AVisit("rotation", ADrawing.Rotation);
  AVisit("flipH", ADrawing.FlipH);
  AVisit("flipV", ADrawing.FlipV);
  AVisit("text", ADrawing.Text);
  AVisit("textBold", ADrawing.TextBold);
  AVisit("textSize", ADrawing.TextSize);
  AVisit("textColor", ADrawing.TextColor);
  AVisit("textHAlign", ADrawing.TextHAlign);
  AVisit("textVAlign", ADrawing.TextVAlign);
  AVisit("textWrap", ADrawing.TextWrap);
  AVisit("isTextBox", ADrawing.IsTextBox);
  AVisit("textInsetLeftEmu", ADrawing.TextInsetLeftEmu);
  AVisit("textInsetRightEmu", ADrawing.TextInsetRightEmu);
  AVisit("textInsetTopEmu", ADrawing.TextInsetTopEmu);
  AVisit("textInsetBottomEmu", ADrawing.TextInsetBottomEmu);
  AVisit("geomAdj1", ADrawing.GeomAdj1);
}

/// Every drawing has all fields, whatever its kind.
void VisitNativeFields(auto& AVisit, ANative<TSheetDrawing> auto& ADrawing) {
  AVisit("kind", ADrawing.Kind);
  AVisit("name", ADrawing.Name);
  AVisit("hidden", ADrawing.Hidden);
  AVisit("zOrder", ADrawing.ZOrder);
  AVisit("anchor", ADrawing.Anchor);
  VisitPictureFields(AVisit, ADrawing);
  VisitChartFields(AVisit, ADrawing);
  VisitShapeFields(AVisit, ADrawing);
}

}  // namespace tessarine::detail
