#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include <nlohmann/json.hpp>

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/platform/Unicode.h>

#include "../support/TemporaryFolder.h"
#include "CliFixture.h"
#include "WorkbookFiles.h"

using namespace tessarine;
using namespace tessarine::test;

TEST(CliFunctions, TheDocumentOfAllFunctionsIsUpToDate) {
  const TCliResult made = RunLine({"functions", "--markdown"});
  ASSERT_EQ(made.Code, 0) << made.Messages;
  EXPECT_TRUE(made.Out == ContentOf(TESS_SOURCE_DIR "/docs/functions.md"))
      << "docs/functions.md is out of date; in the repository's folder run\n"
         "  tessarine functions --markdown > docs/functions.md";
}

TEST(CliFunctions, EveryNameIsInTheDocumentAndInTheJson) {
  const std::string document = RunLine({"functions", "--markdown"}).Out;
  std::istringstream lines(RunLine({"functions", "--json"}).Out);
  std::set<std::string> families;
  size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const auto object = nlohmann::json::parse(line);
    const std::string name = object["name"];
    const TFunctionDef* function = FindFunction(Utf8ToUtf16(name));
    ASSERT_NE(function, nullptr) << line;
    EXPECT_TRUE(name != "SUM" || (object["max"].is_null() && object["description"] != "")) << line;
    std::string spellings;
    for (const std::string other : object["spellings"]) {
      EXPECT_EQ(FindFunction(Utf8ToUtf16(other)), function) << line;
      EXPECT_NE(document.find("`" + other + "`"), document.npos) << line;
      spellings += (spellings.empty() ? "" : " ") + other;
    }
    EXPECT_EQ(spellings, Utf16ToUtf8(function->Spellings));
    families.insert(object["family"]);
    EXPECT_NE(document.find("\n- `" + name + (object["supported"] ? "(" : "`")), document.npos) << line;
  }
  EXPECT_EQ(count, AllFunctions().size());
  for (const std::string& family : families) {
    EXPECT_NE(document.find("\n## " + family + "\n"), document.npos) << family;
  }
  EXPECT_EQ(families.count(""), 0u);
  EXPECT_NE(RunLine({"functions"}).Out.find("\nSUM("), std::string::npos);
  EXPECT_EQ(RunLine({"functions", "--json", "--markdown"}).Code, 2);
}
