#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

/// TXmlReader::LocalNameIs for names that files mostly write just so.
inline bool XlsxIsElement(const TXmlReader& AReader, std::string_view ALocalName) {
  return AReader.Name() == ALocalName || AReader.LocalNameIs(ALocalName);
}

/// Called at a start event: replaces AOut by all text below the element and goes on to its end event.
void ReadXlsxText(TXmlReader& AReader, std::string& AOut);

/// Called at a start event: calls AChild() at the start of each child of that name, which goes on to its end event, and
/// goes on to the element's own end.
template <class TChild>
void ForEachXlsxChild(TXmlReader& AReader, std::string_view ALocalName, TChild&& AChild) {
  for (;;) {
    while (AReader.TryReadStartTag(ALocalName)) AChild();
    const TXmlEvent event = AReader.Next();
    if (event == xeEndElement || event == xeEnd) return;
    if (event != xeStartElement) continue;
    if (XlsxIsElement(AReader, ALocalName)) {
      AChild();
    } else {
      AReader.SkipElement();
    }
  }
}

/// The attributes of one element, of a pull reader or of a tree. Names are looked up as FindXmlAttribute does.
using TXmlAttributes = std::span<const TXmlAttribute>;

std::string_view XlsxAttr(TXmlAttributes AAttributes, std::string_view AName, std::string_view ADefault = {});

/// The whole text as an integer, as a number; else ADefault.
int32_t XlsxAttrInt(TXmlAttributes AAttributes, std::string_view AName, int32_t ADefault);
double XlsxAttrFloat(TXmlAttributes AAttributes, std::string_view AName, double ADefault);

/// Whether the attribute is there and "1" or "true"; "0" or "false".
bool XlsxAttrIsOn(TXmlAttributes AAttributes, std::string_view AName);
bool XlsxAttrIsOff(TXmlAttributes AAttributes, std::string_view AName);

/// The meaning of "val": ADefault without it, false for "0", "false" and "off", else true.
bool XlsxBoolVal(TXmlAttributes AAttributes, bool ADefault);

/// AText without the bytes up to U+0020 at both ends.
std::string_view XlsxTrim(std::string_view AText);

/// The text of an element, or of an attribute that takes a text of the user (a name, a prompt), escapes undone.
TText XlsxText(std::string_view AText);

/// An address or a range as TCellAddress and TCellRange read them.
TCellAddress XlsxAddress(std::string_view AText);
TCellRange XlsxRange(std::string_view AText);

/// Whether a range could be read.
inline bool XlsxIsRange(const TCellRange& ARange) { return ARange.StartCol >= 1 && ARange.StartRow >= 1; }

/// A theme slot with its tint, else the eight digits of "rgb" with full opacity, else opaque black. Colours by index
/// and automatic ones are not known here.
TColorRef XlsxParseColor(TXmlAttributes AAttributes);

/// The same for an element that may be missing: opaque black.
TColorRef XlsxParseColor(const TXmlNode* ANode);

/// The properties of a font that a document can state, one bit each.
enum TXlsxFontProperty : uint8_t {
  xfpName = 1,
  xfpSize = 2,
  xfpBold = 4,
  xfpItalic = 8,
  xfpUnderline = 16,
  xfpStrike = 32,
  xfpColor = 64,
  xfpScript = 128,
};

/// Applies one child of a font element to AFont and returns its bit, 0 for an element that says nothing here.
uint8_t XlsxApplyFontChild(std::string_view ALocalName, TXmlAttributes AAttributes, TCellFontInfo& AFont);

/// ABase with all that a font element states.
TCellFontInfo XlsxParseFontNode(const TXmlNode* ANode, const TCellFontInfo& ABase);

}  // namespace tessarine::detail
