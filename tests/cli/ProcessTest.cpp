// The built program as a process of its own: interrupts, terminals, standard streams.

#if defined(__linux__)

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../support/TemporaryFolder.h"
#include "WorkbookFiles.h"

using namespace tessarine::test;

namespace {

/// A run of the program. Standard input, output and error are the given descriptors of ours.
class TProcess {
 public:
  TProcess(const std::vector<std::string>& AArgs, std::array<int, 3> AStreams, const char* ANoColor = nullptr) {
    std::vector<std::string> words{TESS_CLI_PATH};
    words.insert(words.end(), AArgs.begin(), AArgs.end());
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    FId = fork();
    if (FId != 0) return;
    for (int i = 0; i < 3; ++i) dup2(AStreams[static_cast<size_t>(i)], i);
    setenv("TERM", "xterm-256color", 1);
    ANoColor ? setenv("NO_COLOR", ANoColor, 1) : unsetenv("NO_COLOR");
    signal(SIGINT, SIG_DFL);
    closefrom(3);
    execv(arguments[0], arguments.data());
    _exit(126);
  }
  ~TProcess() {
    if (FId <= 0) return;
    kill(FId, SIGKILL);
    Wait();
  }

  void Interrupt() const { kill(FId, SIGINT); }
  bool IsRunning() {
    int status = 0;
    if (FId <= 0) return false;
    if (waitpid(FId, &status, WNOHANG) == 0) return true;
    Note(status);
    return false;
  }
  /// The exit code, or 1000 and the signal that ended the process.
  int Wait() {
    int status = 0;
    if (FId > 0 && waitpid(FId, &status, 0) == FId) Note(status);
    return FCode;
  }

 private:
  void Note(int AStatus) {
    FCode = WIFEXITED(AStatus) ? WEXITSTATUS(AStatus) : 1000 + WTERMSIG(AStatus);
    FId = 0;
  }

  pid_t FId = 0;
  int FCode = -1;
};

struct TPipe {
  std::array<int, 2> Ends{};
  TPipe() { EXPECT_EQ(pipe2(Ends.data(), O_CLOEXEC), 0); }
  ~TPipe() {
    for (const int end : Ends) close(end);
  }
};

/// All that comes from a descriptor until its other side is closed.
std::string ReadToEnd(int ADescriptor) {
  std::string text;
  char buffer[4096];
  for (;;) {
    const ssize_t count = read(ADescriptor, buffer, sizeof buffer);
    if (count <= 0) return text;  // a pseudo-terminal ends with an error
    text.append(buffer, static_cast<size_t>(count));
  }
}

int OpenNull() { return open("/dev/null", O_RDWR | O_CLOEXEC); }

}  // namespace

TEST(CliProcess, AnInterruptWhileItWaitsForInputLeavesTheTarget) {
  TTemporaryFolder folder;
  const std::string target = folder.Path("out.csv");
  WriteFile(target, "old");
  TPipe input;
  TPipe messages;
  const int none = OpenNull();
  TProcess process({"convert", "-", target}, {input.Ends[0], none, messages.Ends[1]});
  const std::string text(1'000'000, 'x');  // more than a pipe holds: once it is written, the program reads
  ASSERT_EQ(write(input.Ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  process.Interrupt();
  EXPECT_EQ(process.Wait(), 130);
  close(messages.Ends[1]);
  messages.Ends[1] = none;
  EXPECT_EQ(ReadToEnd(messages.Ends[0]), "tessarine: interrupted; no file was changed\n");
  EXPECT_EQ(ContentOf(target), "old");
}

TEST(CliProcess, AnInterruptWhileItWritesLeavesTheTargetAndNothingBesideIt) {
  TTemporaryFolder folder;
  const std::string target = folder.Path("out.csv");
  WriteFile(target, "old");
  std::string text;
  for (int row = 0; row < 1'000'000; ++row) text += "1,2,3,4,5,6,7,8,9,10\n";
  WriteFile(folder.Path("in.csv"), text);
  const int none = OpenNull();
  TProcess process({"convert", folder.Path("in.csv"), target, "--no-recalc"}, {none, none, none});
  const std::string temporary = target + ".tessarine.tmp";
  while (process.IsRunning() && !std::filesystem::exists(temporary)) poll(nullptr, 0, 1);
  process.Interrupt();
  EXPECT_EQ(process.Wait(), 130);
  EXPECT_EQ(ContentOf(target), "old");
  EXPECT_FALSE(std::filesystem::exists(temporary));
  close(none);
}

TEST(CliProcess, ColoursNeedATerminalAndRespectNoColor) {
  TTemporaryFolder folder;
  const std::string sample = folder.Path("sample.xlsx");
  WriteSampleWorkbook(sample);
  const struct {
    const char* NoColor;
    bool HasColors;
  } cases[] = {{nullptr, true}, {"", true}, {"1", false}};
  for (const auto& row : cases) {
    int terminal = 0;
    int side = 0;
    winsize size{.ws_row = 20, .ws_col = 30, .ws_xpixel = 0, .ws_ypixel = 0};
    ASSERT_EQ(openpty(&terminal, &side, nullptr, nullptr, &size), 0);
    const int none = OpenNull();
    TProcess process({"show", sample}, {none, side, side}, row.NoColor);
    close(side);
    const std::string text = ReadToEnd(terminal);
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_EQ(text.find('\x1b') != std::string::npos, row.HasColors) << text;
    EXPECT_NE(text.find("Title over two"), std::string::npos) << text;
    close(terminal);
    close(none);
  }
  TPipe output;
  const int none = OpenNull();
  TProcess process({"show", sample}, {none, output.Ends[1], none});
  close(output.Ends[1]);
  output.Ends[1] = none;
  EXPECT_EQ(ReadToEnd(output.Ends[0]).find('\x1b'), std::string::npos);
  EXPECT_EQ(process.Wait(), 0);
}

TEST(CliProcess, LongWorkShowsItsProgressOnATerminalAndClearsIt) {
  TTemporaryFolder folder;
  std::string text;
  for (int row = 0; row < 1'000'000; ++row) text += "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n";
  WriteFile(folder.Path("in.csv"), text);
  int terminal = 0;
  int side = 0;
  ASSERT_EQ(openpty(&terminal, &side, nullptr, nullptr, nullptr), 0);
  const int none = OpenNull();
  TProcess process({"convert", folder.Path("in.csv"), folder.Path("out.csv")}, {none, none, side});
  close(side);
  const std::string messages = ReadToEnd(terminal);
  EXPECT_EQ(process.Wait(), 0);
  if (!messages.empty()) {  // a machine may be fast enough to need none
    EXPECT_EQ(messages.find("\r\x1b[K"), 0u);
    EXPECT_NE(messages.find('%'), std::string::npos);
    EXPECT_EQ(messages.substr(messages.size() - 4), "\r\x1b[K");
  }
  close(terminal);
  close(none);
}

TEST(CliProcess, AFullDiskIsAFailureOfTheOutput) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (full < 0) GTEST_SKIP() << "there is no /dev/full";
  const int none = OpenNull();
  TProcess process({"functions"}, {none, full, none});
  EXPECT_EQ(process.Wait(), 5);
  close(full);
  close(none);
}

#endif
