#pragma once

#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>

namespace tessarine {

/// Whether a UTF-16 unit lies in the Hebrew and Arabic ranges (U+0590..U+08FF, U+FB1D..U+FDFF, U+FE70..U+FEFF).
constexpr bool IsStrongRtlChar(char16_t AChar) {
  return (AChar >= 0x0590 && AChar <= 0x08FF) || (AChar >= 0xFB1D && AChar <= 0xFDFF) ||
         (AChar >= 0xFE70 && AChar <= 0xFEFF);
}

TESSARINE_API bool TextHasStrongRtl(std::u16string_view AText);

/// The direction a text is read in: AOrder itself unless it is roContext; then the first deciding unit counts
/// (digits and Latin letters are left-to-right), and a text without one reads left-to-right. Never roContext.
TESSARINE_API TReadingOrder ResolveReadingOrder(std::u16string_view AText, TReadingOrder AOrder);

}  // namespace tessarine
