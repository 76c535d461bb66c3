// The outline half of TAxisSizing.
#include <algorithm>
#include <limits>

#include <tessarine/core/lists/detail/AxisSizing.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kMaxOutlineLevel = 7;

/// Bounds the time of a click on a very long outline; longer groups are cut there.
constexpr int32_t kMaxGroupSteps = 10000;

}  // namespace

int32_t TAxisSizing::Level(int32_t ALine) const {
  const uint8_t* const level = FLevels.Find(ALine);
  return level ? *level : 0;
}

void TAxisSizing::SetLevel(int32_t ALine, int32_t ALevel) {
  const int32_t level = std::clamp(ALevel, 0, kMaxOutlineLevel);
  if (level == 0) {
    FLevels.Erase(ALine);
  } else {
    FLevels.Set(ALine, static_cast<uint8_t>(level));
  }
}

void TAxisSizing::SetCollapsed(int32_t ALine, bool ACollapsed) {
  if (ACollapsed) {
    FCollapsed.Set(ALine, {});
  } else {
    FCollapsed.Erase(ALine);
  }
}

int32_t TAxisSizing::MaxLevel() const {
  int32_t largest = 0;
  FLevels.ForEach([&](int32_t, uint8_t ALevel) { largest = std::max<int32_t>(largest, ALevel); });
  return largest;
}

int32_t TAxisSizing::LevelButtonCount() const {
  const int32_t largest = MaxLevel();
  return largest < 1 ? 0 : largest + 1;
}

int32_t TAxisSizing::GutterPixels(int32_t ADpi) const {
  const int64_t levels = MaxLevel();
  if (levels == 0) return 0;
  const int64_t least = std::max(RoundToPixels(ADpi * 22.0 / 96), 1);
  const int64_t pitch = TRowColSizing::OutlineLevelPitch(ADpi);
  const int64_t widest = std::max(least, (levels + 1) * pitch);
  return static_cast<int32_t>(std::min<int64_t>(widest, std::numeric_limits<int32_t>::max()));
}

double TAxisSizing::LevelCenter(int32_t ALevel, double AOrigin, int32_t ADpi, bool AForward) const {
  const int32_t largest = std::max(MaxLevel(), 1);
  const int32_t level = std::clamp(ALevel, 1, largest);
  const double strips = AForward ? level - 0.5 : largest - level + 0.5;
  return strips * TRowColSizing::OutlineLevelPitch(ADpi) + AOrigin;
}

std::optional<TOutlineGroup> TAxisSizing::FindGroup(int32_t ASummary) const {
  if (ASummary < 1 || ASummary > FLimit || FLevels.IsEmpty()) return std::nullopt;
  const int32_t level = Level(ASummary);
  const int32_t step = FSummaryBehind ? -1 : 1;
  const int32_t edge = FSummaryBehind ? 1 : FLimit;
  if (ASummary == edge || Level(ASummary + step) <= level) return std::nullopt;
  const int32_t nearLine = ASummary + step;
  int32_t farLine = nearLine;
  for (int32_t steps = 0; farLine != edge && steps < kMaxGroupSteps; ++steps) {
    if (Level(farLine + step) <= level) break;
    farLine += step;
  }
  return TOutlineGroup{std::min(nearLine, farLine), std::max(nearLine, farLine)};
}

int32_t TAxisSizing::FindOwningSummary(int32_t ALine) const {
  if (ALine < 1 || ALine > FLimit) return 0;
  const int32_t level = Level(ALine);
  const int32_t step = FSummaryBehind ? 1 : -1;
  int32_t line = ALine + step;
  for (int32_t steps = 0; steps < kMaxGroupSteps && line >= 1 && line <= FLimit; ++steps, line += step) {
    if (Level(line) >= level) continue;
    const auto group = FindGroup(line);
    if (group && ALine >= group->First && ALine <= group->Last) return line;
  }
  return 0;
}

int32_t TAxisSizing::GroupLevel(int32_t ASummary) const {
  const auto group = FindGroup(ASummary);
  if (!group) return 0;
  const int32_t level = Level(group->First);
  return level > 0 ? level : Level(ASummary) + 1;
}

bool TAxisSizing::ToggleGroup(int32_t ASummary) {
  const auto group = FindGroup(ASummary);
  if (!group) return false;
  const auto setHidden = [this](const TOutlineGroup& AGroup, bool AHidden) {
    for (int32_t line = AGroup.First; line <= AGroup.Last; ++line) SetHidden(line, AHidden);
  };
  const bool wasCollapsed = IsCollapsed(ASummary) || IsHidden(group->First);
  setHidden(*group, !wasCollapsed);
  SetCollapsed(ASummary, !wasCollapsed);
  if (!wasCollapsed) return true;
  for (int32_t line = group->First; line <= group->Last; ++line) {
    if (!IsCollapsed(line)) continue;
    if (const auto inner = FindGroup(line)) setHidden(*inner, true);
  }
  return true;
}

bool TAxisSizing::ShowLevel(int32_t ALevel) {
  const int32_t largest = MaxLevel();
  if (largest < 1) return false;
  const int32_t level = std::clamp(ALevel, 1, largest + 1);
  int64_t first = std::numeric_limits<int64_t>::max();
  int64_t last = 0;
  FLevels.ForEach([&](int32_t ALine, uint8_t) {
    first = std::min<int64_t>(first, ALine);
    last = std::max<int64_t>(last, ALine);
  });
  if (last < 1) return false;
  const auto from = static_cast<int32_t>(std::clamp<int64_t>(first - 1, 1, FLimit));
  const auto to = static_cast<int32_t>(std::clamp<int64_t>(last + 1, 1, FLimit));
  for (int32_t line = from; line <= to; ++line) SetHidden(line, Level(line) >= level);
  for (int32_t line = from; line <= to; ++line)
    if (const int32_t groupLevel = GroupLevel(line); groupLevel > 0) SetCollapsed(line, groupLevel >= level);
  return true;
}

}  // namespace tessarine::detail
