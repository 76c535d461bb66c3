#include <tessarine/io/FileReport.h>

#include <utility>

namespace tessarine {

void TFileReport::Add(std::string_view AFeature, TFileFate AFate, std::string_view AWhere, uint64_t ACount,
                      std::string_view ANote) {
  if (ACount == 0) return;
  std::string key(AFeature);
  key += '\0';
  key += static_cast<char>('0' + static_cast<int>(AFate));
  key += AWhere;
  const auto [place, isNew] = FPlaces.try_emplace(std::move(key), FItems.size());
  if (isNew)
    FItems.push_back({std::string(AFeature), AFate, std::string(AWhere), ACount, std::string(ANote)});
  else
    FItems[place->second].Count += ACount;
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
