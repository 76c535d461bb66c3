#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> IntegerFunctions() { return {}; }

}  // namespace tessarine
