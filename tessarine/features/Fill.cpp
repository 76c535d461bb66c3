#include <tessarine/features/Fill.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <utility>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/undo/CellCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/core/undo/detail/CellBatch.h>
#include <tessarine/core/values/Coercion.h>

namespace tessarine {

namespace {

/// Steps that differ by no more than this are even.
constexpr double kStepTolerance = 1e-9;
/// A destination far from its source is reached through all cells between: no more than these.
constexpr int64_t kMaxWrittenCells = int64_t{1} << 22;

int64_t WidthOf(const TCellRange& ARange) { return int64_t{ARange.EndCol} - ARange.StartCol + 1; }
int64_t HeightOf(const TCellRange& ARange) { return int64_t{ARange.EndRow} - ARange.StartRow + 1; }

bool IsWholeLines(const TCellRange& ARange) {
  return (ARange.StartCol <= 1 && ARange.EndCol >= kMaxCol) || (ARange.StartRow <= 1 && ARange.EndRow >= kMaxRow);
}

/// How far APosition lies outside AFirst to ALast.
int64_t DistanceFrom(int64_t APosition, int64_t AFirst, int64_t ALast) {
  if (APosition > ALast) return APosition - ALast;
  return APosition < AFirst ? AFirst - APosition : 0;
}

struct TSeries {
  double Start = 0;
  double Step = 0;
};

/// A fill of one source in one direction. "Line" is a column of the source for a vertical fill and a row for a
/// horizontal one, "along" a position on it, counted from the source's first cell.
class TFiller {
 public:
  TFiller(const TWorksheet& ASheet, const TCellRange& ASource, const TCellRange& ADest, TTessarineFillDirection AWay)
      : FSheet(ASheet),
        FSource(ASource),
        FVertical(AWay == tfdDown || AWay == tfdUp),
        FForward(AWay == tfdDown || AWay == tfdRight),
        FLength(FVertical ? HeightOf(ASource) : WidthOf(ASource)),
        FLines(FVertical ? WidthOf(ASource) : HeightOf(ASource)) {
    const TCellRange& dest = ADest;
    if (FForward) {
      FCount = FVertical ? int64_t{dest.EndRow} - FSource.EndRow : int64_t{dest.EndCol} - FSource.EndCol;
    } else {
      FCount = FVertical ? int64_t{FSource.StartRow} - dest.StartRow : int64_t{FSource.StartCol} - dest.StartCol;
    }
  }

  bool Fits() const { return FCount <= kMaxWrittenCells / std::max<int64_t>(FLines, 1); }

  void Run(bool ACopyOnly) {
    Before.Reserve(static_cast<size_t>(FCount * FLines));
    After.Reserve(static_cast<size_t>(FCount * FLines));
    for (int64_t line = 0; line < FLines; ++line) {
      for (int64_t step = 0; step < FCount; ++step) {
        const TCellAddress address = At(line, Along(step));
        Before.AddCopy(address, FSheet, address);
      }
      const std::optional<TSeries> series = ACopyOnly || FLength < 2 ? std::nullopt : DetectSeries(line);
      series ? FillSeries(line, *series) : FillCopies(line);
    }
  }

  detail::TCellBatch Before;
  detail::TCellBatch After;

 private:
  /// The position of the destination cell number AStep, away from the source.
  int64_t Along(int64_t AStep) const { return FForward ? FLength + AStep : -1 - AStep; }

  TCellAddress At(int64_t ALine, int64_t AAlong) const {
    const int64_t col = FSource.StartCol + (FVertical ? ALine : AAlong);
    const int64_t row = FSource.StartRow + (FVertical ? AAlong : ALine);
    return {static_cast<int32_t>(col), static_cast<int32_t>(row)};
  }

  const detail::TCellSlot* SlotAt(TCellAddress AAddress) const {
    return AAddress.IsValid() ? FSheet.Store().Find(AAddress.Col, AAddress.Row) : nullptr;
  }

  /// Nothing unless all cells of the line hold numbers. Where the steps differ, the average slope so far takes the
  /// step's place.
  std::optional<TSeries> DetectSeries(int64_t ALine) const {
    TSeries series;
    double previous = 0;
    for (int64_t i = 0; i < FLength; ++i) {
      const detail::TCellSlot* slot = SlotAt(At(ALine, i));
      if (!slot || slot->Kind != cvkNumber) return std::nullopt;
      const double value = slot->Number;
      if (i == 0) {
        series.Start = value;
      } else if (i == 1) {
        series.Step = value - previous;
      } else if (std::fabs((value - previous) - series.Step) > kStepTolerance) {
        series.Step = (value - series.Start) / static_cast<double>(i);
      }
      previous = value;
    }
    return series;
  }

