#include <hosts/cli/FileFormats.h>

#include <algorithm>
#include <iterator>

#include <hosts/cli/Cli.h>
#include <hosts/cli/Features.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/io/native/Native.h>
#include <tessarine/io/ods/OdsReader.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/io/xlsx/XlsxWriter.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

/// The options of one format with what all have in common.
template <class TOptions, class TRequest>
TOptions CommonOptions(const TRequest& ARequest) {
  TOptions options;
  options.Control = ARequest.Control;
  if constexpr (requires { options.Report = ARequest.Report; }) options.Report = ARequest.Report;  // text has none
  return options;
}

/// What is no document leaves the workbook as it was; only its list of sheets tells.
void ReadTsr(const TReadRequest& ARequest) {
  const uint64_t before = ARequest.Workbook.SheetListVersion();
  TTsrIO::LoadFromStream(ARequest.Workbook, ARequest.Stream, CommonOptions<TTsrReadOptions>(ARequest));
  if (ARequest.Workbook.SheetListVersion() == before)
    throw EFileFormat("this is no Tessarine document, or it is damaged: it does not read as a JSON object");
}

void WriteTsr(const TWriteRequest& ARequest) {
  TTsrIO::SaveToStream(ARequest.Workbook, ARequest.Stream, CommonOptions<TTsrWriteOptions>(ARequest));
}

void ReadXlsx(const TReadRequest& ARequest) {
  TXlsxReader::LoadFromStream(ARequest.Workbook, ARequest.Stream, CommonOptions<TXlsxReadOptions>(ARequest));
}

void WriteXlsx(const TWriteRequest& ARequest) {
  TXlsxWriter::SaveToStream(ARequest.Workbook, ARequest.Stream, CommonOptions<TXlsxWriteOptions>(ARequest));
}

void ReadOds(const TReadRequest& ARequest) {
  TOdsReader::LoadFromStream(ARequest.Workbook, ARequest.Stream, CommonOptions<TOdsReadOptions>(ARequest));
}

void WriteOds(const TWriteRequest& ARequest) {
  TOdsWriter::SaveToStream(ARequest.Workbook, ARequest.Stream, CommonOptions<TOdsWriteOptions>(ARequest));
}

void ReadCsv(const TReadRequest& ARequest) {
  auto options = CommonOptions<TCsvImportOptions>(ARequest);
  options.SourceName = ARequest.SourceName;
  options.DecimalSeparator = ARequest.DecimalSeparator;
  TCsvIO::ImportWithOptions(ARequest.Workbook, ARequest.Stream, 0, options);
}

/// From A1 to the last cell that is there. The used bounds will not do: a file's empty cells count in them too, and one
/// in the last corner of the sheet would make a file of gigabytes.
TCellRange ContentRange(const TWorksheet& ASheet) {
  TCellRange range{1, 1, 1, 1};
  const auto take = [&](int32_t ACol, int32_t ARow) {
    range.EndCol = std::max(range.EndCol, std::min(ACol, kMaxCol));
    range.EndRow = std::max(range.EndRow, std::min(ARow, kMaxRow));
  };
  ASheet.Store().ForEachByColumn([&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) { take(ACol, ARow); });
  for (const TSpillRange* block : ASheet.Spills().BlocksIn({1, 1, kMaxCol, kMaxRow}))
    take(block->EndCol, block->EndRow);
  return range;
}

/// Tells what does not go into a text file.
void ReportTextFile(const TWorkbook& AWorkbook, const TWorksheet& ASheet, TFileReport& AReport) {
  const std::string name = ASheet.Name().ToUtf8();
  uint64_t formulas = 0;
  uint64_t formats = 0;
  ASheet.Store().ForEachByColumn([&](int32_t, int32_t, const detail::TCellSlot& ASlot) {
    formulas += ASlot.Kind == cvkFormula ? 1 : 0;
    formats += ASlot.StyleIndex != 0 || ASlot.HasExtras() ? 1 : 0;
  });
  if (formulas > 0) AReport.Add("formula", ffRewritten, name, formulas, "written as its result");
  if (formats > 0) AReport.Add("cell format", ffDropped, name, formats, "values are written as they are shown");
  for (const TFeature& feature : FeaturesOf(AWorkbook, ASheet))
    AReport.Add(feature.Kind, ffDropped, name, 1, feature.Name);
}

