#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/detail/StoreHistory.h>
#include <tests/core/RandomSheets.h>

namespace tessarine {
namespace {

using testing::CellsOf;
using testing::FillRandomBook;
using testing::FirstDifference;
using testing::MapOf;
using testing::RandomCell;
using testing::RandomEdit;
using testing::TNamedEdit;

/// An edit with a whole copy of all cells, taken back cell by cell.
class TCopyingCommand final : public IUndoCommand {
 public:
  TCopyingCommand(TWorkbook& ABook, const TNamedEdit& AEdit) : FBook(ABook), FEdit(AEdit) {}
  void Execute() override {
    if (!FBook.GetSheet(FEdit.Sheet)) return;
    for (int32_t i = 0; !FIsCaptured && i < FBook.SheetCount(); ++i) FSheets.push_back(MapOf(*FBook.GetSheet(i)));
    if (!FIsCaptured) FNames = FBook.CopyNamedFormulas();
    FIsCaptured = true;
    FEdit.Apply(FBook);
  }
  void Undo() override {
    TWorksheet* const sheet = FBook.GetSheet(FEdit.Sheet);
    if (!FIsCaptured || !sheet) return;
    sheet->ClearCells();
    for (const auto& [place, cell] : FSheets[static_cast<size_t>(FEdit.Sheet)])
      sheet->SetCell({place.first, place.second}, cell);
    sheet->RecalcUsedBounds();
    FBook.RestoreNamedFormulas(FNames);
    for (size_t i = 0; i < FSheets.size(); ++i) {
      TWorksheet* const other = FBook.GetSheet(static_cast<int32_t>(i));
      for (const auto& [place, captured] : FSheets[i]) {
        if (!other || captured.Value.Kind != cvkFormula) continue;
        TCell cell = other->GetCellAt(place.first, place.second);
        if (cell.Value.Kind != cvkFormula) continue;
        cell.Value.Text = captured.Value.Text;
        cell.ClearCachedResult();
        other->SetCell({place.first, place.second}, cell);
      }
    }
  }
  TText Description() const override { return u"copy"; }

 private:
  TWorkbook& FBook;
  TNamedEdit FEdit;
  bool FIsCaptured = false;
  std::vector<std::map<std::pair<int32_t, int32_t>, TCell>> FSheets;
  std::vector<std::pair<TText, TText>> FNames;
};

TEST(StructureUndo, RestoresWhatACopyOfAllCellsWould) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    TWorkbook fast;
    TWorkbook plain;
    FillRandomBook(fast, seed, true);
    FillRandomBook(plain, seed, true);
    std::mt19937 random(seed);
    std::string history;
    for (int step = 0; step < 40; ++step) {
      const uint32_t choice = random() % 10;
      if (choice < 3) {
        const TNamedEdit edit = RandomEdit(random, fast.SheetCount());
        history += edit.Text() + "; ";
        edit.Execute(fast);
        plain.UndoManager().ExecuteCommand(std::make_shared<TCopyingCommand>(plain, edit));
      } else if (choice < 5) {
        history += "undo; ";
        fast.UndoManager().Undo();
        plain.UndoManager().Undo();
      } else if (choice < 6) {
        history += "redo; ";
        fast.UndoManager().Redo();
        plain.UndoManager().Redo();
      } else if (choice < 9) {
        const auto index = static_cast<int32_t>(random() % static_cast<uint32_t>(fast.SheetCount()));
        const TCellAddress place{1 + static_cast<int32_t>(random() % 7), 1 + static_cast<int32_t>(random() % 60)};
        const TCell cell = random() % 4 == 0 ? TCell() : RandomCell(random, place.Col, place.Row);
        history += "write; ";
        for (TWorkbook* book : {&fast, &plain}) book->GetSheet(index)->SetCell(place, cell);
      } else if (const uint32_t odd = random() % 12; odd == 0 && fast.SheetCount() > 1) {
        history += "remove a sheet; ";
        const auto index = static_cast<int32_t>(random() % static_cast<uint32_t>(fast.SheetCount()));
        for (TWorkbook* book : {&fast, &plain}) book->RemoveSheet(index);
      } else if (odd == 1) {
        history += "clear; ";
        for (TWorkbook* book : {&fast, &plain}) book->GetSheet(0)->ClearCells();
      } else if (odd < 6) {
        const TNamedEdit edit = RandomEdit(random, fast.SheetCount());
        history += "directly " + edit.Text() + "; ";
        for (TWorkbook* book : {&fast, &plain}) edit.Apply(*book);
      }
      for (int32_t i = 0; i < fast.SheetCount(); ++i)
        ASSERT_EQ(FirstDifference(*fast.GetSheet(i), *plain.GetSheet(i)), "") << "seed " << seed << ": " << history;
      ASSERT_EQ(fast.CopyNamedFormulas(), plain.CopyNamedFormulas()) << "seed " << seed << ": " << history;
    }
  }
}

