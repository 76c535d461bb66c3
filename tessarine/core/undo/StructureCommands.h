#pragma once

#include <cstdint>
#include <memory>

#include <tessarine/Export.h>
#include <tessarine/core/undo/CellCommands.h>

namespace tessarine {

namespace detail {
struct TStoreSnapshot;
}

/// What the commands for lines share: the state of the sheet, of the workbook's names and of all its formulas before
/// the first execution. It is kept as what has changed since, not as a copy of the cells.
///
/// Taking back restores the sheet's cells (edits made meanwhile are lost, results of formulas are gone), merges, sizes,
/// visibility, outline, frozen lines, tables, validations and filter, the defined names, and the texts of the formulas
/// on all sheets, which lose their results. The change event is fired for every cell that was captured and once more
/// for every formula; the first one shows formulas without a result. Notes, links, conditional formats, slicers, pivot
/// tables, drawings and page settings stay as the edit left them; spilled blocks and measured heights go.
/// Executing again runs the edit anew on what is there then, and keeps the first state.
class TESSARINE_API TStructureCommand : public TSheetCommand {
 public:
  ~TStructureCommand() override;
  void Execute() override;
  void Undo() override;

 protected:
  TStructureCommand(TWorkbook& AWorkbook, int32_t ASheetIndex);
  virtual void Edit() = 0;

 private:
  struct TSnapshot;

  void Capture(const TWorksheet& ASheet);
  void RestoreCells(TWorksheet& ASheet) const;
  void RestoreLists(TWorksheet& ASheet) const;
  void RestoreFormulas() const;

  std::unique_ptr<const TSnapshot> FSnapshot;  // null before the first execution
  bool FIsHalfUndone = false;                  // an exception left Undo
};

/// Inserting or deleting rows or columns.
class TESSARINE_API TRowColShiftCommand final : public TStructureCommand {
 public:
  TRowColShiftCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, bool AIsRows, bool AIsDelete, int32_t AStart,
                      int32_t ACount);
  TText Description() const override;

 private:
  void Edit() override;

  bool FIsRows;
  bool FIsDelete;
  int32_t FStart;
  int32_t FCount;
};

/// Moving rows or columns before another one.
class TESSARINE_API TRowColMoveCommand final : public TStructureCommand {
 public:
  /// ADestBefore counts in the numbering before the move.
  TRowColMoveCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, bool AIsRows, int32_t AStart, int32_t ACount,
                     int32_t ADestBefore);
  TText Description() const override;

 private:
  void Edit() override;

  bool FIsRows;
  int32_t FStart;
  int32_t FCount;
  int32_t FDestBefore;
};

}  // namespace tessarine
