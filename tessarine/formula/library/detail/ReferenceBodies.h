#pragma once

#include <tessarine/formula/library/detail/ArgReading.h>

/// Bodies of functions about references, by source file.
namespace tessarine::detail {

TCellValue CallLookup(TFormulaArgs AArgs, const TFormulaContext& AContext);  // Positions.cpp
TCellValue CallXMatch(TFormulaArgs AArgs, const TFormulaContext& AContext);

}  // namespace tessarine::detail
