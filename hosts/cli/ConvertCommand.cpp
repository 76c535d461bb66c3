#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Output.h>
#include <hosts/cli/Session.h>

namespace tessarine::cli {

int RunConvert(const TArguments& AArguments, TSession& ASession) {
  const TOutputPlan plan = PlanOutput(AArguments);
  ASession.Load(AArguments);
  SaveWorkbook(plan, ASession, ASession.SheetIndex(AArguments));
  PrintReport(AArguments, ASession);
  return ecDone;
}

int RunRecalc(const TArguments& AArguments, TSession& ASession) { return RunConvert(AArguments, ASession); }

}  // namespace tessarine::cli