  void FillSeries(int64_t ALine, const TSeries& ASeries) {
    const TCellAddress nearest = At(ALine, FForward ? FLength - 1 : 0);
    TCell pattern = FSheet.GetCell(nearest);
    pattern.ClearCachedResult();
    const bool plain = !SlotAt(nearest)->HasExtras();
    for (int64_t step = 0; step < FCount; ++step) {
      const int64_t along = Along(step);
      // In the widest precision there is, rounded once.
      const auto number = static_cast<double>(static_cast<long double>(along) * static_cast<long double>(ASeries.Step) +
                                              static_cast<long double>(ASeries.Start));
      if (plain && std::isfinite(number)) {
        After.AddNumber(At(ALine, along), number == 0 ? 0.0 : number, pattern.StyleIndex);
      } else {
        pattern.Value = NumberOrError(number);
        After.Add(At(ALine, along), pattern);
      }
    }
  }

  void FillCopies(int64_t ALine) {
    for (int64_t step = 0; step < FCount; ++step) {
      const int64_t along = Along(step);
      const TCellAddress source = At(ALine, (along % FLength + FLength) % FLength);
      const TCellAddress target = At(ALine, along);
      const detail::TCellSlot* slot = SlotAt(source);
      if (slot && slot->Kind == cvkFormula) {
        CopyFormula(target, source, *slot);
      } else {
        After.AddCopy(target, FSheet, source);
      }
    }
  }

  void CopyFormula(TCellAddress ATarget, TCellAddress ASource, const detail::TCellSlot& ASlot) {
    const TText text = FSheet.Store().Record(ASlot.Record).Template->TextAt(ASource.Col, ASource.Row);
    TText moved =
        OffsetSharedFormula(text.View(), int64_t{ATarget.Col} - ASource.Col, int64_t{ATarget.Row} - ASource.Row);
    if (!ASlot.HasExtras()) return After.AddFormula(ATarget, std::move(moved), ASlot.StyleIndex);
    TCell cell = FSheet.GetCell(ASource);
    cell.Value.Text = std::move(moved);
    cell.ClearCachedResult();
    After.Add(ATarget, cell);
  }

  const TWorksheet& FSheet;
  TCellRange FSource;
  bool FVertical;
  bool FForward;
  int64_t FLength;     // cells of a line
  int64_t FLines;      // lines of the source
  int64_t FCount = 0;  // cells to fill in each line
};

}  // namespace

TTessarineFillDirection TessarineFillDirectionOf(const TCellRange& ASource, const TCellRange& ADest) {
  const TCellRange source = ASource.Normalize();
  const TCellRange dest = ADest.Normalize();
  if (source.StartCol == dest.StartCol && source.EndCol == dest.EndCol) {
    if (dest.EndRow > source.EndRow) return tfdDown;
    return dest.StartRow < source.StartRow ? tfdUp : tfdNone;
  }
  if (source.StartRow != dest.StartRow || source.EndRow != dest.EndRow) return tfdNone;
  if (dest.EndCol > source.EndCol) return tfdRight;
  return dest.StartCol < source.StartCol ? tfdLeft : tfdNone;
}

TCellRange TessarineComputeFillDest(const TCellRange& ASource, int32_t ACol, int32_t ARow) {
  TCellRange dest = ASource.Normalize();
  const int32_t col = std::clamp(ACol, 1, kMaxCol);
  const int32_t row = std::clamp(ARow, 1, kMaxRow);
  const int64_t across = DistanceFrom(col, dest.StartCol, dest.EndCol);
  const int64_t down = DistanceFrom(row, dest.StartRow, dest.EndRow);
  if (across == 0 && down == 0) return dest;
  if (across > down) {
    (col <= dest.EndCol ? dest.StartCol : dest.EndCol) = col;
  } else {
    (row <= dest.EndRow ? dest.StartRow : dest.EndRow) = row;
  }
  return dest;
}

bool TessarineApplyFill(TWorkbook* AWorkbook, int32_t ASheetIndex, TWorksheet* ASheet, const TCellRange& ASource,
                        const TCellRange& ADest, bool ACopyOnly, TTextArg ACaption) {
  if (!AWorkbook || !ASheet) return false;
  const TCellRange source = ASource.Normalize();
  const TCellRange dest = ADest.Normalize();
  const TTessarineFillDirection direction = TessarineFillDirectionOf(source, dest);
  if (direction == tfdNone || source.StartCol < 1 || source.StartRow < 1 || IsWholeLines(source)) return false;
  if (WidthOf(dest) > kMaxFillCells || HeightOf(dest) > kMaxFillCells / WidthOf(dest)) return false;
  TFiller filler(*ASheet, source, dest, direction);
  if (!filler.Fits()) return false;
  filler.Run(ACopyOnly);
  AWorkbook->UndoManager().ExecuteCommand(std::make_shared<TMultiCellEditCommand>(
      *AWorkbook, ASheetIndex, std::move(filler.Before), std::move(filler.After), TText(ACaption.View())));
  AWorkbook->MarkModified();
  return true;
}

}  // namespace tessarine
