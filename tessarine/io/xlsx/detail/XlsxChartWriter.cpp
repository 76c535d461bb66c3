#include <tessarine/io/xlsx/detail/XlsxChartWriter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxChartWords.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

constexpr char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n"
    "<c:chartSpace xmlns:c=\"http://schemas.openxmlformats.org/drawingml/2006/chart\""
    " xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\""
    " xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">";

constexpr char kFirstAxisId[] = "111111111";
constexpr char kSecondAxisId[] = "222222222";

/// The shapes that this writer knows.
enum class TShape : uint8_t { Column, Bar, Line, Pie, Doughnut, Area, Scatter, Radar, Bubble };

struct TShapeInfo {
  TSheetChartType Type;
  TShape Shape;
  const char* Element;
};

/// The first row is also for all types that are not here.
constexpr TShapeInfo kShapes[] = {
    {sctColumn, TShape::Column, "c:barChart"},
    {sctBar, TShape::Bar, "c:barChart"},
    {sctLine, TShape::Line, "c:lineChart"},
    {sctPie, TShape::Pie, "c:pieChart"},
    {sctDoughnut, TShape::Doughnut, "c:doughnutChart"},
    {sctArea, TShape::Area, "c:areaChart"},
    {sctScatter, TShape::Scatter, "c:scatterChart"},
    {sctRadar, TShape::Radar, "c:radarChart"},
    {sctBubble, TShape::Bubble, "c:bubbleChart"},
};

const TShapeInfo& ShapeOf(TSheetChartType AType) {
  for (const TShapeInfo& row : kShapes)
    if (row.Type == AType) return row;
  return kShapes[0];
}

constexpr int kDecimals = 14;

/// By "0.##############": at most 14 decimals and no exponent; what is no number is 0.
void AppendPlainNumber(double AValue, std::string& AOut) {
  if (!std::isfinite(AValue)) AValue = 0;
  char buffer[kNumberTextSize];
  const std::string_view exact(buffer, WriteFileNumber(AValue, buffer));
  const size_t point = exact.find('.');
  const bool isShort = point == std::string_view::npos || exact.size() - point <= kDecimals + 1;
  if (isShort && exact.find('E') == std::string_view::npos)
    AOut += exact;
  else
    AppendShortDecimal(AValue, kDecimals, AOut);
}

class TChartWriter {
 public:
  TChartWriter(const TSheetDrawing& ADrawing, std::u16string_view ASheetName)
      : FDrawing(ADrawing), FSheetName(ASheetName), FShape(ShapeOf(ADrawing.ChartType)) {}

  std::string Write() {
    FOut = kHead;
    Flag("c:roundedCorners", FDrawing.RoundedCorners);
    FOut += "<c:chart>";
    if (!FDrawing.Title.IsEmpty()) Title(FDrawing.Title);
    Flag("c:autoTitleDeleted", false);
    FOut += "<c:plotArea><c:layout/>";
    Group();
    Axes();
    FOut += "</c:plotArea>";
    if (FDrawing.ShowLegend) {
      FOut += "<c:legend>";
      Word("c:legendPos", XlsxWordOfValue(kXlsxLegendPositions, FDrawing.LegendPos));
      Flag("c:overlay", false);
      FOut += "</c:legend>";
    }
    Flag("c:plotVisOnly", FDrawing.PlotVisOnly);
    Word("c:dispBlanksAs", BlanksWord());
    FOut += "</c:chart></c:chartSpace>";
    return std::move(FOut);
  }

 private:
  // ---- leaves

  void Word(const char* AElement, std::string_view AWord) {
    (((((FOut += '<') += AElement) += " val=\"") += AWord) += "\"/>");
  }
  void Flag(const char* AElement, bool AValue) { Word(AElement, AValue ? "1" : "0"); }
  void Whole(const char* AElement, int64_t AValue) { Word(AElement, std::to_string(AValue)); }
  void Number(const char* AElement, double AValue) {
    if (!std::isfinite(AValue)) return;
    std::string text;
    AppendFileNumber(AValue, text);
    Word(AElement, text);
  }
  void Text(const char* AElement, std::u16string_view AText) { AppendXlsxElement(AElement, AText, FOut); }

  std::string_view BlanksWord() const {
    for (const char16_t* word : {u"zero", u"span"})
      if (FDrawing.DispBlanksAs == word) return word[0] == u'z' ? "zero" : "span";
    return "gap";
  }

  // ---- title

  void Title(std::u16string_view AText) {
    FOut += "<c:title><c:tx><c:rich><a:bodyPr/><a:lstStyle/>";
    XlsxForEachLine(AText, [this](std::u16string_view ALine) {
      FOut += "<a:p><a:r>";
      Text("a:t", ALine);
      FOut += "</a:r></a:p>";
    });
    FOut += "</c:rich></c:tx>";
    Flag("c:overlay", false);
    FOut += "</c:title>";
  }

