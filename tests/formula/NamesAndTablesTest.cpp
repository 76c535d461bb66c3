#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/lists/SheetTables.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

TEST(DefinedNames, YieldOneValueOnTheReadingSheet) {
  TSheetFixture sheet({{"A1", "1"}, {"A2", "2"}, {"A3", "3"}, {"Other!A2", "20"}});
  sheet.Workbook.SetNamedFormula("Column", "=A1:A3");
  sheet.Workbook.SetNamedFormula("Rate", "=0.5");
  sheet.Workbook.SetNamedFormula("Twice", "=rate*2");
  sheet.Workbook.SetNamedFormula("Loop", "=Pool");
  sheet.Workbook.SetNamedFormula("Pool", "=Loop+1");
  sheet.Workbook.SetNamedFormula("Bad", "=NoSuchName");
  sheet.Workbook.SetNamedFormula("Empty", "");
  sheet.Workbook.SetNamedFormula("Array", "={1,2}");
  const struct {
    const char* At;
    const char* Formula;
    const char* Shown;
  } cases[] = {
      {"B2", "=Column", "2"},    {"B9", "=Column", "#VALUE!"},   {"B2", "=SUM(Column)", "2"},
      {"B1", "=rate", "0.5"},    {"B1", "=$Rate+1", "1.5"},      {"B1", "=Twice", "1"},
      {"B1", "=Loop", "#CIRC!"}, {"B1", "=Bad", "#NAME?"},       {"B1", "=Empty", "#VALUE!"},
      {"B1", "=Array", "_"},     {"Other!B2", "=Column", "20"},  {"B1", "=Twice(1)", "#NAME?"},
      {"B1", "=Twice()", "1"},   {"B1", "=IFERROR(Bad,4)", "4"},
  };
  for (const auto& row : cases) EXPECT_EQ(sheet.EvalAt(row.At, row.Formula), row.Shown) << row.At << row.Formula;
}

TEST(DefinedNames, ShadowFunctionsWithoutArguments) {
  TSheetFixture sheet({{"B7", "=ROW()"}});
  sheet.Run("B7");
  const std::string before = sheet.Eval("=PI()");
  sheet.Workbook.SetNamedFormula("PI", "=3");
  sheet.Workbook.SetNamedFormula("ROW", "=42");
  EXPECT_EQ(sheet.Eval("=PI()"), "3");
  EXPECT_EQ(sheet.Eval("=SUM(PI,1)"), "4");
  EXPECT_EQ(sheet.Eval("=ROW()"), "42");
  EXPECT_EQ(sheet.Eval("=ROW(B3)"), "3");
  sheet.Workbook.SetNamedFormula("ROW", "=NoSuchName");
  EXPECT_EQ(sheet.Eval("=ROW()"), "7") << "a name whose value is #NAME? counts as none";
  sheet.Workbook.SetNamedFormula("PI", "=NoSuchName");
  EXPECT_EQ(sheet.Eval("=PI()"), before);
}

TEST(DefinedNames, AreNoEdgesOfACycle) {
  TSheetFixture sheet({{"A1", "=IFERROR(N,5)"}});
  sheet.Workbook.SetNamedFormula("N", "=A1+1");
  EXPECT_EQ(sheet.Run("A1"), "5");
  EXPECT_EQ(sheet.Eval("=N"), "6");
}

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
  const struct {
    const char* At;
    const char* Formula;
    const char* Shown;
  } cases[] = {
      {"D3", "=SUM(Sales[Net])", "60"},
      {"D3", "=Sales[Net]", "20"},
      {"D9", "=Sales[Net]", "#VALUE!"},
      {"D3", "=Sales[@Net]*2", "40"},
      {"B3", "=[Net]", "20"},
      {"B3", "=[@Net]", "20"},
      {"B3", "=SUM([Net])", "60"},
      {"D3", "=[Net]", "#REF!"},
      {"D3", "=Sales[Gross]", "#REF!"},
      {"D3", "=SUM(sales)", "60"},
      {"D3", "=Sales", "#NAME?"},
      {"D3", "=SUM(Stock)", "18"},
      {"D3", "=Stock[Count]", "6"},
      {"D3", "=SUM(Nope[Count])", "0"},
      {"D3", "=COUNTA(Sales)", "6"},
      {"D3", "=SUM(-Stock[Count])", "-18"},
      {"D3", "=SUM(@Stock[Count])", "6"},
      {"D3", "=SUM(OFFSET(Sales[Net],1,0,1))", "20"},
      {"D3", "=SUM(OFFSET(Stock[Count],0,-1))", "60"},
      {"D3", "=SUM(@Stock)", "6"},
  };
  for (const auto& row : cases) EXPECT_EQ(Sheet.EvalAt(row.At, row.Formula), row.Shown) << row.At << row.Formula;
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

TEST(SheetNames, AreResolvedAgainWhenSheetsChange) {
  TSheetFixture sheet({{"Data!A1", "5"}, {"More!A1", "6"}, {"B1", "=Data!A1"}, {"B2", "=SUM(Data!A1:A2)"}});
  EXPECT_EQ(sheet.Run("B1 B2"), "5 5");
  sheet.Sheet(1).SetName("Old");
  EXPECT_EQ(sheet.Run("B1 B2"), "#REF! 0");
  sheet.Sheet(2).SetName("DATA");
  EXPECT_EQ(sheet.Run("B1 B2"), "6 6");
  sheet.Workbook.RemoveSheet(2);
  EXPECT_EQ(sheet.Run("B1"), "#REF!");
}

}  // namespace
}  // namespace tessarine::testing
