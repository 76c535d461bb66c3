#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/lists/PrintWhat.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/DelimitedText.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;
class IReadStream;
class IWriteStream;

struct TCsvExportOptions {
  char16_t Delimiter = u',';
  bool Utf8Bom = true;                  ///< begin with the byte-order mark that some programs need
  TPrintWhat What = pwActiveSheets;     ///< which content ExportWithOptions writes
  TCellRange Selection = {1, 1, 1, 1};  ///< for pwSelection
  /// Puts an apostrophe before text that a spreadsheet would take for a formula when it opens the file: one that begins
  /// with = + - @, a tab or a carriage return. Numbers stay as they are. Off, because it changes what is written; turn
  /// it on where the cells come from people who are not trusted.
  bool DefuseFormulas = false;
  TWorkControl Control = {};  ///< a stopped export throws ECancelled
};

/// How ImportWithOptions reads a text file. The initial values suit what people call a CSV file.
struct TCsvImportOptions {
  /// An ASCII character other than a quote or a line end; 0: what a first line "sep=;" says, else the one of comma,
  /// semicolon, tab and bar that divides the first lines most evenly.
  char16_t Delimiter = 0;
  char16_t DecimalSeparator = 0;  ///< 0: that of the host's settings
  int32_t FirstRow = 1;           ///< rows of the file before this one are skipped, 1-based
  bool TrimBlanks = false;        ///< blanks and tabs around fields and around their quotes go
  bool SkipEmptyLines = false;
  bool QuotedIsText = false;    ///< what stands in quotes is a text, also where it reads as a number
  bool AllText = false;         ///< nothing becomes a number: leading zeros and long digit strings stay
  std::string SourceName = {};  ///< begins the messages of errors, UTF-8
  TReadLimits Limits = {};      ///< MaxPartBytes bounds the file, MaxTotalBytes the memory that its cells take
  TWorkControl Control = {};
};

/// Text files of delimited values: one sheet each, in UTF-8. Files carry what cells show and neither formats nor
/// formulas.
class TESSARINE_API TCsvIO {
 public:
  /// AValue as it stands in a file: in quotes when it holds the delimiter, a double quote or a line end; double quotes
  /// are doubled.
  static std::u16string EscapeCsvField(std::u16string_view AValue, char16_t ADelimiter);

  /// AText as a part of a file name: letters, digits, blanks, "-" and "_" stay, every other unit becomes "_", and the
  /// ends are trimmed; "Sheet" when nothing is left.
  static std::u16string SanitizeFileNamePart(std::u16string_view AText);

  /// Replaces the cells of a sheet (0-based; for an index that does not exist a sheet "Sheet1" is added at the end) by
  /// the lines of AStream, each divided as by ParseCsvLine. Fields that read as numbers under the host's settings are
  /// numbers; all others are texts, empty ones too. UTF-8, or UTF-16 with a byte-order mark. The workbook then counts
  /// as modified, and the used bounds are those of the file. What cannot be stored throws ELimit; the sheet then holds
  /// all lines before.
  static void ImportSheet(TWorkbook& AWorkbook, IReadStream& AStream, int32_t ASheetIndex);

  /// The same for files as they are met: a doubled quote inside quotes is one quote, line ends inside quotes belong to
  /// the field, and empty fields leave their cells empty. UTF-16 is recognised without a mark as well. Throws EArgument
  /// for a delimiter that is not possible, ELimit and ECancelled; the sheet then holds what was read before.
  static void ImportWithOptions(TWorkbook& AWorkbook, IReadStream& AStream, int32_t ASheetIndex,
                                const TCsvImportOptions& AOptions);

  /// ExportRange over the used area, with the default options. Nothing for a sheet that does not exist.
  static void ExportSheet(TWorkbook& AWorkbook, IWriteStream& AStream, int32_t ASheetIndex);

  /// Writes the display texts of a range, a line a row. Nothing for no sheet or for a range with a corner outside the
  /// sheet.
  static void ExportRange(const TWorkbook& AWorkbook, const TWorksheet* ASheet, IWriteStream& AStream,
                          const TCellRange& ARange, const TCsvExportOptions& AOptions);

  /// Writes AFileName with its extension replaced by ".csv"; with pwEntireWorkbook one file for every visible sheet,
  /// those beside the active one with "_" and the sheet's name added (and a number where two names come out equal).
  /// Every file is replaced as a whole when it is complete. Throws EArgument when the active sheet (0-based) does not
  /// exist, EFileAccess.
  static void ExportWithOptions(TWorkbook& AWorkbook, const std::string& AFileName, const TCsvExportOptions& AOptions,
                                int32_t AActiveSheet);

  /// ImportSheet into the first sheet, from a file that other programs may have open.
  static void LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName);

  /// ExportWithOptions with the default options; the workbook then counts as saved.
  static void SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, int32_t AActiveSheet);
};

}  // namespace tessarine
