#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tessarine {
class TFileReport;
class TWorkbook;
}  // namespace tessarine

namespace tessarine::detail {

class TXlsxPackage;

/// The part in which pivots come back whole enough to be computed again.
inline constexpr std::string_view kXlsxPivotsPart = "xl/tessarine/pivots.json";

/// Fields of one pivot table. A sheet has no room for the output of more, and every one takes memory at a refresh.
inline constexpr size_t kMaxXlsxPivotFields = 16'384;

/// Reads the package's standard pivot caches and tables into the workbook, whose sheets and styles stand already.
/// Tables and caches that are there keep their places. AReport may be null.
void ReadExcelPivotParts(const TXlsxPackage& APackage, TWorkbook& AWorkbook, TFileReport* AReport);

/// Reads the own part, which replaces all caches and the tables of the sheets that it names. Nothing happens without
/// the part, or when its root is no object.
void ReadTessarinePivotsPart(const TXlsxPackage& APackage, TWorkbook& AWorkbook);

/// The content of the own part; nothing for a workbook without caches and pivot tables.
std::optional<std::string> TessarinePivotsPart(const TWorkbook& AWorkbook);

}  // namespace tessarine::detail
