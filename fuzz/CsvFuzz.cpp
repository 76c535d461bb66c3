#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>

using namespace tessarine;

namespace {

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

std::string Exported(TWorkbook& AWorkbook) {
  TMemoryWriteStream stream;
  TCsvIO::ExportSheet(AWorkbook, stream, 0);
  return {reinterpret_cast<const char*>(stream.Bytes().data()), stream.Bytes().size()};
}

/// Imports; false for what a limit refused.
bool Import(TWorkbook& AWorkbook, std::span<const std::byte> ABytes, const TCsvImportOptions& AOptions) {
  TMemoryReadStream stream(ABytes);
  try {
    TCsvIO::ImportWithOptions(AWorkbook, stream, 0, AOptions);
  } catch (const ELimit&) {
    return false;
  }
  return true;
}

bool IsSmall(const TWorksheet& ASheet) { return int64_t{ASheet.UsedMaxCol()} * ASheet.UsedMaxRow() < 1'000'000; }

}  // namespace

/// The first byte chooses the options. What is read is written, read again as texts and written once more: the two
/// files have to be the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  if (ASize == 0) return 0;
  const uint8_t choice = AData[0];
  const auto bytes = std::as_bytes(std::span(AData + 1, ASize - 1));
  TWorkbook plain;
  TMemoryReadStream stream(bytes);
  try {
    TCsvIO::ImportSheet(plain, stream, 0);
  } catch (const ELimit&) {
    Require(ASize > 16384);  // nothing smaller reaches a limit
  }

  TCsvImportOptions options;
  if ((choice & 1) != 0) options.Delimiter = u',';
  options.TrimBlanks = (choice & 2) != 0;
  options.SkipEmptyLines = (choice & 4) != 0;
  options.QuotedIsText = (choice & 8) != 0;
  options.AllText = (choice & 16) != 0;
  if ((choice & 32) != 0) options.DecimalSeparator = u',';
  TWorkbook first;
  if (!Import(first, bytes, options) || !IsSmall(*first.GetSheet(0))) return 0;
  const std::string once = Exported(first);
  Require(IsValidUtf8(once));
  TWorkbook second;
  Require(Import(second, std::as_bytes(std::span(once)), {.Delimiter = u',', .AllText = true}));
  Require(Exported(second) == once);
  return 0;
}
