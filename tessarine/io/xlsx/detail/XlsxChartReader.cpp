#include <tessarine/io/xlsx/detail/XlsxChartReader.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/io/xlsx/detail/XlsxChartParts.h>
#include <tessarine/io/xlsx/detail/XlsxChartWords.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingRoom.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

constexpr size_t kMaxGroups = 256;

struct TGroupKind {
  TSheetChartType Type;
  bool Is3D;
};

constexpr TXlsxWord<TGroupKind> kGroups[] = {
    {"barChart", {sctBar, false}},           {"bar3DChart", {sctBar, true}},
    {"lineChart", {sctLine, false}},         {"line3DChart", {sctLine, true}},
    {"pieChart", {sctPie, false}},           {"pie3DChart", {sctPie, true}},
    {"doughnutChart", {sctDoughnut, false}}, {"areaChart", {sctArea, false}},
    {"area3DChart", {sctArea, true}},        {"scatterChart", {sctScatter, false}},
    {"radarChart", {sctRadar, false}},       {"bubbleChart", {sctBubble, false}},
    {"stockChart", {sctStock, false}},       {"ofPieChart", {sctOfPie, false}},
    {"pieOfPieChart", {sctOfPie, false}},    {"surfaceChart", {sctSurface, false}},
    {"surface3DChart", {sctSurface, true}},
};

bool UsesTwoValueAxes(TSheetChartType AType) { return AType == sctScatter || AType == sctBubble; }

/// One group of the plot area with all that it may say, beyond what a subplot keeps.
struct TGroup {
  TSheetChartSubplot Plot;
  bool Is3D = false;
  int32_t FirstSliceAng = 0;
  int32_t HolePct = 75;
  const TXmlNode* Labels = nullptr;
  std::vector<std::string_view> AxisIds;
};

struct TAxis {
  const TXmlNode* Node;
  std::string_view Id;
};

/// Builds the chart beside the drawing, so that a chart that cannot be read changes nothing.
class TChartSpaceReader {
 public:
  explicit TChartSpaceReader(const TXlsxChartContext& AContext, const TSheetDrawing& ADrawing)
      : FContext(AContext), FOut(ADrawing) {}

  TSheetDrawing Read(const TXmlNode* ARoot) {
    if (const TXmlNode* corners = XmlFindChild(ARoot, "roundedCorners"))
      FOut.RoundedCorners = XmlBoolVal(corners, true);
    FOut.ChartStyleId = XlsxChildWhole(ARoot, "style", FOut.ChartStyleId, 0, 1000);
    ReadBox(ARoot, FOut.ChartAreaFill, FOut.ChartAreaLine);
    if (const TXmlNode* source = XmlFindChild(ARoot, "pivotSource")) ReadPivotSource(XmlFindChild(source, "name"));
    const TXmlNode* const chart = XmlFindChild(ARoot, "chart");
    ReadPlotArea(XmlFindChild(chart, "plotArea"));
    ReadTitle(chart);
    ReadView(XmlFindChild(chart, "view3D"));
    ReadLegend(XmlFindChild(chart, "legend"));
    if (const TXmlNode* visible = XmlFindChild(chart, "plotVisOnly")) FOut.PlotVisOnly = XmlBoolVal(visible, true);
    if (const auto blanks = XlsxChildVal(chart, "dispBlanksAs"); !blanks.empty())
      FOut.DispBlanksAs = TText::FromUtf8(blanks);
    return std::move(FOut);
  }

 private:
  /// "[Book1.xlsx]Sheet1!PivotTable1": only the table's own name is kept.
  void ReadPivotSource(const TXmlNode* AName) {
    const std::u16string name = XmlNodeText16(AName);
    FOut.LinkedPivotName = TText(std::u16string_view(name).substr(name.rfind(u'!') + 1));
  }

  void ReadBox(const TXmlNode* AParent, TSheetChartFill& AFill, TSheetChartStroke& ALine) const {
    const TXmlNode* const properties = XmlFindChild(AParent, "spPr");
    AFill = XlsxReadFill(properties, FContext.Theme);
    ALine = XlsxReadStroke(XmlFindChild(properties, "ln"), FContext.Theme);
  }

