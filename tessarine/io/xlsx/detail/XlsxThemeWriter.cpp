#include <tessarine/io/xlsx/detail/XlsxThemeWriter.h>

#include <cstddef>
#include <iterator>
#include <string_view>

#include <tessarine/core/format/Theme.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/io/xlsx/detail/XlsxTheme.h>
#include <tessarine/platform/Dates.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kFormatScheme =
    "<a:fmtScheme name=\"Office\">"
    "<a:fillStyleLst><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill>"
    "<a:gradFill rotWithShape=\"1\"><a:gsLst>"
    "<a:gs pos=\"0\"><a:schemeClr val=\"phClr\"><a:lumMod val=\"110000\"/><a:satMod val=\"105000\"/>"
    "<a:tint val=\"67000\"/></a:schemeClr></a:gs>"
    "<a:gs pos=\"100000\"><a:schemeClr val=\"phClr\"><a:lumMod val=\"105000\"/><a:satMod val=\"109000\"/>"
    "<a:tint val=\"81000\"/></a:schemeClr></a:gs></a:gsLst><a:lin ang=\"5400000\" scaled=\"0\"/></a:gradFill>"
    "<a:gradFill rotWithShape=\"1\"><a:gsLst>"
    "<a:gs pos=\"0\"><a:schemeClr val=\"phClr\"><a:satMod val=\"103000\"/><a:lumMod val=\"102000\"/>"
    "<a:tint val=\"94000\"/></a:schemeClr></a:gs>"
    "<a:gs pos=\"100000\"><a:schemeClr val=\"phClr\"><a:lumMod val=\"99000\"/><a:satMod val=\"120000\"/>"
    "<a:shade val=\"78000\"/></a:schemeClr></a:gs></a:gsLst><a:lin ang=\"5400000\" scaled=\"0\"/></a:gradFill>"
    "</a:fillStyleLst>"
    "<a:lnStyleLst>"
    "<a:ln w=\"9525\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill><a:prstDash val=\"solid\"/></a:ln>"
    "<a:ln w=\"25400\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill><a:prstDash val=\"solid\"/></a:ln>"
    "<a:ln w=\"38100\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill><a:prstDash val=\"solid\"/></a:ln>"
    "</a:lnStyleLst>"
    "<a:effectStyleLst><a:effectStyle><a:effectLst/></a:effectStyle><a:effectStyle><a:effectLst/></a:effectStyle>"
    "<a:effectStyle><a:effectLst><a:outerShdw blurRad=\"57150\" dist=\"19050\" dir=\"5400000\" algn=\"ctr\" "
    "rotWithShape=\"0\"><a:srgbClr val=\"000000\"><a:alpha val=\"63000\"/></a:srgbClr></a:outerShdw></a:effectLst>"
    "</a:effectStyle></a:effectStyleLst>"
    "<a:bgFillStyleLst><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill>"
    "<a:solidFill><a:schemeClr val=\"phClr\"><a:tint val=\"95000\"/><a:satMod "
    "val=\"170000\"/></a:schemeClr></a:solidFill>"
    "<a:gradFill rotWithShape=\"1\"><a:gsLst>"
    "<a:gs pos=\"0\"><a:schemeClr val=\"phClr\"><a:tint val=\"93000\"/><a:shade val=\"98000\"/></a:schemeClr></a:gs>"
    "<a:gs pos=\"100000\"><a:schemeClr val=\"phClr\"><a:shade val=\"63000\"/></a:schemeClr></a:gs></a:gsLst>"
    "<a:lin ang=\"5400000\" scaled=\"0\"/></a:gradFill></a:bgFillStyleLst>"
    "</a:fmtScheme>";

