#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> LambdaFunctions() { return {}; }

}  // namespace tessarine
