#include <tessarine/features/ChartCommand.h>

#include <utility>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/features/ChartData.h>

namespace tessarine {

TDrawingChartCommand::TDrawingChartCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex,
                                           TChartEdit AOldChart, TChartEdit ANewChart)
    : TDrawingCommand(AWorkbook, ASheetIndex, ADrawingIndex),
      FOldChart(std::move(AOldChart)),
      FNewChart(std::move(ANewChart)) {}

void TDrawingChartCommand::Apply(const TChartEdit& AChart) {
  TSheetDrawing* drawing = Drawing();
  if (!drawing) return;
  drawing->ChartType = AChart.Type;
  drawing->ChartIs3D = AChart.Is3D;
  drawing->Stacked = AChart.Stacked;
  drawing->SetSeries(AChart.Series);
  RefreshDrawingCharts(Workbook(), *Sheet(), *drawing);
  Workbook().MarkModified();
}

}  // namespace tessarine
