#include <tessarine/io/ods/detail/OdsDrawingWriter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/io/ods/detail/OdsChartWriter.h>
#include <tessarine/io/ods/detail/OdsPackageWriter.h>
#include <tessarine/io/ods/detail/OdsStyleWriter.h>
#include <tessarine/io/ods/detail/OdsTextWriter.h>
#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

constexpr double kEmuPerCm = 360000;
constexpr int32_t kDpi = 96;

struct TRectCm {
  double X = 0;
  double Y = 0;
  double Width = 0;
  double Height = 0;
};

double PixelsToCm(int64_t APixels) { return static_cast<double>(APixels) / kDpi * kOdsCmPerInch; }

TRectCm RectOf(const TDrawingAnchor& AAnchor, const TRowColSizing& ASizing) {
  const auto place = [&](int32_t ACol, int32_t ARow, int64_t AColOffset, int64_t ARowOffset) {
    return TRectCm{
        PixelsToCm(ASizing.GetCumulativeColWidthBefore(ACol, kDpi)) + static_cast<double>(AColOffset) / kEmuPerCm,
        PixelsToCm(ASizing.GetCumulativeRowHeightBefore(ARow, kDpi)) + static_cast<double>(ARowOffset) / kEmuPerCm,
        static_cast<double>(AAnchor.ExtCxEmu) / kEmuPerCm, static_cast<double>(AAnchor.ExtCyEmu) / kEmuPerCm};
  };
  TRectCm rect = place(AAnchor.FromCol, AAnchor.FromRow, AAnchor.FromColOffEmu, AAnchor.FromRowOffEmu);
  if (AAnchor.Kind == dakAbsolute) {
    rect.X = static_cast<double>(AAnchor.PosXEmu) / kEmuPerCm;
    rect.Y = static_cast<double>(AAnchor.PosYEmu) / kEmuPerCm;
  } else if (AAnchor.Kind == dakTwoCell) {
    const TRectCm end = place(AAnchor.ToCol, AAnchor.ToRow, AAnchor.ToColOffEmu, AAnchor.ToRowOffEmu);
    rect.Width = end.X - rect.X;
    rect.Height = end.Y - rect.Y;
  }
  rect.Width = std::max(rect.Width, 0.0);
  rect.Height = std::max(rect.Height, 0.0);
  return rect;
}

/// 0x00BBGGRR as styles have it.
uint32_t SwappedColor(uint32_t AColor) { return (AColor & 0xFFu) << 16 | (AColor & 0xFF00u) | (AColor >> 16 & 0xFFu); }

struct TGeometry {
  std::u16string_view Preset;
  const char* Type;
  const char* Path;
};
constexpr const char* kRectanglePath = "M 0 0 L 21600 0 21600 21600 0 21600 0 0 Z N";
constexpr TGeometry kGeometries[] = {
    {u"rtTriangle", "right-triangle", "M 0 21600 L 21600 21600 0 0 Z N"},
    {u"triangle", "triangle", "M 10800 0 L 21600 21600 0 21600 Z N"},
    {u"rect", "rect", kRectanglePath},
};

bool IsLine(std::u16string_view APreset) {
  return EqualAsciiNoCase(APreset, u"line") || ToAsciiLower(APreset).find(u"connector") != std::u16string::npos;
}

class TShapeWriter {
 public:
  TShapeWriter(const TWorksheet& ASheet, const TOdsWriteOptions& AOptions, TOdsStyleWriter& AStyles, TOdsWriteBag& ABag)
      : FSheet(ASheet), FOptions(AOptions), FStyles(AStyles), FBag(ABag), FSheetName(ASheet.Name().ToUtf8()) {}

  std::string Run() {
    for (int32_t i = 0; i < FSheet.Drawings().Count(); ++i) Append(*FSheet.Drawings().GetItem(i), i);
    return std::move(FOut);
  }

