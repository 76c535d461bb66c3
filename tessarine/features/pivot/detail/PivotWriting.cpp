#include <tessarine/features/pivot/detail/PivotWriting.h>

#include <algorithm>
#include <limits>
#include <vector>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/values/Coercion.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

/// The cells of a range on the sheet, cleared one after another. With nobody looking, or in a range that no table can
/// have written, only those that are there.
void ClearArea(TWorksheet& ASheet, const TCellRange& ARange) {
  const TCellRange area{std::max(ARange.StartCol, 1), std::max(ARange.StartRow, 1), std::min(ARange.EndCol, kMaxCol),
                        std::min(ARange.EndRow, kMaxRow)};
  if (area.EndCol < area.StartCol || area.EndRow < area.StartRow) return;
  if (!ASheet.ChangesAreUnobserved() && int64_t{area.Width()} * area.Height() <= TPivotEngine::kMaxCells) {
    for (int32_t row = area.StartRow; row <= area.EndRow; ++row)
      for (int32_t col = area.StartCol; col <= area.EndCol; ++col) ASheet.ClearCell({col, row});
    return;
  }
  std::vector<TCellAddress> cells;
  ASheet.Store().ForEachByRow(area, [&](int32_t ACol, int32_t ARow, const TCellSlot&) {
    cells.push_back({ACol, ARow});
  });
  for (size_t i = cells.size(); i > 0; --i)
    ASheet.ClearCell(cells[i - 1]);                     // from the end, where packed cells go cheaply
  ASheet.UpdateUsedBounds({area.EndCol, area.EndRow});  // as clearing a cell that is not there does
  ASheet.NoteBulkChange();
}

/// Writes cells by their distance from the table's own.
class TPivotPen {
 public:
  TPivotPen(TWorksheet& ASheet, TCellAddress ADest)
      : FSheet(ASheet), FDest(ADest), FPlain(ASheet.ChangesAreUnobserved()) {}

  void Text(int64_t ACol, int64_t ARow, const TText& AText) {
    Put(ACol, ARow, AText.IsEmpty() ? TCellValue::Empty() : TCellValue::FromText(AText));
  }

  void IndentedText(int64_t ACol, int64_t ARow, const TText& AText, int32_t AIndent) {
    const TCellAddress address = AddressOf(ACol, ARow);
    if (AIndent <= 0 || !address.IsValid()) return Text(ACol, ARow, AText);
    TCell cell;
    cell.Value = TCellValue::FromText(AText);
    cell.HasFormatOverride = true;
    cell.FormatOverride.Alignment.Indent = AIndent;
    FSheet.SetCell(address, cell);
  }

  /// With nobody looking the format is left to the styling that follows, which gives it to every value anew.
  void Number(int64_t ACol, int64_t ARow, double ANumber, const TText& AFormat) {
    const TCellAddress address = AddressOf(ACol, ARow);
    if (FPlain || AFormat.IsEmpty() || !address.IsValid()) return Put(ACol, ARow, NumberOrError(ANumber));
    TCell cell;
    cell.Value = NumberOrError(ANumber);
    cell.HasFormatOverride = true;
    cell.FormatOverride.NumberFormat = AFormat;
    FSheet.SetCell(address, cell);
  }

 private:
  TCellAddress AddressOf(int64_t ACol, int64_t ARow) const {
    const int64_t col = FDest.Col + ACol;
    const int64_t row = FDest.Row + ARow;
    if (col < 1 || col > kMaxCol || row < 1 || row > kMaxRow) return {};
    return {static_cast<int32_t>(col), static_cast<int32_t>(row)};
  }
  void Put(int64_t ACol, int64_t ARow, const TCellValue& AValue) { FSheet.SetValue(AddressOf(ACol, ARow), AValue); }

  TWorksheet& FSheet;
  TCellAddress FDest;
  bool FPlain;
};

void WriteHeaders(TPivotPen& APen, const TPivotCache& ACache, const TPivotTable& ATable, const TPivotLayout& ALayout) {
  const auto values = static_cast<int64_t>(ALayout.ValueFields.size());
  const int64_t lastRow = ALayout.HeaderRows - 1;
  if (!ALayout.ColumnFields.empty()) {
    APen.Text(0, 0, values == 1 ? ALayout.Captions[0] : TText());
    APen.Text(ALayout.LabelColumns, 0, u"Column Labels");
  }
  const bool namesRows = ATable.LayoutForm == plfTabular && !ALayout.RowFields.empty();
  if (!namesRows) APen.Text(0, lastRow, u"Row Labels");
  for (size_t i = 0; namesRows && i < ALayout.RowFields.size(); ++i)
    APen.Text(static_cast<int64_t>(i), lastRow, PivotFieldName(ACache, ALayout.RowFields[i].CacheFieldIndex, {}));
  const bool showsCaptions = ALayout.ColumnFields.empty() || values > 1;
  for (size_t key = 0; key < ALayout.Cube.Columns.Count; ++key) {
    const int64_t col = ALayout.LabelColumns + static_cast<int64_t>(key) * values;
    for (size_t field = 0; field < ALayout.ColumnFields.size(); ++field)
      APen.Text(col, 1 + static_cast<int64_t>(field), ALayout.ColumnLabel(key, field));
    for (int64_t i = 0; showsCaptions && i < values; ++i)
      APen.Text(col + i, lastRow, ALayout.Captions[static_cast<size_t>(i)]);
  }
  if (ALayout.HasTotalColumn) APen.Text(ALayout.LabelColumns + ALayout.ValueColumns(), lastRow, u"Grand Total");
}

