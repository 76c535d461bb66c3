#include <tessarine/io/ods/detail/OdsStyleWriter.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

void AppendPair(const char* AName, std::string_view AValue, std::string& AOut) {
  AOut.append(" ").append(AName).append("=\"").append(AValue).append("\"");
}

void AppendColorPair(const char* AName, uint32_t ARGB, std::string& AOut) {
  AOut.append(" ").append(AName).append("=\"");
  AppendOdsColor(ARGB, AOut);
  AOut += '"';
}

const char* BorderWidth(TBorderLineStyle AStyle) {
  switch (AStyle) {
    case blsMedium: return "0.05cm";
    case blsThick: return "0.1cm";
    case blsHair: return "0.013cm";
    case blsNone:
    case blsThin:
    case blsDashed:
    case blsDotted:
    case blsDouble: break;
  }
  return "0.026cm";
}

const char* BorderStyleWord(TBorderLineStyle AStyle) {
  switch (AStyle) {
    case blsDashed: return "dashed";
    case blsDotted: return "dotted";
    case blsDouble: return "double";
    case blsNone:
    case blsThin:
    case blsMedium:
    case blsThick:
    case blsHair: break;
  }
  return "solid";
}

/// Nothing for the alignment that the kind of the value decides.
const char* HorizontalWord(THorizontalAlignment AAlignment) {
  switch (AAlignment) {
    case haLeft:
    case haFill: return "start";
    case haCenter: return "center";
    case haRight: return "end";
    case haJustify: return "justify";
    case haGeneral: break;
  }
  return nullptr;
}

const char* VerticalWord(TVerticalAlignment AAlignment) {
  switch (AAlignment) {
    case vaTop: return "top";
    case vaCenter: return "middle";
    case vaBottom: break;
  }
  return "bottom";
}

constexpr int32_t kStackedRotation = 255;

/// Degrees from 0 to 359, counted against the clock; 91 to 180 go the other way in the model.
int32_t RotationAngle(int32_t ARotation) {
  const int32_t turned = ARotation > 90 && ARotation <= 180 ? 90 - ARotation : ARotation;
  return (turned % 360 + 360) % 360;
}

}  // namespace

void AppendOdsColor(uint32_t ARGB, std::string& AOut) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "#%.6x", ARGB & 0xFFFFFFu);
  AOut += buffer;
}

TOdsStyleWriter::TOdsStyleWriter(const TWorkbook& AWorkbook, TFileReport* AReport)
    : FSheet(AWorkbook.StyleSheet()),
      FTheme(AWorkbook.Theme()),
      FReport(AReport),
      FByIndex(static_cast<size_t>(AWorkbook.StyleSheet().Count()), -1) {}

uint32_t TOdsStyleWriter::Resolved(const TColorRef& AColor) const { return ResolveColor(AColor, &FTheme); }

int32_t TOdsStyleWriter::CellStyleOf(int32_t AStyleIndex) {
  if (AStyleIndex < 0 || static_cast<size_t>(AStyleIndex) >= FByIndex.size()) return 0;
  int32_t& number = FByIndex[static_cast<size_t>(AStyleIndex)];
  if (number < 0) number = CellStyleOf(FSheet.GetCellXf(AStyleIndex));
  return number;
}

int32_t TOdsStyleWriter::CellStyleOf(const TCellFormat& AFormat) {
  if (AFormat == TCellFormat::Default()) return 0;
  const auto [place, added] = FCellStyles.try_emplace(AFormat, static_cast<int32_t>(FCellAttributes.size()));
  if (added) {
    const std::string name = "ce" + std::to_string(place->second);
    AppendCellStyle(AFormat, name);
    FCellAttributes.push_back(" table:style-name=\"" + name + "\"");
  }
  return place->second;
}

int32_t TOdsStyleWriter::TextStyleOf(const TCellFontInfo& AFont) {
  TCellFormat key;
  key.Font = AFont;
  const auto [place, added] = FTextStyles.try_emplace(std::move(key), static_cast<int32_t>(FTextStyles.size()) + 1);
  const int32_t number = place->second;
  if (!added) return number;
  FXml += "<style:style style:name=\"T" + std::to_string(number) + "\" style:family=\"text\">";
  AppendTextProperties(AFont, FXml);
  FXml += "</style:style>";
  return number;
}

