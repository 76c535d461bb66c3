#pragma once

#include <string_view>

namespace tessarine {
class TFileReport;
class TTessarineTheme;
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

class TXlsxPackage;
class TXlsxRelationships;

/// Reads the drawing part that a sheet's relationships name, with its pictures, charts, shapes and ink, into the
/// sheet's drawings, and keeps the parts' bytes in its bag. A sheet without a drawing stays as it is. What is missing
/// leaves defaults; damaged XML throws as TXmlReader does. AReport may be null.
void LoadSheetDrawings(const TXlsxPackage& APackage, std::string_view ASheetPart,
                       const TXlsxRelationships& ARelationships, TWorksheet& ASheet, const TTessarineTheme& ATheme,
                       TFileReport* AReport);

/// Builds the bags of all sheets that have drawings anew from the model, for writing. The bags of the others stay.
/// Part names are unique in the workbook, kept bags included. AReport may be null.
void EnsureWorkbookDrawingBagsFromOverlays(TWorkbook& AWorkbook, TFileReport* AReport);

}  // namespace tessarine::detail
