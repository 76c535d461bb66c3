#include <tessarine/io/ods/detail/OdsDocumentReader.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/ods/detail/OdsAddress.h>
#include <tessarine/io/ods/detail/OdsExactMarks.h>
#include <tessarine/io/ods/detail/OdsFormula.h>
#include <tessarine/io/ods/detail/OdsSheetReader.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/io/xlsx/detail/XlsxTheme.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kStylesPart = "styles.xml";
constexpr std::string_view kContentPart = "content.xml";

/// Elements of a spreadsheet that have no sheets inside, or only copies of foreign ones.
bool IsPassedOver(const TXmlReader& AReader) {
  static constexpr std::string_view kNames[] = {
      "dde-links", "calculation-settings", "consolidation", "label-ranges", "forms", "scenario", "table-template"};
  return std::any_of(std::begin(kNames), std::end(kNames),
                     [&](std::string_view AName) { return AReader.LocalNameIs(AName); });
}

}  // namespace

TOdsDocumentReader::TOdsDocumentReader(TWorkbook& AWorkbook, const TXlsxPackage& APackage,
                                       const TOdsReadOptions& AOptions)
    : FWorkbook(AWorkbook),
      FPackage(APackage),
      FOptions(AOptions),
      FStyles(AOptions.Limits, AOptions.FontInstalled, &AWorkbook.Theme()),
      FFormats(FStyles, AWorkbook.StyleSheet()),
      FContext{AOptions, FStyles, FFormats, FBudget},
      FValidations(FContext),
      FDrawings(FContext) {}

void TOdsDocumentReader::Read() {
  FOptions.Control.Report(ppLoading, 0);
  if (const TByteBuffer bytes = FPackage.ReadPart(kOdsThemePart); !bytes.IsEmpty())
    ReadXlsxTheme(bytes.Text(), kOdsThemePart, FOptions.Limits, FWorkbook.Theme());
  if (const TByteBuffer bytes = FPackage.ReadPart(kStylesPart); !bytes.IsEmpty())
    FStyles.LoadPart(bytes.Text(), kStylesPart);
  FOptions.Control.CheckStop();
  if (ReadContent()) Apply();
  FWorkbook.ClearModified();
  FOptions.Control.Report(ppLoading, 1);
}

/// False when there is no content. A throw leaves a new workbook: a part counts whole or not at all.
bool TOdsDocumentReader::ReadContent() {
  const TByteBuffer bytes = FPackage.ReadPart(kContentPart);
  if (bytes.IsEmpty()) return false;
  try {
    FWorkbook.ClearSheets();
    TXmlReader reader(bytes.Text(), kContentPart, FOptions.Limits);
    bool hasBody = false;
    for (TXmlEvent event = reader.Next(); event != xeEnd; event = reader.Next()) {
      if (event != xeStartElement || reader.Depth() == 1) continue;
      if (reader.Depth() == 2 && !hasBody && reader.LocalNameIs("body")) {
        hasBody = true;
      } else if (reader.Depth() == 3 && reader.LocalNameIs("spreadsheet") && FWorkbook.SheetCount() == 0) {
        ReadSpreadsheet(reader);
      } else if (reader.Depth() == 2) {
        FStyles.ReadSection(reader);
      } else {
        reader.SkipElement();
      }
    }
    if (FWorkbook.SheetCount() == 0) FWorkbook.AddSheet(u"Sheet1");
  } catch (...) {
    FWorkbook.NewWorkbook();
    throw;
  }
  return true;
}

void TOdsDocumentReader::ReadSpreadsheet(TXmlReader& AReader) {
  FContext.StandardArrays = AReader.FindAttribute("arrays") == std::optional<std::string_view>("standard");
  const size_t depth = AReader.Depth();
  for (TXmlEvent event = AReader.Next(); event != xeEnd; event = AReader.Next()) {
    if (event == xeEndElement && AReader.Depth() == depth) return;
    if (event == xeStartElement) ReadElement(AReader);
  }
}

/// Elements that are not known here are opened: sheets may stand inside.
void TOdsDocumentReader::ReadElement(TXmlReader& AReader) {
  if (AReader.LocalNameIs("table")) return ReadSheet(AReader);
  if (AReader.LocalNameIs("content-validations"))
    return FValidations.ReadRules(TXmlTree(AReader, FOptions.Limits).Root());
  if (AReader.LocalNameIs("named-expressions")) return ReadNames(TXmlTree(AReader, FOptions.Limits).Root(), FNames);
  if (AReader.LocalNameIs("database-ranges")) return ReadDatabaseRanges(TXmlTree(AReader, FOptions.Limits).Root());
  if (AReader.LocalNameIs("data-pilot-tables")) return ReportRest(AReader, "pivot table");
  if (AReader.LocalNameIs("tracked-changes")) return ReportRest(AReader, "tracked change");
  if (IsPassedOver(AReader)) AReader.SkipElement();
}

/// Passes over an element and counts its children as dropped.
void TOdsDocumentReader::ReportRest(TXmlReader& AReader, std::string_view AFeature) {
  uint64_t count = 0;
  for (TXmlEvent event = AReader.Next(); event != xeEndElement && event != xeEnd; event = AReader.Next()) {
    if (event != xeStartElement) continue;
    ++count;
    AReader.SkipElement();
  }
  FContext.ReportDropped(AFeature, kContentPart, count);
}

