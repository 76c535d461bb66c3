#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> DatabaseFunctions() { return {}; }

}  // namespace tessarine
