#include <tessarine/api/detail/CellEdits.h>

#include <string>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

TCellAddress CellOfText(std::u16string_view AText) {
  const TCellAddress address = TCellAddress::FromA1(AText);
  if (!address.IsValid()) throw EArgument("Invalid cell address: " + Utf16ToUtf8(AText));
  return address;
}

TCellRange RangeOfText(std::u16string_view AText) {
  const TCellRange range = TCellRange::FromA1(AText);
  if (range.StartCol < 1 || range.StartRow < 1) throw EArgument("Invalid range: " + Utf16ToUtf8(AText));
  return range;
}

TCellFormat& EnsureFormat(TCell& ACell) {
  if (!ACell.HasFormatOverride) {
    ACell.HasFormatOverride = true;
    ACell.FormatOverride = TCellFormat::Default();
  }
  return ACell.FormatOverride;
}

void PutValue(TCell& ACell, const TCellValue& AValue) {
  ACell.Value = AValue;
  ACell.RichText.clear();
  ACell.ClearCachedResult();
}

TCellValue FormulaOfText(std::u16string_view AText) { return TCellValue::FromFormula(TrimSpaces(AText)); }

void ClearFormatsOf(TCell& ACell) {
  ACell.HasFormatOverride = false;
  ACell.FormatOverride = TCellFormat::Default();
  ACell.StyleIndex = 0;
}

TCellFormat FormatOf(const TWorksheet& ASheet, const TCell& ACell) {
  if (ACell.HasFormatOverride) return ACell.FormatOverride;
  return ASheet.Owner() ? ASheet.Owner()->StyleSheet().GetCellXf(ACell.StyleIndex) : TCellFormat::Default();
}

}  // namespace tessarine::detail
