#pragma once

#include <cstddef>
#include <cstdint>

#include <tessarine/io/xlsx/detail/XlsxPackage.h>

namespace tessarine::detail {

/// Memory that the drawings of one sheet may take beyond the parts they are read from. Few bytes can name one big
/// picture many times, or put the only point of a series at the end of a million: what finds no room here is left out.
class TXlsxDrawingRoom {
 public:
  /// Without a package only the room of the sheet counts.
  explicit TXlsxDrawingRoom(const TXlsxPackage* APackage = nullptr) : FPackage(APackage) {}

  bool TryTake(uint64_t ABytes) {
    if (ABytes > FLeft || (FPackage && !FPackage->TryTakeRoom(ABytes))) return false;
    FLeft -= ABytes;
    return true;
  }

  /// For AVector to grow to ACount elements, empty ones in between.
  template <class TVector>
  bool TryGrow(TVector& AVector, size_t ACount) {
    if (ACount <= AVector.size()) return true;
    if (!TryTake((ACount - AVector.size()) * sizeof(AVector[0]))) return false;
    AVector.resize(ACount);
    return true;
  }

  /// Counts points and series that were left out.
  void NoteLoss() { ++FLosses; }
  uint64_t Losses() const { return FLosses; }

 private:
  const TXlsxPackage* FPackage;
  uint64_t FLosses = 0;
  uint64_t FLeft = uint64_t{256} << 20;
};

}  // namespace tessarine::detail
