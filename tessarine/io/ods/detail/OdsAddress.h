#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <tessarine/core/values/Address.h>
#include <tessarine/io/ods/detail/OdsFormulaScan.h>

namespace tessarine::detail {

// References of this system are "Sheet!A1:B2", those of OpenDocument formulas "[$Sheet.A1:.B2]" and those of its
// address attributes "$Sheet.A1:$Sheet.B2".

/// The name of a sheet as an address attribute or a reference has it, without "$" in front and without quotes.
std::u16string OdsUnquoteSheetName(std::u16string_view AName);

/// The name as it stands before "!" in a formula of this system.
std::u16string OdsExcelQuoteSheetName(std::u16string_view AName);

/// The name as it stands before "." in files: in quotes, with those inside doubled, unless it is letters, digits and
/// "_" alone and does not begin with a digit.
std::u16string OdsQuoteSheetName(std::u16string_view AName);

/// "$Sheet.A1:.B2" taken apart; sheets are unquoted.
struct TOdsReference {
  bool HasSheet = false;
  std::u16string Sheet;
  std::u16string EndSheet;  // Sheet again unless the reference names another one
  TOdsCorner First;
  TOdsCorner Second;  // ckNone for a reference to one cell

  bool IsRange() const { return Second.Kind != ckNone; }
};

/// Takes the whole of AText as a reference of a file, without brackets. The views in the result are into AText.
bool OdsReadReference(std::u16string_view AText, TOdsReference& AReference);

/// "Sheet!A1:B2"; over several sheets "First:Last!A1:B2".
void OdsAppendReference(const TOdsReference& AReference, std::u16string& AOut);

/// A range and the sheet it is on; no sheet when the address names none.
struct TOdsSheetRange {
  std::u16string Sheet;  // unquoted
  TCellRange Range;      // normalized

  friend bool operator==(const TOdsSheetRange&, const TOdsSheetRange&) = default;
};

/// Reads "$'My Sheet'.$A$1:.$B$2" in all its spellings: the sheet may be missing, or stand before one or both corners.
/// Nothing for what is no range of a sheet.
std::optional<TOdsSheetRange> OdsParseSheetRangeAddress(std::u16string_view AText);

/// The attribute text of a range: "Sheet.A1:Sheet.B2", or "Sheet.A1" for one cell.
std::u16string OdsSheetRangeAddress(std::u16string_view ASheet, const TCellRange& ARange);

/// An address attribute as a reference of this system, "$" marks of cells kept: "$'My Sheet'.$A$1:.$B$2" is
/// "'My Sheet'!$A$1:$B$2". Nothing for what is no reference to cells.
std::optional<std::u16string> OdsAddressToExcel(std::u16string_view AText);

}  // namespace tessarine::detail
