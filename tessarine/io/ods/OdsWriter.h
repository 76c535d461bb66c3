#pragma once

#include <optional>
#include <string>

#include <tessarine/Export.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {

class IWriteStream;
class TFileReport;
class TWorkbook;

struct TOdsWriteOptions {
  int Level = 1;  ///< of deflate, 1 (fast) to 12 (small)
  /// The time that the entries of the package carry, as a serial number; without it 1980-01-01, so that equal workbooks
  /// give equal bytes.
  std::optional<double> Time = {};
  /// Booleans in the attribute "office:value", the chart class "chart:column", the prefixes of newer functions
  /// ("_xlfn.") and the separators of array constants as some readers expect them, in place of the forms that the
  /// standard has; and none of the attributes and parts of our own namespace, by which all that the standard rounds or
  /// cannot say (theme colours, sizes, codes of number formats) is exact when it is read again.
  bool Literal = false;
  TWorkControl Control;           ///< polled every few thousand cells; progress is reported in phase ppSaving
  TFileReport* Report = nullptr;  ///< told of all that is written in another form or not at all; may be null
};

/// Saves workbooks as OpenDocument spreadsheets (.ods, OpenDocument 1.2). Formulas keep their cached results; nothing
/// is calculated.
///
/// Written are values, formulas, formats, sizes and visibility of lines, merges, links, validations, defined names,
/// tables, filters, pictures, shapes, and of each chart its first series. Comments, conditional formats, pivot tables,
/// slicers, outlines, views and page settings are not; see the report.
class TESSARINE_API TOdsWriter {
 public:
  /// Writes to a temporary file beside AFileName and renames it (SaveToFileViaTemp). Throws EFileAccess, ECancelled
  /// after a stop request, and ELimit for more content than a package may hold; AFileName is then as it was.
  static void SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, const TOdsWriteOptions& AOptions = {});

  /// Writes the package to a stream. The workbook counts as not modified afterwards.
  static void SaveToStream(TWorkbook& AWorkbook, IWriteStream& AStream, const TOdsWriteOptions& AOptions = {});
};

}  // namespace tessarine
