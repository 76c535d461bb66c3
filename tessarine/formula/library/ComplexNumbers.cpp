#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> ComplexFunctions() { return {}; }

}  // namespace tessarine
