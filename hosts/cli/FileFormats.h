#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {
class IReadStream;
class IWriteStream;
class TFileReport;
class TWorkbook;
}  // namespace tessarine

namespace tessarine::cli {

/// What reading needs; formats take what they know.
struct TReadRequest {
  TWorkbook& Workbook;
  IReadStream& Stream;
  std::string SourceName;     // for messages
  char16_t DecimalSeparator;  // of a text file; 0: a point
  const TWorkControl& Control;
  TFileReport* Report;  // may be null
};

/// What writing needs.
struct TWriteRequest {
  TWorkbook& Workbook;
  IWriteStream& Stream;
  int32_t SheetIndex;  // the sheet of a format that holds only one
  char16_t Delimiter;  // of a text file, as the next two
  bool Utf8Bom;
  bool DefuseFormulas;
  const TWorkControl& Control;
  TFileReport* Report;  // may be null
};

/// A format with the ways into it and out of it.
struct TFileFormatRow {
  TTessarineFileFormat Format;
  const char* Name;   // as --from and --to take it
  const char* Title;  // as messages have it
  bool HoldsOneSheet;
  void (*Read)(const TReadRequest& ARequest);
  void (*Write)(const TWriteRequest& ARequest);
};

/// The row of a format; null for ffAuto.
const TFileFormatRow* FindFormat(TTessarineFileFormat AFormat);
/// In any case ("xlsx"); throws ECli for a name that is none.
const TFileFormatRow& FormatOfName(const std::string& AName);
/// The names with "AWord" between the last two: "tsr, xlsx or csv".
std::string FormatNames(const char* AWord);

/// The format that a file's name stands for; other text files (.txt, .tsv, .tab) are read as CSV is.
TTessarineFileFormat FormatOfFile(const std::string& AFileName);
/// The format by the first bytes: packages begin as ZIP archives do, documents with an object, all else is text.
TTessarineFileFormat FormatOfBytes(std::string_view ABytes);

}  // namespace tessarine::cli
