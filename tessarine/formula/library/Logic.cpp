#include <tessarine/formula/FunctionTable.h>

#include <tessarine/formula/library/detail/ArgReading.h>

namespace tessarine {

namespace {

using namespace detail;

// IF, IFERROR, IFNA and CHOOSE are laid hold of by the evaluator, which leaves untaken branches alone. The bodies here
// answer calls with too few arguments and calls with values that stand already.

TCellValue CallIf(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  const TCellValue condition = AArgs[0].First();
  if (condition.IsError()) return condition;
  if (ValueIsTruthy(condition)) return AArgs[1].First();
  return AArgs.size() < 3 ? BooleanOf(false) : AArgs[2].First();
}

TCellValue CallIfError(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  return AArgs[AArgs[0].FirstView().IsError() ? 1 : 0].First();
}

TCellValue CallIfNa(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ValueError();
  const TValueView value = AArgs[0].FirstView();
  return AArgs[value.IsError() && value.ErrorCode == ceNA ? 1 : 0].First();
}

TCellValue CallIfs(TFormulaArgs AArgs, const TFormulaContext&) {
  for (size_t i = 0; i + 1 < AArgs.size(); i += 2) {
    if (ArgIsTrue(AArgs[i])) return AArgs[i + 1].First();
  }
  return NotAvailable();
}

bool IsSwitchHit(const TValueView& AValue, const TValueView& ACase) {
  double value = 0;
  double number = 0;
  return (AsNumber(AValue, value) && AsNumber(ACase, number) && value == number) || EqualDisplayText(AValue, ACase);
}

TCellValue CallSwitch(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 3) return ValueError();
  const TValueView value = AArgs[0].FirstView();
  size_t next = 1;
  for (; next + 1 < AArgs.size(); next += 2) {
    if (IsSwitchHit(value, AArgs[next].FirstView())) return AArgs[next + 1].First();
  }
  return next < AArgs.size() ? AArgs[next].First() : NotAvailable();
}

TCellValue CallChoose(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t index = 0;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[0], index)) return ValueError();
  if (index < 1 || index >= static_cast<int64_t>(AArgs.size())) return ValueError();
  return AArgs[static_cast<size_t>(index)].First();
}

/// The values that count as true. Blanks and errors are false and end nothing.
int64_t CountTrue(TFormulaArgs AArgs) {
  int64_t count = 0;
  for (const TFormulaArg& arg : AArgs) {
    ForEachNonBlank(arg, [&](int64_t, const TValueView& AValue) { count += ValueIsTruthy(AValue) ? 1 : 0; });
  }
  return count;
}

TCellValue CallAnd(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  for (const TFormulaArg& arg : AArgs) {
    int64_t next = 0;  // a gap in the indexes is a blank
    const bool all = ForEachNonBlank(
        arg, [&](int64_t AIndex, const TValueView& AValue) { return AIndex == next++ && ValueIsTruthy(AValue); });
    if (!all || next != (arg.IsRange ? arg.CellCount() : 1)) return BooleanOf(false);
  }
  return BooleanOf(true);
}

TCellValue CallOr(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  for (const TFormulaArg& arg : AArgs) {
    const auto isFalse = [](int64_t, const TValueView& AValue) { return !ValueIsTruthy(AValue); };
    if (!ForEachNonBlank(arg, isFalse)) return BooleanOf(true);
  }
  return BooleanOf(false);
}

TCellValue CallXor(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return BooleanOf(CountTrue(AArgs) % 2 != 0);
}

TCellValue CallNot(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return BooleanOf(!ArgIsTrue(AArgs[0]));
}

TCellValue CallTrue(TFormulaArgs, const TFormulaContext&) { return BooleanOf(true); }
TCellValue CallFalse(TFormulaArgs, const TFormulaContext&) { return BooleanOf(false); }

// clang-format off
constexpr TFunctionDef kLogicFunctions[] = {
    {.Name = u"AND", .MinArgs = 1, .Body = CallAnd, .InCompletion = true,
     .Arguments = u"logical1, [logical2], ...", .Description = u"TRUE when every value is true; a blank is not."},
    {.Name = u"CHOOSE", .MinArgs = 2, .Body = CallChoose, .InCompletion = true,
     .Arguments = u"index, value1, [value2], ...", .Description = u"The value at a position of the list that follows."},
    {.Name = u"FALSE", .MinArgs = 0, .MaxArgs = 0, .Body = CallFalse, .InCompletion = true,
     .Arguments = u"", .Description = u"The value FALSE."},
    {.Name = u"IF", .MinArgs = 2, .MaxArgs = 3, .Body = CallIf, .InCompletion = true,
     .Arguments = u"condition, then, [else]",
     .Description = u"One of two values by a condition; only the chosen one is calculated."},
    {.Name = u"IFERROR", .MinArgs = 2, .MaxArgs = 2, .Body = CallIfError, .InCompletion = true,
     .Arguments = u"value, fallback", .Description = u"A value, or the fallback when it is an error."},
    {.Name = u"IFNA", .MinArgs = 2, .MaxArgs = 2, .Body = CallIfNa, .InCompletion = true,
     .Arguments = u"value, fallback", .Description = u"A value, or the fallback when it is #N/A."},
    {.Name = u"IFS", .MinArgs = 2, .Body = CallIfs, .InCompletion = true,
     .Arguments = u"condition1, value1, [condition2], [value2], ...",
     .Description = u"The value behind the first condition that is true."},
    {.Name = u"NOT", .MinArgs = 1, .MaxArgs = 1, .Body = CallNot, .InCompletion = true,
     .Arguments = u"logical", .Description = u"TRUE for a false value, FALSE for a true one."},
    {.Name = u"OR", .MinArgs = 1, .Body = CallOr, .InCompletion = true,
     .Arguments = u"logical1, [logical2], ...", .Description = u"TRUE when at least one value is true."},
    {.Name = u"SWITCH", .MinArgs = 3, .Body = CallSwitch,
     .Arguments = u"value, case1, result1, [case2], [result2], ..., [default]",
     .Description = u"The result behind the first case that equals a value, else the default."},
    {.Name = u"TRUE", .MinArgs = 0, .MaxArgs = 0, .Body = CallTrue, .InCompletion = true,
     .Arguments = u"", .Description = u"The value TRUE."},
    {.Name = u"XOR", .MinArgs = 1, .Body = CallXor, .InCompletion = true,
     .Arguments = u"logical1, [logical2], ...", .Description = u"TRUE when an odd number of the values is true."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> LogicFunctions() { return kLogicFunctions; }

}  // namespace tessarine
