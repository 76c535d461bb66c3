#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tessarine {

/// A name or text from a file made fit for an error message: well-formed UTF-8 without control characters (each bad
/// byte becomes "?"), cut with "..." when it is longer than AMaxBytes.
std::string ForMessage(std::string_view AText, size_t AMaxBytes = 120);

}  // namespace tessarine
