#pragma once

#include <cstdint>

namespace tessarine {

/// What part of a workbook is printed or exported.
enum class TPrintWhat : uint8_t { pwSelection, pwActiveSheets, pwEntireWorkbook };
using enum TPrintWhat;

}  // namespace tessarine
