#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>

#include <tessarine/core/undo/CellCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/core/undo/detail/CellBatch.h>
#include <tessarine/features/Fill.h>

#include "../support/SheetFixture.h"

namespace tessarine {
namespace {

using testing::TSheetFixture;

TCellRange Range(const char* AText) { return TCellRange::FromA1(TTextArg(AText)); }

bool Fill(TSheetFixture& ABook, const TCellRange& ASource, const TCellRange& ADest, bool ACopyOnly = false) {
  return TessarineApplyFill(&ABook.Workbook, 0, &ABook.Sheet(), ASource, ADest, ACopyOnly, u"Fill");
}

TEST(Fill, DirectionsAndDragDestinations) {
  const struct {
    const char *Source, *Dest;
    TTessarineFillDirection Direction;
  } ways[] = {
      {"B2:C3", "B2:C9", tfdDown}, {"B2:C3", "C9:B1", tfdDown},  {"B2:C3", "B1:C3", tfdUp},
      {"B2:C3", "B2:C3", tfdNone}, {"B2:C3", "B2:F3", tfdRight}, {"B2:C3", "A2:C3", tfdLeft},
      {"B2:C3", "B2:D4", tfdNone}, {"B2", "B5:B6", tfdDown},
  };
  for (const auto& row : ways)
    EXPECT_EQ(TessarineFillDirectionOf(Range(row.Source), Range(row.Dest)), row.Direction) << row.Dest;
  const struct {
    int32_t Col, Row;
    const char* Dest;
  } drags[] = {
      {3, 3, "B2:C3"},       {6, 6, "B2:C6"},  {7, 6, "B2:G3"},
      {1, 3, "A2:C3"},       {1, -9, "B1:C3"}, {2, 2000000, "B2:C1048576"},
      {99999, 4, "B2:XFD3"},
  };
  for (const auto& row : drags)
    EXPECT_EQ(TessarineComputeFillDest(Range("B2:C3"), row.Col, row.Row), Range(row.Dest)) << row.Dest;
}

TEST(Fill, SeriesContinueAndTheRestRepeats) {
  const struct {
    TSheetFixture::TCells Cells;
    const char *Source, *Dest;
    bool CopyOnly;
    const char *Read, *Result;
  } cases[] = {
      {{{"A1", "1"}, {"A2", "2"}}, "A1:A2", "A1:A5", false, "A3 A4 A5", "3 4 5"},
      {{{"A4", "1"}, {"A5", "2"}}, "A4:A5", "A3:A5", false, "A2 A3", "_ 0"},
      {{{"A1", "1"}, {"A2", "2"}, {"A3", "4"}}, "A1:A3", "A1:A4", false, "A4", "5.5"},
      {{{"C1", "5"}, {"D1", "3"}}, "C1:D1", "A1:D1", false, "A1 B1", "9 7"},
      {{{"A1", "10"}}, "A1", "A1:A3", false, "A2 A3", "10 10"},
      {{{"A1", "1"}, {"A2", "2"}}, "A1:A2", "A1:A5", true, "A3 A4 A5", "1 2 1"},
      {{{"A2", "'a"}, {"A3", "'b"}}, "A2:A3", "A1:A3", false, "A1", "'b'"},
      {{{"A1", "1"}, {"B1", "'a"}, {"A2", "2"}, {"B2", "2"}}, "A1:B2", "A1:B4", false, "A3 A4 B3 B4", "3 4 'a' 2"},
      {{{"A1", "'Mon"}, {"A3", "7"}}, "A1", "A1:A3", false, "A2 A3", "'Mon' 'Mon'"},
      {{{"A2", "7"}}, "A1", "A1:A2", false, "A2", "_"},
      {{{"A1", "1"}, {"A2", "_"}, {"A3", "3"}}, "A1:A3", "A1:A5", false, "A4 A5", "1 _"},
      {{{"A1", "1"}, {"A2", "2"}}, "A1:A2", "A5:A6", false, "A3 A4 A5 A6", "3 4 5 6"},
      {{{"A1", "1e308"}, {"A2", "-1e308"}}, "A1:A2", "A1:A3", false, "A3", "#NUM!"},
      {{{"A1", "0.1"}, {"A2", "0.2"}}, "A1:A2", "A1:A10", false, "A3 A10", "0.3 1"},
  };
  for (const auto& row : cases) {
    TSheetFixture book(row.Cells);
    EXPECT_TRUE(Fill(book, Range(row.Source), Range(row.Dest), row.CopyOnly)) << row.Result;
    EXPECT_EQ(book.Show(row.Read), row.Result) << row.Source << " " << row.Dest;
    EXPECT_TRUE(book.Workbook.IsModified());
  }
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
