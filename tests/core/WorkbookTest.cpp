#include <tessarine/core/sheet/Workbook.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/sheet/Providers.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

struct TSilentTranslator : ITessarineTranslateProvider {
  bool Translate(const TText&, const TText&, const TText&, TText&) override { return false; }
  bool DetectLanguage(const TText&, TText&) override { return false; }
};

TEST(Workbook, StartsWithOneSheetAndStartsOverWithOne) {
  TWorkbook book;
  ASSERT_EQ(book.SheetCount(), 1);
  book.TranslateProvider = std::make_shared<TSilentTranslator>();
  book.GetSheet(0)->SetCell({1, 1}, [] {
    TCell cell;
    cell.Value = TCellValue::FromFormula(u"=B1");
    return cell;
  }());
  book.AddSheet("Second");
  book.SetActiveSheetIndex(1);
  book.StyleSheet().AddCellXf(TCellFormat::Default());
  book.Theme().ClearColors();
  book.SetNamedFormula("x", "1");
  book.PutWebCache("u", "v");
  book.SetStructureProtected(true);
  book.BeginUpdate();
  book.MarkModified();
  book.NewWorkbook();
  ASSERT_EQ(book.SheetCount(), 1);
  EXPECT_EQ(book.ActiveSheet()->Name(), u"Sheet1");
  EXPECT_FALSE(book.ActiveSheet()->HasCell({1, 1}));
  EXPECT_EQ(book.StyleSheet().Count(), 1);
  EXPECT_FALSE(book.Theme().Colors().empty());
  EXPECT_FALSE(book.FindNamedFormula("x"));
  EXPECT_FALSE(book.TryGetWebCache("u"));
  EXPECT_FALSE(book.IsStructureProtected());
  EXPECT_FALSE(book.IsModified());
  EXPECT_FALSE(book.IsUpdating());
  EXPECT_TRUE(book.TranslateProvider);
  EXPECT_EQ(book.FormulaPool().Count(), 0u);
}

TEST(Workbook, SheetsAreFoundByPositionAndByNameInAnyCase) {
  for (const int32_t count : {3, 200}) {  // by a walk, and by the dictionary
    TWorkbook book;
    for (int32_t i = 2; i <= count; ++i) book.AddSheet("Sheet" + std::to_string(i));
    book.AddSheet("SHEET2");  // names are not tested
    EXPECT_FALSE(book.IsModified());
    EXPECT_EQ(book.FindSheetIndex(u"sHEET2"), 1);
    EXPECT_EQ(book.FindSheetIndex(u"Sheet"), -1);
    EXPECT_EQ(book.FindSheet("nope"), nullptr);
    EXPECT_EQ(book.GetSheet(-1), nullptr);
    EXPECT_EQ(book.GetSheet(count + 1), nullptr);
    EXPECT_EQ(book.IndexOfSheet(book.GetSheet(count)), count);
    EXPECT_EQ(book.IndexOfSheet(nullptr), -1);
    const uint64_t version = book.SheetListVersion();
    book.GetSheet(1)->SetName("Other");
    EXPECT_NE(book.SheetListVersion(), version);
    EXPECT_EQ(book.FindSheetIndex(u"sheet2"), count);
    EXPECT_EQ(book.FindSheetIndex(u"other"), 1);
    book.RemoveSheet(0);
    EXPECT_EQ(book.FindSheetIndex(u"sheet1"), -1);
    EXPECT_EQ(book.FindSheetIndex(u"other"), 0);
    book.AddSheet("OTHER");
    EXPECT_EQ(book.FindSheetIndex(u"other"), 0);
  }
}

TEST(Workbook, RemovalMovesTheActiveSheetOnlyAtTheEnd) {
  TWorkbook book;
  book.AddSheet("B");
  book.AddSheet("C");
  book.SetActiveSheetIndex(2);
  book.SetActiveSheetIndex(3);
  EXPECT_EQ(book.ActiveSheetIndex(), 2);
  book.RemoveSheet(7);
  book.RemoveSheet(-1);
  EXPECT_FALSE(book.IsModified());
  book.RemoveSheet(2);
  EXPECT_TRUE(book.IsModified());
  EXPECT_EQ(book.ActiveSheet()->Name(), u"B");
  book.RemoveSheet(0);
  EXPECT_EQ(book.ActiveSheet()->Name(), u"B");
  book.RemoveSheet(0);  // nothing keeps the last one
  EXPECT_EQ(book.SheetCount(), 0);
  EXPECT_EQ(book.ActiveSheet(), nullptr);
  EXPECT_EQ(book.ActiveSheetIndex(), 0);
  book.EnsureActiveSheetVisible();
  EXPECT_EQ(book.FirstVisibleSheetIndex(), -1);
}

TEST(Workbook, OneSheetStaysVisible) {
  TWorkbook book;
  try {
    book.SetSheetVisibility(0, svVeryHidden);
    FAIL() << "the only sheet was hidden";
  } catch (const EState& problem) {
    EXPECT_STREQ(problem.what(), "Cannot hide the only visible worksheet");
  }
  EXPECT_FALSE(book.IsModified());
  EXPECT_TRUE(book.GetSheet(0)->IsVisible());
  book.AddSheet("B");
  book.AddSheet("C");
  book.SetActiveSheetIndex(1);
  book.SetSheetVisibility(1, svVisible);
  book.SetSheetVisibility(9, svHidden);
  EXPECT_FALSE(book.IsModified());
  book.SetSheetVisibility(1, svVeryHidden);
  EXPECT_TRUE(book.IsModified());
  EXPECT_EQ(book.ActiveSheetIndex(), 0);
  book.SetActiveSheetIndex(1);           // visibility is not looked at
  book.SetSheetVisibility(2, svHidden);  // not the active one
  EXPECT_EQ(book.ActiveSheetIndex(), 1);
  EXPECT_EQ(book.VisibleSheetCount(), 1);
  book.SetSheetVisibility(2, svVeryHidden);  // hidden already, so nothing forbids it
  EXPECT_THROW(book.SetSheetVisibility(0, svHidden), EState);
  book.EnsureActiveSheetVisible();
  EXPECT_EQ(book.ActiveSheetIndex(), 0);
}

