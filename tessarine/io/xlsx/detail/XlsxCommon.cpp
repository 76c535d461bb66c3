#include <tessarine/io/xlsx/detail/XlsxCommon.h>

#include <charconv>
#include <cmath>
#include <limits>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlEscapes.h>

namespace tessarine::detail {

void ReadXlsxText(TXmlReader& AReader, std::string& AOut) {
  AOut.clear();
  AppendElementText(AReader, AOut);
}

std::string_view XlsxAttr(TXmlAttributes AAttributes, std::string_view AName, std::string_view ADefault) {
  return FindXmlAttribute(AAttributes, AName).value_or(ADefault);
}

int32_t XlsxAttrInt(TXmlAttributes AAttributes, std::string_view AName, int32_t ADefault) {
  int32_t value = 0;
  return TryParseInt32(XlsxAttr(AAttributes, AName), value) ? value : ADefault;
}

double XlsxAttrFloat(TXmlAttributes AAttributes, std::string_view AName, double ADefault) {
  double value = 0;
  return TryParseFileNumber(XlsxAttr(AAttributes, AName), value) ? value : ADefault;
}

bool XlsxAttrIsOn(TXmlAttributes AAttributes, std::string_view AName) {
  const std::string_view value = XlsxAttr(AAttributes, AName);
  return value == "1" || EqualXmlNames(value, "true");
}

bool XlsxAttrIsOff(TXmlAttributes AAttributes, std::string_view AName) {
  const std::string_view value = XlsxAttr(AAttributes, AName);
  return value == "0" || EqualXmlNames(value, "false");
}

bool XlsxBoolVal(TXmlAttributes AAttributes, bool ADefault) {
  const auto value = FindXmlAttribute(AAttributes, "val");
  if (!value) return ADefault;
  return *value != "0" && !EqualXmlNames(*value, "false") && !EqualXmlNames(*value, "off");
}

std::string_view XlsxTrim(std::string_view AText) {
  const auto isBlank = [](char AChar) { return static_cast<unsigned char>(AChar) <= ' '; };
  while (!AText.empty() && isBlank(AText.front())) AText.remove_prefix(1);
  while (!AText.empty() && isBlank(AText.back())) AText.remove_suffix(1);
  return AText;
}

TText XlsxText(std::string_view AText) {
  if (AText.find('_') == std::string_view::npos) return TText::FromUtf8(AText);
  std::u16string buffer;
  return TText(UnescapeXlsxText(Utf8ToUtf16(AText), buffer));
}

TCellAddress XlsxAddress(std::string_view AText) { return TCellAddress::FromA1(Utf8ToUtf16(AText)); }

TCellRange XlsxRange(std::string_view AText) { return TCellRange::FromA1(Utf8ToUtf16(AText)); }

TColorRef XlsxParseColor(TXmlAttributes AAttributes) {
  const int32_t theme = XlsxAttrInt(AAttributes, "theme", -1);
  if (theme >= 0) return TColorRef::FromTheme(theme, XlsxAttrFloat(AAttributes, "tint", 0));
  const std::string_view rgb = XlsxAttr(AAttributes, "rgb");
  uint32_t value = 0;
  if (rgb.size() == 8) {
    const auto [end, error] = std::from_chars(rgb.data() + 2, rgb.data() + 8, value, 16);
    if (error != std::errc() || end != rgb.data() + 8) value = 0;
  }
  return TColorRef::FromARGB(kOpaqueBlack | value);
}

TColorRef XlsxParseColor(const TXmlNode* ANode) {
  return ANode ? XlsxParseColor(ANode->Attributes) : TColorRef::FromARGB(kOpaqueBlack);
}

namespace {

float FontSize(TXmlAttributes AAttributes, float ADefault) {
  const double size = XlsxAttrFloat(AAttributes, "val", static_cast<double>(ADefault));
  return std::abs(size) <= static_cast<double>(std::numeric_limits<float>::max()) ? static_cast<float>(size) : ADefault;
}

TUnderlineStyle UnderlineStyle(std::string_view AValue) {
  if (EqualXmlNames(AValue, "none") || AValue == "0" || EqualXmlNames(AValue, "false")) return usNone;
  return EqualXmlNames(AValue, "double") ? usDouble : usSingle;
}

TScriptPosition ScriptPosition(std::string_view AValue) {
  if (EqualXmlNames(AValue, "superscript") || EqualXmlNames(AValue, "super")) return spSuperscript;
  return EqualXmlNames(AValue, "subscript") || EqualXmlNames(AValue, "sub") ? spSubscript : spNormal;
}

}  // namespace

uint8_t XlsxApplyFontChild(std::string_view ALocalName, TXmlAttributes AAttributes, TCellFontInfo& AFont) {
  const auto is = [ALocalName](std::string_view AName) { return EqualXmlNames(ALocalName, AName); };
  if (is("name") || is("rFont")) {
    if (const auto name = FindXmlAttribute(AAttributes, "val")) AFont.Name = XlsxText(*name);
    return xfpName;
  }
  if (is("sz")) return AFont.Size = FontSize(AAttributes, AFont.Size), xfpSize;
  if (is("b")) return AFont.Bold = XlsxBoolVal(AAttributes, true), xfpBold;
  if (is("i")) return AFont.Italic = XlsxBoolVal(AAttributes, true), xfpItalic;
  if (is("strike")) return AFont.Strikethrough = XlsxBoolVal(AAttributes, true), xfpStrike;
  if (is("u")) return AFont.Underline = UnderlineStyle(XlsxAttr(AAttributes, "val", "single")), xfpUnderline;
  if (is("color")) return AFont.Color = XlsxParseColor(AAttributes), xfpColor;
  if (is("vertAlign")) return AFont.Script = ScriptPosition(XlsxAttr(AAttributes, "val")), xfpScript;
  return 0;
}

TCellFontInfo XlsxParseFontNode(const TXmlNode* ANode, const TCellFontInfo& ABase) {
  TCellFontInfo font = ABase;
  for (const TXmlNode* child : TXmlElements(ANode)) XlsxApplyFontChild(XmlLocalName(child), child->Attributes, font);
  return font;
}

}  // namespace tessarine::detail
