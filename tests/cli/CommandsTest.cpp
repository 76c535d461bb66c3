#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#if defined(__linux__)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <nlohmann/json.hpp>

#include "../support/TemporaryFolder.h"
#include "CliFixture.h"
#include "WorkbookFiles.h"

using namespace tessarine;
using namespace tessarine::test;
using nlohmann::json;

namespace {

std::vector<json> Lines(const std::string& AText) {
  std::vector<json> lines;
  std::string_view rest = AText;
  while (!rest.empty()) {
    const size_t end = rest.find('\n');
    lines.push_back(json::parse(rest.substr(0, end)));
    rest.remove_prefix(end + 1);
  }
  return lines;
}

class CliCommands : public ::testing::Test {
 protected:
  void SetUp() override { WriteSampleWorkbook(Sample); }

  TTemporaryFolder Folder;
  std::string Sample = Folder.Path("sample.xlsx");
};

}  // namespace

TEST_F(CliCommands, EvalPrintsAResultForEachFormula) {
  const struct {
    std::vector<std::string> Args;
    const char* Out;
  } cases[] = {
      {{"=1+2", "=\"a\"&\"b\"", "=1/0", "=1=1"}, "3\nab\n#DIV/0!\nTRUE\n"},
      {{"SUM(1,2)"}, "3\n"},
      {{"={1,2;3,4}"}, "1\t2\n3\t4\n"},
      {{"=-1", "=1.50"}, "-1\n1.5\n"},
      {{"=ROW()", "--at", "C7"}, "7\n"},
      {{"=nonsense("}, "#VALUE!\n"},
      {{"=1%%", "[1,2]", "=\"[1,2]\""}, "#VALUE!\n#VALUE!\n[1,2]\n"},
  };
  for (const auto& row : cases) {
    std::vector<std::string> args{"eval"};
    args.insert(args.end(), row.Args.begin(), row.Args.end());
    const TCliResult result = RunLine(args);
    EXPECT_EQ(result.Code, 0) << row.Args[0] << result.Messages;
    EXPECT_EQ(result.Out, row.Out) << row.Args[0];
  }
}

TEST_F(CliCommands, EvalReadsAWorkbook) {
  EXPECT_EQ(RunLine({"eval", Sample, "=SUM(B2:B3)", "=TOTAL", "=A4", "=A5:B5"}).Out, "-4.5\n-4.5\n5\n8\t9\n");
  EXPECT_EQ(RunLine({"eval", Sample, "--sheet", "Notes", "=C2+1"}).Out, "2\n");
  EXPECT_EQ(RunLine({"eval", Sample, "--sheet", "2", "=C2+1"}).Out, "2\n");
  EXPECT_EQ(RunLine({"eval", "-", "=SUM(A1:B2)"}, "1,2\n3,4\n").Out, "10\n");
}

