#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/Theme.h>
#include <tessarine/io/xlsx/detail/XlsxChartReader.h>
#include <tessarine/io/xlsx/detail/XlsxChartWriter.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingRoom.h>

#include "../support/Thrown.h"
#include "XlsxDrawingSupport.h"

namespace tessarine {
namespace {

using namespace test;

/// A chart part with AInside in its "chart" element and APlot in the plot area.
std::string Chart(std::string_view APlot, std::string_view AInside = {}, std::string_view ABehind = {}) {
  std::string text = "<c:chartSpace>" + std::string(ABehind) + "<c:chart>" + std::string(AInside) + "<c:plotArea>";
  return (text += APlot) += "</c:plotArea></c:chart></c:chartSpace>";
}

TSheetDrawing Parsed(std::string_view AXml) {
  const TTessarineTheme theme;
  detail::TXlsxDrawingRoom room;
  TSheetDrawing drawing;
  detail::ParseChartSpace(AXml, "chart", {&theme, room, {}}, drawing);
  return drawing;
}

std::string Cache(std::string_view AKind, const std::vector<std::string>& AValues) {
  std::string text = "<c:" + std::string(AKind) + ">";
  for (size_t i = 0; i < AValues.size(); ++i)
    text += "<c:pt idx='" + std::to_string(i) + "'><c:v>" + AValues[i] + "</c:v></c:pt>";
  return text + "</c:" + std::string(AKind) + ">";
}

/// "title: categories; x; values; sizes" of each series, with the formulas in front of them.
std::string DumpSeries(const std::vector<TSheetChartSeries>& ASeries) {
  std::string text;
  const auto numbers = [&text](const TText& AFormula, const std::vector<double>& AValues) {
    text += "; " + AFormula.ToUtf8();
    for (const double value : AValues) text += "," + std::to_string(static_cast<int>(value * 100));
  };
  for (const TSheetChartSeries& series : ASeries) {
    text += series.Title.ToUtf8() + ": " + series.CategoriesFormula.ToUtf8();
    for (const TText& category : series.Categories) text += "," + category.ToUtf8();
    numbers(series.XValuesFormula, series.XValues);
    numbers(series.ValuesFormula, series.Values);
    numbers(series.SizesFormula, series.Sizes);
    text += " | ";
  }
  return text;
}

TEST(ChartPart, KnowsTheKindsOfCharts) {
  const struct {
    const char* Plot;
    TSheetChartType Type;
    bool Is3D;
  } cases[] = {
      {"<c:barChart><c:barDir val='col'/></c:barChart>", sctColumn, false},
      {"<c:barChart><c:barDir val='bar'/></c:barChart>", sctBar, false},
      {"<c:BAR3DCHART/>", sctBar, true},
      {"<c:line3DChart/>", sctLine, true},
      {"<c:pieChart/>", sctPie, false},
      {"<c:doughnutChart/>", sctDoughnut, false},
      {"<c:area3DChart/>", sctArea, true},
      {"<c:scatterChart/>", sctScatter, false},
      {"<c:radarChart/>", sctRadar, false},
      {"<c:bubbleChart/>", sctBubble, false},
      {"<c:stockChart/>", sctStock, false},
      {"<c:ofPieChart/>", sctOfPie, false},
      {"<c:surface3DChart/>", sctSurface, true},
      {"<c:barChart/><c:lineChart/>", sctCombo, false},
      {"<c:otherChart/>", sctUnknown, false},
  };
  for (const auto& row : cases) {
    const TSheetDrawing drawing = Parsed(Chart(row.Plot));
    EXPECT_EQ(drawing.ChartType, row.Type) << row.Plot;
    EXPECT_EQ(drawing.ChartIs3D, row.Is3D) << row.Plot;
  }
  EXPECT_TRUE(Parsed("<other><chart><legend/></chart></other>") == TSheetDrawing());
}

TEST(ChartPart, ReadsTheSourcesOfSeries) {
  const std::string values =
      "<c:val><c:numRef><c:f>S!$B$1:$B$2</c:f>" + Cache("numCache", {"1.5", "#N/A"}) + "</c:numRef></c:val>";
  const std::string cases[][2] = {
      {values, "Series1: ; ; S!$B$1:$B$2,150,0;  | "},
      {"<c:tx><c:v>T_x0041_</c:v></c:tx><c:cat><c:strRef><c:f>S!A1:A2</c:f>" + Cache("strCache", {"a", " b "}) +
           "</c:strRef></c:cat>" + values,
       "TA: S!A1:A2,a, b ; ; S!$B$1:$B$2,150,0;  | "},
      {"<c:tx><c:strRef><c:f>S!A1</c:f>" + Cache("strCache", {"two", "cells"}) + "</c:strRef></c:tx>",
       "two cells: ; ; ;  | "},
      {"<c:cat>" + Cache("numLit", {"2020", "2021"}) + "</c:cat><c:val>" + Cache("numLit", {"1e2"}) + "</c:val>",
       "Series1: ,2020,2021; ; ,10000;  | "},
      {"<c:xVal>" + Cache("numLit", {"3"}) + "</c:xVal><c:yVal>" + Cache("numLit", {"4"}) + "</c:yVal><c:bubbleSize>" +
           Cache("numLit", {"5"}) + "</c:bubbleSize>",
       "Series1: ; ,300; ,400; ,500 | "},
      {"<c:cat><c:multiLvlStrRef><c:f>S!A1:B3</c:f><c:multiLvlStrCache>" + Cache("lvl", {"x", "y", "z"}) +
           Cache("lvl", {"1st"}) + "</c:multiLvlStrCache></c:multiLvlStrRef></c:cat>",
       "Series1: S!A1:B3,1st x,y,z; ; ;  | "},
      {"<c:val><c:numLit><c:ptCount val='3'/><c:pt idx='1'><c:v>2</c:v></c:pt><c:pt idx='-1'><c:v>9</c:v></c:pt>"
       "<c:pt idx='1048576'><c:v>9</c:v></c:pt><c:pt><c:v>9</c:v></c:pt></c:numLit></c:val>",
       "Series1: ; ; ,0,200,0;  | "},
  };
  for (const auto& row : cases)
    EXPECT_EQ(DumpSeries(Parsed(Chart("<c:barChart><c:ser>" + row[0] + "</c:ser></c:barChart>")).Series), row[1])
        << row[0];
}

TEST(ChartPart, BoundsWhatFewBytesAskFor) {
  std::string series;
  for (int i = 0; i < 100; ++i)
    series +=
        "<c:ser><c:val><c:numLit><c:ptCount val='2000000000'/></c:numLit></c:val><c:dPt><c:idx "
        "val='1048575'/><c:spPr/></c:dPt></c:ser>";
  size_t values = 0;
  size_t fills = 0;
  series.insert(series.find("</c:numLit>"), "<c:pt idx='1048576'/><c:pt idx='3'><c:v>1</c:v></c:pt>");
  const TTessarineTheme theme;
  detail::TXlsxDrawingRoom room;
  TSheetDrawing drawing;
  detail::ParseChartSpace(Chart("<c:barChart>" + series + "</c:barChart>"), "chart", {&theme, room, {}}, drawing);
  EXPECT_GT(room.Losses(), 1u);
  EXPECT_LT(room.Losses(), 101u);
  for (const TSheetChartSeries& one : drawing.Series) {
    values += one.Values.size();
    fills += one.Style.PointFills.size();
  }
  EXPECT_EQ(drawing.Series.size(), 100u);
  EXPECT_EQ(drawing.Series[0].Values.size(), 1048576u);
  EXPECT_LT(values * sizeof(double) + fills * sizeof(TSheetChartFill), size_t{256} << 20);
}

TEST(ChartPart, TooLargeForATreeIsReadWithoutItsPoints) {
  const std::string plot = "<c:barChart><c:ser><c:tx><c:strRef><c:f>'R&amp;D'!A1</c:f>" +
                           Cache("strCache", {"R&amp;D"}) + "</c:strRef></c:tx><c:val><c:numRef><c:f>S!A1:A50</c:f>" +
                           Cache("numCache", std::vector<std::string>(50, "7")) +
                           "</c:numRef></c:val></c:ser></c:barChart>";
  const std::string part = Chart(plot, "<c:dispBlanksAs val='a &lt; &quot;b&quot;'/>");
  const TTessarineTheme theme;
  for (const uint32_t nodes : {1000u, 60u, 5u}) {
    detail::TXlsxDrawingRoom room;
    TSheetDrawing drawing;
    const auto read = [&] {
      detail::ParseChartSpace(part, "chart", {&theme, room, {.MaxXmlTreeNodes = nodes}}, drawing);
    };
    EXPECT_EQ(Thrown(read).substr(0, 5), nodes == 5 ? "limit" : "nothi") << nodes;
    EXPECT_EQ(room.Losses(), nodes == 1000 ? 0u : 50u) << nodes;
    if (nodes == 5) continue;
    ASSERT_EQ(drawing.Series.size(), 1u);
    EXPECT_EQ(drawing.Series[0].Title, u"R&D");
    EXPECT_EQ(drawing.Series[0].ValuesFormula, u"S!A1:A50");
    EXPECT_EQ(drawing.Series[0].Values.size(), nodes == 1000 ? 50u : 0u);
    EXPECT_EQ(drawing.DispBlanksAs, u"a < \"b\"");
  }
}

TEST(ChartPart, ReadsTheLookOfSeries) {
  const TSheetDrawing drawing = Parsed(Chart(
      "<c:lineChart><c:grouping val='percentStacked'/><c:varyColors val='1'/><c:ser><c:idx val='4'/><c:order val='2'/>"
      "<c:spPr><a:pattFill prst='wdUpDiag'><a:fgClr><a:srgbClr val='0000FF'/></a:fgClr><a:bgClr><a:srgbClr "
      "val='00FF00'/></a:bgClr>"
      "</a:pattFill><a:ln w='19050'><a:solidFill><a:schemeClr val='tx1'/></a:solidFill></a:ln></c:spPr>"
      "<c:marker><c:symbol val='triangle'/><c:size val='9'/><c:spPr><a:noFill/></c:spPr></c:marker>"
      "<c:dPt><c:idx val='1'/><c:spPr><a:solidFill><a:srgbClr val='FF0000'><a:alpha "
      "val='40000'/></a:srgbClr></a:solidFill></c:spPr></c:dPt>"
      "<c:dLbls><c:showVal/><c:showPercent val='0'/></c:dLbls><c:trendline/><c:errBars/><c:smooth/></c:ser>"
      "<c:dLbls><c:delete val='1'/><c:showVal val='1'/></c:dLbls><c:dropLines/><c:upDownBars/></c:lineChart>"));
  ASSERT_EQ(drawing.Series.size(), 1u);
  const TSheetChartSeries& series = drawing.Series[0];
  EXPECT_EQ(series.Idx * 10 + series.Order, 42);
  EXPECT_EQ(series.Style.Fill, (TSheetChartFill{cpmSolid, 0xFF0000, 255, scfpLtUpDiag, 0x00FF00}));
  EXPECT_EQ(series.Style.Line, (TSheetChartStroke{cpmSolid, 0, 1.5F}));
  EXPECT_EQ(series.Style.Marker, cmsTriangle);
  EXPECT_EQ(series.Style.MarkerSizePt, 9.0F);
  EXPECT_EQ(series.Style.MarkerFill.Mode, cpmNone);
  ASSERT_EQ(series.Style.PointFills.size(), 2u);
  EXPECT_EQ(series.Style.PointFills[0], TSheetChartFill());
  EXPECT_EQ(series.Style.PointFills[1], (TSheetChartFill{cpmSolid, 0x0000FF, 102, scfpNone, 0}));
  EXPECT_TRUE(series.ShowDataLabels && series.Labels.ShowVal && !series.Labels.ShowPercent);
  EXPECT_TRUE(series.HasTrendline && series.HasErrorBars && series.Style.Smooth);
  EXPECT_EQ(series.TrendlineType, u"linear");
  EXPECT_TRUE(drawing.PlotLabels.Assigned && !drawing.PlotLabels.ShowVal);
  EXPECT_TRUE(drawing.PercentStacked && drawing.PlotVaryColors && drawing.HasDropLines && drawing.HasUpDownBars);
  EXPECT_FALSE(drawing.HasHiLowLines);
}

TEST(ChartPart, ReadsTitlesLegendAndFrame) {
  const std::string run =
      "<a:r><a:rPr sz='1800' i='1'><a:latin typeface='+mj-lt'/><a:effectLst><a:outerShdw dist='25400'>"
      "<a:srgbClr val='010203'/></a:outerShdw></a:effectLst></a:rPr><a:t>One</a:t></a:r>";
  const TSheetDrawing drawing = Parsed(
      Chart("<c:layout><c:manualLayout><c:layoutTarget val='inner'/><c:xMode val='edge'/><c:x val='0.25'/><c:h "
            "val='0'/></c:manualLayout></c:layout>"
            "<c:pieChart><c:firstSliceAng val='90'/></c:pieChart><c:dTable><c:showKeys val='0'/></c:dTable>",
            "<c:title><c:tx><c:rich><a:p><a:pPr><a:defRPr b='1' sz='1000'/></a:pPr>" + run +
                "</a:p><a:p><a:r><a:t>Two</a:t></a:r></a:p></c:rich></c:tx>"
                "<c:overlay val='1'/></c:title><c:view3D><c:rotX val='-100'/><c:rAngAx val='0'/></c:view3D>"
                "<c:legend><c:legendPos val='tr'/></c:legend><c:plotVisOnly val='0'/><c:dispBlanksAs val='span'/>",
            "<c:roundedCorners/><c:style val='26'/><c:spPr><a:solidFill><a:sysClr val='window' "
            "lastClr='FFFFFF'/></a:solidFill></c:spPr>"));
  EXPECT_EQ(drawing.Title, u"One\r\nTwo");
  ASSERT_EQ(drawing.ChartTitleRuns.size(), 2u);
  const TSheetChartFont& font = drawing.ChartTitleRuns[0].Font;
  EXPECT_TRUE(font.Bold && font.Italic && font.Assigned && drawing.ChartTitleFont == font);
  EXPECT_EQ(font.SizePt, 18.0F);
  EXPECT_EQ(font.Name, TTessarineTheme().MajorFont());
  EXPECT_EQ(font.ShadowDistPt, 2.0F);
  EXPECT_EQ(font.ShadowColor, 0x030201u);
  EXPECT_TRUE(drawing.TitleLayout.Overlay && !drawing.TitleLayout.HasManual());
  EXPECT_EQ(drawing.PlotLayout.Target, cltInner);
  EXPECT_TRUE(drawing.PlotLayout.HasX && drawing.PlotLayout.HasH && !drawing.PlotLayout.HasY);
  EXPECT_EQ(drawing.PlotLayout.XMode, clmEdge);
  EXPECT_EQ(drawing.PlotLayout.X, 0.25);
  EXPECT_EQ(drawing.ViewRotX, -90);
  EXPECT_FALSE(drawing.ViewRightAngleAxes || drawing.PlotVisOnly || drawing.DataTableShowKeys);
  EXPECT_TRUE(drawing.ShowLegend && drawing.ShowDataTable && drawing.RoundedCorners);
  EXPECT_EQ(drawing.LegendPos, clpTopRight);
  EXPECT_EQ(drawing.DispBlanksAs, u"span");
  EXPECT_EQ(drawing.ChartStyleId * 1000 + drawing.FirstSliceAng, 26090);
  EXPECT_EQ(drawing.ChartAreaFill, TSheetChartFill::Solid(0xFFFFFF));
}

TEST(ChartPart, GivesTheEndsOfParagraphsToTheRunsBeforeThem) {
  const TSheetDrawing drawing =
      Parsed(Chart("",
                   "<c:title><c:tx><c:rich><a:p/><a:p><a:r><a:t>a</a:t></a:r></a:p><a:p/><a:p><a:r><a:t>b</a:t></a:r>"
                   "<a:r><a:t>c</a:t></a:r></a:p><a:p/><a:p/></c:rich></c:tx></c:title>"));
  std::string text;
  for (const TSheetChartTextRun& run : drawing.ChartTitleRuns) text += run.Text.ToUtf8() + "|";
  EXPECT_EQ(text, "a\r\n\r\n|b|c\r\n\r\n|");
}

TEST(ChartPart, KnowsThePivotTableThatItShows) {
  const std::pair<const char*, const char16_t*> cases[] = {
      {"<c:pivotSource><c:name>[B!.xlsx]S 1!Table_x0020_1</c:name></c:pivotSource>", u"Table 1"},
      {"<c:pivotSource><c:name>T</c:name><c:fmtId val='0'/></c:pivotSource>", u"T"},
      {"<c:pivotSource/>", u""},
      {"", u""},
  };
  for (const auto& [source, name] : cases) EXPECT_EQ(Parsed(Chart("", "", source)).LinkedPivotName, name) << source;
}

TEST(ChartPart, GivesTitlesWithoutTextAStandIn) {
  const std::string one = "<c:pieChart><c:ser><c:tx><c:v>Sales</c:v></c:tx></c:ser></c:pieChart>";
  EXPECT_EQ(Parsed(Chart(one, "<c:title/>")).Title, u"Sales");
  EXPECT_EQ(Parsed(Chart(one)).Title, u"");
  EXPECT_EQ(Parsed(Chart(one, "<c:title/><c:autoTitleDeleted val='1'/>")).Title, u"");
  EXPECT_EQ(Parsed(Chart("<c:pieChart/>", "<c:title/>")).Title, u"Chart Title");
  EXPECT_EQ(Parsed(Chart("<c:barChart/><c:catAx><c:title/></c:catAx>")).ChartCatAxis.Title, u"Axis Title");
}

std::string Axis(const char* AKind, int AId, const char* ASide) {
  return "<c:" + std::string(AKind) + "><c:axId val='" + std::to_string(AId) + "'/><c:axPos val='" + ASide +
         "'/></c:" + AKind + ">";
}

TEST(ChartPart, SortsAxesIntoTheirRoles) {
  const std::string bars = "<c:barChart><c:ser/><c:axId val='1'/><c:axId val='2'/></c:barChart>";
  const std::string lines = "<c:lineChart><c:ser/><c:axId val='3'/><c:axId val='4'/></c:lineChart>";
  const std::string scatter = "<c:scatterChart><c:axId val='1'/><c:axId val='2'/></c:scatterChart>";
  const std::string cases[][2] = {
      // sides of category, value and second value axis, then the series' axis groups
      {bars + Axis("catAx", 1, "b") + Axis("valAx", 2, "l"), "b l - 0"},
      {bars + Axis("valAx", 2, "b") + Axis("dateAx", 1, "l"), "l b - 0"},
      {bars + lines + Axis("catAx", 1, "b") + Axis("valAx", 2, "l") + Axis("catAx", 3, "t") + Axis("valAx", 4, "r"),
       "b l r 01"},
      {scatter + Axis("valAx", 1, "b") + Axis("valAx", 2, "l"), "b l - "},
      {scatter + Axis("valAx", 2, "r") + Axis("valAx", 1, "t"), "t r - "},
      {bars + Axis("serAx", 1, "b"), "b  - 0"},
  };
  for (const auto& row : cases) {
    const TSheetDrawing drawing = Parsed(Chart(row[0]));
    std::string text = drawing.ChartCatAxis.AxPos.ToUtf8() + " " + drawing.ChartValueAxis.AxPos.ToUtf8() + " " +
                       (drawing.HasSecondaryValueAxis ? drawing.ChartValueAxis2.AxPos.ToUtf8() : "-") + " ";
    for (const TSheetChartSeries& series : drawing.Series) text += std::to_string(series.AxisGroup);
    EXPECT_EQ(text, row[1]) << row[0];
  }
  const TSheetDrawing combo = Parsed(Chart(bars + lines));
  ASSERT_EQ(combo.Subplots.size(), 2u);
  EXPECT_EQ(combo.Series.size(), 2u);
  EXPECT_EQ(combo.Subplots[1].Series, std::vector<TSheetChartSeries>{combo.Series[1]});
  EXPECT_EQ(combo.Series[1].PlotKind, sctLine);
}

TEST(ChartPart, ReadsAxes) {
  const TSheetChartAxisInfo axis =
      Parsed(Chart("<c:barChart/><c:valAx><c:scaling><c:orientation val='maxMin'/><c:max val='1e3'/><c:min "
                   "val='0'/></c:scaling><c:delete/>"
                   "<c:majorGridlines><c:spPr><a:ln w='12700'><a:solidFill><a:srgbClr "
                   "val='00FF00'/></a:solidFill></a:ln></c:spPr></c:majorGridlines>"
                   "<c:title><c:tx><c:rich><a:bodyPr "
                   "rot='-5400000'/><a:p><a:r><a:t>Y</a:t></a:r></a:p></c:rich></c:tx></c:title>"
                   "<c:numFmt formatCode='0%'/><c:majorTickMark val='cross'/><c:minorTickMark val='in'/><c:tickLblPos "
                   "val='low'/>"
                   "<c:txPr><a:bodyPr rot='99999999999'/><a:p><a:pPr><a:defRPr "
                   "sz='800'/></a:pPr></a:p></c:txPr><c:crosses val='max'/>"
                   "<c:crossBetween val='midCat'/><c:majorUnit val='x'/><c:minorUnit val='2.5'/></c:valAx>"))
          .ChartValueAxis;
  EXPECT_TRUE(axis.OrientationMaxMin && axis.HasMax && axis.HasMin && !axis.HasMajorUnit && axis.HasMinorUnit);
  EXPECT_EQ(axis.MaxVal + axis.MinVal + axis.MinorUnitVal, 1002.5);
  EXPECT_TRUE(axis.Deleted && axis.MajorGridlines && !axis.MinorGridlines && axis.HasCrossBetween &&
              axis.CrossBetweenMidCat);
  EXPECT_EQ(axis.MajorGridStroke, (TSheetChartStroke{cpmSolid, 0x00FF00, 1}));
  EXPECT_EQ(axis.Title, u"Y");
  EXPECT_EQ(axis.TitleRotation, -5400000);
  EXPECT_EQ(axis.TickLabelRotation, 21600000);
  EXPECT_EQ(axis.NumFmt, u"0%");
  EXPECT_EQ(axis.MajorTickMark, ctmCross);
  EXPECT_EQ(axis.MinorTickMark, ctmIn);
  EXPECT_EQ(axis.TickLblPos, ctlpLow);
  EXPECT_EQ(axis.Font.SizePt, 8.0F);
  EXPECT_EQ(axis.Crosses, u"max");
  const TSheetChartAxisInfo plain = Parsed(Chart("<c:barChart/><c:valAx/>")).ChartValueAxis;
  EXPECT_EQ(plain.Crosses, u"autoZero");
  EXPECT_EQ(plain.MajorTickMark, ctmOut);
}

TEST(ChartPart, TakesDefaultsFromStyleAndColours) {
  const TTessarineTheme theme;
  detail::TXlsxDrawingRoom room;
  TSheetDrawing drawing =
      Parsed(Chart("", "<c:legend><c:txPr><a:p><a:pPr><a:defRPr sz='700'/></a:pPr></a:p></c:txPr></c:legend>"));
  detail::ParseChartStyleParts(
      "<cs:chartStyle><cs:title><cs:fontRef><a:srgbClr val='0000FF'/></cs:fontRef><cs:defRPr sz='1400' "
      "b='1'/></cs:title>"
      "<cs:legend><cs:defRPr sz='900'/></cs:legend><cs:dataPointMarkerLayout symbol='circle' "
      "size='7'/></cs:chartStyle>",
      "style",
      "<cs:colorStyle><a:schemeClr val='accent1'/><a:srgbClr val='112233'/><cs:variation><a:lumMod "
      "val='60000'/></cs:variation></cs:colorStyle>",
      "colors", {&theme, room, {}}, drawing);
  EXPECT_EQ(drawing.ChartTitleFont.SizePt, 14.0F);
  EXPECT_EQ(drawing.ChartTitleFont.Color, 0xFF0000u);
  EXPECT_EQ(drawing.ChartLegendFont.SizePt, 7.0F);
  EXPECT_FALSE(drawing.ChartCatAxis.Font.Assigned);
  EXPECT_EQ(drawing.StyleMarker, cmsCircle);
  EXPECT_EQ(drawing.StyleMarkerSizePt, 7.0F);
  ASSERT_EQ(drawing.ChartPalette.size(), 2u);
  EXPECT_EQ(drawing.ChartPalette[1], 0x332211u);
}

TEST(ChartPart, ThatCannotBeReadChangesNothing) {
  const TTessarineTheme theme;
  detail::TXlsxDrawingRoom room;
  TSheetDrawing drawing;
  const auto read = [&] {
    detail::ParseChartSpace("<c:chartSpace><c:roundedCorners/>", "xl/charts/c.xml", {&theme, room, {}}, drawing);
  };
  EXPECT_EQ(Thrown(read).substr(0, 23), "format: xl/charts/c.xml");
  EXPECT_TRUE(drawing == TSheetDrawing());
}

// ---- writing

TSheetDrawing NewChart(TSheetChartType AType) {
  TSheetDrawing drawing;
  drawing.Kind = sdkChart;
  drawing.ChartType = AType;
  drawing.Title = u"a & b\r\nc";
  drawing.LegendPos = clpTopRight;
  drawing.GapWidth = 40;
  drawing.Overlap = -20;
  drawing.DoughnutHolePct = 60;
  drawing.ChartCatAxis.Title = u"X";
  drawing.ChartValueAxis.HasMin = drawing.ChartValueAxis.MajorGridlines = true;
  drawing.ChartValueAxis.MinVal = -0.5;
  drawing.ChartValueAxis.NumFmt = u"0.0\"x\"";
  TSheetChartSeries series;
  series.Title = u"<S>";
  series.ValuesFormula = u"=$B$1:$B$3";
  series.Values = {0.1, -1e-20, 12345678.25};
  series.CategoriesFormula = u"Other!$A$1:$A$3";
  series.Categories = {u"a", u"b&c"};
  series.XValues = {1e21, 1.0 / 3, 2};
  series.Sizes = {1, 2, 3};
  series.ShowDataLabels = true;
  drawing.Series = {series, series};
  drawing.Series[1].ValuesFormula = {};
  drawing.Series[1].ShowDataLabels = false;
  return drawing;
}

TEST(ChartWriting, ReadsBackAsWritten) {
  for (const TSheetChartType type :
       {sctColumn, sctBar, sctLine, sctPie, sctDoughnut, sctArea, sctScatter, sctRadar, sctBubble}) {
    TSheetDrawing chart = NewChart(type);
    chart.Series[0].XValues[0] = chart.Series[1].XValues[0] = 7;
    const TSheetDrawing read = Parsed(detail::BuildChartSpaceXml(chart, u"My Sheet"));
    const bool hasX = type == sctScatter || type == sctBubble;
    const std::string data = (hasX ? ": ; ,700,33,200; " : ": Other!$A$1:$A$3,a,b&c; ; ");
    const std::string sizes = type == sctBubble ? "; ,100,200,300 | " : ";  | ";
    EXPECT_EQ(read.ChartType, type);
    EXPECT_EQ(DumpSeries(read.Series), "<S>" + data + "'My Sheet'!$B$1:$B$3,10,0,1234567825" + sizes + "<S>" + data +
                                           ",10,0,1234567825" + sizes);
    EXPECT_EQ(read.Title, chart.Title);
    EXPECT_EQ(read.LegendPos, clpTopRight);
    EXPECT_TRUE(read.Series[0].Labels.ShowVal && !read.Series[1].ShowDataLabels);
    if (type == sctPie || type == sctDoughnut) {
      EXPECT_EQ(read.ChartValueAxis.NumFmt, u"");
    } else {
      EXPECT_EQ(read.ChartValueAxis.NumFmt, u"0.0\"x\"");
      EXPECT_EQ(read.ChartValueAxis.MinVal, -0.5);
      EXPECT_EQ(read.ChartCatAxis.Title, u"X");
    }
    const bool isBar = type == sctColumn || type == sctBar;
    EXPECT_EQ(read.GapWidth + read.Overlap, isBar ? 20 : 150);
    EXPECT_EQ(read.DoughnutHolePct, type == sctDoughnut ? 60 : 75);
    EXPECT_FALSE(read.HasSecondaryValueAxis);
  }
}

TEST(ChartWriting, HasAShapeForEveryKind) {
  const struct {
    TSheetChartType Type;
    bool IsStacked;
    const char* Has;
  } cases[] = {
      {sctColumn, true, "<c:barChart><c:barDir val=\"col\"/><c:grouping val=\"stacked\"/>"},
      {sctBar, false, "<c:barChart><c:barDir val=\"bar\"/><c:grouping val=\"clustered\"/>"},
      {sctLine, true, "<c:lineChart><c:grouping val=\"stacked\"/>"},
      {sctLine, false, "<c:lineChart><c:grouping val=\"standard\"/>"},
      {sctStock, true, "<c:barChart><c:barDir val=\"col\"/><c:grouping val=\"clustered\"/>"},
      {sctUnknown, false, "<c:barChart><c:barDir val=\"col\"/><c:grouping val=\"clustered\"/>"},
      {sctColumn, false, "<c:gapWidth val=\"40\"/><c:overlap val=\"-20\"/><c:axId"},
      {sctScatter, false, "</c:valAx><c:valAx>"},
      {sctLine, false, "<c:pt idx=\"1\"><c:v>0</c:v></c:pt><c:pt idx=\"2\"><c:v>12345678.25</c:v>"},
      {sctScatter, false, "<c:v>1000000000000000000000</c:v></c:pt><c:pt idx=\"1\"><c:v>0.33333333333333</c:v>"},
      {sctRadar, false,
       "<c:legendPos val=\"tr\"/><c:overlay val=\"0\"/></c:legend><c:plotVisOnly val=\"1\"/>"
       "<c:dispBlanksAs val=\"gap\"/></c:chart></c:chartSpace>"},
  };
  for (const auto& row : cases) {
    TSheetDrawing chart = NewChart(row.Type);
    chart.Stacked = row.IsStacked;
    const std::string xml = detail::BuildChartSpaceXml(chart);
    EXPECT_NE(xml.find(row.Has), xml.npos) << row.Has << "\n" << xml;
  }
}

TEST(ChartWriting, KeepsTheBytesOfChartsFromFiles) {
  const std::string chart =
      "<?xml version='1.0'?>\n<c:chartSpace xmlns:r='r'><a:blip r:embed=\"rId3\"/><c:userShapes "
      "r:id=\"rId1\"/></c:chartSpace>";
  const std::string extended = "<cx:chartSpace xmlns:cx='http://x/2014/chartex'/>";
  TParts parts = DrawingOf(Anchored("<graphicFrame><chart r:id='a'/></graphicFrame>") +
                               Anchored("<graphicFrame><chart r:id='b'/></graphicFrame>"),
                           Relation("a", "../charts/chart9.xml") + Relation("b", "../charts/other.xml"));
  parts["xl/charts/chart9.xml"] = chart;
  parts["xl/charts/other.xml"] = extended;
  parts["xl/charts/_rels/chart9.xml.rels"] = Relations(
      Relation("rId4", "colors3.xml") + Relation("rId2", "Style3.xml") +
      Relation("rId1", "../none.xml", "http://x/chartUserShapes") +
      Relation("rId8", "../theme/o.xml", "x/themeOverride") + Relation("rId3", "../media/fill.jpeg", "http://x/image"));
  parts["xl/media/fill.jpeg"] = "jpeg";
  parts["xl/theme/o.xml"] = "<o/>";
  parts["xl/charts/colors3.xml"] = "<colors/>";
  parts["xl/charts/Style3.xml"] = "<style/>";
  const auto book = LoadDrawings(parts);
  TParts want = parts;
  want.erase(kSheetRels);
  EXPECT_EQ(PartsOf(book->GetSheet(0)->Drawings().Bag()), want);
  const TSheetDrawing first = DrawingAt(*book, 0);
  const TSheetDrawing second = DrawingAt(*book, 1);
  TFileReport report;
  const auto again = Rewritten(*book, &report);
  const TParts written = PartsOf(book->GetSheet(0)->Drawings().Bag());
  std::string names;
  for (const auto& [name, content] : written) names += name.substr(3) + " ";
  EXPECT_EQ(names,
            "charts/_rels/chart1.xml.rels charts/chart1.xml charts/chartEx2.xml charts/colors1.xml charts/style1.xml "
            "drawings/_rels/drawing1.xml.rels drawings/drawing1.xml media/image1.jpeg theme/themeOverride1.xml ");
  EXPECT_EQ(written.at("xl/charts/chart1.xml"), chart);
  EXPECT_EQ(written.at("xl/charts/chartEx2.xml"), extended);
  const std::string relations = written.at("xl/charts/_rels/chart1.xml.rels");
  EXPECT_EQ(relations.find("\"rId1\""), relations.npos) << "that id means another part to the chart";
  EXPECT_NE(
      relations.find("Id=\"rId3\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/image\""
                     " Target=\"../media/image1.jpeg\""),
      relations.npos)
      << relations;
  EXPECT_TRUE(DrawingAt(*again, 0) == first);
  EXPECT_TRUE(DrawingAt(*again, 1) == second);
  EXPECT_EQ(report.CountOf(ffRewritten), 1u);
  EXPECT_EQ(report.CountOf(ffDropped), 1u);
}

}  // namespace
}  // namespace tessarine
