#pragma once

#include <string>
#include <vector>

namespace tessarine {
class TFileReport;
class TWorkbook;
}  // namespace tessarine

namespace tessarine::detail {

/// The names under which a file has the validation rules: by sheet and rule, empty for rules that are not written.
using TOdsRuleNames = std::vector<std::vector<std::string>>;

/// Names that are unique in the file without regard to case: a rule's own name, or "valN".
TOdsRuleNames NameOdsValidations(const TWorkbook& AWorkbook);

/// "table:content-validations", which stands in front of the sheets.
void AppendOdsValidations(const TWorkbook& AWorkbook, const TOdsRuleNames& ANames, std::string& AOut);

/// "table:named-expressions", which stands behind them.
void AppendOdsNames(const TWorkbook& AWorkbook, std::string& AOut);

/// "table:database-ranges": tables, and the filters of sheets.
void AppendOdsDatabaseRanges(const TWorkbook& AWorkbook, TFileReport* AReport, std::string& AOut);

}  // namespace tessarine::detail
