#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

#include "../support/SheetFixture.h"
#include "ListCases.h"

namespace tessarine {
namespace {

using test::TCase;

class TDisplay {
 public:
  void Put(TCellAddress A, std::string AContent, std::u16string AFormat) {
    TCellFormat format;
    format.NumberFormat = AFormat;
    TCell cell;
    cell.Value = testing::ContentOf(AContent);
    cell.StyleIndex = FBook.StyleSheet().AddCellXf(format);
    FSheet.SetCell(A, cell);
  }
  void PutResult(TCellAddress A, std::string AResult, std::u16string AFormat) {
    Put(A, "=B1", AFormat);
    TCell cell = FSheet.GetCell(A);
    cell.SetCachedResult(testing::ContentOf(AResult));
    FSheet.SetCell(A, cell);
  }
  void Override(TCellAddress A, std::u16string AFormat) {
    TCell cell = FSheet.GetCell(A);
    cell.HasFormatOverride = true;
    cell.FormatOverride.NumberFormat = AFormat;
    FSheet.SetCell(A, cell);
  }
  void PutFont(TCellAddress A, std::string AContent, bool ABold, double ASize) {
    TCell cell;
    cell.Value = testing::ContentOf(AContent);
    cell.HasFormatOverride = true;
    cell.FormatOverride.Font.Bold = ABold;
    cell.FormatOverride.Font.Size = static_cast<float>(ASize);
    FSheet.SetCell(A, cell);
  }
  void PutRuns(TCellAddress A, std::string ATexts) {
    TCell cell = FSheet.GetCell(A);
    cell.RichText.clear();
    for (const std::string& text : test::SplitAt(ATexts, '|')) cell.RichText.push_back({TText::FromUtf8(text), {}});
    FSheet.SetCell(A, cell);
  }
  void Spill(TCellAddress A, int64_t ARows, int64_t ACols, std::string AContents) {
    std::vector<TCellValue> values;
    for (const std::string& content : test::SplitAt(AContents, ' ')) values.push_back(testing::ContentOf(content));
    FSheet.Spills().SetSpill(A.Col, A.Row, ARows, ACols, std::move(values));
  }
  /// The texts of some cells, separated by "|", by both ways to them.
  std::string Show(std::string ACells) const {
    std::string shown;
    for (const std::string& each : test::SplitAt(ACells, ' ')) {
      const auto place = test::CaseArgument<TCellAddress>(TCase("", 0, {each}), 0);
      std::u16string appended = u"|";
      FSheet.AppendDisplayText(place, &FBook.StyleSheet(), appended);
      const TText text = FSheet.GetDisplayText(place, &FBook.StyleSheet());
      EXPECT_EQ(u"|" + text.ToString(), appended) << each;
      shown += Utf16ToUtf8(appended);
    }
    return shown.substr(1);
  }
  TText ShowPlain(TCellAddress A) const { return FSheet.GetDisplayText(A, nullptr); }
  void ShowFormulas() { SetView(&TSheetViewOptions::ShowFormulas, true); }
  void HideZeros() { SetView(&TSheetViewOptions::ShowZeros, false); }
  std::vector<double> Fit(double AMin, double AMax) {
    FSheet.AutoFitColumns(&FBook.StyleSheet(), AMin, AMax);
    std::vector<double> widths;
    for (int32_t col = 1; col <= FSheet.UsedMaxCol(); ++col) widths.push_back(FSheet.Sizing().GetColWidthChars(col));
    return widths;
  }
  void Stretch(int32_t ACol, int32_t ARow) { FSheet.ExpandUsedBounds(ACol, ARow); }
  void SetDefaultWidth(double AWidth) { FSheet.Sizing().SetDefaultColWidth(AWidth); }
  void Merge(TCellRange ARange) { FSheet.MergeRange(ARange); }

 private:
  void SetView(bool TSheetViewOptions::*AOption, bool AValue) {
    TSheetViewOptions view = FSheet.View();
    view.*AOption = AValue;
    FSheet.SetView(view);
  }

  TWorkbook FBook;
  TWorksheet& FSheet = *FBook.GetSheet(0);
};

TEST(DisplayText, ExamplesHold) {
  using T = TDisplay;
  test::ExpectDialogues<T>("core/display_texts.tsv", {{"put", &T::Put},
                                                      {"put-result", &T::PutResult},
                                                      {"put-font", &T::PutFont},
                                                      {"put-runs", &T::PutRuns},
                                                      {"override", &T::Override},
                                                      {"spill", &T::Spill},
                                                      {"show", &T::Show},
                                                      {"show-plain", &T::ShowPlain},
                                                      {"show-formulas", &T::ShowFormulas},
                                                      {"hide-zeros", &T::HideZeros},
                                                      {"fit", &T::Fit},
                                                      {"stretch", &T::Stretch},
                                                      {"set-default-width", &T::SetDefaultWidth},
                                                      {"merge", &T::Merge}});
}

}  // namespace
}  // namespace tessarine
