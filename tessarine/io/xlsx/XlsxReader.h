#pragma once

#include <string>

#include <tessarine/Export.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {

class IReadStream;
class TFileReport;
class TWorkbook;

struct TXlsxReadOptions {
  TReadLimits Limits;
  TWorkControl Control;           ///< polled every few thousand cells; progress is reported in phase ppLoading
  TFileReport* Report = nullptr;  ///< told what the workbook cannot hold; may be null
};

/// Loads Office Open XML workbooks (.xlsx, ECMA-376). Formulas come with the results that the file has cached; nothing
/// is calculated.
///
/// Loading replaces everything that the workbook holds but its providers. What a file lacks leaves the workbook's
/// default, what is unknown is skipped. A package without a workbook part loads as a new workbook.
///
/// On failure the workbook stays usable with what was read before: a part counts whole or not at all, so a sheet whose
/// part is damaged is there and empty, and those behind it are missing. Messages name the part and, where there is one,
/// the cell.
class TESSARINE_API TXlsxReader {
 public:
  /// Throws EFileAccess when the file cannot be opened (the workbook is then untouched), EFileFormat for what is no
  /// sound package, ELimit for more than the limits allow, ECancelled after a stop request.
  static void LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName, const TXlsxReadOptions& AOptions = {});

  /// The same from a stream, which is read to its end.
  static void LoadFromStream(TWorkbook& AWorkbook, IReadStream& AStream, const TXlsxReadOptions& AOptions = {});
};

}  // namespace tessarine
