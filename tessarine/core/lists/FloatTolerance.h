#pragma once

#include <algorithm>
#include <cmath>

namespace tessarine {

/// Whether two numbers are equal at the default tolerance of float comparison: 1e-12, or 1e-12 of the smaller
/// magnitude where that is more.
inline bool IsSameFloat(double ALeft, double ARight) {
  return std::fabs(ALeft - ARight) <= std::max(1e-12, 1e-12 * std::min(std::fabs(ALeft), std::fabs(ARight)));
}

}  // namespace tessarine
