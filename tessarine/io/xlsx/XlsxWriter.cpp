#include <tessarine/io/xlsx/XlsxWriter.h>

#include <tessarine/io/detail/SaveBook.h>
#include <tessarine/io/xlsx/detail/XlsxWorkbookWriter.h>

namespace tessarine {

void TXlsxWriter::SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, const TXlsxWriteOptions& AOptions) {
  detail::SaveBookViaTemp(AWorkbook, AFileName,
                          [&](IWriteStream& AStream) { SaveToStream(AWorkbook, AStream, AOptions); });
}

void TXlsxWriter::SaveToStream(TWorkbook& AWorkbook, IWriteStream& AStream, const TXlsxWriteOptions& AOptions) {
  detail::TXlsxWorkbookWriter(AWorkbook, AStream, AOptions).Write();
}

}  // namespace tessarine
