#pragma once

#include <cstdint>
#include <memory>

#include <tessarine/Export.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/undo/CellCommands.h>

namespace tessarine {

/// What the commands for one drawing share: it is known by its place in the sheet's list, and a command whose drawing
/// does not exist does nothing. All that do something mark the workbook modified.
class TESSARINE_API TDrawingCommand : public TSheetCommand {
 protected:
  TDrawingCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex)
      : TSheetCommand(AWorkbook, ASheetIndex), FDrawingIndex(ADrawingIndex) {}

  /// Null when the sheet does not exist.
  TSheetDrawingList* Drawings() const;
  TSheetDrawing* Drawing() const;

  int32_t FDrawingIndex;
};

/// A drawing moved or resized.
class TESSARINE_API TDrawingAnchorCommand final : public TDrawingCommand {
 public:
  TDrawingAnchorCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex,
                        const TDrawingAnchor& AOldAnchor, const TDrawingAnchor& ANewAnchor, bool AWasResize);
  void Execute() override { Apply(FNewAnchor); }
  void Undo() override { Apply(FOldAnchor); }
  TText Description() const override { return FWasResize ? u"Resize drawing" : u"Move drawing"; }

 private:
  void Apply(const TDrawingAnchor& AAnchor);

  TDrawingAnchor FOldAnchor;
  TDrawingAnchor FNewAnchor;
  bool FWasResize;
};

/// Takes a drawing out of its sheet and owns it until it is put back. What the sheet kept of its file stays.
class TESSARINE_API TDrawingDeleteCommand final : public TDrawingCommand {
 public:
  TDrawingDeleteCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex);
  ~TDrawingDeleteCommand() override;
  void Execute() override;
  void Undo() override;
  TText Description() const override { return u"Delete drawing"; }

 private:
  std::unique_ptr<TSheetDrawing> FDrawing;  // while it is deleted
};

/// Puts a drawing on a sheet; owns it while it is not there.
class TESSARINE_API TDrawingAddCommand final : public TDrawingCommand {
 public:
  TDrawingAddCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, std::unique_ptr<TSheetDrawing> ADrawing);
  ~TDrawingAddCommand() override;
  /// At the end of the list at first, later where it was.
  void Execute() override;
  void Undo() override;
  TText Description() const override { return u"Insert drawing"; }

 private:
  std::unique_ptr<TSheetDrawing> FDrawing;  // while it is not on the sheet
  const TSheetDrawing* FPlaced;             // to be found again when it moved in the list
};

/// Title and name.
class TESSARINE_API TDrawingTitleCommand final : public TDrawingCommand {
 public:
  TDrawingTitleCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex, TText AOldTitle,
                       TText ANewTitle, TText AOldName, TText ANewName);
  void Execute() override { Apply(FNewTitle, FNewName); }
  void Undo() override { Apply(FOldTitle, FOldName); }
  TText Description() const override { return u"Edit drawing"; }

 private:
  void Apply(const TText& ATitle, const TText& AName);

  TText FOldTitle;
  TText FNewTitle;
  TText FOldName;
  TText FNewName;
};

/// Place and visibility of a chart's legend.
class TESSARINE_API TDrawingLegendCommand final : public TDrawingCommand {
 public:
  TDrawingLegendCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex, TSheetChartLegendPos AOldPos,
                        TSheetChartLegendPos ANewPos, bool AOldShow, bool ANewShow);
  void Execute() override { Apply(FNewPos, FNewShow); }
  void Undo() override { Apply(FOldPos, FOldShow); }
  TText Description() const override { return FOldShow != FNewShow ? u"Toggle legend" : u"Move legend"; }

 private:
  void Apply(TSheetChartLegendPos APos, bool AShow);

  TSheetChartLegendPos FOldPos;
  TSheetChartLegendPos FNewPos;
  bool FOldShow;
  bool FNewShow;
};

}  // namespace tessarine