 private:
  void Append(const TSheetDrawing& ADrawing, int32_t AIndex) {
    if (ADrawing.Hidden) return Drop("hidden drawing", ADrawing);
    FIndex = AIndex;
    FRect = RectOf(ADrawing.Anchor, FSheet.Sizing());
    switch (ADrawing.Kind) {
      case sdkPicture:
        if (ADrawing.ImageBytes.empty()) return Drop("drawing", ADrawing);
        if (!ADrawing.InkMlBytes.empty()) Drop("ink", ADrawing);
        return AppendPicture(ADrawing);
      case sdkChart: return AppendChart(ADrawing);
      case sdkShape: return AppendShape(ADrawing);
      case sdkUnknown: return Drop("drawing", ADrawing);
    }
  }

  void Drop(const char* AFeature, const TSheetDrawing& ADrawing) {
    if (FOptions.Report) FOptions.Report->Add(AFeature, ffDropped, FSheetName, 1, ADrawing.Name.ToUtf8());
  }

  void Pair(const char* AName, std::string_view AValue) {
    FOut.append(" ").append(AName).append("=\"").append(AValue).append("\"");
  }
  void Length(const char* AName, double ACm) { Pair(AName, OdsLengthText(ACm)); }

  void Open(const char* AElement, const TSheetDrawing& ADrawing) {
    FOut.append("<").append(AElement);
    Pair("draw:z-index", std::to_string(FIndex));
    if (ADrawing.Name.IsEmpty()) return;
    FOut += " draw:name=\"";
    AppendXmlAttribute(ADrawing.Name.View(), FOut);
    FOut += '"';
  }
  void Box() {
    Length("svg:x", FRect.X);
    Length("svg:y", FRect.Y);
    Length("svg:width", FRect.Width);
    Length("svg:height", FRect.Height);
  }
  void Link(std::string_view ATarget) {
    FOut.append(" xlink:href=\"").append(ATarget);
    FOut += "\" xlink:type=\"simple\" xlink:show=\"embed\" xlink:actuate=\"onLoad\"/>";
  }

  void AppendPicture(const TSheetDrawing& ADrawing) {
    Open("draw:frame", ADrawing);
    Box();
    Turn(ADrawing.Rotation);
    FOut += "><draw:image";
    Link(FBag.AddPicture(ADrawing.ImageBytes, ADrawing.ContentType.ToUtf8()));
    FOut += "</draw:frame>";
  }

  void AppendChart(const TSheetDrawing& ADrawing) {
    const std::string folder = FBag.NextObject();
    FBag.AddPart(folder + "/", {}, "application/vnd.oasis.opendocument.chart");
    FBag.AddPart(folder + "/content.xml", OdsChartContent(ADrawing, FRect.Width, FRect.Height, FOptions.Literal),
                 "text/xml");
    FBag.AddPart(folder + "/styles.xml", OdsStyles({}), "text/xml");
    Open("draw:frame", ADrawing);
    Box();
    FOut += "><draw:object";
    Link("./" + folder);
    FOut += "</draw:frame>";
    size_t series = ADrawing.Series.size();
    for (const TSheetChartSubplot& subplot : ADrawing.Subplots) series += subplot.Series.size();
    if (!FOptions.Report) return;
    if (series > 1)
      FOptions.Report->Add("chart series", ffDropped, FSheetName, series - 1, "all but the first of a chart");
    if (ADrawing.ChartType == sctCombo || ADrawing.ChartType == sctSurface || ADrawing.ChartType == sctUnknown)
      FOptions.Report->Add("chart", ffRewritten, FSheetName, 1, "as columns");
    if (ADrawing.ChartType == sctOfPie) FOptions.Report->Add("chart", ffRewritten, FSheetName, 1, "as a pie");
  }

  void AppendShape(const TSheetDrawing& ADrawing) {
    if (IsLine(ADrawing.PresetGeom)) return AppendLine(ADrawing);
    const bool isEllipse = EqualAsciiNoCase(ADrawing.PresetGeom, u"ellipse");
    const char* element = isEllipse ? "draw:ellipse" : "draw:custom-shape";
    Open(element, ADrawing);
    Style(ADrawing, ADrawing.HasFill);
    Box();
    Turn(ADrawing.Rotation);
    FOut += '>';
    if (!ADrawing.Text.IsEmpty()) AppendShapeText(ADrawing);
    if (!isEllipse) AppendGeometry(ADrawing);
    FOut.append("</").append(element).append(">");
  }

