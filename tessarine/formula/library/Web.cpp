#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> WebFunctions() { return {}; }

}  // namespace tessarine
