#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <hosts/cli/EditScript.h>
#include <hosts/cli/Features.h>
#include <hosts/cli/Phrase.h>
#include <hosts/cli/Session.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

#include "../support/CaseTable.h"
#include "../support/TemporaryFolder.h"
#include "CliFixture.h"
#include "WorkbookFiles.h"

using namespace tessarine;
using namespace tessarine::test;

namespace {

/// What scripts leave of a sheet with 1, 2, 3 in A1:A3 and =A1*10 in B1.
class TEdited {
 public:
  explicit TEdited(std::string_view AScript) : FIn({}), FStreams{FIn, FOut, FOut}, FSession(FStreams) {
    for (int32_t row = 1; row <= 3; ++row) Sheet().SetValue({1, row}, TCellValue::FromNumber(row));
    Sheet().SetValue({2, 1}, TCellValue::FromFormula(u"=A1*10"));
    try {
      cli::RunEditScript(AScript, "edits", FSession, 0);
      FSession.Recalculate();
    } catch (const cli::ECli& error) {
      FError = error.what();
    }
  }

  TWorksheet& Sheet() { return *FSession.Workbook().GetSheet(0); }
  const std::string& Error() const { return FError; }

  /// The used cells, rows separated by " / ", and the features behind " ; "; the failure if there was one.
  std::string Dump() {
    if (!FError.empty()) return FError;
    Sheet().RecalcUsedBounds();
    std::string text;
    for (int32_t row = 1; row <= Sheet().UsedMaxRow(); ++row) {
      if (row > 1) text += " / ";
      for (int32_t col = 1; col <= Sheet().UsedMaxCol(); ++col)
        text += (col > 1 ? "|" : "") + Sheet().GetDisplayText({col, row}, &FSession.Workbook().StyleSheet()).ToUtf8();
    }
    for (const auto& features : {cli::FeaturesOf(FSession.Workbook()), cli::FeaturesOf(FSession.Workbook(), Sheet())})
      for (const cli::TFeature& feature : features)
        text += " ; " + feature.Kind + " " + feature.Name + ": " + feature.Text;
    return text;
  }
  std::string FormatAt(TCellAddress AAddress) {
    return cli::FormatText(Sheet().ResolveFormat(AAddress, &FSession.Workbook().StyleSheet()));
  }

 private:
  TMemoryReadStream FIn;
  TMemoryWriteStream FOut;
  cli::TCliStreams FStreams;
  cli::TSession FSession;
  std::string FError;
};

}  // namespace

TEST(CliEditScript, ExamplesHold) {
  const auto failed = [](const TCase& ACase) {
    const std::string message = TEdited("\n" + ACase[1]).Error();
    EXPECT_TRUE(message.starts_with("edits, line 2: ")) << ACase.Place() << " " << message;
    return message.find(ACase[2]) != std::string::npos ? ACase[2] : message;
  };
  ExpectCases("cli/edit_scripts.tsv",
              {{"edit", [](const TCase& ACase) { return TEdited(ACase[1]).Dump(); }}, {"fail", failed}});
}

TEST(CliEditScript, FormatsAreLaidOverWhatIsThere) {
  TEdited edited(R"J({"op":"format","range":"A1:A2","bold":true,"fill":"#ffee00","number":"0.0"}
{"op":"format","range":"A2:B2","italic":true,"fill":null,"border":{"top":"thin"},"borderColor":"#FF0000"}
{"op":"format","range":"C:C","size":14.5,"width":20}
{"op":"format","range":"A1","height":30}
{"op":"clear","range":"B2","what":"formats"}
{"op":"clear","range":"A1","what":"values"})J");
  ASSERT_EQ(edited.Error(), "");
  EXPECT_EQ(edited.FormatAt({1, 1}), "number \"0.0\", bold, fill #FFEE00");
  EXPECT_EQ(
      edited.FormatAt({1, 2}),
      "number \"0.0\", bold, italic, left border none #FF0000, top border thin #FF0000, right border none #FF0000, "
      "bottom border none #FF0000");
  EXPECT_EQ(edited.FormatAt({2, 2}), "default");
  EXPECT_EQ(edited.FormatAt({3, 3}), "size 14.5");
  EXPECT_EQ(edited.FormatAt({3, 4}), "default");
  EXPECT_EQ(edited.Sheet().Sizing().GetColWidthChars(3), 20);
  EXPECT_EQ(edited.Sheet().Sizing().GetRowHeightPt(1), 30);
}

TEST(CliEditScript, NothingIsWrittenWhenALineFails) {
  TTemporaryFolder folder;
  WriteFile(folder.Path("in.csv"), "1,2\n");
  WriteFile(folder.Path("out.csv"), "old");
  WriteFile(folder.Path("e.jsonl"), "{\"op\":\"set\",\"cell\":\"A1\",\"value\":5}\n{\"op\":\"set\",\"cell\":\"A1\"}\n");
  const std::vector<std::string> args{"edit", folder.Path("in.csv"), "--script", folder.Path("e.jsonl"), "--no-bom",
                                      "-o",   folder.Path("out.csv")};
  const TCliResult failed = RunLine(args);
  EXPECT_EQ(failed.Code, 3);
  EXPECT_NE(failed.Messages.find("e.jsonl, line 2: "), std::string::npos) << failed.Messages;
  EXPECT_EQ(ContentOf(folder.Path("out.csv")), "old");
  WriteFile(folder.Path("e.jsonl"), "{\"op\":\"set\",\"cell\":\"A1\",\"value\":\"=B1*2\"}");
  EXPECT_EQ(RunLine(args).Code, 0);
  EXPECT_EQ(ContentOf(folder.Path("out.csv")), "4,2\n");
  EXPECT_EQ(RunLine({"edit", "-", "--script", "-", "-o", "-"}).Code, 2);
}