TEST_F(CliCommands, EvalAnswersAFileOfQuestions) {
  const TCliResult result = RunLine({"eval", "--batch", "-"},
                                    "\xEF\xBB\xBF{\"f\": \"=A1*2\", \"cells\": {\"A1\": 21}}\n"
                                    "\n"
                                    "{\"f\":\"=A1&B1\",\"cells\":{\"A1\":\"5\",\"B1\":\"=1+1\"},\"x\":[{}]}\r\n"
                                    "{\"cells\":{\"A1\":true,\"A2\":null},\"f\":\"=A1:A2\"}\n"
                                    "{\"f\":\"=B3\"}\n"
                                    "{\"f\":\"=NA()\"}");
  ASSERT_EQ(result.Code, 0) << result.Messages;
  const std::vector<json> lines = Lines(result.Out);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], json::parse(R"J({"type":"number","value":42,"text":"42","rows":1,"cols":1,"values":[[42]]})J"));
  EXPECT_EQ(lines[1], json::parse(R"J({"type":"text","value":"52","text":"52","rows":1,"cols":1,"values":[["52"]]})J"));
  EXPECT_EQ(lines[2]["values"].size(), lines[2]["rows"].get<size_t>());
  EXPECT_EQ(lines[2]["value"], true);
  EXPECT_EQ(lines[3]["type"], "empty");
  EXPECT_EQ(lines[3]["value"], nullptr);
  EXPECT_EQ(lines[4],
            json::parse(R"J({"type":"error","value":"#N/A","text":"#N/A","rows":1,"cols":1,"values":[["#N/A"]]})J"));
}

TEST_F(CliCommands, CellsAreListedInTheOrderOfRows) {
  const TCliResult result = RunLine({"cells", Sample, "--json"});
  ASSERT_EQ(result.Code, 0) << result.Messages;
  const std::vector<json> lines = Lines(result.Out);
  const char* wanted[] = {
      R"J({"sheet":"Data","cell":"A1","type":"text","value":"Title over two","text":"Title over two"})J",
      R"J({"sheet":"Data","cell":"A2","type":"text","value":"apples, red","text":"apples, red"})J",
      R"J({"sheet":"Data","cell":"B2","type":"number","value":2.5,"text":"2.5"})J",
      R"J({"sheet":"Data","cell":"A3","type":"boolean","value":true,"text":"TRUE"})J",
      R"J({"sheet":"Data","cell":"B3","type":"number","value":-7,"text":"-7.0"})J",
      R"J({"sheet":"Data","cell":"A4","formula":"=B2*2","type":"number","value":5,"text":"5"})J",
      R"J({"sheet":"Data","cell":"B4","formula":"=1/0","type":"error","value":"#DIV/0!","text":"#DIV/0!"})J",
      R"J({"sheet":"Data","cell":"A5","formula":"=SEQUENCE(1,2,8)","type":"number","value":8,"text":"8"})J",
      R"J({"sheet":"Data","cell":"B5","type":"number","value":9,"text":"9","spill":"A5"})J",
      R"J({"sheet":"Notes","cell":"C2","type":"number","value":1,"text":"1"})J",
  };
  ASSERT_EQ(lines.size(), std::size(wanted)) << result.Out;
  for (size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(lines[i], json::parse(wanted[i]));

  EXPECT_EQ(Lines(RunLine({"cells", Sample, "--json", "--sheet", "Data", "--range", "b2:B3"}).Out).size(), 2u);
  const json uncomputed = Lines(RunLine({"cells", Sample, "--json", "--no-recalc", "--range", "A4"}).Out)[0];
  EXPECT_EQ(uncomputed["type"], "empty");
  EXPECT_EQ(uncomputed["value"], nullptr);
  EXPECT_EQ(RunLine({"cells", Sample, "--range", "A2:B2"}).Out, "Data\tA2\ttext\tapples, red\nData\tB2\tnumber\t2.5\n");
}

TEST_F(CliCommands, InfoTellsWhatTheWorkbookHolds) {
  const json info = json::parse(RunLine({"info", "--json", Sample}).Out);
  EXPECT_EQ(info["format"], "XLSX");
  ASSERT_EQ(info["sheets"].size(), 2u);
  EXPECT_EQ(info["sheets"][0], json::parse(R"J({"name":"Data","visibility":"visible","used":"A1:B5","cells":8,
      "formulas":3,"errors":1,"merges":1,"tables":[],
      "objects":[{"kind":"merged area","name":"A1:B1","content":""}]})J"));
  EXPECT_EQ(info["sheets"][1]["visibility"], "hidden");
  EXPECT_EQ(info["names"], json::parse(R"J([{"name":"TOTAL","formula":"=SUM(Data!$B$2:$B$3)"
}])J"));
  EXPECT_EQ(info["objects"][0]["kind"], "name");
  const std::string text = RunLine({"info", Sample}).Out;
  EXPECT_NE(text.find("\nmerged area  Data   A1:B1"), std::string::npos) << text;
  EXPECT_NE(text.find("XLSX, 2 sheets"), std::string::npos);
  EXPECT_NE(text.find("Data   A1:B5      8         3       1\n"), std::string::npos) << text;
  EXPECT_NE(RunLine({"info", "-"}, "").Out.find("standard input: CSV, 1 sheet\n"), std::string::npos);
}

TEST_F(CliCommands, ShowLaysOutATable) {
  const TCliResult result = RunLine({"show", Sample});
  EXPECT_EQ(result.Out,
            "Data\n"
            "  │      A      │    B\n"
            "──┼─────────────┼────────\n"
            "1 │ Title over two\n"
            "2 │ apples, red │     2.5\n"
            "3 │    TRUE     │    -7.0\n"
            "4 │           5 │ #DIV/0!\n"
            "5 │           8 │       9\n");
  EXPECT_EQ(RunLine({"show", Sample, "--formulas", "--range", "A4:B4"}).Out,
            "Data\n"
            "  │   A   │  B\n"
            "──┼───────┼─────\n"
            "4 │ =B2*2 │ =1/0\n");
  EXPECT_EQ(RunLine({"show", Sample, "--formulas", "--range", "4:4"}).Out,
            RunLine({"show", Sample, "--formulas", "--range", "A4:B4"}).Out);
  EXPECT_EQ(RunLine({"show", Sample, "--range", "$b:b"}).Out, RunLine({"show", Sample, "--range", "B1:B5"}).Out);
}

TEST_F(CliCommands, ShowUsesColoursOnlyWhereThereAreSome) {
  EXPECT_EQ(RunLine({"show", Sample}).Out.find('\x1b'), std::string::npos);
  const std::string text = RunLine({"show", Sample}, {}, {.IsOutput = true, .HasColors = true}).Out;
  EXPECT_NE(text.find("\x1b[38;2;255;0;0m   -7.0\x1b[0m"), std::string::npos) << text;
  EXPECT_NE(text.find("\x1b[1;38;2;0;0;255;48;2;255;255;0mTitle over two"), std::string::npos) << text;
}

TEST_F(CliCommands, ShowFitsTheWidthOfTheTerminal) {
  std::string text;
  for (int col = 0; col < 30; ++col)
    text += (col > 0 ? ",\"" : "\"") + std::string(20, static_cast<char>('a' + col % 26)) + "\"";
  text += "\n\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E,\"x\x1b[31m\ny\"\n";
  for (int row = 0; row < 200; ++row) text += "1\n";
  const TCliResult result = RunLine({"show", "-"}, text, {.Width = 40});
  EXPECT_EQ(result.Out.find("Sheet1\n"), 0u);
  EXPECT_NE(result.Out.find("  1 │ aaaaaaaa… │ bbbbbbbb… │ cccccccc…\n"), std::string::npos) << result.Out;
  EXPECT_NE(result.Out.find("  2 │ 日本語日… │ x\uFFFD[31m y  │\n"), std::string::npos) << result.Out;
  EXPECT_NE(result.Out.find("\n... 102 more rows and 27 more columns; choose with --range\n"), std::string::npos)
      << result.Out;
}

TEST_F(CliCommands, ConvertWritesCsv) {
  const std::string out = Folder.Path("out.csv");
  EXPECT_EQ(RunLine({"convert", Sample, out}).Code, 0);
  EXPECT_EQ(ContentOf(out), "\xEF\xBB\xBFTitle over two,\n\"apples, red\",2.5\nTRUE,-7.0\n5,#DIV/0!\n8,9\n");
  EXPECT_EQ(RunLine({"convert", Sample, out, "--no-bom", "-d", "tab", "--sheet", "Notes"}).Code, 0);
  EXPECT_EQ(ContentOf(out), "\t\t\n\t\t1\n");
  EXPECT_EQ(RunLine({"convert", Sample, out, "--no-bom", "-d", ";", "--no-recalc"}).Code, 0);
  EXPECT_EQ(ContentOf(out), "Title over two;\napples, red;2.5\nTRUE;-7.0\n=B2*2;=1/0\n=SEQUENCE(1,2,8);\n");
  EXPECT_EQ(RunLine({"recalc", Sample, "--to", "csv", "-o", "-"}).Out,
            "Title over two,\n\"apples, red\",2.5\nTRUE,-7.0\n5,#DIV/0!\n8,9\n");
  EXPECT_EQ(RunLine({"convert", "-", "-", "--decimal", ","}, "a;b\n1,5;x\n").Out, "a,b\n1.5,x\n");
  EXPECT_EQ(RunLine({"convert", "-", "-"}, ContentOf(Sample)).Out.substr(0, 15), "Title over two,");
  EXPECT_EQ(RunLine({"convert", Sample, Folder.Path("plain.txt"), "--to", "CSV"}).Code, 0);
  EXPECT_EQ(ContentOf(Folder.Path("plain.txt")).substr(0, 18), "\xEF\xBB\xBFTitle over two,");
}

#if defined(__linux__)

TEST_F(CliCommands, ConvertWritesThroughLinksAndIntoPipes) {
  const std::string file = Folder.Path("real.csv");
  const std::string link = Folder.Path("link.csv");
  WriteFile(file, "old");
  std::filesystem::create_symlink(file, link);
  for (const char* delimiter : {",", ";"}) {
    EXPECT_EQ(RunLine({"convert", "-", link, "--no-bom", "-d", delimiter}, "1,2\n").Code, 0);
    EXPECT_EQ(ContentOf(file), std::string("1") + delimiter + "2\n");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
  }
  const std::string pipe = Folder.Path("pipe.csv");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  EXPECT_EQ(RunLine({"convert", "-", pipe, "--no-bom"}, "1,2\n").Code, 0);
  char text[8] = {};
  EXPECT_EQ(read(reader, text, sizeof text), 4);
  EXPECT_STREQ(text, "1,2\n");
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  close(reader);
}

#endif

TEST_F(CliCommands, FunctionsListsTheTable) {
  const std::vector<json> lines = Lines(RunLine({"functions", "--json"}).Out);
  ASSERT_GT(lines.size(), 20u);
  bool hasSum = false;
  for (const json& line : lines) {
    EXPECT_FALSE(line["name"].get<std::string>().empty());
    if (line["name"] != "SUM") continue;
    hasSum = true;
    EXPECT_EQ(line["max"], nullptr);
    EXPECT_FALSE(line["description"].get<std::string>().empty());
  }
  EXPECT_TRUE(hasSum);
  EXPECT_NE(RunLine({"functions"}).Out.find("\nSUM("), std::string::npos);
}

TEST_F(CliCommands, ProgressIsForTerminalsOnly) {
  std::string text;
  for (int i = 0; i < 300'000; ++i) text += "1,2,3\n";
  WriteFile(Folder.Path("big.csv"), text);
  EXPECT_EQ(RunLine({"convert", Folder.Path("big.csv"), Folder.Path("out.csv")}).Messages, "");
}
