#pragma once

#include <cstddef>
#include <cstdint>

#include <tessarine/formula/detail/Evaluation.h>
#include <tessarine/formula/library/detail/ExternalAnswers.h>

namespace tessarine::detail {

/// How much of the native stack, in bytes below the call from outside, evaluations may have used when they go on
/// natively. One formula can nest that deep again (the parser bounds it), and all together stays below 1 MB in a build
/// without sanitizers.
constexpr size_t kPullStack = 256 * 1024;   // pulls nest
constexpr size_t kDeepStack = 320 * 1024;   // pulls nest above a loop over waiting readers
constexpr size_t kSpillStack = 384 * 1024;  // dependents of a block are told inside another block's telling
constexpr size_t kNameStack = 512 * 1024;   // defined names nest

/// An address in the caller's frame.
inline uintptr_t StackAddress() {
#if defined(__GNUC__) || defined(__clang__)
  return reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
#else
  volatile char here = 0;
  return reinterpret_cast<uintptr_t>(&here);
#endif
}

/// One call from outside. Calls may come from inside an evaluation (the telling of dependents, a host's handler): no
/// suspension passes through them, and the reader around them meets its state again afterwards.
class TEvaluation::TActivity {
 public:
  explicit TActivity(TEvaluation& AOwner);
  ~TActivity();
  TActivity(const TActivity&) = delete;
  TActivity& operator=(const TActivity&) = delete;

 private:
  TEvaluation& FOwner;
  size_t FPulls;
  size_t FReplayNext;
  size_t FReplayEnd;
  size_t FStackLimit;
  bool FCanSuspend;
  TExternalAnswers FAnswers;
};

}  // namespace tessarine::detail
