#pragma once

#include <cstdint>
#include <string_view>

#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>

namespace tessarine::detail {

// The words of drawing parts, for reading and writing.

/// Horizontal alignment of a shape's text: TSheetDrawing::TextHAlign.
inline constexpr TXlsxWord<int32_t> kXlsxTextAligns[] = {{"l", 0}, {"r", 1}, {"ctr", 2}};

/// Vertical alignment of a shape's text: TSheetDrawing::TextVAlign.
inline constexpr TXlsxWord<int32_t> kXlsxTextAnchors[] = {{"t", 0}, {"ctr", 1}, {"b", 2}};

/// A kind of part that a chart part may refer to and that is kept with it.
struct TXlsxChartLink {
  std::string_view Type;       // the last word of the relationship's type
  std::string_view Stem;       // of the names that such parts get, below the package's folder
  std::string_view Extension;  // empty: that of the part
};

inline constexpr TXlsxChartLink kXlsxChartLinks[] = {
    {"image", "media/image", ""},
    {"chartUserShapes", "drawings/shapes", ".xml"},
    {"themeOverride", "theme/themeOverride", ".xml"},
    {"package", "embeddings/data", ".xlsx"},
};

/// The kind of a relationship; null for others.
inline const TXlsxChartLink* XlsxChartLinkOf(std::string_view ARelationshipType) {
  const std::string_view word = ARelationshipType.substr(ARelationshipType.rfind('/') + 1);
  for (const TXlsxChartLink& link : kXlsxChartLinks)
    if (EqualXmlNames(link.Type, word)) return &link;
  return nullptr;
}

}  // namespace tessarine::detail
