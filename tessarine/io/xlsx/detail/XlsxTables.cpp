#include <tessarine/io/xlsx/detail/XlsxTables.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxAutoFilter.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>
#include <tessarine/platform/XmlTree.h>
#include <tessarine/platform/detail/MessageText.h>

namespace tessarine::detail {

namespace {

/// Whether a relationship's type speaks of a table, in any of the namespaces that files use.
bool IsTableType(std::string_view AType) {
  constexpr std::string_view kMark = "/table";
  for (size_t at = 0; at + kMark.size() <= AType.size(); ++at) {
    if (EqualXmlNames(AType.substr(at, kMark.size()), kMark)) return true;
  }
  return false;
}

std::vector<TText> ReadColumnNames(const TXmlNode* AColumns) {
  std::vector<TText> names;
  for (const TXmlNode* column : TXmlElements(AColumns)) {
    if (!XmlLocalNameIs(column, "tableColumn")) continue;
    const std::string standIn = "Column" + std::to_string(names.size() + 1);
    names.push_back(XlsxText(XmlAttr(column, "name", standIn)));
  }
  return names;
}

/// What a table puts into new rows and its totals by itself.
void ReportColumnFormulas(const TXmlNode* AColumns, const TXlsxReport& AReport) {
  uint64_t count = 0;
  for (const TXmlNode* column : TXmlElements(AColumns)) {
    if (XmlFindChild(column, "calculatedColumnFormula")) ++count;
    if (XmlHasAttr(column, "totalsRowFunction")) ++count;
  }
  AReport.Drop("column formula of a table", count, "its cells have theirs");
}

void ApplyStyle(const TXmlNode* AStyle, TSheetTable& ATable) {
  if (!AStyle) return;
  ATable.SetStyleName(XlsxText(XmlAttr(AStyle, "name")));
  if (XmlHasAttr(AStyle, "showRowStripes"))
    ATable.SetShowRowStripes(XlsxAttrIsOn(AStyle->Attributes, "showRowStripes"));
  if (XmlHasAttr(AStyle, "showColumnStripes"))
    ATable.SetShowColumnStripes(XlsxAttrIsOn(AStyle->Attributes, "showColumnStripes"));
}

/// The filter of a table part: a direct child of the root.
TXlsxAutoFilter ReadTableFilter(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits,
                                const TXlsxReport& AReport) {
  TXmlReader reader(ABytes, APartName, ALimits);
  for (TXmlEvent event = reader.Next(); event != xeEnd; event = reader.Next()) {
    if (event != xeStartElement || reader.Depth() == 1) continue;
    if (reader.LocalNameIs("autoFilter")) return ReadXlsxAutoFilter(reader, ALimits.MaxXmlTreeNodes, AReport);
    reader.SkipElement();
  }
  return {};
}

/// Without a range of its own the filter covers the table but for its totals.
void ApplyTableFilter(const TXlsxAutoFilter& AFilter, const TSheetTable& ATable, TWorksheet& ASheet,
                      const TXlsxReport& AReport) {
  TSheetAutoFilter& target = ASheet.AutoFilter();
  TCellRange range = AFilter.Range;
  if (!XlsxIsRange(range)) {
    range = ATable.Ref();
    if (ATable.HasTotalsRow() && range.EndRow > range.StartRow) --range.EndRow;
  }
  if (target.IsEnabled() && target.Range() != range.Normalize())
    AReport.Drop("filter", 1, "a sheet has one, the last table's");
  AFilter.ApplyTo(range, target);
}

/// The table, or null when the part lacks what one needs.
TSheetTable* ReadTable(const TXmlNode* ARoot, std::string_view APartName, TXlsxBudget& ABudget, TWorksheet& ASheet) {
  const std::string_view name = XmlAttr(ARoot, "name");
  const TCellRange range = XlsxRange(XmlAttr(ARoot, "ref"));
  if (name.empty() || !XlsxIsRange(range)) return nullptr;
  std::vector<TText> columns = ReadColumnNames(XmlFindChild(ARoot, "tableColumns"));
  TXlsxBudget::Take(
      ABudget.TableColumns, std::max(static_cast<size_t>(range.Width()), columns.size()),
      [&] { return ForMessage(APartName); }, "the columns of all tables");
  auto table = std::make_unique<TSheetTable>(XlsxText(name), range);
  table->SetDisplayName(XlsxText(XmlAttr(ARoot, "displayName", name)));
  table->SetHasHeaderRow(XmlAttrInt(ARoot, "headerRowCount", 1) > 0);
  table->SetHasTotalsRow(XmlAttrInt(ARoot, "totalsRowCount", 0) > 0);
  table->SetShowAutoFilter(XmlFindChild(ARoot, "autoFilter") != nullptr);
  ApplyStyle(XmlFindChild(ARoot, "tableStyleInfo"), *table);
  table->SetColumnNames(std::move(columns));
  return &ASheet.Tables().Add(std::move(table));
}

}  // namespace

void ReadXlsxTables(const TXlsxPackage& APackage, std::string_view ASheetPart, const TXlsxRelationships& ARelationships,
                    TXlsxBudget& ABudget, TWorksheet& ASheet, const TXlsxReport& AReport) {
  for (const TXlsxRelationship& relationship : ARelationships) {
    if (!IsTableType(relationship.Type)) continue;
    const std::string part = XlsxResolveTarget(ASheetPart, relationship.Target);
    TXlsxBudget::Take(
        ABudget.RepeatedBytes, APackage.NoteUse(part), [&] { return ForMessage(part); },
        "the repeated readings of parts");
    const TByteBuffer bytes = APackage.ReadPart(part);
    if (bytes.IsEmpty()) continue;
    const TXmlTree tree(bytes.Text(), part, APackage.Limits());
    const TSheetTable* const table = ReadTable(tree.Root(), part, ABudget, ASheet);
    if (table && AReport.IsWanted()) ReportColumnFormulas(XmlFindChild(tree.Root(), "tableColumns"), AReport);
    if (!table || !table->ShowAutoFilter() || !table->HasHeaderRow()) continue;
    const TXlsxAutoFilter filter = ReadTableFilter(bytes.Text(), part, APackage.Limits(), AReport);
    ApplyTableFilter(filter, *table, ASheet, AReport);
  }
  ASheet.RefreshTableColumnNames();
}

}  // namespace tessarine::detail
