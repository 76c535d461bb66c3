#pragma once

#include <functional>
#include <span>
#include <string>

#include <tessarine/io/xlsx/detail/XlsxCellWriter.h>

namespace tessarine::detail {

struct TXlsxRowCut;

/// Appends the element with all rows of a sheet (ECMA-376-1 §18.3.1.80). A large sheet is parted at ACuts and built on
/// two threads; what is appended does not depend on that. AProgress is called on the calling thread every few thousand
/// cells with the share that is done; what it throws ends the work.
void AppendXlsxRows(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions, std::span<const TXlsxRowCut> ACuts,
                    const std::function<void(double AFraction)>& AProgress, std::string& AOut);

/// The same from the first row to the last in one go on this thread.
void AppendXlsxRowsPlain(const TWorksheet& ASheet, const TXlsxCellOptions& AOptions, std::string& AOut);

}  // namespace tessarine::detail
