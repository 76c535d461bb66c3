#include <tessarine/io/xlsx/detail/XlsxTablesWriter.h>

#include <algorithm>

#include <tessarine/core/html/HtmlRichText.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kDefaultStyle = u"TableStyleMedium2";

/// AName with "_" for what names of tables do not have, and before what would be a cell's.
std::u16string LegalName(std::u16string_view AName) {
  std::u16string name(AName.empty() ? std::u16string_view(u"Table") : AName);
  for (char16_t& unit : name) {
    const bool isInner =
        IsAsciiLetter(unit) || IsAsciiDigit(unit) || unit == u'_' || unit == u'.' || unit == u'\\' || unit >= 0x80;
    if (!isInner) unit = u'_';
  }
  const bool isCell = (LooksLikeCellRef(name) && TCellAddress::FromA1(name).IsValid()) ||
                      EqualAsciiNoCase(name, u"R") || EqualAsciiNoCase(name, u"C");
  if (isCell || IsAsciiDigit(name.front()) || name.front() == u'.') name.insert(name.begin(), u'_');
  return name;
}

/// The text that the header over a column shows. The table may not have heard yet of the last change of the cell, and
/// other programs take a column that is not called as its header for damage.
std::u16string HeaderText(const TWorksheet& ASheet, const TSheetTable& ATable, int32_t ACol) {
  if (!ATable.HasHeaderRow()) return {};
  const TCell cell = ASheet.GetCellAt(ACol, ATable.HeaderRow());
  if (!cell.RichText.empty()) return RichTextToPlain(cell.RichText);
  return (cell.Value.Kind == cvkFormula ? cell.CachedValue : cell.Value).ToDisplayString().ToString();
}

/// ARange is the part of the table inside the sheet.
void AppendColumns(const TWorksheet& ASheet, const TSheetTable& ATable, const TCellRange& ARange, bool AIsLiteral,
                   std::string& AOut) {
  const int32_t count = ARange.EndCol - ARange.StartCol + 1;
  TXlsxNameSet names;
  AOut += "<tableColumns";
  AppendXlsxInt("count", count, AOut);
  AOut += '>';
  for (int32_t number = 1; number <= count; ++number) {
    std::u16string name = AIsLiteral ? std::u16string() : HeaderText(ASheet, ATable, ARange.StartCol + number - 1);
    if (const auto index = static_cast<size_t>(number - 1); name.empty() && index < ATable.ColumnNames().size())
      name = ATable.ColumnNames()[index];
    if (name.empty()) name = u"Column" + GeneralNumberText(number);
    AOut += "<tableColumn";
    AppendXlsxInt("id", number, AOut);
    AppendXlsxTextAttr("name", AIsLiteral ? name : names.Take(name), AOut);
    AOut += "/>";
  }
  AOut += "</tableColumns>";
}

}  // namespace

void TXlsxNameSet::Reserve(std::u16string_view AName) { FNames.insert(ToAsciiLower(AName)); }

std::u16string TXlsxNameSet::Take(std::u16string_view AName) {
  std::u16string name(AName);
  if (FNames.insert(ToAsciiLower(name)).second) return name;
  int32_t& number = FNumbers.try_emplace(ToAsciiLower(name), 1).first->second;
  do {
    name = std::u16string(AName) + GeneralNumberText(++number);
  } while (!FNames.insert(ToAsciiLower(name)).second);
  return name;
}

TXlsxTablePlan::TXlsxTablePlan(const TWorkbook& AWorkbook, bool AIsLiteral) : FIsLiteral(AIsLiteral) {
  for (const TText& name : AWorkbook.NamedFormulaNames()) FNames.Reserve(name);
}

std::vector<TXlsxTable> TXlsxTablePlan::Next(const TWorksheet& ASheet) {
  std::vector<TXlsxTable> tables;
  for (const auto& table : ASheet.Tables()) {
    if (XlsxInsideSheet(table->Ref()).StartCol < 1) continue;
    TXlsxTable entry{table.get(), FNext++, table->Name().ToString(), table->DisplayName().ToString()};
    if (!FIsLiteral) {
      entry.DisplayName = FNames.Take(LegalName(entry.DisplayName));
      const bool isSame = EqualAsciiNoCase(table->Name(), table->DisplayName());
      entry.Name = isSame ? entry.DisplayName : FNames.Take(LegalName(entry.Name));
      if (isSame && table->DisplayName().View() == entry.DisplayName) entry.Name = table->Name();
      const bool isKept = table->Name().View() == entry.Name && table->DisplayName().View() == entry.DisplayName;
      FRenamedCount += isKept ? 0 : 1;
    }
    tables.push_back(std::move(entry));
  }
  return tables;
}

std::string XlsxTablePart(const TWorksheet& ASheet, const TXlsxTable& ATable, bool AIsLiteral) {
  const TSheetTable& table = *ATable.Table;
  const TCellRange range = XlsxInsideSheet(table.Ref());
  std::string out(kXmlHead);
  ((out += "<table xmlns=\"") += kXlsxMainNamespace) += '"';
  AppendXlsxInt("id", ATable.Number, out);
  AppendXlsxTextAttr("name", ATable.Name, out);
  AppendXlsxTextAttr("displayName", ATable.DisplayName, out);
  AppendXlsxRef("ref", range, out);
  AppendXlsxBool("headerRowCount", table.HasHeaderRow(), out);
  AppendXlsxBool("totalsRowCount", table.HasTotalsRow(), out);
  out += '>';
  if (table.ShowAutoFilter() && table.HasHeaderRow()) {
    TCellRange filtered = range;
    if (table.HasTotalsRow() && filtered.EndRow > filtered.StartRow) --filtered.EndRow;
    out += "<autoFilter";
    AppendXlsxRef("ref", filtered, out);
    out += "/>";
  }
  AppendColumns(ASheet, table, range, AIsLiteral, out);
  out += "<tableStyleInfo";
  AppendXlsxTextAttr("name", table.StyleName().IsEmpty() ? kDefaultStyle : table.StyleName().View(), out);
  out += " showFirstColumn=\"0\" showLastColumn=\"0\"";
  AppendXlsxBool("showRowStripes", table.ShowRowStripes(), out);
  AppendXlsxBool("showColumnStripes", table.ShowColumnStripes(), out);
  out += "/></table>";
  return out;
}

}  // namespace tessarine::detail
