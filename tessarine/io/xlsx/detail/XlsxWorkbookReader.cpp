#include <tessarine/io/xlsx/detail/XlsxWorkbookReader.h>

#include <cstdint>
#include <utility>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxDrawings.h>
#include <tessarine/io/xlsx/detail/XlsxNames.h>
#include <tessarine/io/xlsx/detail/XlsxPivots.h>
#include <tessarine/io/xlsx/detail/XlsxSheetReader.h>
#include <tessarine/io/xlsx/detail/XlsxStringItems.h>
#include <tessarine/io/xlsx/detail/XlsxStylesReader.h>
#include <tessarine/io/xlsx/detail/XlsxTables.h>
#include <tessarine/io/xlsx/detail/XlsxTheme.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>
#include <tessarine/platform/detail/MessageText.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kWorkbookPart = "xl/workbook.xml";
constexpr int32_t kFileDpi = 96;  // what column widths in files mean

/// How much of a load the parts before the sheets are taken for.
constexpr double kLoadFrontFraction = 0.1;

/// Leaves a sheet as it was when it was added.
void EmptySheet(TWorksheet& ASheet, double ADigitWidth) {
  ASheet.ClearCells();
  ASheet.RecalcUsedBounds();
  ASheet.SetView({});
  ASheet.SetFrozenRows(0);
  ASheet.SetFrozenCols(0);
  ASheet.Merges().Clear();
  ASheet.Spills().ClearAll();
  ASheet.Hyperlinks().Clear();
  ASheet.SavedView().Clear();
  ASheet.Validations().Clear();
  ASheet.PageSetup() = TPageSetup();
  ASheet.Sizing() = TRowColSizing();
  ASheet.Sizing().SetMaxDigitWidth(ADigitWidth);
}

/// The part of a sheet; empty when nothing leads to one.
std::string SheetPart(const TXmlNode* ASheet, const TXlsxRelationships& ARelationships) {
  const TXlsxRelationship* const relationship = ARelationships.Find(XmlAttr(ASheet, "id"));
  return relationship ? XlsxWorkbookTarget(relationship->Target) : std::string();
}

TSheetVisibility VisibilityFromState(std::string_view AState) {
  if (EqualXmlNames(AState, "hidden")) return svHidden;
  return EqualXmlNames(AState, "veryHidden") ? svVeryHidden : svVisible;
}

}  // namespace

void TXlsxWorkbookReader::Read() {
  FOptions.Control.Report(ppLoading, 0);
  ReadTheme();
  ReadStyles();
  ReadStrings();
  FOptions.Control.CheckStop();
  const TByteBuffer bytes = FPackage.ReadPart(kWorkbookPart);
  if (bytes.IsEmpty()) return;
  ReadWorkbookPart(bytes.Text());
  ReadExcelPivotParts(FPackage, FWorkbook, FOptions.Report);
  ReadTessarinePivotsPart(FPackage, FWorkbook);
  if (FOptions.Report) ReportUnreadXlsxParts(FPackage, *FOptions.Report);
  FWorkbook.ClearModified();
  FOptions.Control.Report(ppLoading, 1);
}

// ---- the parts before the sheets

void TXlsxWorkbookReader::ReadTheme() {
  for (const std::string_view part : {"xl/theme/theme1.xml", "xl/theme/theme.xml"}) {
    const TByteBuffer bytes = FPackage.ReadPart(part);
    if (bytes.IsEmpty()) continue;
    ReadXlsxTheme(bytes.Text(), part, FOptions.Limits, FWorkbook.Theme());
    return;
  }
}

void TXlsxWorkbookReader::ReadStyles() {
  constexpr std::string_view kPart = "xl/styles.xml";
  TTessarineStyleSheet& styles = FWorkbook.StyleSheet();
  if (const TByteBuffer bytes = FPackage.ReadPart(kPart); !bytes.IsEmpty()) {
    styles.Clear();
    TXlsxStylesReader(styles).Load(bytes.Text(), kPart, FOptions.Limits);
  }
  FDigitWidth = TRowColSizing().MaxDigitWidth();
  if (styles.Fonts().empty()) return;
  const TCellFontInfo& font = styles.Fonts().front();
  FDigitWidth = TRowColSizing::MeasureMaxDigitWidth(font.Name, static_cast<double>(font.Size), kFileDpi);
}

void TXlsxWorkbookReader::ReadStrings() {
  constexpr std::string_view kPart = "xl/sharedStrings.xml";
  FPrefetch.Start(FirstSheetPart());
  const TByteBuffer bytes = FPackage.ReadPart(kPart);
  if (bytes.IsEmpty()) return;
  TXmlReader reader(bytes.Text(), kPart, FOptions.Limits);
  ReadXlsxSharedStrings(reader, FOptions.Control, FBudget, FStrings);
}

// ---- the workbook part

void TXlsxWorkbookReader::ReadWorkbookPart(std::string_view ABytes) {
  const TXmlTree tree(ABytes, kWorkbookPart, FOptions.Limits);
  FWorkbook.ClearSheets();
  ReadSheets(tree.Root());
  ChooseActiveSheet(tree.Root());
  ReadNames(tree.Root());
  ReportXlsxWorkbookSettings(tree.Root(), ReportFor(kWorkbookPart));
}

