#include <tessarine/api/AuthoringWorkbook.h>

#include <string>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

void TWorkbookNamesFacade::Define(TTextArg AName, TTextArg AFormula) const {
  if (TWorkbook::NormalizeName(AName).empty()) throw EArgument("Invalid name: " + Utf16ToUtf8(AName));
  FWorkbook->SetNamedFormula(AName.View(), AFormula.View());
  FWorkbook->MarkModified();
}

bool TWorkbookNamesFacade::Delete(TTextArg AName) const {
  if (!FWorkbook->RemoveNamedFormula(AName.View())) return false;
  FWorkbook->MarkModified();
  return true;
}

std::optional<TText> TWorkbookNamesFacade::TryGet(TTextArg AName) const {
  return FWorkbook->FindNamedFormula(AName.View());
}

int32_t TWorkbookStylesFacade::Add(const TCellFormat& AFormat) const {
  return FWorkbook->StyleSheet().AddCellXf(AFormat);
}

TCellFormat TWorkbookStylesFacade::Resolve(int32_t AStyleIndex) const {
  return FWorkbook->StyleSheet().ResolveFormat(AStyleIndex);
}

TWorksheet& TAuthoringWorkbook::GetSheetByName(TTextArg AName) const {
  TWorksheet* sheet = FWorkbook->FindSheet(AName.View());
  if (!sheet) throw EArgument("Sheet not found: " + Utf16ToUtf8(AName));
  return *sheet;
}

TAuthoringSheet TAuthoringWorkbook::UseSheet(TTextArg AName) const {
  return {FWorkbook, &GetSheetByName(AName.View())};
}

TAuthoringSheet TAuthoringWorkbook::UseSheet(int32_t AIndex) const {
  TWorksheet* sheet = FWorkbook->GetSheet(AIndex);
  if (!sheet) throw EArgument("Sheet not found: " + std::to_string(AIndex));
  return {FWorkbook, sheet};
}

TAuthoringSheet TAuthoringWorkbook::UseActiveSheet() const { return {FWorkbook, FWorkbook->ActiveSheet()}; }

TAuthoringSheet TAuthoringWorkbook::AddWorksheet(TTextArg AName) const {
  TText name(TrimSpaces(AName));
  for (int32_t number = 1; name.IsEmpty(); ++number) {
    const std::u16string next = u"Sheet" + GeneralNumberText(number);
    if (!FWorkbook->FindSheet(next)) name = TText(next);
  }
  if (FWorkbook->FindSheet(name)) throw EArgument("Sheet name already exists: " + name.ToUtf8());
  TWorksheet& sheet = FWorkbook->AddSheet(name);
  FWorkbook->MarkModified();
  return {FWorkbook, &sheet};
}

}  // namespace tessarine
