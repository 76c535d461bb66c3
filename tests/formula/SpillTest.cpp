#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/formula/detail/Interpreter.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

TEST(Spill, IsBlockedByWhateverIsNotJustFormatting) {
  const auto richText = [](TCell& ACell) {
    ACell.RichText = {{u"x", {}}};
    ACell.StyleIndex = 3;
  };
  const auto shownAfter = [](auto APrepare) {
    TSheetFixture sheet({{"B2", "={1,2;3,4}"}});
    TCell cell;
    APrepare(cell);
    sheet.Sheet().SetCell({3, 3}, cell);
    const std::string anchor = sheet.Run("B2");
    return anchor + " " + sheet.Show("C2 B3 C3");
  };
  EXPECT_EQ(shownAfter([](TCell&) {}), "1 2 3 4");
  EXPECT_EQ(shownAfter([](TCell& ACell) { ACell.StyleIndex = 3; }), "1 2 3 4");
  EXPECT_EQ(shownAfter([](TCell& ACell) { ACell.Value = TCellValue::FromText(u""); }), "#SPILL! _ _ ''");
  EXPECT_EQ(shownAfter([](TCell& ACell) { ACell.Value = TCellValue::FromNumber(0); }), "#SPILL! _ _ 0");
  EXPECT_EQ(shownAfter([](TCell& ACell) { ACell.Value = TCellValue::FromFormula(u"=1"); }), "#SPILL! _ _ _");
  EXPECT_EQ(shownAfter(richText), "#SPILL! _ _ _");
}

TEST(Spill, MayRunPastTheEdgeOfTheSheet) {
  TSheetFixture sheet({{"XFD1048576", "={1,2;3,4}"}, {"A1", "={1;2}"}});
  EXPECT_EQ(sheet.Run("XFD1048576"), "1");
  const TSpillMap& spills = sheet.Sheet().Spills();
  ASSERT_TRUE(spills.TryGetValue(16385, 1048577).has_value());
  EXPECT_EQ(NotationOf(*spills.TryGetValue(16385, 1048577)), "4");
  sheet.Set("XFD1048576", "=1");
  sheet.Run("XFD1048576");
  EXPECT_TRUE(spills.IsEmpty());
}

/// Evaluates the formula two rows below each block that comes into being.
class TNextBlock final : public detail::ISpillListener {
 public:
  explicit TNextBlock(detail::TInterpreter& AInterpreter) : FInterpreter(AInterpreter) {}

  void DirtySpillDependents(int32_t ASheetIndex, int32_t ACol, int32_t ARow, int32_t, int32_t AEndRow) override {
    if (AEndRow > ARow) FInterpreter.EvaluateFormulaCell(ASheetIndex, ACol, ARow + 2);
    if (FInterpreter.IsVisiting(TCellId::Of(ASheetIndex, ACol, ARow))) ++Visiting;
  }

  int Visiting = 0;

 private:
  detail::TInterpreter& FInterpreter;
};

TEST(Spill, TellingsThatNestEndAtAnyDepth) {
  constexpr int kBlocks = 50'000;
  TSheetFixture sheet;
  for (int row = 1; row <= 2 * kBlocks; row += 2) sheet.Sheet().SetValue({1, row}, TCellValue::FromFormula(u"={1;2}"));
  detail::TInterpreter interpreter(sheet.Workbook);
  TNextBlock listener(interpreter);
  interpreter.SetSpillListener(&listener);
  interpreter.EvaluateFormulaCell(0, 1, 1);
  EXPECT_EQ(sheet.Sheet().Spills().Count(), static_cast<size_t>(kBlocks));
  EXPECT_EQ(listener.Visiting, kBlocks) << "an anchor is protected while its readers are evaluated";
  EXPECT_TRUE(interpreter.IsIdle());
  EXPECT_FALSE(interpreter.IsVisiting(TCellId::Of(0, 1, 2 * kBlocks - 1)));
}

/// A result that is to become a table, as functions that import data yield it.
TFormulaArg Import() {
  std::vector<TCellValue> cells;
  for (const char16_t* text : {u"Name", u"Name", u"a", u"b", u"c", u"d"}) cells.push_back(TCellValue::FromText(text));
  TFormulaArg arg = TFormulaArg::FromRange(std::move(cells), 3, 2);
  arg.AsTable = true;
  arg.AsTableHasHeader = true;
  return arg;
}

TEST(Spill, AnImportBecomesCellsUnderATable) {
  TSheetFixture sheet({{"B2", "=1"}, {"C3", "overwritten"}});
  detail::TInterpreter interpreter(sheet.Workbook);
  interpreter.ApplySpill(0, 2, 2, Import());
  EXPECT_EQ(sheet.Show("B2 C2 B3 C3 B4 C4"), "'Name' 'Name' 'a' 'b' 'c' 'd'");
  EXPECT_TRUE(sheet.Sheet().HasCell({2, 2}));
  const TSheetTable* table = sheet.Sheet().Tables().FindByName(u"Import_B2");
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->Ref(), (TCellRange{2, 2, 3, 4}));
  EXPECT_TRUE(table->HasHeaderRow());
  EXPECT_EQ(table->ColumnNames().size(), 2u);

  sheet.Set("B2", "=1");
  interpreter.ApplySpill(0, 2, 2, Import());
  EXPECT_EQ(sheet.Sheet().Tables().Count(), 1u) << "the table of that name takes the new range";

  sheet.Set({{"B2", "=1"}, {"C4", "=2"}});
  interpreter.ApplySpill(0, 2, 2, Import());
  EXPECT_EQ(sheet.Show("B2 C3"), "#SPILL! 'b'") << "formulas are not overwritten";
}

}  // namespace
}  // namespace tessarine::testing