  /// A title without a text shows the name of the only series, or that there could be one.
  TText StandInTitle(const TXmlNode* AChart) const {
    if (XmlChildBool(AChart, "autoTitleDeleted")) return {};
    return FOut.Series.size() == 1 ? FOut.Series[0].Title : TText(u"Chart Title");
  }

  void ReadTitle(const TXmlNode* AChart) {
    const TXmlNode* const title = XmlFindChild(AChart, "title");
    if (!title) return;
    const TXmlNode* const text = XmlFindChild(title, "tx");
    const TXmlNode* const rich = XmlFindChild(text, "rich");
    const std::u16string words = XlsxChartText(text);
    FOut.Title = words.empty() ? StandInTitle(AChart) : TText(words);
    FOut.ChartTitleFont = XlsxTextBodyFont(rich ? rich : XmlFindChild(title, "txPr"), FContext.Theme);
    FOut.TitleLayout = XlsxReadLayout(title);
    ReadTitleRuns(rich);
  }

  /// The end of a paragraph belongs to the run before it.
  void ReadTitleRuns(const TXmlNode* ARich) {
    std::vector<TSheetChartTextRun>& runs = FOut.ChartTitleRuns;
    runs.clear();
    std::u16string ends;  // of paragraphs, behind the last run
    const auto takeEnds = [&] {
      if (!ends.empty() && !runs.empty()) runs.back().Text = TText(runs.back().Text.ToString() + ends);
      ends.clear();
    };
    for (const TXmlNode* paragraph : TXmlElements(ARich)) {
      if (!XmlLocalNameIs(paragraph, "p")) continue;
      const TSheetChartFont base =
          XlsxReadChartFont(XmlFindChild(XmlFindChild(paragraph, "pPr"), "defRPr"), {}, FContext.Theme);
      XlsxForEachRun(paragraph, [&](const TXmlNode* ARun, const std::u16string& AText) {
        if (AText.empty()) return;
        if (!FContext.Room.TryTake(sizeof(TSheetChartTextRun))) return FContext.Room.NoteLoss();
        takeEnds();
        runs.push_back({TText(AText), XlsxReadChartFont(XmlFindChild(ARun, "rPr"), base, FContext.Theme)});
      });
      if (!runs.empty()) ends += u"\r\n";
    }
    if (!ends.empty()) ends.resize(ends.size() - 2);  // nothing ends at the last one
    takeEnds();
  }

  void ReadView(const TXmlNode* AView) {
    if (!AView) return;
    FOut.ViewRotX = XlsxChildWhole(AView, "rotX", FOut.ViewRotX, -90, 90);
    FOut.ViewRotY = XlsxChildWhole(AView, "rotY", FOut.ViewRotY, 0, 360);
    FOut.ViewPerspective = XlsxChildWhole(AView, "perspective", FOut.ViewPerspective, 0, 240);
    if (const TXmlNode* right = XmlFindChild(AView, "rAngAx")) FOut.ViewRightAngleAxes = XmlBoolVal(right, true);
  }

  void ReadLegend(const TXmlNode* ALegend) {
    FOut.ShowLegend = ALegend != nullptr;
    if (!ALegend) return;
    FOut.LegendPos = XlsxValueOfWord(kXlsxLegendPositions, XlsxChildVal(ALegend, "legendPos"), FOut.LegendPos);
    FOut.ChartLegendFont = XlsxTextBodyFont(XmlFindChild(ALegend, "txPr"), FContext.Theme);
    FOut.LegendLayout = XlsxReadLayout(ALegend);
  }

  void ReadPlotArea(const TXmlNode* AArea) {
    if (!AArea) return;
    ReadBox(AArea, FOut.PlotAreaFill, FOut.PlotAreaLine);
    FOut.PlotLayout = XlsxReadLayout(AArea);
    if (const TXmlNode* table = XmlFindChild(AArea, "dTable")) {
      FOut.ShowDataTable = true;
      if (const TXmlNode* keys = XmlFindChild(table, "showKeys")) FOut.DataTableShowKeys = XmlBoolVal(keys, true);
    }
    FOut.Series.clear();
    FOut.Subplots.clear();
    std::vector<TGroup> groups = ReadGroups(AArea);
    ReadAxes(AArea, groups);
    TakeGroups(std::move(groups));
  }

