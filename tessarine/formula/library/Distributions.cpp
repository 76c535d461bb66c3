#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> DistributionFunctions() { return {}; }

}  // namespace tessarine
