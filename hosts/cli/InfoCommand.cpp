#include <map>
#include <string>
#include <utility>
#include <vector>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Features.h>
#include <hosts/cli/Session.h>
#include <hosts/cli/Table.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

struct TSheetFacts {
  const TWorksheet* Sheet = nullptr;
  std::string Used;  // "A1:C9", empty for a sheet without cells
  size_t Cells = 0;
  size_t Formulas = 0;
  size_t Errors = 0;
  std::vector<TFeature> Features;
};

TSheetFacts FactsOf(const TWorkbook& AWorkbook, const TWorksheet& ASheet) {
  TSheetFacts facts{.Sheet = &ASheet, .Used = {}, .Features = FeaturesOf(AWorkbook, ASheet)};
  const detail::TCellStore& store = ASheet.Store();
  store.ForEachByColumn([&](int32_t, int32_t, const detail::TCellSlot& ASlot) {
    if (ASlot.Kind != cvkEmpty) ++facts.Cells;
    if (ASlot.Kind == cvkFormula) ++facts.Formulas;
    if (store.EffectiveView(ASlot).Kind == cvkError) ++facts.Errors;
  });
  if (store.CellCount() > 0)
    facts.Used = Utf16ToUtf8(TCellRange{1, 1, ASheet.UsedMaxCol(), ASheet.UsedMaxRow()}.ToA1());
  return facts;
}

const char* VisibilityName(const TWorksheet& ASheet) {
  switch (ASheet.Visibility()) {
    case svVisible: return "visible";
    case svHidden: return "hidden";
    case svVeryHidden: return "very hidden";
  }
  return "visible";
}

// ---- as a text

void PutSheetTable(const std::vector<TSheetFacts>& ASheets, std::string& AOut) {
  TTextTable table({{"Sheet", alLeft},
                    {"Used", alLeft},
                    {"Cells", alRight},
                    {"Formulas", alRight},
                    {"Errors", alRight},
                    {"", alLeft}});
  for (const TSheetFacts& facts : ASheets) {
    const std::string visibility = VisibilityName(*facts.Sheet);
    table.AddRow({facts.Sheet->Name().ToUtf8(), facts.Used.empty() ? "-" : facts.Used, std::to_string(facts.Cells),
                  std::to_string(facts.Formulas), std::to_string(facts.Errors),
                  visibility == "visible" ? "" : visibility});
  }
  table.Append(AOut);
}

constexpr size_t kMostOfKind = 20;   // features of one kind and sheet that are listed
constexpr size_t kMostContent = 80;  // bytes

std::string Shortened(const std::string& AText) {
  if (AText.size() <= kMostContent) return AText;
  size_t end = kMostContent;
  while (end > 0 && (static_cast<unsigned char>(AText[end]) & 0xC0) == 0x80) --end;
  return AText.substr(0, end) + "...";
}

/// The first features of each kind, and how many more there are.
void PutFeatures(const std::string& ASheet, const std::vector<TFeature>& AFeatures, TTextTable& ATable) {
  std::map<std::string, size_t> counts;
  for (const TFeature& feature : AFeatures) ++counts[feature.Kind];
  std::map<std::string, size_t> listed;
  for (const TFeature& feature : AFeatures) {
    const size_t number = ++listed[feature.Kind];
    if (number <= kMostOfKind) ATable.AddRow({feature.Kind, ASheet, feature.Name, Shortened(feature.Text)});
    if (number != kMostOfKind || counts[feature.Kind] == number) continue;
    ATable.AddRow(
        {feature.Kind, ASheet, "...", std::to_string(counts[feature.Kind] - number) + " more; --json lists all"});
  }
}

void PutText(const TArguments& AArguments, TSession& ASession, const std::vector<TSheetFacts>& ASheets) {
  std::string& out = ASession.Out();
  const std::string count = std::to_string(ASheets.size()) + (ASheets.size() == 1 ? " sheet" : " sheets");
  out += (AArguments.Input == "-" ? "standard input" : AArguments.Input) + ": " + ASession.FormatName() + ", " + count +
         "\n\n";
  PutSheetTable(ASheets, out);
  TTextTable table({{"What", alLeft}, {"Sheet", alLeft}, {"Name or place", alLeft}, {"Content", alLeft}});
  PutFeatures("", FeaturesOf(ASession.Workbook()), table);
  for (const TSheetFacts& facts : ASheets) PutFeatures(facts.Sheet->Name().ToUtf8(), facts.Features, table);
  if (table.RowCount() == 0) return;
  out += '\n';
  table.Append(out);
}

