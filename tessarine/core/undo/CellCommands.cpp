#include <tessarine/core/undo/CellCommands.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/undo/detail/CellBatch.h>

namespace tessarine {

namespace {

detail::TCellBatch BatchOf(const std::vector<TCellSnapshot>& ACells) {
  detail::TCellBatch batch;
  batch.Reserve(ACells.size());
  for (const TCellSnapshot& cell : ACells) batch.Add(cell.Address, cell.Cell);
  return batch;
}

}  // namespace

TWorksheet* TSheetCommand::Sheet() const { return FWorkbook.GetSheet(FSheetIndex); }

void TSheetCommand::MarkModified() {
  NoteChange();
  FWorkbook.MarkModified();
}

uint64_t TSheetCommand::ChangeStamp() const {
  const TWorksheet* const sheet = Sheet();
  return FChanges + (sheet ? sheet->Store().Version() : 0);
}

TCellEditCommand::TCellEditCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, TCellAddress AAddress, TCell AOldCell,
                                   TCell ANewCell)
    : TSheetCommand(AWorkbook, ASheetIndex),
      FAddress(AAddress),
      FOldCell(std::move(AOldCell)),
      FNewCell(std::move(ANewCell)) {}

void TCellEditCommand::Execute() {
  if (TWorksheet* sheet = Sheet()) sheet->SetCell(FAddress, FNewCell);
}

void TCellEditCommand::Undo() {
  if (TWorksheet* sheet = Sheet()) sheet->SetCell(FAddress, FOldCell);
}

TText TCellEditCommand::Description() const { return u"Edit cell " + FAddress.ToA1(); }

TMultiCellEditCommand::TMultiCellEditCommand(TWorkbook& AWorkbook, int32_t ASheetIndex,
                                             const std::vector<TCellSnapshot>& AOldCells,
                                             const std::vector<TCellSnapshot>& ANewCells, TText ADescription)
    : TMultiCellEditCommand(AWorkbook, ASheetIndex, BatchOf(AOldCells), BatchOf(ANewCells), std::move(ADescription)) {}

TMultiCellEditCommand::TMultiCellEditCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, detail::TCellBatch AOldCells,
                                             detail::TCellBatch ANewCells, TText ADescription)
    : TSheetCommand(AWorkbook, ASheetIndex),
      FOldCells(std::make_unique<const detail::TCellBatch>(std::move(AOldCells))),
      FNewCells(std::make_unique<const detail::TCellBatch>(std::move(ANewCells))),
      FDescription(std::move(ADescription)) {}

TMultiCellEditCommand::~TMultiCellEditCommand() = default;

void TMultiCellEditCommand::Execute() {
  if (TWorksheet* sheet = Sheet()) FNewCells->WriteTo(*sheet);
}

void TMultiCellEditCommand::Undo() {
  if (TWorksheet* sheet = Sheet()) FOldCells->WriteTo(*sheet);
}

TMergeCommand::TMergeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, const TCellRange& ARange, bool AMerging)
    : TSheetCommand(AWorkbook, ASheetIndex), FRange(ARange.Normalize()), FMerging(AMerging) {}

void TMergeCommand::Apply(bool AMerge) {
  TWorksheet* sheet = Sheet();
  if (!sheet) return;
  if (AMerge) {
    sheet->MergeRange(FRange);
  } else {
    sheet->UnmergeAt(FRange.StartCol, FRange.StartRow);
  }
  MarkModified();
}

TText TMergeCommand::Description() const { return FMerging ? u"Merge cells" : u"Unmerge cells"; }

TColResizeCommand::TColResizeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, std::vector<int32_t> ACols,
                                     std::vector<double> AOldWidths, std::vector<double> ANewWidths)
    : TSheetCommand(AWorkbook, ASheetIndex),
      FCols(std::move(ACols)),
      FOldWidths(std::move(AOldWidths)),
      FNewWidths(std::move(ANewWidths)) {}

TColResizeCommand::TColResizeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ACol, double AOldWidth,
                                     double ANewWidth)
    : TColResizeCommand(AWorkbook, ASheetIndex, std::vector{ACol}, std::vector{AOldWidth}, std::vector{ANewWidth}) {}

void TColResizeCommand::Apply(const std::vector<double>& AWidths) {
  TWorksheet* sheet = Sheet();
  if (!sheet) return;
  const size_t count = std::min(FCols.size(), AWidths.size());
  for (size_t i = 0; i < count; ++i) sheet->Sizing().SetColWidthChars(FCols[i], AWidths[i]);
  MarkModified();
}

TText TColResizeCommand::Description() const { return FCols.size() >= 2 ? u"Resize columns" : u"Resize column"; }

TRowResizeCommand::TRowResizeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ARow, double AOldHeight,
                                     double ANewHeight)
    : TSheetCommand(AWorkbook, ASheetIndex), FRow(ARow), FOldHeight(AOldHeight), FNewHeight(ANewHeight) {}

void TRowResizeCommand::Apply(double AHeight) {
  TWorksheet* sheet = Sheet();
  if (!sheet) return;
  sheet->Sizing().SetRowHeightPt(FRow, AHeight);
  MarkModified();
}

TText TRowResizeCommand::Description() const { return u"Resize row"; }

}  // namespace tessarine