void AppendColors(const TTessarineTheme& ATheme, std::string& AOut) {
  AOut += "<a:clrScheme name=\"Office\">";
  for (size_t slot = 0; slot < std::size(kXlsxThemeSlots); ++slot) {
    std::string color;
    AppendXlsxRgb(slot < ATheme.Colors().size() ? ATheme.Colors()[slot] : 0, color);
    ((AOut += "<a:") += kXlsxThemeSlots[slot]) += "><a:srgbClr";
    AppendXlsxWord("val", std::string_view(color).substr(2), AOut);
    ((AOut += "/></a:") += kXlsxThemeSlots[slot]) += '>';
  }
  AOut += "</a:clrScheme>";
}

void AppendThemeFont(std::string_view AName, const TText& AFont, std::u16string_view ADefault, std::string& AOut) {
  ((AOut += "<a:") += AName) += "><a:latin";
  AppendXlsxAttr("typeface", AFont.IsEmpty() ? ADefault : AFont.View(), AOut);
  ((AOut += "/><a:ea typeface=\"\"/><a:cs typeface=\"\"/></a:") += AName) += '>';
}

void AppendPadded(int AValue, size_t AWidth, std::string& AOut) {
  const std::string text = std::to_string(AValue);
  if (text.size() < AWidth) AOut.append(AWidth - text.size(), '0');
  AOut += text;
}

/// "2026-01-31T08:05:00Z"
std::string TimeStamp(double ATime) {
  const TDateParts date = DecodeDate(ATime);
  const TTimeParts time = DecodeTime(ATime);
  std::string text;
  AppendPadded(date.Year, 4, text);
  AppendPadded(date.Month, 2, text += '-');
  AppendPadded(date.Day, 2, text += '-');
  AppendPadded(time.Hour, 2, text += 'T');
  AppendPadded(time.Minute, 2, text += ':');
  AppendPadded(time.Second, 2, text += ':');
  return text += 'Z';
}

}  // namespace

std::string XlsxThemePart(const TTessarineTheme& ATheme) {
  std::string out(kXmlHead);
  out +=
      "<a:theme xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\" name=\"Office Theme\">"
      "<a:themeElements>";
  AppendColors(ATheme, out);
  out += "<a:fontScheme name=\"Office\">";
  AppendThemeFont("majorFont", ATheme.MajorFont(), u"Calibri Light", out);
  AppendThemeFont("minorFont", ATheme.MinorFont(), u"Calibri", out);
  out += "</a:fontScheme>";
  out += kFormatScheme;
  out += "</a:themeElements></a:theme>";
  return out;
}

std::string XlsxCorePropertiesPart(double ATime) {
  const std::string stamp = TimeStamp(ATime);
  std::string out(kXmlHead);
  out +=
      "<cp:coreProperties xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:dcterms=\"http://purl.org/dc/terms/\" "
      "xmlns:dcmitype=\"http://purl.org/dc/dcmitype/\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">"
      "<dc:title></dc:title><dc:subject></dc:subject><dc:creator>Tessarine</dc:creator>"
      "<cp:lastModifiedBy>Tessarine</cp:lastModifiedBy><cp:revision>1</cp:revision>";
  ((out += "<dcterms:created xsi:type=\"dcterms:W3CDTF\">") += stamp) += "</dcterms:created>";
  ((out += "<dcterms:modified xsi:type=\"dcterms:W3CDTF\">") += stamp) += "</dcterms:modified>";
  out += "<cp:version>1.0</cp:version></cp:coreProperties>";
  return out;
}

std::string XlsxAppPropertiesPart() {
  return std::string(kXmlHead) +
         "<Properties xmlns=\"http://schemas.openxmlformats.org/officeDocument/2006/extended-properties\">"
         "<Application>Tessarine</Application><DocSecurity>0</DocSecurity><ScaleCrop>false</ScaleCrop>"
         "<Company></Company><LinksUpToDate>false</LinksUpToDate><HyperlinksChanged>false</HyperlinksChanged>"
         "<AppVersion>1.0</AppVersion></Properties>";
}

}  // namespace tessarine::detail
