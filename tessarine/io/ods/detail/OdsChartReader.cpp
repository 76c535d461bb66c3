#include <tessarine/io/ods/detail/OdsChartReader.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <tessarine/io/ods/detail/OdsAddress.h>
#include <tessarine/io/ods/detail/OdsStyleReader.h>
#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr size_t kMaxEntries = 1'000'000;                             // cells of a chart's table that are kept
constexpr int32_t kMaxPointRepeat = 10'000;                           // points of one look
constexpr uint32_t kSeriesColors[] = {0x6B6B1F, 0x96542F, 0x000000};  // 0x00BBGGRR, for series that state none

struct TChartClass {
  std::string_view Name;
  TSheetChartType Type;
};
constexpr TChartClass kChartClasses[] = {
    {"ring", sctDoughnut}, {"donut", sctDoughnut},     {"doughnut", sctDoughnut}, {"circle", sctPie},
    {"pie", sctPie},       {"bar-horizontal", sctBar}, {"column", sctColumn},     {"bar-vertical", sctColumn},
    {"line", sctLine},     {"area", sctArea},          {"scatter", sctScatter},   {"bubble", sctBubble},
    {"radar", sctRadar},   {"filled-radar", sctRadar}, {"stock", sctStock},       {"surface", sctSurface},
};

struct TLegendPlace {
  std::string_view Name;
  TSheetChartLegendPos Position;
};
constexpr TLegendPlace kLegendPlaces[] = {
    {"end", clpRight}, {"start", clpLeft}, {"top", clpTop}, {"bottom", clpBottom}, {"top-end", clpTopRight}};

std::string_view ChartClassOf(const TXmlNode* ANode) { return XmlLocalName(XmlAttr(ANode, "class")); }

/// Lying bars are "bar" with the plot turned; others of that class stand.
TSheetChartType TypeOf(std::string_view AClass, bool AIsTurned) {
  if (AClass == "bar") return AIsTurned ? sctBar : sctColumn;
  for (const TChartClass& known : kChartClasses)
    if (known.Name == AClass) return known.Type;
  return sctColumn;
}

std::u16string TitleText(const TXmlNode* ANode) {
  std::u16string text;
  for (const TXmlNode* child : TXmlElements(XmlFindChild(ANode, "title"))) {
    if (!XmlLocalNameIs(child, "p")) continue;
    if (!text.empty()) text += u"\r\n";
    text += XmlNodeText16(child);
  }
  return text;
}

double NumberOf(std::string_view AText) {
  std::string text(AText);
  std::replace(text.begin(), text.end(), ',', '.');
  double number = 0;
  return TryParseFileNumber(std::string_view(text), number) ? number : 0;
}

/// A reference to cells of a sheet; the chart's own table is none.
TText FormulaOf(std::string_view AAddress) {
  if (AAddress.empty() || AAddress.starts_with("local-table")) return {};
  const auto formula = OdsAddressToExcel(Utf8ToUtf16(AAddress));
  return formula ? TText(*formula) : TText();
}

bool IsOn(std::string_view AText) { return AText == "true"; }

/// Values that lie ahead of those of a series: its x values, and the heights of bubbles.
struct TDomain {
  TText Formula;
  size_t Column = 0;  // of the chart's table
};

std::optional<uint32_t> FillColorOf(const TOdsStyleReader& AStyles, std::string_view AStyle) {
  const auto style = AStyles.TryGetGraphicStyle(AStyle, ofChart);
  if (!style || !style->HasFill || !style->FillColor) return std::nullopt;
  return OdsBgrColor(*style->FillColor);
}

}  // namespace

