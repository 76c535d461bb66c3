#include <gtest/gtest.h>

#include <vector>

#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/PageSetupNames.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

TEST(PageSetup, PaperSizesKeepTheirMeasures) {
  TPageSetup setup;
  setup.SetPaperSize(psA4);
  setup.SetPaperSize(psCustom);
  EXPECT_EQ(setup.PaperWidthInches(), 8.27);
  EXPECT_EQ(setup.PaperHeightInches(), 11.69);
  setup.SetCustomPaperInches(3, 4);
  EXPECT_EQ(setup.PaperHeightInches(), 4);
  setup.SetPaperSize(psQuarto);
  EXPECT_EQ(setup.PaperHeightInches(), 10.83);
  for (int code = 1; code <= 15; ++code) EXPECT_EQ(PaperSizeToOOXML(PaperSizeFromOOXML(code)), code);
  EXPECT_EQ(PaperSizeFromOOXML(99), psCustom);
  EXPECT_EQ(PaperSizeToOOXML(psCustom), 0);
}

TEST(PageSetup, AreasTitlesAndBreaksKeepTheirRules) {
  TPageSetup setup;
  EXPECT_EQ(setup.PrintAreaOrUsed(0, 0), (TCellRange{1, 1, 1, 1}));
  setup.SetPrintArea({3, 9, 2, 1});
  EXPECT_EQ(setup.PrintAreaOrUsed(9, 9), (TCellRange{2, 1, 3, 9}));
  setup.SetPrintArea({0, 1, 5, 5});
  EXPECT_FALSE(setup.HasPrintArea());
  setup.SetTitleRows(2, 4);
  EXPECT_EQ(setup.TitleRows(), (TCellRange{1, 2, kMaxCol, 4}));
  setup.SetTitleRows(5, 3);
  EXPECT_FALSE(setup.HasTitleRows());
  for (const int row : {1, 20, 10, 20, -3}) setup.AddRowBreak(row);
  EXPECT_EQ(setup.RowBreaks(), (std::vector<int32_t>{10, 20}));
  TPageSetup copy;
  copy.Assign(setup);
  EXPECT_EQ(copy, setup);
}

TEST(PageSetup, NamesAreWrittenAndReadBack) {
  EXPECT_EQ(FormatPrintAreaExpr(u"Data", {3, 9, 1, 1}), u"Data!$A$1:$C$9");
  EXPECT_EQ(FormatPrintAreaExpr(u"Bob's data", {1, 1, 1, 1}), u"'Bob''s data'!$A$1:$A$1");
  EXPECT_EQ(FormatPrintTitlesExpr(u"S", true, {1, 1, 3, kMaxRow}, true, {1, 1, kMaxCol, 2}), u"S!$A:$C,S!$1:$2");
  TPageSetup setup;
  ApplyPrintAreaExpr(setup, u"S!$B$2:$C$3, s!$F$9 ,Other!$A$1,broken", u"S");
  EXPECT_EQ(setup.PrintArea(), (TCellRange{2, 2, 6, 9}));
  ApplyPrintTitlesExpr(setup, u"'A,B'!$A:$B,'A,B'!$3:$4", u"A,B");
  EXPECT_EQ(setup.TitleCols(), (TCellRange{1, 1, 2, kMaxRow}));
  EXPECT_EQ(setup.TitleRows(), (TCellRange{1, 3, kMaxCol, 4}));
}

}  // namespace
}  // namespace tessarine
