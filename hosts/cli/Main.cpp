#include <string>
#include <vector>

#include <hosts/cli/Cli.h>
#include <hosts/cli/Terminal.h>

int main(int ACount, char** AArgs) {
  using namespace tessarine::cli;
  const std::stop_token stop = WatchInterrupts();
  const auto in = OpenStandardInput(stop);
  const auto out = OpenStandardOutput();
  const auto messages = OpenStandardError();
  TCliStreams streams{.In = *in, .Out = *out, .Messages = *messages, .Terminal = DescribeTerminal(), .Stop = stop};
  return RunCli(std::vector<std::string>(AArgs + (ACount > 0 ? 1 : 0), AArgs + ACount), streams);
}
