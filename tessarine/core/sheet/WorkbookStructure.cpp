#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/LineMap.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

void TWorkbook::InsertRows(int32_t ASheetIndex, int32_t AStart, int32_t ACount) {
  InsertLines(ASheetIndex, saRows, AStart, ACount);
}

void TWorkbook::InsertColumns(int32_t ASheetIndex, int32_t AStart, int32_t ACount) {
  InsertLines(ASheetIndex, saColumns, AStart, ACount);
}

void TWorkbook::InsertLines(int32_t ASheetIndex, TShiftAxis AAxis, int32_t AStart, int32_t ACount) {
  TWorksheet* const sheet = GetSheet(ASheetIndex);
  const auto edit = detail::MakeShift(AAxis, AStart, ACount, false);
  if (!sheet || !edit) return;
  EditLines(*sheet, *edit);
  sheet->PropagateTableInsert(AAxis == saRows, AStart, ACount);
  MarkModified();
}

void TWorkbook::DeleteRows(int32_t ASheetIndex, int32_t AStart, int32_t ACount) {
  EditAndMark(ASheetIndex, detail::MakeShift(saRows, AStart, ACount, true));
}

void TWorkbook::DeleteColumns(int32_t ASheetIndex, int32_t AStart, int32_t ACount) {
  EditAndMark(ASheetIndex, detail::MakeShift(saColumns, AStart, ACount, true));
}

void TWorkbook::MoveRows(int32_t ASheetIndex, int32_t AStart, int32_t ACount, int32_t ADest) {
  EditAndMark(ASheetIndex, detail::MakeMove(saRows, AStart, ACount, ADest));
}

void TWorkbook::MoveColumns(int32_t ASheetIndex, int32_t AStart, int32_t ACount, int32_t ADest) {
  EditAndMark(ASheetIndex, detail::MakeMove(saColumns, AStart, ACount, ADest));
}

void TWorkbook::EditAndMark(int32_t ASheetIndex, const std::optional<detail::TLineEdit>& AEdit) {
  TWorksheet* const sheet = GetSheet(ASheetIndex);
  if (!sheet || !AEdit) return;
  EditLines(*sheet, *AEdit);
  MarkModified();
}

/// The edited sheet's own formulas are rewritten while their cells move, those of all others where they stand.
void TWorkbook::EditLines(TWorksheet& ASheet, const detail::TLineEdit& AEdit) {
  const TText name = ASheet.Name();
  ASheet.EditLines(AEdit, true);
  for (const auto& sheet : FSheets) {
    const bool onSheet = EqualAsciiNoCase(sheet->Name(), name);
    if (sheet.get() != &ASheet) sheet->RewriteCells(AEdit, name, onSheet);
    sheet->RewriteLists(AEdit, name, onSheet);
  }
  RewriteNamedFormulas([&](std::u16string_view AFormula) { return AEdit.Rewritten(AFormula, name, true); });
}

}  // namespace tessarine
