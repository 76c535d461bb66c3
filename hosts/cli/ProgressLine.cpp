#include <hosts/cli/ProgressLine.h>

#include <string>

#include <hosts/cli/Session.h>

namespace tessarine::cli {

namespace {

constexpr std::chrono::milliseconds kPatience{500};
constexpr std::chrono::milliseconds kInterval{100};

const char* PhaseText(TProgressPhase APhase) {
  switch (APhase) {
    case ppLoading: return "Loading";
    case ppSaving: return "Saving";
    case ppCalculating: return "Calculating";
    case ppRefreshing: return "Refreshing";
    case ppPrinting: return "Printing";
  }
  return "Working";
}

}  // namespace

TProgressLine::TProgressLine(IWriteStream& AStream, bool AIsTerminal)
    : FStream(AStream), FIsTerminal(AIsTerminal), FNext(TClock::now() + kPatience) {}

void TProgressLine::Report(const TTessarineProgressEvent& AEvent) {
  if (!FIsTerminal) return;
  const auto now = TClock::now();
  if (now < FNext) return;
  FNext = now + kInterval;
  FIsShown = true;
  WriteText(FStream, std::string("\r\x1b[K") + PhaseText(AEvent.Phase) + " " +
                         std::to_string(static_cast<int>(AEvent.Fraction * 100)) + "%");
}

void TProgressLine::Clear() {
  if (FIsShown) WriteText(FStream, "\r\x1b[K");
  FIsShown = false;
}

}  // namespace tessarine::cli
