#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/sheet/Workbook.h>

#include "../support/XlsxBuilder.h"

namespace tessarine {
namespace {

using test::TXlsxBuilder;

/// Loads a styles part into ABook.
void LoadStyles(TWorkbook& ABook, const std::string& AContent) {
  TXlsxBuilder().Sheet("").Part("xl/styles.xml", "<styleSheet>" + AContent + "</styleSheet>").Load(ABook);
}

TEST(XlsxStyles, TablesOfThePartTakeThePlaceOfTheDefaults) {
  TWorkbook book;
  LoadStyles(book,
             "<numFmts><numFmt numFmtId='164' formatCode='0.0&quot;x&quot;'/><numFmt formatCode='9'/></numFmts>"
             "<fonts><font><name val='F0'/></font><font><b/></font></fonts>"
             "<fills><fill><patternFill patternType='gray125'/></fill></fills>"
             "<cellXfs><xf fontId='1' numFmtId='164'/><xf fontId='2' fillId='-1' borderId='9'/><xf/><xf/></cellXfs>");
  const TTessarineStyleSheet& styles = book.StyleSheet();
  EXPECT_EQ(styles.Fonts().size(), 2u);
  EXPECT_EQ(styles.Fills().size(), 1u);
  EXPECT_EQ(styles.Borders().size(), 1u);  // the part has none
  EXPECT_EQ(styles.Count(), 4);            // equal ones stay apart
  EXPECT_EQ(styles.GetNumFmt(164), u"0.0\"x\"");
  EXPECT_TRUE(styles.GetCellXf(0).Font.Bold);
  EXPECT_EQ(styles.GetCellXf(0).NumberFormat, u"0.0\"x\"");
  EXPECT_EQ(styles.GetCellXf(0).Fill.PatternType, 2);
  EXPECT_EQ(styles.GetCellXf(1).Font.Name, u"Calibri");  // no such font
  EXPECT_EQ(styles.GetCellXf(1).Fill.PatternType, 0);
  EXPECT_EQ(styles.GetCellXf(2).Font.Name, u"F0");
  EXPECT_EQ(styles.GetCellXf(4), TCellFormat::Default());
}

TEST(XlsxStyles, IndexZeroStaysTheDefaultWhateverIsMissing) {
  for (const char* content : {"", "<cellXfs/>", "<cellXfs><xf/></cellXfs>", "<cellXfs><other/></cellXfs>"}) {
    TWorkbook book;
    LoadStyles(book, content);
    EXPECT_EQ(book.StyleSheet().Count(), 1) << content;
    EXPECT_EQ(book.StyleSheet().GetCellXf(0), TCellFormat::Default()) << content;
  }
}

TEST(XlsxStyles, NumberFormatsApplyUnlessRefused) {
  const struct {
    const char* Attributes;
    const char16_t* Code;
  } cases[] = {
      {"numFmtId='14'", u"m/d/yyyy"},
      {"numFmtId='14' applyNumberFormat='0'", u"General"},
      {"numFmtId='14' applyNumberFormat='1'", u"m/d/yyyy"},
      {"numFmtId='14' applyNumberFormat='false'", u"m/d/yyyy"},
      {"numFmtId='9' applyFont='0' applyFill='0'", u"0%"},
      {"numFmtId='777'", u"General"},
      {"numFmtId='x'", u"General"},
      {"", u"General"},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    LoadStyles(book, "<cellXfs><xf " + std::string(row.Attributes) + "/></cellXfs>");
    EXPECT_EQ(book.StyleSheet().GetCellXf(0).NumberFormat, row.Code) << row.Attributes;
  }
}

std::string ColorText(const TColorRef& AColor) {
  if (AColor.IsThemeColor()) return "theme " + std::to_string(AColor.ThemeIndex) + " " + std::to_string(AColor.Tint);
  char text[16];
  std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(AColor.ARGB));
  return text;
}

TEST(XlsxStyles, ColorsAreOfTheThemeOrOfEightDigits) {
  const struct {
    const char* Attributes;
    const char* Color;
  } cases[] = {
      {"rgb='80123456'", "FF123456"},    {"rgb='FF123456' theme='3' tint='-0.25'", "theme 3 -0.250000"},
      {"theme='0'", "theme 0 0.000000"}, {"theme='x' rgb='FFABCDEF'", "FFABCDEF"},
      {"rgb='123456'", "FF000000"},      {"rgb='FF12345G'", "FF000000"},
      {"rgb='FF-12345'", "FF000000"},    {"indexed='10'", "FF000000"},
      {"auto='1'", "FF000000"},          {"", "FF000000"},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    LoadStyles(book, "<fonts><font><color " + std::string(row.Attributes) + "/></font></fonts>");
    EXPECT_EQ(ColorText(book.StyleSheet().Fonts().at(0).Color), row.Color) << row.Attributes;
  }
}

std::string FillText(const TCellFillInfo& AFill) {
  return std::to_string(AFill.PatternType) + " " + ColorText(AFill.ForegroundColor) + " " +
         ColorText(AFill.BackgroundColor) + " " + std::to_string(AFill.GradientAngle);
}

TEST(XlsxStyles, FillsKeepTheirPlaces) {
  const struct {
    const char* Content;
    const char* Fill;
  } cases[] = {
      {"", "0 00000000 FFFFFFFF 90"},
      {"<patternFill/>", "0 00000000 FFFFFFFF 90"},
      {"<patternFill patternType='none'/>", "0 00000000 FFFFFFFF 90"},
      {"<patternFill patternType='solid'/>", "0 00000000 FFFFFFFF 90"},
      {"<patternFill patternType='solid'><fgColor rgb='FF010203'/></patternFill>", "1 FF010203 FFFFFFFF 90"},
      {"<patternFill patternType='gray125'/>", "2 00000000 FFFFFFFF 90"},
      {"<patternFill patternType='odd'/>", "2 00000000 FFFFFFFF 90"},
      {"<patternFill patternType='gray0625'/>", "3 00000000 FFFFFFFF 90"},
      {"<patternFill patternType='darkUp'><fgColor theme='4'/><bgColor rgb='FF0A0B0C'/></patternFill>",
       "9 theme 4 0.000000 FF0A0B0C 90"},
      {"<gradientFill degree='45'><stop><color rgb='FF000001'/></stop><stop/><stop><color rgb='FF000003'/></stop>"
       "</gradientFill>",
       "-1 FF000001 FF000003 45"},
      {"<gradientFill degree='1e300'><stop><color rgb='FF000001'/></stop></gradientFill>", "-1 FF000001 FF000001 90"},
      {"<gradientFill/>", "0 00000000 FFFFFFFF 90"},
  };
  std::string fills;
  for (const auto& row : cases) fills += "<fill>" + std::string(row.Content) + "</fill>";
  TWorkbook book;
  LoadStyles(book, "<fills>" + fills + "</fills>");
  size_t index = 0;
  ASSERT_EQ(book.StyleSheet().Fills().size(), std::size(cases));
  for (const auto& row : cases) EXPECT_EQ(FillText(book.StyleSheet().Fills()[index++]), row.Fill) << row.Content;
}

TEST(XlsxStyles, BordersAndAlignment) {
  TWorkbook book;
  LoadStyles(book,
             "<borders><border diagonalUp='1' diagonalDown='false'><left style='thin'><color rgb='FF000009'/></left>"
             "<right style='double'/><top style='mediumDashDot'/><bottom/><diagonal style='hair'/></border></borders>"
             "<cellXfs><xf><alignment horizontal='right' vertical='top' wrapText='1' indent='2' textRotation='255'"
             " readingOrder='2' shrinkToFit='true'/><protection locked='0' hidden='1'/></xf>"
             "<xf><alignment horizontal='fill' vertical='justify' readingOrder='7'/></xf></cellXfs>");
  const TCellFormat& format = book.StyleSheet().GetCellXf(0);
  const TCellBorderInfo& border = format.Border;
  EXPECT_EQ(border.Left, (TBorderSide{blsThin, TColorRef::FromARGB(0xFF000009)}));
  EXPECT_EQ(border.Right.Style, blsDouble);
  EXPECT_EQ(border.Top.Style, blsNone);
  EXPECT_EQ(border.Bottom, TBorderSide::None());
  EXPECT_EQ(border.Diagonal.Style, blsHair);
  EXPECT_TRUE(border.DiagonalUp);
  EXPECT_FALSE(border.DiagonalDown);
  const TCellAlignmentInfo expected{.Horizontal = haRight,
                                    .Vertical = vaTop,
                                    .WrapText = true,
                                    .ShrinkToFit = true,
                                    .Indent = 2,
                                    .TextRotation = 255,
                                    .ReadingOrder = roRTL};
  EXPECT_EQ(format.Alignment, expected);
  EXPECT_TRUE(format.Locked);
  EXPECT_FALSE(format.Hidden);
  EXPECT_EQ(book.StyleSheet().GetCellXf(1).Alignment, TCellAlignmentInfo::Default());
}

TEST(XlsxStyles, WhatIsHiddenInOtherElementsDoesNotCount) {
  TWorkbook book;
  LoadStyles(book,
             "<mc:AlternateContent><fonts><font><b/></font><font/></fonts></mc:AlternateContent>"
             "<fonts><mc:AlternateContent><font><i/></font></mc:AlternateContent><font><u/></font></fonts>");
  ASSERT_EQ(book.StyleSheet().Fonts().size(), 1u);
  EXPECT_EQ(book.StyleSheet().Fonts()[0].Underline, usSingle);
}

// ---- theme

std::vector<uint32_t> ThemeColors(const std::string& AName, const std::string& AContent) {
  TWorkbook book;
  TXlsxBuilder().Sheet("").Part(AName, "<theme>" + AContent + "</theme>").Load(book);
  return book.Theme().Colors();
}

TEST(XlsxTheme, ColorsReplaceTheListFromFourOn) {
  const std::string four =
      "<clrScheme><dk1><sysClr val='windowText' lastClr='010203'/></dk1><lt1><srgbClr val='FF040506'/></lt1>"
      "<other><srgbClr val='777777'/></other><ACCENT1><srgbClr val='8070809'/></ACCENT1>"
      "<folHlink><srgbClr val='xyz'/></folHlink></clrScheme>";
  const std::vector<uint32_t> expected{0xFF010203, 0xFF040506, 0xFF070809, 0xFF000000};
  EXPECT_EQ(ThemeColors("xl/theme/theme1.xml", "<themeElements>" + four + "</themeElements>"), expected);
  EXPECT_EQ(ThemeColors("xl/theme/theme1.xml", four), expected);
  EXPECT_EQ(ThemeColors("XL/Theme/THEME.xml", four), expected);
  EXPECT_EQ(ThemeColors("xl/theme/theme2.xml", four), TTessarineTheme().Colors());
  const std::string three = "<clrScheme><dk1/><lt1/><dk2/></clrScheme>";
  EXPECT_EQ(ThemeColors("xl/theme/theme1.xml", three), TTessarineTheme().Colors());
}

TEST(XlsxTheme, TheFirstNameWithBytesIsRead) {
  const auto fonts = [](const char* AName) {
    return "<theme><fontScheme><majorFont><latin typeface='" + std::string(AName) +
           "'/></majorFont><minorFont><latin typeface=''/></minorFont></fontScheme></theme>";
  };
  TWorkbook book;
  TXlsxBuilder()
      .Sheet("")
      .Part("xl/theme/theme.xml", fonts("second"))
      .Part("xl/theme/theme1.xml", fonts("first"))
      .Load(book);
  EXPECT_EQ(book.Theme().MajorFont(), u"first");
  EXPECT_EQ(book.Theme().MinorFont(), TTessarineTheme().MinorFont());
  TXlsxBuilder().Sheet("").Part("xl/theme/theme.xml", fonts("second")).Part("xl/theme/theme1.xml", "").Load(book);
  EXPECT_EQ(book.Theme().MajorFont(), u"second");
}

}  // namespace
}  // namespace tessarine
