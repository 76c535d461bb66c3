#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <tessarine/io/ods/OdsReader.h>

#include "detail/StoredZip.h"
#include "detail/XlsxCheck.h"

using namespace tessarine;

namespace {

/// An input is a package as it stands, or a text that a package is made of: each part begins with a line "=== NAME".
std::vector<std::byte> OdsPackageOf(std::string_view AInput) {
  constexpr std::string_view kMark = "=== ";
  if (!AInput.starts_with(kMark)) {
    const auto* const start = reinterpret_cast<const std::byte*>(AInput.data());
    return {start, start + AInput.size()};
  }
  fuzz::TStoredZip zip;
  while (!AInput.empty()) {
    const size_t end = std::min(AInput.find("\n=== ", 1), AInput.size());
    const std::string_view part = AInput.substr(kMark.size(), end - kMark.size());
    AInput.remove_prefix(std::min(end + 1, AInput.size()));
    const size_t line = std::min(part.find('\n'), part.size());
    if (line < 0x10000) zip.Add(part.substr(0, line), part.substr(std::min(line + 1, part.size())));
    if (AInput.size() < kMark.size()) break;
  }
  return zip.Finish();
}

}  // namespace

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
  const std::vector<std::byte> bytes = OdsPackageOf({reinterpret_cast<const char*>(AData), ASize});
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
