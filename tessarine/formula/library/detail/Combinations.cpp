#include <tessarine/formula/library/detail/Combinations.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace tessarine::detail {

namespace {

constexpr double kExactLimit = 0x1p53;

/// ACount * AFactor / ADivisor for integers of which the quotient is one: without rounding as long as it stays below
/// 2^53.
double ScaleExactly(double ACount, double AFactor, double ADivisor) {
  if (ACount >= kExactLimit || AFactor >= kExactLimit) return ACount * (AFactor / ADivisor);
  auto count = static_cast<uint64_t>(ACount);
  auto divisor = static_cast<uint64_t>(ADivisor);
  const uint64_t common = std::gcd(count, divisor);
  count /= common;
  divisor /= common;
  const uint64_t factor = static_cast<uint64_t>(AFactor) / divisor;
  return static_cast<double>(count) * static_cast<double>(factor);
}

}  // namespace

double CombinationCount(double ANumber, double AChosen) {
  if (!(ANumber >= 0 && AChosen >= 0 && AChosen <= ANumber)) return std::numeric_limits<double>::quiet_NaN();
  const double chosen = std::min(AChosen, ANumber - AChosen);
  double count = 1;
  // Every step at least doubles the count, so an infinity ends the loop after about a thousand.
  for (double i = 1; i <= chosen && std::isfinite(count); ++i) count = ScaleExactly(count, ANumber - chosen + i, i);
  return count;
}

double PermutationCount(double ANumber, double AChosen) {
  if (!(ANumber >= 0 && AChosen >= 0 && AChosen <= ANumber)) return std::numeric_limits<double>::quiet_NaN();
  double count = 1;
  for (double i = 0; i < AChosen && std::isfinite(count); ++i) count *= ANumber - i;
  return count;
}

double FallingProduct(double A, double AStep) {
  if (A > 1000) return std::numeric_limits<double>::infinity();
  long double product = 1;  // leaves the roundings of up to 170 factors behind the digits of a double
  for (double factor = A; factor > 0; factor -= AStep) product *= factor;
  return static_cast<double>(product);
}

}  // namespace tessarine::detail
