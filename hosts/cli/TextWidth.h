#pragma once

#include <string>
#include <string_view>

namespace tessarine::cli {

/// The columns that a text takes on a terminal: East Asian wide characters and emoji two, combining marks none.
int DisplayWidth(std::u16string_view AText);

/// AText cut to AWidth columns, the last of them an ellipsis when something was cut. Never divides a pair of
/// surrogates.
std::u16string CutToWidth(std::u16string_view AText, int AWidth);

/// AText as it may stand on a terminal: line ends and tabs become blanks, and what would steer the terminal or turn its
/// writing direction becomes U+FFFD.
std::u16string WithoutControls(std::u16string_view AText);

}  // namespace tessarine::cli
