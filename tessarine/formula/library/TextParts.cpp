#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> TextPartFunctions() { return {}; }

}  // namespace tessarine
