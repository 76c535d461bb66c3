#pragma once

#include <optional>
#include <string>

#include <tessarine/Export.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {

class IWriteStream;
class TFileReport;
class TWorkbook;

struct TXlsxWriteOptions {
  int DeflateLevel = 1;  ///< 1 (fast) to 12 (small)
  /// The time that the document properties and all entries of the archive carry, as a serial number in universal time.
  /// With it the same workbook gives the same bytes; without it the file carries the time of the save.
  std::optional<double> Time = {};
  /// Some of what a workbook can hold has no legal form in the file as it stands. By default it is written in a form
  /// that means the same and that other programs open without repair: a filter for a piece of text as one with
  /// wildcards, one that keeps blanks with a mark for them, literal lists of validations between quotes, illegal style
  /// indexes, rotations and indents brought into range, names of tables and of their columns made legal and unique,
  /// merged areas of one cell or that overlap others left out, the names which LET and LAMBDA bind with their prefix,
  /// the prefixes of newer functions in small letters, and formulas without a text as their results. Set, all of this
  /// is written as it is.
  bool Literal = false;
  TWorkControl Control = {};      ///< polled every few thousand cells; progress is reported in phase ppSaving
  TFileReport* Report = nullptr;  ///< is told what the file does not hold, or holds in another form; may be null
};

/// Writes workbooks as Office Open XML (.xlsx, ECMA-376). Nothing is calculated: formulas go out with the results that
/// they have.
///
/// Saving changes the workbook in a few lasting ways: format overrides of cells become cell formats of the style sheet
/// (equal ones share an index), print areas and titles stand among the defined names, and sheets with drawings have
/// their drawing parts rebuilt. A complete save clears the modified flag.
///
/// Comments, conditional formats, sparklines, slicers, protection and the values of constant errors are not written.
class TESSARINE_API TXlsxWriter {
 public:
  /// Through SaveToFileViaTemp: the old file stays until the new one is whole. Throws EFileAccess, ECancelled after a
  /// stop request.
  static void SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, const TXlsxWriteOptions& AOptions = {});

  /// The same to a stream. Throws what the stream throws.
  static void SaveToStream(TWorkbook& AWorkbook, IWriteStream& AStream, const TXlsxWriteOptions& AOptions = {});
};

}  // namespace tessarine
