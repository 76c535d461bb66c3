#pragma once

#include <string>
#include <string_view>

namespace tessarine {
struct TFormatSettings;
}

namespace tessarine::detail {

/// The text of AValue under AFormat, taking every step anew each time. Slow, and the definition of the text that the
/// compiled codes have to give. A fraction tries every denominator up to
/// 1000 and searches beyond.
std::u16string FormatNumberPlain(double AValue, std::u16string_view AFormat, const TFormatSettings& ASettings);

/// AValue under one section of a code, sign and all.
std::u16string FormatSectionPlain(double AValue, std::u16string_view ASection, const TFormatSettings& ASettings);

}  // namespace tessarine::detail
