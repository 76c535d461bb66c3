#pragma once

#include <string_view>

#include <tessarine/platform/ReadLimits.h>

namespace tessarine {
struct TSheetDrawing;
}

namespace tessarine::detail {

/// Sets the pen of a drawing from the first brush of a document in Ink Markup Language (W3C, 20 September 2011, §5):
/// the size of its tip, and how much it covers. The strokes themselves stay in the bytes. Throws as TXmlReader does,
/// with ADrawing unchanged.
void ParseInkMl(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits,
                TSheetDrawing& ADrawing);

}  // namespace tessarine::detail
