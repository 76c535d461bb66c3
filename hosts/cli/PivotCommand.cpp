#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Output.h>
#include <hosts/cli/Ranges.h>
#include <hosts/cli/Session.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr std::pair<std::u16string_view, TPivotAgg> kAggregates[] = {
    {u"sum", paSum}, {u"count", paCount}, {u"countnums", paCountNums}, {u"average", paAverage}, {u"avg", paAverage},
    {u"min", paMin}, {u"max", paMax},     {u"product", paProduct},     {u"stddev", paStdDev},   {u"stddevp", paStdDevp},
    {u"var", paVar}, {u"varp", paVarp},
};

constexpr std::pair<std::u16string_view, TPivotLayoutForm> kLayouts[] = {
    {u"compact", plfCompact},
    {u"outline", plfOutline},
    {u"tabular", plfTabular},
};

/// The value of a word in any case.
template <class TValue, size_t kCount>
std::optional<TValue> Lookup(const std::pair<std::u16string_view, TValue> (&ATable)[kCount], std::string_view AWord) {
  const std::u16string word = ToAsciiLower(Utf8ToUtf16(AWord));
  for (const auto& [name, value] : ATable)
    if (name == word) return value;
  return std::nullopt;
}

template <class TValue, size_t kCount>
std::string Words(const std::pair<std::u16string_view, TValue> (&ATable)[kCount]) {
  std::string words;
  for (const auto& [name, value] : ATable) words += (words.empty() ? "" : ", ") + Utf16ToUtf8(name);
  return words;
}

/// A sheet's name and what is meant on it: "Report!B3"; no name for "B3". Quotes around the name go.
std::pair<std::string, std::string> SplitSheet(const std::string& AText) {
  const size_t mark = AText.rfind('!');
  if (mark == AText.npos) return {"", AText};
  std::string name = AText.substr(0, mark);
  if (name.size() >= 2 && name.front() == '\'' && name.back() == '\'') name = name.substr(1, name.size() - 2);
  return {std::move(name), AText.substr(mark + 1)};
}

struct TSource {
  int32_t SheetIndex = 0;
  TCellRange Range;
};

/// The whole of a table without its totals.
std::optional<TSource> FindTable(const TWorkbook& AWorkbook, const std::string& AName) {
  const std::u16string name = Utf8ToUtf16(AName);
  for (int32_t i = 0; i < AWorkbook.SheetCount(); ++i) {
    const TSheetTable* table = AWorkbook.GetSheet(i)->Tables().FindByName(name);
    if (!table || !table->HasHeaderRow()) continue;
    TCellRange range = table->Ref();
    if (table->HasTotalsRow()) --range.EndRow;
    return TSource{i, range};
  }
  return std::nullopt;
}

TSource SourceOf(const TArguments& AArguments, const TSession& ASession, TWorkbook& AWorkbook) {
  if (const auto table = FindTable(AWorkbook, AArguments.Source)) return *table;
  const auto [name, text] = SplitSheet(AArguments.Source);
  const int32_t sheet = name.empty() ? ASession.SheetIndex(AArguments) : ASession.SheetIndexOf(name);
  const TSource source{sheet, UsedPartOf(ParseRange(text), *AWorkbook.GetSheet(sheet))};
  if (source.Range.Height() < 2)
    throw ECli(ecUsage, AArguments.Source + ": the source needs a row of headers and rows of records below it");
  return source;
}

int32_t FieldOf(const TPivotCache& ACache, const std::string& AName) {
  const int32_t field = ACache.FieldIndex(Utf8ToUtf16(AName));
  if (field >= 0) return field;
  std::string names;
  for (const TText& name : ACache.FieldNames()) names += (names.empty() ? "" : ", ") + name.ToUtf8();
  throw ECli(ecUsage, "the source has no field \"" + AName + "\"; its fields are: " + names);
}

/// "Amount" or "Amount:average"; a field whose name has a colon is found as well.
TPivotFieldRef ValueFieldOf(const TPivotCache& ACache, const std::string& AText) {
  const size_t colon = AText.rfind(':');
  if (colon == AText.npos || ACache.FieldIndex(Utf8ToUtf16(AText)) >= 0)
    return TPivotFieldRef::Create(FieldOf(ACache, AText), pfrValue, paSum);
  const auto aggregate = Lookup(kAggregates, std::string_view(AText).substr(colon + 1));
  if (!aggregate)
    throw ECli(ecUsage, "\"" + AText.substr(colon + 1) + "\" is no aggregate; aggregates are: " + Words(kAggregates));
  return TPivotFieldRef::Create(FieldOf(ACache, AText.substr(0, colon)), pfrValue, *aggregate);
}

/// "Region", or "Region=North" for an item that stays; several items of one field are one filter.
void AddFilter(const TPivotCache& ACache, const std::string& AText, TPivotTable& ATable) {
  const size_t mark = AText.find('=');
  const bool isField = mark == AText.npos || ACache.FieldIndex(Utf8ToUtf16(AText)) >= 0;
  const int32_t field = FieldOf(ACache, isField ? AText : AText.substr(0, mark));
  const auto filters = ATable.FieldsFor(pfrFilter);
  if (std::none_of(filters.begin(), filters.end(),
                   [&](const TPivotFieldRef& ARef) { return ARef.CacheFieldIndex == field; }))
    ATable.AddField(TPivotFieldRef::Create(field, pfrFilter, paSum));
  if (!isField) ATable.FilterSelections[field].push_back(TText::FromUtf8(AText.substr(mark + 1)));
}

