#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> TrigonometryFunctions() { return {}; }

}  // namespace tessarine
