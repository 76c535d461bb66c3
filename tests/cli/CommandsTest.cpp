#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#if defined(__linux__)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "../support/CaseTable.h"
#include "../support/TemporaryFolder.h"
#include "CliFixture.h"
#include "WorkbookFiles.h"

using namespace tessarine;
using namespace tessarine::test;

namespace {

class CliCommands : public ::testing::Test {
 protected:
  void SetUp() override { WriteSampleWorkbook(Sample); }

  TTemporaryFolder Folder;
  std::string Sample = Folder.Path("sample.xlsx");
};

/// Command lines in a folder with the sample workbook; "@" in front of a word stands for the folder.
class TCommandLines {
 public:
  TCommandLines() { WriteSampleWorkbook(FFolder.Path("s.xlsx")); }

  std::string Run(const TCase& ACase) {
    const size_t end = ACase[ACase.Count() - 2] == "=" ? ACase.Count() - 2 : ACase.Count();
    std::vector<std::string> args;
    for (size_t i = 1; i < end; ++i) args.push_back(Path(ACase[i]));
    FLast = RunLine(args, FInput);
    const std::string folder = FFolder.Path("");
    for (size_t at = FLast.Out.find(folder); at != std::string::npos; at = FLast.Out.find(folder, at))
      FLast.Out.replace(at, folder.size(), "@");
    return FLast.Out;
  }
  void SetInput(std::string AText) { FInput = std::move(AText); }
  void SetInputFile(std::string AName) { FInput = ContentOf(Path(AName)); }
  void WriteText(std::string AName, std::string AText) { WriteFile(Path(AName), AText); }
  std::string Content(std::string AName) const { return ContentOf(Path(AName)); }
  int Code() const { return FLast.Code; }
  std::string Messages() const { return FLast.Messages; }
  bool Has(std::string AText) const { return FLast.Out.find(AText) != std::string::npos; }
  bool Says(std::string AText) const { return FLast.Messages.find(AText) != std::string::npos; }

 private:
  std::string Path(const std::string& AWord) const {
    return AWord.starts_with('@') ? FFolder.Path(AWord.substr(1)) : AWord;
  }

  TTemporaryFolder FFolder;
  std::string FInput;
  TCliResult FLast;
};

}  // namespace

TEST(CliCommandLines, ExamplesHold) {
  using T = TCommandLines;
  ExpectDialogues<T>("cli/commands.tsv", {{"run", [](T& A, const TCase& ACase) { return A.Run(ACase); }},
                                          {"input", &T::SetInput},
                                          {"input-file", &T::SetInputFile},
                                          {"file", &T::WriteText},
                                          {"content", &T::Content},
                                          {"code", &T::Code},
                                          {"messages", &T::Messages},
                                          {"has", &T::Has},
                                          {"says", &T::Says}});
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

TEST_F(CliCommands, ProgressIsForTerminalsOnly) {
  std::string text;
  for (int i = 0; i < 300'000; ++i) text += "1,2,3\n";
  WriteFile(Folder.Path("big.csv"), text);
  EXPECT_EQ(RunLine({"convert", Folder.Path("big.csv"), Folder.Path("out.csv")}).Messages, "");
}
