#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> PivotFunctions() { return {}; }

}  // namespace tessarine
