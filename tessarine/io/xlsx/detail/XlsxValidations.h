#pragma once

#include <cstddef>
#include <vector>

#include <tessarine/core/lists/DataValidations.h>

namespace tessarine {
class TXmlReader;
}

namespace tessarine::detail {

struct TXlsxReport;

/// Called at the start event of the data validations of a sheet part (ECMA-376-1 §18.3.1.33): reads the rules in file
/// order and goes on to the end event. Rules are named after their place among all elements, 1-based: "xlsx3". Rules
/// of a type that the model lacks are left out. Throws ELimit for more than AMaxRecords rules and ranges.
std::vector<TDataValidationRule> ReadXlsxValidations(TXmlReader& AReader, size_t AMaxRecords,
                                                     const TXlsxReport& AReport);

}  // namespace tessarine::detail