/// The part of the first sheet as far as that can be told before it is time for errors; empty when it cannot.
std::string TXlsxWorkbookReader::FirstSheetPart() const {
  constexpr uint64_t kSmallPart = uint64_t{256} << 10;  // to be read twice
  if (FPackage.DeclaredSize(kWorkbookPart) > kSmallPart || !FPackage.HasRoomFor(2 * kSmallPart)) return {};
  try {
    const TByteBuffer bytes = FPackage.ReadPart(kWorkbookPart);
    const TXmlTree tree(bytes.Text(), kWorkbookPart, FOptions.Limits);
    const TXmlNode* const sheet = XmlFindChild(XmlFindChild(tree.Root(), "sheets"), "sheet");
    return SheetPart(sheet, FPackage.ReadRelationships(kWorkbookPart));
  } catch (const ETessarineError&) {
    return {};  // the walk comes to this part and raises it there
  }
}

void TXlsxWorkbookReader::ReadSheets(const TXmlNode* AWorkbook) {
  const TXlsxRelationships relationships = FPackage.ReadRelationships(kWorkbookPart);
  std::vector<const TXmlNode*> sheets;
  std::vector<std::string> parts;
  for (const TXmlNode* sheet : TXmlElements(XmlFindChild(AWorkbook, "sheets"))) {
    if (!XmlLocalNameIs(sheet, "sheet")) continue;
    sheets.push_back(sheet);
    parts.push_back(SheetPart(sheet, relationships));
  }
  FSheetTotal = sheets.size();
  // A sheet without a part is an empty sheet, so entries of the archive do not bound their number.
  if (FSheetTotal > FOptions.Limits.MaxEntries) {
    throw ELimit(std::string(kWorkbookPart) + ": " + std::to_string(FSheetTotal) + " sheets, the limit is " +
                 std::to_string(FOptions.Limits.MaxEntries));
  }
  parts.emplace_back();
  for (size_t index = 0; index < sheets.size(); ++index) {
    FOptions.Control.CheckStop();
    TWorksheet& sheet = FWorkbook.AddSheet(XlsxText(XmlAttr(sheets[index], "name", "Sheet1")));
    sheet.SetVisibility(VisibilityFromState(XmlAttr(sheets[index], "state")));
    sheet.Sizing().SetMaxDigitWidth(FDigitWidth);
    if (!parts[index].empty()) LoadSheet(sheet, parts[index], parts[index + 1]);
  }
}

void TXlsxWorkbookReader::LoadSheet(TWorksheet& ASheet, const std::string& APartName, std::string_view ANextPartName) {
  ReportSheet(0, APartName);
  TXlsxBudget::Take(
      FBudget.RepeatedBytes, FPackage.NoteUse(APartName), [&] { return ForMessage(APartName); },
      "the repeated readings of parts");
  TXlsxRelationships relationships;
  const TXlsxReport report = ReportFor(FOptions.Report ? ASheet.Name().ToUtf8() : std::string());
  {
    const TByteBuffer bytes = FPrefetch.Take(APartName);
    if (bytes.IsEmpty()) return;
    FPrefetch.Start(ANextPartName);
    ReadSheetPart(ASheet, bytes.Text(), APartName, relationships, report);
  }
  ReadXlsxTables(FPackage, APartName, relationships, FBudget, ASheet, report);
  LoadSheetDrawings(FPackage, APartName, relationships, ASheet, FWorkbook.Theme(), FOptions.Report);
}

/// A throw leaves the sheet as it was added.
void TXlsxWorkbookReader::ReadSheetPart(TWorksheet& ASheet, std::string_view ABytes, const std::string& APartName,
                                        TXlsxRelationships& ARelationships, const TXlsxReport& AReport) {
  TXmlReader xml(ABytes, APartName, FOptions.Limits);
  const TXlsxCellContext context{FStrings, FWorkbook.StyleSheet(), FBudget};
  TXlsxSheetReader reader(xml, ASheet, context, FOptions.Limits, AReport);
  reader.OnProgress = [&](double AFraction) {
    FOptions.Control.CheckStop();
    ReportSheet(AFraction, APartName);
  };
  try {
    reader.Read();
    ARelationships = FPackage.ReadRelationships(APartName);
  } catch (...) {
    EmptySheet(ASheet, FDigitWidth);
    throw;
  }
  reader.ApplyLinksAndFilter(ARelationships);
  if (reader.HasCells()) ASheet.NoteBulkChange();
}

void TXlsxWorkbookReader::ReportSheet(double AFraction, std::string_view APartName) const {
  const double done = FWorkbook.SheetCount() - 1 + AFraction;
  FOptions.Control.Report(
      ppLoading, kLoadFrontFraction + (1 - kLoadFrontFraction) * done / static_cast<double>(FSheetTotal), APartName);
}

void TXlsxWorkbookReader::ChooseActiveSheet(const TXmlNode* AWorkbook) {
  const TXmlNode* const view = XmlFindChild(XmlFindChild(AWorkbook, "bookViews"), "workbookView");
  int32_t active = XmlAttrInt(view, "activeTab", -1);
  if (!FWorkbook.GetSheet(active)) {
    active = 0;
    for (int32_t index = FWorkbook.SheetCount() - 1; index >= 0; --index) {
      const TSheetSavedView& saved = FWorkbook.GetSheet(index)->SavedView();
      if (saved.HasView && saved.TabSelected) active = index;
    }
  }
  FWorkbook.SetActiveSheetIndex(active);
  FWorkbook.EnsureActiveSheetVisible();
}

void TXlsxWorkbookReader::ReadNames(const TXmlNode* AWorkbook) {
  FWorkbook.ClearNamedFormulas();
  TXlsxNames names(FWorkbook, ReportFor(kWorkbookPart));
  for (const TXmlNode* name : TXmlElements(XmlFindChild(AWorkbook, "definedNames"))) {
    if (XmlLocalNameIs(name, "definedName")) names.Read(name);
  }
  names.ApplyPrintNames();
}

}  // namespace tessarine::detail
