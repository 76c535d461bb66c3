#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessarine::detail {

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

/// A formula that is nothing but one reference with a sheet ("='My Sheet'!$A$1:$B$2", with or without "=") as an
/// address attribute, "$'My Sheet'.$A$1:.$B$2". Nothing for any other formula.
std::optional<std::u16string> OdsAddressFromExcel(std::u16string_view AFormula);

}  // namespace tessarine::detail
