#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/io/ods/detail/OdsStyleReader.h>

namespace tessarine {
class TTessarineStyleSheet;
}

namespace tessarine::detail {

/// A cell style that cells use, as they use it.
struct TOdsCellStyle {
  TCellFormat Format;
  bool IsDefault = true;         // the format of a cell without a style
  bool HasNumberFormat = false;  // other than "General"
  bool ShowsOnBlanks = false;    // a fill or a border
  int32_t Index = -1;            // in the workbook's style sheet; -1 until it is needed
  int32_t PercentIndex = -1;     // with the number format that such values have by default
  int32_t DateIndex = -1;
  int32_t TimeIndex = -1;
};

/// Brings the styles of a document into a workbook's style sheet: equal formats once each, and none for a style that no
/// cell uses.
class TOdsFormatTable {
 public:
  /// Both outlive the table.
  TOdsFormatTable(TOdsStyleReader& AStyles, TTessarineStyleSheet& ASheet) : FStyles(AStyles), FSheet(ASheet) {}

  /// The style of that name; the default format for an empty one. Valid as long as the table.
  TOdsCellStyle& Find(std::string_view AName);

  int32_t IndexOf(TOdsCellStyle& AStyle) {
    if (AStyle.Index < 0) AStyle.Index = Intern(AStyle.Format);
    return AStyle.Index;
  }
  /// The index with a number format for values of a kind, unless the style has one of its own.
  int32_t PercentIndexOf(TOdsCellStyle& AStyle) { return IndexWith(AStyle, AStyle.PercentIndex, u"0%"); }
  int32_t DateIndexOf(TOdsCellStyle& AStyle) { return IndexWith(AStyle, AStyle.DateIndex, u"m/d/yyyy"); }
  int32_t TimeIndexOf(TOdsCellStyle& AStyle) { return IndexWith(AStyle, AStyle.TimeIndex, u"h:mm:ss"); }

 private:
  struct THash {
    size_t operator()(const TCellFormat& AFormat) const { return HashOf(AFormat); }
  };

  int32_t Intern(const TCellFormat& AFormat);
  int32_t IndexWith(TOdsCellStyle& AStyle, int32_t& AIndex, const char16_t* ACode);

  TOdsStyleReader& FStyles;
  TTessarineStyleSheet& FSheet;
  TOdsCellStyle FNoStyle;
  std::deque<TOdsCellStyle> FItems;
  TOdsByName<TOdsCellStyle*> FByName;
  boost::unordered_flat_map<TCellFormat, int32_t, THash> FIndexes;
};

}  // namespace tessarine::detail
