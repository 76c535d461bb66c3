#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/lists/SheetTables.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

TEST(DefinedNames, ChainsOfAnyLengthEndInAValue) {
  TSheetFixture sheet;
  sheet.Workbook.SetNamedFormula("N0", "=1");
  constexpr int kNames = 20'000;
  for (int i = 1; i <= kNames; ++i)
    sheet.Workbook.SetNamedFormula("N" + std::to_string(i) + "_",
                                   "=N" + std::to_string(i - 1) + (i > 1 ? "_" : "") + "+1");
  EXPECT_EQ(sheet.Eval("=N100_"), "101");
  EXPECT_EQ(sheet.Eval("=N20000_"), "#VALUE!");
}

/// Sheet1 has Sales in A1:B4 (Item, Net); Other has Stock in C2:C4 without a header.
class StructuredReferences : public ::testing::Test {
 protected:
  StructuredReferences()
      : Sheet({{"A1", "Item"},
               {"B1", "Net"},
               {"A2", "x"},
               {"B2", "10"},
               {"A3", "y"},
               {"B3", "20"},
               {"A4", "z"},
               {"B4", "30"},
               {"Other!C2", "5"},
               {"Other!C3", "6"},
               {"Other!C4", "7"}}) {
    Sheet.Sheet(0).Tables().Add(u"Sales", {1, 1, 2, 4}).SetColumnNames({u"Item", u"Net"});
    TSheetTable& stock = Sheet.Sheet(1).Tables().Add(u"Stock", {3, 2, 3, 4});
    stock.SetHasHeaderRow(false);
    stock.SetColumnNames({u"Count"});
  }

  TSheetFixture Sheet;
};

TEST_F(StructuredReferences, AreRectanglesAsArgumentsAndIntersectElsewhere) {
  test::ExpectCases("formula/table_references.tsv",
                    [this](const test::TCase& ACase) { return Sheet.EvalAt(ACase[0], ACase[1]); });
}

TEST_F(StructuredReferences, LookOnTheirOwnSheetFirst) {
  Sheet.Sheet(1).Tables().Add(u"Sales", {3, 2, 3, 3}).SetHasHeaderRow(false);
  EXPECT_EQ(Sheet.EvalAt("D3", "=SUM(Sales)"), "60");
  EXPECT_EQ(Sheet.EvalAt("Other!D3", "=SUM(Sales)"), "11");
}

TEST_F(StructuredReferences, ComeBeforeNamesOnlyAsArguments) {
  Sheet.Workbook.SetNamedFormula("Stock", "=1000");
  EXPECT_EQ(Sheet.EvalAt("D3", "=SUM(Stock)"), "18");
  EXPECT_EQ(Sheet.EvalAt("D3", "=Stock"), "1000");
  EXPECT_EQ(Sheet.EvalAt("D3", "=SUM(0+Stock)"), "1000");
}

TEST_F(StructuredReferences, FollowTheirTableWhenItChanges) {
  Sheet.Set("D1", "=SUM(Sales[Net])");
  EXPECT_EQ(Sheet.Run("D1"), "60");
  TSheetTable& sales = *Sheet.Sheet(0).Tables().FindByName(u"Sales");
  sales.SetRef({1, 1, 2, 3});
  EXPECT_EQ(Sheet.Run("D1"), "30");
  sales.SetColumnNames({u"Net", u"Item"});
  EXPECT_EQ(Sheet.Run("D1"), "0");
  sales.SetName(u"Turnover");
  sales.SetDisplayName(u"Turnover");
  EXPECT_EQ(Sheet.Run("D1"), "0");
  EXPECT_EQ(Sheet.EvalAt("D2", "=COUNTA(Turnover[Net])"), "2");
}

}  // namespace
}  // namespace tessarine::testing
