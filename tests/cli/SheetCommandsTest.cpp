#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "../support/TemporaryFolder.h"
#include "CliFixture.h"
#include "WorkbookFiles.h"

using namespace tessarine;
using namespace tessarine::test;
using nlohmann::json;

namespace {

constexpr const char* kSales = "Region,Year,Amount\nNorth,2023,10\nSouth,2023,20\nNorth,2024,5\nEast,2024,7\n";

TCliResult RunOnSales(std::vector<std::string> AArgs) {
  AArgs.insert(AArgs.begin() + 1, "-");
  AArgs.insert(AArgs.end(), {"-o", "-"});
  return RunLine(AArgs, kSales);
}

}  // namespace

TEST(CliSheetCommands, RowsAndPivotsComeOutAsAsked) {
  const struct {
    std::vector<std::string> Args;
    const char* Out;
  } cases[] = {
      {{"sort", "--range", "A1:C5", "--by", "C:desc", "--header"},
       "Region,Year,Amount\nSouth,2023,20\nNorth,2023,10\nEast,2024,7\nNorth,2024,5\n"},
      {{"sort", "--range", "A:C", "--by", "A", "--by", "C:ASC", "--header"},
       "Region,Year,Amount\nEast,2024,7\nNorth,2024,5\nNorth,2023,10\nSouth,2023,20\n"},
      {{"sort", "--range", "A1:C1", "--by", "C"}, kSales},
      {{"pivot", "--source", "A1:C5", "--rows", "Region", "--columns", "year", "--values", "Amount:sum"},
       "Sum of Amount,Column Labels,,\nRow Labels,2023,2024,Grand Total\nNorth,10,5,15\nSouth,20,0,20\nEast,0,7,7\n"
       "Grand Total,30,12,42\n"},
  };
  const struct {
    const char* Dest;
    const char* Out;
  } places[] = {{"E1", "Region,Year,Amount,,Row Labels,Sum of Amount\n"},
                {"'By year'!B2", ",,\n,Row Labels,Sum of Amount\n"}};
  for (const auto& row : places) {
    const TCliResult result =
        RunOnSales({"pivot", "--source", "A1:C5", "--rows", "Year", "--values", "Amount", "--dest", row.Dest});
    EXPECT_EQ(result.Out.find(row.Out), 0U) << row.Dest << result.Messages << result.Out;
  }
  for (const auto& row : cases) {
    const TCliResult result = RunOnSales(row.Args);
    EXPECT_EQ(result.Code, 0) << result.Messages;
    EXPECT_EQ(result.Out, row.Out) << row.Args[0];
  }
  const std::string filtered =
      RunOnSales({"pivot", "--source", "Sheet1!A:C", "--rows", "Region", "--values", "Amount:max", "--values",
                  "Amount:COUNT", "--filters", "Year=2023", "--no-totals"})
          .Out;
  EXPECT_NE(filtered.find("\nNorth,10,1\nSouth,20,1\n"), std::string::npos) << filtered;
  EXPECT_EQ(filtered.find("East"), std::string::npos) << filtered;
}

