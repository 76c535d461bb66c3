#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Files.h>

#include "../support/SheetFixture.h"

namespace tessarine::test {

/// Gives its bytes in pieces of at most AMost at a time, as a pipe may.
class TTrickleStream final : public IReadStream {
 public:
  TTrickleStream(std::string_view ABytes, size_t AMost) : FRest(ABytes), FMost(AMost) {}
  size_t Read(std::span<std::byte> ABuffer) override {
    const size_t count = std::min({FRest.size(), ABuffer.size(), FMost});
    std::copy_n(reinterpret_cast<const std::byte*>(FRest.data()), count, ABuffer.begin());
    FRest.remove_prefix(count);
    return count;
  }

 private:
  std::string_view FRest;
  size_t FMost;
};

inline std::string TextOf(const TMemoryWriteStream& AStream) {
  return {reinterpret_cast<const char*>(AStream.Bytes().data()), AStream.Bytes().size()};
}

/// The used area as "1 'a' _; 'b' _ 2": rows by ";", a value a column ("_" for an empty cell).
inline std::string Dump(const TWorksheet& ASheet) {
  std::string dump;
  for (int32_t row = 1; row <= ASheet.UsedMaxRow(); ++row) {
    if (row > 1) dump += "; ";
    for (int32_t col = 1; col <= ASheet.UsedMaxCol(); ++col)
      dump += (col > 1 ? " " : "") + testing::NotationOf(ASheet.GetCellAt(col, row).Value);
  }
  return dump;
}

}  // namespace tessarine::test
