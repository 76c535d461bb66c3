#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/io/xlsx/detail/XlsxChartParts.h>
#include <tessarine/io/xlsx/detail/XlsxChartWords.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingRoom.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kMaxSeriesPoints = 1'048'576;  // of a series, as many as a sheet has rows

/// The cache or the literals of a data source, and the reference that it was taken from.
struct TDataSource {
  TText Formula;
  const TXmlNode* Data = nullptr;
  bool HasLevels = false;
};

TDataSource SourceOf(const TXmlNode* ANode) {
  constexpr std::string_view kReferences[] = {"numRef", "strRef", "multiLvlStrRef"};
  constexpr std::string_view kLiterals[] = {"numLit", "strLit"};
  constexpr std::string_view kCaches[] = {"numCache", "strCache", "multiLvlStrCache"};
  TDataSource source;
  for (size_t i = 0; i < std::size(kReferences); ++i) {
    const TXmlNode* const reference = XmlFindChild(ANode, kReferences[i]);
    if (!reference) continue;
    source.Formula = TText(XmlNodeText16(XmlFindChild(reference, "f")));
    source.Data = XmlFindChild(reference, kCaches[i]);
    source.HasLevels = i == 2;
    return source;
  }
  for (const std::string_view name : kLiterals)
    if (const TXmlNode* literal = XmlFindChild(ANode, name)) source.Data = literal;
  return source;
}

/// Calls ASet(index, value node) for each point with a place and a value. AList grows to the count that the cache
/// states and to its last point.
template <class TList, class TSet>
void ForEachPoint(const TXmlNode* AData, TXlsxDrawingRoom& ARoom, TList& AList, TSet&& ASet) {
  const int32_t count = std::min(XmlAttrInt(XmlFindChild(AData, "ptCount"), "val", 0), kMaxSeriesPoints);
  if (count > 0) ARoom.TryGrow(AList, static_cast<size_t>(count));
  for (const TXmlNode* point : TXmlElements(AData)) {
    if (!XmlLocalNameIs(point, "pt")) continue;
    const int32_t index = XmlAttrInt(point, "idx", -1);
    const auto place = static_cast<size_t>(std::max(index, 0));
    if (index < 0 || index >= kMaxSeriesPoints || !ARoom.TryGrow(AList, place + 1)) {
      ARoom.NoteLoss();
    } else if (const TXmlNode* value = XmlFindChild(point, "v")) {
      ASet(place, value);
    }
  }
}

std::vector<double> ReadNumbers(const TXmlNode* AData, TXlsxDrawingRoom& ARoom) {
  std::vector<double> numbers;
  ForEachPoint(AData, ARoom, numbers, [&](size_t AIndex, const TXmlNode* AValue) {
    double number = 0;
    if (TryParseFileNumber(XlsxTrim(XmlNodeText(AValue)), number)) numbers[AIndex] = number;
  });
  return numbers;
}

/// Puts the texts of one level ahead of those that are there already, with a blank in between.
void AddLevel(const TXmlNode* ALevel, TXlsxDrawingRoom& ARoom, std::vector<TText>& ATexts) {
  ForEachPoint(ALevel, ARoom, ATexts, [&](size_t AIndex, const TXmlNode* AValue) {
    std::u16string text = XmlNodeText16(AValue);
    if (!ATexts[AIndex].IsEmpty() && ARoom.TryTake(ATexts[AIndex].Length() * 2))
      (text += u' ') += ATexts[AIndex].View();
    ATexts[AIndex] = TText(text);
  });
}

std::vector<TText> ReadTexts(const TDataSource& ASource, TXlsxDrawingRoom& ARoom) {
  std::vector<TText> texts;
  if (!ASource.HasLevels) {
    ForEachPoint(ASource.Data, ARoom, texts,
                 [&](size_t AIndex, const TXmlNode* AValue) { texts[AIndex] = TText(XmlNodeText16(AValue)); });
    return texts;
  }
  for (const TXmlNode* level : TXmlElements(ASource.Data))
    if (XmlLocalNameIs(level, "lvl")) AddLevel(level, ARoom, texts);
  return texts;
}

void ReadNumbersOf(const TXmlNode* ANode, TXlsxDrawingRoom& ARoom, TText& AFormula, std::vector<double>& ANumbers) {
  if (!ANode) return;
  const TDataSource source = SourceOf(ANode);
  AFormula = source.Formula;
  ANumbers = ReadNumbers(source.Data, ARoom);
}

void ReadData(const TXmlNode* ASeries, TXlsxDrawingRoom& ARoom, TSheetChartSeries& AOut) {
  const TXmlNode* const values = XmlFindChild(ASeries, "val");
  ReadNumbersOf(values ? values : XmlFindChild(ASeries, "yVal"), ARoom, AOut.ValuesFormula, AOut.Values);
  ReadNumbersOf(XmlFindChild(ASeries, "xVal"), ARoom, AOut.XValuesFormula, AOut.XValues);
  ReadNumbersOf(XmlFindChild(ASeries, "bubbleSize"), ARoom, AOut.SizesFormula, AOut.Sizes);
  const TDataSource categories = SourceOf(XmlFindChild(ASeries, "cat"));
  AOut.CategoriesFormula = categories.Formula;
  AOut.Categories = ReadTexts(categories, ARoom);
}

