#include <tessarine/io/xlsx/detail/XlsxDrawingXml.h>

#include <algorithm>
#include <cmath>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingPresets.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingWords.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

constexpr char kRoot[] =
    "<xdr:wsDr xmlns:xdr=\"http://schemas.openxmlformats.org/drawingml/2006/spreadsheetDrawing\""
    " xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\""
    " xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\""
    " xmlns:c=\"http://schemas.openxmlformats.org/drawingml/2006/chart\">";
constexpr char kChartUri[] = "http://schemas.openxmlformats.org/drawingml/2006/chart";
constexpr char kExtendedChartUri[] = "http://schemas.microsoft.com/office/drawing/2014/chartex";
constexpr int64_t kMaxLineEmu = 20'116'800;

struct TAnchorWords {
  const char* Begin;
  const char* End;
};

/// By TDrawingAnchorKind.
constexpr TAnchorWords kAnchorWords[] = {
    {"<xdr:twoCellAnchor>", "</xdr:twoCellAnchor>"},
    {"<xdr:oneCellAnchor>", "</xdr:oneCellAnchor>"},
    {"<xdr:absoluteAnchor>", "</xdr:absoluteAnchor>"},
};

void AppendPair(const char* AElement, const char* AFirst, int64_t AFirstValue, const char* ASecond,
                int64_t ASecondValue, std::string& AOut) {
  (AOut += '<') += AElement;
  AppendXlsxInt(AFirst, AFirstValue, AOut);
  AppendXlsxInt(ASecond, ASecondValue, AOut);
  AOut += "/>";
}

void AppendSolid(uint32_t AColor, std::string& AOut) {
  ((AOut += "<a:solidFill><a:srgbClr val=\"") += XlsxColorDigits(AColor)) += "\"/></a:solidFill>";
}

