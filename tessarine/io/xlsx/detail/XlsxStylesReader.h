#pragma once

#include <string_view>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/platform/ReadLimits.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine {
class TTessarineStyleSheet;
}

namespace tessarine::detail {

/// Reads a styles part (ECMA-376-1 §18.8) into a style sheet: number formats, fonts, fills, borders and the cell
/// formats made of them, each under the index that it has in the file. A table that the part has takes the place of
/// the style sheet's, one that it lacks leaves it.
class TXlsxStylesReader {
 public:
  /// The style sheet outlives the reader.
  explicit TXlsxStylesReader(TTessarineStyleSheet& AStyleSheet) : FStyleSheet(AStyleSheet) {}

  /// Throws as TXmlReader does, with the style sheet unchanged.
  void Load(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits);

 private:
  void ParseNumFmts(const TXmlNode* ANode);
  void ParseFonts(const TXmlNode* ANode);
  void ParseFills(const TXmlNode* ANode);
  void ParseBorders(const TXmlNode* ANode);
  void ParseCellXfs(const TXmlNode* ANode);
  TCellFormat ParseXf(const TXmlNode* ANode) const;

  TTessarineStyleSheet& FStyleSheet;
};

}  // namespace tessarine::detail
