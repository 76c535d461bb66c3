#include <tessarine/api/SheetDrawings.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include <tessarine/api/detail/CellEdits.h>
#include <tessarine/api/detail/DrawingAnchors.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/undo/DrawingCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/features/ChartData.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr int32_t kLeastChartCols = 8;
constexpr int32_t kLeastChartRows = 4;
constexpr int32_t kPictureWidthPx = 240;
constexpr int32_t kPictureHeightPx = 180;
constexpr int64_t kEmuPerPixel = 9525;  // at 96 dots per inch

TCellAddress DefaultChartCell(const TWorksheet& ASheet) {
  if (ASheet.Store().CellCount() == 0) return {6, 2};
  return {std::clamp(ASheet.UsedMaxCol() + 2, 1, kMaxCol), 2};
}

TDrawingAnchor ChartAnchor(const TWorksheet& ASheet, std::u16string_view AAnchorA1, int32_t AWidthCols,
                           int32_t AHeightRows) {
  const bool isGiven = !TrimSpaces(AAnchorA1).empty();
  const TCellAddress cell = isGiven ? detail::CellOfText(AAnchorA1) : DefaultChartCell(ASheet);
  TDrawingAnchor anchor;
  anchor.FromCol = cell.Col;
  anchor.FromRow = cell.Row;
  anchor.ToCol = cell.Col + std::min(std::max(AWidthCols, kLeastChartCols), kMaxCol - cell.Col);
  anchor.ToRow = cell.Row + std::min(std::max(AHeightRows, kLeastChartRows), kMaxRow - cell.Row);
  return anchor;
}

/// Series that a host made by hand count from 0.
void NumberSeries(std::vector<TSheetChartSeries>& ASeries) {
  const bool areNumbered = std::any_of(ASeries.begin(), ASeries.end(),
                                       [](const TSheetChartSeries& AOne) { return AOne.Idx != 0 || AOne.Order != 0; });
  if (areNumbered) return;
  for (size_t index = 0; index < ASeries.size(); ++index)
    ASeries[index].Idx = ASeries[index].Order = static_cast<int32_t>(index);
}

TSheetDrawing& AddByCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, std::unique_ptr<TSheetDrawing> ADrawing) {
  TSheetDrawing& drawing = *ADrawing;
  AWorkbook.UndoManager().ExecuteCommand(
      std::make_shared<TDrawingAddCommand>(AWorkbook, ASheetIndex, std::move(ADrawing)));
  return drawing;
}

}  // namespace

namespace detail {

TDrawingAnchor PixelAnchor(std::u16string_view AAnchorA1, int32_t AWidthPx, int32_t AHeightPx) {
  const TCellAddress cell = TrimSpaces(AAnchorA1).empty() ? TCellAddress{1, 1} : CellOfText(AAnchorA1);
  TDrawingAnchor anchor;
  anchor.Kind = dakOneCell;
  anchor.FromCol = anchor.ToCol = cell.Col;
  anchor.FromRow = anchor.ToRow = cell.Row;
  anchor.ExtCxEmu = kEmuPerPixel * (AWidthPx > 0 ? AWidthPx : kPictureWidthPx);
  anchor.ExtCyEmu = kEmuPerPixel * (AHeightPx > 0 ? AHeightPx : kPictureHeightPx);
  return anchor;
}

TText NextDrawingName(const TWorksheet& ASheet, std::u16string_view APrefix, TSheetDrawingKind AKind) {
  int32_t number = 1;
  for (int32_t index = 0; index < ASheet.Drawings().Count(); ++index)
    number += ASheet.Drawings().GetItem(index)->Kind == AKind ? 1 : 0;
  return TText(std::u16string(APrefix) + u' ' + GeneralNumberText(number));
}

}  // namespace detail

int32_t TessarineSheetIndexOf(const TWorkbook* AWorkbook, const TWorksheet* ASheet) {
  return AWorkbook && ASheet ? AWorkbook->IndexOfSheet(ASheet) : -1;
}

TSheetDrawing& TessarineAddChart(TWorkbook* AWorkbook, TWorksheet* ASheet, TTextArg ATitle, TSheetChartType AChartType,
                                 std::vector<TSheetChartSeries> ASeries, TTextArg AAnchorA1, int32_t AWidthCols,
                                 int32_t AHeightRows) {
  if (!AWorkbook || !ASheet) throw EArgument("AddChart: missing workbook/sheet");
  const int32_t sheetIndex = TessarineSheetIndexOf(AWorkbook, ASheet);
  if (sheetIndex < 0) throw EArgument("AddChart: sheet not in workbook");
  auto chart = std::make_unique<TSheetDrawing>();
  chart->Anchor = ChartAnchor(*ASheet, AAnchorA1, AWidthCols, AHeightRows);
  chart->Kind = sdkChart;
  chart->ChartType = AChartType;
  chart->Title = ATitle.View().empty() ? TText(u"Chart") : TText(ATitle.View());
  chart->Name = detail::NextDrawingName(*ASheet, u"Chart", sdkChart);
  NumberSeries(ASeries);
  chart->SetSeries(std::move(ASeries));
  TSheetDrawing& drawing = AddByCommand(*AWorkbook, sheetIndex, std::move(chart));
  RefreshDrawingCharts(*AWorkbook, *ASheet, drawing);
  AWorkbook->MarkModified();
  return drawing;
}

TSheetDrawing& TessarineAddChart(TWorkbook* AWorkbook, TWorksheet* ASheet, TTextArg ATitle, TSheetChartType AChartType,
                                 TTextArg AValuesFormula, TTextArg ACategoriesFormula, TTextArg AAnchorA1,
                                 int32_t AWidthCols, int32_t AHeightRows) {
  std::vector<TSheetChartSeries> series(1);
  series[0].ValuesFormula = TText(AValuesFormula.View());
  series[0].CategoriesFormula = TText(ACategoriesFormula.View());
  return TessarineAddChart(AWorkbook, ASheet, ATitle.View(), AChartType, std::move(series), AAnchorA1.View(),
                           AWidthCols, AHeightRows);
}

TSheetDrawing& TessarineAddPictureBytes(TWorkbook* AWorkbook, TWorksheet* ASheet, std::span<const std::byte> ABytes,
                                        TTextArg AContentType, TTextArg AAnchorA1, int32_t AWidthPx,
                                        int32_t AHeightPx) {
  if (!AWorkbook || !ASheet) throw EArgument("AddPicture: missing workbook/sheet");
  if (ABytes.empty()) throw EArgument("AddPicture: empty image data");
  const int32_t sheetIndex = TessarineSheetIndexOf(AWorkbook, ASheet);
  if (sheetIndex < 0) throw EArgument("AddPicture: sheet not in workbook");
  auto picture = std::make_unique<TSheetDrawing>();
  picture->Anchor = detail::PixelAnchor(AAnchorA1, AWidthPx, AHeightPx);
  picture->Kind = sdkPicture;
  picture->Name = detail::NextDrawingName(*ASheet, u"Picture", sdkPicture);
  picture->SetImage(ABytes, AContentType.View().empty() ? TText(u"image/png") : TText(AContentType.View()));
  TSheetDrawing& drawing = AddByCommand(*AWorkbook, sheetIndex, std::move(picture));
  AWorkbook->MarkModified();
  return drawing;
}

}  // namespace tessarine