void TOdsDocumentReader::ReadSheet(TXmlReader& AReader) {
  FOptions.Control.CheckStop();
  const int32_t index = FWorkbook.SheetCount();
  if (static_cast<uint32_t>(index) >= FOptions.Limits.MaxEntries) {
    throw ELimit(std::string(kContentPart) + ": more sheets than the limit of " +
                 std::to_string(FOptions.Limits.MaxEntries));
  }
  const auto name = AReader.FindAttribute("name");
  TWorksheet& sheet = name ? FWorkbook.AddSheet(*name) : FWorkbook.AddSheet("Sheet" + std::to_string(index + 1));
  FValidations.BeginSheet(index);
  TOdsSheetReader reader(AReader, sheet, FContext, FValidations, FDrawings);
  reader.OnProgress = [&](double AFraction) {
    FOptions.Control.CheckStop();
    FOptions.Control.Report(ppLoading, AFraction, kContentPart);
  };
  reader.OnNames = [&] { ReadNames(TXmlTree(AReader, FOptions.Limits).Root(), FSheetNames); };
  reader.Read();
  if (reader.HasCells()) FFilledSheets.push_back(&sheet);
}

void TOdsDocumentReader::ReadNames(const TXmlNode* ANode, std::vector<TName>& ANames) {
  for (const TXmlNode* node : TXmlElements(ANode)) {
    const TText name = TText::FromUtf8(XmlAttr(node, "name"));
    if (XmlLocalNameIs(node, "named-expression")) {
      ANames.push_back(
          {name, TText(OdsFormulaToExcel(Utf8ToUtf16(XmlAttr(node, "expression")), FContext.StandardArrays))});
    } else if (XmlLocalNameIs(node, "named-range")) {
      const auto reference = OdsAddressToExcel(Utf8ToUtf16(XmlAttr(node, "cell-range-address")));
      if (reference) {
        ANames.push_back({name, TText(u"=" + *reference)});
      } else {
        FContext.ReportDropped("name", kContentPart, 1, XmlAttr(node, "name"));
      }
    }
  }
}

void TOdsDocumentReader::ReadDatabaseRanges(const TXmlNode* ANode) {
  for (const TXmlNode* node : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(node, "database-range")) continue;
    auto target = OdsParseSheetRangeAddress(Utf8ToUtf16(XmlAttr(node, "target-range-address")));
    if (!target) continue;
    TDatabaseRange range;
    range.Name = Utf8ToUtf16(XmlAttr(node, "name"));
    if (range.Name.empty()) range.Name = u"Table" + GeneralNumberText(static_cast<double>(FDatabaseRanges.size() + 1));
    range.Sheet = std::move(target->Sheet);
    range.Range = target->Range;
    range.HasHeader = XmlAttr(node, "contains-header", "true") != "false";
    range.HasButtons = XmlAttr(node, "display-filter-buttons") == "true";
    range.IsTable = XmlAttr(node, "no-table") != "true";
    if (XmlFindChild(node, "filter")) FContext.ReportDropped("filter criterion", Utf16ToUtf8(range.Sheet));
    FDatabaseRanges.push_back(std::move(range));
  }
}

// ---- what follows the content

void TOdsDocumentReader::Apply() {
  for (TWorksheet* const sheet : FFilledSheets) sheet->NoteBulkChange();
  FContext.ReportDropped("conditional format", kContentPart, FStyles.ConditionCount());
  FValidations.Apply(FWorkbook);
  FWorkbook.ClearNamedFormulas();
  for (const std::vector<TName>* const names : {&FSheetNames, &FNames})
    for (const TName& name : *names) FWorkbook.SetNamedFormula(name.Name, name.Formula);
  ApplyDatabaseRanges();
  FDrawings.Apply(FPackage);
  FWorkbook.SetActiveSheetIndex(0);
  FWorkbook.EnsureActiveSheetVisible();
}

void TOdsDocumentReader::ApplyDatabaseRanges() {
  for (const TDatabaseRange& range : FDatabaseRanges) {
    TWorksheet* sheet = FWorkbook.FindSheet(range.Sheet);
    if (!sheet) sheet = FWorkbook.ActiveSheet() ? FWorkbook.ActiveSheet() : FWorkbook.GetSheet(0);
    if (range.HasButtons) sheet->AutoFilter().Enable(range.Range);
    if (!range.IsTable) continue;
    TXlsxBudget::Take(
        FBudget.TableColumns, static_cast<size_t>(range.Range.Width()), [] { return std::string(kContentPart); },
        "the columns of tables");
    TSheetTable& table = sheet->Tables().Add(TText(range.Name), range.Range);
    table.SetHasHeaderRow(range.HasHeader);
    table.SetShowAutoFilter(range.HasButtons);
  }
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index)
    if (!FWorkbook.GetSheet(index)->Tables().IsEmpty()) FWorkbook.GetSheet(index)->RefreshTableColumnNames();
}

}  // namespace tessarine::detail
