#include <tessarine/io/ods/detail/OdsChartWriter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/io/ods/detail/OdsFormula.h>
#include <tessarine/io/ods/detail/OdsPackageWriter.h>
#include <tessarine/io/ods/detail/OdsStyleWriter.h>
#include <tessarine/io/ods/detail/OdsTextWriter.h>
#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

constexpr const char* kSeriesColor = "#4472C4";

const char* ClassOf(TSheetChartType AType, bool ALiteral) {
  switch (AType) {
    case sctDoughnut: return "chart:ring";
    case sctPie:
    case sctOfPie: return "chart:circle";
    case sctBar: return "chart:bar";
    case sctLine: return "chart:line";
    case sctArea: return "chart:area";
    case sctScatter: return "chart:scatter";
    case sctBubble: return "chart:bubble";
    case sctRadar: return "chart:radar";
    case sctStock: return "chart:stock";
    case sctColumn:
    case sctCombo:
    case sctSurface:
    case sctUnknown: break;
  }
  return ALiteral ? "chart:column" : "chart:bar";
}

void AppendAddress(const char* AName, std::u16string_view AAddress, std::string& AOut) {
  AOut.append(" ").append(AName).append("=\"");
  AppendXmlAttribute(AAddress, AOut);
  AOut += '"';
}

/// 0x00BBGGRR as files have it.
uint32_t FromBgr(uint32_t AColor) { return (AColor & 0xFFu) << 16 | (AColor & 0xFF00u) | (AColor >> 16 & 0xFFu); }

class TChartWriter {
 public:
  TChartWriter(const TSheetDrawing& ADrawing, bool ALiteral) : FDrawing(ADrawing), FLiteral(ALiteral) {
    if (!ADrawing.Series.empty()) FSeries = &ADrawing.Series[0];
    for (const TSheetChartSubplot& subplot : ADrawing.Subplots)
      if (!FSeries && !subplot.Series.empty()) FSeries = &subplot.Series[0];
    if (FSeries) LayOut();
  }

  std::string Run(double AWidthCm, double AHeightCm) {
    FOut = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document-content";
    FOut.append(OdsNamespaces()).append(" office:version=\"1.2\">");
    AppendStyles();
    FOut += "<office:body><office:chart><chart:chart";
    if (FValues) FOut += " xlink:href=\"..\" xlink:type=\"simple\"";  // the data are the sheet's
    FOut.append(" chart:class=\"").append(ClassOf(FDrawing.ChartType, FLiteral));
    FOut.append("\" svg:width=\"").append(OdsLengthText(AWidthCm));
    FOut.append("\" svg:height=\"").append(OdsLengthText(AHeightCm)).append("\">");
    AppendTitle(FDrawing.Title);
    if (FDrawing.ShowLegend) FOut += "<chart:legend chart:legend-position=\"end\"/>";
    AppendPlotArea();
    AppendTable();
    FOut += "</chart:chart></office:chart></office:body></office:document-content>";
    return std::move(FOut);
  }

 private:
  /// What the columns of the table hold, and whether the data are the sheet's: then all of them have to be.
  void LayOut() {
    const bool isBubble = FDrawing.ChartType == sctBubble;
    const bool isXY = isBubble || FDrawing.ChartType == sctScatter;
    FHasX = !FSeries->XValues.empty() && (isXY || FSeries->Categories.empty());
    FHasSizes = isBubble && FHasX && !FSeries->Sizes.empty() && !FLiteral;
    FRows = std::max({FSeries->Values.size(), FSeries->XValues.size(), FSeries->Categories.size()});
    if (FHasSizes) FRows = std::max(FRows, FSeries->Sizes.size());
    FValues = OdsAddressFromExcel(FSeries->ValuesFormula);
    FCategories = OdsAddressFromExcel(FHasX ? FSeries->XValuesFormula : FSeries->CategoriesFormula);
    FSizes = OdsAddressFromExcel(FSeries->SizesFormula);
    if (FHasSizes && !(FCategories && FSizes)) FValues.reset();
  }