  void AppendLine(const TSheetDrawing& ADrawing) {
    const double right = FRect.X + FRect.Width;
    const double bottom = FRect.Y + FRect.Height;
    Open("draw:line", ADrawing);
    Style(ADrawing, false);
    Length("svg:x1", ADrawing.FlipH ? right : FRect.X);
    Length("svg:y1", ADrawing.FlipV ? bottom : FRect.Y);
    Length("svg:x2", ADrawing.FlipH ? FRect.X : right);
    Length("svg:y2", ADrawing.FlipV ? FRect.Y : bottom);
    FOut += "/>";
  }

  void Style(const TSheetDrawing& ADrawing, bool AHasFill) {
    TOdsDrawnStyle style;
    style.HasFill = AHasFill;
    style.FillColor = AHasFill ? SwappedColor(ADrawing.FillColor) : 0;
    style.HasStroke = ADrawing.HasLine;
    style.StrokeColor = ADrawing.HasLine ? SwappedColor(ADrawing.LineColor) : 0;
    style.StrokeWidthCm = ADrawing.HasLine ? static_cast<double>(ADrawing.LineWidthEmu) / kEmuPerCm : 0;
    Pair("draw:style-name", FStyles.RegisterGraphicStyle(style));
  }

  /// Around the middle. The model counts 60,000ths of a degree with the clock, files radians against it.
  void Turn(int32_t ARotation) {
    constexpr int32_t kUnitsPerTurn = 360 * 60000;
    if (ARotation % kUnitsPerTurn == 0) return;
    const double middleX = FRect.X + FRect.Width / 2;
    const double middleY = FRect.Y + FRect.Height / 2;
    std::string angle;
    AppendFileNumber(-2 * std::numbers::pi * (ARotation % kUnitsPerTurn) / kUnitsPerTurn, angle);
    Pair("draw:transform", "translate(" + OdsLengthText(-middleX) + " " + OdsLengthText(-middleY) + ") rotate(" +
                               angle + ") translate(" + OdsLengthText(middleX) + " " + OdsLengthText(middleY) + ")");
  }

  void AppendShapeText(const TSheetDrawing& ADrawing) {
    TCellFontInfo font;
    font.Size = ADrawing.TextSize;
    font.Bold = ADrawing.TextBold;
    font.Color = TColorRef::FromARGB(kOpaqueBlack | SwappedColor(ADrawing.TextColor));
    const TOdsTextPiece piece{ADrawing.Text, FStyles.TextStyleOf(font)};
    AppendOdsParagraphs({&piece, 1}, {}, FOut);
  }

  void AppendGeometry(const TSheetDrawing& ADrawing) {
    const TGeometry* found = nullptr;
    for (const TGeometry& geometry : kGeometries)
      if (EqualAsciiNoCase(geometry.Preset, ADrawing.PresetGeom)) found = &geometry;
    FOut += "<draw:enhanced-geometry svg:viewBox=\"0 0 21600 21600\"";
    if (found) {
      Pair("draw:type", found->Type);
    } else {
      FOut += " draw:type=\"";
      AppendXmlAttribute(ADrawing.PresetGeom.View(), FOut);
      FOut += '"';
      if (FOptions.Report)
        FOptions.Report->Add("shape", ffRewritten, FSheetName, 1,
                             ADrawing.PresetGeom.ToUtf8() + " with the outline of a rectangle");
    }
    if (ADrawing.FlipH) Pair("draw:mirror-horizontal", "true");
    if (ADrawing.FlipV) Pair("draw:mirror-vertical", "true");
    Pair("draw:enhanced-path", found ? found->Path : kRectanglePath);
    FOut += "/>";
  }

  const TWorksheet& FSheet;
  const TOdsWriteOptions& FOptions;
  TOdsStyleWriter& FStyles;
  TOdsWriteBag& FBag;
  std::string FSheetName;
  std::string FOut;
  int32_t FIndex = 0;  // of the drawing at hand
  TRectCm FRect;
};

}  // namespace

std::string OdsShapes(const TWorksheet& ASheet, const TOdsWriteOptions& AOptions, TOdsStyleWriter& AStyles,
                      TOdsWriteBag& ABag) {
  return TShapeWriter(ASheet, AOptions, AStyles, ABag).Run();
}

}  // namespace tessarine::detail
