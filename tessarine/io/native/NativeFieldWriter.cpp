#include <tessarine/io/native/detail/NativeFieldWriter.h>

#include <charconv>
#include <cmath>

namespace tessarine::detail {

double ShortestNative(float AValue) {
  const auto exact = static_cast<double>(AValue);
  if (!std::isfinite(AValue)) return exact;
  char digits[48];
  const auto text = std::to_chars(digits, digits + sizeof digits, AValue);
  double shortest = exact;
  std::from_chars(digits, text.ptr, shortest);
  return static_cast<float>(shortest) == AValue ? shortest : exact;
}

}  // namespace tessarine::detail
