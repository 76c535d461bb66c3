#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Session.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

void PutFunctionJson(const TFunctionDef& AFunction, std::string& AOut) {
  TJsonWriter json(AOut);
  json.BeginObject();
  json.Name("name");
  json.Text(AFunction.Name);
  json.Name("arguments");
  json.Text(AFunction.Arguments);
  json.Name("min");
  json.Integer(AFunction.MinArgs);
  json.Name("max");
  if (AFunction.MaxArgs < 0) {
    json.Null();
  } else {
    json.Integer(AFunction.MaxArgs);
  }
  json.Name("supported");
  json.Boolean(AFunction.Tier != ftrUnsupported);
  json.Name("description");
  json.Text(AFunction.Description);
  json.EndObject();
  AOut += '\n';
}

void PutFunctionLine(const TFunctionDef& AFunction, std::string& AOut) {
  constexpr size_t kColumn = 44;
  std::string call = Utf16ToUtf8(AFunction.Name) + "(" + Utf16ToUtf8(AFunction.Arguments) + ")";
  call.append(call.size() < kColumn ? kColumn - call.size() : 1, ' ');
  AOut += call + ' ' + Utf16ToUtf8(AFunction.Description);
  if (AFunction.Tier == ftrUnsupported && AFunction.Description.empty()) AOut += "Not supported: answers #N/A.";
  AOut += '\n';
}

}  // namespace

int RunFunctions(const TArguments& AArguments, TSession& ASession) {
  for (const TFunctionDef* function : AllFunctions()) {
    (AArguments.Json ? PutFunctionJson : PutFunctionLine)(*function, ASession.Out());
    ASession.Drain();
  }
  return ecDone;
}

}  // namespace tessarine::cli
