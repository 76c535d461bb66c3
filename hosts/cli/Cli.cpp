#include <hosts/cli/Cli.h>

#include <new>
#include <string_view>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Session.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

namespace tessarine::cli {

namespace {

int RunCommand(const TArguments& AArguments, TSession& ASession) {
  switch (AArguments.Command) {
    case cmInfo: return RunInfo(AArguments, ASession);
    case cmShow: return RunShow(AArguments, ASession);
    case cmCells: return RunCells(AArguments, ASession);
    case cmEval: return RunEval(AArguments, ASession);
    case cmRecalc: return RunRecalc(AArguments, ASession);
    case cmConvert: return RunConvert(AArguments, ASession);
    case cmEdit: return RunEdit(AArguments, ASession);
    case cmSort: return RunSort(AArguments, ASession);
    case cmFilter: return RunFilter(AArguments, ASession);
    case cmPivot: return RunPivot(AArguments, ASession);
    case cmDiff: return RunDiff(AArguments, ASession);
    case cmFunctions: return RunFunctions(AArguments, ASession);
  }
  return ecUsage;
}

/// Writes a message; when even that fails there is nobody left to tell.
int FailWith(TCliStreams& AStreams, TExitCode ACode, std::string_view AMessage) {
  try {
    WriteText(AStreams.Messages, "tessarine: " + std::string(AMessage) + "\n");
  } catch (const ETessarineError&) {
    return ACode;
  }
  return ACode;
}

int Run(const std::vector<std::string>& AArgs, TCliStreams& AStreams) {
  const TParsedArguments parsed = ParseArguments(AArgs);
  if (parsed.IsReady) {
    TSession session(AStreams);
    const int code = RunCommand(parsed.Arguments, session);
    session.Flush();
    return code;
  }
  if (!parsed.Error.empty()) return FailWith(AStreams, static_cast<TExitCode>(parsed.ExitCode), parsed.Error);
  WriteText(AStreams.Out, parsed.Output);
  return parsed.ExitCode;
}

}  // namespace

int RunCli(const std::vector<std::string>& AArgs, TCliStreams& AStreams) {
  try {
    return Run(AArgs, AStreams);
  } catch (const ECli& error) {
    return FailWith(AStreams, error.Code(), error.what());
  } catch (const ECancelled&) {
    return FailWith(AStreams, ecInterrupted, "interrupted; no file was changed");
  } catch (const ELimit& error) {
    return FailWith(AStreams, ecLimit, error.what());
  } catch (const EFileAccess& error) {
    return FailWith(AStreams, ecOutput, error.what());  // readers' failures come as ECli
  } catch (const std::bad_alloc&) {
    return FailWith(AStreams, ecLimit, "there is not enough memory for this");
  } catch (const std::exception& error) {
    return FailWith(AStreams, ecInput, error.what());
  }
}

}  // namespace tessarine::cli
