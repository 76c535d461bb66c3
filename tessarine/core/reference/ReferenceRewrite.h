#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/reference/IndexShift.h>

namespace tessarine {

/// The pieces of "Sheet!A1:B2"; Second is empty for a single reference.
struct TSheetRefParts {
  std::u16string Sheet;  // unquoted
  std::u16string First;
  std::u16string Second;
};

/// Cuts at the first "!" and the first ":" behind it; quotes around the sheet are removed and doubled ones inside
/// undone. Nothing without a "!" or with nothing behind it.
TESSARINE_API std::optional<TSheetRefParts> SplitSheetRefText(std::u16string_view AText);

/// Whether a sheet's name must stand in quotes in a formula: all that is not an ASCII identifier.
TESSARINE_API bool SheetNameNeedsQuotes(std::u16string_view ASheetName);

/// The name as it stands before "!" in a formula: in quotes, with those inside doubled, where needed.
TESSARINE_API std::u16string QuoteSheetName(std::u16string_view ASheetName);

/// AFormula after an insert (ADelta above 0) or a delete (below 0) of lines at AStart on the sheet ASheetName; AOnSheet
/// tells that references without a sheet mean that sheet.
///
/// The text is built anew from its tokens: blanks go, names become upper case. References to the edited sheet are
/// written canonically ("$" marks kept) with each corner moved on its own, and become #REF! as a whole when a corner
/// was deleted: unlike AdjustRange, a reference does not shrink. Whole columns and rows stay whole and move only on the
/// axis that they name. A reference that the edit leaves alone keeps its spelling, quotes included.
TESSARINE_API std::u16string AdjustFormula(std::u16string_view AFormula, std::u16string_view ASheetName, bool AOnSheet,
                                           TShiftAxis AAxis, int64_t AStart, int64_t ADelta);

/// The same for a move of ACount lines from AStart to ADest (as NormalizeMoveDest gives it). A corner that would leave
/// the sheet makes the reference #REF!.
TESSARINE_API std::u16string AdjustFormulaForMove(std::u16string_view AFormula, std::u16string_view ASheetName,
                                                  bool AOnSheet, TShiftAxis AAxis, int64_t AStart, int64_t ACount,
                                                  int64_t ADest);

/// AFormula as copied by a fixed distance: columns and rows without "$" move, in references to any sheet; one that
/// would leave the sheet becomes #REF!. Text is rebuilt as AdjustFormula does.
TESSARINE_API std::u16string OffsetSharedFormula(std::u16string_view AFormula, int64_t ADeltaCol, int64_t ADeltaRow);

}  // namespace tessarine
