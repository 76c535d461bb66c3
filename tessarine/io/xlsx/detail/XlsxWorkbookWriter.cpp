#include <tessarine/io/xlsx/detail/XlsxWorkbookWriter.h>

#include <algorithm>
#include <ctime>
#include <utility>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/detail/XlsxDrawings.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/io/xlsx/detail/XlsxNamesWriter.h>
#include <tessarine/io/xlsx/detail/XlsxPivots.h>
#include <tessarine/io/xlsx/detail/XlsxReportWriter.h>
#include <tessarine/io/xlsx/detail/XlsxSheetWriter.h>
#include <tessarine/io/xlsx/detail/XlsxStringsWriter.h>
#include <tessarine/io/xlsx/detail/XlsxStylesWriter.h>
#include <tessarine/io/xlsx/detail/XlsxThemeWriter.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/ZipWriter.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kContentTypesName = "[Content_Types].xml";
constexpr std::string_view kRootRelationshipsName = "_rels/.rels";
constexpr std::string_view kWorkbookName = "xl/workbook.xml";
constexpr std::string_view kWorkbookRelationshipsName = "xl/_rels/workbook.xml.rels";
constexpr std::string_view kThemeName = "xl/theme/theme1.xml";
constexpr std::string_view kCoreName = "docProps/core.xml";
constexpr std::string_view kAppName = "docProps/app.xml";
constexpr std::string_view kStylesName = "xl/styles.xml";
constexpr std::string_view kStringsName = "xl/sharedStrings.xml";

/// Ids that leave room for the sheets' own below them.
constexpr int32_t kThemeId = 997;
constexpr int32_t kStringsId = 998;
constexpr int32_t kStylesId = 999;

constexpr double kSaveFrontFraction = 0.2;  // of a save, what comes before the sheets

std::string RelationshipId(int32_t ANumber) { return "rId" + std::to_string(ANumber); }
std::string SheetName(int32_t ANumber) { return "xl/worksheets/sheet" + std::to_string(ANumber) + ".xml"; }
std::string SheetRelationshipsName(int32_t ANumber) {
  return "xl/worksheets/_rels/sheet" + std::to_string(ANumber) + ".xml.rels";
}
std::string TableName(int32_t ANumber) { return "xl/tables/table" + std::to_string(ANumber) + ".xml"; }

/// The universal date and time now.
double UniversalNow() {
  constexpr double kSerialOf1970 = 25569;
  constexpr double kSecondsPerDay = 86400;
  return kSerialOf1970 + static_cast<double>(std::time(nullptr)) / kSecondsPerDay;
}

std::vector<int32_t> NumbersOf(const std::vector<TXlsxTable>& ATables) {
  std::vector<int32_t> numbers;
  numbers.reserve(ATables.size());
  for (const TXlsxTable& table : ATables) numbers.push_back(table.Number);
  return numbers;
}

std::string_view StateWord(TSheetVisibility AVisibility) {
  switch (AVisibility) {
    case svVisible: break;
    case svHidden: return "hidden";
    case svVeryHidden: return "veryHidden";
  }
  return {};
}

}  // namespace

TXlsxWorkbookWriter::TXlsxWorkbookWriter(TWorkbook& AWorkbook, IWriteStream& AStream, const TXlsxWriteOptions& AOptions)
    : FWorkbook(AWorkbook),
      FStream(AStream),
      FOptions(AOptions),
      FTime(AOptions.Time && DecodeDate(*AOptions.Time).Year > 0 ? *AOptions.Time : UniversalNow()) {}

TXlsxWorkbookWriter::~TXlsxWorkbookWriter() = default;

void TXlsxWorkbookWriter::Write() {
  FOptions.Control.CheckStop();
  FOptions.Control.Report(ppSaving, 0);
  FSheets.resize(static_cast<size_t>(FWorkbook.SheetCount()));
  PlanCells();
  FoldXlsxPrintNames(FWorkbook);
  EnsureWorkbookDrawingBagsFromOverlays(FWorkbook, FOptions.Report);
  FPivots = TessarinePivotsPart(FWorkbook).value_or(std::string());
  PlanParts();
  TZipWriter zip(FStream, {.Level = FOptions.DeflateLevel, .Time = FTime});
  WriteFront(zip);
  WriteSheets(zip);
  if (!FPivots.empty()) zip.Add(kXlsxPivotsPart, std::move(FPivots));
  zip.Finish();
  if (FOptions.Report) ReportXlsxWorkbookLosses(FWorkbook, *FOptions.Report);
  FWorkbook.ClearModified();
  FOptions.Control.Report(ppSaving, 1);
}

// ---- decisions

