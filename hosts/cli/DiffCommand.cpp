#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/CellJson.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Phrase.h>
#include <hosts/cli/Session.h>
#include <hosts/cli/WorkbookDiff.h>
#include <tessarine/platform/JsonWriter.h>

namespace tessarine::cli {

namespace {

constexpr size_t kMostText = 300;  // bytes of one side in a line for people

/// A text on one line and of moderate length, without what would steer a terminal.
std::string OneLine(const std::string& AText) {
  std::string line;
  for (const char unit : AText) {
    const auto byte = static_cast<unsigned char>(unit);
    if (line.size() >= kMostText && (byte & 0xC0) != 0x80) return line + "...";
    line += byte < 0x20 || byte == 0x7F ? ' ' : unit;
  }
  return line;
}

/// Texts of cells stand in quotes, so that blanks and numbers in them show.
std::string Shown(const TDiffSide& ASide, bool AIsValue) {
  if (!ASide) return "(none)";
  if (ASide->Kind == cvkNumber) return NumberText(ASide->Number);
  const std::string text = OneLine(ASide->ToDisplayString().ToUtf8());
  if (AIsValue && ASide->Kind == cvkText) return '"' + text + '"';
  return text.empty() ? "(there)" : text;
}

bool IsOfCell(const TDifference& ADifference) {
  constexpr std::string_view kOfCells[] = {"value", "formula", "format", "runs"};
  return std::find(std::begin(kOfCells), std::end(kOfCells), ADifference.What) != std::end(kOfCells);
}

void PutText(const TDifference& ADifference, std::string& AOut) {
  std::string line = ADifference.Sheet;
  if (IsOfCell(ADifference)) {
    line += "!" + ADifference.Name + " " + ADifference.What;
  } else {
    line += (line.empty() ? "" : " ") + ADifference.What + (ADifference.Name.empty() ? "" : " " + ADifference.Name);
  }
  const bool isValue = ADifference.What == "value";
  AOut += OneLine(line) + ": " + Shown(ADifference.First, isValue) + " -> " + Shown(ADifference.Second, isValue) + "\n";
}

void PutJson(const TDifference& ADifference, std::string& AOut) {
  TJsonWriter json(AOut);
  json.BeginObject();
  const std::pair<const char*, const std::string&> texts[] = {
      {"sheet", ADifference.Sheet}, {"what", ADifference.What}, {"name", ADifference.Name}};
  for (const auto& [name, text] : texts) {
    json.Name(name);
    if (text.empty())
      json.Null();
    else
      json.Text(std::string_view(text));
  }
  const std::pair<const char*, const TDiffSide&> sides[] = {{"a", ADifference.First}, {"b", ADifference.Second}};
  for (const auto& [name, side] : sides) {
    json.Name(name);
    PutJsonValue(json, side ? side->View() : TValueView());
  }
  json.EndObject();
  AOut += '\n';
}

std::string Counted(int64_t ACount, const char* AWord) {
  return std::to_string(ACount) + " " + AWord + (ACount == 1 ? "" : "s");
}

void PutSummary(const TArguments& AArguments, const TDiffCounts& ACounts, int64_t ATold, int64_t AFound,
                std::string& AOut) {
  if (AArguments.Json) {
    TJsonWriter json(AOut);
    json.BeginObject();
    const std::pair<const char*, int64_t> numbers[] = {
        {"differences", AFound}, {"told", ATold}, {"cells", ACounts.Cells}, {"features", ACounts.Features}};
    for (const auto& [name, number] : numbers) {
      json.Name(name);
      json.Integer(number);
    }
    json.EndObject();
    AOut += '\n';
    return;
  }
  if (AFound == 0) {
    AOut += "no differences\n";
    return;
  }
  if (ATold < AFound) AOut += "... " + Counted(AFound - ATold, "more difference") + "\n";
  AOut += Counted(AFound, "difference") + " in " + Counted(ACounts.Cells, "cell") + " and " +
          Counted(ACounts.Features, "feature") + "\n";
}

/// Computes a workbook of which some formula has no result, as in a file that no program has computed.
void LoadWithResults(const TArguments& AArguments, const std::string& AFileName, TSession& ASession) {
  TArguments arguments = AArguments;
  arguments.Input = AFileName;
  arguments.NoRecalc = true;
  ASession.Load(arguments);
  if (!AArguments.NoRecalc && ASession.LacksResults()) ASession.Recalculate();
}

}  // namespace

int RunDiff(const TArguments& AArguments, TSession& ASession) {
  if (AArguments.Input == "-" && AArguments.Other == "-")
    throw ECli(ecUsage, "both workbooks cannot come from standard input; name a file for one");
  if (AArguments.Max < 0) throw ECli(ecUsage, "--max takes a number of differences, or 0 for all");
  TSession other(ASession.Streams());
  LoadWithResults(AArguments, AArguments.Input, ASession);
  LoadWithResults(AArguments, AArguments.Other, other);
  int64_t found = 0;
  int64_t told = 0;
  const auto tell = [&](const TDifference& ADifference) {
    ++found;
    if (AArguments.Max > 0 && told >= AArguments.Max) return;
    ++told;
    (AArguments.Json ? PutJson : PutText)(ADifference, ASession.Out());
    ASession.Drain();
  };
  const TDiffCounts counts = DiffWorkbooks(ASession.Workbook(), other.Workbook(), ASession.Control(), tell);
  PutSummary(AArguments, counts, told, found, ASession.Out());
  return found == 0 ? ecDone : ecNegative;
}

}  // namespace tessarine::cli
