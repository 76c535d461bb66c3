#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <set>
#include <vector>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/format/ReadingOrder.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using test::ExpectCases;
using test::TCase;

using TChange = std::function<void(TCellFormat&)>;

/// One change for every field, so that a field forgotten in the comparison or the hash shows.
const std::vector<TChange>& OneChangePerField() {
  static const std::vector<TChange> changes = {
      // clang-format off
      [](TCellFormat& A) { A.Font.Name = u"Arial"; }, [](TCellFormat& A) { A.Font.Size = 11.5f; },
      [](TCellFormat& A) { A.Font.Bold = true; }, [](TCellFormat& A) { A.Font.Italic = true; },
      [](TCellFormat& A) { A.Font.Underline = usDouble; }, [](TCellFormat& A) { A.Font.Strikethrough = true; },
      [](TCellFormat& A) { A.Font.Script = spSubscript; }, [](TCellFormat& A) { A.Font.Color.ARGB = 1; },
      [](TCellFormat& A) { A.Font.Color.ThemeIndex = 1; }, [](TCellFormat& A) { A.Font.Color.Tint = 0.5; },
      [](TCellFormat& A) { A.Fill.PatternType = 1; }, [](TCellFormat& A) { A.Fill.ForegroundColor.ARGB = 1; },
      [](TCellFormat& A) { A.Fill.BackgroundColor.ARGB = 1; }, [](TCellFormat& A) { A.Fill.GradientAngle = 45; },
      [](TCellFormat& A) { A.Border.Left.Style = blsThin; }, [](TCellFormat& A) { A.Border.Top.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Right.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Bottom.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Diagonal.Style = blsThin; },
      [](TCellFormat& A) { A.Border.Diagonal.Color.ARGB = 1; }, [](TCellFormat& A) { A.Border.DiagonalUp = true; },
      [](TCellFormat& A) { A.Border.DiagonalDown = true; }, [](TCellFormat& A) { A.Alignment.Horizontal = haFill; },
      [](TCellFormat& A) { A.Alignment.Vertical = vaTop; }, [](TCellFormat& A) { A.Alignment.WrapText = true; },
      [](TCellFormat& A) { A.Alignment.ShrinkToFit = true; }, [](TCellFormat& A) { A.Alignment.Indent = 1; },
      [](TCellFormat& A) { A.Alignment.TextRotation = 1; },
      [](TCellFormat& A) { A.Alignment.ReadingOrder = roRTL; },
      [](TCellFormat& A) { A.Alignment.MarginLeftCm = 1; }, [](TCellFormat& A) { A.Alignment.MarginRightCm = 1; },
      [](TCellFormat& A) { A.Alignment.PaddingLeftCm = 1; }, [](TCellFormat& A) { A.Alignment.PaddingRightCm = 1; },
      [](TCellFormat& A) { A.NumberFormat = u"0"; }, [](TCellFormat& A) { A.Locked = false; },
      [](TCellFormat& A) { A.Hidden = true; },
      // clang-format on
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

/// The tinted colour; the expected one where every channel is within one step of it.
std::string Tinted(const TCase& ACase) {
  const auto color = static_cast<uint32_t>(std::stoul(ACase[1], nullptr, 16));
  const uint32_t tinted = TTessarineTheme::ApplyTint(color, ACase.Number(2));
  const auto expected = static_cast<uint32_t>(std::stoul(ACase[3], nullptr, 16));
  for (int shift = 0; shift < 32; shift += 8) {
    const int channel = static_cast<int>((tinted >> shift) & 0xFF);
    if (std::abs(channel - static_cast<int>((expected >> shift) & 0xFF)) > 1) return test::ShownColor(tinted);
  }
  return ACase[3];
}

TEST(CellFormats, ExamplesHold) {
  const auto slot = [](const TCase& ACase) {
    return test::ShownColor(TTessarineTheme().ResolveThemeColor(ACase.Int(1), ACase.Number(2)));
  };
  const auto code = [](const TCase& ACase) { return TTessarineStyleSheet().GetNumFmt(ACase.Int(1)); };
  const auto order = [](const TCase& ACase) {
    const TText text(ACase.Text(1));
    EXPECT_EQ(ResolveReadingOrder(text, roRTL), roRTL);
    EXPECT_EQ(ResolveReadingOrder(text, roLTR), roLTR);
    return ResolveReadingOrder(text, roContext) == roRTL ? "RTL" : "LTR";
  };
  ExpectCases("core/cell_formats.tsv", {{"slot", slot}, {"tint", Tinted}, {"code", code}, {"order", order}});
  EXPECT_TRUE(TextHasStrongRtl(u"abc \u05D0"));
  EXPECT_FALSE(TextHasStrongRtl(u"abc"));
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
  styles.RegisterNumFmt(4, u"0.0");
  styles.RegisterNumFmt(164, u"x");
  styles.RegisterNumFmt(164, u"y");
  EXPECT_EQ(styles.GetNumFmt(4), u"0.0");
  EXPECT_EQ(styles.GetNumFmt(164), u"y");
}

}  // namespace
}  // namespace tessarine