  std::vector<TGroup> ReadGroups(const TXmlNode* AArea) {
    std::vector<TGroup> groups;
    size_t seriesCount = 0;
    for (const TXmlNode* node : TXmlElements(AArea)) {
      const auto kind = std::find_if(std::begin(kGroups), std::end(kGroups),
                                     [node](const auto& ARow) { return EqualXmlNames(ARow.Word, XmlLocalName(node)); });
      if (kind != std::end(kGroups) && groups.size() < kMaxGroups)
        groups.push_back(ReadGroup(node, kind->Value, seriesCount));
    }
    return groups;
  }

  TGroup ReadGroup(const TXmlNode* ANode, TGroupKind AKind, size_t& ASeriesCount) {
    TGroup group;
    group.Is3D = AKind.Is3D;
    ReadGroupSettings(ANode, group);
    group.Plot.ChartType = AKind.Type;
    if (AKind.Type == sctBar && EqualXmlNames(XlsxChildVal(ANode, "barDir"), "col")) group.Plot.ChartType = sctColumn;
    for (const TXmlNode* child : TXmlElements(ANode)) {
      if (XmlLocalNameIs(child, "axId")) group.AxisIds.push_back(XmlAttr(child, "val"));
      if (!XmlLocalNameIs(child, "ser")) continue;
      if (FContext.Room.TryTake(sizeof(TSheetChartSeries)))
        group.Plot.Series.push_back(XlsxReadSeries(child, ++ASeriesCount, FContext));
      else
        FContext.Room.NoteLoss();
    }
    return group;
  }

  void ReadGroupSettings(const TXmlNode* ANode, TGroup& AGroup) const {
    TSheetChartSubplot& plot = AGroup.Plot;
    plot.Grouping = XlsxValueOfWord(kXlsxGroupings, XlsxChildVal(ANode, "grouping"), cgrpClustered);
    plot.PercentStacked = plot.Grouping == cgrpPercentStacked;
    plot.Stacked = plot.Grouping == cgrpStacked || plot.PercentStacked;
    plot.VaryColors = XmlChildBool(ANode, "varyColors");
    plot.HasDropLines = XmlFindChild(ANode, "dropLines") != nullptr;
    plot.HasHiLowLines = XmlFindChild(ANode, "hiLowLines") != nullptr;
    plot.HasUpDownBars = XmlFindChild(ANode, "upDownBars") != nullptr;
    const std::string_view radar = XlsxChildVal(ANode, "radarStyle");
    plot.RadarStyle = radar.empty() ? FOut.RadarStyle : XlsxValueOfWord(kXlsxRadarStyles, radar, crsStandard);
    plot.ScatterStyle = XlsxValueOfWord(kXlsxScatterStyles, XlsxChildVal(ANode, "scatterStyle"), FOut.ScatterStyle);
    plot.GapWidth = XlsxChildWhole(ANode, "gapWidth", FOut.GapWidth, 0, 500);
    plot.Overlap = XlsxChildWhole(ANode, "overlap", FOut.Overlap, -100, 100);
    AGroup.FirstSliceAng = XlsxChildWhole(ANode, "firstSliceAng", FOut.FirstSliceAng, 0, 360);
    AGroup.HolePct = XlsxChildWhole(ANode, "holeSize", FOut.DoughnutHolePct, 1, 90);
    AGroup.Labels = XmlFindChild(ANode, "dLbls");
  }

  /// Whether an axis is the horizontal one of a group with two value axes; AIds are the axes of such groups.
  static bool IsHorizontalValues(const TAxis& AAxis, const std::set<std::string_view>& AIds) {
    const std::string_view side = XlsxChildVal(AAxis.Node, "axPos");
    return (EqualXmlNames(side, "b") || EqualXmlNames(side, "t")) && AIds.contains(AAxis.Id);
  }

