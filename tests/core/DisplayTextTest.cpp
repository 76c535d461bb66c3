#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

namespace tessarine {
namespace {

struct TDisplayFixture : testing::Test {
  TWorkbook Book;
  TWorksheet& Sheet = *Book.GetSheet(0);
  TTessarineStyleSheet& Styles = Book.StyleSheet();

  int32_t Style(const char16_t* ANumberFormat) {
    TCellFormat format;
    format.NumberFormat = ANumberFormat;
    return Styles.AddCellXf(format);
  }

  TCell& Put(int32_t ARow, const TCellValue& AValue, const char16_t* ANumberFormat = u"General") {
    FCell = TCell();
    FCell.Value = AValue;
    FCell.StyleIndex = Style(ANumberFormat);
    Sheet.SetCell({1, ARow}, FCell);
    return FCell;
  }

  void PutFormula(int32_t ARow, const TCellValue& AResult, const char16_t* ANumberFormat) {
    TCell cell = Put(ARow, TCellValue::FromFormula(u"=B1"), ANumberFormat);
    cell.SetCachedResult(AResult);
    Sheet.SetCell({1, ARow}, cell);
  }

  std::string Shown(int32_t ARow, int32_t ACol = 1) {
    std::u16string appended = u"|";
    Sheet.AppendDisplayText({ACol, ARow}, &Styles, appended);
    const TText shown = Sheet.GetDisplayText({ACol, ARow}, &Styles);
    EXPECT_EQ(std::u16string(u"|") + shown.ToString(), appended);
    return shown.ToUtf8();
  }