  void AppendTitle(std::u16string_view ATitle) {
    if (ATitle.empty()) return;
    FOut += "<chart:title>";
    AppendOdsParagraphs(ATitle, {}, FOut);
    FOut += "</chart:title>";
  }

  void AppendStyles() {
    FOut += "<office:automatic-styles><style:style style:name=\"G0\" style:family=\"chart\"><style:chart-properties";
    if (!FLiteral) FOut.append(" chart:vertical=\"").append(FDrawing.ChartType == sctBar ? "true\"" : "false\"");
    if (FDrawing.Stacked) FOut += " chart:stacked=\"true\"";
    if (FDrawing.PercentStacked) FOut += " chart:percentage=\"true\"";
    if (FDrawing.ChartIs3D) FOut += " chart:three-dimensional=\"true\"";
    FOut += "/></style:style><style:style style:name=\"G0S0\" style:family=\"chart\"><style:chart-properties";
    if (ShowsLabels()) FOut += " chart:data-label-number=\"value\"";
    if (FSeries && FSeries->Labels.ShowCatName) FOut += " chart:data-label-text=\"true\"";
    FOut.append("/><style:graphic-properties draw:fill=\"solid\" draw:fill-color=\"").append(kSeriesColor);
    FOut.append("\" svg:stroke-color=\"").append(kSeriesColor).append("\"/></style:style>");
    for (size_t i = 0; i < PointCount(); ++i) {
      FOut.append("<style:style style:name=\"").append(PointStyle(i));
      FOut += "\" style:family=\"chart\"><style:graphic-properties draw:fill=\"solid\" draw:fill-color=\"";
      AppendOdsColor(FromBgr(FSeries->PointColors[i]), FOut);
      FOut += "\"/></style:style>";
    }
    FOut += "</office:automatic-styles>";
  }

  bool ShowsLabels() const { return FSeries && (FSeries->ShowDataLabels || FSeries->Labels.ShowVal); }
  size_t PointCount() const { return FSeries ? std::min(FSeries->PointColors.size(), FRows) : 0; }
  static std::string PointStyle(size_t AIndex) { return "G0S0P" + std::to_string(AIndex); }

  std::u16string LocalRange(char16_t ACol) const {
    std::u16string range = u"local-table.$";
    range.append(1, ACol).append(u"$2:.$").append(1, ACol).append(u"$");
    for (const char digit : std::to_string(FRows + 1)) range += static_cast<char16_t>(digit);
    return range;
  }
  std::u16string CategoriesAddress() const {
    if (FValues) return FCategories.value_or(std::u16string());
    return LocalRange(u'A');
  }
  std::u16string ValuesAddress() const { return FValues ? *FValues : LocalRange(u'B'); }
  std::u16string SizesAddress() const { return FValues ? *FSizes : LocalRange(u'C'); }

  void AppendPlotArea() {
    FOut += "<chart:plot-area chart:style-name=\"G0\"><chart:axis chart:dimension=\"x\" chart:name=\"primary-x\">";
    AppendTitle(FDrawing.ChartCatAxis.Title);
    const std::u16string categories = FSeries && FRows > 0 ? CategoriesAddress() : std::u16string();
    if (!categories.empty() && !FHasX) {
      FOut += "<chart:categories";
      AppendAddress("table:cell-range-address", categories, FOut);
      FOut += "/>";
    }
    FOut += "</chart:axis><chart:axis chart:dimension=\"y\" chart:name=\"primary-y\">";
    AppendTitle(FDrawing.ChartValueAxis.Title);
    FOut += "<chart:grid chart:class=\"major\"/></chart:axis>";
    if (FSeries) AppendSeries(categories);
    FOut += "</chart:plot-area>";
  }

