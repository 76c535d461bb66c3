#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/io/ods/detail/OdsStyleReader.h>

namespace tessarine::detail {
namespace {

TOdsStyleReader Styles(std::string_view AContent) {
  TOdsStyleReader styles({}, {});
  styles.LoadPart("<r><styles>" + std::string(AContent) + "</styles></r>", "styles.xml");
  return styles;
}

TEST(OdsStyles, InheritFromTheirParents) {
  TOdsStyleReader styles = Styles(
      "<style name='c' family='table-cell' parent-style-name='p'><text-properties font-weight='normal'/></style>"
      "<style name='p' family='table-cell'><text-properties font-weight='bold' font-style='italic'/></style>"
      "<style name='Default' family='table-cell'><text-properties font-name='F1' font-size='10pt'/></style>"
      "<default-style family='table-cell'><text-properties color='#112233'/></default-style>"
      "<style name='p' family='table-row'><table-row-properties row-height='1cm'/></style>"
      "<style name='x' family='table-cell' parent-style-name='y'><text-properties font-size='20pt'/></style>"
      "<style name='y' family='table-cell' parent-style-name='x'><text-properties font-size='50%'/></style>");
  styles.LoadPart("<r><font-face-decls><font-face name='F1' font-family=\"'Times X', serif\"/></font-face-decls></r>",
                  "content.xml");
  const TCellFontInfo font = styles.GetCellFormat("c").Font;
  EXPECT_EQ(font.Name, u"Times X");
  EXPECT_EQ(font.Size, 10);
  EXPECT_TRUE(font.Italic && !font.Bold);
  EXPECT_EQ(font.Color, TColorRef::FromARGB(0xFF112233));
  EXPECT_EQ(styles.GetCellFormat("missing"), styles.GetCellFormat("Default"));
  EXPECT_EQ(styles.GetCellFormat("x").Font.Size, 20);  // a circle ends where it began
  EXPECT_EQ(styles.GetRowHeightCm("p").value_or(0), 1);
  EXPECT_FALSE(styles.GetRowHeightCm("c") || styles.GetColWidthCm("p"));
}

TEST(OdsStyles, SetAllPropertiesOfAFormat) {
  TOdsStyleReader styles = Styles(
      "<style name='c' family='table-cell'>"
      "<text-properties text-underline-style='solid' text-underline-type='double' text-line-through-style='solid' "
      "text-position='super 58%'/>"
      "<paragraph-properties text-align='end' writing-mode='rl-tb' margin-left='0.5cm'/>"
      "<table-cell-properties background-color='#00ff00' vertical-align='middle' wrap-option='wrap' "
      "rotation-angle='90' border='0.05cm solid #ff0000' border-left='none' border-top='1mm dashed #0000ff' "
      "padding='0.1cm' padding-right='0.2cm' cell-protect='formula-hidden'/></style>"
      "<style name='d' family='table-cell' parent-style-name='c'><table-cell-properties "
      "background-color='transparent' text-align-source='value-type' cell-protect='hidden-and-protected'/></style>");
  const TCellFormat format = styles.GetCellFormat("c");
  EXPECT_EQ(format.Font.Underline, usDouble);
  EXPECT_TRUE(format.Font.Strikethrough && format.Font.Script == spSuperscript);
  EXPECT_EQ(format.Fill, TCellFillInfo::Solid(TColorRef::FromARGB(0xFF00FF00)));
  EXPECT_EQ(format.Border.Left, TBorderSide::None());
  EXPECT_EQ(format.Border.Right, (TBorderSide{blsMedium, TColorRef::FromARGB(0xFFFF0000)}));
  EXPECT_EQ(format.Border.Top, (TBorderSide{blsDashed, TColorRef::FromARGB(0xFF0000FF)}));
  const TCellAlignmentInfo& alignment = format.Alignment;
  EXPECT_TRUE(alignment.Horizontal == haRight && alignment.Vertical == vaCenter && alignment.WrapText);
  EXPECT_TRUE(alignment.ReadingOrder == roRTL && alignment.TextRotation == 90);
  EXPECT_NEAR(alignment.MarginLeftCm + alignment.PaddingLeftCm + alignment.PaddingRightCm, 0.8, 1e-12);
  EXPECT_TRUE(!format.Locked && format.Hidden);
  const TCellFormat child = styles.GetCellFormat("d");
  EXPECT_TRUE(child.Fill == TCellFillInfo::None() && child.Alignment.Horizontal == haGeneral && child.Locked);
}

/// Marks are what another program may have left standing beside standard attributes that it changed.
TEST(OdsStyles, TakeExactMarksOnlyWhereTheyAgree) {
  const TTessarineTheme theme;
  const std::string content =
      "<style name='c' family='table-cell'><text-properties font-size='@pt' exact-size='12.75' color='#4472c4' "
      "exact-color='theme:@:0'/><paragraph-properties margin-left='1.059cm' exact-indent='@'/>"
      "<table-cell-properties background-color='#4472c4' exact-fill='1 theme:@:0 #ff000000 90' rotation-angle='315' "
      "exact-rotation='13@' border-left='0.013cm solid #4472c4' exact-left='7 theme:@:0'/></style>"
      "<style name='w' family='table-column'><table-column-properties column-width='3.836cm' exact-width='@'/></style>";
  const auto load = [&](const std::vector<std::string>& AValues) {
    std::string filled = "<r><styles>" + content + "</styles></r>";
    for (const std::string& value : AValues) filled.replace(filled.find('@'), 1, value);
    TOdsStyleReader styles({}, {}, &theme);
    styles.LoadPart(filled, "styles.xml");
    return std::pair(styles.GetCellFormat("c"), styles.GetColWidth("w")->Size);
  };
  const auto [same, width] = load({"12.8", "4", "3", "4", "5", "4", "20"});
  EXPECT_EQ(same.Font.Size, 12.75f);
  EXPECT_EQ(same.Font.Color, TColorRef::FromTheme(4, 0));
  EXPECT_TRUE(same.Alignment.Indent == 3 && same.Alignment.MarginLeftCm == 0 && same.Alignment.TextRotation == 135);
  EXPECT_EQ(same.Fill.ForegroundColor, TColorRef::FromTheme(4, 0));
  EXPECT_EQ(same.Border.Left, (TBorderSide{blsHair, TColorRef::FromTheme(4, 0)}));
  EXPECT_EQ(width, 20);
  const auto [other, otherWidth] = load({"14", "5", "4", "-4", "4", "9", "20.1"});
  EXPECT_EQ(other.Font.Size, 14);
  EXPECT_EQ(other.Font.Color, TColorRef::FromARGB(0xFF4472C4));
  EXPECT_TRUE(other.Alignment.Indent == 0 && other.Alignment.MarginLeftCm > 1 && other.Alignment.TextRotation == 315);
  EXPECT_EQ(other.Fill, TCellFillInfo::Solid(TColorRef::FromARGB(0xFF4472C4)));
  EXPECT_EQ(other.Border.Left, (TBorderSide{blsThin, TColorRef::FromARGB(0xFF4472C4)}));
  EXPECT_NEAR(otherWidth, 20, 0.01);
}

TEST(OdsStyles, ReadBorderSidesInAnyOrder) {
  const struct {
    const char* Text;
    TBorderLineStyle Style;
    uint32_t Argb;
  } cases[] = {{"0.06pt solid #000000", blsThin, 0xFF000000},
               {"#123456 2.5pt solid", blsThick, 0xFF123456},
               {"medium", blsMedium, 0xFF000000},
               {"bold groove", blsThick, 0xFF000000},
               {"2px dotted", blsDotted, 0xFF000000},
               {"0.1cm double #ff0000", blsDouble, 0xFFFF0000},
               {"1pt hidden #ff0000", blsNone, 0xFF000000},
               {"", blsNone, 0xFF000000},
               {"   ", blsNone, 0xFF000000},
               {"nonsense", blsNone, 0xFF000000}};
  for (const auto& row : cases) {
    const TBorderSide side = OdsParseBorderSide(row.Text);
    EXPECT_EQ(side.Style, row.Style) << row.Text;
    EXPECT_EQ(side.Color.ARGB, row.Argb) << row.Text;
  }
}

TEST(OdsStyles, BuildNumberFormatCodes) {
  const struct {
    const char* Style;
    const char* Code;
  } cases[] = {
      {"<number-style><number min-integer-digits='1'/></number-style>", "General"},
      {"<number-style><number decimal-places='0' min-integer-digits='1'/></number-style>", "0"},
      {"<number-style><number decimal-places='2' min-integer-digits='3'/></number-style>", "000.00"},
      {"<number-style><number decimal-places='3' min-decimal-places='1' grouping='true'/></number-style>", "#,##0.0##"},
      {"<number-style><number decimal-places='0' display-factor='1000'/></number-style>", "0,"},
      {"<number-style><scientific-number decimal-places='2' min-exponent-digits='2'/></number-style>", "0.00E+00"},
      {"<number-style><fraction min-integer-digits='0' min-numerator-digits='1' "
       "min-denominator-digits='2'/></number-style>",
       "# ?/??"},
      {"<percentage-style><number decimal-places='1'/><text>%</text></percentage-style>", "0.0%"},
      {"<currency-style><text>-</text><currency-symbol>\xE2\x82\xAC</currency-symbol><number decimal-places='2'/>"
       "<text> kg \"x\"</text></currency-style>",
       "-\xE2\x82\xAC"
       "0.00 \"kg\" \\\"\"x\"\\\""},
      {"<number-style><fill-character>-</fill-character><number decimal-places='0'/></number-style>", "*-0"},
      {"<date-style><day style='long'/><text>/</text><month/><text>/</text><year style='long'/></date-style>",
       "dd/m/yyyy"},
      {"<date-style><day-of-week/><text>, </text><month textual='true' style='long'/><text> of "
       "</text><year/></date-style>",
       "ddd, mmmm \"of\" yy"},
      {"<time-style><hours style='long'/><text>:</text><minutes style='long'/><text>:</text><seconds style='long' "
       "decimal-places='2'/><text> </text><am-pm/></time-style>",
       "hh:mm:ss.00 AM/PM"},
      {"<time-style truncate-on-overflow='false'><hours/><text>:</text><minutes style='long'/></time-style>", "[h]:mm"},
      {"<text-style><text-content/></text-style>", "@"},
      {"<number-style/>", "General"},
      {"<number-style><text-properties color='#ff0000'/><text>-</text><number decimal-places='0'/>"
       "<map condition='value()&gt;=0' apply-style-name='P'/></number-style>",
       "0.00;[Red]-0"},
      {"<number-style><number decimal-places='0'/><map condition='value()&gt;0' apply-style-name='P'/>"
       "<map condition='value()&lt;0' apply-style-name='M'/></number-style>",
       "0.00;\"(\"0\")\";0"},
      {"<text-style><text-content/><map condition='value()&gt;0' apply-style-name='P'/><map condition='value()&lt;0' "
       "apply-style-name='M'/><map condition='value()=0' apply-style-name='Z'/></text-style>",
       "0.00;\"(\"0\")\";\"zero\";@"},
      {"<number-style><number decimal-places='0'/><map condition='value()&gt;=100' apply-style-name='P'/>"
       "<map condition='bad' apply-style-name='M'/></number-style>",
       "[>=100]0.00;0"},
  };
  for (const auto& row : cases) {
    std::string style = row.Style;
    style.insert(style.find_first_of(" />"), " name='N'");
    const TOdsStyleReader styles =
        Styles(style +
               "<number-style name='P'><number decimal-places='2'/></number-style><number-style name='M'><text>(</text>"
               "<number decimal-places='0'/><text>)</text></number-style><number-style "
               "name='Z'><text>zero</text></number-style>");
    std::string code = row.Code;
    // Round brackets need no quotes.
    for (const std::string_view plain : {"\"(\"", "\")\""})
      for (size_t at = code.find(plain); at != code.npos; at = code.find(plain))
        code.replace(at, 3, plain.substr(1, 1));
    EXPECT_EQ(styles.GetNumberFormat("N").ToUtf8(), code) << style;
    EXPECT_EQ(styles.GetNumberFormat("none"), u"General");
  }
  std::string sections = "<number-style name='N'><text>long</text>";
  for (int i = 0; i < 100; ++i) sections += "<map condition='value()&gt;1' apply-style-name='N'/>";
  EXPECT_LT(Styles(sections + "</number-style>").GetNumberFormat("N").Length(), 100u) << "formats stay short";
}

}  // namespace
}  // namespace tessarine::detail