void WriteCsv(const TWriteRequest& ARequest) {
  const TWorksheet* sheet = ARequest.Workbook.GetSheet(ARequest.SheetIndex);
  if (!sheet) return;
  auto options = CommonOptions<TCsvExportOptions>(ARequest);
  options.Delimiter = ARequest.Delimiter;
  options.Utf8Bom = ARequest.Utf8Bom;
  options.DefuseFormulas = ARequest.DefuseFormulas;
  if (ARequest.Report) ReportTextFile(ARequest.Workbook, *sheet, *ARequest.Report);
  TCsvIO::ExportRange(ARequest.Workbook, sheet, ARequest.Stream, ContentRange(*sheet), options);
}

constexpr TFileFormatRow kFormats[] = {
    {ffTsr, "tsr", "Tessarine document", false, ReadTsr, WriteTsr},
    {ffXlsx, "xlsx", "XLSX", false, ReadXlsx, WriteXlsx},
    {ffOds, "ods", "ODS", false, ReadOds, WriteOds},
    {ffCsv, "csv", "CSV", true, ReadCsv, WriteCsv},
};

std::string InLowerCase(std::string AText) {
  for (char& byte : AText) byte = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
  return AText;
}

bool IsTextExtension(const std::string& AFileName) {
  const std::string name = InLowerCase(AFileName);
  return name.ends_with(".txt") || name.ends_with(".tsv") || name.ends_with(".tab");
}

bool IsDocument(std::string_view ABytes) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  constexpr std::string_view kBlanks = " \t\r\n";
  if (ABytes.starts_with(kMark)) ABytes.remove_prefix(kMark.size());
  ABytes.remove_prefix(std::min(ABytes.find_first_not_of(kBlanks), ABytes.size()));
  if (!ABytes.starts_with('{')) return false;
  ABytes.remove_prefix(1);
  ABytes.remove_prefix(std::min(ABytes.find_first_not_of(kBlanks), ABytes.size()));
  return ABytes.starts_with('"');
}

}  // namespace

const TFileFormatRow* FindFormat(TTessarineFileFormat AFormat) {
  const auto* const found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                         [&](const TFileFormatRow& ARow) { return ARow.Format == AFormat; });
  return found == std::end(kFormats) ? nullptr : found;
}

const TFileFormatRow& FormatOfName(const std::string& AName) {
  const std::string name = InLowerCase(AName);
  for (const TFileFormatRow& row : kFormats)
    if (row.Name == name) return row;
  throw ECli(ecUsage, "there is no format \"" + AName + "\"; formats are: " + FormatNames(","));
}

std::string FormatNames(const char* AWord) {
  const std::string last = AWord == std::string_view(",") ? ", " : " " + std::string(AWord) + " ";
  std::string names;
  for (const TFileFormatRow& row : kFormats) {
    const bool isLast = &row == std::end(kFormats) - 1;
    names += (names.empty() ? "" : isLast ? last : ", ") + row.Name;
  }
  return names;
}

TTessarineFileFormat FormatOfFile(const std::string& AFileName) {
  const TTessarineFileFormat format = FileFormatFromExtension(AFileName);
  return format == ffAuto && IsTextExtension(AFileName) ? ffCsv : format;
}

TTessarineFileFormat FormatOfBytes(std::string_view ABytes) {
  if (!ABytes.starts_with("PK\x03\x04")) return IsDocument(ABytes) ? ffTsr : ffCsv;
  // An OpenDocument package tells its kind in its first entry, which is stored without compression.
  const bool isOpenDocument = ABytes.substr(0, 200).find("mimetypeapplication/vnd.oasis.opendocument") != ABytes.npos;
  return isOpenDocument ? ffOds : ffXlsx;
}

}  // namespace tessarine::cli