  void AppendSeries(std::u16string_view ACategories) {
    FOut += "<chart:series chart:style-name=\"G0S0\"";
    if (FValues || FRows > 0)
      AppendAddress("chart:values-cell-range-address", FHasSizes ? SizesAddress() : ValuesAddress(), FOut);
    if (!FValues)
      AppendAddress("chart:label-cell-address", FHasSizes ? u"local-table.$C$1" : u"local-table.$B$1", FOut);
    FOut.append(" chart:class=\"").append(ClassOf(FDrawing.ChartType, FLiteral)).append("\">");
    if (FHasSizes) AppendDomain(ValuesAddress());
    if (FHasX && !ACategories.empty()) AppendDomain(ACategories);
    for (size_t i = 0; i < PointCount(); ++i)
      FOut.append("<chart:data-point chart:style-name=\"").append(PointStyle(i)).append("\"/>");
    FOut += "</chart:series>";
  }

  void AppendDomain(std::u16string_view AAddress) {
    FOut += "<chart:domain";
    AppendAddress("table:cell-range-address", AAddress, FOut);
    FOut += "/>";
  }

  void AppendTable() {
    FOut +=
        "<table:table table:name=\"local-table\"><table:table-header-columns><table:table-column/>"
        "</table:table-header-columns><table:table-columns><table:table-column/>";
    if (FHasSizes) FOut += "<table:table-column/>";
    FOut += "</table:table-columns><table:table-header-rows><table:table-row><table:table-cell/>";
    if (FHasSizes) FOut += "<table:table-cell/>";
    AppendTextCell(FSeries ? FSeries->Title.View() : std::u16string_view());
    FOut += "</table:table-row></table:table-header-rows><table:table-rows>";
    for (size_t i = 0; i < FRows; ++i) {
      FOut += "<table:table-row>";
      if (FHasX) {
        AppendNumberCell(FSeries->XValues, i);
      } else {
        AppendTextCell(i < FSeries->Categories.size() ? FSeries->Categories[i].View() : std::u16string_view());
      }
      AppendNumberCell(FSeries->Values, i);
      if (FHasSizes) AppendNumberCell(FSeries->Sizes, i);
      FOut += "</table:table-row>";
    }
    if (FRows == 0) FOut += "<table:table-row><table:table-cell/></table:table-row>";
    FOut += "</table:table-rows></table:table>";
  }

  void AppendTextCell(std::u16string_view AText) {
    FOut += "<table:table-cell office:value-type=\"string\">";
    AppendOdsParagraphs(AText, {}, FOut);
    FOut += "</table:table-cell>";
  }

  /// A value that is missing or no number is an empty cell.
  void AppendNumberCell(const std::vector<double>& AValues, size_t AIndex) {
    if (AIndex >= AValues.size() || !std::isfinite(AValues[AIndex])) {
      FOut += "<table:table-cell/>";
      return;
    }
    std::string number;
    AppendFileNumber(AValues[AIndex], number);
    FOut.append("<table:table-cell office:value-type=\"float\" office:value=\"").append(number).append("\"><text:p>");
    FOut.append(number).append("</text:p></table:table-cell>");
  }

  const TSheetDrawing& FDrawing;
  bool FLiteral;
  const TSheetChartSeries* FSeries = nullptr;  // the one that is written
  bool FHasX = false;                          // column A holds the x values
  bool FHasSizes = false;                      // column C holds the sizes of bubbles
  size_t FRows = 0;
  std::optional<std::u16string> FValues;  // addresses on the sheet
  std::optional<std::u16string> FCategories;
  std::optional<std::u16string> FSizes;
  std::string FOut;
};

}  // namespace

std::string OdsChartContent(const TSheetDrawing& ADrawing, double AWidthCm, double AHeightCm, bool ALiteral) {
  return TChartWriter(ADrawing, ALiteral).Run(AWidthCm, AHeightCm);
}

}  // namespace tessarine::detail
