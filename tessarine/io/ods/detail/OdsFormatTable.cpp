#include <tessarine/io/ods/detail/OdsFormatTable.h>

#include <tessarine/core/format/StyleSheet.h>

namespace tessarine::detail {

TOdsCellStyle& TOdsFormatTable::Find(std::string_view AName) {
  if (AName.empty()) return FNoStyle;
  const auto found = FByName.find(AName);
  if (found != FByName.end()) return *found->second;
  TOdsCellStyle& style = FItems.emplace_back();
  style.Format = FStyles.GetCellFormat(AName);
  style.IsDefault = style.Format == TCellFormat::Default();
  style.HasNumberFormat = !style.Format.NumberFormat.IsEmpty() && style.Format.NumberFormat != GeneralFormatCode();
  const TCellBorderInfo& border = style.Format.Border;
  style.ShowsOnBlanks = style.Format.Fill.PatternType != 0 || border.Left.Style != blsNone ||
                        border.Right.Style != blsNone || border.Top.Style != blsNone ||
                        border.Bottom.Style != blsNone || border.Diagonal.Style != blsNone;
  FByName.emplace(std::string(AName), &style);
  return style;
}

int32_t TOdsFormatTable::Intern(const TCellFormat& AFormat) {
  if (AFormat == TCellFormat::Default()) return 0;
  const auto [entry, isNew] = FIndexes.try_emplace(AFormat, 0);
  if (isNew) entry->second = FSheet.AddCellXf(AFormat);
  return entry->second;
}

int32_t TOdsFormatTable::IndexWith(TOdsCellStyle& AStyle, int32_t& AIndex, const char16_t* ACode) {
  if (AStyle.HasNumberFormat) return IndexOf(AStyle);
  if (AIndex < 0) {
    TCellFormat format = AStyle.Format;
    format.NumberFormat = TText(ACode);
    AIndex = Intern(format);
  }
  return AIndex;
}

}  // namespace tessarine::detail
