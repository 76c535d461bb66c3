#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> ReferenceFunctions() { return {}; }

}  // namespace tessarine
