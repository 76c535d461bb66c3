#pragma once

#include <cstdint>
#include <string_view>

#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

// Texts of places. What cannot be read throws EArgument with the text.

/// "Invalid cell address: TEXT"
TCellAddress CellOfText(std::u16string_view AText);
/// "Invalid range: TEXT"; the range is normalized and on the sheet.
TCellRange RangeOfText(std::u16string_view AText);

// What the operations on cells do to one cell that has been loaded and will be stored.

/// The cell's own format, which begins as the default one: the format of its style is lost.
TCellFormat& EnsureFormat(TCell& ACell);
/// Replaces the content; runs and result go, style and format stay.
void PutValue(TCell& ACell, const TCellValue& AValue);
/// The formula that a text means: trimmed, with a "=" before it unless it is empty or has one.
TCellValue FormulaOfText(std::u16string_view AText);
void ClearFormatsOf(TCell& ACell);

/// The format of a cell without conditional formats: its own, else that of its style.
TCellFormat FormatOf(const TWorksheet& ASheet, const TCell& ACell);

}  // namespace tessarine::detail
