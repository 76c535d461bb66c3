#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <hosts/cli/Cli.h>
#include <tessarine/platform/Files.h>

namespace tessarine::test {

struct TCliResult {
  int Code = 0;
  std::string Out;
  std::string Messages;
};

inline std::string CollectedText(const TMemoryWriteStream& AStream) {
  return {reinterpret_cast<const char*>(AStream.Bytes().data()), AStream.Bytes().size()};
}

/// Runs the command line in this process.
inline TCliResult RunLine(const std::vector<std::string>& AArgs, std::string_view AInput = {},
                          const cli::TTerminal& ATerminal = {}, std::stop_token AStop = {}) {
  TMemoryReadStream in(std::as_bytes(std::span<const char>(AInput)));
  TMemoryWriteStream out;
  TMemoryWriteStream messages;
  cli::TCliStreams streams{.In = in, .Out = out, .Messages = messages, .Terminal = ATerminal, .Stop = AStop};
  const int code = cli::RunCli(AArgs, streams);
  return {code, CollectedText(out), CollectedText(messages)};
}

}  // namespace tessarine::test
