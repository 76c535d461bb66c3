#include <tessarine/core/sheet/Worksheet.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine {
namespace {

TCellAddress At(const char16_t* ACell) { return TCellAddress::FromA1(ACell); }

TCell CellOf(const TCellValue& AValue) {
  TCell cell;
  cell.Value = AValue;
  return cell;
}

TCell FormulaCell(const char16_t* AText, const TCellValue& AResult) {
  TCell cell = CellOf(TCellValue::FromFormula(AText));
  cell.SetCachedResult(AResult);
  return cell;
}

struct TSheetFixture : ::testing::Test {
  TWorkbook Book;
  TWorksheet& Sheet = *Book.GetSheet(0);
  std::vector<std::string> Told;

  void Listen() {
    Sheet.SetOnChange([this](TWorksheet& ASender, TCellAddress AAddress, const TCell& AOld, const TCell& ANew) {
      EXPECT_EQ(&ASender, &Sheet);
      Told.push_back(TText(AAddress.ToA1()).ToUtf8() + ": " + AOld.Value.ToDisplayString().ToUtf8() + " -> " +
                     ANew.Value.ToDisplayString().ToUtf8() + (ANew.HasCachedValue ? " = " : "") +
                     ANew.CachedValue.ToDisplayString().ToUtf8());
    });
  }
};

using Worksheet = TSheetFixture;

TEST_F(Worksheet, CellKnowsWhenItIsEmpty) {
  const auto changed = [](void (*AChange)(TCell&)) {
    TCell cell = TCell::CreateEmpty();
    AChange(cell);
    return cell.IsEmpty();
  };
  EXPECT_TRUE(changed([](TCell&) {}));
  EXPECT_TRUE(changed([](TCell& ACell) { ACell.RichText = {{u"x", {}}}; }));
  EXPECT_TRUE(changed([](TCell& ACell) { ACell.Sparkline.Color = 1; }));
  EXPECT_FALSE(changed([](TCell& ACell) { ACell.Value = TCellValue::FromText(u""); }));
  EXPECT_FALSE(changed([](TCell& ACell) { ACell.Value = TCellValue::FromFormula(u""); }));
  EXPECT_FALSE(changed([](TCell& ACell) { ACell.StyleIndex = -1; }));
  EXPECT_FALSE(changed([](TCell& ACell) { ACell.HasFormatOverride = true; }));
  EXPECT_FALSE(changed([](TCell& ACell) { ACell.HasCachedValue = true; }));
  EXPECT_FALSE(changed([](TCell& ACell) { ACell.Sparkline.Kind = spkBar; }));
}

TEST_F(Worksheet, CachedResultIsNeverAFormulaAndTakesItsSparklineAlong) {
  TCell cell = CellOf(TCellValue::FromFormula(u"=A1"));
  cell.SetCachedResult(TCellValue::FromFormula(u"=B1"));
  EXPECT_EQ(cell.CachedValue, TCellValue::FromText(u"=B1"));
  cell.Sparkline = {spkLine, 3, 4, 5, {1, 2}};
  cell.ClearCachedResult();
  EXPECT_FALSE(cell.HasCachedValue);
  EXPECT_TRUE(cell.CachedValue.IsEmpty());
  EXPECT_EQ(cell.Sparkline, (TSparklineData{spkNone, 3, 4, 5, {}}));
  Sheet.SetCell(At(u"A1"), cell);
  EXPECT_EQ(Sheet.GetCell(At(u"A1")), cell);
}

TEST_F(Worksheet, ReturnsEveryCellAsItWasSet) {
  std::vector<TCell> cells;
  for (const auto& value :
       {TCellValue::FromNumber(-0.5), TCellValue::FromText(u""), TCellValue::FromText(u"x"),
        TCellValue::FromBoolean(true), TCellValue::FromBoolean(false), TCellValue::FromError(ceSpill),
        TCellValue::FromFormula(u""), TCellValue::FromFormula(u"= sum( a1 , $B$2 )")}) {
    cells.push_back(CellOf(value));
    cells.push_back(CellOf(value));
    cells.back().StyleIndex = -7;
    cells.back().HasCachedValue = true;
    for (const auto& result : {TCellValue::Empty(), TCellValue::FromText(u""), TCellValue::FromBoolean(true),
                               TCellValue::FromError(ceNA), TCellValue::FromNumber(3)}) {
      cells.push_back(CellOf(value));
      cells.back().SetCachedResult(result);
    }
  }
  cells.push_back(TCell());
  cells.back().StyleIndex = 1000000;
  cells.push_back(CellOf(TCellValue::FromNumber(1)));
  cells.back().RichText = {{u"a", {}}, {u"b", {}}};
  cells.back().RichText[1].Font.Italic = true;
  cells.back().HasFormatOverride = true;
  cells.back().FormatOverride.NumberFormat = u"0.00";
  for (size_t i = 0; i < cells.size(); ++i) {
    const TCellAddress address{3, static_cast<int32_t>(i) + 1};
    Sheet.SetCell(address, cells[i]);
    EXPECT_TRUE(Sheet.HasCell(address)) << i;
  }
  for (size_t i = 0; i < cells.size(); ++i)
    EXPECT_TRUE(Sheet.GetCellAt(3, static_cast<int32_t>(i) + 1) == cells[i]) << i;
}

TEST_F(Worksheet, HandlerMayReplaceItselfAndEditTheSheet) {
  int calls = 0;
  Sheet.SetOnChange([&](TWorksheet& ASender, TCellAddress, const TCell&, const TCell&) {
    ++calls;
    ASender.SetOnChange([&calls](TWorksheet&, TCellAddress, const TCell&, const TCell&) { calls += 10; });
    ASender.SetValue({1, 2}, TCellValue::FromNumber(1));
    ++calls;  // what the handler holds is still there
  });
  Sheet.SetValue({1, 1}, TCellValue::FromNumber(1));
  EXPECT_EQ(calls, 12);
}

TEST_F(Worksheet, FormatComesFromTheOverrideThenTheStyleThenTheDefault) {
  TTessarineStyleSheet styles;
  TCellFormat bold;
  bold.Font.Bold = true;
  const int32_t boldIndex = styles.AddCellXf(bold);
  TCell cell;
  cell.StyleIndex = boldIndex;
  Sheet.SetCell(At(u"A1"), cell);
  cell.HasFormatOverride = true;
  cell.FormatOverride.Font.Italic = true;
  Sheet.SetCell(At(u"A2"), cell);
  cell = TCell();
  cell.StyleIndex = 999;
  Sheet.SetCell(At(u"A3"), cell);
  EXPECT_EQ(Sheet.ResolveFormat(At(u"A1"), &styles), bold);
  EXPECT_EQ(Sheet.ResolveFormat(At(u"A1"), nullptr), TCellFormat::Default());
  EXPECT_TRUE(Sheet.ResolveFormat(At(u"A2"), &styles).Font.Italic);
  EXPECT_TRUE(Sheet.ResolveFormat(At(u"A2"), nullptr).Font.Italic);
  EXPECT_EQ(Sheet.ResolveFormat(At(u"A3"), &styles), TCellFormat::Default());
  EXPECT_EQ(Sheet.GetCell(At(u"A3")).StyleIndex, 999);
  EXPECT_EQ(Sheet.ResolveFormat({0, 0}, &styles), TCellFormat::Default());
}

TEST_F(Worksheet, TableColumnsAreNamedAfterTheirHeaderCells) {
  Sheet.SetValue(At(u"B2"), TCellValue::FromText(u"Name"));
  Sheet.SetValue(At(u"C2"), TCellValue::FromNumber(2.5));
  TCell runs = CellOf(TCellValue::FromText(u"value"));
  runs.RichText = {{u"two ", {}}, {u"runs", {}}};
  Sheet.SetCell(At(u"D2"), runs);
  Sheet.SetCell(At(u"E2"), FormulaCell(u"=B2", TCellValue::FromText(u"Name")));
  Sheet.Tables().Add(u"Table1", {2, 2, 6, 9});
  Sheet.Tables().Add(u"Table2", {2, 2, 6, 9}).SetHasHeaderRow(false);
  Sheet.RefreshTableColumnNames();
  EXPECT_EQ(Sheet.Tables().GetItem(0).ColumnNames(),
            (std::vector<TText>{u"Name", u"2.5", u"two runs", u"=B2", u"Column5"}));
  EXPECT_TRUE(Sheet.Tables().GetItem(1).ColumnNames().empty());
}

}  // namespace
}  // namespace tessarine
