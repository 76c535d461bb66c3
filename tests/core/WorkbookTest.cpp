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
