#pragma once

#include <cstdint>
#include <span>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;

/// One key of a sort.
struct TSheetSortKey {
  int32_t Col = 1;  // of the sheet when it lies in the range, else counted in the range from 1, else its first column
  bool Ascending = true;

  friend bool operator==(const TSheetSortKey&, const TSheetSortKey&) = default;
};

/// Sorts the rows of a range by what they show: two cells that are numbers, or show what reads as one under the current
/// locale, compare as numbers, any others by their shown texts without regard to ASCII case. The first key on which
/// two rows differ decides; equal rows keep their order. Relative references of formulas move with their rows, sizes,
/// notes and links stay. One undo step "Sort", and the workbook is marked modified; neither when no row moves.
///
/// Throws EArgument for a missing workbook or sheet, without keys and for a range that cannot be read, and ELimit
/// when more than kMaxSortedCells cells would move. Nothing has been changed then.
TESSARINE_API void TessarineSortRange(TWorkbook* AWorkbook, TWorksheet* ASheet, TTextArg ARangeA1, bool AHasHeader,
                                      std::span<const TSheetSortKey> AKeys);

constexpr int64_t kMaxSortedCells = int64_t{1} << 25;

}  // namespace tessarine
