#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/api/detail/RangeEdits.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Unicode.h>

#include "ApiFixture.h"

namespace tessarine {
namespace {

using testing::FailureOf;
using testing::NotationOf;
using testing::TApiFixture;

/// The rows of A1:D4, "." for an empty cell.
std::string Grid(TApiFixture& ABook, const std::function<std::string(const TCell&)>& AShow) {
  std::string text;
  for (int32_t row = 1; row <= 4; ++row) {
    for (int32_t col = 1; col <= 4; ++col) text += AShow(ABook.Sheet().GetCellAt(col, row));
    text += row < 4 ? " " : "";
  }
  return text;
}

std::string ShowSides(const TCell& ACell) {
  const TCellBorderInfo& border = ACell.FormatOverride.Border;
  const int sides = (border.Left.Style != blsNone ? 1 : 0) + (border.Top.Style != blsNone ? 2 : 0) +
                    (border.Right.Style != blsNone ? 4 : 0) + (border.Bottom.Style != blsNone ? 8 : 0);
  return ACell.HasFormatOverride ? std::string(1, "0123456789abcdef"[sides]) : ".";
}

TEST(SheetRange, ValuesAreLaidFromTheTopLeftCell) {
  const auto show = [](const TCell& ACell) { return ACell.IsEmpty() ? "." : NotationOf(ACell.Value); };
  const struct {
    const char* Range;
    TSheetRows Values;
    const char* Grid;
  } cases[] = {
      {"B2:C3", {{1, 2}, {3, 4}}, ".... .12. .34. ...9"},
      {"B2:C3", {{1, 2, 5}, {3, 4, 5}, {5, 5, 5}}, ".... .12. .34. ...9"},
      {"B2:D4", {{1}, {}, {3, nullptr, nullptr}}, ".... .1.. .... .3.."},
      {"D4", {{"a", "b"}}, ".... .... .... ...'a'"},
      {"A1:A1", {}, ".... .... .... ...9"},
  };
  for (const auto& row : cases) {
    TApiFixture book{{"D4", "9"}};
    book.Cells(row.Range).SetValues(row.Values);
    EXPECT_EQ(Grid(book, show), row.Grid) << row.Range;
  }
  TApiFixture book;
  book.Cells("A1:B2").SetFontBold(true).SetFormulas({{"1+1", " =A1 "}, {u"", 5}, {"9"}});
  EXPECT_EQ(book.Show("A1 B1 A2 B2 A3"), "_ _ _ _ _");
  EXPECT_EQ(Grid(book,
                 [](const TCell& ACell) {
                   return ACell.Value.Kind != cvkFormula ? "." : "[" + ACell.Value.Text.ToUtf8() + "]";
                 }),
            "[=1+1][=A1].. [][=5].. .... ....");
  EXPECT_TRUE(book.Cell("B2").FontBold());
}

TEST(SheetRange, SettersReachEveryCellAndGettersTheFirst) {
  TApiFixture book{{"B2", "=9"}, {"A1", "5"}};
  const TSheetRangeRef range = book.Cells("A1:B2");
  EXPECT_EQ(range.Value(), TSheetValue(5));
  range.SetValue("x").SetFontSize(20).SetWrapText(true);
  EXPECT_EQ(book.Show("A1 B1 A2 B2"), "'x' 'x' 'x' 'x'");
  EXPECT_EQ(book.Cell("B2").FontSize(), 20);
  EXPECT_TRUE(book.Cell("B1").WrapText());
  book.Cell("A1").SetFontSize(8);
  EXPECT_EQ(range.FontSize(), 8);
  range.SetFormula("A9");
  EXPECT_EQ(book.Cell("B2").Formula(), u"=A9") << "the same text in every cell";
  std::string visited;
  range.ForEachCell([&](TSheetCellRef ACell) { visited += Utf16ToUtf8(ACell.Address().ToA1()) + " "; });
  EXPECT_EQ(visited, "A1 B1 A2 B2 ");
}

TEST(SheetRange, BordersFollowTheEdges) {
  const struct {
    const char* Range;
    bool Inside;
    const char* Grid;  // the sum of left 1, top 2, right 4, bottom 8
  } cases[] = {
      {"A1:C3", false, "326. 1.4. 98c. ...."}, {"A1:C3", true, "cd9. efb. 673. ...."},
      {"B2", false, ".... .f.. .... ...."},    {"B2", true, ".... .... .... ...."},
      {"B2:B4", false, ".... .7.. .5.. .d.."}, {"B2:B4", true, ".... .8.. .a.. .2.."},
      {"A1:B2", true, "c9.. 63.. .... ...."},  {"A1:D1", true, "4551 .... .... ...."},
  };
  for (const auto& row : cases) {
    TApiFixture book;
    if (row.Inside) {
      book.Cells(row.Range).BorderInside(blsThin);
    } else {
      book.Cells(row.Range).BorderAround(blsThin);
    }
    EXPECT_EQ(Grid(book, ShowSides), row.Grid) << row.Range << row.Inside;
  }
}

TEST(SheetRange, MergesTakeTheirPlace) {
  TApiFixture book;
  const auto merges = [&] {
    std::string text;
    for (const TMergedRange& merge : book.Sheet().Merges()) text += Utf16ToUtf8(merge.AsRange().ToA1()) + " ";
    return text;
  };
  book.Cells("A1:B2").Merge();
  book.Cells("D1:E1").Merge();
  book.Cells("C3").Merge();
  EXPECT_EQ(merges(), "A1:B2 D1:E1 ");
  book.Cells("B2:C4").Merge();
  EXPECT_EQ(merges(), "D1:E1 B2:C4 ");
  book.Cells("A4:B9").Unmerge();
  EXPECT_EQ(merges(), "D1:E1 ");
}

TEST(SheetRange, WholeColumnsAreClearedButNotFilledBeyondTheLimit) {
  TApiFixture book{{"A1", "1"}, {"C9", "2"}};
  book.Cells("A1:XFD1048576").ClearContents();
  EXPECT_EQ(book.Sheet().Store().CellCount(), 0U);
  EXPECT_EQ(book.Sheet().UsedMaxRow(), kMaxRow) << "as a clear of every cell leaves it";
  const std::string refusal = "limit: A1:XFD1048576 has 17179869184 cells; at most 16777216 can be written at once";
  EXPECT_EQ(FailureOf([&] { book.Cells("A1:XFD1048576").SetFontBold(true); }), refusal);
  EXPECT_EQ(FailureOf([&] { book.Cells("A1:XFD1048576").BorderInside(blsThin); }), refusal);
  EXPECT_EQ(book.Sheet().Store().CellCount(), 0U);
}

TEST(SheetRange, EditsTellEachCellRowByRow) {
  TApiFixture book{{"B1", "7"}};
  std::string told;
  book.Sheet().SetOnChange([&](TWorksheet&, TCellAddress AAddress, const TCell& AOld, const TCell& ANew) {
    told += Utf16ToUtf8(AAddress.ToA1()) + ":" + NotationOf(AOld.Value) + ">" + NotationOf(ANew.Value) + " ";
  });
  book.Cells("A1:B2").SetValue(3);
  EXPECT_EQ(told, "A1:_>3 B1:7>3 A2:_>3 B2:_>3 ");
  told.clear();
  book.Cells("B2:C2").ClearContents();
  EXPECT_EQ(told, "B2:3>_ C2:_>_ ");
  book.Sheet().SetOnChange({});
  int marked = 0;
  book.Workbook.SetOnModified([&](TWorkbook&) { ++marked; });
  book.Cells("A1:B2").SetFontBold(true);
  EXPECT_EQ(marked, 4);
}

/// Random contents, edited once cell by cell and once as a whole.
TEST(SheetRange, WholeEditsEqualEditsCellByCell) {
  const std::function<void(TCell&)> edits[] = {
      [](TCell& ACell) { detail::PutValue(ACell, TCellValue::FromNumber(4)); },
      [](TCell& ACell) { detail::PutValue(ACell, TCellValue::FromText(u"t")); },
      [](TCell& ACell) { detail::PutValue(ACell, TCellValue::FromFormula(u"=A1+$B$2")); },
      [](TCell& ACell) { detail::PutValue(ACell, TCellValue::Empty()); },
      [](TCell& ACell) { detail::EnsureFormat(ACell).Font.Bold = true; },
      [](TCell& ACell) { detail::EnsureFormat(ACell).NumberFormat = u"0.00"; },
      [](TCell& ACell) { detail::ClearFormatsOf(ACell); },
      [](TCell& ACell) { ACell.RichText.clear(); },
      [](TCell& ACell) {
        ACell.RichText = {{u"r", {}}};
      },
      [](TCell& ACell) { ACell.StyleIndex = 2; },
  };
  const std::function<void(TCellFormat&)> formatEdits[] = {
      [](TCellFormat& AFormat) { AFormat.Font.Bold = !AFormat.Font.Bold; },
      [](TCellFormat& AFormat) { AFormat.Font.Size += 1; },
      [](TCellFormat& AFormat) { AFormat = TCellFormat::Default(); },
  };
  std::mt19937 random(7);
  const auto below = [&](uint32_t ALimit) { return static_cast<int32_t>(random() % ALimit); };
  for (int round = 0; round < 60; ++round) {
    TApiFixture fast;
    TApiFixture plain;
    for (int step = 0; step < 16; ++step) {
      const int32_t col = 1 + below(5);
      const int32_t row = 250 + below(12);
      const TCellRange range{col, row, col + below(3), row + below(6)};
      if (below(3) == 0) {
        const auto& edit = formatEdits[static_cast<size_t>(below(std::size(formatEdits)))];
        detail::EditFormats(fast.Sheet(), range, edit);
        detail::EditFormatsPlain(plain.Sheet(), range, edit);
        continue;
      }
      const int32_t number = below(std::size(edits));
      if (number < 4 && below(2) == 0) {
        TCell written;
        edits[number](written);
        detail::WriteRange(fast.Sheet(), range, written.Value);
      } else {
        detail::EditRange(fast.Sheet(), range, edits[number]);
      }
      detail::EditRangePlain(plain.Sheet(), range, edits[number]);
      if (below(4) == 0) {
        fast.Sheet().StoreCachedResult({col, row}, TCellValue::FromNumber(1));
        plain.Sheet().StoreCachedResult({col, row}, TCellValue::FromNumber(1));
      }
    }
    ASSERT_EQ(fast.Sheet().Store().CellCount(), plain.Sheet().Store().CellCount());
    ASSERT_EQ(fast.Sheet().UsedMaxRow(), plain.Sheet().UsedMaxRow());
    ASSERT_EQ(fast.Sheet().UsedMaxCol(), plain.Sheet().UsedMaxCol());
    for (int32_t row = 250; row < 270; ++row) {
      for (int32_t col = 1; col <= 8; ++col)
        ASSERT_EQ(fast.Sheet().GetCellAt(col, row), plain.Sheet().GetCellAt(col, row)) << round;
    }
  }
}

}  // namespace
}  // namespace tessarine
