#include <tessarine/formula/FunctionTable.h>

#include <string>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/formula/library/detail/ReferenceBodies.h>

namespace tessarine {

namespace {

using namespace detail;

// Addresses -----------------------------------------------------------------------------------------------------------

/// Which parts of an address stay when it is copied: 1 both, 2 the row, 3 the column, 4 none.
struct TFixedParts {
  bool Row = true;
  bool Col = true;
};

std::u16string NumberText(int64_t ANumber) {
  const std::string digits = std::to_string(ANumber);
  return {digits.begin(), digits.end()};
}

std::u16string A1Text(int64_t ARow, int64_t ACol, TFixedParts AFixed) {
  return (AFixed.Col ? u"$" : u"") + ColToLetters(static_cast<int32_t>(ACol)) + (AFixed.Row ? u"$" : u"") +
         NumberText(ARow);
}

std::u16string R1C1Text(int64_t ARow, int64_t ACol, TFixedParts AFixed) {
  const auto part = [](char16_t ALetter, int64_t ANumber, bool AIsFixed) {
    const std::u16string letter(1, ALetter);
    return AIsFixed ? letter + NumberText(ANumber) : letter + u"[" + NumberText(ANumber) + u"]";
  };
  return part(u'R', ARow, AFixed.Row) + part(u'C', ACol, AFixed.Col);
}

/// row, column, [kind], [A1 style], [sheet]
TCellValue CallAddress(TFormulaArgs AArgs, const TFormulaContext&) {
  int64_t row = 0;
  int64_t col = 0;
  int64_t kind = 1;
  if (AArgs.size() < 2 || !ArgAsInt64(AArgs[0], row) || !ArgAsInt64(AArgs[1], col)) return ValueError();
  if (AArgs.size() > 2 && !ArgAsInt64(AArgs[2], kind)) return ValueError();
  if (row < 1 || row > kMaxRow || col < 1 || col > kMaxCol || kind < 1 || kind > 4) return ValueError();
  const TFixedParts fixed{kind == 1 || kind == 2, kind == 1 || kind == 3};
  const bool isA1 = AArgs.size() < 4 || ArgIsTrue(AArgs[3]);
  std::u16string text = isA1 ? A1Text(row, col, fixed) : R1C1Text(row, col, fixed);
  if (AArgs.size() > 4) {
    const TText sheet = ArgText(AArgs[4]);
    text = (sheet.IsEmpty() ? std::u16string() : QuoteSheetName(sheet.View())) + u"!" + text;
  }
  return TextOf(TText(text));
}

// Arguments as references ---------------------------------------------------------------------------------------------

int32_t SheetIndexOf(const TFormulaArg& AArg, const TFormulaContext& AContext) {
  return AArg.OriginSheetIndex >= 0 ? AArg.OriginSheetIndex : AContext.SheetIndex;
}

/// The first cell that an argument refers to; empty when it is gone.
TCell CellOfReference(const TFormulaArg& AArg, const TFormulaContext& AContext) {
  const TWorksheet* sheet = AArg.ViewSheet();
  if (!sheet && AContext.Workbook) sheet = AContext.Workbook->GetSheet(SheetIndexOf(AArg, AContext));
  return sheet ? sheet->GetCellAt(AArg.OriginCol, AArg.OriginRow) : TCell();
}

/// The parser knows no unions, so a reference is one area.
TCellValue CallAreas(TFormulaArgs AArgs, const TFormulaContext&) {
  return AArgs.empty() || !AArgs[0].HasOrigin ? ValueError() : TCellValue::FromNumber(1);
}

TCellValue CallFormulaText(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.empty() || !AArgs[0].HasOrigin) return ValueError();
  const TCell cell = CellOfReference(AArgs[0], AContext);
  return cell.Value.Kind == cvkFormula ? TextOf(cell.Value.Formula()) : NotAvailable();
}

TCellValue CallIsFormula(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (AArgs.empty() || !AArgs[0].HasOrigin) return ValueError();
  return BooleanOf(CellOfReference(AArgs[0], AContext).Value.Kind == cvkFormula);
}

TCellValue CallIsRef(TFormulaArgs AArgs, const TFormulaContext&) {
  return AArgs.empty() ? ValueError() : BooleanOf(AArgs[0].HasOrigin);
}

/// The number of the formula's own sheet, of a reference's, or of the one with a name.
TCellValue CallSheet(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  int32_t index = AContext.SheetIndex;
  if (!AArgs.empty() && AArgs[0].HasOrigin) {
    index = SheetIndexOf(AArgs[0], AContext);
  } else if (!AArgs.empty()) {
    if (AArgs[0].FirstView().Kind != cvkText) return RefError();
    index = AContext.Workbook ? AContext.Workbook->FindSheetIndex(ArgText(AArgs[0]).View()) : -1;
  }
  return index < 0 ? NotAvailable() : TCellValue::FromNumber(index + 1);
}

/// The number of sheets of the workbook, or of a reference, which never spans several.
TCellValue CallSheets(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (!AArgs.empty()) return AArgs[0].HasOrigin ? TCellValue::FromNumber(1) : RefError();
  return AContext.Workbook ? TCellValue::FromNumber(AContext.Workbook->SheetCount()) : NotAvailable();
}

// Values --------------------------------------------------------------------------------------------------------------

/// The number of an error; 0 for what has none.
int32_t NumberOfError(TCellErrorCode ACode) {
  switch (ACode) {
    case ceNull: return 1;
    case ceDiv0: return 2;
    case ceValue: return 3;
    case ceRef: return 4;
    case ceName: return 5;
    case ceNum: return 6;
    case ceNA: return 7;
    case ceSpill: return 9;
    case ceNone:
    case ceCirc: break;
  }
  return 0;
}

TCellValue CallErrorType(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  const TValueView value = AArgs[0].FirstView();
  const int32_t number = value.IsError() ? NumberOfError(value.ErrorCode) : 0;
  return number == 0 ? NotAvailable() : TCellValue::FromNumber(number);
}

/// What the cell shows: the second argument, or the target itself.
TCellValue CallHyperlink(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ValueError();
  return AArgs.size() > 1 ? AArgs[1].First() : TextOf(ArgText(AArgs[0]));
}

// clang-format off
constexpr TFunctionDef kReferenceFunctions[] = {
    {.Name = u"ADDRESS", .MinArgs = 2, .MaxArgs = 5, .Tier = ftrExtra, .Body = CallAddress, .InCompletion = true,
     .Arguments = u"row, column, [kind], [a1_style], [sheet]",
     .Description = u"The address of a row and column as a text."},
    {.Name = u"AREAS", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallAreas,
     .Arguments = u"reference", .Description = u"How many areas a reference has."},
    {.Name = u"ERROR.TYPE", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallErrorType,
     .Arguments = u"value", .Description = u"The number of an error, 1 for #NULL! to 7 for #N/A and 9 for #SPILL!."},
    {.Name = u"FORMULATEXT", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallFormulaText,
     .Arguments = u"reference", .Description = u"The formula of a cell as it was entered."},
    {.Name = u"HYPERLINK", .MinArgs = 1, .MaxArgs = 2, .Tier = ftrExtra, .Body = CallHyperlink, .InCompletion = true,
     .Arguments = u"target, [shown]", .Description = u"What a link shows: the second argument, or its target."},
    {.Name = u"ISFORMULA", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallIsFormula,
     .Arguments = u"reference", .Description = u"Whether a cell holds a formula."},
    {.Name = u"ISREF", .MinArgs = 1, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallIsRef,
     .Arguments = u"value", .Description = u"Whether a value is a reference."},
    {.Name = u"LOOKUP", .MinArgs = 2, .MaxArgs = 3, .Tier = ftrExtra, .Body = CallLookup, .InCompletion = true,
     .Arguments = u"key, cells, [results]",
     .Description = u"Looks for the largest value not above a key and answers from the same place of other cells."},
    {.Name = u"SHEET", .MinArgs = 0, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallSheet,
     .Arguments = u"[reference]", .Description = u"The number of a sheet."},
    {.Name = u"SHEETS", .MinArgs = 0, .MaxArgs = 1, .Tier = ftrExtra, .Body = CallSheets,
     .Arguments = u"[reference]", .Description = u"How many sheets there are."},
    {.Name = u"XMATCH", .MinArgs = 2, .MaxArgs = 4, .Tier = ftrExtra, .Body = CallXMatch, .InCompletion = true,
     .Arguments = u"key, cells, [match_mode], [search_mode]",
     .Description = u"Position of a key: equal (0), next smaller (-1) or larger (1), by * and ? (2) or a pattern (3)."},
};
// clang-format on

}  // namespace

std::span<const TFunctionDef> ReferenceFunctions() { return kReferenceFunctions; }

}  // namespace tessarine
