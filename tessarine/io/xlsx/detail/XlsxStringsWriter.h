#pragma once

#include <string>
#include <vector>

#include <tessarine/core/sheet/Cell.h>
#include <tessarine/io/xlsx/SharedStrings.h>

namespace tessarine {
class TTessarineTheme;
struct TWorkControl;
}  // namespace tessarine

namespace tessarine::detail {

/// The runs of a cell as an entry of the string table has them, without those that have no text. Theme colours are
/// resolved. A run states what it has; unless AIsLiteral also what it has not, where ABase, the font of the cell's
/// format, has it.
std::vector<TRichStringRun> XlsxStringRuns(const TRichTextRuns& ARuns, const TCellFontInfo& ABase,
                                           const TTessarineTheme& ATheme, bool AIsLiteral);

/// Builds the part of a string table (ECMA-376-1 §18.4.9).
std::string XlsxStringsPart(const TSharedStringTable& ATable, const TWorkControl& AControl);

}  // namespace tessarine::detail
