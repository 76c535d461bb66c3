#include <tessarine/formula/FunctionTable.h>

#include <cmath>

#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine {

namespace {

using namespace detail;

/// A test of the first value.
template <bool (*Test)(const TValueView&)>
TCellValue CallTest(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return BooleanOf(Test(AArgs[0].FirstView()));
}

template <TCellValueKind Kind>
bool HasKind(const TValueView& AValue) {
  return AValue.Kind == Kind;
}

bool IsNotAvailable(const TValueView& AValue) { return AValue.IsError() && AValue.ErrorCode == ceNA; }
bool IsOtherError(const TValueView& AValue) { return AValue.IsError() && AValue.ErrorCode != ceNA; }
bool IsNoText(const TValueView& AValue) { return AValue.Kind != cvkText; }

template <bool Odd>
TCellValue CallParity(TFormulaArgs AArgs, const TFormulaContext&) {
  double number = 0;
  if (AArgs.empty() || !ArgAsNumber(AArgs[0], number)) return ValueError();
  return BooleanOf((std::fmod(std::trunc(number), 2) != 0) == Odd);
}

TCellValue CallN(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return TCellValue::FromNumber(0);
  const TValueView value = AArgs[0].FirstView();
  switch (value.Kind) {
    case cvkNumber: return NumberOrError(value.Number);
    case cvkBoolean: return TCellValue::FromNumber(value.BooleanValue ? 1 : 0);
    case cvkError: return TCellValue::FromError(value.ErrorCode);
    case cvkEmpty:
    case cvkText:
    case cvkFormula: break;
  }
  return TCellValue::FromNumber(0);
}

TCellValue CallNa(TFormulaArgs, const TFormulaContext&) { return NotAvailable(); }

double TypeNumber(TCellValueKind AKind) {
  switch (AKind) {
    case cvkText: return 2;
    case cvkBoolean: return 4;
    case cvkError: return 16;
    case cvkEmpty:
    case cvkNumber:
    case cvkFormula: break;
  }
  return 1;
}

TCellValue CallType(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return TCellValue::FromNumber(TypeNumber(AArgs[0].FirstView().Kind));
}

// clang-format off
constexpr TFunctionDef kInformationFunctions[] = {
    {.Name = u"ISBLANK", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<HasKind<cvkEmpty>>, .InCompletion = true,
     .Arguments = u"value", .Description = u"Whether a value is blank."},
    {.Name = u"ISERR", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<IsOtherError>,
     .Arguments = u"value", .Description = u"Whether a value is an error other than #N/A."},
    {.Name = u"ISERROR", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<HasKind<cvkError>>, .InCompletion = true,
     .Arguments = u"value", .Description = u"Whether a value is an error."},
    {.Name = u"ISEVEN", .MinArgs = 1, .MaxArgs = 1, .Body = CallParity<false>,
     .Arguments = u"number", .Description = u"Whether a number, its fraction cut, is even."},
    {.Name = u"ISLOGICAL", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<HasKind<cvkBoolean>>,
     .Arguments = u"value", .Description = u"Whether a value is TRUE or FALSE."},
    {.Name = u"ISNA", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<IsNotAvailable>, .InCompletion = true,
     .Arguments = u"value", .Description = u"Whether a value is the error #N/A."},
    {.Name = u"ISNONTEXT", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<IsNoText>,
     .Arguments = u"value", .Description = u"Whether a value is anything but a text."},
    {.Name = u"ISNUMBER", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<HasKind<cvkNumber>>, .InCompletion = true,
     .Arguments = u"value", .Description = u"Whether a value is a number."},
    {.Name = u"ISODD", .MinArgs = 1, .MaxArgs = 1, .Body = CallParity<true>,
     .Arguments = u"number", .Description = u"Whether a number, its fraction cut, is odd."},
    {.Name = u"ISTEXT", .MinArgs = 1, .MaxArgs = 1, .Body = CallTest<HasKind<cvkText>>, .InCompletion = true,
     .Arguments = u"value", .Description = u"Whether a value is a text."},
    {.Name = u"N", .MinArgs = 0, .MaxArgs = 1, .Body = CallN, .InCompletion = true,
     .Arguments = u"value", .Description = u"A value as a number: TRUE is 1, texts and blanks are 0."},
    {.Name = u"NA", .MinArgs = 0, .MaxArgs = 0, .Body = CallNa, .InCompletion = true,
     .Arguments = u"", .Description = u"The error #N/A."},
    {.Name = u"TYPE", .MinArgs = 1, .MaxArgs = 1, .Body = CallType, .InCompletion = true,
     .Arguments = u"value", .Description = u"Kind of a value: 1 number or blank, 2 text, 4 logical, 16 error."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> InformationFunctions() { return kInformationFunctions; }

}  // namespace tessarine