  /// The first axis of each role counts; groups that name the second value axis are drawn against it.
  void ReadAxes(const TXmlNode* AArea, std::vector<TGroup>& AGroups) {
    const TXmlNode* category = nullptr;
    const TXmlNode* horizontal = nullptr;
    std::vector<TAxis> values;
    std::set<std::string_view> pairedIds;
    for (const TGroup& group : AGroups)
      if (UsesTwoValueAxes(group.Plot.ChartType)) pairedIds.insert(group.AxisIds.begin(), group.AxisIds.end());
    for (const TXmlNode* node : TXmlElements(AArea)) {
      const bool isCategory =
          XmlLocalNameIs(node, "catAx") || XmlLocalNameIs(node, "dateAx") || XmlLocalNameIs(node, "serAx");
      if (isCategory && !category) category = node;
      if (!XmlLocalNameIs(node, "valAx") || values.size() == 2) continue;
      const TAxis axis{node, XlsxChildVal(node, "axId")};
      if (!IsHorizontalValues(axis, pairedIds))
        values.push_back(axis);
      else if (!horizontal)
        horizontal = node;
    }
    if (!category) category = horizontal;
    if (category) FOut.ChartCatAxis = XlsxReadAxis(category, FContext);
    if (!values.empty()) FOut.ChartValueAxis = XlsxReadAxis(values[0].Node, FContext);
    FOut.HasSecondaryValueAxis = values.size() == 2;
    if (!FOut.HasSecondaryValueAxis) return;
    FOut.ChartValueAxis2 = XlsxReadAxis(values[1].Node, FContext);
    for (TGroup& group : AGroups) {
      if (std::find(group.AxisIds.begin(), group.AxisIds.end(), values[1].Id) == group.AxisIds.end()) continue;
      for (TSheetChartSeries& series : group.Plot.Series) series.AxisGroup = 1;
    }
  }

  /// The settings of the first group are those of the chart.
  void TakeGroups(std::vector<TGroup> AGroups) {
    if (AGroups.empty()) return;
    const TGroup& first = AGroups[0];
    FOut.ChartType = AGroups.size() > 1 ? sctCombo : first.Plot.ChartType;
    FOut.ChartIs3D = std::any_of(AGroups.begin(), AGroups.end(), [](const TGroup& AGroup) { return AGroup.Is3D; });
    FOut.Stacked = first.Plot.Stacked;
    FOut.PercentStacked = first.Plot.PercentStacked;
    FOut.PlotVaryColors = first.Plot.VaryColors;
    FOut.HasDropLines = first.Plot.HasDropLines;
    FOut.HasHiLowLines = first.Plot.HasHiLowLines;
    FOut.HasUpDownBars = first.Plot.HasUpDownBars;
    FOut.RadarStyle = first.Plot.RadarStyle;
    FOut.ScatterStyle = first.Plot.ScatterStyle;
    FOut.GapWidth = first.Plot.GapWidth;
    FOut.Overlap = first.Plot.Overlap;
    FOut.FirstSliceAng = first.FirstSliceAng;
    FOut.DoughnutHolePct = first.HolePct;
    const auto labelled =
        std::find_if(AGroups.begin(), AGroups.end(), [](const TGroup& AGroup) { return AGroup.Labels != nullptr; });
    FOut.PlotLabels = XlsxReadDataLabels(labelled == AGroups.end() ? nullptr : labelled->Labels);
    if (AGroups.size() == 1)
      FOut.Series = std::move(AGroups[0].Plot.Series);
    else
      TakeSubplots(std::move(AGroups));
  }

  void TakeSubplots(std::vector<TGroup> AGroups) {
    for (TGroup& group : AGroups) {
      for (TSheetChartSeries& series : group.Plot.Series) {
        series.PlotKind = group.Plot.ChartType;
        const size_t points = series.Categories.size() + series.Values.size() + series.XValues.size() +
                              series.Sizes.size() + 4 * series.Style.PointFills.size();
        if (FContext.Room.TryTake(sizeof series + points * sizeof(double)))
          FOut.Series.push_back(series);
        else
          FContext.Room.NoteLoss();
      }
      FOut.Subplots.push_back(std::move(group.Plot));
    }
  }

