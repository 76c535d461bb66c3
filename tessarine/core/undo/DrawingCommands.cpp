#include <tessarine/core/undo/DrawingCommands.h>

#include <utility>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

namespace tessarine {

TSheetDrawingList* TDrawingCommand::Drawings() const {
  TWorksheet* sheet = Sheet();
  return sheet ? &sheet->Drawings() : nullptr;
}

TSheetDrawing* TDrawingCommand::Drawing() const {
  const TSheetDrawingList* drawings = Drawings();
  return drawings ? drawings->GetItem(FDrawingIndex) : nullptr;
}

TDrawingAnchorCommand::TDrawingAnchorCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex,
                                             const TDrawingAnchor& AOldAnchor, const TDrawingAnchor& ANewAnchor,
                                             bool AWasResize)
    : TDrawingCommand(AWorkbook, ASheetIndex, ADrawingIndex),
      FOldAnchor(AOldAnchor),
      FNewAnchor(ANewAnchor),
      FWasResize(AWasResize) {}

void TDrawingAnchorCommand::Apply(const TDrawingAnchor& AAnchor) {
  TSheetDrawing* drawing = Drawing();
  if (!drawing) return;
  drawing->Anchor = AAnchor;
  MarkModified();
}

TDrawingDeleteCommand::TDrawingDeleteCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex)
    : TDrawingCommand(AWorkbook, ASheetIndex, ADrawingIndex) {}

TDrawingDeleteCommand::~TDrawingDeleteCommand() = default;

void TDrawingDeleteCommand::Execute() {
  if (FDrawing || !Drawing()) return;
  FDrawing = Drawings()->Extract(FDrawingIndex);
  MarkModified();
}

void TDrawingDeleteCommand::Undo() {
  TSheetDrawingList* drawings = Drawings();
  if (!drawings || !FDrawing) return;
  drawings->Insert(FDrawingIndex, std::move(FDrawing));
  MarkModified();
}

TDrawingAddCommand::TDrawingAddCommand(TWorkbook& AWorkbook, int32_t ASheetIndex,
                                       std::unique_ptr<TSheetDrawing> ADrawing)
    : TDrawingCommand(AWorkbook, ASheetIndex, -1), FDrawing(std::move(ADrawing)), FPlaced(FDrawing.get()) {}

TDrawingAddCommand::~TDrawingAddCommand() = default;

void TDrawingAddCommand::Execute() {
  TSheetDrawingList* drawings = Drawings();
  if (!drawings || !FDrawing) return;
  if (FDrawingIndex < 0) FDrawingIndex = drawings->Count();
  drawings->Insert(FDrawingIndex, std::move(FDrawing));
  MarkModified();
}

void TDrawingAddCommand::Undo() {
  TSheetDrawingList* drawings = Drawings();
  if (!drawings || FDrawing) return;
  const int32_t index = drawings->IndexOf(FPlaced);
  if (index < 0) return;
  FDrawingIndex = index;
  FDrawing = drawings->Extract(index);
  MarkModified();
}

TDrawingTitleCommand::TDrawingTitleCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex,
                                           TText AOldTitle, TText ANewTitle, TText AOldName, TText ANewName)
    : TDrawingCommand(AWorkbook, ASheetIndex, ADrawingIndex),
      FOldTitle(std::move(AOldTitle)),
      FNewTitle(std::move(ANewTitle)),
      FOldName(std::move(AOldName)),
      FNewName(std::move(ANewName)) {}

void TDrawingTitleCommand::Apply(const TText& ATitle, const TText& AName) {
  TSheetDrawing* drawing = Drawing();
  if (!drawing) return;
  drawing->Title = ATitle;
  drawing->Name = AName;
  MarkModified();
}

TDrawingLegendCommand::TDrawingLegendCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex,
                                             TSheetChartLegendPos AOldPos, TSheetChartLegendPos ANewPos, bool AOldShow,
                                             bool ANewShow)
    : TDrawingCommand(AWorkbook, ASheetIndex, ADrawingIndex),
      FOldPos(AOldPos),
      FNewPos(ANewPos),
      FOldShow(AOldShow),
      FNewShow(ANewShow) {}

void TDrawingLegendCommand::Apply(TSheetChartLegendPos APos, bool AShow) {
  TSheetDrawing* drawing = Drawing();
  if (!drawing) return;
  drawing->LegendPos = APos;
  drawing->ShowLegend = AShow;
  MarkModified();
}

}  // namespace tessarine
