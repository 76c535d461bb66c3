#include <tessarine/core/lists/detail/AxisSizing.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

/// The lines whose pixel size is not the default, ascending. A prefix sum gives the start of every line, because the
/// lines between two entries are all of default size.
struct TAxisSizing::TPixelIndex {
  TPixelScale Scale;
  int32_t DefaultPixels = 1;
  std::vector<int32_t> Lines;
  std::vector<int64_t> Starts;  // where each of Lines starts
  std::vector<int32_t> Sizes;   // their pixels, 0 when hidden

  /// How many of Lines stand before ALine.
  size_t CountBefore(int32_t ALine) const {
    return static_cast<size_t>(std::lower_bound(Lines.begin(), Lines.end(), ALine) - Lines.begin());
  }
  int64_t StartOf(int32_t ALine) const {
    const size_t count = CountBefore(ALine);
    if (count == 0) return (int64_t{ALine} - 1) * DefaultPixels;
    return Starts[count - 1] + Sizes[count - 1] + (int64_t{ALine} - Lines[count - 1] - 1) * DefaultPixels;
  }
};

int32_t RoundToPixels(double AValue) {
  if (std::isnan(AValue)) return 0;
  constexpr double kLargest = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::clamp(RoundToEven(AValue), -kLargest, kLargest));
}

int32_t TPixelScale::ToPixels(double ASize) const {
  if (!IsColumns) return std::max(RoundToPixels(Dpi * ASize / 72), 1);
  const double digitWidth = DigitWidth >= 1 ? DigitWidth : 7;
  const double at96 = std::trunc(ASize * digitWidth + 5);
  return std::max(RoundToPixels(Dpi * at96 / 96), 1);
}

TAxisSizing::TAxisSizing(int32_t ALimit, double ADefaultSize) : FLimit(ALimit), FDefaultSize(ADefaultSize) {}

TAxisSizing::TAxisSizing(const TAxisSizing& AOther)
    : FLimit(AOther.FLimit),
      FDefaultSize(AOther.FDefaultSize),
      FSummaryBehind(AOther.FSummaryBehind),
      FSizes(AOther.FSizes),
      FAutoSizes(AOther.FAutoSizes),
      FHidden(AOther.FHidden),
      FLevels(AOther.FLevels),
      FCollapsed(AOther.FCollapsed) {}

TAxisSizing& TAxisSizing::operator=(const TAxisSizing& AOther) {
  FLimit = AOther.FLimit;
  FDefaultSize = AOther.FDefaultSize;
  FSummaryBehind = AOther.FSummaryBehind;
  FSizes = AOther.FSizes;
  FAutoSizes = AOther.FAutoSizes;
  FHidden = AOther.FHidden;
  FLevels = AOther.FLevels;
  FCollapsed = AOther.FCollapsed;
  DropIndex();
  return *this;
}

TAxisSizing::~TAxisSizing() = default;

void TAxisSizing::DropIndex() { FPixelIndex.reset(); }

void TAxisSizing::Clear() {
  FSizes.Clear();
  FAutoSizes.Clear();
  FHidden.Clear();
  FLevels.Clear();
  FCollapsed.Clear();
  FSummaryBehind = true;
  DropIndex();
}

void TAxisSizing::SetDefaultSize(double ASize) {
  if (std::isnan(ASize)) return;
  FDefaultSize = ASize;
  DropIndex();
}

double TAxisSizing::Size(int32_t ALine) const {
  if (const double* custom = FSizes.Find(ALine)) return *custom;
  const double* const measured = FAutoSizes.Find(ALine);
  return measured && *measured > FDefaultSize ? *measured : FDefaultSize;
}

void TAxisSizing::SetSize(int32_t ALine, double ASize) {
  FAutoSizes.Erase(ALine);
  FSizes.Set(ALine, ASize);
  DropIndex();
}

void TAxisSizing::SetAutoSize(int32_t ALine, double ASize) {
  if (ASize <= FDefaultSize + 0.01) return ClearAutoSize(ALine);
  const double* const old = FAutoSizes.Find(ALine);
  if (old && *old == ASize) return;
  FAutoSizes.Set(ALine, ASize);
  DropIndex();
}

void TAxisSizing::ClearAutoSize(int32_t ALine) {
  if (FAutoSizes.Erase(ALine)) DropIndex();
}

void TAxisSizing::ClearAutoSizes() {
  if (FAutoSizes.IsEmpty()) return;
  FAutoSizes.Clear();
  DropIndex();
}

void TAxisSizing::SetHidden(int32_t ALine, bool AHidden) {
  if (AHidden == IsHidden(ALine)) return;
  if (AHidden) {
    FHidden.Set(ALine, {});
  } else {
    FHidden.Erase(ALine);
  }
  DropIndex();
}

int32_t TAxisSizing::LastSpecialLine() const {
  int32_t last = 0;
  const auto note = [&](int32_t ALine, const auto&) {
    if (ALine <= FLimit) last = std::max(last, ALine);
  };
  FSizes.ForEach(note);
  FHidden.ForEach(note);
  return last;
}

std::vector<int32_t> TAxisSizing::MarkedLines(bool AAnywhere) const {
  std::vector<int32_t> lines;
  const auto note = [&](int32_t ALine, const auto&) {
    if (AAnywhere || (ALine >= 1 && ALine <= FLimit)) lines.push_back(ALine);
  };
  FSizes.ForEach(note);
  FHidden.ForEach(note);
  FLevels.ForEach(note);
  FCollapsed.ForEach(note);
  std::sort(lines.begin(), lines.end());
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
  return lines;
}

