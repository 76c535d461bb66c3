#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tessarine {

/// Appends the name of an archive entry to ANames as UTF-8, with "/" for every "\". A name that is well-formed UTF-8 is
/// that, whether its entry says so or not (many writers omit the flag); any other is in code page 437.
void AppendZipName(std::span<const std::byte> AName, std::string& ANames);

/// Ordinal comparison by byte after folding ASCII letters: negative, 0 or positive.
int CompareZipNames(std::string_view ALeft, std::string_view ARight);

}  // namespace tessarine