void AddFields(const TArguments& AArguments, const TPivotCache& ACache, TPivotTable& ATable) {
  for (const std::string& text : AArguments.Filters) AddFilter(ACache, text, ATable);
  for (const std::string& text : AArguments.Rows)
    ATable.AddField(TPivotFieldRef::Create(FieldOf(ACache, text), pfrRow, paSum));
  for (const std::string& text : AArguments.Columns)
    ATable.AddField(TPivotFieldRef::Create(FieldOf(ACache, text), pfrColumn, paSum));
  for (const std::string& text : AArguments.Values) ATable.AddField(ValueFieldOf(ACache, text));
}

std::u16string FreeSheetName(const TWorkbook& AWorkbook) {
  for (int32_t number = 1;; ++number) {
    std::u16string name = u"Pivot" + (number == 1 ? u"" : Utf8ToUtf16(" " + std::to_string(number)));
    if (AWorkbook.FindSheetIndex(name) < 0) return name;
  }
}

TText FreePivotName(const TWorksheet& ASheet) {
  for (size_t number = ASheet.Pivots().Count() + 1;; ++number) {
    TText name = TText::FromUtf8("PivotTable" + std::to_string(number));
    if (!ASheet.Pivots().FindByName(name)) return name;
  }
}

/// The sheet of a name or a number; a name that no sheet has makes one.
int32_t SheetOrNew(TSession& ASession, const std::string& AName) {
  TWorkbook& book = ASession.Workbook();
  const std::u16string name = Utf8ToUtf16(AName);
  int32_t number = 0;
  if (book.FindSheetIndex(name) >= 0 || TryParseInt32(std::string_view(AName), number))
    return ASession.SheetIndexOf(AName);
  constexpr size_t kMostUnits = 31;
  if (name.size() > kMostUnits || name.find_first_of(u"[]:*?/\\'") != name.npos)
    throw ECli(ecUsage, "\"" + AName + "\" cannot name a new sheet; take at most 31 characters, none of []:*?/\\'");
  book.AddSheet(name);
  return book.SheetCount() - 1;
}

/// The sheet of the table and its place, below the filters that stand above it.
std::pair<int32_t, TCellAddress> PlaceOf(const TArguments& AArguments, TSession& ASession, const TSource& ASource,
                                         size_t AFilterCount) {
  const int32_t firstRow = AFilterCount == 0 ? 1 : static_cast<int32_t>(AFilterCount) + 2;
  if (AArguments.Dest.empty()) {
    ASession.Workbook().AddSheet(FreeSheetName(ASession.Workbook()));
    return {ASession.Workbook().SheetCount() - 1, TCellAddress{1, firstRow}};
  }
  const auto [name, text] = SplitSheet(AArguments.Dest);
  const TCellAddress place = ParseCell(text);
  const int32_t sheet = name.empty() ? ASource.SheetIndex : SheetOrNew(ASession, name);
  if (place.Row < firstRow)
    throw ECli(ecUsage, AArguments.Dest + ": the filters stand above the table; take row " + std::to_string(firstRow) +
                            " or one below it");
  if (sheet == ASource.SheetIndex && ASource.Range.ContainsAddress(place))
    throw ECli(ecUsage, AArguments.Dest + ": the table would overwrite its own source; take a cell beside it");
  return {sheet, place};
}

}  // namespace

int RunPivot(const TArguments& AArguments, TSession& ASession) {
  const TOutputPlan plan = PlanOutput(AArguments);
  const auto layout = Lookup(kLayouts, AArguments.Layout);
  if (!layout) throw ECli(ecUsage, "\"" + AArguments.Layout + "\" is no layout; layouts are: " + Words(kLayouts));
  ASession.Load(AArguments);
  TWorkbook& book = ASession.Workbook();
  const TSource source = SourceOf(AArguments, ASession, book);
  TPivotCache& cache = book.PivotCaches().AddNew();
  cache.SourceSheet = book.GetSheet(source.SheetIndex)->Name();
  cache.SourceRange = source.Range;
  TPivotEngine::RebuildCache(book, cache);
  auto table = std::make_unique<TPivotTable>(TText::FromUtf8(AArguments.Name), cache.Id(), TCellAddress{1, 1});
  AddFields(AArguments, cache, *table);
  const auto [index, place] = PlaceOf(AArguments, ASession, source, table->FieldsFor(pfrFilter).size());
  TWorksheet& sheet = *book.GetSheet(index);
  if (!table->Name.IsEmpty() && sheet.Pivots().FindByName(table->Name))
    throw ECli(ecUsage, "the sheet has a pivot table \"" + AArguments.Name + "\" already; give another --name");
  if (table->Name.IsEmpty()) table->Name = FreePivotName(sheet);
  table->Dest = place;
  table->LastBody = {place.Col, place.Row, place.Col, place.Row};
  table->LayoutForm = *layout;
  table->RowGrandTotals = table->ColGrandTotals = !AArguments.NoTotals;
  TPivotTable& added = sheet.Pivots().Add(std::move(table));
  TPivotEngine::Refresh(book, sheet, added, ASession.Control());
  if (index == source.SheetIndex && added.LastBody.Intersects(source.Range))
    throw ECli(ecUsage, "the table would overwrite its own source (it takes " + Utf16ToUtf8(added.LastBody.ToA1()) +
                            "); take another --dest, or none for a new sheet");
  FinishChange(AArguments, plan, ASession, index);
  return ecDone;
}

}  // namespace tessarine::cli
