#pragma once

#include <string>
#include <vector>

namespace tessarine {
class TWorkbook;
struct TDataValidationRule;
struct TOdsWriteOptions;
}  // namespace tessarine

namespace tessarine::detail {

/// The names under which a file has the validation rules: by sheet and rule, empty for rules that are not written.
using TOdsRuleNames = std::vector<std::vector<std::string>>;

/// Names that are unique in the file without regard to case: a rule's own name, or "valN".
TOdsRuleNames NameOdsValidations(const TWorkbook& AWorkbook);

/// How a condition is written.
struct TOdsRuleForm {
  bool SourceIsName = false;  // the items of a list are a defined name
  bool IsLiteral = false;
};

/// The condition of a rule; empty for one that allows everything.
std::u16string OdsValidationCondition(const TDataValidationRule& ARule, const TOdsRuleForm& AForm);

/// "table:content-validations", which stands in front of the sheets.
void AppendOdsValidations(const TWorkbook& AWorkbook, const TOdsRuleNames& ANames, bool AIsLiteral, std::string& AOut);

/// "table:named-expressions", which stands behind them.
void AppendOdsNames(const TWorkbook& AWorkbook, bool AIsLiteral, std::string& AOut);

/// "table:database-ranges": tables, and the filters of sheets.
void AppendOdsDatabaseRanges(const TWorkbook& AWorkbook, const TOdsWriteOptions& AOptions, std::string& AOut);

}  // namespace tessarine::detail