TEST(StructureUndo, RestoresSomeListsAndLeavesOthers) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  TWorksheet& other = book.AddSheet(u"Other");
  sheet.SetValue({1, 5}, TCellValue::FromNumber(5));
  other.SetValue({1, 1}, TCellValue::FromFormula(u"=Sheet1!A5"));
  other.SetValue({1, 2}, TCellValue::FromFormula(u"=1+1"));
  other.StoreCachedResult({1, 2}, TCellValue::FromNumber(2));
  sheet.MergeRange({2, 5, 2, 6});
  sheet.Sizing().SetRowHeightPt(5, 40);
  sheet.Sizing().SetAutoRowHeightPt(7, 30);
  sheet.Sizing().SetOutlineSummaryBelow(false);
  sheet.Tables().Add(u"T", {1, 4, 2, 5});
  TDataValidationRule rule;
  rule.Ranges = {{1, 5, 1, 5}};
  sheet.Validations().AddRule(rule);
  sheet.AutoFilter().Enable({4, 5, 5, 9});
  sheet.Comments().SetComment(1, 5, u"", u"note");
  sheet.SetFrozenRows(6);
  book.SetNamedFormula(u"Five", u"=Sheet1!A5");
  sheet.ClearCell({9, 90});  // stretches the used bounds
  const auto dump = [&] {
    std::string text = sheet.Merges().IsEmpty() ? "-" : Utf16ToUtf8(sheet.Merges().GetItem(0).AsRange().ToA1());
    text += sheet.Sizing().HasCustomRowHeight(5) ? " high" : " low";
    text += " auto " + std::to_string(static_cast<int>(sheet.Sizing().GetRowHeightPt(7)));
    text +=
        " tables " + std::to_string(sheet.Tables().Count()) + " rules " + std::to_string(sheet.Validations().Count());
    text +=
        " filter " + Utf16ToUtf8(sheet.AutoFilter().Range().ToA1()) + " frozen " + std::to_string(sheet.FrozenRows());
    for (const auto& key : sheet.Comments().GetKeys()) text += " note " + Utf16ToUtf8(key);
    text += " five " + Utf16ToUtf8(*book.FindNamedFormula(u"Five")) + " rows " + std::to_string(sheet.UsedMaxRow());
    return text + " other " + Utf16ToUtf8(other.GetCellAt(1, 1).Value.Text);
  };
  TUndoManager& undo = book.UndoManager();
  TNamedEdit::Parse("delete rows 4 3").Execute(book);
  EXPECT_EQ(dump(), "- low auto 15 tables 0 rules 0 filter D4:E6 frozen 3 note A2 five =#REF! rows 1 other =#REF!");
  undo.Undo();
  const char* const restored =
      "B5:B6 high auto 15 tables 1 rules 1 filter D5:E9 frozen 6 note A2 five =Sheet1!A5 rows 5 other =Sheet1!A5";
  EXPECT_EQ(dump(), restored);
  EXPECT_FALSE(other.GetCellAt(1, 2).HasCachedValue);  // texts that never changed lose their results as well
  EXPECT_TRUE(sheet.Sizing().OutlineSummaryBelow());
  sheet.SetValue({1, 5}, TCellValue::FromNumber(6));
  undo.Redo();
  undo.Undo();
  EXPECT_EQ(sheet.GetCellAt(1, 5).Value.Number, 5);  // the first state, not that before the second run
  EXPECT_EQ(undo.NextRedo()->Description(), u"Delete rows");
}

