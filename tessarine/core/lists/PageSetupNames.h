#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {

class TPageSetup;

/// Print area and print titles as the texts of the built-in defined names that spreadsheet files use.

/// A range and the sheet that a text names.
struct TSheetRangeText {
  std::u16string Sheet;  // unquoted, empty without one
  TCellRange Range;      // normalized; whole columns and rows span the sheet
};

/// "Sheet!$A$1:$C$9". A sheet's name stands in quotes when it holds a blank or a quote.
TESSARINE_API std::u16string FormatPrintAreaExpr(std::u16string_view ASheet, const TCellRange& ARange);

/// "Sheet!$A:$C,Sheet!$1:$2": the columns first; what is not there is left out.
TESSARINE_API std::u16string FormatPrintTitlesExpr(std::u16string_view ASheet, bool AHasCols, const TCellRange& ACols,
                                                   bool AHasRows, const TCellRange& ARows);

/// Reads one reference with an optional sheet: a cell, a range, whole columns ("A:C") or whole rows ("1:2"), with or
/// without "$".
TESSARINE_API std::optional<TSheetRangeText> TryParseSheetRange(std::u16string_view AText);

/// Takes the first reference off an expression, up to a comma outside quotes, and gives it without blanks around.
TESSARINE_API std::u16string_view TakePrintReference(std::u16string_view& AExpr);

/// Sets the rectangle around all references of the expression that name the sheet ASheetName (any, when that is
/// empty; without regard to ASCII case) as the print area. What cannot be read is passed over.
TESSARINE_API void ApplyPrintAreaExpr(TPageSetup& APageSetup, std::u16string_view AExpr,
                                      std::u16string_view ASheetName);

/// Sets title columns and title rows from the whole columns and rows of the expression.
TESSARINE_API void ApplyPrintTitlesExpr(TPageSetup& APageSetup, std::u16string_view AExpr,
                                        std::u16string_view ASheetName);

}  // namespace tessarine
