#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> EngineeringFunctions() { return {}; }

}  // namespace tessarine