void TXlsxWorkbookWriter::PlanCells() {
  TXlsxPlanWriter planner(FWorkbook, FStrings, FOptions.Literal);
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index)
    FSheets[static_cast<size_t>(index)].Cells = planner.Run(*FWorkbook.GetSheet(index), FOptions.Control);
  FHasSpareStyle = planner.HasStrayStyle() && !FOptions.Literal;
}

void TXlsxWorkbookWriter::PlanParts() {
  TXlsxTablePlan tables(FWorkbook, FOptions.Literal);
  for (size_t index = 0; index < FSheets.size(); ++index)
    FSheets[index].Tables = tables.Next(*FWorkbook.GetSheet(static_cast<int32_t>(index)));
  TXlsxBagPlan bags;
  ReserveNames(bags);
  for (size_t index = 0; index < FSheets.size(); ++index) {
    TSheetPlan& plan = FSheets[index];
    const TWorksheet& sheet = *FWorkbook.GetSheet(static_cast<int32_t>(index));
    plan.Bag = bags.Next(sheet.Drawings().Bag());
    plan.Links = XlsxSheetLinks(sheet.Hyperlinks());
    plan.Relationships = std::make_unique<TXlsxSheetRelationships>(
        sheet.Drawings().Bag().SheetRelId(), plan.Bag.Drawing, plan.Links, NumbersOf(plan.Tables));
    if (FOptions.Report)
      FOptions.Report->Add("drawing part", ffDropped, sheet.Name().ToUtf8(), plan.Bag.LeftOut, "its name is taken");
  }
  if (FOptions.Report) FOptions.Report->Add("table name", ffRewritten, {}, tables.RenamedCount());
}

/// The names of all parts that are made here: nothing in a bag may have one of them.
void TXlsxWorkbookWriter::ReserveNames(TXlsxBagPlan& ABags) const {
  for (const std::string_view name :
       {kContentTypesName, kRootRelationshipsName, kWorkbookName, kWorkbookRelationshipsName, kThemeName, kCoreName,
        kAppName, kStylesName, kStringsName, kXlsxPivotsPart})
    ABags.Reserve(name);
  for (int32_t number = 1; number <= FWorkbook.SheetCount(); ++number) {
    ABags.Reserve(SheetName(number));
    ABags.Reserve(SheetRelationshipsName(number));
    for (const TXlsxTable& table : FSheets[static_cast<size_t>(number - 1)].Tables)
      ABags.Reserve(TableName(table.Number));
  }
}

/// With too many sheets for the fixed ids the next free ones.
TXlsxWorkbookWriter::TWorkbookIds TXlsxWorkbookWriter::WorkbookIds() const {
  const int32_t count = FWorkbook.SheetCount();
  const int32_t shift = count < kThemeId || FOptions.Literal ? 0 : count + 1 - kThemeId;
  return {RelationshipId(kThemeId + shift), RelationshipId(kStringsId + shift), RelationshipId(kStylesId + shift)};
}

// ---- writing

void TXlsxWorkbookWriter::WriteFront(TZipWriter& AZip) {
  AZip.Add(kContentTypesName, ContentTypesPart());
  AZip.Add(kRootRelationshipsName, RootRelationshipsPart());
  AZip.Add(kWorkbookName, WorkbookPart());
  AZip.Add(kWorkbookRelationshipsName, WorkbookRelationshipsPart());
  AZip.Add(kThemeName, XlsxThemePart(FWorkbook.Theme()));
  AZip.Add(kCoreName, XlsxCorePropertiesPart(FTime));
  AZip.Add(kAppName, XlsxAppPropertiesPart());
  AZip.Add(kStylesName, TXlsxStylesWriter(FWorkbook.StyleSheet(), FHasSpareStyle, FOptions.Literal).Part());
  if (FStrings.Count() > 0) AZip.Add(kStringsName, XlsxStringsPart(FStrings, FOptions.Control));
}

void TXlsxWorkbookWriter::WriteSheets(TZipWriter& AZip) {
  // An empty sheet is some work, too.
  const auto workOf = [&](int32_t AIndex) {
    return static_cast<double>(FWorkbook.GetSheet(AIndex)->Store().CellCount()) + 1;
  };
  double all = 0;
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index) all += workOf(index);
  double done = 0;
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index) {
    TSheetPlan& plan = FSheets[static_cast<size_t>(index)];
    AZip.Add(SheetName(index + 1), SheetPart(index, done, all));
    for (const TXlsxBagParts::TPart& part : plan.Bag.Parts) AZip.Add(part.Name, part.Content);
    for (const TXlsxTable& table : plan.Tables)
      AZip.Add(TableName(table.Number), XlsxTablePart(*FWorkbook.GetSheet(index), table, FOptions.Literal));
    if (!plan.Relationships->IsEmpty()) AZip.Add(SheetRelationshipsName(index + 1), plan.Relationships->Part());
    plan = {};
    done += workOf(index);
  }
}

