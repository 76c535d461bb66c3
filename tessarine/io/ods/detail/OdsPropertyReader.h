#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/io/ods/detail/OdsUnits.h>

namespace tessarine {
class TTessarineTheme;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

/// A dictionary by text that is asked with views.
struct TOdsNameHash {
  using is_transparent = void;
  size_t operator()(std::string_view AText) const { return std::hash<std::string_view>()(AText); }
};
template <class TItem>
using TOdsByName = boost::unordered_flat_map<std::string, TItem, TOdsNameHash, std::equal_to<>>;

/// The attributes of one property element of a style.
struct TOdsProperties {
  struct TItem {
    std::string Name;  // local
    std::string Value;
  };
  std::vector<TItem> Items;

  /// The value of the first of that name; empty without one.
  std::string_view Find(std::string_view AName) const;
};

/// Turns the properties of styles into parts of a cell's format. What a property element does not say stays as it is.
/// The exact attributes of our own count while the standard ones beside them say the same, only rounded.
class TOdsPropertyReader {
 public:
  /// ATheme is what colours by slot refer to, or null; it outlives the reader.
  TOdsPropertyReader(TOdsFontInstalled AFontInstalled, const TTessarineTheme* ATheme)
      : FFontInstalled(std::move(AFontInstalled)), FTheme(ATheme) {}

  /// Notes what a name of a font means in this document.
  void AddFontFace(const TXmlNode* ANode);

  void ApplyFont(const TOdsProperties& AText, TCellFontInfo& AFont) const;
  static void ApplyParagraph(const TOdsProperties& AParagraph, TCellAlignmentInfo& AAlignment);
  void ApplyCell(const TOdsProperties& ACell, TCellFormat& AFormat) const;

 private:
  struct TFontFace {
    std::string Family;
    std::string Generic;
  };

  void ApplyFontName(const TOdsProperties& AText, TCellFontInfo& AFont) const;
  void ApplyExactFont(const TOdsProperties& AText, TCellFontInfo& AFont) const;
  static void ApplyStandardCell(const TOdsProperties& ACell, TCellFormat& AFormat);
  void ApplyExactCell(const TOdsProperties& ACell, TCellFormat& AFormat) const;
  bool IsColor(const TColorRef& AColor, std::string_view AText) const;

  const TOdsFontInstalled FFontInstalled;
  const TTessarineTheme* FTheme;
  TOdsByName<TFontFace> FFontFaces;
};

/// The part of a border attribute of one side: "0.05cm dashed #ff0000" in any order.
TBorderSide OdsParseBorderSide(std::string_view AText);

}  // namespace tessarine::detail
