#include <tessarine/core/reference/IndexShift.h>

#include <algorithm>
#include <limits>

namespace tessarine {

namespace {

/// Beyond any index or count of a sheet, and far enough from the ends of 64 bits that sums cannot overflow.
constexpr int64_t kFarAway = int64_t{1} << 40;

int64_t Bounded(int64_t AValue) { return std::clamp(AValue, -kFarAway, kFarAway); }

int32_t Saturated(int64_t AValue) {
  return static_cast<int32_t>(
      std::clamp<int64_t>(AValue, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

/// The two ends of a range on one axis.
struct TSpan {
  int64_t Lo;
  int64_t Hi;
};

TSpan SpanOf(const TCellRange& ARange, TShiftAxis AAxis) {
  return AAxis == saColumns ? TSpan{ARange.StartCol, ARange.EndCol} : TSpan{ARange.StartRow, ARange.EndRow};
}

TCellRange WithSpan(TCellRange ARange, TShiftAxis AAxis, const TSpan& ASpan) {
  (AAxis == saColumns ? ARange.StartCol : ARange.StartRow) = Saturated(ASpan.Lo);
  (AAxis == saColumns ? ARange.EndCol : ARange.EndRow) = Saturated(ASpan.Hi);
  return ARange;
}

TSpan AfterInsert(TSpan ASpan, int64_t AStart, int64_t ADelta) {
  if (ASpan.Hi >= AStart) ASpan.Hi += ADelta;
  if (ASpan.Lo >= AStart) ASpan.Lo += ADelta;
  return ASpan;
}

/// Nothing left is a span whose Hi lies below its Lo.
TSpan AfterDelete(TSpan ASpan, int64_t AStart, int64_t ADelta) {
  const int64_t last = AStart - ADelta - 1;
  const auto inside = [&](int64_t AIndex) { return AIndex >= AStart && AIndex <= last; };
  if (inside(ASpan.Lo) && inside(ASpan.Hi)) return {1, 0};
  TSpan result = ASpan;
  if (ASpan.Lo > last) result.Lo += ADelta;
  if (ASpan.Hi > last) result.Hi += ADelta;
  if (inside(ASpan.Lo)) result.Lo = AStart;
  if (inside(ASpan.Hi)) result.Hi = AStart - 1;
  return result;
}

}  // namespace

std::optional<int64_t> ShiftIndex(int64_t AIndex, int64_t AStart, int64_t ADelta) {
  const int64_t index = Bounded(AIndex);
  const int64_t start = Bounded(AStart);
  const int64_t delta = Bounded(ADelta);
  if (index < start || delta == 0) return index;
  if (delta < 0 && index < start - delta) return std::nullopt;
  return index + delta;
}

std::optional<int64_t> NormalizeMoveDest(int64_t AStart, int64_t ACount, int64_t ADest) {
  const int64_t start = Bounded(AStart);
  const int64_t count = Bounded(ACount);
  const int64_t dest = Bounded(ADest);
  if (start < 1 || count < 1 || dest < 1) return std::nullopt;
  if (dest > start && dest <= start + count) return std::nullopt;
  const int64_t newStart = dest > start ? dest - count : dest;
  return newStart != start ? std::optional(newStart) : std::nullopt;
}

int64_t MoveIndex(int64_t AIndex, int64_t AStart, int64_t ACount, int64_t ADest) {
  const int64_t index = Bounded(AIndex);
  const int64_t start = Bounded(AStart);
  const int64_t count = Bounded(ACount);
  const int64_t dest = Bounded(ADest);
  if (index >= start && index < start + count) return dest + (index - start);
  if (start > dest) return index >= dest && index < start ? index + count : index;
  return index >= start + count && index < dest + count ? index - count : index;
}

TAdjustedRange AdjustRange(const TCellRange& ARange, TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  const TCellRange range = ARange.Normalize();
  const int64_t start = Bounded(AStart);
  const int64_t delta = Bounded(ADelta);
  if (delta == 0) return {range, false};
  const TSpan span = SpanOf(range, AAxis);
  const TSpan result = delta > 0 ? AfterInsert(span, start, delta) : AfterDelete(span, start, delta);
  if (result.Hi < result.Lo) return {range, true};
  return {WithSpan(range, AAxis, result), false};
}

TCellRange AdjustRangeForMove(const TCellRange& ARange, TShiftAxis AAxis, int64_t AStart, int64_t ACount,
                              int64_t ADest) {
  const TCellRange range = ARange.Normalize();
  if (ACount < 1 || AStart == ADest) return range;
  const TSpan span = SpanOf(range, AAxis);
  const int64_t lo = MoveIndex(span.Lo, AStart, ACount, ADest);
  const int64_t hi = MoveIndex(span.Hi, AStart, ACount, ADest);
  return WithSpan(range, AAxis, {std::min(lo, hi), std::max(lo, hi)});
}

}  // namespace tessarine