void WriteLabels(TPivotPen& APen, const TPivotTable& ATable, const TPivotLayout& ALayout, const TPivotEntry& AEntry,
                 int64_t ARow) {
  if (ATable.LayoutForm != plfTabular || ALayout.RowFields.empty())
    return APen.IndentedText(0, ARow, AEntry.Label, AEntry.Indent);
  for (size_t field = 0; field < ALayout.RowFields.size(); ++field)
    APen.Text(static_cast<int64_t>(field), ARow, ALayout.Cube.Rows.LabelOf(AEntry.Keys[0], field));
}

class TBodyWriter {
 public:
  TBodyWriter(TPivotPen& APen, const TPivotLayout& ALayout) : FPen(APen), FLayout(ALayout) {
    for (const TPivotFieldRef& value : ALayout.ValueFields) FFormats.push_back(PivotNumberFormat(value));
  }

  /// The values of an entry, and their sums in the column of totals.
  void WriteEntry(const TPivotEntry& AEntry, int64_t ARow, double APosition) {
    const size_t count = FLayout.ValueFields.size();
    const std::vector<double> values = FLayout.ValuesOf(AEntry);
    std::vector<double> sums(count);
    for (size_t i = 0; i < values.size(); ++i) {
      sums[i % count] += values[i];
      Write(i, ARow, values[i], values[i], FLayout.ColumnTotals[i], APosition);
    }
    for (size_t i = 0; FLayout.HasTotalColumn && i < count; ++i)
      Write(values.size() + i, ARow, sums[i], sums[i], FLayout.GrandTotals[i], APosition);
  }

  void WriteTotals(int64_t ARow, double APosition) {
    const size_t count = FLayout.ValueFields.size();
    const std::vector<double>& totals = FLayout.ColumnTotals;
    FPen.Text(0, ARow, u"Grand Total");
    for (size_t i = 0; i < totals.size(); ++i)
      Write(i, ARow, totals[i], FLayout.GrandTotals[i % count], totals[i], APosition);
    for (size_t i = 0; FLayout.HasTotalColumn && i < count; ++i) {
      const double total = FLayout.GrandTotals[i];
      Write(totals.size() + i, ARow, total, total, total, APosition);
    }
  }

 private:
  void Write(size_t AIndex, int64_t ARow, double AValue, double ARowTotal, double AColumnTotal, double APosition) {
    const size_t field = AIndex % FLayout.ValueFields.size();
    const double shown = PivotShownValue(FLayout.ValueFields[field].ShowAs, AValue, ARowTotal, AColumnTotal,
                                         FLayout.GrandTotals[field], APosition);
    FPen.Number(FLayout.LabelColumns + static_cast<int64_t>(AIndex), ARow, shown, FFormats[field]);
  }

  TPivotPen& FPen;
  const TPivotLayout& FLayout;
  std::vector<TText> FFormats;
};

}  // namespace

int64_t PivotFilterTop(const TPivotTable& ATable, size_t AFilterCount) {
  return int64_t{ATable.Dest.Row} - static_cast<int64_t>(AFilterCount) - 1;
}

TCellRange PivotBodyRange(TCellAddress ADest, int64_t AColumnCount, int64_t ARowCount) {
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  return {ADest.Col, ADest.Row, static_cast<int32_t>(std::min(ADest.Col + AColumnCount - 1, kMost)),
          static_cast<int32_t>(std::min(ADest.Row + ARowCount - 1, kMost))};
}

void ClearPivotOutput(TWorksheet& ASheet, const TPivotTable& ATable, size_t AFilterCount) {
  ClearArea(ASheet, ATable.LastBody);
  if (AFilterCount == 0) return;
  const int64_t top = std::clamp<int64_t>(PivotFilterTop(ATable, AFilterCount), 1, kMaxRow + 1);
  const int64_t bottom = std::min<int64_t>(int64_t{ATable.Dest.Row} - 1, kMaxRow);
  const int64_t left = std::clamp<int64_t>(ATable.Dest.Col, -1, kMaxCol + 1);
  ClearArea(ASheet, {static_cast<int32_t>(left), static_cast<int32_t>(top), static_cast<int32_t>(left + 1),
                     static_cast<int32_t>(std::max<int64_t>(bottom, 0))});
}

void WritePivotBody(TWorksheet& ASheet, const TPivotCache& ACache, const TPivotTable& ATable,
                    const TPivotLayout& ALayout) {
  TPivotPen pen(ASheet, ATable.Dest);
  WriteHeaders(pen, ACache, ATable, ALayout);
  TBodyWriter body(pen, ALayout);
  int64_t row = ALayout.HeaderRows;
  double position = 1;
  for (const TPivotEntry& entry : ALayout.Entries) {
    WriteLabels(pen, ATable, ALayout, entry, row);
    body.WriteEntry(entry, row++, position++);
  }
  if (ALayout.HasTotalRow) body.WriteTotals(row, position);
}

void WritePivotFilters(TWorksheet& ASheet, const TPivotCache& ACache, const TPivotTable& ATable) {
  const auto filters = ATable.FieldsFor(pfrFilter);
  if (PivotFilterTop(ATable, filters.size()) <= 0) return;
  TPivotPen pen(ASheet, ATable.Dest);
  int64_t row = -static_cast<int64_t>(filters.size()) - 1;
  for (const TPivotFieldRef& filter : filters) {
    const auto found = ATable.FilterSelections.find(filter.CacheFieldIndex);
    const size_t count = found == ATable.FilterSelections.end() ? 0 : found->second.size();
    pen.Text(0, row, PivotFieldName(ACache, filter.CacheFieldIndex, u"Filter"));
    pen.Text(1, row++,
             count == 0   ? TText(u"(All)")
             : count == 1 ? found->second.front()
                          : TText(u"(" + GeneralNumberText(static_cast<double>(count)) + u" items)"));
  }
}

}  // namespace tessarine::detail
