#include <tessarine/io/ods/detail/OdsLineWriter.h>

#include <algorithm>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/ods/detail/OdsStyleWriter.h>
#include <tessarine/io/ods/detail/OdsUnits.h>

namespace tessarine::detail {

namespace {

/// A key for the sizes of lines: the default one is another than the same size set.
double SizeKey(double ASize, bool AIsDefault) { return AIsDefault ? -1 : ASize; }

}  // namespace

TOdsLineWriter::TOdsLineWriter(const TWorksheet& ASheet, int32_t AIndex, TOdsStyleWriter& AStyles)
    : FSheet(ASheet), FNumber(AIndex + 1), FStyles(AStyles), FLastSpecialRow(ASheet.Sizing().LastSpecialRow()) {
  if (!ASheet.AutoFilter().IsEnabled()) return;
  for (const auto& [col, column] : ASheet.AutoFilter().Columns()) FHasCriteria = FHasCriteria || column.Active;
}

std::string TOdsLineWriter::StyleName(const char* APrefix, int32_t ALine) const {
  return APrefix + std::to_string(ALine) + "_s" + std::to_string(FNumber);
}

int32_t TOdsLineWriter::ColumnStyleOf(int32_t ACol) {
  const TRowColSizing& sizing = FSheet.Sizing();
  const bool isDefault = !sizing.HasCustomColWidth(ACol);
  if (isDefault && sizing.DefaultColWidth() == kOdsPlainColWidth) return 0;
  const double width = sizing.GetColWidthChars(ACol);
  const auto [place, added] = FColumnStyles.try_emplace(SizeKey(width, isDefault), ACol);
  if (added) FStyles.AddColumnStyle(StyleName("co", ACol), width, isDefault);
  return place->second;
}

void TOdsLineWriter::AppendColumns(int32_t ALastCol, std::string& AOut) {
  const TRowColSizing& sizing = FSheet.Sizing();
  const int32_t last = std::max(ALastCol, sizing.LastSpecialCol());
  for (int32_t col = 1; col <= last;) {
    const int32_t style = ColumnStyleOf(col);
    const bool isHidden = sizing.IsColHidden(col);
    const int32_t first = col;
    while (++col <= last && ColumnStyleOf(col) == style && sizing.IsColHidden(col) == isHidden) {}
    for (int32_t rest = col - first; rest > 0; rest -= kOdsMaxRepeat)
      AppendColumnRun(style, isHidden, std::min(rest, kOdsMaxRepeat), AOut);
  }
}

void TOdsLineWriter::AppendColumnRun(int32_t AStyle, bool AIsHidden, int32_t ACount, std::string& AOut) const {
  AOut += "<table:table-column";
  if (AStyle > 0) AOut.append(" table:style-name=\"").append(StyleName("co", AStyle)).append("\"");
  if (AIsHidden) AOut += " table:visibility=\"collapse\"";
  if (ACount > 1) AOut.append(" table:number-columns-repeated=\"").append(std::to_string(ACount)).append("\"");
  AOut += "/>";
}

bool TOdsLineWriter::IsFiltered(int32_t ARow) const {
  const TCellRange range = FSheet.AutoFilter().Range().Normalize();
  return FHasCriteria && ARow > range.StartRow && ARow <= range.EndRow;
}

TOdsLineWriter::TRowLook TOdsLineWriter::LookOf(int32_t ARow) {
  TRowLook look;
  const TRowColSizing& sizing = FSheet.Sizing();
  const bool isDefault = ARow > FLastSpecialRow || !sizing.HasCustomRowHeight(ARow);
  if (const double height = isDefault ? sizing.DefaultRowHeight() : sizing.GetRowHeightPt(ARow);
      !isDefault || height != kOdsPlainRowHeight) {
    const auto [place, added] = FRowStyles.try_emplace(SizeKey(height, isDefault), ARow);
    if (added) FStyles.AddRowStyle(StyleName("ro", ARow), height, isDefault);
    look.Style = place->second;
  }
  if (ARow <= FLastSpecialRow && sizing.IsRowHidden(ARow))
    look.State = IsFiltered(ARow) ? TRowState::rsFiltered : TRowState::rsHidden;
  return look;
}

int32_t TOdsLineWriter::LastAlike(int32_t AFirst, int32_t ALimit) {
  const TRowLook look = LookOf(AFirst);
  int32_t last = AFirst;
  while (last < ALimit && last <= FLastSpecialRow && LookOf(last + 1) == look) ++last;
  return last > FLastSpecialRow ? ALimit : last;
}

void TOdsLineWriter::AppendRowStart(const TRowLook& ALook, int32_t ACount, std::string& AOut) const {
  AOut += "<table:table-row";
  if (ALook.Style > 0) AOut.append(" table:style-name=\"").append(StyleName("ro", ALook.Style)).append("\"");
  if (ALook.State != TRowState::rsShown)
    AOut += ALook.State == TRowState::rsHidden ? " table:visibility=\"collapse\"" : " table:visibility=\"filter\"";
  if (ACount > 1) AOut.append(" table:number-rows-repeated=\"").append(std::to_string(ACount)).append("\"");
  AOut += '>';
}

}  // namespace tessarine::detail
