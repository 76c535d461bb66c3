#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/undo/CellCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

/// Writes what is done to it into a log.
class TLoggedCommand final : public IUndoCommand {
 public:
  TLoggedCommand(std::string& ALog, char AName) : FLog(ALog), FName(AName) {}
  void Execute() override {
    if (FName == '!') throw std::runtime_error("refused");
    FLog += FName;
  }
  void Undo() override {
    if (FName == '?') throw std::runtime_error("refused");
    FLog += std::string("-") + FName;
  }
  TText Description() const override { return u"Log"; }

 private:
  std::string& FLog;
  char FName;
};

TEST(UndoManager, KeepsStepsUpToItsLimit) {
  TUndoManager undo(3);
  std::string log;
  int changes = 0;
  undo.SetOnChanged([&](TUndoManager&) { ++changes; });
  for (const char name : {'a', 'b', 'c', 'd'}) undo.ExecuteCommand(std::make_shared<TLoggedCommand>(log, name));
  for (int i = 0; i < 5; ++i) undo.Undo();
  EXPECT_EQ(log, "abcd-d-c-b");
  EXPECT_EQ(changes, 7);
  undo.Redo();
  EXPECT_THROW(undo.ExecuteCommand(std::make_shared<TLoggedCommand>(log, '!')), std::runtime_error);
  EXPECT_TRUE(undo.CanUndo() && undo.CanRedo());
  undo.SetEnabled(false);
  EXPECT_FALSE(undo.CanUndo() || undo.CanRedo());
  undo.ExecuteCommand(std::make_shared<TLoggedCommand>(log, 'e'));
  undo.Undo();
  EXPECT_EQ(log, "abcd-d-c-bbe");
  undo.SetEnabled(true);
  undo.SetMaxLevels(1);
  undo.Redo();  // the limit holds for new steps only
  EXPECT_EQ(undo.UndoCount(), 2u);
  undo.ExecuteCommand(std::make_shared<TLoggedCommand>(log, 'f'));
  EXPECT_EQ(undo.UndoCount(), 1u);
  EXPECT_FALSE(undo.CanRedo());
  undo.SetMaxLevels(3);
  undo.ExecuteCommand(std::make_shared<TLoggedCommand>(log, '?'));
  changes = 0;
  EXPECT_THROW(undo.Undo(), std::runtime_error);  // nothing has changed
  EXPECT_EQ(undo.UndoCount(), 2u);
  undo.Clear();
  undo.Clear();
  EXPECT_EQ(changes, 2);
}

TEST(UndoCommands, ChangeMarkAndTakeBack) {
  const auto state = [](const TWorksheet& ASheet) {
    std::string text;
    for (const TMergedRange& merge : ASheet.Merges()) text += Utf16ToUtf8(merge.AsRange().ToA1()) + " ";
    for (int32_t i = 1; i <= 3; ++i) text += std::to_string(std::lround(ASheet.Sizing().GetColWidthChars(i))) + " ";
    const int32_t row = 2;
    text += std::to_string(std::lround(ASheet.Sizing().GetRowHeightPt(row)));
    return text + (ASheet.Sizing().HasCustomRowHeight(row) ? " custom" : "");
  };
  TWorkbook book;
  const int32_t kNoSheet = 7;
  const std::function<std::shared_ptr<IUndoCommand>(int32_t)> commands[] = {
      [&](int32_t ASheet) {
        return std::make_shared<TMergeCommand>(book, ASheet, TCellRange{3, 3, 2, 2}, true);
      },
      [&](int32_t ASheet) {
        return std::make_shared<TMergeCommand>(book, ASheet, TCellRange{2, 2, 3, 3}, false);
      },
      [&](int32_t ASheet) { return std::make_shared<TColResizeCommand>(book, ASheet, 2, 8, 20); },
      [&](int32_t ASheet) {
        return std::make_shared<TColResizeCommand>(book, ASheet, std::vector{1, 3}, std::vector{8.0, 9.0},
                                                   std::vector{30.0, 40.0});
      },
      [&](int32_t ASheet) { return std::make_shared<TRowResizeCommand>(book, ASheet, 2, 15, 50); },
  };
  const struct {
    const char16_t* Description;
    const char *Done, *Undone;
  } cases[] = {{u"Merge cells", "B2:C3 8 8 8 15", "8 8 8 15"},
               {u"Unmerge cells", "8 8 8 15", "B2:C3 8 8 8 15"},
               {u"Resize column", "B2:C3 8 20 8 15", "B2:C3 8 8 8 15"},
               {u"Resize columns", "B2:C3 30 8 40 15", "B2:C3 8 8 9 15"},
               {u"Resize row", "B2:C3 8 8 9 50 custom", "B2:C3 8 8 9 15 custom"}};
  for (size_t i = 0; i < std::size(cases); ++i) {
    const auto command = commands[i](0);
    EXPECT_EQ(command->Description(), cases[i].Description);
    book.ClearModified();
    commands[i](kNoSheet)->Execute();
    commands[i](kNoSheet)->Undo();
    EXPECT_FALSE(book.IsModified()) << i;
    command->Execute();
    EXPECT_EQ(state(*book.GetSheet(0)), cases[i].Done);
    EXPECT_TRUE(book.IsModified()) << i;
    book.ClearModified();
    command->Undo();
    EXPECT_EQ(state(*book.GetSheet(0)), cases[i].Undone);
    EXPECT_TRUE(book.IsModified()) << i;
  }
}

}  // namespace
}  // namespace tessarine
