#include <random>
#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/sheet/detail/FormulaMover.h>
#include <tessarine/platform/Unicode.h>
#include <tests/core/RandomSheets.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using testing::FillRandomBook;
using testing::FirstDifference;
using testing::RandomEdit;
using testing::TNamedEdit;

/// Every formula from its text, none spared.
class TByText final : public detail::IFormulaMover {
 public:
  TByText(detail::TFormulaPool& APool, const detail::TLineEdit* AEdit, const TText& AName, bool AOnSheet)
      : FPool(APool), FEdit(AEdit), FName(AName), FOnSheet(AOnSheet) {}
  detail::TFormulaTemplate* Moved(detail::TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow, int32_t ANewCol,
                                  int32_t ANewRow) override {
    std::u16string text(ATemplate->TextAt(ACol, ARow).View());
    if (FEdit) text = FEdit->Rewritten(text, FName, FOnSheet);
    detail::TFormulaTemplate* const moved = FPool.InternPlain(text, ANewCol, ANewRow);
    if (moved == ATemplate) FPool.Release(moved);
    return moved;
  }

 private:
  detail::TFormulaPool& FPool;
  const detail::TLineEdit* FEdit;
  TText FName;
  bool FOnSheet;
};

void EditPlain(TWorkbook& ABook, int32_t ASheet, const detail::TLineEdit& AEdit) {
  TWorksheet& edited = *ABook.GetSheet(ASheet);
  TByText keeper(ABook.FormulaPool(), nullptr, edited.Name(), true);
  edited.Store().RearrangePlain(AEdit.Map(), keeper);
  edited.RecalcUsedBounds();
  for (int32_t i = 0; i < ABook.SheetCount(); ++i) {
    TWorksheet& sheet = *ABook.GetSheet(i);
    TByText mover(ABook.FormulaPool(), &AEdit, edited.Name(), EqualAsciiNoCase(sheet.Name(), edited.Name()));
    sheet.Store().RearrangePlain(detail::TLineMap{AEdit.Axis, {}}, mover);
  }
  auto names = ABook.CopyNamedFormulas();
  for (auto& [name, formula] : names) formula = AEdit.Rewritten(formula, edited.Name(), true);
  ABook.RestoreNamedFormulas(names);
}

TEST(Structure, EditsComeOutAsIfEveryCellAndFormulaWereWrittenAnew) {
  for (unsigned seed = 1; seed <= 25; ++seed) {
    TWorkbook fast;
    TWorkbook plain;
    FillRandomBook(fast, seed, false);
    FillRandomBook(plain, seed, false);
    std::mt19937 random(seed);
    for (int step = 0; step < 12; ++step) {
      const TNamedEdit edit = RandomEdit(random, fast.SheetCount());
      edit.Apply(fast);
      if (const auto lines = edit.Lines()) EditPlain(plain, edit.Sheet, *lines);
      for (int32_t i = 0; i < fast.SheetCount(); ++i) {
        ASSERT_EQ(FirstDifference(*fast.GetSheet(i), *plain.GetSheet(i)), "") << "seed " << seed << ", " << edit.Text();
        ASSERT_EQ(fast.GetSheet(i)->UsedMaxRow(), plain.GetSheet(i)->UsedMaxRow()) << "seed " << seed << edit.Text();
        ASSERT_EQ(fast.GetSheet(i)->Store().UncachedCount(), plain.GetSheet(i)->Store().UncachedCount());
        ASSERT_EQ(fast.GetSheet(i)->Store().CellCount(), plain.GetSheet(i)->Store().CellCount());
      }
      ASSERT_EQ(fast.CopyNamedFormulas(), plain.CopyNamedFormulas()) << "seed " << seed << ", " << edit.Text();
      ASSERT_EQ(fast.FormulaPool().Count(), plain.FormulaPool().Count()) << "seed " << seed << ", " << edit.Text();
    }
  }
}

