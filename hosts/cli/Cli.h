#pragma once

#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace tessarine {
class IReadStream;
class IWriteStream;
}  // namespace tessarine

namespace tessarine::cli {

enum TExitCode : int {
  ecDone = 0,
  ecNegative = 1,  // an answer, and it is no
  ecUsage = 2,
  ecInput = 3,
  ecLimit = 4,
  ecOutput = 5,
  ecInterrupted = 130,
};

/// What the streams of a run are connected with.
struct TTerminal {
  bool IsOutput = false;    // results go to a terminal
  bool IsMessages = false;  // messages do
  bool HasColors = false;   // results may be coloured
  int Width = 100;          // columns
};

/// The surroundings of a run.
struct TCliStreams {
  IReadStream& In;
  IWriteStream& Out;
  IWriteStream& Messages;
  TTerminal Terminal = {};
  std::stop_token Stop = {};
};

/// Ends a run with a message and an exit code.
class ECli : public std::runtime_error {
 public:
  ECli(TExitCode ACode, const std::string& AMessage) : std::runtime_error(AMessage), FCode(ACode) {}
  TExitCode Code() const { return FCode; }

 private:
  TExitCode FCode;
};

/// Carries a command line out; AArgs without the program's name. Answers the exit code; nothing is thrown.
int RunCli(const std::vector<std::string>& AArgs, TCliStreams& AStreams);

}  // namespace tessarine::cli
