#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <tessarine/core/lists/Charts.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine {
class TTessarineTheme;
}

namespace tessarine::detail {

// The drawing language that drawings, charts and chart styles share (ECMA-376-1 §20.1). Colours of the model are
// 0x00BBGGRR. A null node means "no such element" everywhere, a null theme "no theme".

/// The slot of the theme's list that a scheme name means, blanks and case aside ("tx1" is 0, "folHlink" 11); else -1.
int32_t XlsxSchemeNameToThemeIndex(std::string_view AName);

/// Red and blue exchanged, opacity dropped.
uint32_t XlsxArgbToBgr(uint32_t AArgb);

/// AArgb after the children of a colour element: shade and lumMod scale the channels, tint moves them to white, lumOff
/// adds. Others do nothing here. The result is opaque.
uint32_t XlsxApplyDrawingMlTransforms(uint32_t AArgb, const TXmlNode* AColor);

/// The colour that the first srgbClr of six digits below ANode states, else the first schemeClr, transforms applied; a
/// slot that the theme does not have is black, slot 1 white. Nothing without such an element.
std::optional<uint32_t> XlsxParseDrawingMlColorEx(const TXmlNode* ANode, const TTessarineTheme* ATheme);

/// The same for a colour element itself.
std::optional<uint32_t> XlsxColorOfElement(const TXmlNode* AColor, const TTessarineTheme* ATheme);

/// XlsxParseDrawingMlColorEx, else the last known value of a system colour below ANode, else ADefault.
uint32_t XlsxDrawingColor(const TXmlNode* ANode, const TTessarineTheme* ATheme, uint32_t ADefault);

/// A length or position. What is no number is ADefault, what the format does not allow stays at its limits, which leave
/// room for arithmetic in 64 bits.
int64_t XlsxEmu(std::string_view AText, int64_t ADefault);
int64_t XlsxEmuAttr(const TXmlNode* ANode, std::string_view AName, int64_t ADefault);

/// A whole number that may carry "%" or a fraction, kept between AMin and AMax.
int32_t XlsxWholeAttr(const TXmlNode* ANode, std::string_view AName, int32_t ADefault, int32_t AMin, int32_t AMax);

/// The fill among the children of a shape's properties; of a gradient the first stop. A fill that is not stated has the
/// mode cpmDefault.
TSheetChartFill XlsxReadFill(const TXmlNode* AProperties, const TTessarineTheme* ATheme);

/// An outline ("ln").
TSheetChartStroke XlsxReadStroke(const TXmlNode* ALine, const TTessarineTheme* ATheme);

/// ABase with all that the properties of a run ("rPr", "defRPr") state; ABase itself for null.
TSheetChartFont XlsxReadChartFont(const TXmlNode* ARun, TSheetChartFont ABase, const TTessarineTheme* ATheme);

/// Calls AVisit for the runs, fields and breaks of a paragraph's text: AVisit(run, text), CR LF for a break.
template <class TVisit>
void XlsxForEachRun(const TXmlNode* AParagraph, TVisit&& AVisit) {
  for (const TXmlNode* run : TXmlElements(AParagraph)) {
    if (XmlLocalNameIs(run, "r") || XmlLocalNameIs(run, "fld"))
      AVisit(run, XmlCollectLocalText16(run, "t"));
    else if (XmlLocalNameIs(run, "br"))
      AVisit(run, std::u16string(u"\r\n"));
  }
}

/// Calls AVisit for each line of a text, the ends (CR, LF, CR LF) left out; once for an empty text.
template <class TVisit>
void XlsxForEachLine(std::u16string_view AText, TVisit&& AVisit) {
  for (size_t at = 0; at <= AText.size();) {
    const size_t end = AText.find_first_of(u"\r\n", at);
    AVisit(AText.substr(at, end - at));
    if (end == std::u16string_view::npos) return;
    at = end + (AText.substr(end, 2) == u"\r\n" ? 2 : 1);
  }
}

/// A word of a file and what it means. Tables of them serve reading and writing; for writing the first word of a value
/// counts.
template <class TValue>
struct TXlsxWord {
  std::string_view Word;
  TValue Value;
};

/// The value of a word in any case of its ASCII letters, else ADefault.
template <class TValue, size_t Count>
TValue XlsxValueOfWord(const TXlsxWord<TValue> (&AWords)[Count], std::string_view AWord, TValue ADefault) {
  for (const auto& row : AWords)
    if (EqualXmlNames(row.Word, AWord)) return row.Value;
  return ADefault;
}

/// The word of a value, else the first one of the table.
template <class TValue, size_t Count>
std::string_view XlsxWordOfValue(const TXlsxWord<TValue> (&AWords)[Count], TValue AValue) {
  for (const auto& row : AWords)
    if (row.Value == AValue) return row.Word;
  return AWords[0].Word;
}

/// "RRGGBB" of a colour of the model.
std::string XlsxColorDigits(uint32_t ABgr);

}  // namespace tessarine::detail