  const TXlsxChartContext& FContext;
  TSheetDrawing FOut;
};

/// A chart part without the points of its caches, of which each would make several nodes. Those that name series stay.
std::string WithoutPoints(std::string_view ABytes, std::string_view APartName, const TXlsxChartContext& AContext) {
  TXmlReader reader(ABytes, APartName, AContext.Limits);
  std::string out;
  size_t nameDepth = 0;  // of the series' name that is open
  for (TXmlEvent event = reader.Next(); event != xeEnd; event = reader.Next()) {
    const std::string_view name = reader.Name();
    if (event == xeText) {
      AppendXmlText(reader.Text(), out);
    } else if (event == xeEndElement) {
      ((out += "</") += name) += '>';
      if (nameDepth == reader.Depth()) nameDepth = 0;
    } else if (nameDepth == 0 && (reader.LocalNameIs("pt") || reader.LocalNameIs("ptCount"))) {
      if (reader.LocalNameIs("pt")) AContext.Room.NoteLoss();
      reader.SkipElement();
    } else {
      if (nameDepth == 0 && reader.LocalNameIs("tx")) nameDepth = reader.Depth();
      (out += '<') += name;
      for (const TXmlAttribute& attribute : reader.Attributes()) {
        ((out += ' ') += attribute.Name) += "=\"";
        AppendXmlAttribute(attribute.Value, out);
        out += '"';
      }
      out += '>';
    }
  }
  return out;
}

TXmlTree ChartTree(std::string_view ABytes, std::string_view APartName, const TXlsxChartContext& AContext) {
  try {
    return TXmlTree(ABytes, APartName, AContext.Limits);
  } catch (const ELimit&) {
    return TXmlTree(WithoutPoints(ABytes, APartName, AContext), APartName, AContext.Limits);
  }
}

/// The default font that a chart style has for one part of a chart; the reference's colour counts below the font's own.
TSheetChartFont StyleFont(const TXmlNode* APart, const TTessarineTheme* ATheme) {
  const TXmlNode* const run = XmlFindChild(APart, "defRPr");
  if (!run) return {};
  TSheetChartFont base;
  base.Color = XlsxDrawingColor(XmlFindChild(APart, "fontRef"), ATheme, 0);
  return XlsxReadChartFont(run, base, ATheme);
}

void ApplyStylePart(const TXmlNode* AStyle, const TTessarineTheme* ATheme, TSheetDrawing& ADrawing) {
  if (const TXmlNode* marker = XmlFindChild(AStyle, "dataPointMarkerLayout")) {
    ADrawing.StyleMarker = XlsxValueOfWord(kXlsxMarkers, XmlAttr(marker, "symbol"), ADrawing.StyleMarker);
    ADrawing.StyleMarkerSizePt =
        static_cast<float>(XlsxWholeAttr(marker, "size", static_cast<int32_t>(ADrawing.StyleMarkerSizePt), 1, 72));
  }
  const std::pair<const char*, TSheetChartFont*> fonts[] = {
      {"title", &ADrawing.ChartTitleFont},           {"legend", &ADrawing.ChartLegendFont},
      {"valueAxis", &ADrawing.ChartValueAxis.Font},  {"valueAxis", &ADrawing.ChartValueAxis2.Font},
      {"categoryAxis", &ADrawing.ChartCatAxis.Font},
  };
  for (const auto& [part, font] : fonts)
    if (!font->Assigned) *font = StyleFont(XmlFindChild(AStyle, part), ATheme);
}

}  // namespace

std::string_view XlsxChildVal(const TXmlNode* ANode, std::string_view AChild) {
  return XmlAttr(XmlFindChild(ANode, AChild), "val");
}

int32_t XlsxChildWhole(const TXmlNode* ANode, std::string_view AChild, int32_t ADefault, int32_t AMin, int32_t AMax) {
  return XlsxWholeAttr(XmlFindChild(ANode, AChild), "val", ADefault, AMin, AMax);
}

