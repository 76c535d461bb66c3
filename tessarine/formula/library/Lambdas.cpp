#include <tessarine/formula/FunctionTable.h>

namespace tessarine {

namespace {

// The evaluator carries these out itself, see formula/detail/EvaluationLambdas.cpp.
// clang-format off
constexpr TFunctionDef kLambdaFunctions[] = {
    {.Name = u"BYCOL", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"array, lambda", .Description = u"A row with what a function of one column makes of each column."},
    {.Name = u"BYROW", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"array, lambda", .Description = u"A column with what a function of one row makes of each row."},
    {.Name = u"LAMBDA", .MinArgs = 2, .MaxArgs = -1, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"parameter1, ..., calculation",
     .Description = u"A function of named parameters, for MAP, REDUCE and their like."},
    {.Name = u"LET", .MinArgs = 3, .MaxArgs = -1, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"name1, value1, ..., calculation",
     .Description = u"A calculation in which names stand for values."},
    {.Name = u"MAKEARRAY", .MinArgs = 3, .MaxArgs = 3, .Tier = ftrEvaluator,
     .Arguments = u"rows, columns, lambda",
     .Description = u"An array whose cells a function computes from row and column numbers."},
    {.Name = u"MAP", .MinArgs = 2, .MaxArgs = 2, .Tier = ftrEvaluator,
     .Arguments = u"array, lambda", .Description = u"An array of the same shape with a function applied to each cell."},
    {.Name = u"REDUCE", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"array, lambda, [start]",
     .Description = u"One value, made by a function of the value so far and each cell in turn."},
    {.Name = u"SCAN", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrEvaluator, .InCompletion = true,
     .Arguments = u"array, lambda, [start]",
     .Description = u"An array of the values that REDUCE goes through, one for each cell."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> LambdaFunctions() { return kLambdaFunctions; }

}  // namespace tessarine
