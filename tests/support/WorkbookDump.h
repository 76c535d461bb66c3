#pragma once

#include <string>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/sheet/Workbook.h>

namespace tessarine::test {

/// A format in one line, without what the tables of XLSX files leave out: colours of borders, the script position, the
/// theme of a fill's second colour, protection and margins.
std::string DumpFormat(const TCellFormat& AFormat);

/// What an XLSX file keeps of a workbook, one line for each thing: names, and for each sheet its view, sizes, cells
/// with their formats and runs, merges, rules, filter, links, tables and page settings. Line by line the dump of a
/// workbook that was just saved is that of the one which is read back.
std::string DumpWorkbook(const TWorkbook& ABook);

/// The first lines in which two dumps differ; empty for equal ones.
std::string DumpDifference(const std::string& ALeft, const std::string& ARight);

}  // namespace tessarine::test