std::u16string XlsxChartText(const TXmlNode* AText) {
  std::u16string text;
  if (const TXmlNode* rich = XmlFindChild(AText, "rich")) {
    bool isFirst = true;
    for (const TXmlNode* paragraph : TXmlElements(rich)) {
      if (!XmlLocalNameIs(paragraph, "p")) continue;
      if (!std::exchange(isFirst, false)) text += u"\r\n";
      XlsxForEachRun(paragraph, [&text](const TXmlNode*, const std::u16string& ARun) { text += ARun; });
    }
    return text;
  }
  if (const TXmlNode* plain = XmlFindChild(AText, "v")) return XmlNodeText16(plain);
  for (const TXmlNode* point : TXmlElements(XmlFindChild(XmlFindChild(AText, "strRef"), "strCache"))) {
    if (!XmlLocalNameIs(point, "pt")) continue;
    if (!text.empty()) text += u' ';
    text += XmlNodeText16(XmlFindChild(point, "v"));
  }
  return text;
}

TSheetChartFont XlsxTextBodyFont(const TXmlNode* ABody, const TTessarineTheme* ATheme) {
  const TXmlNode* const paragraph = XmlFindChild(ABody, "p");
  const TSheetChartFont base = XlsxReadChartFont(XmlFindChild(XmlFindChild(paragraph, "pPr"), "defRPr"), {}, ATheme);
  return XlsxReadChartFont(XmlFindChild(XmlFindChild(paragraph, "r"), "rPr"), base, ATheme);
}

TSheetChartManualLayout XlsxReadLayout(const TXmlNode* AParent) {
  TSheetChartManualLayout layout;
  layout.Overlay = XmlChildBool(AParent, "overlay");
  const TXmlNode* const manual = XmlFindChild(XmlFindChild(AParent, "layout"), "manualLayout");
  if (!manual) return layout;
  const auto read = [manual](const char* AName, const char* AModeName, bool& AHas, double& AValue,
                             TSheetChartLayoutMode& AMode) {
    const TXmlNode* const node = XmlFindChild(manual, AName);
    AHas = XmlHasAttr(node, "val");
    AValue = XmlAttrFloat(node, "val", 0);
    AMode = EqualXmlNames(XlsxChildVal(manual, AModeName), "edge") ? clmEdge : clmFactor;
  };
  read("x", "xMode", layout.HasX, layout.X, layout.XMode);
  read("y", "yMode", layout.HasY, layout.Y, layout.YMode);
  read("w", "wMode", layout.HasW, layout.W, layout.WMode);
  read("h", "hMode", layout.HasH, layout.H, layout.HMode);
  if (EqualXmlNames(XlsxChildVal(manual, "layoutTarget"), "inner")) layout.Target = cltInner;
  return layout;
}

void ParseChartSpace(std::string_view ABytes, std::string_view APartName, const TXlsxChartContext& AContext,
                     TSheetDrawing& ADrawing) {
  if (ABytes.empty()) return;
  const TXmlTree tree = ChartTree(ABytes, APartName, AContext);
  if (XmlLocalNameIs(tree.Root(), "chartSpace")) ADrawing = TChartSpaceReader(AContext, ADrawing).Read(tree.Root());
}

void ParseChartStyleParts(std::string_view AStyleBytes, std::string_view AStylePartName, std::string_view AColorsBytes,
                          std::string_view AColorsPartName, const TXlsxChartContext& AContext,
                          TSheetDrawing& ADrawing) {
  if (!AStyleBytes.empty()) {
    const TXmlTree style(AStyleBytes, AStylePartName, AContext.Limits);
    ApplyStylePart(style.Root(), AContext.Theme, ADrawing);
  }
  if (AColorsBytes.empty()) return;
  const TXmlTree colors(AColorsBytes, AColorsPartName, AContext.Limits);
  std::vector<uint32_t> palette;
  for (const TXmlNode* child : TXmlElements(colors.Root()))
    if (const auto color = XlsxColorOfElement(child, AContext.Theme)) palette.push_back(*color);
  if (!palette.empty()) ADrawing.ChartPalette = std::move(palette);
}

}  // namespace tessarine::detail
