#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/io/ods/detail/OdsNumberStyleWriter.h>

namespace tessarine {
class TFileReport;
struct TOdsWriteOptions;
class TTessarineStyleSheet;
class TTessarineTheme;
class TWorkbook;
}  // namespace tessarine

namespace tessarine::detail {

/// Fill and outline of a drawing.
struct TOdsDrawnStyle {
  bool HasFill = false;
  uint32_t FillColor = 0;  // 0xRRGGBB
  bool HasStroke = false;
  uint32_t StrokeColor = 0;
  double StrokeWidthCm = 0;

  friend bool operator==(const TOdsDrawnStyle&, const TOdsDrawnStyle&) = default;
};

// Sizes of lines that a file says nothing of.
inline constexpr double kOdsPlainColWidth = 8.43;
inline constexpr double kOdsPlainRowHeight = 15;

/// What the style of a sheet says.
struct TOdsTableLook {
  bool IsShown = true;
  bool IsRightToLeft = false;
  double DefaultColWidth = kOdsPlainColWidth;
  double DefaultRowHeight = kOdsPlainRowHeight;
};

/// Appends "#rrggbb", the alpha left out.
void AppendOdsColor(uint32_t ARGB, std::string& AOut);

/// The automatic styles of a file that is written, each once, named as they come up.
class TOdsStyleWriter {
 public:
  /// The workbook outlives the writer.
  TOdsStyleWriter(const TWorkbook& AWorkbook, const TOdsWriteOptions& AOptions);

  /// The number of the cell style "ceN" for a cell; 0 for the default look, which needs none.
  int32_t CellStyleOf(int32_t AStyleIndex);
  int32_t CellStyleOf(const TCellFormat& AFormat);
  /// The attribute with its leading blank, empty for 0.
  const std::string& CellStyleAttribute(int32_t ANumber) const { return FCellAttributes[static_cast<size_t>(ANumber)]; }

  /// The number of the text style "TN" for a stretch of text; never 0.
  int32_t TextStyleOf(const TCellFontInfo& AFont);

  /// The name of the graphic style.
  std::string RegisterGraphicStyle(const TOdsDrawnStyle& AStyle);

  /// AIsDefault: the size is the sheet's for lines without their own.
  void AddColumnStyle(std::string_view AName, double AWidthChars, bool AIsDefault);
  void AddRowStyle(std::string_view AName, double AHeightPt, bool AIsDefault);
  void AddTableStyle(std::string_view AName, const TOdsTableLook& ALook);

  /// "office:font-face-decls" and "office:automatic-styles".
  std::string BuildAutomaticStylesXml() const;
  /// The properties of the style that all cells inherit.
  std::string DefaultStyleXml();

 private:
  void AppendTextProperties(const TCellFontInfo& AFont, std::string& AOut, bool AIsStretch = false);
  void AppendBorders(const TCellBorderInfo& ABorder, std::string& AOut);
  void AppendCellProperties(const TCellFormat& AFormat, std::string& AOut);
  void AppendParagraphProperties(const TCellAlignmentInfo& AAlignment, std::string& AOut);
  void AppendSizeMark(const char* AName, double ASize, double AReadBack, bool AIsDefault);
  void AppendCellStyle(const TCellFormat& AFormat, const std::string& AName);
  uint32_t Resolved(const TColorRef& AColor) const;

  struct TFormatHash {
    size_t operator()(const TCellFormat& AFormat) const { return HashOf(AFormat); }
  };

  const TTessarineStyleSheet& FSheet;
  const TTessarineTheme& FTheme;
  TFileReport* FReport;
  bool FHasMarks;
  TOdsNumberStyleWriter FNumberStyles;
  std::vector<int32_t> FByIndex;  // numbers by the workbook's style index, -1 when not met yet
  boost::unordered_flat_map<TCellFormat, int32_t, TFormatHash> FCellStyles;
  std::vector<std::string> FCellAttributes = {""};                           // by number
  boost::unordered_flat_map<TCellFormat, int32_t, TFormatHash> FTextStyles;  // nothing but the font counts
  std::vector<TOdsDrawnStyle> FGraphicStyles;
  std::set<TText> FFonts;
  std::string FXml;
};

}  // namespace tessarine::detail
