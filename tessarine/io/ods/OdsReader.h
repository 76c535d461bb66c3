#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {

class IReadStream;
class TFileReport;
class TWorkbook;

struct TOdsReadOptions {
  TReadLimits Limits;
  TWorkControl Control;           ///< polled every few thousand cells; progress is reported in phase ppLoading
  TFileReport* Report = nullptr;  ///< told of all that is in the file and not in the workbook; may be null

  /// Whether the host has a font of that name. With it, fonts that are missing are replaced by the first of their
  /// family list, or of some usual fonts of their generic family, that is there; without it names stay as they are.
  std::function<bool(std::u16string_view AName)> FontInstalled;
};

/// Loads OpenDocument spreadsheets (.ods, OpenDocument 1.0 to 1.3). Formulas come with the results that the file has;
/// nothing is calculated.
///
/// Loading replaces everything that the workbook holds but its providers. What a file lacks leaves the workbook's
/// default, what is unknown is skipped. Cells and rows that are repeated more than 256 times are stored 256 times, the
/// rest counts as empty. Comments, conditional formats and pivot tables are not read.
///
/// On failure the workbook stays usable: it is a new one when the styles or the content are damaged, and has all its
/// cells when a picture or chart is. Messages name the part.
class TESSARINE_API TOdsReader {
 public:
  /// Throws EFileAccess when the file cannot be opened (the workbook is then untouched), EFileFormat for what is no
  /// sound package, ELimit for more than the limits allow, ECancelled after a stop request.
  static void LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName, const TOdsReadOptions& AOptions = {});

  /// The same from a stream, which is read to its end.
  static void LoadFromStream(TWorkbook& AWorkbook, IReadStream& AStream, const TOdsReadOptions& AOptions = {});
};

}  // namespace tessarine
