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

TEST(CliEditScript, EditsDoWhatTheySay) {
  const struct {
    const char* Script;
    const char* Sheet;
  } cases[] = {
      {"", "1|10 / 2| / 3|"},
      {R"J({"op":"set","cell":"A1","value":7})J", "7|70 / 2| / 3|"},
      {R"J({"op":"set","cell":"B1","value":null})J", "1 / 2 / 3"},
      {R"J({"op":"set","cell":"C1","text":"=A1"})J", "1|10|=A1 / 2|| / 3||"},
      {R"J({"op":"set","cell":"A2","formula":"A1+A3"})J", "1|10 / 4| / 3|"},
      {"\xEF\xBB\xBF\n{\"op\":\"set\",\"cell\":\"A2\",\"values\":[[true,\"x\"],[null,\"=A1+1\"]]}\r\n \n",
       "1|10 / TRUE|x / |2"},
      {R"J({"op":"set","cell":"B1","value":"=SEQUENCE(3)"}
{"op":"set","cell":"B1","value":5})J",
       "1|5 / 2| / 3|"},
      {R"J({"op":"clear","range":"A1:B2"})J", " /  / 3"},
      {R"J({"op":"insert","rows":"1:2"})J", "| / | / 1|10 / 2| / 3|"},
      {R"J({"op":"insert","columns":"A"}
{"op":"set","cell":"A1","value":"x"})J",
       "x|1|10 / |2| / |3|"},
      {R"J({"op":"delete","rows":2})J", "1|10 / 3|"},
      {R"J({"op":"delete","columns":"A"})J", "#VALUE!"},
      {R"J({"op":"move","rows":3,"before":1})J", "3| / 1|10 / 2|"},
      {R"J({"op":"move","columns":"B","before":"A"})J", "10|1 / |2 / |3"},
      {R"J({"op":"fill","from":"B1","to":"B1:B3"})J", "1|10 / 2|20 / 3|30"},
      {R"J({"op":"fill","from":"A1:A3","to":"A1:A5"})J", "1|10 / 2| / 3| / 4| / 5|"},
      {R"J({"op":"fill","from":"A1:A3","to":"A1:A5","copy":true})J", "1|10 / 2| / 3| / 1| / 2|"},
      {R"J({"op":"merge","range":"C1:D2"})J", "1|10 / 2| / 3| ; merged area C1:D2: "},
      {R"J({"op":"merge","range":"C1:D2"}
{"op":"merge","range":"D2:E5","merged":false})J",
       "1|10 / 2| / 3|"},
      {R"J({"op":"name","name":"Total","formula":"SUM(A:A)"}
{"op":"set","cell":"B1","value":"=TOTAL"})J",
       "1|6 / 2| / 3| ; name TOTAL: =SUM(A:A)"},
      {R"J({"op":"name","name":"a","formula":"1"}
{"op":"name","name":"A","formula":null})J",
       "1|10 / 2| / 3|"},
      {R"J({"op":"note","cell":"B2","text":"hi","author":"me"}
{"op":"insert","rows":1})J",
       "| / 1|10 / 2| / 3| ; note B3: hi, by me"},
      {R"J({"op":"note","cell":"B2","text":"hi"}
{"op":"note","cell":"B2","text":null})J",
       "1|10 / 2| / 3|"},
      {R"J({"op":"validation","range":"A1:C9","type":"list","source":["a","b"]}
{"op":"validation","range":"B2:B3","type":"whole","operator":"greaterThan","first":5,"error":"no"})J",
       "1|10 / 2| / 3| ; validation A1:C1 A2:A3 C2:C3 A4:C9: list, a,b, blank allowed, error shown"
       " ; validation B2:B3: whole, greaterThan, 5, blank allowed, error no, error shown"},
      {R"J({"op":"validation","range":"A1:C9","type":"custom","first":"=A1>0","allowBlank":false}
{"op":"validation","range":"A1:XFD9","type":"any"})J",
       "1|10 / 2| / 3|"},
      {R"J({"op":"set","sheet":"sheet1","cell":"A1","value":2}
{"op":"set","sheet":"1","cell":"A2","value":3})J",
       "2|20 / 3| / 3|"},
  };
  for (const auto& row : cases) EXPECT_EQ(TEdited(row.Script).Dump(), row.Sheet) << row.Script;
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

TEST(CliEditScript, MessagesNameTheLineAndTheKey) {
  const struct {
    const char* Line;
    const char* Message;
  } cases[] = {
      {"[1]", "a line holds one JSON object"},
      {"{\"op\":", "column 7: "},
      {"[[[[[[[[[[1]]]]]]]]]]", "nested deeper"},
      {"{}", "the key \"op\" is missing"},
      {R"({"op":"paint"})", "edits are: set, clear, insert"},
      {R"({"op":"set","cell":"A1"})", "give one of \"value\""},
      {R"({"op":"set","cell":"A1","value":1,"text":"a"})", "give one of \"value\""},
      {R"({"op":"set","cel":"A1"})", "\"cel\" is no key of \"set\""},
      {R"({"op":"set","cell":"A0","value":1})", "no range of cells"},
      {R"({"op":"set","cell":"A1","value":{}})", "a number, a text, true, false or null"},
      {R"({"op":"set","cell":"XFD1048576","values":[[1,2]]})", "beyond the end"},
      {R"({"op":"set","sheet":"Nope","cell":"A1","value":1})", "the sheets are: Sheet1"},
      {R"({"op":"clear","range":"A1","what":"x"})", "all, values, formats"},
      {R"({"op":"insert"})", "either \"rows\" or \"columns\""},
      {R"({"op":"insert","rows":0})", "from 1 to 1048576"},
      {R"({"op":"insert","rows":1e300})", "from 1 to 1048576"},
      {R"({"op":"insert","rows":"B:C"})", "such as \"5:7\""},
      {R"({"op":"insert","columns":"3"})", "such as \"B\""},
      {R"({"op":"move","rows":1,"before":2.5})", "whole number"},
      {R"({"op":"fill","from":"A1","to":"B2:C3"})", "A1 cannot fill B2:C3"},
      {R"({"op":"fill","from":"A1","to":"A1:A200000"})", "no more than 100000 cells"},
      {R"({"op":"merge","range":"A1"})", "is one cell"},
      {R"({"op":"format","range":"A1"})", "say what to set; the keys are: bold"},
      {R"({"op":"format","range":"A1","color":"red"})", "a colour such as"},
      {R"({"op":"format","range":"A1","bold":1})", "\"bold\" is true or false"},
      {R"({"op":"format","range":"A1:ZZ10000","bold":true})", "more than 1000000 cells"},
      {R"({"op":"name","name":"B2","formula":"1"})", "can be no name"},
      {R"({"op":"validation","range":"A1","type":"list","source":["a,b"]})", "has no comma"},
      {R"({"op":"validation","range":"A1","type":"whole","first":1})", "the key \"second\" is missing"},
      {R"({"op":"note","cell":"A1:B2","text":"x"})", "more than one cell"},
  };
  for (const auto& row : cases) {
    const std::string message = TEdited(std::string("\n") + row.Line).Error();
    EXPECT_EQ(message.find("edits, line 2: "), 0u) << message;
    EXPECT_NE(message.find(row.Message), std::string::npos) << message << "\n" << row.Message;
  }
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
