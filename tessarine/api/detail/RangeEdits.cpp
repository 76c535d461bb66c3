#include <tessarine/api/detail/RangeEdits.h>

#include <string>
#include <vector>

#include <tessarine/api/SheetRange.h>
#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

void EditStored(TCellStore& AStore, TCellAddress AAddress, const TOneCellEdit& AEdit) {
  TCell cell = AStore.Get(AAddress.Col, AAddress.Row);
  AEdit(cell);
  AStore.Set(AAddress.Col, AAddress.Row, cell);
}

/// For an edit that leaves empty cells empty.
void EditStoredCells(TCellStore& AStore, const TCellRange& ARange, const TOneCellEdit& AEdit) {
  std::vector<TCellAddress> stored;
  AStore.ForEachByRow(ARange, [&](int32_t ACol, int32_t ARow, const TCellSlot&) { stored.push_back({ACol, ARow}); });
  for (const TCellAddress address : stored) EditStored(AStore, address, AEdit);
}

void EditAllCells(TCellStore& AStore, const TCellRange& ARange, const TCell& ABlank, const TOneCellEdit& AEdit) {
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) {
      if (AStore.Find(col, row)) {
        EditStored(AStore, {col, row}, AEdit);
      } else {
        AStore.Set(col, row, ABlank);
      }
    }
  }
}

/// A cell that has nothing in the side table is written without being built.
void PutInStore(TCellStore& AStore, TCellAddress AAddress, const TCellValue& AValue) {
  const TCellSlot* slot = AStore.Find(AAddress.Col, AAddress.Row);
  if (slot && slot->HasExtras()) return EditStored(AStore, AAddress, [&](TCell& ACell) { PutValue(ACell, AValue); });
  AStore.SetValue(AAddress.Col, AAddress.Row, AValue, slot ? slot->StyleIndex : 0);
}

}  // namespace

void CheckRangeCount(const TCellRange& ARange) {
  const int64_t count = int64_t{ARange.Width()} * ARange.Height();
  if (count > kMaxRangeCells)
    throw ELimit(Utf16ToUtf8(ARange.ToA1()) + " has " + std::to_string(count) + " cells; at most " +
                 std::to_string(kMaxRangeCells) + " can be written at once");
}

void EditRangePlain(TWorksheet& ASheet, const TCellRange& ARange, const TOneCellEdit& AEdit) {
  CheckRangeCount(ARange);
  for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) {
    for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
      TCell cell = ASheet.GetCell({col, row});
      AEdit(cell);
      ASheet.SetCell({col, row}, cell);
    }
  }
}

void EditRange(TWorksheet& ASheet, const TCellRange& ARange, const TOneCellEdit& AEdit) {
  if (!ASheet.ChangesAreUnobserved()) return EditRangePlain(ASheet, ARange, AEdit);
  TCell blank;
  AEdit(blank);
  if (blank.IsEmpty()) {
    EditStoredCells(ASheet.Store(), ARange, AEdit);
  } else {
    CheckRangeCount(ARange);
    EditAllCells(ASheet.Store(), ARange, blank, AEdit);
  }
  ASheet.UpdateUsedBounds({ARange.EndCol, ARange.EndRow});
  ASheet.NoteBulkChange();
}

void EditFormatsPlain(TWorksheet& ASheet, const TCellRange& ARange, const TOneFormatEdit& AEdit) {
  EditRangePlain(ASheet, ARange, [&](TCell& ACell) { AEdit(EnsureFormat(ACell)); });
}

void EditFormats(TWorksheet& ASheet, const TCellRange& ARange, const TOneFormatEdit& AEdit) {
  if (!ASheet.ChangesAreUnobserved()) return EditFormatsPlain(ASheet, ARange, AEdit);
  CheckRangeCount(ARange);
  ASheet.Store().EditOverrides(ARange, AEdit);
  ASheet.UpdateUsedBounds({ARange.EndCol, ARange.EndRow});
  ASheet.NoteBulkChange();
}

void WriteValue(TWorksheet& ASheet, TCellAddress AAddress, const TCellValue& AValue) {
  if (ASheet.ChangesAreUnobserved()) {
    PutInStore(ASheet.Store(), AAddress, AValue);
    ASheet.UpdateUsedBounds(AAddress);
    return ASheet.NoteBulkChange();
  }
  TCell cell = ASheet.GetCell(AAddress);
  PutValue(cell, AValue);
  ASheet.SetCell(AAddress, cell);
}

void WriteRange(TWorksheet& ASheet, const TCellRange& ARange, const TCellValue& AValue) {
  if (AValue.IsEmpty() || !ASheet.ChangesAreUnobserved())
    return EditRange(ASheet, ARange, [&](TCell& ACell) { PutValue(ACell, AValue); });
  CheckRangeCount(ARange);
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) PutInStore(ASheet.Store(), {col, row}, AValue);
  }
  ASheet.UpdateUsedBounds({ARange.EndCol, ARange.EndRow});
  ASheet.NoteBulkChange();
}

}  // namespace tessarine::detail
