#include <tessarine/features/ChartData.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>

namespace tessarine {

namespace {

/// A name may stand for a name; a circle of them ends here.
constexpr int kMaxNameDepth = 8;
/// All arrays of a chart together.
constexpr int64_t kMaxCellsOfChart = int64_t{kMaxChartPoints} * 16;

struct TArea {
  const TWorksheet* Sheet;
  TCellRange Range;
};

/// The areas that a series formula names.
class TAreaReader {
 public:
  TAreaReader(const TWorkbook& AWorkbook, const TWorksheet& ASheet) : FWorkbook(AWorkbook), FSheet(ASheet) {}

  /// The cells of what was read last; an area without used cells counts as one.
  int64_t CellCount() const { return FCells; }

  /// Nothing unless the whole text is references separated by commas.
  std::optional<std::vector<TArea>> Read(std::u16string_view AFormula) {
    FAreas.clear();
    FCells = 0;
    if (!AddAll(AFormula, 0) || FAreas.empty()) return std::nullopt;
    return FAreas;
  }

 private:
  bool AddAll(std::u16string_view AFormula, int ADepth) {
    if (ADepth > kMaxNameDepth) return false;
    bool afterReference = false;
    for (const TFormulaToken& token : TokenizeFormula(AFormula)) {
      if (token.Kind == ftLParen || token.Kind == ftRParen) continue;
      if (token.Kind == ftComma ? !afterReference : afterReference || !AddToken(token, ADepth)) return false;
      afterReference = token.Kind != ftComma;
    }
    return afterReference;
  }

  bool AddToken(const TFormulaToken& AToken, int ADepth) {
    switch (AToken.Kind) {
      case ftCellRef:
      case ftSheetRef: return Add(AToken.SheetName, {AToken.Col, AToken.Row, AToken.Col, AToken.Row});
      case ftRangeRef: return Add(AToken.SheetName, {AToken.Col, AToken.Row, AToken.Col2, AToken.Row2});
      case ftTableRef: return AddTableColumn(AToken);
      case ftFunction: {
        const TText* formula = FWorkbook.FindNormalizedName(TWorkbook::NormalizeName(AToken.Text));
        return formula && AddAll(formula->View(), ADepth + 1);
      }
      default: return false;
    }
  }

  bool Add(std::u16string_view ASheetName, const TCellRange& ARange) {
    const TWorksheet* sheet = ASheetName.empty() ? &FSheet : FWorkbook.FindSheet(ASheetName);
    return sheet && AddArea(*sheet, ARange.Normalize());
  }

  bool AddArea(const TWorksheet& ASheet, TCellRange ARange) {
    if (ARange.StartCol < 1 || ARange.StartRow < 1 || ARange.EndCol > kMaxCol || ARange.EndRow > kMaxRow) return false;
    if (ARange.Height() == kMaxRow) ARange.EndRow = ASheet.UsedMaxRow();
    if (ARange.Width() == kMaxCol) ARange.EndCol = ASheet.UsedMaxCol();
    const int64_t cells =
        (int64_t{ARange.EndCol} - ARange.StartCol + 1) * (int64_t{ARange.EndRow} - ARange.StartRow + 1);
    FCells += std::max<int64_t>(cells, 1);
    if (FCells > kMaxChartPoints) return false;
    FAreas.push_back({&ASheet, ARange});
    return true;
  }

  bool AddTableColumn(const TFormulaToken& AToken) {
    for (int32_t i = 0; i < FWorkbook.SheetCount(); ++i) {
      const TWorksheet& sheet = *FWorkbook.GetSheet(i);
      const TSheetTable* table = sheet.Tables().FindByName(AToken.Text);
      if (!table) continue;
      const TCellRange range = table->ColumnDataRange(AToken.ColumnName);
      return range.EndRow >= range.StartRow && AddArea(sheet, range);
    }
    return false;
  }

  const TWorkbook& FWorkbook;
  const TWorksheet& FSheet;
  std::vector<TArea> FAreas;
  int64_t FCells = 0;
};

/// The arrays of one chart's series.
class TSeriesReader {
 public:
  TSeriesReader(const TWorkbook& AWorkbook, const TWorksheet& ASheet, bool AVisibleOnly)
      : FWorkbook(AWorkbook), FAreas(AWorkbook, ASheet), FVisibleOnly(AVisibleOnly) {}

