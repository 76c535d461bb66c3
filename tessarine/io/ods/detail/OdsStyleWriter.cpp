#include <tessarine/io/ods/detail/OdsStyleWriter.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/io/ods/detail/OdsExactMarks.h>
#include <tessarine/io/ods/detail/OdsPropertyReader.h>
#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/Numbers.h>
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

/// Whether a file's "#rrggbb" says all of a colour.
bool IsPlainColor(const TColorRef& AColor, uint32_t AResolved) {
  return AColor == TColorRef::FromARGB(AResolved | 0xFF000000u);
}

}  // namespace

void AppendOdsColor(uint32_t ARGB, std::string& AOut) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "#%.6x", ARGB & 0xFFFFFFu);
  AOut += buffer;
}

TOdsStyleWriter::TOdsStyleWriter(const TWorkbook& AWorkbook, const TOdsWriteOptions& AOptions)
    : FSheet(AWorkbook.StyleSheet()),
      FTheme(AWorkbook.Theme()),
      FReport(AOptions.Report),
      FHasMarks(!AOptions.Literal),
      FNumberStyles(FHasMarks),
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
  AppendTextProperties(AFont, FXml, true);
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

/// The mark of a line whose size in the file, read back as AReadBack, is not the one it has.
void TOdsStyleWriter::AppendSizeMark(const char* AName, double ASize, double AReadBack, bool AIsDefault) {
  if (!FHasMarks || (!AIsDefault && ASize == AReadBack)) return;
  FXml.append(" tessarine:").append(AName).append("=\"");
  if (AIsDefault) {
    FXml += kOdsDefaultSizeMark;
  } else {
    AppendFileNumber(ASize, FXml);
  }
  FXml += '"';
}

void TOdsStyleWriter::AddColumnStyle(std::string_view AName, double AWidthChars, bool AIsDefault) {
  const std::string width = OdsColCharsToCm(AWidthChars);
  FXml.append("<style:style style:name=\"").append(AName);
  FXml.append("\" style:family=\"table-column\"><style:table-column-properties style:column-width=\"");
  FXml.append(width).append("\"");
  AppendSizeMark("exact-width", AWidthChars, OdsCmToColChars(OdsParseLengthCm(width)), AIsDefault);
  FXml += "/></style:style>";
}

void TOdsStyleWriter::AddRowStyle(std::string_view AName, double AHeightPt, bool AIsDefault) {
  const std::string height = OdsPointsToCm(AHeightPt);
  FXml.append("<style:style style:name=\"").append(AName);
  FXml.append("\" style:family=\"table-row\"><style:table-row-properties style:row-height=\"");
  FXml.append(height).append("\" style:use-optimal-row-height=\"false\"");
  AppendSizeMark("exact-height", AHeightPt, OdsCmToPoints(OdsParseLengthCm(height)), AIsDefault);
  FXml += "/></style:style>";
}

void TOdsStyleWriter::AddTableStyle(std::string_view AName, const TOdsTableLook& ALook) {
  FXml.append("<style:style style:name=\"").append(AName);
  FXml.append("\" style:family=\"table\"><style:table-properties table:display=\"");
  FXml.append(ALook.IsShown ? "true" : "false").append("\" style:writing-mode=\"");
  FXml.append(ALook.IsRightToLeft ? "rl-tb" : "lr-tb").append("\"");
  AppendSizeMark("exact-column-width", ALook.DefaultColWidth, kOdsPlainColWidth, false);
  AppendSizeMark("exact-row-height", ALook.DefaultRowHeight, kOdsPlainRowHeight, false);
  FXml += "/></style:style>";
}

/// What a stretch of text does not have is stated as well: the cell around it may have it.
void TOdsStyleWriter::AppendTextProperties(const TCellFontInfo& AFont, std::string& AOut, bool AIsStretch) {
  FFonts.insert(AFont.Name);
  AOut += "<style:text-properties style:font-name=\"";
  AppendXmlAttribute(AFont.Name.View(), AOut);
  AOut += '"';
  if (AFont.Size > 0 && AFont.Size < 1000) {
    char size[32];
    std::snprintf(size, sizeof size, "%.1fpt", static_cast<double>(AFont.Size));
    std::replace(size, size + sizeof size, ',', '.');
    AppendPair("fo:font-size", size, AOut);
    if (double written = 0; FHasMarks && TryParseFileNumber(std::string_view(size, std::strlen(size) - 2), written) &&
                            static_cast<float>(written) != AFont.Size) {
      AOut += " tessarine:exact-size=\"";
      AppendFileNumber(static_cast<double>(AFont.Size), AOut);
      AOut += '"';
    }
  }
  AppendPair("fo:font-weight", AFont.Bold ? "bold" : "normal", AOut);
  AppendPair("fo:font-style", AFont.Italic ? "italic" : "normal", AOut);
  if (AFont.Underline != usNone) {
    AOut += " style:text-underline-style=\"solid\" style:text-underline-width=\"auto\"";
    AOut += " style:text-underline-color=\"font-color\"";
    if (AFont.Underline == usDouble) AppendPair("style:text-underline-type", "double", AOut);
  } else if (AIsStretch) {
    AppendPair("style:text-underline-style", "none", AOut);
  }
  if (AFont.Strikethrough || AIsStretch)
    AppendPair("style:text-line-through-style", AFont.Strikethrough ? "solid" : "none", AOut);
  if (AFont.Script != spNormal) {
    AppendPair("style:text-position", AFont.Script == spSuperscript ? "super 58%" : "sub 58%", AOut);
  } else if (AIsStretch) {
    AppendPair("style:text-position", "0% 100%", AOut);
  }
  const uint32_t color = Resolved(AFont.Color);
  AppendColorPair("fo:color", color, AOut);
  if (FHasMarks && !IsPlainColor(AFont.Color, color))
    AppendPair("tessarine:exact-color", OdsColorMark(AFont.Color), AOut);
  AOut += "/>";
}

