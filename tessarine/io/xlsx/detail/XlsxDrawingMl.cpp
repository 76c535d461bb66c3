#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

constexpr double kEmuPerPoint = 12700;
constexpr double kMaxEmu = 27273042316900.0;  // ECMA-376-1 §20.1.10.16
constexpr float kMaxFontPoints = 4000;

constexpr TXlsxWord<int32_t> kSchemeNames[] = {
    {"dk1", 0},     {"tx1", 0},     {"lt1", 1},     {"bg1", 1},       {"dk2", 2},     {"tx2", 2},
    {"lt2", 3},     {"bg2", 3},     {"accent1", 4}, {"accent2", 5},   {"accent3", 6}, {"accent4", 7},
    {"accent5", 8}, {"accent6", 9}, {"hlink", 10},  {"folHlink", 11},
};

/// All that are not here and do not begin with "pct" are scfpOther.
constexpr TXlsxWord<TSheetChartFillPattern> kPatterns[] = {
    {"ltDnDiag", scfpLtDnDiag},   {"dnDiag", scfpLtDnDiag},
    {"dkDnDiag", scfpLtDnDiag},   {"wdDnDiag", scfpLtDnDiag},
    {"dashDnDiag", scfpLtDnDiag}, {"ltUpDiag", scfpLtUpDiag},
    {"upDiag", scfpLtUpDiag},     {"dkUpDiag", scfpLtUpDiag},
    {"wdUpDiag", scfpLtUpDiag},   {"dashUpDiag", scfpLtUpDiag},
    {"ltHorz", scfpHorz},         {"horz", scfpHorz},
    {"dkHorz", scfpHorz},         {"narHorz", scfpHorz},
    {"dashHorz", scfpHorz},       {"ltVert", scfpVert},
    {"vert", scfpVert},           {"dkVert", scfpVert},
    {"narVert", scfpVert},        {"dashVert", scfpVert},
    {"ltCross", scfpCross},       {"cross", scfpCross},
    {"dkCross", scfpCross},       {"ltDiagCross", scfpDiagCross},
    {"diagCross", scfpDiagCross}, {"dkDiagCross", scfpDiagCross},
};

TSheetChartFillPattern PatternOf(std::string_view AName) {
  if (EqualXmlNames(AName.substr(0, 3), "pct")) return scfpPct50;
  return XlsxValueOfWord(kPatterns, AName, scfpOther);
}

std::optional<uint32_t> SixDigits(std::string_view AText) {
  uint32_t value = 0;
  const char* const end = AText.data() + AText.size();
  const auto [stop, error] = std::from_chars(AText.data(), end, value, 16);
  if (AText.size() != 6 || error != std::errc() || stop != end) return std::nullopt;
  return value;
}

/// "60000" and "60%" are 0.6.
double ShareOf(const TXmlNode* ANode) {
  std::string_view text = XlsxTrim(XmlAttr(ANode, "val", "0"));
  double value = 0;
  if (!text.empty() && text.back() == '%') {
    text.remove_suffix(1);
    return TryParseFileNumber(text, value) ? value / 100 : 0;
  }
  int32_t whole = 0;
  return TryParseInt32(text, whole) ? whole / 100000.0 : 0;
}

/// Also for what arithmetic with numbers of a file made no number of.
double ClampChannel(double AValue) { return AValue > 0 ? std::min(AValue, 255.0) : 0; }

double TransformChannel(std::string_view AName, double AShare, double AChannel) {
  if (EqualXmlNames(AName, "shade") || EqualXmlNames(AName, "lumMod")) return AChannel * AShare;
  if (EqualXmlNames(AName, "tint")) return 255 * (1 - AShare) + AChannel * AShare;
  if (EqualXmlNames(AName, "lumOff")) return AChannel + 255 * AShare;
  return AChannel;
}

uint32_t ThemeSlotColor(int32_t AIndex, const TTessarineTheme* ATheme) {
  if (ATheme && AIndex >= 0 && static_cast<size_t>(AIndex) < ATheme->Colors().size())
    return ATheme->Colors()[static_cast<size_t>(AIndex)];
  return AIndex == 1 ? 0xFFFFFFFFu : kOpaqueBlack;
}

/// The node behind ANode below ARoot in document order, or null.
const TXmlNode* NextBelow(const TXmlNode* ANode, const TXmlNode* ARoot) {
  if (ANode->FirstChild) return ANode->FirstChild;
  while (ANode != ARoot && !ANode->NextSibling) ANode = ANode->Parent;
  return ANode == ARoot ? nullptr : ANode->NextSibling;
}

/// The first element below ARoot with six digits under the attribute.
const TXmlNode* FindDigits(const TXmlNode* ARoot, std::string_view AName, std::string_view AAttribute) {
  if (!ARoot) return nullptr;
  for (const TXmlNode* node = NextBelow(ARoot, ARoot); node; node = NextBelow(node, ARoot))
    if (XmlLocalNameIs(node, AName) && SixDigits(XmlAttr(node, AAttribute))) return node;
  return nullptr;
}

