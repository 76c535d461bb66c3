#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

/// Appends the bytes as base64 (RFC 4648, section 4) in one line, with padding.
TESSARINE_API void AppendBase64(std::span<const std::byte> ABytes, std::string& AOut);

/// The bytes of a base64 text. Blanks and line ends are skipped wherever they stand, and padding may be missing; a text
/// that holds anything else, or a single character behind the last full group, gives no bytes at all.
TESSARINE_API std::vector<std::byte> DecodeBase64(std::string_view AText);

}  // namespace tessarine
