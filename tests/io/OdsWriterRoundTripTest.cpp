#include <random>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/io/ods/OdsReader.h>
#include <tessarine/io/ods/detail/OdsCellLayers.h>

#include "OdsWriterSupport.h"

namespace tessarine {
namespace {

void Reload(TWorkbook& ABook, TWorkbook& ATarget) {
  const std::vector<std::byte> bytes = test::OdsBytes(ABook);
  TMemoryReadStream stream(bytes);
  TOdsReader::LoadFromStream(ATarget, stream);
}

TCell Formatted(double ANumber, const TCellFormat& AFormat) {
  TCell cell;
  cell.Value = TCellValue::FromNumber(ANumber);
  cell.HasFormatOverride = true;
  cell.FormatOverride = AFormat;
  return cell;
}

TEST(OdsRoundTrip, KeepsValuesFormulasAndTexts) {
  TWorkbook book;
  book.GetSheet(0)->SetName(u"It's one");
  TWorksheet& sheet = book.AddSheet(u"Two");
  const std::u16string texts[] = {
      u"plain", u" two  blanks ",          u"tab\there", u"a\r\nb", u"a\nb",      u"\r", u"<&>\"'",
      u"=x",    u"\u00E9\u4E2D\U0001F600", u"12",        u"TRUE",   u"\r\n\r\nx", u""};
  const double numbers[] = {0, -0.1, 1e-300, 1.7976931348623157e308, 0.1 + 0.2, 123456789012345678.0, 45292.75};
  const char16_t* formulas[] = {u"=A1+Two!B2*'It''s one'!$C$3",
                                u"=SUM(A1:B2,\"a,b;c\",{1,2;3,4},{1,2})",
                                u"=IF(A1>=2,\"[.A1]\",-1)",
                                u"=SUM('It''s one'!A1:B2)",
                                u"=1.5%",
                                u"=\"&amp;\"&A1"};
  int32_t row = 0;
  for (const auto& text : texts) sheet.SetValue({1, ++row}, TCellValue::FromText(text));
  for (const double number : numbers) sheet.SetValue({1, ++row}, TCellValue::FromNumber(number));
  sheet.SetValue({1, ++row}, TCellValue::FromBoolean(true));
  sheet.SetValue({1, ++row}, TCellValue::FromBoolean(false));
  for (const TCellErrorCode error : {ceDiv0, ceSpill}) sheet.SetValue({1, ++row}, TCellValue::FromError(error));
  const TCellValue results[] = {TCellValue::FromNumber(2.5),   TCellValue::FromText(u" x\ny"),
                                TCellValue::FromText(u""),     TCellValue::FromBoolean(true),
                                TCellValue::FromError(ceDiv0), {}};
  for (size_t i = 0; i < std::size(formulas); ++i) {
    TCell cell;
    cell.Value = TCellValue::FromFormula(formulas[i]);
    if (!results[i].IsEmpty()) cell.SetCachedResult(results[i]);
    sheet.SetCell({1, ++row}, cell);
  }
  TWorkbook loaded;
  Reload(book, loaded);
  ASSERT_EQ(loaded.SheetCount(), 2);
  EXPECT_EQ(loaded.GetSheet(0)->Name(), u"It's one");
  for (int32_t i = 1; i <= row; ++i) {
    const TCell before = sheet.GetCell({1, i});
    const TCell after = loaded.GetSheet(1)->GetCell({1, i});
    EXPECT_TRUE(before.Value == after.Value)
        << i << ": " << before.Value.ToDisplayString().ToUtf8() << " | " << after.Value.ToDisplayString().ToUtf8();
    EXPECT_TRUE(before.CachedValue == after.CachedValue && before.HasCachedValue == after.HasCachedValue) << i;
  }
}

TEST(OdsRoundTrip, KeepsFormats) {
  std::vector<TCellFormat> formats(18);
  formats[0].Font.Bold = formats[0].Font.Strikethrough = true;
  formats[1].Font.Italic = true;
  formats[1].Font.Underline = usDouble;
  formats[1].Font.Color = TColorRef::FromARGB(0xFF123456);
  formats[2].Font.Name = u"Liberation Sans";
  formats[2].Font.Size = 14.5f;
  formats[2].Font.Script = spSubscript;
  formats[3].Fill = TCellFillInfo::Solid(TColorRef::FromARGB(0xFFABCDEF));
  formats[4].Border.Left = {blsThin, TColorRef::FromARGB(0xFFFF0000)};
  formats[4].Border.Top = {blsMedium, TColorRef::FromARGB(0xFF000000)};
  formats[4].Border.Right = {blsDouble, TColorRef::FromARGB(0xFF000000)};
  formats[4].Border.Bottom = {blsDashed, TColorRef::FromARGB(0xFF00FF00)};
  formats[5].Border.Diagonal = {blsThick, TColorRef::FromARGB(0xFF0000FF)};
  formats[5].Border.DiagonalUp = true;
  formats[6].Alignment.Horizontal = haRight;
  formats[6].Alignment.Vertical = vaTop;
  formats[6].Alignment.WrapText = true;
  formats[7].Alignment.TextRotation = 45;
  formats[7].Alignment.ShrinkToFit = true;
  formats[8].Alignment.ReadingOrder = roRTL;
  formats[8].Alignment.MarginLeftCm = 0.5;
  formats[8].Alignment.PaddingRightCm = 0.25;
  formats[9].Locked = false;
  formats[10].Hidden = true;
  formats[11].Alignment.Horizontal = haJustify;
  formats[11].Alignment.Vertical = vaCenter;
  formats[12].Font.Size = 12.75f;
  formats[12].Font.Color = TColorRef::FromTheme(4, -0.25);
  formats[13].Fill = TCellFillInfo::Gradient(TColorRef::FromTheme(5, 0.4), TColorRef::FromARGB(0x80112233), 45);
  formats[14].Fill.BackgroundColor = TColorRef::FromARGB(kOpaqueBlack);
  formats[15].Border.Left = {blsHair, TColorRef::FromTheme(6, 0)};
  formats[15].Border.Right = {blsNone, TColorRef::FromARGB(0xFFC7C7C7)};
  formats[15].Border.Diagonal = {blsHair, TColorRef::FromTheme(1, 0.5)};
  formats[15].Border.DiagonalDown = true;
  formats[16].Alignment.Indent = 3;
  formats[16].Alignment.TextRotation = 135;
  formats[17].Alignment.Horizontal = haFill;
  formats[17].Alignment.TextRotation = 255;
  const char16_t* codes[] = {u"",
                             u"GENERAL",
                             u";;;",
                             u"\"ok\";-General;0;[Red]@",
                             u"_(* #,##0.00_);_(* \\(#,##0\\);\"-\"??;_(@_)",
                             u"YYYY/m/d;@",
                             u"0",
                             u"0.00",
                             u"#,##0",
                             u"#,##0.00",
                             u"0%",
                             u"0.0%",
                             u"0.0E+00",
                             u"@",
                             u"yyyy-mm-dd",
                             u"m/d/yyyy",
                             u"d mmmm yy",
                             u"h:mm:ss",
                             u"h:mm AM/PM",
                             u"[h]:mm",
                             u"0.0#",
                             u"000",
                             u"0;[Red]-0",
                             u"0;-0;\"zero\"",
                             u"0.00 \"kg\"",
                             u"#,##0.0,,",
                             u"$#,##0.00",
                             u"dddd, d mmm yyyy",
                             u"mm:ss.00",
                             u"# ?/8"};
  for (const char16_t* code : codes) formats.emplace_back().NumberFormat = code;
  TWorkbook book;
  book.Theme().ClearColors();
  for (uint32_t color = 1; color <= 12; ++color) book.Theme().AddColor(0xFF000000u + color * 0x101520);
  for (size_t i = 0; i < formats.size(); ++i)
    book.GetSheet(0)->SetCell({2, static_cast<int32_t>(i) + 1}, Formatted(1.5, formats[i]));
  TWorkbook loaded;
  Reload(book, loaded);
  EXPECT_TRUE(loaded.Theme() == book.Theme());
  for (size_t i = 0; i < formats.size(); ++i) {
    const TCellFormat format =
        loaded.GetSheet(0)->ResolveFormat({2, static_cast<int32_t>(i) + 1}, &loaded.StyleSheet());
    EXPECT_TRUE(format == formats[i]) << i << " " << formats[i].NumberFormat.ToUtf8() << " | "
                                      << format.NumberFormat.ToUtf8();
  }
}

TEST(OdsRoundTrip, KeepsWhatLiesOverCells) {
  TWorkbook book;
  book.AddSheet(u"Hidden").SetVisibility(svHidden);
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetProtected(true);
  sheet.MergeRange({2, 2, 4, 5});
  sheet.SetValue({3, 3}, TCellValue::FromText(u"covered"));
  sheet.SetValue({1, 9}, TCellValue::FromNumber(4));
  sheet.SetHyperlink(1, 9, u"https://example.org/?a=1&b=2");
  TCell rich;
  rich.HasFormatOverride = true;
  TCellFontInfo& own = rich.FormatOverride.Font;
  own.Underline = usDouble;
  own.Strikethrough = true;
  own.Script = spSubscript;
  rich.Value = TCellValue::FromText(u"red\n  bold\r\nasas");
  rich.RichText = {{u"red\n ", {}}, {u" bold\r\n", {}}, {u"as", own}, {u"as", own}};
  rich.RichText[0].Font.Color = TColorRef::FromARGB(0xFFFF0000);
  rich.RichText[1].Font.Bold = true;
  sheet.SetCell({6, 1}, rich);
  rich.RichText = {{rich.Value.Text, own}};
  sheet.SetCell({6, 2}, rich);
  rich.Value = TCellValue::FromText(u"a\r\nb");
  rich.RichText = {{u"a\r", {}}, {u"\nb", own}};
  sheet.SetCell({6, 3}, rich);
  TDataValidationRule rule;
  rule.Name = u"rule";
  rule.Ranges = {{9, 4, 300, 4}, {7, 1, 7, kMaxRow}};
  rule.ValidationType = dvtDecimal;
  rule.Operator = dvoGreaterEqual;
  rule.Formula1 = u"= $A$1";
  rule.ShowErrorMessage = true;
  rule.Error = u"two \r\n  lines\n\t";
  rule.ErrorStyle = dvesWarning;
  sheet.Validations().AddRule(rule);
  rule = {};
  rule.Name = u"list";
  rule.Ranges = {{1, 1, 2, 1}};
  rule.ValidationType = dvtList;
  rule.Formula1 = u"\"a,b c\"";
  rule.AllowBlank = rule.ShowInputMessage = true;
  rule.Prompt = u"pick";
  sheet.Validations().AddRule(rule);
  rule.Name = u"LIST";
  rule.Formula1 = u"rate";
  rule.Ranges = {{1, 2, 1, 2}};
  sheet.Validations().AddRule(rule);
  sheet.SetHyperlink(1, 30, u"#Sheet1!A1");
  sheet.SetValue({1, 20}, TCellValue::FromFormula(u"SEQUENCE(2,2)"));
  TCell anchor = sheet.GetCell({1, 20});
  anchor.SetCachedResult(TCellValue::FromNumber(1));
  sheet.SetCell({1, 20}, anchor);
  std::vector<TCellValue> values;
  for (int i = 1; i <= 4; ++i) values.push_back(TCellValue::FromNumber(i));
  sheet.Spills().SetSpill(1, 20, 2, 2, values);
  sheet.Sizing().SetColWidthChars(3, 20);
  sheet.Sizing().SetColHidden(5, true);
  sheet.Sizing().SetRowHeightPt(7, 30.1);
  sheet.Sizing().SetColWidthChars(4, 0);
  sheet.Sizing().SetDefaultColWidth(9.7);
  sheet.Sizing().SetDefaultRowHeight(12.3);
  sheet.Sizing().SetRowHidden(8, true);
  sheet.Tables().Add(u"Sales", {11, 1, 12, 9});
  sheet.AutoFilter().Enable({11, 1, 12, 9});
  book.SetNamedFormula(u"area", u"=Sheet1!$A$1:$B$2");
  book.SetNamedFormula(u"rate", u"=0.5*Sheet1!$A$1*{1,2}");
  book.GetSheet(1)->AutoFilter().Enable({1, 1, 2, 9});
  TWorkbook loaded;
  Reload(book, loaded);
  const TWorksheet& read = *loaded.GetSheet(0);
  EXPECT_TRUE(read.IsProtected() && !loaded.GetSheet(1)->IsProtected());
  ASSERT_EQ(read.Merges().Count(), 1u);
  EXPECT_EQ(read.Merges().GetItem(0).AsRange(), (TCellRange{2, 2, 4, 5}));
  EXPECT_EQ(read.GetEffectiveValue({3, 3}).Text, u"covered");
  EXPECT_EQ(read.FindHyperlink(1, 9), TText(u"https://example.org/?a=1&b=2"));
  EXPECT_EQ(read.GetEffectiveValue({1, 9}).Number, 4);
  EXPECT_EQ(read.GetCell({6, 3}).Value.Text, u"a\r\nb");
  for (const int32_t row : {1, 2}) EXPECT_TRUE(read.GetCell({6, row}).RichText == sheet.GetCell({6, row}).RichText);
  ASSERT_EQ(read.Validations().Count(), sheet.Validations().Count());
  for (size_t i = 0; i < sheet.Validations().Count(); ++i)
    EXPECT_TRUE(read.Validations().GetRule(i) == sheet.Validations().GetRule(i)) << i;
  EXPECT_FALSE(read.HasCell({2, 21}));
  EXPECT_EQ(read.GetEffectiveValue({2, 21}).Number, 4);
  EXPECT_EQ(read.FindHyperlink(1, 30), TText(u"#Sheet1!A1"));
  EXPECT_EQ(read.Sizing().GetColWidthChars(3), 20);
  EXPECT_EQ(read.Sizing().GetColWidthChars(4), 0);
  EXPECT_EQ(read.Sizing().GetColWidthChars(2), 9.7);
  EXPECT_EQ(read.Sizing().GetRowHeightPt(2), 12.3);
  EXPECT_FALSE(read.Sizing().HasCustomColWidth(2));
  EXPECT_TRUE(read.Sizing().IsColHidden(5));
  EXPECT_EQ(read.Sizing().GetRowHeightPt(7), 30.1);
  EXPECT_FALSE(read.Sizing().HasCustomRowHeight(2));
  EXPECT_TRUE(read.Sizing().IsRowHidden(8));
  ASSERT_EQ(read.Tables().Count(), 1u);
  EXPECT_EQ(read.Tables().GetItem(0).Ref(), (TCellRange{11, 1, 12, 9}));
  EXPECT_EQ(read.AutoFilter().Range(), (TCellRange{11, 1, 12, 9}));
  EXPECT_EQ(loaded.CopyNamedFormulas(), book.CopyNamedFormulas());
  EXPECT_EQ(loaded.GetSheet(1)->Visibility(), svHidden);
  EXPECT_TRUE(loaded.GetSheet(1)->AutoFilter().IsEnabled() && loaded.GetSheet(1)->Tables().IsEmpty());
}

TEST(OdsRoundTrip, KeepsDrawings) {
  TWorkbook book;
  TSheetDrawingList& list = book.GetSheet(0)->Drawings();
  const auto add = [&](TSheetDrawingKind AKind) -> TSheetDrawing& {
    auto drawing = std::make_unique<TSheetDrawing>();
    drawing->Kind = AKind;
    drawing->Anchor.Kind = dakAbsolute;
    drawing->Anchor.PosXEmu = 720000;
    drawing->Anchor.PosYEmu = 1080000;
    drawing->Anchor.ExtCxEmu = 3600000;
    drawing->Anchor.ExtCyEmu = 1800000;
    return *list.GetItem(list.Add(std::move(drawing)));
  };
  add(sdkPicture).SetImage(std::vector<std::byte>(20, std::byte{1}), u"image/gif");
  TSheetDrawing& shape = add(sdkShape);
  shape.PresetGeom = u"triangle";
  shape.Rotation = 30 * 60000;
  shape.FlipH = true;
  shape.FillColor = 0x102030;
  shape.Text = u"label";
  TSheetDrawing& line = add(sdkShape);
  line.PresetGeom = u"line";
  line.FlipV = true;
  line.HasFill = false;
  for (const TSheetChartType type :
       {sctColumn, sctBar, sctPie, sctLine, sctDoughnut, sctScatter, sctBubble, sctBubble}) {
    TSheetDrawing& chart = add(sdkChart);
    chart.ChartType = type;
    chart.Title = u"Title";
    chart.ChartValueAxis.Title = u"Mio & more";
    chart.ChartIs3D = type == sctBar;
    chart.Series.resize(1);
    chart.Series[0].Title = u"first";
    chart.Series[0].Values = {1, -2.5};
    if (type != sctScatter && type != sctBubble) {
      chart.Series[0].Categories = {u"x", u"y"};
      continue;
    }
    chart.Series[0].XValues = {3, 4};
    if (type == sctScatter) continue;
    chart.Series[0].Sizes = {5, 6};
    if (list.Count() % 2 == 0) continue;  // one has its own table, the other the sheet's cells
    chart.Series[0].ValuesFormula = u"Sheet1!$B$1:$B$2";
    chart.Series[0].XValuesFormula = u"Sheet1!$A$1:$A$2";
    chart.Series[0].SizesFormula = u"Sheet1!$C$1:$C$2";
  }
  TWorkbook loaded;
  Reload(book, loaded);
  const TSheetDrawingList& read = loaded.GetSheet(0)->Drawings();
  ASSERT_EQ(read.Count(), list.Count());
  for (int32_t i = 0; i < list.Count(); ++i) {
    const TSheetDrawing& was = *list.GetItem(i);
    const TSheetDrawing& is = *read.GetItem(i);
    EXPECT_TRUE(is.Kind == was.Kind && is.PresetGeom == was.PresetGeom && is.ImageBytes == was.ImageBytes) << i;
    EXPECT_TRUE(is.ContentType == was.ContentType && is.Text == was.Text && is.Title == was.Title) << i;
    EXPECT_TRUE(is.Rotation == was.Rotation && is.FlipH == was.FlipH && is.FlipV == was.FlipV)
        << i << " " << is.Rotation;
    EXPECT_TRUE(is.ChartType == was.ChartType && is.ChartIs3D == was.ChartIs3D) << i;
    EXPECT_EQ(is.ChartValueAxis.Title, was.ChartValueAxis.Title) << i;
    EXPECT_NEAR(static_cast<double>(is.Anchor.PosXEmu), static_cast<double>(was.Anchor.PosXEmu), 1000) << i;
    EXPECT_NEAR(static_cast<double>(is.Anchor.ExtCyEmu), static_cast<double>(was.Anchor.ExtCyEmu), 1000) << i;
    ASSERT_EQ(is.Series.size(), was.Series.size()) << i;
    if (was.Series.empty()) continue;
    EXPECT_EQ(is.Series[0].Values, was.Series[0].Values) << i;
    EXPECT_EQ(is.Series[0].XValues, was.Series[0].XValues) << i;
    EXPECT_EQ(is.Series[0].Sizes, was.Series[0].Sizes) << i;
    EXPECT_EQ(is.Series[0].SizesFormula, was.Series[0].SizesFormula) << i;
    EXPECT_EQ(is.Series[0].Categories, was.Series[0].Categories) << i;
    EXPECT_EQ(is.Series[0].Title, was.Series[0].Title) << i;
  }
  EXPECT_EQ(read.GetItem(1)->FillColor, 0x102030u);
}

TEST(OdsCellLayers, AgreeWithATestOfEveryRectangle) {
  std::mt19937 random(7);
  const auto pick = [&](int32_t AMost) { return static_cast<int32_t>(random() % static_cast<uint32_t>(AMost)) + 1; };
  for (int round = 0; round < 200; ++round) {
    std::vector<detail::TOdsLayer::TRect> rects;
    for (int32_t i = pick(12); i > 0; --i) {
      const TCellRange range{pick(9), pick(30), pick(9), pick(30)};
      rects.emplace_back(static_cast<uint32_t>(pick(20)), range.Normalize());
    }
    detail::TOdsLayer layer(rects, round % 2 == 0);
    for (int32_t row = pick(5); row <= 35; row += pick(3)) {
      std::string wanted;
      std::string found;
      for (int32_t col = 1; col <= 10; ++col) {
        uint32_t id = 99;
        for (const auto& [number, range] : rects)
          if (range.Contains(col, row)) id = std::min(id, number);
        wanted += std::to_string(id) + " ";
        id = 99;
        for (const detail::TOdsSpan& span : layer.MoveTo(row))
          if (span.From <= col && col <= span.To) id = span.Id;
        found += std::to_string(id) + " ";
      }
      EXPECT_EQ(found, wanted) << "round " << round << ", row " << row;
      EXPECT_GT(layer.NextChange(), row);
    }
  }
}

}  // namespace
}  // namespace tessarine
