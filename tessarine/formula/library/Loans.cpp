#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> LoanFunctions() { return {}; }

}  // namespace tessarine
