#pragma once

#include <cstdint>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/undo/CellCommands.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

/// The items selected in a slicer. The slicer's pivot tables on its sheet are refreshed with it; nothing happens when
/// the slicer is gone.
class TESSARINE_API TSlicerSelectionCommand final : public TSheetCommand {
 public:
  TSlicerSelectionCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, TText ASlicerName, std::vector<TText> AOldSelected,
                          std::vector<TText> ANewSelected);
  void Execute() override { Apply(FNewSelected); }
  void Undo() override { Apply(FOldSelected); }
  TText Description() const override;

 private:
  void Apply(const std::vector<TText>& ASelected);

  TText FSlicerName;
  std::vector<TText> FOldSelected;
  std::vector<TText> FNewSelected;
};

/// What the dropdown of a pivot field sets.
struct TPivotFilterState {
  bool HasFilter = false;
  std::vector<TText> Items;  // left in, when HasFilter
  int32_t SortFieldIndex = -1;
  int32_t SortValueOrdinal = -1;
  bool SortAscending = true;

  friend bool operator==(const TPivotFilterState&, const TPivotFilterState&) = default;
};

/// The selection of a pivot table's field and the order of its rows. The table is refreshed with it; nothing happens
/// when the table is gone.
class TESSARINE_API TPivotFilterCommand final : public TSheetCommand {
 public:
  /// A field index below 0 leaves the selections alone.
  TPivotFilterCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, TText APivotName, int32_t AFieldIndex,
                      TPivotFilterState AOldState, TPivotFilterState ANewState);
  void Execute() override { Apply(FNewState); }
  void Undo() override { Apply(FOldState); }
  TText Description() const override;

 private:
  void Apply(const TPivotFilterState& AState);

  TText FPivotName;
  int32_t FFieldIndex;
  TPivotFilterState FOldState;
  TPivotFilterState FNewState;
};

}  // namespace tessarine
