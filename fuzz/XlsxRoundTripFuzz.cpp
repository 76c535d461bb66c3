#include <cstddef>
#include <cstdint>
#include <vector>

#include <tessarine/io/xlsx/XlsxWriter.h>

#include "detail/XlsxCheck.h"

using namespace tessarine;

namespace {

std::vector<std::byte> Saved(TWorkbook& ABook, bool AIsLiteral) {
  TMemoryWriteStream stream;
  TXlsxWriteOptions options;
  options.Time = 45000;
  options.Literal = AIsLiteral;
  TXlsxWriter::SaveToStream(ABook, stream, options);
  return stream.ToVector();
}

}  // namespace

/// Whatever loads can be saved. What was saved loads again unless the limits of this target are in the way, and from
/// then on nothing changes any more. The literal form only has to be written without harm.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const auto* const start = reinterpret_cast<const std::byte*>(AData);
  TWorkbook book;
  if (!fuzz::LoadXlsx(book, {start, start + ASize})) return 0;
  const std::vector<std::byte> first = Saved(book, false);
  fuzz::Require(first == Saved(book, false));
  static_cast<void>(Saved(book, true));
  TWorkbook back;
  if (!fuzz::LoadXlsx(back, first)) return 0;
  const std::vector<std::byte> second = Saved(back, false);
  TWorkbook again;
  if (!fuzz::LoadXlsx(again, second)) return 0;
  fuzz::Require(Saved(again, false) == second);
  return 0;
}
