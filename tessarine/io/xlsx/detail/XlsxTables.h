#pragma once

#include <string_view>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

class TXlsxPackage;
class TXlsxRelationships;
struct TXlsxBudget;
struct TXlsxReport;

/// Reads the tables (ECMA-376-1 §18.5.1.2) that a sheet part has relationships to, in their order, and then all column
/// names from the header rows. The filter of a table with a header becomes the sheet's. Throws as TXmlReader does, with
/// the tables before the damaged one in place.
void ReadXlsxTables(const TXlsxPackage& APackage, std::string_view ASheetPart, const TXlsxRelationships& ARelationships,
                    TXlsxBudget& ABudget, TWorksheet& ASheet, const TXlsxReport& AReport);

}  // namespace tessarine::detail