std::string TOdsStyleWriter::RegisterGraphicStyle(const TOdsDrawnStyle& AStyle) {
  const auto found = std::find(FGraphicStyles.begin(), FGraphicStyles.end(), AStyle);
  std::string name = "gr" + std::to_string(found - FGraphicStyles.begin() + 1);
  if (found != FGraphicStyles.end()) return name;
  FGraphicStyles.push_back(AStyle);
  FXml += "<style:style style:name=\"" + name + "\" style:family=\"graphic\"><style:graphic-properties";
  AppendPair("draw:fill", AStyle.HasFill ? "solid" : "none", FXml);
  if (AStyle.HasFill) AppendColorPair("draw:fill-color", AStyle.FillColor, FXml);
  AppendPair("draw:stroke", AStyle.HasStroke ? "solid" : "none", FXml);
  if (AStyle.HasStroke) {
    AppendColorPair("svg:stroke-color", AStyle.StrokeColor, FXml);
    AppendPair("svg:stroke-width", OdsLengthText(AStyle.StrokeWidthCm), FXml);
  }
  FXml += "/></style:style>";
  return name;
}

void TOdsStyleWriter::AddColumnStyle(std::string_view AName, double AWidthChars) {
  FXml.append("<style:style style:name=\"").append(AName);
  FXml.append("\" style:family=\"table-column\"><style:table-column-properties style:column-width=\"");
  FXml.append(OdsColCharsToCm(AWidthChars)).append("\"/></style:style>");
}

void TOdsStyleWriter::AddRowStyle(std::string_view AName, double AHeightPt) {
  FXml.append("<style:style style:name=\"").append(AName);
  FXml.append("\" style:family=\"table-row\"><style:table-row-properties style:row-height=\"");
  FXml.append(OdsPointsToCm(AHeightPt)).append("\" style:use-optimal-row-height=\"false\"/></style:style>");
}

void TOdsStyleWriter::AddTableStyle(std::string_view AName, bool AIsShown, bool AIsRightToLeft) {
  FXml.append("<style:style style:name=\"").append(AName);
  FXml.append("\" style:family=\"table\"><style:table-properties table:display=\"").append(AIsShown ? "true" : "false");
  FXml.append("\" style:writing-mode=\"").append(AIsRightToLeft ? "rl-tb" : "lr-tb").append("\"/></style:style>");
}

void TOdsStyleWriter::AppendTextProperties(const TCellFontInfo& AFont, std::string& AOut) {
  FFonts.insert(AFont.Name);
  AOut += "<style:text-properties style:font-name=\"";
  AppendXmlAttribute(AFont.Name.View(), AOut);
  AOut += '"';
  if (AFont.Size > 0 && AFont.Size < 1000) {
    char size[32];
    std::snprintf(size, sizeof size, "%.1fpt", static_cast<double>(AFont.Size));
    std::replace(size, size + sizeof size, ',', '.');
    AppendPair("fo:font-size", size, AOut);
  }
  AppendPair("fo:font-weight", AFont.Bold ? "bold" : "normal", AOut);
  AppendPair("fo:font-style", AFont.Italic ? "italic" : "normal", AOut);
  if (AFont.Underline != usNone) {
    AOut += " style:text-underline-style=\"solid\" style:text-underline-width=\"auto\"";
    AOut += " style:text-underline-color=\"font-color\"";
    if (AFont.Underline == usDouble) AppendPair("style:text-underline-type", "double", AOut);
  }
  if (AFont.Strikethrough) AppendPair("style:text-line-through-style", "solid", AOut);
  if (AFont.Script != spNormal)
    AppendPair("style:text-position", AFont.Script == spSuperscript ? "super 58%" : "sub 58%", AOut);
  AppendColorPair("fo:color", Resolved(AFont.Color), AOut);
  AOut += "/>";
}

void TOdsStyleWriter::AppendBorders(const TCellBorderInfo& ABorder, std::string& AOut) {
  const auto append = [&](const char* AName, const TBorderSide& ASide, bool AIsDrawn) {
    if (ASide.Style == blsNone || !AIsDrawn) return;
    AOut.append(" ").append(AName).append("=\"").append(BorderWidth(ASide.Style)).append(" ");
    AOut.append(BorderStyleWord(ASide.Style)).append(" ");
    AppendOdsColor(Resolved(ASide.Color), AOut);
    AOut += '"';
  };
  append("fo:border-left", ABorder.Left, true);
  append("fo:border-right", ABorder.Right, true);
  append("fo:border-top", ABorder.Top, true);
  append("fo:border-bottom", ABorder.Bottom, true);
  append("style:diagonal-bl-tr", ABorder.Diagonal, ABorder.DiagonalUp);
  append("style:diagonal-tl-br", ABorder.Diagonal, ABorder.DiagonalDown);
}

