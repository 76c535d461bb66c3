#pragma once

#include <algorithm>
#include <cmath>

namespace tessarine::detail {

/// A place and the value of a function there.
struct TSample {
  double At = 0;
  double Value = 0;
};

/// The root of a continuous function between two places at which its values differ in sign (or are 0), to the last
/// bits. Chandrupatla's method ("A new hybrid quadratic/bisection algorithm", Adv. Eng. Software 28, 1997): inverse
/// quadratic interpolation where it is safe, else halving.
template <class F>
double RootBetween(TSample AFirst, TSample ASecond, F&& AFunction) {
  constexpr int kMostSteps = 200;
  TSample a = AFirst;
  TSample b = ASecond;
  double t = 0.5;
  for (int step = 0; step < kMostSteps; ++step) {
    const double at = a.At + t * (b.At - a.At);
    const TSample next{at, AFunction(at)};
    TSample c = a;
    if ((next.Value < 0) != (a.Value < 0)) {
      c = b;
      b = a;
    }
    a = next;
    const TSample& best = std::fabs(a.Value) < std::fabs(b.Value) ? a : b;
    const double least = (4e-16 * std::fabs(best.At) + 1e-17) / std::fabs(b.At - a.At);
    if (best.Value == 0 || !(least <= 0.5)) return best.At;
    const double xi = (a.At - b.At) / (c.At - b.At);
    const double phi = (a.Value - b.Value) / (c.Value - b.Value);
    t = 0.5;
    if (phi * phi < xi && (1 - phi) * (1 - phi) < 1 - xi) {
      t = a.Value / (b.Value - a.Value) * c.Value / (b.Value - c.Value) +
          (c.At - a.At) / (b.At - a.At) * a.Value / (c.Value - a.Value) * b.Value / (c.Value - b.Value);
    }
    t = std::clamp(t, least, 1 - least);
  }
  return std::fabs(a.Value) < std::fabs(b.Value) ? a.At : b.At;
}

}  // namespace tessarine::detail
