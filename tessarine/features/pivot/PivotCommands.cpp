#include <tessarine/features/pivot/PivotCommands.h>

#include <utility>

#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/pivot/PivotEngine.h>

namespace tessarine {

TSlicerSelectionCommand::TSlicerSelectionCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, TText ASlicerName,
                                                 std::vector<TText> AOldSelected, std::vector<TText> ANewSelected)
    : TSheetCommand(AWorkbook, ASheetIndex),
      FSlicerName(std::move(ASlicerName)),
      FOldSelected(std::move(AOldSelected)),
      FNewSelected(std::move(ANewSelected)) {}

void TSlicerSelectionCommand::Apply(const std::vector<TText>& ASelected) {
  TWorksheet* sheet = Sheet();
  TSheetSlicer* slicer = sheet ? sheet->Slicers().FindByName(FSlicerName) : nullptr;
  if (!slicer) return;
  slicer->SetSelected(ASelected);
  for (const TText& name : std::vector<TText>(slicer->PivotNames)) {
    if (TPivotTable* table = sheet->Pivots().FindByName(name)) TPivotEngine::Refresh(Workbook(), *sheet, *table);
  }
  MarkModified();
}

TText TSlicerSelectionCommand::Description() const { return u"Slicer filter"; }

TPivotFilterCommand::TPivotFilterCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, TText APivotName,
                                         int32_t AFieldIndex, TPivotFilterState AOldState, TPivotFilterState ANewState)
    : TSheetCommand(AWorkbook, ASheetIndex),
      FPivotName(std::move(APivotName)),
      FFieldIndex(AFieldIndex),
      FOldState(std::move(AOldState)),
      FNewState(std::move(ANewState)) {}

void TPivotFilterCommand::Apply(const TPivotFilterState& AState) {
  TWorksheet* sheet = Sheet();
  TPivotTable* table = sheet ? sheet->Pivots().FindByName(FPivotName) : nullptr;
  if (!table) return;
  if (FFieldIndex >= 0) {
    if (AState.HasFilter) {
      table->SetFilterSelection(FFieldIndex, AState.Items);
    } else {
      table->ClearFilterSelection(FFieldIndex);
    }
  }
  table->SortFieldIndex = AState.SortFieldIndex;
  table->SortValueOrdinal = AState.SortValueOrdinal;
  table->SortAscending = AState.SortAscending;
  TPivotEngine::Refresh(Workbook(), *sheet, *table);
  MarkModified();
}

TText TPivotFilterCommand::Description() const {
  const bool sameFilter =
      FOldState.HasFilter == FNewState.HasFilter && FOldState.Items.size() == FNewState.Items.size();
  return sameFilter ? u"Pivot sort" : u"Pivot filter";
}

}  // namespace tessarine
