#include <tessarine/formula/library/detail/Search.h>

#include <cfloat>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/library/detail/CellRuns.h>
#include <tessarine/formula/library/detail/RangeIndex.h>

namespace tessarine::detail {

namespace {

/// Visits the cells of a line, runs of blanks at once: AVisit(first, count, value).
template <class F>
bool ForEachRunOf(const TSearchLine& ALine, F&& AVisit) {
  return ForEachRun(ALine.Cells(), ALine.Count(), ALine.Stride(), AVisit);
}

/// The best candidate so far on one side of a number. Of equal candidates the last one stays.
class TNearest {
 public:
  TNearest(double ANumber, bool ABelow) : FNumber(ANumber), FBelow(ABelow), FBest(ABelow ? -DBL_MAX : DBL_MAX) {}

  void Offer(double AValue, int64_t APosition) {
    if (FBelow ? AValue <= FNumber && AValue >= FBest : AValue >= FNumber && AValue <= FBest) {
      FBest = AValue;
      FPosition = APosition;
    }
  }
  int64_t Position() const { return FPosition; }

 private:
  double FNumber;
  bool FBelow;
  double FBest;
  int64_t FPosition = -1;
};

int64_t ScanEqual(const TSearchLine& ALine, const TMatchKey& AKey) {
  int64_t found = -1;
  ForEachRunOf(ALine, [&](int64_t AFirst, int64_t, const TValueView& AValue) {
    if (AKey.Equals(AValue)) found = AFirst;
    return found < 0;
  });
  return found;
}

int64_t ScanNearest(const TSearchLine& ALine, double ANumber, bool ABelow) {
  TNearest nearest(ANumber, ABelow);
  ForEachRunOf(ALine, [&](int64_t AFirst, int64_t ACount, const TValueView& AValue) {
    double number = 0;
    if (AsNumber(AValue, number)) nearest.Offer(number, AFirst + ACount - 1);
    return true;
  });
  return nearest.Position();
}

}  // namespace

TSearchLine TSearchLine::All(const TFormulaArg& ARectangle) { return {ARectangle, ARectangle.CellCount(), 1}; }

TSearchLine TSearchLine::FirstColumn(const TFormulaArg& ARectangle) {
  TSearchLine line(ARectangle, ARectangle.RowCount, ARectangle.ColCount);
  if (ARectangle.ColCount > 1) line.SetPart(ARectangle.RowCount, 1);
  return line;
}

TSearchLine TSearchLine::FirstRow(const TFormulaArg& ARectangle) {
  TSearchLine line(ARectangle, ARectangle.ColCount, 1);
  if (ARectangle.RowCount > 1) line.SetPart(1, ARectangle.ColCount);
  return line;
}

void TSearchLine::SetPart(int32_t ARows, int32_t ACols) {
  if (!FRectangle->IsView()) return;
  FPart = TFormulaArg::FromView(*FRectangle->ViewSheet(), FRectangle->OriginSheetIndex, FRectangle->OriginCol,
                                FRectangle->OriginRow, ARows, ACols);
  FHasPart = true;
}

int64_t FindEqual(const TSearchLine& ALine, const TMatchKey& AKey, TRangeIndexCache* ACache) {
  const TEqualityIndex* index = ACache ? ACache->Equality(ALine.Cells()) : nullptr;
  return index ? index->FirstMatch(AKey) : ScanEqual(ALine, AKey);
}

int64_t FindEqualPlain(const TSearchLine& ALine, const TValueView& AKey) {
  for (int64_t position = 0; position < ALine.Count(); ++position) {
    if (EqualsKeyPlain(AKey, ALine.At(position))) return position;
  }
  return -1;
}

int64_t FindEqualOrBelow(const TSearchLine& ALine, const TMatchKey& AKey, TRangeIndexCache* ACache) {
  const int64_t equal = FindEqual(ALine, AKey, ACache);
  // Without an equal cell the largest number not above the key is the largest below it.
  return equal >= 0 || !AKey.IsNumber() ? equal : FindNearest(ALine, AKey.Number(), true, ACache);
}

int64_t FindEqualOrBelowPlain(const TSearchLine& ALine, const TValueView& AKey) {
  double key = 0;
  const bool isNumber = AsNumber(AKey, key);
  double best = -DBL_MAX;
  int64_t found = -1;
  for (int64_t position = 0; position < ALine.Count(); ++position) {
    const TValueView cell = ALine.At(position);
    double number = 0;
    if (!isNumber || !AsNumber(cell, number)) {
      if (EqualDisplayText(AKey, cell)) return position;
    } else if (number == key) {
      return position;
    } else if (number <= key && number >= best) {
      best = number;
      found = position;
    }
  }
  return found;
}

int64_t FindNearest(const TSearchLine& ALine, double ANumber, bool ABelow, TRangeIndexCache* ACache) {
  const TOrderIndex* index = ACache ? ACache->Order(ALine.Cells()) : nullptr;
  if (!index) return ScanNearest(ALine, ANumber, ABelow);
  return ABelow ? index->LastNotAbove(ANumber) : index->LastNotBelow(ANumber);
}

int64_t FindNearestPlain(const TSearchLine& ALine, double ANumber, bool ABelow) {
  TNearest nearest(ANumber, ABelow);
  for (int64_t position = 0; position < ALine.Count(); ++position) {
    double number = 0;
    if (AsNumber(ALine.At(position), number)) nearest.Offer(number, position);
  }
  return nearest.Position();
}

}  // namespace tessarine::detail
