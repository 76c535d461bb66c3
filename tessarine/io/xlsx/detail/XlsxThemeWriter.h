#pragma once

#include <string>

namespace tessarine {
class TTessarineTheme;
}

namespace tessarine::detail {

/// Builds a theme part (ECMA-376-1 §20.1.6.9) with the colours and fonts of ATheme and the usual format scheme.
std::string XlsxThemePart(const TTessarineTheme& ATheme);

/// Builds the document properties: the core part (ECMA-376-2 §8) with a serial number in universal time as both times,
/// and the part of the application.
std::string XlsxCorePropertiesPart(double ATime);
std::string XlsxAppPropertiesPart();

}  // namespace tessarine::detail
