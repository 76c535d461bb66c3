#pragma once

#include <tessarine/formula/library/detail/ArgReading.h>

/// The query language over the columns of a rectangle; QuerySyntax.h tells its text.
namespace tessarine::detail {

/// QUERY(data, text, [headers]): runs the query text, the second argument's display text, over the rectangle. The
/// result is a rectangle, with a row of labels when headers is above 0. Fewer than two arguments, a text that is no
/// query and headers that are no number give #VALUE!, no data and no row left #N/A, more work or cells than a call may
/// take #NUM!.
TFormulaArg EvalQuery(TFormulaArgs AArgs);

/// The same row by row and cell by cell: the definition of the result.
TFormulaArg EvalQueryPlain(TFormulaArgs AArgs);

}  // namespace tessarine::detail