TEST(Structure, FormulasFollowTheirReferences) {
  test::ExpectCases("core/structure_formulas.tsv", [](const test::TCase& ACase) {
    TWorkbook book;
    book.AddSheet(u"Sheet2");
    book.AddSheet(u"My Sheet");
    TWorksheet& sheet = *book.GetSheet(0);
    sheet.SetValue({3, 4}, TCellValue::FromFormula(ACase.Text(1)));
    sheet.StoreCachedResult({3, 4}, TCellValue::FromNumber(1));
    TNamedEdit::Parse(ACase[0]).Apply(book);
    const TCell cell = sheet.GetCell(TCellAddress::FromA1(ACase.Text(2)));
    EXPECT_FALSE(cell.HasCachedValue) << ACase.Place();
    return cell.Value.Text;
  });
}

TEST(Structure, WhatCannotBeDoneChangesNothing) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({1, 1}, TCellValue::FromFormula(u"= a1 "));
  book.ClearModified();
  for (const char* edit :
       {"insert rows 0 2", "insert rows 1048577 1", "insert rows 1 0", "delete columns 16385 1", "delete rows 3 -1",
        "move rows 3 2 5", "move rows 1048577 1 1", "move rows 1 1 2147483647", "move columns 0 1 4"}) {
    TNamedEdit::Parse(edit).Apply(book);
    EXPECT_FALSE(book.IsModified()) << edit;
    EXPECT_EQ(sheet.GetCellAt(1, 1).Value.Text, u"= a1 ") << edit;
  }
  book.InsertRows(7, 1, 1);
  book.DeleteRows(-1, 1, 1);
  EXPECT_FALSE(book.IsModified());
  book.InsertRows(0, 1, 2147483647);  // everything leaves the sheet
  EXPECT_TRUE(book.IsModified());
  EXPECT_EQ(sheet.Store().CellCount(), 0u);
}

TEST(Structure, OtherSheetsLoseTheResultsOfChangedFormulasOnly) {
  TWorkbook book;
  TWorksheet& other = book.AddSheet(u"Other");
  const char16_t* const texts[] = {u"=Sheet1!A5", u"=Sheet1!A1", u"=A5", u"=sheet1!A1", u"=1+1", u"= 1+1"};
  for (int32_t i = 0; i < 6; ++i) {
    other.SetValue({1, i + 1}, TCellValue::FromFormula(texts[i]));
    other.StoreCachedResult({1, i + 1}, TCellValue::FromNumber(i));
  }
  int32_t events = 0;
  book.SetOnModified([&](TWorkbook&) { ++events; });
  book.InsertRows(0, 3, 1);
  EXPECT_EQ(events, 1);
  std::string kept;
  for (int32_t i = 1; i <= 6; ++i) kept += other.GetCellAt(1, i).HasCachedValue ? 'y' : 'n';
  EXPECT_EQ(kept, "nyynyn");
}

