#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/features/Sorting.h>
#include <tessarine/features/detail/SortOrder.h>
#include <tessarine/platform/Errors.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"
#include "../support/Thrown.h"

namespace tessarine {
namespace {

using testing::TSheetFixture;
using TKeys = std::vector<TSheetSortKey>;

void Sort(TSheetFixture& ABook, const char* ARange, bool AHasHeader, const TKeys& AKeys) {
  TessarineSortRange(&ABook.Workbook, &ABook.Sheet(), ARange, AHasHeader, AKeys);
}

TEST(Sorting, ComparesNumbersAsNumbersAndTheRestAsShown) {
  test::ExpectCases("features/sorts.tsv", [](const test::TCase& ACase) {
    TSheetFixture book;
    book.SetCells(ACase[0]);
    TKeys keys;
    std::istringstream words(ACase[3]);
    std::string way;
    for (int32_t col = 0; words >> col >> way;) keys.push_back({col, way == "up"});
    Sort(book, ACase[1].c_str(), ACase[2] == "header", keys);
    return book.Show(ACase[4]);
  });
}

TEST(Sorting, MovesFormulasAndIsOneStepOrNone) {
  TSheetFixture book({{"A1", "2"}, {"B1", "=A1*$D$1+C2"}, {"A2", "1"}, {"B2", "'x"}, {"D1", "3"}});
  book.Run("B1");
  const TCell before = book.Sheet().GetCell({2, 1});
  book.Workbook.ClearModified();
  Sort(book, "A1:B2", false, {{1, false}});
  EXPECT_FALSE(book.Workbook.IsModified());
  EXPECT_FALSE(book.Workbook.UndoManager().CanUndo());
  Sort(book, "A1:B2", false, {{1, true}});
  EXPECT_EQ(book.Show("A1 B1 A2"), "1 'x' 2");
  EXPECT_EQ(book.Sheet().GetCell({2, 2}).Value.Formula().ToUtf8(), "=A2*$D$1+C3");
  EXPECT_FALSE(book.Sheet().GetCell({2, 2}).HasCachedValue);
  EXPECT_EQ(book.Workbook.UndoManager().NextUndo()->Description(), u"Sort");
  book.Workbook.UndoManager().Undo();
  EXPECT_EQ(book.Sheet().GetCell({2, 1}), before);
  EXPECT_EQ(book.Show("A1 A2 B2"), "2 1 'x'");
}

TEST(Sorting, RefusesWithAMessage) {
  TSheetFixture book({{"A1", "2"}, {"A2", "1"}});
  TWorkbook other;
  TWorksheet& sheet = book.Sheet();
  const TKeys keys{{1, true}};
  EXPECT_EQ(test::Thrown([&] { TessarineSortRange(nullptr, &sheet, "A1:A2", false, keys); }),
            "other: SortRange: missing workbook/sheet");
  EXPECT_EQ(test::Thrown([&] { TessarineSortRange(&other, &sheet, "A1:A2", false, keys); }),
            "other: SortRange: missing workbook/sheet");
  EXPECT_EQ(test::Thrown([&] { Sort(book, "A1:A2", false, {}); }), "other: SortRange: no sort keys");
  EXPECT_EQ(test::Thrown([&] { Sort(book, "A0:??", false, keys); }), "other: Invalid range: A0:??");
  Sort(book, "A1:XFD2", false, keys);
  EXPECT_EQ(book.Show("A1 A2"), "1 2");
  book.Set("XFD9", "1");
  EXPECT_THROW(Sort(book, "A1:XFD1048576", false, keys), ELimit);
  EXPECT_EQ(book.Show("A1 A2 XFD9"), "1 2 1");
}

TEST(Sorting, FastOrdersEqualPlainOnesEvenInCircles) {
  std::mt19937 random(11);
  for (int round = 0; round < 120; ++round) {
    TSheetFixture book;
    TCellFormat percent;
    percent.NumberFormat = u"0%";
    const int32_t style = book.Workbook.StyleSheet().AddCellXf(percent);
    constexpr int32_t kRows = 70;
    for (int32_t col = 1; col <= 3; ++col) {
      const uint32_t kinds = 1 + random() % 6;  // few kinds: numbers alone, then texts too, then all there is
      for (int32_t row = 1; row <= kRows; ++row) {
        TCell cell;
        const double number = static_cast<double>(random() % 12) - 4;
        switch (random() % kinds + (round % 3 == 0 ? 1 : 0)) {
          case 0: cell.Value = TCellValue::FromNumber(number == 0 ? -0.0 : number); break;
          case 1: cell.Value = TCellValue::FromText(std::u16string(1 + random() % 3, u"aBbZ_"[random() % 5])); break;
          case 2: cell.Value = TCellValue::FromText(TText::FromUtf8(std::to_string(random() % 30) + "a")); break;
          case 3:
            cell.Value = TCellValue::FromFormula(u"=1");
            if (random() % 2 == 0) cell.SetCachedResult(TCellValue::FromNumber(number));
            break;
          case 4: cell.Value = TCellValue::FromNumber(random() % 9 == 0 ? std::nan("") : number / 10); break;
          case 5: cell.Value = TCellValue::FromText(TText::FromUtf8(std::to_string(random() % 15))); break;
          default: break;
        }
        if (random() % 4 == 0) cell.StyleIndex = style;
        book.Sheet().SetCell({col, row}, cell);
      }
    }
    const TKeys keys{{static_cast<int32_t>(1 + random() % 3), random() % 2 == 0},
                     {static_cast<int32_t>(1 + random() % 3), random() % 2 == 0}};
    ASSERT_EQ(detail::SortedRows(book.Sheet(), &book.Workbook.StyleSheet(), 2, kRows, keys),
              detail::SortedRowsPlain(book.Sheet(), &book.Workbook.StyleSheet(), 2, kRows, keys))
        << round;
  }
}

}  // namespace
}  // namespace tessarine
