#pragma once

#include <string>

namespace tessarine::test {

/// Writes a small XLSX workbook: a sheet "Data" with numbers, texts, a formula without a result, a spilling formula, a
/// styled negative number and a merged title, a hidden sheet "Notes" with 1 in C2 and an empty
/// cell H9, and the name TOTAL.
void WriteSampleWorkbook(const std::string& AFileName);

}  // namespace tessarine::test
