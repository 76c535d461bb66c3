#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> MatrixFunctions() { return {}; }

}  // namespace tessarine
