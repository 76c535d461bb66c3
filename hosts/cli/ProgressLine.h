#pragma once

#include <chrono>

#include <tessarine/platform/Progress.h>

namespace tessarine {
class IWriteStream;
}

namespace tessarine::cli {

/// One line on a terminal that tells how far long work is. It appears when the work has taken half a second and goes
/// when Clear is called.
class TProgressLine {
 public:
  /// Writes nothing unless AIsTerminal.
  TProgressLine(IWriteStream& AStream, bool AIsTerminal);

  void Report(const TTessarineProgressEvent& AEvent);
  void Clear();

 private:
  using TClock = std::chrono::steady_clock;

  IWriteStream& FStream;
  bool FIsTerminal;
  bool FIsShown = false;
  TClock::time_point FNext;
};

}  // namespace tessarine::cli