 private:
  TCell FCell;
};

using DisplayText = TDisplayFixture;

TEST_F(DisplayText, NumbersTakeTheirFormatAndNothingElseDoes) {
  Put(1, TCellValue::FromNumber(1234.5), u"#,##0.00");
  Put(2, TCellValue::FromText(u"12"), u"0.00");
  Put(3, TCellValue::FromBoolean(true), u"0.00");
  Put(4, TCellValue::FromError(ceDiv0), u"0.00");
  Put(5, TCellValue::FromFormula(u"=B1"), u"0.00");
  PutFormula(6, TCellValue::FromNumber(2), u"0.00");
  PutFormula(7, TCellValue::FromText(u"12"), u"0.00");
  PutFormula(8, TCellValue::Empty(), u"0.00");
  PutFormula(9, TCellValue::FromBoolean(false), u"0.00");
  Put(10, TCellValue::Empty(), u"0.00");
  const char* const expected[] = {"1,234.50", "12", "TRUE", "#DIV/0!", "=B1", "2.00", "12", "", "FALSE", "", ""};
  for (int32_t row = 1; row <= 11; ++row) EXPECT_EQ(Shown(row), expected[row - 1]) << row;
  EXPECT_EQ(Sheet.GetDisplayText({1, 1}, nullptr), u"1234.5");
  EXPECT_EQ(Shown(0), "");
  EXPECT_EQ(Shown(kMaxRow + 1), "");
}

TEST_F(DisplayText, OverrideDecidesTheFormat) {
  TCell cell = Put(1, TCellValue::FromNumber(0.5), u"0.00");
  cell.HasFormatOverride = true;
  cell.FormatOverride.NumberFormat = u"0%";
  Sheet.SetCell({1, 1}, cell);
  EXPECT_EQ(Shown(1), "50%");
}

TEST_F(DisplayText, RunsStandBeforeTheValueAndFormulasBeforeBoth) {
  TCell cell = Put(1, TCellValue::FromNumber(5));
  cell.RichText = {{u"a", {}}, {u"", {}}, {u"b", {}}};
  Sheet.SetCell({1, 1}, cell);
  EXPECT_EQ(Shown(1), "ab");
  cell.RichText = {{u"", {}}};
  Sheet.SetCell({1, 1}, cell);
  EXPECT_EQ(Shown(1), "5");
  cell.Value = TCellValue::FromFormula(u"=2+3");
  cell.RichText = {{u"runs", {}}};
  Sheet.SetCell({1, 1}, cell);
  EXPECT_EQ(Shown(1), "runs");
  Sheet.SetView([&] {
    TSheetViewOptions view = Sheet.View();
    view.ShowFormulas = true;
    return view;
  }());
  EXPECT_EQ(Shown(1), "=2+3");
  Put(2, TCellValue::FromNumber(5));
  EXPECT_EQ(Shown(2), "5");
}

TEST_F(DisplayText, ZerosHideWhereTheSheetWantsIt) {
  Put(1, TCellValue::FromNumber(0), u"0.00");
  PutFormula(2, TCellValue::FromNumber(0), u"0.00");
  Put(3, TCellValue::FromText(u"0"), u"0.00");
  Put(4, TCellValue::FromBoolean(false), u"0.00");
  Put(5, TCellValue::FromNumber(0.001), u"0.00");
  PutFormula(6, TCellValue::FromNumber(1e-13), u"0.00");
  Put(7, TCellValue::Empty(), u"0.00");
  Sheet.Spills().SetSpill(1, 100, 3, 1,
                          {TCellValue::FromNumber(1), TCellValue::FromNumber(0), TCellValue::FromNumber(4)});
  const int32_t rows[] = {1, 2, 3, 4, 5, 6, 7, 101, 102};
  const auto all = [&] {
    std::vector<std::string> texts;
    for (const int32_t row : rows) texts.push_back(Shown(row));
    return texts;
  };
  EXPECT_EQ(all(), (std::vector<std::string>{"0.00", "0.00", "0", "FALSE", "0.00", "0.00", "", "0", "4"}));
  TSheetViewOptions view;
  view.ShowZeros = false;
  Sheet.SetView(view);
  EXPECT_EQ(all(), (std::vector<std::string>{"", "", "0", "FALSE", "0.00", "", "", "", "4"}));
}

TEST_F(DisplayText, SpilledValuesShowInTheFormatOfTheCellBelow) {
  Put(3, TCellValue::Empty(), u"0.0");
  Sheet.Spills().SetSpill(1, 2, 1, 2, {TCellValue::FromNumber(1), TCellValue::FromText(u"t")});
  Sheet.Spills().SetSpill(
      1, 1, 4, 1,
      {TCellValue::FromNumber(1), TCellValue::FromNumber(2), TCellValue::FromNumber(3), TCellValue::FromBoolean(true)});
  EXPECT_EQ(Shown(3), "3.0");
  EXPECT_EQ(Shown(4), "TRUE");
  EXPECT_EQ(Shown(2, 2), "t");
  EXPECT_EQ(Shown(1), "");
}

TEST_F(DisplayText, ColumnsFitTheirLongestText) {
  const auto fitted = [&](double AMin, double AMax) {
    Sheet.AutoFitColumns(&Styles, AMin, AMax);
    std::vector<double> widths;
    for (int32_t col = 1; col <= Sheet.UsedMaxCol(); ++col) widths.push_back(Sheet.Sizing().GetColWidthChars(col));
    return widths;
  };
  const auto text = [](size_t ALength) { return TCellValue::FromText(TText(std::u16string(ALength, u'x'))); };
  Sheet.SetValue({1, 1}, text(100));
  Sheet.SetValue({3, 600}, text(10));
  TCell bold;
  bold.Value = text(20);
  bold.HasFormatOverride = true;
  bold.FormatOverride.Font.Bold = true;
  bold.FormatOverride.Font.Size = 22;
  Sheet.SetCell({4, 2}, bold);
  bold.FormatOverride.Font.Bold = false;
  bold.FormatOverride.Font.Size = 1;
  Sheet.SetCell({5, 2}, bold);
  Sheet.Spills().SetSpill(6, 1, 2, 1, {TCellValue::FromNumber(1), text(30)});
  Sheet.ExpandUsedBounds(6, 2);
  EXPECT_EQ(fitted(0, 0), (std::vector<double>{48, 8.43, 12, 46, 17, 32}));
  EXPECT_EQ(fitted(15, 40), (std::vector<double>{40, 15, 15, 40, 17, 32}));
  Sheet.Sizing().SetDefaultColWidth(20);
  EXPECT_EQ(fitted(-1, 500), (std::vector<double>{102, 20, 20, 46, 20, 32}));
  Sheet.MergeRange({1, 1, 2, 1});      // wide: its anchor does not count
  Sheet.MergeRange({3, 599, 3, 600});  // what is under the anchor does not count
  Sheet.MergeRange({4, 2, 4, 3});      // high, not wide: the anchor counts
  EXPECT_EQ(fitted(1, 500), (std::vector<double>{1, 1, 1, 46, 17, 32}));
}

}  // namespace
}  // namespace tessarine
