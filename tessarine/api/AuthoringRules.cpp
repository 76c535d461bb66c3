#include <algorithm>
#include <string>
#include <utility>

#include <tessarine/api/AuthoringSheet.h>
#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/api/detail/RangeEdits.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/AutoFiltering.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

// ---- tables

/// The name for a new table, which no table of the workbook has yet.
TText TAuthoringSheet::FreeTableName(std::u16string_view AName) const {
  size_t count = 0;
  for (int32_t index = 0; index < FWorkbook->SheetCount(); ++index)
    count += FWorkbook->GetSheet(index)->Tables().Count();
  const std::u16string_view given = TrimSpaces(AName);
  TText name = given.empty() ? TText(u"Table" + GeneralNumberText(static_cast<double>(count + 1))) : TText(given);
  for (int32_t index = 0; index < FWorkbook->SheetCount(); ++index) {
    if (FWorkbook->GetSheet(index)->Tables().FindByName(name))
      throw EArgument("Table name already exists: " + name.ToUtf8());
  }
  return name;
}

TSheetTable& TAuthoringSheet::AddTableOver(TText AName, const TCellRange& ARange, bool AHasHeader,
                                           bool AShowFilter) const {
  TSheetTable& table = FSheet->Tables().Add(std::move(AName), ARange);
  table.SetHasHeaderRow(AHasHeader);
  table.SetShowAutoFilter(AShowFilter);
  if (AHasHeader) {
    FSheet->RefreshTableColumnNames();
  } else {
    std::vector<TText> names;
    for (int32_t position = 1; position <= table.ColumnCount(); ++position)
      names.emplace_back(u"Column" + GeneralNumberText(position));
    table.SetColumnNames(std::move(names));
  }
  Changed();
  return table;
}

TSheetTable& TAuthoringSheet::AddTable(TTextArg AName, TTextArg ARangeA1, bool AHasHeader, bool AShowFilter) const {
  const TCellRange range = detail::RangeOfText(ARangeA1);
  return AddTableOver(FreeTableName(AName), range, AHasHeader, AShowFilter);
}

TSheetTable& TAuthoringSheet::MaterializeSpillAsTable(TTextArg AAnchorA1, TTextArg ATableName, bool AHasHeader) const {
  const TCellAddress anchor = detail::CellOfText(AAnchorA1);
  const TSpillRange* found = FSheet->Spills().TryGetSpill(anchor.Col, anchor.Row);
  if (!found) throw EState("No formula spills from " + Utf16ToUtf8(anchor.ToA1()));
  const bool isNamed = !TrimSpaces(ATableName).empty();
  TText name = FreeTableName(isNamed ? ATableName.View() : std::u16string_view(u"Import_" + anchor.ToA1()));
  const TSpillRange spill = *found;
  FSheet->Spills().ClearAnchor(anchor.Col, anchor.Row);
  const TCellRange range{spill.AnchorCol, spill.AnchorRow, std::min(spill.EndCol, kMaxCol),
                         std::min(spill.EndRow, kMaxRow)};
  for (int32_t row = range.StartRow; row <= range.EndRow; ++row) {
    for (int32_t col = range.StartCol; col <= range.EndCol; ++col)
      detail::WriteValue(*FSheet, {col, row}, spill.ValueAt(col, row));
  }
  return AddTableOver(std::move(name), range, AHasHeader, true);
}

void TAuthoringSheet::DeleteTable(TTextArg AName) const {
  TSheetTableList& tables = FSheet->Tables();
  const TSheetTable* table = tables.FindByName(AName);
  if (!table) throw EArgument("Table not found: " + Utf16ToUtf8(AName));
  for (size_t index = 0; index < tables.Count(); ++index) {
    if (&tables.GetItem(index) != table) continue;
    tables.RemoveAt(index);
    break;
  }
  Changed();
}

// ---- filter and sort

void TAuthoringSheet::EnableAutoFilter(TTextArg ARangeA1) const {
  const TCellRange range = detail::RangeOfText(ARangeA1);
  DisableAutoFilter(*FSheet);
  FSheet->AutoFilter().Enable(range);
  Changed();
}

void TAuthoringSheet::ClearAutoFilter() const {
  DisableAutoFilter(*FSheet);
  Changed();
}

void TAuthoringSheet::Sort(TTextArg ARangeA1, int32_t AKeyCol, bool AAscending, bool AHasHeader) const {
  const TSheetSortKey key{AKeyCol, AAscending};
  Sort(ARangeA1.View(), std::span(&key, 1), AHasHeader);
}

void TAuthoringSheet::Sort(TTextArg ARangeA1, std::span<const TSheetSortKey> AKeys, bool AHasHeader) const {
  TessarineSortRange(FWorkbook, FSheet, ARangeA1.View(), AHasHeader, AKeys);
}

// ---- rules

void TAuthoringSheet::AddConditionalFormat(TTextArg ARangeA1, TCfOperator AOp, TTextArg AFormula1, TTextArg AFormula2,
                                           TSheetColor AFill, TSheetColor AFont, bool ABold) const {
  TConditionalFormatRule rule;
  rule.Ranges = {detail::RangeOfText(ARangeA1)};
  rule.Operator = AOp;
  rule.Formula1 = TText(AFormula1.View());
  rule.Formula2 = TText(AFormula2.View());
  rule.HasFill = AFill != 0;
  if (rule.HasFill) rule.Fill = TCellFillInfo::Solid(SheetColorToRef(AFill));
  rule.HasFontColor = AFont != 0;
  if (rule.HasFontColor) rule.FontColor = SheetColorToRef(AFont);
  rule.HasBold = ABold;
  rule.Bold = ABold;
  FSheet->ConditionalFormats().AddRule(std::move(rule));
  Changed();
}

void TAuthoringSheet::ClearConditionalFormats() const {
  FSheet->ConditionalFormats().Clear();
  Changed();
}

void TAuthoringSheet::AddListValidation(TTextArg ARangeA1, TTextArg AListOrFormula, TTextArg APrompt,
                                        TTextArg AError) const {
  TDataValidationRule rule;
  rule.Ranges = {detail::RangeOfText(ARangeA1)};
  rule.ValidationType = dvtList;
  rule.Formula1 = TText(AListOrFormula.View());
  rule.AllowBlank = true;
  rule.Prompt = TText(APrompt.View());
  rule.ShowInputMessage = !rule.Prompt.IsEmpty();
  rule.Error = TText(AError.View());
  rule.ShowErrorMessage = true;
  FSheet->Validations().AddRule(std::move(rule));
  Changed();
}

void TAuthoringSheet::AddWholeValidation(TTextArg ARangeA1, TDataValidationOperator AOp, TTextArg AFormula1,
                                         TTextArg AFormula2) const {
  TDataValidationRule rule;
  rule.Ranges = {detail::RangeOfText(ARangeA1)};
  rule.ValidationType = dvtWhole;
  rule.Operator = AOp;
  rule.Formula1 = TText(AFormula1.View());
  rule.Formula2 = TText(AFormula2.View());
  rule.AllowBlank = true;
  rule.ShowErrorMessage = true;
  FSheet->Validations().AddRule(std::move(rule));
  Changed();
}

void TAuthoringSheet::ClearValidations() const {
  FSheet->Validations().Clear();
  Changed();
}

}  // namespace tessarine
