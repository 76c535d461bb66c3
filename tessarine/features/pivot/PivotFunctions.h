#pragma once

#include <tessarine/Export.h>

namespace tessarine {

/// Lets GETPIVOTDATA and the cube functions of all workbooks reach pivot tables and connections. A source that a host
/// has set stays. Programs that load the shared library, and those that link the pivot engine from the static one, have
/// it done at their start; what calls neither calls this once before it evaluates.
TESSARINE_API void RegisterPivotFunctions();

}  // namespace tessarine
