#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {
class TJsonWriter;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::cli {

/// "empty", "number", "text", "boolean" or "error".
const char* TypeName(const TValueView& AValue);

/// A value as JSON has it: null for an empty one, its text for an error.
void PutJsonValue(TJsonWriter& AJson, const TValueView& AValue);

/// Visits the cells of a range that are stored or that a spilled value covers, row by row.
void ForEachShownCell(const TWorksheet& ASheet, const TCellRange& ARange,
                      const std::function<void(TCellAddress AAddress)>& AVisit);

}  // namespace tessarine::cli
