#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Session.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr std::string_view kMarkdownHead = R"TEXT(# Functions

What formulas may call, by family. This file is made by `tessarine functions --markdown > docs/functions.md`.

Arguments in brackets may be left out, and "..." stands for any number of further ones. Names in parentheses are other
spellings of the same function. The prefixes that files put in front of newer names (`_xlfn.` and its like) are
understood.
)TEXT";

std::vector<std::u16string_view> SpellingsOf(const TFunctionDef& AFunction) {
  std::vector<std::u16string_view> names;
  std::u16string_view rest = AFunction.Spellings;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find(u' '), rest.size());
    names.push_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return names;
}

/// The family that has the function's row.
std::u16string_view FamilyOf(const TFunctionDef* AFunction) {
  for (const TFunctionFamily& family : FunctionFamilies()) {
    const bool holds = std::any_of(family.Functions.begin(), family.Functions.end(),
                                   [&](const TFunctionDef& ARow) { return &ARow == AFunction; });
    if (holds) return family.Title;
  }
  return {};
}

void PutFunctionJson(const TFunctionDef& AFunction, std::string& AOut) {
  TJsonWriter json(AOut);
  json.BeginObject();
  json.Name("name");
  json.Text(AFunction.Name);
  json.Name("spellings");
  json.BeginArray();
  for (const std::u16string_view name : SpellingsOf(AFunction)) json.Text(name);
  json.EndArray();
  json.Name("family");
  json.Text(FamilyOf(&AFunction));
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

std::string CallOf(const TFunctionDef& AFunction) {
  return Utf16ToUtf8(AFunction.Name) + "(" + Utf16ToUtf8(AFunction.Arguments) + ")";
}

void PutFunctionLine(const TFunctionDef& AFunction, std::string& AOut) {
  constexpr size_t kColumn = 44;
  std::string call = CallOf(AFunction);
  call.append(call.size() < kColumn ? kColumn - call.size() : 1, ' ');
  AOut += call + ' ' + Utf16ToUtf8(AFunction.Description) + '\n';
}

/// "- `SUM(value1, ...)` (ADD): the sum."
void PutFunctionItem(const TFunctionDef& AFunction, std::string& AOut) {
  AOut += "- `" + (AFunction.Tier == ftrUnsupported ? Utf16ToUtf8(AFunction.Name) : CallOf(AFunction)) + "`";
  std::string others;
  for (const std::u16string_view name : SpellingsOf(AFunction))
    others += (others.empty() ? "" : ", ") + ("`" + Utf16ToUtf8(name) + "`");
  if (!others.empty()) AOut += " (" + others + ")";
  AOut += ": " + Utf16ToUtf8(AFunction.Description) + '\n';
}

void PutFamily(const TFunctionFamily& AFamily, std::string& AOut) {
  if (AFamily.Functions.empty()) return;
  AOut += "\n## " + Utf16ToUtf8(AFamily.Title) + "\n\n";
  for (const TFunctionDef& function : AFamily.Functions) PutFunctionItem(function, AOut);
}

void PutMarkdown(TSession& ASession) {
  ASession.Out() += kMarkdownHead;
  for (const TFunctionFamily& family : FunctionFamilies()) PutFamily(family, ASession.Out());
  ASession.Drain();
}

}  // namespace

int RunFunctions(const TArguments& AArguments, TSession& ASession) {
  if (AArguments.Markdown) {
    PutMarkdown(ASession);
    return ecDone;
  }
  for (const TFunctionDef* function : AllFunctions()) {
    (AArguments.Json ? PutFunctionJson : PutFunctionLine)(*function, ASession.Out());
    ASession.Drain();
  }
  return ecDone;
}

}  // namespace tessarine::cli
