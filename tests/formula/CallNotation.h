#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tessarine/formula/FunctionTable.h>

namespace tessarine::testing {

/// Arguments in short: numbers, dates such as 2024-02-29 for their serial numbers, 'texts' with '' for a quote, TRUE,
/// FALSE, errors such as #N/A, _ for a blank, fn for a closure, and rectangles "[1 2;'a' _]"; "[]" has no cells. Blanks
/// separate them. What does not read so throws std::invalid_argument.
std::vector<TFormulaArg> ArgsOf(std::string_view ANotation);

/// One value of that notation, a text without its quotes not being one.
TCellValue ValueOf(std::string_view ANotation);

/// The value or the rectangle in that notation, numbers with 15 digits and quotes in texts as they are.
std::string Shown(const TCellValue& AValue);
std::string Shown(const TFormulaArg& AArg);

/// The result of a function of any tier by its canonical name: of a function that makes arrays the array.
TFormulaArg ResultOf(std::string_view AName, const std::vector<TFormulaArg>& AArgs);
std::string Called(std::string_view AName, std::string_view AArgs);
/// The same, of a function that gives a number; NaN for anything else.
double NumberCalled(std::string_view AName, std::string_view AArgs);

inline TFormulaArg NumberArg(double ANumber) { return TFormulaArg::FromScalar(TCellValue::FromNumber(ANumber)); }

}  // namespace tessarine::testing
