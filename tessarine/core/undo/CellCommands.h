#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;

namespace detail {
class TCellBatch;
}

/// A cell as it stood at some time.
struct TCellSnapshot {
  TCellAddress Address;
  TCell Cell;
};

/// What the commands for one sheet share. They know the sheet by its index and do nothing once that is out of range.
/// Those that change no cells mark the workbook modified themselves. The workbook outlives its commands.
class TESSARINE_API TSheetCommand : public IUndoCommand {
 public:
  uint64_t ChangeStamp() const final;

 protected:
  TSheetCommand(TWorkbook& AWorkbook, int32_t ASheetIndex) : FWorkbook(AWorkbook), FSheetIndex(ASheetIndex) {}

  TWorkbook& Workbook() const { return FWorkbook; }
  int32_t SheetIndex() const { return FSheetIndex; }
  /// Null for an index out of range.
  TWorksheet* Sheet() const;
  /// To be called with a change of something else than the sheet's cells, which the stamp cannot see.
  void NoteChange() { ++FChanges; }
  void MarkModified();

 private:
  TWorkbook& FWorkbook;
  int32_t FSheetIndex;
  uint64_t FChanges = 0;
};

/// One cell with its old and new content.
class TESSARINE_API TCellEditCommand final : public TSheetCommand {
 public:
  TCellEditCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, TCellAddress AAddress, TCell AOldCell, TCell ANewCell);
  void Execute() override;
  void Undo() override;
  TText Description() const override;

 private:
  TCellAddress FAddress;
  TCell FOldCell;
  TCell FNewCell;
};

/// Several cells as one step; both directions write their cells in the order given.
class TESSARINE_API TMultiCellEditCommand final : public TSheetCommand {
 public:
  TMultiCellEditCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, const std::vector<TCellSnapshot>& AOldCells,
                        const std::vector<TCellSnapshot>& ANewCells, TText ADescription);
  /// The same for the engine's own edits, which may be large.
  TMultiCellEditCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, detail::TCellBatch AOldCells,
                        detail::TCellBatch ANewCells, TText ADescription);
  ~TMultiCellEditCommand() override;
  void Execute() override;
  void Undo() override;
  TText Description() const override { return FDescription; }

 private:
  std::unique_ptr<const detail::TCellBatch> FOldCells;  // never null
  std::unique_ptr<const detail::TCellBatch> FNewCells;  // never null
  TText FDescription;
};

/// Merging a range, or taking the merge at its top left cell apart.
class TESSARINE_API TMergeCommand final : public TSheetCommand {
 public:
  TMergeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, const TCellRange& ARange, bool AMerging);
  void Execute() override { Apply(FMerging); }
  void Undo() override { Apply(!FMerging); }
  TText Description() const override;

 private:
  void Apply(bool AMerge);

  TCellRange FRange;
  bool FMerging;
};

/// Widths of columns in characters.
class TESSARINE_API TColResizeCommand final : public TSheetCommand {
 public:
  /// One width a column in both lists.
  TColResizeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, std::vector<int32_t> ACols,
                    std::vector<double> AOldWidths, std::vector<double> ANewWidths);
  TColResizeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ACol, double AOldWidth, double ANewWidth);
  void Execute() override { Apply(FNewWidths); }
  void Undo() override { Apply(FOldWidths); }
  TText Description() const override;

 private:
  void Apply(const std::vector<double>& AWidths);

  std::vector<int32_t> FCols;
  std::vector<double> FOldWidths;
  std::vector<double> FNewWidths;
};

/// The height of a row in points. Taking it back leaves a custom height, also where there was none before.
class TESSARINE_API TRowResizeCommand final : public TSheetCommand {
 public:
  TRowResizeCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ARow, double AOldHeight, double ANewHeight);
  void Execute() override { Apply(FNewHeight); }
  void Undo() override { Apply(FOldHeight); }
  TText Description() const override;

 private:
  void Apply(double AHeight);

  int32_t FRow;
  double FOldHeight;
  double FNewHeight;
};

}  // namespace tessarine
