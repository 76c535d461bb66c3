#include <cstddef>
#include <cstdint>

#include "detail/StoredZip.h"
#include "detail/XlsxCheck.h"

using namespace tessarine;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  TWorkbook book;
  fuzz::LoadXlsx(book, fuzz::PackageOf({reinterpret_cast<const char*>(AData), ASize}));
  for (int32_t index = 0; index < book.SheetCount(); ++index) fuzz::CheckSheet(book, *book.GetSheet(index));
  book.NewWorkbook();
  fuzz::Require(book.SheetCount() == 1);
  return 0;
}
