#include <gtest/gtest.h>

#include <stop_token>

#include <tessarine/Version.h>
#include <tessarine/platform/Errors.h>

#include "../support/CaseTable.h"
#include "../support/TemporaryFolder.h"
#include "CliFixture.h"
#include "WorkbookFiles.h"

using namespace tessarine;
using namespace tessarine::test;

TEST(CliUsage, HelpBeginsWithExamples) {
  const TCliResult help = RunLine({"--help"});
  EXPECT_EQ(help.Code, 0);
  EXPECT_LT(help.Out.find("Examples:"), help.Out.find("Usage:"));
  EXPECT_TRUE(help.Messages.empty());
  for (const char* command :
       {"info", "show", "cells", "eval", "recalc", "convert", "edit", "sort", "filter", "pivot", "diff", "functions"}) {
    const TCliResult sub = RunLine({command, "--help"});
    EXPECT_EQ(sub.Code, 0) << command;
    EXPECT_EQ(sub.Out.find("Examples:\n  tessarine " + std::string(command)), 0u) << sub.Out;
    EXPECT_NE(sub.Out.find("Usage: tessarine " + std::string(command) + " "), std::string::npos) << sub.Out;
    EXPECT_NE(help.Out.find("\n  " + std::string(command) + " "), std::string::npos) << command;
  }
  EXPECT_EQ(RunLine({"--version"}).Out, "tessarine " + std::string(Version()) + "\n");
}

TEST(CliUsage, EveryClassOfFailureHasItsCodeAndItsMessage) {
  TTemporaryFolder folder;
  const std::string sample = folder.Path("sample.xlsx");
  WriteSampleWorkbook(sample);
  const std::string whole = ContentOf(sample);
  WriteFile(folder.Path("cut.xlsx"), whole.substr(0, whole.size() / 2));
  WriteFile(folder.Path("no.xlsx"), "hello");
  WriteFile(folder.Path("x.ods"), "x");
  WriteFile(folder.Path("x.tsr"), "[]");
  WriteFile(folder.Path("x.dat"), "1");
  WriteFile(folder.Path("wide.csv"), std::string(20'000, ','));
  WriteFile(folder.Path("bad.jsonl"), "{\"f\":\"=1\"}\n{\"f\":}\n");
  WriteFile(folder.Path("ok.csv"), "1,2\n");
  for (const TCase& row : CasesOf("cli/failures.tsv", 3)) {
    std::vector<std::string> args;
    std::istringstream words(row[0]);
    for (std::string word; words >> word;) args.push_back(word[0] == '@' ? folder.Path(word.substr(1)) : word);
    const TCliResult result = RunLine(args);
    EXPECT_EQ(result.Code, row.Int(1)) << row.Place() << "\n" << result.Messages;
    EXPECT_EQ(result.Messages.find("tessarine: "), 0u) << row.Place();
    EXPECT_NE(result.Messages.find(row[2]), std::string::npos) << row.Place() << "\n" << result.Messages;
    EXPECT_EQ(result.Messages.back(), '\n') << row.Place();
  }
  EXPECT_EQ(RunLine({"eval", "--batch", folder.Path("bad.jsonl")}).Out.find("{\"type\":\"number\",\"value\":1,"), 0u)
      << "answers before the failure are kept";
}

TEST(CliUsage, OutputThatCannotBeWrittenIsToldByItsCode) {
  class TFullStream final : public IWriteStream {
   public:
    void Write(std::span<const std::byte>) override { throw EFileAccess("Cannot write standard output: full"); }
  };
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"eval", "=1"}, {"--help"}, {"convert", "-", "-"}, {"functions"}}) {
    const std::string input = "a,b\n";
    TMemoryReadStream in(std::as_bytes(std::span<const char>(input)));
    TFullStream out;
    TMemoryWriteStream messages;
    cli::TCliStreams streams{.In = in, .Out = out, .Messages = messages};
    EXPECT_EQ(cli::RunCli(args, streams), 5) << args[0];
    EXPECT_EQ(CollectedText(messages), "tessarine: Cannot write standard output: full\n");
  }
}

TEST(CliUsage, InputThatCannotBeReadIsToldByItsCode) {
  class TBrokenStream final : public IReadStream {
   public:
    size_t Read(std::span<std::byte>) override { throw EFileAccess("Cannot read standard input: broken"); }
  };
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"info", "-"}, {"eval", "-", "=1"}, {"eval", "--batch", "-"}, {"convert", "-", "-"}}) {
    TBrokenStream in;
    TMemoryWriteStream out;
    TMemoryWriteStream messages;
    cli::TCliStreams streams{.In = in, .Out = out, .Messages = messages};
    EXPECT_EQ(cli::RunCli(args, streams), 3) << args[0];
    EXPECT_EQ(CollectedText(messages), "tessarine: Cannot read standard input: broken\n");
  }
}

TEST(CliUsage, AStopEndsWithTheCodeOfAnInterrupt) {
  TTemporaryFolder folder;
  std::string text;
  for (int i = 0; i < 200'000; ++i) text += "some text,1\n";
  WriteFile(folder.Path("in.csv"), text);
  WriteFile(folder.Path("out.csv"), "old");
  std::stop_source stop;
  stop.request_stop();
  const TCliResult result =
      RunLine({"convert", folder.Path("in.csv"), folder.Path("out.csv")}, {}, {}, stop.get_token());
  EXPECT_EQ(result.Code, 130);
  EXPECT_EQ(result.Messages, "tessarine: interrupted; no file was changed\n");
  EXPECT_EQ(ContentOf(folder.Path("out.csv")), "old");
  EXPECT_EQ(ContentOf(folder.Path("out.csv.tessarine.tmp")), "(missing)");
}