TEST(StructureUndo, TellsEveryCellAndThenEveryFormula) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  TWorksheet& other = book.AddSheet(u"Other");
  sheet.SetValue({1, 1}, TCellValue::FromNumber(1));
  sheet.SetValue({1, 2}, TCellValue::FromFormula(u"=A1"));
  other.SetValue({1, 1}, TCellValue::FromFormula(u"=1+1"));
  TNamedEdit::Parse("insert rows 1 1").Execute(book);
  int32_t modified = 0;
  book.SetOnModified([&](TWorkbook&) { ++modified; });
  std::string told;
  for (TWorksheet* each : {&sheet, &other}) {
    each->SetOnChange([&told](TWorksheet& ASheet, TCellAddress AAddress, const TCell& AOld, const TCell&) {
      told += Utf16ToUtf8(ASheet.Name()) + "!" + Utf16ToUtf8(AAddress.ToA1()) + (AOld.IsEmpty() ? "+ " : " ");
    });
  }
  book.UndoManager().Undo();
  EXPECT_EQ(told, "Sheet1!A1+ Sheet1!A2+ Sheet1!A2 Other!A1 ");
  EXPECT_EQ(modified, 0);
  sheet.SetOnChange({});
  other.SetOnChange({});
  book.UndoManager().Redo();
  modified = 0;
  book.UndoManager().Undo();
  EXPECT_EQ(modified, 4);
  book.NewWorkbook();
  book.ClearModified();
  EXPECT_FALSE(book.UndoManager().CanUndo() || book.UndoManager().CanRedo());
  TNamedEdit::Parse("insert rows 1 1").Execute(book);
  book.ClearModified();
  book.UndoManager().Undo();
  EXPECT_FALSE(book.IsModified());  // nothing was stored, nothing is told
}

TEST(StructureUndo, KeepsTheStepWhoseListenerThrows) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  TUndoManager& undo = book.UndoManager();
  for (const char* name : {"a", "b", "c"})
    sheet.SetValue({1, *name - 'a' + 1}, TCellValue::FromText(Utf8ToUtf16(name)));
  sheet.Sizing().SetRowHeightPt(2, 40);
  const auto state = [&] { return CellsOf(sheet) + std::to_string(sheet.Sizing().GetRowHeightPt(2)); };
  const std::string before = state();
  TNamedEdit::Parse("insert rows 2 1").Execute(book);
  const std::string after = state();
  const auto refuse = [](TWorkbook&) { throw std::runtime_error("refused"); };
  const auto run = [&](void (TUndoManager::*AAct)(), bool ARefuse) {
    book.SetOnModified(ARefuse ? TWorkbookModifiedEvent(refuse) : nullptr);
    bool hasThrown = false;
    try {
      (undo.*AAct)();
    } catch (const std::runtime_error&) {
      hasThrown = true;
    }
    EXPECT_EQ(hasThrown, ARefuse);
    EXPECT_EQ(undo.UndoCount() + undo.RedoCount(), 1u);
    return state();
  };
  run(&TUndoManager::Undo, true);  // half of it is done: cells, but not sizes
  EXPECT_EQ(run(&TUndoManager::Redo, false), after);
  EXPECT_EQ(run(&TUndoManager::Undo, false), before);
  EXPECT_EQ(run(&TUndoManager::Redo, true), after);
  EXPECT_EQ(run(&TUndoManager::Undo, false), before);
}

TEST(StructureUndo, HoldsWhatHasChangedInsteadOfCopies) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t row = 1; row <= 20000; ++row) {
    sheet.SetValue({1, row}, TCellValue::FromNumber(row));
    sheet.SetValue({2, row}, TCellValue::FromFormula(u"=A" + Utf8ToUtf16(std::to_string(row)) + u"*$F$1"));
  }
  const std::string before = CellsOf(sheet);
  std::vector<detail::TStoreSnapshot> states;
  for (int32_t i = 0; i < 100; ++i) {
    states.push_back(sheet.Store().Capture());
    book.InsertRows(0, 1, 1);
  }
  size_t held = 0;
  for (const detail::TStoreSnapshot& state : states) {
    held += state.Version->Change->Formulas.size() * sizeof(detail::TFormulaRun);
    held += state.Version->Change->Cells.CellCount() * sizeof(detail::TCellSlot);
  }
  EXPECT_LT(held, sheet.Store().BytesUsed() / 10);
  ASSERT_TRUE(sheet.Store().ReturnTo(states.front()));
  EXPECT_EQ(CellsOf(sheet), before);
}

}  // namespace
}  // namespace tessarine
