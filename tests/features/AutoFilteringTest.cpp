#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/features/AutoFiltering.h>

#include "../support/SheetFixture.h"

namespace tessarine {
namespace {

using testing::TSheetFixture;

std::string HiddenRows(const TWorksheet& ASheet, int32_t ALast) {
  std::string rows;
  for (int32_t row = 1; row <= ALast; ++row)
    if (ASheet.Sizing().IsRowHidden(row)) rows += std::to_string(row) + " ";
  return rows;
}

std::string Joined(const std::vector<TText>& ATexts) {
  std::string text;
  for (const TText& item : ATexts) text += item.ToUtf8() + "|";
  return text;
}

TEST(AutoFiltering, HidesWhatTheCriteriaReject) {
  const struct {
    const char16_t* Contains;
    std::vector<TText> Values;
    bool MatchCase;
    const char* Hidden;  // of rows 1 to 8; row 4 was hidden by hand
  } cases[] = {
      {u"", {u"1,234"}, false, "3 4 5 6 7 "},    {u"", {}, false, "2 3 4 5 6 7 "},
      {u"", {u"XABY"}, true, "2 4 5 6 7 "},      {u"", {u"", u"#N/A"}, false, "2 3 4 6 "},
      {u"AB", {}, false, "2 4 5 6 7 "},          {u"AB", {u"1,234"}, true, "2 3 4 5 6 7 "},
      {u"ab", {u"nothing"}, true, "2 4 5 6 7 "}, {u"a", {}, false, "2 4 5 "},
  };
  for (const auto& row : cases) {
    TSheetFixture book({{"B1", "'Head"}, {"B2", "1234"}, {"B3", "'xaby"}, {"B4", "1"}, {"B6", "=A1"}, {"B7", "#N/A"}});
    TCell number = book.Sheet().GetCell({2, 2});
    TCellFormat format;
    format.NumberFormat = u"#,##0";
    number.StyleIndex = book.Workbook.StyleSheet().AddCellXf(format);
    book.Sheet().SetCell({2, 2}, number);
    book.Sheet().Sizing().SetRowHidden(2, true);
    TSheetAutoFilter& filter = book.Sheet().AutoFilter();
    filter.Enable({2, 1, 3, 7});
    filter.SetColumnValues(2, row.Values, row.MatchCase);
    if (*row.Contains) filter.SetColumnContains(2, row.Contains, row.MatchCase);
    filter.SetColumnValues(9, {}, false);  // outside the range
    book.Workbook.ClearModified();
    ApplyAutoFilter(book.Sheet(), &book.Workbook.StyleSheet());
    EXPECT_EQ(HiddenRows(book.Sheet(), 8), row.Hidden) << TText(row.Contains).ToUtf8();
    EXPECT_FALSE(book.Workbook.IsModified());
    DisableAutoFilter(book.Sheet());
    EXPECT_EQ(HiddenRows(book.Sheet(), 8), "");
    EXPECT_FALSE(filter.IsEnabled());
  }
}

TEST(AutoFiltering, CollectsTheFirstSpellingOfEachText) {
  TSheetFixture book({{"A1", "'Head"}, {"A2", "'b"}, {"A3", "'A"}, {"A4", "'a"}, {"A6", "10"}, {"A7", "9"}});
  book.Sheet().AutoFilter().Enable({1, 1, 1, 7});
  EXPECT_EQ(Joined(CollectAutoFilterValues(book.Sheet(), nullptr, 1)), "|10|9|A|b|");
  EXPECT_EQ(Joined(CollectAutoFilterValues(book.Sheet(), nullptr, -4)), "|");
  book.Sheet().AutoFilter().Clear();
  EXPECT_TRUE(CollectAutoFilterValues(book.Sheet(), nullptr, 1).empty());
}

TEST(AutoFiltering, LeavesRowsOutsideTheSheetAlone) {
  for (const TCellRange& range : {TCellRange{1, 1, 1, 0x7FFFFFFF}, TCellRange{1, kMaxRow + 5, 1, kMaxRow + 9}}) {
    TSheetFixture book;
    TAutoFilterState state;
    state.Active = true;
    state.Range = range;
    state.Columns[1] = {1, true, {}, {}, false, false};
    book.Sheet().AutoFilter().RestoreState(state);
    ApplyAutoFilter(book.Sheet(), nullptr);
    EXPECT_EQ(book.Sheet().Sizing().IsRowHidden(kMaxRow), range.StartRow == 1);
    EXPECT_FALSE(book.Sheet().Sizing().IsRowHidden(kMaxRow + 6));
  }
}

TEST(AutoFiltering, ColumnsOutsideTheSheetShowNothing) {
  TSheetFixture book;
  TSheetAutoFilter& filter = book.Sheet().AutoFilter();
  filter.Enable({1, 1, kMaxCol + 9, kMaxRow});
  const std::vector<TText> many(20000, u"x");  // row by row this would take minutes
  for (const bool takesBlanks : {false, true}) {
    std::vector<TText> values = many;
    if (takesBlanks) values.push_back({});
    filter.SetColumnValues(kMaxCol + 1, values, false);
    ApplyAutoFilter(book.Sheet(), nullptr);
    for (const int32_t row : {2, 700, kMaxRow}) EXPECT_EQ(book.Sheet().Sizing().IsRowHidden(row), !takesBlanks) << row;
  }
}

/// A sheet of anything that shows a text, with some texts spelled in several ways.
void FillAtRandom(TSheetFixture& ABook, std::mt19937& ARandom) {
  const char16_t* const codes[] = {u"0.0", u"#,##0", u"[>2]\"big\";0"};
  std::vector<int32_t> styles{0};
  for (const char16_t* code : codes) {
    TCellFormat format;
    format.NumberFormat = code;
    styles.push_back(ABook.Workbook.StyleSheet().AddCellXf(format));
  }
  for (int i = 0; i < 900; ++i) {
    TCell cell;
    switch (ARandom() % 6) {
      case 0:
      case 1: cell.Value = TCellValue::FromNumber(static_cast<double>(ARandom() % 6) / 2); break;
      case 2: cell.Value = TCellValue::FromText(std::u16string(1 + ARandom() % 2, u"aAbB1"[ARandom() % 5])); break;
      case 3:
        cell.Value = TCellValue::FromFormula(u"=1+1");
        if (ARandom() % 2 == 0) cell.SetCachedResult(TCellValue::FromNumber(ARandom() % 4));
        break;
      case 4: cell.Value = TCellValue::FromBoolean(true); break;
      default: break;
    }
    cell.StyleIndex = styles[ARandom() % styles.size()];
    if (ARandom() % 20 == 0) cell.RichText = {{u"Ab", {}}};
    ABook.Sheet().SetCell({static_cast<int32_t>(1 + ARandom() % 3), static_cast<int32_t>(1 + ARandom() % 600)}, cell);
  }
}

TEST(AutoFiltering, FastWaysEqualPlainOnes) {
  std::mt19937 random(23);
  const std::vector<TText> texts{u"", u"0", u"A", u"bb", u"1.0", u"BIG", u"1.5", u"true", u"=1+1", u"AB", u"2"};
  for (int round = 0; round < 60; ++round) {
    TSheetFixture book;
    FillAtRandom(book, random);
    TWorksheet& sheet = book.Sheet();
    TSheetViewOptions view = sheet.View();
    view.ShowZeros = random() % 2 == 0;
    view.ShowFormulas = random() % 4 == 0;
    sheet.SetView(view);
    if (round % 3 == 0) {
      book.Set("B640", "=SEQUENCE(9,1,0)");
      book.Run("B640");
      ASSERT_FALSE(sheet.Spills().IsEmpty());
    }
    const auto first = static_cast<int32_t>(1 + random() % 300);
    sheet.AutoFilter().Enable({1, first, 3, first + static_cast<int32_t>(random() % 400)});
    for (int32_t col = 1; col <= 3; ++col) {
      std::vector<TText> kept;
      for (const TText& text : texts)
        if (random() % 3 != 0) kept.push_back(text);
      if (random() % 3 != 0) sheet.AutoFilter().SetColumnValues(col, kept, false);
      if (random() % 6 == 0) sheet.AutoFilter().SetColumnContains(col, texts[1 + random() % 10], random() % 2 == 0);
      EXPECT_EQ(Joined(CollectAutoFilterValues(sheet, &book.Workbook.StyleSheet(), col)),
                Joined(CollectAutoFilterValuesPlain(sheet, &book.Workbook.StyleSheet(), col)));
    }
    ApplyAutoFilter(sheet, &book.Workbook.StyleSheet());
    const std::string fast = HiddenRows(sheet, 720);
    ApplyAutoFilterPlain(sheet, &book.Workbook.StyleSheet());
    ASSERT_EQ(fast, HiddenRows(sheet, 720)) << round;
  }
}

}  // namespace
}  // namespace tessarine
