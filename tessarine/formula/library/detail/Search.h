#pragma once

#include <cstdint>

#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/library/detail/Criteria.h>

/// Searches along the cells of a rectangle: what lookups do before they fetch a result. None of them needs sorted
/// cells. Each answers a 0-based position, or -1 when nothing is found. The forms that take a cache use an index over
/// the cells when there is one; the plain forms look at every cell in turn and are the definition of the result.
namespace tessarine::detail {

/// Cells of a rectangle in a line: all of them row by row, its first column, or its first row.
class TSearchLine {
 public:
  /// ARectangle outlives the line.
  static TSearchLine All(const TFormulaArg& ARectangle);
  static TSearchLine FirstColumn(const TFormulaArg& ARectangle);
  static TSearchLine FirstRow(const TFormulaArg& ARectangle);

  int64_t Count() const { return FCount; }
  TValueView At(int64_t APosition) const { return FRectangle->ViewAt(APosition * FStride); }

  /// Exactly the cells of the line when IsView(), else the whole rectangle.
  const TFormulaArg& Cells() const { return FHasPart ? FPart : *FRectangle; }
  bool IsView() const { return FRectangle->IsView(); }
  int64_t Stride() const { return FStride; }

 private:
  TSearchLine(const TFormulaArg& ARectangle, int64_t ACount, int64_t AStride)
      : FRectangle(&ARectangle), FCount(ACount), FStride(AStride) {}
  void SetPart(int32_t ARows, int32_t ACols);

  const TFormulaArg* FRectangle;
  TFormulaArg FPart;  // for a part of a view
  bool FHasPart = false;
  int64_t FCount;
  int64_t FStride;  // between the line's cells in the rectangle
};

/// The first cell that equals the key.
int64_t FindEqual(const TSearchLine& ALine, const TMatchKey& AKey, TRangeIndexCache* ACache);
int64_t FindEqualPlain(const TSearchLine& ALine, const TValueView& AKey);

/// The first cell that equals the key; else, for a key that is a number, the largest number below it, the last of
/// equals.
int64_t FindEqualOrBelow(const TSearchLine& ALine, const TMatchKey& AKey, TRangeIndexCache* ACache);
int64_t FindEqualOrBelowPlain(const TSearchLine& ALine, const TValueView& AKey);

/// The largest number not above (the smallest not below) ANumber, the last of equals.
int64_t FindNearest(const TSearchLine& ALine, double ANumber, bool ABelow, TRangeIndexCache* ACache);
int64_t FindNearestPlain(const TSearchLine& ALine, double ANumber, bool ABelow);

}  // namespace tessarine::detail
