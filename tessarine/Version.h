#pragma once

#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// The version of the library that runs, as "major.minor.patch". With a shared library this may be newer than the
/// headers a host was compiled with. The text lives as long as the process.
TESSARINE_API std::string_view Version();

}  // namespace tessarine
