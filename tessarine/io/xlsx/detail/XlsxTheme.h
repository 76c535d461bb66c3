#pragma once

#include <string_view>

#include <tessarine/platform/ReadLimits.h>

namespace tessarine {
class TTessarineTheme;
}

namespace tessarine::detail {

/// The elements of a colour scheme, in their order.
inline constexpr std::string_view kXlsxThemeSlots[] = {
    "dk1", "lt1", "dk2", "lt2", "accent1", "accent2", "accent3", "accent4", "accent5", "accent6", "hlink", "folHlink",
};

/// Reads a theme part (ECMA-376-1 §20.1.6.9) into ATheme. The colours are replaced when the part states at least four
/// of them, the fonts where it names one. Throws as TXmlReader does, with ATheme unchanged.
void ReadXlsxTheme(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits,
                   TTessarineTheme& ATheme);

}  // namespace tessarine::detail
