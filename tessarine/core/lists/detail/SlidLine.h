#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tessarine::detail {

/// ALine moved by ADelta when it lies at or behind AStart, held inside 32 bits. Nothing is checked against a sheet.
inline int32_t SlidLine(int32_t ALine, int64_t AStart, int64_t ADelta) {
  if (ALine < AStart) return ALine;
  constexpr int64_t kLeast = std::numeric_limits<int32_t>::min();
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::clamp(ALine + std::clamp(ADelta, 2 * kLeast, 2 * kMost), kLeast, kMost));
}

}  // namespace tessarine::detail
