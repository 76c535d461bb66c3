#include <tessarine/io/ods/OdsReader.h>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/io/ods/detail/OdsDocumentReader.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/platform/Files.h>

namespace tessarine {

void TOdsReader::LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName, const TOdsReadOptions& AOptions) {
  const TSharedReadStream file = OpenSharedReadStream(AFileName);
  LoadFromStream(AWorkbook, *file.Stream, AOptions);
}

void TOdsReader::LoadFromStream(TWorkbook& AWorkbook, IReadStream& AStream, const TOdsReadOptions& AOptions) {
  AWorkbook.NewWorkbook();
  TOdsReadOptions options = AOptions;
  options.Limits = options.Limits.Clamped();
  options.Control.CheckStop();
  const detail::TXlsxPackage package(ReadAllBytes(AStream, options.Limits.MaxTotalBytes), options.Limits);
  detail::TOdsDocumentReader(AWorkbook, package, options).Read();
}

}  // namespace tessarine
