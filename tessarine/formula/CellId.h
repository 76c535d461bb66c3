#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// A cell of a workbook in one number: 0-based sheet index, 1-based column and row. Positions past a sheet's edge
/// (a spilled block may reach there) have ids too, up to row 2^24 - 1 and column 2^16 - 1. The order of ids is sheet,
/// column, row.
struct TCellId {
  uint64_t Packed = 0;

  static constexpr TCellId Of(int32_t ASheet, int32_t ACol, int32_t ARow) {
    return {(static_cast<uint64_t>(static_cast<uint32_t>(ASheet)) << 40) |
            (static_cast<uint64_t>(static_cast<uint32_t>(ACol) & 0xFFFFu) << 24) |
            (static_cast<uint32_t>(ARow) & 0xFFFFFFu)};
  }
  constexpr int32_t Sheet() const { return static_cast<int32_t>(Packed >> 40); }
  constexpr int32_t Col() const { return static_cast<int32_t>((Packed >> 24) & 0xFFFFu); }
  constexpr int32_t Row() const { return static_cast<int32_t>(Packed & 0xFFFFFFu); }

  friend constexpr auto operator<=>(const TCellId&, const TCellId&) = default;
};

/// The id's printed form "sheet!column,row": "0!3,7".
TESSARINE_API TText CellKeyOf(TCellId AId);

/// The inverse; nothing unless the sheet is at least 0, column and row are above 0 and all three fit into an id.
TESSARINE_API std::optional<TCellId> ParseCellKey(std::u16string_view AKey);

}  // namespace tessarine
