#include <hosts/cli/EditScript.h>

#include <algorithm>
#include <iterator>

#include <hosts/cli/Cli.h>
#include <hosts/cli/EditLine.h>
#include <hosts/cli/Session.h>
#include <tessarine/platform/Errors.h>

namespace tessarine::cli {

namespace {

/// An edit by its name. Keys: those that it knows, with blanks between. Help: shape and meaning.
struct TEditKind {
  const char* Name;
  std::string (*Keys)();
  void (*Run)(const TEditLine& ALine);
  const char* Shape;
  const char* Help;
};

constexpr TEditKind kEdits[] = {
    {"set", [] { return std::string("cell value formula text values"); }, EditSet, R"("cell":"B2","value":12)",
     "value: number, text, true, false or null; a text that begins with = is a formula. Or instead of\n"
     "value: formula; text (never a formula); values, an array of rows from the cell on"},
    {"clear", [] { return std::string("range what"); }, EditClear, R"("range":"A1:C9")",
     "what: all (values and formats), values or formats"},
    {"insert", [] { return std::string("rows columns"); }, EditInsert, R"("rows":"5:7")",
     "empty lines that will be rows 5 to 7; or columns: \"B:D\", or one line: 5, \"B\""},
    {"delete", [] { return std::string("rows columns"); }, EditDelete, R"("columns":"B:D")",
     "rows or columns as above"},
    {"move", [] { return std::string("rows columns before"); }, EditMove, R"("rows":"5:7","before":2)",
     "rows or columns as above; before: the line they will stand before (\"B\" for columns)"},
    {"fill", [] { return std::string("from to copy"); }, EditFill, R"("from":"A1:A2","to":"A1:A50")",
     "continues series and formulas; copy: true repeats what stands there"},
    {"merge", [] { return std::string("range merged"); }, EditMerge, R"("range":"A1:C1")",
     "merged: false takes the merged areas in the range apart"},
    {"format", [] { return "range " + FormatKeys(); }, EditFormat, R"("range":"A1:C1","bold":true)",
     "bold italic strike wrap locked hidden: true or false; number: a code such as \"0.00%\"; font, size;\n"
     "color fill borderColor: \"#1F77B4\" (fill: null for none); underline: none, single, double;\n"
     "horizontal: general, left, center, right, fill, justify; vertical: top, center, bottom; indent;\n"
     "rotation; border: none, thin, medium, thick, dashed, dotted, double, hair, or an object of left,\n"
     "top, right, bottom; width (of columns, in characters); height (of rows, in points)"},
    {"name", [] { return std::string("name formula"); }, EditName, R"J("name":"TOTAL","formula":"=SUM(B:B)")J",
     "formula: null takes the name away"},
    {"validation",
     [] {
       return std::string(
           "range type source operator first second allowBlank prompt promptTitle error errorTitle errorStyle");
     },
     EditValidation, R"("range":"B2:B9","type":"list","source":["yes","no"])",
     "type: any (no rule), list (source: items, or a range such as \"=$F$1:$F$9\"), whole, decimal, date,\n"
     "textLength (operator: between, notBetween, equal, notEqual, greaterThan, lessThan, greaterEqual,\n"
     "lessEqual; first; second), custom (first: a formula); allowBlank; prompt, promptTitle; error,\n"
     "errorTitle, errorStyle: stop, warning, information"},
    {"note", [] { return std::string("cell text author"); }, EditNote, R"("cell":"B2","text":"Check this")",
     "text: null takes the note away"},
};

const TEditKind& EditKindOf(const std::string& AName) {
  const auto* const found =
      std::find_if(std::begin(kEdits), std::end(kEdits), [&](const TEditKind& AEdit) { return AEdit.Name == AName; });
  if (found != std::end(kEdits)) return *found;
  std::string names;
  for (const TEditKind& edit : kEdits) names += (names.empty() ? "" : ", ") + std::string(edit.Name);
  FailEdit("there is no edit \"" + AName + "\"; edits are: " + names);
}

/// A misspelt key would be an edit that silently does less than it was meant to.
void CheckKeys(const TJsonValue& AObject, const TEditKind& AEdit) {
  const std::string keys = AEdit.Keys() + " op sheet";
  for (const std::string& name : AObject.Names) {
    if ((" " + keys + " ").find(" " + name + " ") == std::string::npos || name.find(' ') != name.npos)
      FailEdit("\"" + name + "\" is no key of \"" + AEdit.Name + "\"; its keys are: " + keys);
  }
}

void RunLine(std::string_view ALine, TSession& ASession, int32_t ASheetIndex) {
  const TJsonValue object = ReadJsonValue(ALine);
  if (object.Kind != jkObject) FailEdit("a line holds one JSON object");
  const TJsonValue* name = object.Find("op");
  if (!name) FailEdit("the key \"op\" is missing: it says what to do");
  const TEditKind& edit = EditKindOf(JsonTextOf(*name, "op"));
  CheckKeys(object, edit);
  const TJsonValue* sheet = object.Find("sheet");
  const int32_t index = sheet ? ASession.SheetIndexOf(JsonTextOf(*sheet, "sheet")) : ASheetIndex;
  edit.Run(TEditLine(object, ASession.Workbook(), index));
}

/// A reader of one line counts from line 1; the script's line is what helps.
std::string WithoutLine(std::string AMessage) {
  constexpr std::string_view kLine = "line 1, ";
  if (AMessage.starts_with(kLine)) AMessage.erase(0, kLine.size());
  return AMessage;
}

}  // namespace

std::string EditScriptHelp() {
  std::string help =
      "A script has one JSON object a line. \"op\" says what to do, \"sheet\" names a sheet or gives its number (else\n"
      "--sheet, else the active one). Nothing is saved when a line fails; the message names the line.\n\n";
  for (const TEditKind& edit : kEdits) {
    help += std::string("  {\"op\":\"") + edit.Name + "\"," + edit.Shape + "}\n      ";
    for (const char* unit = edit.Help; *unit != '\0'; ++unit) {
      help += *unit;
      if (*unit == '\n') help += "      ";
    }
    help += '\n';
  }
  return help;
}

void RunEditScript(std::string_view AScript, const std::string& AName, TSession& ASession, int32_t ASheetIndex) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (AScript.starts_with(kMark)) AScript.remove_prefix(kMark.size());
  for (int64_t number = 1; !AScript.empty(); ++number) {
    const std::string_view line = AScript.substr(0, AScript.find('\n'));
    AScript.remove_prefix(std::min(line.size() + 1, AScript.size()));
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
    ASession.Control().CheckStop();
    const std::string place = AName + ", line " + std::to_string(number) + ": ";
    try {
      RunLine(line, ASession, ASheetIndex);
    } catch (const ECli& error) {
      throw ECli(ecInput, place + error.what());
    } catch (const ELimit& error) {
      throw ECli(ecLimit, place + WithoutLine(error.what()));
    } catch (const ECancelled&) {
      throw;
    } catch (const ETessarineError& error) {
      throw ECli(ecInput, place + WithoutLine(error.what()));
    }
  }
}

}  // namespace tessarine::cli
