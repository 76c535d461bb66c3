#pragma once

#include <algorithm>
#include <cstdint>

namespace tessarine {

/// What a reader of foreign files accepts before it gives up with ELimit. The defaults are far above what honest files
/// need; a host may set others, up to the hard ceiling that Clamped() applies. Every reader clamps what it is given.
struct TReadLimits {
  /// Entries in the directory of an archive.
  uint32_t MaxEntries = 65'535;

  /// Bytes of one part of an archive after inflation.
  uint64_t MaxPartBytes = uint64_t{1} << 30;

  /// Bytes of all parts that were read from one archive, counted at each reading.
  uint64_t MaxTotalBytes = uint64_t{4} << 30;

  /// Inflated bytes for one compressed byte. Deflate reaches 1,032 and a dull sheet several hundred, so the ratio
  /// counts only for parts larger than RatioFreeBytes.
  uint32_t MaxRatio = 300;
  uint64_t RatioFreeBytes = uint64_t{64} << 20;

  /// Elements open at a time in an XML part, the root included.
  uint32_t MaxXmlDepth = 256;

  /// Attributes of one element.
  uint32_t MaxXmlAttributes = 1'024;

  /// Elements, texts and attributes together of a part that is read into a tree. Sheets and string tables are not.
  uint32_t MaxXmlTreeNodes = 2'000'000;

  /// The limits with every value brought between 1 and the ceiling that no host can lift.
  constexpr TReadLimits Clamped() const {
    return {.MaxEntries = std::clamp<uint32_t>(MaxEntries, 1, 1'048'576),
            .MaxPartBytes = std::clamp<uint64_t>(MaxPartBytes, 1, uint64_t{16} << 30),
            .MaxTotalBytes = std::clamp<uint64_t>(MaxTotalBytes, 1, uint64_t{64} << 30),
            .MaxRatio = std::clamp<uint32_t>(MaxRatio, 1, 1'032),
            .RatioFreeBytes = std::clamp<uint64_t>(RatioFreeBytes, 1, uint64_t{16} << 30),
            .MaxXmlDepth = std::clamp<uint32_t>(MaxXmlDepth, 1, 65'536),
            .MaxXmlAttributes = std::clamp<uint32_t>(MaxXmlAttributes, 1, 65'536),
            .MaxXmlTreeNodes = std::clamp<uint32_t>(MaxXmlTreeNodes, 1, 100'000'000)};
  }

  friend bool operator==(const TReadLimits&, const TReadLimits&) = default;
};

}  // namespace tessarine
