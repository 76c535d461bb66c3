#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> StatisticsFunctions() { return {}; }

}  // namespace tessarine
