#include <gtest/gtest.h>

#include <string>

#include <nlohmann/json.hpp>

#include "../support/TemporaryFolder.h"
#include "CliFixture.h"
#include "WorkbookFiles.h"

using namespace tessarine;
using namespace tessarine::test;
using nlohmann::json;

namespace {

constexpr const char* kSales = "Region,Year,Amount\nNorth,2023,10\nSouth,2023,20\nNorth,2024,5\nEast,2024,7\n";

}  // namespace

TEST(CliSheetCommands, EveryFormatGivesBackWhatAScriptMade) {
  TTemporaryFolder folder;
  WriteFile(folder.Path("e.jsonl"), R"J({"op":"set","cell":"D1","values":[["Double"],["=C2*2"]]}
{"op":"fill","from":"D2","to":"D2:D5"}
{"op":"format","range":"A1:D1","bold":true,"fill":"#FFEE00","border":{"bottom":"thin"}}
{"op":"format","range":"C2:D5","number":"#,##0.00"}
{"op":"note","cell":"B2","text":"checked","author":"me"}
{"op":"validation","range":"B2:B9","type":"whole","first":2000,"second":2100}
{"op":"name","name":"TOTAL","formula":"=SUM(Sheet1!$C$2:$C$5)"}
{"op":"merge","range":"F1:G2"}
)J");
  const auto path = [&](const char* AName) { return folder.Path(AName); };
  ASSERT_EQ(RunLine({"edit", "-", "--script", path("e.jsonl"), "-o", path("a.tsr")}, kSales).Messages, "");
  for (const char* format : {"xlsx", "ods", "tsr"}) {
    const std::string name = path("b.") + format;
    const TCliResult saved = RunLine({"convert", path("a.tsr"), name, "--report", "--json"});
    ASSERT_EQ(saved.Code, 0) << saved.Messages;
    const TCliResult back = RunLine({"convert", "-", path("c.tsr")}, ContentOf(name));  // told by its bytes
    ASSERT_EQ(back.Code, 0) << back.Messages;
    const std::string diff = RunLine({"diff", path("a.tsr"), path("c.tsr")}).Out;
    const bool isNative = std::string_view(format) == "tsr";
    EXPECT_EQ(diff.find("in 0 cells") != diff.npos || diff == "no differences\n", true) << format << diff;
    EXPECT_EQ(diff == "no differences\n", isNative) << format << diff;
    EXPECT_EQ(diff.find("note B2: checked, by me -> (none)") == diff.npos, isNative) << format << diff;
    EXPECT_EQ(saved.Messages.find("\"fate\":\"dropped\"") == saved.Messages.npos, isNative) << saved.Messages;
    EXPECT_EQ(RunLine({"eval", name, "=TOTAL", "=D5"}).Out, "42\n14\n") << format;
  }
  EXPECT_EQ(RunLine({"filter", path("a.tsr"), "--range", "A1:D5", "--column", "A", "--contains", "OUTH", "-o",
                     path("f.xlsx")})
                .Code,
            0);
  const json info = json::parse(RunLine({"info", path("f.xlsx"), "--json"}).Out);
  EXPECT_NE(info["sheets"][0]["objects"].dump().find("contains OUTH"), std::string::npos) << info;
  EXPECT_NE(RunLine({"diff", path("a.tsr"), path("f.xlsx")}).Out.find("Sheet1 row 2: (none) -> hidden"),
            std::string::npos);
}
