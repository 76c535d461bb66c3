#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> QueryFunctions() { return {}; }

}  // namespace tessarine
