#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> LiveDataFunctions() { return {}; }

}  // namespace tessarine