uint8_t AlphaOf(const TXmlNode* AFill) {
  const TXmlNode* const alpha = XmlFindDescendant(AFill, "alpha");
  return alpha ? static_cast<uint8_t>(RoundToEven(ClampChannel(ShareOf(alpha) * 255))) : uint8_t{255};
}

float PointsOf(const TXmlNode* ANode, std::string_view AName) {
  return std::clamp(static_cast<float>(static_cast<double>(XlsxEmuAttr(ANode, AName, 0)) / kEmuPerPoint), 0.0F,
                    kMaxFontPoints);
}

/// The theme's font for "+mj-lt", "+mn-ea" and the like.
TText TypefaceOf(std::string_view AName, const TTessarineTheme* ATheme) {
  if (ATheme && EqualXmlNames(AName.substr(0, 3), "+mj")) return ATheme->MajorFont();
  if (ATheme && EqualXmlNames(AName.substr(0, 3), "+mn")) return ATheme->MinorFont();
  return TText::FromUtf8(AName);
}

void ApplyPattern(const TXmlNode* APattern, const TTessarineTheme* ATheme, uint32_t& AColor, uint32_t& ABackColor,
                  TSheetChartFillPattern& AKind) {
  AColor = XlsxDrawingColor(XmlFindChild(APattern, "fgClr"), ATheme, AColor);
  ABackColor = XlsxDrawingColor(XmlFindChild(APattern, "bgClr"), ATheme, 0xFFFFFF);
  AKind = PatternOf(XmlAttr(APattern, "prst"));
}

const TXmlNode* FirstStop(const TXmlNode* AGradient) { return XmlFindChild(XmlFindChild(AGradient, "gsLst"), "gs"); }

TSheetChartFill SolidFill(const TXmlNode* AFill, const TTessarineTheme* ATheme) {
  TSheetChartFill fill = TSheetChartFill::Solid(XlsxDrawingColor(AFill, ATheme, 0));
  fill.Alpha = AlphaOf(AFill);
  return fill;
}

void ApplyFontChild(const TXmlNode* AChild, const TTessarineTheme* ATheme, TSheetChartFont& AFont) {
  const auto is = [AChild](std::string_view AName) { return XmlLocalNameIs(AChild, AName); };
  if (is("solidFill")) {
    AFont.Color = XlsxDrawingColor(AChild, ATheme, AFont.Color);
  } else if (is("gradFill")) {
    AFont.Color = XlsxDrawingColor(FirstStop(AChild), ATheme, AFont.Color);
  } else if (is("pattFill")) {
    ApplyPattern(AChild, ATheme, AFont.Color, AFont.FillBackColor, AFont.FillPattern);
  } else if (is("latin")) {
    if (const auto name = XmlAttr(AChild, "typeface"); !name.empty()) AFont.Name = TypefaceOf(name, ATheme);
  } else if (is("ln")) {
    AFont.Outline = XlsxReadStroke(AChild, ATheme);
  } else if (is("effectLst")) {
    const TXmlNode* const shadow = XmlFindChild(AChild, "outerShdw");
    AFont.ShadowDistPt = PointsOf(shadow, "dist");
    AFont.ShadowColor = XlsxDrawingColor(shadow, ATheme, 0);
  }
}

}  // namespace

int32_t XlsxSchemeNameToThemeIndex(std::string_view AName) {
  return XlsxValueOfWord(kSchemeNames, XlsxTrim(AName), int32_t{-1});
}

uint32_t XlsxArgbToBgr(uint32_t AArgb) { return (AArgb & 0xFF) << 16 | (AArgb & 0xFF00) | (AArgb >> 16 & 0xFF); }

uint32_t XlsxApplyDrawingMlTransforms(uint32_t AArgb, const TXmlNode* AColor) {
  double channels[] = {static_cast<double>(AArgb >> 16 & 0xFF), static_cast<double>(AArgb >> 8 & 0xFF),
                       static_cast<double>(AArgb & 0xFF)};
  for (const TXmlNode* child : TXmlElements(AColor)) {
    const double share = ShareOf(child);
    for (double& channel : channels) channel = TransformChannel(XmlLocalName(child), share, channel);
  }
  uint32_t result = 0xFF;
  for (const double channel : channels)
    result = result << 8 | static_cast<uint32_t>(RoundToEven(ClampChannel(channel)));
  return result;
}

