#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

std::span<const TFunctionDef> CalendarFunctions() { return {}; }

}  // namespace tessarine
