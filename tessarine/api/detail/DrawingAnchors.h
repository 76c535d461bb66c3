#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include <tessarine/core/lists/Drawings.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

/// A one-cell anchor at the cell of a text, A1 for an empty one; a size below 1 is 240 by 180 pixels.
TDrawingAnchor PixelAnchor(std::u16string_view AAnchorA1, int32_t AWidthPx, int32_t AHeightPx);

/// "Picture 3": the prefix and one more than the sheet's drawings of a kind.
TText NextDrawingName(const TWorksheet& ASheet, std::u16string_view APrefix, TSheetDrawingKind AKind);

}  // namespace tessarine::detail