std::optional<uint32_t> XlsxColorOfElement(const TXmlNode* AColor, const TTessarineTheme* ATheme) {
  uint32_t argb = kOpaqueBlack;
  if (XmlLocalNameIs(AColor, "srgbClr")) {
    const auto digits = SixDigits(XmlAttr(AColor, "val"));
    if (!digits) return std::nullopt;
    argb |= *digits;
  } else if (XmlLocalNameIs(AColor, "schemeClr")) {
    argb = ThemeSlotColor(XlsxSchemeNameToThemeIndex(XmlAttr(AColor, "val")), ATheme);
  } else {
    return std::nullopt;
  }
  return XlsxArgbToBgr(XlsxApplyDrawingMlTransforms(argb, AColor));
}

std::optional<uint32_t> XlsxParseDrawingMlColorEx(const TXmlNode* ANode, const TTessarineTheme* ATheme) {
  if (const TXmlNode* plain = FindDigits(ANode, "srgbClr", "val")) return XlsxColorOfElement(plain, ATheme);
  return XlsxColorOfElement(XmlFindDescendant(ANode, "schemeClr"), ATheme);
}

uint32_t XlsxDrawingColor(const TXmlNode* ANode, const TTessarineTheme* ATheme, uint32_t ADefault) {
  if (const auto color = XlsxParseDrawingMlColorEx(ANode, ATheme)) return *color;
  const TXmlNode* const system = FindDigits(ANode, "sysClr", "lastClr");
  if (!system) return ADefault;
  const uint32_t argb = kOpaqueBlack | SixDigits(XmlAttr(system, "lastClr")).value_or(0);
  return XlsxArgbToBgr(XlsxApplyDrawingMlTransforms(argb, system));
}

int64_t XlsxEmu(std::string_view AText, int64_t ADefault) {
  double value = 0;
  if (!TryParseFileNumber(AText, value)) return ADefault;
  return static_cast<int64_t>(std::clamp(value, -kMaxEmu, kMaxEmu));
}

int64_t XlsxEmuAttr(const TXmlNode* ANode, std::string_view AName, int64_t ADefault) {
  return XlsxEmu(XmlAttr(ANode, AName), ADefault);
}

int32_t XlsxWholeAttr(const TXmlNode* ANode, std::string_view AName, int32_t ADefault, int32_t AMin, int32_t AMax) {
  std::string_view text = XlsxTrim(XmlAttr(ANode, AName));
  if (!text.empty() && text.back() == '%') text.remove_suffix(1);
  double value = 0;
  if (!TryParseFileNumber(text, value)) return ADefault;
  return static_cast<int32_t>(std::clamp(value, static_cast<double>(AMin), static_cast<double>(AMax)));
}

TSheetChartFill XlsxReadFill(const TXmlNode* AProperties, const TTessarineTheme* ATheme) {
  for (const TXmlNode* child : TXmlElements(AProperties)) {
    if (XmlLocalNameIs(child, "noFill")) return {cpmNone, 0, 0, scfpNone, 0};
    if (XmlLocalNameIs(child, "solidFill")) return SolidFill(child, ATheme);
    if (XmlLocalNameIs(child, "gradFill")) return SolidFill(FirstStop(child), ATheme);
    if (!XmlLocalNameIs(child, "pattFill")) continue;
    TSheetChartFill fill = TSheetChartFill::Solid(0);
    ApplyPattern(child, ATheme, fill.Color, fill.BackColor, fill.Pattern);
    return fill;
  }
  return {};
}

TSheetChartStroke XlsxReadStroke(const TXmlNode* ALine, const TTessarineTheme* ATheme) {
  TSheetChartStroke stroke;
  stroke.WidthPt = PointsOf(ALine, "w");
  if (XmlFindChild(ALine, "noFill")) {
    stroke.Mode = cpmNone;
  } else if (const TXmlNode* fill = XmlFindChild(ALine, "solidFill")) {
    stroke.Mode = cpmSolid;
    stroke.Color = XlsxDrawingColor(fill, ATheme, 0);
  }
  return stroke;
}

TSheetChartFont XlsxReadChartFont(const TXmlNode* ARun, TSheetChartFont ABase, const TTessarineTheme* ATheme) {
  if (!ARun) return ABase;
  ABase.Assigned = true;
  const double size = XmlAttrFloat(ARun, "sz", -1) / 100;
  if (size >= 0 && size <= static_cast<double>(kMaxFontPoints)) ABase.SizePt = static_cast<float>(size);
  if (XmlHasAttr(ARun, "b")) ABase.Bold = XlsxAttrIsOn(ARun->Attributes, "b");
  if (XmlHasAttr(ARun, "i")) ABase.Italic = XlsxAttrIsOn(ARun->Attributes, "i");
  for (const TXmlNode* child : TXmlElements(ARun)) ApplyFontChild(child, ATheme, ABase);
  return ABase;
}

std::string XlsxColorDigits(uint32_t ABgr) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const uint32_t rgb = XlsxArgbToBgr(ABgr);  // the exchange undoes itself
  std::string text;
  for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[rgb >> shift & 15];
  return text;
}

}  // namespace tessarine::detail
