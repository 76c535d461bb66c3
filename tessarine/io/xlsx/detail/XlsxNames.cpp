#include <tessarine/io/xlsx/detail/XlsxNames.h>

#include <cstdint>
#include <map>
#include <utility>

#include <tessarine/core/lists/PageSetupNames.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxFormulas.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kBuiltInNamePrefix = u"_XLNM.";

/// A print name's own part; the prefix of built-in names may be missing.
std::u16string_view WithoutBuiltInPrefix(std::u16string_view ANormalized) {
  if (ANormalized.starts_with(kBuiltInNamePrefix)) ANormalized.remove_prefix(kBuiltInNamePrefix.size());
  return ANormalized;
}

}  // namespace

TXlsxNames::TXlsxNames(TWorkbook& AWorkbook, TXlsxReport AReport) : FWorkbook(AWorkbook), FReport(std::move(AReport)) {
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index) {
    TWorksheet* const sheet = FWorkbook.GetSheet(index);
    FTargets[ToAsciiLower(sheet->Name().View())].Sheets.push_back(sheet);
  }
}

void TXlsxNames::Read(const TXmlNode* AName) {
  std::u16string text = XmlNodeText16(AName);
  StripXlsxParameterPrefixes(text);
  const std::u16string_view formula = TrimSpaces(text);
  const TText name = XlsxText(XmlAttr(AName, "name"));
  if (formula.empty() || name.IsEmpty()) return;
  const std::u16string normalized = TWorkbook::NormalizeName(name);
  ReportScope(AName, normalized);
  FWorkbook.SetNamedFormula(name, formula);
  OfferPrintName(normalized, formula);
}

/// Names of sheets of their own become names of the workbook. The built-in ones go to the sheets as well.
void TXlsxNames::ReportScope(const TXmlNode* AName, const std::u16string& ANormalized) {
  if (!FReport.IsWanted() || ANormalized.starts_with(kBuiltInNamePrefix)) return;
  if (FWorkbook.FindNormalizedName(ANormalized)) {
    FReport.Drop("defined name", 1, XmlAttr(AName, "name"));
  } else if (XmlHasAttr(AName, "localSheetId")) {
    FReport.Rewrite("defined name of one sheet", 1, XmlAttr(AName, "name"));
  }
}

/// The references are put together by the sheets that they name, so each of them is looked at once.
void TXlsxNames::OfferPrintName(std::u16string_view AName, std::u16string_view AText) {
  const std::u16string_view kind = WithoutBuiltInPrefix(AName);
  const bool isArea = kind == u"PRINT_AREA";
  if (!isArea && kind != u"PRINT_TITLES") return;
  if (AText.starts_with(u'=')) AText.remove_prefix(1);
  std::map<std::u16string, std::u16string> bySheet;
  while (!AText.empty()) {
    const std::u16string_view reference = TakePrintReference(AText);
    const auto parsed = TryParseSheetRange(reference);
    if (!parsed) continue;
    std::u16string& expression = bySheet[ToAsciiLower(parsed->Sheet)];
    if (!expression.empty()) expression += u',';
    expression += reference;
  }
  for (const auto& [sheet, expression] : bySheet) {
    const auto target = FTargets.find(sheet);
    if (target == FTargets.end()) continue;
    TPageSetup& print = target->second.Print ? *target->second.Print : target->second.Print.emplace();
    (isArea ? ApplyPrintAreaExpr : ApplyPrintTitlesExpr)(print, expression, sheet);
  }
}

void TXlsxNames::ApplyPrintNames() {
  for (const auto& [name, target] : FTargets) {
    if (!target.Print) continue;
    const TPageSetup& print = *target.Print;
    for (TWorksheet* sheet : target.Sheets) {
      TPageSetup& page = sheet->PageSetup();
      if (print.HasPrintArea()) page.SetPrintArea(print.PrintArea());
      if (print.HasTitleRows()) page.SetTitleRows(print.TitleRows().StartRow, print.TitleRows().EndRow);
      if (print.HasTitleCols()) page.SetTitleCols(print.TitleCols().StartCol, print.TitleCols().EndCol);
    }
  }
}

}  // namespace tessarine::detail
