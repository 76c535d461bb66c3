#pragma once

#include <string_view>

#include <tessarine/platform/ReadLimits.h>

namespace tessarine {
class TTessarineTheme;
struct TSheetDrawing;
}  // namespace tessarine

namespace tessarine::detail {

class TXlsxDrawingRoom;

/// What reading a chart needs besides its bytes. All outlives the reading; the theme may be null.
struct TXlsxChartContext {
  const TTessarineTheme* Theme = nullptr;
  TXlsxDrawingRoom& Room;
  TReadLimits Limits = {};
};

/// Fills the chart fields of ADrawing from a chart part (ECMA-376-1 §21.2.2.29). What the part does not state stays.
/// The series of all groups are in Series; of a chart with several groups they are in its Subplots as well. Of a part
/// that is too large for a tree the cached points are left out; the room counts them and all others that are. Throws as
/// TXmlReader does, with ADrawing unchanged.
void ParseChartSpace(std::string_view ABytes, std::string_view APartName, const TXlsxChartContext& AContext,
                     TSheetDrawing& ADrawing);

/// Fills what the chart itself did not state from its style and its colours: the marker, the fonts of title, legend and
/// axes, and the palette. Either may have no bytes. Throws as TXmlReader does.
void ParseChartStyleParts(std::string_view AStyleBytes, std::string_view AStylePartName, std::string_view AColorsBytes,
                          std::string_view AColorsPartName, const TXlsxChartContext& AContext, TSheetDrawing& ADrawing);

}  // namespace tessarine::detail
