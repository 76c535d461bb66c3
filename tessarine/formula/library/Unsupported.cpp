#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <array>

namespace tessarine {

namespace {

constexpr TFunctionDef UnsupportedRow(std::u16string_view AName) {
  return {.Name = AName,
          .Tier = ftrUnsupported,
          .Arguments = u"...",
          .Description = u"Known by name only: the result is #N/A."};
}

// Functions of other programs that need their host, a double-byte system or a data set: formulas that use them load and
// stay as they are.
// clang-format off
constexpr TFunctionDef kUnsupportedFunctions[] = {
    UnsupportedRow(u"AGGREGATE"),
    UnsupportedRow(u"ASC"),
    UnsupportedRow(u"BAHTTEXT"),
    UnsupportedRow(u"BETA.INV"),
    UnsupportedRow(u"BETAINV"),
    UnsupportedRow(u"CALL"),
    UnsupportedRow(u"CELL"),
    UnsupportedRow(u"DBCS"),
    UnsupportedRow(u"EUROCONVERT"),
    UnsupportedRow(u"F.INV"),
    UnsupportedRow(u"F.INV.RT"),
    UnsupportedRow(u"FINDB"),
    UnsupportedRow(u"FINV"),
    UnsupportedRow(u"FORECAST.ETS"),
    UnsupportedRow(u"FORECAST.ETS.CONFINT"),
    UnsupportedRow(u"FORECAST.ETS.SEASONALITY"),
    UnsupportedRow(u"FORECAST.ETS.STAT"),
    UnsupportedRow(u"IMAGE"),
    UnsupportedRow(u"INFO"),
    UnsupportedRow(u"JIS"),
    UnsupportedRow(u"LEFTB"),
    UnsupportedRow(u"LENB"),
    UnsupportedRow(u"MIDB"),
    UnsupportedRow(u"PERCENTOF"),
    UnsupportedRow(u"PHONETIC"),
    UnsupportedRow(u"PYTHON"),
    UnsupportedRow(u"REGISTER.ID"),
    UnsupportedRow(u"REPLACEB"),
    UnsupportedRow(u"RIGHTB"),
    UnsupportedRow(u"SEARCHB"),
    UnsupportedRow(u"TRIMRANGE"),
    UnsupportedRow(u"WIDECHAR"),
};
// clang-format on
static_assert(std::size(kUnsupportedFunctions) == 32);

// clang-format off
constexpr TFunctionDef kEvaluatorFunctions[] = {
    {.Name = u"INDIRECT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"reference", .Description = u"The value of the cell that a text names."},
    {.Name = u"ISOMITTED", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"parameter", .Description = u"Whether a LAMBDA was called without this parameter."},
    {.Name = u"OFFSET", .MinArgs = 3, .MaxArgs = 5, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"reference, rows, columns, [height], [width]",
     .Description = u"The cells at a distance from a reference, of its size or another."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> UnsupportedFunctions() { return kUnsupportedFunctions; }
std::span<const TFunctionDef> EvaluatorFunctions() { return kEvaluatorFunctions; }

}  // namespace tessarine