void TOdsStyleWriter::AppendBorders(const TCellBorderInfo& ABorder, std::string& AOut) {
  const auto append = [&](const char* AName, const TBorderSide& ASide, bool AIsDrawn) {
    if (ASide.Style != blsNone && AIsDrawn) AppendPair(AName, OdsBorderText(ASide.Style, Resolved(ASide.Color)), AOut);
  };
  const auto mark = [&](const char* AName, const TBorderSide& ASide) {
    if (FHasMarks && OdsParseBorderSide(OdsBorderText(ASide.Style, Resolved(ASide.Color))) != ASide)
      AppendPair(AName, OdsBorderMark(ASide), AOut);
  };
  append("fo:border-left", ABorder.Left, true);
  append("fo:border-right", ABorder.Right, true);
  append("fo:border-top", ABorder.Top, true);
  append("fo:border-bottom", ABorder.Bottom, true);
  append("style:diagonal-bl-tr", ABorder.Diagonal, ABorder.DiagonalUp);
  append("style:diagonal-tl-br", ABorder.Diagonal, ABorder.DiagonalDown);
  mark("tessarine:exact-left", ABorder.Left);
  mark("tessarine:exact-right", ABorder.Right);
  mark("tessarine:exact-top", ABorder.Top);
  mark("tessarine:exact-bottom", ABorder.Bottom);
  if (ABorder.DiagonalUp || ABorder.DiagonalDown) mark("tessarine:exact-diagonal", ABorder.Diagonal);
}

void TOdsStyleWriter::AppendCellProperties(const TCellFormat& AFormat, std::string& AOut) {
  const TCellAlignmentInfo& alignment = AFormat.Alignment;
  AOut += "<style:table-cell-properties";
  const uint32_t fill = Resolved(AFormat.Fill.ForegroundColor);
  const bool isFilled = AFormat.Fill.PatternType != 0;
  const TCellFillInfo plainFill =
      isFilled ? TCellFillInfo::Solid(TColorRef::FromARGB(fill | 0xFF000000u)) : TCellFillInfo::None();
  if (FHasMarks && AFormat.Fill != plainFill) AppendPair("tessarine:exact-fill", OdsFillMark(AFormat.Fill), AOut);
  if (isFilled) {
    AppendColorPair("fo:background-color", fill, AOut);
    if (AFormat.Fill.IsGradient() && FReport)
      FReport->Add("gradient fill", ffRewritten, {}, 1, "as a solid fill in its first colour");
  }
  AppendPair("style:vertical-align", VerticalWord(alignment.Vertical), AOut);
  if (alignment.Horizontal != haGeneral) AppendPair("style:text-align-source", "fix", AOut);
  if (alignment.Horizontal == haFill) AppendPair("style:repeat-content", "true", AOut);
  if (alignment.WrapText) AppendPair("fo:wrap-option", "wrap", AOut);
  if (alignment.ShrinkToFit) AppendPair("style:shrink-to-fit", "true", AOut);
  if (alignment.TextRotation == kOdsStackedRotation) {
    AppendPair("style:direction", "ttb", AOut);
  } else if (const int32_t angle = OdsRotationAngle(alignment.TextRotation)) {
    AppendPair("style:rotation-angle", std::to_string(angle), AOut);
    if (FHasMarks && angle != alignment.TextRotation)
      AppendPair("tessarine:exact-rotation", std::to_string(alignment.TextRotation), AOut);
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
  const bool isIndented = AAlignment.MarginLeftCm <= 0 && AAlignment.Indent > 0;
  const double left = isIndented ? AAlignment.Indent * kOdsIndentCm : AAlignment.MarginLeftCm;
  const size_t before = AOut.size();
  AOut += "<style:paragraph-properties";
  const size_t empty = AOut.size();
  if (const char* word = HorizontalWord(AAlignment.Horizontal)) AppendPair("fo:text-align", word, AOut);
  if (left > 0) AppendPair("fo:margin-left", OdsLengthText(left), AOut);
  if (isIndented && FHasMarks) AppendPair("tessarine:exact-indent", std::to_string(AAlignment.Indent), AOut);
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
  if (!dataStyle.empty()) {
    AppendPair("style:data-style-name", dataStyle, FXml);
  } else if (FHasMarks && AFormat.NumberFormat != GeneralFormatCode()) {
    FXml += " tessarine:exact-code=\"";
    AppendXmlAttribute(AFormat.NumberFormat.View(), FXml);
    FXml += '"';
  }
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
