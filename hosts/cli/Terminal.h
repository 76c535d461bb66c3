#pragma once

#include <memory>
#include <stop_token>

#include <hosts/cli/Cli.h>
#include <tessarine/platform/Files.h>

namespace tessarine::cli {

/// What standard output and standard error are connected with. Colours need a terminal that has them, and NO_COLOR
/// unset or empty.
TTerminal DescribeTerminal();

/// Standard input; a read that waits ends with ECancelled when AStop is requested.
std::unique_ptr<IReadStream> OpenStandardInput(std::stop_token AStop);

/// Standard output and standard error, unbuffered. Failures throw EFileAccess.
std::unique_ptr<IWriteStream> OpenStandardOutput();
std::unique_ptr<IWriteStream> OpenStandardError();

/// From now on the first interrupt from the keyboard requests a stop, and the second ends the process. Has to be called
/// before there is a second thread. Where interrupts are ignored they stay so.
std::stop_token WatchInterrupts();

}  // namespace tessarine::cli
