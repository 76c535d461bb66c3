#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <set>
#include <vector>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/format/ReadingOrder.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>

namespace tessarine {
namespace {

using TChange = std::function<void(TCellFormat&)>;

/// One change for every field, so that a field forgotten in the comparison or the hash shows.
const std::vector<TChange>& OneChangePerField() {
  static const std::vector<TChange> changes = {
      [](TCellFormat& A) { A.Font.Name = u"Arial"; },
      [](TCellFormat& A) { A.Font.Size = 11.5f; },
      [](TCellFormat& A) { A.Font.Bold = true; },
      [](TCellFormat& A) { A.Font.Italic = true; },
      [](TCellFormat& A) { A.Font.Underline = usDouble; },
      [](TCellFormat& A) { A.Font.Strikethrough = true; },
      [](TCellFormat& A) { A.Font.Script = spSubscript; },
      [](TCellFormat& A) { A.Font.Color.ARGB = 1; },
      [](TCellFormat& A) { A.Font.Color.ThemeIndex = 1; },
      [](TCellFormat& A) { A.Font.Color.Tint = 0.5; },
      [](TCellFormat& A) { A.Fill.PatternType = 1; },
      [](TCellFormat& A) { A.Fill.ForegroundColor.ARGB = 1; },
      [](TCellFormat& A) { A.Fill.BackgroundColor.ARGB = 1; },
      [](TCellFormat& A) { A.Fill.GradientAngle = 45; },
      [](TCellFormat& A) { A.Border.Left.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Top.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Right.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Bottom.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Diagonal.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Diagonal.Color.ARGB = 1; },
      [](TCellFormat& A) { A.Border.DiagonalUp = true; },
      [](TCellFormat& A) { A.Border.DiagonalDown = true; },
      [](TCellFormat& A) { A.Alignment.Horizontal = haFill; },
      [](TCellFormat& A) { A.Alignment.Vertical = vaTop; },
      [](TCellFormat& A) { A.Alignment.WrapText = true; },
      [](TCellFormat& A) { A.Alignment.ShrinkToFit = true; },
      [](TCellFormat& A) { A.Alignment.Indent = 1; },
      [](TCellFormat& A) { A.Alignment.TextRotation = 1; },
      [](TCellFormat& A) { A.Alignment.ReadingOrder = roRTL; },
      [](TCellFormat& A) { A.Alignment.MarginLeftCm = 1; },
      [](TCellFormat& A) { A.Alignment.MarginRightCm = 1; },
      [](TCellFormat& A) { A.Alignment.PaddingLeftCm = 1; },
      [](TCellFormat& A) { A.Alignment.PaddingRightCm = 1; },
      [](TCellFormat& A) { A.NumberFormat = u"0"; },
      [](TCellFormat& A) { A.Locked = false; },
      [](TCellFormat& A) { A.Hidden = true; },
  };
  return changes;
}

TEST(CellFormatRecords, EveryFieldCountsForEqualityAndHash) {
  std::set<size_t> hashes{HashOf(TCellFormat::Default())};
  for (size_t i = 0; i < OneChangePerField().size(); ++i) {
    TCellFormat format;
    OneChangePerField()[i](format);
    EXPECT_FALSE(format == TCellFormat::Default()) << "change " << i;
    EXPECT_TRUE(hashes.insert(HashOf(format)).second) << "change " << i;
    const TCellFormat copy = format;
    EXPECT_TRUE(copy == format) << "change " << i;
  }
}

TEST(CellFormatRecords, EqualFormatsHashAlikeWhateverTheirTextsAndZerosAre) {
  TCellFormat left;
  TCellFormat right;
  left.Font.Name = TText(u"Calibri");  // a block of its own
  left.Fill.ForegroundColor.Tint = -0.0;
  ASSERT_TRUE(left == right);
  EXPECT_EQ(HashOf(left), HashOf(right));
}

TEST(CellFormatRecords, TheQuickTestLooksAtFontBasicsAndNumberFormatOnly) {
  const std::set<size_t> seen = {0, 1, 2, 3, 33};  // name, size, bold, italic, number format
  for (size_t i = 0; i < OneChangePerField().size(); ++i) {
    TCellFormat format;
    OneChangePerField()[i](format);
    EXPECT_EQ(format.Equals(TCellFormat::Default()), !seen.contains(i)) << "change " << i;
  }
}

TEST(CellFormatRecords, FillsAreMadeFromTheEmptyFill) {
  const TColorRef red = TColorRef::FromARGB(0xFFFF0000);
  const TColorRef accent = TColorRef::FromTheme(4, 0.25);
  EXPECT_TRUE(accent.IsThemeColor());
  EXPECT_EQ(accent.ARGB, 0u);
  EXPECT_FALSE(red.IsThemeColor());

  const TCellFillInfo solid = TCellFillInfo::Solid(red);
  EXPECT_EQ(solid, (TCellFillInfo{1, red, TColorRef::FromARGB(0xFFFFFFFF), 90}));
  EXPECT_FALSE(solid.IsGradient());
  const TCellFillInfo gradient = TCellFillInfo::Gradient(red, accent, 45);
  EXPECT_EQ(gradient, (TCellFillInfo{-1, red, accent, 45}));
  EXPECT_TRUE(gradient.IsGradient());
}

TEST(CellFormatTheme, SlotsSwapLightAndDarkAndUnknownOnesAreBlack) {
  const TTessarineTheme theme;
  const struct {
    int32_t Slot;
    double Tint;
    uint32_t Expected;
  } cases[] = {
      {0, 0, 0xFFFFFFFF},  {1, 0, 0xFF000000},    {2, 0, 0xFFE7E6E6},    {3, 0, 0xFF44546A},
      {4, 0, 0xFF4472C4},  {11, 0, 0xFF954F72},   {12, 0, 0xFF000000},   {99, 0, 0xFF000000},
      {-1, 0, 0xFF000000}, {99, 0.5, 0xFF808080}, {0, -0.5, 0xFF808080}, {INT32_MAX, 0, 0xFF000000},
  };
  for (const auto& row : cases) EXPECT_EQ(theme.ResolveThemeColor(row.Slot, row.Tint), row.Expected) << row.Slot;
}

TEST(CellFormatTheme, TintsMoveLightnessAndKeepAlphaAndHue) {
  const struct {
    uint32_t Color;
    double Tint;
    uint32_t Expected;
  } cases[] = {
      {0xFFFFFFFF, -0.5, 0xFF808080},
      {0x80000000, 0.5, 0x80808080},
      {0xFF123456, 1e-13, 0xFF123456},
      {0xFF4472C4, 1, 0xFFFFFFFF},
      {0xFF4472C4, -1, 0xFF000000},
      {0xFFFF0000, -0.5, 0xFF800000},  // each channel of the hue circle
      {0xFF00FF00, -0.5, 0xFF008000},
      {0xFF0000FF, 0.5, 0xFF8080FF},
      {0xFFFF00FF, 0.5, 0xFFFF80FF},
      {0xFF808080, 0.2, 0xFF999999},
      // Shades that spreadsheet programs offer for the accents, good to one step.
      {0xFF4472C4, 0.8, 0xFFDAE3F3},
      {0xFFED7D31, 0.4, 0xFFF4B183},
      {0xFF70AD47, -0.25, 0xFF548235},
  };
  for (const auto& row : cases) {
    const uint32_t color = TTessarineTheme::ApplyTint(row.Color, row.Tint);
    for (int shift = 0; shift < 32; shift += 8) {
      const int channel = static_cast<int>((color >> shift) & 0xFF);
      EXPECT_NEAR(channel, static_cast<int>((row.Expected >> shift) & 0xFF), 1)
          << std::hex << row.Color << " " << row.Tint << " gives " << color;
    }
  }
}

TEST(CellFormatTheme, TintsBeyondTheirRangeStayColours) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(TTessarineTheme::ApplyTint(0xFF4472C4, 7), 0xFFFFFFFFu);
  EXPECT_EQ(TTessarineTheme::ApplyTint(0xFF4472C4, -7), 0xFF000000u);
  EXPECT_EQ(TTessarineTheme::ApplyTint(0xFF4472C4, -inf), 0xFF000000u);
  EXPECT_EQ(TTessarineTheme::ApplyTint(0x12345678, std::numeric_limits<double>::quiet_NaN()), 0x12345678u);
  EXPECT_EQ(TTessarineTheme::ApplyTint(0x7F000000, inf) >> 24, 0x7Fu);
}

TEST(CellFormatTheme, PlainColoursNeedNoThemeAndThemeColoursDo) {
  const TTessarineTheme theme;
  EXPECT_EQ(ResolveColor(TColorRef::FromARGB(0x12345678), &theme), 0x12345678u);
  EXPECT_EQ(ResolveColor(TColorRef::FromTheme(0, 0), &theme), 0xFFFFFFFFu);
  EXPECT_EQ(ResolveColor(TColorRef::FromTheme(0, 0), nullptr), 0u);
}

TEST(CellFormatStyleSheet, EqualEntriesKeepIndexesOfTheirOwn) {
  TTessarineStyleSheet styles;
  TCellFormat bold;
  bold.Font.Bold = true;
  EXPECT_EQ(styles.AddCellXf(bold), 1);
  const TCellFormat& first = styles.GetCellXf(1);
  for (int32_t i = 2; i < 2000; ++i) EXPECT_EQ(styles.AddCellXf(bold), i);
  EXPECT_EQ(&styles.ResolveFormat(1), &first);  // references outlive later additions
  EXPECT_EQ(first, bold);
  EXPECT_EQ(styles.Count(), 2000);
  for (const int32_t index : {-1, 2000, INT32_MIN, INT32_MAX})
    EXPECT_EQ(&styles.GetCellXf(index), &TCellFormat::Default()) << index;
}

TEST(CellFormatStyleSheet, ClearLeavesOneDefaultOfEachAndNoCodes) {
  TTessarineStyleSheet styles;
  styles.AddFont({});
  styles.AddFill({});
  styles.AddBorder({});
  styles.AddCellXf({});
  styles.AddCellStyleXf({});
  styles.RegisterNumFmt(164, u"0.000");
  const uint64_t before = styles.Version();
  styles.Clear();
  EXPECT_GT(styles.Version(), before);
  EXPECT_EQ(styles.Fonts().size(), 1u);
  EXPECT_EQ(styles.Fills().size(), 1u);
  EXPECT_EQ(styles.Borders().size(), 1u);
  EXPECT_EQ(styles.Count(), 1);
  EXPECT_TRUE(styles.CellStyleXfs().empty());
  EXPECT_TRUE(styles.NumFmts().empty());
  styles.ClearCellXfs();
  EXPECT_EQ(styles.GetCellXf(0), TCellFormat::Default());
  EXPECT_EQ(styles.AddCellXf({}), 0);
}

TEST(CellFormatStyleSheet, RegisteredCodesGoBeforeBuiltInOnes) {
  TTessarineStyleSheet styles;
  const struct {
    int32_t Id;
    const char16_t* Code;
  } builtIn[] = {{0, u"General"},
                 {4, u"#,##0.00"},
                 {13, u"# \?\?/\?\?"},
                 {22, u"m/d/yyyy h:mm"},
                 {23, u"General"},
                 {36, u"General"},
                 {37, u"#,##0 ;(#,##0)"},
                 {49, u"@"},
                 {50, u"General"},
                 {-1, u"General"},
                 {44, u"_($* #,##0.00_);_($* (#,##0.00);_($* \"-\"\?\?_);_(@_)"}};
  for (const auto& row : builtIn) EXPECT_EQ(styles.GetNumFmt(row.Id), row.Code) << row.Id;
  styles.RegisterNumFmt(4, u"0.0");
  styles.RegisterNumFmt(164, u"x");
  styles.RegisterNumFmt(164, u"y");
  EXPECT_EQ(styles.GetNumFmt(4), u"0.0");
  EXPECT_EQ(styles.GetNumFmt(164), u"y");
}

TEST(CellFormatReadingOrder, TheFirstDecidingUnitWins) {
  const struct {
    const char16_t* Text;
    TReadingOrder Expected;
  } cases[] = {
      {u"", roLTR},
      {u"123 abc", roLTR},
      {u"  !?", roLTR},
      {u"\u05D0bc", roRTL},
      {u"-\u05D0", roRTL},
      {u"1\u05D0", roLTR},
      {u"\t\n \u0627", roRTL},
      {u"\u00C0\u05D0", roLTR},
      {u"\u024F\u05D0", roLTR},
      {u"\u0250\u05D0", roRTL},
      {u"\u00BF\u05D0", roRTL},
      {u"\u4E2D\u05D0", roRTL},
      {u"\u058F", roLTR},
      {u"\u0590", roRTL},
      {u"\u08FF", roRTL},
      {u"\u0900", roLTR},
      {u"\uFB1C", roLTR},
      {u"\uFB1D", roRTL},
      {u"\uFDFF", roRTL},
      {u"\uFE70", roRTL},
      {u"\uFEFF", roRTL},
      {u"\uFF00", roLTR},
  };
  for (const auto& row : cases) {
    const TText text(row.Text);
    EXPECT_EQ(ResolveReadingOrder(text, roContext), row.Expected) << text.ToUtf8();
    EXPECT_EQ(ResolveReadingOrder(text, roRTL), roRTL);
    EXPECT_EQ(ResolveReadingOrder(text, roLTR), roLTR);
  }
  EXPECT_TRUE(TextHasStrongRtl(u"abc \u05D0"));
  EXPECT_FALSE(TextHasStrongRtl(u"abc"));
}

}  // namespace
}  // namespace tessarine
