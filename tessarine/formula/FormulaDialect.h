#pragma once

#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// Some web spreadsheets write functions that XLSX has no name for as a text inside a call of a placeholder function:
/// IFERROR(__xludf.DUMMYFUNCTION("QUERY(A1:B2,""select A"")"),1). The first such text, with a leading "=", if it calls
/// one of the functions known to come this way; AFormula unchanged in every other case.
TESSARINE_API std::u16string UnwrapXlUdfDummyFunction(std::u16string_view AFormula);

/// Turns the ";" that separate arguments in OpenDocument formulas into ","; those in texts and inside braces, where
/// they separate rows, stay. Quotes around sheet names are not heeded.
TESSARINE_API std::u16string OdsSeparatorsToExcel(std::u16string_view AFormula);

}  // namespace tessarine
