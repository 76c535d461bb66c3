#pragma once

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// What a long operation is doing when it reports.
enum class TProgressPhase : uint8_t { ppLoading, ppSaving, ppCalculating, ppRefreshing, ppPrinting };
using enum TProgressPhase;

/// One report of a long operation. `What` is UTF-8 (a part or sheet name) and is valid during the call only.
struct TTessarineProgressEvent {
  using TPhase = TProgressPhase;
  TPhase Phase = ppLoading;
  double Fraction = 0;  ///< 0 to 1; never falls within one operation
  std::string_view What;
};

/// Called on the thread that does the work. It may request the stop; an exception it throws ends the work like a
/// failure.
using TProgressSink = std::function<void(const TTessarineProgressEvent&)>;

/// What long work gets from its caller: a token that stops it and a sink for its progress. Both may be empty.
struct TESSARINE_API TWorkControl {
  std::stop_token Stop;
  TProgressSink Progress;

  /// True once a stop was requested. Cheap enough for every few thousand steps of a loop.
  bool StopRequested() const { return Stop.stop_requested(); }

  /// Throws ECancelled once a stop was requested.
  void CheckStop() const;

  /// Passes a report to the sink, if there is one. AFraction is brought into 0 to 1.
  void Report(TProgressPhase APhase, double AFraction, std::string_view AWhat = {}) const;
};

}  // namespace tessarine
