#include <tessarine/formula/FunctionTable.h>

#include <tessarine/formula/library/detail/Query.h>

namespace tessarine {

namespace {

TFormulaArg CallQuery(detail::TFormulaArgs AArgs, const TFormulaContext&) { return detail::EvalQuery(AArgs); }

// clang-format off
constexpr TFunctionDef kQueryFunctions[] = {
    {.Name = u"QUERY", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrArray, .ArrayBody = CallQuery, .ArrayMinArgs = 2,
     .Arguments = u"data, query, [headers]",
     .Description = u"Rows of a rectangle by a query: select A, sum(B) where C > 1 group by A order by A desc."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> QueryFunctions() { return kQueryFunctions; }

}  // namespace tessarine