std::string TXlsxWorkbookWriter::SheetPart(int32_t AIndex, double ADoneCells, double AAllCells) {
  const TWorksheet& sheet = *FWorkbook.GetSheet(AIndex);
  const TSheetPlan& plan = FSheets[static_cast<size_t>(AIndex)];
  const double cells = static_cast<double>(sheet.Store().CellCount());
  const std::string name = sheet.Name().ToUtf8();
  const auto report = [&](double AFraction) {
    FOptions.Control.CheckStop();
    const double done = (ADoneCells + AFraction * cells) / AAllCells;
    FOptions.Control.Report(ppSaving, kSaveFrontFraction + (1 - kSaveFrontFraction) * done, name);
  };
  report(0);
  TXlsxSheetWriter writer(FWorkbook, sheet,
                          {.Relationships = *plan.Relationships,
                           .Links = plan.Links,
                           .Cells = plan.Cells,
                           .StyleCount = FWorkbook.StyleSheet().Count(),
                           .IsActive = AIndex == FWorkbook.ActiveSheetIndex(),
                           .IsLiteral = FOptions.Literal});
  std::string part = writer.Part(report);
  if (FOptions.Report) ReportXlsxSheetLosses(sheet, plan.Cells, writer.Losses(), *FOptions.Report);
  return part;
}

// ---- small parts

std::string TXlsxWorkbookWriter::ContentTypesPart() const {
  TXlsxContentTypes types;
  types.AddDefault("rels", "application/vnd.openxmlformats-package.relationships+xml");
  types.AddDefault("xml", "application/xml");
  types.AddDefault("json", "application/json");
  types.AddOverride(kCoreName, "application/vnd.openxmlformats-package.core-properties+xml");
  types.AddOverride(kAppName, "application/vnd.openxmlformats-officedocument.extended-properties+xml");
  types.AddOverride(kWorkbookName, "sheet.main+xml");
  for (int32_t number = 1; number <= FWorkbook.SheetCount(); ++number)
    types.AddOverride(SheetName(number), "worksheet+xml");
  types.AddOverride(kStylesName, "styles+xml");
  types.AddOverride(kThemeName, "application/vnd.openxmlformats-officedocument.theme+xml");
  if (FStrings.Count() > 0) types.AddOverride(kStringsName, "sharedStrings+xml");
  for (const TSheetPlan& plan : FSheets) {
    for (const TXlsxTable& table : plan.Tables) types.AddOverride(TableName(table.Number), "table+xml");
  }
  for (const TSheetPlan& plan : FSheets) types.AddBag(plan.Bag);
  return types.Part();
}

std::string TXlsxWorkbookWriter::RootRelationshipsPart() const {
  TXlsxRelationshipPart part;
  part.Add(RelationshipId(1), "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties",
           Utf8ToUtf16(kCoreName));
  part.Add(RelationshipId(2), "extended-properties", Utf8ToUtf16(kAppName));
  part.Add(RelationshipId(3), "officeDocument", Utf8ToUtf16(kWorkbookName));
  return part.Part();
}

std::string TXlsxWorkbookWriter::WorkbookPart() const {
  std::string out(kXmlHead);
  ((out += "<workbook xmlns=\"") += kXlsxMainNamespace) += "\" xmlns:r=\"";
  (out += kXlsxDocumentRelationships) += "\"><bookViews><workbookView";
  AppendXlsxInt("activeTab", std::max(FWorkbook.ActiveSheetIndex(), 0), out);
  out += "/></bookViews><sheets>";
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index) {
    const TWorksheet& sheet = *FWorkbook.GetSheet(index);
    out += "<sheet";
    AppendXlsxTextAttr("name", sheet.Name(), out);
    AppendXlsxInt("sheetId", index + 1, out);
    if (const std::string_view state = StateWord(sheet.Visibility()); !state.empty())
      AppendXlsxWord("state", state, out);
    AppendXlsxWord("r:id", RelationshipId(index + 1), out);
    out += "/>";
  }
  out += "</sheets>";
  AppendXlsxNames(FWorkbook, FOptions.Literal, out);
  return out += "</workbook>";
}

std::string TXlsxWorkbookWriter::WorkbookRelationshipsPart() const {
  TXlsxRelationshipPart part;
  for (int32_t number = 1; number <= FWorkbook.SheetCount(); ++number) {
    part.Add(RelationshipId(number), "worksheet", Utf8ToUtf16("worksheets/sheet" + std::to_string(number) + ".xml"));
  }
  const TWorkbookIds ids = WorkbookIds();
  part.Add(ids.Styles, "styles", u"styles.xml");
  part.Add(ids.Strings, "sharedStrings", u"sharedStrings.xml");
  part.Add(ids.Theme, "theme", u"theme/theme1.xml");
  return part.Part();
}

}  // namespace tessarine::detail
