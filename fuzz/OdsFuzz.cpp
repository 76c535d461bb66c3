#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <tessarine/io/ods/OdsReader.h>

#include "detail/StoredZip.h"
#include "detail/XlsxCheck.h"

using namespace tessarine;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  TOdsReadOptions options;
  options.Limits = {.MaxEntries = 1000,
                    .MaxPartBytes = 1 << 20,
                    .MaxTotalBytes = 8 << 20,
                    .RatioFreeBytes = 1 << 16,
                    .MaxXmlDepth = 40,
                    .MaxXmlTreeNodes = 20'000};
  options.FontInstalled = [](std::u16string_view AName) { return AName.size() % 2 == 0; };
  TWorkbook book;
  const std::vector<std::byte> bytes = fuzz::PackageOf({reinterpret_cast<const char*>(AData), ASize});
  TMemoryReadStream stream(bytes);
  bool isLoaded = true;
  try {
    TOdsReader::LoadFromStream(book, stream, options);
  } catch (const ETessarineError&) {
    isLoaded = false;
  }
  fuzz::Require(book.SheetCount() > 0);
  if (isLoaded) fuzz::Require(!book.IsModified());
  for (int32_t index = 0; index < book.SheetCount(); ++index) fuzz::CheckSheet(book, *book.GetSheet(index));
  book.NewWorkbook();
  fuzz::Require(book.SheetCount() == 1);
  return 0;
}