  // ---- series

  bool HasXValues() const { return FShape.Shape == TShape::Scatter || FShape.Shape == TShape::Bubble; }
  bool IsBar() const { return FShape.Shape == TShape::Column || FShape.Shape == TShape::Bar; }
  bool IsRound() const { return FShape.Shape == TShape::Pie || FShape.Shape == TShape::Doughnut; }

  /// Without "=", and with a sheet for a plain reference that has none.
  std::u16string Reference(std::u16string_view AFormula) const {
    if (!AFormula.empty() && AFormula.front() == u'=') AFormula.remove_prefix(1);
    const bool isPlain = AFormula.find(u'!') == std::u16string_view::npos;
    if (FSheetName.empty() || !isPlain || TCellRange::FromA1(AFormula).StartCol < 1) return std::u16string(AFormula);
    std::u16string reference = QuoteSheetName(FSheetName);
    (reference += u'!') += AFormula;
    return reference;
  }

  /// A reference with its cache, or the values alone when they come from nowhere. APoint(index) writes a value.
  template <class TPoint>
  void Data(const char* AElement, bool AIsNumber, std::u16string_view AFormula, size_t ACount, TPoint&& APoint) {
    const std::string kind = AIsNumber ? "c:num" : "c:str";
    const bool hasFormula = !AFormula.empty() && AFormula != u"=";
    if (!hasFormula && ACount == 0) return;
    ((FOut += '<') += AElement) += '>';
    if (hasFormula) {
      ((FOut += '<') += kind) += "Ref>";
      Text("c:f", Reference(AFormula));
    }
    ((FOut += '<') += kind) += hasFormula ? "Cache>" : "Lit>";
    if (AIsNumber) FOut += "<c:formatCode>General</c:formatCode>";
    Whole("c:ptCount", static_cast<int64_t>(ACount));
    for (size_t i = 0; i < ACount; ++i) {
      ((FOut += "<c:pt idx=\"") += std::to_string(i)) += "\"><c:v>";
      APoint(i);
      FOut += "</c:v></c:pt>";
    }
    ((FOut += "</") += kind) += hasFormula ? "Cache>" : "Lit>";
    if (hasFormula) ((FOut += "</") += kind) += "Ref>";
    ((FOut += "</") += AElement) += '>';
  }

  void Numbers(const char* AElement, std::u16string_view AFormula, const std::vector<double>& ANumbers) {
    Data(AElement, true, AFormula, ANumbers.size(), [&](size_t AIndex) { AppendPlainNumber(ANumbers[AIndex], FOut); });
  }

  void Labels(const TSheetChartSeries& ASeries) {
    const TSheetChartDataLabels& labels = ASeries.Labels;
    FOut += "<c:dLbls>";
    Flag("c:showLegendKey", labels.ShowLegendKey);
    Flag("c:showVal", labels.ShowVal || !labels.Assigned);
    Flag("c:showCatName", labels.ShowCatName);
    Flag("c:showSerName", labels.ShowSerName);
    Flag("c:showPercent", labels.ShowPercent);
    Flag("c:showBubbleSize", labels.ShowBubbleSize);
    if (IsRound()) Flag("c:showLeaderLines", labels.ShowLeaderLines);
    FOut += "</c:dLbls>";
  }

  /// A number of its own for each series, as the format demands.
  void Series(const TSheetChartSeries& ASeries, size_t AIndex) {
    FOut += "<c:ser>";
    Whole("c:idx", static_cast<int64_t>(AIndex));
    Whole("c:order", static_cast<int64_t>(AIndex));
    if (!ASeries.Title.IsEmpty()) {
      FOut += "<c:tx>";
      Text("c:v", ASeries.Title);
      FOut += "</c:tx>";
    }
    if (ASeries.ShowDataLabels) Labels(ASeries);
    if (HasXValues())
      Numbers("c:xVal", ASeries.XValuesFormula, ASeries.XValues);
    else
      Data("c:cat", false, ASeries.CategoriesFormula, ASeries.Categories.size(),
           [&](size_t APlace) { AppendXlsxText(ASeries.Categories[APlace], FOut); });
    Numbers(HasXValues() ? "c:yVal" : "c:val", ASeries.ValuesFormula, ASeries.Values);
    if (FShape.Shape == TShape::Bubble) Numbers("c:bubbleSize", ASeries.SizesFormula, ASeries.Sizes);
    FOut += "</c:ser>";
  }

  // ---- group

  void GroupHead() {
    switch (FShape.Shape) {
      case TShape::Column:
      case TShape::Bar:
        Word("c:barDir", FShape.Shape == TShape::Bar ? "bar" : "col");
        return Word("c:grouping", IsStackedKind() ? "stacked" : "clustered");
      case TShape::Line:
      case TShape::Area: return Word("c:grouping", IsStackedKind() ? "stacked" : "standard");
      case TShape::Pie:
      case TShape::Doughnut: return Flag("c:varyColors", true);
      case TShape::Scatter: return Word("c:scatterStyle", "lineMarker");
      case TShape::Radar: return Word("c:radarStyle", "marker");
      case TShape::Bubble: return;
    }
  }