TEST(Structure, EveryListFollowsByItsOwnRule) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.MergeRange({1, 3, 1, 4});
  sheet.Spills().SetSpill(9, 9, 2, 1, {TCellValue::FromNumber(1), TCellValue::FromNumber(2)});
  sheet.Sizing().SetRowHeightPt(5, 40);
  sheet.Sizing().SetRowHeightPt(kMaxRow, 50);
  sheet.Tables().Add(u"T", {1, 8, 2, 12});
  sheet.Slicers().Add(std::make_unique<TSheetSlicer>(u"S", skSlicer, 1, 0, TCellAddress{4, 5}));
  TDataValidationRule rule;
  rule.Ranges = {{1, 1, 1, 4}};
  rule.Formula1 = u"=$A$5";
  sheet.Validations().AddRule(rule);
  TConditionalFormatRule format;
  format.Ranges = {{1, 3, 1, 5}};
  sheet.ConditionalFormats().AddRule(format);
  sheet.Comments().SetComment(1, 5, u"", u"note");
  sheet.AutoFilter().Enable({1, 8, 2, 9});
  sheet.SetHyperlink(1, 5, u"here");
  sheet.SetFrozenRows(4);
  const auto dump = [&] {
    const TSheetTable& table = sheet.Tables().GetItem(0);
    std::string text = sheet.Merges().IsEmpty() ? "-" : Utf16ToUtf8(sheet.Merges().GetItem(0).AsRange().ToA1());
    text += " spills " + std::to_string(sheet.Spills().Count()) + " heights";
    for (int32_t line = 1; line < 12; ++line)
      if (sheet.Sizing().HasCustomRowHeight(line)) text += " " + std::to_string(line);
    text += " table " + Utf16ToUtf8(table.Ref().ToA1());
    text += " slicer " + std::to_string(sheet.Slicers().GetItem(0).Anchor.Row);
    text += " rule " + Utf16ToUtf8(sheet.Validations().begin()->Ranges[0].ToA1()) +
            Utf16ToUtf8(sheet.Validations().begin()->Formula1);
    const TCellRange rules = sheet.ConditionalFormats().GetRule(0).Ranges[0];
    text += " format " + std::to_string(rules.StartRow) + "-" + std::to_string(rules.EndRow) + " notes";
    for (const auto& key : sheet.Comments().GetKeys()) text += " " + Utf16ToUtf8(key);
    text += " filter " + Utf16ToUtf8(sheet.AutoFilter().Range().ToA1()) + " links";
    for (int32_t line = 1; line < 12; ++line)
      if (sheet.FindHyperlink(1, line)) text += " " + std::to_string(line);
    return text + " frozen " + std::to_string(sheet.FrozenRows());
  };
  const struct {
    const char* Edit;
    const char* After;
  } cases[] = {
      {"insert rows 2 1",
       "A4:A5 spills 0 heights 6 table A9:B13 slicer 6 rule A1:A5=$A$6 format 4-6 notes A6 filter A9:B13 links 5 "
       "frozen 5"},
      {"delete rows 4 2",
       "- spills 0 heights 4 table A7:B11 slicer 4 rule A1:A3=$A$4 format 2-4 notes A4 filter A7:B11 links 5 "
       "frozen 3"},
      {"move rows 4 1 2",
       "- spills 0 heights 2 table A7:B11 slicer 4 rule A1:A4=$A$2 format 2-3 notes A2 filter A7:B11 links 5 "
       "frozen 3"},
      {"move rows 5 1 1",
       "- spills 0 heights 3 table A7:B11 slicer 4 rule A2:A5=$A$3 format 3-4 notes A3 filter A7:B11 links 1 "
       "frozen 3"},
  };
  for (const auto& row : cases) {
    TNamedEdit::Parse(row.Edit).Apply(book);
    EXPECT_EQ(dump(), row.After) << row.Edit;
  }
}

TEST(Structure, InsertedTableRowsTakeOverFormatsAndFormulas) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.Tables().Add(u"T", {1, 1, 2, 6});
  for (int32_t row = 2; row <= 6; ++row) {
    TCell cell;
    cell.Value = TCellValue::FromFormula(u"=A" + Utf8ToUtf16(std::to_string(row)) + u"*2");
    cell.StyleIndex = row;
    sheet.SetCell({2, row}, cell);
  }
  int32_t events = 0;
  book.SetOnModified([&](TWorkbook&) { ++events; });
  book.InsertRows(0, 4, 2);
  EXPECT_EQ(events, 3);  // two cells and the edit itself
  std::string shown;
  for (int32_t row = 2; row <= 8; ++row) {
    const TCell cell = sheet.GetCellAt(2, row);
    shown += Utf16ToUtf8(cell.Value.Text) + "/" + std::to_string(cell.StyleIndex) + " ";
  }
  EXPECT_EQ(shown, "=A2*2/2 =A3*2/3 =A4*2/3 =A5*2/4 =A6*2/4 =A7*2/5 =A8*2/6 ");
  book.InsertColumns(0, 2, 1);
  EXPECT_TRUE(sheet.GetCellAt(2, 3).Value.IsEmpty());
  EXPECT_EQ(sheet.GetCellAt(3, 3).Value.Text, u"=A3*2");
}

}  // namespace
}  // namespace tessarine