// ---- as JSON

void PutFeaturesJson(TJsonWriter& AJson, const std::vector<TFeature>& AFeatures) {
  AJson.BeginArray();
  for (const TFeature& feature : AFeatures) {
    const std::pair<const char*, const std::string&> texts[] = {
        {"kind", feature.Kind}, {"name", feature.Name}, {"content", feature.Text}};
    AJson.BeginObject();
    for (const auto& [name, text] : texts) {
      AJson.Name(name);
      AJson.Text(std::string_view(text));
    }
    AJson.EndObject();
  }
  AJson.EndArray();
}

void PutSheetJson(TJsonWriter& AJson, const TSheetFacts& AFacts) {
  AJson.BeginObject();
  AJson.Name("name");
  AJson.Text(AFacts.Sheet->Name().View());
  AJson.Name("visibility");
  AJson.Text(std::string_view(VisibilityName(*AFacts.Sheet)));
  AJson.Name("used");
  if (AFacts.Used.empty()) {
    AJson.Null();
  } else {
    AJson.Text(std::string_view(AFacts.Used));
  }
  const std::pair<const char*, size_t> counts[] = {{"cells", AFacts.Cells},
                                                   {"formulas", AFacts.Formulas},
                                                   {"errors", AFacts.Errors},
                                                   {"merges", AFacts.Sheet->Merges().Count()}};
  for (const auto& [name, count] : counts) {
    AJson.Name(name);
    AJson.Integer(static_cast<int64_t>(count));
  }
  AJson.Name("tables");
  AJson.BeginArray();
  for (const auto& table : AFacts.Sheet->Tables()) {
    AJson.BeginObject();
    AJson.Name("name");
    AJson.Text(table->DisplayName().View());
    AJson.Name("ref");
    AJson.Text(std::u16string_view(table->Ref().ToA1()));
    AJson.EndObject();
  }
  AJson.EndArray();
  AJson.Name("objects");
  PutFeaturesJson(AJson, AFacts.Features);
  AJson.EndObject();
}

void PutJson(const TArguments& AArguments, TSession& ASession, const std::vector<TSheetFacts>& ASheets) {
  TJsonWriter json(ASession.Out());
  json.BeginObject();
  json.Name("file");
  json.Text(std::string_view(AArguments.Input));
  json.Name("format");
  json.Text(std::string_view(ASession.FormatName()));
  json.Name("sheets");
  json.BeginArray();
  for (const TSheetFacts& facts : ASheets) PutSheetJson(json, facts);
  json.EndArray();
  json.Name("names");
  json.BeginArray();
  for (const TText& name : ASession.Workbook().NamedFormulaNames()) {
    json.BeginObject();
    json.Name("name");
    json.Text(name.View());
    json.Name("formula");
    json.Text(ASession.Workbook().FindNamedFormula(name)->View());
    json.EndObject();
  }
  json.EndArray();
  json.Name("objects");
  PutFeaturesJson(json, FeaturesOf(ASession.Workbook()));
  json.EndObject();
  ASession.Out() += '\n';
}

}  // namespace

int RunInfo(const TArguments& AArguments, TSession& ASession) {
  TArguments withoutRecalculation = AArguments;
  withoutRecalculation.NoRecalc = true;
  ASession.Load(withoutRecalculation);
  if (!AArguments.NoRecalc && ASession.LacksResults()) ASession.Recalculate();
  std::vector<TSheetFacts> sheets;
  sheets.reserve(static_cast<size_t>(ASession.Workbook().SheetCount()));
  for (int32_t i = 0; i < ASession.Workbook().SheetCount(); ++i)
    sheets.push_back(FactsOf(ASession.Workbook(), *ASession.Workbook().GetSheet(i)));
  (AArguments.Json ? PutJson : PutText)(AArguments, ASession, sheets);
  return ecDone;
}

}  // namespace tessarine::cli
