#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/features/pivot/detail/PivotLayout.h>

namespace tessarine {

namespace {

enum class TPivotRowLook : uint8_t { rlHeader, rlTotal, rlGroup, rlBand, rlPlain };
using enum TPivotRowLook;
constexpr size_t kLookCount = 5;

constexpr uint32_t kBorderColor = 0xFF8EA9DBu;
constexpr uint32_t kFillColors[kLookCount] = {0xFF5B9BD5u, 0xFFBDD7EEu, 0xFFDDEBF7u, 0xFFF2F2F2u, 0};

TCellFormat FormatOfLook(TPivotRowLook ALook) {
  TCellFormat format;
  const TBorderSide side{blsThin, TColorRef::FromARGB(kBorderColor)};
  format.Border.Left = format.Border.Top = format.Border.Right = format.Border.Bottom = side;
  if (ALook != rlPlain)
    format.Fill = TCellFillInfo::Solid(TColorRef::FromARGB(kFillColors[static_cast<size_t>(ALook)]));
  format.Font.Bold = ALook == rlHeader || ALook == rlTotal || ALook == rlGroup;
  if (ALook == rlHeader) format.Font.Color = TColorRef::FromARGB(kOpaqueWhite);
  return format;
}

/// Lays the looks over the last output of one table.
class TPivotStyler {
 public:
  TPivotStyler(TWorkbook& AWorkbook, TWorksheet& ASheet, const TPivotTable& ATable)
      : FStyles(AWorkbook.StyleSheet()),
        FSheet(ASheet),
        FBody(ATable.LastBody),
        FFirstCol(std::max(FBody.StartCol, 1)),
        FLastCol(std::min(FBody.EndCol, kMaxCol)) {
    const auto rowFields = static_cast<int64_t>(ATable.FieldsFor(pfrRow).size());
    FHasGroups = ATable.LayoutForm != plfTabular && rowFields > 1;
    FLabelColumns = ATable.LayoutForm == plfTabular ? std::max<int64_t>(1, rowFields) : 1;
    FHeaderRows = std::max(1, ATable.HeaderRowCount);
    for (const TPivotFieldRef& value : ATable.FieldsFor(pfrValue))
      FNumberFormats.push_back(detail::PivotNumberFormat(value));
    FFormats.resize(kLookCount * (FNumberFormats.size() + 1));
    for (size_t i = 0; i < FFormats.size(); ++i) {
      const size_t value = i % (FNumberFormats.size() + 1);
      FFormats[i].HasFormatOverride = true;
      FFormats[i].FormatOverride = FormatOfLook(static_cast<TPivotRowLook>(i / (FNumberFormats.size() + 1)));
      if (value > 0 && !FNumberFormats[value - 1].IsEmpty())
        FFormats[i].FormatOverride.NumberFormat = FNumberFormats[value - 1];
    }
  }

  /// How many cells may have to be looked at.
  int64_t Cost() const {
    const int64_t rows = int64_t{std::min(FBody.EndRow, kMaxRow)} - std::max(FBody.StartRow, 1) + 1;
    return std::max<int64_t>(rows, 0) * std::max<int64_t>(int64_t{FLastCol} - FFirstCol + 1, 0);
  }

  void Apply() {
    for (int32_t row = std::max(FBody.StartRow, 1); row <= std::min(FBody.EndRow, kMaxRow); ++row) {
      const TPivotRowLook look = LookOf(row);
      for (int32_t col = FFirstCol; col <= FLastCol; ++col) StyleCell({col, row}, look);
    }
  }

 private:
  int32_t IndentOf(const TCell& ACell) const {
    return ACell.HasFormatOverride ? ACell.FormatOverride.Alignment.Indent
                                   : FStyles.GetCellXf(ACell.StyleIndex).Alignment.Indent;
  }

  TPivotRowLook LookOf(int32_t ARow) const {
    const int64_t distance = int64_t{ARow} - FBody.StartRow - FHeaderRows + 1;  // from the last row of the header
    if (distance <= 0) return rlHeader;
    const TCell first = FSheet.GetCell({FBody.StartCol, ARow});
    const TText text = first.Value.ToDisplayString();
    if (text == u"Grand Total") return rlTotal;
    if (FHasGroups && !text.IsEmpty() && IndentOf(first) == 0) return rlGroup;
    return distance % 2 != 0 ? rlBand : rlPlain;
  }

  void StyleCell(TCellAddress AAddress, TPivotRowLook ALook) {
    TCell cell = FSheet.GetCell(AAddress);
    const int64_t offset = int64_t{AAddress.Col} - FBody.StartCol;
    if (offset > 0 && ALook != rlHeader && cell.Value.IsEmpty()) return;
    const bool isValue = ALook != rlHeader && offset >= FLabelColumns && !FNumberFormats.empty();
    const size_t value = isValue ? static_cast<size_t>(offset - FLabelColumns) % FNumberFormats.size() + 1 : 0;
    const int32_t indent = offset == 0 ? IndentOf(cell) : 0;
    cell.HasFormatOverride = true;
    cell.FormatOverride = FFormats[static_cast<size_t>(ALook) * (FNumberFormats.size() + 1) + value].FormatOverride;
    cell.FormatOverride.Alignment.Indent = indent;
    FSheet.SetCell(AAddress, cell);
  }

  const TTessarineStyleSheet& FStyles;
  TWorksheet& FSheet;
  TCellRange FBody;
  int32_t FFirstCol;
  int32_t FLastCol;
  int64_t FHeaderRows = 1;
  int64_t FLabelColumns = 1;
  bool FHasGroups = false;
  std::vector<TText> FNumberFormats;  // by value field
  std::vector<TCell> FFormats;        // by look, then value field, the first for cells that hold none
};

}  // namespace

void TPivotEngine::ApplyVisualStyle(TWorkbook& AWorkbook, TWorksheet& ASheet, TPivotTable& ATable) {
  if (ATable.IsBodyEmpty()) return;
  TPivotStyler styler(AWorkbook, ASheet, ATable);
  if (styler.Cost() <= kMaxCells) styler.Apply();
}

void TPivotEngine::ApplyLoadedPivotStyles(TWorkbook& AWorkbook) {
  int64_t left = kMaxCells;
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    TWorksheet& sheet = *AWorkbook.GetSheet(index);
    for (const auto& table : sheet.Pivots()) {
      if (table->IsBodyEmpty()) continue;
      TPivotStyler styler(AWorkbook, sheet, *table);
      if (styler.Cost() > left) continue;
      left -= styler.Cost();
      styler.Apply();
    }
  }
}

}  // namespace tessarine