bool TOdsChartReader::Read(std::string_view ABytes, std::string_view APartName, TSheetDrawing& ADrawing) {
  const TXmlTree tree(ABytes, APartName, FLimits);
  const TXmlNode* const body = XmlFindChild(tree.Root(), "body");
  const TXmlNode* const chart = XmlFindChild(XmlFindChild(body, "chart"), "chart");
  if (!chart) return false;
  TOdsStyleReader styles(FLimits, {});
  styles.LoadPart(ABytes, APartName);
  const TXmlNode* const plot = XmlFindChild(chart, "plot-area");
  const std::string_view plotStyle = XmlAttr(plot, "style-name");
  const auto plotProperty = [&](std::string_view AName) {
    return IsOn(styles.Property(ofChart, plotStyle, ogChart, AName));
  };
  ADrawing.ChartType = TypeOf(ChartClassOf(chart), plotProperty("vertical"));
  ADrawing.Stacked = plotProperty("stacked");
  ADrawing.PercentStacked = plotProperty("percentage");
  ADrawing.ChartIs3D = plotProperty("three-dimensional");
  ADrawing.Title = TText(TitleText(chart));
  const TXmlNode* const legend = XmlFindChild(chart, "legend");
  ADrawing.ShowLegend = legend != nullptr;
  for (const TLegendPlace& place : kLegendPlaces)
    if (place.Name == XmlAttr(legend, "legend-position")) ADrawing.LegendPos = place.Position;
  ReadTable(XmlFindChild(chart, "table"));
  ReadPlot(plot, styles, ADrawing);
  return true;
}

// ---- the table

void TOdsChartReader::ReadTable(const TXmlNode* ATable) {
  AddRows(XmlFindChild(ATable, "table-header-rows"));
  FHeaderRows = FRows.size();
  AddRows(ATable);
  AddRows(XmlFindChild(ATable, "table-rows"));
  for (const TRow& row : FRows) FWidth = std::max(FWidth, row.size());
}

void TOdsChartReader::AddRows(const TXmlNode* AParent) {
  for (const TXmlNode* node : TXmlElements(AParent)) {
    if (!XmlLocalNameIs(node, "table-row")) continue;
    TRow row;
    for (const TXmlNode* cell : TXmlElements(node)) {
      if (FEntries++ >= kMaxEntries) return;
      TEntry entry;
      const TXmlNode* const paragraph = XmlFindChild(cell, "p");
      entry.Text = TText(XmlNodeText16(paragraph));
      entry.Number = NumberOf(XmlHasAttr(cell, "value") ? std::string(XmlAttr(cell, "value")) : XmlNodeText(paragraph));
      row.push_back(std::move(entry));
    }
    FRows.push_back(std::move(row));
  }
}

/// Each series has a point in every row, so that a small table may ask for many.
bool TOdsChartReader::TakePoints() {
  const size_t count = FRows.size() - FHeaderRows;
  if (count > FPoints) {
    FHasLeftOut = true;
    return false;
  }
  FPoints -= count;
  return true;
}

std::vector<double> TOdsChartReader::Column(size_t AColumn) {
  std::vector<double> values;
  if (!HasColumn(AColumn) || !TakePoints()) return values;
  for (size_t row = FHeaderRows; row < FRows.size(); ++row)
    values.push_back(AColumn < FRows[row].size() ? FRows[row][AColumn].Number : 0);
  return values;
}

std::vector<TText> TOdsChartReader::Categories() {
  std::vector<TText> texts;
  if (!TakePoints()) return texts;
  for (size_t row = FHeaderRows; row < FRows.size(); ++row)
    texts.push_back(FRows[row].empty() ? TText() : FRows[row].front().Text);
  return texts;
}

// ---- series

void TOdsChartReader::ReadPlot(const TXmlNode* APlot, const TOdsStyleReader& AStyles, TSheetDrawing& ADrawing) {
  for (const TXmlNode* axis : TXmlElements(APlot)) {
    if (!XmlLocalNameIs(axis, "axis")) continue;
    TSheetChartAxisInfo& info = XmlAttr(axis, "dimension") == "x" ? ADrawing.ChartCatAxis : ADrawing.ChartValueAxis;
    info.Title = TText(TitleText(axis));
    const TText formula = FormulaOf(XmlAttr(XmlFindChild(axis, "categories"), "cell-range-address"));
    if (!formula.IsEmpty()) FCategoriesFormula = formula;
  }
  for (const TXmlNode* series : TXmlElements(APlot))
    if (XmlLocalNameIs(series, "series")) ReadSeries(series, AStyles, ADrawing);
}

