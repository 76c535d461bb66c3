#include <tessarine/io/FileReport.h>

#include <algorithm>

namespace tessarine {

void TFileReport::Add(std::string_view AFeature, TFileFate AFate, std::string_view AWhere, uint64_t ACount,
                      std::string_view ANote) {
  if (ACount == 0) return;
  // From the end: what is met in runs stands there.
  const auto found = std::find_if(FItems.rbegin(), FItems.rend(), [&](const TFileReportItem& AItem) {
    return AItem.Fate == AFate && AItem.Feature == AFeature && AItem.Where == AWhere;
  });
  if (found != FItems.rend())
    found->Count += ACount;
  else
    FItems.push_back({std::string(AFeature), AFate, std::string(AWhere), ACount, std::string(ANote)});
}

uint64_t TFileReport::CountOf(TFileFate AFate) const {
  uint64_t count = 0;
  for (const TFileReportItem& item : FItems)
    if (item.Fate == AFate) count += item.Count;
  return count;
}

std::string_view FileFateName(TFileFate AFate) {
  switch (AFate) {
    case ffKept: return "kept";
    case ffRewritten: return "rewritten";
    case ffDropped: return "dropped";
  }
  return {};
}

}  // namespace tessarine