void TOdsStyleWriter::AppendCellProperties(const TCellFormat& AFormat, std::string& AOut) {
  const TCellAlignmentInfo& alignment = AFormat.Alignment;
  AOut += "<style:table-cell-properties";
  if (AFormat.Fill.PatternType != 0) {
    AppendColorPair("fo:background-color", Resolved(AFormat.Fill.ForegroundColor), AOut);
    if (AFormat.Fill.IsGradient() && FReport)
      FReport->Add("gradient fill", ffRewritten, {}, 1, "as a solid fill in its first colour");
  }
  AppendPair("style:vertical-align", VerticalWord(alignment.Vertical), AOut);
  if (alignment.Horizontal != haGeneral) AppendPair("style:text-align-source", "fix", AOut);
  if (alignment.Horizontal == haFill) AppendPair("style:repeat-content", "true", AOut);
  if (alignment.WrapText) AppendPair("fo:wrap-option", "wrap", AOut);
  if (alignment.ShrinkToFit) AppendPair("style:shrink-to-fit", "true", AOut);
  if (alignment.TextRotation == kStackedRotation) {
    AppendPair("style:direction", "ttb", AOut);
  } else if (const int32_t angle = RotationAngle(alignment.TextRotation)) {
    AppendPair("style:rotation-angle", std::to_string(angle), AOut);
  }
  AppendBorders(AFormat.Border, AOut);
  if (alignment.PaddingLeftCm > 0) AppendPair("fo:padding-left", OdsLengthText(alignment.PaddingLeftCm), AOut);
  if (alignment.PaddingRightCm > 0) AppendPair("fo:padding-right", OdsLengthText(alignment.PaddingRightCm), AOut);
  if (AFormat.Hidden) {
    AppendPair("style:cell-protect", AFormat.Locked ? "protected formula-hidden" : "formula-hidden", AOut);
  } else {
    AppendPair("style:cell-protect", AFormat.Locked ? "protected" : "none", AOut);
  }
  AOut += "/>";
}

void TOdsStyleWriter::AppendParagraphProperties(const TCellAlignmentInfo& AAlignment, std::string& AOut) {
  constexpr double kIndentCm = 0.353;  // ten points a step
  const double left =
      AAlignment.MarginLeftCm > 0 ? AAlignment.MarginLeftCm : std::max(AAlignment.Indent, 0) * kIndentCm;
  const size_t before = AOut.size();
  AOut += "<style:paragraph-properties";
  const size_t empty = AOut.size();
  if (const char* word = HorizontalWord(AAlignment.Horizontal)) AppendPair("fo:text-align", word, AOut);
  if (left > 0) AppendPair("fo:margin-left", OdsLengthText(left), AOut);
  if (AAlignment.MarginRightCm > 0) AppendPair("fo:margin-right", OdsLengthText(AAlignment.MarginRightCm), AOut);
  if (AAlignment.ReadingOrder != roContext)
    AppendPair("style:writing-mode", AAlignment.ReadingOrder == roRTL ? "rl-tb" : "lr-tb", AOut);
  if (AOut.size() == empty) {
    AOut.resize(before);
  } else {
    AOut += "/>";
  }
}

void TOdsStyleWriter::AppendCellStyle(const TCellFormat& AFormat, const std::string& AName) {
  const std::string& dataStyle = FNumberStyles.NameOf(AFormat.NumberFormat);
  if (FReport && !FNumberStyles.IsExact(AFormat.NumberFormat))
    FReport->Add("number format", ffRewritten, {}, 1, AFormat.NumberFormat.ToUtf8());
  FXml.append("<style:style style:name=\"").append(AName);
  FXml += "\" style:family=\"table-cell\" style:parent-style-name=\"Default\"";
  if (!dataStyle.empty()) AppendPair("style:data-style-name", dataStyle, FXml);
  FXml += '>';
  AppendCellProperties(AFormat, FXml);
  AppendParagraphProperties(AFormat.Alignment, FXml);
  AppendTextProperties(AFormat.Font, FXml);
  FXml += "</style:style>";
}

std::string TOdsStyleWriter::DefaultStyleXml() {
  std::string xml = "<style:style style:name=\"Default\" style:family=\"table-cell\">";
  AppendCellProperties(TCellFormat::Default(), xml);
  AppendTextProperties(TCellFormat::Default().Font, xml);
  return xml + "</style:style>";
}

std::string TOdsStyleWriter::BuildAutomaticStylesXml() const {
  std::string xml = "<office:font-face-decls>";
  for (const TText& font : FFonts) {
    std::u16string family = u"'";
    for (const char16_t unit : font.View())
      if (unit != u'\'') family += unit;
    family += u'\'';
    xml += "<style:font-face style:name=\"";
    AppendXmlAttribute(font.View(), xml);
    xml += "\" svg:font-family=\"";
    AppendXmlAttribute(family, xml);
    xml += "\"/>";
  }
  xml += "</office:font-face-decls><office:automatic-styles>";
  return xml.append(FNumberStyles.Xml()).append(FXml).append("</office:automatic-styles>");
}

}  // namespace tessarine::detail
