#include <hosts/cli/Terminal.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <tessarine/platform/Errors.h>

#if defined(__unix__) || defined(__APPLE__)
#define TESS_CLI_POSIX 1
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <csignal>
#else
#include <fcntl.h>
#include <io.h>
#include <csignal>
#endif

namespace tessarine::cli {

namespace {

constexpr int kDefaultWidth = 100;

std::string_view Environment(const char* AName) {
  const char* const value = std::getenv(AName);  // NOLINT(concurrency-mt-unsafe): nobody sets it
  return value ? value : "";
}

[[noreturn]] void FailStandard(const char* AWhat, int AError) {
  throw EFileAccess(std::string("Cannot ") + AWhat + ": " + std::generic_category().message(AError));
}

class TStandardWriteStream final : public IWriteStream {
 public:
  TStandardWriteStream(std::FILE* AFile, const char* AName) : FFile(AFile), FName(AName) {}

  void Write(std::span<const std::byte> ABytes) override {
    errno = 0;
    if (std::fwrite(ABytes.data(), 1, ABytes.size(), FFile) != ABytes.size() || std::fflush(FFile) != 0)
      FailStandard(FName, errno);
  }

 private:
  std::FILE* FFile;
  const char* FName;
};

#if defined(TESS_CLI_POSIX)

bool IsTerminal(int ADescriptor) { return isatty(ADescriptor) == 1; }

int TerminalWidth() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kDefaultWidth;
}

class TStandardReadStream final : public IReadStream {
 public:
  explicit TStandardReadStream(std::stop_token AStop) : FStop(std::move(AStop)) {}

  size_t Read(std::span<std::byte> ABuffer) override {
    constexpr int kPollMilliseconds = 100;
    if (ABuffer.empty()) return 0;
    for (;;) {
      if (FStop.stop_requested()) throw ECancelled("The operation was stopped on request");
      pollfd waiting{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
      const int ready = poll(&waiting, 1, kPollMilliseconds);
      if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
      const ssize_t count = read(STDIN_FILENO, ABuffer.data(), ABuffer.size());
      if (count >= 0) return static_cast<size_t>(count);
      if (errno != EINTR && errno != EAGAIN) FailStandard("read standard input", errno);
    }
  }

 private:
  std::stop_token FStop;
};

#else

bool IsTerminal(int ADescriptor) { return _isatty(ADescriptor) != 0; }

int TerminalWidth() { return kDefaultWidth; }

class TStandardReadStream final : public IReadStream {
 public:
  explicit TStandardReadStream(std::stop_token) { _setmode(_fileno(stdin), _O_BINARY); }

  size_t Read(std::span<std::byte> ABuffer) override {
    const size_t count = std::fread(ABuffer.data(), 1, ABuffer.size(), stdin);
    if (count == 0 && std::ferror(stdin) != 0) FailStandard("read standard input", errno);
    return count;
  }
};

std::stop_source& Interrupts() {
  static std::stop_source source;
  return source;
}

#endif

}  // namespace

TTerminal DescribeTerminal() {
  TTerminal terminal;
  terminal.IsOutput = IsTerminal(1);
  terminal.IsMessages = IsTerminal(2);
  terminal.HasColors = terminal.IsOutput && Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
  terminal.Width = terminal.IsOutput ? TerminalWidth() : kDefaultWidth;
  return terminal;
}

std::unique_ptr<IReadStream> OpenStandardInput(std::stop_token AStop) {
  return std::make_unique<TStandardReadStream>(std::move(AStop));
}

std::unique_ptr<IWriteStream> OpenStandardOutput() {
  return std::make_unique<TStandardWriteStream>(stdout, "write standard output");
}

std::unique_ptr<IWriteStream> OpenStandardError() {
  return std::make_unique<TStandardWriteStream>(stderr, "write standard error");
}

#if defined(TESS_CLI_POSIX)

std::stop_token WatchInterrupts() {
  std::stop_source source;
  struct sigaction present {};
  if (sigaction(SIGINT, nullptr, &present) != 0 || present.sa_handler == SIG_IGN) return source.get_token();
  sigset_t interrupts;
  sigemptyset(&interrupts);
  sigaddset(&interrupts, SIGINT);
  if (pthread_sigmask(SIG_BLOCK, &interrupts, nullptr) != 0) return source.get_token();
  // A thread of its own may do what a signal handler must not. It is not waited for: the process ends it.
  std::thread([source, interrupts]() mutable {
    int signal = 0;
    if (sigwait(&interrupts, &signal) != 0) return;
    source.request_stop();
    pthread_sigmask(SIG_UNBLOCK, &interrupts, nullptr);
  }).detach();
  return source.get_token();
}

#else

std::stop_token WatchInterrupts() {
  std::signal(SIGINT, [](int) {
    std::signal(SIGINT, SIG_DFL);
    Interrupts().request_stop();
  });
  return Interrupts().get_token();
}

#endif

}  // namespace tessarine::cli