  void Refresh(TSheetChartSeries& ASeries) {
    RefreshNumbers(ASeries.ValuesFormula, ASeries.Values);
    RefreshNumbers(ASeries.XValuesFormula, ASeries.XValues);
    RefreshNumbers(ASeries.SizesFormula, ASeries.Sizes);
    RefreshTexts(ASeries.CategoriesFormula, ASeries.Categories);
  }

 private:
  bool IsShown(const TWorksheet& ASheet, int32_t ACol, int32_t ARow) const {
    return !FVisibleOnly || !(ASheet.Sizing().IsRowHidden(ARow) || ASheet.Sizing().IsColHidden(ACol));
  }

  /// Calls AVisit(sheet, col, row) for the cells of all areas, row by row. False when the formula leads nowhere.
  template <class TVisit>
  bool ForEachCell(const TText& AFormula, TVisit&& AVisit) {
    const auto areas = AFormula.IsEmpty() ? std::nullopt : FAreas.Read(AFormula);
    if (!areas || FAreas.CellCount() > kMaxCellsOfChart - FCellCount) return false;
    FCellCount += FAreas.CellCount();
    for (const auto& [sheet, range] : *areas) {
      for (int32_t row = range.StartRow; row <= range.EndRow; ++row)
        for (int32_t col = range.StartCol; col <= range.EndCol; ++col)
          if (IsShown(*sheet, col, row)) AVisit(*sheet, range, TCellAddress{col, row});
    }
    return true;
  }

  void RefreshNumbers(const TText& AFormula, std::vector<double>& ANumbers) {
    std::vector<double> numbers;
    const bool found = ForEachCell(AFormula, [&](const TWorksheet& ASheet, const TCellRange&, TCellAddress AAddress) {
      const TValueView value = ASheet.EffectiveView(AAddress.Col, AAddress.Row);
      numbers.push_back(value.Kind == cvkNumber ? value.Number : 0);
    });
    if (found) ANumbers = std::move(numbers);
  }

  std::u16string ShownText(const TWorksheet& ASheet, TCellAddress AAddress) const {
    std::u16string text;
    if (!ASheet.EffectiveView(AAddress.Col, AAddress.Row).IsEmpty())
      ASheet.AppendDisplayText(AAddress, &FWorkbook.StyleSheet(), text);
    return text;
  }

  void RefreshTexts(const TText& AFormula, std::vector<TText>& ATexts) {
    std::vector<std::u16string> texts;
    int32_t rowOfLast = 0;
    const bool found =
        ForEachCell(AFormula, [&](const TWorksheet& ASheet, const TCellRange& ARange, TCellAddress AAddress) {
          std::u16string text = ShownText(ASheet, AAddress);
          const bool sameRow = AAddress.Col > ARange.StartCol && rowOfLast == AAddress.Row;
          if (sameRow && ARange.Height() > 1) {  // one more level of the category
            if (!text.empty()) texts.back() += (texts.back().empty() ? u"" : u" ") + text;
          } else {
            texts.push_back(std::move(text));
          }
          rowOfLast = AAddress.Row;
        });
    if (found) ATexts.assign(texts.begin(), texts.end());
  }

  const TWorkbook& FWorkbook;
  TAreaReader FAreas;
  bool FVisibleOnly;
  int64_t FCellCount = 0;  // read so far
};

}  // namespace

void RefreshDrawingCharts(const TWorkbook& AWorkbook, const TWorksheet& ASheet, TSheetDrawing& ADrawing) {
  if (ADrawing.Kind != sdkChart) return;
  TSeriesReader reader(AWorkbook, ASheet, ADrawing.PlotVisOnly);
  ADrawing.ForEachSeries([&](TSheetChartSeries& ASeries) { reader.Refresh(ASeries); });
}

void RefreshSheetCharts(const TWorkbook& AWorkbook, TWorksheet& ASheet) {
  for (int32_t i = 0; i < ASheet.Drawings().Count(); ++i)
    RefreshDrawingCharts(AWorkbook, ASheet, *ASheet.Drawings().GetItem(i));
}

}  // namespace tessarine
