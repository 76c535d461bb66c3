#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/EditScript.h>
#include <hosts/cli/Output.h>
#include <hosts/cli/Session.h>

namespace tessarine::cli {

int RunEdit(const TArguments& AArguments, TSession& ASession) {
  const TOutputPlan plan = PlanOutput(AArguments);
  const bool isStandard = AArguments.Script == "-";
  if (isStandard && AArguments.Input == "-")
    throw ECli(ecUsage, "the workbook and the script cannot both come from standard input; name a file for one");
  const std::string script = ASession.ReadFile(AArguments.Script);
  TArguments arguments = AArguments;
  arguments.NoRecalc = true;  // computed once, when all is edited
  ASession.Load(arguments);
  const int32_t index = ASession.SheetIndex(AArguments);
  RunEditScript(script, isStandard ? "standard input" : AArguments.Script, ASession, index);
  FinishChange(AArguments, plan, ASession, index);
  return ecDone;
}

}  // namespace tessarine::cli
