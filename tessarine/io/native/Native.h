#pragma once

#include <string>

#include <tessarine/Export.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {

class IReadStream;
class IWriteStream;
class TFileReport;
class TWorkbook;

struct TTsrReadOptions {
  /// MaxTotalBytes bounds the document, MaxEntries its sheets.
  TReadLimits Limits;
  TWorkControl Control;           ///< polled every few thousand cells; progress is reported in phase ppLoading
  TFileReport* Report = nullptr;  ///< outlives the call
};

struct TTsrWriteOptions {
  TWorkControl Control;           ///< polled every few thousand cells; progress is reported in phase ppSaving
  TFileReport* Report = nullptr;  ///< outlives the call
};

/// Loads and saves native documents (.tsr): one JSON text in UTF-8 that holds a workbook with all of its sheets, field
/// by field. Not kept are sparklines and spilled values (the next recalculation brings them back), the records, field
/// formats and slicer filters of pivot caches, calculated fields, groups, filters, sorting and the covered cells of
/// pivot tables, members and measures of cube connections, a chart's link to a pivot table and its data table, and
/// texts of web functions.
class TESSARINE_API TTsrIO {
 public:
  /// Replaces everything that the workbook holds but its providers; what the document lacks gets its default. A text
  /// that is no JSON, or whose outermost value is no object, does nothing at all: the workbook stays as it was.
  ///
  /// Throws EFileAccess when the file cannot be opened or read and ELimit when it is too large, before anything is
  /// replaced; EFileFormat, with path, line and column, for a value of another type than its name demands (a text for
  /// a zoom); ECancelled after a stop request. The workbook then holds what stood before that place, in this order:
  /// theme, styles, names, pivot caches, connections, and the sheets one after another.
  static void LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName, const TTsrReadOptions& AOptions = {});

  /// The same from a stream, which is read to its end. UTF-8, or UTF-16 with a byte-order mark.
  static void LoadFromStream(TWorkbook& AWorkbook, IReadStream& AStream, const TTsrReadOptions& AOptions = {});

  /// Saves through a temporary file (SaveToFileViaTemp) and clears the modified flag. Throws EFileAccess and
  /// ECancelled.
  static void SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, const TTsrWriteOptions& AOptions = {});

  /// Writes the document and leaves the modified flag as it is.
  static void SaveToStream(const TWorkbook& AWorkbook, IWriteStream& AStream, const TTsrWriteOptions& AOptions = {});
};

}  // namespace tessarine
