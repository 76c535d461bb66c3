#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> RegressionFunctions() { return {}; }

}  // namespace tessarine