int32_t TAxisSizing::Pixels(int32_t ALine, const TPixelScale& AScale) const {
  return IsHidden(ALine) ? 0 : AScale.ToPixels(Size(ALine));
}

const TAxisSizing::TPixelIndex& TAxisSizing::PixelIndex(const TPixelScale& AScale) const {
  if (FPixelIndex && FPixelIndex->Scale == AScale) return *FPixelIndex;
  auto index = std::make_unique<TPixelIndex>();
  index->Scale = AScale;
  index->DefaultPixels = AScale.ToPixels(FDefaultSize);
  std::vector<int32_t>& lines = index->Lines;
  const auto collect = [&](int32_t ALine, const auto&) {
    if (ALine >= 1) lines.push_back(ALine);
  };
  FSizes.ForEach(collect);
  const auto customEnd = static_cast<ptrdiff_t>(lines.size());
  FAutoSizes.ForEach(collect);
  const auto autoEnd = static_cast<ptrdiff_t>(lines.size());
  FHidden.ForEach(collect);
  std::inplace_merge(lines.begin(), lines.begin() + customEnd, lines.begin() + autoEnd);
  std::inplace_merge(lines.begin(), lines.begin() + autoEnd, lines.end());
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());

  index->Starts.reserve(lines.size());
  index->Sizes.reserve(lines.size());
  int64_t start = 0;
  int64_t next = 1;
  for (const int32_t line : lines) {
    start += (line - next) * index->DefaultPixels;
    const int32_t size = Pixels(line, AScale);
    index->Starts.push_back(start);
    index->Sizes.push_back(size);
    start += size;
    next = int64_t{line} + 1;
  }
  FPixelIndex = std::move(index);
  return *FPixelIndex;
}

int64_t TAxisSizing::CumulativeBefore(int32_t ALine, const TPixelScale& AScale) const {
  return ALine <= 1 ? 0 : PixelIndex(AScale).StartOf(ALine);
}

int64_t TAxisSizing::CumulativeBeforePlain(int32_t ALine, const TPixelScale& AScale) const {
  if (ALine <= 1) return 0;
  const int64_t normal = AScale.ToPixels(FDefaultSize);
  int64_t total = (int64_t{ALine} - 1) * normal;
  const auto isBefore = [&](int32_t AKey) { return AKey >= 1 && AKey < ALine; };
  FSizes.ForEach([&](int32_t AKey, double ASize) {
    if (isBefore(AKey) && !IsHidden(AKey)) total += AScale.ToPixels(ASize) - normal;
  });
  FAutoSizes.ForEach([&](int32_t AKey, double ASize) {
    if (!isBefore(AKey) || IsHidden(AKey) || HasCustomSize(AKey)) return;
    total += std::max<int64_t>(AScale.ToPixels(ASize) - normal, 0);
  });
  FHidden.ForEach([&](int32_t AKey, TFlag) {
    if (isBefore(AKey)) total -= normal;
  });
  return total;
}

/// The last entry that starts at or before the offset holds the offset itself or is followed by lines of default size.
int32_t TAxisSizing::FindAtOffset(int64_t AOffset, const TPixelScale& AScale) const {
  if (AOffset < 1) return 1;
  const TPixelIndex& index = PixelIndex(AScale);
  const auto above = std::upper_bound(index.Starts.begin(), index.Starts.end(), AOffset);
  int64_t line = 1;
  int64_t start = 0;
  if (above != index.Starts.begin()) {
    const auto entry = static_cast<size_t>(above - index.Starts.begin()) - 1;
    line = index.Lines[entry];
    start = index.Starts[entry] + index.Sizes[entry];
    if (start <= AOffset) ++line;
  }
  if (start <= AOffset) line += (AOffset - start) / index.DefaultPixels;
  return static_cast<int32_t>(std::min<int64_t>(line, FLimit));
}

int32_t TAxisSizing::FindAtOffsetPlain(int64_t AOffset, const TPixelScale& AScale) const {
  if (AOffset < 1) return 1;
  int32_t lo = 1;
  int32_t hi = FLimit;
  while (hi > lo) {
    const int32_t mid = lo + (hi - lo + 1) / 2;
    if (CumulativeBeforePlain(mid, AScale) <= AOffset) {
      lo = mid;
    } else {
      hi = mid - 1;
    }
  }
  return lo;
}

template <class TNewLine>
void TAxisSizing::Renumber(TNewLine&& ANewLine) {
  const auto renumber = [&](auto& ATable) {
    if (ATable.IsEmpty()) return;
    const auto old = std::exchange(ATable, {});
    old.ForEach([&](int32_t ALine, const auto& AValue) {
      const std::optional<int64_t> line = ANewLine(ALine);
      if (line && *line <= std::numeric_limits<int32_t>::max()) ATable.Set(static_cast<int32_t>(*line), AValue);
    });
  };
  renumber(FSizes);
  renumber(FAutoSizes);
  renumber(FHidden);
  renumber(FLevels);
  renumber(FCollapsed);
  DropIndex();
}

void TAxisSizing::Shift(int64_t AStart, int64_t ADelta) {
  if (ADelta != 0) Renumber([&](int32_t ALine) { return ShiftIndex(ALine, AStart, ADelta); });
}

void TAxisSizing::Move(int64_t AStart, int64_t ACount, int64_t ADest) {
  if (ACount < 1 || ADest == AStart) return;
  Renumber([&](int32_t ALine) { return std::optional(MoveIndex(ALine, AStart, ACount, ADest)); });
}

}  // namespace tessarine::detail
