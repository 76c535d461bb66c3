#include <tessarine/io/xlsx/detail/XlsxNamesWriter.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/PageSetupNames.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxFormulaWriter.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kPrintArea = u"_xlnm.Print_Area";
constexpr std::u16string_view kPrintTitles = u"_xlnm.Print_Titles";

/// Names that spreadsheets know by themselves, in the spelling of the files.
constexpr std::u16string_view kBuiltInNames[] = {
    kPrintArea,        kPrintTitles,         u"_xlnm._FilterDatabase",
    u"_xlnm.Criteria", u"_xlnm.Extract",     u"_xlnm.Consolidate_Area",
    u"_xlnm.Database", u"_xlnm.Sheet_Title",
};

std::u16string AreaText(const TWorksheet& ASheet, std::u16string_view ASheetName) {
  const TPageSetup& setup = ASheet.PageSetup();
  return setup.HasPrintArea() ? FormatPrintAreaExpr(ASheetName, setup.PrintArea()) : std::u16string();
}

std::u16string TitlesText(const TWorksheet& ASheet, std::u16string_view ASheetName) {
  const TPageSetup& setup = ASheet.PageSetup();
  return FormatPrintTitlesExpr(ASheetName, setup.HasTitleCols(), setup.TitleCols(), setup.HasTitleRows(),
                               setup.TitleRows());
}

/// The texts of all sheets, joined by commas.
template <class TTextOf>
std::u16string JoinedText(const TWorkbook& AWorkbook, TTextOf&& ATextOf) {
  std::u16string all;
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    const std::u16string text = ATextOf(*AWorkbook.GetSheet(index));
    if (text.empty()) continue;
    if (!all.empty()) all += u',';
    all += text;
  }
  return all;
}

/// The same texts with the sheets' names quoted as formulas quote them, which is more often.
std::u16string QuotedAreas(const TWorkbook& AWorkbook) {
  return JoinedText(AWorkbook, [](const TWorksheet& ASheet) {
    const std::u16string text = AreaText(ASheet, {});
    return text.empty() ? text : QuoteSheetName(ASheet.Name()) + text;
  });
}

std::u16string QuotedTitles(const TWorkbook& AWorkbook) {
  return JoinedText(AWorkbook, [](const TWorksheet& ASheet) {
    // Without a sheet the two references read "!$A:$B,!$1:$2".
    const std::u16string name = QuoteSheetName(ASheet.Name());
    std::u16string text;
    for (const char16_t unit : TitlesText(ASheet, {})) {
      if (unit == u'!') text += name;
      text += unit;
    }
    return text;
  });
}

void SetOrRemove(TWorkbook& AWorkbook, std::u16string_view AName, std::u16string_view AText) {
  const std::optional<TText> now = AWorkbook.FindNamedFormula(AName);
  if (AText.empty()) {
    AWorkbook.RemoveNamedFormula(AName);
  } else if (!now || now->View() != std::u16string(u"=").append(AText)) {
    AWorkbook.SetNamedFormula(AName, AText);
  }
}

/// The number of the sheet that a name of one sheet's own belongs to.
std::optional<int32_t> ScopeOf(const TWorkbook& AWorkbook, std::u16string_view AName, std::u16string_view AText) {
  if (!EqualAsciiNoCase(AName, kBuiltInNames[2])) return {};
  const auto range = TryParseSheetRange(AText);
  const int32_t sheet = range ? AWorkbook.FindSheetIndex(range->Sheet) : -1;
  return sheet >= 0 ? std::optional(sheet) : std::nullopt;
}

}  // namespace

void FoldXlsxPrintNames(TWorkbook& AWorkbook) {
  for (const std::u16string_view name : {u"Print_Area", u"Print_Titles"}) AWorkbook.RemoveNamedFormula(name);
  SetOrRemove(AWorkbook, kPrintArea,
              JoinedText(AWorkbook, [](const TWorksheet& ASheet) { return AreaText(ASheet, ASheet.Name()); }));
  SetOrRemove(AWorkbook, kPrintTitles,
              JoinedText(AWorkbook, [](const TWorksheet& ASheet) { return TitlesText(ASheet, ASheet.Name()); }));
}

void AppendXlsxNames(const TWorkbook& AWorkbook, bool AIsLiteral, std::string& AOut) {
  std::string names;
  for (const TText& name : AWorkbook.NamedFormulaNames()) {
    const auto* const known = std::find_if(std::begin(kBuiltInNames), std::end(kBuiltInNames),
                                           [&](std::u16string_view AKnown) { return EqualAsciiNoCase(AKnown, name); });
    const std::u16string_view shown = known == std::end(kBuiltInNames) ? name.View() : *known;
    std::u16string text = AWorkbook.FindNamedFormula(name).value_or(TText()).ToString();
    if (text.starts_with(u'=')) text.erase(0, 1);
    if (shown == kPrintArea) text = QuotedAreas(AWorkbook);
    if (shown == kPrintTitles) text = QuotedTitles(AWorkbook);
    if (text.empty()) continue;
    names += "<definedName";
    AppendXlsxTextAttr("name", shown, names);
    if (const auto scope = ScopeOf(AWorkbook, shown, text)) {
      AppendXlsxInt("localSheetId", *scope, names);
      AppendXlsxWord("hidden", "1", names);
    }
    names += '>';
    AppendXlsxString(AIsLiteral ? text : XlsxFormulaText(text), names);
    names += "</definedName>";
  }
  if (!names.empty()) ((AOut += "<definedNames>") += names) += "</definedNames>";
}

}  // namespace tessarine::detail
