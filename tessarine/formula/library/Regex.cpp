#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> RegexFunctions() { return {}; }

}  // namespace tessarine