TEST(Workbook, NamesAreTrimmedAndFolded) {
  TWorkbook book;
  const struct {
    const char* Name;
    const char* Formula;
    const char* AskedAs;
    const char16_t* Found;
  } cases[] = {
      {"  $Tax$ ", "0.2", "tax", u"=0.2"}, {"a$b", " =A1 ", "AB", u"=A1"},         {"blank", "  ", "$BLANK", u""},
      {"TAX", "=0.3", " tax", u"=0.3"},    {"two words", "x", "TWO WORDS", u"=x"},
  };
  for (const auto& row : cases) {
    book.SetNamedFormula(row.Name, row.Formula);
    ASSERT_TRUE(book.FindNamedFormula(row.AskedAs)) << row.Name;
    EXPECT_EQ(*book.FindNamedFormula(row.AskedAs), row.Found) << row.Name;
  }
  EXPECT_EQ(book.NamedFormulaNames(), (std::vector<TText>{u"AB", u"BLANK", u"TAX", u"TWO WORDS"}));
  const uint64_t version = book.NamesVersion();
  book.SetNamedFormula(" $ ", "1");  // no name is left
  EXPECT_EQ(book.NamesVersion(), version);
  EXPECT_EQ(book.FindNormalizedName(u"tax"), nullptr);
  EXPECT_NE(book.FindNormalizedName(u"TAX"), nullptr);
  EXPECT_FALSE(book.FindNamedFormula("none"));
  EXPECT_FALSE(book.FindNamedFormula(""));
  book.ClearNamedFormulas();
  EXPECT_NE(book.NamesVersion(), version);
  EXPECT_TRUE(book.NamedFormulaNames().empty());
}

TEST(Workbook, WebResultsStayUntilCleared) {
  TWorkbook book;
  book.PutWebCache("Key", "");
  book.PutWebCache("Key", "value");
  EXPECT_EQ(*book.TryGetWebCache("Key"), u"value");
  EXPECT_FALSE(book.TryGetWebCache("key"));
  book.ClearWebCache();
  EXPECT_FALSE(book.TryGetWebCache("Key"));
}

struct TModifiedFixture : testing::Test {
  TWorkbook Book;
  int Fired = 0;

  TModifiedFixture() {
    Book.SetOnModified([this](TWorkbook& ASender) {
      EXPECT_EQ(&ASender, &Book);
      EXPECT_TRUE(Book.IsModified());
      ++Fired;
    });
  }
  void Edit() { Book.GetSheet(0)->SetValue({1, 1}, TCellValue::FromNumber(1)); }
};

using WorkbookModified = TModifiedFixture;

TEST_F(WorkbookModified, EveryChangeFiresOutsideAnUpdate) {
  Edit();
  Edit();
  EXPECT_EQ(Fired, 2);
}

TEST_F(WorkbookModified, UpdateFiresOnceAtItsEnd) {
  Book.BeginUpdate();
  Book.BeginUpdate();
  EXPECT_FALSE(Book.IsModified());
  EXPECT_TRUE(Book.GetSheet(0)->ChangesAreUnobserved());
  for (int i = 0; i < 10; ++i) Edit();
  EXPECT_TRUE(Book.IsModified());
  Book.EndUpdate();
  EXPECT_EQ(Fired, 0);
  EXPECT_TRUE(Book.IsUpdating());
  Book.EndUpdate();
  EXPECT_EQ(Fired, 1);
  Book.EndUpdate();  // nothing to end
  EXPECT_FALSE(Book.IsUpdating());
  Book.BeginUpdate();
  Book.EndUpdate();
  EXPECT_EQ(Fired, 1);
}

TEST_F(WorkbookModified, ClearingDropsAPendingEvent) {
  Book.BeginUpdate();
  Edit();
  Book.ClearModified();
  Book.EndUpdate();
  EXPECT_EQ(Fired, 0);
  EXPECT_FALSE(Book.IsModified());
}

std::vector<const TWorkbook*> gCleared;  // NOLINT: hooks are plain functions

TEST(Workbook, HookHearsOfClearingAndDestruction) {
  const TWorkbookClearedHook previous = TessarineNotifyWorkbookCleared;
  TessarineNotifyWorkbookCleared = [](TWorkbook& AWorkbook) {
    gCleared.push_back(&AWorkbook);
    if (gCleared.size() == 2) {
      EXPECT_EQ(AWorkbook.SheetCount(), 2);  // before anything goes
    }
  };
  const TWorkbook* address = nullptr;
  {
    TWorkbook book;
    address = &book;
    book.AddSheet("B");
    book.NewWorkbook();
  }
  TessarineNotifyWorkbookCleared = previous;
  EXPECT_EQ(gCleared, (std::vector<const TWorkbook*>(3, address)));
}

}  // namespace
}  // namespace tessarine
