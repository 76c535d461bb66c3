#include <tessarine/platform/Progress.h>

#include <algorithm>

#include <tessarine/platform/Errors.h>

namespace tessarine {

void TWorkControl::CheckStop() const {
  if (Stop.stop_requested()) throw ECancelled("The operation was stopped on request");
}

void TWorkControl::Report(TProgressPhase APhase, double AFraction, std::string_view AWhat) const {
  if (!Progress) return;
  // Written so that NaN becomes 0 as well.
  const double fraction = AFraction > 0 ? std::min(AFraction, 1.0) : 0.0;
  Progress({.Phase = APhase, .Fraction = fraction, .What = AWhat});
}

}  // namespace tessarine
