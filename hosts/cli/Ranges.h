#pragma once

#include <cstdint>
#include <string>

#include <tessarine/core/values/Address.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::cli {

/// A range such as "B2:D10", "C3", "B:D" (whole columns) or "2:5" (whole rows); throws ECli for what is none.
TCellRange ParseRange(const std::string& AText);

/// A cell such as "B2"; throws ECli for what is none.
TCellAddress ParseCell(const std::string& AText);

/// A column by its letters; throws ECli for what is none, and for one outside ARange.
int32_t ColumnIn(const TCellRange& ARange, const std::string& ALetters);

/// A range without the rows and columns behind the last used ones; at least its first cell.
TCellRange UsedPartOf(const TCellRange& ARange, const TWorksheet& ASheet);

}  // namespace tessarine::cli
