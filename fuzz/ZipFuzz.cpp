#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Zip.h>

using namespace tessarine;

namespace {

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

void ReadAllParts(const TZipReader& AZip) {
  for (size_t i = 0; i < AZip.EntryCount(); ++i) {
    Require(IsValidUtf8(AZip.Name(i)));
    const auto found = AZip.Find(AZip.Name(i));
    Require(found && *found <= i);
    try {
      Require(AZip.Read(i).Size() == AZip.DeclaredSize(i));
    } catch (const ETessarineError&) {
      continue;  // a refused part leaves the others readable
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const auto* const bytes = reinterpret_cast<const std::byte*>(AData);
  const TReadLimits limits{
      .MaxEntries = 1000, .MaxPartBytes = 1 << 20, .MaxTotalBytes = 8 << 20, .RatioFreeBytes = 1 << 16};
  try {
    ReadAllParts(TZipReader(std::vector<std::byte>(bytes, bytes + ASize), limits));
  } catch (const ETessarineError&) {
    return 0;
  }
  return 0;
}