void ReadPoint(const TXmlNode* APoint, const TXlsxChartContext& AContext, TSheetChartSeriesStyle& AStyle) {
  const int32_t index = XmlAttrInt(XmlFindChild(APoint, "idx"), "val", -1);
  const TXmlNode* const properties = XmlFindChild(APoint, "spPr");
  if (!properties) return;
  const auto place = static_cast<size_t>(std::max(index, 0));
  if (index < 0 || index >= kMaxSeriesPoints || !AContext.Room.TryGrow(AStyle.PointFills, place + 1) ||
      !AContext.Room.TryGrow(AStyle.PointStrokes, place + 1)) {
    return AContext.Room.NoteLoss();
  }
  AStyle.PointFills[place] = XlsxReadFill(properties, AContext.Theme);
  AStyle.PointStrokes[place] = XlsxReadStroke(XmlFindChild(properties, "ln"), AContext.Theme);
}

TSheetChartSeriesStyle ReadStyle(const TXmlNode* ASeries, const TXlsxChartContext& AContext) {
  TSheetChartSeriesStyle style;
  const TXmlNode* const properties = XmlFindChild(ASeries, "spPr");
  style.Fill = XlsxReadFill(properties, AContext.Theme);
  style.Line = XlsxReadStroke(XmlFindChild(properties, "ln"), AContext.Theme);
  const TXmlNode* const marker = XmlFindChild(ASeries, "marker");
  style.Marker = XlsxValueOfWord(kXlsxMarkers, XlsxChildVal(marker, "symbol"), cmsAuto);
  style.MarkerSizePt = static_cast<float>(XlsxChildWhole(marker, "size", 0, 0, 72));
  const TXmlNode* const markerProperties = XmlFindChild(marker, "spPr");
  style.MarkerFill = XlsxReadFill(markerProperties, AContext.Theme);
  style.MarkerLine = XlsxReadStroke(XmlFindChild(markerProperties, "ln"), AContext.Theme);
  style.Smooth = XmlChildBool(ASeries, "smooth");
  for (const TXmlNode* point : TXmlElements(ASeries))
    if (XmlLocalNameIs(point, "dPt")) ReadPoint(point, AContext, style);
  return style;
}

void ReadAnalysis(const TXmlNode* ASeries, TSheetChartSeries& AOut) {
  AOut.HasErrorBars = XmlFindChild(ASeries, "errBars") != nullptr;
  const TXmlNode* const trend = XmlFindChild(ASeries, "trendline");
  AOut.HasTrendline = trend != nullptr;
  if (!trend) return;
  const std::string_view type = XlsxChildVal(trend, "trendlineType");
  AOut.TrendlineType = type.empty() ? TText(u"linear") : TText::FromUtf8(type);
}

}  // namespace

TSheetChartDataLabels XlsxReadDataLabels(const TXmlNode* ALabels) {
  TSheetChartDataLabels labels;
  if (!ALabels) return labels;
  labels.Assigned = true;
  if (XmlChildBool(ALabels, "delete")) return labels;
  labels.ShowLegendKey = XmlChildBool(ALabels, "showLegendKey");
  labels.ShowVal = XmlChildBool(ALabels, "showVal");
  labels.ShowCatName = XmlChildBool(ALabels, "showCatName");
  labels.ShowSerName = XmlChildBool(ALabels, "showSerName");
  labels.ShowPercent = XmlChildBool(ALabels, "showPercent");
  labels.ShowBubbleSize = XmlChildBool(ALabels, "showBubbleSize");
  labels.ShowLeaderLines = XmlChildBool(ALabels, "showLeaderLines");
  return labels;
}

TSheetChartSeries XlsxReadSeries(const TXmlNode* ASeries, size_t ANumber, const TXlsxChartContext& AContext) {
  TSheetChartSeries series;
  series.Idx = XlsxChildWhole(ASeries, "idx", 0, 0, std::numeric_limits<int32_t>::max());
  series.Order = XlsxChildWhole(ASeries, "order", 0, 0, std::numeric_limits<int32_t>::max());
  const std::u16string title = XlsxChartText(XmlFindChild(ASeries, "tx"));
  series.Title = title.empty() ? TText::FromUtf8("Series" + std::to_string(ANumber)) : TText(title);
  ReadData(ASeries, AContext.Room, series);
  series.Style = ReadStyle(ASeries, AContext);
  series.Labels = XlsxReadDataLabels(XmlFindChild(ASeries, "dLbls"));
  series.ShowDataLabels = series.Labels.ShowVal || series.Labels.ShowCatName || series.Labels.ShowSerName ||
                          series.Labels.ShowPercent || series.Labels.ShowBubbleSize;
  series.Explosion = XlsxChildWhole(ASeries, "explosion", 0, 0, 400);
  series.InvertIfNegative = XmlChildBool(ASeries, "invertIfNegative");
  ReadAnalysis(ASeries, series);
  return series;
}

}  // namespace tessarine::detail
