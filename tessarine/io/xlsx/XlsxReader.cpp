#include <tessarine/io/xlsx/XlsxReader.h>

#include <utility>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/io/xlsx/detail/XlsxWorkbookReader.h>
#include <tessarine/platform/Files.h>

namespace tessarine {

void TXlsxReader::LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName, const TXlsxReadOptions& AOptions) {
  const TSharedReadStream file = OpenSharedReadStream(AFileName);
  LoadFromStream(AWorkbook, *file.Stream, AOptions);
}

void TXlsxReader::LoadFromStream(TWorkbook& AWorkbook, IReadStream& AStream, const TXlsxReadOptions& AOptions) {
  AWorkbook.NewWorkbook();
  TXlsxReadOptions options = AOptions;
  options.Limits = options.Limits.Clamped();
  options.Control.CheckStop();
  const detail::TXlsxPackage package(ReadAllBytes(AStream, options.Limits.MaxTotalBytes), options.Limits);
  detail::TXlsxWorkbookReader(AWorkbook, package, options).Read();
}

}  // namespace tessarine