TSheetChartSeries TOdsChartReader::ReadData(const TXmlNode* ANode, TSheetChartType AType) {
  TSheetChartSeries series;
  std::vector<TDomain> domains;
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(child, "domain")) continue;
    domains.push_back({FormulaOf(XmlAttr(child, "cell-range-address")), FNextColumn++});
  }
  if (!domains.empty() && FNextColumn == FWidth) {
    // A table without a column for the x values has them in the place of the categories.
    domains.back().Column = 0;
    --FNextColumn;
  }
  const size_t column = FNextColumn++;
  series.Values = Column(column);
  series.ValuesFormula = FormulaOf(XmlAttr(ANode, "values-cell-range-address"));
  if (FHeaderRows > 0 && column < FRows.front().size()) series.Title = FRows.front()[column].Text;
  const bool hasCategories = domains.empty() || domains.back().Column > 0;
  if (HasColumn(column) && hasCategories) series.Categories = Categories();
  series.CategoriesFormula = FCategoriesFormula;
  if (AType == sctBubble && (domains.size() > 1 || (!domains.empty() && !FXValues.empty()))) {
    // The first domain has the heights, the second the places; the series' own values are the sizes. Without a second
    // one the places are those of the series before.
    series.Sizes = std::exchange(series.Values, Column(domains.front().Column));
    series.SizesFormula = std::exchange(series.ValuesFormula, domains.front().Formula);
    domains.erase(domains.begin());
  }
  if (!domains.empty()) {
    FXValues = Column(domains.back().Column);
    series.XValuesFormula = domains.back().Formula;
  }
  const bool isXY = AType == sctScatter || AType == sctBubble;
  if (isXY && HasColumn(column) && !FXValues.empty() && TakePoints()) series.XValues = FXValues;
  return series;
}

void TOdsChartReader::ReadSeries(const TXmlNode* ANode, const TOdsStyleReader& AStyles, TSheetDrawing& ADrawing) {
  TSheetChartSeries series = ReadData(ANode, ADrawing.ChartType);
  const std::string_view style = XmlAttr(ANode, "style-name");
  const size_t known = std::min(ADrawing.Series.size(), std::size(kSeriesColors) - 1);
  series.Style.Fill = TSheetChartFill::Solid(FillColorOf(AStyles, style).value_or(kSeriesColors[known]));
  const std::string_view number = AStyles.Property(ofChart, style, ogChart, "data-label-number");
  series.Labels.ShowVal = number.starts_with("value");
  series.Labels.ShowPercent = number.ends_with("percentage");
  series.Labels.ShowCatName = IsOn(AStyles.Property(ofChart, style, ogChart, "data-label-text"));
  series.ShowDataLabels = series.Labels.ShowVal || series.Labels.ShowPercent || series.Labels.ShowCatName;
  series.Labels.Assigned = series.ShowDataLabels;
  series.Idx = series.Order = static_cast<int32_t>(ADrawing.Series.size());
  ReadPoints(ANode, AStyles, series);
  ADrawing.Series.push_back(std::move(series));
}

void TOdsChartReader::ReadPoints(const TXmlNode* ANode, const TOdsStyleReader& AStyles,
                                 TSheetChartSeries& ASeries) const {
  bool hasColor = false;
  std::vector<uint32_t> colors;
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(child, "data-point")) continue;
    const auto color = FillColorOf(AStyles, XmlAttr(child, "style-name"));
    hasColor = hasColor || color;
    const int32_t repeat = std::clamp(XmlAttrInt(child, "repeated", 1), 1, kMaxPointRepeat);
    const size_t left = ASeries.Values.size() - std::min(ASeries.Values.size(), colors.size());
    colors.insert(colors.end(), std::min(static_cast<size_t>(repeat), left), color.value_or(ASeries.Style.Fill.Color));
  }
  if (hasColor) ASeries.PointColors = std::move(colors);
}

}  // namespace tessarine::detail
