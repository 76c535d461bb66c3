#include <tessarine/io/xlsx/detail/XlsxDrawingShapes.h>

#include <string>
#include <string_view>

#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingWords.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

/// The first adjustment of a preset shape: the guide "adj" or "adj1" with a formula "val N".
void ReadGeometry(const TXmlNode* AGeometry, TSheetDrawing& ADrawing) {
  constexpr std::string_view kVal = "val ";
  if (const auto name = XmlAttr(AGeometry, "prst"); !name.empty()) ADrawing.PresetGeom = TText::FromUtf8(name);
  for (const TXmlNode* guide : TXmlElements(XmlFindChild(AGeometry, "avLst"))) {
    const std::string_view name = XmlAttr(guide, "name");
    if (!EqualXmlNames(name, "adj") && !EqualXmlNames(name, "adj1")) continue;
    const std::string_view formula = XmlAttr(guide, "fmla");
    int32_t value = 0;
    if (formula.starts_with(kVal) && TryParseInt32(XlsxTrim(formula.substr(kVal.size())), value))
      ADrawing.GeomAdj1 = value;
    return;
  }
}

void ApplyFill(const TSheetChartFill& AFill, TSheetDrawing& ADrawing) {
  if (AFill.Mode == cpmDefault) return;
  ADrawing.HasFill = AFill.Mode == cpmSolid;
  ADrawing.FillColor = ADrawing.HasFill ? AFill.Color : TSheetDrawing().FillColor;
}

void ReadLine(const TXmlNode* ALine, const TTessarineTheme& ATheme, TSheetDrawing& ADrawing) {
  if (!ALine) return;
  ADrawing.LineWidthEmu = XlsxEmuAttr(ALine, "w", ADrawing.LineWidthEmu);
  const TSheetChartStroke stroke = XlsxReadStroke(ALine, &ATheme);
  if (stroke.Mode == cpmDefault) return;
  ADrawing.HasLine = stroke.Mode == cpmSolid;
  ADrawing.LineColor = stroke.Color;
}

/// What the style of a shape gives where its own properties are silent. Index 0 means none.
void ReadStyle(const TXmlNode* AStyle, const TTessarineTheme& ATheme, TSheetDrawing& ADrawing) {
  if (const TXmlNode* line = XmlFindChild(AStyle, "lnRef")) {
    ADrawing.HasLine = XmlAttrInt(line, "idx", 0) > 0;
    if (ADrawing.HasLine) ADrawing.LineColor = XlsxDrawingColor(line, &ATheme, ADrawing.LineColor);
  }
  if (const TXmlNode* fill = XmlFindChild(AStyle, "fillRef")) {
    ADrawing.HasFill = XmlAttrInt(fill, "idx", 0) > 0;
    if (ADrawing.HasFill) ADrawing.FillColor = XlsxDrawingColor(fill, &ATheme, ADrawing.FillColor);
  }
  ADrawing.TextColor = XlsxDrawingColor(XmlFindChild(AStyle, "fontRef"), &ATheme, ADrawing.TextColor);
}

void ReadTextBody(const TXmlNode* ABody, TSheetDrawing& ADrawing) {
  ADrawing.TextVAlign = XlsxValueOfWord(kXlsxTextAnchors, XmlAttr(ABody, "anchor"), ADrawing.TextVAlign);
  ADrawing.TextInsetLeftEmu = XlsxEmuAttr(ABody, "lIns", ADrawing.TextInsetLeftEmu);
  ADrawing.TextInsetTopEmu = XlsxEmuAttr(ABody, "tIns", ADrawing.TextInsetTopEmu);
  ADrawing.TextInsetRightEmu = XlsxEmuAttr(ABody, "rIns", ADrawing.TextInsetRightEmu);
  ADrawing.TextInsetBottomEmu = XlsxEmuAttr(ABody, "bIns", ADrawing.TextInsetBottomEmu);
  if (EqualXmlNames(XmlAttr(ABody, "wrap"), "none")) ADrawing.TextWrap = false;
}

void ReadRun(const TXmlNode* AProperties, const TTessarineTheme& ATheme, TSheetDrawing& ADrawing) {
  TSheetChartFont start;
  start.SizePt = ADrawing.TextSize;
  start.Color = ADrawing.TextColor;
  const TSheetChartFont font = XlsxReadChartFont(AProperties, start, &ATheme);
  ADrawing.TextBold = font.Bold;
  ADrawing.TextSize = font.SizePt;
  ADrawing.TextColor = font.Color;
}

/// Paragraphs are joined by CR LF. Alignment and font are those of the first paragraph and run that state any; without
/// any run the font is the one that stands by for text to come.
void ReadText(const TXmlNode* ATextBody, const TTessarineTheme& ATheme, TSheetDrawing& ADrawing) {
  std::u16string text;
  size_t paragraphs = 0;
  const TXmlNode* alignment = nullptr;
  const TXmlNode* run = nullptr;
  const TXmlNode* standBy = nullptr;
  bool hasRuns = false;
  for (const TXmlNode* paragraph : TXmlElements(ATextBody)) {
    if (!XmlLocalNameIs(paragraph, "p")) continue;
    if (paragraphs++ > 0) text += u"\r\n";
    if (!alignment) alignment = XmlFindChild(paragraph, "pPr");
    if (!standBy) standBy = XmlFindChild(paragraph, "endParaRPr");
    XlsxForEachRun(paragraph, [&](const TXmlNode* ARun, const std::u16string& AText) {
      text += AText;
      hasRuns = true;
      if (!run) run = XmlFindChild(ARun, "rPr");
    });
  }
  ADrawing.Text = TText(text);
  ADrawing.TextHAlign = XlsxValueOfWord(kXlsxTextAligns, XmlAttr(alignment, "algn"), ADrawing.TextHAlign);
  ReadRun(hasRuns ? run : standBy, ATheme, ADrawing);
}

}  // namespace

void ReadXlsxTransform(const TXmlNode* ATransform, TSheetDrawing& ADrawing) {
  if (!ATransform) return;
  ADrawing.Rotation = XmlAttrInt(ATransform, "rot", 0);
  ADrawing.FlipH = XlsxAttrIsOn(ATransform->Attributes, "flipH");
  ADrawing.FlipV = XlsxAttrIsOn(ATransform->Attributes, "flipV");
}

void ReadXlsxShape(const TXmlNode* AShape, const TTessarineTheme& ATheme, TSheetDrawing& ADrawing) {
  ADrawing.Kind = sdkShape;
  ReadStyle(XmlFindChild(AShape, "style"), ATheme, ADrawing);
  const TXmlNode* const properties = XmlFindChild(AShape, "spPr");
  ReadXlsxTransform(XmlFindChild(properties, "xfrm"), ADrawing);
  ReadGeometry(XmlFindChild(properties, "prstGeom"), ADrawing);
  ApplyFill(XlsxReadFill(properties, &ATheme), ADrawing);
  ReadLine(XmlFindChild(properties, "ln"), ATheme, ADrawing);
  const TXmlNode* const box = XmlFindChild(XmlFindChild(AShape, "nvSpPr"), "cNvSpPr");
  ADrawing.IsTextBox = box && XlsxAttrIsOn(box->Attributes, "txBox");
  const TXmlNode* const text = XmlFindChild(AShape, "txBody");
  if (!text) return;
  ReadTextBody(XmlFindChild(text, "bodyPr"), ADrawing);
  ReadText(text, ATheme, ADrawing);
}

}  // namespace tessarine::detail
