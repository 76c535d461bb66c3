#include <gtest/gtest.h>

#include "../support/LoopbackServer.h"
#include "../support/TemporaryFolder.h"
#include "CliFixture.h"

using namespace tessarine::test;

TEST(CliWeb, FormulasFetchOnlyWhenAllowed) {
  TLoopbackServer server;
  server.Reply("/a", "fetched");
  TTemporaryFolder folder;
  const std::string formula = "=WEBSERVICE(\"" + server.Url("/a") + "\")";
  const std::string question =
      "{\"f\": \"=A1\", \"cells\": {\"A1\": \"=WEBSERVICE(\\\"" + server.Url("/a") + "\\\")\"}}";
  WriteFile(folder.Path("batch.jsonl"), question);
  WriteFile(folder.Path("in.csv"), "1\n");
  const std::vector<std::vector<std::string>> calls = {
      {"eval", formula},
      {"eval", folder.Path("in.csv"), formula},
      {"eval", "--batch", folder.Path("batch.jsonl")},
  };
  for (std::vector<std::string> args : calls) {
    const int before = server.Count("/a");
    EXPECT_NE(RunLine(args).Out.find("#VALUE!"), std::string::npos) << args[1];
    EXPECT_EQ(server.Count("/a"), before) << "the network is forbidden";
    args.push_back("--allow-web");
    EXPECT_NE(RunLine(args).Out.find("fetched"), std::string::npos) << args[1];
  }
  for (const char* command : {"show", "cells", "recalc", "convert"})
    EXPECT_NE(RunLine({command, "--help"}).Out.find("--allow-web"), std::string::npos) << command;
  EXPECT_EQ(RunLine({"info", folder.Path("in.csv"), "--allow-web"}).Code, 2);
}
