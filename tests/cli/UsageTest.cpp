#include <gtest/gtest.h>

#include <stop_token>

#include <tessarine/Version.h>
#include <tessarine/platform/Errors.h>

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
  const auto path = [&](const char* AName) { return folder.Path(AName); };
  const struct {
    std::vector<std::string> Args;
    int Code;
    const char* Message;
  } cases[] = {
      {{}, 2, "say what to do"},
      {{"frobnicate"}, 2, "frobnicate"},
      {{"info"}, 2, "FILE"},
      {{"show", path("ok.csv"), "--frob"}, 2, "--frob"},
      {{"show", path("ok.csv"), "--range", "A1:"}, 2, "no range of cells"},
      {{"show", path("ok.csv"), "--range", "A0"}, 2, "no range of cells"},
      {{"show", path("ok.csv"), "--sheet", "Sales"}, 2, "the sheets are: Sheet1"},
      {{"show", path("ok.csv"), "--from", "pdf"}, 2, "formats are: "},
      {{"show", path("ok.csv"), "--decimal", "x"}, 2, "give a point or a comma"},
      {{"show", path("x.dat")}, 2, "add --from with "},
      {{"eval"}, 2, "give a formula"},
      {{"eval", "=1", "--at", "A1:B2"}, 2, "more than one cell"},
      {{"eval", "=1", "--batch", path("bad.jsonl")}, 2, "give no others"},
      {{"convert", path("ok.csv"), path("out.pdf")}, 2, "add --to with "},
      {{"convert", path("ok.csv"), path("out.csv"), "--delimiter", "ab"}, 2, "give one character"},
      {{"recalc", path("ok.csv")}, 2, "--output"},
      {{"diff", path("ok.csv"), path("ok.csv"), "--max", "-1"}, 2, "0 for all"},
      {{"show", path("missing.xlsx")}, 3, "missing.xlsx: there is no such file"},
      {{"info", folder.Path("")}, 3, "this is a folder"},
      {{"info", path("cut.xlsx")}, 3, "cut.xlsx: "},
      {{"cells", path("no.xlsx"), "--json"}, 3, "no.xlsx: not a ZIP archive"},
      {{"show", path("x.ods")}, 3, "x.ods: not a ZIP archive"},
      {{"show", path("x.tsr")}, 3, "x.tsr: this is no Tessarine document"},
      {{"convert", path("ok.csv"), path("out.ods"), "--to", "pdf"}, 2, "formats are: tsr, xlsx, ods, csv"},
      {{"eval", "--batch", path("bad.jsonl")}, 3, "question 2"},
      {{"eval", "--batch", path("none.jsonl")}, 3, "there is no such file"},
      {{"show", path("wide.csv")}, 4, "wide.csv, line 1: the row has more than the 16384 columns"},
      {{"eval", path("missing.tsv"), "=1"}, 3, "missing.tsv: there is no such file"},
      {{"convert", path("ok.csv"), path("none/out.csv")}, 5, "none/out.csv: its folder does not exist"},
      {{"convert", path("ok.csv"), folder.Path(""), "--to", "csv"}, 5, "this is a folder"},
  };
  for (const auto& row : cases) {
    const TCliResult result = RunLine(row.Args);
    const std::string line = ::testing::PrintToString(row.Args);
    EXPECT_EQ(result.Code, row.Code) << line << "\n" << result.Messages;
    EXPECT_EQ(result.Messages.find("tessarine: "), 0u) << line;
    EXPECT_NE(result.Messages.find(row.Message), std::string::npos) << line << "\n" << result.Messages;
    EXPECT_EQ(result.Messages.back(), '\n') << line;
  }
  EXPECT_EQ(RunLine({"eval", "--batch", path("bad.jsonl")}).Out.find("{\"type\":\"number\",\"value\":1,"), 0u)
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
