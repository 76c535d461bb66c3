#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

// References of this system are "Sheet!A1:B2", those of OpenDocument formulas "[$Sheet.A1:.B2]" and those of its
// address attributes "$Sheet.A1:$Sheet.B2".

/// A formula of a file in this system's form: blanks around it and a prefix such as "of:=" dropped, references without
/// brackets, arguments separated by ",", a text inside a placeholder call unwrapped. There is no "=" in front, but for
/// unwrapped ones. String literals are left alone, and what is not recognised passes unchanged.
///
/// In braces that hold a "|" it separates rows and ";" columns; others keep their separators unless AStandardArrays
/// says that ";" separates columns in all of them.
std::u16string OdsFormulaToExcel(std::u16string_view AFormula, bool AStandardArrays = false);

/// A formula in the form of files: "of:=" and the text without its "=", references in brackets with absolute sheets,
/// arguments separated by ";", and in braces columns by ";" and rows by "|". The marks of newer functions ("_xlfn.",
/// "_xlws."), which other formats put in front of their names, are dropped. A literal one keeps marks and separators
/// in braces.
std::u16string OdsFormulaFromExcel(std::u16string_view AFormula, bool AIsLiteral = false);

/// The name of a sheet as an address attribute or a reference has it, without "$" in front and without quotes.
std::u16string OdsUnquoteSheetName(std::u16string_view AName);

/// The name as it stands before "!" in a formula of this system.
std::u16string OdsExcelQuoteSheetName(std::u16string_view AName);

/// The name as it stands before "." in files: in quotes, with those inside doubled, unless it is letters, digits and
/// "_" alone and does not begin with a digit.
std::u16string OdsQuoteSheetName(std::u16string_view AName);

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

/// A formula that is nothing but one reference with a sheet ("='My Sheet'!$A$1:$B$2", with or without "=") as an
/// address attribute, "$'My Sheet'.$A$1:.$B$2". Nothing for any other formula.
std::optional<std::u16string> OdsAddressFromExcel(std::u16string_view AFormula);

}  // namespace tessarine::detail
