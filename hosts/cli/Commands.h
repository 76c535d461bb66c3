#pragma once

namespace tessarine::cli {

struct TArguments;
class TSession;

/// The commands; each answers its exit code or throws.
int RunInfo(const TArguments& AArguments, TSession& ASession);
int RunShow(const TArguments& AArguments, TSession& ASession);
int RunCells(const TArguments& AArguments, TSession& ASession);
int RunEval(const TArguments& AArguments, TSession& ASession);
int RunRecalc(const TArguments& AArguments, TSession& ASession);
int RunConvert(const TArguments& AArguments, TSession& ASession);
int RunEdit(const TArguments& AArguments, TSession& ASession);
int RunSort(const TArguments& AArguments, TSession& ASession);
int RunFilter(const TArguments& AArguments, TSession& ASession);
int RunPivot(const TArguments& AArguments, TSession& ASession);
int RunDiff(const TArguments& AArguments, TSession& ASession);
int RunFunctions(const TArguments& AArguments, TSession& ASession);

}  // namespace tessarine::cli
