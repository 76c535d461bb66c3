#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

/// What became of something that a file or a workbook held.
enum class TFileFate : uint8_t {
  ffKept,       ///< it means the same on the other side
  ffRewritten,  ///< it is there in another form (a filter as wildcards, a duplicate name with a number)
  ffDropped,    ///< it is gone
};
using enum TFileFate;

/// One line of a report: so many things of one kind in one place had one fate.
struct TFileReportItem {
  std::string Feature;  ///< UTF-8, in the singular: "comment", "conditional format", "part"
  TFileFate Fate = ffKept;
  std::string Where;  ///< UTF-8: a part's name, a sheet's name; empty for the whole file
  uint64_t Count = 0;
  std::string Note;  ///< what the first of them was, or why; may be empty
};

/// What a reader or writer tells about the things that do not come through unchanged. Readers and writers fill it when
/// their options point to one; lines come in the order in which things were met.
class TESSARINE_API TFileReport {
 public:
  /// Counts ACount things of a kind; the same feature, fate and place make one line, which keeps its first note.
  void Add(std::string_view AFeature, TFileFate AFate, std::string_view AWhere, uint64_t ACount = 1,
           std::string_view ANote = {});

  const std::vector<TFileReportItem>& Items() const { return FItems; }
  bool IsEmpty() const { return FItems.empty(); }
  /// Things of one fate, all lines together.
  uint64_t CountOf(TFileFate AFate) const;

 private:
  std::vector<TFileReportItem> FItems;
  std::unordered_map<std::string, size_t> FPlaces;  // of the items, by what makes one line of them
};

/// "kept", "rewritten", "dropped".
TESSARINE_API std::string_view FileFateName(TFileFate AFate);

}  // namespace tessarine
