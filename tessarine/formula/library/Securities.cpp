#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> SecurityFunctions() { return {}; }

}  // namespace tessarine
