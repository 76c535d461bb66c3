#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tessarine/formula/FunctionTable.h>

namespace tessarine::testing {

/// Arguments in short: numbers, 'texts', TRUE, FALSE, errors such as #N/A, _ for a blank, fn for a closure, and
/// rectangles "[1 2;'a' _]"; "[]" has no cells. Blanks separate them.
std::vector<TFormulaArg> ArgsOf(std::string_view ANotation);

/// One value of that notation.
TCellValue ValueOf(std::string_view ANotation);

/// The value in that notation, numbers with 15 digits.
std::string Shown(const TCellValue& AValue);

/// The result of a function of any tier by its canonical name, in that notation.
std::string Called(std::string_view AName, std::string_view AArgs);

/// A case of a table of calls.
struct TCallCase {
  const char* Name;
  const char* Args;
  const char* Result;
};
void ExpectCalls(std::initializer_list<TCallCase> ACases);

}  // namespace tessarine::testing
