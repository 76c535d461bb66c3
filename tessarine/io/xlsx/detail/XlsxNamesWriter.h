#pragma once

#include <string>

namespace tessarine {
class TWorkbook;
}

namespace tessarine::detail {

/// Puts the print areas and titles of all sheets among the defined names of the workbook, in place of those that stand
/// there.
void FoldXlsxPrintNames(TWorkbook& AWorkbook);

/// Appends the element with the defined names (ECMA-376-1 §18.2.6); nothing when there are none. AIsLiteral leaves the
/// names that LET and LAMBDA bind without their prefix.
void AppendXlsxNames(const TWorkbook& AWorkbook, bool AIsLiteral, std::string& AOut);

}  // namespace tessarine::detail