TEST(CliSheetCommands, FailuresSayWhatToDo) {
  const struct {
    std::vector<std::string> Args;
    const char* Message;
  } cases[] = {
      {{"sort", "--range", "A1:C5", "--by", "D"}, "column D lies outside the range A1:C5"},
      {{"sort", "--range", "A1:C5", "--by", "A:up"}, "C:asc or C:desc"},
      {{"sort", "--range", "A1:C5", "--by", "1"}, "is no column"},
      {{"filter", "--range", "A1:C5", "--column", "A"}, "say what stays"},
      {{"pivot", "--source", "A1:C5", "--rows", "City", "--values", "Amount"}, "its fields are: Region, Year, Amount"},
      {{"pivot", "--source", "A1:C5", "--rows", "Region", "--values", "Amount:mode"}, "aggregates are: sum, count"},
      {{"pivot", "--source", "A9:C9", "--values", "Amount"}, "a row of headers"},
      {{"pivot", "--source", "Nope!A1:C9", "--values", "Amount"}, "the sheets are: Sheet1"},
      {{"pivot", "--source", "A1:C5", "--values", "Amount", "--dest", "B2"}, "overwrite its own source"},
      {{"pivot", "--source", "B1:C5", "--rows", "Year", "--values", "Amount", "--dest", "A1"}, "it takes A1:B4"},
      {{"pivot", "--source", "A1:C5", "--values", "Amount", "--filters", "Year", "--dest", "E2"}, "take row 3"},
      {{"pivot", "--source", "A1:C5", "--values", "Amount", "--dest", "a/b!B2"}, "\"a/b\" cannot name a new sheet"},
      {{"pivot", "--source", "A1:C5", "--values", "Amount", "--dest", "2!B2"}, "the sheets are: Sheet1"},
      {{"pivot", "--source", "A1:C5", "--values", "Amount", "--layout", "wide"}, "compact, outline, tabular"},
  };
  for (const auto& row : cases) {
    const TCliResult result = RunOnSales(row.Args);
    EXPECT_EQ(result.Code, 2) << result.Messages;
    EXPECT_NE(result.Messages.find(row.Message), std::string::npos) << result.Messages;
  }
}

TEST(CliSheetCommands, ReportsTellWhatATextFileLoses) {
  TTemporaryFolder folder;
  WriteSampleWorkbook(folder.Path("s.xlsx"));
  const std::vector<std::string> args{"convert", folder.Path("s.xlsx"), "-", "--report"};
  const std::string text = RunLine(args).Messages;
  for (const char* line : {"dropped        1  sheet", "rewritten      3  formula", "dropped        1  merged area"})
    EXPECT_NE(text.find(line), std::string::npos) << text;
  std::vector<std::string> withJson = args;
  withJson.push_back("--json");
  const std::string lines = RunLine(withJson).Messages;
  EXPECT_EQ(json::parse(lines.substr(0, lines.find('\n')))["what"], "sheet") << lines;
  EXPECT_EQ(RunLine({"convert", "-", "-", "--report"}, "1,2\n").Messages, "everything came through unchanged\n");
  EXPECT_EQ(RunLine({"convert", "-", "-", "--defuse"}, "@x,-1\n").Out, "'@x,-1\n");
}

TEST(CliSheetCommands, DiffTellsCellsAndFeatures) {
  TTemporaryFolder folder;
  const auto path = [&](const char* AName) { return folder.Path(AName); };
  WriteSampleWorkbook(path("s.xlsx"));
  EXPECT_EQ(RunLine({"diff", path("s.xlsx"), path("s.xlsx")}).Out, "no differences\n");
  WriteFile(path("a.csv"), "1,x\n2,\n");
  WriteFile(path("b.csv"), "1,\"x\ny\"\n2.5,\n,9\n");
  const TCliResult result = RunLine({"diff", path("a.csv"), path("b.csv")});
  EXPECT_EQ(result.Code, 1);
  EXPECT_EQ(result.Out,
            "Sheet1!B1 value: \"x\" -> \"x y\"\nSheet1!A2 value: 2 -> 2.5\nSheet1!B3 value: (none) -> 9\n"
            "3 differences in 3 cells and 0 features\n");
  EXPECT_EQ(RunLine({"diff", path("a.csv"), path("b.csv"), "--json", "--max", "1"}).Out,
            "{\"sheet\":\"Sheet1\",\"what\":\"value\",\"name\":\"B1\",\"a\":\"x\",\"b\":\"x\\ny\"}\n"
            "{\"differences\":3,\"told\":1,\"cells\":3,\"features\":0}\n");
  const std::string text = RunLine({"diff", path("a.csv"), path("s.xlsx")}).Out;
  for (const char* line : {"sheet Data: (none) -> (there)\n", "name TOTAL: (none) -> =SUM(Data!$B$2:$B$3)\n"})
    EXPECT_NE(text.find(line), std::string::npos) << text;
  EXPECT_EQ(RunLine({"diff", "-", "-"}).Code, 2);
}

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