  /// Types that are written as columns in place of themselves are clustered.
  bool IsStackedKind() const { return FDrawing.Stacked && FDrawing.ChartType == FShape.Type; }

  void GroupTail() {
    if (IsBar()) {
      Whole("c:gapWidth", std::clamp(FDrawing.GapWidth, 0, 500));
      Whole("c:overlap", std::clamp(FDrawing.Overlap, -100, 100));
    }
    if (IsRound()) Whole("c:firstSliceAng", std::clamp(FDrawing.FirstSliceAng, 0, 360));
    if (FShape.Shape == TShape::Doughnut) Whole("c:holeSize", std::clamp(FDrawing.DoughnutHolePct, 10, 90));
    if (IsRound()) return;
    Word("c:axId", kFirstAxisId);
    Word("c:axId", kSecondAxisId);
  }

  void Group() {
    ((FOut += '<') += FShape.Element) += '>';
    GroupHead();
    for (size_t i = 0; i < FDrawing.Series.size(); ++i) Series(FDrawing.Series[i], i);
    GroupTail();
    ((FOut += "</") += FShape.Element) += '>';
  }

  // ---- axes

  void Scaling(const TSheetChartAxisInfo& AAxis) {
    FOut += "<c:scaling>";
    Word("c:orientation", AAxis.OrientationMaxMin ? "maxMin" : "minMax");
    if (AAxis.HasMax) Number("c:max", AAxis.MaxVal);
    if (AAxis.HasMin) Number("c:min", AAxis.MinVal);
    FOut += "</c:scaling>";
  }

  void NumberFormat(const TSheetChartAxisInfo& AAxis) {
    if (AAxis.NumFmt.IsEmpty()) return;
    FOut += "<c:numFmt";
    AppendXlsxTextAttr("formatCode", AAxis.NumFmt, FOut);
    FOut += " sourceLinked=\"0\"/>";
  }

  void Axis(const TSheetChartAxisInfo& AAxis, bool AIsValues, const char* AId, const char* ACrossId,
            const char* ASide) {
    const char* const element = AIsValues ? "c:valAx" : "c:catAx";
    ((FOut += '<') += element) += '>';
    Word("c:axId", AId);
    Scaling(AAxis);
    Flag("c:delete", AAxis.Deleted);
    Word("c:axPos", ASide);
    if (AAxis.MajorGridlines) FOut += "<c:majorGridlines/>";
    if (AAxis.MinorGridlines) FOut += "<c:minorGridlines/>";
    if (!AAxis.Title.IsEmpty()) Title(AAxis.Title);
    NumberFormat(AAxis);
    Word("c:majorTickMark", XlsxWordOfValue(kXlsxTickMarks, AAxis.MajorTickMark));
    Word("c:minorTickMark", XlsxWordOfValue(kXlsxTickMarks, AAxis.MinorTickMark));
    Word("c:tickLblPos", XlsxWordOfValue(kXlsxTickLabels, AAxis.TickLblPos));
    Word("c:crossAx", ACrossId);
    Word("c:crosses", AAxis.Crosses == u"min" ? "min" : AAxis.Crosses == u"max" ? "max" : "autoZero");
    if (AIsValues) {
      const bool isMidCat = AAxis.HasCrossBetween ? AAxis.CrossBetweenMidCat : HasXValues();
      Word("c:crossBetween", isMidCat ? "midCat" : "between");
      if (AAxis.HasMajorUnit && AAxis.MajorUnitVal > 0) Number("c:majorUnit", AAxis.MajorUnitVal);
      if (AAxis.HasMinorUnit && AAxis.MinorUnitVal > 0) Number("c:minorUnit", AAxis.MinorUnitVal);
    }
    ((FOut += "</") += element) += '>';
  }

  void Axes() {
    if (IsRound()) return;
    const bool isTurned = FShape.Shape == TShape::Bar;
    Axis(FDrawing.ChartCatAxis, HasXValues(), kFirstAxisId, kSecondAxisId, isTurned ? "l" : "b");
    Axis(FDrawing.ChartValueAxis, true, kSecondAxisId, kFirstAxisId, isTurned ? "b" : "l");
  }

  const TSheetDrawing& FDrawing;
  const std::u16string_view FSheetName;
  const TShapeInfo& FShape;
  std::string FOut;
};

}  // namespace

std::string BuildChartSpaceXml(const TSheetDrawing& ADrawing, std::u16string_view ASheetName) {
  return TChartWriter(ADrawing, ASheetName).Write();
}

}  // namespace tessarine::detail
