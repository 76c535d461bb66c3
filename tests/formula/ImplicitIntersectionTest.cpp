#include <string>

#include <gtest/gtest.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {
namespace {

/// B2:D4 hold 1 to 9 row by row.
TSheetFixture Square() {
  return TSheetFixture({{"B2", "1"},
                        {"C2", "2"},
                        {"D2", "3"},
                        {"B3", "4"},
                        {"C3", "5"},
                        {"D3", "6"},
                        {"B4", "7"},
                        {"C4", "8"},
                        {"D4", "9"},
                        {"Other!B3", "30"}});
}

TEST(ImplicitIntersection, TakesTheCellInTheRowOrColumnOfTheFormula) {
  // Each way to intersect must agree: as an operand, by "@" at the root, by "@" in an argument.
  const struct {
    const char* At;
    const char* Range;
    const char* Shown;
  } cases[] = {
      {"A3", "C2:C4", "5"},        {"A2", "C4:C2", "2"},          {"A5", "C2:C4", "#VALUE!"},
      {"A1", "C2:C4", "#VALUE!"},  {"C9", "B3:D3", "5"},          {"E9", "B3:D3", "#VALUE!"},
      {"A9", "B3:D3", "#VALUE!"},  {"Z99", "C3:C3", "5"},         {"C3", "B2:D4", "5"},
      {"D2", "B2:D4", "3"},        {"C9", "B2:D4", "#VALUE!"},    {"E3", "B2:D4", "#VALUE!"},
      {"A3", "Other!B2:B4", "30"}, {"A3", "Nope!B2:B4", "#REF!"},
  };
  TSheetFixture sheet = Square();
  for (const auto& row : cases) {
    const std::string range = row.Range;
    EXPECT_EQ(sheet.EvalAt(row.At, "=@" + range), row.Shown) << row.At << " " << range;
    EXPECT_EQ(sheet.EvalAt(row.At, "=IFERROR(" + range + ",#)"), sheet.EvalAt(row.At, "=IFERROR(@" + range + ",#)"));
    EXPECT_EQ(sheet.EvalAt(row.At, "=" + range + "+0"), row.Shown) << row.At << " " << range;
    EXPECT_EQ(sheet.EvalAt(row.At, "=IF(1,@" + range + ")"), row.Shown) << row.At << " " << range;
  }
}

TEST(ImplicitIntersection, WithoutAnOriginTheFirstCellIsTaken) {
  TSheetFixture sheet = Square();
  EXPECT_EQ(sheet.EvalAt("C9", "=@(B2:D4=5)"), "#VALUE!") << "an operator's operands intersect by themselves";
  EXPECT_EQ(sheet.EvalAt("C9", "=SUM(--@(B2:D4=1))"), "1") << "an argument compares element by element";
  EXPECT_EQ(sheet.EvalAt("C3", "=SUM(--@(B2:D4=5))"), "0");
  EXPECT_EQ(sheet.EvalAt("A9", "=@{7,8}"), "7");
  EXPECT_EQ(sheet.EvalAt("A9", "=@7"), "7");
  EXPECT_EQ(sheet.EvalAt("C3", "=SUM(@-B2:D4)"), "-5") << "a negated range keeps its origin";
  EXPECT_EQ(sheet.EvalAt("D4", "=@OFFSET(B2,1,1,2,2)"), "9");
}

TEST(ImplicitIntersection, GoesByTheCellEnteredLast) {
  TSheetFixture sheet = Square();
  EXPECT_EQ(sheet.Eval("=@B2:B4"), "#VALUE!") << "no cell was entered yet";
  sheet.Set({{"F3", "=1"}, {"H4", "=F3+B2:B4"}, {"I4", "=B2:B4"}});
  EXPECT_EQ(sheet.Run("H4"), "5") << "the pull of F3 has moved on to row 3";
  EXPECT_EQ(sheet.Run("H4"), "8");
  EXPECT_EQ(sheet.Eval("=B2:B4+0"), "7") << "it stays for texts without a cell";
}

}  // namespace
}  // namespace tessarine::testing
