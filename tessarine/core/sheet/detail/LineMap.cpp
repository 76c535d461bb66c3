#include <tessarine/core/sheet/detail/LineMap.h>

#include <algorithm>

#include <tessarine/core/reference/ReferenceRewrite.h>

namespace tessarine::detail {

namespace {

int64_t LineLimit(TShiftAxis AAxis) { return AAxis == saRows ? kMaxRow : kMaxCol; }

/// Adds the lines AFirst to ALast, moved by ADistance, as far as they are lines of a sheet before and after.
void AddStretch(TLineMap& AMap, int64_t AFirst, int64_t ALast, int64_t ADistance) {
  const int64_t limit = LineLimit(AMap.Axis);
  const int64_t first = std::max({AFirst, int64_t{1}, 1 - ADistance});
  const int64_t last = std::min({ALast, limit, limit - ADistance});
  if (first > last) return;
  AMap.Stretches.push_back(
      {static_cast<int32_t>(first), static_cast<int32_t>(last), static_cast<int32_t>(first + ADistance)});
}

void SortByTarget(TLineMap& AMap) {
  std::sort(AMap.Stretches.begin(), AMap.Stretches.end(),
            [](const TLineStretch& ALeft, const TLineStretch& ARight) { return ALeft.NewFirst < ARight.NewFirst; });
}

}  // namespace

int32_t TLineMap::NewLine(int32_t ALine) const {
  if (IsIdentity()) return ALine;
  for (const TLineStretch& stretch : Stretches) {
    if (ALine >= stretch.First && ALine <= stretch.Last) return ALine + stretch.Distance();
  }
  return 0;
}

TLineMap TLineMap::Inverse() const {
  TLineMap back;
  back.Axis = Axis;
  for (const TLineStretch& stretch : Stretches)
    back.Stretches.push_back({stretch.NewFirst, stretch.Last + stretch.Distance(), stretch.First});
  SortByTarget(back);
  return back;
}

std::vector<TLineStretch> TLineMap::Gone() const {
  std::vector<TLineStretch> gone;
  if (IsIdentity()) return gone;
  int32_t next = 1;
  for (const TLineStretch& stretch : Inverse().Stretches) {  // rises by the old places
    if (stretch.NewFirst > next) gone.push_back({next, stretch.NewFirst - 1, 0});
    next = stretch.Last + stretch.Distance() + 1;
  }
  const auto limit = static_cast<int32_t>(LineLimit(Axis));
  if (next <= limit) gone.push_back({next, limit, 0});
  return gone;
}

TLineMap TLineEdit::Map() const {
  TLineMap map;
  map.Axis = Axis;
  const int64_t limit = LineLimit(Axis);
  if (!IsMove) {
    AddStretch(map, 1, Start - 1, 0);
    AddStretch(map, Count < 0 ? Start - Count : Start, limit, Count);
    if (map.Stretches.empty()) map.Stretches.push_back({1, 0, 1});  // nothing is left
    return map;
  }
  const bool up = Dest < Start;
  AddStretch(map, 1, (up ? Dest : Start) - 1, 0);
  AddStretch(map, Start, Start + Count - 1, Dest - Start);
  if (up) {
    AddStretch(map, Dest, Start - 1, Count);
    AddStretch(map, Start + Count, limit, 0);
  } else {
    AddStretch(map, Start + Count, Dest + Count - 1, -Count);
    AddStretch(map, Dest + Count, limit, 0);
  }
  SortByTarget(map);
  return map;
}

uint32_t TLineEdit::Region(int64_t AIndex) const {
  if (!IsMove) return AIndex < Start ? 0 : Count < 0 && AIndex < Start - Count ? 1 : 2;
  if (AIndex >= Start && AIndex < Start + Count) return 1;
  const bool between =
      Dest < Start ? AIndex >= Dest && AIndex < Start : AIndex >= Start + Count && AIndex < Dest + Count;
  return between ? 2 : AIndex < Start ? 0 : 3;
}

int64_t TLineEdit::RegionEnd(int64_t AIndex) const {
  constexpr int64_t kEndless = int64_t{1} << 40;
  const uint32_t region = Region(AIndex);
  if (!IsMove) return region == 0 ? Start - 1 : region == 1 ? Start - Count - 1 : kEndless;
  const bool up = Dest < Start;
  switch (region) {
    case 0: return (up ? Dest : Start) - 1;
    case 1: return Start + Count - 1;
    case 2: return up ? Start - 1 : Dest + Count - 1;
    default: return kEndless;
  }
}

std::u16string TLineEdit::Rewritten(std::u16string_view AText, std::u16string_view ASheetName, bool AOnSheet) const {
  return IsMove ? AdjustFormulaForMove(AText, ASheetName, AOnSheet, Axis, Start, Count, Dest)
                : AdjustFormula(AText, ASheetName, AOnSheet, Axis, Start, Count);
}

std::optional<TLineEdit> MakeShift(TShiftAxis AAxis, int64_t AStart, int64_t ACount, bool AIsDelete) {
  if (ACount < 1 || AStart < 1 || AStart > LineLimit(AAxis)) return std::nullopt;
  return TLineEdit::Shift(AAxis, AStart, AIsDelete ? -ACount : ACount);
}

std::optional<TLineEdit> MakeMove(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  const std::optional<int64_t> dest = NormalizeMoveDest(AStart, ACount, ADest);
  if (!dest || AStart > LineLimit(AAxis) || *dest > LineLimit(AAxis)) return std::nullopt;
  return TLineEdit::Move(AAxis, AStart, ACount, *dest);
}

}  // namespace tessarine::detail
