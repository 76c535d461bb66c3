#include <vector>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
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
};

TSheetFacts FactsOf(const TWorksheet& ASheet) {
  TSheetFacts facts{.Sheet = &ASheet, .Used = {}};
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

/// Whether some formula has no result, as in a file that no program has computed.
bool LacksResults(const TWorkbook& AWorkbook) {
  for (int32_t i = 0; i < AWorkbook.SheetCount(); ++i) {
    if (AWorkbook.GetSheet(i)->Store().UncachedCount() > 0) return true;
  }
  return false;
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

void PutText(const TArguments& AArguments, TSession& ASession, const std::vector<TSheetFacts>& ASheets) {
  std::string& out = ASession.Out();
  const std::string count = std::to_string(ASheets.size()) + (ASheets.size() == 1 ? " sheet" : " sheets");
  out += (AArguments.Input == "-" ? "standard input" : AArguments.Input) + ": " + ASession.FormatName() + ", " + count +
         "\n\n";
  PutSheetTable(ASheets, out);
  TTextTable tables({{"Table", alLeft}, {"Place", alLeft}});
  for (const TSheetFacts& facts : ASheets) {
    for (const auto& item : facts.Sheet->Tables())
      tables.AddRow(
          {item->DisplayName().ToUtf8(), facts.Sheet->Name().ToUtf8() + "!" + Utf16ToUtf8(item->Ref().ToA1())});
  }
  TTextTable names({{"Name", alLeft}, {"Formula", alLeft}});
  for (const TText& name : ASession.Workbook().NamedFormulaNames())
    names.AddRow({name.ToUtf8(), ASession.Workbook().FindNamedFormula(name)->ToUtf8()});
  for (const TTextTable* table : {&tables, &names}) {
    if (table->RowCount() == 0) continue;
    out += '\n';
    table->Append(out);
  }
}

// ---- as JSON

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
  json.EndObject();
  ASession.Out() += '\n';
}

}  // namespace

int RunInfo(const TArguments& AArguments, TSession& ASession) {
  TArguments withoutRecalculation = AArguments;
  withoutRecalculation.NoRecalc = true;
  ASession.Load(withoutRecalculation);
  if (!AArguments.NoRecalc && LacksResults(ASession.Workbook())) ASession.Recalculate();
  std::vector<TSheetFacts> sheets;
  for (int32_t i = 0; i < ASession.Workbook().SheetCount(); ++i)
    sheets.push_back(FactsOf(*ASession.Workbook().GetSheet(i)));
  (AArguments.Json ? PutJson : PutText)(AArguments, ASession, sheets);
  return ecDone;
}

}  // namespace tessarine::cli
