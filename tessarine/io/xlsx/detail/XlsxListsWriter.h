#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessarine {
class TDataValidationList;
class TMergedCellList;
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

// The elements of a sheet part for what lives beside its cells. Each appends nothing when there is nothing to write.

/// How many merges, rules and criteria a sheet has that the file does not.
struct TXlsxListLosses {
  uint64_t Merges = 0;
  uint64_t Rules = 0;
  uint64_t Criteria = 0;
};

/// The sheet's filter, unless a table of the sheet writes the same one.
void AppendXlsxAutoFilter(const TWorksheet& ASheet, bool AIsLiteral, TXlsxListLosses& ALosses, std::string& AOut);

/// Merges inside the sheet; unless AIsLiteral only those of more than one cell that meet no earlier one.
void AppendXlsxMerges(const TMergedCellList& AMerges, bool AIsLiteral, TXlsxListLosses& ALosses, std::string& AOut);

/// The rules that restrict something somewhere. AWorkbook tells names from items of literal lists.
void AppendXlsxValidations(const TWorkbook& AWorkbook, const TDataValidationList& AValidations, bool AIsLiteral,
                           TXlsxListLosses& ALosses, std::string& AOut);

/// The source of a list as a file has it: a formula without its "=", or a literal in quotes.
std::u16string XlsxListSource(const TWorkbook& AWorkbook, std::u16string_view ASource);

/// A piece of text as a filter with wildcards for it: "a?" gives "*a~?*".
std::u16string XlsxContainsPattern(std::u16string_view AText);

}  // namespace tessarine::detail