/// Hundredths of a point within what the format takes.
int32_t HundredthsOf(float ASize) {
  const auto size = static_cast<double>(std::isfinite(ASize) ? ASize : TSheetDrawing().TextSize);
  return static_cast<int32_t>(std::clamp(RoundToEven(size * 100), 100.0, 400'000.0));
}

bool HasTextSettings(const TSheetDrawing& ADrawing) {
  const TSheetDrawing plain;
  return !ADrawing.Text.IsEmpty() || ADrawing.TextHAlign != plain.TextHAlign ||
         ADrawing.TextVAlign != plain.TextVAlign || ADrawing.TextWrap != plain.TextWrap ||
         ADrawing.TextInsetLeftEmu != plain.TextInsetLeftEmu || ADrawing.TextInsetTopEmu != plain.TextInsetTopEmu ||
         ADrawing.TextInsetRightEmu != plain.TextInsetRightEmu ||
         ADrawing.TextInsetBottomEmu != plain.TextInsetBottomEmu || ADrawing.TextBold != plain.TextBold ||
         ADrawing.TextSize != plain.TextSize || ADrawing.TextColor != plain.TextColor;
}

}  // namespace

TXlsxDrawingXml::TXlsxDrawingXml() { (FXml += kXmlHead) += kRoot; }

void TXlsxDrawingXml::Corner(const char* AElement, int32_t ACol, int64_t AColOffset, int32_t ARow, int64_t ARowOffset) {
  const auto leaf = [this](const char* AName, int64_t AValue) {
    (((FXml += "<xdr:") += AName) += '>') += std::to_string(AValue);
    ((FXml += "</xdr:") += AName) += '>';
  };
  ((FXml += "<xdr:") += AElement) += '>';
  leaf("col", std::clamp(ACol, 1, kMaxCol) - 1);
  leaf("colOff", AColOffset);
  leaf("row", std::clamp(ARow, 1, kMaxRow) - 1);
  leaf("rowOff", ARowOffset);
  ((FXml += "</xdr:") += AElement) += '>';
}

void TXlsxDrawingXml::BeginAnchor(const TSheetDrawing& ADrawing) {
  const TDrawingAnchor& anchor = ADrawing.Anchor;
  FXml += kAnchorWords[static_cast<size_t>(anchor.Kind)].Begin;
  if (anchor.Kind == dakAbsolute)
    AppendPair("xdr:pos", "x", anchor.PosXEmu, "y", anchor.PosYEmu, FXml);
  else
    Corner("from", anchor.FromCol, anchor.FromColOffEmu, anchor.FromRow, anchor.FromRowOffEmu);
  if (anchor.Kind == dakTwoCell)
    Corner("to", std::max(anchor.ToCol, anchor.FromCol), anchor.ToColOffEmu, std::max(anchor.ToRow, anchor.FromRow),
           anchor.ToRowOffEmu);
  else
    AppendPair("xdr:ext", "cx", std::max<int64_t>(anchor.ExtCxEmu, 0), "cy", std::max<int64_t>(anchor.ExtCyEmu, 0),
               FXml);
}

void TXlsxDrawingXml::EndAnchor(const TSheetDrawing& ADrawing) {
  (FXml += "<xdr:clientData/>") += kAnchorWords[static_cast<size_t>(ADrawing.Anchor.Kind)].End;
}

void TXlsxDrawingXml::Names(const TSheetDrawing& ADrawing) {
  FXml += "<xdr:cNvPr";
  AppendXlsxInt("id", FNextId++, FXml);
  AppendXlsxAttr("name", ADrawing.Name, FXml);
  FXml += "/>";
}

/// The place is a stand-in: the anchor decides.
void TXlsxDrawingXml::Transform(const TSheetDrawing& ADrawing) {
  FXml += "<a:xfrm";
  if (ADrawing.Rotation != 0) AppendXlsxInt("rot", ADrawing.Rotation, FXml);
  AppendXlsxFlag("flipH", ADrawing.FlipH, FXml);
  AppendXlsxFlag("flipV", ADrawing.FlipV, FXml);
  FXml += "><a:off x=\"0\" y=\"0\"/><a:ext cx=\"1\" cy=\"1\"/></a:xfrm>";
}

void TXlsxDrawingXml::AddPicture(const TSheetDrawing& ADrawing, std::string_view AImageId) {
  BeginAnchor(ADrawing);
  FXml += "<xdr:pic><xdr:nvPicPr>";
  Names(ADrawing);
  FXml += "<xdr:cNvPicPr/></xdr:nvPicPr><xdr:blipFill><a:blip";
  AppendXlsxWord("r:embed", AImageId, FXml);
  FXml += '>';
  if (ADrawing.ImageOpacity != 255) {
    FXml += "<a:alphaModFix";
    AppendXlsxInt("amt", (ADrawing.ImageOpacity * 100'000 + 127) / 255, FXml);
    FXml += "/>";
  }
  FXml += "</a:blip><a:stretch><a:fillRect/></a:stretch></xdr:blipFill><xdr:spPr>";
  Transform(ADrawing);
  FXml += "<a:prstGeom prst=\"rect\"><a:avLst/></a:prstGeom></xdr:spPr></xdr:pic>";
  EndAnchor(ADrawing);
}

void TXlsxDrawingXml::Frame(const TSheetDrawing& ADrawing, std::string_view AUri, std::string_view AChartElement,
                            std::string_view AChartId) {
  FXml += "<xdr:graphicFrame macro=\"\"><xdr:nvGraphicFramePr>";
  Names(ADrawing);
  FXml +=
      "<xdr:cNvGraphicFramePr/></xdr:nvGraphicFramePr><xdr:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"0\" cy=\"0\"/>"
      "</xdr:xfrm><a:graphic><a:graphicData";
  AppendXlsxWord("uri", AUri, FXml);
  (FXml += "><") += AChartElement;
  AppendXlsxWord("r:id", AChartId, FXml);
  FXml += "/></a:graphicData></a:graphic></xdr:graphicFrame>";
}

void TXlsxDrawingXml::AddChart(const TSheetDrawing& ADrawing, std::string_view AChartId, bool AIsExtended) {
  BeginAnchor(ADrawing);
  if (!AIsExtended) {
    Frame(ADrawing, kChartUri, "c:chart", AChartId);
  } else {
    FXml +=
        "<mc:AlternateContent xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\">"
        "<mc:Choice xmlns:cx1=\"http://schemas.microsoft.com/office/drawing/2015/9/8/chartex\" Requires=\"cx1\">";
    Frame(ADrawing, kExtendedChartUri, "cx:chart xmlns:cx=\"http://schemas.microsoft.com/office/drawing/2014/chartex\"",
          AChartId);
    FXml +=
        "</mc:Choice><mc:Fallback><xdr:sp macro=\"\" textlink=\"\"><xdr:nvSpPr><xdr:cNvPr id=\"0\" name=\"\"/>"
        "<xdr:cNvSpPr/></xdr:nvSpPr><xdr:spPr><a:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"1\" cy=\"1\"/></a:xfrm>"
        "<a:prstGeom prst=\"rect\"><a:avLst/></a:prstGeom></xdr:spPr></xdr:sp></mc:Fallback></mc:AlternateContent>";
  }
  EndAnchor(ADrawing);
}

void TXlsxDrawingXml::ShapeProperties(const TSheetDrawing& ADrawing) {
  const TXlsxPreset preset = XlsxPresetOf(ADrawing.PresetGeom);
  FXml += "<xdr:spPr>";
  Transform(ADrawing);
  FXml += "<a:prstGeom";
  AppendXlsxWord("prst", preset.Name, FXml);
  FXml += "><a:avLst>";
  if (ADrawing.GeomAdj1 != 0) {
    FXml += "<a:gd";
    AppendXlsxWord("name", preset.Adjustment, FXml);
    AppendXlsxWord("fmla", "val " + std::to_string(ADrawing.GeomAdj1), FXml);
    FXml += "/>";
  }
  FXml += "</a:avLst></a:prstGeom>";
  if (ADrawing.HasFill)
    AppendSolid(ADrawing.FillColor, FXml);
  else
    FXml += "<a:noFill/>";
  FXml += "<a:ln";
  AppendXlsxInt("w", std::clamp<int64_t>(ADrawing.LineWidthEmu, 0, kMaxLineEmu), FXml);
  FXml += '>';
  if (ADrawing.HasLine)
    AppendSolid(ADrawing.LineColor, FXml);
  else
    FXml += "<a:noFill/>";
  FXml += "</a:ln></xdr:spPr>";
}

void TXlsxDrawingXml::RunProperties(const char* AElement, const TSheetDrawing& ADrawing) {
  (FXml += '<') += AElement;
  AppendXlsxInt("sz", HundredthsOf(ADrawing.TextSize), FXml);
  AppendXlsxFlag("b", ADrawing.TextBold, FXml);
  if (ADrawing.TextColor == 0) {
    FXml += "/>";
    return;
  }
  FXml += '>';
  AppendSolid(ADrawing.TextColor, FXml);
  ((FXml += "</") += AElement) += '>';
}

void TXlsxDrawingXml::Paragraph(const TSheetDrawing& ADrawing, std::u16string_view AText) {
  FXml += "<a:p><a:pPr";
  AppendXlsxWord("algn", XlsxWordOfValue(kXlsxTextAligns, ADrawing.TextHAlign), FXml);
  FXml += "/>";
  if (AText.empty()) {
    RunProperties("a:endParaRPr", ADrawing);
  } else {
    FXml += "<a:r>";
    RunProperties("a:rPr", ADrawing);
    AppendXlsxElement("a:t", AText, FXml);
    FXml += "</a:r>";
  }
  FXml += "</a:p>";
}

/// A line of the text is a paragraph of one run.
void TXlsxDrawingXml::TextBody(const TSheetDrawing& ADrawing) {
  if (!HasTextSettings(ADrawing)) return;
  FXml += "<xdr:txBody><a:bodyPr";
  AppendXlsxWord("wrap", ADrawing.TextWrap ? "square" : "none", FXml);
  AppendXlsxInt("lIns", ADrawing.TextInsetLeftEmu, FXml);
  AppendXlsxInt("tIns", ADrawing.TextInsetTopEmu, FXml);
  AppendXlsxInt("rIns", ADrawing.TextInsetRightEmu, FXml);
  AppendXlsxInt("bIns", ADrawing.TextInsetBottomEmu, FXml);
  AppendXlsxWord("anchor", XlsxWordOfValue(kXlsxTextAnchors, ADrawing.TextVAlign), FXml);
  FXml += "/><a:lstStyle/>";
  XlsxForEachLine(ADrawing.Text, [&](std::u16string_view ALine) { Paragraph(ADrawing, ALine); });
  FXml += "</xdr:txBody>";
}

void TXlsxDrawingXml::AddShape(const TSheetDrawing& ADrawing) {
  BeginAnchor(ADrawing);
  if (XlsxPresetOf(ADrawing.PresetGeom).IsConnector) {
    FXml += "<xdr:cxnSp macro=\"\"><xdr:nvCxnSpPr>";
    Names(ADrawing);
    FXml += "<xdr:cNvCxnSpPr/></xdr:nvCxnSpPr>";
    ShapeProperties(ADrawing);
    FXml += "</xdr:cxnSp>";
  } else {
    FXml += "<xdr:sp macro=\"\" textlink=\"\"><xdr:nvSpPr>";
    Names(ADrawing);
    FXml += "<xdr:cNvSpPr";
    AppendXlsxFlag("txBox", ADrawing.IsTextBox, FXml);
    FXml += "/></xdr:nvSpPr>";
    ShapeProperties(ADrawing);
    TextBody(ADrawing);
    FXml += "</xdr:sp>";
  }
  EndAnchor(ADrawing);
}

}  // namespace tessarine::detail
