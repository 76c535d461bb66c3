#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include <tessarine/core/undo/CellCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/core/undo/detail/CellBatch.h>
#include <tessarine/features/Fill.h>

#include "../support/CaseTable.h"
#include "../support/SheetFixture.h"

namespace tessarine {
namespace {

using testing::TSheetFixture;

TCellRange Range(const char* AText) { return TCellRange::FromA1(TTextArg(AText)); }

bool Fill(TSheetFixture& ABook, const TCellRange& ASource, const TCellRange& ADest, bool ACopyOnly = false) {
  return TessarineApplyFill(&ABook.Workbook, 0, &ABook.Sheet(), ASource, ADest, ACopyOnly, u"Fill");
}

TEST(Fill, ExamplesHold) {
  const auto fill = [](const test::TCase& ACase) {
    TSheetFixture book;
    book.SetCells(ACase[1]);
    EXPECT_TRUE(Fill(book, Range(ACase[2].c_str()), Range(ACase[3].c_str()), ACase[0] == "copy")) << ACase.Place();
    EXPECT_TRUE(book.Workbook.IsModified()) << ACase.Place();
    return book.Show(ACase[4]);
  };
  const auto direction = [](const test::TCase& ACase) {
    const auto found = TessarineFillDirectionOf(Range(ACase[1].c_str()), Range(ACase[2].c_str()));
    return found == tfdDown    ? "down"
           : found == tfdUp    ? "up"
           : found == tfdLeft  ? "left"
           : found == tfdRight ? "right"
                               : "none";
  };
  const auto drag = [](const test::TCase& ACase) {
    return TessarineComputeFillDest(Range("B2:C3"), ACase.Int(1), ACase.Int(2)).ToA1();
  };
  test::ExpectCases("features/fills.tsv", {{"fill", fill}, {"copy", fill}, {"direction", direction}, {"drag", drag}});
}

TEST(Fill, FormulasAreCopiesAndFormatsGoAlong) {
  TSheetFixture book({{"A1", "1"}, {"A2", "=A1+$B$1"}, {"C1", "1"}, {"C2", "2"}});
  book.Run("A2");
  TCell styled = book.Sheet().GetCell({3, 2});
  styled.StyleIndex = 4;
  styled.HasFormatOverride = true;
  styled.FormatOverride.NumberFormat = u"0.0";
  styled.RichText = {{u"two", {}}};
  book.Sheet().SetCell({3, 2}, styled);
  ASSERT_TRUE(Fill(book, Range("A1:C2"), Range("A1:C4")));
  const TCell formula = book.Sheet().GetCell({1, 4});
  EXPECT_EQ(formula.Value.Formula().ToUtf8(), "=A3+$B$1");
  EXPECT_FALSE(formula.HasCachedValue);
  EXPECT_EQ(book.Show("A3 C3"), "1 3");
  TCell wanted = styled;
  wanted.Value = TCellValue::FromNumber(4);
  EXPECT_EQ(book.Sheet().GetCell({3, 4}), wanted);
  ASSERT_TRUE(Fill(book, Range("A2"), Range("A1:A2")));
  EXPECT_EQ(book.Sheet().GetCell({1, 1}).Value.Formula().ToUtf8(), "=#REF!+$B$1");
}

TEST(Fill, RefusesWhatIsTooLargeOrHasNoDirection) {
  const TCellRange whole{1, 1, 1, kMaxRow};
  const struct {
    TCellRange Source, Dest;
    bool Done;
  } cases[] = {
      {{1, 1, 1, 1}, {1, 1, 1, 100000}, true},
      {{1, 1, 1, 1}, {1, 1, 1, 100001}, false},
      {{1, 1, 2, 2}, {1, 1, 2, 50001}, false},
      {whole, {1, 1, 2, kMaxRow}, false},
      {{1, 1, kMaxCol, 1}, {1, 1, kMaxCol, 2}, false},
      {{0, 1, 0, 1}, {0, 1, 0, 3}, false},
      {{2, 2, 2, 2}, {2, 2, 2, 2}, false},
      {{1, 1, 4096, 1}, {1, 1, 4096, kMaxRow}, false},
      {{1, 1, 1, 1}, {1, 1, 1, INT32_MAX}, false},
      {{1, 1, 1, 1}, {INT32_MIN, 1, INT32_MAX, 1}, false},
      {{1, 1, 16000, 1}, {1, 1000000, 16000, 1000000}, false},
      {{1, kMaxRow, 1, kMaxRow}, {1, kMaxRow, 1, kMaxRow + 2}, true},
  };
  for (const auto& row : cases) {
    TSheetFixture book({{"A1", "7"}});
    book.Workbook.ClearModified();
    EXPECT_EQ(Fill(book, row.Source, row.Dest), row.Done) << row.Source.ToA1().size() << " " << row.Dest.EndRow;
    EXPECT_EQ(book.Workbook.IsModified(), row.Done);
  }
  TSheetFixture book;
  EXPECT_FALSE(TessarineApplyFill(nullptr, 0, &book.Sheet(), Range("A1"), Range("A1:A2"), false, u""));
  EXPECT_FALSE(TessarineApplyFill(&book.Workbook, 0, nullptr, Range("A1"), Range("A1:A2"), false, u""));
}

TEST(Fill, IsOneUndoStepAndTellsEveryCell) {
  TSheetFixture book({{"A1", "1"}, {"A2", "2"}, {"A3", "'old"}, {"A4", "=A1"}});
  book.Run("A4");
  TUndoManager& undo = book.Workbook.UndoManager();
  int modified = 0;
  book.Workbook.SetOnModified([&](TWorkbook&) { ++modified; });
  ASSERT_TRUE(Fill(book, Range("A1:A2"), Range("A1:A5")));
  EXPECT_EQ(modified, 4);  // three cells and the fill itself
  EXPECT_EQ(undo.NextUndo()->Description(), u"Fill");
  undo.Undo();
  EXPECT_EQ(book.Show("A3 A4 A5"), "'old' 1 _");
  EXPECT_TRUE(book.Sheet().GetCell({1, 4}).HasCachedValue);
  EXPECT_FALSE(book.Sheet().HasCell({1, 5}));
  undo.Redo();
  EXPECT_EQ(book.Show("A3 A4 A5"), "3 4 5");
}

/// A cell with any mixture of what a cell can have.
TCell RandomCell(std::mt19937& ARandom) {
  const auto pick = [&](uint32_t ACount) { return ARandom() % ACount; };
  TCell cell;
  switch (pick(7)) {
    case 0: cell.Value = TCellValue::FromNumber(pick(9)); break;
    case 1: cell.Value = TCellValue::FromText(u"text"); break;
    case 2: cell.Value = TCellValue::FromBoolean(pick(2) == 0); break;
    case 3: cell.Value = TCellValue::FromError(ceNA); break;
    case 4: cell.Value = TCellValue::FromFormula(u"=A1+2"); break;
    default: break;
  }
  if (pick(2) == 0) cell.StyleIndex = static_cast<int32_t>(pick(3));
  if (pick(3) == 0) cell.SetCachedResult(TCellValue::FromNumber(pick(5)));
  if (pick(5) == 0) {
    cell.HasFormatOverride = true;
    cell.FormatOverride.NumberFormat = pick(2) == 0 ? u"0.0" : u"General";
  }
  if (pick(6) == 0) cell.RichText = {{u"run", {}}};
  if (pick(9) == 0) cell.Sparkline = {spkLine, 1, 2, 3, {4, 5}};
  return cell;
}

TEST(CellBatches, WriteWhatSetCellWrites) {
  std::mt19937 random(7);
  for (int round = 0; round < 40; ++round) {
    TSheetFixture plain;
    TSheetFixture fast;
    detail::TCellBatch batch;
    for (int i = 0; i < 60; ++i) {
      const TCellAddress address{static_cast<int32_t>(random() % 5), static_cast<int32_t>(random() % 6)};
      const TCell cell = RandomCell(random);
      batch.Add(address, cell);
      ASSERT_EQ(batch.Cell(batch.Count() - 1), cell);
      if (round % 2 == 0) continue;
      const TCell there = RandomCell(random);
      for (TSheetFixture* book : {&plain, &fast}) book->Sheet().SetCell(address, there);
      batch.AddCopy({6, 1 + i}, plain.Sheet(), address);
      ASSERT_EQ(batch.Cell(batch.Count() - 1), plain.Sheet().GetCell(address));
    }
    batch.WriteToPlain(plain.Sheet());
    batch.WriteTo(fast.Sheet());
    for (int32_t col = 1; col < 7; ++col)
      for (int32_t row = 1; row < 62; ++row)
        ASSERT_EQ(fast.Sheet().GetCell({col, row}), plain.Sheet().GetCell({col, row})) << col << " " << row;
    EXPECT_EQ(fast.Sheet().UsedMaxRow(), plain.Sheet().UsedMaxRow());
    EXPECT_EQ(fast.Workbook.IsModified(), plain.Workbook.IsModified());
  }
}

}  // namespace
}  // namespace tessarine
