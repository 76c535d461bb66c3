#include <tessarine/formula/detail/ResultSnapshot.h>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine::detail {

TResultSnapshot::TResultSnapshot(TWorkbook& AWorkbook) : FWorkbook(AWorkbook) {
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    const TWorksheet& sheet = *AWorkbook.GetSheet(index);
    const TCellStore& store = sheet.Store();
    TSheetState& state = FSheets.emplace_back(TSheetState{{}, sheet.UsedMaxCol(), sheet.UsedMaxRow()});
    sheet.Spills().ForEachSpill([&](const TSpillRange& ABlock) { state.Blocks.push_back(ABlock); });
    FResults.reserve(FResults.size() + store.FormulaCount());
    store.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
      if (ASlot.Kind != cvkFormula) return;
      const TFormulaRecord& record = store.Record(ASlot.Record);
      const TCellId id = TCellId::Of(index, ACol, ARow);
      FResults.push_back({id, TCellValue::FromView(record.CachedView()), record.HasCached()});
      if ((record.Flags & TFormulaRecord::frSparkline) != 0) {
        const TCellExtras* extras = store.FindExtras(ACol, ARow);
        if (extras && extras->Sparkline) FCharts.push_back({id, *extras->Sparkline});
      }
    });
  }
}

void TResultSnapshot::Restore() {
  for (const TResult& result : FResults) {
    TWorksheet* sheet = FWorkbook.GetSheet(result.Cell.Sheet());
    TFormulaRecord* record = sheet ? sheet->Store().FindRecord(result.Cell.Col(), result.Cell.Row()) : nullptr;
    if (!record) continue;
    if (result.HasValue) {
      sheet->Store().SetCached(result.Cell.Col(), *record, result.Value);
    } else {
      sheet->Store().ClearCached(result.Cell.Col(), *record);
    }
  }
  for (const TChart& chart : FCharts) {
    TWorksheet* sheet = FWorkbook.GetSheet(chart.Cell.Sheet());
    if (!sheet) continue;
    TCell cell = sheet->GetCellAt(chart.Cell.Col(), chart.Cell.Row());
    cell.Sparkline = chart.Data;
    sheet->Store().Set(chart.Cell.Col(), chart.Cell.Row(), cell);
  }
  for (size_t index = 0; index < FSheets.size(); ++index) {
    TWorksheet* sheet = FWorkbook.GetSheet(static_cast<int32_t>(index));
    if (!sheet) continue;
    TSheetState& state = FSheets[index];
    sheet->Spills().ClearAll();
    for (TSpillRange& block : state.Blocks) {
      const int64_t rows = block.RowCount();
      const int64_t cols = block.ColCount();
      sheet->Spills().SetSpill(block.AnchorCol, block.AnchorRow, rows, cols, std::move(block.Values));
    }
    sheet->RestoreUsedBounds(state.UsedMaxCol, state.UsedMaxRow);
  }
}

}  // namespace tessarine::detail
