#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

/// The array formulas of a sheet that is being read: cells in a block without a formula of their own carry the values
/// of the block, not constants.
class TOdsArrayBlocks {
 public:
  /// The sheet and the count of values that may still be taken outlive the blocks.
  TOdsArrayBlocks(TWorksheet& ASheet, size_t& AValuesLeft) : FSheet(ASheet), FValuesLeft(AValuesLeft) {}

  /// The block of a formula in its first cell. One that meets another, or is too large, is none.
  void Open(const TCellRange& ARange);

  bool IsEmpty() const { return FBlocks.empty(); }

  /// Takes the value of a cell in a block; false for a cell outside of all.
  bool TryStore(int32_t ACol, int32_t ARow, const TCellValue& AValue, const std::string& APartName);

  /// Gives the blocks to the sheet, behind the last cell.
  void Finish();

 private:
  struct TBlock {
    TCellRange Range;
    std::vector<TCellValue> Values;  // row by row; empty until a value is met
  };

  TWorksheet& FSheet;
  size_t& FValuesLeft;
  std::vector<TBlock> FBlocks;
  boost::unordered_flat_map<uint64_t, size_t> FByAnchor;
};

}  // namespace tessarine::detail
