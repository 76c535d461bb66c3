#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/format/CellFormat.h>

namespace tessarine {
class TTessarineStyleSheet;
}

namespace tessarine::detail {

/// Builds the styles part (ECMA-376-1 §18.8) of a style sheet. The model has whole formats, the file has tables of
/// fonts, fills and borders that formats refer to. A look that differs from an earlier one only in what its key leaves
/// out (colours of borders, script of fonts, the theme slot of a fill's second colour) shares that one's entry.
class TXlsxStylesWriter {
 public:
  /// AHasSpare appends one default format behind those of the style sheet. With AIsLiteral, rotations and indents that
  /// the format does not allow are written as they are.
  TXlsxStylesWriter(const TTessarineStyleSheet& AStyleSheet, bool AHasSpare, bool AIsLiteral)
      : FStyleSheet(AStyleSheet), FHasSpare(AHasSpare), FIsLiteral(AIsLiteral) {}

  std::string Part();

 private:
  /// One table of the part: its entries, each found by its key.
  struct TTable {
    boost::unordered_flat_map<std::string, size_t> Known;
    std::string Xml;
    size_t Count = 0;

    /// The place of an entry; ABuild(Xml) appends it when it is new.
    template <class TBuild>
    size_t Place(const std::string& AKey, TBuild&& ABuild) {
      const auto [found, isNew] = Known.try_emplace(AKey, Count);
      if (isNew) {
        ABuild(Xml);
        ++Count;
      }
      return found->second;
    }
  };

  size_t NumberFormatId(const TText& ACode);
  size_t FontId(const TCellFontInfo& AFont);
  size_t FillId(const TCellFillInfo& AFill);
  size_t BorderId(const TCellBorderInfo& ABorder);
  void AppendXf(const TCellFormat& AFormat);
  void AppendAlignment(const TCellAlignmentInfo& AAlignment);

  const TTessarineStyleSheet& FStyleSheet;
  bool FHasSpare;
  bool FIsLiteral;
  TTable FFonts;
  TTable FFills;
  TTable FBorders;
  boost::unordered_flat_map<std::u16string, size_t> FNumberFormats;  // ids by code
  std::string FNumberFormatXml;
  size_t FCustomFormats = 0;
  std::string FXfs;
};

}  // namespace tessarine::detail
