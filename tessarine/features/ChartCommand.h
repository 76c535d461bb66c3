#pragma once

#include <cstdint>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/undo/DrawingCommands.h>

namespace tessarine {

/// What an edit of a chart can change.
struct TChartEdit {
  TSheetChartType Type = sctUnknown;
  bool Is3D = false;
  bool Stacked = false;
  std::vector<TSheetChartSeries> Series;
};

/// The kind of a chart and its series. Either way the series are read from the sheet afterwards.
class TESSARINE_API TDrawingChartCommand final : public TDrawingCommand {
 public:
  TDrawingChartCommand(TWorkbook& AWorkbook, int32_t ASheetIndex, int32_t ADrawingIndex, TChartEdit AOldChart,
                       TChartEdit ANewChart);
  void Execute() override { Apply(FNewChart); }
  void Undo() override { Apply(FOldChart); }
  TText Description() const override { return u"Edit chart"; }

 private:
  void Apply(const TChartEdit& AChart);

  TChartEdit FOldChart;
  TChartEdit FNewChart;
};

}  // namespace tessarine
