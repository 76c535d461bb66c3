#include <tessarine/core/sheet/Worksheet.h>

#include <algorithm>
#include <limits>
#include <map>
#include <vector>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/sheet/detail/FormulaMover.h>
#include <tessarine/core/sheet/detail/LineMap.h>

namespace tessarine {

namespace {

using detail::TLineEdit;

template <class TList>
void ShiftList(TList& AList, const TLineEdit& AEdit) {
  AEdit.Axis == saRows ? AList.ShiftRows(AEdit.Start, AEdit.Count) : AList.ShiftColumns(AEdit.Start, AEdit.Count);
}

template <class TList>
void MoveList(TList& AList, const TLineEdit& AEdit) {
  AEdit.Axis == saRows ? AList.MoveRows(AEdit.Start, AEdit.Count, AEdit.Dest)
                       : AList.MoveColumns(AEdit.Start, AEdit.Count, AEdit.Dest);
}

int32_t ShiftedFreeze(int32_t AFrozen, const TLineEdit& AEdit) {
  if (AFrozen <= 0 || AFrozen < AEdit.Start) return AFrozen;
  return static_cast<int32_t>(std::clamp<int64_t>(AFrozen + AEdit.Count, 0, std::numeric_limits<int32_t>::max()));
}

/// What a new cell of a table takes over from its neighbour; false when that is nothing.
bool TakeOver(const TCell& ASource, bool AWithFormula, int32_t ARowDistance, TCell& ACell) {
  bool isChanged = false;
  if (ACell.StyleIndex == 0 && ASource.StyleIndex != 0) {
    ACell.StyleIndex = ASource.StyleIndex;
    isChanged = true;
  }
  if (!ACell.HasFormatOverride && ASource.HasFormatOverride) {
    ACell.HasFormatOverride = true;
    ACell.FormatOverride = ASource.FormatOverride;
    isChanged = true;
  }
  if (!AWithFormula || !ACell.Value.IsEmpty() || ASource.Value.Kind != cvkFormula) return isChanged;
  const std::u16string formula = OffsetSharedFormula(ASource.Value.Text, 0, ARowDistance);
  if (formula.empty()) return isChanged;
  ACell.Value = TCellValue::FromFormula(formula);
  ACell.ClearCachedResult();
  return true;
}

}  // namespace

void TWorksheet::InsertRows(int32_t AStart, int32_t ACount) {
  if (const auto edit = detail::MakeShift(saRows, AStart, ACount, false)) EditLines(*edit, false);
}

void TWorksheet::DeleteRows(int32_t AStart, int32_t ACount) {
  if (const auto edit = detail::MakeShift(saRows, AStart, ACount, true)) EditLines(*edit, false);
}

void TWorksheet::InsertColumns(int32_t AStart, int32_t ACount) {
  if (const auto edit = detail::MakeShift(saColumns, AStart, ACount, false)) EditLines(*edit, false);
}

void TWorksheet::DeleteColumns(int32_t AStart, int32_t ACount) {
  if (const auto edit = detail::MakeShift(saColumns, AStart, ACount, true)) EditLines(*edit, false);
}

void TWorksheet::MoveRows(int32_t AStart, int32_t ACount, int32_t ADest) {
  if (const auto edit = detail::MakeMove(saRows, AStart, ACount, ADest)) EditLines(*edit, false);
}

void TWorksheet::MoveColumns(int32_t AStart, int32_t ACount, int32_t ADest) {
  if (const auto edit = detail::MakeMove(saColumns, AStart, ACount, ADest)) EditLines(*edit, false);
}

void TWorksheet::EditLines(const TLineEdit& AEdit, bool ARewritesFormulas) {
  if (ARewritesFormulas) {
    detail::TFormulaMover mover(FStore->Pool(), AEdit, FName, true);
    FStore->Rearrange(AEdit.Map(), mover);
  } else {
    detail::TFormulaMover keeper(FStore->Pool(), AEdit.Axis);
    FStore->Rearrange(AEdit.Map(), keeper);
  }
  RecalcUsedBounds();
  AEdit.IsMove ? MoveLists(AEdit) : ShiftLists(AEdit);
  FAutoFilter->SyncToTables(*FTables);
}

void TWorksheet::ShiftLists(const TLineEdit& AEdit) {
  ShiftList(*FMerges, AEdit);
  ShiftList(*FSpills, AEdit);
  ShiftList(*FSizing, AEdit);
  ShiftList(*FTables, AEdit);
  ShiftList(*FPivots, AEdit);
  ShiftList(*FSlicers, AEdit);
  ShiftList(*FValidations, AEdit);
  ShiftList(*FConditionalFormats, AEdit);
  ShiftList(*FComments, AEdit);
  ShiftList(*FAutoFilter, AEdit);
  ShiftList(*FDrawings, AEdit);
  if (AEdit.Axis == saRows) {
    SetFrozenRows(ShiftedFreeze(FFrozenRows, AEdit));
  } else {
    SetFrozenCols(ShiftedFreeze(FFrozenCols, AEdit));
  }
}

/// Slicers and the freeze stay where they are; links go along with moves only.
void TWorksheet::MoveLists(const TLineEdit& AEdit) {
  MoveList(*FMerges, AEdit);
  FSpills->ClearAll();
  MoveList(*FSizing, AEdit);
  MoveList(*FTables, AEdit);
  MoveList(*FPivots, AEdit);
  MoveList(*FValidations, AEdit);
  MoveList(*FConditionalFormats, AEdit);
  MoveList(*FComments, AEdit);
  MoveList(*FAutoFilter, AEdit);
  MoveList(*FDrawings, AEdit);
  MoveList(*FHyperlinks, AEdit);
}

void TWorksheet::AdjustFormulas(TTextArg ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ADelta) {
  if (ADelta == 0) return;
  const auto edit = TLineEdit::Shift(ARows ? saRows : saColumns, AStart, ADelta);
  RewriteCells(edit, ASheetName.View(), AOnSheet);
  RewriteLists(edit, ASheetName.View(), AOnSheet);
}

void TWorksheet::AdjustFormulasForMove(TTextArg ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ACount,
                                       int64_t ADest) {
  if (ACount < 1 || AStart == ADest) return;
  const auto edit = TLineEdit::Move(ARows ? saRows : saColumns, AStart, ACount, ADest);
  RewriteCells(edit, ASheetName.View(), AOnSheet);
  RewriteLists(edit, ASheetName.View(), AOnSheet);
}

void TWorksheet::RewriteCells(const TLineEdit& AEdit, std::u16string_view ASheetName, bool AOnSheet) {
  if (FStore->FormulaCount() == 0) return;
  detail::TFormulaMover mover(FStore->Pool(), AEdit, ASheetName, AOnSheet);
  detail::TLineMap stay;
  stay.Axis = AEdit.Axis;
  FStore->Rearrange(stay, mover);
}

void TWorksheet::RewriteLists(const TLineEdit& AEdit, std::u16string_view ASheetName, bool AOnSheet) {
  const bool rows = AEdit.Axis == saRows;
  if (AEdit.IsMove) {
    FValidations->AdjustFormulasForMove(ASheetName, AOnSheet, rows, AEdit.Start, AEdit.Count, AEdit.Dest);
    FDrawings->AdjustFormulasForMove(ASheetName, AOnSheet, rows, AEdit.Start, AEdit.Count, AEdit.Dest);
  } else {
    FValidations->AdjustFormulas(ASheetName, AOnSheet, rows, AEdit.Start, AEdit.Count);
    FDrawings->AdjustFormulas(ASheetName, AOnSheet, rows, AEdit.Start, AEdit.Count);
  }
}

void TWorksheet::PropagateTableInsert(bool ARows, int32_t AStart, int32_t ACount) {
  if (ACount < 1) return;
  const int64_t behind = int64_t{AStart} + ACount;
  for (size_t index = 0; index < FTables->Count(); ++index) {
    const TCellRange data = FTables->GetItem(index).DataRange();
    const int32_t lo = ARows ? data.StartRow : data.StartCol;
    const int32_t hi = std::min(ARows ? data.EndRow : data.EndCol, ARows ? kMaxRow : kMaxCol);
    const auto last = static_cast<int32_t>(std::min<int64_t>(hi, behind - 1));
    std::map<int64_t, std::vector<TCellAddress>> cellsOf;  // of a source line
    for (int32_t line = std::max(lo, AStart); line <= last; ++line) {
      const bool takesBefore = line > lo && line - 1 < AStart;
      const int64_t source = takesBefore ? line - 1 : behind;
      if (source < lo || source > hi || source < 1) continue;
      const auto sourceLine = static_cast<int32_t>(source);
      const auto added = cellsOf.try_emplace(source);
      const auto entry = added.first;
      const bool isNew = added.second;
      if (isNew) {
        TCellRange across = data;
        (ARows ? across.StartRow : across.StartCol) = (ARows ? across.EndRow : across.EndCol) = sourceLine;
        across = {std::max(across.StartCol, 1), std::max(across.StartRow, 1), std::min(across.EndCol, kMaxCol),
                  std::min(across.EndRow, kMaxRow)};
        FStore->ForEachByRow(across, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
          entry->second.push_back({ACol, ARow});
        });
      }
      for (const TCellAddress& from : entry->second) {
        const TCellAddress to{ARows ? from.Col : line, ARows ? line : from.Row};
        TCell cell = GetCell(to);
        if (TakeOver(GetCell(from), ARows, line - sourceLine, cell)) SetCell(to, cell);
      }
    }
  }
}

}  // namespace tessarine
